#include "Found.h"

#include <sys/stat.h>

namespace {

/** A directory, a device and the like; what cannot be looked at is left to be reported when it is read. */
bool isNoFile(const qnStr& name) {
    struct stat status;
    return ::stat(name.text(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

bool findFiles(const char* directories, const char* names, qnStrArray& files, qnStr& problem) {
    qnSearchList found(directories, names);
    unsigned before = files.length();
    for (unsigned i = 0; i < found.length(); ++i) {
        if (!isNoFile(found.elements()[i])) files.append(&found.elements()[i]);
    }
    if (files.length() > before) return true;
    problem.format("no file in %s has such a name", directories);
    return false;
}
