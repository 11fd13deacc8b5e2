// tally: counts the words of texts, and keeps the counts between runs.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "StateFile.h"
#include "Table.h"
#include "Words.h"

namespace {

constexpr int Failure = 1;
constexpr int UsageError = 2;
constexpr char Usage[] = "usage: tally [--top N] [--state FILE] [FILE...]";

struct Options {
    unsigned top = 10;
    const char* state = nullptr;
    char** files = nullptr;  // null-terminated
};

int complain(const char* subject, const char* problem, int status = Failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "tally: %s: %s\n", subject, problem);
    return status;
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

/** Sets `options`; returns 0, or the status to exit with. */
int parseOptions(char** argument, Options& options) {
    for (++argument; *argument != nullptr && argument[0][0] == '-' && argument[0][1] != 0; ++argument) {
        const char* option = *argument;
        if (std::strcmp(option, "--") == 0) {
            ++argument;
            break;
        }
        bool isTop = std::strcmp(option, "--top") == 0;
        if (!isTop && std::strcmp(option, "--state") != 0) {
            return complain(option, (qnStr("unknown option; ") + Usage).text(), UsageError);
        }
        if (*++argument == nullptr) return complain(option, (qnStr("needs a value; ") + Usage).text(), UsageError);
        if (!isTop) {
            options.state = *argument;
        } else if (!parseNumber(*argument, options.top)) {
            return complain(*argument, "--top takes a whole number from 1 to 4294967295", UsageError);
        }
    }
    options.files = argument;
    return 0;
}

bool countFile(std::FILE* file, WordCounts& counts) {
    Words words(counts);
    char buffer[1 << 16];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) != 0) words.take(buffer, n);
    words.end();
    return std::ferror(file) == 0;
}

int countInput(const char* name, WordCounts& counts) {
    bool isStandard = std::strcmp(name, "-") == 0;
    std::FILE* file = isStandard ? stdin : std::fopen(name, "rb");
    qnStr problem;
    if (file == nullptr || !countFile(file, counts)) problem.format("cannot be read: %s", std::strerror(errno));
    if (file != nullptr && !isStandard) std::fclose(file);
    if (problem.length() == 0) return 0;
    return complain(isStandard ? "standard input" : name, problem.text());
}

int run(const Options& options) {
    WordCounts counts;
    qnStr problem;
    if (options.state != nullptr && !stateFile::load(options.state, counts, problem)) {
        return complain(options.state, problem.text());
    }
    if (*options.files == nullptr) {
        if (int status = countInput("-", counts)) return status;
    }
    for (char** file = options.files; *file != nullptr; ++file) {
        if (int status = countInput(*file, counts)) return status;
    }
    printTable(stdout, counts, options.top);
    if (std::fflush(stdout) != 0) return complain("standard output", std::strerror(errno));
    if (options.state != nullptr && !stateFile::save(options.state, counts, problem)) {
        return complain(options.state, problem.text());
    }
    return 0;
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
