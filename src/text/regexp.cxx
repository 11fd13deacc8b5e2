#include "RegExp.h"

#include <cstring>

#include "RegMatch.h"
#include "RegProgram.h"

/*
 * The search: it goes through the places at which a match could begin, found by `strchr`, `strstr` or a table of bytes,
 * and tries them by backtracking; when that gets out of proportion to the text it goes on in lockstep from there. Both
 * find what plain recursive backtracking over the program finds, with the same groups.
 *
 * Why they may: whether and how a walk goes on from a node at a place in the text hangs on these two alone, since
 * nothing in a program refers back to what a group has matched. What has failed once from there fails always, however
 * it was reached and from wherever the try started.
 */

namespace {

bool findMatch(const regexp& expression, const char* text, RegCaptures& captures) {
    const RegPlan& plan = RegPlan::of(expression);
    RegSearch search(plan, expression, text);
    const char* start = text;
    if (!plan.cyclic) {
        RegOutcome outcome = regBacktrack(search, start, captures);
        if (outcome != RegOutcome::gaveUp) return outcome == RegOutcome::matched;
    }
    return regLockstep(search, start, captures);
}

// Whether a search through `text` tries any place at all, by the facts that stand in the expression.
bool triesAnyPlace(const regexp& expression, const char* text) {
    return expression.reganch || !expression.regstart || std::strchr(text, expression.regstart);
}

// Whether the first `length` characters of `literal` occur in `text`.
bool contains(const char* text, const char* literal, int length) {
    const std::size_t count = length < 0 ? 0 : static_cast<std::size_t>(length);
    if (strnlen(literal, count + 1) == count) return std::strstr(text, literal) != nullptr;
    // Only a program that sets the facts itself gives other lengths than the literal's own.
    for (const char* place = text; (place = std::strchr(place, *literal)) != nullptr; ++place) {
        if (std::strncmp(place, literal, count) == 0) return true;
        if (*place == '\0') return false;
    }
    return false;
}

}  // namespace

int qnregexec(regexp* expression, const char* string) {
    if (!expression || !string) {
        qnregerror("NULL parameter");
        return 0;
    }
    if (programOf(expression)[0] != programMagic) {
        qnregerror("corrupted program");
        return 0;
    }
    if (expression->regmust && !contains(string, expression->regmust, expression->regmlen)) return 0;

    RegCaptures captures;
    bool found = findMatch(*expression, string, captures);
    // Deliberate: a search that had nowhere to start leaves the results of the one before.
    if (!found && !triesAnyPlace(*expression, string)) return 0;
    for (int i = 0; i < NSUBEXP; ++i) {
        expression->startp[i] = found ? const_cast<char*>(captures.start[i]) : nullptr;
        expression->endp[i] = found ? const_cast<char*>(captures.end[i]) : nullptr;
    }
    return found ? 1 : 0;
}
