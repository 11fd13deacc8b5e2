// Dictionaries in streams: the steps of `doxdr` one by one with a scripted transcriber, then round trips in binary.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "StrStrDictionary.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/ProbeDictionary.h"
#include "support/ScriptedTranscriber.h"

namespace DictionaryXdrTest {

typedef ScriptedTranscriber Scripted;

/** Five buckets with the chains "0: 0 | 3: 13 8 3"; each value is ten times its key. */
class DictionaryXdr : public testing::Test {
protected:
    DictionaryXdr() : d(5) {
        for (int key : {3, 0, 8, 13}) d.add(key, 10 * key);
        d.calls();
    }
    ProbeDictionary d;
};

// Writing

TEST_F(DictionaryXdr, WritesFourNumbersThenEntriesFromTheHeadsWithTheirBuckets) {
    Scripted t;
    EXPECT_TRUE(d.doxdr(t));
    EXPECT_EQ(t.passed, "u4 u4 u4 u5 i0 i0 u0 i13 i130 u3 i8 i80 u3 i3 i30 u3");
    EXPECT_EQ(d.calls(), "xdrKey, xdrValue, xdrKey, xdrValue, xdrKey, xdrValue, xdrKey, xdrValue")
        << "nothing is hashed";
}

TEST_F(DictionaryXdr, WritesAnEmptyDictionaryAsFourNumbers) {
    ProbeDictionary empty(7);
    Scripted t;
    EXPECT_TRUE(empty.doxdr(t));
    EXPECT_EQ(t.passed, "u0 u4 u4 u7");
}

TEST_F(DictionaryXdr, WritesADictionaryWithoutBuckets) {
    ProbeDictionary bare(qnDictionary_type);
    Scripted t;
    EXPECT_TRUE(bare.doxdr(t));
    EXPECT_EQ(t.passed, "u0 u4 u4 u0");
}

TEST_F(DictionaryXdr, StopsWritingAtTheFirstFailureWhereverItIs) {
    const char* written[] = {"", "u4", "u4 u4", "u4 u4 u4", "u4 u4 u4 u5", "u4 u4 u4 u5 i0", "u4 u4 u4 u5 i0 i0"};
    for (unsigned n = 0; n < 7; ++n) {
        Scripted t;
        t.failAt = n;
        EXPECT_FALSE(d.doxdr(t)) << n;
        EXPECT_EQ(t.passed, written[n]);
    }
    Scripted last;
    last.failAt = 15;
    EXPECT_FALSE(d.doxdr(last));
    EXPECT_EQ(last.seen, 15u);
    EXPECT_EQ(d.table(), "0: 0 | 3: 13 8 3");
    EXPECT_EQ(d.count, 4u);
}

// Reading

TEST_F(DictionaryXdr, ReadsEntriesIntoTheirBucketsWithoutHashing) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t({3, 4, 4, 2, 7, 70, 1, 9, 90, 0, 5, 50, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.calls(), "xdrKey, xdrValue, xdrKey, xdrValue, xdrKey, xdrValue");
    EXPECT_EQ(read.table(), "0: 9 | 1: 5 7") << "each is pushed at the head of its chain";
    EXPECT_EQ(read.count, 3u);
    EXPECT_EQ(read.buckets.length(), 2u);
}

// Deliberate: the stored bucket is believed, so that keys that are complete only later need no hash.
TEST_F(DictionaryXdr, EntryInABucketThatIsNotItsKeysIsThereButNotFound) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t({1, 4, 4, 5, 7, 70, 0});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.table(), "0: 7");
    EXPECT_FALSE(read.has(7));
    qnDictIter it(read);
    EXPECT_EQ(standing(it), "7=70");
}

TEST_F(DictionaryXdr, KeyThatStandsTwiceInAStreamIsThereTwice) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t({2, 4, 4, 5, 7, 70, 2, 7, 71, 2});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.table(), "2: 7 7");
    EXPECT_EQ(read.value(7), 71);
}

TEST_F(DictionaryXdr, BucketCountOfTheStreamReplacesTheOneThatWasThere) {
    ProbeDictionary read(31);
    Scripted t({1, 4, 4, 3, 7, 70, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.buckets.length(), 3u);
    EXPECT_EQ(read.value(7), 70);
}

// Deliberate: reading does not empty the dictionary; factories make the ones that are read, and those have no entries.
TEST_F(DictionaryXdr, EntriesAndIteratorsThatWereThereStayAndTheCountIsTheStreams) {
    qnDictIter it(d);
    Scripted t({1, 4, 4, 5, 18, 180, 3});
    EXPECT_TRUE(d.doxdr(t));
    EXPECT_EQ(d.table(), "0: 0 | 3: 18 13 8 3");
    EXPECT_EQ(d.count, 1u);
    EXPECT_EQ(standing(it), "0=0");
    ++it;
    EXPECT_EQ(standing(it), "18=180");
}

TEST_F(DictionaryXdr, IteratorInATableThatShrinksFinishes) {
    ProbeDictionary read(7);
    read.add(0, 10);
    qnDictIter it(read);
    Scripted t({0, 4, 4, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(standing(it), "0=10");
    ++it;
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(read.iters.length(), 0u);
}

TEST_F(DictionaryXdr, ReadsADictionaryWithoutBuckets) {
    ProbeDictionary read(5);
    Scripted t({0, 4, 4, 0});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.buckets.length(), 0u);
    EXPECT_FALSE(read.has(3));
}

// Deliberate: the numbers go straight to their fields, so the count is the stream's from the first one on.
TEST_F(DictionaryXdr, CountIsTheStreamsAfterItsNumberEvenWhenTheNextFails) {
    for (unsigned n = 1; n < 5; ++n) {
        ProbeDictionary read(5);
        Scripted t({9, 4, 4, 2});
        t.failAt = n;
        EXPECT_FALSE(read.doxdr(t));
        EXPECT_EQ(read.count, 9u) << n;
        EXPECT_EQ(read.keySize, 4u) << n;
        EXPECT_EQ(read.valueSize, 4u) << n;
        EXPECT_EQ(read.buckets.length(), n < 4 ? 5u : 2u) << n;
        read.calls();
    }
}

TEST_F(DictionaryXdr, NothingChangesWhenTheFirstNumberFails) {
    Scripted t(std::vector<unsigned>{});
    EXPECT_FALSE(d.doxdr(t));
    EXPECT_EQ(d.count, 4u);
    EXPECT_EQ(d.table(), "0: 0 | 3: 13 8 3");
}

// Deliberate: a failure in an entry leaves its block to nobody, because how far it is constructed is unknown.
TEST_F(DictionaryXdr, FailureInAnEntryKeepsTheEarlierOnesAndLeavesItsBlockUnowned) {
    const std::vector<unsigned> script = {3, 4, 4, 2, 7, 70, 1, 9, 90, 0, 5, 50, 1};
    for (unsigned n : {8u, 9u}) {  // in the second entry's value and bucket number
        ProbeDictionary read(qnDictionary_type);
        Scripted t(script);
        t.failAt = n;
        EXPECT_FALSE(read.doxdr(t)) << n;
        EXPECT_EQ(read.table(), "1: 7") << n;
        EXPECT_EQ(read.count, 3u) << n;
        std::free(t.addresses[2]);  // the second key stands at the start of the block
    }
}

TEST_F(DictionaryXdr, ClassThatHasNotSaidItsRecordSizesTakesThoseOfTheStream) {
    ProbeDictionary read(qnDictionary_type);
    read.keySize = read.valueSize = 0;
    Scripted t({1, 4, 8, 2, 7, 70, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.keySize, 4u);
    EXPECT_EQ(read.valueSize, 8u);
    EXPECT_EQ(read.value(7), 70);
}

TEST_F(DictionaryXdr, TableOfAMillionBucketsIsReadWithoutEntries) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t({0, 4, 4, 1u << 20});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.buckets.length(), 1u << 20);
}

TEST_F(DictionaryXdr, LargeTableGrowsWithItsEntriesAndEndsAtItsSize) {
    const unsigned nbuckets = (1u << 20) + 64 * 20, entries = (1u << 14) + 20;
    std::vector<unsigned> script = {entries, 4, 4, nbuckets};
    for (unsigned i = 0; i < entries; ++i) {
        unsigned bucket = i + 1 < entries ? i * 64 : nbuckets - 1;
        for (unsigned number : {bucket, i, bucket}) script.push_back(number);
    }
    ProbeDictionary read(qnDictionary_type);
    Scripted t(script);
    ASSERT_TRUE(read.doxdr(t));
    read.calls();
    EXPECT_EQ(read.buckets.length(), nbuckets);
    EXPECT_EQ(read.chain(64), "64");
    EXPECT_EQ(read.chain(nbuckets - 1), std::to_string(nbuckets - 1));
    EXPECT_EQ(read.count, entries);
}

TEST_F(DictionaryXdr, LargeTableWithAllItsEntriesAtTheEndIsRead) {
    const unsigned nbuckets = 2u << 20, entries = nbuckets / 64;
    std::vector<unsigned> script = {entries, 4, 4, nbuckets};
    for (unsigned i = 0; i < entries; ++i) {
        unsigned bucket = i < 3 ? nbuckets - 1 : nbuckets - i;
        for (unsigned number : {i, 10 * i, bucket}) script.push_back(number);
    }
    ProbeDictionary read(qnDictionary_type);
    Scripted t(script);
    ASSERT_TRUE(read.doxdr(t));
    read.calls();
    EXPECT_EQ(read.buckets.length(), nbuckets);
    EXPECT_EQ(read.chain(nbuckets - 1), "2 1 0") << "each at the head of its chain";
    EXPECT_EQ(read.chain(nbuckets - 3), "3");
    EXPECT_EQ(read.chain(nbuckets - entries + 1), std::to_string(entries - 1));
}

TEST_F(DictionaryXdr, LargeTableThatIsCutShortKeepsTheEntriesThatArrived) {
    const unsigned nbuckets = 2u << 20;
    ProbeDictionary read(qnDictionary_type);
    Scripted t({nbuckets / 64, 4, 4, nbuckets, 7, 70, nbuckets - 1, 8, 80, 5, 9, 90});
    EXPECT_FALSE(read.doxdr(t));
    read.calls();
    EXPECT_EQ(read.buckets.length(), 1u << 20);
    EXPECT_EQ(read.chain(5), "8");
    EXPECT_EQ(read.chain(0), "7") << "where it is found and destroyed";
    read.cleanup();
    std::free(t.addresses[4]);  // the third entry, which never got its bucket
}

void readScript(std::vector<unsigned> script) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t(script);
    read.doxdr(t);
}

#define EXPECT_FORMAT_ERROR(...) \
    EXPECT_EXIT(readScript(__VA_ARGS__), testing::KilledBySignal(SIGABRT), "^format error\n$")

TEST(DictionaryXdrDeathTest, OtherRecordSizesThanTheClassesAreFatal) {
    EXPECT_FORMAT_ERROR({0, 8, 4, 5});
    EXPECT_FORMAT_ERROR({0, 4, 8, 5});
    EXPECT_FORMAT_ERROR({0, 0, 0, 5});
    EXPECT_FORMAT_ERROR({0, 0xFFFFFFFF, 5, 5});
}

void readIntoUnsizedClass(std::vector<unsigned> script) {
    ProbeDictionary read(qnDictionary_type);
    read.keySize = read.valueSize = 0;
    Scripted t(script);
    read.doxdr(t);
}

TEST(DictionaryXdrDeathTest, RecordsThatAStreamMerelyClaimsAreAtMost65535Bytes) {
    EXPECT_EXIT(readIntoUnsizedClass({1, 0x10000, 4, 5}), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readIntoUnsizedClass({1, 4, 0x10000, 5}), testing::KilledBySignal(SIGABRT), "^format error\n$");
    EXPECT_EXIT(readIntoUnsizedClass({1, 0xFFFFFFFF, 4, 5}), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(DictionaryXdrDeathTest, BucketNumberPastTheTableIsFatal) {
    EXPECT_FORMAT_ERROR({1, 4, 4, 5, 7, 70, 5});
    EXPECT_FORMAT_ERROR({1, 4, 4, 5, 7, 70, 0xFFFFFFFF});
    EXPECT_FORMAT_ERROR({1, 4, 4, 0, 7, 70, 0});
}

TEST(DictionaryXdrDeathTest, BucketCountThatNothingSupportsIsFatal) {
    EXPECT_FORMAT_ERROR({0, 4, 4, 0xFFFFFFFF});
    EXPECT_FORMAT_ERROR({0, 4, 4, 0x40000001});  // its bytes wrap 32 bits
    EXPECT_FORMAT_ERROR({0, 4, 4, 0x20000000});
    EXPECT_FORMAT_ERROR({1, 4, 4, 0x02000000, 7, 70, 0x01FFFFFF});
}

#undef EXPECT_FORMAT_ERROR

TEST_F(DictionaryXdr, CountThatTheStreamMerelyClaimsFailsAtItsEnd) {
    ProbeDictionary read(qnDictionary_type);
    Scripted t({0xFFFFFFFF, 4, 4, 5, 7, 70, 0});
    EXPECT_FALSE(read.doxdr(t));
    EXPECT_EQ(read.table(), "0: 7");
}

// The root part

TEST_F(DictionaryXdr, MemberTranscribesTheRootPartOnly) {
    Scripted t;
    EXPECT_TRUE(d.qnDictionary::xdr(t));
    EXPECT_EQ(t.passed, "qnXDRObj same");
    t.failing = true;
    EXPECT_FALSE(d.qnDictionary::xdr(t));
}

TEST_F(DictionaryXdr, StaticFunctionIsBoundToTheBaseClasssMember) {
    Scripted t;
    EXPECT_TRUE(qnDictionary_type.xdr(static_cast<qnDictionary*>(&d), t));
    EXPECT_EQ(t.passed, "qnXDRObj same");
}

// In binary. The hash of a one-letter text is the low five bits of the letter, shifted left by 27; 2^27 modulo 5 is 3.

void put(qnStrStrDictionary& d, const char* key, const char* value) {
    qnStr k(key), v(value);
    d.addInternal(&k, &v);
}

std::string written(qnStrStrDictionary& d) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_TRUE(writer.writeObject(&d, &d));
    return stream.output;
}

/** The dictionary that stands in a stream without a header; the caller owns it. */
qnStrStrDictionary* readBack(const std::string& bytes) {
    MemoryStream stream(bytes);
    qnRetain(&stream);
    qnBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    return static_cast<qnStrStrDictionary*>(reader.readObject(qnStrStrDictionary_type));
}

/** "key=value" for each entry of a chain from its head. */
std::string chainOf(qnStrStrDictionary& d, unsigned bucket) {
    std::string text;
    for (qnDictBucket* link = d.buckets.elements()[bucket]; link != nullptr; link = link->next) {
        text += (text.empty() ? "" : " ") + std::string(reinterpret_cast<qnStr*>(link->entry)->text()) + "=" +
                reinterpret_cast<qnStr*>(link->entry + d.keySize)->text();
    }
    return text;
}

/** A chain of f, with an empty value, and a, in bucket 3 of 5. */
Bytes twoInAChain() {
    Bytes bytes = Bytes::type(2, "DICT");
    bytes.u8(0x4A).u8(20).u32(1).u32(2).u32(1).u32(2).u32(8).u32(8).u32(5).u32(2);
    bytes.u8(0x43).u8(12).u32(3).u32(2).u32(1).u32(3).u32(2);  // f, no value, bucket 3, and the length of a
    bytes.u8(0x43).u8(4).u32(4).u32(2).u32(3);                 // a, and the length of its value
    bytes.u8(0x43).u8(4).u32(5).u32(3).u32(3);                 // xy, bucket 3
    bytes.u8(0x45).u8(3).u32(5).u32(3).raw(std::string("xy", 3));
    bytes.u8(0x45).u8(2).u32(4).u32(2).raw(std::string("a", 2));
    return bytes.u8(0x45).u8(2).u32(3).u32(2).raw(std::string("f", 2));
}

TEST(DictionaryBinary, ChainIsWrittenHeadFirst) {
    qnStrStrDictionary d(5);
    put(d, "a", "xy");
    put(d, "f", "");
    EXPECT_EQ(hex(written(d)), hex(twoInAChain().str()));
}

// Deliberate: entries are pushed at the head as they come, and streams do not record places in a chain.
TEST(DictionaryBinary, RoundTripKeepsBucketsAndReversesChains) {
    qnStrStrDictionary d(5);
    for (const char* key : {"a", "f", "k", "b"}) put(d, key, "v");
    ASSERT_EQ(chainOf(d, 3), "k=v f=v a=v");
    qnStrStrDictionary* read = readBack(written(d));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->buckets.length(), 5u);
    EXPECT_EQ(read->count, 4u);
    EXPECT_EQ(chainOf(*read, 3), "a=v f=v k=v");
    EXPECT_EQ(chainOf(*read, 1), "b=v");
    qnStr key("f");
    ASSERT_NE(read->find(&key, nullptr), nullptr);
    EXPECT_EQ(*static_cast<qnStr*>(read->find(&key, nullptr)), "v");
    qnStrStrDictionary* again = readBack(written(*read));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(chainOf(*again, 3), "k=v f=v a=v");
    qnStrStrDictionary::deleteInstance(again);
    qnStrStrDictionary::deleteInstance(read);
}

TEST(DictionaryBinary, HandMadeStreamIsRead) {
    qnStrStrDictionary* read = readBack(twoInAChain().str());
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(chainOf(*read, 3), "a=xy f=");
    EXPECT_EQ(read->keySize, sizeof(qnStr));
    EXPECT_EQ(read->valueSize, sizeof(qnStr));
    EXPECT_EQ(reinterpret_cast<qnStr*>(read->buckets.elements()[3]->next->entry + sizeof(qnStr))->data,
              &qnStr::emptyString);
    put(*read, "z", "26");
    qnStr key("a");
    read->remove(&key);
    EXPECT_EQ(read->count, 2u);
    qnStrStrDictionary::deleteInstance(read);
}

TEST(DictionaryBinary, LongTextsEmptyKeysAndManyEntriesSurvive) {
    qnStrStrDictionary d(7);
    std::string longText(2000, 'q');
    put(d, "", "of the empty key");
    put(d, longText.c_str(), longText.c_str());
    for (int i = 0; i < 500; ++i) put(d, qnStr(i).text(), qnStr(-i).text());
    qnStrStrDictionary* read = readBack(written(d));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->count, 502u);
    unsigned entries = 0;
    for (qnStrStrDictionaryIter it(d); it.dict != nullptr; ++it, ++entries) {
        qnStr* value = static_cast<qnStr*>(read->find(it.getKey(), nullptr));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(*value, *static_cast<qnStr*>(it.getValue()));
    }
    EXPECT_EQ(entries, 502u);
    qnStrStrDictionary::deleteInstance(read);
}

TEST(DictionaryBinary, TwoDictionariesWithOneTypeFollowEachOther) {
    qnStrStrDictionary first(5), second(3);
    put(first, "a", "1");
    put(second, "b", "2");
    MemoryStream out;
    qnRetain(&out);
    {
        qnBinaryWriter writer(&out);
        ASSERT_TRUE(writer.writeObject(&first, &first));
        ASSERT_TRUE(writer.writeObject(&second, &second));
    }
    MemoryStream in(out.output);
    qnRetain(&in);
    qnBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    void* one = reader.readObject(qnStrStrDictionary_type);
    void* two = reader.readObject(qnStrStrDictionary_type);
    ASSERT_NE(one, nullptr);
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(chainOf(*static_cast<qnStrStrDictionary*>(one), 3), "a=1");
    EXPECT_EQ(static_cast<qnStrStrDictionary*>(two)->buckets.length(), 3u);
    qnStrStrDictionary::deleteInstance(one);
    qnStrStrDictionary::deleteInstance(two);
}

}  // namespace DictionaryXdrTest
