// Streams that lie: each ends the process with a message of the reader, or the read with null, and never otherwise.
#include <gtest/gtest.h>

#include <climits>

#include "BinaryReader.h"
#include "Fatal.h"
#include "NumberArrays.h"
#include "Str.h"
#include "StrArray.h"
#include "StrStrDictionary.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace BinaryReaderFatalTest {

bool nothing(qnTranscriber&, Probe&) { return true; }
bool objectPointer(qnTranscriber& t, Probe& self) { return t.xdr(&self.first, nullptr, Probe::type()); }
bool fourChars(qnTranscriber& t, Probe& self) { return t.xdr(&self.chars, 4); }
bool text(qnTranscriber& t, Probe& self) { return t.xdr(&self.chars); }
bool string(qnTranscriber& t, Probe&) { return (new qnStr)->xdr(t); }

/** Reads a graph; for death tests. */
void read(const Bytes& records, Probe::Body body = nothing, short shortMark = 0x1122) {
    Probe::type();
    Probe::onRead() = body;
    qnBinaryReader reader(new MemoryStream(records.str()), shortMark, 0x33445566, "ieee");
    reader.readObject(Probe::type());
}

Bytes root(unsigned n = 0) {
    Bytes bytes = Bytes::type(2, "Probe");
    if (n == 0) return bytes.u8(0x0A).u32(1).u32(2).u32(1);
    return bytes.u8(0x4A).u8(n).u32(1).u32(2).u32(1);
}

#define EXPECT_FATAL(statement, message) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), "^" message "\n$")

TEST(BinaryReaderDeathTest, UnknownShortOrderingShowsTheLongMark) {
    // Deliberate: it is the other mark that is printed.
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1123, 0x12345678, "ieee"),
                 "qnBinaryReader: unknown short ordering 12345678");
}

TEST(BinaryReaderDeathTest, MarksArePrintedAs32Bits) {
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 1, -2, "ieee"), "qnBinaryReader: unknown short ordering fffffffe");
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1122, -2, "ieee"),
                 "qnBinaryReader: unknown long ordering fffffffe");
}

TEST(BinaryReaderDeathTest, UnknownLongOrdering) {
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1122, 0x33445567, "ieee"),
                 "qnBinaryReader: unknown long ordering 33445567");
}

#if LONG_MAX > 0x7FFFFFFF
TEST(BinaryReaderDeathTest, NoBitOfTheLongMarkMayDiffer) {
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1122, 0x133445566, "ieee"),
                 "qnBinaryReader: unknown long ordering 33445566");
}
#endif

TEST(BinaryReaderDeathTest, FloatFormatMustBeIeeeToTheLetter) {
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1122, 0x33445566, "IEEE"),
                 "qnBinaryReader: unsupported floating point format IEEE");
    EXPECT_FATAL(qnBinaryReader(new MemoryStream, 0x1122, 0x33445566, ""),
                 "qnBinaryReader: unsupported floating point format ");
}

TEST(BinaryReaderDeathTest, VaxFormsAreNotImplementedAndShareOneMessage) {
    qnBinaryReader reader(new MemoryStream, 0x1122, 0x33445566, "ieee");
    EXPECT_FATAL(qnBinaryReader_floatsVAX(reader, nullptr, 0), "qnBinaryReader_floatsVAX: not implemented");
    EXPECT_FATAL(qnBinaryReader_doublesVAX(reader, nullptr, 0), "qnBinaryReader_floatsVAX: not implemented");
}

TEST(BinaryReaderDeathTest, WritingIsRefused) {
    qnBinaryReader reader(new MemoryStream, 0x1122, 0x33445566, "ieee");
    EXPECT_FATAL(reader.writeObject(nullptr, nullptr), "tried to invoke qnBinaryReader::writeObject");
}

TEST(BinaryReaderDeathTest, UnknownKinds) {
    for (unsigned kind : {15u, 16u, 17u, 62u, 63u}) EXPECT_FATAL(read(Bytes().u8(kind)), "Whoops!");
    EXPECT_FATAL(read(Bytes().u8(0x4F).u8(1)), "Whoops!");
}

TEST(BinaryReaderDeathTest, UnknownTypes) {
    EXPECT_FATAL(read(Bytes::type(2, "NoSuchType")), "unknown type NoSuchType");
    EXPECT_FATAL(read(Bytes::type(2, "")), "unknown type ");
}

TEST(BinaryReaderDeathTest, RootsThatAreNoInstances) {
    for (unsigned kind : {0u, 1u}) EXPECT_FATAL(read(Bytes().u8(kind)), "XXX baddest news");
    for (unsigned kind : {3u, 4u, 11u, 12u, 13u, 14u}) {
        EXPECT_FATAL(read(Bytes().u8(kind).u32(1).u32(1)), "XXX baddest news");
    }
}

TEST(BinaryReaderDeathTest, AnotherVersion) {
    EXPECT_FATAL(read(Bytes::type(2, "Probe").u8(0x0A).u32(1).u32(2).u32(2)), "XXX version error handling is missing");
}

TEST(BinaryReaderDeathTest, AnInstanceThatCannotBeReadToItsEnd) {
    EXPECT_FATAL(read(root(), objectPointer), "XXX error handling is missing");
    EXPECT_FATAL(read(root(), [](qnTranscriber&, Probe&) { return false; }), "XXX error handling is missing");
}

TEST(BinaryReaderDeathTest, TypeIdsThatNameNothingAnObjectAnArrayOrABase) {
    EXPECT_FATAL(read(Bytes().u8(0x0A).u32(1).u32(7).u32(1)), "XXX baddest news");
    EXPECT_FATAL(read(root().u8(0x0B).u32(3).u32(0).u8(0x0A).u32(3).u32(1).u32(1), objectPointer), "XXX baddest news");
    EXPECT_FATAL(
        read(root().u8(0x0B).u32(3).u32(0).u8(0x45).u8(4).u32(9).u32(4).raw("wxyz").u8(0x0A).u32(3).u32(9).u32(1),
             objectPointer),
        "XXX baddest news");
}

TEST(BinaryReaderDeathTest, ATypeIdThatAnObjectOverwrote) {
    // The instance takes the id of its own type; the next instance finds no type there.
    EXPECT_FATAL(
        read(Bytes::type(2, "Probe").u8(0x0A).u32(2).u32(2).u32(1).u8(0x0B).u32(3).u32(0).u8(0x0A).u32(3).u32(2).u32(1),
             objectPointer),
        "XXX baddest news");
}

TEST(BinaryReaderDeathTest, TypesThatCannotBeMade) {
    EXPECT_FATAL(read(Bytes::type(2, "qnArray").u8(0x0A).u32(1).u32(2).u32(1)), "XXX baddest news");
    EXPECT_FATAL(read(Bytes::type(2, "qnDictionary").u8(0x0A).u32(1).u32(2).u32(1)), "XXX baddest news");
}

TEST(BinaryReaderDeathTest, TypesThatCannotBeRead) {
    static qnTypeObj unreadable("BinaryReaderFatalTest.Unreadable", 1, Probe::newInstance, Probe::deleteInstance,
                                nullptr);
    EXPECT_FATAL(read(Bytes::type(2, unreadable.name).u8(0x0A).u32(1).u32(2).u32(1)), "XXX baddest news");
}

TEST(BinaryReaderDeathTest, TypesWhoseFactoryMakesNothing) {
    static qnTypeObj barren(
        "BinaryReaderFatalTest.Barren", 1, [](qnTypeObj&) -> void* { return nullptr; }, nullptr, Probe::xdr);
    EXPECT_FATAL(read(Bytes::type(2, barren.name).u8(0x0A).u32(1).u32(2).u32(1)), "XXX baddest news");
}

TEST(BinaryReaderDeathTest, RecordsThatAreNoObjectPointers) {
    for (unsigned kind : {0u, 3u, 4u, 10u, 13u, 14u}) {
        EXPECT_FATAL(read(root().u8(kind).u32(1).u32(1).u32(1), objectPointer), "XXX bad news!");
    }
    // A type record too, although the writer puts one there for a type it meets first through a pointer.
    EXPECT_FATAL(read(root() + Bytes::type(3, "qnStr").u8(0x0B).u32(4).u32(0), objectPointer), "XXX bad news!");
}

TEST(BinaryReaderDeathTest, ObjectPointersToTypesAndArrays) {
    EXPECT_FATAL(read(root().u8(0x0C).u32(2).u32(0), objectPointer), "XXX bad news!");
    EXPECT_FATAL(read(root().u8(0x0B).u32(2).u32(0), objectPointer), "XXX bad news!");
    EXPECT_FATAL(read(root().u8(0x0B).u32(3).u32(0).u8(0x45).u8(4).u32(3).u32(4).raw("wxyz"), objectPointer),
                 "XXX bad news!");
}

TEST(BinaryReaderDeathTest, RecordsThatAreNoArrayPointers) {
    for (unsigned kind : {0u, 5u, 10u, 11u, 12u, 13u, 14u}) {
        EXPECT_FATAL(read(root().u8(kind).u32(1).u32(1).u32(1), fourChars), "format error");
    }
}

TEST(BinaryReaderDeathTest, ANullPrimitivePointerCannotBeReadBack) {
    // Deliberate: the writer writes it, the reader has no place for it.
    EXPECT_FATAL(read(root().u8(0x01), fourChars), "format error");
    EXPECT_FATAL(read(root().u8(0x01), text), "format error");
}

TEST(BinaryReaderDeathTest, ArrayPointersToTypesAndObjects) {
    EXPECT_FATAL(read(root().u8(0x04).u32(2).u32(0), fourChars), "format error");
    EXPECT_FATAL(read(root().u8(0x04).u32(1).u32(0), fourChars), "format error");
    EXPECT_FATAL(read(root().u8(0x03).u32(1).u32(4), fourChars), "format error");
}

TEST(BinaryReaderDeathTest, ArraysShorterThanTheirVariableExpects) {
    EXPECT_FATAL(read(root().u8(0x03).u32(3).u32(4).u8(0x45).u8(3).u32(3).u32(3).raw("abc"), fourChars),
                 "format error");
}

TEST(BinaryReaderDeathTest, ArraysOfMoreBytesThan32BitsCount) {
    // The count is the stream's, and its bytes would wrap to 4.
    auto ints = [](qnTranscriber& t, Probe& self) {
        return t.xdr(&self.number, 1) && t.xdr(&self.ints, static_cast<unsigned>(self.number));
    };
    auto longs = [](qnTranscriber& t, Probe& self) {
        return t.xdr(&self.number, 1) && t.xdr(&self.longs, static_cast<unsigned>(self.number));
    };
    auto doubles = [](qnTranscriber& t, Probe& self) {
        return t.xdr(&self.number, 1) && t.xdr(&self.doubles, static_cast<unsigned>(self.number));
    };
    Bytes four = Bytes().u8(0x03).u32(3).u32(4).u8(0x47).u8(4).u32(3).u32(4).u32(7);
    EXPECT_FATAL(read(root(4).u32(0x40000001) + four, ints), "format error");
    EXPECT_FATAL(read(root(4).u32(0x40000001) + four, longs), "format error");
    EXPECT_FATAL(read(root(4).u32(0x20000000) + four, doubles), "format error");
    // One element less, and it is the array that is too short.
    EXPECT_FATAL(read(root(4).u32(0x3FFFFFFF) + four, ints), "format error");
    EXPECT_FATAL(read(root(4).u32(0x3FFFFFFF) + four, longs), "format error");
}

TEST(BinaryReaderDeathTest, TextWithoutItsEnd) {
    EXPECT_FATAL(read(root().u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw("abc"), text), "format error");
    EXPECT_FATAL(read(root().u8(0x03).u32(3).u32(0).u8(0x05).u32(3).u32(0), text), "format error");
}

TEST(BinaryReaderDeathTest, StringsWithoutLengthEndOrEnoughText) {
    EXPECT_FATAL(read(root(4).u32(0), string), "format error");
    EXPECT_FATAL(
        read(root(4).u32(4).u8(0x03).u32(3).u32(4).u8(0x45).u8(3).u32(3).u32(3).raw(std::string("ab\0", 3)), string),
        "format error");
    EXPECT_FATAL(read(root(4).u32(3).u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw("abc"), string),
                 "format error");
    EXPECT_FATAL(read(root(4).u32(0xFFFFFFFF).u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw("abc"), string),
                 "format error");
}

TEST(BinaryReaderDeathTest, TheTextOfAnEarlierGraphsString) {
    Probe::type();
    auto twice = [] {
        Bytes first = root(4).u32(3).u8(0x03).u32(3).u32(3).u8(0x45).u8(3).u32(3).u32(3).raw(std::string("hi\0", 3));
        Bytes second = Bytes().u8(0x4A).u8(4).u32(4).u32(2).u32(1).u32(3).u8(0x04).u32(3).u32(0);
        Probe::onRead() = string;
        qnBinaryReader reader(new MemoryStream((first + second).str()), 0x1122, 0x33445566, "ieee");
        if (reader.readObject(Probe::type()) != nullptr) reader.readObject(Probe::type());
    };
    EXPECT_FATAL(twice(), "format error");
}

TEST(BinaryReaderDeathTest, AnArrayThatIsWantedByIntsAndByLongs) {
    auto both = [](qnTranscriber& t, Probe& self) { return t.xdr(&self.ints, 1) && t.xdr(&self.longs, 1); };
    Bytes waiting = root().u8(0x03).u32(3).u32(4).u8(0x04).u32(3).u32(0).u8(0x47).u8(4).u32(3).u32(4).u32(7);
    Bytes known = Bytes().u8(0x47).u8(4).u32(3).u32(4).u32(7);
    auto readKnown = [&] {
        Probe::onRead() = both;
        Bytes records = known + root().u8(0x04).u32(3).u32(0).u8(0x04).u32(3).u32(0);
        qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
        reader.readObject(Probe::type());
        Probe* object = static_cast<Probe*>(reader.readObject(Probe::type()));
        if (reinterpret_cast<void*>(object->ints) == object->longs) qnFatal("shared");
    };
    if (sizeof(int) == sizeof(long)) {
        EXPECT_FATAL(readKnown(), "shared");
    } else {
        EXPECT_FATAL(read(waiting, both), "format error");
        EXPECT_FATAL(readKnown(), "format error");
    }
}

struct Base {
    static bool xdr(void*, qnTranscriber&) { return true; }
};
qnTypeObj Base_type("BinaryReaderFatalTest.Base", 1, nullptr, nullptr, Base::xdr);

TEST(BinaryReaderDeathTest, BaseParts) {
    static Base base;
    auto part = [](qnTranscriber& t, Probe& self) { return t.xdr(Base_type, &self, &base); };
    EXPECT_FATAL(read(root().u8(0x0D).u32(1).u32(0), part), "XXX new base for old base");
    EXPECT_FATAL(read(root().u8(0x0E).u32(9).u32(0), part), "XXX old base previously unseen");
    for (unsigned kind : {0u, 1u, 3u, 4u, 10u, 11u, 12u}) {
        EXPECT_FATAL(read(root().u8(kind).u32(1).u32(1).u32(1), part), "XXX bad news!");
    }
}

// Containers whose numbers are not theirs

template <class Array>
bool intoArray(qnTranscriber& t, Probe&) {
    Array array;
    return array.xdr(t);
}

TEST(BinaryReaderDeathTest, ArraysWithAnotherElementSizeOrHalfElements) {
    EXPECT_FATAL(read(root(6).u32(8).u16(2), intoArray<qnIntArray>), "format error");
    EXPECT_FATAL(read(root(6).u32(0).u16(0), intoArray<qnIntArray>), "format error");
    EXPECT_FATAL(read(root(6).u32(7).u16(4), intoArray<qnIntArray>), "format error");
    EXPECT_FATAL(read(root(6).u32(8).u16(16), intoArray<qnStrArray>), "format error");
    EXPECT_FATAL(read(root(6).u32(12).u16(8), intoArray<qnStrArray>), "format error");
    // A number array that was written under the shared name is read as a string array.
    EXPECT_FATAL(read(Bytes::type(2, "ARRAY").u8(0x4A).u8(10).u32(1).u32(2).u32(1).u32(4).u16(4).u32(7)),
                 "format error");
}

TEST(BinaryReaderDeathTest, ArraysThatClaimFourGigabytesEndWithTheInput) {
    // The instance fails, and so the graph.
    EXPECT_FATAL(read(root(10).u32(0xFFFFFFFC).u16(4).u32(7), intoArray<qnIntArray>), "XXX error handling is missing");
    EXPECT_FATAL(read(root(10).u32(0x7FFFFFF8).u16(8).u32(1), intoArray<qnStrArray>), "XXX error handling is missing");
    EXPECT_FATAL(read(root(6).u32(0xFFFFFFF8).u16(8), intoArray<qnDoubleArray>), "XXX error handling is missing");
}

bool intoDictionary(qnTranscriber& t, Probe&) {
    qnStrStrDictionary dictionary;
    return dictionary.xdr(t);
}

TEST(BinaryReaderDeathTest, DictionariesWithOtherRecordsOrImpossibleTables) {
    EXPECT_FATAL(read(root(16).u32(0).u32(16).u32(8).u32(4), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0).u32(8).u32(4).u32(4), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0).u32(8).u32(8).u32(0xFFFFFFFF), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0).u32(8).u32(8).u32(0x40000001), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0xFFFFFFFF).u32(8).u32(8).u32(0x40000001), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0).u32(8).u32(8).u32((1u << 20) + 64), intoDictionary), "format error");
    EXPECT_FATAL(read(root(28).u32(1).u32(8).u32(8).u32(4).u32(1).u32(1).u32(4), intoDictionary), "format error");
    EXPECT_FATAL(read(root(28).u32(1).u32(8).u32(8).u32(0).u32(1).u32(1).u32(0), intoDictionary), "format error");
    EXPECT_FATAL(read(root(16).u32(0xFFFFFFFF).u32(8).u32(8).u32(31), intoDictionary), "XXX error handling is missing");
}

// Empty tables of a million buckets are read one after another; each is gone before the next.
bool thirtyTwoTables(qnTranscriber& t, Probe&) {
    for (unsigned i = 0; i < 32; ++i) {
        qnStrStrDictionary dictionary;
        if (!dictionary.xdr(t)) return false;
    }
    return true;
}

Bytes tables(unsigned n) {
    Bytes bytes;
    for (unsigned i = 0; i < n; ++i) bytes.u8(0x40).u8(16).u32(0).u32(8).u32(8).u32(1u << 20);
    return bytes;
}

TEST(BinaryReader, EveryGraphMayHaveThirtyTwoEmptyTablesOfAMillionBuckets) {
    Probe::type();
    Probe::onRead() = thirtyTwoTables;
    Bytes records = root() + tables(32).u8(0x0A).u32(3).u32(2).u32(1) + tables(32);
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    for (int graph = 0; graph < 2; ++graph) {
        Probe* object = static_cast<Probe*>(reader.readObject(Probe::type()));
        EXPECT_NE(nullptr, object);
        delete object;
    }
    Probe::onRead() = nothing;
}

TEST(BinaryReaderDeathTest, ManyEmptyTablesOfAMillionBuckets) {
    // The next one goes past what is believed in one graph.
    EXPECT_FATAL(
        read(root() + tables(33),
             [](qnTranscriber& t, Probe& self) { return thirtyTwoTables(t, self) && intoDictionary(t, self); }),
        "format error");
}

TEST(BinaryReader, ADictionaryWithoutBucketsIsReadAsSuch) {
    Probe::type();
    Probe::onRead() = nothing;
    MemoryStream* stream = new MemoryStream(
        (Bytes::type(2, "DICT").u8(0x4A).u8(16).u32(1).u32(2).u32(1).u32(0).u32(8).u32(8).u32(0)).str());
    qnBinaryReader reader(stream, 0x1122, 0x33445566, "ieee");
    qnStrStrDictionary* dictionary = static_cast<qnStrStrDictionary*>(reader.readObject(qnStrStrDictionary_type));
    ASSERT_NE(nullptr, dictionary);
    EXPECT_EQ(0u, dictionary->buckets.length());
    qnStr key("a");
    EXPECT_EQ(nullptr, dictionary->find(&key, nullptr));
    delete dictionary;
}

#undef EXPECT_FATAL

}  // namespace BinaryReaderFatalTest
