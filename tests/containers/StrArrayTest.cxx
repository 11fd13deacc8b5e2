// The array of strings: its element operations and what they make of the array's. Strings given to their own array are
// in ArrayAliasTest, sorting in ArraySortTest, transcription in ArrayXdrTest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "StrArray.h"
#include "support/RecordingArray.h"

namespace StrArrayTest {

using testing::Each;
using testing::ElementsAre;

static_assert(std::is_same<qnStrArray::ElementType, qnStr>::value, "");
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnStr) == 8, "two pointer words");
static_assert(sizeof(qnStrArray) == 24, "no fields of its own");
#endif

std::vector<std::string> texts(const qnStrArray& a) {
    std::vector<std::string> result;
    for (unsigned i = 0; i < a.length(); ++i) {
        result.push_back(std::string(a.elements()[i].text(), a.elements()[i].length()));
    }
    return result;
}

/** A string array made from literals. */
struct Names : qnStrArray {
    Names(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            qnStr s(name);
            append(&s);
        }
    }
};

TEST(StrArray, AnElementIsAStringObject) { EXPECT_EQ(sizeof(qnStr), qnStrArray().elementSize); }

TEST(StrArray, OfACountHoldsEmptyStrings) {
    qnStrArray a(3);
    EXPECT_EQ(3u, a.length());
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(0u, a.elements()[i].length());
        EXPECT_EQ(&qnStr::emptyString, a.elements()[i].text()) << "they share the one empty buffer";
    }
    a.elements()[1] = "text that the array destroys with its element";
}

TEST(StrArray, AppendCopiesTheString) {
    qnStr ada("Ada");
    qnStrArray a;
    a.append(&ada);
    ada.append("!");
    EXPECT_THAT(texts(a), ElementsAre("Ada"));
    EXPECT_EQ(4 * sizeof(qnStr), a.maxBytes);
}

TEST(StrArray, KeepsNulsWithin) {
    qnStr s("a\0b", 3);
    qnStrArray a;
    a.append(&s);
    EXPECT_THAT(texts(a), ElementsAre(std::string("a\0b", 3)));
}

TEST(StrArray, InsertMovesTheTailAsItIs) {
    Names a = {"a", "b", "c"};
    const char* textOfB = a.elements()[1].text();
    qnStr x("x");
    a.insert(&x, 1);
    EXPECT_THAT(texts(a), ElementsAre("a", "x", "b", "c"));
    EXPECT_EQ(textOfB, a.elements()[2].text()) << "moved, not copied";
}

TEST(StrArray, AppendAndInsertOfArraysCopyDeeply) {
    Names a = {"a", "b"}, b = {"x", "y"};
    a.append(b);
    a.insert(b, 1);
    EXPECT_THAT(texts(a), ElementsAre("a", "x", "y", "b", "x", "y"));
    b.elements()[0] = "changed";
    EXPECT_THAT(texts(a), ElementsAre("a", "x", "y", "b", "x", "y"));
}

TEST(StrArray, RemoveDestroysItsStringsAndMovesTheOthers) {
    Names a = {"a", "b", "c", "d"};
    const char* textOfD = a.elements()[3].text();
    a.remove(1, 2);
    EXPECT_THAT(texts(a), ElementsAre("a", "d"));
    EXPECT_EQ(textOfD, a.elements()[1].text());
}

TEST(StrArray, ResizeUpAddsEmptyStringsAndDownDestroys) {
    Names a = {"a", "b"};
    a.resize(4);
    EXPECT_THAT(texts(a), ElementsAre("a", "b", "", ""));
    a.resize(1);
    EXPECT_THAT(texts(a), ElementsAre("a"));
    a.resize(0);
    EXPECT_EQ(nullptr, a.data);
}

TEST(StrArray, SetMaxLengthMovesTheStringsAsTheyAre) {
    Names a = {"a", "b"};
    const char* text = a.elements()[0].text();
    a.setMaxLength(1000);
    EXPECT_EQ(text, a.elements()[0].text());
    EXPECT_THAT(texts(a), ElementsAre("a", "b"));
}

TEST(StrArray, CutMovesTheStringsOutWithoutCopyingThem) {
    Names a = {"a", "b", "c"};
    const char* text = a.elements()[1].text();
    qnStrArray cut = a.cut(1, 1);
    EXPECT_THAT(texts(cut), ElementsAre("b"));
    EXPECT_EQ(text, cut.elements()[0].text());
    EXPECT_THAT(texts(a), ElementsAre("a", "c"));
}

TEST(StrArray, CutOfNothingIsEmpty) {
    Names a = {"a"};
    qnStrArray cut = a.cut(0, 0);
    EXPECT_EQ(nullptr, cut.data);
    EXPECT_EQ(1u, a.length());
}

TEST(StrArray, SlicesAreDeepCopies) {
    Names a = {"a", "b", "c", "d", "e"};
    qnStrArray middle = a.extract(1, 2), head = a.head(2), tail = a.tail(2);
    EXPECT_THAT(texts(middle), ElementsAre("b", "c"));
    EXPECT_THAT(texts(head), ElementsAre("a", "b"));
    EXPECT_THAT(texts(tail), ElementsAre("d", "e"));
    EXPECT_NE(a.elements()[0].text(), head.elements()[0].text());
    head.elements()[0] = "changed";
    EXPECT_THAT(texts(a), ElementsAre("a", "b", "c", "d", "e"));
}

TEST(StrArray, ACopyIsDeepAndRecordsTheCapacity) {
    Names a = {"a", ""};
    qnStrArray b(a);
    EXPECT_EQ(4 * sizeof(qnStr), b.maxBytes);
    EXPECT_TRUE(requestedWith(b.data, 2 * sizeof(qnStr)));
    EXPECT_NE(a.elements()[0].text(), b.elements()[0].text());
    b.elements()[0].append("!");
    EXPECT_THAT(texts(a), ElementsAre("a", ""));
}

TEST(StrArray, AssignmentDestroysTheOldStringsAndCopiesDeeply) {
    Names a = {"a"}, b = {"x", "y", "z"};
    qnStrArray& target = b;
    target = a;
    EXPECT_THAT(texts(b), ElementsAre("a"));
    EXPECT_NE(a.elements()[0].text(), b.elements()[0].text());
    target = qnStrArray();
    EXPECT_EQ(0u, b.length());
}

TEST(StrArray, FindMatchesEqualTextsNotEqualAddresses) {
    Names a = {"a", "b", "b", "a"};
    qnStr probe("b");
    EXPECT_EQ(1u, a.find(&probe, 0));
    EXPECT_EQ(2u, a.find(&probe, 2));
    EXPECT_EQ(0xFFFFFFFFu, a.find(&probe, 3));
    qnStr empty;
    EXPECT_EQ(0xFFFFFFFFu, a.find(&empty, 0));
}

TEST(StrArray, FindComparesUpToTheFirstNul) {
    qnStr s("a\0b", 3), probe("a");
    qnStrArray a;
    a.append(&s);
    EXPECT_EQ(0u, a.find(&probe, 0)) << "as `compare` of strings does";
}

TEST(StrArray, SwapExchangesTheObjects) {
    Names a = {"a", "b"};
    const char* text = a.elements()[0].text();
    a.swap(0, 1);
    EXPECT_THAT(texts(a), ElementsAre("b", "a"));
    EXPECT_EQ(text, a.elements()[1].text());
}

// The element operations by themselves, on raw memory.

struct Slots {
    explicit Slots(unsigned n) : count(n), block(std::malloc(n * sizeof(qnStr))) {}
    ~Slots() { std::free(block); }
    qnStr* at(unsigned i) { return static_cast<qnStr*>(block) + i; }
    unsigned bytes(unsigned n) const { return n * static_cast<unsigned>(sizeof(qnStr)); }
    unsigned count;
    void* block;
};

TEST(StrArray, CreateElementsConstructsEmptyStringsInPlace) {
    qnStrArray operations;
    Slots slots(3);
    std::memset(slots.block, 0x5A, slots.bytes(3));
    operations.createElements(slots.block, slots.bytes(3));
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(&qnStr::emptyString, slots.at(i)->text());
    operations.destroyElements(slots.block, slots.bytes(3));
}

TEST(StrArray, CreateAndDestroyOfNothingTouchNothing) {
    qnStrArray operations;
    operations.createElements(nullptr, 0);
    operations.destroyElements(nullptr, 0);
    operations.copyElements(nullptr, nullptr, 0);
}

TEST(StrArray, CopyElementsTreatsTheTargetAsRawMemory) {
    qnStrArray operations;
    Slots slots(2);
    std::memset(slots.block, 0x5A, slots.bytes(2));
    qnStr source[2] = {"one", "two"};
    operations.copyElements(source, slots.block, slots.bytes(2));
    EXPECT_STREQ("one", slots.at(0)->text());
    EXPECT_STREQ("two", slots.at(1)->text());
    EXPECT_NE(source[0].text(), slots.at(0)->text());
    operations.destroyElements(slots.block, slots.bytes(2));
}

TEST(StrArray, CopyElementsUpwardsRunsFromTheLastSlot) {
    qnStrArray operations;
    Slots slots(4);
    new (slots.at(0)) qnStr("a");
    new (slots.at(1)) qnStr("b");
    new (slots.at(2)) qnStr("c");
    // Slots 1 and 2 are overwritten without being destroyed; their old objects are kept here and destroyed by hand.
    Slots kept(2);
    std::memcpy(kept.block, slots.at(1), kept.bytes(2));
    operations.copyElements(slots.at(0), slots.at(1), slots.bytes(3));
    EXPECT_STREQ("a", slots.at(0)->text());
    EXPECT_STREQ("a", slots.at(1)->text());
    EXPECT_STREQ("b", slots.at(2)->text());
    EXPECT_STREQ("c", slots.at(3)->text());
    operations.destroyElements(kept.block, kept.bytes(2));
    operations.destroyElements(slots.block, slots.bytes(4));
}

TEST(StrArray, CopyElementsDownwardsRunsFromTheFirstSlot) {
    qnStrArray operations;
    Slots slots(4);
    new (slots.at(1)) qnStr("a");
    new (slots.at(2)) qnStr("b");
    new (slots.at(3)) qnStr("c");
    Slots kept(2);
    std::memcpy(kept.block, slots.at(1), kept.bytes(2));
    operations.copyElements(slots.at(1), slots.at(0), slots.bytes(3));
    EXPECT_STREQ("a", slots.at(0)->text());
    EXPECT_STREQ("b", slots.at(1)->text());
    EXPECT_STREQ("c", slots.at(2)->text());
    EXPECT_STREQ("c", slots.at(3)->text());
    operations.destroyElements(kept.block, kept.bytes(2));
    operations.destroyElements(slots.block, slots.bytes(4));
}

TEST(StrArray, CompareElementsOrdersByText) {
    qnStrArray operations;
    qnStr a("abc"), b("abd"), again("abc"), longer("abcd"), high("\xff");
    EXPECT_LT(operations.compareElements(&a, &b), 0);
    EXPECT_GT(operations.compareElements(&b, &a), 0);
    EXPECT_EQ(0, operations.compareElements(&a, &again));
    EXPECT_LT(operations.compareElements(&a, &longer), 0);
    EXPECT_LT(operations.compareElements(&a, &high), 0) << "bytes are unsigned";
}

TEST(StrArray, TenThousandStringsComeAndGo) {
    qnStrArray a;
    for (int i = 0; i < 10000; ++i) {
        qnStr s(i);
        a.append(&s);
    }
    EXPECT_STREQ("9999", a.elements()[9999].text());
    while (a.length() > 5) a.remove(0, a.length() / 2);
    EXPECT_THAT(texts(a), ElementsAre("9995", "9996", "9997", "9998", "9999"));
}

}  // namespace StrArrayTest
