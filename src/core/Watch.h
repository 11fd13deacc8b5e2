#ifndef MORVAQNDS_WATCH_H
#define MORVAQNDS_WATCH_H

#include "core/Nested.h"

/**
 * Tells whether an object survived a call that may have destroyed it.
 *
 *     Watch watch(event);
 *     event->deliver();
 *     if (watch.alive()) delete event;
 *
 * The destructor of what is watched calls `gone`.
 */
class Watch : public Nested<Watch> {
public:
    explicit Watch(const void* object) : object_(object) {}

    bool alive() const { return object_ != nullptr; }

    static void gone(const void* object) {
        forEach([object](Watch& watch) {
            if (watch.object_ == object) watch.object_ = nullptr;
        });
    }

private:
    const void* object_;
};

#endif
