#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <string>

#include "text/RegexpRig.h"

/*
 * Patterns and texts that are exponential, or quadratic, for plain backtracking. They all have to end in time that is
 * proportional to the text, whatever the stack.
 */
namespace RegexpHostileTest {

using RegexpRig::compile;
using RegexpRig::Expression;

// Shorter texts where the library is instrumented, is not optimised, or is emulated.
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__) || defined(__powerpc__)
constexpr std::size_t longText = 200000;
constexpr std::size_t hugeText = longText;
#else
constexpr std::size_t longText = 1000000;
constexpr std::size_t hugeText = 10000000;
#endif

std::string repeated(const char* unit, std::size_t size) {
    std::string text;
    while (text.size() < size) text += unit;
    return text;
}

// Expects no match.
void expectNone(const char* pattern, const std::string& text) {
    Expression expression = compile(pattern);
    ASSERT_TRUE(expression) << pattern;
    EXPECT_EQ(0, qnregexec(expression.get(), text.c_str())) << pattern;
}

// Expects a match of the whole text, and group 1 at these offsets.
void expectWhole(const char* pattern, const std::string& text, std::size_t start, std::size_t end) {
    Expression expression = compile(pattern);
    ASSERT_TRUE(expression) << pattern;
    ASSERT_EQ(1, qnregexec(expression.get(), text.c_str())) << pattern;
    EXPECT_EQ(text.c_str(), expression->startp[0]) << pattern;
    EXPECT_EQ(text.c_str() + text.size(), expression->endp[0]) << pattern;
    EXPECT_EQ(text.c_str() + start, expression->startp[1]) << pattern;
    EXPECT_EQ(text.c_str() + end, expression->endp[1]) << pattern;
}

TEST(RegexpHostileTest, ARepeatedChoiceIsLinear) {
    expectNone("(a|b)*c", repeated("ab", longText));
    expectNone("(a|b)*c$", repeated("ab", longText) + "cx");
    expectWhole("(a|b)*c", repeated("ab", longText) + "c", longText - 1, longText);
}

TEST(RegexpHostileTest, RepeatsWithinARepeatAreLinear) {
    expectNone("(x+x+)+y", std::string(longText, 'x'));
    expectNone("(x+x+)+[yz]", std::string(longText, 'x'));
    expectWhole("(x+x+)+y", std::string(longText, 'x') + "y", 0, longText);
}

TEST(RegexpHostileTest, OverlappingAlternativesAreLinear) {
    expectNone("(a|aa)+$", std::string(longText, 'a') + "b");
    expectWhole("(a|aa)+$", std::string(longText, 'a'), longText - 1, longText);
    expectWhole("(aa|aaa)+$", std::string(longText + 1, 'a'), longText - 2, longText + 1);
}

TEST(RegexpHostileTest, ChainedRepeatsDoNotCountAgainAtEveryPlace) {
    expectNone(".*.*.*=.*", std::string(longText, 'x'));
    expectNone(".*.*.*[=:].*", std::string(longText, 'x'));
    expectNone(".*.*.*=$", "=" + std::string(longText, 'x'));
    expectNone("x*x*x*[yz]", std::string(longText, 'x'));
}

TEST(RegexpHostileTest, DeepChoicesNeedNoStack) {
    // Every character leaves a choice that is given up only at the end.
    expectWhole("(a|ab|b)*", repeated("ab", longText), longText - 1, longText);
    expectWhole("((a)|a)*$", std::string(longText, 'a'), longText - 1, longText);
}

TEST(RegexpHostileTest, LongLiteralsThatAlmostFitAreLinear) {
    std::string almost(1000, 'a');
    expectNone((almost + "b").c_str(), std::string(20000, 'a'));
    expectNone(("[ab]" + almost + "b").c_str(), std::string(20000, 'a'));
    expectNone(("(" + almost + "b|" + almost + "c)d").c_str(), std::string(20000, 'a'));
}

// The processor time of this thread, in seconds.
double processorTime() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The least time of three searches in which nothing is found, for each byte of the text.
double timePerByte(const Expression& expression, const char* unit, const char* tail, std::size_t size) {
    std::string text = repeated(unit, size) + tail;
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        double before = processorTime();
        EXPECT_EQ(0, qnregexec(expression.get(), text.c_str()));
        best = std::min(best, (processorTime() - before) / static_cast<double>(size));
    }
    return best;
}

TEST(RegexpHostileTest, TheTimeForEachByteDoesNotGrowWithTheText) {
    const char* const hostile[][3] = {{"(a|b)*c$", "ab", "cx"},      {"(x+x+)+[yz]", "x", ""},
                                      {"(a|aa)+$", "a", "b"},        {".*.*.*[=:].*", "x", ""},
                                      {"(.*)(.*)(.*)=$", "x", "=x"}, {"(ab|a|b)+(c|d)", "ab", ""}};
    for (const auto& each : hostile) {
        Expression expression = compile(each[0]);
        // Quadratic time would make this 40; the bound is wide because other programs share the machine's caches.
        double small = timePerByte(expression, each[1], each[2], longText / 40);
        EXPECT_LT(timePerByte(expression, each[1], each[2], longText), 4 * small) << each[0];
    }
}

void* searchHostileTexts(void*) {
    expectNone("(a|b)*c$", repeated("ab", hugeText) + "cx");
    expectNone("(x+x+)+[yz]", std::string(hugeText, 'x'));
    expectNone("(a|aa)+$", std::string(hugeText, 'a') + "b");
    expectNone(".*.*.*[=:].*", std::string(hugeText, 'x'));
    expectWhole("(a|ab|b)*", repeated("ab", hugeText), hugeText - 1, hugeText);
    return nullptr;
}

TEST(RegexpHostileTest, AStackOf64KilobytesIsEnough) {
    std::size_t stack = 64 * 1024;
    long least = sysconf(_SC_THREAD_STACK_MIN);
    if (least > 0 && static_cast<std::size_t>(least) > stack) stack = static_cast<std::size_t>(least);
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, stack));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, searchHostileTexts, nullptr));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

}  // namespace RegexpHostileTest
