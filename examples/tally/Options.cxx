#include "Options.h"

#include <morvaqnds.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Complain.h"

namespace {

constexpr char Usage[] =
    "usage: tally [--every SECONDS] [--follow] [--top N] [--state FILE] [--match REGEX] "
    "[--path DIR:DIR --files REGEX] [FILE...]";

/** Says what is wrong with an argument, and how the program is used. */
int complainOfUsage(const char* argument, const char* problem) {
    return complain(argument, (qnStr(problem) + "; " + Usage).text(), UsageError);
}

// Each option with a value has a function that takes it; the result is 0, or the status to exit with.

template <const char* Options::*Member>
int takeText(const char* value, Options& options) {
    options.*Member = value;
    return 0;
}

/** The name of the state file. */
int takeState(const char* name, Options& options) {
    if (*name == 0) return complainOfUsage("--state", "needs the name of a file");
    options.state = name;
    return 0;
}

/** A whole number from 1. */
int takeTop(const char* text, Options& options) {
    char* end;
    errno = 0;
    unsigned long value = std::strtoul(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != 0 || errno != 0 || value == 0 || value > 0xFFFFFFFFul) {
        return complain(text, "--top takes a whole number from 1 to 4294967295", UsageError);
    }
    options.top = static_cast<unsigned>(value);
    return 0;
}

/** Seconds, with a fraction or without. */
int takeEvery(const char* text, Options& options) {
    char* end;
    double value = std::strtod(text, &end);
    if (text[std::strspn(text, "0123456789.")] != 0 || *end != 0 || !(value >= 0.001 && value <= 1000000)) {
        return complainOfUsage(text, "--every takes seconds from 0.001 to 1000000");
    }
    options.every = static_cast<float>(value);
    return 0;
}

struct Option {
    const char* name;
    int (*take)(const char* value, Options& options);
};

constexpr Option WithValue[] = {
    {"--top", takeTop},
    {"--every", takeEvery},
    {"--state", takeState},
    {"--match", takeText<&Options::match>},
    {"--path", takeText<&Options::path>},
    {"--files", takeText<&Options::fileNames>},
};

const Option* find(const char* name) {
    for (const Option& option : WithValue) {
        if (std::strcmp(option.name, name) == 0) return &option;
    }
    return nullptr;
}

}  // namespace

int parseOptions(char** argument, Options& options) {
    for (++argument; *argument != nullptr && argument[0][0] == '-' && argument[0][1] != 0; ++argument) {
        const char* name = *argument;
        if (std::strcmp(name, "--") == 0) {
            ++argument;
            break;
        }
        if (std::strcmp(name, "--follow") == 0) {
            options.follow = true;
            continue;
        }
        const Option* option = find(name);
        if (option == nullptr) return complainOfUsage(name, "unknown option");
        if (*++argument == nullptr) return complainOfUsage(name, "needs a value");
        if (int status = option->take(*argument, options)) return status;
    }
    if (options.path == nullptr && options.fileNames != nullptr) return complainOfUsage("--files", "needs --path");
    if (options.path != nullptr && options.fileNames == nullptr) return complainOfUsage("--path", "needs --files");
    options.files = argument;
    return 0;
}
