// How a firing reaches those that are connected to the timer.
#include <gtest/gtest.h>

#include "LoopRig.h"
#include "Timer.h"

namespace TimerOutputTest {

struct TimerOutput : LoopRig::Test {
    static void onTick(TimerOutput* self) { ++self->ticks; }
    static void onInt(TimerOutput* self, int) { self->ticks += 100; }
    unsigned distribute() {
        qn_theEventHandler->distributeEvents();
        return ticks;
    }
    qnObj receiver;
    unsigned ticks = 0;
};

TEST_F(TimerOutput, AFiringTravelsThroughTheQueue) {
    qnTimer t(0);
    receiver.addInput("in", this, &onTick);
    t.connect("tick", &receiver, "in");
    t.setInterval(1);
    t.startTimer();
    qnTimer::alarm(1);
    EXPECT_EQ(1u, qn_theEventHandler->count);
    EXPECT_EQ(0u, ticks);
    EXPECT_EQ(1u, distribute());
}

TEST_F(TimerOutput, AFiringGoesToTheBackOfTheQueue) {
    qnTimer t(0);
    receiver.addInput("in", this, &onTick);
    t.connect("tick", &receiver, "in");
    LoopRig::Note::post("earlier", [&] { ticks = ticks == 0 ? 10 : 0; });
    t.tick();
    EXPECT_EQ(11u, distribute());
}

TEST_F(TimerOutput, WithoutAConnectionAFiringPostsNothing) {
    qnTimer t(0);
    t.tick();
    EXPECT_EQ(0u, qn_theEventHandler->count);
}

TEST_F(TimerOutput, WithoutTheOutputAFiringSendsNothing) {
    qnTimer t(0);
    receiver.addInput("in", this, &onTick);
    t.connect("tick", &receiver, "in");
    t.removeOutput("tick");
    t.startTimer();
    qnTimer::alarm(1);
    EXPECT_EQ(0u, distribute());
}

TEST_F(TimerOutput, AReplacedOutputIsTheOneThatSends) {
    qnTimer t(0);
    receiver.addInput("in", this, &onTick);
    t.addOutput("tick", qnDT_void);
    t.connect("tick", &receiver, "in");
    t.tick();
    EXPECT_EQ(1u, distribute());
}

TEST_F(TimerOutput, AnOutputOfAnotherTypeSendsNothing) {
    qnTimer t(0);
    receiver.addInput("in", this, &onInt);
    t.addOutput("tick", qnDT_int);
    t.connect("tick", &receiver, "in");
    t.tick();
    EXPECT_EQ(0u, distribute());
}

TEST_F(TimerOutput, AMessageOutlivesItsTimer) {
    qnTimer* t = new qnTimer(1);
    receiver.addInput("in", this, &onTick);
    t->connect("tick", &receiver, "in");
    t->startTimer();
    qnTimer::alarm(0);
    delete t;
    EXPECT_EQ(1u, distribute());
}

TEST_F(TimerOutput, AReceiverMayDestroyTheTimer) {
    struct Owner : qnObj {
        static void onTick(Owner* self) {
            delete self->timer;
            self->timer = nullptr;
        }
        qnTimer* timer = new qnTimer(1);
    } owner;
    owner.addInput("in", &owner, &Owner::onTick);
    owner.timer->connect("tick", &owner, "in");
    owner.timer->startTimer();
    qnTimer::alarm(0);
    qn_theEventHandler->distributeEvents();
    EXPECT_EQ(nullptr, owner.timer);
    qnTimer::alarm(0);
    EXPECT_EQ(0u, qn_theEventHandler->count);
}

}  // namespace TimerOutputTest
