#include <gtest/gtest.h>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "OrderedGlobal.h"
#include "StackBuffer.h"
#include "Str.h"
#include "Transcriber.h"
#include "VoidPtrDict.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace TranscriberTest {

class Registry : public testing::Test {
protected:
    Registry() { qnInitializeToolkit(); }
    ~Registry() override { qnTranscriber::resetToDefaultWriter(); }
};

/** A transcriber that records what reaches it and answers as told. */
class Recorder : public qnTranscriber {
public:
    using qnTranscriber::xdr;

    explicit Recorder(qnStream* over = nullptr) { setStream(over); }
    ~Recorder() override {
        if (destroyed != nullptr) *destroyed = true;
    }
    using qnTranscriber::setStream;

    void reset() override {}
    bool xdr(char*, unsigned) override { return false; }
    bool xdr(unsigned char*, unsigned) override { return false; }
    bool xdr(short*, unsigned) override { return false; }
    bool xdr(unsigned short*, unsigned) override { return false; }
    bool xdr(long* values, unsigned count) override {
        for (unsigned i = 0; i < count; ++i) {
            if (left == 0) return false;
            --left;
            longs.push_back(values[i]);
            values[i] += 1;
        }
        return true;
    }
    bool xdr(unsigned long* values, unsigned count) override {
        for (unsigned i = 0; i < count; ++i) {
            unsignedLongs.push_back(values[i]);
            values[i] += 1;
        }
        return true;
    }
    bool xdr(float*, unsigned) override { return false; }
    bool xdr(double*, unsigned) override { return false; }
    bool xdr(qnStr*, unsigned) override { return false; }
    bool xdr(char**, unsigned) override { return false; }
    bool xdr(unsigned char**, unsigned) override { return false; }
    bool xdr(short**, unsigned) override { return false; }
    bool xdr(unsigned short**, unsigned) override { return false; }
    bool xdr(long**, unsigned count) override { return count == 3; }
    bool xdr(unsigned long**, unsigned count) override { return count == 3; }
    bool xdr(float**, unsigned) override { return false; }
    bool xdr(double**, unsigned) override { return false; }
    bool xdr(char**) override { return false; }
    bool xdr(unsigned char**) override { return false; }
    bool xdr(void*, qnXDRObj*, qnTypeObj&) override { return false; }
    bool xdr(qnTypeObj&, void*, void*) override { return false; }
    void* readObject(qnTypeObj&) override { return nullptr; }
    bool writeObject(void*, qnXDRObj*) override { return false; }
    const char* className() const override { return name; }

    std::vector<long> longs;
    std::vector<unsigned long> unsignedLongs;
    unsigned left = 100;
    const char* name = "Recorder";
    bool* destroyed = nullptr;
};

TEST_F(Registry, AWriterPutsTheHeaderFirst) {
    MemoryStream* stream = new MemoryStream;
    qnTranscriber* writer = qnTranscriber::getWriter(stream);
    ASSERT_NE(nullptr, writer);
    EXPECT_STREQ("qnBinaryWriter", writer->className());
    EXPECT_EQ(0u, writer->refCount);
    EXPECT_EQ(1u, stream->refCount);
    EXPECT_EQ(hex(Bytes::header().str()), hex(stream->output));
    EXPECT_EQ((std::vector<std::size_t>{15, 5, 2, 4}), stream->puts);
    delete writer;
}

TEST_F(Registry, TheHeaderEndsInTheMarksOfTheMachine) {
    const unsigned short one = 1;
    bool little = *reinterpret_cast<const unsigned char*>(&one) == 1;
    std::string marks = Bytes::header().str().substr(20);
    EXPECT_EQ(little ? "22 11 66 55 44 33 " : "11 22 33 44 55 66 ", hex(marks));
}

TEST_F(Registry, AHeaderThatCannotBePutGivesNoWriter) {
    for (unsigned failing = 0; failing < 4; ++failing) {
        MemoryStream* stream = new MemoryStream;
        bool gone = false;
        stream->destroyed = &gone;
        stream->failingPut = failing;
        EXPECT_EQ(nullptr, qnTranscriber::getWriter(stream));
        EXPECT_TRUE(gone) << "the writer was the only holder";
    }
}

TEST_F(Registry, TheReaderIsFoundByTheHeader) {
    MemoryStream* stream = new MemoryStream(Bytes::header().str());
    qnTranscriber* reader = qnTranscriber::getReader(stream);
    ASSERT_NE(nullptr, reader);
    EXPECT_STREQ("qnBinaryReader", reader->className());
    EXPECT_TRUE(reader->reading);
    EXPECT_EQ(stream, reader->stream);
    EXPECT_EQ(26u, stream->position);
    delete reader;
}

TEST_F(Registry, AnEmptyOrCutHeaderGivesNoReader) {
    std::string header = Bytes::header().str();
    for (std::size_t n = 0; n < header.size(); ++n) {
        MemoryStream stream(header.substr(0, n));
        EXPECT_EQ(nullptr, qnTranscriber::getReader(&stream)) << n;
    }
}

TEST_F(Registry, WithoutRegistrationsNothingIsRead) {
    qnVoidPtrDict* readers = qnTranscriber::readers;
    qnTranscriber::readers = nullptr;
    MemoryStream stream(Bytes::header().str());
    EXPECT_EQ(nullptr, qnTranscriber::getReader(&stream));
    EXPECT_EQ(0u, stream.position);
    qnTranscriber::readers = readers;
}

TEST_F(Registry, TheFirstRegistrationMakesTheTableAndALaterOneReplaces) {
    qnVoidPtrDict* readers = qnTranscriber::readers;
    qnTranscriber::readers = nullptr;
    static short seenShort;
    static long seenLong;
    static std::string seenFormat;
    qnTranscriber::addTranscriber("other",
                                  [](qnStream*, short, long, const char*) -> qnTranscriber* { return nullptr; });
    qnTranscriber::addTranscriber(
        "other", [](qnStream* over, short shortMark, long longMark, const char* format) -> qnTranscriber* {
            seenShort = shortMark;
            seenLong = longMark;
            seenFormat = format;
            return new Recorder(over);
        });
    EXPECT_EQ(31u, qnTranscriber::readers->buckets.length());
    MemoryStream* stream = new MemoryStream(Bytes().name("other").name("odd").u16(0xFFFE).u32(0xFFFFFFFD).str());
    qnTranscriber* reader = qnTranscriber::getReader(stream);
    ASSERT_NE(nullptr, reader);
    EXPECT_EQ(-2, seenShort);
    EXPECT_EQ(-3, seenLong);
    EXPECT_EQ("odd", seenFormat);
    delete reader;
    delete qnTranscriber::readers;
    qnTranscriber::readers = readers;
}

TEST_F(Registry, AnUnknownWriterIsFatal) {
    MemoryStream stream(Bytes().name("nobody").name("ieee").u16(0x1122).u32(0x33445566).str());
    EXPECT_EXIT(qnTranscriber::getReader(&stream), testing::KilledBySignal(SIGABRT),
                "^Unknown transcriber type \"nobody\"\n$");
}

TEST_F(Registry, TheDefaultWriterCanBeChangedAndReset) {
    EXPECT_EQ(&qnTranscriber::makeDefaultWriter, qnTranscriber::makeWriter);
    qnTranscriber::changeDefaultWriter(nullptr);
    EXPECT_EQ(&qnTranscriber::makeDefaultWriter, qnTranscriber::makeWriter);
    qnTranscriber::changeDefaultWriter([](qnStream* over) -> qnTranscriber* { return new Recorder(over); });
    qnTranscriber::changeDefaultWriter(nullptr);
    MemoryStream* stream = new MemoryStream;
    qnTranscriber* writer = qnTranscriber::getWriter(stream);
    ASSERT_NE(nullptr, writer);
    EXPECT_EQ(hex(Bytes().name("Recorder").name("ieee").u16(0x1122).u32(0x33445566).str()), hex(stream->output));
    delete writer;
    qnTranscriber::changeDefaultWriter([](qnStream*) -> qnTranscriber* { return nullptr; });
    MemoryStream untouched;
    EXPECT_EQ(nullptr, qnTranscriber::getWriter(&untouched));
    EXPECT_TRUE(untouched.output.empty());
    qnTranscriber::resetToDefaultWriter();
    EXPECT_EQ(&qnTranscriber::makeDefaultWriter, qnTranscriber::makeWriter);
}

TEST(TranscriberStream, IsRetainedAndReleased) {
    MemoryStream* a = new MemoryStream;
    MemoryStream* b = new MemoryStream;
    bool aGone = false, bGone = false;
    a->destroyed = &aGone;
    b->destroyed = &bGone;
    {
        Recorder recorder(a);
        EXPECT_EQ(1u, a->refCount);
        recorder.setStream(a);
        EXPECT_EQ(1u, a->refCount);
        recorder.setStream(b);
        EXPECT_TRUE(aGone);
        EXPECT_EQ(1u, b->refCount);
        Recorder second(b);
        EXPECT_EQ(2u, b->refCount);
    }
    EXPECT_TRUE(bGone);
}

TEST(TranscriberInts, GoThroughTheLongs) {
    Recorder recorder;
    int values[] = {-5, 6};
    unsigned more[] = {4294967295u};
    EXPECT_TRUE(recorder.xdr(values, 2));
    EXPECT_TRUE(recorder.xdr(more, 1));
    EXPECT_EQ((std::vector<long>{-5, 6}), recorder.longs);
    EXPECT_EQ((std::vector<unsigned long>{4294967295ul}), recorder.unsignedLongs);
    // What a reader changes arrives.
    EXPECT_EQ(-4, values[0]);
    EXPECT_EQ(0u, more[0]);
}

TEST(TranscriberInts, StopAtTheFirstFailure) {
    Recorder recorder;
    recorder.left = 1;
    int values[] = {1, 2, 3};
    EXPECT_FALSE(recorder.xdr(values, 3));
    EXPECT_EQ(1u, recorder.longs.size());
}

TEST(TranscriberInts, PointersGoThroughTheLongsWhereTheyAreEquallyWide) {
    Recorder recorder;
    int* ints = nullptr;
    unsigned* unsigneds = nullptr;
    EXPECT_EQ(sizeof(int) == sizeof(long), recorder.xdr(&ints, 3));
    EXPECT_EQ(sizeof(int) == sizeof(long), recorder.xdr(&unsigneds, 3));
}

TEST(TranscriberStrings, ARunOfStringsStopsAtTheFirstFailure) {
    MemoryStream* stream = new MemoryStream(Bytes().u8(0x40).u8(8).u32(1).u32(1).str());
    qnBinaryReader reader(stream, 0x1122, 0x33445566, "ieee");
    qnStr strings[3];
    EXPECT_TRUE(reader.xdr(strings, 0));
    EXPECT_EQ(0u, stream->position);
    EXPECT_FALSE(reader.xdr(strings, 3));
    EXPECT_EQ(stream->input.size(), stream->position);
}

TEST(NullTerminatedString, IsReadWithOneNul) {
    MemoryStream stream(std::string("abc\0rest", 8));
    qnStackBuffer buffer;
    EXPECT_TRUE(readNullTerminatedString(&stream, buffer));
    EXPECT_EQ(4u, buffer.used());
    EXPECT_STREQ("abc", buffer.base());
    EXPECT_EQ(4u, stream.position);
}

TEST(NullTerminatedString, WithoutItsEndLeavesWhatWasRead) {
    MemoryStream stream("abc");
    qnStackBuffer buffer;
    EXPECT_FALSE(readNullTerminatedString(&stream, buffer));
    EXPECT_EQ("abc", std::string(buffer.base(), buffer.used()));
}

}  // namespace TranscriberTest
