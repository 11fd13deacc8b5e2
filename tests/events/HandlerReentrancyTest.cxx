// Handlers, and what else a cycle calls, that change handlers and everything around them.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <memory>
#include <utility>

#include "Exec.h"
#include "LoopRig.h"

namespace HandlerReentrancyTest {

using LoopRig::App;
using LoopRig::Handler;
using LoopRig::log;
using LoopRig::note;
using LoopRig::Note;
using LoopRig::Source;
using LoopRig::Timer;

/** Three sources with ascending descriptors, all ready. */
struct HandlerCalls : LoopRig::Test {
    HandlerCalls() : a("a"), b("b"), c("c") {
        a.ready();
        b.ready();
        c.ready();
    }
    void TearDown() override {
        a.drop();
        b.drop();
        c.drop();
        LoopRig::Test::TearDown();
    }
    static void cycle() { qn_theExecutive->poll(10); }
    Source a, b, c;
};

TEST_F(HandlerCalls, OneThatRemovesItself) {
    a.handler->onRead = [&] { qn_theExecutive->removeSelectHandler(a.handler); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read b.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatRemovesALaterOne) {
    a.handler->onRead = [&] { qn_theExecutive->removeSelectHandler(c.handler); };
    cycle();
    EXPECT_EQ("a.read b.read ", log) << "ready, but not there any more";
}

TEST_F(HandlerCalls, OneThatRemovesAnEarlierOne) {
    c.handler->onRead = [&] { qn_theExecutive->removeSelectHandler(a.handler); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read b.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatRemovesEverything) {
    a.handler->onRead = [&] {
        for (Source* s : {&a, &b, &c}) qn_theExecutive->removeSelectHandler(s->handler);
    };
    cycle();
    Note::post("event");
    cycle();
    EXPECT_EQ("a.read event ", log);
}

TEST_F(HandlerCalls, OneThatDestroysItself) {
    b.handler->onRead = [&] { b.drop(); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read a.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatDestroysItselfIsNotCalledForWriting) {
    int ends[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
    ASSERT_EQ(1, write(ends[1], "x", 1));  // ready for both
    std::unique_ptr<Handler> both(new Handler("both", ends[0], 1, 1));
    qn_theExecutive->addSelectHandler(both.get());
    cycle();
    EXPECT_EQ("a.read b.read c.read both.read both.write ", log);
    both->onRead = [&] {
        qn_theExecutive->removeSelectHandler(both.get());
        both.reset();
    };
    log.clear();
    cycle();
    EXPECT_EQ("a.read b.read c.read both.read ", log);
    close(ends[1]);
}

TEST_F(HandlerCalls, OneThatRemovesItselfIsNotCalledForWriting) {
    int ends[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    Handler both("both", ends[0], 1, 1);
    both.onRead = [&] { qn_theExecutive->removeSelectHandler(&both); };
    qn_theExecutive->addSelectHandler(&both);
    cycle();
    EXPECT_EQ("a.read b.read c.read both.read ", log);
    close(ends[1]);
}

TEST_F(HandlerCalls, OneThatNoLongerWantsToWriteIsStillCalledInThisCycle) {
    int ends[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
    ASSERT_EQ(1, write(ends[1], "x", 1));
    Handler both("both", ends[0], 1, 1);
    both.onRead = [&] {
        qn_theExecutive->removeSelectHandler(&both);
        both.wantWrite = 0;
        qn_theExecutive->addSelectHandler(&both);
    };
    qn_theExecutive->addSelectHandler(&both);
    cycle();
    log += "| ";
    cycle();
    EXPECT_EQ("a.read b.read c.read both.read both.write | a.read b.read c.read both.read ", log);
    qn_theExecutive->removeSelectHandler(&both);
    close(ends[1]);
}

TEST_F(HandlerCalls, OneThatDestroysALaterOne) {
    a.handler->onRead = [&] { b.drop(); };
    cycle();
    EXPECT_EQ("a.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatDestroysAnEarlierOne) {
    b.handler->onRead = [&] { a.drop(); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read b.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatDestroysEverything) {
    a.handler->onRead = [&] {
        c.drop();
        a.drop();
        b.drop();
    };
    cycle();
    EXPECT_EQ("a.read ", log);
}

TEST_F(HandlerCalls, OneThatReplacesALaterOne) {
    std::unique_ptr<Handler> other(new Handler("other", c.handler->descriptor));
    a.handler->onRead = [&] { qn_theExecutive->addSelectHandler(other.get()); };
    cycle();
    EXPECT_EQ("a.read b.read ", log) << "the new one waits for the next cycle";
    a.handler->onRead = nullptr;
    log.clear();
    cycle();
    EXPECT_EQ("a.read b.read other.read ", log);
    qn_theExecutive->removeSelectHandler(other.get());
    other->descriptor = -1;
}

TEST_F(HandlerCalls, OneThatReplacesItself) {
    std::unique_ptr<Handler> other(new Handler("other", a.handler->descriptor));
    a.handler->onRead = [&] { qn_theExecutive->addSelectHandler(other.get()); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read other.read b.read c.read ", log);
    qn_theExecutive->removeSelectHandler(other.get());
    other->descriptor = -1;
}

TEST_F(HandlerCalls, OneThatRemovesAndAddsALaterOneAgain) {
    a.handler->onRead = [&] {
        qn_theExecutive->removeSelectHandler(b.handler);
        qn_theExecutive->addSelectHandler(b.handler);
    };
    cycle();
    EXPECT_EQ("a.read b.read c.read ", log) << "the same handler is there";
}

TEST_F(HandlerCalls, OneThatChangesALaterOnesWishesDoesSoForTheNextCycle) {
    a.handler->onRead = [&] {
        qn_theExecutive->removeSelectHandler(b.handler);
        b.handler->wantRead = 0;
        qn_theExecutive->addSelectHandler(b.handler);
    };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read a.read c.read ", log) << "the sets of the wait count";
}

TEST_F(HandlerCalls, OneThatAsksForASetLeavesTheCyclesOwn) {
    a.handler->onRead = [&] {
        qn_theExecutive->removeSelectHandler(b.handler);
        qn_theExecutive->getReadSet();  // computed anew
        qn_theExecutive->removeSelectHandler(a.handler);
        qn_theExecutive->updateSelectState();
    };
    cycle();
    EXPECT_EQ("a.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatAddsANewOneBehindItself) {
    Source late("late");
    qn_theExecutive->removeSelectHandler(late.handler);
    late.ready();
    a.handler->onRead = [&] { qn_theExecutive->addSelectHandler(late.handler); };
    cycle();
    EXPECT_EQ("a.read b.read c.read ", log);
    a.handler->onRead = nullptr;
    log.clear();
    cycle();
    EXPECT_EQ("a.read b.read c.read late.read ", log);
}

TEST_F(HandlerCalls, ANewOneAtThePlaceOfADestroyedOneWaitsForTheNextCycle) {
    // The same address and, because the lowest free number is taken, the same descriptor.
    alignas(Handler) static unsigned char place[sizeof(Handler)];
    const int fd = dup(c.handler->descriptor);
    Handler* other = new (place) Handler("old", fd);
    qn_theExecutive->addSelectHandler(other);
    a.handler->onRead = [&] {
        qn_theExecutive->removeSelectHandler(other);
        other->~Handler();
        EXPECT_EQ(fd, dup2(c.handler->descriptor, fd));
        other = new (place) Handler("new", fd);
        qn_theExecutive->addSelectHandler(other);
    };
    cycle();
    EXPECT_EQ("a.read b.read c.read ", log);
    a.handler->onRead = nullptr;
    log.clear();
    cycle();
    EXPECT_EQ("a.read b.read c.read new.read ", log);
    qn_theExecutive->removeSelectHandler(other);
    other->~Handler();
}

#ifndef MORVAQNDS_CHECKED

TEST_F(HandlerCalls, OneThatIsDestroyedInItsOwnCallWithoutBeingRemoved) {
    b.handler->onRead = [&] { delete std::exchange(b.handler, nullptr); };
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read a.read c.read ", log);
}

TEST_F(HandlerCalls, OneThatDestroysALaterOneWithoutRemovingIt) {
    a.handler->onRead = [&] { delete std::exchange(b.handler, nullptr); };
    cycle();
    EXPECT_EQ("a.read c.read ", log);
}

#endif

TEST_F(HandlerCalls, OneThatWhenDestroyedRemovesAnother) {
    b.handler->onDestroy = [&] { qn_theExecutive->removeSelectHandler(c.handler); };
    a.handler->onRead = [&] { b.drop(); };
    cycle();
    EXPECT_EQ("a.read ", log);
}

// Cycles inside of cycles.

TEST_F(HandlerCalls, ACycleInsideAHandler) {
    a.handler->onRead = [&] {
        a.handler->onRead = nullptr;
        a.handler->drain();
        note("(");
        cycle();
        note(")");
    };
    cycle();
    EXPECT_EQ("a.read ( b.read c.read ) b.read c.read ", log) << "the outer cycle's readiness still counts";
}

TEST_F(HandlerCalls, ACycleInsideAHandlerThatRemovesTheOuterOnes) {
    a.handler->onRead = [&] {
        a.handler->onRead = nullptr;
        b.handler->onRead = [&] {
            a.drop();
            b.drop();
            c.drop();
        };
        note("(");
        cycle();
        note(")");
    };
    cycle();
    EXPECT_EQ("a.read ( a.read b.read ) ", log);
}

TEST_F(HandlerCalls, ACycleInsideATick) {
    Timer t("t", 1);
    t.onTick = [&] {
        t.onTick = nullptr;
        note("(");
        cycle();
        note(")");
    };
    t.start(0);
    cycle();
    EXPECT_EQ("t ( a.read b.read c.read ) a.read b.read c.read ", log) << "it waits to be armed again meanwhile";
    t.stopTimer();
}

TEST_F(HandlerCalls, ACycleInsideADelivery) {
    Note::post("event", [&] {
        note("(");
        cycle();
        note(")");
    });
    Note::post("other");
    qn_theExecutive->removeSelectHandler(b.handler);
    qn_theExecutive->removeSelectHandler(c.handler);
    cycle();
    EXPECT_EQ("a.read event ( a.read other ) ", log) << "the inner distribution takes what waits";
}

TEST_F(HandlerCalls, ALoopInsideAHandler) {
    std::unique_ptr<App> dialog;
    a.handler->onRead = [&] {
        a.handler->drain();
        dialog.reset(new App("dialog"));
        note("(");
        qn_theExecutive->loop();
        note(")");
        dialog.reset();
    };
    b.handler->onRead = [&] {
        if (dialog != nullptr) dialog->close();
    };
    cycle();
    EXPECT_EQ("a.read ( b.read dialog.close c.read ) b.read c.read ", log);
}

// Handlers and the rest.

TEST_F(HandlerCalls, OneThatStartsStopsAndDestroysTimers) {
    std::unique_ptr<Timer> t(new Timer("t", 1)), u(new Timer("u", 0));
    t->start(3600);
    a.handler->onRead = [&] {
        u->start(3600);
        t.reset();
    };
    b.handler->onRead = [&] { u->stopTimer(); };
    cycle();
    EXPECT_EQ("a.read b.read c.read ", log);
    EXPECT_EQ(nullptr, qnTimer::getFirst());
}

TEST_F(HandlerCalls, OneThatPostsAndRemovesEvents) {
    a.handler->onRead = [&] {
        Note::post("1");
        Note::post("2");
    };
    c.handler->onRead = [&] {
        qnEvent* first = qn_theEventHandler->head;
        qn_theEventHandler->remove(first);
    };
    cycle();
    EXPECT_EQ("a.read b.read c.read 2 ", log);
}

TEST_F(HandlerCalls, OneThatClosesApplications) {
    App app("app"), other("other");
    qn_theExecutive->open();
    log.clear();
    b.handler->onRead = [] { qn_theExecutive->close(); };
    qn_theExecutive->loop();
    EXPECT_EQ("a.read b.read app.close other.close c.read ", log) << "the cycle is finished";
}

TEST_F(HandlerCalls, OneThatDestroysAnOpenApplication) {
    std::unique_ptr<App> app(new App("app"));
    app->open();
    log.clear();
    b.handler->onRead = [&] { app.reset(); };
    qn_theExecutive->loop();
    EXPECT_EQ("a.read b.read c.read ", log);
}

// An executive of the test's own, which what it calls destroys.

std::unique_ptr<qnExec>& doomed() {
    static std::unique_ptr<qnExec> executive;
    return executive;
}

void destroyTheExecutive() {
    note("destroy");
    doomed().reset();
}

TEST_F(HandlerCalls, OneThatDestroysTheExecutiveEndsItsCycle) {
    doomed().reset(new qnExec);
    doomed()->addSelectHandler(a.handler);
    doomed()->addSelectHandler(b.handler);
    doomed()->addPostSelectFunc([] { note("after"); });
    a.handler->onRead = destroyTheExecutive;
    Note::post("event", nullptr);
    doomed()->poll(0);
    EXPECT_EQ("a.read destroy event ", log) << "the queued events are everybody's";
}

TEST_F(HandlerCalls, OneThatDestroysTheExecutiveEndsItsLoop) {
    doomed().reset(new qnExec);
    App app("app");
    doomed()->add(&app);
    doomed()->addSelectHandler(a.handler);
    a.handler->onRead = destroyTheExecutive;
    doomed()->loop();
    EXPECT_EQ("a.read destroy ", log);
    app.close();
}

TEST_F(HandlerCalls, AFunctionBeforeTheWaitThatDestroysTheExecutiveEndsItsCycle) {
    doomed().reset(new qnExec);
    doomed()->addSelectHandler(a.handler);
    doomed()->addPreSelectFunc(destroyTheExecutive);
    doomed()->addPreSelectFunc([] { note("second"); });
    doomed()->poll(0);
    EXPECT_EQ("destroy ", log);
}

TEST_F(HandlerCalls, ATickThatDestroysTheExecutiveEndsItsCycle) {
    doomed().reset(new qnExec);
    doomed()->addSelectHandler(a.handler);
    Timer timer("t", 0);
    timer.onTick = destroyTheExecutive;
    timer.start(0);
    doomed()->poll(0);
    EXPECT_EQ("t destroy ", log);
}

TEST_F(HandlerCalls, ATickThatRemovesAReadyHandler) {
    Timer t("t", 0);
    t.onTick = [&] {
        a.drop();
        qn_theExecutive->removeSelectHandler(c.handler);
    };
    t.start(0);
    cycle();
    EXPECT_EQ("t b.read ", log);
}

TEST_F(HandlerCalls, ATickThatClosesAllApplications) {
    App app("app");
    app.open();
    log.clear();
    Timer t("t", 1);
    t.onTick = [] { qn_theExecutive->close(); };
    t.start(0);
    qn_theExecutive->loop();
    t.stopTimer();
    EXPECT_EQ("t app.close a.read b.read c.read ", log);
}

TEST_F(HandlerCalls, ADeliveryThatRemovesAndDestroysHandlers) {
    Note::post("event", [&] {
        a.drop();
        b.drop();
        c.drop();
    });
    cycle();
    cycle();
    EXPECT_EQ("a.read b.read c.read event ", log);
}

TEST_F(HandlerCalls, ADeliveryThatDestroysTimersAndApplications) {
    std::unique_ptr<Timer> t(new Timer("t", 1));
    std::unique_ptr<App> app(new App("app"));
    app->open();
    t->start(0);
    log.clear();
    Note::post("event", [&] {
        t.reset();
        app.reset();
    });
    qn_theExecutive->loop();
    EXPECT_EQ("t a.read b.read c.read event ", log);
}

}  // namespace HandlerReentrancyTest
