#include "MessageEvent.h"

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
    if (channel_ != nullptr && channel_->pending == this) channel_->pending = nullptr;
    qnRelease(channel_);
    qnRelease(data_);
}

const char* qnMessageEvent::className() const { return "qnMessageEvent"; }

void qnMessageEvent::deliver() {
    // The call may destroy this event, so the two that it uses are held here too.
    qnInputChannel* channel = channel_;
    qnData* data = data_;
    qnRetain(channel);
    qnRetain(data);
    channel->pending = nullptr;
    data->deliverTo(channel->deliverFunc, channel->closure);
    qnRelease(data);
    qnRelease(channel);
}

qnInputChannel* qnMessageEvent::getChannel() { return channel_; }
