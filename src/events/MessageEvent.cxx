#include "MessageEvent.h"

#include "core/Nested.h"

namespace {

/**
 * A delivery under way. The event holds the channel and the box for it; an event that is destroyed meanwhile leaves
 * what it holds to its outermost delivery. Nothing is counted twice, so that programs see the holders that there are.
 */
class Delivery : public Nested<Delivery> {
public:
    explicit Delivery(const qnMessageEvent* event) : event_(event), channel_(nullptr), data_(nullptr) {}
    ~Delivery() {
        event_ = nullptr;
        qnRelease(channel_);
        qnRelease(data_);
    }

    /** Whether a delivery has taken over what a dying event holds. */
    static bool inherit(const qnMessageEvent* event, qnInputChannel* channel, qnData* data) {
        Delivery* heir = nullptr;
        forEach([event, &heir](Delivery& delivery) {
            if (delivery.event_ != event) return;
            delivery.event_ = nullptr;
            heir = &delivery;
        });
        if (heir == nullptr) return false;
        heir->channel_ = channel;
        heir->data_ = data;
        return true;
    }

private:
    const qnMessageEvent* event_;  // null when it has gone: another one may be made in its place
    qnInputChannel* channel_;
    qnData* data_;
};

}  // namespace

qnMessageEvent::qnMessageEvent(qnInputChannel* channel, qnData* data)
    : qnEvent(qnET_MessageEvent), channel_(channel), data_(data) {
    qnRetain(channel_);
    qnRetain(data_);
}

qnMessageEvent::qnMessageEvent(const qnMessageEvent& other)
    : qnEvent(other), channel_(other.channel_), data_(other.data_) {
    qnRetain(channel_);
    qnRetain(data_);
}

qnMessageEvent::~qnMessageEvent() {
    leaveQueue();
    if (channel_ != nullptr && channel_->pending == this) channel_->pending = nullptr;
    if (Delivery::inherit(this, channel_, data_)) return;
    qnRelease(channel_);
    qnRelease(data_);
}

const char* qnMessageEvent::className() const { return "qnMessageEvent"; }

void qnMessageEvent::deliver() {
    Delivery delivery(this);
    qnInputChannel* channel = channel_;
    channel->pending = nullptr;  // Deliberate: whichever message that is
    data_->deliverTo(channel->deliverFunc, channel->closure);
}

qnInputChannel* qnMessageEvent::getChannel() { return channel_; }
