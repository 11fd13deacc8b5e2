// Pre-select and post-select functions that change what the cycle works on.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "Exec.h"
#include "LoopRig.h"

namespace LoopReentrancyTest {

using LoopRig::App;
using LoopRig::log;
using LoopRig::note;
using LoopRig::Note;
using LoopRig::Source;
using LoopRig::Timer;

// They are plain functions: what they do is in a variable.

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
