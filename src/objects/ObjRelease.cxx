#include "objects/ObjRelease.h"

#include <deque>
#include <new>

#include "core/Heap.h"

namespace {

constexpr unsigned MaxDepth = 100;

unsigned depth;  // destructions inside each other

/** Objects of which the last holder has let go; this list holds them instead. */
std::deque<qnObj*>& waiting() {
    static std::deque<qnObj*>& objects = *new std::deque<qnObj*>;  // never destroyed: other destructors come here
    return objects;
}

void destroy(qnObj* object) {
    ++depth;
    delete object;
    --depth;
}

}  // namespace

void releaseHeld(qnObj* object) {
    if (object == nullptr) return;
    if (depth == MaxDepth && object->refCount == 1 && !HeldObjectDies::isUnderWay(object)) {
        try {
            waiting().push_back(object);
        } catch (const std::bad_alloc&) {
            heap::outOfMemory("qnObj::~qnObj");
        }
        return;
    }
    if (--object->refCount != 0 || HeldObjectDies::isUnderWay(object)) return;
    destroy(object);
    if (depth + 1 != MaxDepth) return;
    // That was the innermost: what waits is destroyed at the same depth.
    while (!waiting().empty()) {
        qnObj* next = waiting().front();
        waiting().pop_front();
        if (--next->refCount == 0) destroy(next);
    }
}
