// What each operation does to the capacity, and the elements it moves, creates, copies and destroys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "NumberArrays.h"
#include "support/RecordingArray.h"

namespace ArrayGrowthTest {

using testing::ElementsAre;
using testing::IsEmpty;

/** `used` elements 1, 2, 3... with room for `capacity`; its log is empty. */
struct Roomy : RecordingArray {
    Roomy(int used, unsigned capacity) {
        for (int i = 1; i <= used; ++i) qnArray::append(&i);
        setMaxLength(capacity);
        log.clear();
    }
};

// getmem and expand

TEST(ArrayGrowth, GetmemTakesABlockOfExactlyTheCapacity) {
    RecordingArray a;
    a.maxBytes = 12;
    a.getmem();
    ASSERT_NE(nullptr, a.data);
    EXPECT_TRUE(requestedWith(a.data, 12));
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_EQ(0u, a.usedBytes);
}

TEST(ArrayGrowth, GetmemReallocatesAndKeepsTheBytes) {
    RecordingArray a({1, 2});
    a.maxBytes = 4000;
    a.getmem();
    EXPECT_TRUE(requestedWith(a.data, 4000));
    EXPECT_THAT(a.values(), ElementsAre(1, 2));
}

TEST(ArrayGrowth, GetmemWithCapacityZeroFreesTheBlock) {
    RecordingArray a({1, 2});
    a.maxBytes = a.usedBytes = 0;
    a.getmem();
    EXPECT_EQ(nullptr, a.data);
    a.getmem();
    EXPECT_EQ(nullptr, a.data) << "again, without a block";
}

TEST(ArrayGrowth, ExpandAddsRoomForFourElements) {
    RecordingArray a(12, 2);
    a.expand();
    EXPECT_EQ(72u, a.maxBytes);
    EXPECT_EQ(24u, a.usedBytes);
    EXPECT_THAT(a.log, ElementsAre("expand", "getmem 72"));
    EXPECT_TRUE(requestedWith(a.data, 72));
}

TEST(ArrayGrowth, ExpandNeverDoubles) {
    RecordingArray a(4, 1000);
    a.expand();
    EXPECT_EQ(4016u, a.maxBytes);
}

// append(element)

TEST(ArrayGrowth, AppendReallocatesAtZeroFourAndEightElements) {
    RecordingArray a;
    std::vector<unsigned> capacities;
    for (int i = 0; i < 12; ++i) {
        a.append(&i);
        capacities.push_back(a.maxBytes);
    }
    EXPECT_THAT(capacities, ElementsAre(16, 16, 16, 16, 32, 32, 32, 32, 48, 48, 48, 48));
    EXPECT_THAT(a.values(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
    EXPECT_EQ(48u, a.usedBytes);
}

TEST(ArrayGrowth, AppendToAFullArrayGoesThroughTheVirtualOperations) {
    RecordingArray a({1, 2});
    int three = 3;
    a.append(&three);
    EXPECT_THAT(a.log, ElementsAre("expand", "getmem 24", "copy 4 outside to +8"));
    EXPECT_EQ(24u, a.maxBytes);
}

TEST(ArrayGrowth, AppendWithRoomReallocatesNothing) {
    Roomy a(2, 3);
    int three = 3;
    a.append(&three);
    EXPECT_THAT(a.log, ElementsAre("copy 4 outside to +8"));
    EXPECT_EQ(12u, a.maxBytes);
}

// append(array)

TEST(ArrayGrowth, AppendOfAnArrayGrowsToExactlyTheSum) {
    RecordingArray a({1, 2}), b({3, 4, 5});
    a.append(b);
    EXPECT_THAT(a.log, ElementsAre("getmem 20", "copy 12 outside to +8"));
    EXPECT_EQ(20u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_TRUE(requestedWith(a.data, 20));
    EXPECT_THAT(b.values(), ElementsAre(3, 4, 5));
}

TEST(ArrayGrowth, AppendOfAnArrayThatJustFitsKeepsTheCapacity) {
    Roomy a(1, 3);
    RecordingArray b({8, 9});
    a.append(b);
    EXPECT_THAT(a.log, ElementsAre("copy 8 outside to +4"));
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 8, 9));
}

TEST(ArrayGrowth, AppendOfAnArrayThatIsOneElementTooBigGrowsToTheSumOnly) {
    Roomy a(1, 3);
    RecordingArray b({7, 8, 9});
    a.append(b);
    EXPECT_EQ(16u, a.maxBytes) << "the sum, not the old capacity and something";
    EXPECT_THAT(a.values(), ElementsAre(1, 7, 8, 9));
}

TEST(ArrayGrowth, AppendOfAnEmptyArrayChangesNothing) {
    RecordingArray a({1, 2}), empty;
    empty.setMaxLength(9);
    a.append(empty);
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_EQ(8u, a.maxBytes);
    EXPECT_EQ(8u, a.usedBytes);
}

TEST(ArrayGrowth, AppendOfAnArrayCopiesItsUsedElementsOnly) {
    RecordingArray a({1});
    Roomy b(2, 9);
    a.append(b);
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 1, 2));
}

// insert(element)

TEST(ArrayGrowth, InsertIntoAFullArrayGrowsByOneElementOnly) {
    RecordingArray a({1, 2, 3});
    int nine = 9;
    a.insert(&nine, 1);
    EXPECT_THAT(a.log, ElementsAre("getmem 16", "copy 4 outside to +4"));
    EXPECT_EQ(16u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 9, 2, 3));
    EXPECT_TRUE(requestedWith(a.data, 16));
}

TEST(ArrayGrowth, AnAppendAfterAnInsertIntoAFullArrayGrowsByFour) {
    RecordingArray a({1, 2, 3});
    int nine = 9;
    a.insert(&nine, 0);
    a.append(&nine);
    EXPECT_EQ(32u, a.maxBytes);
    EXPECT_EQ(20u, a.usedBytes);
}

TEST(ArrayGrowth, InsertWithRoomReallocatesNothing) {
    Roomy a(3, 5);
    int nine = 9;
    a.insert(&nine, 0);
    EXPECT_THAT(a.log, ElementsAre("copy 4 outside to +0"));
    EXPECT_EQ(20u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(9, 1, 2, 3));
}

TEST(ArrayGrowth, InsertAtTheEndAppends) {
    RecordingArray a({1, 2});
    int nine = 9;
    a.insert(&nine, 2);
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 9));
    EXPECT_EQ(12u, a.maxBytes);
}

TEST(ArrayGrowth, InsertIntoAnArrayWithoutABlock) {
    RecordingArray a;
    int nine = 9;
    a.insert(&nine, 0);
    EXPECT_THAT(a.values(), ElementsAre(9));
    EXPECT_EQ(4u, a.maxBytes);
}

TEST(ArrayGrowth, InsertMovesTheTailByBytesAndNotThroughTheElementOperations) {
    RecordingArray a({1, 2, 3});
    a.log.clear();
    int nine = 9;
    a.insert(&nine, 0);
    EXPECT_THAT(a.log, ElementsAre("getmem 16", "copy 4 outside to +0"));
}

// insert(array)

TEST(ArrayGrowth, InsertOfAnArrayGrowsToExactlyTheSum) {
    RecordingArray a({1, 2, 3}), b({8, 9});
    a.insert(b, 1);
    EXPECT_THAT(a.log, ElementsAre("getmem 20", "copy 8 outside to +4"));
    EXPECT_EQ(20u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 8, 9, 2, 3));
    EXPECT_TRUE(requestedWith(a.data, 20));
}

TEST(ArrayGrowth, InsertOfAnArrayThatJustFitsKeepsTheCapacity) {
    Roomy a(2, 4);
    RecordingArray b({8, 9});
    a.insert(b, 0);
    EXPECT_THAT(a.log, ElementsAre("copy 8 outside to +0"));
    EXPECT_EQ(16u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(8, 9, 1, 2));
}

TEST(ArrayGrowth, InsertOfAnArrayAtTheEndAppends) {
    RecordingArray a({1}), b({8, 9});
    a.insert(b, 1);
    EXPECT_THAT(a.values(), ElementsAre(1, 8, 9));
    EXPECT_EQ(12u, a.maxBytes);
}

TEST(ArrayGrowth, InsertOfAnEmptyArrayChangesNothingNotEvenTheCapacity) {
    Roomy a(2, 7);
    RecordingArray empty;
    a.insert(empty, 1);
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_EQ(28u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 2));
}

// setMaxLength

TEST(ArrayGrowth, SetMaxLengthMakesTheCapacityExact) {
    RecordingArray a({1, 2});
    a.setMaxLength(5);
    EXPECT_THAT(a.log, ElementsAre("getmem 20"));
    EXPECT_EQ(20u, a.maxBytes);
    EXPECT_EQ(8u, a.usedBytes);
    EXPECT_TRUE(requestedWith(a.data, 20));
    EXPECT_THAT(a.values(), ElementsAre(1, 2));
}

TEST(ArrayGrowth, SetMaxLengthZeroKeepsTheBytesInUse) {
    Roomy a(3, 8);
    a.setMaxLength(0);
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 3));
}

TEST(ArrayGrowth, SetMaxLengthZeroOfAnEmptyArrayFreesTheBlock) {
    Roomy a(0, 8);
    ASSERT_NE(nullptr, a.data);
    a.setMaxLength(0);
    EXPECT_THAT(a.log, ElementsAre("getmem 0"));
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
}

TEST(ArrayGrowth, SetMaxLengthToTheCapacityItHasDoesNothing) {
    Roomy a(1, 8);
    a.setMaxLength(8);
    EXPECT_THAT(a.log, IsEmpty());
    RecordingArray full({1, 2, 3});
    full.setMaxLength(2);
    EXPECT_THAT(full.log, IsEmpty()) << "never below the bytes in use, and that it has";
}

TEST(ArrayGrowth, SetMaxLengthShrinksASpareCapacity) {
    Roomy a(1, 8);
    a.setMaxLength(4);
    EXPECT_THAT(a.log, ElementsAre("getmem 16"));
    EXPECT_TRUE(requestedWith(a.data, 16));
}

// resize

TEST(ArrayGrowth, ResizeUpMakesTheCapacityExactAndCreatesTheNewElements) {
    RecordingArray a({1, 2});
    a.resize(4);
    EXPECT_THAT(a.log, ElementsAre("getmem 16", "create 8 at +8"));
    EXPECT_EQ(16u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 0, 0));
    EXPECT_TRUE(requestedWith(a.data, 16));
}

TEST(ArrayGrowth, ResizeUpBelowTheCapacityDropsTheRest) {
    Roomy a(2, 9);
    a.resize(3);
    EXPECT_THAT(a.log, ElementsAre("getmem 12", "create 4 at +8"));
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_TRUE(requestedWith(a.data, 12));
}

TEST(ArrayGrowth, ResizeDownDestroysTheLastElementsBeforeItReallocates) {
    RecordingArray a({1, 2, 3});
    a.resize(1);
    // While the elements end, the capacity is the new one already: their places lie past it.
    EXPECT_THAT(a.log, ElementsAre("destroy 8 at +4", "getmem 4"));
    EXPECT_EQ(4u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1));
    EXPECT_TRUE(requestedWith(a.data, 4));
}

TEST(ArrayGrowth, ResizeToZeroDestroysAllAndFreesTheBlock) {
    RecordingArray a({1, 2, 3});
    a.resize(0);
    EXPECT_THAT(a.log, ElementsAre("destroy 12 at +0", "getmem 0"));
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(0u, a.usedBytes);
}

TEST(ArrayGrowth, ResizeToTheSameLengthDropsTheCapacityWithoutReallocating) {
    Roomy a(2, 9);
    char* block = a.data;
    a.resize(2);
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_EQ(8u, a.maxBytes);
    EXPECT_EQ(8u, a.usedBytes);
    EXPECT_EQ(block, a.data);
    EXPECT_TRUE(requestedWith(a.data, 36)) << "the block is still the big one";
    int three = 3;
    a.append(&three);
    EXPECT_THAT(a.log, ElementsAre("expand", "getmem 24", "copy 4 outside to +8"));
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 3));
}

TEST(ArrayGrowth, ResizeToZeroOfAnEmptyArrayWithSpareCapacityReallocatesNothing) {
    Roomy a(0, 9);
    char* block = a.data;
    a.resize(0);
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(block, a.data) << "the block stays";
    int one = 1;
    a.append(&one);
    EXPECT_EQ(16u, a.maxBytes);
    EXPECT_THAT(a.values(), ElementsAre(1));
}

TEST(ArrayGrowth, ResizeToZeroOfAnArrayWithoutABlockDoesNothing) {
    RecordingArray a;
    a.resize(0);
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_EQ(nullptr, a.data);
}

// remove and raw_cut

TEST(ArrayGrowth, RemoveDestroysTheRunAndClosesTheGap) {
    Roomy a(5, 8);
    a.remove(1, 2);
    EXPECT_THAT(a.log, ElementsAre("destroy 8 at +4"));
    EXPECT_THAT(a.values(), ElementsAre(1, 4, 5));
    EXPECT_EQ(32u, a.maxBytes) << "the capacity never shrinks";
    EXPECT_EQ(12u, a.usedBytes);
}

TEST(ArrayGrowth, RemoveAtTheFrontMovesAnOverlappingTail) {
    RecordingArray a({1, 2, 3, 4, 5, 6, 7});
    a.remove(0, 1);
    EXPECT_THAT(a.values(), ElementsAre(2, 3, 4, 5, 6, 7));
}

TEST(ArrayGrowth, RemoveAtTheEndMovesNothing) {
    RecordingArray a({1, 2, 3});
    a.remove(1, 2);
    EXPECT_THAT(a.values(), ElementsAre(1));
    EXPECT_EQ(12u, a.maxBytes);
}

TEST(ArrayGrowth, RemoveOfEverythingKeepsTheBlock) {
    RecordingArray a({1, 2, 3});
    char* block = a.data;
    a.remove(0, 3);
    EXPECT_EQ(0u, a.usedBytes);
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_EQ(block, a.data);
}

TEST(ArrayGrowth, RemoveAndCutOfNothingChangeNothing) {
    RecordingArray a({1, 2, 3});
    a.remove(1, 0);
    EXPECT_EQ(nullptr, a.raw_cut(1, 0));
    a.remove(3, 0);
    EXPECT_EQ(nullptr, a.raw_cut(3, 0));
    EXPECT_THAT(a.log, IsEmpty());
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 3));
}

TEST(ArrayGrowth, RawCutMovesTheRunOutByBytesWithoutElementOperations) {
    Roomy a(5, 8);
    int* cut = static_cast<int*>(a.raw_cut(1, 3));
    ASSERT_NE(nullptr, cut);
    EXPECT_TRUE(requestedWith(cut, 12));
    EXPECT_EQ(2, cut[0]);
    EXPECT_EQ(3, cut[1]);
    EXPECT_EQ(4, cut[2]);
    EXPECT_THAT(a.log, IsEmpty()) << "the elements change owner: neither copied nor destroyed";
    EXPECT_THAT(a.values(), ElementsAre(1, 5));
    EXPECT_EQ(32u, a.maxBytes);
    std::free(cut);
}

TEST(ArrayGrowth, RawCutOfEverythingLeavesAnEmptyArrayWithItsBlock) {
    RecordingArray a({1, 2});
    void* cut = a.raw_cut(0, 2);
    EXPECT_NE(static_cast<void*>(a.data), cut);
    EXPECT_NE(nullptr, a.data);
    EXPECT_EQ(0u, a.length());
    EXPECT_EQ(8u, a.maxBytes);
    std::free(cut);
}

// Copying out

TEST(ArrayGrowth, RawExtractCopiesTheRunThroughTheElementOperation) {
    RecordingArray a({1, 2, 3, 4});
    int* copy = static_cast<int*>(a.raw_extract(1, 2));
    EXPECT_THAT(a.log, ElementsAre("copy 8 +4 to outside"));
    EXPECT_TRUE(requestedWith(copy, 8));
    EXPECT_EQ(2, copy[0]);
    EXPECT_EQ(3, copy[1]);
    EXPECT_EQ(4u, a.length());
    std::free(copy);
    EXPECT_EQ(nullptr, a.raw_extract(1, 0));
    EXPECT_EQ(1u, a.log.size());
}

TEST(ArrayGrowth, RawCopyCopiesTheUsedElements) {
    Roomy a(2, 6);
    int* copy = static_cast<int*>(a.raw_copy());
    EXPECT_THAT(a.log, ElementsAre("copy 8 +0 to outside"));
    EXPECT_TRUE(requestedWith(copy, 8));
    EXPECT_EQ(1, copy[0]);
    EXPECT_EQ(2, copy[1]);
    std::free(copy);
}

TEST(ArrayGrowth, RawCopyOfAnEmptyArrayIsNullWhateverItsCapacity) {
    Roomy a(0, 6);
    EXPECT_EQ(nullptr, a.raw_copy());
    EXPECT_EQ(nullptr, RecordingArray().raw_copy());
}

TEST(ArrayGrowth, RawHeadCopiesTheFirstElements) {
    RecordingArray a({1, 2, 3});
    int* copy = static_cast<int*>(a.raw_head(2));
    EXPECT_THAT(a.log, ElementsAre("copy 8 +0 to outside"));
    EXPECT_EQ(1, copy[0]);
    EXPECT_EQ(2, copy[1]);
    std::free(copy);
    EXPECT_EQ(nullptr, a.raw_head(0));
}

TEST(ArrayGrowth, RawTailCopiesTheLastElementsInTheirOrder) {
    Roomy a(5, 9);
    int* copy = static_cast<int*>(a.raw_tail(2));
    EXPECT_THAT(a.log, ElementsAre("copy 8 +12 to outside")) << "the last in use, not of the capacity";
    EXPECT_TRUE(requestedWith(copy, 8));
    EXPECT_EQ(4, copy[0]);
    EXPECT_EQ(5, copy[1]);
    std::free(copy);
    EXPECT_EQ(nullptr, a.raw_tail(0));
}

}  // namespace ArrayGrowthTest
