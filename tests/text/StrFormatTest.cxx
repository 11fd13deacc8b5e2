#include <gtest/gtest.h>
#include <malloc.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>

#include "Str.h"

namespace StrFormatTest {

std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

/** Whether the block was asked for with this many bytes. */
bool hasBlockOf(const qnStr& s, std::size_t n) {
    std::size_t usable = malloc_usable_size(s.data);
    return usable >= n && usable < n + 16 + sizeof(void*) * 2;
}

// The formats are built at run time, as the compiler would complain about some of them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

template <class... Arguments>
qnStr formatted(const char* format, Arguments... arguments) {
    qnStr s;
    s.format(format, arguments...);
    return s;
}

TEST(StrFormat, TheEstimateSizesTheBuffer) {
    // 2 for the argument, 1 for the dash, 10 for the number; 14 characters and the terminator
    qnStr s = formatted("%s-%d", "ab", 7);
    EXPECT_EQ("ab-7", bytes(s));
    EXPECT_EQ(5u, s.slength);
    EXPECT_TRUE(hasBlockOf(s, 15));
    // 20 for the double, 1 for the character, 1 for the percent sign
    EXPECT_TRUE(hasBlockOf(formatted("%g%c%%", 1.0, 'x'), 24));
    // ten characters each
    EXPECT_TRUE(hasBlockOf(formatted("%i%o%u%x%X%p", 1, 2u, 3u, 4u, 5u, nullptr), 62));
    EXPECT_TRUE(hasBlockOf(formatted("%e%E%f%g%G", 1., 2., 3., 4., 5.), 102));
}

TEST(StrFormat, ConversionsOfEveryWidthKeepStepWithTheirArguments) {
    const char* tail = "tail";
    EXPECT_EQ("1 tail", bytes(formatted("%ld %s", 1L, tail)));
    EXPECT_EQ("2 tail", bytes(formatted("%lld %s", 2LL, tail)));
    EXPECT_EQ("3 tail", bytes(formatted("%zu %s", std::size_t(3), tail)));
    EXPECT_EQ("4 tail", bytes(formatted("%jd %s", std::intmax_t(4), tail)));
    EXPECT_EQ("5 tail", bytes(formatted("%td %s", std::ptrdiff_t(5), tail)));
    EXPECT_EQ("6 tail", bytes(formatted("%hd %s", 6, tail)));
    EXPECT_EQ("7 tail", bytes(formatted("%hhd %s", 7, tail)));
    EXPECT_EQ("1.5 tail", bytes(formatted("%Lg %s", 1.5L, tail)));
    EXPECT_EQ("2.500000 tail", bytes(formatted("%Lf %s", 2.5L, tail)));
    EXPECT_EQ("3.5 tail", bytes(formatted("%g %s", 3.5, tail)));
    EXPECT_EQ("c tail", bytes(formatted("%c %s", 'c', tail)));
    EXPECT_EQ("   9 tail", bytes(formatted("%*d %s", 4, 9, tail)));
    EXPECT_EQ("2.75 tail", bytes(formatted("%.*f %s", 2, 2.75, tail)));
    EXPECT_EQ("  2.8 tail", bytes(formatted("%*.*f %s", 5, 1, 2.75, tail)));
    EXPECT_EQ("0x1p+0 tail", bytes(formatted("%a %s", 1.0, tail)));
    EXPECT_EQ("% tail", bytes(formatted("%% %s", tail)));
    EXPECT_EQ("+1 tail", bytes(formatted("%+d %s", 1, tail)));
    int here = 0;
    char* p = reinterpret_cast<char*>(&here);
    EXPECT_EQ(" tail", bytes(formatted("%p %s", static_cast<void*>(p), tail))
                           .substr(bytes(formatted("%p", static_cast<void*>(p))).size()));
}

TEST(StrFormat, TheEstimateCountsTheStringsBehindOtherConversions) {
    // 10 for the number, 1 for the blank, 30 for the string
    std::string text(30, 's');
    EXPECT_TRUE(hasBlockOf(formatted("%lld %s", 1LL, text.c_str()), 43));
    EXPECT_TRUE(hasBlockOf(formatted("%*d %s", 3, 1, text.c_str()), 43));
    // The precision does not count, and the argument is looked at no further than it says: 3
    EXPECT_TRUE(hasBlockOf(formatted("%.3s", text.c_str()), 5));
}

TEST(StrFormat, WidthsPastTheEstimateGetTheirRoom) {
    qnStr s = formatted("%1000d", 1);
    EXPECT_EQ(std::string(999, ' ') + "1", bytes(s));
    EXPECT_EQ(1000u, s.length());
    qnStr t = formatted("%.600f", 1.0);
    EXPECT_EQ("1." + std::string(600, '0'), bytes(t));
    EXPECT_EQ(317u, formatted("%f", -1.797e308).length());
}

TEST(StrFormat, UnterminatedTextIsReadAsFarAsThePrecisionSays) {
    char* three = static_cast<char*>(std::malloc(3));
    std::memcpy(three, "abc", 3);
    EXPECT_EQ("abc", bytes(formatted("%.3s", three)));
    EXPECT_EQ("ab", bytes(formatted("%.*s", 2, three)));
    EXPECT_EQ("", bytes(formatted("%.0s", "terminated")));
    EXPECT_EQ("", bytes(formatted("%.s", "terminated")));
    std::free(three);
    EXPECT_EQ("abc|", bytes(formatted("%.*s|", -1, "abc")));
}

TEST(StrFormat, APercentSignWithoutAConversionIsText) {
    EXPECT_EQ("100", bytes(formatted("100%")).substr(0, 3));
    // Looking for a conversion past the real one takes no argument that is not there.
    EXPECT_EQ("0x1p+1 some", bytes(formatted("%a some", 2.0)));
    EXPECT_EQ("0x1p+1 7 some", bytes(formatted("%a %d some", 2.0, 7)));
    EXPECT_EQ("0x1p+1 text x", bytes(formatted("%a %s x", 2.0, "text")));
}

TEST(StrFormat, EveryConversionTakesWhatItsLengthSays) {
    const char* tail = "tail";
    // Two arguments of each width, so that one step too short or too long shows.
    EXPECT_EQ("-1 2 tail", bytes(formatted("%lli %llu %s", -1LL, 2ULL, tail)));
    EXPECT_EQ("7 1f tail", bytes(formatted("%lo %lx %s", 7UL, 31UL, tail)));
    EXPECT_EQ("1F 32 tail", bytes(formatted("%llX %qd %s", 31ULL, 32LL, tail)));
    EXPECT_EQ("1 2 tail", bytes(formatted("%ju %ji %s", std::uintmax_t(1), std::intmax_t(2), tail)));
    EXPECT_EQ("3 4 tail", bytes(formatted("%zd %zx %s", std::ptrdiff_t(3), std::size_t(4), tail)));
    EXPECT_EQ("5 6 tail", bytes(formatted("%ti %td %s", std::ptrdiff_t(5), std::ptrdiff_t(6), tail)));
    EXPECT_EQ("a b tail", bytes(formatted("%c %lc %s", 'a', std::wint_t(L'b'), tail)));
    EXPECT_EQ("1 2 tail", bytes(formatted("%hu %hhx %s", 1, 2, tail)));
    EXPECT_EQ("1e+00 2E+00 tail", bytes(formatted("%.0e %.0E %s", 1.0, 2.0, tail)));
    EXPECT_EQ("1.0 2.5 3 tail", bytes(formatted("%.1F %G %lg %s", 1.0, 2.5, 3.0, tail)));
    EXPECT_EQ("0x1p+0 0X1P+1 tail", bytes(formatted("%a %A %s", 1.0, 2.0, tail)));
    EXPECT_EQ("1.0e+00 1.5 tail", bytes(formatted("%.1Le %LG %s", 1.0L, 1.5L, tail)));
    EXPECT_EQ("wide W tail", bytes(formatted("%ls %S %s", L"wide", L"W", tail)));
    // What the estimate takes for a string is plain text behind the wide character.
    EXPECT_EQ("Ws tail", bytes(formatted("%Cs %s", std::wint_t(L'W'), tail)));
    EXPECT_EQ("+001|  2|3  |0x4 tail", bytes(formatted("%+04d|% 3d|%-3d|%#x %s", 1, 2, 3, 4u, tail)));
    errno = ENOENT;
    EXPECT_EQ(std::string(std::strerror(ENOENT)) + " tail", bytes(formatted("%m %s", tail)));
}

TEST(StrFormat, TheStringBehindAnyConversionCounts) {
    // A step too short or too long would take another word for the string: the estimate would miss its 400 characters.
    const std::string text(400, 's');
    const char* tail = text.c_str();
    const auto expectEstimate = [](unsigned estimate, const qnStr& s) {
        // One character more, and the terminator.
        EXPECT_TRUE(hasBlockOf(s, estimate + 2)) << s.text() << ": " << malloc_usable_size(s.data);
    };
    expectEstimate(10 + 400, formatted("%d%s", 1, tail));
    expectEstimate(10 + 400, formatted("%hhu%s", 1, tail));
    expectEstimate(10 + 400, formatted("%li%s", 1L, tail));
    expectEstimate(10 + 400, formatted("%llo%s", 1ULL, tail));
    expectEstimate(10 + 400, formatted("%qx%s", 1LL, tail));
    expectEstimate(10 + 400, formatted("%jX%s", std::uintmax_t(1), tail));
    expectEstimate(10 + 400, formatted("%zu%s", std::size_t(1), tail));
    expectEstimate(10 + 400, formatted("%td%s", std::ptrdiff_t(1), tail));
    expectEstimate(10 + 400, formatted("%p%s", nullptr, tail));
    expectEstimate(20 + 400, formatted("%e%s", 1.0, tail));
    expectEstimate(20 + 400, formatted("%LE%s", 1.0L, tail));
    expectEstimate(20 + 400, formatted("%Lf%s", 1.0L, tail));
    expectEstimate(20 + 400, formatted("%lg%s", 1.0, tail));
    expectEstimate(20 + 400, formatted("%G%s", 1.0, tail));
    expectEstimate(1 + 400, formatted("%c%s", 'c', tail));
    expectEstimate(1 + 400, formatted("%lc%s", std::wint_t(L'c'), tail));
    expectEstimate(1 + 400, formatted("%%%s", tail));
    expectEstimate(10 + 400, formatted("%*d%s", 3, 1, tail));
    expectEstimate(20 + 400, formatted("%-*.*f%s", 6, 2, 1.0, tail));
    expectEstimate(2 + 400, formatted("%.*s%s", 2, "abcdef", tail));
    // The estimate knows no %a: what it takes for its conversion is the first "g", and the others are plain.
    expectEstimate(20 + 39, formatted("%a gggggggggggggggggggggggggggggggggggggggg", 1.0));
}

TEST(StrFormat, NConversionTakesAPointerAndCountsNothing) {
    int count = 0;
    // 2 and 3 plain characters, 4 for the string
    qnStr s = formatted("ab%n - %s", &count, "tail");
    EXPECT_EQ("ab - tail", bytes(s));
    EXPECT_EQ(2, count);
    EXPECT_TRUE(hasBlockOf(s, 11));
}

TEST(StrFormat, ATextThatBreaksOffIsKeptWholeUpToThere) {
    // The wide character has no form in the C locale; what stands before it stays, however long it is.
    for (unsigned n : {0u, 3u, 510u, 511u, 512u, 600u, 1023u, 5000u}) {
        std::string before(n, 'x');
        qnStr s = formatted("%s%lcafter", before.c_str(), std::wint_t(0x20AC));
        EXPECT_EQ(before, bytes(s)) << n;
    }
    // A width past the highest int.
    EXPECT_EQ("ab", bytes(formatted("ab%2147483648d", 7)));
}

TEST(StrFormat, NumbersAreTakenAtTheirLimits) {
    EXPECT_EQ("-2147483648", bytes(qnStr(INT_MIN)));
    EXPECT_EQ("2147483647", bytes(qnStr(INT_MAX)));
    EXPECT_EQ("-2147483648 18446744073709551615", bytes(formatted("%d %llu", INT_MIN, 18446744073709551615ULL)));
    EXPECT_EQ("1.79769e+308", bytes(qnStr(1.7976931348623157e308)));
    EXPECT_EQ(309u, qnStr(1.7976931348623157e308, "%.0f").length());
    EXPECT_EQ(317u, qnStr(-1.7976931348623157e308, "%f").length());
}

TEST(StrFormat, PositionalArgumentsArriveToo) { EXPECT_EQ("b a", bytes(formatted("%2$s %1$s", "a", "b"))); }

TEST(StrFormat, ANullStringIsPrintedAsTheLibraryDoes) {
    const char* none = nullptr;
    EXPECT_EQ("(null)", bytes(formatted("%s", none)));
}

TEST(StrFormat, ItsOwnTextMayBeAnArgument) {
    qnStr s("abc");
    s.format("%s-%s", s.text(), s.text());
    EXPECT_EQ("abc-abc", bytes(s));
    s.format("<%s>", s.text());
    EXPECT_EQ("<abc-abc>", bytes(s));
    qnStr t("%d");
    t.format(t.text(), 5);
    EXPECT_EQ("5", bytes(t));
}

TEST(StrFormat, AnEmptyResultMayHaveABlock) {
    qnStr s = formatted("");
    EXPECT_EQ(1u, s.slength);
    EXPECT_TRUE(s == "");
    s.append("x");
    EXPECT_EQ("x", bytes(s));
    qnStr t("something");
    t.format("%s", "");
    EXPECT_TRUE(t == "");
    EXPECT_EQ(0u, t.length());
}

TEST(StrFormat, TheTextEndsAtANulThatWasFormatted) { EXPECT_EQ("a", bytes(formatted("a%cb", 0))); }

TEST(StrFormat, ALargerBufferStays) {
    qnStr s("a text of some length, longer than what comes");
    const char* buffer = s.data;
    s.format("%s", "x");
    EXPECT_EQ(buffer, s.data);
    EXPECT_EQ("x", bytes(s));
}

#pragma GCC diagnostic pop

TEST(StrFormat, AConversionThatTheWalkDoesNotKnowTakesNoStringForANumber) {
    // Binary numbers are the C library's own addition; what they take is not mistaken for the string behind them.
    EXPECT_STREQ("101 tail", formatted("%b %s", 5u, "tail").text());
    EXPECT_STREQ("   7 tail", formatted("%'4d %s", 7, "tail").text());
    EXPECT_STREQ("007 tail", formatted("%.3d %s", 7, "tail").text());
    EXPECT_STREQ("7    tail", formatted("%*d %s", -4, 7, "tail").text());
}

TEST(StrFormat, TheStringBehindAWidthWithAZeroInItCounts) {
    const std::string text(400, 's');
    qnStr widths, precisions;
    // 10 and 400, 20 and 400; one character more, and the terminator.
    widths.format("%10d%s", 1, text.c_str());
    precisions.format("%20.10f%s", 1.0, text.c_str());
    EXPECT_EQ(410u, widths.length());
    EXPECT_LE(412u, malloc_usable_size(widths.data));
    EXPECT_LE(422u, malloc_usable_size(precisions.data));
    EXPECT_GT(438u + 2 * sizeof(void*), malloc_usable_size(precisions.data));
}

}  // namespace StrFormatTest
