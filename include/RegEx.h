#ifndef MORVAQNDS_REGEX_H
#define MORVAQNDS_REGEX_H

#include "TextPattern.h"

class qnStr;
struct regexp;

/**
 * A regular expression as a text pattern. The language is that of `qnregcomp`; see RegExp.h.
 *
 *     qnRegEx number("[0-9]+");
 *     int start, end;
 *     number.bracketBuffer("on the 24th", 0, start, end);  // 7 and 9
 *
 * Unusual:
 * - Deliberate: the length that is passed to a search is ignored. The engine reads up to the NUL, which must be there.
 * - Deliberate: a pattern that does not compile is no error, as users type patterns. It finds nothing, and says so with
 *   a start of -2 instead of -1.
 *
 * The cost of a search is that of `qnregexec`, which is not re-entrant: neither are these.
 */
class MORVAQNDS_API qnRegEx : public qnTextPattern {
public:
    /** Compiles the NUL-terminated `pattern`; null is the empty text, which matches everywhere. */
    qnRegEx(const char* pattern);
    /** Compiles `pattern` up to its first NUL. */
    qnRegEx(const qnStr& pattern);
    ~qnRegEx() override;

    /** Index of the first match in the NUL-terminated `buffer`; -1 without one, -2 if the pattern did not compile. */
    int findBuffer(const char* buffer, unsigned length) const override;
    /** Index just past the first match; 0 without one, or if the pattern did not compile. */
    int findEndBuffer(const char* buffer, unsigned length) const override;
    /** Both at once: -1 and 0 without a match, -2 and 0 if the pattern did not compile. */
    void bracketBuffer(const char* buffer, unsigned length, int& start, int& end) const override;

private:
    regexp* expression_;  // null when the pattern did not compile
};

/**
 * The characters by which `qnIsRegEx` knows a regular expression.
 *
 * Deliberate: `?`, `|` and the backslash are not among them, so that file names which a user types stay literal.
 */
extern MORVAQNDS_API const char* qn_regExCharacters;

/** Whether `text` holds one of the characters `.+*^$(){}[]`, that is, wants to be a `qnRegEx`. Null does not. */
MORVAQNDS_API bool qnIsRegEx(const char* text);

#endif
