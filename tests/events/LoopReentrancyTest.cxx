// What a cycle calls may change everything that the cycle works on.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <functional>
#include <memory>

#include "Exec.h"
#include "LoopRig.h"

namespace LoopReentrancyTest {

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

// Pre-select and post-select functions are plain functions: what they do is in a variable.

std::function<void()> first, second;
void pre1() {
    note("pre1");
    LoopRig::act(first);
}
void pre2() {
    note("pre2");
    LoopRig::act(second);
}
void pre3() { note("pre3"); }
void post1() {
    note("post1");
    LoopRig::act(first);
}
void post2() {
    note("post2");
    LoopRig::act(second);
}
void post3() { note("post3"); }

struct SelectFuncs : LoopRig::Test {
    SelectFuncs() : source("s", &exec) { first = second = nullptr; }
    void TearDown() override {
        source.drop();
        first = second = nullptr;
        LoopRig::Test::TearDown();
    }
    void addPre() {
        for (qnStubFunc f : {pre1, pre2, pre3}) exec.addPreSelectFunc(f);
    }
    void addPost() {
        for (qnStubFunc f : {post1, post2, post3}) exec.addPostSelectFunc(f);
    }
    std::string cycles(int n) {
        while (n-- > 0) {
            exec.poll(0);
            note("|");
        }
        return log;
    }
    qnExec exec;
    Source source;
};

TEST_F(SelectFuncs, APreSelectFunctionThatRemovesItself) {
    addPre();
    first = [&] { exec.removePreSelectFunc(pre1); };
    EXPECT_EQ("pre1 pre2 pre3 | pre2 pre3 | ", cycles(2));
}

TEST_F(SelectFuncs, APostSelectFunctionThatRemovesItself) {
    addPost();
    second = [&] { exec.removePostSelectFunc(post2); };
    EXPECT_EQ("post1 post2 post3 | post1 post3 | ", cycles(2));
}

TEST_F(SelectFuncs, APreSelectFunctionThatRemovesTheNext) {
    addPre();
    first = [&] { exec.removePreSelectFunc(pre2); };
    EXPECT_EQ("pre1 pre3 | ", cycles(1));
}

TEST_F(SelectFuncs, APostSelectFunctionThatRemovesTheLast) {
    addPost();
    first = [&] { exec.removePostSelectFunc(post3); };
    EXPECT_EQ("post1 post2 | ", cycles(1));
}

TEST_F(SelectFuncs, APreSelectFunctionThatRemovesAnEarlierOne) {
    addPre();
    second = [&] { exec.removePreSelectFunc(pre1); };
    EXPECT_EQ("pre1 pre2 pre3 | pre2 pre3 | ", cycles(2)) << "none is left out";
}

TEST_F(SelectFuncs, APostSelectFunctionThatRemovesAll) {
    addPost();
    first = [&] {
        for (qnStubFunc f : {post1, post2, post3}) exec.removePostSelectFunc(f);
    };
    EXPECT_EQ("post1 | | ", cycles(2));
}

TEST_F(SelectFuncs, APreSelectFunctionThatAddsOthersAddsThemForTheNextCycle) {
    exec.addPreSelectFunc(pre1);
    first = [&] {
        first = nullptr;
        for (int i = 0; i < 20; ++i) exec.addPreSelectFunc(pre3);
    };
    std::string third;
    for (int i = 0; i < 20; ++i) third += "pre3 ";
    EXPECT_EQ("pre1 | pre1 " + third + "| ", cycles(2));
}

TEST_F(SelectFuncs, APostSelectFunctionThatRemovesAndAddsItself) {
    exec.addPostSelectFunc(post1);
    exec.addPostSelectFunc(post3);
    first = [&] {
        exec.removePostSelectFunc(post1);
        exec.addPostSelectFunc(post1);
    };
    EXPECT_EQ("post1 post3 | post3 post1 | ", cycles(2));
}

TEST_F(SelectFuncs, OneThatIsThereTwiceAndRemovesItselfIsCalledOnceMore) {
    exec.addPreSelectFunc(pre1);
    exec.addPreSelectFunc(pre3);
    exec.addPreSelectFunc(pre1);
    first = [&] { exec.removePreSelectFunc(pre1); };
    EXPECT_EQ("pre1 pre3 pre1 | pre3 | ", cycles(2));
}

TEST_F(SelectFuncs, APreSelectFunctionThatRemovesTheLastHandler) {
    addPre();
    exec.addPostSelectFunc(post3);
    first = [&] { exec.removeSelectHandler(source.handler); };
    EXPECT_EQ("pre1 pre2 pre3 post3 | | ", cycles(2)) << "the cycle that has begun is finished";
}

TEST_F(SelectFuncs, APreSelectFunctionThatRemovesAReadyHandler) {
    source.ready();
    exec.addPreSelectFunc(pre1);
    first = [&] { exec.removeSelectHandler(source.handler); };
    EXPECT_EQ("pre1 | ", cycles(1)) << "ready, but not there any more";
}

TEST_F(SelectFuncs, APreSelectFunctionThatDestroysAReadyHandler) {
    source.ready();
    Source other("other", &exec);
    other.ready();
    exec.addPreSelectFunc(pre1);
    first = [&] {
        first = nullptr;
        source.drop();
    };
    EXPECT_EQ("pre1 | pre1 other.read | ", cycles(2)) << "a closed descriptor: nothing ready in that cycle";
}

TEST_F(SelectFuncs, APreSelectFunctionThatStartsATimer) {
    Timer t("t", 0);
    exec.addPreSelectFunc(pre1);
    first = [&] {
        first = nullptr;
        t.start(0);
    };
    EXPECT_EQ("pre1 t | ", cycles(1));
}

TEST_F(SelectFuncs, APreSelectFunctionThatDestroysTheOnlyTimer) {
    std::unique_ptr<Timer> t(new Timer("t", 1));
    t->start(0);
    exec.addPreSelectFunc(pre1);
    first = [&] { t.reset(); };
    EXPECT_EQ("pre1 | ", cycles(1));
}

TEST_F(SelectFuncs, APostSelectFunctionThatClosesAnApplication) {
    App app("app");
    qn_theExecutive->addSelectHandler(source.handler);
    qn_theExecutive->addPostSelectFunc(post1);
    first = [&] { app.close(); };
    Note::post("event");
    qn_theExecutive->loop();
    qn_theExecutive->removePostSelectFunc(post1);
    qn_theExecutive->removeSelectHandler(source.handler);
    EXPECT_EQ("post1 app.close event ", log);
}

TEST_F(SelectFuncs, ACycleInsideAPreSelectFunction) {
    addPre();
    first = [&] {
        first = nullptr;
        note("(");
        exec.poll(0);
        note(")");
    };
    EXPECT_EQ("pre1 ( pre1 pre2 pre3 ) pre2 pre3 | ", cycles(1));
}

TEST_F(SelectFuncs, ACycleInsideAPostSelectFunctionThatRemovesTheOuterOnes) {
    addPost();
    first = [&] {
        first = [&] {
            for (qnStubFunc f : {post1, post2}) exec.removePostSelectFunc(f);
        };
        note("(");
        exec.poll(0);
        note(")");
    };
    EXPECT_EQ("post1 ( post1 post3 ) post3 | ", cycles(1));
}

}  // namespace LoopReentrancyTest
