#ifndef MORVAQNDS_POINTERLIST_H
#define MORVAQNDS_POINTERLIST_H

#include "VoidPtrArray.h"

/** Arrays of pointers by value: elements of an array are otherwise passed by address. */
namespace pointers {

constexpr unsigned NotFound = 0xFFFFFFFFu;

inline void append(qnVoidPtrArray& array, void* pointer) { array.append(&pointer); }

inline void insert(qnVoidPtrArray& array, void* pointer, unsigned index) { array.insert(&pointer, index); }

/** Index of the first element that is `pointer`, or `NotFound`. */
inline unsigned find(const qnVoidPtrArray& array, const void* pointer) {
    void* const* elements = array.elements();
    const unsigned n = array.length();
    for (unsigned i = 0; i < n; ++i) {
        if (elements[i] == pointer) return i;
    }
    return NotFound;
}

}  // namespace pointers

#endif
