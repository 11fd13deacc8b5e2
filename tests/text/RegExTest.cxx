#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include "RegEx.h"
#include "SLinearPattern.h"
#include "Str.h"
#include "text/RegexpMessages.h"

namespace RegExTest {

static_assert(std::is_abstract<qnTextPattern>::value, "all three searches are pure");
static_assert(std::has_virtual_destructor<qnTextPattern>::value, "patterns are destroyed through the base");
static_assert(std::is_base_of<qnTextPattern, qnRegEx>::value, "");
static_assert(!std::is_copy_constructible<qnRegEx>::value && !std::is_copy_assignable<qnRegEx>::value, "");
// The virtual table, one int, one pointer: both small fields fit before the pointer only where it has 4 bytes.
static_assert(sizeof(qnRegEx) == 3 * sizeof(void*), "");

struct Bracket {
    int start;
    int end;
    bool operator==(const Bracket& other) const { return start == other.start && end == other.end; }
};

void PrintTo(const Bracket& bracket, std::ostream* os) { *os << "[" << bracket.start << ", " << bracket.end << ")"; }

/** What all three searches say, which must be the same; fields that no search set stay 99. */
Bracket bracket(const qnTextPattern& pattern, const char* buffer, unsigned length) {
    Bracket result{99, 99};
    pattern.bracketBuffer(buffer, length, result.start, result.end);
    EXPECT_EQ(result.start, pattern.findBuffer(buffer, length));
    EXPECT_EQ(result.end, pattern.findEndBuffer(buffer, length));
    return result;
}

Bracket bracket(const char* pattern, const char* buffer) {
    return bracket(qnRegEx(pattern), buffer, static_cast<unsigned>(std::strlen(buffer)));
}

TEST(RegExTest, FindsTheFirstMatch) {
    EXPECT_EQ((Bracket{2, 5}), bracket("a+b", "xxaabaab"));
    EXPECT_EQ((Bracket{0, 8}), bracket(".*", "xxaabaab"));
    EXPECT_EQ((Bracket{6, 8}), bracket("ab$", "xxaabaab"));
}

TEST(RegExTest, WithoutAMatchTheStartIsMinusOneAndTheEndZero) { EXPECT_EQ((Bracket{-1, 0}), bracket("a+b", "xxaacb")); }

TEST(RegExTest, AnUnbalancedParenthesisAnswersMinusTwoAndZero) {
    EXPECT_EQ((Bracket{-2, 0}), bracket("(", "("));
    EXPECT_EQ((Bracket{-2, 0}), bracket("(a", ""));
    EXPECT_EQ((Bracket{-2, 0}), bracket("a)", "a)"));
}

TEST(RegExTest, ABadExpressionIsReportedWhenItIsMadeAndNeverAgain) {
    regexpMessages().clear();
    qnRegEx pattern("a**");
    EXPECT_EQ(std::vector<std::string>{"nested *?+"}, regexpMessages());
    EXPECT_EQ((Bracket{-2, 0}), bracket(pattern, "a", 1));
    EXPECT_EQ(1u, regexpMessages().size());
}

TEST(RegExTest, AnEmptyMatchAtTheStartHasEndZeroToo) {
    EXPECT_EQ((Bracket{0, 0}), bracket("", "abc"));
    EXPECT_EQ((Bracket{0, 0}), bracket("x*", "abc"));
    EXPECT_EQ((Bracket{0, 0}), bracket("", ""));
    EXPECT_EQ((Bracket{3, 3}), bracket("$", "abc"));
}

TEST(RegExTest, TheLengthIsIgnored) {
    qnRegEx pattern("c");
    EXPECT_EQ((Bracket{2, 3}), bracket(pattern, "abc", 0));
    EXPECT_EQ((Bracket{2, 3}), bracket(pattern, "abc", 1));
    EXPECT_EQ((Bracket{2, 3}), bracket(pattern, "abc", 0xFFFFFFFFu));
    EXPECT_EQ((Bracket{-1, 0}), bracket(pattern, "ab\0c", 4));
}

TEST(RegExTest, AStringIsAPatternUpToItsFirstNul) {
    EXPECT_EQ((Bracket{1, 3}), bracket(qnRegEx(qnStr("b.")), "abc", 3));
    EXPECT_EQ((Bracket{1, 2}), bracket(qnRegEx(qnStr("b\0(", 3)), "abc", 3));
    EXPECT_EQ((Bracket{0, 0}), bracket(qnRegEx(qnStr()), "abc", 3));
}

TEST(RegExTest, ThePatternDoesNotReferToItsText) {
    char text[] = "b+";
    qnRegEx pattern(text);
    std::strcpy(text, "zz");
    EXPECT_EQ((Bracket{1, 3}), bracket(pattern, "abbc", 4));
}

TEST(RegExTest, ANullPatternIsTheEmptyOne) {
    EXPECT_EQ((Bracket{0, 0}), bracket(qnRegEx(static_cast<const char*>(nullptr)), "abc", 3));
}

TEST(RegExTest, NothingMatchesInANullBuffer) {
    regexpMessages().clear();
    EXPECT_EQ((Bracket{-1, 0}), bracket(qnRegEx(""), nullptr, 0));
    EXPECT_EQ(std::vector<std::string>(3, "NULL parameter"), regexpMessages());
    EXPECT_EQ((Bracket{-2, 0}), bracket(qnRegEx("("), nullptr, 0));
}

TEST(RegExTest, PatternsAreUsedAgainForOtherBuffers) {
    qnRegEx pattern("b+");
    EXPECT_EQ((Bracket{1, 3}), bracket(pattern, "abbc", 4));
    EXPECT_EQ((Bracket{-1, 0}), bracket(pattern, "xyz", 3));
    EXPECT_EQ((Bracket{0, 1}), bracket(pattern, "b", 1));
}

TEST(RegExTest, HighBytesAreCharacters) { EXPECT_EQ((Bracket{1, 3}), bracket("[\x80-\xff]+", "a\xe9\xff z")); }

TEST(RegExTest, TheBaseServesBothKinds) {
    std::unique_ptr<qnTextPattern> pattern(new qnRegEx("b+"));
    EXPECT_EQ((Bracket{1, 3}), bracket(*pattern, "abbc", 4));
    pattern.reset(new qnSLinearPattern("b+"));
    EXPECT_EQ((Bracket{-1, 0}), bracket(*pattern, "abbc", 4));
    EXPECT_EQ((Bracket{2, 4}), bracket(*pattern, "abb+c", 5));
}

// The number of an operation among the virtual operations, as a pointer to it holds it: after the two entries of the
// destructor.
template <class Member>
unsigned slot(Member operation) {
    std::ptrdiff_t encoded;
    std::memcpy(&encoded, &operation, sizeof encoded);
    return static_cast<unsigned>((encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

TEST(RegExTest, TheVirtualOperationsStandInTheirSlots) {
    EXPECT_EQ(1u, slot(&qnTextPattern::findBuffer));
    EXPECT_EQ(2u, slot(&qnTextPattern::findEndBuffer));
    EXPECT_EQ(3u, slot(&qnTextPattern::bracketBuffer));
    EXPECT_EQ(3u, slot(&qnRegEx::bracketBuffer));
    EXPECT_EQ(3u, slot(&qnSLinearPattern::bracketBuffer));
}

/** The pointer behind the int of the base. */
const void* expressionOf(const qnRegEx& pattern) {
    const void* expression;
    std::memcpy(&expression, reinterpret_cast<const char*>(&pattern) + 2 * sizeof(void*), sizeof expression);
    return expression;
}

TEST(RegExTest, TheExpressionIsNullWhenThePatternDidNotCompile) {
    EXPECT_EQ(nullptr, expressionOf(qnRegEx("(")));
    EXPECT_NE(nullptr, expressionOf(qnRegEx("a")));
}

/** Shows the int of the base. */
struct Revealed : qnRegEx {
    Revealed() : qnRegEx("a") {}
    int value() const { return reserved; }
};

TEST(RegExTest, TheIntOfTheBaseIsZero) { EXPECT_EQ(0, Revealed().value()); }

TEST(IsRegExTest, EachOfElevenCharactersMakesARegularExpression) {
    for (const char* c = ".+*^$(){}[]"; *c != 0; ++c) {
        char text[] = {'a', *c, 'b', 0};
        EXPECT_TRUE(qnIsRegEx(text)) << text;
    }
}

TEST(IsRegExTest, ABraceOrABracketAlone) {
    EXPECT_TRUE(qnIsRegEx("{"));
    EXPECT_TRUE(qnIsRegEx("]"));
    EXPECT_TRUE(qnIsRegEx("plain text with a ["));
}

TEST(IsRegExTest, APlainWordIsNone) {
    EXPECT_FALSE(qnIsRegEx("plain"));
    EXPECT_FALSE(qnIsRegEx("\xe9t\xe9"));
    EXPECT_FALSE(qnIsRegEx(""));
}

TEST(IsRegExTest, ABackslashABarOrAQuestionMarkAloneMakesNone) {
    EXPECT_FALSE(qnIsRegEx("\\"));
    EXPECT_FALSE(qnIsRegEx("\\<word\\>"));
    EXPECT_FALSE(qnIsRegEx("a|b"));
    EXPECT_FALSE(qnIsRegEx("a?"));
    EXPECT_FALSE(qnIsRegEx("a\nb"));
}

TEST(IsRegExTest, NullIsNone) { EXPECT_FALSE(qnIsRegEx(nullptr)); }

TEST(IsRegExTest, TheCharactersAreInAGlobal) {
    EXPECT_STREQ(".+*^$(){}[]", qn_regExCharacters);
    const char* before = qn_regExCharacters;
    qn_regExCharacters = "?";
    EXPECT_TRUE(qnIsRegEx("a?"));
    EXPECT_FALSE(qnIsRegEx("a+"));
    qn_regExCharacters = before;
}

}  // namespace RegExTest
