#ifndef MORVAQNDS_REGMATCH_H
#define MORVAQNDS_REGMATCH_H

#include <cstdint>

#include "RegPlan.h"

/** Where a match and its groups begin and end; null where a group took no part. Index 0 is the whole match. */
struct RegCaptures {
    const char* start[NSUBEXP];
    const char* end[NSUBEXP];
};

/**
 * One search: a plan, a text, and the places at which a match could begin.
 *
 * `nextStart` walks the places in order; what it leaves out cannot begin a match, and which facts it uses for that
 * nobody can tell.
 */
class RegSearch {
public:
    RegSearch(const RegPlan& plan, const regexp& expression, const char* text);

    /** The first place at or after `from` at which a match could begin, or null if there is none. */
    const char* nextStart(const char* from);

    /** The first place at or after `failed` + 1 at which a match could begin, given that none begins at `failed`. */
    const char* nextStartAfter(const char* failed);

    /** Whether a match could begin at `place`. */
    bool canStart(const char* place) const {
        return plan.startsAt[static_cast<unsigned char>(*place)] && (!anchored || place == text);
    }

    /** Whether the character before `place` exists and belongs to a word. */
    bool afterWordByte(const char* place) const {
        return place != text && isWordByte(static_cast<unsigned char>(place[-1]));
    }

    const RegPlan& plan;
    const char* const text;

private:
    const char* scan(const char* from) const;

    const char* requiredAt = nullptr;  // an occurrence of the required literal, null before the first has been sought
    char startCharacter;               // the expression's own facts
    bool anchored;
};

enum class RegOutcome { matched, failed, gaveUp };

/**
 * Tries one start after the other by backtracking: the fast way for ordinary patterns and texts. It keeps an account
 * of its steps and gives up when they grow out of proportion to the text, or when it would have to remember too many
 * choices at once; `start` is then the first place that is still undecided.
 *
 * Requires: a plan that is not cyclic.
 */
RegOutcome regBacktrack(RegSearch& search, const char*& start, RegCaptures& captures);

/**
 * Finds the same match by walking all ways at once, character by character: the sure way for every pattern and text.
 * True if there is a match that begins at `start` or later.
 */
bool regLockstep(RegSearch& search, const char* start, RegCaptures& captures);

#endif
