#ifndef TALLY_OPTIONS_H
#define TALLY_OPTIONS_H

/** What the command line asks for. */
struct Options {
    unsigned top = 10;
    float every = 0;  // seconds; 0 when there is no running table
    bool follow = false;
    const char* state = nullptr;
    const char* match = nullptr;      // words that match are counted
    const char* path = nullptr;       // directories in which files are looked for,
    const char* fileNames = nullptr;  // and what their names must match
    char** files = nullptr;           // null-terminated
};

/** Sets `options` by the program's null-terminated arguments. Returns 0, or the status to exit with. */
int parseOptions(char** arguments, Options& options);

#endif
