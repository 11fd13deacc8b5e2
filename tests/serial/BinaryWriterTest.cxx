#include <gtest/gtest.h>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "NumberArrays.h"
#include "Str.h"
#include "StrArray.h"
#include "StrStrDictionary.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace BinaryWriterTest {

/** A writer over memory, without a header. */
class Writing : public testing::Test {
protected:
    Writing() : writer(&stream) { qnRetain(&stream); }

    /** What writing a graph rooted at a probe with this body gives. */
    std::string graph(Probe::Body body) {
        Probe root(body);
        EXPECT_TRUE(writer.writeObject(&root, &root));
        return stream.output;
    }
    /** The start of every first graph: the probe's type is 2, and the root instance 1 with `n` bytes of data. */
    static Bytes root(unsigned n) {
        Bytes bytes = Bytes::type(2, "Probe");
        if (n == 0) bytes.u8(0x0A);
        if (n > 0 && n < 256) bytes.u8(0x4A).u8(n);
        if (n >= 256) bytes.u8(0x8A).u16(n);
        return bytes.u32(1).u32(2).u32(1);
    }

    MemoryStream stream;
    qnBinaryWriter writer;
};

TEST_F(Writing, AFreshWriterHasAnEmptyBufferAndKnowsOnlyAddressZero) {
    EXPECT_STREQ("qnBinaryWriter", writer.className());
    EXPECT_EQ(0, writer.reading);
    EXPECT_EQ(1u, writer.nextId);
    EXPECT_EQ(512u, writer.bufferSize);
    EXPECT_EQ(0u, writer.bufferCount);
    EXPECT_EQ(writer.buffer, writer.bufferNext);
    EXPECT_EQ(0u, writer.pendingKind);
    EXPECT_EQ(1u, writer.objectTable.count);
    qnBinaryOTDict::Word zero = 0;
    ASSERT_NE(nullptr, writer.objectTable.find(&zero, nullptr));
    EXPECT_EQ(0u, writer.alreadyWritten(nullptr));
    EXPECT_TRUE(stream.output.empty());
}

TEST_F(Writing, AnEmptyObjectIsATypeRecordAndAnInstanceRecordWithoutData) {
    EXPECT_EQ(hex(root(0).str()), hex(graph([](qnTranscriber&, Probe&) { return true; })));
    // The type record takes two puts, head with payload and name; the instance one.
    EXPECT_EQ((std::vector<std::size_t>{5, 6, 13}), stream.puts);
}

TEST_F(Writing, ValuesAreWrittenInTheMachinesOrderAndSizes) {
    std::string written = graph([](qnTranscriber& t, Probe&) {
        char c = 'c';
        unsigned char b = 200;
        short s = -2;
        unsigned short us = 65535;
        int i = -3;
        unsigned u = 4000000000u;
        long l = -4;
        unsigned long ul = 4294967295ul;
        float f = 1.5f;
        double d = -2.5;
        return t.xdr(&c, 1) && t.xdr(&b, 1) && t.xdr(&s, 1) && t.xdr(&us, 1) && t.xdr(&i, 1) && t.xdr(&u, 1) &&
               t.xdr(&l, 1) && t.xdr(&ul, 1) && t.xdr(&f, 1) && t.xdr(&d, 1);
    });
    Bytes data = Bytes().u8('c').u8(200).u16(0xFFFE).u16(0xFFFF).u32(0xFFFFFFFD).u32(4000000000u).u32(0xFFFFFFFC);
    data.u32(0xFFFFFFFF).f32(1.5f).f64(-2.5);
    EXPECT_EQ(hex((root(34) + data).str()), hex(written));
    EXPECT_EQ((std::vector<std::size_t>{5, 6, 14, 34}), stream.puts);
}

TEST_F(Writing, RunsOfNothingWriteNothing) {
    EXPECT_EQ(hex(root(0).str()), hex(graph([](qnTranscriber& t, Probe&) {
                  return t.xdr(static_cast<char*>(nullptr), 0) && t.xdr(static_cast<int*>(nullptr), 0) &&
                         t.xdr(static_cast<long*>(nullptr), 0) && t.xdr(static_cast<qnStr*>(nullptr), 0);
              })));
}

std::string dataOf(std::size_t n) {
    std::string bytes;
    for (std::size_t i = 0; i < n; ++i) bytes += static_cast<char>('a' + i % 23);
    return bytes;
}

TEST_F(Writing, LengthsChooseTheSmallestSizeClass) {
    for (unsigned n : {1u, 255u, 256u, 300u, 511u, 512u}) {
        stream.output.clear();
        writer.reset();
        unsigned id = writer.nextId;
        std::string bytes = dataOf(n);
        Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&bytes[0], n); });
        ASSERT_TRUE(writer.writeObject(&object, &object));
        Bytes expected = Bytes::type(id + 1, "Probe");
        if (n < 256) {
            expected.u8(0x4A).u8(n);
        } else {
            expected.u8(0x8A).u16(n);
        }
        expected.u32(id).u32(id + 1).u32(1).raw(bytes);
        EXPECT_EQ(hex(expected.str()), hex(stream.output)) << n;
    }
}

TEST_F(Writing, DataPast512BytesGoesOnInAPlainRecord) {
    std::string bytes = dataOf(513);
    EXPECT_EQ(hex((root(512).raw(bytes.substr(0, 512)).u8(0x40).u8(1).raw(bytes.substr(512))).str()),
              hex(graph([&](qnTranscriber& t, Probe&) { return t.xdr(&bytes[0], 513); })));
}

TEST_F(Writing, SixHundredBytesAre512And88) {
    std::string bytes = dataOf(600);
    EXPECT_EQ(hex((root(512).raw(bytes.substr(0, 512)).u8(0x40).u8(88).raw(bytes.substr(512))).str()),
              hex(graph([&](qnTranscriber& t, Probe&) { return t.xdr(&bytes[0], 600); })));
}

TEST_F(Writing, TheSameBytesInSmallPiecesGiveTheSameRecords) {
    std::string bytes = dataOf(1200);
    std::string written = graph([&](qnTranscriber& t, Probe&) {
        for (unsigned at = 0; at < 1200; at += 7) {
            if (!t.xdr(&bytes[at], at + 7 > 1200 ? 1200 - at : 7)) return false;
        }
        return true;
    });
    Bytes expected = root(512).raw(bytes.substr(0, 512)).u8(0x80).u16(512).raw(bytes.substr(512, 512));
    expected.u8(0x40).u8(176).raw(bytes.substr(1024));
    EXPECT_EQ(hex(expected.str()), hex(written));
}

// Pointers

TEST_F(Writing, ANullObjectPointerIsARecordWithoutPayload) {
    EXPECT_EQ(hex(root(0).u8(0x01).str()),
              hex(graph([](qnTranscriber& t, Probe& self) { return t.xdr(&self.first, self.first, Probe::type()); })));
}

TEST_F(Writing, TwoPointersToOneObjectAreOneNewOneOldAndOneInstance) {
    Probe shared([](qnTranscriber& t, Probe&) {
        int seven = 7;
        return t.xdr(&seven, 1);
    });
    std::string written = graph([&](qnTranscriber& t, Probe& self) {
        self.first = self.second = &shared;
        return t.xdr(&self.first, self.first, Probe::type()) && t.xdr(&self.second, self.second, Probe::type());
    });
    Bytes expected = root(0).u8(0x0B).u32(3).u8(0x0C).u32(3).u8(0x4A).u8(4).u32(3).u32(2).u32(1).u32(7);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, WhatFollowsAPointerIsTheDataOfItsRecord) {
    std::string written = graph([](qnTranscriber& t, Probe& self) {
        char x = 'x', y = 'y';
        return t.xdr(&x, 1) && t.xdr(&self.first, self.first, Probe::type()) && t.xdr(&y, 1);
    });
    EXPECT_EQ(hex(root(1).u8('x').u8(0x41).u8(1).u8('y').str()), hex(written));
}

TEST_F(Writing, ThePointerToTheRootIsOld) {
    Probe root1([](qnTranscriber& t, Probe& self) {
        self.first = &self;
        return t.xdr(&self.first, self.first, Probe::type());
    });
    ASSERT_TRUE(writer.writeObject(&root1, &root1));
    EXPECT_EQ(hex(root(0).u8(0x0C).u32(1).str()), hex(stream.output));
}

TEST_F(Writing, TheNewestPointeeIsWrittenFirst) {
    auto number = [](int value) {
        return [value](qnTranscriber& t, Probe&) {
            int copy = value;
            return t.xdr(&copy, 1);
        };
    };
    Probe a(number(10)), b(number(11));
    std::string written = graph([&](qnTranscriber& t, Probe& self) {
        self.first = &a;
        self.second = &b;
        return t.xdr(&self.first, self.first, Probe::type()) && t.xdr(&self.second, self.second, Probe::type());
    });
    Bytes expected = root(0).u8(0x0B).u32(3).u8(0x0B).u32(4);
    expected.u8(0x4A).u8(4).u32(4).u32(2).u32(1).u32(11);
    expected.u8(0x4A).u8(4).u32(3).u32(2).u32(1).u32(10);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

// Another class, of another version.
class Sample : public qnXDRObj {
public:
    bool xdr(qnTranscriber&) override { return true; }
    qnTypeObj& getTypeObj() const override;
    static bool xdr(void*, qnTranscriber&) { return true; }
};
qnTypeObj Sample_type("Sample", 5, nullptr, nullptr, Sample::xdr);
qnTypeObj& Sample::getTypeObj() const { return Sample_type; }

TEST_F(Writing, ATypeFirstMetThroughAPointerStandsBeforeThePointerRecord) {
    Sample sample;
    qnXDRObj* pointer = &sample;
    std::string written = graph([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, pointer, Sample_type); });
    Bytes expected = root(0) + Bytes::type(3, "Sample").u8(0x0B).u32(4).u8(0x0A).u32(4).u32(3).u32(5);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, TheVersionIsThatOfTheTypeIntroducedLast) {
    // Deliberate: the second probe was written after the sample's type, and bears its version.
    Sample sample;
    qnXDRObj* pointer = &sample;
    Probe other([](qnTranscriber&, Probe&) { return true; });
    std::string written = graph([&](qnTranscriber& t, Probe& self) {
        self.first = &other;
        return t.xdr(&self.first, self.first, Probe::type()) && t.xdr(&pointer, pointer, Sample_type);
    });
    Bytes expected = root(0).u8(0x0B).u32(3) + Bytes::type(4, "Sample").u8(0x0B).u32(5);
    expected.u8(0x0A).u32(5).u32(4).u32(5);
    expected.u8(0x0A).u32(3).u32(2).u32(5);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, ANewPrimitiveArrayIsAPointerAndItsContentsLater) {
    double values[] = {1.0, 2.0};
    double* pointer = values;
    std::string written = graph([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, 2); });
    EXPECT_EQ(hex(root(0).u8(0x03).u32(3).u32(16).u8(0x49).u8(16).u32(3).u32(16).f64(1.0).f64(2.0).str()),
              hex(written));
}

TEST_F(Writing, ARepeatedPrimitiveArrayIsAnOldPointer) {
    short values[] = {1, 2, 3};
    short* pointer = values;
    std::string written = graph([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, 3) && t.xdr(&pointer, 3); });
    Bytes expected = root(0).u8(0x03).u32(3).u32(6).u8(0x04).u32(3);
    expected.u8(0x46).u8(6).u32(3).u32(6).u16(1).u16(2).u16(3);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, ANullPrimitiveArrayIsANullRecord) {
    EXPECT_EQ(hex(root(0).u8(0x01).str()),
              hex(graph([](qnTranscriber& t, Probe& self) { return t.xdr(&self.ints, 3); })));
}

TEST_F(Writing, EveryKindOfPrimitiveArrayHasItsTagAndByteLength) {
    char c[] = {'p'};
    unsigned char uc[] = {9};
    unsigned short us[] = {8};
    int i[] = {-1};
    unsigned u[] = {7};
    long l[] = {-2};
    unsigned long ul[] = {4294967295ul};
    float f[] = {0.5f};
    char* pc = c;
    unsigned char* puc = uc;
    unsigned short* pus = us;
    int* pi = i;
    unsigned* pu = u;
    long* pl = l;
    unsigned long* pul = ul;
    float* pf = f;
    std::string written = graph([&](qnTranscriber& t, Probe&) {
        return t.xdr(&pc, 1) && t.xdr(&puc, 1) && t.xdr(&pus, 1) && t.xdr(&pi, 1) && t.xdr(&pu, 1) && t.xdr(&pl, 1) &&
               t.xdr(&pul, 1) && t.xdr(&pf, 1);
    });
    Bytes expected = root(0);
    const unsigned lengths[] = {1, 1, 2, 4, 4, 4, 4, 4};
    for (unsigned n = 0; n < 8; ++n) expected.u8(0x03).u32(3 + n).u32(lengths[n]);
    expected.u8(0x48).u8(4).u32(10).u32(4).f32(0.5f);
    expected.u8(0x47).u8(4).u32(9).u32(4).u32(0xFFFFFFFF);
    expected.u8(0x47).u8(4).u32(8).u32(4).u32(0xFFFFFFFE);
    expected.u8(0x47).u8(4).u32(7).u32(4).u32(7);
    expected.u8(0x47).u8(4).u32(6).u32(4).u32(0xFFFFFFFF);
    expected.u8(0x46).u8(2).u32(5).u32(2).u16(8);
    expected.u8(0x45).u8(1).u32(4).u32(1).u8(9);
    expected.u8(0x45).u8(1).u32(3).u32(1).u8('p');
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, TheStringFormsCountTheTerminator) {
    char text[] = "abc";
    unsigned char empty[] = "";
    char* p = text;
    unsigned char* q = empty;
    std::string written = graph([&](qnTranscriber& t, Probe&) { return t.xdr(&p) && t.xdr(&q); });
    Bytes expected = root(0).u8(0x03).u32(3).u32(4).u8(0x03).u32(4).u32(1);
    expected.u8(0x45).u8(1).u32(4).u32(1).u8(0).u8(0x45).u8(4).u32(3).u32(4).raw(std::string("abc\0", 4));
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, DataAfterANewArrayPointerBelongsToItsRecordAndAfterAnOldOneToAPlainOne) {
    short values[] = {1};
    short* pointer = values;
    std::string written = graph([&](qnTranscriber& t, Probe&) {
        char x = 'x', y = 'y';
        return t.xdr(&pointer, 1) && t.xdr(&x, 1) && t.xdr(&pointer, 1) && t.xdr(&y, 1);
    });
    Bytes expected = root(0).u8(0x43).u8(1).u32(3).u32(2).u8('x').u8(0x04).u32(3).u8(0x40).u8(1).u8('y');
    expected.u8(0x46).u8(2).u32(3).u32(2).u16(1);
    EXPECT_EQ(hex(expected.str()), hex(written));
}

TEST_F(Writing, AnArrayAtTheAddressOfAWrittenObjectIsOldAndBearsItsId) {
    // Identity is the address, whatever stands there.
    EXPECT_EQ(hex(root(0).u8(0x04).u32(1).str()), hex(graph([](qnTranscriber& t, Probe& self) {
                  char* pointer = reinterpret_cast<char*>(&self);
                  return t.xdr(&pointer, 4);
              })));
}

TEST_F(Writing, AnArrayOf100000IntsFillsOneRecordAfterAnother) {
    std::vector<int> values(100000);
    Bytes expected = root(0).u8(0x03).u32(3).u32(400000);
    // 781 records of 512 bytes hold 99968 ints, and the last one 128 bytes
    for (unsigned i = 0; i < 100000; ++i) {
        values[i] = static_cast<int>(i * 40503u);
        if (i == 0) expected.u8(0x87).u16(512).u32(3).u32(400000);
        if (i != 0 && i % 128 == 0 && i != 99968) expected.u8(0x80).u16(512);
        if (i == 99968) expected.u8(0x40).u8(128);
        expected.u32(i * 40503u);
    }
    int* pointer = values.data();
    EXPECT_TRUE(expected.str() == graph([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, 100000); }));
}

TEST_F(Writing, AnArrayOf100000LongsGivesTheSameBytesAsOneOfInts) {
    std::vector<int> ints(100000);
    std::vector<long> longs(100000);
    for (unsigned i = 0; i < 100000; ++i) longs[i] = ints[i] = static_cast<int>(i * 40503u);
    int* intPointer = ints.data();
    long* longPointer = longs.data();
    std::string first = graph([&](qnTranscriber& t, Probe&) { return t.xdr(&intPointer, 100000); });
    MemoryStream second;
    qnRetain(&second);
    qnBinaryWriter other(&second);
    Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&longPointer, 100000); });
    ASSERT_TRUE(other.writeObject(&object, &object));
    EXPECT_TRUE(first == second.output);
}

TEST_F(Writing, FormsForIntsGiveTheBytesOfTheFormsForLongs) {
    int i[] = {-1, 2147483647};
    unsigned u[] = {4294967295u};
    long l[] = {-1, 2147483647L};
    unsigned long ul[] = {4294967295ul};
    Bytes expected = Bytes().u8(0x40).u8(12).u32(0xFFFFFFFF).u32(0x7FFFFFFF).u32(0xFFFFFFFF);
    EXPECT_TRUE(writer.xdr(i, 2) && writer.xdr(u, 1) && writer.flush());
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
    stream.output.clear();
    EXPECT_TRUE(writer.xdr(l, 2) && writer.xdr(ul, 1) && writer.flush());
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

TEST_F(Writing, ARunOfStringsStopsAtTheFirstThatCannotBeWritten) {
    MemoryStream full;
    qnRetain(&full);
    full.failingPut = 0;
    qnBinaryWriter other(&full);
    qnStr strings[3] = {"", "a", "b"};
    // The empty one only fills the buffer; the text of the second needs a record of its own.
    EXPECT_FALSE(other.xdr(strings, 3));
    EXPECT_EQ(1u, full.putsTried);
    EXPECT_EQ(0u, other.pendingItems.length());
}

TEST_F(Writing, AFlushWithoutKindAndDataWritesNothing) {
    EXPECT_TRUE(writer.flush());
    EXPECT_TRUE(writer.writeBytes("x", 0));
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(0u, stream.putsTried);
}

TEST_F(Writing, FlushLeavesThePlainKindAndAnEmptyBuffer) {
    EXPECT_TRUE(writer.writeNullPointer());
    EXPECT_EQ(1u, writer.pendingKind);
    EXPECT_TRUE(stream.output.empty());
    EXPECT_TRUE(writer.writeBytes("ab", 2));
    EXPECT_EQ(2u, writer.bufferCount);
    EXPECT_EQ(writer.buffer + 2, writer.bufferNext);
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(hex(Bytes().u8(0x41).u8(2).raw("ab").str()), hex(stream.output));
    EXPECT_EQ(0u, writer.pendingKind);
    EXPECT_EQ(0u, writer.bufferCount);
    EXPECT_EQ(writer.buffer, writer.bufferNext);
}

TEST_F(Writing, EveryKindHasItsPayload) {
    writer.pendingId = 0x0A0B0C0D;
    writer.pendingTypeId = 21;
    writer.pendingVersion = 22;
    writer.pendingByteCount = 23;
    writer.pendingTypeName = "T";
    Bytes expected;
    for (unsigned kind = 1; kind <= 14; ++kind) {
        writer.pendingKind = kind;
        EXPECT_TRUE(writer.flush());
        expected.u8(kind);
        if (kind == 2) expected.u32(21).name("T");
        if (kind >= 3 && kind != 10) expected.u32(0x0A0B0C0D);
        if (kind == 3 || (kind >= 5 && kind <= 9)) expected.u32(23);
        if (kind == 10) expected.u32(0x0A0B0C0D).u32(21).u32(22);
    }
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

TEST_F(Writing, IdsComeFromOneCounter) {
    int a, b;
    EXPECT_EQ(0u, writer.alreadyWritten(&a));
    EXPECT_EQ(1u, writer.recordIdForAddress(&a));
    unsigned long id = 0;
    EXPECT_TRUE(writer.writeType(Probe::type(), &id));
    EXPECT_EQ(2u, id);
    qnBinaryWriterItem* item = new qnBinaryWriterItem();
    item->address = &b;
    EXPECT_EQ(3u, writer.queue(item));
    EXPECT_EQ(3u, writer.alreadyWritten(&b));
    EXPECT_EQ(4u, writer.nextId);
    EXPECT_EQ(item, writer.pop());
    delete item;
    std::size_t before = stream.output.size();
    EXPECT_TRUE(writer.writeType(Probe::type(), &id));
    EXPECT_EQ(2u, id);
    EXPECT_EQ(before, stream.output.size());
    EXPECT_EQ(1u, writer.alreadyWritten(&a));
}

TEST_F(Writing, TheQueueGivesBackTheNewest) {
    int places[3];
    qnBinaryWriterItem* items[3];
    for (int i = 0; i < 3; ++i) {
        items[i] = new qnBinaryWriterItem();
        items[i]->address = &places[i];
        writer.queue(items[i]);
    }
    for (int i = 3; i > 0; --i) {
        EXPECT_EQ(items[i - 1], writer.pop());
        delete items[i - 1];
    }
}

TEST_F(Writing, TheFirstRootHasIdOneAndItsTypeIdTwo) {
    Probe object([](qnTranscriber&, Probe&) { return true; });
    ASSERT_TRUE(writer.writeObject(&object, &object));
    EXPECT_EQ(1u, writer.alreadyWritten(&object));
    EXPECT_EQ(2u, writer.alreadyWritten(&Probe::type()));
    EXPECT_EQ(3u, writer.nextId);
}

TEST_F(Writing, AnArrayOfNoElementsIsARecordWithoutData) {
    int one = 1;
    int* pointer = &one;
    EXPECT_EQ(hex(root(0).u8(0x03).u32(3).u32(0).u8(0x07).u32(3).u32(0).str()),
              hex(graph([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, 0); })));
}

// Base parts

class Shared {
public:
    virtual ~Shared() {}
    int value = 42;
    static bool xdr(void* object, qnTranscriber& t) { return t.xdr(&static_cast<Shared*>(object)->value, 1); }
};
qnTypeObj Shared_type("Shared", 1, nullptr, nullptr, Shared::xdr);

TEST_F(Writing, ABasePartIsWrittenOnceAndReferredToAfterwards) {
    Shared base;
    std::string written = graph([&](qnTranscriber& t, Probe& self) {
        char end = 'e';
        return t.xdr(Shared_type, &self, &base) && t.xdr(Shared_type, &self, &base) && t.xdr(&end, 1);
    });
    EXPECT_EQ(hex(root(0).u8(0x4D).u8(4).u32(3).u32(42).u8(0x4E).u8(1).u32(3).u8('e').str()), hex(written));
}

TEST_F(Writing, ABasePartAtTheAddressOfAWrittenObjectIsOld) {
    Probe other;
    EXPECT_EQ(hex(root(0).u8(0x0E).u32(1).str()),
              hex(graph([&](qnTranscriber& t, Probe& self) { return t.xdr(Shared_type, &other, &self); })));
}

TEST_F(Writing, ABasePartThatFailsMakesTheWriteFail) {
    static qnTypeObj failing("BinaryWriterTest.Failing", 1, nullptr, nullptr,
                             [](void*, qnTranscriber&) { return false; });
    Shared base;
    Probe object([&](qnTranscriber& t, Probe& self) { return t.xdr(failing, &self, &base); });
    EXPECT_FALSE(writer.writeObject(&object, &object));
}

TEST_F(Writing, ABaseAtTheObjectsOwnAddressIsNotWritten) {
    EXPECT_EQ(hex(root(0).str()),
              hex(graph([&](qnTranscriber& t, Probe& self) { return t.xdr(qnXDRObj_type, &self, &self); })));
}

// Strings, arrays, dictionaries

TEST_F(Writing, AnEmptyStringIsItsLengthAlone) {
    qnStr empty;
    EXPECT_EQ(hex(root(4).u32(1).str()), hex(graph([&](qnTranscriber& t, Probe&) { return empty.xdr(t); })));
}

TEST_F(Writing, AStringIsItsLengthAndAnArrayWithTheTerminator) {
    qnStr text("hi");
    Bytes expected = root(4).u32(3).u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3));
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return text.xdr(t); })));
}

TEST_F(Writing, AStringOf600CharactersTakesTwoRecords) {
    std::string bytes = dataOf(600);
    qnStr text(bytes.c_str());
    Bytes expected = root(4).u32(601).u8(0x03).u32(3).u32(601).u8(0x85).u16(512).u32(3).u32(601);
    expected.raw(bytes.substr(0, 512)).u8(0x40).u8(89).raw(bytes.substr(512)).u8(0);
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return text.xdr(t); })));
}

TEST_F(Writing, LongArraysTakeFourBytesAnElementOnEveryMachine) {
    qnLongArray array(2);
    array.elements()[0] = -1;
    array.elements()[1] = 5;
    Bytes expected = root(14).u32(8).u16(4).u32(0xFFFFFFFF).u32(5);
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return array.xdr(t); })));
}

TEST_F(Writing, SpareElementsTravelAsZeros) {
    qnIntArray array;
    int seven = 7;
    array.append(&seven);
    Bytes expected = root(22).u32(4).u16(4).u32(7).u32(0).u32(0).u32(0);
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return array.xdr(t); })));
}

TEST_F(Writing, ACopiedArrayGetsItsCapacityBackedBeforeItIsWritten) {
    qnIntArray array;
    int seven = 7;
    array.append(&seven);
    qnIntArray copy(array);
    Bytes expected = root(22).u32(4).u16(4).u32(7).u32(0).u32(0).u32(0);
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return copy.xdr(t); })));
}

TEST_F(Writing, StringArraysCountEightBytesAnElementOnEveryMachine) {
    qnStrArray array(2);
    array.elements()[1] = "x";
    Bytes expected = root(14).u32(16).u16(8).u32(1).u32(2).u8(0x03).u32(3).u32(2);
    expected.u8(0x45).u8(2).u32(3).u32(2).u8('x').u8(0);
    EXPECT_EQ(hex(expected.str()), hex(graph([&](qnTranscriber& t, Probe&) { return array.xdr(t); })));
}

TEST_F(Writing, ADictionaryAsRootHasTheSharedNameAndFixedRecordSizes) {
    qnStrStrDictionary dictionary(4);
    qnStr key("a"), value("");
    dictionary.addInternal(&key, &value);
    ASSERT_TRUE(writer.writeObject(&dictionary, &dictionary));
    // hash("a") is 0x08000000, which is bucket 0 of 4
    Bytes expected = Bytes::type(2, "DICT").u8(0x4A).u8(20).u32(1).u32(2).u32(1);
    expected.u32(1).u32(8).u32(8).u32(4).u32(2);
    expected.u8(0x43).u8(8).u32(3).u32(2).u32(1).u32(0);
    expected.u8(0x45).u8(2).u32(3).u32(2).u8('a').u8(0);
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

// Several graphs

TEST_F(Writing, WithoutResetASecondGraphKnowsTheTypeAndTheObjects) {
    Probe shared([](qnTranscriber&, Probe&) { return true; });
    Probe root1([&](qnTranscriber& t, Probe& self) {
        self.first = &shared;
        return t.xdr(&self.first, self.first, Probe::type());
    });
    ASSERT_TRUE(writer.writeObject(&root1, &root1));
    stream.output.clear();
    ASSERT_TRUE(writer.writeObject(&root1, &root1));
    // The root gets a new id each time; what it points to is known.
    EXPECT_EQ(hex(Bytes().u8(0x0A).u32(4).u32(2).u32(1).u8(0x0C).u32(3).str()), hex(stream.output));
}

TEST_F(Writing, AfterResetEverythingIsNewAndIdsGoOn) {
    graph([](qnTranscriber&, Probe&) { return true; });
    writer.reset();
    EXPECT_EQ(0u, writer.objectTable.count);
    stream.output.clear();
    graph([](qnTranscriber&, Probe&) { return true; });
    EXPECT_EQ(hex((Bytes::type(4, "Probe").u8(0x0A).u32(3).u32(4).u32(1)).str()), hex(stream.output));
}

TEST_F(Writing, ResetForgetsWhatAFailedWriteLeftBehind) {
    Probe other;
    Probe failing([&](qnTranscriber& t, Probe& self) {
        self.first = &other;
        int one = 1;
        return t.xdr(&self.first, self.first, Probe::type()) && t.xdr(&one, 1) && false;
    });
    EXPECT_FALSE(writer.writeObject(&failing, &failing));
    EXPECT_EQ(4u, writer.bufferCount);
    EXPECT_EQ(1u, writer.pendingItems.length());
    writer.reset();
    EXPECT_EQ(0u, writer.bufferCount);
    EXPECT_EQ(0u, writer.pendingKind);
    EXPECT_EQ(0u, writer.pendingItems.length());
}

// Failures

TEST_F(Writing, EveryFailingPutMakesTheWriteFailAndNoFurtherPutOfTheRecordIsTried) {
    for (unsigned failing = 0; failing < 4; ++failing) {
        MemoryStream full;
        qnRetain(&full);
        full.failingPut = failing;
        qnBinaryWriter other(&full);
        int one = 1;
        Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&one, 1); });
        EXPECT_FALSE(other.writeObject(&object, &object)) << failing;
        EXPECT_EQ(failing + 1, full.putsTried);
    }
}

TEST_F(Writing, ALongThatDoesNotFitFourBytesIsRefusedBeforeItsRecordIsWritten) {
    if (sizeof(long) == 4) return;  // every long fits
    std::string written;
    long values[] = {1, static_cast<long>(1ull << 31)};
    Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(values, 2); });
    EXPECT_FALSE(writer.writeObject(&object, &object));
    EXPECT_EQ(hex(Bytes::type(2, "Probe").str()), hex(stream.output));
    EXPECT_EQ(0u, writer.bufferCount);
    writer.reset();
    unsigned long tooLarge = static_cast<unsigned long>(1ull << 32);
    EXPECT_FALSE(writer.xdr(&tooLarge, 1));
    long smallest = -2147483647L - 1;
    EXPECT_TRUE(writer.xdr(&smallest, 1));
    values[1] = static_cast<long>(-(1ll << 31) - 1);
    EXPECT_FALSE(writer.xdr(values, 2));
}

TEST_F(Writing, AnArrayOfLongsThatDoNotFitIsRefusedWhenItsTurnComes) {
    if (sizeof(long) == 4) return;
    long values[] = {static_cast<long>(1ull << 40)};
    long* pointer = values;
    Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&pointer, 1); });
    EXPECT_FALSE(writer.writeObject(&object, &object));
    EXPECT_EQ(hex(root(0).u8(0x03).u32(3).u32(4).str()), hex(stream.output));
}

#ifdef MORVAQNDS_CHECKED
TEST_F(Writing, CallerErrorsAreFatal) {
    char* none = nullptr;
    EXPECT_EXIT(writer.xdr(&none), testing::KilledBySignal(SIGABRT),
                "^qnBinaryWriter::xdr: the string at 0x[0-9a-f]+ is null\n$");
    EXPECT_EXIT(writer.writeObject(nullptr, nullptr), testing::KilledBySignal(SIGABRT),
                "^qnBinaryWriter::writeObject: the root is null\n$");
    Probe probe;
    Probe* pointer = &probe;
    EXPECT_EXIT(writer.xdr(&pointer, nullptr, Probe::type()), testing::KilledBySignal(SIGABRT),
                "^qnBinaryWriter::xdr: the pointer 0x[0-9a-f]+ comes without its object\n$");
    EXPECT_EXIT(writer.pop(), testing::KilledBySignal(SIGABRT), "^qnBinaryWriter::pop: nothing is queued\n$");
    qnBinaryReader reader(new MemoryStream, 0x1122, 0x33445566, "ieee");
    EXPECT_EXIT(reader.pop(), testing::KilledBySignal(SIGABRT), "^qnBinaryReader::pop: nothing is queued\n$");
}
#else
TEST_F(Writing, ANullStringIsANullPointer) {
    char* none = nullptr;
    EXPECT_EQ(hex(root(0).u8(0x01).str()), hex(graph([&](qnTranscriber& t, Probe&) { return t.xdr(&none); })));
}
#endif

TEST(BinaryWriterDeathTest, AnArrayOfMoreBytesThan32BitsCountIsRefused) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    int one = 1;
    int* ints = &one;
    EXPECT_EXIT(writer.xdr(&ints, 0x40000001), testing::KilledBySignal(SIGABRT),
                "^qnBinaryWriter::xdr: size of 4294967300 bytes exceeds 4294967295\n$");
    double number = 1;
    double* doubles = &number;
    EXPECT_EXIT(writer.xdr(&doubles, 0x20000000), testing::KilledBySignal(SIGABRT),
                "^qnBinaryWriter::xdr: size of 4294967296 bytes exceeds 4294967295\n$");
}

TEST(BinaryWriterDeathTest, ReadingAndImpossibleKindsAreFatal) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_EXIT(writer.readObject(qnStr_type), testing::KilledBySignal(SIGABRT),
                "^tried to invoke qnBinaryWriter::readObject\n$");
    for (unsigned kind : {15u, 16u, 17u, 63u}) {
        writer.pendingKind = kind;
        EXPECT_EXIT(writer.flush(), testing::KilledBySignal(SIGABRT), "^Whoops!\n$");
    }
    writer.pendingKind = 0;
}

TEST(ObjectTable, BehavesAsADictionaryOfWords) {
    qnBinaryOTDict table;
    EXPECT_STREQ("qnBinaryOTDict", table.className());
    EXPECT_EQ(31u, table.buckets.length());
    qnBinaryOTDict::Word key = 0x100, value = 5, other = 6;
    EXPECT_EQ(0x40u, table.hashKey(&key));
    table.addInternal(&key, &value);
    table.addInternal(&key, &other);
    EXPECT_EQ(1u, table.count);
    EXPECT_EQ(6u, *static_cast<qnBinaryOTDict::Word*>(table.find(&key, nullptr)));
    // 0x40 % 31 is 2
    ASSERT_NE(nullptr, table.buckets.elements()[2]);
    table.remove(&key);
    EXPECT_EQ(nullptr, table.find(&key, nullptr));
    EXPECT_EQ(0u, *static_cast<qnBinaryOTDict::Word*>(table.findCreate(&key)));
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_FALSE(table.xdrKey(writer, &key));
    EXPECT_FALSE(table.xdrValue(writer, &value));
    EXPECT_TRUE(writer.flush());
    EXPECT_TRUE(stream.output.empty());
}

TEST(ObjectTable, SeesEntriesThatCameAndWentThroughTheDictionary) {
    qnBinaryOTDict table;
    qnDictionary& dictionary = table;
    for (qnBinaryOTDict::Word key = 1; key <= 100; ++key) {
        *static_cast<qnBinaryOTDict::Word*>(dictionary.findCreate(&key)) = key * 2;
    }
    qnBinaryOTDict::Word key = 50, gone = 60;
    EXPECT_EQ(100u, *static_cast<qnBinaryOTDict::Word*>(table.find(&key, nullptr)));
    dictionary.remove(&gone);
    EXPECT_EQ(nullptr, table.find(&gone, nullptr));
    qnBinaryOTDict copy(table);
    EXPECT_EQ(99u, copy.count);
    EXPECT_EQ(100u, *static_cast<qnBinaryOTDict::Word*>(copy.find(&key, nullptr)));
    table.removeAll();
    EXPECT_EQ(0u, table.count);
    EXPECT_EQ(nullptr, table.find(&key, nullptr));
}

TEST(ObjectTable, TellsAddressesTwoToThe32Apart) {
    if (sizeof(void*) == 4) return;
    qnBinaryOTDict table;
    qnBinaryOTDict::Word low = 0x1000, high = low + (qnBinaryOTDict::Word(1) << 16 << 16), one = 1, two = 2;
    EXPECT_NE(0, table.compareKeys(&low, &high));
    EXPECT_EQ(0x40000400u, table.hashKey(&high));
    table.addInternal(&low, &one);
    table.addInternal(&high, &two);
    EXPECT_EQ(2u, table.count);
    EXPECT_EQ(1u, *static_cast<qnBinaryOTDict::Word*>(table.find(&low, nullptr)));
    EXPECT_EQ(2u, *static_cast<qnBinaryOTDict::Word*>(table.find(&high, nullptr)));
    void* where;
    EXPECT_EQ(2u, *static_cast<qnBinaryOTDict::Word*>(static_cast<qnDictionary&>(table).find(&high, &where)));
}

TEST(ObjectTable, RemovingAllFinishesItsIteratorsAndLeavesItUsable) {
    qnBinaryOTDict table;
    // Hashes 0 to 99 in 31 chains
    for (qnBinaryOTDict::Word key = 0; key < 400; key += 4) table.addInternal(&key, &key);
    qnBinaryOTDictIter first(table), second(table);
    for (int i = 0; i < 50; ++i) ++second;
    table.removeAll();
    EXPECT_EQ(0u, table.count);
    for (unsigned bucket = 0; bucket < 31; ++bucket) EXPECT_EQ(nullptr, table.buckets.elements()[bucket]) << bucket;
    EXPECT_EQ(nullptr, first.dict);
    EXPECT_EQ(nullptr, second.dict);
    qnBinaryOTDict::Word key = 8, value = 5;
    EXPECT_EQ(nullptr, table.find(&key, nullptr));
    table.addInternal(&key, &value);
    EXPECT_EQ(1u, table.count);
    ASSERT_NE(nullptr, table.find(&key, nullptr));
    EXPECT_EQ(5u, *static_cast<const qnBinaryOTDict::Word*>(table.find(&key, nullptr)));
}

TEST(ObjectTable, IteratorsFollowRemoval) {
    qnBinaryOTDict table;
    for (qnBinaryOTDict::Word key = 4; key <= 40; key += 4) table.addInternal(&key, &key);
    unsigned seen = 0;
    for (qnBinaryOTDictIter it(table); it.dict != nullptr; ++it) {
        if (it.getKey() == nullptr) continue;
        ++seen;
        qnBinaryOTDict::Word key = *static_cast<qnBinaryOTDict::Word*>(it.getKey());
        table.remove(&key);
    }
    EXPECT_EQ(10u, seen);
    EXPECT_EQ(0u, table.count);
}

}  // namespace BinaryWriterTest
