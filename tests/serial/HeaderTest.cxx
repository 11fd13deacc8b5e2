// Which reader the header of a stream gives.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <utility>

#include "BinaryReader.h"
#include "OrderedGlobal.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"

namespace HeaderTest {

/** A header of a machine of the other byte order, as the bytes stand in the stream. */
std::string headerOfTheOtherOrder() {
    std::string marks = Bytes().u16(0x1122).u32(0x33445566).str();
    std::swap(marks[0], marks[1]);
    std::swap(marks[2], marks[5]);
    std::swap(marks[3], marks[4]);
    return Bytes().name("qnBinaryWriter").name("ieee").raw(marks).str();
}

TEST(Header, AHeaderOfTheOtherByteOrderSelectsTheSwappingConversions) {
    qnInitializeToolkit();
    qnTranscriber* made = qnTranscriber::getReader(new MemoryStream(headerOfTheOtherOrder()));
    ASSERT_NE(nullptr, made);
    qnBinaryReader* reader = dynamic_cast<qnBinaryReader*>(made);
    ASSERT_NE(nullptr, reader);
    EXPECT_EQ(&qnBinaryReader_BS, reader->shortsReader);
    EXPECT_EQ(&qnBinaryReader_longsBSSS, reader->longsReader);
    EXPECT_EQ(&qnBinaryReader_floats, reader->floatsReader);
    EXPECT_EQ(&qnBinaryReader_doubles, reader->doublesReader);
    delete made;
}

TEST(HeaderDeathTest, MarksAndFormatsOfAHeaderThatAreUnknownAreFatal) {
    qnInitializeToolkit();
    const auto read = [](const char* format, unsigned shortMark, unsigned long longMark) {
        Bytes header = Bytes().name("qnBinaryWriter").name(format).u16(shortMark).u32(longMark);
        qnTranscriber::getReader(new MemoryStream(header.str()));
    };
    // A mark with its highest bit set is not printed with more than its 32 bits.
    EXPECT_EXIT(read("ieee", 0x1122, 0x99445566), testing::KilledBySignal(SIGABRT),
                "^qnBinaryReader: unknown long ordering 99445566\n$");
    EXPECT_EXIT(read("ieee", 0x8811, 0x99445566), testing::KilledBySignal(SIGABRT),
                "^qnBinaryReader: unknown short ordering 99445566\n$");
    EXPECT_EXIT(read("Ieee", 0x1122, 0x33445566), testing::KilledBySignal(SIGABRT),
                "^qnBinaryReader: unsupported floating point format Ieee\n$");
}

TEST(Header, TheMakerOfBinaryReadersTakesTheFourValues) {
    MemoryStream* stream = new MemoryStream;
    qnTranscriber* made = makeBinaryReader(stream, 0x2211, 0x55663344, "ieee");
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(1u, stream->refCount);
    EXPECT_TRUE(made->reading);
    qnBinaryReader* reader = dynamic_cast<qnBinaryReader*>(made);
    ASSERT_NE(nullptr, reader);
    EXPECT_EQ(&qnBinaryReader_BS, reader->shortsReader);
    EXPECT_EQ(&qnBinaryReader_longsSS, reader->longsReader);
    delete made;
}

}  // namespace HeaderTest
