#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Checked.h"
#include "Str.h"

namespace StrTest {

std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

/** Whether the string's block was asked for with this many bytes. */
bool hasBlockOf(const qnStr& s, std::size_t n) {
    std::size_t usable = malloc_usable_size(s.data);
    return usable >= n && usable < n + 16 + sizeof(void*) * 2;
}

bool isShared(const qnStr& s) { return s.data == &qnStr::emptyString && s.slength == 1; }

static_assert(offsetof(qnStr, slength) == 0 && offsetof(qnStr, data) == sizeof(char*), "the length comes first");
static_assert(offsetof(qnTempStr, inlineBuffer) == 0 && sizeof(qnTempStr::inlineBuffer) == 100 &&
                  offsetof(qnTempStr, data) < offsetof(qnTempStr, slength),
              "the buffer, the pointer, the length");
#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(qnStr) == 8, "a length and a pointer");
static_assert(sizeof(qnTempStr) == 108, "the buffer, a pointer and a length");
#endif
static_assert(!std::is_copy_assignable<qnTempStr>::value, "temporaries cannot be assigned");

// Construction

TEST(Str, AllEmptyStringsShareOneBuffer) {
    const char* none = nullptr;
    qnStr a, b(""), c(none), d("abc", 0u), e(a), f(0u);
    for (const qnStr* s : {&a, &b, &c, &d, &e, &f}) EXPECT_TRUE(isShared(*s));
    EXPECT_TRUE(a == b && b == c && c == d);
    EXPECT_EQ(0, qnStr::emptyString);
}

TEST(Str, IsMadeOfTextBytesOrNuls) {
    EXPECT_EQ("abc", bytes(qnStr("abc")));
    EXPECT_EQ("ab", bytes(qnStr("abc", 2u)));
    EXPECT_EQ(std::string("a\0c", 3), bytes(qnStr("a\0c", 3u)));
    qnStr nuls(3u);
    EXPECT_EQ(std::string(3, '\0'), bytes(nuls));
    EXPECT_EQ(4u, nuls.slength);
    EXPECT_EQ(0, nuls.data[3]);
    EXPECT_STREQ("qnStr", nuls.className());
}

TEST(Str, NumbersAreFormattedIntoABlockOfTheirOwn) {
    EXPECT_EQ("-12", bytes(qnStr(-12)));
    EXPECT_EQ("0", bytes(qnStr(0)));
    EXPECT_EQ("0x1f", bytes(qnStr(31, "0x%x")));
    EXPECT_EQ("0.5", bytes(qnStr(0.5f)));
    EXPECT_EQ("1e+20", bytes(qnStr(1e20)));
    EXPECT_EQ("2.50", bytes(qnStr(2.5, "%.2f")));
    const char* none = nullptr;
    EXPECT_EQ("7", bytes(qnStr(7, none)));
    EXPECT_EQ("0.25", bytes(qnStr(0.25f, none)));
    EXPECT_EQ("0.125", bytes(qnStr(0.125, none)));
    EXPECT_EQ(std::string(999, ' ') + "1", bytes(qnStr(1, "%1000d")));
}

TEST(Str, AnEmptyNumberHasABlockWhichGrowingFrees) {
    qnStr empty(1, "");
    EXPECT_EQ(1u, empty.slength);
    EXPECT_NE(&qnStr::emptyString, empty.data);
    EXPECT_TRUE(empty == "");
    empty.append("x");
    EXPECT_EQ("x", bytes(empty));
    qnStr other(1, "");
    other = "";
    EXPECT_TRUE(other == "");
    qnStr fourth(1, "");
    fourth.resize(2);
    EXPECT_EQ(2u, fourth.length());
}

TEST(Str, CopiesAndAssignmentsAreDeep) {
    qnStr a("text");
    qnStr b(a);
    EXPECT_NE(a.data, b.data);
    EXPECT_TRUE(a == b);
    qnStr c("a longer text");
    const char* buffer = c.data;
    c = a;
    EXPECT_EQ(buffer, c.data) << "buffers never shrink";
    EXPECT_EQ("text", bytes(c));
    EXPECT_EQ(5u, c.slength);
    c = "";
    EXPECT_TRUE(isShared(c));
    const char* none = nullptr;
    b = none;
    EXPECT_TRUE(isShared(b));
    b = "new";
    EXPECT_TRUE(hasBlockOf(b, 4));
    b = b + "er";
    EXPECT_EQ("newer", bytes(b));
    qnStr& same = a;
    a = same;
    EXPECT_EQ("text", bytes(a));
}

TEST(Str, TakesPartsOfItsOwnText) {
    qnStr s("hello world");
    s = s.text() + 6;
    EXPECT_EQ("world", bytes(s));
    s = s.text();
    EXPECT_EQ("world", bytes(s));
    s = s.text() + 5;
    EXPECT_TRUE(isShared(s));
}

// Copies

TEST(Str, PartsAreNewStrings) {
    qnStr s("abcdef");
    EXPECT_EQ("cd", bytes(s.extract(2, 2)));
    EXPECT_EQ("", bytes(s.extract(6, 0)));
    EXPECT_EQ("abc", bytes(s.head(3)));
    EXPECT_EQ("ef", bytes(s.tail(2)));
    EXPECT_EQ("abcdef", bytes(s.copy()));
    EXPECT_TRUE(isShared(s.tail(0)));
    EXPECT_EQ("bcd", bytes(s.cut(1, 3)));
    EXPECT_EQ("aef", bytes(s));
}

TEST(Str, TrimTakesOffBothEnds) {
    qnStr s("  a b\t ");
    EXPECT_EQ("a b", bytes(s.trim(" \t")));
    EXPECT_EQ("  a b", bytes(s.trimRight(" \t")));
    EXPECT_EQ("", bytes(qnStr("   ").trimRight(" ")));
    EXPECT_EQ("", bytes(qnStr("").trim(" ")));
}

#ifndef MORVAQNDS_CHECKED
TEST(Str, TrimOfNothingButTheSetIsEmpty) { EXPECT_EQ("", bytes(qnStr("   ").trim(" "))); }
#endif

// Editing

TEST(Str, CaseIsChangedInPlace) {
    qnStr s("Ab1-Z");
    s.lower();
    EXPECT_EQ("ab1-z", bytes(s));
    s.raise();
    EXPECT_EQ("AB1-Z", bytes(s));
    qnStr empty;
    empty.lower();
    empty.raise();
    EXPECT_TRUE(isShared(empty));
}

TEST(Str, RemoveMovesTheRestDownAndKeepsTheBuffer) {
    qnStr s("abc");
    const char* buffer = s.data;
    s.remove(1, 1);
    EXPECT_EQ("ac", bytes(s));
    EXPECT_EQ(0, s.data[2]);
    EXPECT_EQ(buffer, s.data);
    s.remove(0, 0);
    EXPECT_EQ("ac", bytes(s));
    s.remove(1, 1);
    EXPECT_EQ("a", bytes(s));
}

TEST(Str, RemovingAllReleasesTheBuffer) {
    qnStr s("abc");
    s.remove(0, 3);
    EXPECT_TRUE(isShared(s));
}

#ifndef MORVAQNDS_CHECKED
TEST(Str, RemovingAsManyAsThereAreEmptiesFromWherever) {
    qnStr s("abc");
    s.remove(1, 3);
    EXPECT_TRUE(isShared(s));
    qnStr t("abc");
    t.remove(2, 4);
    EXPECT_TRUE(isShared(t));
}

TEST(Str, RemovingPastTheEndStopsThere) {
    qnStr s("abc");
    s.remove(1, 10);
    EXPECT_EQ("a", bytes(s));
    s.remove(0, 0xFFFFFFFFu);
    EXPECT_TRUE(isShared(s));
    qnStr t("abc");
    t.remove(2, 0xFFFFFFFFu);
    EXPECT_EQ("ab", bytes(t));
    t.remove(7, 1);
    EXPECT_EQ("ab", bytes(t));
}

TEST(Str, RemovingNothingFromAnEmptyNumberReleasesItsBlock) {
    qnStr s(1, "");
    s.remove(0, 0);
    EXPECT_TRUE(isShared(s));
}

TEST(Str, RemovingFromAnEmptyStringLeavesTheSharedBuffer) {
    qnStr s;
    s.remove(0, 0);
    s.remove(0, 1);
    s.remove(0, 5);
    EXPECT_TRUE(isShared(s));
}
#endif

TEST(Str, InsertGrowsOneByteMoreThanNeeded) {
    qnStr s("abcdefgh");
    s.insert("XY", 3);
    EXPECT_EQ("abcXYdefgh", bytes(s));
    EXPECT_TRUE(hasBlockOf(s, 12)) << malloc_usable_size(s.data);
    s.insert("tail", 10);
    EXPECT_EQ("abcXYdefghtail", bytes(s));
    s.insert("0123456789", 0, 2);
    EXPECT_EQ("01abcXYdefghtail", bytes(s));
    s.insert("", 2);
    EXPECT_EQ("01abcXYdefghtail", bytes(s));
    s.insert('!', 16);
    s.insert('?', 0);
    EXPECT_EQ("?01abcXYdefghtail!", bytes(s));
    EXPECT_EQ(0, s.data[18]);
}

TEST(Str, InsertingIntoAnEmptyStringTerminates) {
    qnStr s;
    s.insert("abc", 0);
    EXPECT_EQ("abc", bytes(s));
    EXPECT_EQ(0, s.data[3]);
    EXPECT_TRUE(hasBlockOf(s, 5));
    qnStr t;
    t.insert('c', 0);
    EXPECT_STREQ("c", t.text());
}

TEST(Str, InsertsItsOwnTextAsItWas) {
    for (unsigned posn = 0; posn <= 6; ++posn) {
        for (unsigned from = 0; from < 6; ++from) {
            for (unsigned len = 1; from + len <= 6; ++len) {
                qnStr s("abcdef");
                std::string expected = "abcdef";
                expected.insert(posn, std::string("abcdef").substr(from, len));
                s.insert(s.text() + from, posn, len);
                EXPECT_EQ(expected, bytes(s)) << posn << ' ' << from << ' ' << len;
            }
        }
    }
    qnStr s("abcdef");
    s.insert(s.text(), 2);
    EXPECT_EQ("ababcdefcdef", bytes(s));
}

TEST(Str, ReplaceOverwrites) {
    qnStr s("abcdef");
    s.replace("XYZ", 2);
    EXPECT_EQ("abXYZf", bytes(s));
    s.replace("123", 0, 1);
    EXPECT_EQ("1bXYZf", bytes(s));
    s.replace(s.text() + 2, 0, 4);
    EXPECT_EQ("XYZfZf", bytes(s));
    s.replace("", 0);
    EXPECT_EQ("XYZfZf", bytes(s));
}

TEST(Str, AppendGrowsToTheExactSize) {
    qnStr s("abcdefgh");
    s.append("ij");
    EXPECT_EQ("abcdefghij", bytes(s));
    EXPECT_TRUE(hasBlockOf(s, 11));
    s.append("klmnop", 2);
    s.append("");
    s.append('\0');
    EXPECT_EQ(std::string("abcdefghijkl\0", 13), bytes(s));
    EXPECT_EQ(14u, s.slength);
    qnStr t;
    t.append('x');
    EXPECT_STREQ("x", t.text());
}

TEST(Str, AppendsItsOwnText) {
    qnStr s("abc");
    s.append(s.text());
    EXPECT_EQ("abcabc", bytes(s));
    s.append(s.text() + 4, 2);
    EXPECT_EQ("abcabcbc", bytes(s));
    qnStr t("ab");
    t.append(t.text() + 1, 2);  // with its terminator
    EXPECT_EQ(std::string("abb\0", 4), bytes(t));
    qnStr empty;
    empty.append(empty.text());
    EXPECT_TRUE(isShared(empty));
}

TEST(Str, TheOwnTextOfAnEmptyStringIsItsTerminator) {
    const std::string nul(1, '\0');
    for (bool ofItsOwn : {false, true}) {
        qnStr appended = ofItsOwn ? qnStr(1, "") : qnStr();
        appended.append(appended.text(), 1);
        EXPECT_EQ(nul, bytes(appended));
        EXPECT_EQ(0, appended.data[1]);
        qnStr inserted = ofItsOwn ? qnStr(1, "") : qnStr();
        inserted.insert(inserted.text(), 0, 1);
        EXPECT_EQ(nul, bytes(inserted));
        EXPECT_EQ(0, inserted.data[1]);
    }
    EXPECT_EQ(0, qnStr::emptyString);
}

TEST(Str, AFormattedEmptyStringIsEmptyLikeAnyOther) {
    qnStr empty(1, "");
    EXPECT_TRUE(isShared(qnStr(empty)));
    EXPECT_TRUE(isShared(empty.copy()));
    EXPECT_TRUE(isShared(empty.extract(0, 0)));
    EXPECT_TRUE(empty == qnStr() && qnStr() == empty && empty == "");
    EXPECT_EQ(0u, empty.hash());
    EXPECT_EQ(0u, empty.next(0, 'x'));
    empty.setMaxLength(10);
    EXPECT_EQ(0u, empty.length());
    empty = qnStr("text");
    EXPECT_EQ("text", bytes(empty));
    empty = qnStr(1, "");
    EXPECT_TRUE(isShared(empty));
}

TEST(Str, ResizeFillsWithNulsAndCutsOff) {
    qnStr s("abc");
    s.resize(6);
    EXPECT_EQ(std::string("abc\0\0\0", 6), bytes(s));
    EXPECT_EQ(0, s.data[6]);
    const char* buffer = s.data;
    s.resize(2, true);
    EXPECT_EQ("ab", bytes(s));
    EXPECT_EQ(0, s.data[2]);
    EXPECT_EQ(buffer, s.data);
    s.resize(0);
    EXPECT_TRUE(isShared(s));
    s.resize(0);
    EXPECT_TRUE(isShared(s));
}

TEST(Str, ResizeOfAnEmptyStringLeavesItsFirstCharacterToTheCaller) {
    // Deliberate: only the characters from index 1 on are set.
    qnStr s;
    s.resize(3);
    s.data[0] = 'x';
    EXPECT_EQ(std::string("x\0\0", 3), bytes(s));
    EXPECT_EQ(0, s.data[3]);
}

TEST(Str, ResizeInternalIsTheBufferPolicy) {
    qnStr s;
    s.resizeInternal(0);
    EXPECT_TRUE(isShared(s));
    s.resizeInternal(40);
    EXPECT_EQ(1u, s.slength);
    EXPECT_TRUE(hasBlockOf(s, 41));
    s.data[0] = 0;
    qnStr t("abc");
    const char* buffer = t.data;
    t.resizeInternal(3);
    EXPECT_EQ(buffer, t.data) << "3 is less than 4: nothing";
    t.resizeInternal(40);
    EXPECT_TRUE(hasBlockOf(t, 41));
    EXPECT_EQ("abc", bytes(t));
    t.resizeInternal(4);
    EXPECT_TRUE(hasBlockOf(t, 5));
    t.resizeInternal(0);
    EXPECT_EQ(&qnStr::emptyString, t.data);
    t.slength = 1;
}

TEST(Str, SetMaxLengthIsForStringsWithText) {
    qnStr s;
    s.setMaxLength(100);
    EXPECT_TRUE(isShared(s));
    qnStr t("abc");
    t.setMaxLength(100);
    EXPECT_TRUE(hasBlockOf(t, 101));
    EXPECT_EQ("abc", bytes(t));
    EXPECT_EQ(4u, t.slength);
    qnStr u("abc");
    u.setMaxLength(1);
    EXPECT_EQ("abc", bytes(u));
}

// Comparison

TEST(Str, EqualityComparesAllBytesAndOrderStopsAtNul) {
    qnStr a("abc"), b("abd"), prefix("ab"), withNul("ab\0c", 4u);
    EXPECT_TRUE(a == "abc" && "abc" == a && a == qnStr("abc"));
    EXPECT_TRUE(a != b && a != "abd" && "abd" != a);
    EXPECT_FALSE(withNul == prefix);
    EXPECT_FALSE(withNul == "ab");
    EXPECT_TRUE(withNul == qnStr("ab\0c", 4u));
    EXPECT_EQ(0, compare(withNul, prefix));
    EXPECT_LT(compare(a, b), 0);
    EXPECT_GT(compare(b, "abc"), 0);
    EXPECT_EQ(0, compare("x", "x"));
    EXPECT_TRUE(a < b && a < "abd" && "abc" < b);
    EXPECT_TRUE(a <= b && a <= "abc" && "abc" <= a);
    EXPECT_TRUE(b > a && b > "abc" && "abd" > a);
    EXPECT_TRUE(b >= a && b >= "abd" && "abd" >= b);
    EXPECT_FALSE(withNul < prefix || withNul > prefix);
}

TEST(Str, QuickFindLooksAtACountOfBytes) {
    EXPECT_TRUE(quickFind('b', "abc", 2));
    EXPECT_FALSE(quickFind('c', "abc", 2));
    EXPECT_TRUE(quickFind('\0', "a\0", 2));
    EXPECT_FALSE(quickFind('a', "abc", 0));
}

// Hashing

TEST(Str, HashOfUpToFourCharacters) {
    EXPECT_EQ(0u, qnStr("").hash());
    EXPECT_EQ(0x08000000u, qnStr("a").hash());
    // 'a' weighs 2^16, 'b' 2^24: 0x62610000 << 3
    EXPECT_EQ(0x13080000u, qnStr("ab").hash());
    // 0x64636261 << 3
    EXPECT_EQ(0x231B1308u, qnStr("abcd").hash());
}

TEST(Str, HashOfFiveToSevenMixesTheFirstCharactersTwice) {
    // one character: 0x61000000 << 3 = 0x08000000, exclusive or 0x64636261
    EXPECT_EQ(0x6C636261u, qnStr("abcde").hash());
    // two: 0x62610000 << 3 = 0x13080000
    EXPECT_EQ(0x776B6261u, qnStr("abcdef").hash());
    // three: 0x63626100 << 3 = 0x1B130800
    EXPECT_EQ(0x7F706A61u, qnStr("abcdefg").hash());
}

TEST(Str, HashOfEightAndMoreCountsTheFirstEight) {
    // 0x68676665 << 3 = 0x433B3328, exclusive or 0x64636261
    EXPECT_EQ(0x27585149u, qnStr("abcdefgh").hash());
    EXPECT_EQ(qnStr("abcdefgh").hash(), qnStr("abcdefghXYZ").hash());
    EXPECT_EQ(0xFFFFFFFFu ^ 0xFFFFFFF8u, qnStr("\xff\xff\xff\xff\xff\xff\xff\xff").hash());
}

// Temporaries

bool isInline(const qnTempStr& t) { return t.data == t.inlineBuffer; }

TEST(TempStr, StaysInsideUpToAHundredBytes) {
    std::string text99(99, 'x'), text100(100, 'x');
    qnTempStr a(text99.data(), 99, "", 0);
    EXPECT_EQ(100u, a.slength);
    EXPECT_TRUE(isInline(a));
    qnTempStr b(text100.data(), 90, text100.data(), 10);
    EXPECT_EQ(101u, b.slength);
    EXPECT_FALSE(isInline(b));
    EXPECT_EQ(text100, b.text());
}

TEST(TempStr, ACopyStaysInsideBelowAHundredBytes) {
    // Deliberate: one byte less than the other constructor.
    std::string text98(98, 'x'), text99(99, 'y');
    qnTempStr a(text98.data(), 98, "", 0), b(text99.data(), 99, "", 0);
    qnTempStr copyA(a), copyB(b);
    EXPECT_TRUE(isInline(copyA));
    EXPECT_FALSE(isInline(copyB));
    EXPECT_EQ(text98, copyA.text());
    EXPECT_EQ(text99, copyB.text());
}

TEST(TempStr, CopiesAtTheThresholdCanBeConcatenatedTo) {
    for (unsigned n : {98u, 99u, 100u, 101u}) {
        std::string text(n, 'x');
        qnTempStr original(text.data(), n, "", 0);
        qnTempStr copy(original);
        copy.concat("", 0);
        EXPECT_EQ(text, copy.text());
        copy.concat("yz", 2);
        EXPECT_EQ(text + "yz", copy.text());
        EXPECT_EQ(n + 3, copy.slength);
        original.concat("w", 1);
        EXPECT_EQ(text + "w", original.text());
    }
}

TEST(TempStr, MovesToTheHeapWhenItsTextPassesAHundredBytes) {
    qnTempStr t("a", 1, "b", 1);
    t.concat(std::string(97, 'c').data(), 97);
    EXPECT_TRUE(isInline(t));
    t.concat("d", 1);
    EXPECT_FALSE(isInline(t));
    EXPECT_EQ("ab" + std::string(97, 'c') + "d", t.text());
}

TEST(TempStr, HoldsNothingAndTakesNothing) {
    qnTempStr t(nullptr, 0, nullptr, 0);
    EXPECT_EQ(1u, t.slength);
    EXPECT_STREQ("", t.text());
    t.concat(nullptr, 0);
    EXPECT_STREQ("", t.text());
    t.concat("a\0b", 3);
    EXPECT_EQ(std::string("a\0b", 3), std::string(t.text(), t.length()));
}

TEST(TempStr, TakesPartsOfItsOwnTextWhileItMoves) {
    for (unsigned n : {1u, 49u, 50u, 66u, 67u, 98u, 99u, 100u, 150u}) {
        std::string text;
        while (text.size() < n) text += static_cast<char>('a' + text.size() % 26);
        for (unsigned from : {0u, n / 2, n - 1}) {
            qnTempStr t(text.data(), n, "", 0);
            t.concat(t.text() + from, n - from);
            EXPECT_EQ(text + text.substr(from), t.text()) << n << ' ' << from;
        }
    }
}

TEST(TempStr, TakesItsOwnText) {
    qnTempStr t("abc", 3, "", 0);
    for (int i = 0; i < 7; ++i) t.concat(t.text(), t.length());
    EXPECT_EQ(384u, t.length());
    EXPECT_EQ(0, std::memcmp("abcabc", t.text() + 378, 6));
}

TEST(TempStr, AChainBuildsOneBuffer) {
    qnStr a("a"), b("b");
    EXPECT_EQ("a-b", bytes(a + "-" + b));
    EXPECT_EQ("<a", bytes("<" + a));
    EXPECT_EQ("aba!", bytes(a + b + a + "!"));
    qnTempStr t = a + b;
    EXPECT_EQ(&t, &(t + "c" + a));
    EXPECT_EQ("abca", bytes(t));
    qnStr s;
    s = t;
    EXPECT_EQ("abca", bytes(s));
    qnStr c("c");
    EXPECT_EQ("ac", bytes(a + c));
    EXPECT_EQ("", bytes(qnStr() + ""));
}

#ifdef MORVAQNDS_CHECKED
#define EXPECT_FATAL(statement, message) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), "^" message "\n$")

TEST(StrDeathTest, PositionsAndLengthsAreChecked) {
    qnStr s("abc");
    EXPECT_FATAL(s.extract(2, 2), "qnStr::extract: 2 characters from 2 exceed length 3");
    EXPECT_FATAL(s.extract(4, 0), "qnStr::extract: 0 characters from 4 exceed length 3");
    EXPECT_FATAL(s.head(4), "qnStr::head: 4 characters exceed length 3");
    EXPECT_FATAL(s.tail(4), "qnStr::tail: 4 characters exceed length 3");
    EXPECT_FATAL(s.cut(1, 3), "qnStr::extract: 3 characters from 1 exceed length 3");
    EXPECT_FATAL(s.remove(1, 3), "qnStr::remove: 3 characters from 1 exceed length 3");
    EXPECT_FATAL(qnStr().remove(0, 0), "qnStr::remove: 0 characters from 0 of an empty string");
    EXPECT_FATAL(qnStr().remove(0, 1), "qnStr::remove: 1 characters from 0 of an empty string");
    EXPECT_FATAL(s.insert("x", 4), "qnStr::insert: position 4 past length 3");
    EXPECT_FATAL(s.insert('x', 4), "qnStr::insert: position 4 past length 3");
    EXPECT_FATAL(s.replace("xy", 2), "qnStr::replace: 2 characters at 2 exceed length 3");
    EXPECT_FATAL(qnStr("  ").trim(" "), "qnStr::trim: all 2 characters are in the set");
    EXPECT_FATAL(s.next(4, 'x'), "qnStr::next: position 4 past length 3");
    EXPECT_FATAL(s.nextR(4, 'x'), "qnStr::nextR: position 4 past length 3");
    EXPECT_FATAL(s.skip(4, "x"), "qnStr::skip: position 4 past length 3");
    EXPECT_FATAL(s.skipR(4, "x"), "qnStr::skipR: position 4 past length 3");
    EXPECT_FATAL(s.next(4, "x"), "qnStr::next: position 4 past length 3");
    EXPECT_FATAL(s.nextR(4, "x"), "qnStr::nextR: position 4 past length 3");
    EXPECT_FATAL(s.skip(4, 'x'), "qnStr::skip: position 4 past length 3");
    EXPECT_FATAL(s.skipR(4, 'x'), "qnStr::skipR: position 4 past length 3");
    unsigned posn = 4;
    EXPECT_FATAL(s.token(posn, 'x'), "qnStr::next: position 4 past length 3");
    EXPECT_FATAL(s.token(posn, "x"), "qnStr::next: position 4 past length 3");
    EXPECT_FATAL(s.tokenR(posn, 'x'), "qnStr::nextR: position 4 past length 3");
    EXPECT_FATAL(s.tokenR(posn, "x"), "qnStr::nextR: position 4 past length 3");
}
#undef EXPECT_FATAL
#endif

TEST(StrDeathTest, LengthsPast32BitsAreFatal) {
    EXPECT_EXIT(qnStr(0xFFFFFFFFu), testing::KilledBySignal(SIGABRT),
                "^qnStr::qnStr: size of 4294967296 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(qnStr("abc").append("x", 0xFFFFFFFDu), testing::KilledBySignal(SIGABRT),
                "^qnStr::append: size of 4294967297 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(qnStr("abc").insert("x", 1, 0xFFFFFFFCu), testing::KilledBySignal(SIGABRT),
                "^qnStr::insert: size of 4294967297 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(qnStr("abc").setMaxLength(0xFFFFFFFFu), testing::KilledBySignal(SIGABRT),
                "^qnStr::resizeInternal: size of 4294967296 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(qnStr("abc").resize(0xFFFFFFFFu), testing::KilledBySignal(SIGABRT),
                "^qnStr::resizeInternal: size of 4294967296 bytes exceeds 4294967295\n$");
}

TEST(Str, CaseOfHighCharactersAndBehindANulIsLookedUpToo) {
    qnStr s("\xC4\xE4Z\0Ab", 6u);
    s.lower();
    EXPECT_EQ(std::string("\xC4\xE4z\0ab", 6), bytes(s)) << "the C locale has no high letters";
    s.raise();
    EXPECT_EQ(std::string("\xC4\xE4Z\0AB", 6), bytes(s));
}

TEST(Str, SumsWithItselfTakeItsTextAsItWas) {
    qnStr s("ab");
    s = s + s;
    EXPECT_EQ("abab", bytes(s));
    s = s + "-" + s;
    EXPECT_EQ("abab-abab", bytes(s));
    s = "<" + s;
    EXPECT_EQ("<abab-abab", bytes(s));
}

}  // namespace StrTest
