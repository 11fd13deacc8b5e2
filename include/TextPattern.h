#ifndef MORVAQNDS_TEXTPATTERN_H
#define MORVAQNDS_TEXTPATTERN_H

#include "Export.h"

/**
 * Something that can be found in a buffer of text: the common face of regular expressions (RegEx.h) and literal strings
 * (SLinearPattern.h).
 *
 *     std::unique_ptr<qnTextPattern> pattern;
 *     if (qnIsRegEx(wanted)) pattern.reset(new qnRegEx(wanted));
 *     else pattern.reset(new qnSLinearPattern(wanted));
 *     int start, end;
 *     pattern->bracketBuffer(text, length, start, end);  // start < 0: not found
 *
 * Unusual:
 * - Deliberate: an end of 0 means "none" as well as "an empty match at the start"; only the start tells the two apart.
 * - Positions are ints, so only the first 2^31 - 1 bytes of a buffer are searched.
 *
 * A pattern is made once and used for any number of buffers. It cannot be copied.
 */
class MORVAQNDS_API qnTextPattern {
public:
    qnTextPattern(const qnTextPattern&) = delete;
    qnTextPattern& operator=(const qnTextPattern&) = delete;

    virtual ~qnTextPattern();

    /** Index of the first byte of the first match in the `length` bytes of `buffer`; negative when there is none. */
    virtual int findBuffer(const char* buffer, unsigned length) const = 0;
    /** Index just past the first match; 0 when there is none. */
    virtual int findEndBuffer(const char* buffer, unsigned length) const = 0;
    /** Both at once: `start` as `findBuffer` and `end` as `findEndBuffer` answer. */
    virtual void bracketBuffer(const char* buffer, unsigned length, int& start, int& end) const = 0;

protected:
    qnTextPattern() : reserved(0) {}

    int reserved;  ///< always 0
};

#endif
