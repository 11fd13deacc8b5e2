#include "Descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int FirstOwn = STDERR_FILENO + 1;

const char* shownName(const char* name) { return descriptors::isStandardInput(name) ? "standard input" : name; }

}  // namespace

bool descriptors::isStandardInput(const char* name) { return std::strcmp(name, "-") == 0; }

bool descriptors::isWaitable(int descriptor) {
    return descriptor >= 0 && descriptor < static_cast<int>(qnExec::MaxDescriptors);
}

bool descriptors::look(const char* name, struct stat& status) {
    if ((isStandardInput(name) ? ::fstat(STDIN_FILENO, &status) : ::stat(name, &status)) != 0) return false;
    if (!S_ISDIR(status.st_mode)) return true;
    errno = EISDIR;
    return false;
}

int descriptors::open(const char* name) {
    // Standard input may be shared with other programs, which would not expect it to be set not to block.
    if (isStandardInput(name)) return ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, FirstOwn);
    return aboveStandard(::open(name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

int descriptors::aboveStandard(int descriptor) {
    if (descriptor < 0 || descriptor >= FirstOwn) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, FirstOwn);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return moved;
}

qnStr descriptors::unreadable(const char* name) {
    qnStr text;
    text.format("%s: cannot be read: %s", shownName(name), std::strerror(errno));
    return text;
}

qnStr descriptors::unwaitable(const char* name, int descriptor) {
    qnStr text;
    text.format("%s: cannot be waited for: its descriptor is %d, and 99 is the last that can; open fewer inputs",
                shownName(name), descriptor);
    return text;
}
