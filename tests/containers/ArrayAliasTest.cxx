// Arrays and elements that are given to their own operations, and copies that record more capacity than they have
// memory for. What these tests are about shows above all under the sanitizers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "NumberArrays.h"
#include "StrArray.h"
#include "VoidPtrArray.h"
#include "support/FakeTranscriber.h"
#include "support/RecordingArray.h"

namespace ArrayAliasTest {

using testing::ElementsAre;

std::vector<int> values(const qnIntArray& a) {
    return std::vector<int>(a.elements(), a.elements() + a.length());
}

std::vector<std::string> values(const qnStrArray& a) {
    std::vector<std::string> texts;
    for (unsigned i = 0; i < a.length(); ++i) texts.push_back(a.elements()[i].text());
    return texts;
}

void add(qnIntArray& a, int value) {
    a.append(&value);
}
void add(qnStrArray& a, const char* text) {
    qnStr s(text);
    a.append(&s);
}

/** "a", "b", "c" with room for `capacity` elements. */
void makeLetters(qnStrArray& a, unsigned capacity) {
    add(a, "a");
    add(a, "b");
    add(a, "c");
    a.setMaxLength(capacity);
}

// Own elements

class ArrayOwnElement : public testing::TestWithParam<unsigned> {
protected:
    ArrayOwnElement() {
        for (int value : {10, 20, 30}) add(ints, value);
        ints.setMaxLength(GetParam());
        makeLetters(strings, GetParam());
    }
    qnIntArray ints;
    qnStrArray strings;
};

INSTANTIATE_TEST_SUITE_P(FullAndWithRoom, ArrayOwnElement, testing::Values(3u, 4u, 100u));

TEST_P(ArrayOwnElement, AppendedGivesItsValue) {
    ints.append(&ints.elements()[1]);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 30, 20));
    strings.append(&strings.elements()[1]);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c", "b"));
}

TEST_P(ArrayOwnElement, InsertedBeforeItselfGivesItsLeftNeighbour) {
    // When the tail has moved up, 20 stands where 30 stood.
    ints.insert(&ints.elements()[2], 0);
    EXPECT_THAT(values(ints), ElementsAre(20, 10, 20, 30));
    strings.insert(&strings.elements()[2], 0);
    EXPECT_THAT(values(strings), ElementsAre("b", "a", "b", "c"));
}

TEST_P(ArrayOwnElement, InsertedRightBeforeItsLeftNeighbourGivesThat) {
    ints.insert(&ints.elements()[1], 0);
    EXPECT_THAT(values(ints), ElementsAre(10, 10, 20, 30));
    strings.insert(&strings.elements()[1], 0);
    EXPECT_THAT(values(strings), ElementsAre("a", "a", "b", "c"));
}

TEST_P(ArrayOwnElement, InsertedAtItsOwnPlaceGivesItself) {
    // The tail has moved up, and its first element still stands in its old place too.
    for (unsigned i = 0; i < 3; ++i) {
        qnIntArray a(ints);
        a.insert(&a.elements()[i], i);
        std::vector<int> expected = {10, 20, 30};
        expected.insert(expected.begin() + i, expected[i]);
        EXPECT_EQ(expected, values(a));
    }
    strings.insert(&strings.elements()[1], 1);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "b", "c"));
    strings.elements()[1].append("!");
    EXPECT_THAT(values(strings), ElementsAre("a", "b!", "b", "c")) << "each place owns its text";
}

TEST_P(ArrayOwnElement, InsertedAfterItselfGivesItself) {
    ints.insert(&ints.elements()[0], 2);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 10, 30));
    strings.insert(&strings.elements()[0], 2);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "a", "c"));
}

TEST_P(ArrayOwnElement, InsertedAtTheEndGivesItself) {
    ints.insert(&ints.elements()[2], 3);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 30, 30));
    strings.insert(&strings.elements()[2], 3);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c", "c"));
}

TEST_P(ArrayOwnElement, FoundThroughItself) {
    EXPECT_EQ(2u, ints.find(&ints.elements()[2], 0));
    EXPECT_EQ(2u, strings.find(&strings.elements()[2], 0));
}

TEST_P(ArrayOwnElement, InsertedTwoHundredTimesInEveryPlace) {
    // The model: a copy of the tail moves up, and the value is what then stands at the index that it was read from.
    std::vector<int> model = {10, 20, 30};
    for (unsigned step = 0; step < 200; ++step) {
        unsigned length = ints.length();
        unsigned from = (step * 7) % length, to = (step * 13) % (length + 1);
        ints.insert(&ints.elements()[from], to);
        std::vector<int> moved(model);
        moved.insert(moved.begin() + to, to < length ? model[to] : 0);
        moved[to] = moved[from];
        model = moved;
        ASSERT_EQ(model, values(ints)) << "step " << step;
    }
}

// The array itself

class ArrayOwnArray : public ArrayOwnElement {};

INSTANTIATE_TEST_SUITE_P(FullAndWithRoom, ArrayOwnArray, testing::Values(3u, 6u, 100u));

TEST_P(ArrayOwnArray, AppendedDoublesIt) {
    ints.append(ints);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 30, 10, 20, 30));
    strings.append(strings);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c", "a", "b", "c"));
    strings.elements()[0].append("!");
    EXPECT_STREQ("a", strings.elements()[3].text()) << "each place owns its text";
}

TEST_P(ArrayOwnArray, InsertedAtTheFrontDoublesIt) {
    ints.insert(ints, 0);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 30, 10, 20, 30));
    strings.insert(strings, 0);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c", "a", "b", "c"));
    strings.elements()[0].append("!");
    EXPECT_STREQ("a", strings.elements()[3].text());
}

TEST_P(ArrayOwnArray, InsertedInTheMiddleStandsWholeBetweenTheHalves) {
    ints.insert(ints, 1);
    EXPECT_THAT(values(ints), ElementsAre(10, 10, 20, 30, 20, 30));
    strings.insert(strings, 1);
    EXPECT_THAT(values(strings), ElementsAre("a", "a", "b", "c", "b", "c"));
}

TEST_P(ArrayOwnArray, InsertedBeforeTheLastElement) {
    ints.insert(ints, 2);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 10, 20, 30, 30));
    strings.insert(strings, 2);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "a", "b", "c", "c"));
}

TEST_P(ArrayOwnArray, InsertedAtTheEndDoublesIt) {
    ints.insert(ints, 3);
    EXPECT_THAT(values(ints), ElementsAre(10, 20, 30, 10, 20, 30));
    strings.insert(strings, 3);
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c", "a", "b", "c"));
}

TEST_P(ArrayOwnArray, AssignedToItselfChangesNothing) {
    unsigned capacity = strings.maxBytes;
    qnStrArray& same = strings;
    strings = same;
    EXPECT_THAT(values(strings), ElementsAre("a", "b", "c"));
    EXPECT_EQ(capacity, strings.maxBytes);
}

// Capacity that is recorded and not backed by memory

/** What can be done to a copy of {10, 20, 30} with a capacity of 8 elements, and what must come of it. */
struct CopyCase {
    const char* name;
    std::function<void(qnIntArray&)> change;
    std::vector<int> expected;
    unsigned capacity;  // in elements, afterwards
};

void PrintTo(const CopyCase& c, std::ostream* os) {
    *os << c.name;
}

qnIntArray& fourMore() {
    static qnIntArray a;
    if (a.length() == 0) {
        for (int value : {1, 2, 3, 4}) add(a, value);
    }
    return a;
}

const CopyCase copyCases[] = {
    {"Untouched", [](qnIntArray&) {}, {10, 20, 30}, 8},
    {"AppendElement", [](qnIntArray& a) { add(a, 7); }, {10, 20, 30, 7}, 8},
    {"AppendElementToTheLastRecordedPlace",
     [](qnIntArray& a) {
         for (int i = 1; i <= 5; ++i) add(a, i);
     },
     {10, 20, 30, 1, 2, 3, 4, 5},
     8},
    {"AppendElementPastTheRecordedCapacity",
     [](qnIntArray& a) {
         for (int i = 1; i <= 6; ++i) add(a, i);
     },
     {10, 20, 30, 1, 2, 3, 4, 5, 6},
     12},
    {"AppendOwnElement", [](qnIntArray& a) { a.append(&a.elements()[0]); }, {10, 20, 30, 10}, 8},
    {"AppendArray", [](qnIntArray& a) { a.append(fourMore()); }, {10, 20, 30, 1, 2, 3, 4}, 8},
    {"AppendItself", [](qnIntArray& a) { a.append(a); }, {10, 20, 30, 10, 20, 30}, 8},
    {"InsertElement",
     [](qnIntArray& a) {
         int seven = 7;
         a.insert(&seven, 0);
     },
     {7, 10, 20, 30},
     8},
    {"InsertOwnElement", [](qnIntArray& a) { a.insert(&a.elements()[2], 1); }, {10, 20, 20, 30}, 8},
    {"InsertArray", [](qnIntArray& a) { a.insert(fourMore(), 1); }, {10, 1, 2, 3, 4, 20, 30}, 8},
    {"InsertItself", [](qnIntArray& a) { a.insert(a, 1); }, {10, 10, 20, 30, 20, 30}, 8},
    {"SetMaxLengthToTheRecordedCapacity",
     [](qnIntArray& a) {
         a.setMaxLength(8);
         add(a, 7);
     },
     {10, 20, 30, 7},
     8},
    {"SetMaxLengthBelow",
     [](qnIntArray& a) {
         a.setMaxLength(5);
         add(a, 7);
         add(a, 8);
     },
     {10, 20, 30, 7, 8},
     5},
    {"SetMaxLengthAbove",
     [](qnIntArray& a) {
         a.setMaxLength(20);
         add(a, 7);
     },
     {10, 20, 30, 7},
     20},
    {"SetMaxLengthZero", [](qnIntArray& a) { a.setMaxLength(0); }, {10, 20, 30}, 3},
    {"Expand",
     [](qnIntArray& a) {
         a.expand();
         add(a, 7);
     },
     {10, 20, 30, 7},
     12},
    {"ResizeUpWithinTheRecordedCapacity",
     [](qnIntArray& a) {
         a.resize(5);
         a.elements()[3] = 7;
         a.elements()[4] = 8;
     },
     {10, 20, 30, 7, 8},
     5},
    {"ResizeDown", [](qnIntArray& a) { a.resize(1); }, {10}, 1},
    {"ResizeToTheSameLengthAndAppend",
     [](qnIntArray& a) {
         a.resize(3);
         add(a, 7);
     },
     {10, 20, 30, 7},
     7},
    {"RemoveAndAppend",
     [](qnIntArray& a) {
         a.remove(0, 2);
         add(a, 7);
     },
     {30, 7},
     8},
    {"RemoveAllAndAppend",
     [](qnIntArray& a) {
         a.remove(0, 3);
         for (int i = 1; i <= 8; ++i) add(a, i);
     },
     {1, 2, 3, 4, 5, 6, 7, 8},
     8},
    {"Sort", [](qnIntArray& a) { a.qsort(2, 1); }, {10, 20, 30}, 8},
};

class ArrayUnbackedCopy : public testing::TestWithParam<CopyCase> {
protected:
    ArrayUnbackedCopy() {
        for (int value : {10, 20, 30}) add(source, value);
        source.setMaxLength(8);
    }
    void check(qnIntArray& copy) {
        GetParam().change(copy);
        EXPECT_EQ(GetParam().expected, values(copy));
        EXPECT_EQ(4 * GetParam().capacity, copy.maxBytes);
        EXPECT_THAT(values(source), ElementsAre(10, 20, 30));
    }
    qnIntArray source;
};

INSTANTIATE_TEST_SUITE_P(Operations, ArrayUnbackedCopy, testing::ValuesIn(copyCases),
                         [](const testing::TestParamInfo<CopyCase>& tested) { return tested.param.name; });

TEST_P(ArrayUnbackedCopy, ByConstruction) {
    qnIntArray copy(source);
    EXPECT_EQ(32u, copy.maxBytes);
    EXPECT_TRUE(requestedWith(copy.data, 12));
    check(copy);
}

TEST_P(ArrayUnbackedCopy, ByAssignment) {
    qnIntArray copy(2);
    copy = source;
    EXPECT_EQ(32u, copy.maxBytes);
    EXPECT_TRUE(requestedWith(copy.data, 12));
    check(copy);
}

TEST_P(ArrayUnbackedCopy, OfACopy) {
    qnIntArray first(source);
    qnIntArray copy(first);
    EXPECT_EQ(32u, copy.maxBytes);
    check(copy);
}

TEST(ArrayUnbackedCopyOf, AnEmptyArrayHasNoBlockAndGrowsWhenItIsAppendedTo) {
    qnIntArray source;
    source.setMaxLength(4);
    qnIntArray copy(source);
    EXPECT_EQ(nullptr, copy.data);
    EXPECT_EQ(16u, copy.maxBytes);
    EXPECT_EQ(0u, copy.length());
    add(copy, 5);
    EXPECT_THAT(values(copy), ElementsAre(5));
    EXPECT_EQ(16u, copy.maxBytes);
}

TEST(ArrayUnbackedCopyOf, AnEmptyArrayTakesInsertsAndArrays) {
    qnIntArray source;
    source.setMaxLength(6);
    int five = 5;
    qnIntArray a(source), b(source), c(source);
    a.insert(&five, 0);
    b.insert(fourMore(), 0);
    c.append(fourMore());
    EXPECT_THAT(values(a), ElementsAre(5));
    EXPECT_THAT(values(b), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(values(c), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(24u, c.maxBytes);
}

TEST(ArrayUnbackedCopyOf, AnEmptyArrayResizedToZeroHasNoCapacity) {
    qnIntArray source;
    source.setMaxLength(4);
    qnIntArray copy(source);
    copy.resize(0);
    EXPECT_EQ(0u, copy.maxBytes);
    EXPECT_EQ(nullptr, copy.data);
}

TEST(ArrayUnbackedCopyOf, StringsTakesAppendsAndInserts) {
    qnStrArray source;
    makeLetters(source, 8);
    qnStrArray copy(source), assigned;
    add(assigned, "old");
    assigned = source;
    for (qnStrArray* a : {&copy, &assigned}) {
        EXPECT_EQ(8 * sizeof(qnStr), a->maxBytes);
        add(*a, "d");
        a->insert(&a->elements()[0], 4);
        a->append(*a);  // past the recorded capacity
        EXPECT_THAT(values(*a), ElementsAre("a", "b", "c", "d", "a", "a", "b", "c", "d", "a"));
        EXPECT_EQ(10 * sizeof(qnStr), a->maxBytes);
    }
    EXPECT_THAT(values(source), ElementsAre("a", "b", "c"));
}

TEST(ArrayUnbackedCopyOf, NumbersIsWrittenWithItsRecordedCapacityAsZeros) {
    qnIntArray source;
    for (int value : {10, 20, 30}) add(source, value);
    source.setMaxLength(5);
    qnIntArray copy(source);
    FakeTranscriber writer(FakeTranscriber::Writing);
    EXPECT_TRUE(copy.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 12", "unsigned short[1] 4", "int[5] 10 20 30 0 0"));
    EXPECT_EQ(20u, copy.maxBytes);
    EXPECT_EQ(12u, copy.usedBytes);
}

TEST(ArrayUnbackedCopyOf, AnEmptyArrayIsWrittenWithItsRecordedCapacityAsZeros) {
    qnLongArray source;
    source.setMaxLength(2);
    qnLongArray copy(source);
    FakeTranscriber writer(FakeTranscriber::Writing);
    EXPECT_TRUE(copy.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 0", "unsigned short[1] 4", "long[2] 0 0"));
}

TEST(ArrayUnbackedCopyOf, PointersAppendedTo) {
    int x = 0;
    void* p = &x;
    qnVoidPtrArray source;
    source.append(&p);
    qnVoidPtrArray copy(source);
    EXPECT_EQ(4 * sizeof(void*), copy.maxBytes);
    copy.append(&p);
    copy.append(&p);
    EXPECT_EQ(3u, copy.length());
    EXPECT_EQ(p, copy.elements()[2]);
}

}  // namespace ArrayAliasTest
