#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/RandomRun.h"
#include "text/ReferenceRegex.h"
#include "text/RegexpGenerator.h"

/*
 * The engine against plain recursion, on random patterns and texts. The long run has 1,000,000 rounds.
 */
namespace RegexpDifferentialTest {

using RegexpGenerator::Expression;
using RegexpGenerator::Generator;

void compare(const Expression& expression, const std::string& pattern, const std::string& text) {
    ReferenceRegex reference(expression.get());
    int expected = reference.search(text.c_str());
    if (reference.gaveUp()) return;
    std::string what = "pattern <" + pattern + "> text <" + text + ">";
    ASSERT_EQ(expected, qnregexec(expression.get(), text.c_str())) << what;
    if (!expected) return;
    for (int i = 0; i < NSUBEXP; ++i) {
        ASSERT_EQ(reference.start[i], expression->startp[i]) << what << " start of group " << i;
        ASSERT_EQ(reference.end[i], expression->endp[i]) << what << " end of group " << i;
    }
}

TEST(RegexpDifferentialTest, FindsTheMatchesAndGroupsOfPlainRecursion) {
    RandomRun run(50000);
    Generator generator(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        generator.restart();
        bool width = false;
        std::string pattern = generator.pattern(3, width);
        Expression expression(qnregcomp(pattern.c_str()));
        ASSERT_TRUE(expression) << pattern;
        for (int i = 0; i < 3; ++i) {
            compare(expression, pattern, generator.text());
            if (HasFatalFailure()) return;
        }
    }
}

TEST(RegexpDifferentialTest, WhateverNoiseCompilesIsMatchedAlike) {
    RandomRun run(50000);
    Generator generator(run.seed);
    unsigned long compiled = 0;
    for (unsigned long round = 0; round < run.rounds; ++round) {
        std::string pattern = generator.noise();
        Expression expression(qnregcomp(pattern.c_str()));
        if (!expression) continue;
        ++compiled;
        compare(expression, pattern, generator.text());
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(compiled, run.rounds / 100);
    EXPECT_LT(compiled, run.rounds);
}

// One mistake put into a sound pattern, at a place where nothing around it can make it sound.
TEST(RegexpDifferentialTest, OneMistakeInASoundPatternIsRejected) {
    RandomRun run(5000);
    static const char* const mistakes[] = {"(",  ")",  "a**",   "a+?", "(*)",  "()+", "(a*)*",
                                           "^*", "$+", "[z-a]", "[a",  "(|?)", "a\\"};
    Generator generator(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        generator.restart();
        bool width = false;
        std::string sound = generator.pattern(2, width);
        std::string mistake = mistakes[generator.below(sizeof mistakes / sizeof *mistakes)];
        std::string pattern = "(" + sound + ")|" + mistake;
        if (std::count(sound.begin(), sound.end(), '(') > 6) continue;
        EXPECT_FALSE(Expression(qnregcomp(pattern.c_str()))) << pattern;
    }
}

}  // namespace RegexpDifferentialTest
