#include "OutputChannel.h"

#include "Converter.h"
#include "Fatal.h"
#include "core/Heap.h"
#include "core/LiveWalk.h"
#include "objects/PointerList.h"

namespace {

/** The input at the end of a connection, behind any converters. */
qnInputChannel* endOf(qnInputChannel* entry) {
    while (entry->isConverter() && entry->closure != nullptr) entry = static_cast<qnInputChannel*>(entry->closure);
    return entry;
}

}  // namespace

qnOutputChannel::~qnOutputChannel() {
    LiveWalk::gone(this);
    const unsigned n = getNumberOfConnections();
    for (unsigned i = 0; i < n; ++i) {
        qnInputChannel* entry = (*this)[i];
        endOf(entry)->remove(this);
        qnRelease(entry);
    }
    delete connections_;
}

void qnOutputChannel::add(qnInputChannel* input) {
    input->add(this);

    // Deliberate: an input for signals takes values of every type as they are.
    qnInputChannel* entry = input;
    if (input->getType() != type_ && input->getType() != qnDT_void) {
        qnConverter* converter = qnConverter::findConverter(type_, input->getType());
        if (converter == nullptr) qnFatal("Can't convert from %d to %d", type_, input->getType());
        converter->splice(input);
        entry = converter;
    }

    qnRetain(entry);
    if (connections_ == nullptr) connections_ = heap::create<qnVoidPtrArray>("qnOutputChannel::add");
    pointers::append(*connections_, entry);
}

void qnOutputChannel::remove(qnInputChannel* input) {
    const unsigned where = find(input);
    if (where == pointers::NotFound) return;
    qnInputChannel* entry = (*this)[where];
    connections_->remove(where, 1);
    LiveWalk::removed(this, where);
    input->remove(this);
    qnRelease(entry);
}

unsigned qnOutputChannel::find(const qnInputChannel* input) const {
    const unsigned n = getNumberOfConnections();
    for (unsigned i = 0; i < n; ++i) {
        if (endOf((*this)[i]) == input) return i;
    }
    return pointers::NotFound;
}
