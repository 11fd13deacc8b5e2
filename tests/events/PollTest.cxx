// The steps of one cycle, with real descriptors. How select is called exactly: programs/PollWait.cxx.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <limits>

#include "Exec.h"
#include "LoopRig.h"

namespace PollTest {

using LoopRig::App;
using LoopRig::Handler;
using LoopRig::log;
using LoopRig::note;
using LoopRig::Note;
using LoopRig::Pipe;
using LoopRig::Source;
using LoopRig::Timer;

void pre() { note("pre"); }
void pre2() { note("pre2"); }
void post() { note("post"); }
void post2() { note("post2"); }

struct Poll : LoopRig::Test {
    qnExec exec;
};

double secondsOf(const std::function<void()>& action) {
    auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Without any handler.

TEST_F(Poll, WithoutHandlersItOnlyDistributes) {
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    Timer t("t", 0);
    t.start(0);
    Note::post("event");
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); })) << "it does not wait";
    EXPECT_EQ("event ", log);
    EXPECT_TRUE(t.isActive()) << "no time passes";
}

TEST_F(Poll, WithoutHandlersAndEventsItReturnsAtOnce) {
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); }));
    EXPECT_EQ("", log);
}

TEST_F(Poll, TheLastHandlerThatGoesEndsTheWaiting) {
    Source s("s", &exec);
    s.ready();
    exec.poll(10);
    s.drop();
    exec.addPreSelectFunc(pre);
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); })) << "the table is looked at anew";
    EXPECT_EQ("s.read ", log);
}

// The order of the steps.

TEST_F(Poll, StepsComeInTheirOrder) {
    Source s("s", &exec);
    s.ready();
    exec.addPreSelectFunc(pre);
    exec.addPreSelectFunc(pre2);
    exec.addPostSelectFunc(post);
    exec.addPostSelectFunc(post2);
    Timer t("tick", 0);
    t.start(0);
    Note::post("event");
    exec.poll(10);
    EXPECT_EQ("pre pre2 tick s.read post post2 event ", log);
}

TEST_F(Poll, TheFunctionsAreCalledWhenNothingIsReady) {
    Source s("s", &exec);
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    exec.poll(0);
    EXPECT_EQ("pre post ", log);
}

TEST_F(Poll, WhatHandlersAndFunctionsPostIsDistributedInTheSameCycle) {
    Source s("s", &exec);
    s.ready();
    s.handler->onRead = [&] { Note::post("from handler"); };
    exec.addPostSelectFunc([] { Note::post("from post"); });
    exec.poll(10);
    EXPECT_EQ("s.read from handler from post ", log);
}

TEST_F(Poll, WhatADeliveryPostsWaitsForTheNextCycle) {
    Source s("s", &exec);
    Note::post("first", [] { Note::post("second"); });
    exec.poll(0);
    EXPECT_EQ("first ", log);
    exec.poll(1000);  // an event is queued: no wait
    EXPECT_EQ("first second ", log);
}

TEST_F(Poll, ATickIsDeliveredInTheSameCycle) {
    struct Receiver : qnObj {
        static void on(Receiver*) { note("delivered"); }
    } receiver;
    receiver.addInput("in", &receiver, &Receiver::on);
    qnTimer t(0);
    t.connect("tick", &receiver, "in");
    t.startTimer();
    Source s("s", &exec);
    exec.addPostSelectFunc(post);
    exec.poll(0);
    EXPECT_EQ("post delivered ", log);
}

// Pre-select and post-select functions.

TEST_F(Poll, AFunctionAddedTwiceIsCalledTwice) {
    Source s("s", &exec);
    exec.addPreSelectFunc(pre);
    exec.addPreSelectFunc(pre2);
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    exec.addPostSelectFunc(post);
    exec.poll(0);
    EXPECT_EQ("pre pre2 pre post post ", log);
}

TEST_F(Poll, RemovingAFunctionThatWasAddedTwiceLeavesTheSecond) {
    Source s("s", &exec);
    exec.addPreSelectFunc(pre);
    exec.addPreSelectFunc(pre2);
    exec.addPreSelectFunc(pre);
    exec.removePreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    exec.addPostSelectFunc(post2);
    exec.addPostSelectFunc(post);
    exec.removePostSelectFunc(post);
    exec.poll(0);
    EXPECT_EQ("pre2 pre post2 post ", log) << "the first occurrence went";
}

TEST_F(Poll, RemovingAFunctionThatIsNotThereDoesNothing) {
    Source s("s", &exec);
    exec.removePreSelectFunc(pre);
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    exec.removePreSelectFunc(post);
    exec.removePostSelectFunc(pre);
    exec.poll(0);
    EXPECT_EQ("pre post ", log);
}

// Ready descriptors.

TEST_F(Poll, HandlersAreCalledInAscendingOrderOfDescriptors) {
    Source a("a", &exec), b("b", &exec), c("c", &exec);
    ASSERT_LT(a.handler->descriptor, b.handler->descriptor);
    ASSERT_LT(b.handler->descriptor, c.handler->descriptor);
    exec.removeSelectHandler(a.handler);
    exec.addSelectHandler(a.handler);  // registered last now
    c.ready();
    a.ready();
    exec.poll(10);
    EXPECT_EQ("a.read c.read ", log);
}

TEST_F(Poll, TheHighestDescriptorIsServed) {
    Pipe pipe;
    ASSERT_EQ(99, dup2(pipe.reading(), 99));
    Handler top("top", 99);
    exec.addSelectHandler(&top);
    pipe.put();
    exec.poll(10);
    EXPECT_EQ("top.read ", log);
    exec.removeSelectHandler(&top);
}

TEST_F(Poll, ReadComesBeforeWriteBeforeException) {
    // Urgent data makes a stream socket ready for an exception, other data for reading.
    int ends[2];
    int listener = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_GE(listener, 0);
    sockaddr_storage address = {};
    address.ss_family = AF_INET;
    socklen_t size = sizeof address;
    sockaddr* where = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(0, listen(listener, 1));  // any port of this machine
    ASSERT_EQ(0, getsockname(listener, where, &size));
    ends[0] = socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(0, connect(ends[0], where, size));
    ends[1] = accept(listener, nullptr, nullptr);
    ASSERT_EQ(1, send(ends[1], "u", 1, MSG_OOB));
    ASSERT_EQ(1, send(ends[1], "d", 1, 0));
    {
        Handler h("h", ends[0], 1, 1, 1);
        Handler exceptionOnly("e", dup(ends[0]), 0, 0, 1);
        exec.addSelectHandler(&h);
        exec.addSelectHandler(&exceptionOnly);
        for (int tries = 0; tries < 100 && log != "h.read h.write h.exception e.exception "; ++tries) {
            log.clear();
            exec.poll(0.05f);  // until both have arrived
        }
        EXPECT_EQ("h.read h.write h.exception e.exception ", log);
        exec.removeSelectHandler(&h);
        exec.removeSelectHandler(&exceptionOnly);
    }
    close(ends[1]);
    close(listener);
}

TEST_F(Poll, AHandlerIsCalledOnlyForWhatItWants) {
    Pipe pipe;
    Handler writer("writer", pipe.takeWriting(), 0, 1);
    Handler nothing("nothing", pipe.takeReading(), 0);
    exec.addSelectHandler(&writer);
    exec.addSelectHandler(&nothing);
    ASSERT_EQ(1, write(writer.descriptor, "x", 1));
    exec.poll(10);
    EXPECT_EQ("writer.write ", log);
    exec.removeSelectHandler(&writer);
    exec.removeSelectHandler(&nothing);
}

TEST_F(Poll, TheEndOfAPipeIsReadiness) {
    Source s("s", &exec);
    close(s.pipe.takeWriting());
    exec.poll(10);
    EXPECT_EQ("s.read ", log);
}

TEST_F(Poll, WhatIsNotReadIsReadyAgain) {
    Source s("s", &exec);
    s.ready();
    exec.poll(10);
    exec.poll(10);
    s.handler->drain();
    exec.poll(0);
    EXPECT_EQ("s.read s.read ", log);
}

// The wait.

TEST_F(Poll, ItWaitsForTheTimeout) {
    Source s("s", &exec);
    EXPECT_LE(0.1, secondsOf([&] { exec.poll(0.125f); }));
    EXPECT_EQ("", log);
}

TEST_F(Poll, AReadyDescriptorEndsTheWait) {
    Source s("s", &exec);
    s.ready();
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); }));
    EXPECT_EQ("s.read ", log);
}

TEST_F(Poll, AQueuedEventMeansNoWait) {
    Source s("s", &exec);
    Note::post("event");
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); }));
    EXPECT_EQ("event ", log);
}

TEST_F(Poll, AnEventPostedBeforeTheWaitMeansNoWait) {
    Source s("s", &exec);
    exec.addPreSelectFunc([] { Note::post("event"); });
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); }));
    EXPECT_EQ("event ", log);
}

TEST_F(Poll, ATimerEndsTheWaitWhenItIsDue) {
    Source s("s", &exec);
    Timer t("t", 0);
    t.start(0.05f);
    double seconds = secondsOf([&] { exec.poll(1000); });
    EXPECT_EQ("t ", log) << "one cycle is enough: the whole remaining time passes";
    EXPECT_LE(0.04, seconds);
    EXPECT_GT(5.0, seconds);
}

TEST_F(Poll, ATimerIsNotDueBeforeAnEarlierTimeout) {
    Source s("s", &exec);
    Timer t("t", 0);
    t.start(3600);
    exec.poll(0.125f);
    EXPECT_EQ("", log);
    EXPECT_GT(3599.95f, t.getDelta()) << "at least 0.05 seconds have been counted";
    EXPECT_LT(3500.0f, t.getDelta());
    t.stopTimer();
}

TEST_F(Poll, ANegativeTimeoutMeansNoWait) {
    Source s("s", &exec);
    exec.addPostSelectFunc(post);
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(-1); }));
    EXPECT_EQ("post ", log);
}

TEST_F(Poll, ATimeoutThatIsNotANumberMeansNoWait) {
    Source s("s", &exec);
    exec.addPostSelectFunc(post);
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(std::numeric_limits<float>::quiet_NaN()); }));
    EXPECT_EQ("post ", log);
}

TEST_F(Poll, ASignalEndsTheWaitAndTheCycleGoesOn) {
    struct sigaction ours = {}, theirs;
    ours.sa_handler = [](int) {};
    sigaction(SIGALRM, &ours, &theirs);
    Source s("s", &exec);
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    const itimerval often = {{0, 50000}, {0, 50000}}, never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_GT(60.0, secondsOf([&] { exec.poll(1000); }));
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ("pre post ", log);
    sigaction(SIGALRM, &theirs, nullptr);
}

TEST_F(Poll, AClosedDescriptorCountsAsNothingReady) {
    Source open("open", &exec), closed("closed", &exec);
    open.ready();
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    Timer t("t", 0);
    t.start(0);
    close(closed.handler->descriptor);
    EXPECT_GT(5.0, secondsOf([&] { exec.poll(1000); }));
    EXPECT_EQ("pre t post ", log) << "the ready one is not called either";
    exec.removeSelectHandler(closed.handler);
    closed.handler->descriptor = -1;
    exec.poll(10);
    EXPECT_EQ("pre t post pre open.read post ", log);
}

// The loop.

TEST_F(Poll, TheLoopEndsWhenTheLastApplicationHasClosed) {
    App a("a"), b("b");
    Source s("s");
    int cycles = 0;
    s.ready().handler->onRead = [&] {
        if (++cycles == 2) a.close();
        if (cycles == 4) b.close();
    };
    qn_theExecutive->loop();
    EXPECT_EQ("s.read s.read a.close s.read s.read b.close ", log);
}

TEST_F(Poll, TheLoopMakesOneCycleWithoutApplications) {
    Note::post("event");
    qn_theExecutive->loop();
    EXPECT_EQ("event ", log);
}

TEST_F(Poll, TheLoopFinishesTheCycleInWhichTheLastApplicationCloses) {
    App a("a");
    Source s("s");
    s.ready().handler->onRead = [&] {
        a.close();
        Note::post("event");
    };
    qn_theExecutive->addPostSelectFunc(post);
    qn_theExecutive->loop();
    qn_theExecutive->removePostSelectFunc(post);
    EXPECT_EQ("s.read a.close post event ", log);
}

TEST_F(Poll, TheLoopGoesOnWhileAnApplicationThatWasNeverOpenedIsListed) {
    App a("a");
    Note::post("1", [&] { Note::post("2", [&] { a.close(); }); });
    qn_theExecutive->loop();
    EXPECT_EQ("1 2 a.close ", log);
}

TEST_F(Poll, WithoutHandlersTheLoopDistributesAndFiresNoTimer) {
    App a("a");
    Timer t("t", 0);
    t.start(0);
    int left = 1000;
    std::function<void()> again = [&] {
        if (--left == 0) a.close();
        if (left > 0) qn_theEventHandler->postEvent(new Note("", again), 0);
    };
    Note::post("", again);
    EXPECT_GT(30.0, secondsOf([] { qn_theExecutive->loop(); })) << "it never waits";
    EXPECT_EQ(0, left);
    EXPECT_TRUE(t.isActive());
    EXPECT_EQ(std::string::npos, log.find("t "));
}

}  // namespace PollTest
