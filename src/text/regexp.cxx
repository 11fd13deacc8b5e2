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
    if (expression->regmust && !std::strstr(string, expression->regmust)) return 0;

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
