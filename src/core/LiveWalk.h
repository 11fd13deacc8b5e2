#ifndef MORVAQNDS_LIVEWALK_H
#define MORVAQNDS_LIVEWALK_H

#include "core/Nested.h"

/**
 * A walk over a list by index while the functions that are called on the way change the list.
 *
 *     LiveWalk walk(&connections, connections.length());
 *     unsigned i;
 *     while (walk.next(i)) call(connections[i]);
 *
 * It visits what was listed at the start, in order, each once: what leaves the list meanwhile is skipped, what is added
 * at the end is not visited. Whoever takes an element out of a list says so with `removed`; whoever destroys a list
 * that is walked says so with `gone`.
 */
class LiveWalk : public Nested<LiveWalk> {
public:
    /** `list` is any address that names the list. */
    LiveWalk(const void* list, unsigned count) : list_(list), next_(0), end_(count), listed_(false) {}

    /** Whether there is another element; `index` receives where it is now. */
    bool next(unsigned& index) {
        if (next_ >= end_) return false;
        index = next_++;
        listed_ = true;
        return true;
    }

    /** Whether the element that `next` gave is listed still. */
    bool listed() const { return listed_; }

    /** Element `index` has left the list, and those behind it have moved up. */
    static void removed(const void* list, unsigned index) {
        forEach([list, index](LiveWalk& walk) {
            if (walk.list_ != list) return;
            if (index + 1 == walk.next_) walk.listed_ = false;
            if (index < walk.next_) --walk.next_;
            if (index < walk.end_) --walk.end_;
        });
    }

    /** The list has gone. */
    static void gone(const void* list) {
        forEach([list](LiveWalk& walk) {
            if (walk.list_ != list) return;
            walk.end_ = 0;
            walk.listed_ = false;
        });
    }

private:
    const void* list_;
    unsigned next_;
    unsigned end_;
    bool listed_;
};

#endif
