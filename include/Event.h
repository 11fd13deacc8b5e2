#ifndef MORVAQNDS_EVENT_H
#define MORVAQNDS_EVENT_H

#include <cstdio>

#include "Export.h"
#include "Obj.h"

class qnEventQueue;

/** Event type codes, drawn from `qn_nextEventType` by `qnInitializeToolkit`. */
extern MORVAQNDS_API unsigned long qnET_Unknown;
extern MORVAQNDS_API unsigned long qnET_MessageEvent;

/** The allocator of event type codes; a program draws codes for events of its own from it. */
extern MORVAQNDS_API qnSequencer* qn_nextEventType;

/**
 * Something that waits in the queue to be delivered.
 *
 *     class Redraw : public qnEvent {
 *     public:
 *         explicit Redraw(Window* w) : qnEvent(redrawType), window(w) {}
 *         void deliver() override { window->draw(); }
 *         ...
 *     };
 *     qn_theEventHandler->postEvent(new Redraw(window), 0);
 *
 * An event belongs to who made it until it is posted, then to the queue, which destroys it after delivery.
 */
class MORVAQNDS_API qnEvent : public qnObj {
public:
    /** Takes the next sequence number; the first event is number 1. */
    explicit qnEvent(unsigned long type);
    /** Deliberate: the same type and sequence number, for it stands for the same event. In no queue, no properties. */
    qnEvent(const qnEvent& other);
    ~qnEvent() override;

    const char* className() const override;

    virtual void deliver() = 0;
    /** Prints "Event: seq=%d type=%d" and a line end. */
    virtual void dump(FILE* file);
    /** The channel that the event is for; null when it is for none. */
    virtual qnInputChannel* getChannel();

    unsigned long getType() const { return type_; }
    unsigned long getSequenceNumber() const { return sequenceNumber_; }
    /** The queue that holds the event, or null. */
    qnEventQueue* getQueue() const { return queue_; }

    qnEvent* next;  ///< towards the back of the queue, or null
    qnEvent* prev;  ///< towards the front of the queue, or null

protected:
    /** Takes the event out of the queue that holds it, if there is one: first of all in a destructor that releases. */
    void leaveQueue();

private:
    friend class qnEventQueue;

    qnEvent& operator=(const qnEvent&);

    static unsigned long nextSequenceNumber_;

    unsigned long type_;
    unsigned long sequenceNumber_;
    qnEventQueue* queue_;
};

#endif
