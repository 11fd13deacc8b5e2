#ifndef MORVAQNDS_OBJRELEASE_H
#define MORVAQNDS_OBJRELEASE_H

#include "Obj.h"
#include "core/Nested.h"

/**
 * Lets go of an object that a property held. As `qnRelease`, except that
 *
 * - chains of objects that hold each other do not take the stack for each object: from a hundred destructions inside
 *   each other on, further objects wait until the innermost one is over;
 * - an object that is being destroyed although it was held is not destroyed again by those who held it.
 */
void releaseHeld(qnObj* object);

/** Says, in the destructor of an object that was held still, that its destruction is under way. */
class HeldObjectDies : public Nested<HeldObjectDies> {
public:
    explicit HeldObjectDies(const qnObj* object) : object_(object) {}

    static bool isUnderWay(const qnObj* object) {
        bool found = false;
        forEach([object, &found](const HeldObjectDies& dying) { found = found || dying.object_ == object; });
        return found;
    }

private:
    const qnObj* object_;
};

#endif
