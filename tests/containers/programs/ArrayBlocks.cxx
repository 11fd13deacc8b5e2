// The requests to the heap that arrays make, to the byte. Elements have four bytes.
#include <morvaqnds.h>

#include <cstdlib>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

int value = 7;

void construction() {
    expect(__LINE__, "", [] { qnIntArray a; });
    expect(__LINE__, "m12 f ", [] { qnIntArray a(3); });
    expect(__LINE__, "", [] { qnIntArray a(qnIntArray_type); });
    static qnIntArray source(3);
    static qnIntArray none;
    source.setMaxLength(100);
    // Deliberate: the capacity is recorded, and memory is there for the elements in use.
    expect(__LINE__, "m12 f ", [] { qnIntArray a(source); });
    expect(__LINE__, "", [] { qnIntArray a(none); });
    static int* block = static_cast<int*>(std::malloc(8));
    expect(__LINE__, "f ", [] { qnIntArray a(4u, 8u, block); });
}

void appending() {
    static qnIntArray a;
    // Room for four more at a time.
    expect(__LINE__, "m16 ", [] { a.append(&value); });
    expect(__LINE__, "", [] {
        for (int i = 1; i < 4; ++i) a.append(&value);
    });
    expect(__LINE__, "r32 ", [] { a.append(&value); });
    // Arrays get exactly the room that they need.
    static qnIntArray three(3), two(2), none;
    expect(__LINE__, "", [] { a.append(three); });
    expect(__LINE__, "r40 ", [] { a.append(two); });
    expect(__LINE__, "", [] { a.append(none); });
    expect(__LINE__, "r56 ", [] { a.append(&value); });
}

void inserting() {
    static qnIntArray a(2), two(2), none;
    // Room for one more at a time.
    expect(__LINE__, "r12 ", [] { a.insert(&value, 1); });
    expect(__LINE__, "r16 ", [] { a.insert(&value, 4 - 1); });
    expect(__LINE__, "r32 ", [] { a.append(&value); });
    expect(__LINE__, "", [] { a.insert(&value, 0); });
    expect(__LINE__, "", [] { a.insert(two, 6); });
    expect(__LINE__, "r40 ", [] { a.insert(two, 0); });
    expect(__LINE__, "", [] { a.insert(none, 0); });
}

void resizing() {
    static qnIntArray a;
    expect(__LINE__, "m20 ", [] { a.resize(5); });
    expect(__LINE__, "r12 ", [] { a.resize(3); });
    expect(__LINE__, "", [] { a.resize(3); });
    expect(__LINE__, "r40 ", [] { a.setMaxLength(10); });
    expect(__LINE__, "", [] { a.setMaxLength(10); });
    // Deliberate: the capacity drops and the block stays.
    expect(__LINE__, "", [] { a.resize(3); });
    expect(__LINE__, "", [] { a.setMaxLength(0); });
    expect(__LINE__, "r28 ", [] { a.append(&value); });
    expect(__LINE__, "", [] { a.remove(0, 2); });
    expect(__LINE__, "r8 ", [] { a.setMaxLength(1); });
    expect(__LINE__, "f ", [] { a.resize(0); });
    expect(__LINE__, "m8 ", [] { a.setMaxLength(2); });
    expect(__LINE__, "f ", [] { a.setMaxLength(0); });
}

void takingOut() {
    static qnIntArray a(5);
    expect(__LINE__, "m8 f ", [] { std::free(a.raw_extract(1, 2)); });
    expect(__LINE__, "m20 f ", [] { std::free(a.raw_copy()); });
    expect(__LINE__, "m4 f ", [] { std::free(a.raw_head(1)); });
    expect(__LINE__, "m12 f ", [] { std::free(a.raw_tail(3)); });
    expect(__LINE__, "m4 f ", [] { std::free(a.raw_cut(4, 1)); });
    expect(__LINE__, "", [] {
        a.raw_extract(0, 0);
        a.raw_cut(0, 0);
        a.raw_head(0);
        a.raw_tail(0);
    });
    expect(__LINE__, "m8 f ", [] { a.extract(0, 2); });
    expect(__LINE__, "m8 f ", [] { a.cut(0, 2); });
    expect(__LINE__, "", [] { a.cut(0, 0); });
}

void copyThatGrows() {
    static qnIntArray source(3);
    source.setMaxLength(100);
    static qnIntArray copy(source);
    // The room that the copy only recorded is obtained when it is needed.
    expect(__LINE__, "r400 ", [] { copy.append(&value); });
    expect(__LINE__, "", [] { copy.append(&value); });
    static qnIntArray assigned;
    expect(__LINE__, "m12 ", [] { assigned = source; });
    expect(__LINE__, "r400 ", [] { assigned.insert(&value, 0); });
}

}  // namespace

int main() {
    construction();
    appending();
    inserting();
    resizing();
    takingOut();
    copyThatGrows();
    return heapWatch::failures;
}
