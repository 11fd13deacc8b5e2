// Strings through writer and reader, alone, in runs, and on arrays that others refer to.
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <string>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Str.h"
#include "StrArray.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace StringsInStreamsTest {

TEST(StringsInStreams, ARunOfStringsWritesOneAfterTheOther) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    qnStr strings[3] = {"", "a", "bc"};
    Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(strings, 3); });
    ASSERT_TRUE(writer.writeObject(&object, &object));
    // The lengths with their terminators: 1 and 2; the pointer's record goes on with 3.
    Bytes expected = probeRoot(8).u32(1).u32(2).u8(0x43).u8(4).u32(3).u32(2).u32(3).u8(0x03).u32(4).u32(3);
    expected.u8(0x45).u8(3).u32(4).u32(3).name("bc").u8(0x45).u8(2).u32(3).u32(2).name("a");
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

TEST(StringsInStreams, ARunOfStringsIsReadOneAfterTheOther) {
    Bytes records = probeRoot(8).u32(1).u32(2).u8(0x43).u8(4).u32(3).u32(2).u32(3).u8(0x03).u32(4).u32(3);
    records.u8(0x45).u8(3).u32(4).u32(3).name("bc").u8(0x45).u8(2).u32(3).u32(2).name("a");
    qnStr strings[3] = {"before", "before", "before"};
    Probe::onRead() = [&](qnTranscriber& t, Probe&) { return t.xdr(strings, 3); };
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    Probe* root = static_cast<Probe*>(reader.readObject(Probe::type()));
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(strings[0] == "");
    EXPECT_TRUE(strings[1] == "a");
    EXPECT_TRUE(strings[2] == "bc");
    delete root;
}

TEST(StringsInStreams, TextsOfEveryLengthAroundTheBufferComeBack) {
    for (unsigned n : {509u, 510u, 511u, 512u, 513u, 600u, 1023u, 1024u, 1025u}) {
        std::string text;
        while (text.size() < n) text += static_cast<char>('a' + text.size() % 26);
        qnStr written(text.c_str());
        MemoryStream out;
        qnRetain(&out);
        {
            qnBinaryWriter writer(&out);
            Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&text[0], n) && written.xdr(t); });
            ASSERT_TRUE(writer.writeObject(&object, &object));
        }
        std::string data(n, '?');
        qnStr read;
        Probe::onRead() = [&](qnTranscriber& t, Probe&) { return t.xdr(&data[0], n) && read.xdr(t); };
        qnBinaryReader reader(new MemoryStream(out.output), 0x1122, 0x33445566, "ieee");
        Probe* root = static_cast<Probe*>(reader.readObject(Probe::type()));
        Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
        ASSERT_NE(nullptr, root);
        EXPECT_EQ(text, data) << n;
        EXPECT_TRUE(read == text.c_str()) << n;
        delete root;
    }
}

TEST(StringsInStreams, GraphsThatTheWriterSeparatedByResetsAreReadWithResetsBetweenThem) {
    MemoryStream out;
    qnRetain(&out);
    {
        qnBinaryWriter writer(&out);
        for (const char* text : {"one", "two", "three"}) {
            qnStrArray array(1);
            array.elements()[0] = text;
            ASSERT_TRUE(writer.writeObject(&array, &array));
            writer.reset();
        }
    }
    for (bool resets : {true, false}) {
        qnBinaryReader reader(new MemoryStream(out.output), 0x1122, 0x33445566, "ieee");
        for (const char* text : {"one", "two", "three"}) {
            qnStrArray* array = static_cast<qnStrArray*>(reader.readObject(qnStrArray_type));
            ASSERT_NE(nullptr, array);
            ASSERT_EQ(1u, array->length());
            EXPECT_TRUE(array->elements()[0] == text);
            delete array;
            if (resets) reader.reset();
        }
        EXPECT_EQ(nullptr, reader.readObject(qnStrArray_type));
    }
}

TEST(StringsInStreams, AStringThatIsMetAfterAPointerToItsArrayHasItsOwnText) {
    // The string waits behind the pointer, so it is served first; the pointer gets a block of its own.
    Bytes records = probeRoot().u8(0x03).u32(3).u32(3).u8(0x40).u8(4).u32(3).u8(0x04).u32(3).u32(0);
    records.u8(0x45).u8(3).u32(3).u32(3).name("hi");
    qnStr text;
    Probe::onRead() = [&](qnTranscriber& t, Probe& self) { return t.xdr(&self.chars, 3) && text.xdr(t); };
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    Probe* root = static_cast<Probe*>(reader.readObject(Probe::type()));
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(text == "hi");
    EXPECT_STREQ("hi", root->chars);
    EXPECT_NE(text.text(), root->chars);
    EXPECT_EQ(root->chars, reader.alreadyRead(3)) << "later pointers share the block that is the program's";
    std::free(root->chars);
    delete root;
}

#if LONG_MAX > 0x7FFFFFFF  // elsewhere the pointer gets a block of its own, as wide as the string's
TEST(StringsInStreamsDeathTest, AnArrayThatIsWantedByAStringAndByLongsIsRefused) {
    Probe::type();
    Bytes records = Bytes::type(2, "Probe").u8(0x0A).u32(1).u32(2).u32(1).u8(0x03).u32(3).u32(4);
    records.u8(0x40).u8(4).u32(4).u8(0x04).u32(3).u32(0).u8(0x45).u8(4).u32(3).u32(4).name("abc");
    auto read = [&] {
        Probe::onRead() = [](qnTranscriber& t, Probe& self) { return t.xdr(&self.longs, 1) && (new qnStr)->xdr(t); };
        qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
        reader.readObject(Probe::type());
    };
    EXPECT_EXIT(read(), testing::KilledBySignal(SIGABRT), "^format error\n$");
}
#endif

}  // namespace StringsInStreamsTest
