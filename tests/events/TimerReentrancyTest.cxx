// Ticks that change timers: themselves, or one that is due in the same pass. Those that wait: TimerRearmingTest.cxx.
#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "LoopRig.h"
#include "Timer.h"

namespace TimerReentrancyTest {

using LoopRig::deltas;
using LoopRig::log;
using LoopRig::Timer;

typedef LoopRig::ThreeTimers TimerTicks;

// Itself.

TEST_F(TimerTicks, OneThatDestroysItself) {
    a->onTick = [&] { a.reset(); };
    startAll();
    qnTimer::alarm(2);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("1 ", deltas());
}

TEST_F(TimerTicks, ARepeatingOneThatDestroysItself) {
    repeatA();
    a->onTick = [&] { a.reset(); };
    startAll();
    qnTimer::alarm(2);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("1 ", deltas());
    qnTimer::alarm(5);
    EXPECT_EQ("a b c ", log);
}

TEST_F(TimerTicks, TheLastOneThatDestroysItselfLeavesAnEmptyList) {
    repeatA();
    a->onTick = [&] { a.reset(); };
    a->start(1);
    qnTimer::alarm(1);
    EXPECT_EQ(nullptr, qnTimer::getFirst());
}

TEST_F(TimerTicks, OneThatRestartsAndThenDestroysItself) {
    repeatA();
    a->onTick = [&] {
        a->startTimer();
        a.reset();
    };
    startAll();
    qnTimer::alarm(3);
    EXPECT_EQ("a b c ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, ARepeatingOneThatStopsItselfIsArmedAnyway) {
    repeatA();
    a->onTick = [&] { a->stopTimer(); };
    a->start(1);
    qnTimer::alarm(1);
    EXPECT_EQ("1 ", deltas()) << "it is inactive in its tick, so that stopping changes nothing";
}

TEST_F(TimerTicks, AOneShotThatStopsItselfStaysInactive) {
    a->onTick = [&] { a->stopTimer(); };
    a->start(1);
    qnTimer::alarm(1);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, AOneShotThatRestartsItselfFiresAsOftenAsTheTimeAllows) {
    a->onTick = [&] { a->startTimer(); };
    a->start(1);
    qnTimer::alarm(3.5f);
    EXPECT_EQ("a a a ", log);
    EXPECT_EQ("0.5 ", deltas());
}

TEST_F(TimerTicks, ARepeatingOneThatRestartsItselfKeepsThatArming) {
    repeatA();
    a->onTick = [&] { a->startTimer(); };
    a->start(2);
    qnTimer::alarm(5);
    EXPECT_EQ("a a ", log);
    EXPECT_EQ("1 ", deltas()) << "armed by itself at 4, not by the pass at 5";
}

TEST_F(TimerTicks, OneThatWaitsTwiceIsArmedOnce) {
    repeatA();
    int ticks = 0;
    a->onTick = [&] {
        if (++ticks == 1) a->startTimer();
    };
    a->start(2);
    b->start(9);
    qnTimer::alarm(5);
    EXPECT_EQ("a a ", log);
    EXPECT_EQ("2 2 ", deltas());
    EXPECT_EQ(a.get(), qnTimer::getFirst());
    EXPECT_EQ(b.get(), a->getNext());
    EXPECT_EQ(nullptr, b->getNext());
}

TEST_F(TimerTicks, OneThatWaitsTwiceAndIsDestroyedIsForgottenTwice) {
    repeatA();
    int ticks = 0;
    a->onTick = [&] {
        if (++ticks == 1) a->startTimer();
    };
    b->onTick = [&] { a.reset(); };
    a->start(1);
    b->start(4);
    qnTimer::alarm(5);
    EXPECT_EQ("a a b ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, AOneShotOfIntervalZeroThatRestartsItselfWaitsForTheNextAdvance) {
    a->onTick = [&] { a->startTimer(); };
    a->start(0);
    b->start(2);
    qnTimer::alarm(1);
    EXPECT_EQ("a ", log);
    EXPECT_TRUE(a->isActive());
    EXPECT_EQ(a.get(), qnTimer::getFirst());
    qnTimer::alarm(0);
    EXPECT_EQ("a a ", log);
    a->stopTimer();
}

TEST_F(TimerTicks, WhileItWaitsForTheNextAdvanceTheOthersFire) {
    a->onTick = [&] { a->startTimer(); };
    a->start(0);
    b->start(2);
    c->start(5);
    qnTimer::alarm(3);
    EXPECT_EQ("a b ", log);
    EXPECT_TRUE(a->isActive());
    qnTimer::alarm(2);
    EXPECT_EQ("a b a c ", log) << "it comes before what is due later";
    a->stopTimer();
}

TEST_F(TimerTicks, OneThatDestroysWhatWaitsForTheNextAdvance) {
    a->onTick = [&] { a->startTimer(); };
    b->onTick = [&] { a.reset(); };
    a->start(0);
    b->start(2);
    c->start(5);
    qnTimer::alarm(3);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("2 ", deltas());
    EXPECT_EQ(c.get(), qnTimer::getFirst());
}

TEST_F(TimerTicks, OneThatStopsWhatWaitsForTheNextAdvance) {
    a->onTick = [&] { a->startTimer(); };
    b->onTick = [&] { a->stopTimer(); };
    a->start(0);
    b->start(2);
    c->start(5);
    qnTimer::alarm(3);
    EXPECT_FALSE(a->isActive());
    EXPECT_EQ("2 ", deltas());
    EXPECT_EQ(c.get(), qnTimer::getFirst());
}

TEST_F(TimerTicks, OneThatRestartsWhatWaitsForTheNextAdvance) {
    a->onTick = [&] { a->startTimer(); };
    b->onTick = [&] { a->start(1); };
    a->start(0);
    b->start(2);
    qnTimer::alarm(2.5f);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("0.5 ", deltas()) << "due at 2 + 1, and listed once";
    EXPECT_EQ(nullptr, a->getNext());
}

TEST_F(TimerTicks, TwoOfIntervalZeroThatStartEachOtherEndThePass) {
    a->onTick = [&] { b->startTimer(); };
    b->onTick = [&] { a->startTimer(); };
    a->start(0);
    qnTimer::alarm(1);
    EXPECT_EQ("a b a b a b ", log.substr(0, 12)) << "each is due at once";
    EXPECT_LE(log.size(), 2 * 1002u);
    EXPECT_TRUE(a->isActive() != b->isActive()) << "one waits for the next advance";
    a->stopTimer();
    b->stopTimer();
}

TEST_F(TimerTicks, OneOfIntervalZeroThatAnotherStartsFiresOnceMore) {
    a->onTick = [&] { a->setInterval(0); };
    b->onTick = [&] { a->startTimer(); };
    a->start(2);
    b->start(2);
    qnTimer::alarm(2);
    EXPECT_EQ("a b a ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, ARepeatingOneOfIntervalZeroThatAnotherStartsFiresOnceMore) {
    repeatA();
    b->onTick = [&] { a->startTimer(); };
    a->start(0);
    b->start(0);
    qnTimer::alarm(0);
    EXPECT_EQ("a b a ", log);
    EXPECT_EQ("0 ", deltas()) << "and is armed again, once";
    a->stopTimer();
}

TEST_F(TimerTicks, OneThatWaitsForTheNextAdvanceFiresWhenAnotherStartsIt) {
    int ticks = 0;
    a->onTick = [&] {
        if (++ticks == 1) a->startTimer();
    };
    b->onTick = [&] { a->startTimer(); };
    a->start(0);
    b->start(0);
    qnTimer::alarm(0);
    EXPECT_EQ("a b a ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, ANegativeIntervalThatRestartsItselfWaitsToo) {
    a->onTick = [&] { a->startTimer(); };
    a->start(-1);
    qnTimer::alarm(1);
    EXPECT_EQ("a ", log);
    a->stopTimer();
}

TEST_F(TimerTicks, AnIntervalThatVanishesInTheElapsedTimeWaitsToo) {
    a->onTick = [&] { a->startTimer(); };
    for (float interval : {1e-6f, 1e-12f, 1e-30f, std::numeric_limits<float>::denorm_min()}) {
        log.clear();
        a->start(interval);
        qnTimer::alarm(1000);  // 1000 less so little is 1000: it would go on for ever
        EXPECT_EQ("a ", log) << interval;
    }
    a->stopTimer();
}

TEST_F(TimerTicks, AnInfiniteAdvanceEndsThoughItRestartsItself) {
    a->onTick = [&] { a->startTimer(); };
    a->start(1);
    qnTimer::alarm(std::numeric_limits<float>::infinity());
    EXPECT_EQ("a ", log);
    a->stopTimer();
}

TEST_F(TimerTicks, AnIntervalSetInTheTickCountsForTheRearming) {
    repeatA();
    a->onTick = [&] { a->setInterval(7); };
    a->start(1);
    qnTimer::alarm(2);
    EXPECT_EQ("7 ", deltas());
}

// One that is due in the same pass.

TEST_F(TimerTicks, OneThatDestroysADueOne) {
    a->onTick = [&] { b.reset(); };
    startAll();
    qnTimer::alarm(9);
    EXPECT_EQ("a c ", log);
}

TEST_F(TimerTicks, OneThatDestroysAllTheOthers) {
    a->onTick = [&] {
        b.reset();
        c.reset();
    };
    startAll();
    qnTimer::alarm(9);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, OneThatDestroysEverything) {
    repeatA();
    a->onTick = [&] {
        b.reset();
        a.reset();
        c.reset();
    };
    startAll();
    qnTimer::alarm(9);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("", deltas());
}

TEST_F(TimerTicks, OneThatStopsADueOne) {
    a->onTick = [&] { b->stopTimer(); };
    startAll();
    qnTimer::alarm(2.5f);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("0.5 ", deltas()) << "the third is still due at 3";
}

TEST_F(TimerTicks, OneThatRestartsADueOne) {
    a->onTick = [&] { b->startTimer(); };
    startAll();
    qnTimer::alarm(2.5f);
    EXPECT_EQ("a ", log) << "the second is due at 1 + 2 now";
    EXPECT_EQ("0.5 0 ", deltas());
    EXPECT_EQ(c.get(), qnTimer::getFirst());
}

TEST_F(TimerTicks, OneThatStartsAnotherThatIsDueWithinThePass) {
    b->setInterval(1);
    a->onTick = [&] { b->startTimer(); };
    a->start(1);
    c->start(4);
    qnTimer::alarm(2.5f);
    EXPECT_EQ("a b ", log);
    EXPECT_EQ("1.5 ", deltas());
}

TEST_F(TimerTicks, OneThatStartsAnotherForLater) {
    b->setInterval(9);
    a->onTick = [&] { b->startTimer(); };
    a->start(1);
    qnTimer::alarm(3);
    EXPECT_EQ("a ", log);
    EXPECT_EQ("7 ", deltas());
}

TEST_F(TimerTicks, OneThatMakesAndStartsANewOne) {
    a->onTick = [&] {
        b.reset(new Timer("new", 0));
        b->start(0.5f);
    };
    a->start(1);
    qnTimer::alarm(2);
    EXPECT_EQ("a new ", log);
}

TEST_F(TimerTicks, TwoThatStopAndStartEachOther) {
    a->onTick = [&] {
        b->stopTimer();
        b->start(1);
    };
    b->onTick = [&] {
        a->stopTimer();
        a->start(1);
    };
    a->start(1);
    b->start(1);
    qnTimer::alarm(4.5f);
    EXPECT_EQ("a b a b ", log);  // at 1, 2, 3, 4
    EXPECT_EQ("0.5 ", deltas());
    EXPECT_EQ(a.get(), qnTimer::getFirst());
}

// Ticks and the rest of the system.

TEST_F(TimerTicks, OneThatPostsAndRemovesEvents) {
    a->onTick = [] {
        LoopRig::Note::post("posted");
        qn_theEventHandler->removeEvents([](qnEvent*, void*) -> qnBool { return 1; }, nullptr);
        LoopRig::Note::post("kept");
    };
    a->start(1);
    qnTimer::alarm(1);
    qn_theEventHandler->distributeEvents();
    EXPECT_EQ("a kept ", log);
}

TEST_F(TimerTicks, OneThatRemovesItsOutputWhileItSends) {
    struct Once : qnTimer {
        Once() : qnTimer(1) {}
        void tick() override {
            qnTimer::tick();
            removeOutput("tick");
            qnTimer::tick();
        }
    } once;
    struct Receiver : qnObj {
        static void on(Receiver* self) { ++self->ticks; }
        int ticks = 0;
    } receiver;
    receiver.addInput("in", &receiver, &Receiver::on);
    once.connect("tick", &receiver, "in");
    once.startTimer();
    qnTimer::alarm(0);
    qn_theEventHandler->distributeEvents();
    EXPECT_EQ(1, receiver.ticks);
}

TEST_F(TimerTicks, OneThatSendsAtOnceToAReceiverThatDestroysIt) {
    struct Impatient : qnTimer {
        Impatient() : qnTimer(1) {}
        void tick() override { sendVoid(findOutput("tick"), qnSF_Immediate); }
    };
    struct Receiver : qnObj {
        static void on(Receiver* self) {
            delete self->timer;
            self->timer = nullptr;
        }
        Impatient* timer = new Impatient;
    } receiver;
    receiver.addInput("in", &receiver, &Receiver::on);
    receiver.timer->connect("tick", &receiver, "in");
    receiver.timer->startTimer();
    qnTimer::alarm(0);
    EXPECT_EQ(nullptr, receiver.timer);
    EXPECT_EQ("", deltas());
}

}  // namespace TimerReentrancyTest
