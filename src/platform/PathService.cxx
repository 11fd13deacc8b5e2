// Stand-in for the path service of the tool family's runtime. It is weak, and the library calls it through the dynamic
// symbol: a program's own definition takes its place.
#include <cstddef>
#include <cstring>

#include "Platform.h"

namespace {

/** Puts the `length` bytes of `text` and a NUL into `room` as far as `capacity` goes; whether all went in. */
bool put(const char* text, std::size_t length, unsigned capacity, char* room) {
    if (capacity == 0) return false;
    std::size_t fitting = length < capacity ? length : capacity - 1;
    if (fitting != 0) std::memmove(room, text, fitting);
    room[fitting] = 0;
    return fitting == length;
}

}  // namespace

extern "C" {

__attribute__((weak)) int path_strip_leaf(const char* path, unsigned directoryCapacity, char* directory,
                                          unsigned leafCapacity, char* leaf) {
    if (path == nullptr) path = "";
    const char* slash = std::strrchr(path, '/');
    const char* name = slash == nullptr ? path : slash + 1;
    bool whole = put(path, slash == nullptr ? 0 : static_cast<std::size_t>(slash - path), directoryCapacity, directory);
    whole = put(name, std::strlen(name), leafCapacity, leaf) && whole;
    return whole ? 0 : -1;
}

}  // extern "C"
