#include <cstring>

#include "RegMatch.h"

RegSearch::RegSearch(const RegPlan& thePlan, const regexp& expression, const char* theText)
    : plan(thePlan), text(theText), startCharacter(expression.regstart), anchored(expression.reganch != 0) {}

const char* RegSearch::nextStart(const char* from) {
    if (anchored) return from == text ? from : nullptr;
    const char* place = scan(from);
    if (!place || !plan.required || plan.required == plan.prefix) return place;
    if (!requiredAt || place > requiredAt) {
        requiredAt = std::strstr(place, plan.text(*plan.required));
        if (!requiredAt) return nullptr;
    }
    return place;
}

// A match that begins with a repeat and fails, fails from every place that the repeat runs over: from there the repeat
// ends at places at which it has ended before, and what follows has failed at all of these.
const char* RegSearch::nextStartAfter(const char* failed) {
    const char* from = failed;
    if (plan.leading) {
        const ByteSet& set = plan.sets()[plan.leading->set];
        while (set.has(static_cast<unsigned char>(*from))) ++from;
    }
    return nextStart(from == failed ? failed + 1 : from);
}

const char* RegSearch::scan(const char* from) const {
    if (plan.prefix && plan.prefix->length > 1) return std::strstr(from, plan.text(*plan.prefix));
    if (startCharacter) return std::strchr(from, startCharacter);
    if (plan.onlyStart > 0) return std::strchr(from, plan.onlyStart);
    const char* place = from;
    for (; !plan.startsAt[static_cast<unsigned char>(*place)] || (plan.wordLead && afterWordByte(place)); ++place) {
        if (*place == '\0') return nullptr;
    }
    return place;
}
