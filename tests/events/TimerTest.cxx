#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "LoopRig.h"
#include "Timer.h"

namespace TimerTest {

using LoopRig::deltas;
using LoopRig::log;
using LoopRig::Timer;

#ifdef __i386__
// Base, interval, delta, the two flags with their padding, the output, the successor.
static_assert(sizeof(qnTimer) == sizeof(qnObj) + 4 + 4 + 4 + 4 + 4, "nothing but the described fields");
#endif

struct TimerList : LoopRig::Test {};
struct TimerAlarm : LoopRig::Test {};

// Making one.

TEST_F(TimerList, ANewOneIsInactiveWithIntervalZero) {
    qnTimer once(0), again(1);
    EXPECT_EQ(0.0f, once.getInterval());
    EXPECT_FALSE(once.isActive());
    EXPECT_FALSE(once.isRepeating());
    EXPECT_TRUE(again.isRepeating());
    EXPECT_EQ(nullptr, once.getNext());
    EXPECT_EQ(nullptr, qnTimer::getFirst());
    EXPECT_STREQ("qnTimer", once.className());
}

TEST_F(TimerList, ANewOneHasAVoidOutputNamedTick) {
    qnTimer t(0);
    ASSERT_NE(nullptr, t.findOutput("tick"));
    EXPECT_EQ(t.getTickOutput(), t.findOutput("tick"));
    EXPECT_EQ(qnDT_void, t.findOutput("tick")->getType());
}

// The active list.

TEST_F(TimerList, DeltasAreFromOneFiringToTheNext) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    EXPECT_EQ("2 3 ", deltas());
    EXPECT_TRUE(two.isActive());
    EXPECT_EQ(&two, qnTimer::getFirst());
    EXPECT_EQ(&five, two.getNext());
    EXPECT_EQ(nullptr, five.getNext());
}

TEST_F(TimerList, TheOrderOfStartsDoesNotMatter) {
    Timer two("2", 0), five("5", 0), nine("9", 0);
    nine.start(9);
    EXPECT_EQ("9 ", deltas());
    two.start(2);
    EXPECT_EQ("2 7 ", deltas());
    five.start(5);
    EXPECT_EQ("2 3 4 ", deltas());
    EXPECT_EQ(&five, two.getNext());
}

TEST_F(TimerList, StoppingTheFirstGivesItsTimeToTheNext) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    two.stopTimer();
    EXPECT_EQ("5 ", deltas());
    EXPECT_FALSE(two.isActive());
    EXPECT_EQ(nullptr, two.getNext());
    EXPECT_TRUE(five.isActive());
}

TEST_F(TimerList, StoppingOneInTheMiddleGivesItsTimeToTheNext) {
    Timer two("2", 0), five("5", 0), nine("9", 0);
    two.start(2);
    five.start(5);
    nine.start(9);
    five.stopTimer();
    EXPECT_EQ("2 7 ", deltas());
    EXPECT_EQ(&nine, two.getNext());
}

TEST_F(TimerList, StoppingTheLastLeavesTheOthers) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    five.stopTimer();
    EXPECT_EQ("2 ", deltas());
    EXPECT_EQ(nullptr, two.getNext());
}

TEST_F(TimerList, StoppingAnInactiveOneChangesNothing) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.stopTimer();
    EXPECT_EQ("2 ", deltas());
    two.stopTimer();
    two.stopTimer();
    EXPECT_EQ("", deltas());
}

TEST_F(TimerList, StartingAnActiveOneStartsItAnew) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(1);
    EXPECT_EQ("1 3 ", deltas());
    two.startTimer();
    EXPECT_EQ("2 2 ", deltas()) << "a full interval from now; the other still has four seconds";
    five.startTimer();
    EXPECT_EQ("2 3 ", deltas());
    EXPECT_EQ("", log);
}

TEST_F(TimerList, DueAtTheSameMomentMeansInOrderOfStarting) {
    Timer a("a", 0), b("b", 0), c("c", 0), d("d", 0);
    a.start(3);
    b.start(3);
    d.start(4);
    c.start(3);
    EXPECT_EQ("3 0 0 1 ", deltas());
    qnTimer::alarm(4);
    EXPECT_EQ("a b c d ", log);
}

TEST_F(TimerList, DueAtTheSameMomentAfterSomeTimeGoesBehind) {
    Timer a("a", 0), b("b", 0);
    a.start(3);
    qnTimer::alarm(1);
    b.start(2);
    EXPECT_EQ("2 0 ", deltas());
    qnTimer::alarm(2);
    EXPECT_EQ("a b ", log);
}

TEST_F(TimerList, DueAtTheSameMomentIsNotAQuestionOfRounding) {
    Timer first("first", 0), second("second", 0), third("third", 0);
    for (int i = 1; i < 100; ++i) {
        for (int n = i + 1; n <= 100; ++n) {
            first.start(static_cast<float>(i) / 100);
            second.start(static_cast<float>(n) / 100);
            third.start(static_cast<float>(n) / 100);
            ASSERT_EQ(&third, second.getNext()) << i << " and " << n;
            ASSERT_EQ(0.0f, third.getDelta()) << i << " and " << n;
            first.stopTimer();
            second.stopTimer();
            third.stopTimer();
        }
    }
}

TEST_F(TimerList, AnIntervalCountsFromTheNextStart) {
    Timer a("a", 0);
    a.start(3);
    a.setInterval(7);
    EXPECT_EQ(7.0f, a.getInterval());
    EXPECT_EQ("3 ", deltas());
    a.startTimer();
    EXPECT_EQ("7 ", deltas());
}

TEST_F(TimerList, ANegativeIntervalCountsAsZero) {
    Timer a("a", 0), b("b", 0);
    a.start(1);
    b.start(-5);
    EXPECT_EQ("0 1 ", deltas());
    EXPECT_EQ(&b, qnTimer::getFirst());
}

TEST_F(TimerList, AnIntervalThatIsNotANumberCountsAsZero) {
    Timer a("a", 0), b("b", 0);
    a.start(1);
    b.start(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ("0 1 ", deltas());
    EXPECT_EQ(&b, qnTimer::getFirst());
}

TEST_F(TimerList, AnInfiniteIntervalCountsAsTheLongestTime) {
    const float longest = std::numeric_limits<float>::max();
    Timer a("a", 0), b("b", 0), c("c", 0);
    a.start(std::numeric_limits<float>::infinity());
    b.start(std::numeric_limits<float>::infinity());
    EXPECT_EQ(longest, a.getDelta());
    EXPECT_EQ(0.0f, b.getDelta());
    c.start(1);
    EXPECT_EQ(&c, qnTimer::getFirst());
    a.stopTimer();
    EXPECT_EQ(longest, b.getDelta());
}

TEST_F(TimerList, DestroyingAnActiveOneStopsIt) {
    Timer five("5", 0);
    {
        Timer two("2", 0);
        two.start(2);
        five.start(5);
    }
    EXPECT_EQ("5 ", deltas());
    EXPECT_EQ(&five, qnTimer::getFirst());
}

TEST_F(TimerList, AThousandKeepTheirOrder) {
    std::vector<std::unique_ptr<Timer>> timers;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        timers.emplace_back(new Timer(std::to_string((i * 7) % 10), 0));
        timers.back()->start(static_cast<float>((i * 7) % 10));
    }
    for (int i = 0; i < 10; ++i) {
        for (int n = 0; n < 100; ++n) expected += std::to_string(i) + ' ';
    }
    qnTimer::alarm(9);
    EXPECT_EQ(expected, log);
}

// Time passing.

TEST_F(TimerAlarm, WithoutTimersNothingHappens) {
    qnTimer::alarm(5);
    EXPECT_EQ(nullptr, qnTimer::getFirst());
}

TEST_F(TimerAlarm, TooShortATimeOnlyBringsTheFirstNearer) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(1.5f);
    EXPECT_EQ("0.5 3 ", deltas());
    EXPECT_EQ("", log);
}

TEST_F(TimerAlarm, TheExactTimeFires) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(2);
    EXPECT_EQ("2 ", log);
    EXPECT_EQ("3 ", deltas());
    EXPECT_FALSE(two.isActive());
    EXPECT_EQ(nullptr, two.getNext());
}

TEST_F(TimerAlarm, OneAdvanceCarriesSeveralFiringsInOrder) {
    Timer two("2", 0), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(6);
    EXPECT_EQ("2 5 ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerAlarm, WhatRemainsBringsTheNextNearer) {
    Timer two("2", 0), five("5", 0), nine("9", 0);
    two.start(2);
    five.start(5);
    nine.start(9);
    qnTimer::alarm(6);
    EXPECT_EQ("3 ", deltas());
}

TEST_F(TimerAlarm, ARepeatingOneIsArmedAFullIntervalFromThen) {
    Timer two("2", 1), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(6);
    EXPECT_EQ("2 5 ", log) << "once, although three intervals have passed";
    EXPECT_EQ("2 ", deltas()) << "the lateness is not made up for";
    EXPECT_TRUE(two.isActive());
    EXPECT_FALSE(five.isActive());
    qnTimer::alarm(2);
    EXPECT_EQ("2 5 2 ", log);
    two.stopTimer();
}

TEST_F(TimerAlarm, ARepeatingOneIsArmedAfterTheOthersHaveAdvanced) {
    Timer two("2", 1), five("5", 0);
    two.start(2);
    five.start(5);
    qnTimer::alarm(3);
    // At 3 the second one has 2 seconds left; the first one is armed with 2 seconds, and goes behind it.
    EXPECT_EQ("2 0 ", deltas());
    EXPECT_EQ(&five, qnTimer::getFirst());
    two.stopTimer();
    five.stopTimer();
}

TEST_F(TimerAlarm, RepeatingOnesAreArmedInTheOrderInWhichTheyFired) {
    Timer a("a", 1), b("b", 1), c("c", 1);
    a.start(4);
    b.start(1);
    c.start(2);
    a.setInterval(3);
    b.setInterval(3);
    c.setInterval(3);
    qnTimer::alarm(4);
    EXPECT_EQ("b c a ", log);
    EXPECT_EQ("3 0 0 ", deltas());
    log.clear();
    qnTimer::alarm(3);
    EXPECT_EQ("b c a ", log);
    a.stopTimer();
    b.stopTimer();
    c.stopTimer();
}

TEST_F(TimerAlarm, ARepeatingOneIsInactiveInItsTick) {
    Timer a("a", 1);
    qnBool activeInside = 1;
    const qnTimer* firstInside = &a;
    a.onTick = [&] {
        activeInside = a.isActive();
        firstInside = qnTimer::getFirst();
    };
    a.start(1);
    qnTimer::alarm(1);
    EXPECT_FALSE(activeInside);
    EXPECT_EQ(nullptr, firstInside);
    EXPECT_TRUE(a.isActive());
    a.stopTimer();
}

TEST_F(TimerAlarm, IntervalZeroFiresOnTheNextAdvance) {
    Timer a("a", 0);
    a.start(0);
    EXPECT_EQ("", log);
    qnTimer::alarm(0.25f);
    EXPECT_EQ("a ", log);
}

TEST_F(TimerAlarm, IntervalZeroFiresOnAnAdvanceOfZero) {
    Timer a("a", 0), b("b", 0);
    a.start(0);
    b.start(1);
    qnTimer::alarm(0);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("1 ", deltas());
    b.stopTimer();
}

TEST_F(TimerAlarm, ARepeatingOneOfIntervalZeroFiresOncePerAdvance) {
    Timer a("a", 1), b("b", 0);
    a.start(0);
    b.start(2);
    qnTimer::alarm(1);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("0 1 ", deltas());
    qnTimer::alarm(1);
    EXPECT_EQ("a a b ", log);
    a.stopTimer();
}

TEST_F(TimerAlarm, AnAdvanceBackwardsFiresNothing) {
    Timer a("a", 0);
    a.start(1);
    qnTimer::alarm(-1);
    EXPECT_EQ("", log);
    EXPECT_EQ("2 ", deltas());
}

TEST_F(TimerAlarm, AnAdvanceThatIsNotANumberCountsAsZero) {
    Timer a("a", 0), b("b", 0);
    a.start(0);
    b.start(1);
    qnTimer::alarm(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ("a ", log);
    EXPECT_EQ("1 ", deltas());
    b.stopTimer();
}

TEST_F(TimerAlarm, AnInfiniteAdvanceFiresEverythingOnce) {
    Timer a("a", 0), b("b", 1);
    a.start(1);
    b.start(3600);
    qnTimer::alarm(std::numeric_limits<float>::infinity());
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("3600 ", deltas());
    b.stopTimer();
}

}  // namespace TimerTest
