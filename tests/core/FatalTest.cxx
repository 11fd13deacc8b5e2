#include <gtest/gtest.h>

#include <cstdio>

#include "Fatal.h"

namespace FatalTest {

TEST(FatalDeathTest, WritesTheFormattedMessageWithOneLineEndAndAborts) {
    EXPECT_EXIT(qnFatal("bucket %u of %s", 31u, "table"), testing::KilledBySignal(SIGABRT), "^bucket 31 of table\n$");
}

TEST(FatalDeathTest, FlushesStandardErrorWhenItIsBuffered) {
    static char buffer[4096];
    auto fail = [] {
        std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        qnFatal("100%% of %s", "it");
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT), "^100% of it\n$");
}

}  // namespace FatalTest
