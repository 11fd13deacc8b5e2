#include "Input.h"

#include <unistd.h>

#include "Descriptors.h"

namespace {

/** Only files and FIFOs that have a name can get more once they are at their end. */
Reader::Ending endingOf(const char* name, const struct stat& status, bool follow) {
    bool mayGrow = S_ISREG(status.st_mode) || (S_ISFIFO(status.st_mode) && !descriptors::isStandardInput(name));
    return follow && mayGrow ? Reader::Follows : Reader::Ends;
}

}  // namespace

Input::Input(const char* name, int descriptor, const struct stat& status, bool follow)
    : reader(name, descriptor, S_ISREG(status.st_mode) ? Reader::Tick : Reader::Wait, endingOf(name, status, follow)),
      mode_(status.st_mode),
      device_(status.st_dev),
      number_(status.st_ino) {
    reader.connect("line", &splitter, "line");
    reader.connect("end", &splitter, "end");
}

std::unique_ptr<Input> Input::open(const char* name, const struct stat& status, bool follow, qnStr& problem) {
    const int descriptor = descriptors::open(name);
    if (descriptor < 0) {
        problem = descriptors::unreadable(name);
        return nullptr;
    }
    if (!S_ISREG(status.st_mode) && !descriptors::isWaitable(descriptor)) {
        problem = descriptors::unwaitable(name, descriptor);
        ::close(descriptor);
        return nullptr;
    }
    return std::unique_ptr<Input>(new Input(name, descriptor, status, follow));
}
