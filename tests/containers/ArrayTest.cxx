// Construction, fields, element operations, looking and exchanging. Growth, aliasing, sorting, transcription and the
// caller errors have files of their own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "Array.h"
#include "NumberArrays.h"
#include "support/RecordingArray.h"
#include "support/VirtualSlot.h"

namespace ArrayTest {

using testing::ElementsAre;
using testing::IsEmpty;

const unsigned None = 0xFFFFFFFFu;

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnArray) == 24, "the root's 8 bytes, a pointer, two sizes, the element size and its padding");
#endif
static_assert(std::is_abstract<qnArray>::value, "a subclass names itself");
static_assert(std::is_base_of<qnXDRObj, qnArray>::value, "arrays are serialisable");
static_assert(!std::is_copy_assignable<RecordingArray>::value, "the plain array has no assignment");

TEST(Array, FieldsFollowEachOtherInTheirOrder) {
    RecordingArray a;
    const char* afterRoot = reinterpret_cast<const char*>(static_cast<qnXDRObj*>(&a)) + sizeof(qnXDRObj);
    EXPECT_LE(reinterpret_cast<const char*>(&a.data), afterRoot);
    EXPECT_EQ(reinterpret_cast<const char*>(&a.data) + sizeof(char*), reinterpret_cast<const char*>(&a.maxBytes));
    EXPECT_EQ(reinterpret_cast<const char*>(&a.maxBytes) + 4, reinterpret_cast<const char*>(&a.usedBytes));
    EXPECT_EQ(reinterpret_cast<const char*>(&a.usedBytes) + 4, reinterpret_cast<const char*>(&a.elementSize));
    static_assert(std::is_same<decltype(a.elementSize), unsigned short>::value, "16 bits");
}

TEST(Array, ANewArrayHoldsItsCountAndIsFull) {
    RecordingArray a(4, 3);
    EXPECT_EQ(12u, a.maxBytes);
    EXPECT_EQ(12u, a.usedBytes);
    EXPECT_EQ(4u, a.elementSize);
    EXPECT_EQ(3u, a.length());
    EXPECT_EQ(0u, a.refCount);
    EXPECT_TRUE(requestedWith(a.data, 12));
    EXPECT_THAT(a.log, IsEmpty()) << "the base constructor creates no elements";
}

TEST(Array, ANewArrayOfNoElementsHasNoBlock) {
    RecordingArray a(4, 0);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(0u, a.length());
}

TEST(Array, AnArrayWithElementSizeZeroHasNoBlockAndLengthZero) {
    RecordingArray a(0, 5);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.length());
    EXPECT_EQ(None, a.find("x", 0));
}

TEST(Array, TheAdoptingConstructorTakesTheBlockWithoutCopying) {
    int* block = static_cast<int*>(std::malloc(8));
    block[0] = 5;
    block[1] = 6;
    RecordingArray a(4u, 8u, block);
    EXPECT_EQ(static_cast<void*>(block), static_cast<void*>(a.data));
    EXPECT_EQ(8u, a.maxBytes);
    EXPECT_EQ(8u, a.usedBytes);
    EXPECT_THAT(a.values(), ElementsAre(5, 6));
    EXPECT_THAT(a.log, IsEmpty());
}

TEST(Array, TheAdoptingConstructorKeepsTheLowSixteenBitsOfTheElementSize) {
    RecordingArray a(0x30004u, 8u, std::malloc(8));
    EXPECT_EQ(4u, a.elementSize);
    EXPECT_EQ(2u, a.length());
}

TEST(Array, TheFactoryConstructorMakesAnEmptyArray) {
    RecordingArray a(qnArray_type);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(0u, a.usedBytes);
    EXPECT_EQ(0u, a.length());
}

TEST(Array, ACopyIsExactlyAsBigAsTheUsedBytes) {
    RecordingArray a({1, 2});
    a.setMaxLength(10);
    RecordingArray b(a);
    EXPECT_EQ(8u, b.maxBytes);
    EXPECT_EQ(8u, b.usedBytes);
    EXPECT_EQ(4u, b.elementSize);
    EXPECT_NE(a.data, b.data);
    EXPECT_THAT(b.values(), ElementsAre(1, 2));
    EXPECT_TRUE(requestedWith(b.data, 8));
    EXPECT_THAT(b.log, IsEmpty()) << "the copy is made by the base class's own operations";
}

TEST(Array, ACopyOfAnEmptyArrayWithSpareCapacityHasNoBlock) {
    RecordingArray a;
    a.setMaxLength(3);
    RecordingArray b(a);
    EXPECT_EQ(nullptr, b.data);
    EXPECT_EQ(0u, b.maxBytes);
}

TEST(Array, ACopyIsHeldByNobody) {
    RecordingArray a;
    a.refCount = 3;
    RecordingArray b(a);
    EXPECT_EQ(0u, b.refCount);
}

TEST(Array, DestroyEndsTheUsedElementsAndLeavesTheFieldsAndTheBlock) {
    RecordingArray a({1, 2, 3});
    a.setMaxLength(5);
    a.log.clear();
    char* block = a.data;
    a.destroy();
    EXPECT_THAT(a.log, ElementsAre("destroy 12 at +0"));
    EXPECT_EQ(block, a.data);
    EXPECT_EQ(12u, a.usedBytes);
    EXPECT_EQ(20u, a.maxBytes);
}

TEST(Array, DestroyOfAnEmptyArrayCallsNothing) {
    RecordingArray a;
    a.setMaxLength(5);
    a.log.clear();
    a.destroy();
    EXPECT_THAT(a.log, IsEmpty());
}

/** A class that keeps every base operation. */
class PlainArray : public qnArray {
public:
    explicit PlainArray(unsigned count) : qnArray(static_cast<unsigned short>(4), count) {}
    const char* className() const override { return "PlainArray"; }
};

TEST(Array, TheBaseElementOperationsTreatElementsAsBytes) {
    PlainArray a(2);
    std::memcpy(a.data, "abcdefgh", 8);
    a.createElements(a.data, 8);
    a.destroyElements(a.data, 8);
    EXPECT_EQ(0, std::memcmp(a.data, "abcdefgh", 8)) << "creating and destroying do nothing";
    a.copyElements(a.data, a.data + 1, 7);
    EXPECT_EQ(0, std::memcmp(a.data, "aabcdefg", 8)) << "copies may overlap";
    a.copyElements(a.data + 1, a.data, 7);
    EXPECT_EQ(0, std::memcmp(a.data, "abcdefgg", 8));
}

TEST(Array, TheBaseComparisonIsByUnsignedBytesOfOneElement) {
    PlainArray a(1);
    EXPECT_EQ(0, a.compareElements("abcdX", "abcdY"));
    EXPECT_LT(a.compareElements("abcc", "abcd"), 0);
    EXPECT_GT(a.compareElements("\xff\0\0\0", "\x01\xff\xff\xff"), 0);
}

TEST(Array, LengthDividesTheUsedBytesByTheElementSize) {
    RecordingArray a(12, 5);
    EXPECT_EQ(60u, a.usedBytes);
    EXPECT_EQ(5u, a.length());
}

TEST(Array, FindReturnsTheFirstMatchAtOrAfterStart) {
    RecordingArray a({7, 8, 7, 9, 7});
    int seven = 7;
    EXPECT_EQ(0u, a.find(&seven, 0));
    EXPECT_EQ(2u, a.find(&seven, 1));
    EXPECT_EQ(2u, a.find(&seven, 2));
    EXPECT_EQ(4u, a.find(&seven, 3));
}

TEST(Array, FindPassesTheProbeFirst) {
    RecordingArray a({7, 8});
    int eight = 8;
    a.find(&eight, 0);
    EXPECT_THAT(a.log, ElementsAre("compare outside +0", "compare outside +4"));
}

TEST(Array, FindReturnsAllOnesWhenNothingMatches) {
    RecordingArray a({7, 8});
    int nine = 9;
    EXPECT_EQ(0xFFFFFFFFu, a.find(&nine, 0));
    EXPECT_EQ(2u, a.log.size());
}

TEST(Array, FindFromTheEndOrPastItComparesNothing) {
    RecordingArray a({7, 8});
    int seven = 7;
    EXPECT_EQ(None, a.find(&seven, 2));
    EXPECT_EQ(None, a.find(&seven, 3));
    EXPECT_EQ(None, a.find(&seven, 0xFFFFFFFFu));
    EXPECT_THAT(a.log, IsEmpty());
}

TEST(Array, FindWhoseStartTimesElementSizePassesFourGigabytesFindsNothing) {
    RecordingArray a({7, 8});
    int seven = 7;
    // As 32-bit byte offsets these would be those of elements 0 and 1.
    EXPECT_EQ(None, a.find(&seven, 0x40000000u));
    EXPECT_EQ(None, a.find(&seven, 0x40000001u));
    EXPECT_THAT(a.log, IsEmpty());
}

TEST(Array, FindInAnEmptyArrayComparesNothing) {
    RecordingArray a;
    int seven = 7;
    EXPECT_EQ(None, a.find(&seven, 0));
    a.setMaxLength(4);
    EXPECT_EQ(None, a.find(&seven, 0)) << "spare elements do not count";
}

TEST(Array, SwapExchangesTwoElementsWithoutComparing) {
    RecordingArray a({1, 2, 3});
    a.swap(0, 2);
    EXPECT_THAT(a.values(), ElementsAre(3, 2, 1));
    a.swap(2, 1);
    EXPECT_THAT(a.values(), ElementsAre(3, 1, 2));
    EXPECT_THAT(a.log, IsEmpty());
}

TEST(Array, SwapOfAnElementWithItselfChangesNothing) {
    RecordingArray a({1, 2});
    a.swap(1, 1);
    EXPECT_THAT(a.values(), ElementsAre(1, 2));
}

/** Two elements of `bytes` bytes, of 'a' and of 'b', exchanged. */
void expectWideSwap(unsigned short bytes) {
    RecordingArray a(bytes, 2);
    std::memset(a.data, 'a', bytes);
    std::memset(a.data + bytes, 'b', bytes);
    a.swap(0, 1);
    EXPECT_EQ(std::string(bytes, 'b') + std::string(bytes, 'a'), std::string(a.data, 2u * bytes));
}

TEST(Array, SwapOfElementsOf1024BytesUsesALocalBuffer) { expectWideSwap(1024); }

// The scratch block of wider elements is never released: see lsan.supp.
TEST(Array, SwapOfElementsOf1025BytesUsesTheHeap) { expectWideSwap(1025); }

TEST(Array, SwapOfTheWidestElements) { expectWideSwap(65535); }

TEST(Array, TheTypeObjectIsAbstract) {
    EXPECT_STREQ("qnArray", qnArray_type.name);
    EXPECT_EQ(1u, qnArray_type.version);
    EXPECT_EQ(nullptr, qnArray_type.newInstance);
    EXPECT_EQ(nullptr, qnArray_type.deleteInstance);
    EXPECT_NE(nullptr, qnArray_type.xdr);
    EXPECT_EQ(&qnArray_type, qnTypeObj::findType("qnArray"));
    EXPECT_EQ(&qnArray_type, &RecordingArray().getTypeObj());
}

#ifndef MORVAQNDS_CHECKED
TEST(Array, TheDefaultBuildTakesAnyStartWhereNothingIsToDo) {
    RecordingArray a({1, 2, 3});
    a.log.clear();
    a.remove(7, 0);
    EXPECT_EQ(nullptr, a.raw_cut(7, 0));
    EXPECT_EQ(nullptr, a.raw_extract(7, 0));
    a.qsort(7, 0);
    EXPECT_THAT(a.values(), ElementsAre(1, 2, 3));
    EXPECT_THAT(a.log, IsEmpty());
}
#endif

// The destructor takes 0 and 1, the root's five operations 2 to 6. Programs compiled earlier override these by place.
TEST(Array, ElementOperationsStandInTheirSlots) {
    EXPECT_EQ(2, virtualSlot(&qnArray::className));
    EXPECT_EQ(3, virtualSlot(static_cast<bool (qnArray::*)(qnTranscriber&)>(&qnArray::xdr)));
    EXPECT_EQ(4, virtualSlot(&qnArray::getTypeObj));
    EXPECT_EQ(5, virtualSlot(&qnArray::xdrFail));
    EXPECT_EQ(6, virtualSlot(&qnArray::xdrSuccess));
    EXPECT_EQ(7, virtualSlot(&qnArray::getmem));
    EXPECT_EQ(8, virtualSlot(&qnArray::expand));
    EXPECT_EQ(9, virtualSlot(&qnArray::createElements));
    EXPECT_EQ(10, virtualSlot(&qnArray::destroyElements));
    EXPECT_EQ(11, virtualSlot(&qnArray::copyElements));
    EXPECT_EQ(12, virtualSlot(&qnArray::compareElements));
}

}  // namespace ArrayTest
