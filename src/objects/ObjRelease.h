#ifndef MORVAQNDS_OBJRELEASE_H
#define MORVAQNDS_OBJRELEASE_H

#include <cstddef>

#include "Obj.h"
#include "core/Nested.h"

/**
 * Lets go of an object that a property held. As `qnRelease`, except that
 *
 * - chains of objects that hold each other do not take the stack for each object: from a thousand destructions inside
 *   each other on, further objects wait until the innermost one is over;
 * - an object whose destruction is under way is not destroyed again, whoever held it.
 */
void releaseHeld(qnObj* object);

/** Says, in the destructor of an object, that its destruction is under way. */
class DyingObject : public Nested<DyingObject> {
public:
    explicit DyingObject(const qnObj* object);
    ~DyingObject();

    static bool is(const qnObj* object) {
        bool found = false;
        forEach([object, &found](const DyingObject& dying) { found = found || dying.object_ == object; });
        return found;
    }

private:
    const qnObj* object_;
    bool held_;  // it is destroyed although somebody holds it, who may be held by it
    std::size_t waitedBefore_;
};

#endif
