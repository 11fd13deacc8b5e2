// Transcription of arrays: the root part, the two numbers in front of the elements, and runs of plain elements.
#include <cstring>

#include "Array.h"
#include "Transcriber.h"
#include "core/Heap.h"
#include "serial/ReadSupport.h"

namespace {

/** The bytes of elements for which a mere claim in a stream is believed; more is believed as it arrives. */
constexpr unsigned BelievedBytes = 1u << 16;

}  // namespace

bool qnArray::xdr(qnTranscriber& transcriber) {
    return transcriber.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this));
}

bool qnArray::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnArray*>(object)->qnArray::xdr(transcriber);
}

qnTypeObj& qnArray::getTypeObj() const { return qnArray_type; }

bool qnArray::xdrSizes(qnTranscriber& transcriber, unsigned short streamElementSize, StreamSizes& sizes) {
    sizes.usedBytes = heap::checkedSize(std::uint64_t(length()) * streamElementSize, "qnArray::xdr");
    sizes.elementSize = streamElementSize;
    if (!transcriber.xdr(&sizes.usedBytes, 1) || !transcriber.xdr(&sizes.elementSize, 1)) return false;
    if (!transcriber.reading) return true;

    std::uint64_t memoryBytes = std::uint64_t(sizes.usedBytes) / streamElementSize * elementSize;
    if (sizes.elementSize != streamElementSize || sizes.usedBytes % streamElementSize != 0 ||
        memoryBytes > heap::MaxBytes) {
        qnFatal("format error");
    }
    return true;
}

bool qnArray::xdrPlain(qnTranscriber& transcriber, unsigned short streamElementSize, ElementRun run) {
    StreamSizes sizes;
    if (!xdrSizes(transcriber, streamElementSize, sizes)) return false;
    if (!transcriber.reading) {
        // No stale memory reaches a stream: what is spare is zero.
        backCapacity();
        if (maxBytes > usedBytes) std::memset(data + usedBytes, 0, maxBytes - usedBytes);
        return run(transcriber, data, elementSize == 0 ? 0 : maxBytes / elementSize);
    }

    // Deliberate: an earlier block is not released; the array is taken to be new.
    data = nullptr;
    unsigned claimed = sizes.usedBytes / streamElementSize * elementSize;
    unsigned step = qnReadSupport::isGivenBy(transcriber) ? BelievedBytes / elementSize * elementSize : claimed;
    unsigned arrived = 0;
    do {
        unsigned part = claimed - arrived < step ? claimed - arrived : step;
        maxBytes = usedBytes = arrived + part;
        getmem();
        if (!run(transcriber, data + arrived, part / elementSize)) return false;
        arrived += part;
        if (step <= arrived) step = arrived;
    } while (arrived < claimed);
    return true;
}
