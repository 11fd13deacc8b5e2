#include "EventHandler.h"

#include "Checked.h"
#include "MessageEvent.h"
#include "core/Heap.h"
#include "core/LiveWalk.h"
#include "core/Watch.h"
#include "events/Post.h"
#include "events/QueueWalk.h"

qnEventHandler* qn_theEventHandler;

namespace {

/** Drops the message that still waits for an input which wants only the latest value. */
void dropPending(qnEventHandler& handler, qnInputChannel& input) {
    qnMessageEvent* pending = input.pending;
    input.pending = nullptr;
    // One that was taken out of the queue belongs to whoever took it.
    if (pending->getQueue() == &handler) handler.remove(pending);
}

/**
 * Calls the function of a connection. The call may end the connection: a converter is held, because its function may
 * come back to it, while an input is not looked at again.
 */
inline void deliverNow(qnData& box, qnInputChannel& entry) {
    if (!entry.isConverter()) {
        box.deliverTo(entry.deliverFunc, entry.closure);
        return;
    }
    qnRetain(&entry);
    box.deliverTo(entry.deliverFunc, entry.closure);
    qnRelease(&entry);
}

/** Serves the first `n` connections of an output. What is called on the way may end any of them, and the output. */
void postToEach(qnEventHandler& handler, qnOutputChannel& output, unsigned n, qnData& box, qnObj::qnSendFlags mode) {
    LiveWalk walk(&output, n);
    unsigned i;
    while (walk.next(i)) {
        qnInputChannel* entry = output[i];
        if (entry->latestOnly() && entry->pending != nullptr) {
            qnRetain(entry);
            dropPending(handler, *entry);
            const bool listed = walk.listed();
            qnRelease(entry);
            // The end of the box that was dropped may have ended the connection: who received there may be gone.
            if (!listed) continue;
        }
        if (mode == qnObj::qnSF_Immediate) {
            deliverNow(box, *entry);
        } else if (mode == qnObj::qnSF_Queued || mode == qnObj::qnSF_Urgent) {
            qnMessageEvent* event = heap::create<qnMessageEvent>("qnEventHandler::postMessage", entry, &box);
            handler.postEvent(event, mode == qnObj::qnSF_Urgent);
            if (entry->latestOnly()) entry->pending = event;
        }
        // Deliberate: with any other mode nothing is done for the entry, and the box is lost.
    }
}

}  // namespace

void qnEventHandler::postEvent(qnEvent* event, qnBool front) {
    if (front) {
        insert(event);
    } else {
        append(event);
    }
}

void qnEventHandler::postMessage(qnOutputChannel* output, qnData* box, qnObj::qnSendFlags mode) {
    MORVAQNDS_REQUIRE(output != nullptr, "qnEventHandler::postMessage: no output");
    MORVAQNDS_REQUIRE(box != nullptr, "qnEventHandler::postMessage: no box");
    postBox(*this, output, box, mode);
}

void postBox(qnEventHandler& handler, qnOutputChannel* output, qnData* box, qnObj::qnSendFlags mode) {
    const unsigned n = output->getNumberOfConnections();
    if (n == 0) {
        if (box->refCount == 0) delete box;
        return;
    }

    ++box->refCount;  // the last message that has the box may be dropped on the way
    if (n == 1 && mode == qnObj::qnSF_Immediate && !(*output)[0]->latestOnly()) {
        deliverNow(*box, *(*output)[0]);  // nothing follows: there is no need to know what becomes of the output
    } else {
        postToEach(handler, *output, n, *box, mode);
    }

    const bool lost = mode != qnObj::qnSF_Immediate && mode != qnObj::qnSF_Queued && mode != qnObj::qnSF_Urgent;
    if (--box->refCount == 0 && !lost) delete box;
}

void qnEventHandler::distributeEvents() {
    const Watch self(this);
    for (unsigned n = count; n > 0 && self.alive(); --n) {
        qnEvent* event = get();
        if (event == nullptr) return;
        Watch watch(event);
        event->deliver();
        // An event that posted itself again is the queue's, and one may have been destroyed on the way.
        if (watch.alive() && event->getQueue() == nullptr) delete event;
    }
}

void qnEventHandler::removeEvents(Predicate predicate, void* argument) {
    QueueWalk walk(*this);
    while (qnEvent* event = walk.advance()) {
        // The predicate may have taken the event out itself.
        if (predicate(event, argument) && walk.current() == event) remove(event);
    }
}

void qnEventHandler::removeMessageEvents(qnInputChannel* channel) { removeEvents(zapMessageEvents, channel); }

qnBool zapMessageEvents(qnEvent* event, void* channel) {
    if (event->getType() != qnET_MessageEvent || event->getChannel() != channel) return 0;
    qnInputChannel* input = static_cast<qnInputChannel*>(channel);
    if (input != nullptr && input->pending == event) input->pending = nullptr;
    return 1;
}
