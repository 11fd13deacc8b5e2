#ifndef TALLY_COUNTER_H
#define TALLY_COUNTER_H

#include "WordCounts.h"

/**
 * Counts the words that it receives.
 *
 *     input   "word"  CharPtr
 */
class Counter : public qnObj {
public:
    /** `counts` must live as long as this. */
    explicit Counter(WordCounts& counts);

    const char* className() const override;

private:
    static void onWord(Counter* counter, const char* word);

    WordCounts& counts_;
};

#endif
