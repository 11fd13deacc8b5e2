#include "RegEx.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "RegExp.h"
#include "Str.h"

namespace {

constexpr int NoExpression = -2;
constexpr int NoMatch = -1;

/** Where a match lies in a buffer, or why there is none: a negative start, and an end of 0. */
struct Bracket {
    int start;
    int end;
};

Bracket find(regexp* expression, const char* buffer) {
    if (expression == nullptr) return Bracket{NoExpression, 0};
    if (!qnregexec(expression, buffer) || expression->startp[0] == nullptr) return Bracket{NoMatch, 0};
    std::ptrdiff_t end = expression->endp[0] - buffer;
    if (end > INT_MAX) return Bracket{NoMatch, 0};
    return Bracket{static_cast<int>(expression->startp[0] - buffer), static_cast<int>(end)};
}

}  // namespace

qnRegEx::qnRegEx(const char* pattern) : expression_(qnregcomp(pattern == nullptr ? "" : pattern)) {}

qnRegEx::qnRegEx(const qnStr& pattern) : expression_(qnregcomp(pattern.text())) {}

qnRegEx::~qnRegEx() { std::free(expression_); }

// Deliberate: the length plays no part. The engine reads up to the NUL.

int qnRegEx::findBuffer(const char* buffer, unsigned) const { return find(expression_, buffer).start; }

int qnRegEx::findEndBuffer(const char* buffer, unsigned) const { return find(expression_, buffer).end; }

void qnRegEx::bracketBuffer(const char* buffer, unsigned, int& start, int& end) const {
    Bracket bracket = find(expression_, buffer);
    start = bracket.start;
    end = bracket.end;
}

// Deliberate: `?`, `|` and the backslash alone do not make a regular expression.
const char* qn_regExCharacters = ".+*^$(){}[]";

bool qnIsRegEx(const char* text) { return text != nullptr && std::strpbrk(text, qn_regExCharacters) != nullptr; }
