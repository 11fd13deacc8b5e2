#ifndef MORVAQNDS_SEQUENCER_H
#define MORVAQNDS_SEQUENCER_H

#include "Export.h"
#include "SeqRangeArray.h"

/**
 * An allocator of small unsigned numbers: it remembers which ones are handed out as runs of consecutive numbers.
 *
 *     qnSequencer next;
 *     unsigned a = next(), b = next();         // 0 and 1
 *     next(5);                                 // 5 is taken
 *     next(); next(); next();                  // 2, 3, 4
 *     next();                                  // 6
 *
 * What is unusual: a number is never taken back, and when the first run does not start at 0 the next number is the one
 * just below it, not the smallest free one.
 */
class MORVAQNDS_API qnSequencer {
public:
    qnSequencer() {}
    virtual ~qnSequencer();

    /** A number that is not handed out yet. */
    unsigned operator()();
    /**
     * Records `number` as handed out and returns it.
     *
     * Deliberate: whether it is handed out already is not checked; a second recording adds an overlapping run.
     */
    unsigned operator()(unsigned number);

    /** The runs handed out so far, sorted by their start. */
    const qnSeqRangeArray& getRanges() const { return ranges_; }

private:
    qnSequencer(const qnSequencer&);
    qnSequencer& operator=(const qnSequencer&);

    void trymerge(unsigned index);
    void insertRun(unsigned number, unsigned index);

    qnSeqRangeArray ranges_;
};

#endif
