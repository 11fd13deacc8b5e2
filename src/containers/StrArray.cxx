#include "StrArray.h"

#include <new>

#include "core/Heap.h"
#include "serial/ReadSupport.h"

namespace {

/** Bytes of a string in an array's numbers in a stream, on every machine. */
constexpr unsigned short StreamElementSize = 8;
/** How many strings are made room for before any has arrived. */
constexpr unsigned FirstSlots = 4096;

/** A copy of `from` at `to`, which may be the same place with a string that another place owns by now. */
void copyString(const qnStr* from, qnStr* to) {
    qnStr copy(*from);
    new (to) qnStr(static_cast<qnStr&&>(copy));
}

}  // namespace

void qnStrElements::createElements(void* at, unsigned nbytes) {
    qnStr* slots = static_cast<qnStr*>(at);
    for (unsigned i = 0; i < nbytes / sizeof(qnStr); ++i) new (slots + i) qnStr(0u);
}

void qnStrElements::destroyElements(void* at, unsigned nbytes) {
    qnStr* slots = static_cast<qnStr*>(at);
    for (unsigned i = 0; i < nbytes / sizeof(qnStr); ++i) slots[i].~qnStr();
}

void qnStrElements::copyElements(const void* from, void* to, unsigned nbytes) const {
    const qnStr* source = static_cast<const qnStr*>(from);
    qnStr* target = static_cast<qnStr*>(to);
    unsigned count = nbytes / static_cast<unsigned>(sizeof(qnStr));
    if (from < to) {
        for (unsigned i = count; i > 0; --i) copyString(source + i - 1, target + i - 1);
    } else {
        for (unsigned i = 0; i < count; ++i) copyString(source + i, target + i);
    }
}

int qnStrElements::compareElements(const void* a, const void* b) const {
    return compare(*static_cast<const qnStr*>(a), *static_cast<const qnStr*>(b));
}

qnTypeObj& qnStrArray::getTypeObj() const { return qnStrArray_type; }

bool qnStrArray::xdr(qnTranscriber& transcriber) {
    if (transcriber.reading) elementSize = sizeof(qnStr);
    StreamSizes sizes;
    if (!xdrSizes(transcriber, StreamElementSize, sizes)) return false;
    if (transcriber.reading) return readStrings(transcriber, sizes.usedBytes / StreamElementSize);
    for (unsigned i = 0; i < length(); ++i) {
        if (!elements()[i].xdr(transcriber)) return false;
    }
    return true;
}

// The block grows as strings arrive. Their texts are still to come, so a block that moves is reported; where there is
// nobody to report to it does not move.
bool qnStrArray::readStrings(qnTranscriber& transcriber, unsigned count) {
    // Deliberate: an earlier block is not released; the array is taken to be new.
    data = nullptr;
    usedBytes = 0;
    bool mayMove = qnReadSupport::isGivenBy(transcriber);
    unsigned slots = mayMove && count > FirstSlots ? FirstSlots : count;
    maxBytes = slots * elementSize;
    getmem();
    for (unsigned i = 0; i < count; ++i) {
        if (i == slots) {
            slots = count - slots < slots ? count : 2 * slots;
            const void* moved = data;
            maxBytes = slots * elementSize;
            getmem();
            qnReadSupport::blockMoved(transcriber, moved, usedBytes, data);
        }
        usedBytes += elementSize;
        if (!(new (elements() + i) qnStr(qnStr_type))->xdr(transcriber)) return false;
    }
    return true;
}
