#ifndef MORVAQNDS_RCOBJ_H
#define MORVAQNDS_RCOBJ_H

#include <utility>

#include "Export.h"

/**
 * The reference-counted root: streams, transcribers and every serialisable object derive from it.
 *
 *     qnStdioStream* stream = new qnStdioStream("state.qn", qnStream::Read, 0);
 *     qnRetain(stream);                    // the first holder: the count goes from 0 to 1
 *     ...
 *     if (qnRelease(stream)) { ... }       // the last holder: the object is destroyed
 *
 * An object is born with count 0 and belongs to nobody; whoever takes it retains it. Counts are plain integers: an
 * object and its holders live on one thread.
 *
 * Deliberate: the test for destruction is made on the unsigned result, so releasing an object whose count is already 0
 * wraps the count to 4294967295 and leaves the object alive. An object that lives on the stack or inside another one
 * may therefore be lent to code that retains and releases it unevenly without being destroyed under its owner.
 */
class MORVAQNDS_API qnRCObj {
public:
    qnRCObj() : refCount(0) {}

    /** Copies nothing: a copy is a new object that nobody holds. */
    qnRCObj(const qnRCObj&) : refCount(0) {}

    /** Leaves the count alone: the holders of the target hold it still. */
    qnRCObj& operator=(const qnRCObj&) { return *this; }

    virtual ~qnRCObj();

    unsigned refCount;  ///< holders of this object
};

/** Adds a holder to anything that has a `refCount`. A null pointer is ignored. */
template <class T>
inline decltype(static_cast<void>(std::declval<T&>().refCount)) qnRetain(T* object) {
    if (object != nullptr) ++object->refCount;
}

/**
 * Takes a holder away from anything that has a `refCount` and deletes it when the count becomes exactly 0.
 * Returns true when it was destroyed. A null pointer is ignored (false).
 */
template <class T>
inline decltype(static_cast<void>(std::declval<T&>().refCount), true) qnRelease(T* object) {
    if (object == nullptr || --object->refCount != 0) return false;
    delete object;
    return true;
}

#endif
