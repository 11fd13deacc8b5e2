#include <gtest/gtest.h>

#include <cstddef>

#include "Exec.h"
#include "LoopRig.h"

namespace ExecTest {

using LoopRig::App;
using LoopRig::Handler;
using LoopRig::log;
using LoopRig::Pipe;

#ifdef __i386__
// Two shorts, four flags, three sets, the table, three arrays of 24 bytes, and the link between executives.
static_assert(sizeof(qnExec) == 2 + 2 + 4 + 3 * sizeof(fd_set) + 100 * 4 + 3 * 24 + 4, "and no more");
#endif

/** Descriptors with numbers that the test wants: copies of the ends of a pipe. */
struct Exec : LoopRig::Test {
    Handler* at(int fd, const char* name, qnBool read, qnBool write = 0, qnBool exception = 0) {
        EXPECT_EQ(fd, dup2(write ? pipe.writing() : pipe.reading(), fd));
        return new Handler(name, fd, read, write, exception);
    }
    void drop(Handler* h) {
        if (exec.getSelectHandler(h->descriptor) == h) exec.removeSelectHandler(h);
        delete h;
    }
    std::string bounds() {
        exec.updateSelectState();
        return std::to_string(exec.getLowestDescriptor()) + " " + std::to_string(exec.getDescriptorLimit());
    }
    /** Members among the descriptors from 0 to 99. */
    static std::string members(const fd_set& set) {
        std::string text;
        for (int fd = 0; fd < 100; ++fd) {
            if (FD_ISSET(fd, &set)) text += std::to_string(fd) + " ";
        }
        return text;
    }
    Pipe pipe;
    qnExec exec;
};

// The table and the sets.

TEST_F(Exec, ANewOneHasNothing) {
    EXPECT_EQ(101u, exec.getLowestDescriptor());
    EXPECT_EQ(0u, exec.getDescriptorLimit());
    EXPECT_EQ(0u, exec.getNumberOfApplications());
    EXPECT_EQ("", members(exec.getReadSet()));
    EXPECT_EQ("", members(exec.getWriteSet()));
    EXPECT_EQ("", members(exec.getExceptionSet()));
    for (int fd = 0; fd < 100; ++fd) EXPECT_EQ(nullptr, exec.getSelectHandler(fd));
    EXPECT_FALSE(exec.willBlock());
    EXPECT_EQ(101u, exec.getLowestDescriptor());
}

TEST_F(Exec, LowestAndLimitFollowTheHandlers) {
    Handler* low = at(43, "43", 1);
    Handler* high = at(47, "47", 1);
    exec.addSelectHandler(high);
    EXPECT_EQ("47 48", bounds());
    exec.addSelectHandler(low);
    EXPECT_EQ("43 48", bounds());
    exec.removeSelectHandler(high);
    exec.getReadSet();  // computes anew
    EXPECT_EQ(43u, exec.getLowestDescriptor());
    EXPECT_EQ(44u, exec.getDescriptorLimit());
    exec.removeSelectHandler(low);
    EXPECT_EQ("101 0", bounds());
    delete low;
    delete high;
}

TEST_F(Exec, TheBoundsAreThoseOfTheLastComputation) {
    Handler* h = at(43, "h", 1);
    exec.addSelectHandler(h);
    EXPECT_EQ(101u, exec.getLowestDescriptor());
    EXPECT_EQ(0u, exec.getDescriptorLimit());
    exec.getWriteSet();
    EXPECT_EQ(43u, exec.getLowestDescriptor());
    exec.removeSelectHandler(h);
    EXPECT_EQ(43u, exec.getLowestDescriptor());
    exec.getExceptionSet();
    EXPECT_EQ(101u, exec.getLowestDescriptor());
    delete h;
}

TEST_F(Exec, DescriptorsFromZeroTo99HaveEntries) {
    Handler* top = at(99, "99", 1);
    exec.addSelectHandler(top);
    EXPECT_EQ("99 100", bounds());
    EXPECT_EQ(top, exec.getSelectHandler(99));
    Handler zero("0", 0, 1);
    exec.addSelectHandler(&zero);
    EXPECT_EQ("0 100", bounds());
    EXPECT_EQ("0 99 ", members(exec.getReadSet()));
    exec.removeSelectHandler(&zero);
    zero.descriptor = -1;  // not its to close
    drop(top);
}

TEST_F(Exec, EachSetHoldsWhoWantsIt) {
    Handler* reader = at(43, "reader", 1, 0, 1);
    Handler* writer = at(47, "writer", 0, 1, 0);
    exec.addSelectHandler(reader);
    exec.addSelectHandler(writer);
    EXPECT_EQ("43 ", members(exec.getReadSet()));
    EXPECT_EQ("47 ", members(exec.getWriteSet()));
    EXPECT_EQ("43 ", members(exec.getExceptionSet()));
    drop(reader);
    EXPECT_EQ("", members(exec.getReadSet()));
    EXPECT_EQ("47 ", members(exec.getWriteSet()));
    EXPECT_EQ("", members(exec.getExceptionSet()));
    drop(writer);
}

TEST_F(Exec, AFlagOfAnyValueCounts) {
    Handler* h = at(43, "h", 2, 0, 0x80);
    exec.addSelectHandler(h);
    EXPECT_EQ("43 ", members(exec.getReadSet()));
    EXPECT_EQ("43 ", members(exec.getExceptionSet()));
    drop(h);
}

TEST_F(Exec, ASetIsACopy) {
    Handler* h = at(43, "h", 1);
    exec.addSelectHandler(h);
    fd_set set = exec.getReadSet();
    FD_ZERO(&set);
    EXPECT_EQ("43 ", members(exec.getReadSet()));
    drop(h);
}

TEST_F(Exec, AHandlerThatWantsNothingMovesTheBounds) {
    Handler* h = at(47, "h", 0);
    exec.addSelectHandler(h);
    EXPECT_EQ("47 48", bounds());
    EXPECT_EQ("", members(exec.getReadSet()));
    EXPECT_TRUE(exec.willBlock()) << "it waits, and for nothing";
    drop(h);
}

TEST_F(Exec, ASecondHandlerReplacesTheFirst) {
    Handler* first = at(43, "first", 1);
    Handler second("second", 43, 0, 0, 1);
    exec.addSelectHandler(first);
    exec.addSelectHandler(&second);
    EXPECT_EQ(&second, exec.getSelectHandler(43));
    EXPECT_EQ("", members(exec.getReadSet()));
    EXPECT_EQ("43 ", members(exec.getExceptionSet()));
    exec.removeSelectHandler(&second);
    EXPECT_EQ(nullptr, exec.getSelectHandler(43));
    first->descriptor = -1;
    delete first;
}

TEST_F(Exec, RemovingTheReplacedHandlerClearsTheEntryOfTheOther) {
    Handler* first = at(43, "first", 1);
    Handler second("second", 43, 1);
    exec.addSelectHandler(first);
    exec.addSelectHandler(&second);
    exec.removeSelectHandler(first);
    EXPECT_EQ(nullptr, exec.getSelectHandler(43));
    EXPECT_EQ("101 0", bounds());
    first->descriptor = -1;
    delete first;
}

TEST_F(Exec, RemovingAHandlerThatIsNotThereClearsAnEmptyEntry) {
    Handler* h = at(43, "h", 1);
    exec.removeSelectHandler(h);
    EXPECT_EQ("101 0", bounds());
    delete h;
}

TEST_F(Exec, TheSameHandlerMayBeAddedTwice) {
    Handler* h = at(43, "h", 1);
    exec.addSelectHandler(h);
    exec.addSelectHandler(h);
    exec.removeSelectHandler(h);
    EXPECT_EQ(nullptr, exec.getSelectHandler(43));
    delete h;
}

#ifndef MORVAQNDS_CHECKED

TEST_F(Exec, DescriptorsOutsideTheTableAreIgnored) {
    for (int fd : {100, 101, 1024, 0x7FFFFFFF, -1, -2147483647}) {
        Handler h("h", fd);
        exec.addSelectHandler(&h);
        EXPECT_EQ("101 0", bounds()) << fd;
        exec.removeSelectHandler(&h);
        EXPECT_EQ(nullptr, exec.getSelectHandler(fd)) << fd;
        h.descriptor = -1;
    }
}

#endif

// Whether a wait would block.

TEST_F(Exec, WillBlockAsksTheDescriptors) {
    Handler* h = at(43, "h", 1);
    exec.addSelectHandler(h);
    EXPECT_TRUE(exec.willBlock()) << "it computes the sets first";
    pipe.put();
    EXPECT_FALSE(exec.willBlock());
    EXPECT_EQ("", log) << "nobody is called";
    h->drain();
    EXPECT_TRUE(exec.willBlock());
    drop(h);
    EXPECT_FALSE(exec.willBlock());
}

TEST_F(Exec, WillBlockAsksForWritingToo) {
    Handler* h = at(43, "h", 0, 1);
    exec.addSelectHandler(h);
    EXPECT_FALSE(exec.willBlock());
    drop(h);
}

TEST_F(Exec, WillBlockIsFalseWhenSelectFails) {
    Handler* h = at(43, "h", 1);
    exec.addSelectHandler(h);
    EXPECT_TRUE(exec.willBlock());
    close(43);
    EXPECT_FALSE(exec.willBlock());
    drop(h);
}

// Applications.

TEST_F(Exec, ListsApplicationsInTheOrderTheyCame) {
    App a("a"), b("b");
    EXPECT_EQ(2u, qn_theExecutive->getNumberOfApplications());
    EXPECT_TRUE(qn_theExecutive->contains(&a));
    EXPECT_TRUE(qn_theExecutive->contains(&b));
    EXPECT_FALSE(exec.contains(&a)) << "only the process's executive";
    qn_theExecutive->open();
    EXPECT_EQ("a.open b.open ", log);
    qn_theExecutive->close();
}

TEST_F(Exec, RemovesTheFirstOccurrenceOfAnApplication) {
    App a("a"), b("b");
    a.close();
    b.close();
    log.clear();
    exec.add(&a);
    exec.add(&b);
    exec.add(&a);
    exec.remove(&a);
    EXPECT_EQ(2u, exec.getNumberOfApplications());
    EXPECT_TRUE(exec.contains(&a));
    exec.initialize(0, nullptr);
    EXPECT_EQ("b.initialize(0) a.initialize(0) ", log);
    exec.remove(&a);
    EXPECT_FALSE(exec.contains(&a));
    exec.remove(&b);
}

TEST_F(Exec, RemovingAnApplicationThatIsNotListedDoesNothing) {
    App a("a"), b("b");
    a.close();
    b.close();
    exec.add(&b);
    exec.remove(&a);
    EXPECT_EQ(1u, exec.getNumberOfApplications());
    exec.remove(&b);
    exec.remove(&b);
    EXPECT_EQ(0u, exec.getNumberOfApplications());
    EXPECT_FALSE(exec.contains(nullptr));
}

TEST_F(Exec, InitializeHandsTheArgumentsToEach) {
    App a("a"), b("b");
    char program[] = "prog", option[] = "-x";
    char* arguments[] = {program, option, nullptr};
    qn_theExecutive->initialize(2, arguments);
    EXPECT_EQ("a.initialize(2,prog) b.initialize(2,prog) ", log);
    EXPECT_FALSE(a.isOpen());
    a.close();
    b.close();
}

TEST_F(Exec, OpenCallsOpenOnesToo) {
    App a("a"), b("b");
    a.open();
    log.clear();
    qn_theExecutive->open();
    EXPECT_EQ("a.open b.open ", log);
    EXPECT_TRUE(a.isOpen());
    EXPECT_TRUE(b.isOpen());
    qn_theExecutive->close();
}

TEST_F(Exec, CloseClosesEveryOpenApplicationOnce) {
    App a("a"), b("b"), c("c"), d("d");
    qn_theExecutive->open();
    log.clear();
    qn_theExecutive->close();
    EXPECT_EQ("a.close b.close c.close d.close ", log) << "although each one leaves the list";
    EXPECT_EQ(0u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Exec, CloseLeavesApplicationsThatAreNotOpen) {
    App a("a"), b("b"), c("c");
    b.open();
    log.clear();
    qn_theExecutive->close();
    EXPECT_EQ("b.close ", log);
    EXPECT_TRUE(qn_theExecutive->contains(&a));
    EXPECT_FALSE(qn_theExecutive->contains(&b));
    EXPECT_TRUE(qn_theExecutive->contains(&c));
    a.close();
    c.close();
}

TEST_F(Exec, WithoutApplicationsThereIsNothingToCall) {
    exec.initialize(0, nullptr);
    exec.open();
    exec.close();
    EXPECT_EQ("", log);
}

TEST_F(Exec, DestroyingAnExecutiveLeavesApplicationsAlone) {
    App a("a");
    {
        qnExec other;
        other.add(&a);
    }
    EXPECT_EQ("", log);
    EXPECT_TRUE(qn_theExecutive->contains(&a));
    a.close();
}

}  // namespace ExecTest
