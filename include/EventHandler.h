#ifndef MORVAQNDS_EVENTHANDLER_H
#define MORVAQNDS_EVENTHANDLER_H

#include "EventQueue.h"
#include "Export.h"
#include "Obj.h"
#include "Types.h"

/**
 * The process's event queue, with the ways in and out of it. One instance, `qn_theEventHandler`, is made by
 * `qnInitializeToolkit` and never destroyed.
 *
 *     qn_theEventHandler->postEvent(new Redraw(window), 0);
 *     qn_theEventHandler->distributeEvents();               // the event loop does this in every cycle
 */
class MORVAQNDS_API qnEventHandler : public qnEventQueue {
public:
    typedef qnBool (*Predicate)(qnEvent* event, void* argument);

    /** Hands the event to the queue: at the front if `front` is set, else at the back. */
    void postEvent(qnEvent* event, qnBool front);
    /**
     * Sends a box on an output, in its order of connections; see qnObj::qnSendFlags. It takes charge of the box: after
     * an immediate send, and when nothing is connected, a box that nobody holds is destroyed.
     *
     * An input that wants only the latest value loses the message that still waits for it, whatever the mode.
     *
     * A connection that ends during the send gets nothing more of it; one that is made meanwhile waits for the next.
     */
    void postMessage(qnOutputChannel* output, qnData* box, qnObj::qnSendFlags mode);
    /**
     * Delivers and destroys as many events from the front as the queue holds at the start. What is posted at the back
     * meanwhile waits; what is posted at the front is taken, in place of another one.
     */
    void distributeEvents();
    /** Removes and destroys every event for which `predicate(event, argument)` is true. */
    void removeEvents(Predicate predicate, void* argument);
    /** Removes the messages that are addressed to `channel` itself, not those for a converter in front of it. */
    void removeMessageEvents(qnInputChannel* channel);
};

/**
 * A predicate for `removeEvents`: whether the event is a message for the input channel at `channel`. A message that it
 * accepts is no longer the channel's `pending`.
 */
MORVAQNDS_API qnBool zapMessageEvents(qnEvent* event, void* channel);

/** The process's event handler; null until `qnInitializeToolkit`. */
extern MORVAQNDS_API qnEventHandler* qn_theEventHandler;

#endif
