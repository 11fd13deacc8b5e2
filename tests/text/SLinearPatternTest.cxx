#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>

#include "SLinearPattern.h"
#include "Str.h"
#include "support/RandomRun.h"

namespace SLinearPatternTest {

static_assert(std::is_base_of<qnTextPattern, qnSLinearPattern>::value, "");
static_assert(!std::is_copy_constructible<qnSLinearPattern>::value, "");
static_assert(!std::is_copy_assignable<qnSLinearPattern>::value, "");
static_assert(sizeof(unsigned) == 4, "");
#if defined(__i386__) || defined(__powerpc__)
// The virtual table, the int of the base, 256 distances, the copy, its length.
static_assert(sizeof(qnSLinearPattern) == 4 + 4 + 256 * 4 + 4 + 4, "");
#endif

/** A buffer that ends with its last byte, so that the sanitizers see every read past it. */
struct Buffer {
    explicit Buffer(const std::string& text) : bytes(new char[text.size()]), size(static_cast<unsigned>(text.size())) {
        std::memcpy(bytes, text.data(), text.size());
    }
    ~Buffer() { delete[] bytes; }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    char* bytes;
    unsigned size;
};

/** The start that all three searches agree on; the end must fit it. */
int find(const qnSLinearPattern& pattern, std::size_t patternLength, const std::string& text) {
    Buffer buffer(text);
    int start = 99;
    int end = 99;
    pattern.bracketBuffer(buffer.bytes, buffer.size, start, end);
    EXPECT_EQ(start < 0 ? 0 : start + static_cast<int>(patternLength), end);
    EXPECT_EQ(start, pattern.findBuffer(buffer.bytes, buffer.size));
    EXPECT_EQ(end, pattern.findEndBuffer(buffer.bytes, buffer.size));
    return start;
}

int find(const std::string& pattern, const std::string& text) {
    return find(qnSLinearPattern(qnStr(pattern.data(), static_cast<unsigned>(pattern.size()))), pattern.size(), text);
}

int naiveFind(const std::string& pattern, const std::string& text) {
    for (std::size_t start = 0; start + pattern.size() <= text.size(); ++start) {
        std::size_t i = 0;
        while (i < pattern.size() && text[start + i] == pattern[i]) ++i;
        if (i == pattern.size()) return static_cast<int>(start);
    }
    return -1;
}

TEST(SLinearPatternTest, AbcInXxabcxxStartsAt2AndEndsAt5) {
    qnSLinearPattern pattern("abc");
    int start = 99;
    int end = 99;
    pattern.bracketBuffer("xxabcxx", 7, start, end);
    EXPECT_EQ(2, start);
    EXPECT_EQ(5, end);
    EXPECT_EQ(2, pattern.findBuffer("xxabcxx", 7));
    EXPECT_EQ(5, pattern.findEndBuffer("xxabcxx", 7));
}

TEST(SLinearPatternTest, WithoutAMatchTheStartIsMinusOneAndTheEndZero) {
    qnSLinearPattern pattern("abc");
    int start = 99;
    int end = 99;
    pattern.bracketBuffer("xxabxxc", 7, start, end);
    EXPECT_EQ(-1, start);
    EXPECT_EQ(0, end);
    pattern.bracketBuffer("ab", 2, start, end);
    EXPECT_EQ(-1, start);
    EXPECT_EQ(0, end);
}

TEST(SLinearPatternTest, TheLengthEndsTheBuffer) {
    qnSLinearPattern pattern("abc");
    EXPECT_EQ(-1, pattern.findBuffer("xxabcxx", 4));
    EXPECT_EQ(2, pattern.findBuffer("xxabcxx", 5));
}

TEST(SLinearPatternTest, AShorterBufferIsNotRead) {
    qnSLinearPattern pattern("abc");
    const char* nowhere = reinterpret_cast<const char*>(16);
    EXPECT_EQ(-1, pattern.findBuffer(nowhere, 2));
    EXPECT_EQ(0, pattern.findEndBuffer(nowhere, 2));
    EXPECT_EQ(-1, pattern.findBuffer(nullptr, 0));
}

TEST(SLinearPatternTest, TheEmptyPatternIsFoundAtZeroInAnyBuffer) {
    for (const char* text : {"", "abc"}) {
        qnSLinearPattern pattern("");
        int start = 99;
        int end = 99;
        pattern.bracketBuffer(text, static_cast<unsigned>(std::strlen(text)), start, end);
        EXPECT_EQ(0, start);
        EXPECT_EQ(0, end);
    }
    EXPECT_EQ(0, qnSLinearPattern("").findBuffer(nullptr, 0));
    EXPECT_EQ(0, qnSLinearPattern(qnStr()).findBuffer("abc", 3));
    EXPECT_EQ(0, qnSLinearPattern(static_cast<const char*>(nullptr)).findBuffer("abc", 3));
    EXPECT_EQ(0, qnSLinearPattern(nullptr, 5).findBuffer("abc", 3));
}

TEST(SLinearPatternTest, ANullBufferHoldsNothing) { EXPECT_EQ(-1, qnSLinearPattern("a").findBuffer(nullptr, 5)); }

TEST(SLinearPatternTest, ALengthCutsThePatternAndZeroMeansUpToItsNul) {
    EXPECT_EQ(1, qnSLinearPattern("bcd", 2).findBuffer("abcx", 4));
    EXPECT_EQ(3, qnSLinearPattern("bcd", 2).findEndBuffer("abcx", 4));
    EXPECT_EQ(-1, qnSLinearPattern("bcd", 0).findBuffer("abcx", 4));
    EXPECT_EQ(4, qnSLinearPattern("c\0d", 3).findBuffer("abccc\0d", 7));
}

TEST(SLinearPatternTest, AStringWithNulsIsSearchedInFull) {
    qnSLinearPattern pattern(qnStr("a\0b", 3));
    EXPECT_EQ(4, pattern.findBuffer("a\0cxa\0b", 7));
    EXPECT_EQ(7, pattern.findEndBuffer("a\0cxa\0b", 7));
    EXPECT_EQ(-1, pattern.findBuffer("aaaaab", 6));
    EXPECT_EQ(1, qnSLinearPattern(qnStr("\0\0", 2)).findBuffer("a\0\0", 3));
    EXPECT_EQ(2, qnSLinearPattern(qnStr("\0", 1)).findBuffer("ab\0", 3));
}

TEST(SLinearPatternTest, TheComparisonIsExact) {
    EXPECT_EQ(-1, find("abc", "ABC"));
    EXPECT_EQ(3, find("abc", "ABCabc"));
}

TEST(SLinearPatternTest, ThePatternIsACopy) {
    char text[] = "abc";
    qnSLinearPattern pattern(text);
    std::memset(text, 'x', 3);
    EXPECT_EQ(2, pattern.findBuffer("xxabcxx", 7));
}

TEST(SLinearPatternTest, TheFirstOfSeveralMatchesIsFound) {
    EXPECT_EQ(1, find("aa", "baaaa"));
    EXPECT_EQ(0, find("abab", "ababab"));
    EXPECT_EQ(2, find("aab", "aaaabaab"));
}

TEST(SLinearPatternTest, TheRightmostDistanceOfAByteCountsAndTheLastByteHasNone) {
    // An "a" under the last position moves "abab" by 1; the distance of its first "a", 3, would pass the match.
    EXPECT_EQ(1, find("abab", "aabab"));
    // A "b" moves it by 2, as if the last one were not there.
    EXPECT_EQ(2, find("abab", "bbabab"));
    EXPECT_EQ(2, find("abcab", "ababcab"));
    // The same where no blocks are compared: behind what the table skips in one step.
    std::string head(100, 'x');
    EXPECT_EQ(1, find(head + "abab", "x" + head + "abab"));
    EXPECT_EQ(104, find(head + "abab", head + "abaa" + head + "abab"));
}

/** A pattern's fields, behind the virtual table and the int of the base. */
struct Fields {
    unsigned skip[256];
    const char* pattern;
    unsigned length;
    explicit Fields(const qnSLinearPattern& from) {
        const char* at = reinterpret_cast<const char*>(&from) + sizeof(void*) + sizeof(int);
        std::memcpy(skip, at, sizeof skip);
        at += sizeof skip + (sizeof(void*) - sizeof(int));  // to a pointer's alignment
        std::memcpy(&pattern, at, sizeof pattern);
        std::memcpy(&length, at + sizeof pattern, sizeof length);
    }
    unsigned of(char c) const { return skip[static_cast<unsigned char>(c)]; }
};

TEST(SLinearPatternTest, TheTableHoldsTheLengthAndTheRightmostDistancesWithoutTheLastByte) {
    const char text[] = "ab\xe9zab\xe9q";
    qnSLinearPattern pattern(text);
    Fields fields(pattern);
    EXPECT_EQ(8u, fields.length);
    ASSERT_NE(nullptr, fields.pattern);
    EXPECT_NE(text, fields.pattern);
    EXPECT_EQ(0, std::memcmp(text, fields.pattern, 8));
    EXPECT_EQ(3u, fields.of('a'));
    EXPECT_EQ(2u, fields.of('b'));
    EXPECT_EQ(1u, fields.of('\xe9'));
    EXPECT_EQ(4u, fields.of('z'));
    EXPECT_EQ(8u, fields.of('q'));
    for (int c = 0; c < 256; ++c) {
        bool isSkippedLess = std::memchr("abz\xe9", c, 4) != nullptr;
        EXPECT_EQ(isSkippedLess, fields.skip[c] != 8u) << c;
    }
}

TEST(SLinearPatternTest, TheTableOfOneByteHoldsOnesAndThatOfNoneZeros) {
    qnSLinearPattern one("a"), none("");
    EXPECT_EQ(1u, Fields(one).length);
    EXPECT_EQ(0u, Fields(none).length);
    for (int c = 0; c < 256; ++c) {
        EXPECT_EQ(1u, Fields(one).skip[c]) << c;
        EXPECT_EQ(0u, Fields(none).skip[c]) << c;
    }
}

TEST(SLinearPatternTest, EveryByteIsFound) {
    std::string all;
    for (int c = 255; c >= 0; --c) all += static_cast<char>(c);
    for (int c = 0; c < 256; ++c) {
        std::string one(1, static_cast<char>(c));
        EXPECT_EQ(255 - c, find(one, all)) << c;
        EXPECT_EQ(255 - c, find(one + all.substr(static_cast<std::size_t>(256 - c), 100), all)) << c;
    }
}

TEST(SLinearPatternTest, BytesFrom128AreSkippedByTheirOwnDistances) {
    // A table read with a signed byte would be read before its start.
    EXPECT_EQ(3, find("\xe9t\xe9", "xx\xe9\xe9t\xe9"));
    for (std::size_t length : {2u, 3u, 17u, 65u, 255u, 1000u}) {
        std::string pattern;
        for (std::size_t i = 0; i < length; ++i) pattern += static_cast<char>(128 + i * 37 % 128);
        for (std::size_t before : {0u, 1u, 15u, 16u, 127u, 5000u}) {
            std::string text(before, '\xff');
            text += pattern.substr(0, length - 1) + "\x80\x81" + pattern + "\x90";
            EXPECT_EQ(naiveFind(pattern, text), find(pattern, text)) << length << " after " << before;
        }
    }
}

/** `length` bytes in which each differs from its neighbours. */
std::string patternOf(std::size_t length) {
    std::string pattern;
    for (std::size_t i = 0; i < length; ++i) pattern += static_cast<char>('a' + i * 7 % 26);
    return pattern;
}

TEST(SLinearPatternTest, PatternsOf1And2And255And1000Bytes) {
    for (std::size_t length : {1u, 2u, 255u, 1000u}) {
        std::string pattern = patternOf(length);
        for (std::size_t before : {0u, 1u, 15u, 16u, 17u, 63u, 64u, 65u, 999u, 20000u}) {
            for (std::size_t after : {0u, 1u, 100u}) {
                std::string text = std::string(before, '-') + pattern + std::string(after, '-');
                EXPECT_EQ(static_cast<int>(before), find(pattern, text)) << length << " after " << before;
                text[before + length - 1] = '-';
                EXPECT_EQ(-1, find(pattern, text)) << length << " after " << before;
            }
        }
    }
}

TEST(SLinearPatternTest, TheWholeBufferMayBeTheMatch) {
    for (std::size_t length = 1; length < 200; ++length) EXPECT_EQ(0, find(patternOf(length), patternOf(length)));
}

TEST(SLinearPatternTest, FewAlignmentsAndEveryPlaceAmongThem) {
    for (std::size_t length : {2u, 3u, 16u, 65u}) {
        std::string pattern = "\xe9" + patternOf(length - 1);
        for (std::size_t alignments = 1; alignments <= 70; ++alignments) {
            std::string text(length - 1 + alignments, pattern[length - 1]);
            EXPECT_EQ(-1, find(pattern, text)) << length << " in " << alignments;
            for (std::size_t at = 0; at < alignments; ++at) {
                std::string with = text;
                with.replace(at, length, pattern);
                EXPECT_EQ(static_cast<int>(at), find(pattern, with)) << length << " in " << alignments;
            }
        }
    }
}

TEST(SLinearPatternTest, LongPatternsInTextsThatTheTableSkipsBadly) {
    // The bytes of the text occur near the end of the pattern, so the table moves by one or two.
    for (std::size_t length : {65u, 100u, 255u, 1000u}) {
        std::string pattern = patternOf(length - 3) + "xyz";
        std::string text;
        while (text.size() < 30000) text += "xyxxyy";
        EXPECT_EQ(-1, find(pattern, text)) << length;
        EXPECT_EQ(static_cast<int>(text.size()), find(pattern, text + pattern)) << length;
    }
}

TEST(SLinearPatternTest, TextsThatAlmostMatchEverywhereTakeLinearTime) {
    // Compared afresh at every place this would be 10^10 bytes.
    std::string pattern = std::string(5000, 'a') + "b" + std::string(5000, 'a');
    std::string text(1000000, 'a');
    EXPECT_EQ(-1, find(pattern, text));
    EXPECT_EQ(1000000, find(pattern, text + pattern));
    std::string repeated = std::string(20, 'a') + "b" + std::string(20, 'a');
    EXPECT_EQ(-1, find(repeated, text));
    EXPECT_EQ(1000000, find(repeated, text + repeated));
}

TEST(SLinearPatternTest, TextsThatDifferAtAnotherByteEveryTimeTakeLinearTime) {
    // The pattern is one byte longer than a run with its end. From an end the search goes to the start of a run, and
    // from there by single steps, each of which has the end of a run at another place.
    std::string pattern(10001, 'a');
    std::string text;
    for (int i = 0; i < 100; ++i) text += std::string(9999, 'a') + "b";
    EXPECT_EQ(-1, find(pattern, text));
    EXPECT_EQ(1000000, find(pattern, text + pattern));
    EXPECT_EQ(1000000, find(pattern, text + pattern + text));
    EXPECT_EQ(-1, find(pattern, text + std::string(10000, 'a')));
}

TEST(SLinearPatternTest, ThePatternOfOneRepeatedByte) {
    for (std::size_t length : {2u, 16u, 64u, 65u, 500u}) {
        std::string run(length, 'a');
        std::string text;
        for (int i = 0; i < 50; ++i) text += std::string(length - 1, 'a') + "b";
        EXPECT_EQ(-1, find(run, text)) << length;
        EXPECT_EQ(static_cast<int>(text.size()), find(run, text + run)) << length;
    }
}

TEST(SLinearPatternTest, AgreesWithANaiveSearch) {
    RandomRun run(50000);
    std::mt19937 random = run.generator();
    auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    const std::string alphabets[] = {"a", "ab", std::string("ab\0", 3), "\x7f\x80\xff", "abcdefghijklmnopqrstuvwxyz"};
    for (unsigned long round = 0; round < run.rounds; ++round) {
        const std::string& alphabet = alphabets[below(5)];
        auto letters = [&](std::size_t length) {
            std::string text;
            while (text.size() < length) text += alphabet[below(alphabet.size())];
            return text;
        };
        std::string text = letters(below(4) ? below(120) : below(1200));
        std::string pattern;
        if (!text.empty() && below(3)) {
            std::size_t start = below(text.size());
            pattern = text.substr(start, 1 + below(below(2) ? 8 : 200));
            if (below(2)) pattern[below(pattern.size())] = alphabet[0];
        } else {
            pattern = letters(1 + below(6));
        }
        ASSERT_EQ(naiveFind(pattern, text), find(pattern, text)) << "round " << round;
    }
}

/** Finds "needle" at 7, whatever is looked for. */
struct Fixed : qnSLinearPattern {
    explicit Fixed(int found) : qnSLinearPattern("needle"), found_(found) {}
    int findBuffer(const char*, unsigned) const override { return found_; }
    int found_;
};

TEST(SLinearPatternTest, TheEndsGoThroughTheVirtualSearch) {
    Fixed pattern(7);
    int start = 99;
    int end = 99;
    EXPECT_EQ(13, pattern.findEndBuffer("", 0));
    pattern.bracketBuffer("", 0, start, end);
    EXPECT_EQ(7, start);
    EXPECT_EQ(13, end);
}

TEST(SLinearPatternTest, ANegativeStartOfAnySizeGivesTheEndZero) {
    Fixed pattern(-5);
    int start = 99;
    int end = 99;
    EXPECT_EQ(0, pattern.findEndBuffer("", 0));
    pattern.bracketBuffer("", 0, start, end);
    EXPECT_EQ(-5, start);
    EXPECT_EQ(0, end);
}

#if defined(__LP64__) && !defined(__SANITIZE_ADDRESS__)
/** Four gigabytes of NULs, of which only the pages that are written take memory. */
struct HugeBuffer {
    HugeBuffer()
        : bytes(static_cast<char*>(
              mmap(nullptr, Size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {}
    ~HugeBuffer() { munmap(bytes, Size); }
    static constexpr std::size_t Size = 0x100000000u;
    char* bytes;
};

TEST(SLinearPatternTest, StepsNearTheEndOfALongBufferEnd) {
    HugeBuffer buffer;
    ASSERT_NE(MAP_FAILED, static_cast<void*>(buffer.bytes));
    // A step of 1000 bytes from near 2^32 would come out near 0 in 32 bits.
    qnSLinearPattern pattern(patternOf(1000).c_str());
    EXPECT_EQ(-1, pattern.findBuffer(buffer.bytes, 0xFFFFFFFFu));
}

TEST(SLinearPatternTest, TheLastPositionThatAnIntTellsIsTheLastOneSearched) {
    HugeBuffer buffer;
    ASSERT_NE(MAP_FAILED, static_cast<void*>(buffer.bytes));
    std::string wanted = patternOf(1000);
    qnSLinearPattern pattern(wanted.c_str());
    std::memcpy(buffer.bytes + INT_MAX - 999, wanted.data(), wanted.size());
    EXPECT_EQ(-1, pattern.findBuffer(buffer.bytes, 0xFFFFFFFFu));
    EXPECT_EQ(0, pattern.findEndBuffer(buffer.bytes, 0xFFFFFFFFu));
    std::memcpy(buffer.bytes + INT_MAX - 1000, wanted.data(), wanted.size());
    EXPECT_EQ(INT_MAX - 1000, pattern.findBuffer(buffer.bytes, 0xFFFFFFFFu));
    EXPECT_EQ(INT_MAX, pattern.findEndBuffer(buffer.bytes, 0xFFFFFFFFu));
}
#endif

}  // namespace SLinearPatternTest
