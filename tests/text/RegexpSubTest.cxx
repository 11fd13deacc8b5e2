#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/RegexpRig.h"

namespace RegexpSubTest {

using RegexpRig::compile;
using RegexpRig::Expression;

// Matches `pattern` in `text` and expands `source`.
std::string expand(const char* pattern, const char* text, const char* source) {
    Expression expression = compile(pattern);
    EXPECT_EQ(1, qnregexec(expression.get(), text));
    char result[200];
    std::memset(result, '#', sizeof result);
    qnregsub(expression.get(), source, result);
    return result;
}

TEST(RegexpSubTest, AnAmpersandIsTheWholeMatch) { EXPECT_EQ("[b1][b1]", expand("b.", "ab1c", "[&][&]")); }

TEST(RegexpSubTest, ABackslashAndADigitAreAGroup) {
    EXPECT_EQ("12-24 24/12", expand("([0-9]+)-([0-9]+)", "on 12-24", "\\0 \\2/\\1"));
    EXPECT_EQ("i", expand("(a)(b)(c)(d)(e)(f)(g)(h)(i)", "abcdefghi", "\\9"));
}

TEST(RegexpSubTest, AnEscapedAmpersandOrBackslashIsItself) {
    EXPECT_EQ("&", expand("b", "abc", "\\&"));
    EXPECT_EQ("\\", expand("b", "abc", "\\\\"));
    EXPECT_EQ("\\1b", expand("(b)", "abc", "\\\\1\\1"));
}

TEST(RegexpSubTest, ABackslashBeforeAnythingElseIsCopied) {
    EXPECT_EQ("\\n\\<", expand("b", "abc", "\\n\\<"));
    EXPECT_EQ("x\\", expand("b", "abc", "x\\"));
}

TEST(RegexpSubTest, AnUnsetGroupGivesNothing) {
    EXPECT_EQ("<>", expand("(a)|b", "b", "<\\1>"));
    EXPECT_EQ("<>", expand("b", "b", "<\\7>"));
}

TEST(RegexpSubTest, AnEmptyGroupGivesNothing) { EXPECT_EQ("<>", expand("(x*)b", "b", "<\\1>")); }

TEST(RegexpSubTest, AGroupAtTheEndOfTheTextIsCopiedWhole) { EXPECT_EQ("c.", expand("b(.*)$", "abc", "\\1.")); }

TEST(RegexpSubTest, AnEmptyTemplateGivesAnEmptyText) { EXPECT_EQ("", expand("b", "abc", "")); }

TEST(RegexpSubTest, AfterAFailedSearchThereIsNothingToInsert) {
    Expression expression = compile("b$");
    EXPECT_EQ(0, qnregexec(expression.get(), "bc"));
    char result[20] = "#########";
    qnregsub(expression.get(), "<&>", result);
    EXPECT_STREQ("<>", result);
}

TEST(RegexpSubTest, NothingBehindTheTerminatorIsWritten) {
    Expression expression = compile("b");
    ASSERT_EQ(1, qnregexec(expression.get(), "b"));
    char result[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
    qnregsub(expression.get(), "&&", result);
    EXPECT_EQ(std::string("bb\0#####", 8), std::string(result, 8));
}

TEST(RegexpSubTest, ATextThatHasBecomeShorterIsReportedAndEndsTheResult) {
    Expression expression = compile("a(.*)");
    char text[] = "abcdef";
    ASSERT_EQ(1, qnregexec(expression.get(), text));
    text[3] = '\0';
    char result[20] = "#########";
    regexpMessages().clear();
    qnregsub(expression.get(), "<\\1>", result);
    EXPECT_STREQ("<bc", result);
    EXPECT_EQ(std::vector<std::string>{"damaged match string"}, regexpMessages());
}

TEST(RegexpSubTest, AGroupThatEndsBeforeItStartsIsReported) {
    Expression expression = compile("b");
    ASSERT_EQ(1, qnregexec(expression.get(), "abc"));
    std::swap(expression->startp[0], expression->endp[0]);
    char result[20] = "#########";
    regexpMessages().clear();
    qnregsub(expression.get(), "<&>", result);
    EXPECT_STREQ("<", result);
    EXPECT_EQ(std::vector<std::string>{"damaged match string"}, regexpMessages());
}

TEST(RegexpSubTest, NullArgumentsAreReportedAndNothingIsWritten) {
    Expression expression = compile("b");
    ASSERT_EQ(1, qnregexec(expression.get(), "b"));
    char result[] = "#";
    regexpMessages().clear();
    qnregsub(nullptr, "&", result);
    qnregsub(expression.get(), nullptr, result);
    qnregsub(expression.get(), "&", nullptr);
    EXPECT_STREQ("#", result);
    EXPECT_EQ(std::vector<std::string>(3, "NULL parm to regsub"), regexpMessages());
}

TEST(RegexpSubTest, ADamagedProgramIsReportedAndNothingIsWritten) {
    Expression expression = compile("b");
    ASSERT_EQ(1, qnregexec(expression.get(), "b"));
    expression->program[0] = 0;
    char result[] = "#";
    regexpMessages().clear();
    qnregsub(expression.get(), "&", result);
    EXPECT_STREQ("#", result);
    EXPECT_EQ(std::vector<std::string>{"damaged regexp fed to regsub"}, regexpMessages());
}

}  // namespace RegexpSubTest
