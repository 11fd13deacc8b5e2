// tally: counts the words of texts, and keeps the counts between runs.
//
//     --every SECONDS   prints a running table again and again; the last one comes when the counting is over
//     --follow          goes on when the inputs are at their end: files may grow, FIFOs may find another writer
//     --top N           rows of a table
//     --state FILE      where the counts are kept
//
// All pipes are read at once, and the files one after the other. SIGINT and SIGTERM end the counting, not the program:
// what has arrived is counted, the state is saved, and then the last table is printed. The exit status is 0 then as
// well; it is 1 when an input, the state or the output fails, and 2 for bad options. A failure before the state is
// saved leaves the old one alone.
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "StateFile.h"
#include "Table.h"
#include "Tally.h"

namespace {

constexpr int Failure = 1;
constexpr int UsageError = 2;
constexpr char Usage[] = "usage: tally [--every SECONDS] [--follow] [--top N] [--state FILE] [FILE...]";

struct Options {
    unsigned top = 10;
    const char* state = nullptr;
    float every = 0;  // seconds; 0 when there is no running table
    bool follow = false;
    char** files = nullptr;  // null-terminated
};

int complain(const char* problem, int status = Failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "tally: %s\n", problem);
    return status;
}

int complain(const char* subject, const char* problem, int status = Failure) {
    return complain((qnStr(subject) + ": " + problem).text(), status);
}

/** A whole number from 1. */
bool parseNumber(const char* text, unsigned& number) {
    char* end;
    errno = 0;
    unsigned long value = std::strtoul(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != 0 || errno != 0 || value == 0 || value > 0xFFFFFFFFul) return false;
    number = static_cast<unsigned>(value);
    return true;
}

/** Seconds, with a fraction or without. */
bool parseSeconds(const char* text, float& seconds) {
    char* end;
    double value = std::strtod(text, &end);
    if (text[std::strspn(text, "0123456789.")] != 0 || *end != 0 || !(value >= 0.001 && value <= 1000000)) return false;
    seconds = static_cast<float>(value);
    return true;
}

/** Sets `options`; returns 0, or the status to exit with. */
int parseOptions(char** argument, Options& options) {
    for (++argument; *argument != nullptr && argument[0][0] == '-' && argument[0][1] != 0; ++argument) {
        const char* option = *argument;
        if (std::strcmp(option, "--") == 0) {
            ++argument;
            break;
        }
        if (std::strcmp(option, "--follow") == 0) {
            options.follow = true;
            continue;
        }
        bool isTop = std::strcmp(option, "--top") == 0;
        bool isEvery = std::strcmp(option, "--every") == 0;
        if (!isTop && !isEvery && std::strcmp(option, "--state") != 0) {
            return complain(option, (qnStr("unknown option; ") + Usage).text(), UsageError);
        }
        if (*++argument == nullptr) return complain(option, (qnStr("needs a value; ") + Usage).text(), UsageError);
        if (isEvery) {
            if (!parseSeconds(*argument, options.every)) {
                return complain(*argument, (qnStr("--every takes seconds from 0.001 to 1000000; ") + Usage).text(),
                                UsageError);
            }
        } else if (!isTop) {
            options.state = *argument;
        } else if (!parseNumber(*argument, options.top)) {
            return complain(*argument, "--top takes a whole number from 1 to 4294967295", UsageError);
        }
    }
    options.files = argument;
    return 0;
}

Tally::Settings settingsFrom(const Options& options) {
    Tally::Settings settings = {qnStrArray(), options.follow, options.every, options.top};
    for (char** file = options.files; *file != nullptr; ++file) {
        qnStr name(*file);
        settings.inputs.append(&name);
    }
    if (settings.inputs.length() == 0) {
        qnStr standardInput("-");
        settings.inputs.append(&standardInput);
    }
    return settings;
}

int save(const char* path, WordCounts& counts) {
    qnStr problem;
    if (path == nullptr || stateFile::save(path, counts, problem)) return 0;
    return complain(path, problem.text());
}

/** Lets the application run until it closes, and what is then on its way arrive. */
void runLoop() {
    qn_theExecutive->open();
    qn_theExecutive->loop();
    while (qn_theEventHandler->count != 0) qn_theEventHandler->distributeEvents();
}

/** Reads all inputs. `interrupted` tells whether a signal ended that; then the counts are saved already. */
int count(const Options& options, WordCounts& counts, bool& interrupted) {
    Tally::Settings settings = settingsFrom(options);
    Tally tally(counts, settings);
    qn_theExecutive->initialize(0, nullptr);
    if (tally.problem().length() == 0) runLoop();
    tally.close();
    if (tally.problem().length() != 0) return complain(tally.problem().text());
    interrupted = tally.wasInterrupted();
    if (!interrupted) return 0;
    tally.ignoreSignals();
    return save(options.state, counts);
}

int run(const Options& options) {
    WordCounts counts;
    qnStr problem;
    if (options.state != nullptr && !stateFile::load(options.state, counts, problem)) {
        return complain(options.state, problem.text());
    }
    bool interrupted = false;
    if (int status = count(options, counts, interrupted)) return status;
    // The key that interrupts this program also ends those that it is piped into: then nobody wants the table.
    if (interrupted) std::signal(SIGPIPE, SIG_IGN);
    printTable(stdout, counts, options.top);
    if (std::fflush(stdout) != 0 && !(interrupted && errno == EPIPE)) {
        return complain("standard output", std::strerror(errno));
    }
    return interrupted ? 0 : save(options.state, counts);
}

}  // namespace

int main(int, char** arguments) {
    Options options;
    if (int status = parseOptions(arguments, options)) return status;
    qnInitializeToolkit();
    int status = run(options);
    qnCleanupGlobalOrderings();
    return status;
}
