// Sets in streams: the steps of `doxdr` one by one with a scripted transcriber, then bytes of a binary stream.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "StrSet.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/ProbeSet.h"
#include "support/ScriptedTranscriber.h"

namespace SetXdrTest {

/** Five buckets with the chains "0: 0 | 3: 13 8 3". */
class SetXdr : public testing::Test {
protected:
    SetXdr() : s(5, {3, 0, 8, 13}) {}
    ProbeSet s;
};

// Writing

TEST_F(SetXdr, WritesThreeNumbersThenKeysFromTheHeadsWithTheirBuckets) {
    ScriptedTranscriber t;
    EXPECT_TRUE(s.doxdr(t));
    EXPECT_EQ(t.passed, "u4 u4 u5 i0 u0 i13 u3 i8 u3 i3 u3");
    EXPECT_EQ(s.calls(), "xdrKey, xdrKey, xdrKey, xdrKey") << "nothing is hashed";
}

TEST_F(SetXdr, WritesAnEmptySetAsThreeNumbers) {
    ProbeSet empty(7);
    ScriptedTranscriber t;
    EXPECT_TRUE(empty.doxdr(t));
    EXPECT_EQ(t.passed, "u0 u4 u7");
}

TEST_F(SetXdr, WritesASetWithoutBuckets) {
    ProbeSet bare(qnSet_type), empty(5);
    ProbeSet copy(empty);
    ScriptedTranscriber made, copied;
    EXPECT_TRUE(bare.doxdr(made));
    EXPECT_EQ(made.passed, "u0 u4 u0");
    EXPECT_TRUE(copy.doxdr(copied));
    EXPECT_EQ(copied.passed, "u0 u0 u0");
}

TEST_F(SetXdr, StopsWritingAtTheFirstFailureWhereverItIs) {
    const char* written[] = {"", "u4", "u4 u4", "u4 u4 u5", "u4 u4 u5 i0", "u4 u4 u5 i0 u0"};
    for (unsigned n = 0; n < 6; ++n) {
        ScriptedTranscriber t;
        t.failAt = n;
        EXPECT_FALSE(s.doxdr(t)) << n;
        EXPECT_EQ(t.passed, written[n]);
    }
    ScriptedTranscriber last;
    last.failAt = 10;
    EXPECT_FALSE(s.doxdr(last));
    EXPECT_EQ(last.seen, 10u);
    EXPECT_EQ(s.table(), "0: 0 | 3: 13 8 3");
    EXPECT_EQ(s.count, 4u);
}

// Deliberate: a temporary is not transcribed; it fails at its first key.
TEST_F(SetXdr, TemporaryCannotBeWrittenOnceItHasAKey) {
    ProbeSet empty(5);
    qnTmpSet temporary(empty);
    int key = 3;
    ScriptedTranscriber t;
    EXPECT_FALSE(temporary.xdrKey(t, &key));
    EXPECT_TRUE(temporary.doxdr(t)) << "it has no keys yet";
    EXPECT_EQ(t.passed, "u0 u0 u0");
    temporary.buckets.resize(5);
    temporary.keySize = sizeof(int);
    temporary.add(&key);
    ScriptedTranscriber withKey;
    EXPECT_FALSE(temporary.doxdr(withKey));
    EXPECT_EQ(withKey.passed, "u1 u4 u5");
    temporary.cleanup();
}

// Reading

TEST_F(SetXdr, ReadsKeysIntoTheirBucketsWithoutHashing) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t({3, 4, 2, 7, 1, 9, 0, 5, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(t.passed, "u3 u4 u2 i7 u1 i9 u0 i5 u1");
    EXPECT_EQ(read.calls(), "xdrKey, xdrKey, xdrKey");
    EXPECT_EQ(read.table(), "0: 9 | 1: 5 7") << "each is pushed at the head of its chain";
    EXPECT_EQ(read.count, 3u);
    EXPECT_EQ(read.buckets.length(), 2u);
}

// Deliberate: the stored bucket is believed, so that keys that are complete only later need no hash.
TEST_F(SetXdr, KeyInABucketThatIsNotItsOwnIsThereButNotFound) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t({1, 4, 5, 7, 0});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.table(), "0: 7");
    EXPECT_FALSE(read.has(7));
    qnSetIter it(read);
    EXPECT_EQ(standing(it), "7");
}

TEST_F(SetXdr, SetsWithKeysInForeignBucketsAreCombinedWithThemselves) {
    for (int operation = 0; operation < 3; ++operation) {
        ProbeSet read(qnSet_type);
        ScriptedTranscriber t({2, 4, 5, 7, 0, 8, 3});
        ASSERT_TRUE(read.doxdr(t));
        switch (operation) {
            case 0:
                read += read.itself();
                EXPECT_EQ(read.table(), "0: 7 | 2: 7 | 3: 8");
                break;
            case 1:
                read -= read.itself();
                EXPECT_EQ(read.table(), "0: 7") << "what cannot be found cannot be removed";
                break;
            default: read *= read.itself(); EXPECT_EQ(read.table(), "3: 8");
        }
    }
}

TEST_F(SetXdr, KeyThatStandsTwiceInAStreamIsThereTwice) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t({2, 4, 5, 7, 2, 7, 2});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.table(), "2: 7 7");
    read -= read.itself();
    EXPECT_EQ(read.table(), "");
    EXPECT_EQ(read.count, 0u);
}

TEST_F(SetXdr, BucketCountOfTheStreamReplacesTheOneThatWasThere) {
    ProbeSet read(31);
    ScriptedTranscriber t({1, 4, 3, 7, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.buckets.length(), 3u);
    EXPECT_TRUE(read.has(7));
}

// Deliberate: reading does not empty the set; factories make the ones that are read, and those have no keys.
TEST_F(SetXdr, KeysAndIteratorsThatWereThereStayAndTheCountIsTheStreams) {
    qnSetIter it(s);
    ScriptedTranscriber t({1, 4, 5, 18, 3});
    EXPECT_TRUE(s.doxdr(t));
    EXPECT_EQ(s.table(), "0: 0 | 3: 18 13 8 3");
    EXPECT_EQ(s.count, 1u);
    EXPECT_EQ(standing(it), "0");
    ++it;
    EXPECT_EQ(standing(it), "18");
}

TEST_F(SetXdr, IteratorInATableThatShrinksFinishes) {
    ProbeSet read(7, {0});
    qnSetIter it(read);
    ScriptedTranscriber t({0, 4, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(standing(it), "0");
    ++it;
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(read.iters.length(), 0u);
}

TEST_F(SetXdr, ReadsASetWithoutBuckets) {
    ProbeSet read(5);
    ScriptedTranscriber t({0, 4, 0});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.buckets.length(), 0u);
    EXPECT_FALSE(read.has(3));
}

// Deliberate: the count goes straight to its field, so it is the stream's from the first number on.
TEST_F(SetXdr, CountIsTheStreamsAfterItsNumberEvenWhenTheNextFails) {
    for (unsigned n = 1; n < 3; ++n) {
        ProbeSet read(5);
        ScriptedTranscriber t({9, 4, 2});
        t.failAt = n;
        EXPECT_FALSE(read.doxdr(t));
        EXPECT_EQ(read.count, 9u) << n;
        EXPECT_EQ(read.keySize, 4u) << n;
        EXPECT_EQ(read.buckets.length(), 5u) << n;
    }
}

TEST_F(SetXdr, NothingChangesWhenTheFirstNumberFails) {
    ScriptedTranscriber t(std::vector<unsigned>{});
    EXPECT_FALSE(s.doxdr(t));
    EXPECT_EQ(s.count, 4u);
    EXPECT_EQ(s.table(), "0: 0 | 3: 13 8 3");
}

// Deliberate: a failure in a key leaves its block to nobody, because how far it is constructed is unknown.
TEST_F(SetXdr, FailureAfterAKeyKeepsTheEarlierOnesAndLeavesItsBlockUnowned) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t({3, 4, 2, 7, 1, 9, 0, 5, 1});
    t.failAt = 6;  // the second key's bucket number
    EXPECT_FALSE(read.doxdr(t));
    EXPECT_EQ(read.table(), "1: 7");
    EXPECT_EQ(read.count, 3u);
    std::free(t.addresses[1]);
}

TEST_F(SetXdr, ClassThatHasNotSaidItsKeySizeTakesThatOfTheStream) {
    ProbeSet read(qnSet_type);
    read.keySize = 0;
    ScriptedTranscriber t({1, 8, 2, 7, 1});
    EXPECT_TRUE(read.doxdr(t));
    EXPECT_EQ(read.keySize, 8u);
    EXPECT_EQ(read.table(), "1: 7");
}

TEST_F(SetXdr, LargeTableGrowsWithItsKeysAndEndsAtItsSize) {
    const unsigned nbuckets = (1u << 20) + 64 * 20, keys = (1u << 14) + 20;
    std::vector<unsigned> script = {keys, 4, nbuckets};
    for (unsigned i = 0; i < keys; ++i) {
        unsigned bucket = i + 1 < keys ? i * 64 : nbuckets - 1;
        script.push_back(bucket);
        script.push_back(bucket);
    }
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t(script);
    ASSERT_TRUE(read.doxdr(t));
    read.calls();
    EXPECT_EQ(read.buckets.length(), nbuckets);
    EXPECT_EQ(read.chain(64), "64");
    EXPECT_EQ(read.chain(nbuckets - 1), std::to_string(nbuckets - 1));
    EXPECT_EQ(read.count, keys);
}

TEST_F(SetXdr, LargeTableWithAllItsKeysAtTheEndIsRead) {
    const unsigned nbuckets = 2u << 20, keys = nbuckets / 64;
    std::vector<unsigned> script = {keys, 4, nbuckets};
    for (unsigned i = 0; i < keys; ++i) {
        script.push_back(i);
        script.push_back(i < 2 ? nbuckets - 1 : nbuckets - i);
    }
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t(script);
    ASSERT_TRUE(read.doxdr(t));
    read.calls();
    EXPECT_EQ(read.buckets.length(), nbuckets);
    EXPECT_EQ(read.chain(nbuckets - 1), "1 0");
    EXPECT_EQ(read.chain(nbuckets - 2), "2");
}

TEST_F(SetXdr, CountThatTheStreamMerelyClaimsFailsAtItsEnd) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t({0xFFFFFFFF, 4, 5, 7, 0, 9});
    EXPECT_FALSE(read.doxdr(t));
    EXPECT_EQ(read.table(), "0: 7");
    std::free(t.addresses[1]);
}

void readScript(std::vector<unsigned> script) {
    ProbeSet read(qnSet_type);
    ScriptedTranscriber t(script);
    read.doxdr(t);
}

#define EXPECT_FORMAT_ERROR(...) \
    EXPECT_EXIT(readScript(__VA_ARGS__), testing::KilledBySignal(SIGABRT), "^format error\n$")

TEST(SetXdrDeathTest, AnotherKeySizeThanTheClasssIsFatal) {
    EXPECT_FORMAT_ERROR({0, 8, 5});
    EXPECT_FORMAT_ERROR({0, 0, 5});
    EXPECT_FORMAT_ERROR({0, 0xFFFFFFFF, 5});
}

TEST(SetXdrDeathTest, KeysThatAStreamMerelyClaimsAreAtMost65535Bytes) {
    const auto readIntoUnsizedClass = [] {
        ProbeSet read(qnSet_type);
        read.keySize = 0;
        ScriptedTranscriber t({1, 0x10000, 5});
        read.doxdr(t);
    };
    EXPECT_EXIT(readIntoUnsizedClass(), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(SetXdrDeathTest, BucketNumberPastTheTableIsFatal) {
    EXPECT_FORMAT_ERROR({1, 4, 5, 7, 5});
    EXPECT_FORMAT_ERROR({1, 4, 5, 7, 0xFFFFFFFF});
    EXPECT_FORMAT_ERROR({1, 4, 0, 7, 0});
}

TEST(SetXdrDeathTest, BucketCountThatNothingSupportsIsFatal) {
    EXPECT_FORMAT_ERROR({0, 4, 0xFFFFFFFF});
    EXPECT_FORMAT_ERROR({0, 4, 0x40000001});  // its bytes wrap 32 bits
    EXPECT_FORMAT_ERROR({0, 4, 0x20000000});
    EXPECT_FORMAT_ERROR({1, 4, 0x02000000, 7, 0x01FFFFFF});
}

#undef EXPECT_FORMAT_ERROR

// The root part

TEST_F(SetXdr, MemberTranscribesTheRootPartOnly) {
    ScriptedTranscriber t;
    EXPECT_TRUE(s.qnSet::xdr(t));
    EXPECT_EQ(t.passed, "qnXDRObj same");
    t.failing = true;
    EXPECT_FALSE(s.qnSet::xdr(t));
}

TEST_F(SetXdr, StaticFunctionIsBoundToTheBaseClasssMember) {
    ScriptedTranscriber t;
    EXPECT_TRUE(qnSet_type.xdr(static_cast<qnSet*>(&s), t));
    EXPECT_EQ(t.passed, "qnXDRObj same");
}

TEST_F(SetXdr, StringSetsMemberAndStaticFunctionTranscribeItWhole) {
    qnStrSet strings(5);
    ScriptedTranscriber member, function;
    EXPECT_TRUE(strings.xdr(member));
    EXPECT_EQ(member.passed, "u0 u8 u5") << "a string counts as 8 bytes on every machine";
    EXPECT_TRUE(qnStrSet_type.xdr(&strings, function));
    EXPECT_EQ(function.passed, "u0 u8 u5");
}

TEST_F(SetXdr, AssignedStringSetIsTranscribedAsABareRootObject) {
    qnStrSet strings(5), empty(5);
    strings = empty;
    qnXDRObj& object = strings;
    EXPECT_EQ(&object.getTypeObj(), &qnXDRObj_type);
    ScriptedTranscriber t;
    EXPECT_TRUE(object.xdr(t));
    EXPECT_EQ(t.passed, "");
}

TEST(SetXdrDeathTest, StringSetRefusesAnotherKeySizeThanEight) {
    for (unsigned size : {0u, 4u, 16u}) {
        qnStrSet made(qnStrSet_type), plain(5), empty(5);
        qnStrSet copy(empty);
        for (qnStrSet* read : {&made, &plain, &copy}) {
            ScriptedTranscriber t({0, size, 5});
            EXPECT_EXIT(read->doxdr(t), testing::KilledBySignal(SIGABRT), "^format error\n$") << size;
        }
    }
}

TEST_F(SetXdr, StringSetsThatAreReadKeepTheirKeySizeInMemory) {
    qnStrSet made(qnStrSet_type), empty(5);
    qnStrSet copy(empty);
    for (qnStrSet* read : {&made, &copy}) {
        ScriptedTranscriber t({0, 8, 5});
        EXPECT_TRUE(read->doxdr(t));
        EXPECT_EQ(read->keySize, sizeof(qnStr));
        EXPECT_EQ(read->buckets.length(), 5u);
        qnStr key("now it takes keys");
        read->add(&key);
        EXPECT_TRUE(read->contains(&key));
    }
}

// In binary. The hash of a one-letter text is the low five bits of the letter, shifted left by 27; 2^27 modulo 5 is 3.
// Of two letters the second is shifted by 27 and the first by 19; 2^19 modulo 5 is 3 too. For fx the hash is therefore
// 3 * 102 + 3 * 24 = 378, modulo 5: 3.

void put(qnStrSet& s, const char* key) {
    qnStr k(key);
    s.add(&k);
}

std::string written(qnStrSet& s) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_TRUE(writer.writeObject(&s, &s));
    return stream.output;
}

/** The set that stands in a stream without a header; the caller owns it. */
qnStrSet* readBack(const std::string& bytes) {
    MemoryStream stream(bytes);
    qnRetain(&stream);
    qnBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    return static_cast<qnStrSet*>(reader.readObject(qnStrSet_type));
}

/** The keys of a chain from its head. */
std::string chainOf(qnStrSet& s, unsigned bucket) {
    std::string text;
    for (qnSetBucket* link = s.buckets.elements()[bucket]; link != nullptr; link = link->next) {
        text += (text.empty() ? "" : " ") + std::string(reinterpret_cast<qnStr*>(link->entry)->text());
    }
    return text;
}

/** The empty text in bucket 0, and a chain of fx and a in bucket 3 of 5. */
Bytes threeKeys() {
    Bytes bytes = Bytes::type(2, "SET");
    // Instance 1 of type 2: three keys of 8 bytes, 5 buckets; the empty text, bucket 0; the length of fx.
    bytes.u8(0x4A).u8(24).u32(1).u32(2).u32(1).u32(3).u32(8).u32(5).u32(1).u32(0).u32(3);
    bytes.u8(0x43).u8(8).u32(3).u32(3).u32(3).u32(2);  // fx is array 3 of 3 bytes; bucket 3, and the length of a
    bytes.u8(0x43).u8(4).u32(4).u32(2).u32(3);         // a is array 4 of 2 bytes; bucket 3
    bytes.u8(0x45).u8(2).u32(4).u32(2).raw(std::string("a", 2));
    return bytes.u8(0x45).u8(3).u32(3).u32(3).raw(std::string("fx", 3));
}

TEST(SetBinary, KeysAreWrittenBucketByBucketFromTheHeads) {
    qnStrSet s(5);
    for (const char* key : {"a", "fx", ""}) put(s, key);
    ASSERT_EQ(chainOf(s, 3), "fx a");
    EXPECT_EQ(hex(written(s)), hex(threeKeys().str()));
}

TEST(SetBinary, EmptySetIsThreeNumbers) {
    qnStrSet s(5);
    Bytes bytes = Bytes::type(2, "SET");
    bytes.u8(0x4A).u8(12).u32(1).u32(2).u32(1).u32(0).u32(8).u32(5);
    EXPECT_EQ(hex(written(s)), hex(bytes.str()));
}

TEST(SetBinary, HandMadeStreamIsRead) {
    qnStrSet* read = readBack(threeKeys().str());
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(chainOf(*read, 3), "a fx");
    EXPECT_EQ(chainOf(*read, 0), "");
    ASSERT_NE(read->buckets.elements()[0], nullptr);
    EXPECT_EQ(reinterpret_cast<qnStr*>(read->buckets.elements()[0]->entry)->data, &qnStr::emptyString);
    EXPECT_EQ(read->count, 3u);
    EXPECT_EQ(read->keySize, sizeof(qnStr));
    EXPECT_EQ(read->buckets.length(), 5u);
    qnStr key("a");
    EXPECT_TRUE(read->contains(&key));
    put(*read, "z");
    read->remove(&key);
    EXPECT_EQ(read->count, 3u);
    qnStrSet::deleteInstance(read);
}

// Deliberate: keys are pushed at the head as they come, and streams do not record places in a chain.
TEST(SetBinary, RoundTripKeepsBucketsAndReversesChains) {
    qnStrSet s(5);
    for (const char* key : {"a", "f", "k", "b"}) put(s, key);
    ASSERT_EQ(chainOf(s, 3), "k f a");
    qnStrSet* read = readBack(written(s));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->buckets.length(), 5u);
    EXPECT_EQ(read->count, 4u);
    EXPECT_EQ(chainOf(*read, 3), "a f k");
    EXPECT_EQ(chainOf(*read, 1), "b");
    qnStrSet* again = readBack(written(*read));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(chainOf(*again, 3), "k f a");
    qnStrSet::deleteInstance(again);
    qnStrSet::deleteInstance(read);
}

TEST(SetBinary, LongTextsTheEmptyKeyAndManyKeysSurvive) {
    qnStrSet s(7);
    put(s, "");
    put(s, std::string(2000, 'q').c_str());
    for (int i = 0; i < 500; ++i) put(s, qnStr(i).text());
    qnStrSet* read = readBack(written(s));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->count, 502u);
    unsigned keys = 0;
    for (qnStrSetIter it(s); it.set != nullptr; ++it, ++keys) EXPECT_TRUE(read->contains(it.getKey()));
    EXPECT_EQ(keys, 502u);
    s -= *read;
    EXPECT_EQ(s.count, 0u);
    qnStrSet::deleteInstance(read);
}

TEST(SetBinary, AssignedSetIsWrittenAsABareRootObject) {
    qnStrSet s(5), empty(5);
    s = empty;
    Bytes bytes = Bytes::type(2, "qnXDRObj");
    bytes.u8(0x0A).u32(1).u32(2).u32(1);
    EXPECT_EQ(hex(written(s)), hex(bytes.str()));
}

}  // namespace SetXdrTest
