// tally: counts the words of texts, and keeps the counts between runs.
//
//     --every SECONDS   prints a running table again and again; the last one comes when the counting is over
//     --follow          goes on when the inputs are at their end: files may grow, FIFOs may find another writer
//     --top N           rows of a table
//     --state FILE      where the counts are kept
//     --match REGEX     counts only the words in which the expression is found
//     --path DIR:DIR --files REGEX   reads the files in these directories whose names match, too
//
// All pipes are read at once, and the files one after the other. SIGINT and SIGTERM end the counting, not the program:
// what has arrived is counted, the state is saved, and then the last table is printed. The exit status is 0 then as
// well; it is 1 when an input, the state or the output fails, and 2 for bad options. A failure before the state is
// saved leaves the old one alone.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Complain.h"
#include "Expression.h"
#include "Found.h"
#include "Options.h"
#include "StateFile.h"
#include "Table.h"
#include "Tally.h"

namespace {

/** Compiles the expression given with `option`, if any; returns 0, or the status to exit with. */
int compileOption(const char* option, const char* text, std::unique_ptr<qnRegEx>& compiled) {
    if (text == nullptr) return 0;
    qnStr problem;
    compiled = expression::compile(text, problem);
    return compiled ? 0 : complain(option, problem.text(), UsageError);
}

/** Gathers the names of all inputs in `names`; returns 0, or the status to exit with. */
int nameInputs(const Options& options, qnStrArray& names) {
    for (char** file = options.files; *file != nullptr; ++file) {
        qnStr name(*file);
        names.append(&name);
    }
    qnStr problem;
    if (options.path != nullptr && !findFiles(options.path, options.fileNames, names, problem)) {
        return complain("--files", problem.text());
    }
    if (names.length() == 0) {
        qnStr standardInput("-");
        names.append(&standardInput);
    }
    return 0;
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
int count(const Tally::Settings& settings, const char* state, WordCounts& counts, bool& interrupted) {
    Tally tally(counts, settings);
    qn_theExecutive->initialize(0, nullptr);
    if (tally.problem().length() == 0) runLoop();
    tally.close();
    if (tally.problem().length() != 0) return complain(tally.problem().text());
    interrupted = tally.wasInterrupted();
    if (!interrupted) return 0;
    tally.ignoreSignals();
    return save(state, counts);
}

int run(const Options& options) {
    WordCounts counts;
    qnStr problem;
    std::unique_ptr<qnRegEx> only, fileNames;
    if (int status = compileOption("--match", options.match, only)) return status;
    if (int status = compileOption("--files", options.fileNames, fileNames)) return status;
    Tally::Settings settings = {qnStrArray(), options.follow, options.every, options.top, only.get()};
    if (int status = nameInputs(options, settings.inputs)) return status;
    if (options.state != nullptr && !stateFile::load(options.state, counts, problem)) {
        return complain(options.state, problem.text());
    }
    bool interrupted = false;
    if (int status = count(settings, options.state, counts, interrupted)) return status;
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
