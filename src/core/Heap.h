#ifndef MORVAQNDS_HEAP_H
#define MORVAQNDS_HEAP_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#include "Fatal.h"

/**
 * Blocks and objects from the process heap that either are there or end the process with a message.
 *
 * `operation` is what asks, as "qnStr::append"; it is printed with the cause. Exactly the bytes asked for are
 * requested.
 */
namespace heap {

/** The largest size of a block whose bytes are counted in 32 bits. */
constexpr std::uint64_t MaxBytes = 0xFFFFFFFFu;

[[noreturn]] inline void outOfMemory(const char* operation) { qnFatal("%s: out of memory", operation); }

inline void* allocate(std::size_t nbytes, const char* operation) {
    void* block = std::malloc(nbytes);
    if (block == nullptr) outOfMemory(operation);
    return block;
}

inline void* reallocate(void* block, std::size_t nbytes, const char* operation) {
    void* grown = std::realloc(block, nbytes);
    if (grown == nullptr) outOfMemory(operation);
    return grown;
}

/** An object for `delete`, made with `new`. */
template <class Object, class... Arguments>
Object* create(const char* operation, Arguments&&... arguments) {
    try {
        return new Object(std::forward<Arguments>(arguments)...);
    } catch (const std::bad_alloc&) {
        outOfMemory(operation);
    }
}

/** `nbytes` as a 32-bit size; ends the process when it has none. */
inline unsigned checkedSize(std::uint64_t nbytes, const char* operation) {
    if (nbytes > MaxBytes) {
        qnFatal("%s: size of %llu bytes exceeds 4294967295", operation, static_cast<unsigned long long>(nbytes));
    }
    return static_cast<unsigned>(nbytes);
}

/** Whether `pointer` points into the `nbytes` bytes from `start`. */
inline bool contains(const void* start, std::size_t nbytes, const void* pointer) {
    std::uintptr_t first = reinterpret_cast<std::uintptr_t>(start);
    std::uintptr_t where = reinterpret_cast<std::uintptr_t>(pointer);
    return start != nullptr && where >= first && where - first < nbytes;
}

/** The bytes that `block` may be used for, at least those it was asked for; 0 for null. */
std::size_t usableSize(void* block);

}  // namespace heap

#endif
