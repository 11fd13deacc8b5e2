#ifndef TALLY_COUNTER_H
#define TALLY_COUNTER_H

#include "WordCounts.h"

/**
 * Counts the words that it receives; with a pattern, only those in which it is found.
 *
 *     input   "word"  CharPtr
 */
class Counter : public qnObj {
public:
    /** Both must live as long as this; the pattern may be null. */
    Counter(WordCounts& counts, const qnTextPattern* only);

    const char* className() const override;

private:
    static void onWord(Counter* counter, const char* word);

    WordCounts& counts_;
    const qnTextPattern* only_;
};

#endif
