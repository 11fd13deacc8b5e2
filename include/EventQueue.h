#ifndef MORVAQNDS_EVENTQUEUE_H
#define MORVAQNDS_EVENTQUEUE_H

#include "Event.h"
#include "Export.h"
#include "Types.h"

/**
 * A queue of events, linked through the events themselves: posting and taking cost the same however many wait.
 *
 *     qnEventQueue queue;
 *     queue.append(new Redraw(window));
 *     while (qnEvent* event = queue.get()) {
 *         event->deliver();
 *         delete event;
 *     }
 *
 * The queue owns its events and destroys those that are left. Requires: an event is in one queue at a time.
 */
class MORVAQNDS_API qnEventQueue {
public:
    qnEventQueue() : head(nullptr), tail(nullptr), count(0) {}
    ~qnEventQueue();

    /** Adds at the back. Requires: the event is in no queue. */
    void append(qnEvent* event);
    /** Adds at the front. Requires: the event is in no queue. */
    void insert(qnEvent* event);
    /** Takes the front event out; the caller owns it. Null when the queue is empty. */
    qnEvent* get();
    /** Takes an event out and destroys it. Requires: it is in this queue. */
    void remove(qnEvent* event);
    /** Whether the event is in this queue; looks from the front. */
    qnBool contains(const qnEvent* event) const;

    qnEvent* head;   ///< the front event, or null
    qnEvent* tail;   ///< the back event, or null
    unsigned count;  ///< events

private:
    friend class qnEvent;

    qnEventQueue(const qnEventQueue&);
    qnEventQueue& operator=(const qnEventQueue&);

    bool admit(qnEvent* event, const char* operation);
    void unlink(qnEvent* event);
};

#endif
