#include "EventQueue.h"

#include "Checked.h"
#include "core/Watch.h"
#include "events/QueueWalk.h"

qnEventQueue::~qnEventQueue() {
    QueueWalk::gone(this);
    Watch::gone(this);
    while (qnEvent* event = get()) delete event;
}

/** Whether an event may be linked into this queue: it must be in none. */
bool qnEventQueue::admit(qnEvent* event, const char* operation) {
    static_cast<void>(operation);
    MORVAQNDS_REQUIRE(event != nullptr, "qnEventQueue::%s: no event", operation);
    MORVAQNDS_REQUIRE(event->queue_ == nullptr, "qnEventQueue::%s: event %lu is in a queue already", operation,
                      event->sequenceNumber_);
    if (event->queue_ != nullptr) return false;
    event->queue_ = this;
    ++count;
    return true;
}

void qnEventQueue::append(qnEvent* event) {
    if (!admit(event, "append")) return;
    event->next = nullptr;
    event->prev = tail;
    (tail == nullptr ? head : tail->next) = event;
    tail = event;
}

void qnEventQueue::insert(qnEvent* event) {
    if (!admit(event, "insert")) return;
    event->prev = nullptr;
    event->next = head;
    (head == nullptr ? tail : head->prev) = event;
    head = event;
}

qnEvent* qnEventQueue::get() {
    qnEvent* event = head;
    if (event != nullptr) unlink(event);
    return event;
}

void qnEventQueue::remove(qnEvent* event) {
    MORVAQNDS_REQUIRE(event->queue_ == this, "qnEventQueue::remove: event %lu is not in this queue",
                      event->sequenceNumber_);
    if (event->queue_ != this) return;
    unlink(event);
    delete event;
}

qnBool qnEventQueue::contains(const qnEvent* event) const {
    for (const qnEvent* each = head; each != nullptr; each = each->next) {
        if (each == event) return 1;
    }
    return 0;
}

void qnEventQueue::unlink(qnEvent* event) {
    QueueWalk::leaving(event);
    (event->prev == nullptr ? head : event->prev->next) = event->next;
    (event->next == nullptr ? tail : event->next->prev) = event->prev;
    event->next = nullptr;
    event->prev = nullptr;
    event->queue_ = nullptr;
    --count;
}
