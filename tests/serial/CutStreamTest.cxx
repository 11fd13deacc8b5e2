// Input that ends and output that fails within a record: every operation says so and nothing is lost or kept.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace CutStreamTest {

TEST(CutInput, FillFailsWhereverARecordOfAnySizeClassIsCut) {
    const std::string wholes[] = {Bytes().u8(0x4A).u8(3).u32(1).u32(2).u32(3).raw("abc").str(),
                                  Bytes().u8(0xC5).u32(3).u32(1).u32(3).raw("abc").str(),
                                  Bytes().u8(0x42).u8(1).u32(9).name("qnStr").u8('x').str(),
                                  Bytes().u8(0x0B).u32(1).u32(2).str(), Bytes().u8(0x03).u32(1).u32(2).str()};
    for (const std::string& whole : wholes) {
        for (std::size_t n = 0; n < whole.size(); ++n) {
            qnBinaryReader other(new MemoryStream(whole.substr(0, n)), 0x1122, 0x33445566, "ieee");
            EXPECT_FALSE(other.fill()) << hex(whole) << n;
        }
        qnBinaryReader other(new MemoryStream(whole), 0x1122, 0x33445566, "ieee");
        EXPECT_TRUE(other.fill()) << hex(whole);
    }
}

TEST(CutInput, AnArrayWhoseFurtherRecordsNeverComeGivesNullAndIsFreed) {
    // Three of ten bytes are there; what has arrived is freed, which the leak checker sees.
    for (unsigned byteLength : {10u, 100000u, 0xFFFFFFFFu}) {
        for (unsigned kind = 5; kind <= 9; ++kind) {
            Bytes records = Bytes().u8(0x40 | kind).u8(8).u32(3).u32(byteLength).raw("abcdefgh");
            qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
            EXPECT_EQ(nullptr, reader.readObject(Probe::type())) << kind;
            EXPECT_EQ(nullptr, reader.alreadyRead(3));
        }
    }
}

/** Whether two values of a type are read from a record of `bytes` data bytes. */
template <class Value>
bool readsTwo(unsigned bytes) {
    const Bytes record = Bytes().u8(0x40).u8(bytes).raw(std::string(bytes, 'x'));
    qnBinaryReader reader(new MemoryStream(record.str()), 0x1122, 0x33445566, "ieee");
    Value values[2];
    return reader.xdr(values, 2);
}

TEST(CutInput, ValuesThatNeverComeAreAnsweredWithFalse) {
    const struct {
        bool (*reads)(unsigned bytes);
        unsigned size;  // bytes of a value in a stream
    } forms[] = {{&readsTwo<char>, 1},           {&readsTwo<unsigned char>, 1}, {&readsTwo<short>, 2},
                 {&readsTwo<unsigned short>, 2}, {&readsTwo<int>, 4},           {&readsTwo<unsigned>, 4},
                 {&readsTwo<long>, 4},           {&readsTwo<unsigned long>, 4}, {&readsTwo<float>, 4},
                 {&readsTwo<double>, 8}};
    for (const auto& form : forms) {
        const auto number = &form - forms;
        for (unsigned bytes = 0; bytes < 2 * form.size; ++bytes) EXPECT_FALSE(form.reads(bytes)) << number << bytes;
        EXPECT_TRUE(form.reads(2 * form.size)) << number;
    }
}

TEST(FullOutput, ARunOfLongsFailsAtEveryPutOfItsRecords) {
    std::vector<long> values(1000, -7);
    // Seven records of 512 bytes, two puts each; what is left over goes with the flush.
    for (unsigned failing = 0; failing < 14; ++failing) {
        MemoryStream full;
        qnRetain(&full);
        full.failingPut = failing;
        qnBinaryWriter writer(&full);
        EXPECT_FALSE(writer.xdr(values.data(), 1000)) << failing;
        EXPECT_EQ(failing + 1, full.putsTried);
    }
}

TEST(FullOutput, APointerFailsWithTheRecordBeforeIt) {
    Probe other([](qnTranscriber&, Probe&) { return true; });
    Probe* pointer = &other;
    MemoryStream full;
    qnRetain(&full);
    full.failingPut = 0;
    qnBinaryWriter writer(&full);
    char c = 'c';
    ASSERT_TRUE(writer.xdr(&c, 1));
    EXPECT_FALSE(writer.xdr(&pointer, pointer, Probe::type()));
    EXPECT_EQ(1u, full.putsTried);
    EXPECT_EQ(0u, writer.pendingItems.length());
}

TEST(FullOutput, ANullPointerWhoseRecordBeforeItCannotBeWrittenFails) {
    MemoryStream full;
    qnRetain(&full);
    full.failingPut = 0;
    qnBinaryWriter writer(&full);
    EXPECT_TRUE(writer.writeNullPointer()) << "there is nothing before it";
    EXPECT_FALSE(writer.writeNullPointer());
    char c = 'c';
    writer.reset();
    EXPECT_TRUE(writer.writeNullPointer());
    EXPECT_FALSE(writer.writePrimPointer(&c, 1, qnBOT_Bytes));
}

TEST(FullOutput, TheGraphAfterAResetStartsWithAnEmptyBuffer) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    Probe failing([](qnTranscriber& t, Probe&) {
        int left = 0x5A5A5A5A;
        return t.xdr(&left, 1) && false;
    });
    ASSERT_FALSE(writer.writeObject(&failing, &failing));
    writer.reset();
    EXPECT_EQ(writer.buffer, writer.bufferNext);
    stream.output.clear();
    Probe object([](qnTranscriber& t, Probe&) {
        int seven = 7;
        return t.xdr(&seven, 1);
    });
    ASSERT_TRUE(writer.writeObject(&object, &object));
    EXPECT_EQ(hex(Bytes::type(4, "Probe").u8(0x4A).u8(4).u32(3).u32(4).u32(1).u32(7).str()), hex(stream.output));
}

}  // namespace CutStreamTest
