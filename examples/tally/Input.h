#ifndef TALLY_INPUT_H
#define TALLY_INPUT_H

#include <sys/stat.h>

#include <memory>

#include "Reader.h"
#include "Splitter.h"

/** One input of the program: a reader, and the splitter of its lines. */
class Input {
public:
    /** Opens the input that `descriptors::look` has found; null, with `problem` set, when that fails. */
    static std::unique_ptr<Input> open(const char* name, const struct stat& status, bool follow, qnStr& problem);

    /** Whether it is a file, which ends by itself and is read without waiting. */
    bool isFile() const { return S_ISREG(mode_); }
    /** Whether both are the same file. */
    bool is(const struct stat& status) const { return status.st_dev == device_ && status.st_ino == number_; }

    Splitter splitter;
    Reader reader;

private:
    Input(const char* name, int descriptor, const struct stat& status, bool follow);

    mode_t mode_;
    dev_t device_;
    ino_t number_;
};

#endif
