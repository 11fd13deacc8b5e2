#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdint>
#include <string>

#include "StackBuffer.h"

namespace StackBufferTest {

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(qnStackBuffer) == 1016, "a thousand bytes, three pointers and the increment");
#endif

std::string contents(const qnStackBuffer& buffer) { return std::string(buffer.base(), buffer.used()); }

bool isInside(const qnStackBuffer& buffer) {
    const char* object = reinterpret_cast<const char*>(&buffer);
    return buffer.base() >= object && buffer.base() < object + sizeof buffer;
}

std::size_t blockSize(const qnStackBuffer& buffer) { return malloc_usable_size(const_cast<char*>(buffer.base())); }

TEST(StackBuffer, AThousandBytesStayInside) {
    qnStackBuffer buffer;
    EXPECT_EQ(0u, buffer.used());
    EXPECT_EQ(buffer.base(), buffer.next());
    for (int i = 0; i < 1000; ++i) buffer.addc('x');
    EXPECT_TRUE(isInside(buffer));
    buffer.addc('y');
    EXPECT_FALSE(isInside(buffer));
    EXPECT_EQ(std::string(1000, 'x') + "y", contents(buffer));
    EXPECT_EQ(buffer.base() + 1001, buffer.next());
    EXPECT_LE(1500u, blockSize(buffer));
    EXPECT_GT(1600u, blockSize(buffer));
}

TEST(StackBuffer, GrowsLinearly) {
    qnStackBuffer buffer;
    for (int i = 0; i < 1501; ++i) buffer.addc('x');
    EXPECT_LE(2000u, blockSize(buffer));
    EXPECT_GT(2100u, blockSize(buffer));
    EXPECT_EQ(std::string(1501, 'x'), contents(buffer));
}

TEST(StackBuffer, APutGrowsByTheLargerOfTheShortfallAndTheIncrement) {
    qnStackBuffer small;
    small.put(std::string(1200, 'a').data(), 1200);
    EXPECT_LE(1500u, blockSize(small));
    EXPECT_GT(1600u, blockSize(small));
    qnStackBuffer large;
    large.put(std::string(5000, 'a').data(), 5000);
    EXPECT_LE(5000u, blockSize(large));
    EXPECT_GT(5100u, blockSize(large));
}

TEST(StackBuffer, TheIncrementIsTheCallersOr500) {
    qnStackBuffer buffer(64);
    buffer.put(std::string(1001, 'a').data(), 1001);
    EXPECT_LE(1064u, blockSize(buffer));
    EXPECT_GT(1100u, blockSize(buffer));
    qnStackBuffer zero(0);
    zero.put(std::string(1001, 'a').data(), 1001);
    EXPECT_LE(1500u, blockSize(zero));
}

TEST(StackBuffer, APutOfNothingIsNothing) {
    qnStackBuffer buffer;
    buffer.put(nullptr, 0);
    EXPECT_EQ(0u, buffer.used());
}

TEST(StackBuffer, AnExactFitDoesNotGrow) {
    qnStackBuffer buffer;
    buffer.put(std::string(1000, 'a').data(), 1000);
    EXPECT_TRUE(isInside(buffer));
}

TEST(StackBuffer, TakesItsOwnBytes) {
    qnStackBuffer buffer;
    buffer.put("0123456789", 10);
    for (int i = 0; i < 7; ++i) buffer.put(buffer.base(), buffer.used());
    ASSERT_EQ(1280u, buffer.used());
    for (unsigned i = 0; i < 1280; ++i) ASSERT_EQ('0' + static_cast<char>(i % 10), buffer.base()[i]);
    buffer.put(buffer.base() + 3, 2);
    EXPECT_EQ("34", contents(buffer).substr(1280));
}

TEST(StackBuffer, ACopyHasTheCapacityAndTheBytesAndGrowsBy500) {
    qnStackBuffer small;
    small.put("abc", 3);
    qnStackBuffer copy(small);
    EXPECT_TRUE(isInside(copy));
    EXPECT_EQ("abc", contents(copy));
    qnStackBuffer large(64);
    large.put(std::string(1001, 'q').data(), 1001);
    qnStackBuffer second(large);
    EXPECT_FALSE(isInside(second));
    EXPECT_NE(large.base(), second.base());
    EXPECT_EQ(contents(large), contents(second));
    while (second.used() < 1064) second.addc('r');
    second.addc('s');
    EXPECT_LE(1564u, blockSize(second));
    EXPECT_GT(1664u, blockSize(second));
}

TEST(StackBuffer, GrowsOnRequestByTheLargerOfBothAndKeepsTheBytes) {
    qnStackBuffer buffer;
    buffer.put("abc", 3);
    buffer.grow(0);
    EXPECT_FALSE(isInside(buffer));
    EXPECT_LE(1500u, blockSize(buffer));
    EXPECT_GT(1600u, blockSize(buffer));
    buffer.grow(1000);
    EXPECT_LE(2500u, blockSize(buffer));
    EXPECT_GT(2600u, blockSize(buffer));
    EXPECT_EQ("abc", contents(buffer));
    EXPECT_EQ(buffer.base() + 3, buffer.next());
}

TEST(StackBuffer, ACopyOfAFullOneGrowsAtItsNextByte) {
    qnStackBuffer full;
    full.put(std::string(1000, 'a').data(), 1000);
    qnStackBuffer copy(full);
    EXPECT_TRUE(isInside(copy));
    copy.addc('b');
    EXPECT_EQ(std::string(1000, 'a') + "b", contents(copy));
    EXPECT_LE(1500u, blockSize(copy));
    EXPECT_GT(1600u, blockSize(copy));
    EXPECT_TRUE(isInside(full));
}

TEST(StackBuffer, HoldsEveryByteAndTerminatesNothing) {
    qnStackBuffer buffer(1);
    std::string expected;
    for (int i = 0; i < 2000; ++i) {
        buffer.addc(static_cast<char>(i));
        expected += static_cast<char>(i);
    }
    EXPECT_EQ(expected, contents(buffer));
}

TEST(StackBufferDeathTest, CapacitiesPast32BitsAreFatal) {
    qnStackBuffer buffer(0xFFFFFFFFu);
    EXPECT_EXIT(buffer.grow(1), testing::KilledBySignal(SIGABRT),
                "^qnStackBuffer::grow: size of 4294968295 bytes exceeds 4294967295\n$");
    // 10 bytes are used, so 0xFFFFFFFF - 990 are lacking: 1000 and these
    qnStackBuffer small;
    small.put("0123456789", 10);
    EXPECT_EXIT(small.put(small.base(), 0xFFFFFFFFu), testing::KilledBySignal(SIGABRT),
                "^qnStackBuffer::grow: size of 4294967305 bytes exceeds 4294967295\n$");
}

TEST(StackBuffer, CannotBeAssigned) { EXPECT_FALSE(std::is_copy_assignable<qnStackBuffer>::value); }

}  // namespace StackBufferTest
