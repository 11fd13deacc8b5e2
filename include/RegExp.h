#ifndef MORVAQNDS_REGEXP_H
#define MORVAQNDS_REGEXP_H

#include "Export.h"

/**
 * Regular expressions over NUL-terminated byte strings: compile once, search often, substitute what was found.
 *
 *     regexp* date = qnregcomp("([0-9]+)-([0-9]+)");
 *     if (date && qnregexec(date, "on 12-24 we rest")) {
 *         char text[64];
 *         qnregsub(date, "\\2/\\1", text);  // "24/12"
 *     }
 *     std::free(date);
 *
 * The language: `.` any character; `[abc]`, `[a-z]`, `[^...]` sets, in which a backslash is an ordinary character;
 * `^` and `$` the two ends of the text, wherever they stand; `\<` start of a word, `\>` end of a word; `*`, `+`, `?`
 * repeat the atom before them, as often as possible; `(...)` groups, nine at most; a backslash before any other
 * character takes it literally.
 *
 * Unusual:
 * - Deliberate: a newline in the pattern separates alternatives exactly as `|` does, so that a list of patterns, one to
 *   a line, is a pattern. In the text it is a character like any other: `.` matches it, and `^` and `$` know nothing of
 *   lines.
 * - What a `*` or `+` repeats must not be able to match the empty string; such a pattern does not compile.
 * - Deliberate: the first alternative that leads to a match wins, not the longest, and groups hold their last
 *   repetition, as backtracking finds them.
 * - Deliberate: `\>` looks at the character after it only.
 * - The results stand in the compiled expression and point into the text that was searched.
 * - Errors are seen by their result alone; see `qnregerror` for the reason.
 *
 * Cost: the time of a search grows linearly with the text for every pattern, and its stack use not at all. The memory
 * it needs depends on the program alone: nothing from the heap for a program of ordinary size, about 10 MB at the very
 * most for the largest.
 *
 * The engine keeps state between calls and is not re-entrant: use it from one thread at a time.
 */

/** The number of places in `regexp::startp` and `regexp::endp`: the whole match and nine groups. */
#define NSUBEXP 10

/**
 * A compiled expression: one heap block, made by `qnregcomp`, released by its owner with `free`.
 *
 * After a successful search `startp[0]` and `endp[0]` bound the match and `startp[n]`, `endp[n]` what group n matched
 * last; a group that took no part has null there. After a search that failed they are all null, except that a search
 * which found no place to start at (`regmust` or `regstart` does not occur in the text) leaves them as they were.
 */
struct regexp {
    char* startp[NSUBEXP]; /**< First character of the match and of the groups, null when unset. */
    char* endp[NSUBEXP];   /**< One past the last character of the match and of the groups, null when unset. */
    char regstart;         /**< The character that every match begins with, or 0 if there is no such character. */
    char reganch;          /**< 1 when a match can only start at the beginning of the text, else 0. */
    char* regmust;         /**< A literal that every match contains (it points into the program), or null. */
    int regmlen;           /**< Length of `regmust` in characters, 0 when it is null. */
    char program[1];       /**< The program, starting with the byte 0234; it goes on past the end of the structure. */
};

/**
 * Compiles `pattern`. The result is a heap block that the caller releases with `free`; it does not refer to `pattern`.
 * Null when the pattern is null, malformed, needs a program of 32767 bytes or more, or memory is exhausted.
 */
MORVAQNDS_API regexp* qnregcomp(const char* pattern);

/**
 * Where in its pattern the last `qnregcomp` stopped, in characters from 0: the place at which the failure showed, which
 * is the pattern's length when its end came too soon or the program would have been too large. -1 when the pattern
 * compiled.
 *
 *     if (!qnregcomp("a**")) std::printf("a**\n%*s^\n", int(qnregerrorplace()), "");  // under the second star
 */
MORVAQNDS_API long qnregerrorplace();

/**
 * Searches `string` for the leftmost match of `expression`: 1 if there is one, with `startp` and `endp` filled, else 0.
 * 0 as well when either argument is null or the program is damaged. The pointers that it leaves in the expression point
 * into `string` and are good as long as that is.
 */
MORVAQNDS_API int qnregexec(regexp* expression, const char* string);

/**
 * Writes `source` to `destination` with `&` and `\0` replaced by the last match of `expression` and `\1` to `\9` by its
 * groups; a group that is unset gives nothing. `\\` and `\&` give the second character; a backslash before anything
 * else is itself an ordinary character. `destination` is terminated by a NUL.
 *
 * Nothing is written when an argument is null or the program is damaged. When the text that was searched has become
 * shorter since, the result ends with what is left of that match.
 *
 * Requires: room at `destination` for the whole result and the NUL; the text last searched still in place.
 */
MORVAQNDS_API void qnregsub(regexp* expression, const char* source, char* destination);

/**
 * Is told why an operation above failed, and does nothing with it.
 *
 * For debugging a program may define this function itself: the library always calls it through the dynamic symbol, so
 * the program's own definition takes the place of the silent one.
 *
 *     void qnregerror(const char* message) { std::fprintf(stderr, "regexp: %s\n", message); }
 */
MORVAQNDS_API void qnregerror(const char* message);

#endif
