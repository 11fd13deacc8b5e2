#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "text/RegexpRig.h"

// A whole program, byte by byte; every link is counted from the node that holds it.
#define EXPECT_PROGRAM(pattern, ...)                                                          \
    do {                                                                                      \
        static const unsigned char expected[] = {__VA_ARGS__};                                \
        RegexpRig::Expression compiled = RegexpRig::compile(pattern);                         \
        ASSERT_TRUE(compiled);                                                                \
        EXPECT_EQ(RegexpRig::bytes(expected), RegexpRig::program(compiled, sizeof expected)); \
    } while (0)

namespace RegexpCompileTest {

using RegexpRig::compile;
using RegexpRig::Expression;
using RegexpRig::rejection;

enum : unsigned char {
    MAGIC = 0234,
    END = 0,
    BOL = 1,
    EOL = 2,
    ANY = 3,
    ANYOF = 4,
    ANYBUT = 5,
    BRANCH = 6,
    BACK = 7,
    EXACTLY = 8,
    NOTHING = 9,
    STAR = 10,
    PLUS = 11,
    WORDA = 12,
    WORDZ = 13,
    OPEN = 20,
    CLOSE = 30
};

#if defined(__i386__) || defined(__powerpc__)
static_assert(offsetof(regexp, startp) == 0 && offsetof(regexp, endp) == 40, "");
static_assert(offsetof(regexp, regstart) == 80 && offsetof(regexp, reganch) == 81, "");
static_assert(offsetof(regexp, regmust) == 84 && offsetof(regexp, regmlen) == 88, "");
static_assert(offsetof(regexp, program) == 92, "");
#endif
static_assert(NSUBEXP == 10 && sizeof(regexp::program) == 1, "");

TEST(RegexpCompileTest, AnEmptyPatternIsABranchOfNothing) {
    EXPECT_PROGRAM("", MAGIC, BRANCH, 0, 6, NOTHING, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, ASingleLiteral) { EXPECT_PROGRAM("a", MAGIC, BRANCH, 0, 8, EXACTLY, 0, 5, 'a', 0, END, 0, 0); }

TEST(RegexpCompileTest, ALiteralRunIsOneNode) {
    EXPECT_PROGRAM("abc", MAGIC, BRANCH, 0, 10, EXACTLY, 0, 7, 'a', 'b', 'c', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ALiteralRunStopsBeforeTheCharacterThatIsRepeated) {
    EXPECT_PROGRAM("ab*", MAGIC, BRANCH, 0, 16, EXACTLY, 0, 5, 'a', 0, STAR, 0, 8, EXACTLY, 0, 0, 'b', 0, END, 0, 0);
    EXPECT_PROGRAM("abc+", MAGIC, BRANCH, 0, 17, EXACTLY, 0, 6, 'a', 'b', 0, PLUS, 0, 8, EXACTLY, 0, 0, 'c', 0, END, 0,
                   0);
}

TEST(RegexpCompileTest, AnEscapeInsideARunIsItsCharacter) {
    EXPECT_PROGRAM("a\\.b", MAGIC, BRANCH, 0, 10, EXACTLY, 0, 7, 'a', '.', 'b', 0, END, 0, 0);
    EXPECT_PROGRAM("\\*a", MAGIC, BRANCH, 0, 9, EXACTLY, 0, 6, '*', 'a', 0, END, 0, 0);
    EXPECT_PROGRAM("a\\\\\\(", MAGIC, BRANCH, 0, 10, EXACTLY, 0, 7, 'a', '\\', '(', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARunEndsBeforeAnEscapeThatIsRepeated) {
    EXPECT_PROGRAM("a\\.*", MAGIC, BRANCH, 0, 16, EXACTLY, 0, 5, 'a', 0, STAR, 0, 8, EXACTLY, 0, 0, '.', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AnEscapeThatStartsARunIsRepeatedAlone) {
    EXPECT_PROGRAM("\\a+", MAGIC, BRANCH, 0, 11, PLUS, 0, 8, EXACTLY, 0, 0, 'a', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARunEndsBeforeAWordAnchor) {
    EXPECT_PROGRAM("a\\>", MAGIC, BRANCH, 0, 11, EXACTLY, 0, 5, 'a', 0, WORDZ, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("\\<a", MAGIC, BRANCH, 0, 11, WORDA, 0, 3, EXACTLY, 0, 5, 'a', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARunEndsBeforeEveryCharacterThatMeansSomething) {
    EXPECT_PROGRAM("ab.", MAGIC, BRANCH, 0, 12, EXACTLY, 0, 6, 'a', 'b', 0, ANY, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("ab$", MAGIC, BRANCH, 0, 12, EXACTLY, 0, 6, 'a', 'b', 0, EOL, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("ab^", MAGIC, BRANCH, 0, 12, EXACTLY, 0, 6, 'a', 'b', 0, BOL, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("ab[c]", MAGIC, BRANCH, 0, 14, EXACTLY, 0, 6, 'a', 'b', 0, ANYOF, 0, 5, 'c', 0, END, 0, 0);
}

TEST(RegexpCompileTest, BracesAndAClosingBracketAreLiteral) {
    EXPECT_PROGRAM("{]}", MAGIC, BRANCH, 0, 10, EXACTLY, 0, 7, '{', ']', '}', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AnchorsStandWherever) {
    EXPECT_PROGRAM("^$^", MAGIC, BRANCH, 0, 12, BOL, 0, 3, EOL, 0, 3, BOL, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, ASetListsItsRanges) {
    EXPECT_PROGRAM("[a-cx]", MAGIC, BRANCH, 0, 11, ANYOF, 0, 8, 'a', 'b', 'c', 'x', 0, END, 0, 0);
    EXPECT_PROGRAM("[^a-c]", MAGIC, BRANCH, 0, 10, ANYBUT, 0, 7, 'a', 'b', 'c', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AFirstBracketOrMinusInASetIsLiteral) {
    EXPECT_PROGRAM("[]a]", MAGIC, BRANCH, 0, 9, ANYOF, 0, 6, ']', 'a', 0, END, 0, 0);
    EXPECT_PROGRAM("[-a]", MAGIC, BRANCH, 0, 9, ANYOF, 0, 6, '-', 'a', 0, END, 0, 0);
    EXPECT_PROGRAM("[^]a]", MAGIC, BRANCH, 0, 9, ANYBUT, 0, 6, ']', 'a', 0, END, 0, 0);
    EXPECT_PROGRAM("[^-a]", MAGIC, BRANCH, 0, 9, ANYBUT, 0, 6, '-', 'a', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ALastMinusInASetIsLiteral) {
    EXPECT_PROGRAM("[a-]", MAGIC, BRANCH, 0, 9, ANYOF, 0, 6, 'a', '-', 0, END, 0, 0);
    EXPECT_PROGRAM("[--]", MAGIC, BRANCH, 0, 9, ANYOF, 0, 6, '-', '-', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AFirstBracketOrMinusInASetCanStartARange) {
    EXPECT_PROGRAM("[]-`]", MAGIC, BRANCH, 0, 11, ANYOF, 0, 8, ']', '^', '_', '`', 0, END, 0, 0);
    EXPECT_PROGRAM("[--0]", MAGIC, BRANCH, 0, 11, ANYOF, 0, 8, '-', '.', '/', '0', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AMinusCanEndARange) {
    EXPECT_PROGRAM("[+--]", MAGIC, BRANCH, 0, 10, ANYOF, 0, 7, '+', ',', '-', 0, END, 0, 0);
}

TEST(RegexpCompileTest, TheEndOfARangeCanStartTheNext) {
    EXPECT_PROGRAM("[a-c-e]", MAGIC, BRANCH, 0, 12, ANYOF, 0, 9, 'a', 'b', 'c', 'd', 'e', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARangeOfOneCharacterAddsItOnce) {
    EXPECT_PROGRAM("[a-a]", MAGIC, BRANCH, 0, 8, ANYOF, 0, 5, 'a', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARangeThatEndsOneBelowItsStartAddsNothing) {
    EXPECT_PROGRAM("[b-a]", MAGIC, BRANCH, 0, 8, ANYOF, 0, 5, 'b', 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARangeUpToByte255Ends) {
    EXPECT_PROGRAM("[\xfd-\xff]", MAGIC, BRANCH, 0, 10, ANYOF, 0, 7, 0xfd, 0xfe, 0xff, 0, END, 0, 0);
}

TEST(RegexpCompileTest, ARangeAcrossByte128IsUnsigned) {
    EXPECT_PROGRAM("[~-\x81]", MAGIC, BRANCH, 0, 11, ANYOF, 0, 8, 0x7e, 0x7f, 0x80, 0x81, 0, END, 0, 0);
}

TEST(RegexpCompileTest, InASetNothingElseMeansAnything) {
    EXPECT_PROGRAM("[\\^\n|]", MAGIC, BRANCH, 0, 11, ANYOF, 0, 8, '\\', '^', '\n', '|', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AlternativesByBarAndByNewlineAreTheSame) {
    EXPECT_PROGRAM("a|b", MAGIC, BRANCH, 0, 8, EXACTLY, 0, 13, 'a', 0, BRANCH, 0, 8, EXACTLY, 0, 5, 'b', 0, END, 0, 0);
    EXPECT_PROGRAM("a\nb", MAGIC, BRANCH, 0, 8, EXACTLY, 0, 13, 'a', 0, BRANCH, 0, 8, EXACTLY, 0, 5, 'b', 0, END, 0, 0);
}

TEST(RegexpCompileTest, EmptyAlternativesHoldNothing) {
    EXPECT_PROGRAM("|a\n", MAGIC, BRANCH, 0, 6, NOTHING, 0, 17, BRANCH, 0, 8, EXACTLY, 0, 11, 'a', 0, BRANCH, 0, 6,
                   NOTHING, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, AGroupLinksToItsBranchesAndThoseToItsEnd) {
    EXPECT_PROGRAM("(a|b)", MAGIC, BRANCH, 0, 25, OPEN + 1, 0, 3, BRANCH, 0, 8, EXACTLY, 0, 13, 'a', 0, BRANCH, 0, 8,
                   EXACTLY, 0, 5, 'b', 0, CLOSE + 1, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, AnEmptyGroupHoldsNothing) {
    EXPECT_PROGRAM("()", MAGIC, BRANCH, 0, 15, OPEN + 1, 0, 3, BRANCH, 0, 6, NOTHING, 0, 3, CLOSE + 1, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, NestedGroupsAreNumberedByTheirOpening) {
    EXPECT_PROGRAM("((a)b)(c)", MAGIC, BRANCH, 0, 45,  // 1 -> 46
                   OPEN + 1, 0, 3,                     // 4 -> 7
                   BRANCH, 0, 22,                      // 7 -> 29
                   OPEN + 2, 0, 3,                     // 10 -> 13
                   BRANCH, 0, 8,                       // 13 -> 21
                   EXACTLY, 0, 5, 'a', 0,              // 16 -> 21
                   CLOSE + 2, 0, 3,                    // 21 -> 24
                   EXACTLY, 0, 5, 'b', 0,              // 24 -> 29
                   CLOSE + 1, 0, 3,                    // 29 -> 32
                   OPEN + 3, 0, 3,                     // 32 -> 35
                   BRANCH, 0, 8,                       // 35 -> 43
                   EXACTLY, 0, 5, 'c', 0,              // 38 -> 43
                   CLOSE + 3, 0, 3,                    // 43 -> 46
                   END, 0, 0);                         // 46
}

TEST(RegexpCompileTest, SimpleAtomsAreRepeatedByOneNode) {
    EXPECT_PROGRAM(".*", MAGIC, BRANCH, 0, 9, STAR, 0, 6, ANY, 0, 0, END, 0, 0);
    EXPECT_PROGRAM(".+", MAGIC, BRANCH, 0, 9, PLUS, 0, 6, ANY, 0, 0, END, 0, 0);
    EXPECT_PROGRAM("[ab]*", MAGIC, BRANCH, 0, 12, STAR, 0, 9, ANYOF, 0, 0, 'a', 'b', 0, END, 0, 0);
    EXPECT_PROGRAM("[^a]+", MAGIC, BRANCH, 0, 11, PLUS, 0, 8, ANYBUT, 0, 0, 'a', 0, END, 0, 0);
}

TEST(RegexpCompileTest, AnOptionalAtomIsABranchBesideNothing) {
    EXPECT_PROGRAM("a?b", MAGIC, BRANCH, 0, 22,  // 1 -> 23
                   BRANCH, 0, 8,                 // 4 -> 12
                   EXACTLY, 0, 8, 'a', 0,        // 7 -> 15
                   BRANCH, 0, 3,                 // 12 -> 15
                   NOTHING, 0, 3,                // 15 -> 18
                   EXACTLY, 0, 5, 'b', 0,        // 18 -> 23
                   END, 0, 0);                   // 23
}

TEST(RegexpCompileTest, AWordAnchorCanBeOptional) {
    EXPECT_PROGRAM("\\<?", MAGIC, BRANCH, 0, 15, BRANCH, 0, 6, WORDA, 0, 6, BRANCH, 0, 3, NOTHING, 0, 3, END, 0, 0);
}

TEST(RegexpCompileTest, AComplexAtomUnderStarLoopsThroughBack) {
    EXPECT_PROGRAM("(ab)*", MAGIC, BRANCH, 0, 30,  // 1 -> 31
                   BRANCH, 0, 21,                  // 4 -> 25
                   OPEN + 1, 0, 3,                 // 7 -> 10
                   BRANCH, 0, 9,                   // 10 -> 19
                   EXACTLY, 0, 6, 'a', 'b', 0,     // 13 -> 19
                   CLOSE + 1, 0, 3,                // 19 -> 22
                   BACK, 0, 18,                    // 22 -> 4
                   BRANCH, 0, 3,                   // 25 -> 28
                   NOTHING, 0, 3,                  // 28 -> 31
                   END, 0, 0);                     // 31
}

TEST(RegexpCompileTest, AComplexAtomUnderPlusIsFollowedByTheChoiceToGoBack) {
    EXPECT_PROGRAM("(ab)+c", MAGIC, BRANCH, 0, 35,  // 1 -> 36
                   OPEN + 1, 0, 3,                  // 4 -> 7
                   BRANCH, 0, 9,                    // 7 -> 16
                   EXACTLY, 0, 6, 'a', 'b', 0,      // 10 -> 16
                   CLOSE + 1, 0, 3,                 // 16 -> 19
                   BRANCH, 0, 6,                    // 19 -> 25
                   BACK, 0, 18,                     // 22 -> 4
                   BRANCH, 0, 3,                    // 25 -> 28
                   NOTHING, 0, 3,                   // 28 -> 31
                   EXACTLY, 0, 5, 'c', 0,           // 31 -> 36
                   END, 0, 0);                      // 36
}

TEST(RegexpCompileTest, AnOptionalGroupMeetsItsWayOutAtTheNothing) {
    EXPECT_PROGRAM("(a)?", MAGIC, BRANCH, 0, 26,  // 1 -> 27
                   BRANCH, 0, 17,                 // 4 -> 21
                   OPEN + 1, 0, 3,                // 7 -> 10
                   BRANCH, 0, 8,                  // 10 -> 18
                   EXACTLY, 0, 5, 'a', 0,         // 13 -> 18
                   CLOSE + 1, 0, 6,               // 18 -> 24
                   BRANCH, 0, 3,                  // 21 -> 24
                   NOTHING, 0, 3,                 // 24 -> 27
                   END, 0, 0);                    // 27
}

TEST(RegexpCompileTest, LinksPast255BytesHaveAHighByteFirst) {
    std::string pattern(300, 'a');
    Expression expression = compile(pattern.c_str());
    ASSERT_TRUE(expression);
    static const unsigned char head[] = {MAGIC, BRANCH, 1, 51, EXACTLY, 1, 48};  // 3 + 304 and 304
    EXPECT_EQ(RegexpRig::bytes(head) + pattern + std::string("\0\0\0\0", 4), RegexpRig::program(expression, 311));
}

TEST(RegexpCompileTest, FreshExpressionsHaveNoResults) {
    Expression expression = compile("(a)");
    ASSERT_TRUE(expression);
    for (int i = 0; i < NSUBEXP; ++i) {
        EXPECT_EQ(nullptr, expression->startp[i]);
        EXPECT_EQ(nullptr, expression->endp[i]);
    }
}

void expectHints(const char* pattern, char start, char anchored, const char* must) {
    Expression expression = compile(pattern);
    ASSERT_TRUE(expression) << pattern;
    EXPECT_EQ(start, expression->regstart) << pattern;
    EXPECT_EQ(anchored, expression->reganch) << pattern;
    EXPECT_STREQ(must, expression->regmust) << pattern;
    EXPECT_EQ(must ? static_cast<int>(std::strlen(must)) : 0, expression->regmlen) << pattern;
}

TEST(RegexpCompileTest, ALeadingLiteralSetsTheStartCharacter) {
    expectHints("abc", 'a', 0, nullptr);
    expectHints("\xe9", '\xe9', 0, nullptr);
    expectHints("ab*", 'a', 0, nullptr);
    expectHints("\\.x", '.', 0, nullptr);
}

TEST(RegexpCompileTest, ALeadingCaretSetsTheAnchor) {
    expectHints("^abc", 0, 1, nullptr);
    expectHints("(^abc)", 0, 0, nullptr);
    expectHints("a^", 'a', 0, nullptr);
}

TEST(RegexpCompileTest, SeveralAlternativesHaveNoHints) {
    expectHints("abc|abd", 0, 0, nullptr);
    expectHints("^a|^b", 0, 0, nullptr);
    expectHints("x*abc\nx*abc", 0, 0, nullptr);
    expectHints("", 0, 0, nullptr);
}

TEST(RegexpCompileTest, AnExpressionThatStartsWithARepeatHasARequiredLiteral) {
    expectHints(".*abc", 0, 0, "abc");
    expectHints("a?bc", 0, 0, "bc");
    expectHints("(ab)*cd", 0, 0, "cd");
    expectHints("(x*)abc", 0, 0, "abc");
    expectHints("(y|x*)abc", 0, 0, "abc");
}

TEST(RegexpCompileTest, TheLongestRequiredLiteralIsKeptAndOfEqualOnesTheLast) {
    expectHints("x*abc.de", 0, 0, "abc");
    expectHints("x*ab.cde", 0, 0, "cde");
    expectHints("x*ab.cd", 0, 0, "cd");
}

TEST(RegexpCompileTest, RequiredLiteralsStandDirectlyInTheAlternative) {
    expectHints("x*(abc)d", 0, 0, "d");
    expectHints("x*(abc)", 0, 0, nullptr);
    expectHints("x*(abc)+", 0, 0, nullptr);
    expectHints("x*y?z+", 0, 0, nullptr);
}

TEST(RegexpCompileTest, PlusHidesThatItsAtomStartsWithARepeat) {
    expectHints("x+abc", 0, 0, nullptr);
    expectHints("(x*y)+abc", 0, 0, nullptr);
    expectHints("(x*y)abc", 0, 0, "abc");
}

TEST(RegexpCompileTest, OnlyTheFirstPieceCountsAsTheStart) {
    expectHints(".x*abc", 0, 0, nullptr);
    expectHints("^x*abc", 0, 1, nullptr);
}

TEST(RegexpCompileTest, TheRequiredLiteralPointsIntoTheProgram) {
    Expression expression = compile(".*abc");
    // Magic, BRANCH, STAR, ANY, then the header of EXACTLY.
    EXPECT_EQ(reinterpret_cast<char*>(expression.get()) + offsetof(regexp, program) + 13, expression->regmust);
}

TEST(RegexpCompileTest, NullIsRejected) { EXPECT_EQ("NULL argument", rejection(nullptr)); }

TEST(RegexpCompileTest, NineGroupsCompileAndTenDoNot) {
    EXPECT_TRUE(compile("(a)(b)(c)(d)(e)(f)(g)(h)(i)"));
    EXPECT_TRUE(compile("(((((((((a)))))))))"));
    EXPECT_EQ("too many ()", rejection("(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)"));
    EXPECT_EQ("too many ()", rejection("((((((((((a))))))))))"));
}

TEST(RegexpCompileTest, DeepNestingIsRejectedWithoutDeepRecursion) {
    EXPECT_EQ("too many ()", rejection(std::string(10000000, '(').c_str()));
}

TEST(RegexpCompileTest, UnmatchedParenthesesAreRejected) {
    EXPECT_EQ("unmatched ()", rejection("("));
    EXPECT_EQ("unmatched ()", rejection("(a"));
    EXPECT_EQ("unmatched ()", rejection("a)"));
    EXPECT_EQ("unmatched ()", rejection(")"));
    EXPECT_EQ("unmatched ()", rejection("(a))"));
}

TEST(RegexpCompileTest, RepeatingWhatCouldBeEmptyIsRejected) {
    EXPECT_EQ("*+ operand could be empty", rejection("()*"));
    EXPECT_EQ("*+ operand could be empty", rejection("(a*)*"));
    EXPECT_EQ("*+ operand could be empty", rejection("(a*)+"));
    EXPECT_EQ("*+ operand could be empty", rejection("(a|)+"));
    EXPECT_EQ("*+ operand could be empty", rejection("^*"));
    EXPECT_EQ("*+ operand could be empty", rejection("$+"));
    EXPECT_EQ("*+ operand could be empty", rejection("a\\<*"));
    EXPECT_EQ("*+ operand could be empty", rejection("\\>+"));
    EXPECT_TRUE(compile("(a*b)*"));
    EXPECT_TRUE(compile("(a*|b)?"));
    EXPECT_TRUE(compile("^?"));
}

TEST(RegexpCompileTest, ABranchHasWidthWhenAnyPieceHas) {
    EXPECT_TRUE(compile("(a*bc?)+"));
    EXPECT_EQ("*+ operand could be empty", rejection("(a*bc?|d?)+"));
}

TEST(RegexpCompileTest, AQuantifierRightAfterAQuantifierIsRejected) {
    EXPECT_EQ("nested *?+", rejection("a**"));
    EXPECT_EQ("nested *?+", rejection("a+*"));
    EXPECT_EQ("nested *?+", rejection("a?+"));
    EXPECT_EQ("nested *?+", rejection("(a)+?"));
}

TEST(RegexpCompileTest, AQuantifierAfterNothingIsRejected) {
    EXPECT_EQ("?+* follows nothing", rejection("*a"));
    EXPECT_EQ("?+* follows nothing", rejection("(+)"));
    EXPECT_EQ("?+* follows nothing", rejection("a|?"));
    EXPECT_EQ("?+* follows nothing", rejection("a\n*"));
}

TEST(RegexpCompileTest, UnmatchedBracketsAreRejected) {
    EXPECT_EQ("unmatched []", rejection("["));
    EXPECT_EQ("unmatched []", rejection("[^"));
    EXPECT_EQ("unmatched []", rejection("[]"));
    EXPECT_EQ("unmatched []", rejection("[^]"));
    EXPECT_EQ("unmatched []", rejection("[a-"));
    EXPECT_EQ("unmatched []", rejection("[-"));
}

TEST(RegexpCompileTest, ARangeThatRunsBackwardsIsRejected) {
    EXPECT_EQ("invalid [] range", rejection("[z-a]"));
    EXPECT_EQ("invalid [] range", rejection("[c-a]"));
    EXPECT_EQ("invalid [] range", rejection("[\xff-a]"));
    EXPECT_EQ("invalid [] range", rejection("[a-c-a]"));
}

TEST(RegexpCompileTest, ATrailingBackslashIsRejected) {
    EXPECT_EQ("trailing \\", rejection("\\"));
    EXPECT_EQ("trailing \\", rejection("abc\\"));
    EXPECT_EQ("trailing \\", rejection("a\\\\\\"));
}

TEST(RegexpCompileTest, TheLargestProgramHas32766Bytes) {
    // Magic 1, BRANCH 3, EXACTLY 3, its NUL 1, END 3: 11 bytes around the literal.
    std::string literal(32766 - 11, 'a');
    Expression largest = compile(literal.c_str());
    ASSERT_TRUE(largest);
    EXPECT_EQ(1, qnregexec(largest.get(), literal.c_str()));
    EXPECT_EQ("regexp too big", rejection((literal + 'a').c_str()));
}

// Where compiling a pattern stops.
long place(const std::string& pattern) {
    compile(pattern.c_str());
    return qnregerrorplace();
}

TEST(RegexpCompileTest, ThePlaceOfAMistakeIsWhereItShows) {
    EXPECT_EQ(2, place("a**"));
    EXPECT_EQ(0, place("*a"));
    EXPECT_EQ(2, place("a|?"));
    EXPECT_EQ(4, place("(a*)*"));
    EXPECT_EQ(2, place("(a"));
    EXPECT_EQ(1, place("a)"));
    EXPECT_EQ(6, place("ab[cde"));
    EXPECT_EQ(2, place("[z-a]"));
    EXPECT_EQ(4, place("abc\\"));
    EXPECT_EQ(27, place("(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)"));
}

TEST(RegexpCompileTest, ThePlaceOfWhatIsTooLargeIsItsEnd) { EXPECT_EQ(40000, place(std::string(40000, 'a'))); }

TEST(RegexpCompileTest, APatternThatCompilesHasNoPlace) {
    place("a**");
    EXPECT_EQ(-1, place("a*"));
    EXPECT_EQ(-1, place(""));
}

TEST(RegexpCompileTest, ThePlaceInNullIsItsStart) {
    place("a**");
    compile(nullptr);
    EXPECT_EQ(0, qnregerrorplace());
}

TEST(RegexpCompileTest, SearchingLeavesThePlaceAlone) {
    Expression expression = compile("a");
    place("a**");
    qnregexec(expression.get(), "b");
    EXPECT_EQ(2, qnregerrorplace());
}

TEST(RegexpCompileTest, AMistakeIsReportedBeforeTheSize) {
    EXPECT_EQ("unmatched ()", rejection((std::string(40000, 'a') + ')').c_str()));
}

#if !defined(__SANITIZE_ADDRESS__)
// Runs in a child process: takes all memory that a limit leaves, then compiles.
int compileWithoutMemory() {
    std::string pattern(20000, 'a');
    rlimit limit = {};
    limit.rlim_cur = limit.rlim_max = 16 << 20;
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    regexpMessages().reserve(8);
    for (std::size_t size = 1 << 20; size >= 1024;) {
        void* volatile block = std::malloc(size);
        if (!block) size /= 2;
    }
    regexp* expression = qnregcomp(pattern.c_str());
    if (expression) return 3;
    return regexpMessages().size() == 1 && regexpMessages()[0] == "out of space" ? 0 : 4;
}

TEST(RegexpCompileTest, ExhaustedMemoryGivesNull) {
    regexpMessages().clear();
    pid_t child = fork();
    if (child == 0) _exit(compileWithoutMemory());
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
}
#endif

TEST(RegexpCompileTest, NineGroupsWithinEachOtherHaveNineEnds) {
    EXPECT_PROGRAM("(((((((((a)))))))))", MAGIC, BRANCH, 0, 89,                   // 1 -> 90
                   OPEN + 1, 0, 3, BRANCH, 0, 80, OPEN + 2, 0, 3, BRANCH, 0, 71,  // 7 -> 87, 13 -> 84
                   OPEN + 3, 0, 3, BRANCH, 0, 62, OPEN + 4, 0, 3, BRANCH, 0, 53,  // 19 -> 81, 25 -> 78
                   OPEN + 5, 0, 3, BRANCH, 0, 44, OPEN + 6, 0, 3, BRANCH, 0, 35,  // 31 -> 75, 37 -> 72
                   OPEN + 7, 0, 3, BRANCH, 0, 26, OPEN + 8, 0, 3, BRANCH, 0, 17,  // 43 -> 69, 49 -> 66
                   OPEN + 9, 0, 3, BRANCH, 0, 8,                                  // 55 -> 63
                   EXACTLY, 0, 5, 'a', 0,                                         // 58 -> 63
                   CLOSE + 9, 0, 3, CLOSE + 8, 0, 3, CLOSE + 7, 0, 3,             // 63, 66, 69
                   CLOSE + 6, 0, 3, CLOSE + 5, 0, 3, CLOSE + 4, 0, 3,             // 72, 75, 78
                   CLOSE + 3, 0, 3, CLOSE + 2, 0, 3, CLOSE + 1, 0, 3,             // 81, 84, 87
                   END, 0, 0);                                                    // 90
}

TEST(RegexpCompileTest, ARunEndsBeforeEveryCharacterOfTheStructureAround) {
    EXPECT_PROGRAM("ab|c", MAGIC, BRANCH, 0, 9, EXACTLY, 0, 14, 'a', 'b', 0, BRANCH, 0, 8, EXACTLY, 0, 5, 'c', 0, END,
                   0, 0);
    EXPECT_PROGRAM("ab\nc", MAGIC, BRANCH, 0, 9, EXACTLY, 0, 14, 'a', 'b', 0, BRANCH, 0, 8, EXACTLY, 0, 5, 'c', 0, END,
                   0, 0);
    EXPECT_PROGRAM("ab(c)", MAGIC, BRANCH, 0, 23,  // 1 -> 24
                   EXACTLY, 0, 6, 'a', 'b', 0,     // 4 -> 10
                   OPEN + 1, 0, 3,                 // 10 -> 13
                   BRANCH, 0, 8,                   // 13 -> 21
                   EXACTLY, 0, 5, 'c', 0,          // 16 -> 21
                   CLOSE + 1, 0, 3,                // 21 -> 24
                   END, 0, 0);                     // 24
}

TEST(RegexpCompileTest, AnEscapeAtTheEndOfARunIsItsCharacter) {
    EXPECT_PROGRAM("a\\$", MAGIC, BRANCH, 0, 9, EXACTLY, 0, 6, 'a', '$', 0, END, 0, 0);
    EXPECT_PROGRAM("a\\.$", MAGIC, BRANCH, 0, 12, EXACTLY, 0, 6, 'a', '.', 0, EOL, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("a\\\n|b", MAGIC, BRANCH, 0, 9, EXACTLY, 0, 14, 'a', '\n', 0, BRANCH, 0, 8, EXACTLY, 0, 5, 'b', 0,
                   END, 0, 0);
}

TEST(RegexpCompileTest, AnAtomOfOneCharacterUnderAQuestionMarkIsABranchToo) {
    EXPECT_PROGRAM(".?", MAGIC, BRANCH, 0, 15, BRANCH, 0, 6, ANY, 0, 6, BRANCH, 0, 3, NOTHING, 0, 3, END, 0, 0);
    EXPECT_PROGRAM("[ab]?", MAGIC, BRANCH, 0, 18, BRANCH, 0, 9, ANYOF, 0, 9, 'a', 'b', 0, BRANCH, 0, 3, NOTHING, 0, 3,
                   END, 0, 0);
}

TEST(RegexpCompileTest, EveryAlternativeOfARepeatedGroupMeetsItsEndAndThatTheWayBack) {
    EXPECT_PROGRAM("(a|b)*", MAGIC, BRANCH, 0, 37,  // 1 -> 38
                   BRANCH, 0, 28,                   // 4 -> 32
                   OPEN + 1, 0, 3,                  // 7 -> 10
                   BRANCH, 0, 8,                    // 10 -> 18
                   EXACTLY, 0, 13, 'a', 0,          // 13 -> 26
                   BRANCH, 0, 8,                    // 18 -> 26
                   EXACTLY, 0, 5, 'b', 0,           // 21 -> 26
                   CLOSE + 1, 0, 3,                 // 26 -> 29
                   BACK, 0, 25,                     // 29 -> 4
                   BRANCH, 0, 3,                    // 32 -> 35
                   NOTHING, 0, 3,                   // 35 -> 38
                   END, 0, 0);                      // 38
}

// "junk on end" and "internal urp" stand for what the grammar leaves no way to.
TEST(RegexpCompileTest, NoPatternReachesTheTwoMessagesThatTheGrammarRulesOut) {
    static const char signs[] = "ab()|\n*+?[]-^$.\\<";
    const std::size_t count = sizeof signs - 1;
    unsigned long rejected = 0;
    for (unsigned length = 1; length <= 4; ++length) {
        std::vector<std::size_t> digits(length, 0);
        for (bool more = true; more;) {
            std::string pattern;
            for (std::size_t digit : digits) pattern += signs[digit];
            std::string message = rejection(pattern.c_str());
            if (message != "(compiled)") ++rejected;
            ASSERT_NE("junk on end", message) << pattern;
            ASSERT_NE("internal urp", message) << pattern;
            ASSERT_NE("(not one message)", message) << pattern;
            unsigned place = 0;
            while (place < length && ++digits[place] == count) digits[place++] = 0;
            more = place < length;
        }
    }
    EXPECT_GT(rejected, 1000u);
}

}  // namespace RegexpCompileTest

#undef EXPECT_PROGRAM
