#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Identity.h"

namespace IdentityTest {

TEST(Identity, IsALineWithThePaddedNameTheVersionAndTheDate) {
    char buffer[200];
    int n = libmorvaqnds_sprintf_verid(buffer);
    std::string line = buffer;
    EXPECT_EQ(line.size(), static_cast<std::size_t>(n));
    EXPECT_EQ("libmorvaqnds" + std::string(21, ' ') + " ", line.substr(0, 34));
    EXPECT_EQ(")\n", line.substr(line.size() - 2));
    EXPECT_NE(std::string::npos, line.find(" (", 34));
    EXPECT_EQ(std::string::npos, line.find('"')) << "no label in this build";
}

TEST(Identity, IsPrintedOnStandardOutput) {
    char buffer[200];
    libmorvaqnds_sprintf_verid(buffer);
    testing::internal::CaptureStdout();
    int n = libmorvaqnds_print_verid();
    std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(buffer, printed);
    EXPECT_EQ(printed.size(), static_cast<std::size_t>(n));
}

}  // namespace IdentityTest
