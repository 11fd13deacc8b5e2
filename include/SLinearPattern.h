#ifndef MORVAQNDS_SLINEARPATTERN_H
#define MORVAQNDS_SLINEARPATTERN_H

#include "TextPattern.h"

class qnStr;

/**
 * A literal string as a text pattern, found byte for byte.
 *
 *     qnSLinearPattern needle("abc");
 *     int start, end;
 *     needle.bracketBuffer("xxabcxx", 7, start, end);  // 2 and 5
 *
 * Unusual:
 * - Deliberate: the empty pattern is found at 0 in any buffer, as it matches everywhere; its end is 0 too.
 * - Pattern and text may hold any bytes, NUL included; but a pattern passed with a length of 0 is taken up to its NUL.
 *
 * Cost: Horspool's algorithm. A table of 256 distances is built once for the pattern and lets a search skip up to as
 * many bytes as the pattern has. A search is never slower than that table alone makes it: where bytes can be compared
 * many at a time and the table skips little, they are. A search through a text that almost matches everywhere turns to
 * a method whose time is linear.
 */
class MORVAQNDS_API qnSLinearPattern : public qnTextPattern {
public:
    /** Looks for the first `length` bytes of `pattern`; 0 means up to its NUL. Null is the empty text. */
    qnSLinearPattern(const char* pattern, unsigned length = 0);
    /** Looks for all of `pattern`, NULs included. */
    qnSLinearPattern(const qnStr& pattern);
    ~qnSLinearPattern() override;

    /** Index of the first match in the `length` bytes of `buffer`; -1 without one. */
    int findBuffer(const char* buffer, unsigned length) const override;
    /** Index just past what `findBuffer` finds; 0 without a match. */
    int findEndBuffer(const char* buffer, unsigned length) const override;
    /** Both at once: -1 and 0 without a match. */
    void bracketBuffer(const char* buffer, unsigned length, int& start, int& end) const override;

private:
    void constructor(const char* pattern, unsigned length);

    unsigned skip_[256];  // how far the alignment may move when this byte stands under its last position
    char* pattern_;       // a heap copy without NUL; null when empty
    unsigned length_;     // bytes of the pattern
};

#endif
