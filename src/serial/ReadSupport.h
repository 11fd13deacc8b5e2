#ifndef MORVAQNDS_READSUPPORT_H
#define MORVAQNDS_READSUPPORT_H

#include <cstddef>

#include "Transcriber.h"

/**
 * What the library's own classes tell a reader that completes pointers later, beyond the transcriber's operations.
 * Other transcribers have none, and the calls do nothing.
 */
class qnReadSupport {
public:
    /**
     * Whether the transcriber has read support: it is told of blocks that move, and what it reads is a mere claim until
     * it has arrived. Other transcribers get blocks that stay where they are, and each run in one call.
     */
    static bool isGivenBy(const qnTranscriber& transcriber) { return transcriber.readSupport_ != nullptr; }

    /**
     * The next pointer to an array of chars is a string's text: the string owns the array alone and relies on a NUL at
     * its end.
     */
    static void expectText(qnTranscriber& transcriber) {
        if (transcriber.readSupport_ != nullptr) transcriber.readSupport_->textFollows();
    }

    /** A block of `nbytes` bytes with pointer variables that may still wait has moved, byte for byte. */
    static void blockMoved(qnTranscriber& transcriber, const void* from, std::size_t nbytes, void* to) {
        if (transcriber.readSupport_ != nullptr) transcriber.readSupport_->variablesMoved(from, nbytes, to);
    }

    /**
     * Whether `nbuckets` more buckets of tables are believed, although the entries that have arrived do not make them
     * likely. A graph has a limit.
     */
    static bool believesBuckets(qnTranscriber& transcriber, unsigned nbuckets) {
        return transcriber.readSupport_ == nullptr || transcriber.readSupport_->takeBuckets(nbuckets);
    }

protected:
    virtual ~qnReadSupport() {}

    void supportReading(qnTranscriber& transcriber) { transcriber.readSupport_ = this; }

    virtual bool takeBuckets(unsigned nbuckets) = 0;
    virtual void textFollows() = 0;
    virtual void variablesMoved(const void* from, std::size_t nbytes, void* to) = 0;
};

#endif
