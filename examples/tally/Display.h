#ifndef TALLY_DISPLAY_H
#define TALLY_DISPLAY_H

#include "WordCounts.h"

/**
 * Prints the running table on standard output, each with an empty line behind it.
 *
 *     input   "show"    void     prints the table as it is now
 *     output  "failed"  CharPtr  what is wrong with standard output
 */
class Display : public qnObj {
public:
    /** `counts` must live as long as this. */
    Display(WordCounts& counts, unsigned top);

    const char* className() const override;

private:
    static void onShow(Display* display);

    WordCounts& counts_;
    unsigned top_;
    qnOutputChannel* failed_;
};

#endif
