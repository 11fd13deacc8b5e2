// Callers' errors around the loop, which end the process in the checked build.
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "LoopRig.h"

#ifdef MORVAQNDS_CHECKED

namespace LoopCheckedTest {

using LoopRig::App;
using LoopRig::Handler;
using LoopRig::Pipe;

const testing::KilledBySignal aborted(SIGABRT);

struct LoopDeathTest : LoopRig::Test {
    qnExec exec;
};

TEST_F(LoopDeathTest, RegisteringAHandlerOfADescriptorOutsideTheTable) {
    Handler low("low", -1), high("high", 100);
    EXPECT_EXIT(exec.addSelectHandler(&low), aborted,
                "^qnExec::addSelectHandler: descriptor -1 is not between 0 and 99\n$");
    EXPECT_EXIT(exec.addSelectHandler(&high), aborted,
                "^qnExec::addSelectHandler: descriptor 100 is not between 0 and 99\n$");
    high.descriptor = -1;
}

TEST_F(LoopDeathTest, UnregisteringAHandlerOfADescriptorOutsideTheTable) {
    Handler low("low", -1), high("high", 100);
    EXPECT_EXIT(exec.removeSelectHandler(&low), aborted,
                "^qnExec::removeSelectHandler: descriptor -1 is not between 0 and 99\n$");
    EXPECT_EXIT(exec.removeSelectHandler(&high), aborted,
                "^qnExec::removeSelectHandler: descriptor 100 is not between 0 and 99\n$");
    high.descriptor = -1;
}

TEST_F(LoopDeathTest, RegisteringAHandlerWhoseDescriptorIsClosed) {
    Pipe pipe;
    int fd = pipe.takeReading();
    Handler h("h", fd);
    close(fd);
    EXPECT_EXIT(exec.addSelectHandler(&h), aborted,
                "^qnExec::addSelectHandler: descriptor " + std::to_string(fd) + " is not open\n$");
    h.descriptor = -1;
}

TEST_F(LoopDeathTest, DestroyingARegisteredHandler) {
    Pipe pipe;
    Handler* h = new Handler("h", pipe.takeReading());
    exec.addSelectHandler(h);
    EXPECT_EXIT(delete h, aborted,
                "^qnSelectHandler::~qnSelectHandler: the handler of descriptor " + std::to_string(h->descriptor) +
                    " is registered\n$");
    exec.removeSelectHandler(h);
    delete h;
}

TEST_F(LoopDeathTest, DestroyingAnApplicationThatWasNeverOpenedOrClosed) {
    App* a = new App("a");
    EXPECT_EXIT(delete a, aborted,
                "^qnApplication::~qnApplication: the application is registered and was never closed\n$");
    a->close();
    delete a;
}

TEST_F(LoopDeathTest, MakingAnApplicationWithoutAnExecutive) {
    EXPECT_EXIT(
        {
            qn_theExecutive = nullptr;
            App a("a");
        },
        aborted, "^qnApplication::qnApplication: the toolkit is not initialised\n$");
}

}  // namespace LoopCheckedTest

#endif
