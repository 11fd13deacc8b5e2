#ifndef MORVAQNDS_REGBUFFER_H
#define MORVAQNDS_REGBUFFER_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "Fatal.h"

/**
 * Scratch memory of the regular-expression engine that outlives a call: `inlineCount` elements in place, more from the
 * heap when they are needed. It only grows and is never released, so that a search need not allocate; objects of this
 * kind are static and start as zero bytes.
 */
template <class T, unsigned inlineCount>
class RegBuffer {
public:
    T* data() { return heap ? heap : local; }
    const T* data() const { return heap ? heap : local; }

    /** Makes room for `count` elements; the first `kept` of them keep their values. */
    T* reserve(std::size_t count, std::size_t kept) {
        std::size_t room = heap ? capacity : inlineCount;
        if (count <= room) return data();
        std::size_t grown = count < 2 * room ? 2 * room : count;
        T* block = static_cast<T*>(std::malloc(grown * sizeof(T)));
        if (!block) qnFatal("qnregexec: out of memory");
        std::memcpy(static_cast<void*>(block), data(), kept * sizeof(T));
        std::free(heap);
        heap = block;
        capacity = grown;
        return heap;
    }

private:
    T* heap;
    std::size_t capacity;
    T local[inlineCount];
};

#endif
