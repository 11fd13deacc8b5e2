#include "RegExp.h"
#include "text/RegMatch.h"
#include "text/ReferenceRegex.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

/*
 * The engine against plain recursion, on random patterns and texts. `QN_SEED` gives the seed, `QN_ROUNDS` the number of
 * patterns; `QN_ROUNDS=1000000` is the long run.
 */
namespace RegexpDifferentialTest {

struct Freer {
    void operator()(regexp* expression) const { std::free(expression); }
};
typedef std::unique_ptr<regexp, Freer> Expression;

unsigned long fromEnvironment(const char* name, unsigned long otherwise) {
    const char* value = std::getenv(name);
    return value ? std::strtoul(value, nullptr, 10) : otherwise;
}

class Generator {
public:
    explicit Generator(unsigned long seed) : random(static_cast<std::mt19937::result_type>(seed)) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    std::string text() {
        static const char letters[] = "aaaabbbbcc_ -\n\xe9";
        std::string result;
        for (unsigned length = below(14); length > 0; --length) result += letters[below(sizeof letters - 1)];
        return result;
    }

    // A well-formed pattern; `width` tells whether it cannot match the empty string.
    std::string pattern(unsigned depth, bool& width) {
        width = true;
        std::string result;
        for (;;) {
            bool branchWidth = false;
            for (unsigned pieces = below(4); pieces > 0; --pieces) {
                bool pieceWidth = false;
                result += piece(depth, pieceWidth);
                branchWidth = branchWidth || pieceWidth;
            }
            width = width && branchWidth;
            if (below(4) != 0) return result;
            result += below(5) ? '|' : '\n';
        }
    }

    // Any characters at all, mostly those that mean something.
    std::string noise() {
        static const char signs[] = "ab()|[]^-$.*+?\\<>\n{}\xff";
        std::string result;
        for (unsigned length = below(10); length > 0; --length) result += signs[below(sizeof signs - 1)];
        return result;
    }

    void restart() { groups = 0; }

private:
    std::string piece(unsigned depth, bool& width) {
        std::string result = atom(depth, width);
        switch (below(6)) {
        case 0:
            if (!width) return result;
            width = false;
            return result + "*";
        case 1: return width ? result + "+" : result;
        case 2: width = false; return result + "?";
        default: return result;
        }
    }

    std::string atom(unsigned depth, bool& width) {
        static const char* const simple[] = {"a",    "b",     "c",      ".",    "[ab]",    "[^a]", "[a-c]", "[]a]",
                                             "\\-",  "_",     "[^a-b]", "\xe9", "[\x80-\xff]", "\\a",  " ",     "[-b]"};
        static const char* const empty[] = {"^", "$", "\\<", "\\>"};
        if (depth > 0 && groups < 9 && below(3) == 0) {
            ++groups;
            return "(" + pattern(depth - 1, width) + ")";
        }
        width = below(8) != 0;
        return width ? simple[below(sizeof simple / sizeof *simple)] : empty[below(4)];
    }

    std::mt19937 random;
    unsigned groups = 0;
};

// Both ways of the engine, each on its own, must find what the reference finds.
void compare(const Expression& expression, const std::string& pattern, const std::string& text) {
    ReferenceRegex reference(expression.get());
    int expected = reference.search(text.c_str());
    if (reference.gaveUp()) return;
    std::string what = "pattern <" + pattern + "> text <" + text + ">";
    ASSERT_EQ(expected, qnregexec(expression.get(), text.c_str())) << what;

    RegCaptures lockstep = {};
    RegSearch search(RegPlan::of(*expression), *expression, text.c_str());
    ASSERT_EQ(expected != 0, regLockstep(search, text.c_str(), lockstep)) << what;
    if (!expected) return;
    for (int i = 0; i < NSUBEXP; ++i) {
        ASSERT_EQ(reference.start[i], expression->startp[i]) << what << " start of group " << i;
        ASSERT_EQ(reference.end[i], expression->endp[i]) << what << " end of group " << i;
        ASSERT_EQ(reference.start[i], lockstep.start[i]) << what << " lockstep start of group " << i;
        ASSERT_EQ(reference.end[i], lockstep.end[i]) << what << " lockstep end of group " << i;
    }
}

TEST(RegexpDifferentialTest, FindsTheMatchesAndGroupsOfPlainRecursion) {
    unsigned long seed = fromEnvironment("QN_SEED", std::random_device()());
    unsigned long rounds = fromEnvironment("QN_ROUNDS", 50000);
    std::printf("QN_SEED=%lu QN_ROUNDS=%lu\n", seed, rounds);
    Generator generator(seed);
    for (unsigned long round = 0; round < rounds; ++round) {
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
    unsigned long seed = fromEnvironment("QN_SEED", std::random_device()());
    unsigned long rounds = fromEnvironment("QN_ROUNDS", 50000);
    std::printf("QN_SEED=%lu QN_ROUNDS=%lu\n", seed, rounds);
    Generator generator(seed);
    unsigned long compiled = 0;
    for (unsigned long round = 0; round < rounds; ++round) {
        std::string pattern = generator.noise();
        Expression expression(qnregcomp(pattern.c_str()));
        if (!expression) continue;
        ++compiled;
        compare(expression, pattern, generator.text());
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(compiled, rounds / 100);
    EXPECT_LT(compiled, rounds);
}

// One mistake put into a sound pattern, at a place where nothing around it can make it sound.
TEST(RegexpDifferentialTest, OneMistakeInASoundPatternIsRejected) {
    unsigned long seed = fromEnvironment("QN_SEED", std::random_device()());
    std::printf("QN_SEED=%lu\n", seed);
    static const char* const mistakes[] = {"(", ")", "a**", "a+?", "(*)", "()+", "(a*)*", "^*", "$+", "[z-a]", "[a", "(|?)", "a\\"};
    Generator generator(seed);
    for (int round = 0; round < 5000; ++round) {
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
