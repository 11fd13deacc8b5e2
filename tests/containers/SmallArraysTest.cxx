// The arrays of sequence ranges and of function pointers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "SeqRangeArray.h"
#include "StubFuncArray.h"
#include "support/FakeTranscriber.h"
#include "support/RecordingArray.h"

namespace SmallArraysTest {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(sizeof(qnSeqRange) == 8, "two 32-bit words on every machine");
static_assert(sizeof(qnStubFunc) == sizeof(void*), "a pointer word");
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnStubFunc) == 4, "");
static_assert(sizeof(qnSeqRangeArray) == 24, "no fields of its own");
static_assert(sizeof(qnStubFuncArray) == 24, "no fields of its own");
#endif
static_assert(std::is_base_of<qnArray, qnSeqRangeArray>::value, "");
static_assert(std::is_base_of<qnArray, qnStubFuncArray>::value, "");

void first() {}
void second() {}
void third() {}

/** 0..9, 20..24, 30..31 */
void makeRanges(qnSeqRangeArray& a) {
    for (qnSeqRange range : {qnSeqRange{0, 10}, qnSeqRange{20, 5}, qnSeqRange{30, 2}}) a.append(&range);
}

std::vector<unsigned> starts(const qnSeqRangeArray& a) {
    std::vector<unsigned> result;
    for (unsigned i = 0; i < a.length(); ++i) result.push_back(a.elements()[i].start);
    return result;
}

TEST(SmallArrays, AreEmptyByDefault) {
    qnSeqRangeArray ranges;
    qnStubFuncArray hooks;
    EXPECT_EQ(0u, ranges.length());
    EXPECT_EQ(nullptr, ranges.data);
    EXPECT_EQ(8u, ranges.elementSize);
    EXPECT_EQ(0u, hooks.length());
    EXPECT_EQ(nullptr, hooks.data);
    EXPECT_EQ(sizeof(void*), hooks.elementSize);
}

TEST(SmallArrays, AreMadeWithACount) {
    qnSeqRangeArray ranges(3);
    EXPECT_EQ(3u, ranges.length());
    EXPECT_EQ(24u, ranges.maxBytes);
    qnStubFuncArray hooks(2);
    EXPECT_EQ(2u, hooks.length());
}

TEST(SmallArrays, AnswerArrayAsTheirName) {
    EXPECT_STREQ("ARRAY", qnSeqRangeArray().className());
    EXPECT_STREQ("ARRAY", qnStubFuncArray().className());
}

TEST(SmallArrays, HaveNoTypeObjectOfTheirOwn) {
    EXPECT_EQ(&qnArray_type, &qnSeqRangeArray().getTypeObj());
    EXPECT_EQ(&qnArray_type, &qnStubFuncArray().getTypeObj());
}

TEST(SmallArrays, TranscribeTheRootPartOnly) {
    qnSeqRangeArray ranges;
    makeRanges(ranges);
    FakeTranscriber writer(FakeTranscriber::Writing);
    EXPECT_TRUE(ranges.xdr(writer));
    EXPECT_TRUE(qnStubFuncArray(2).xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("base qnXDRObj (same)", "base qnXDRObj (same)"));
}

TEST(SmallArrays, RangesAreCutExtractedAndCopied) {
    qnSeqRangeArray ranges;
    makeRanges(ranges);
    EXPECT_THAT(starts(ranges.head(2)), ElementsAre(0, 20));
    EXPECT_THAT(starts(ranges.tail(2)), ElementsAre(20, 30));
    EXPECT_THAT(starts(ranges.extract(1, 1)), ElementsAre(20));
    EXPECT_THAT(starts(ranges), ElementsAre(0, 20, 30));
    qnSeqRangeArray cut = ranges.cut(0, 2);
    EXPECT_THAT(starts(cut), ElementsAre(0, 20));
    EXPECT_EQ(5u, cut.elements()[1].count);
    EXPECT_THAT(starts(ranges), ElementsAre(30));
}

TEST(SmallArrays, CopiesRecordTheSourcesCapacity) {
    qnSeqRangeArray ranges;
    makeRanges(ranges);
    EXPECT_EQ(32u, ranges.maxBytes);
    qnSeqRangeArray copy(ranges);
    EXPECT_EQ(32u, copy.maxBytes);
    EXPECT_EQ(24u, copy.usedBytes);
    EXPECT_TRUE(requestedWith(copy.data, 24));
    qnSeqRange more = {40, 1};
    copy.append(&more);
    EXPECT_THAT(starts(copy), ElementsAre(0, 20, 30, 40));
    EXPECT_EQ(32u, copy.maxBytes);
}

TEST(SmallArrays, RangesAreEqualInBothWords) {
    qnSeqRangeArray ranges;
    makeRanges(ranges);
    qnSeqRange probe = {20, 5}, other = {20, 6};
    EXPECT_EQ(1u, ranges.find(&probe, 0));
    EXPECT_EQ(0xFFFFFFFFu, ranges.find(&other, 0));
}

TEST(SmallArrays, FunctionsAreFoundInsertedAndRemoved) {
    qnStubFuncArray hooks;
    qnStubFunc a = first, b = second, c = third;
    hooks.append(&a);
    hooks.append(&c);
    hooks.insert(&b, 1);
    EXPECT_EQ(1u, hooks.find(&b, 0));
    hooks.remove(0, 1);
    EXPECT_EQ(second, hooks.elements()[0]);
    EXPECT_EQ(third, hooks.elements()[1]);
    EXPECT_EQ(0xFFFFFFFFu, hooks.find(&a, 0));
    EXPECT_EQ(1u, hooks.tail(1).length());
    EXPECT_EQ(third, hooks.tail(1).elements()[0]);
}

TEST(SmallArrays, AdoptABlock) {
    qnSeqRange* block = static_cast<qnSeqRange*>(std::malloc(sizeof(qnSeqRange)));
    *block = qnSeqRange{7, 1};
    qnSeqRangeArray a(8u, 8u, block);
    EXPECT_EQ(block, a.elements());
    EXPECT_EQ(1u, a.length());
}

TEST(SmallArrays, CutOfNothingIsEmpty) {
    qnStubFuncArray hooks(2);
    qnStubFuncArray cut = hooks.cut(0, 0);
    EXPECT_EQ(nullptr, cut.data);
    EXPECT_EQ(0u, cut.length());
    EXPECT_EQ(2u, hooks.length());
}

}  // namespace SmallArraysTest
