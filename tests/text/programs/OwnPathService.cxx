// A program's own path service takes the place of the library's stand-in, for the library too.
#include <morvaqnds.h>

#include <cstring>

namespace {

struct Call {
    char path[32];
    unsigned directoryCapacity;
    unsigned leafCapacity;
    int number;
} seen;

enum Manner { Backslashes, WritesNothing, EndsNothing } manner;

bool equals(const qnStr& text, const char* expected) { return text == expected; }

}  // namespace

extern "C" int path_strip_leaf(const char* path, unsigned directoryCapacity, char* directory, unsigned leafCapacity,
                               char* leaf) {
    std::strncpy(seen.path, path, sizeof seen.path - 1);
    seen.directoryCapacity = directoryCapacity;
    seen.leafCapacity = leafCapacity;
    ++seen.number;
    if (manner == WritesNothing) return -42;
    if (manner == EndsNothing) {
        std::memset(directory, 'd', directoryCapacity);
        std::memset(leaf, 'l', leafCapacity);
        return 1;
    }
    const char* at = std::strrchr(path, '\\');
    if (at == nullptr) return -1;
    std::memcpy(directory, path, static_cast<std::size_t>(at - path));
    directory[at - path] = 0;
    std::strcpy(leaf, at + 1);
    return 4711;
}

int main() {
    qnStr directory("before"), leaf("before");
    qnPath path("C:\\etc\\hosts");
    if (path.split(directory, leaf) != 4711) return 1;
    if (!equals(directory, "C:\\etc") || !equals(leaf, "hosts")) return 2;
    if (std::strcmp(seen.path, "C:\\etc\\hosts") != 0 || seen.number != 1) return 3;
    // Room for 12 characters and the NUL in both.
    if (seen.directoryCapacity != 13 || seen.leafCapacity != 13) return 4;
    if (!equals(path.leaf(), "hosts") || !equals(path.directory(), "C:\\etc") || seen.number != 3) return 5;

    // What the service leaves as it was is empty.
    manner = WritesNothing;
    if (path.split(directory, leaf) != -42 || directory.length() != 0 || leaf.length() != 0) return 6;

    // What it does not end, ends with the path's length.
    manner = EndsNothing;
    if (path.split(directory, leaf) != 1) return 7;
    if (!equals(directory, "dddddddddddd") || !equals(leaf, "llllllllllll")) return 8;

    // The empty path has room for the NUL only, and not in the buffer that all empty strings share.
    if (qnPath("").split(directory, leaf) != 1 || directory.length() != 0 || leaf.length() != 0) return 9;
    if (seen.directoryCapacity != 1 || seen.leafCapacity != 1 || qnStr::emptyString != 0) return 10;
    if (*qnStr().text() != 0) return 11;
    return 0;
}
