#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <type_traits>

#include "LoopRig.h"
#include "SelectHandler.h"

namespace SelectHandlerTest {

using LoopRig::Handler;
using LoopRig::log;
using LoopRig::Pipe;
using LoopRig::Source;

#ifdef __i386__
static_assert(sizeof(qnSelectHandler) == sizeof(qnObj) + 4 + 4, "the descriptor, and the flags with their padding");
#endif
static_assert(std::is_abstract<qnSelectHandler>::value, "a handler says what to do when it can read, and its name");

struct SelectHandler : LoopRig::Test {
    static bool isOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }
};

/** Leaves everything to the base that the base does. */
struct Bare : qnSelectHandler {
    using qnSelectHandler::qnSelectHandler;
    const char* className() const override { return "Bare"; }
    void handleRead() override {}
};

TEST_F(SelectHandler, KeepsDescriptorAndWishes) {
    Pipe pipe;
    Bare reader(pipe.takeReading(), 1, 0, 0);
    Bare writer(pipe.takeWriting(), 0, 1, 1);
    EXPECT_TRUE(isOpen(reader.descriptor));
    EXPECT_EQ(1, reader.wantRead);
    EXPECT_EQ(0, reader.wantWrite);
    EXPECT_EQ(0, reader.wantException);
    EXPECT_EQ(0, writer.wantRead);
    EXPECT_EQ(1, writer.wantWrite);
    EXPECT_EQ(1, writer.wantException);
}

TEST_F(SelectHandler, FieldsAreTheDescriptorAndThreeFlags) {
    Bare h(-1, 0, 0, 0);
    const char* at = reinterpret_cast<const char*>(&h.descriptor);
    EXPECT_EQ(at + sizeof(int), reinterpret_cast<const char*>(&h.wantRead));
    EXPECT_EQ(at + sizeof(int) + 1, reinterpret_cast<const char*>(&h.wantWrite));
    EXPECT_EQ(at + sizeof(int) + 2, reinterpret_cast<const char*>(&h.wantException));
}

TEST_F(SelectHandler, WritingAndExceptionsAreIgnoredUnlessDefined) {
    Bare h(-1, 1, 1, 1);
    h.handleWrite();
    h.handleException();
    EXPECT_EQ("", log);
}

TEST_F(SelectHandler, DestroyingItClosesTheDescriptor) {
    Pipe pipe;
    int fd = pipe.takeReading();
    { Bare h(fd, 1, 0, 0); }
    EXPECT_FALSE(isOpen(fd));
    EXPECT_EQ(EBADF, errno);
}

TEST_F(SelectHandler, DestroyingItWithADescriptorThatIsNotOpenIsHarmless) {
    { Bare none(-1, 1, 0, 0); }
    Pipe pipe;
    int fd = pipe.takeReading();
    {
        Bare h(fd, 1, 0, 0);
        close(fd);
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST_F(SelectHandler, MakingItRegistersItNowhere) {
    Pipe pipe;
    Bare h(pipe.takeReading(), 1, 0, 0);
    EXPECT_EQ(nullptr, qn_theExecutive->getSelectHandler(h.descriptor));
}

TEST_F(SelectHandler, WishesMayChangeWhileItIsNotRegistered) {
    Pipe pipe;
    Handler h("h", pipe.takeReading(), 0);
    qnExec exec;
    exec.addSelectHandler(&h);
    fd_set set = exec.getReadSet();
    EXPECT_FALSE(FD_ISSET(h.descriptor, &set));
    exec.removeSelectHandler(&h);
    h.wantRead = 1;
    exec.addSelectHandler(&h);
    set = exec.getReadSet();
    EXPECT_TRUE(FD_ISSET(h.descriptor, &set));
    exec.removeSelectHandler(&h);
}

TEST_F(SelectHandler, DestroyingAReplacedOneLeavesItsSuccessor) {
    Pipe pipe;
    int fd = pipe.takeReading();
    qnExec exec;
    Handler* first = new Handler("first", fd);
    Handler second("second", fd);
    exec.addSelectHandler(first);
    exec.addSelectHandler(&second);
    first->descriptor = -1;
    delete first;
    EXPECT_EQ(&second, exec.getSelectHandler(fd));
    exec.removeSelectHandler(&second);
}

TEST_F(SelectHandler, OneMayOutliveTheExecutive) {
    Pipe pipe;
    Handler h("h", pipe.takeReading());
    {
        qnExec exec;
        exec.addSelectHandler(&h);
    }
    EXPECT_TRUE(isOpen(h.descriptor));
}

#ifndef MORVAQNDS_CHECKED

TEST_F(SelectHandler, DestroyingARegisteredOneClearsItsEntry) {
    Source source("s");
    int fd = source.handler->descriptor;
    source.ready();
    delete std::exchange(source.handler, nullptr);
    EXPECT_EQ(nullptr, qn_theExecutive->getSelectHandler(fd));
    LoopRig::Note::post("event");
    qn_theExecutive->poll(0);
    EXPECT_EQ("event ", log);
    EXPECT_EQ(101u, qn_theExecutive->getLowestDescriptor());
}

TEST_F(SelectHandler, DestroyingARegisteredOneClearsItsEntryInEveryExecutive) {
    qnExec one, other;
    Pipe pipe;
    Handler* h = new Handler("h", pipe.takeReading());
    int fd = h->descriptor;
    one.addSelectHandler(h);
    other.addSelectHandler(h);
    delete h;
    EXPECT_EQ(nullptr, one.getSelectHandler(fd));
    EXPECT_EQ(nullptr, other.getSelectHandler(fd));
}

TEST_F(SelectHandler, DestroyingOneWhoseDescriptorWasChangedClearsItsEntryToo) {
    qnExec exec;
    Pipe pipe;
    Handler* h = new Handler("h", pipe.takeReading());
    int fd = h->descriptor;
    exec.addSelectHandler(h);
    h->descriptor = -1;
    delete h;
    EXPECT_EQ(nullptr, exec.getSelectHandler(fd));
    close(fd);
}

#endif

}  // namespace SelectHandlerTest
