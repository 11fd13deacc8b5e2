// The virtual operations of streams and transcribers stand in the order in which other object code calls them.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "Stream.h"
#include "Transcriber.h"

namespace SlotTest {

/** The number of an operation among the virtual ones, after the two entries of the destructor. */
template <class Member>
unsigned slot(Member operation) {
    std::ptrdiff_t encoded;
    std::memcpy(&encoded, &operation, sizeof encoded);
    return static_cast<unsigned>((encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

TEST(StreamSlots, AreThoseOfTheTable) {
    EXPECT_EQ(1u, slot(&qnStream::hasError));
    EXPECT_EQ(2u, slot(&qnStream::atEOF));
    EXPECT_EQ(3u, slot(&qnStream::isReading));
    EXPECT_EQ(4u, slot(&qnStream::isWriting));
    EXPECT_EQ(5u, slot(&qnStream::getType));
    EXPECT_EQ(6u, slot(&qnStream::getBytes));
    EXPECT_EQ(7u, slot(&qnStream::getShorts));
    EXPECT_EQ(8u, slot(&qnStream::getInts));
    EXPECT_EQ(9u, slot(&qnStream::getLongs));
    EXPECT_EQ(10u, slot(&qnStream::getFloats));
    EXPECT_EQ(11u, slot(&qnStream::getDoubles));
    EXPECT_EQ(12u, slot(&qnStream::putBytes));
    EXPECT_EQ(13u, slot(&qnStream::putShorts));
    EXPECT_EQ(14u, slot(&qnStream::putInts));
    EXPECT_EQ(15u, slot(&qnStream::putLongs));
    EXPECT_EQ(16u, slot(&qnStream::putFloats));
    EXPECT_EQ(17u, slot(&qnStream::putDoubles));
}

/** The slot of the form of `xdr` that takes these. */
template <class... Arguments>
unsigned xdrSlot() {
    return slot(static_cast<bool (qnTranscriber::*)(Arguments...)>(&qnTranscriber::xdr));
}

TEST(TranscriberSlots, AreThoseOfTheTable) {
    EXPECT_EQ(1u, slot(&qnTranscriber::reset));
    EXPECT_EQ(2u, (xdrSlot<char*, unsigned>()));
    EXPECT_EQ(3u, (xdrSlot<unsigned char*, unsigned>()));
    EXPECT_EQ(4u, (xdrSlot<short*, unsigned>()));
    EXPECT_EQ(5u, (xdrSlot<unsigned short*, unsigned>()));
    EXPECT_EQ(6u, (xdrSlot<long*, unsigned>()));
    EXPECT_EQ(7u, (xdrSlot<unsigned long*, unsigned>()));
    EXPECT_EQ(8u, (xdrSlot<float*, unsigned>()));
    EXPECT_EQ(9u, (xdrSlot<double*, unsigned>()));
    EXPECT_EQ(10u, (xdrSlot<qnStr*, unsigned>()));
    EXPECT_EQ(11u, (xdrSlot<char**, unsigned>()));
    EXPECT_EQ(12u, (xdrSlot<unsigned char**, unsigned>()));
    EXPECT_EQ(13u, (xdrSlot<short**, unsigned>()));
    EXPECT_EQ(14u, (xdrSlot<unsigned short**, unsigned>()));
    EXPECT_EQ(15u, (xdrSlot<long**, unsigned>()));
    EXPECT_EQ(16u, (xdrSlot<unsigned long**, unsigned>()));
    EXPECT_EQ(17u, (xdrSlot<float**, unsigned>()));
    EXPECT_EQ(18u, (xdrSlot<double**, unsigned>()));
    EXPECT_EQ(19u, (xdrSlot<char**>()));
    EXPECT_EQ(20u, (xdrSlot<unsigned char**>()));
    EXPECT_EQ(21u, (xdrSlot<void*, qnXDRObj*, qnTypeObj&>()));
    EXPECT_EQ(22u, (xdrSlot<qnTypeObj&, void*, void*>()));
    EXPECT_EQ(23u, slot(&qnTranscriber::readObject));
    EXPECT_EQ(24u, slot(&qnTranscriber::writeObject));
    EXPECT_EQ(25u, slot(&qnTranscriber::className));
    EXPECT_EQ(26u, (xdrSlot<int*, unsigned>()));
    EXPECT_EQ(27u, (xdrSlot<unsigned*, unsigned>()));
    EXPECT_EQ(28u, (xdrSlot<int**, unsigned>()));
    EXPECT_EQ(29u, (xdrSlot<unsigned**, unsigned>()));
}

}  // namespace SlotTest
