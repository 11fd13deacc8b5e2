#include "InputChannel.h"

#include "Converter.h"
#include "EventHandler.h"
#include "OutputChannel.h"
#include "core/Heap.h"
#include "objects/PointerList.h"

qnInputChannel::qnInputChannel(unsigned short type, void* theClosure, qnDeliverFunc fn, qnBool latestOnlyFlag)
    : closure(theClosure),
      deliverFunc(fn),
      flagsAndType_((static_cast<unsigned>(type) << TypeShift) | (latestOnlyFlag != 0 ? LatestOnly : 0u)),
      pending(nullptr),
      refCount(0),
      outputs_(nullptr) {}

qnInputChannel::~qnInputChannel() {
    delete outputs_;
    if (flagsAndType_ & OwnsClosure) {
        std::free(closure);
    } else if (flagsAndType_ & IsConverter) {
        qnRelease(static_cast<qnInputChannel*>(closure));
    }
}

void qnInputChannel::add(qnOutputChannel* output) {
    if (outputs_ == nullptr) outputs_ = heap::create<qnVoidPtrArray>("qnInputChannel::add");
    pointers::append(*outputs_, output);
}

void qnInputChannel::remove(qnOutputChannel* output) {
    if (outputs_ == nullptr) return;
    const unsigned where = pointers::find(*outputs_, output);
    if (where == pointers::NotFound) qnFatal("ic/oc connections busted");
    outputs_->remove(where, 1);
}

void qnInputChannel::disconnect() {
    if (getNumberOfOutputs() == 0) return;

    ++refCount;  // the last connection may be the last holder
    while (getNumberOfOutputs() != 0) {
        const unsigned before = getNumberOfOutputs();
        static_cast<qnOutputChannel*>(outputs_->elements()[0])->remove(this);
        if (getNumberOfOutputs() >= before) qnFatal("ic/oc connections busted");
    }
    qnRelease(this);
}

void qnInputChannel::flush() {
    const bool held = refCount != 0;
    if (held) ++refCount;  // a message may be the last holder
    qn_theEventHandler->removeMessageEvents(this);
    pending = nullptr;
    if (held) qnRelease(this);
}

void qnDestroy(qnInputChannel* channel) {
    // A converter may be the last holder of another one, and so on: a chain of any length is released in a loop.
    do {
        qnInputChannel* held = nullptr;
        // Channels have no virtual destructor: each is destroyed as what it is.
        if (channel->isConverter()) {
            held = static_cast<qnInputChannel*>(channel->closure);
            channel->closure = nullptr;
            delete static_cast<qnConverter*>(channel);
        } else {
            delete channel;
        }
        channel = held;
    } while (channel != nullptr && --channel->refCount == 0);
}
