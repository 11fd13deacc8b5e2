#include <gtest/gtest.h>

#include <string>

#include "text/RegexpRig.h"

namespace RegexpTest {

using RegexpRig::compile;
using RegexpRig::Expression;
using RegexpRig::group;
using RegexpRig::match;
using RegexpRig::programByte;

TEST(RegexpTest, AnEmptyPatternMatchesAtTheStartOfAnyText) {
    EXPECT_EQ("", match("", ""));
    Expression expression = compile("");
    const char* text = "abc";
    EXPECT_EQ(1, qnregexec(expression.get(), text));
    EXPECT_EQ(text, expression->startp[0]);
    EXPECT_EQ(text, expression->endp[0]);
}

TEST(RegexpTest, ANewlineInThePatternSeparatesAlternatives) {
    EXPECT_EQ("b", match("a\nb", "b"));
    EXPECT_EQ("b", match("a|b", "b"));
    EXPECT_EQ("(none)", match("a\nb", "c"));
}

TEST(RegexpTest, WordAnchorsFindWholeWords) {
    EXPECT_EQ("the", match("\\<the\\>", "the cat"));
    EXPECT_EQ("(none)", match("\\<the\\>", "other"));
    EXPECT_EQ("(none)", match("\\<the\\>", "lathe them"));
    EXPECT_EQ("the", match("\\<the\\>", "(the)"));
    EXPECT_EQ("(none)", match("\\<the\\>", "_the the_ the9"));
}

TEST(RegexpTest, TheStartOfAWordNeedsAWordCharacterBehindIt) {
    EXPECT_EQ("(none)", match("\\<", " ,"));
    EXPECT_EQ("(none)", match("\\<", ""));
    EXPECT_EQ("a", match("\\<.", " a"));
}

TEST(RegexpTest, TheEndOfAWordDoesNotLookAtWhatStandsBefore) {
    EXPECT_EQ("", match("\\>", " a"));
    EXPECT_EQ("", match("\\>", ""));
    EXPECT_EQ(" ", match("\\> ", ",  a"));
}

TEST(RegexpTest, BytesFrom128OnAreNoWordCharacters) {
    EXPECT_EQ("a", match("\\<a\\>",
                         "\xe9"
                         "a\xe9"));
    EXPECT_EQ("(none)", match("\\<\xe9", "\xe9"));
}

TEST(RegexpTest, AnchorsKnowNothingOfLines) {
    EXPECT_EQ("(none)", match("^b", "a\nb"));
    EXPECT_EQ("(none)", match("a$", "a\nb"));
    EXPECT_EQ("a\nb", match("^a.b$", "a\nb"));
}

TEST(RegexpTest, AnchorsCountWhereverTheyStand) {
    EXPECT_EQ("(none)", match("a^b", "a^b"));
    EXPECT_EQ("(none)", match("a$b", "a$b"));
    EXPECT_EQ("a", match("(^|b)a", "a"));
    EXPECT_EQ("ba", match("(^|b)a", "cba"));
    EXPECT_EQ("", match("^$", ""));
    EXPECT_EQ("", match("$", "abc"));
}

TEST(RegexpTest, DotMatchesEveryCharacterButNotTheEnd) {
    EXPECT_EQ("\n", match(".", "\n"));
    EXPECT_EQ("\xff", match(".", "\xff"));
    EXPECT_EQ("(none)", match(".", ""));
    EXPECT_EQ("(none)", match("a.", "a"));
}

TEST(RegexpTest, SetsHoldBytesUpTo255) {
    EXPECT_EQ("\xff", match("[\x80-\xff]", "a\xff"));
    EXPECT_EQ("(none)", match("[\x80-\xff]", "a\x7f"));
    EXPECT_EQ("\x7f", match("[^\x80-\xff]", "\x80\x7f"));
    EXPECT_EQ("\xfe\xff", match("[\xfe\xff]+", "\xfd\xfe\xff"));
}

TEST(RegexpTest, SetsNeverMatchTheEnd) {
    EXPECT_EQ("(none)", match("[^a]", ""));
    EXPECT_EQ("(none)", match("[^a]", "aa"));
    EXPECT_EQ("(none)", match("b[^a]", "b"));
    EXPECT_EQ("b", match("b[^a]*", "b"));
}

TEST(RegexpTest, TheLeftmostMatchWins) { EXPECT_EQ("a", match("b|a", "ab")); }

TEST(RegexpTest, TheFirstAlternativeThatLeadsToAMatchWinsNotTheLongest) {
    EXPECT_EQ("a", match("a|ab", "ab"));
    EXPECT_EQ("ab", match("(a|ab)$", "ab"));
    EXPECT_EQ("", match("|a", "a"));
}

TEST(RegexpTest, RepeatsAreGreedyAndGiveBack) {
    EXPECT_EQ("aaa", match("a*", "aaa"));
    EXPECT_EQ("", match("a*", "baaa"));
    EXPECT_EQ("aaab", match("a*ab", "aaab"));
    EXPECT_EQ("<a><b>", match("<.*>", "x<a><b>y"));
    EXPECT_EQ("aab", match("a+ab", "aab"));
    EXPECT_EQ("(none)", match("a+ab", "ab"));
}

TEST(RegexpTest, AnOptionalAtomIsTakenWhenPossible) {
    EXPECT_EQ("ab", match("ab?", "abb"));
    EXPECT_EQ("ab", match("a?ab", "ab"));
    EXPECT_EQ("color", match("colou?r", "my color"));
}

TEST(RegexpTest, ABraceIsAnOrdinaryCharacter) { EXPECT_EQ("a{2}", match("a{2}", "aa a{2}")); }

TEST(RegexpTest, AsManyCharactersOfTheRequiredLiteralAreComparedAsTheExpressionSays) {
    char must[] = "zq";
    Expression expression(qnregcomp("[ab]"));
    expression->regmust = must;
    expression->regmlen = 1;
    EXPECT_EQ(1, qnregexec(expression.get(), "az"));
    EXPECT_EQ(0, qnregexec(expression.get(), "aq"));
    expression->regmlen = 2;
    EXPECT_EQ(0, qnregexec(expression.get(), "az"));
    EXPECT_EQ(1, qnregexec(expression.get(), "azzq"));
    expression->regmlen = 5;
    EXPECT_EQ(1, qnregexec(expression.get(), "azq")) << "the comparison ends with both texts";
    EXPECT_EQ(0, qnregexec(expression.get(), "azqq"));
}

std::string found(const std::string& pattern, const std::string& text) { return match(pattern.c_str(), text.c_str()); }

TEST(RegexpTest, ALiteralOfThousandsOfCharactersIsComparedToItsEnd) {
    for (std::size_t length : {63u, 64u, 65u, 1000u, 3000u}) {
        const std::string literal = std::string(length - 1, 'a') + 'b';
        EXPECT_EQ(literal, found(literal, "a" + literal + "c")) << length;
        EXPECT_EQ(literal + "c", found(literal + "[cd]", "a" + literal + "c")) << length;
        EXPECT_EQ("(none)", found(literal + "[cd]", "a" + literal)) << length;
        EXPECT_EQ("(none)", found(literal + "[cd]", "a" + literal.substr(0, length - 1))) << length;
    }
}

TEST(RegexpTest, AnEscapedCharacterIsLiteral) {
    EXPECT_EQ("a.b*", match("a\\.b\\*", "aabb a.b*"));
    EXPECT_EQ("..", match("\\.*", ".."));
    EXPECT_EQ("a\nb", match("a\\\nb", "a\nb"));
    EXPECT_EQ("\\", match("\\\\", "a\\"));
}

TEST(RegexpTest, GroupsHoldWhatTheyMatched) {
    Expression expression = compile("([a-z]+)=([0-9]*)(;|$)");
    const char* text = "x, key=42";
    ASSERT_EQ(1, qnregexec(expression.get(), text));
    EXPECT_EQ(text + 3, expression->startp[0]);
    EXPECT_EQ(text + 9, expression->endp[0]);
    EXPECT_EQ("key", group(expression, 1));
    EXPECT_EQ("42", group(expression, 2));
    EXPECT_EQ(text + 9, expression->startp[3]);
    EXPECT_EQ(text + 9, expression->endp[3]);
    EXPECT_EQ("(unset)", group(expression, 4));
}

TEST(RegexpTest, ARepeatedGroupHoldsItsLastRepetition) {
    Expression expression = compile("(a|b)*");
    ASSERT_EQ(1, qnregexec(expression.get(), "abba"));
    EXPECT_EQ(expression->startp[0] + 3, expression->startp[1]);
    EXPECT_EQ("a", group(expression, 1));
}

TEST(RegexpTest, AGroupInsideARepeatedGroupKeepsWhatAnEarlierRepetitionMatched) {
    Expression expression = compile("((a)|b)+");
    ASSERT_EQ(1, qnregexec(expression.get(), "ab"));
    EXPECT_EQ("b", group(expression, 1));
    EXPECT_EQ("a", group(expression, 2));
}

TEST(RegexpTest, AGroupOfAnAlternativeThatFailedIsUnset) {
    Expression expression = compile("(a)x|(a)y");
    ASSERT_EQ(1, qnregexec(expression.get(), "ay"));
    EXPECT_EQ("(unset)", group(expression, 1));
    EXPECT_EQ("a", group(expression, 2));
}

TEST(RegexpTest, AGroupThatARepeatGaveBackIsAsItWas) {
    Expression expression = compile("(a|ab)*c?b");
    ASSERT_EQ(1, qnregexec(expression.get(), "aab"));
    EXPECT_EQ("aab", group(expression));
    EXPECT_EQ(expression->startp[0] + 1, expression->startp[1]);
    EXPECT_EQ("a", group(expression, 1));
}

TEST(RegexpTest, NineGroupsAreKept) {
    Expression expression = compile("(a)(b)(c)(d)(e)(f)(g)(h)(i)");
    ASSERT_EQ(1, qnregexec(expression.get(), "abcdefghi"));
    for (int i = 1; i < NSUBEXP; ++i) EXPECT_EQ(std::string(1, static_cast<char>('a' + i - 1)), group(expression, i));
}

TEST(RegexpTest, AFailedSearchClearsTheResults) {
    Expression expression = compile("(a)b");
    ASSERT_EQ(1, qnregexec(expression.get(), "ab"));
    EXPECT_EQ(0, qnregexec(expression.get(), "ac"));
    for (int i = 0; i < NSUBEXP; ++i) {
        EXPECT_EQ(nullptr, expression->startp[i]);
        EXPECT_EQ(nullptr, expression->endp[i]);
    }
}

// Searches `first`, which matches, and then `second`, which does not; tells whether the results are still there.
bool keepsResults(const char* pattern, const char* first, const char* second) {
    Expression expression = compile(pattern);
    EXPECT_EQ(1, qnregexec(expression.get(), first)) << pattern;
    EXPECT_EQ(0, qnregexec(expression.get(), second)) << pattern;
    return expression->startp[0] != nullptr;
}

TEST(RegexpTest, ASearchThatFindsNoPlaceToStartLeavesTheResults) {
    EXPECT_TRUE(keepsResults("ab", "ab", "xyz"));
    EXPECT_FALSE(keepsResults("ab", "ab", "xaz"));
    EXPECT_FALSE(keepsResults("ab", "ab", "a"));
    EXPECT_FALSE(keepsResults("^ab", "ab", "xyz"));
    EXPECT_FALSE(keepsResults("(ab)", "ab", "xyz"));
    EXPECT_FALSE(keepsResults("[a]b", "ab", "xyz"));
}

TEST(RegexpTest, ASearchWithoutTheRequiredLiteralLeavesTheResults) {
    EXPECT_TRUE(keepsResults("x*abc", "abc", "xxab"));
    EXPECT_FALSE(keepsResults("x*abc$", "abc", "abcd"));
}

TEST(RegexpTest, AnAnchoredExpressionIsTriedAtTheStartOnly) {
    EXPECT_EQ("(none)", match("^ab", "aab"));
    EXPECT_EQ("ab", match("^ab", "abab"));
}

TEST(RegexpTest, EveryStartCharacterIsTried) {
    EXPECT_EQ("abd", match("abd", "abc ab aabd"));
    EXPECT_EQ("aX", match("aX", "aaaaX"));
}

TEST(RegexpTest, OverlappingOccurrencesOfALiteralAreFound) { EXPECT_EQ("aabc", match("aabc", "aaabc")); }

TEST(RegexpTest, ALiteralBehindAChoiceIsRequiredAndOneInsideAChoiceIsNot) {
    EXPECT_EQ("aacd", match("(a|b)+cd", "cd aacd"));
    EXPECT_EQ("(none)", match("(a|b)+cd", "aabbc"));
    EXPECT_EQ("ad", match("a(bc)?d", "ad"));
    EXPECT_EQ("ay", match("(ax|(ab|a)y)", "ay"));
}

TEST(RegexpTest, AFailedRepeatRulesOutOnlyTheStartsItRanOver) {
    EXPECT_EQ("ab-ab", match("[a-c]+-ab", "abc ab-ab"));
    EXPECT_EQ("bb1", match("b+1", "bbb bb bb1"));
    EXPECT_EQ("ax", match("\\<[-a]+x", "--ax"));
    EXPECT_EQ("x", match("a*x", "aaay x"));
    EXPECT_EQ("aab", match("(a+)b", "aa aab"));
}

TEST(RegexpTest, TheTerminatingNulIsAPlaceToStart) {
    Expression expression = compile("x*$");
    const char* text = "ab";
    ASSERT_EQ(1, qnregexec(expression.get(), text));
    EXPECT_EQ(text + 2, expression->startp[0]);
}

TEST(RegexpTest, NothingBehindTheNulIsRead) {
    EXPECT_EQ("(none)", match("b", "a\0b"));
    EXPECT_EQ("a", match("a.*", "a\0b"));
    EXPECT_EQ("(none)", match("abc", "ab\0c"));
}

TEST(RegexpTest, ManyExpressionsCanBeUsedInTurn) {
    Expression expressions[20];
    for (int i = 0; i < 20; ++i)
        expressions[i] = compile(("(" + std::string(1, static_cast<char>('a' + i)) + "+)x").c_str());
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 20; ++i) {
            std::string run(3, static_cast<char>('a' + i));
            std::string text = "-" + run + "x";
            ASSERT_EQ(1, qnregexec(expressions[i].get(), text.c_str()));
            EXPECT_EQ(run, group(expressions[i], 1));
        }
    }
}

TEST(RegexpTest, AnExpressionThatIsWrittenOverIsReadAnew) {
    Expression expression = compile("(a)");
    ASSERT_EQ(1, qnregexec(expression.get(), "a"));
    // Magic, BRANCH, OPEN, BRANCH, then the header of EXACTLY: its operand is byte 13.
    programByte(expression, 13) = 'b';
    EXPECT_EQ(0, qnregexec(expression.get(), "a"));
    EXPECT_EQ(1, qnregexec(expression.get(), "b"));
}

TEST(RegexpTest, NullArgumentsAreReported) {
    Expression expression = compile("a");
    regexpMessages().clear();
    EXPECT_EQ(0, qnregexec(nullptr, "a"));
    EXPECT_EQ(0, qnregexec(expression.get(), nullptr));
    EXPECT_EQ(std::vector<std::string>(2, "NULL parameter"), regexpMessages());
}

TEST(RegexpTest, OrdinarySearchesReportNothing) {
    regexpMessages().clear();
    EXPECT_EQ("abc", match("(a|b)*c", "abc"));
    EXPECT_EQ("(none)", match("(a|b)*c", "ab"));
    EXPECT_TRUE(regexpMessages().empty());
}

TEST(RegexpTest, LargeProgramsAreMatched) {
    // 1000 alternatives of three digits each; the last is the one that fits.
    std::string pattern;
    for (int i = 0; i < 1000; ++i) pattern += (i ? "|" : "") + std::to_string(1000 + i) + "x";
    EXPECT_EQ("1999x", match(pattern.c_str(), "-1998 1999x"));
    EXPECT_EQ("(none)", match(pattern.c_str(), "-1998 2999x"));
    std::string dots(3000, '.');
    EXPECT_EQ(std::string(3000, 'a'), match(dots.c_str(), std::string(3001, 'a').c_str()));
    EXPECT_EQ("(none)", match(dots.c_str(), std::string(2999, 'a').c_str()));
}

}  // namespace RegexpTest
