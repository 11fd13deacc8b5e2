#include "Sequencer.h"

namespace {

qnSeqRange* runsOf(qnSeqRangeArray& ranges) { return ranges.elements(); }

}  // namespace

qnSequencer::~qnSequencer() {}

unsigned qnSequencer::operator()() {
    if (ranges_.length() == 0) {
        insertRun(0, 0);
        return 0;
    }

    qnSeqRange& first = *runsOf(ranges_);
    if (first.start > 0) {
        // Deliberate: the number below the first run, not the smallest free one.
        ++first.count;
        return --first.start;
    }
    unsigned number = first.start + first.count;
    ++first.count;
    trymerge(0);
    return number;
}

unsigned qnSequencer::operator()(unsigned number) {
    const unsigned n = ranges_.length();
    qnSeqRange* runs = runsOf(ranges_);
    unsigned i = 0;
    while (i < n && runs[i].start <= number) ++i;

    if (i == n) {
        insertRun(number, n);
        if (n > 0) trymerge(n - 1);
    } else if (number + 1 == runs[i].start) {
        --runs[i].start;
        ++runs[i].count;
        if (i > 0) trymerge(i - 1);
    } else if (i > 0 && number == runs[i - 1].start + runs[i - 1].count) {
        ++runs[i - 1].count;
        trymerge(i - 1);
    } else {
        insertRun(number, i);
    }
    return number;
}

/** Makes one run of run `index` and the one that follows, if they touch. */
void qnSequencer::trymerge(unsigned index) {
    if (index + 1 >= ranges_.length()) return;
    qnSeqRange* runs = runsOf(ranges_) + index;
    if (runs[0].start + runs[0].count != runs[1].start) return;
    runs[0].count += runs[1].count;
    ranges_.remove(index + 1, 1);
}

void qnSequencer::insertRun(unsigned number, unsigned index) {
    qnSeqRange run = {number, 1};
    ranges_.insert(&run, index);
}
