// tally: counts the words of texts, and keeps the counts between runs.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Expression.h"
#include "Found.h"
#include "StateFile.h"
#include "Table.h"
#include "Words.h"

namespace {

constexpr int Failure = 1;
constexpr int UsageError = 2;
constexpr char Usage[] =
    "usage: tally [--top N] [--state FILE] [--match REGEX] [--path DIR:DIR --files REGEX] [FILE...]";

struct Options {
    unsigned top = 10;
    const char* state = nullptr;
    const char* match = nullptr;      // words that match are counted
    const char* path = nullptr;       // directories in which files are looked for,
    const char* fileNames = nullptr;  // and what their names must match
    char** files = nullptr;           // null-terminated
};

struct TextOption {
    const char* name;
    const char* Options::*value;
};

constexpr TextOption TextOptions[] = {
    {"--state", &Options::state},
    {"--match", &Options::match},
    {"--path", &Options::path},
    {"--files", &Options::fileNames},
};

const TextOption* findTextOption(const char* name) {
    for (const TextOption& option : TextOptions) {
        if (std::strcmp(option.name, name) == 0) return &option;
    }
    return nullptr;
}

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
        const TextOption* textOption = findTextOption(option);
        if (textOption == nullptr && std::strcmp(option, "--top") != 0) {
            return complain(option, (qnStr("unknown option; ") + Usage).text(), UsageError);
        }
        if (*++argument == nullptr) return complain(option, (qnStr("needs a value; ") + Usage).text(), UsageError);
        if (textOption != nullptr) {
            options.*textOption->value = *argument;
        } else if (!parseNumber(*argument, options.top)) {
            return complain(*argument, "--top takes a whole number from 1 to 4294967295", UsageError);
        }
    }
    if (options.path == nullptr && options.fileNames != nullptr) {
        return complain("--files", (qnStr("needs --path; ") + Usage).text(), UsageError);
    }
    if (options.path != nullptr && options.fileNames == nullptr) {
        return complain("--path", (qnStr("needs --files; ") + Usage).text(), UsageError);
    }
    options.files = argument;
    return 0;
}

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

bool countFile(std::FILE* file, WordCounts& counts, const qnTextPattern* only) {
    Words words(counts, only);
    char buffer[1 << 16];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) != 0) words.take(buffer, n);
    words.end();
    return std::ferror(file) == 0;
}

int countInput(const char* name, WordCounts& counts, const qnTextPattern* only) {
    bool isStandard = std::strcmp(name, "-") == 0;
    std::FILE* file = isStandard ? stdin : std::fopen(name, "rb");
    qnStr problem;
    if (file == nullptr || !countFile(file, counts, only)) problem.format("cannot be read: %s", std::strerror(errno));
    if (file != nullptr && !isStandard) std::fclose(file);
    if (problem.length() == 0) return 0;
    return complain(isStandard ? "standard input" : name, problem.text());
}

int run(const Options& options) {
    WordCounts counts;
    qnStr problem;
    std::unique_ptr<qnRegEx> only, fileNames;
    if (int status = compileOption("--match", options.match, only)) return status;
    if (int status = compileOption("--files", options.fileNames, fileNames)) return status;
    qnStrArray inputs;
    if (int status = nameInputs(options, inputs)) return status;
    if (options.state != nullptr && !stateFile::load(options.state, counts, problem)) {
        return complain(options.state, problem.text());
    }
    for (unsigned i = 0; i < inputs.length(); ++i) {
        if (int status = countInput(inputs.elements()[i].text(), counts, only.get())) return status;
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
