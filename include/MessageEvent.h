#ifndef MORVAQNDS_MESSAGEEVENT_H
#define MORVAQNDS_MESSAGEEVENT_H

#include "Event.h"

/**
 * A boxed value on its way to an input channel, or to the converter in front of one. It holds both.
 *
 *     qn_theEventHandler->postEvent(new qnMessageEvent(input, new qnIntData(7)), 0);
 */
class MORVAQNDS_API qnMessageEvent : public qnEvent {
public:
    qnMessageEvent(qnInputChannel* channel, qnData* data);
    qnMessageEvent(const qnMessageEvent& other);
    ~qnMessageEvent() override;

    const char* className() const override;
    /**
     * Clears the channel's `pending`, whichever message that is, and hands the value to the channel's function. The
     * channel and the value live until that returns, whatever it does to this event.
     */
    void deliver() override;
    qnInputChannel* getChannel() override;

    /** The value; the event holds it. */
    qnData* getData() const { return data_; }

private:
    qnMessageEvent& operator=(const qnMessageEvent&);

    qnInputChannel* channel_;
    qnData* data_;
};

#endif
