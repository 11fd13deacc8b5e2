#include <gtest/gtest.h>

#include "Fatal.h"

namespace FatalTest {

TEST(FatalDeathTest, WritesTheFormattedMessageWithOneLineEndAndAborts) {
    EXPECT_EXIT(qnFatal("bucket %u of %s", 31u, "table"), testing::KilledBySignal(SIGABRT), "^bucket 31 of table\n$");
}

}  // namespace FatalTest
