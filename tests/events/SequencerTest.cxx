#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>

#include "Data.h"
#include "Event.h"
#include "OrderedGlobal.h"
#include "Sequencer.h"

namespace SequencerTest {

#ifdef __i386__
static_assert(sizeof(qnSequencer) == 4 + sizeof(qnSeqRangeArray), "the virtual destructor's word and the runs");
#endif
static_assert(std::has_virtual_destructor<qnSequencer>::value, "programs derive from it");

struct Sequencer : testing::Test {
    /** The runs as "start+count ". */
    std::string runs() const {
        std::string text;
        const qnSeqRangeArray& ranges = next.getRanges();
        for (unsigned i = 0; i < ranges.length(); ++i) {
            text += std::to_string(ranges.elements()[i].start) + '+' + std::to_string(ranges.elements()[i].count) + ' ';
        }
        return text;
    }
    /** Hands out the next `count` numbers. */
    std::string draw(int count) {
        std::string text;
        while (count-- > 0) text += std::to_string(next()) + ' ';
        return text;
    }
    qnSequencer next;
};

TEST_F(Sequencer, AFreshOneHasNoRuns) { EXPECT_EQ("", runs()); }

TEST_F(Sequencer, AFreshOneHandsOutNumbersFromZero) {
    EXPECT_EQ(0u, next());
    EXPECT_EQ("0+1 ", runs());
    EXPECT_EQ("1 2 3 4 5 ", draw(5));
    EXPECT_EQ("0+6 ", runs());
}

TEST_F(Sequencer, RecordingReturnsTheNumber) {
    EXPECT_EQ(7u, next(7));
    EXPECT_EQ("7+1 ", runs());
    EXPECT_EQ(UINT_MAX, next(UINT_MAX));
    EXPECT_EQ("7+1 4294967295+1 ", runs());
    EXPECT_EQ(0u, next(0));
    EXPECT_EQ("0+1 7+1 4294967295+1 ", runs());
}

TEST_F(Sequencer, ARecordedNumberIsSkippedAndItsRunMerges) {
    draw(3);
    next(5);
    EXPECT_EQ("0+3 5+1 ", runs());
    EXPECT_EQ(3u, next());
    EXPECT_EQ("0+4 5+1 ", runs());
    EXPECT_EQ(4u, next());
    EXPECT_EQ("0+6 ", runs()) << "0 to 4 and 5";
    EXPECT_EQ(6u, next());
}

TEST_F(Sequencer, TheNumberBelowTheFirstRunIsNext) {
    next(10);
    EXPECT_EQ(9u, next());
    EXPECT_EQ("9+2 ", runs());
    EXPECT_EQ("8 7 6 5 4 3 2 1 0 ", draw(9));
    EXPECT_EQ("0+11 ", runs());
    EXPECT_EQ(11u, next()) << "down at 0 it goes upwards";
}

TEST_F(Sequencer, GoingDownLooksAtTheFirstRunOnly) {
    next(2);
    next(4);
    EXPECT_EQ("1 0 3 5 ", draw(4));
    EXPECT_EQ("0+6 ", runs());
}

TEST_F(Sequencer, RecordingAboveEverythingAppends) {
    next(3);
    next(8);
    EXPECT_EQ("3+1 8+1 ", runs());
}

TEST_F(Sequencer, RecordingTheEndOfTheLastRunMergesIntoIt) {
    next(3);
    next(4);
    EXPECT_EQ("3+2 ", runs());
}

TEST_F(Sequencer, AppendingMergesOnlyTheLastTwoRuns) {
    next(3);
    next(8);
    next(9);
    EXPECT_EQ("3+1 8+2 ", runs());
}

TEST_F(Sequencer, RecordingOneBelowTheFirstRunExtendsItDownwards) {
    next(5);
    next(4);
    EXPECT_EQ("4+2 ", runs());
}

TEST_F(Sequencer, RecordingOneBelowALaterRunExtendsItDownwards) {
    next(5);
    next(20);
    next(19);
    EXPECT_EQ("5+1 19+2 ", runs());
}

TEST_F(Sequencer, RecordingTheGapOfOneMergesBothSides) {
    next(5);
    next(7);
    next(20);
    next(6);
    EXPECT_EQ("5+3 20+1 ", runs());
}

TEST_F(Sequencer, RecordingTheEndOfARunBeforeAnotherExtendsItUpwards) {
    next(5);
    next(20);
    next(6);
    EXPECT_EQ("5+2 20+1 ", runs());
}

TEST_F(Sequencer, RecordingBetweenRunsThatItTouchesNotInserts) {
    next(5);
    next(20);
    next(10);
    EXPECT_EQ("5+1 10+1 20+1 ", runs());
    next(1);
    EXPECT_EQ("1+1 5+1 10+1 20+1 ", runs());
}

// Recorded numbers are not looked up: what is recorded again adds a run of its own.

TEST_F(Sequencer, RecordingTheLastRunAgainAppendsAnOverlappingRun) {
    next(5);
    next(5);
    EXPECT_EQ("5+1 5+1 ", runs());
}

TEST_F(Sequencer, RecordingTheStartOfTheLastRunAgainAppendsBehindIt) {
    next(5);
    next(6);
    next(5);
    EXPECT_EQ("5+2 5+1 ", runs());
}

TEST_F(Sequencer, RecordingInsideTheLastRunAppendsAnOverlappingRun) {
    draw(3);
    EXPECT_EQ(1u, next(1));
    EXPECT_EQ("0+3 1+1 ", runs());
    EXPECT_EQ(3u, next()) << "the first run decides";
}

TEST_F(Sequencer, RecordingInsideARunBeforeAnotherInsertsAnOverlappingRun) {
    draw(3);
    next(10);
    next(1);
    EXPECT_EQ("0+3 1+1 10+1 ", runs());
}

TEST_F(Sequencer, BehindAnOverlappingRunARecordedNumberIsHandedOutAgain) {
    draw(3);
    next(1);
    next(3);
    EXPECT_EQ("0+3 1+1 3+1 ", runs()) << "3 does not touch the run before it, which is 1";
    EXPECT_EQ(3u, next());
    EXPECT_EQ("0+4 1+1 3+1 ", runs());
}

TEST_F(Sequencer, AnOverlappingRunMergesWithWhatTouchesItsEnd) {
    draw(3);
    next(1);
    next(2);
    EXPECT_EQ("0+3 1+2 ", runs());
}

TEST_F(Sequencer, AtTheTopOfTheRangeNothingMergesAroundTheEnd) {
    next(0);
    next(UINT_MAX);
    EXPECT_EQ("0+1 4294967295+1 ", runs());
    next(UINT_MAX);
    EXPECT_EQ("0+1 4294967295+1 4294967295+1 ", runs()) << "its end wraps to 0 and touches nothing";
    next(UINT_MAX - 1);
    EXPECT_EQ("0+1 4294967294+2 4294967295+1 ", runs());
    EXPECT_EQ(1u, next());
}

TEST_F(Sequencer, OnlyTheHighestNumberRecordedGoesDownFromThere) {
    next(UINT_MAX);
    EXPECT_EQ(UINT_MAX - 1, next());
    EXPECT_EQ("4294967294+2 ", runs());
}

TEST_F(Sequencer, ManyRunsInReverseOrderEndAsOne) {
    for (unsigned n = 1000; n > 0; n -= 2) next(n);
    EXPECT_EQ(500u, next.getRanges().length());
    for (unsigned n = 999; n < 1000; n -= 2) next(n);
    EXPECT_EQ("1+1000 ", runs());
}

TEST(SequencerGlobals, TheCodesAreTheFirstNumbersOfTheirAllocators) {
    qnInitializeToolkit();
    ASSERT_NE(nullptr, qn_nextDataType);
    ASSERT_NE(nullptr, qn_nextEventType);
    EXPECT_LE(12u, qn_nextDataType->getRanges().elements()[0].count);
    EXPECT_LE(2u, qn_nextEventType->getRanges().elements()[0].count);
    EXPECT_EQ(0u, qnDT_void);
    EXPECT_EQ(1u, qnDT_qnBool);
    EXPECT_EQ(2u, qnDT_int);
    EXPECT_EQ(3u, qnDT_long);
    EXPECT_EQ(4u, qnDT_float);
    EXPECT_EQ(5u, qnDT_double);
    EXPECT_EQ(6u, qnDT_CharPtr);
    EXPECT_EQ(7u, qnDT_qnStr);
    EXPECT_EQ(8u, qnDT_VoidPtr);
    EXPECT_EQ(9u, qnDT_ObjPtr);
    EXPECT_EQ(10u, qnDT_DataPtr);
    EXPECT_EQ(11u, qnDT_qnStrArray);
    EXPECT_EQ(0u, qnET_Unknown);
    EXPECT_EQ(1u, qnET_MessageEvent);
}

}  // namespace SequencerTest
