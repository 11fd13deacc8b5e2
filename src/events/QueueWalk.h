#ifndef MORVAQNDS_QUEUEWALK_H
#define MORVAQNDS_QUEUEWALK_H

#include "EventQueue.h"
#include "core/Nested.h"

/**
 * A walk over a queue from the front while what is called on the way takes events out of it. An event's successor is
 * noted before the event is looked at; when either leaves the queue, the walk knows.
 */
class QueueWalk : public Nested<QueueWalk> {
public:
    explicit QueueWalk(qnEventQueue& queue) : queue_(&queue), current_(nullptr), next_(queue.head) {}

    /** The next event, or null at the end. */
    qnEvent* advance() {
        current_ = next_;
        if (current_ != nullptr) next_ = current_->next;
        return current_;
    }

    /** The event that `advance` gave; null if it has left the queue since. */
    qnEvent* current() const { return current_; }

    /** An event leaves its queue; it is linked still. */
    static void leaving(const qnEvent* event) {
        forEach([event](QueueWalk& walk) {
            if (walk.current_ == event) walk.current_ = nullptr;
            if (walk.next_ == event) walk.next_ = event->next;
        });
    }

    /** A queue goes. */
    static void gone(const qnEventQueue* queue) {
        forEach([queue](QueueWalk& walk) {
            if (walk.queue_ == queue) walk.current_ = walk.next_ = nullptr;
        });
    }

private:
    const qnEventQueue* queue_;
    qnEvent* current_;
    qnEvent* next_;
};

#endif
