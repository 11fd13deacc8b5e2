// Arrays of longs, which the reader makes as wide as the machine has them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "BinaryReader.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace WideArraysTest {

/** Reads a graph whose root is a probe. */
Probe* readProbe(const Bytes& records, Probe::Body body, short shortMark = 0x1122, long longMark = 0x33445566) {
    Probe::onRead() = body;
    qnBinaryReader reader(new MemoryStream(records.str()), shortMark, longMark, "ieee");
    Probe* root = static_cast<Probe*>(reader.readObject(Probe::type()));
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    return root;
}

std::string reversed(unsigned value) {
    std::string bytes = Bytes().u32(value).str();
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

TEST(WideArrays, ALargeArrayOfLongsIsWidenedWhole) {
    const unsigned n = 100000;
    for (bool swapped : {false, true}) {
        Bytes records = probeRoot().u8(0x03).u32(3).u32(4 * n).u8(0xC7).u32(4 * n).u32(3).u32(4 * n);
        for (unsigned i = 0; i < n; ++i) {
            if (swapped) {
                records.raw(reversed(0u - i));
            } else {
                records.u32(0u - i);
            }
        }
        Probe* root = readProbe(
            records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.longs, 100000); },
            swapped ? 0x2211 : 0x1122, swapped ? 0x66554433 : 0x33445566);
        ASSERT_NE(nullptr, root);
        for (unsigned i = 0; i < n; ++i) ASSERT_EQ(-static_cast<long>(i), root->longs[i]) << swapped;
        std::free(root->longs);
        delete root;
    }
}

TEST(WideArrays, AnArrayOfLongsThatComesInManyRecordsIsWidenedWhole) {
    Bytes records = probeRoot().u8(0x03).u32(3).u32(1024).u8(0x87).u16(511).u32(3).u32(1024);
    std::string data;
    for (unsigned i = 0; i < 256; ++i) data += Bytes().u32(0x80000000u + i).str();
    // The records end within the numbers.
    records.raw(data.substr(0, 511)).u8(0x40).u8(2).raw(data.substr(511, 2)).u8(0x80).u16(511).raw(data.substr(513));
    Probe* root = readProbe(records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.unsignedLongs, 256); });
    ASSERT_NE(nullptr, root);
    for (unsigned i = 0; i < 256; ++i) ASSERT_EQ(0x80000000ul + i, root->unsignedLongs[i]);
    std::free(root->unsignedLongs);
    delete root;
}

TEST(WideArrays, AnArrayOfLongsWithAnOddRestHasItsWholeElements) {
    Bytes records = probeRoot().u8(0x03).u32(3).u32(7).u8(0x47).u8(7).u32(3).u32(7).u32(0xFFFFFFFE).raw("xyz");
    Probe* root = readProbe(records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.longs, 1); });
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(-2, root->longs[0]);
    std::free(root->longs);
    delete root;
}

}  // namespace WideArraysTest
