#include "objects/ObjRelease.h"

#include <deque>
#include <new>

#include "core/Heap.h"

namespace {

constexpr unsigned MaxDepth = 1000;

unsigned depth;  // destructions inside each other

/** Objects of which the last holder has let go; this list holds them instead. Null where one is gone. */
std::deque<qnObj*>& waiting() {
    static std::deque<qnObj*>& objects = *new std::deque<qnObj*>;  // never destroyed: other destructors come here
    return objects;
}

void wait(qnObj* object) {
    try {
        waiting().push_back(object);
    } catch (const std::bad_alloc&) {
        heap::outOfMemory("qnObj::~qnObj");
    }
}

void destroy(qnObj* object) {
    ++depth;
    delete object;
    --depth;
}

void destroyWaiting(qnObj* object) {
    if (object != nullptr && --object->refCount == 0) destroy(object);
}

}  // namespace

void releaseHeld(qnObj* object) {
    if (object == nullptr) return;
    if (object->refCount != 1 || DyingObject::is(object)) {
        --object->refCount;
        return;
    }
    if (depth >= MaxDepth) {
        wait(object);
        return;
    }
    object->refCount = 0;
    destroy(object);
    if (depth + 1 != MaxDepth) return;
    // That was the innermost: what waits is destroyed at the same depth.
    while (!waiting().empty()) {
        qnObj* next = waiting().front();
        waiting().pop_front();
        destroyWaiting(next);
    }
}

DyingObject::DyingObject(const qnObj* object) : object_(object), held_(object->refCount != 0), waitedBefore_(0) {
    if (!held_) return;
    for (qnObj*& each : waiting()) {
        if (each == object) each = nullptr;
    }
    waitedBefore_ = waiting().size();
}

/** Those whom the object held may hold it: they go while it is there. */
DyingObject::~DyingObject() {
    if (!held_ || depth < MaxDepth) return;
    while (waiting().size() > waitedBefore_) {
        qnObj* last = waiting().back();
        waiting().pop_back();
        destroyWaiting(last);
    }
}
