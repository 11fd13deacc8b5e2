#include "Event.h"

#include "EventQueue.h"
#include "core/Watch.h"

unsigned long qnET_Unknown;
unsigned long qnET_MessageEvent;

qnSequencer* qn_nextEventType;

unsigned long qnEvent::nextSequenceNumber_ = 0;

qnEvent::qnEvent(unsigned long type)
    : next(nullptr), prev(nullptr), type_(type), sequenceNumber_(++nextSequenceNumber_), queue_(nullptr) {}

qnEvent::qnEvent(const qnEvent& other)
    : qnObj(other),
      next(nullptr),
      prev(nullptr),
      type_(other.type_),
      sequenceNumber_(other.sequenceNumber_),
      queue_(nullptr) {}

qnEvent::~qnEvent() {
    leaveQueue();
    Watch::gone(this);
}

void qnEvent::leaveQueue() {
    if (queue_ != nullptr) queue_->unlink(this);
}

const char* qnEvent::className() const { return "qnEvent"; }

void qnEvent::dump(FILE* file) {
    std::fprintf(file, "Event: seq=%d type=%d\n", static_cast<int>(sequenceNumber_), static_cast<int>(type_));
}

qnInputChannel* qnEvent::getChannel() { return nullptr; }
