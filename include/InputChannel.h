#ifndef MORVAQNDS_INPUTCHANNEL_H
#define MORVAQNDS_INPUTCHANNEL_H

#include "Data.h"
#include "Export.h"
#include "Types.h"
#include "VoidPtrArray.h"

class qnMessageEvent;
class qnOutputChannel;

/**
 * Where values arrive: a function, the closure that is its first argument, and a data type.
 *
 *     qnInputChannel* in = object->addInput("level", object, &Meter::onLevel);       // see qnObj
 *     in->flush();                                     // forget what is queued for it
 *     in->disconnect();                                // nobody sends to it any more
 *
 * An input is held, one count each, by the object that has it under a name, by every connection that leads to it, by
 * every queued message for it, and by the converter in front of it. The last holder that lets go destroys it.
 *
 * With `latestOnly` a new message for the input replaces the one that waits in the queue. (One that is sent by the end
 * of a value that is replaced is not replaced itself.)
 */
class MORVAQNDS_API qnInputChannel {
public:
    /** Any `latestOnly` but 0 counts as 1. The closure is not owned. */
    qnInputChannel(unsigned short type, void* closure, qnDeliverFunc fn, qnBool latestOnly);
    /** Requires: nobody holds it. */
    ~qnInputChannel();

    unsigned short getType() const { return static_cast<unsigned short>(flagsAndType_ >> TypeShift); }
    qnBool latestOnly() const { return (flagsAndType_ & LatestOnly) != 0; }
    /** Whether this is a converter in front of an input; its closure is that input. */
    qnBool isConverter() const { return (flagsAndType_ & IsConverter) != 0; }

    /** Lists `output` as connected, once per call. Used by qnOutputChannel, which holds the other end. */
    void add(qnOutputChannel* output);
    /**
     * Strikes `output` off the list once. Without any list it does nothing; a list that does not have it ends the
     * process: "ic/oc connections busted".
     */
    void remove(qnOutputChannel* output);
    /** Ends every connection to this input. */
    void disconnect();
    /**
     * Removes every queued message for this channel. Deliberate: messages for a converter in front of it are addressed
     * to the converter. They stay and will be delivered, even when the channel has left its object by then.
     */
    void flush();

    /** Connections listed: an output counts once for each. */
    unsigned getNumberOfOutputs() const { return outputs_ == nullptr ? 0 : outputs_->length(); }

    /** Makes `closure`, a block from `malloc`, this channel's own: it is freed with the channel. */
    void ownClosure() { flagsAndType_ |= OwnsClosure; }

    void* closure;              ///< first argument of `deliverFunc`
    qnDeliverFunc deliverFunc;  ///< receives the values

private:
    friend class qnConverter;

    enum : unsigned { LatestOnly = 1, IsConverter = 2, TypeShift = 2, OwnsClosure = 1u << 31 };

    qnInputChannel(const qnInputChannel&);
    qnInputChannel& operator=(const qnInputChannel&);

    unsigned flagsAndType_;

public:
    qnMessageEvent* pending;  ///< the message that waits while `latestOnly` is set, or null
    unsigned refCount;        ///< holders

private:
    qnVoidPtrArray* outputs_;
};

/** Destroys an input or a converter. */
MORVAQNDS_API void qnDestroy(qnInputChannel* channel);

/**
 * Takes a holder away from an input or converter and destroys it when that was the last one; true when it was
 * destroyed. Null is ignored.
 */
inline bool qnRelease(qnInputChannel* channel) {
    if (channel == nullptr || --channel->refCount != 0) return false;
    qnDestroy(channel);
    return true;
}

#endif
