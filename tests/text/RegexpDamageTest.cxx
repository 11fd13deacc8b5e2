#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/RegexpRig.h"

/*
 * Programs that have been damaged. Every one must end; a walk that meets a fault fails with a message, and the walks
 * that do not meet it are as good as before. The offsets are those of the programs in RegexpCompileTest.
 */
namespace RegexpDamageTest {

using RegexpRig::compile;
using RegexpRig::Expression;
using RegexpRig::group;
using RegexpRig::programByte;

typedef std::vector<std::string> Messages;

int search(const Expression& expression, const char* text) {
    regexpMessages().clear();
    return qnregexec(expression.get(), text);
}

TEST(RegexpDamageTest, AWrongMagicByteIsReported) {
    Expression expression = compile("a");
    programByte(expression, 0) = 0x1c;
    EXPECT_EQ(0, search(expression, "a"));
    EXPECT_EQ(Messages{"corrupted program"}, regexpMessages());
}

TEST(RegexpDamageTest, AnUnlistedOpcodeIsReportedByEveryTryThatMeetsIt) {
    for (unsigned opcode : {14u, 20u, 30u, 40u, 255u}) {
        Expression expression = compile("a");
        programByte(expression, 4) = static_cast<unsigned char>(opcode);
        EXPECT_EQ(0, search(expression, "xaxa"));  // tried where the start character stands
        EXPECT_EQ(Messages(2, "memory corruption"), regexpMessages()) << opcode;
    }
}

TEST(RegexpDamageTest, AnotherAlternativeStillMatches) {
    Expression expression = compile("a|b");
    programByte(expression, 4) = 99;
    EXPECT_EQ(1, search(expression, "b"));
    EXPECT_EQ("b", group(expression));
    EXPECT_EQ(Messages{"memory corruption"}, regexpMessages());
}

TEST(RegexpDamageTest, AFaultThatIsNotReachedIsNotReported) {
    Expression expression = compile("a|b");
    programByte(expression, 12) = 99;
    EXPECT_EQ(1, search(expression, "a"));
    EXPECT_EQ(Messages{}, regexpMessages());
}

TEST(RegexpDamageTest, AMissingLinkIsReported) {
    Expression expression = compile("ab*");
    programByte(expression, 6) = 0;  // from EXACTLY "a" to the repeat
    EXPECT_EQ(0, search(expression, "ab"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, AMissingLinkAfterARepeatIsReportedForEveryCount) {
    Expression expression = compile("ab*");
    programByte(expression, 11) = 0;  // from the repeat to the end
    EXPECT_EQ(0, search(expression, "abb"));
    EXPECT_EQ(Messages(3, "corrupted pointers"), regexpMessages());
}

TEST(RegexpDamageTest, ALinkOutOfTheProgramIsAMissingLink) {
    Expression forward = compile("ab*");
    programByte(forward, 5) = 0x80;
    EXPECT_EQ(0, search(forward, "ab"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());

    Expression backward = compile("(ab)*");
    programByte(backward, 24) = 23;  // BACK stands at 22
    EXPECT_EQ(1, search(backward, "ab"));
    EXPECT_EQ("", group(backward));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, AMissingLinkOfABranchEndsItsAlternatives) {
    Expression expression = compile("a|b");
    programByte(expression, 3) = 0;
    EXPECT_EQ(1, search(expression, "a"));
    EXPECT_EQ(0, search(expression, "b"));
    EXPECT_EQ(Messages{}, regexpMessages());
}

TEST(RegexpDamageTest, ARepeatOverWhatCannotBeRepeatedCountsZero) {
    Expression star = compile("x*y");
    programByte(star, 7) = 9;  // NOTHING
    EXPECT_EQ(1, search(star, "y"));
    EXPECT_EQ("y", group(star));
    EXPECT_EQ(Messages{"internal foulup"}, regexpMessages());

    Expression plus = compile("x+y");
    programByte(plus, 7) = 9;
    EXPECT_EQ(0, search(plus, "xy"));
    EXPECT_EQ(Messages(3, "internal foulup"), regexpMessages());  // at "x", at "y" and at the end
}

TEST(RegexpDamageTest, ALoopWithoutWidthEnds) {
    Expression star = compile("(ab)*");
    programByte(star, 13) = 9;  // EXACTLY becomes NOTHING
    EXPECT_EQ(0, search(star, "ab"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());

    Expression plus = compile("(ab)+c");
    programByte(plus, 10) = 9;
    EXPECT_EQ(0, search(plus, "abc"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, ALoopWithoutWidthThatIsNotReachedDoesNoHarm) {
    Expression expression = compile("z|(ab)*");
    // BRANCH 1, EXACTLY "z" 4, BRANCH 9, then the program of (ab)* from 12 on: its EXACTLY stands at 21.
    ASSERT_EQ(8, programByte(expression, 21));
    programByte(expression, 21) = 9;
    EXPECT_EQ(1, search(expression, "z"));
    EXPECT_EQ("z", group(expression));
    EXPECT_EQ(Messages{}, regexpMessages());
    EXPECT_EQ(0, search(expression, "q"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, ALoopWhoseBodyCanBeEmptyGoesOnWhileItTakesCharacters) {
    // The loop comes before its way out, so it is walked again at the "c", where it never ends.
    Expression expression = compile("([ab]x)*c");
    // BRANCH 1, BRANCH 4, OPEN 7, BRANCH 10, ANYOF 13 with its operand up to 18, EXACTLY "x" 19.
    ASSERT_EQ(8, programByte(expression, 19));
    programByte(expression, 19) = 9;   // NOTHING, with the same link
    programByte(expression, 13) = 10;  // STAR, over the node at 16
    programByte(expression, 16) = 8;   // EXACTLY, whose operand would start at 19
    EXPECT_EQ(0, search(expression, "c"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, FaultsBehindAnEndlessLoopAreNotReached) {
    Expression expression = compile("(ab)*|z");
    ASSERT_EQ(8, programByte(expression, 13));
    programByte(expression, 13) = 9;
    // The second alternative: BRANCH 31, EXACTLY "z" 34.
    ASSERT_EQ(8, programByte(expression, 34));
    programByte(expression, 34) = 99;
    EXPECT_EQ(0, search(expression, "z"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

TEST(RegexpDamageTest, FaultsBeforeAnEndlessLoopAreReportedFirst) {
    Expression expression = compile("z|(ab)*");
    programByte(expression, 4) = 99;
    programByte(expression, 21) = 9;
    EXPECT_EQ(0, search(expression, "q"));
    EXPECT_EQ((Messages{"memory corruption", "corrupted pointers"}), regexpMessages());
}

TEST(RegexpDamageTest, AProgramOfZerosBehindItsStartEndsThere) {
    Expression expression = compile("ab.c");
    // BRANCH 1, EXACTLY "ab" 4, ANY 10, EXACTLY "c" 13, END 18.
    for (std::size_t offset = 10; offset < 21; ++offset) programByte(expression, offset) = 0;
    EXPECT_EQ(1, search(expression, "abxc"));
    EXPECT_EQ("ab", group(expression));
    EXPECT_EQ(Messages{}, regexpMessages());
}

TEST(RegexpDamageTest, AnOperandWithoutEndStopsAtTheNextZero) {
    Expression expression = compile("[a]b");
    // BRANCH 1, ANYOF 4 with operand "a" at 7 and its NUL at 8, EXACTLY 9.
    programByte(expression, 8) = 'z';
    EXPECT_EQ(1, search(expression, "zb"));
    EXPECT_EQ(0, search(expression, "yb"));
}

TEST(RegexpDamageTest, AnEmptyLiteralMatchesTheEndOnly) {
    Expression expression = compile("[x]a");
    programByte(expression, 12) = 0;  // the operand of EXACTLY at 9
    EXPECT_EQ(0, search(expression, "xa"));
    EXPECT_EQ(1, search(expression, "ax"));
    EXPECT_EQ("x", group(expression));
}

TEST(RegexpDamageTest, FaultsAreReportedOnHostileTextsToo) {
    Expression expression = compile("(x+x+)+[yz]|q");
    // The second alternative is the last BRANCH: EXACTLY "q" stands 8 bytes before the end of the program.
    std::size_t last = 0;
    for (std::size_t offset = 1; offset < 80 && last == 0; ++offset) {
        if (programByte(expression, offset) == 8 && programByte(expression, offset + 3) == 'q') last = offset;
    }
    ASSERT_NE(0u, last);
    programByte(expression, last) = 99;
    EXPECT_EQ(0, search(expression, std::string(20000, 'x').c_str()));
    ASSERT_FALSE(regexpMessages().empty());
    EXPECT_EQ(Messages(regexpMessages().size(), "memory corruption"), regexpMessages());

    // Here the first alternative matches, and nothing of the fault behind it is ever reached.
    EXPECT_EQ(1, search(expression, (std::string(20000, 'x') + "y").c_str()));
    EXPECT_EQ(Messages{}, regexpMessages());
}

/** The offset of EXACTLY with this one-character operand and, behind it, this byte; 0 if there is none. */
std::size_t literalBefore(const Expression& expression, unsigned char operand, unsigned char next) {
    for (std::size_t offset = 1; offset < 80; ++offset) {
        if (programByte(expression, offset) == 8 && programByte(expression, offset + 3) == operand &&
            programByte(expression, offset + 4) == 0 && programByte(expression, offset + 5) == next) {
            return offset;
        }
    }
    return 0;
}

TEST(RegexpDamageTest, AMissingLinkIsReportedOnHostileTextsToo) {
    Expression expression = compile("(x+x+)+[yz]|xq*z");
    const std::size_t literal = literalBefore(expression, 'x', 10);  // STAR
    ASSERT_NE(0u, literal);
    programByte(expression, literal + 1) = 0;
    programByte(expression, literal + 2) = 0;
    EXPECT_EQ(0, search(expression, std::string(20000, 'x').c_str()));
    ASSERT_FALSE(regexpMessages().empty());
    EXPECT_EQ(Messages(regexpMessages().size(), "corrupted pointers"), regexpMessages());
}

TEST(RegexpDamageTest, ARepeatOverWhatCannotBeRepeatedIsReportedOnHostileTextsToo) {
    Expression expression = compile("(x+x+)+[yz]|q*z");
    const std::size_t literal = literalBefore(expression, 'q', 8);  // EXACTLY "z"
    ASSERT_NE(0u, literal);
    programByte(expression, literal) = 9;  // NOTHING
    EXPECT_EQ(0, search(expression, std::string(20000, 'x').c_str()));
    ASSERT_FALSE(regexpMessages().empty());
    EXPECT_EQ(Messages(regexpMessages().size(), "internal foulup"), regexpMessages());

    // It counts zero, so that what follows it can match.
    const std::string text = std::string(20000, 'x') + "qz";
    EXPECT_EQ(1, search(expression, text.c_str()));
    EXPECT_EQ("z", group(expression));
}

TEST(RegexpDamageTest, AnOpcodeThatWasOnlyLookedAtIsReadAnew) {
    Expression expression = compile("|");
    // BRANCH 1, NOTHING 4, BRANCH 7, NOTHING 10, END 13.
    ASSERT_EQ(6, programByte(expression, 7));
    programByte(expression, 6) = 0;  // from the first NOTHING to the end
    programByte(expression, 7) = 0;  // END, so that the first BRANCH has no other beside it
    EXPECT_EQ(0, search(expression, "a"));
    EXPECT_EQ(Messages(2, "corrupted pointers"), regexpMessages());  // at "a" and at the end
    programByte(expression, 7) = 6;
    EXPECT_EQ(1, search(expression, "a"));
    EXPECT_EQ(Messages{"corrupted pointers"}, regexpMessages());
}

}  // namespace RegexpDamageTest
