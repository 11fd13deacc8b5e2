// Timers that have fired and wait to be armed again, and time that passes inside a tick.
#include <gtest/gtest.h>

#include <memory>

#include "LoopRig.h"
#include "Timer.h"

namespace TimerRearmingTest {

using LoopRig::deltas;
using LoopRig::log;
using LoopRig::Timer;

typedef LoopRig::ThreeTimers TimerRearming;

// One that has fired and waits to be armed again.

TEST_F(TimerRearming, OneThatDestroysAWaitingOne) {
    repeatA();
    b->onTick = [&] { a.reset(); };
    startAll();
    qnTimer::alarm(2);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerRearming, OneThatDestroysTheMiddleOfThreeWaitingOnes) {
    std::unique_ptr<Timer> first(new Timer("1", 1)), second(new Timer("2", 1)), third(new Timer("3", 1));
    first->start(1);
    second->start(1);
    third->start(1);
    a->start(1);
    a->onTick = [&] { second.reset(); };
    qnTimer::alarm(1);
    EXPECT_EQ("1 2 3 a ", log);
    EXPECT_EQ("1 0 ", deltas());
    EXPECT_EQ(first.get(), qnTimer::getFirst());
    EXPECT_EQ(third.get(), first->getNext());
}

TEST_F(TimerRearming, OneThatDestroysTheLastWaitingOneAndWaitsItself) {
    std::unique_ptr<Timer> first(new Timer("1", 1)), second(new Timer("2", 1)), third(new Timer("3", 1));
    first->start(1);
    second->start(1);
    third->start(1);
    third->onTick = [&] { second.reset(); };
    qnTimer::alarm(1);
    EXPECT_EQ("1 2 3 ", log);
    EXPECT_EQ("1 0 ", deltas());
    EXPECT_EQ(third.get(), first->getNext());
}

TEST_F(TimerRearming, StoppingAWaitingOneChangesNothing) {
    repeatA();
    b->onTick = [&] { a->stopTimer(); };
    startAll();
    qnTimer::alarm(2);
    EXPECT_EQ("1 0 ", deltas()) << "it is inactive, and is armed after the pass";
    EXPECT_EQ(c.get(), qnTimer::getFirst());
    EXPECT_TRUE(a->isActive());
}

TEST_F(TimerRearming, AWaitingOneThatIsStartedKeepsThatArming) {
    repeatA();
    b->onTick = [&] {
        a->setInterval(4);
        a->startTimer();
        a->setInterval(1);
    };
    startAll();
    qnTimer::alarm(2.5f);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("0.5 3 ", deltas()) << "c at 3, a at 2 + 4";
}

TEST_F(TimerRearming, AWaitingOneThatIsStartedMayFireAgainInThePass) {
    repeatA();
    b->onTick = [&] { a->startTimer(); };
    startAll();
    qnTimer::alarm(3.5f);
    EXPECT_EQ("a b c a ", log) << "at 1, 2, 3, and at 2 + 1 behind c";
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerRearming, AWaitingOneThatIsStartedAndStoppedIsArmedAfterThePass) {
    repeatA();
    b->onTick = [&] {
        a->startTimer();
        a->stopTimer();
    };
    startAll();
    qnTimer::alarm(2.5f);
    EXPECT_EQ("0.5 0.5 ", deltas()) << "c at 3, a at 2.5 + 1";
    EXPECT_EQ(a.get(), c->getNext());
}

TEST_F(TimerRearming, AWaitingOneIsArmedWithTheIntervalItHasThen) {
    repeatA();
    b->onTick = [&] { a->setInterval(6); };
    startAll();
    qnTimer::alarm(2);
    EXPECT_EQ("1 5 ", deltas());
}

// Time passing inside a tick.

TEST_F(TimerRearming, AnAdvanceInsideATick) {
    a->onTick = [&] { qnTimer::alarm(1); };
    startAll();
    qnTimer::alarm(1.5f);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("0.5 ", deltas()) << "half a second of the outer advance remained";
}

TEST_F(TimerRearming, AnAdvanceInsideATickArmsOnlyWhatFiredInIt) {
    repeatA();
    b.reset(new Timer("b", 1));
    a->onTick = [&] {
        qnTimer::alarm(1);
        LoopRig::note("armed:" + deltas());
    };
    a->start(1);
    b->start(2);
    qnTimer::alarm(1);
    EXPECT_EQ("a b armed:2  ", log);
    EXPECT_EQ("1 1 ", deltas());
}

TEST_F(TimerRearming, AnAdvanceInsideATickThatDestroysAWaitingOneOfTheOuterPass) {
    repeatA();
    b->onTick = [&] { a.reset(); };
    a->onTick = [&] { qnTimer::alarm(1); };
    startAll();
    qnTimer::alarm(1);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerRearming, AnAdvanceInsideATickThatFiresEverything) {
    repeatA();
    a->onTick = [&] {
        a->onTick = nullptr;
        qnTimer::alarm(100);
    };
    startAll();
    qnTimer::alarm(100);
    EXPECT_EQ("a b c ", log);
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerRearming, OneOfIntervalZeroThatRestartsItselfWaitsUntilTheOuterAdvanceIsOver) {
    a->onTick = [&] {
        a->startTimer();
        qnTimer::alarm(0);
        qnTimer::alarm(1);
    };
    a->start(0);
    qnTimer::alarm(0);
    EXPECT_EQ("a ", log) << "otherwise it would fire inside itself for ever";
    a->stopTimer();
}

TEST_F(TimerRearming, OneThatRestartsItselfFiresInsideItselfWhenItsTimeHasPassed) {
    int depth = 0;
    a->onTick = [&] {
        a->startTimer();
        if (++depth > 2) return;
        qnTimer::alarm(0.5f);
        LoopRig::note("half");
        qnTimer::alarm(0.5f);
    };
    a->start(1);
    qnTimer::alarm(1);
    EXPECT_EQ("a half a half a ", log);
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerRearming, OneThatRestartsItselfFiresInsideItselfBehindAnother) {
    b->setInterval(1);
    a->onTick = [&] {
        a->onTick = nullptr;
        b->startTimer();
        a->startTimer();
        qnTimer::alarm(1);
    };
    a->start(1);
    qnTimer::alarm(1);
    EXPECT_EQ("a b a ", log) << "both are due after the same second";
}

}  // namespace TimerRearmingTest
