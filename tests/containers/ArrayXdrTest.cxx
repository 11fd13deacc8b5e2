// Arrays through a transcriber: which calls they make, with which numbers, and what they make of what comes back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "NumberArrays.h"
#include "StrArray.h"
#include "VoidPtrArray.h"
#include "support/Bytes.h"
#include "support/FakeTranscriber.h"
#include "support/MemoryStream.h"
#include "support/RecordingArray.h"
#include "support/Records.h"

namespace ArrayXdrTest {

using testing::ElementsAre;
using testing::IsEmpty;

const FakeTranscriber::Direction Writing = FakeTranscriber::Writing, Reading = FakeTranscriber::Reading;

// The array itself: the root part

TEST(ArrayXdr, ThePlainArrayTranscribesItsRootPartWhichIsItself) {
    RecordingArray a({1, 2});
    FakeTranscriber writer(Writing), reader(Reading);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("base qnXDRObj (same)"));
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_THAT(reader.calls, ElementsAre("base qnXDRObj (same)"));
    EXPECT_THAT(a.values(), ElementsAre(1, 2));
}

TEST(ArrayXdr, ThePlainArrayReturnsWhatItsRootPartReturns) {
    RecordingArray a;
    FakeTranscriber writer(Writing);
    writer.failingCall = 0;
    EXPECT_FALSE(a.xdr(writer));
}

TEST(ArrayXdr, TheTypesFunctionIsBoundToItsClass) {
    struct Silent : qnIntArray {
        using qnIntArray::qnIntArray;
        bool xdr(qnTranscriber&) override { return false; }
    };
    Silent a(0);
    FakeTranscriber writer(Writing);
    qnArray* asArray = &a;
    EXPECT_TRUE(qnArray::xdr(asArray, writer));
    EXPECT_TRUE(qnArray_type.xdr(asArray, writer));
    EXPECT_THAT(writer.calls, ElementsAre("base qnXDRObj (same)", "base qnXDRObj (same)"));
    qnIntArray* asInts = &a;
    EXPECT_TRUE(qnIntArray_type.xdr(asInts, writer));
    EXPECT_TRUE(qnIntArray::xdr(static_cast<void*>(asInts), writer));
    EXPECT_EQ(8u, writer.calls.size());
}

TEST(ArrayXdr, APointerArrayTranscribesItsRootPartOnly) {
    qnVoidPtrArray a(3);
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("base qnXDRObj (same)"));
}

// Plain elements: used bytes, element size, elements. The sizes are those of a stream, the same on every machine.

template <class ArrayClass>
std::vector<std::string> written(std::initializer_list<int> numbers) {
    ArrayClass a;
    a.setMaxLength(static_cast<unsigned>(numbers.size()));
    for (int n : numbers) {
        typename ArrayClass::ElementType element = static_cast<typename ArrayClass::ElementType>(n);
        a.append(&element);
    }
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_EQ(numbers.size(), a.length());
    return writer.calls;
}

TEST(ArrayXdr, BooleansAreWrittenAsUnsignedChars) {
    EXPECT_THAT(written<qnBoolArray>({1, 0, 1}),
                ElementsAre("unsigned int[1] 3", "unsigned short[1] 1", "unsigned char[3] 1 0 1"));
}

TEST(ArrayXdr, CharsAreWrittenAsChars) {
    EXPECT_THAT(written<qnCharArray>({97, 98}),
                ElementsAre("unsigned int[1] 2", "unsigned short[1] 1", "char[2] 97 98"));
}

TEST(ArrayXdr, UnsignedCharsAreWrittenAsUnsignedChars) {
    EXPECT_THAT(written<qnUnsignedCharArray>({255}),
                ElementsAre("unsigned int[1] 1", "unsigned short[1] 1", "unsigned char[1] 255"));
}

TEST(ArrayXdr, ShortsAreWrittenAsShorts) {
    EXPECT_THAT(written<qnShortArray>({-1, 2}),
                ElementsAre("unsigned int[1] 4", "unsigned short[1] 2", "short[2] -1 2"));
}

TEST(ArrayXdr, UnsignedShortsAreWrittenAsUnsignedShorts) {
    EXPECT_THAT(written<qnUnsignedShortArray>({65535}),
                ElementsAre("unsigned int[1] 2", "unsigned short[1] 2", "unsigned short[1] 65535"));
}

TEST(ArrayXdr, IntsAreWrittenAsInts) {
    EXPECT_THAT(written<qnIntArray>({-1, 2, 3}),
                ElementsAre("unsigned int[1] 12", "unsigned short[1] 4", "int[3] -1 2 3"));
}

TEST(ArrayXdr, LongsCountFourBytesOnEveryMachine) {
    EXPECT_THAT(written<qnLongArray>({-1, 2}), ElementsAre("unsigned int[1] 8", "unsigned short[1] 4", "long[2] -1 2"));
    EXPECT_THAT(written<qnUnsignedLongArray>({1, 2, 3}),
                ElementsAre("unsigned int[1] 12", "unsigned short[1] 4", "unsigned long[3] 1 2 3"));
}

TEST(ArrayXdr, FloatsAreWrittenAsFloats) {
    EXPECT_THAT(written<qnFloatArray>({-1, 2}),
                ElementsAre("unsigned int[1] 8", "unsigned short[1] 4", "float[2] -1 2"));
}

TEST(ArrayXdr, DoublesAreWrittenAsDoubles) {
    EXPECT_THAT(written<qnDoubleArray>({-1, 2}),
                ElementsAre("unsigned int[1] 16", "unsigned short[1] 8", "double[2] -1 2"));
}

TEST(ArrayXdr, AnEmptyArrayIsWrittenWithNoElements) {
    EXPECT_THAT(written<qnIntArray>({}), ElementsAre("unsigned int[1] 0", "unsigned short[1] 4", "int[0]"));
}

/** Ints 1, 2, 3 with room for five. */
void makeRoomy(qnIntArray& a) {
    for (int n : {1, 2, 3, 4, 5}) a.append(&n);
    a.setMaxLength(5);
    a.remove(3, 2);
}

// Deliberate: the elements are counted by the capacity, so spare ones travel too.
TEST(ArrayXdr, SpareElementsAreWrittenToo) {
    qnIntArray a;
    makeRoomy(a);
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 12", "unsigned short[1] 4", "int[5] 1 2 3 0 0"));
    EXPECT_EQ(20u, a.maxBytes);
    EXPECT_EQ(12u, a.usedBytes);
}

TEST(ArrayXdr, SpareElementsOfAnEmptyArrayAreWrittenToo) {
    qnDoubleArray a;
    a.setMaxLength(2);
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 0", "unsigned short[1] 8", "double[2] 0 0"));
}

TEST(ArrayXdr, AnArrayWhoseCapacityDroppedWithoutAReallocationWritesItsCapacity) {
    qnIntArray a;
    makeRoomy(a);
    a.resize(3);  // the block still has five places
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_EQ("int[3] 1 2 3", writer.calls[2]);
}

TEST(ArrayXdr, WritingStopsAtTheFirstFailure) {
    for (unsigned failing = 0; failing < 3; ++failing) {
        qnIntArray a;
        makeRoomy(a);
        FakeTranscriber writer(Writing);
        writer.failingCall = failing;
        EXPECT_FALSE(a.xdr(writer));
        EXPECT_EQ(failing + 1, writer.calls.size());
        EXPECT_EQ(12u, a.usedBytes);
    }
}

// Reading plain elements

template <class ArrayClass>
std::vector<typename ArrayClass::ElementType> readBack(std::initializer_list<double> fed, const char* lastCall) {
    ArrayClass a;
    FakeTranscriber reader(Reading);
    reader.feed(fed);
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_TRUE(reader.exhausted());
    EXPECT_EQ(3u, reader.calls.size());
    EXPECT_EQ(lastCall, reader.calls.back());
    EXPECT_EQ(a.usedBytes, a.maxBytes);
    EXPECT_EQ(sizeof(typename ArrayClass::ElementType), a.elementSize);
    EXPECT_TRUE(requestedWith(a.data, a.maxBytes));
    return std::vector<typename ArrayClass::ElementType>(a.elements(), a.elements() + a.length());
}

TEST(ArrayXdr, EveryPlainArrayReadsItsElements) {
    EXPECT_THAT(readBack<qnBoolArray>({2, 1, 1, 0}, "unsigned char[2] 1 0"), ElementsAre(1, 0));
    EXPECT_THAT(readBack<qnCharArray>({2, 1, 97, 98}, "char[2] 97 98"), ElementsAre('a', 'b'));
    EXPECT_THAT(readBack<qnUnsignedCharArray>({1, 1, 255}, "unsigned char[1] 255"), ElementsAre(255));
    EXPECT_THAT(readBack<qnShortArray>({4, 2, -1, 2}, "short[2] -1 2"), ElementsAre(-1, 2));
    EXPECT_THAT(readBack<qnUnsignedShortArray>({2, 2, 65535}, "unsigned short[1] 65535"), ElementsAre(65535));
    EXPECT_THAT(readBack<qnIntArray>({8, 4, -7, 8}, "int[2] -7 8"), ElementsAre(-7, 8));
    EXPECT_THAT(readBack<qnLongArray>({8, 4, -7, 8}, "long[2] -7 8"), ElementsAre(-7, 8));
    EXPECT_THAT(readBack<qnUnsignedLongArray>({4, 4, 4294967295.0}, "unsigned long[1] 4294967295"),
                ElementsAre(4294967295ul));
    EXPECT_THAT(readBack<qnFloatArray>({8, 4, 0.5, 2}, "float[2] 0.5 2"), ElementsAre(0.5f, 2.0f));
    EXPECT_THAT(readBack<qnDoubleArray>({8, 8, 0.25}, "double[1] 0.25"), ElementsAre(0.25));
}

TEST(ArrayXdr, ReadingNoElementsLeavesNoBlockAndStillAsksForNone) {
    qnIntArray a;
    FakeTranscriber reader(Reading);
    reader.feed({0, 4});
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_THAT(reader.calls, ElementsAre("unsigned int[1] 0", "unsigned short[1] 4", "int[0]"));
}

// Deliberate: the array is taken to be new.
TEST(ArrayXdr, ReadingDropsAnEarlierBlockWithoutReleasingIt) {
    qnIntArray a(3);
    void* earlier = a.data;
    FakeTranscriber reader(Reading);
    reader.feed({4, 4, 9});
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_NE(earlier, static_cast<void*>(a.data));
    EXPECT_EQ(1u, a.length());
    EXPECT_EQ(9, a.elements()[0]);
    std::free(earlier);  // still there to be freed
}

TEST(ArrayXdr, ReadingTakesAsManyElementsAsAreInUseAndLeavesTheWritersSpareOnes) {
    qnIntArray a;
    FakeTranscriber reader(Reading);
    reader.feed({12, 4, 1, 2, 3, 0, 0});
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_EQ(3u, a.length());
    EXPECT_FALSE(reader.exhausted());
}

TEST(ArrayXdr, ReadingStopsAtTheFirstFailureAndLeavesASoundArray) {
    for (unsigned failing = 0; failing < 3; ++failing) {
        qnIntArray a;
        FakeTranscriber reader(Reading);
        reader.feed({8, 4, 1, 2});
        reader.failingCall = failing;
        EXPECT_FALSE(a.xdr(reader));
        EXPECT_EQ(failing + 1, reader.calls.size());
        EXPECT_LE(a.usedBytes, a.maxBytes);
        int more = 5;
        a.append(&more);
        EXPECT_EQ(5, a.elements()[a.length() - 1]);
    }
}

TEST(ArrayXdr, ALargeArrayIsReadByOneCall) {
    const unsigned n = 50000;
    qnIntArray a;
    FakeTranscriber reader(Reading);
    reader.feed({4.0 * n, 4});
    for (unsigned i = 0; i < n; ++i) reader.feed({static_cast<double>(i)});
    EXPECT_TRUE(a.xdr(reader));
    ASSERT_EQ(3u, reader.calls.size()) << "other transcribers may count calls";
    ASSERT_EQ(n, a.length());
    EXPECT_EQ(4 * n, a.maxBytes);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(static_cast<int>(i), a.elements()[i]);
}

TEST(ArrayXdr, AnArrayAdoptedWithElementSizeZeroIsWrittenAsEmptyAndTakesItsSizeWhenItIsRead) {
    qnIntArray ints(0u, 0u, nullptr);
    qnStrArray strings(0u, 0u, nullptr);
    FakeTranscriber writer(Writing), reader(Reading);
    EXPECT_TRUE(ints.xdr(writer));
    EXPECT_TRUE(strings.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 0", "unsigned short[1] 4", "int[0]",  //
                                          "unsigned int[1] 0", "unsigned short[1] 8"));
    reader.feed({8, 4, 5, 6, 8, 8, 1});
    EXPECT_TRUE(ints.xdr(reader));
    EXPECT_TRUE(strings.xdr(reader));
    EXPECT_EQ(2u, ints.length());
    EXPECT_EQ(6, ints.elements()[1]);
    EXPECT_EQ(1u, strings.length());
}

/** What reading an array of `ArrayClass` does that starts with these two numbers. */
template <class ArrayClass>
void readSizes(unsigned usedBytes, unsigned elementSize) {
    ArrayClass a;
    FakeTranscriber reader(Reading);
    reader.feed({static_cast<double>(usedBytes), static_cast<double>(elementSize)});
    a.xdr(reader);
}

TEST(ArrayXdrDeathTest, AnElementSizeThatIsNotTheClasssOwnIsRefused) {
    EXPECT_EXIT(readSizes<qnIntArray>(8, 2), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnIntArray>(8, 0), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnLongArray>(8, 8), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnCharArray>(8, 65535), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnStrArray>(16, 16), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnStrArray>(16, 4), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(ArrayXdrDeathTest, UsedBytesThatAreNoWholeElementsAreRefused) {
    EXPECT_EXIT(readSizes<qnIntArray>(7, 4), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnDoubleArray>(4, 8), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnStrArray>(12, 8), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

#if ULONG_MAX > 0xFFFFFFFF
TEST(ArrayXdrDeathTest, MoreElementsThanTheMachineCanCountTheBytesOfAreRefused) {
    EXPECT_EXIT(readSizes<qnLongArray>(0x80000000u, 4), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readSizes<qnStrArray>(0x80000000u, 8), testing::KilledBySignal(SIGABRT), "^format error\n$");
}
#endif

// Strings

void add(qnStrArray& a, std::initializer_list<const char*> texts) {
    for (const char* text : texts) {
        qnStr s(text);
        a.append(&s);
    }
}

TEST(ArrayXdr, StringsCountEightBytesAndGoOneByOne) {
    qnStrArray a;
    add(a, {"ab", "", "c"});
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 24", "unsigned short[1] 8",  //
                                          "unsigned int[1] 3", "char*[3] 97 98 0",      //
                                          "unsigned int[1] 1",                          //
                                          "unsigned int[1] 2", "char*[2] 99 0"));
    EXPECT_EQ(4 * sizeof(qnStr), a.maxBytes) << "strings are counted by the length, the fourth place is not written";
}

TEST(ArrayXdr, AnEmptyStringArrayWritesItsTwoNumbers) {
    qnStrArray a;
    a.setMaxLength(3);
    FakeTranscriber writer(Writing);
    EXPECT_TRUE(a.xdr(writer));
    EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 0", "unsigned short[1] 8"));
}

TEST(ArrayXdr, WritingStringsStopsAtTheFirstFailure) {
    for (unsigned failing = 0; failing < 7; ++failing) {
        qnStrArray a;
        add(a, {"ab", "", "c"});
        FakeTranscriber writer(Writing);
        writer.failingCall = failing;
        EXPECT_FALSE(a.xdr(writer));
        EXPECT_EQ(failing + 1, writer.calls.size());
    }
}

TEST(ArrayXdr, StringsAreReadOneByOne) {
    qnStrArray a;
    FakeTranscriber reader(Reading);
    reader.feed({24, 8, 3, 1, 2});
    reader.feedText(std::string("ab", 3));
    reader.feedText(std::string("c", 2));
    EXPECT_TRUE(a.xdr(reader));
    ASSERT_EQ(3u, a.length());
    EXPECT_STREQ("ab", a.elements()[0].text());
    EXPECT_EQ(&qnStr::emptyString, a.elements()[1].text());
    EXPECT_STREQ("c", a.elements()[2].text());
    EXPECT_EQ(3 * sizeof(qnStr), a.maxBytes);
    EXPECT_EQ(sizeof(qnStr), a.elementSize);
    EXPECT_TRUE(requestedWith(a.data, 3 * sizeof(qnStr)));
}

TEST(ArrayXdr, ReadingNoStringsSucceedsAndLeavesNoBlock) {
    qnStrArray a;
    FakeTranscriber reader(Reading);
    reader.feed({0, 8});
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.length());
    EXPECT_EQ(2u, reader.calls.size());
}

TEST(ArrayXdr, ReadingStringsStopsAtTheFirstFailureAndLeavesASoundArray) {
    for (unsigned failing = 0; failing < 7; ++failing) {
        qnStrArray a;
        FakeTranscriber reader(Reading);
        reader.feed({24, 8, 3, 1, 2});
        reader.feedText(std::string("ab", 3));
        reader.feedText(std::string("c", 2));
        reader.failingCall = failing;
        EXPECT_FALSE(a.xdr(reader));
        EXPECT_EQ(failing + 1, reader.calls.size());
        qnStr more("more");
        a.append(&more);
        EXPECT_STREQ("more", a.elements()[a.length() - 1].text());
        qnStrArray copy(a);
        EXPECT_EQ(a.length(), copy.length());
    }
}

// Deliberate: the array is taken to be new.
TEST(ArrayXdr, ReadingStringsDropsAnEarlierBlock) {
    qnStrArray a(2);  // of empty strings, which own nothing
    void* earlier = a.data;
    FakeTranscriber reader(Reading);
    reader.feed({8, 8, 1});
    EXPECT_TRUE(a.xdr(reader));
    EXPECT_EQ(1u, a.length());
    std::free(earlier);
}

/** A reader that fills the strings in when everything has been read. */
class LateTranscriber : public FakeTranscriber {
public:
    LateTranscriber() : FakeTranscriber(Reading) {}
    using FakeTranscriber::xdr;
    bool xdr(char** array, unsigned) override {
        waiting_.push_back(array);
        return true;
    }
    void deliver() {
        for (char** array : waiting_) {
            *array = static_cast<char*>(std::malloc(2));
            std::memcpy(*array, "x", 2);
        }
    }

private:
    std::vector<char**> waiting_;
};

TEST(ArrayXdr, ManyStringsMayBeFilledInLaterByAnyTranscriber) {
    const unsigned n = 10000;
    qnStrArray a;
    LateTranscriber reader;
    reader.feed({8.0 * n, 8});
    for (unsigned i = 0; i < n; ++i) reader.feed({2});
    EXPECT_TRUE(a.xdr(reader));
    reader.deliver();
    ASSERT_EQ(n, a.length());
    for (unsigned i = 0; i < n; ++i) ASSERT_STREQ("x", a.elements()[i].text());
}

// The same through the binary format

/** The bytes of a graph whose root is `array`. */
std::string bytesOf(qnArray& array) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_TRUE(writer.writeObject(&array, &array));
    return stream.output;
}

/** A type record and an instance record with `n` bytes of data. */
Bytes arrayRoot(unsigned n) {
    return Bytes::type(2, "ARRAY").u8(0x4A).u8(n).u32(1).u32(2).u32(1);
}

TEST(ArrayXdr, ALongTakesFourBytesInAStreamOnEveryMachine) {
    qnLongArray a(2);
    a.elements()[0] = 1;
    a.elements()[1] = -2;
    EXPECT_EQ(hex((arrayRoot(14).u32(8).u16(4).u32(1).u32(0xFFFFFFFEul)).str()), hex(bytesOf(a)));
}

TEST(ArrayXdr, AnUnsignedLongTakesFourBytesInAStreamOnEveryMachine) {
    qnUnsignedLongArray a(1);
    a.elements()[0] = 0xFFFFFFFFul;
    EXPECT_EQ(hex((arrayRoot(10).u32(4).u16(4).u32(0xFFFFFFFFul)).str()), hex(bytesOf(a)));
}

TEST(ArrayXdr, SpareElementsAreZerosInAStream) {
    qnShortArray a;
    for (int n : {1, 2, 3}) {
        short element = static_cast<short>(n);
        a.append(&element);
    }
    a.remove(1, 2);
    EXPECT_EQ(hex((arrayRoot(14).u32(2).u16(2).u16(1).u16(0).u16(0).u16(0)).str()), hex(bytesOf(a)));
}

#if LONG_MAX > 0x7FFFFFFF
TEST(ArrayXdr, ALongThatDoesNotFitFourBytesIsRefused) {
    for (long value : {2147483648l, -2147483649l, LONG_MAX, LONG_MIN}) {
        qnLongArray a(1);
        a.elements()[0] = value;
        MemoryStream stream;
        qnRetain(&stream);
        qnBinaryWriter writer(&stream);
        EXPECT_FALSE(writer.writeObject(&a, &a));
    }
}

TEST(ArrayXdr, AStaleSpareLongThatDoesNotFitIsNoHindrance) {
    qnLongArray a;
    for (long value : {5l, LONG_MAX}) a.append(&value);
    a.remove(1, 1);
    EXPECT_EQ(hex((arrayRoot(22).u32(4).u16(4).u32(5).u32(0).u32(0).u32(0)).str()), hex(bytesOf(a)));
}
#endif

/** Writes with `write` and reads what came out with `read`, as the contents of one object. */
void roundTrip(Probe::Body write, Probe::Body read) {
    Probe root(write);
    MemoryStream output;
    qnRetain(&output);
    qnBinaryWriter writer(&output);
    ASSERT_TRUE(writer.writeObject(&root, &root));
    MemoryStream* input = new MemoryStream(output.output);
    qnBinaryReader reader(input, 0x1122, 0x33445566, "ieee");
    Probe::onRead() = read;
    Probe* made = static_cast<Probe*>(reader.readObject(Probe::type()));
    EXPECT_NE(nullptr, made);
    delete made;
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
}

TEST(ArrayXdr, LargeArraysComeBackFromAStream) {
    const unsigned n = 100000;
    qnIntArray ints(n), intsRead;
    qnLongArray longs(n), longsRead;
    for (unsigned i = 0; i < n; ++i) {
        ints.elements()[i] = static_cast<int>(i * 7);
        longs.elements()[i] = -static_cast<long>(i);
    }
    roundTrip([&](qnTranscriber& t, Probe&) { return ints.xdr(t) && longs.xdr(t); },
              [&](qnTranscriber& t, Probe&) { return intsRead.xdr(t) && longsRead.xdr(t); });
    ASSERT_EQ(n, intsRead.length());
    ASSERT_EQ(n, longsRead.length());
    EXPECT_EQ(4 * n, intsRead.maxBytes);
    for (unsigned i = 0; i < n; ++i) {
        ASSERT_EQ(static_cast<int>(i * 7), intsRead.elements()[i]);
        ASSERT_EQ(-static_cast<long>(i), longsRead.elements()[i]);
    }
}

TEST(ArrayXdr, TenThousandStringsComeBackFromAStream) {
    const unsigned n = 10000;
    qnStrArray strings, stringsRead;
    for (unsigned i = 0; i < n; ++i) {
        qnStr s(static_cast<int>(i));
        strings.append(&s);
    }
    roundTrip([&](qnTranscriber& t, Probe&) { return strings.xdr(t); },
              [&](qnTranscriber& t, Probe&) { return stringsRead.xdr(t); });
    ASSERT_EQ(n, stringsRead.length());
    EXPECT_EQ(n * sizeof(qnStr), stringsRead.maxBytes);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(strings.elements()[i], stringsRead.elements()[i]);
}

TEST(ArrayXdr, AClaimOfFourGigabytesTakesNoMemoryForIt) {
    // The stream ends right after the claim.
    Bytes records = Bytes::type(2, "Probe").u8(0x4A).u8(6).u32(1).u32(2).u32(1).u32(0xFFFFFFFCul).u16(4);
    Probe::type();
    qnIntArray a;
    bool read = true;
    MemoryStream* input = new MemoryStream(records.str());
    qnBinaryReader reader(input, 0x1122, 0x33445566, "ieee");
    Probe* made = nullptr;
    Probe::onRead() = [&](qnTranscriber& t, Probe& self) {
        made = &self;
        read = a.xdr(t);
        return true;
    };
    delete static_cast<Probe*>(reader.readObject(Probe::type()));
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    EXPECT_NE(nullptr, made);
    EXPECT_FALSE(read);
    EXPECT_LE(a.maxBytes, 1u << 20);
}

}  // namespace ArrayXdrTest
