#include <gtest/gtest.h>

#include <memory>

#include "BinaryReader.h"
#include "NumberArrays.h"
#include "OrderedGlobal.h"
#include "StackBuffer.h"
#include "Str.h"
#include "StrArray.h"
#include "StrStrDictionary.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace BinaryReaderTest {

/** Reads hand-made records. What the objects do is `body`. */
class Reading : public testing::Test {
protected:
    explicit Reading(short shortMark = 0x1122, long longMark = 0x33445566)
        : stream(new MemoryStream), reader(stream, shortMark, longMark, "ieee") {}
    ~Reading() override {
        Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    }

    Probe* read(
        const Bytes& records, Probe::Body body = [](qnTranscriber&, Probe&) { return true; }) {
        Probe::onRead() = body;
        stream->input += records.str();
        return static_cast<Probe*>(reader.readObject(Probe::type()));
    }
    static Bytes root(unsigned n) { return probeRoot(n); }
    static Bytes instance(unsigned id) { return Bytes().u8(0x0A).u32(id).u32(2).u32(1); }
    bool atEnd() const { return stream->position == stream->input.size(); }

    MemoryStream* stream;
    qnBinaryReader reader;
};

TEST_F(Reading, AFreshReaderReadsNothing) {
    EXPECT_STREQ("qnBinaryReader", reader.className());
    EXPECT_EQ(1, reader.reading);
    EXPECT_EQ(0u, reader.objectTable.count);
    EXPECT_EQ(nullptr, read(Bytes()));
}

TEST_F(Reading, ARootWithoutPointersReadsTypeAndInstanceAndNothingMore) {
    Probe* root1 = read(root(4).u32(77).u8(0xEE), [](qnTranscriber& t, Probe& self) { return t.xdr(&self.number, 1); });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(77, root1->number);
    EXPECT_EQ(stream->input.size() - 1, stream->position);
    EXPECT_EQ(root1, reader.alreadyRead(1));
    EXPECT_EQ(&Probe::type(), reader.alreadyRead(2));
    EXPECT_EQ(nullptr, reader.alreadyRead(3));
    delete root1;
}

TEST_F(Reading, TheRequestedTypeIsNotConsulted) {
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    stream->input = root(0).str();
    Probe* root1 = static_cast<Probe*>(reader.readObject(qnStr_type));
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Reading, SeveralTypeRecordsInARowAreConsumed) {
    Probe* root1 = read(Bytes::type(9, "qnStr") + Bytes::type(8, "ARRAY") + root(0));
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(&qnStr_type, reader.alreadyRead(9));
    EXPECT_EQ(&qnStrArray_type, reader.alreadyRead(8));
    delete root1;
}

TEST_F(Reading, DataGoesOnInFurtherRecordsOfAnyKind) {
    Probe* root1 = read(root(2).raw("ab").u8(0x40).u8(1).u8('c').u8(0x41).u8(1).u8('d'), [](qnTranscriber& t, Probe&) {
        char text[4];
        return t.xdr(text, 4) && std::string(text, 4) == "abcd";
    });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Reading, ValuesOfEverySortAreReadWithTheirSigns) {
    Bytes data = Bytes().u8('c').u8(200).u16(0xFFFE).u16(0xFFFF).u32(0xFFFFFFFD).u32(4000000000u).u32(0xFFFFFFFC);
    data.u32(0xFFFFFFFF).f32(1.5f).f64(-2.5);
    Probe* root1 = read(root(34) + data, [](qnTranscriber& t, Probe&) {
        char c;
        unsigned char b;
        short s;
        unsigned short us;
        int i;
        unsigned u;
        long l;
        unsigned long ul;
        float f;
        double d;
        EXPECT_TRUE(t.xdr(&c, 1) && t.xdr(&b, 1) && t.xdr(&s, 1) && t.xdr(&us, 1) && t.xdr(&i, 1) && t.xdr(&u, 1) &&
                    t.xdr(&l, 1) && t.xdr(&ul, 1) && t.xdr(&f, 1) && t.xdr(&d, 1));
        EXPECT_EQ('c', c);
        EXPECT_EQ(200, b);
        EXPECT_EQ(-2, s);
        EXPECT_EQ(65535, us);
        EXPECT_EQ(-3, i);
        EXPECT_EQ(4000000000u, u);
        EXPECT_EQ(-4, l);
        EXPECT_EQ(4294967295ul, ul);
        EXPECT_EQ(1.5f, f);
        EXPECT_EQ(-2.5, d);
        return true;
    });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Reading, ALongRunOfLongsIsSpread) {
    Bytes records = Bytes::type(2, "Probe").u8(0x8A).u16(512).u32(1).u32(2).u32(1);
    for (unsigned i = 0; i < 128; ++i) records.u32(0u - i);
    records.u8(0x40).u8(8).u32(0x80000000ul).u32(1);
    Probe* root1 = read(records, [](qnTranscriber& t, Probe&) {
        long values[130];
        EXPECT_TRUE(t.xdr(values, 130));
        for (long i = 0; i < 128; ++i) EXPECT_EQ(-i, values[i]);
        EXPECT_EQ(-2147483647L - 1, values[128]);
        EXPECT_EQ(1, values[129]);
        return true;
    });
    delete root1;
}

TEST_F(Reading, ARecordLongerThanTheBufferComesInPieces) {
    std::string data;
    for (unsigned i = 0; i < 70000; ++i) data += static_cast<char>(i * 7);
    Bytes records = Bytes::type(2, "Probe").u8(0xCA).u32(70000).u32(1).u32(2).u32(1).raw(data);
    Probe* root1 = read(records, [&](qnTranscriber& t, Probe&) {
        std::string got(70000, 0);
        return t.xdr(&got[0], 3) && t.xdr(&got[3], 600) && t.xdr(&got[603], 69397) && got == data;
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_TRUE(atEnd());
    delete root1;
}

TEST_F(Reading, TheUnreadRestOfALongRecordIsSkipped) {
    Bytes records = Bytes::type(2, "Probe").u8(0x8A).u16(2000).u32(1).u32(2).u32(1).fill(2000, 'x').u8(0x01);
    Probe* root1 = read(records, [](qnTranscriber& t, Probe& self) {
        char c;
        self.first = &self;
        return t.xdr(&c, 1) && t.xdr(&self.first, nullptr, Probe::type());
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(nullptr, root1->first);
    delete root1;
}

TEST_F(Reading, DataThatGoesOnInATypeRecordEntersTheType) {
    Bytes records = root(1).raw("a") + Bytes().u8(0x42).u8(1).u32(9).name("qnStr").u8('b');
    records.u8(0x4A).u8(1).u32(1).u32(2).u32(3).u8('c').u8(0x4C).u8(1).u32(7).u32(0).u8('d');
    Probe* root1 = read(records, [](qnTranscriber& t, Probe&) {
        char text[4];
        return t.xdr(text, 4) && std::string(text, 4) == "abcd";
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(&qnStr_type, reader.alreadyRead(9));
    delete root1;
}

TEST_F(Reading, EmptyRecordsAmongTheDataArePassedOver) {
    Probe* root1 =
        read(root(1).raw("a").u8(0x00).u8(0x00).u8(0x01).u8(0x40).u8(1).u8('b'), [](qnTranscriber& t, Probe&) {
            char text[2];
            return t.xdr(text, 2) && std::string(text, 2) == "ab";
        });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Reading, FillTakesKindLengthAndPayloadOfEveryKind) {
    Probe::type();
    Bytes records;
    for (unsigned kind = 0; kind <= 14; ++kind) {
        records.u8(0x40 | kind).u8(2);
        if (kind == 2) records.u32(100).name("Probe");
        if (kind >= 3) records.u32(100 + kind).u32(200 + kind);
        if (kind == 10) records.u32(300);
        records.u8(kind).u8('!');
    }
    stream->input = records.str();
    for (unsigned kind = 0; kind <= 14; ++kind) {
        ASSERT_TRUE(reader.fill());
        EXPECT_EQ(kind, reader.pendingKind);
        EXPECT_EQ(2u, reader.bufferCount);
        EXPECT_EQ(reader.buffer, reader.bufferNext);
        EXPECT_EQ(static_cast<char>(kind), reader.buffer[0]);
        EXPECT_EQ('!', reader.buffer[1]);
        if (kind == 2) {
            EXPECT_EQ(100u, reader.pendingTypeId);
        }
        if (kind >= 3) {
            EXPECT_EQ(100 + kind, reader.pendingId);
        }
        if (kind == 3 || (kind >= 5 && kind <= 9)) {
            EXPECT_EQ(200 + kind, reader.pendingByteCount);
        }
        if (kind == 10) {
            EXPECT_EQ(210u, reader.pendingTypeId);
            EXPECT_EQ(300u, reader.pendingVersion);
        }
    }
    EXPECT_TRUE(atEnd());
    EXPECT_FALSE(reader.fill());
    EXPECT_EQ(&Probe::type(), reader.alreadyRead(100));
}

TEST_F(Reading, EverySizeClassGivesItsLength) {
    stream->input =
        Bytes().u8(0).u8(0x40).u8(255).fill(255, 'a').u8(0x80).u16(256).fill(256, 'b').u8(0xC0).u32(3).raw("abc").str();
    for (unsigned length : {0u, 255u, 256u, 3u}) {
        ASSERT_TRUE(reader.fill());
        EXPECT_EQ(length, reader.bufferCount);
    }
    EXPECT_TRUE(atEnd());
}

TEST_F(Reading, FillFailsWhereverTheRecordIsCut) {
    std::string whole = Bytes().u8(0x8A).u16(300).u32(1).u32(2).u32(3).fill(300, 'x').str();
    for (std::size_t n = 0; n < whole.size(); ++n) {
        qnBinaryReader other(new MemoryStream(whole.substr(0, n)), 0x1122, 0x33445566, "ieee");
        EXPECT_FALSE(other.fill()) << n;
        char c;
        EXPECT_FALSE(other.readBytes(&c, 1)) << n;
    }
}

TEST_F(Reading, NoBytesAreReadWithoutTouchingTheStream) {
    EXPECT_TRUE(reader.readBytes(nullptr, 0));
    EXPECT_EQ(0u, stream->position);
}

TEST_F(Reading, ANameEndsAtItsNul) {
    stream->input = std::string("abc\0def", 7);
    qnStackBuffer name;
    EXPECT_TRUE(reader.readName(name));
    EXPECT_STREQ("abc", name.base());
    EXPECT_EQ(4u, name.used());
    EXPECT_FALSE(reader.readName(name));
}

TEST_F(Reading, TheQueueGivesBackTheNewest) {
    int places[2];
    reader.queue(new qnBinaryReaderItem(&places[0], 7));
    reader.queue(new qnBinaryReaderItem(&places[1], 8));
    qnBinaryReaderItem* item = reader.pop();
    EXPECT_EQ(&places[1], item->address);
    EXPECT_EQ(8u, item->id);
    delete item;
    item = reader.pop();
    EXPECT_EQ(7u, item->id);
    delete item;
    EXPECT_EQ(0u, reader.pendingItems.length());
}

TEST_F(Reading, AVariableThatTheProgramQueuesGetsAnObjectOrAnArray) {
    Bytes records = root(0) + instance(4);
    records.u8(0x45).u8(2).u32(3).u32(2).raw("ab");
    Probe* root1 = read(records, [this](qnTranscriber&, Probe& self) {
        if (self.first != nullptr || reader.alreadyRead(4) != nullptr) return true;
        reader.queue(new qnBinaryReaderItem(&self.chars, 3));
        reader.queue(new qnBinaryReaderItem(&self.first, 4));
        return true;
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(reader.alreadyRead(4), root1->first);
    EXPECT_EQ("ab", std::string(root1->chars, 2));
    std::free(root1->chars);
    delete root1->first;
    delete root1;
}

TEST_F(Reading, FormsForIntsReadWhatFormsForLongsRead) {
    for (bool wide : {false, true}) {
        stream->input += Bytes().u8(0x40).u8(12).u32(0xFFFFFFFF).u32(0x7FFFFFFF).u32(0xFFFFFFFF).str();
        int i[2] = {};
        unsigned u = 0;
        long l[2] = {};
        unsigned long ul = 0;
        ASSERT_TRUE(wide ? reader.xdr(l, 2) && reader.xdr(&ul, 1) : reader.xdr(i, 2) && reader.xdr(&u, 1));
        EXPECT_EQ(-1, wide ? l[0] : i[0]);
        EXPECT_EQ(2147483647, wide ? l[1] : i[1]);
        EXPECT_EQ(4294967295ul, wide ? ul : u);
    }
}

// Object pointers. The reader takes two words for kinds 4 and 11 to 14.

TEST_F(Reading, ANewPointerIsPatchedWhenItsObjectArrives) {
    Probe* root1 =
        read(root(0).u8(0x0B).u32(3).u32(0xABAB).u8(0x01) + instance(3).u8(0x01).u8(0x01),
             [](qnTranscriber& t, Probe& self) {
                 self.second = &self;
                 return t.xdr(&self.first, nullptr, Probe::type()) && t.xdr(&self.second, nullptr, Probe::type());
             });
    ASSERT_NE(nullptr, root1);
    ASSERT_NE(nullptr, root1->first);
    EXPECT_EQ(reader.alreadyRead(3), root1->first);
    EXPECT_EQ(nullptr, root1->second);
    EXPECT_TRUE(atEnd());
    delete root1->first;
    delete root1;
}

TEST_F(Reading, AnOldPointerGetsTheKnownObjectAtOnce) {
    Probe* root1 = read(root(0).u8(0x0C).u32(1).u32(0), [](qnTranscriber& t, Probe& self) {
        bool ok = t.xdr(&self.first, nullptr, Probe::type());
        EXPECT_EQ(&self, self.first);
        return ok;
    });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Reading, AnOldPointerToWhatIsStillToComeWaits) {
    bool first = true;
    Probe* root1 = read(root(0).u8(0x0C).u32(3).u32(0) + instance(3), [&](qnTranscriber& t, Probe& self) {
        if (!first) return true;
        first = false;
        return t.xdr(&self.first, nullptr, Probe::type());
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(reader.alreadyRead(3), root1->first);
    delete root1->first;
    delete root1;
}

TEST_F(Reading, APointerWhoseObjectNeverArrivesGivesNull) {
    bool first = true;
    Probe* made = nullptr;
    EXPECT_EQ(nullptr, read(root(0).u8(0x0B).u32(9).u32(0) + instance(3), [&](qnTranscriber& t, Probe& self) {
                  if (!first) {
                      delete made;
                      made = &self;
                      return true;
                  }
                  first = false;
                  made = &self;
                  return t.xdr(&self.first, nullptr, Probe::type());
              }));
    delete made;
}

// Primitive arrays

TEST_F(Reading, AnArrayIsPatchedIntoItsVariableWhenItArrives) {
    Probe* root1 = read(root(0).u8(0x03).u32(3).u32(16).u8(0x49).u8(16).u32(3).u32(16).f64(1.0).f64(2.0),
                        [](qnTranscriber& t, Probe& self) { return t.xdr(&self.doubles, 2); });
    ASSERT_NE(nullptr, root1);
    ASSERT_NE(nullptr, root1->doubles);
    EXPECT_EQ(1.0, root1->doubles[0]);
    EXPECT_EQ(2.0, root1->doubles[1]);
    std::free(root1->doubles);
    delete root1;
}

TEST_F(Reading, ArraysOfTheOtherElementsArriveInTheirVariables) {
    // A pointer record has the id and the bytes; the arrays come in the reverse order.
    Bytes records = root(0).u8(0x03).u32(3).u32(2).u8(0x03).u32(4).u32(4).u8(0x03).u32(5).u32(2);
    records.u8(0x03).u32(6).u32(4).u8(0x03).u32(7).u32(8).u8(0x03).u32(8).u32(3);
    records.u8(0x45).u8(3).u32(8).u32(3).u8('a').u8(0xE9).u8(0);
    records.u8(0x48).u8(8).u32(7).u32(8).f32(0.5f).f32(-2.0f);
    records.u8(0x47).u8(4).u32(6).u32(4).u32(0xFFFFFFFF);
    records.u8(0x46).u8(2).u32(5).u32(2).u16(0xFFFE);
    records.u8(0x46).u8(4).u32(4).u32(4).u16(0xFFFF).u16(7);
    records.u8(0x45).u8(2).u32(3).u32(2).u8(0xFF).u8(1);
    unsigned char* bytes = nullptr;
    short* shorts = nullptr;
    unsigned short* unsignedShorts = nullptr;
    unsigned* unsignedInts = nullptr;
    float* floats = nullptr;
    unsigned char* string = nullptr;
    Probe* root1 = read(records, [&](qnTranscriber& t, Probe&) {
        return t.xdr(&bytes, 2) && t.xdr(&shorts, 2) && t.xdr(&unsignedShorts, 1) && t.xdr(&unsignedInts, 1) &&
               t.xdr(&floats, 2) && t.xdr(&string);
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_TRUE(atEnd());
    EXPECT_EQ(255, bytes[0]);
    EXPECT_EQ(1, bytes[1]);
    EXPECT_EQ(-1, shorts[0]);
    EXPECT_EQ(7, shorts[1]);
    EXPECT_EQ(65534, unsignedShorts[0]);
    EXPECT_EQ(4294967295u, unsignedInts[0]);
    EXPECT_EQ(0.5f, floats[0]);
    EXPECT_EQ(-2.0f, floats[1]);
    EXPECT_EQ('a', string[0]);
    EXPECT_EQ(0xE9, string[1]);
    EXPECT_EQ(0, string[2]);
    for (void* block : {static_cast<void*>(bytes), static_cast<void*>(shorts), static_cast<void*>(unsignedShorts),
                        static_cast<void*>(unsignedInts), static_cast<void*>(floats), static_cast<void*>(string)}) {
        std::free(block);
    }
    delete root1;
}

TEST_F(Reading, ASharedArrayHasOneAddress) {
    Bytes records = root(0).u8(0x03).u32(3).u32(4).u8(0x04).u32(3).u32(0).u8(0x45).u8(4).u32(3).u32(4).raw("wxyz");
    Probe* root1 =
        read(records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.chars, 4) && t.xdr(&self.moreChars, 4); });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(root1->chars, root1->moreChars);
    EXPECT_EQ("wxyz", std::string(root1->chars, 4));
    std::free(root1->chars);
    delete root1;
}

TEST_F(Reading, LongsArriveAsWideAsTheMachineHasThem) {
    Bytes records = root(0).u8(0x03).u32(3).u32(8).u8(0x03).u32(4).u32(4).u8(0x03).u32(5).u32(4);
    records.u8(0x47).u8(4).u32(5).u32(4).u32(0xFFFFFFFF);
    records.u8(0x47).u8(4).u32(4).u32(4).u32(0xFFFFFFFF);
    records.u8(0x47).u8(8).u32(3).u32(8).u32(0xFFFFFFFF).u32(7);
    Probe* root1 = read(records, [](qnTranscriber& t, Probe& self) {
        return t.xdr(&self.longs, 2) && t.xdr(&self.ints, 1) && t.xdr(&self.unsignedLongs, 1);
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(-1, root1->longs[0]);
    EXPECT_EQ(7, root1->longs[1]);
    EXPECT_EQ(-1, root1->ints[0]);
    EXPECT_EQ(4294967295ul, root1->unsignedLongs[0]);
    std::free(root1->longs);
    std::free(root1->ints);
    std::free(root1->unsignedLongs);
    delete root1;
}

TEST_F(Reading, AnArrayThatArrivesBeforeItsPointerIsWidenedForTheFirstThatWantsIt) {
    // The array record stands as the root of a graph of its own.
    stream->input = Bytes().u8(0x47).u8(4).u32(3).u32(4).u32(0xFFFFFFFE).str();
    void* array = reader.readObject(Probe::type());
    EXPECT_EQ(array, reader.alreadyRead(3));
    Probe* root1 =
        read(root(0).u8(0x04).u32(3).u32(0), [](qnTranscriber& t, Probe& self) { return t.xdr(&self.longs, 1); });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(-2, root1->longs[0]);
    EXPECT_EQ(root1->longs, reader.alreadyRead(3));
    std::free(root1->longs);
    delete root1;
}

TEST_F(Reading, AnArrayMayBeSharedByPointersToSeveralTypesOfOneWidth) {
    Bytes records = root(0).u8(0x03).u32(3).u32(8).u8(0x04).u32(3).u32(0).u8(0x04).u32(3).u32(0);
    records.u8(0x47).u8(8).u32(3).u32(8).u32(1).u32(2);
    Probe* root1 = read(records, [](qnTranscriber& t, Probe& self) {
        return t.xdr(&self.ints, 2) && t.xdr(&self.chars, 8) && t.xdr(&self.doubles, 1);
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(1, root1->ints[0]);
    EXPECT_EQ(2, root1->ints[1]);
    EXPECT_EQ(static_cast<void*>(root1->ints), root1->chars);
    EXPECT_EQ(static_cast<void*>(root1->ints), root1->doubles);
    std::free(root1->ints);
    delete root1;
}

TEST_F(Reading, AnArrayMayBeSharedByPointersToLongsAndUnsignedLongs) {
    Bytes records = root(0).u8(0x03).u32(3).u32(8).u8(0x04).u32(3).u32(0);
    records.u8(0x47).u8(8).u32(3).u32(8).u32(1).u32(2);
    Probe* root1 = read(
        records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.longs, 2) && t.xdr(&self.unsignedLongs, 2); });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(1, root1->longs[0]);
    EXPECT_EQ(2, root1->longs[1]);
    EXPECT_EQ(static_cast<void*>(root1->longs), root1->unsignedLongs);
    std::free(root1->longs);
    delete root1;
}

TEST_F(Reading, AnArrayThatComesAgainUnderItsIdLeavesTheFirstToItsHolders) {
    stream->input = Bytes().u8(0x45).u8(4).u32(3).u32(4).raw("abcd").str();
    void* first = reader.readObject(Probe::type());
    bool isRoot = true;
    auto body = [&isRoot](qnTranscriber& t, Probe& self) {
        if (!isRoot) return t.xdr(&self.moreChars, 2);
        isRoot = false;
        return t.xdr(&self.chars, 4) && t.xdr(&self.first, nullptr, Probe::type());
    };
    Bytes records = root(0).u8(0x04).u32(3).u32(0).u8(0x0B).u32(9).u32(0).u8(0x45).u8(2).u32(3).u32(2).raw("ef");
    Probe* root1 = read(records + instance(9).u8(0x04).u32(3).u32(0), body);
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(first, root1->chars);
    EXPECT_EQ("abcd", std::string(root1->chars, 4));
    EXPECT_EQ("ef", std::string(root1->first->moreChars, 2));
    std::free(root1->first->moreChars);
    delete root1->first;
    std::free(root1->chars);
    delete root1;
}

TEST_F(Reading, AnArrayAsRootIsReturned) {
    stream->input = Bytes().u8(0x46).u8(4).u32(3).u32(4).u16(1).u16(2).str();
    short* array = static_cast<short*>(reader.readObject(Probe::type()));
    ASSERT_NE(nullptr, array);
    EXPECT_EQ(2, array[1]);
    std::free(array);
}

TEST_F(Reading, AnArrayOfNothingHasAnAddress) {
    Probe* root1 = read(root(0).u8(0x03).u32(3).u32(0).u8(0x05).u32(3).u32(0),
                        [](qnTranscriber& t, Probe& self) { return t.xdr(&self.chars, 0); });
    ASSERT_NE(nullptr, root1);
    EXPECT_NE(nullptr, root1->chars);
    std::free(root1->chars);
    delete root1;
}

TEST_F(Reading, ALargeArrayGrowsAsItArrives) {
    Bytes records = root(0).u8(0x03).u32(3).u32(200000).u8(0xC6).u32(200000).u32(3).u32(200000);
    for (unsigned i = 0; i < 100000; ++i) records.u16(i);
    Probe* root1 = read(
        records, [](qnTranscriber& t, Probe& self) { return t.xdr(reinterpret_cast<short**>(&self.chars), 100000); });
    ASSERT_NE(nullptr, root1);
    const unsigned short* values = reinterpret_cast<unsigned short*>(root1->chars);
    for (unsigned i = 0; i < 100000; ++i) ASSERT_EQ(static_cast<unsigned short>(i), values[i]);
    std::free(root1->chars);
    delete root1;
}

TEST_F(Reading, AClaimOfFourGigabytesIsNotBelieved) {
    Probe* made = nullptr;
    auto body = [&](qnTranscriber& t, Probe& self) {
        made = &self;
        return t.xdr(&self.chars, 4);
    };
    EXPECT_EQ(
        nullptr,
        read(root(0).u8(0x03).u32(3).u32(0xFFFFFFFF).u8(0xC5).u32(0xFFFFFFF0).u32(3).u32(0xFFFFFFFF).raw("abc"), body));
    delete made;
}

TEST_F(Reading, TerminatedTextIsReadThroughTheStringForms) {
    Probe* root1 = read(root(0).u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3)),
                        [](qnTranscriber& t, Probe& self) { return t.xdr(&self.chars); });
    ASSERT_NE(nullptr, root1);
    EXPECT_STREQ("hi", root1->chars);
    std::free(root1->chars);
    delete root1;
}

// Base parts

struct Base {
    int value = 0;
    static bool xdr(void* object, qnTranscriber& t) { return t.xdr(&static_cast<Base*>(object)->value, 1); }
};
qnTypeObj Base_type("BinaryReaderTest.Base", 1, nullptr, nullptr, Base::xdr);

TEST_F(Reading, ABasePartIsReadOnceAndReferredToAfterwards) {
    Base base;
    Probe* root1 = read(root(0).u8(0x4D).u8(4).u32(3).u32(0).u32(42).u8(0x4E).u8(1).u32(3).u32(0).u8('e'),
                        [&](qnTranscriber& t, Probe& self) {
                            char end = 0;
                            return t.xdr(Base_type, &self, &base) && t.xdr(Base_type, &self, &base) && t.xdr(&end, 1) &&
                                   end == 'e' && t.xdr(Base_type, &self, &self);
                        });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(42, base.value);
    EXPECT_EQ(&base, reader.alreadyRead(3));
    delete root1;
}

// Strings

TEST_F(Reading, StringsAreCompleteWhenTheGraphIs) {
    qnStr* text = nullptr;
    stream->input = (Bytes::type(2, "qnStr")
                         .u8(0x4A)
                         .u8(4)
                         .u32(1)
                         .u32(2)
                         .u32(1)
                         .u32(3)
                         .u8(0x03)
                         .u32(3)
                         .u32(3)
                         .u8(0x45)
                         .u8(3)
                         .u32(3)
                         .u32(3)
                         .raw(std::string("hi\0", 3)))
                        .str();
    text = static_cast<qnStr*>(reader.readObject(qnStr_type));
    ASSERT_NE(nullptr, text);
    EXPECT_TRUE(*text == "hi");
    EXPECT_EQ(text->text(), reader.alreadyRead(3));
    delete text;
}

TEST_F(Reading, TwoStringsOnOneArrayDoNotShareIt) {
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(3).u8(0x04).u32(3).u32(0);
    records.u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3));
    qnStr a, b;
    Probe* root1 = read(records, [&](qnTranscriber& t, Probe&) { return a.xdr(t) && b.xdr(t); });
    ASSERT_NE(nullptr, root1);
    EXPECT_TRUE(a == "hi");
    EXPECT_TRUE(b == "hi");
    EXPECT_NE(a.text(), b.text());
    delete root1;
}

TEST_F(Reading, APointerAndAStringOnOneArrayDoNotShareIt) {
    Bytes records = root(4).u32(3).u8(0x03).u32(3).u32(3).u8(0x04).u32(3).u32(0).u8(0x04).u32(3).u32(0);
    records.u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3));
    qnStr a;
    Probe* root1 = read(records, [&](qnTranscriber& t, Probe& self) {
        return a.xdr(t) && t.xdr(&self.chars, 3) && t.xdr(&self.moreChars, 3);
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_TRUE(a == "hi");
    EXPECT_STREQ("hi", root1->chars);
    EXPECT_EQ(root1->chars, root1->moreChars);
    EXPECT_NE(a.text(), root1->chars);
    std::free(root1->chars);
    delete root1;
}

TEST_F(Reading, ReadingIntoAStringReleasesWhatItHad) {
    qnStr a("something else"), b("more");
    Probe* root1 = read(root(8).u32(1).u32(1), [&](qnTranscriber& t, Probe&) { return a.xdr(t) && b.xdr(t); });
    EXPECT_EQ(&qnStr::emptyString, a.text());
    EXPECT_EQ(0u, b.length());
    delete root1;
}

// Several graphs

TEST_F(Reading, WithoutResetASecondGraphKnowsTheFirst) {
    Probe* root1 = read(root(0));
    Probe* root2 = read(instance(3).u8(0x0C).u32(1).u32(0),
                        [](qnTranscriber& t, Probe& self) { return t.xdr(&self.first, nullptr, Probe::type()); });
    ASSERT_NE(nullptr, root2);
    EXPECT_EQ(root1, root2->first);
    delete root2;
    delete root1;
}

TEST_F(Reading, ResetForgetsObjectsTypesAndWaitingVariables) {
    Probe* made = nullptr;
    EXPECT_EQ(nullptr, read(root(0).u8(0x0B).u32(9).u32(0).u8(0x0B).u32(8).u32(0), [&](qnTranscriber& t, Probe& self) {
                  made = &self;
                  return t.xdr(&self.first, nullptr, Probe::type()) && t.xdr(&self.second, nullptr, Probe::type());
              }));
    EXPECT_EQ(1u, reader.pendingItems.length());
    EXPECT_EQ(made, reader.alreadyRead(1));
    reader.reset();
    EXPECT_EQ(0u, reader.pendingItems.length());
    EXPECT_EQ(0u, reader.objectTable.count);
    EXPECT_EQ(nullptr, reader.alreadyRead(1));
    delete made;
    Probe* root1 = read(root(0));
    ASSERT_NE(nullptr, root1);
    delete root1;
}

// The input ends

TEST_F(Reading, AStreamThatEndsBeforeTheInstanceGivesNull) {
    std::string whole = root(0).str();
    for (std::size_t n = 0; n < whole.size(); ++n) {
        qnBinaryReader other(new MemoryStream(whole.substr(0, n)), 0x1122, 0x33445566, "ieee");
        EXPECT_EQ(nullptr, other.readObject(Probe::type())) << n;
    }
}

/** The records of a root with one string of five characters, up to where the text should come. */
Bytes textToCome(Bytes root) { return root.u32(6).u8(0x03).u32(3).u32(6); }

TEST_F(Reading, AStringWhoseTextNeverArrivesIsEmptyAfterwards) {
    qnStr a("before");
    unsigned during = 0;
    EXPECT_EQ(nullptr, read(textToCome(root(4)), [&](qnTranscriber& t, Probe& self) {
                  std::unique_ptr<Probe> mine(&self);
                  bool good = a.xdr(t);
                  during = a.length();
                  return good;
              }));
    EXPECT_EQ(5u, during) << "while the reading goes on, the text is thought to come";
    EXPECT_EQ(1u, a.slength);
    EXPECT_EQ(&qnStr::emptyString, a.text());
    a.append("new");
    EXPECT_STREQ("new", a.text());
    reader.reset();
    EXPECT_STREQ("new", a.text()) << "nothing waits for it any more";
}

TEST_F(Reading, StringsThatWaitBehindAnotherOneAreEmptyAfterwardsToo) {
    Bytes records = root(4).u32(6).u8(0x43).u8(4).u32(3).u32(6).u32(9).u8(0x03).u32(4).u32(9);
    qnStr a, b;
    EXPECT_EQ(nullptr, read(records, [&](qnTranscriber& t, Probe& self) {
                  std::unique_ptr<Probe> mine(&self);
                  return a.xdr(t) && b.xdr(t);
              }));
    EXPECT_EQ(1u, a.slength);
    EXPECT_EQ(1u, b.slength);
}

TEST_F(Reading, AStringThatWasGivenUpIsCompletedWhenItsTextArrivesAfterAll) {
    qnStr a, b;
    Probe* first = nullptr;
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(3).u8(0x03).u32(4).u32(3);
    EXPECT_EQ(nullptr, read(records, [&](qnTranscriber& t, Probe& self) {
                  first = &self;
                  return a.xdr(t) && b.xdr(t);
              }));
    // The item that was looked for last has gone; the string behind it waits on.
    EXPECT_EQ(1u, a.slength);
    Probe* second = read(instance(5) + Bytes().u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3)));
    ASSERT_NE(nullptr, second);
    EXPECT_TRUE(a == "hi");
    EXPECT_EQ(1u, b.slength);
    delete first;
    delete second;
}

TEST_F(Reading, ResetInTheMiddleEmptiesTheStringsThatWait) {
    qnStr a;
    Probe* root1 = read(textToCome(root(4)), [&](qnTranscriber& t, Probe&) {
        bool good = a.xdr(t);
        t.reset();
        return good;
    });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ(1u, a.slength);
    EXPECT_EQ(&qnStr::emptyString, a.text());
    delete root1;
}

TEST_F(Reading, AnArrayThatIsCutShortGivesNull) {
    std::string whole = Bytes().u8(0x45).u8(3).u32(3).u32(3).raw("abc").str();
    for (std::size_t n = 0; n < whole.size(); ++n) {
        qnBinaryReader other(new MemoryStream(whole.substr(0, n)), 0x1122, 0x33445566, "ieee");
        EXPECT_EQ(nullptr, other.readObject(Probe::type())) << n;
    }
}

// Containers

TEST_F(Reading, AStringArrayOfNoStringsHasNoBlock) {
    qnStrArray array;
    Probe* root1 = read(root(6).u32(0).u16(8), [&](qnTranscriber& t, Probe&) { return array.xdr(t); });
    EXPECT_EQ(nullptr, array.data);
    EXPECT_EQ(0u, array.length());
    delete root1;
}

TEST_F(Reading, AStringArrayThatGrowsWhileItsTextsAreStillToComeIsPatched) {
    const unsigned n = 10000;
    Bytes head = Bytes::type(2, "ARRAY").u8(0x4A).u8(10).u32(1).u32(2).u32(1).u32(8 * n).u16(8).u32(2);
    for (unsigned i = 0; i < n; ++i) {
        if (i + 1 < n) {
            head.u8(0x43).u8(4).u32(3 + i).u32(2).u32(2);
        } else {
            head.u8(0x03).u32(3 + i).u32(2);
        }
    }
    for (unsigned i = n; i > 0; --i) head.u8(0x45).u8(2).u32(2 + i).u32(2).u8('a' + i % 26).u8(0);
    stream->input = head.str();
    qnStrArray* array = static_cast<qnStrArray*>(reader.readObject(qnStrArray_type));
    ASSERT_NE(nullptr, array);
    ASSERT_EQ(n, array->length());
    EXPECT_EQ(array->usedBytes, array->maxBytes);
    for (unsigned i = 0; i < n; ++i) {
        ASSERT_EQ(1u, array->elements()[i].length());
        ASSERT_EQ(static_cast<char>('a' + (i + 1) % 26), array->elements()[i].text()[0]);
    }
    delete array;
}

TEST_F(Reading, ALargeNumberArrayGrowsAsItArrives) {
    const unsigned n = 50000;
    Bytes records = Bytes::type(2, "Probe").u8(0xCA).u32(6 + 4 * n).u32(1).u32(2).u32(1).u32(4 * n).u16(4);
    for (unsigned i = 0; i < n; ++i) records.u32(i);
    qnLongArray array;
    Probe* root1 = read(records, [&](qnTranscriber& t, Probe&) { return array.xdr(t); });
    ASSERT_EQ(n, array.length());
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(static_cast<long>(i), array.elements()[i]);
    EXPECT_EQ(array.usedBytes, array.maxBytes);
    delete root1;
}

TEST_F(Reading, ADictionaryIsReadWithItsChainsReversed) {
    Bytes records = Bytes::type(2, "DICT").u8(0x4A).u8(20).u32(1).u32(2).u32(1).u32(2).u32(8).u32(8).u32(4).u32(2);
    records.u8(0x43).u8(12).u32(3).u32(2).u32(1).u32(3).u32(2).u8(0x43).u8(8).u32(4).u32(2).u32(1).u32(3);
    records.u8(0x45).u8(2).u32(4).u32(2).u8('b').u8(0).u8(0x45).u8(2).u32(3).u32(2).u8('a').u8(0);
    stream->input = records.str();
    qnStrStrDictionary* dictionary = static_cast<qnStrStrDictionary*>(reader.readObject(qnStrStrDictionary_type));
    ASSERT_NE(nullptr, dictionary);
    EXPECT_EQ(2u, dictionary->count);
    ASSERT_EQ(4u, dictionary->buckets.length());
    // Deliberate: the bucket is the one in the stream, whatever the hash says.
    qnDictBucket* link = dictionary->buckets.elements()[3];
    ASSERT_NE(nullptr, link);
    EXPECT_TRUE(*reinterpret_cast<qnStr*>(link->entry) == "b");
    ASSERT_NE(nullptr, link->next);
    EXPECT_TRUE(*reinterpret_cast<qnStr*>(link->next->entry) == "a");
    delete dictionary;
}

// Byte orders. The records' own numbers are in this machine's order; only values are rearranged.

class Swapping : public Reading {
protected:
    Swapping() : Reading(0x2211, 0x66554433) {}
};

TEST_F(Swapping, ShortsAreSwappedAndLongsReversedAndFloatingPointIsCopied) {
    Bytes data =
        Bytes().raw(std::string("\x00\x01\xFF\xFE", 4)).raw(std::string("\x00\x00\x00\x02\xFF\xFF\xFF\xFE", 8));
    data.f32(1.5f).f64(-2.5);
    // Read as the other order has them: on this machine the swapped units give these values.
    Probe* root1 = read(root(24) + data, [](qnTranscriber& t, Probe&) {
        unsigned char shorts[4], longs[8];
        short s[2];
        int i[2];
        float f;
        double d;
        EXPECT_TRUE(t.xdr(s, 2) && t.xdr(i, 2) && t.xdr(&f, 1) && t.xdr(&d, 1));
        std::memcpy(shorts, s, 4);
        std::memcpy(longs, i, 8);
        EXPECT_EQ(0x01, shorts[0]);
        EXPECT_EQ(0x00, shorts[1]);
        EXPECT_EQ(0xFE, shorts[2]);
        EXPECT_EQ(0xFF, shorts[3]);
        EXPECT_EQ(0x02, longs[0]);
        EXPECT_EQ(0x00, longs[3]);
        EXPECT_EQ(0xFE, longs[4]);
        EXPECT_EQ(0xFF, longs[7]);
        EXPECT_EQ(1.5f, f);
        EXPECT_EQ(-2.5, d);
        return true;
    });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Swapping, LongsAreReversedAndThenExtended) {
    std::string minusTwo = Bytes().u32(0xFFFFFFFE).str();
    std::string reversed(minusTwo.rbegin(), minusTwo.rend());
    Probe* root1 = read(root(8).raw(reversed).raw(reversed), [](qnTranscriber& t, Probe&) {
        long l;
        unsigned long ul;
        return t.xdr(&l, 1) && t.xdr(&ul, 1) && l == -2 && ul == 4294967294ul;
    });
    ASSERT_NE(nullptr, root1);
    delete root1;
}

TEST_F(Swapping, ABlockThatIsNoMultipleOfTheUnitKeepsItsRest) {
    Bytes records = root(0).u8(0x03).u32(3).u32(5).u8(0x46).u8(5).u32(3).u32(5).raw("abcde");
    records.u8(0x47).u8(7).u32(4).u32(7).raw("ABCDEFG");
    Probe* root1 = read(records, [](qnTranscriber& t, Probe& self) { return t.xdr(&self.chars, 5); });
    ASSERT_NE(nullptr, root1);
    EXPECT_EQ("badce", std::string(root1->chars, 5));
    char* longs = static_cast<char*>(reader.readObject(Probe::type()));
    ASSERT_NE(nullptr, longs);
    EXPECT_EQ("DCBAEFG", std::string(longs, 7));
    std::free(longs);
    std::free(root1->chars);
    delete root1;
}

TEST(ConversionFunctions, RearrangeAsStated) {
    auto convert = [](qnBinaryReaderFunc function) {
        MemoryStream* stream = new MemoryStream(Bytes().u8(0x40).u8(8).raw(std::string("\0\1\2\3\4\5\6\7", 8)).str());
        qnBinaryReader reader(stream, 0x1122, 0x33445566, "ieee");
        std::string got(8, 'x');
        EXPECT_TRUE(function(reader, &got[0], 8));
        return got;
    };
    const std::string plain("\0\1\2\3\4\5\6\7", 8);
    EXPECT_EQ(plain, convert(qnBinaryReader_shorts));
    EXPECT_EQ(plain, convert(qnBinaryReader_longs));
    EXPECT_EQ(plain, convert(qnBinaryReader_floats));
    EXPECT_EQ(plain, convert(qnBinaryReader_doubles));
    EXPECT_EQ(std::string("\1\0\3\2\5\4\7\6", 8), convert(qnBinaryReader_BS));
    EXPECT_EQ(std::string("\2\3\0\1\6\7\4\5", 8), convert(qnBinaryReader_longsSS));
    EXPECT_EQ(std::string("\3\2\1\0\7\6\5\4", 8), convert(qnBinaryReader_longsBSSS));
}

TEST(ConversionFunctions, AreChosenByTheMarks) {
    auto make = [](short shortMark, long longMark) {
        return new qnBinaryReader(new MemoryStream, shortMark, longMark, "ieee");
    };
    struct {
        long mark;
        qnBinaryReaderFunc function;
    } const rows[] = {{0x33445566, qnBinaryReader_longs},
                      {0x44336655, qnBinaryReader_BS},
                      {0x55663344, qnBinaryReader_longsSS},
                      {0x66554433, qnBinaryReader_longsBSSS}};
    for (auto& row : rows) {
        qnBinaryReader* reader = make(0x1122, row.mark);
        EXPECT_EQ(row.function, reader->longsReader);
        EXPECT_EQ(&qnBinaryReader_shorts, reader->shortsReader);
        EXPECT_EQ(&qnBinaryReader_floats, reader->floatsReader);
        EXPECT_EQ(&qnBinaryReader_doubles, reader->doublesReader);
        delete reader;
    }
    qnBinaryReader* reader = make(8721, 0x33445566);
    EXPECT_EQ(&qnBinaryReader_BS, reader->shortsReader);
    delete reader;
}

}  // namespace BinaryReaderTest
