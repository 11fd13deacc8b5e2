#ifndef MORVAQNDS_SEQRANGEARRAY_H
#define MORVAQNDS_SEQRANGEARRAY_H

#include "TypedArray.h"

/** A run of consecutive numbers: `count` of them from `start`. */
struct qnSeqRange {
    unsigned start;
    unsigned count;
};

/**
 * An array of sequence ranges, for the number sequencer.
 *
 *     qnSeqRange run = {0, 12};       // 0 to 11
 *     qnSeqRangeArray ranges;
 *     ranges.append(&run);
 */
class MORVAQNDS_API qnSeqRangeArray : public qnTypedArray<qnSeqRangeArray, qnSeqRange> {
public:
    using qnTypedArray<qnSeqRangeArray, qnSeqRange>::qnTypedArray;
    const char* className() const override;
};

#endif
