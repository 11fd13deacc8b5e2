// Entries: construction, lookup, adding, removing, assignment. Iterators are in DictIterTest, streams in
// DictionaryXdrTest.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "Dictionary.h"
#include "StrStrDictionary.h"
#include "VoidPtrDict.h"
#include "support/ProbeDictionary.h"

namespace DictionaryTest {

// Construction

TEST(Dictionary, MadeWithZeroBucketsHas31) {
    ProbeDictionary d(0);
    EXPECT_EQ(d.buckets.length(), 31u);
    EXPECT_EQ(d.buckets.maxBytes, 31 * sizeof(void*));
}

TEST(Dictionary, MadeWithABucketCountHasThatManyEmptyBuckets) {
    ProbeDictionary d(7);
    ASSERT_EQ(d.buckets.length(), 7u);
    for (unsigned b = 0; b < 7; ++b) EXPECT_EQ(d.buckets.elements()[b], nullptr) << b;
}

TEST(Dictionary, NewOneHasNoEntriesNoIteratorsAndNoHolder) {
    ProbeDictionary d;
    EXPECT_EQ(d.count, 0u);
    EXPECT_EQ(d.keySize, 4u);
    EXPECT_EQ(d.valueSize, 4u);
    EXPECT_EQ(d.iters.length(), 0u);
    EXPECT_EQ(d.iters.data, nullptr);
    EXPECT_EQ(d.refCount, 0u);
}

TEST(Dictionary, FieldsStandInTheirOrder) {
    ProbeDictionary d;
    std::uintptr_t start = reinterpret_cast<std::uintptr_t>(static_cast<qnDictionary*>(&d));
    auto offset = [start](const void* field) { return reinterpret_cast<std::uintptr_t>(field) - start; };
    std::uintptr_t root = sizeof(void*) + 4;
    EXPECT_EQ(offset(&d.refCount), sizeof(void*));
    EXPECT_EQ(offset(&d.count), root);
    EXPECT_EQ(offset(&d.keySize), root + 4);
    EXPECT_EQ(offset(&d.valueSize), root + 8);
    EXPECT_EQ(offset(&d.buckets), root + 12);
    EXPECT_EQ(offset(&d.iters), root + 12 + sizeof(qnDictBuckets));
}

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnDictBuckets) == 24, "an array is 24 bytes");
static_assert(sizeof(qnDictIters) == 24, "an array is 24 bytes");
static_assert(sizeof(qnDictBucket) == 8, "a link is two words");
static_assert(sizeof(qnDictIter) == 16, "an iterator is four words");
#endif
static_assert(offsetof(qnDictBucket, entry) == 0, "the entry comes first");
static_assert(offsetof(qnDictBucket, next) == sizeof(void*), "the next link comes second");

TEST(Dictionary, ArraysOfBucketsAndIteratorsHoldPointersAndAreCalledArray) {
    ProbeDictionary d;
    EXPECT_EQ(d.buckets.elementSize, sizeof(void*));
    EXPECT_EQ(d.iters.elementSize, sizeof(void*));
    EXPECT_STREQ(d.buckets.className(), "ARRAY");
    EXPECT_STREQ(d.iters.className(), "ARRAY");
}

TEST(Dictionary, ArraysOfBucketsAndIteratorsFillNewElementsWithZero) {
    qnDictBuckets buckets(3);
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(buckets.elements()[i], nullptr);
    buckets.resize(200);
    for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(buckets.elements()[i], nullptr);
    qnDictIters iters(3);
    iters.resize(200);
    for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(iters.elements()[i], nullptr);
}

TEST(Dictionary, MadeByAFactoryHasNeitherBucketsNorEntries) {
    ProbeDictionary d(qnDictionary_type);
    EXPECT_EQ(d.buckets.length(), 0u);
    EXPECT_EQ(d.iters.length(), 0u);
    EXPECT_EQ(d.count, 0u);
    EXPECT_EQ(d.refCount, 0u);
}

// The number of an operation among the virtual operations, as a pointer to it holds it: after the two entries of the
// destructor.
template <class Member>
unsigned slot(Member operation) {
    std::ptrdiff_t encoded;
    std::memcpy(&encoded, &operation, sizeof encoded);
    return static_cast<unsigned>((encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

TEST(Dictionary, VirtualOperationsStandInTheirSlots) {
    EXPECT_EQ(slot(&qnDictionary::className), 1u);
    EXPECT_EQ(slot(static_cast<bool (qnDictionary::*)(qnTranscriber&)>(&qnDictionary::xdr)), 2u);
    EXPECT_EQ(slot(&qnDictionary::getTypeObj), 3u);
    EXPECT_EQ(slot(&qnXDRObj::xdrFail), 4u);
    EXPECT_EQ(slot(&qnXDRObj::xdrSuccess), 5u);
    EXPECT_EQ(slot(&qnDictionary::addInternal), 6u);
    EXPECT_EQ(slot(&qnDictionary::hashKey), 7u);
    EXPECT_EQ(slot(&qnDictionary::compareKeys), 8u);
    EXPECT_EQ(slot(&qnDictionary::copyKey), 9u);
    EXPECT_EQ(slot(&qnDictionary::destroyKey), 10u);
    EXPECT_EQ(slot(&qnDictionary::copyValue), 11u);
    EXPECT_EQ(slot(&qnDictionary::destroyValue), 12u);
    EXPECT_EQ(slot(&qnDictionary::createValue), 13u);
    EXPECT_EQ(slot(&qnDictionary::xdrKey), 14u);
    EXPECT_EQ(slot(&qnDictionary::xdrValue), 15u);
}

// Adding

TEST(Dictionary, AddingAnAbsentKeyHashesOnceAndCopiesKeyThenValue) {
    ProbeDictionary d(5);
    d.add(3, 30);
    EXPECT_EQ(d.calls(), "hash 3, copyKey 3, copyValue 30");
    EXPECT_EQ(d.count, 1u);
    EXPECT_EQ(d.table(), "3: 3");
}

TEST(Dictionary, AddingPushesAtTheHeadOfTheChain) {
    ProbeDictionary d(5);
    d.add(3, 30);
    d.add(8, 80);
    d.add(13, 130);
    EXPECT_EQ(d.table(), "3: 13 8 3");
    EXPECT_EQ(d.count, 3u);
}

TEST(Dictionary, AddingAnExistingKeyKeepsTheStoredKeyAndDestroysTheOldValueFirst) {
    ProbeDictionary d(1);
    d.modulus = 100;
    d.add(3, 30);
    void* where;
    int key = 3;
    void* value = d.find(&key, &where);
    d.calls();
    d.add(103, 31);
    EXPECT_EQ(d.calls(), "hash 103, compare 103 3, destroyValue 30, copyValue 31");
    EXPECT_EQ(d.chain(0), "3");
    EXPECT_EQ(d.count, 1u);
    EXPECT_EQ(d.find(&key, nullptr), value) << "the record stays where it is";
    EXPECT_EQ(ProbeDictionary::at(value), 31);
}

TEST(Dictionary, EntryIsTheKeyRecordFollowedByTheValueRecord) {
    ProbeDictionary d(5);
    d.add(3, 30);
    qnDictBucket* link = d.buckets.elements()[3];
    EXPECT_EQ(ProbeDictionary::at(link->entry), 3);
    EXPECT_EQ(ProbeDictionary::at(link->entry + 4), 30);
    EXPECT_EQ(link->next, nullptr);
}

// Deliberate: there is no load factor; programs size a dictionary when they make it, and streams hold bucket numbers.
TEST(Dictionary, NeverRehashes) {
    ProbeDictionary d(3);
    for (int i = 0; i < 1000; ++i) d.add(i, -i);
    EXPECT_EQ(d.buckets.length(), 3u);
    EXPECT_EQ(d.count, 1000u);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(d.value(i), -i);
}

TEST(Dictionary, AddingAnEntrysOwnValueLeavesItAlone) {
    ProbeDictionary d(5);
    d.add(3, 30);
    int key = 3;
    void* own = d.find(&key, nullptr);
    d.calls();
    d.addInternal(&key, own);
    EXPECT_EQ(d.calls(), "hash 3, compare 3 3");
    EXPECT_EQ(d.value(3), 30);
    EXPECT_EQ(d.count, 1u);
}

TEST(Dictionary, AddingAnEntrysOwnKeyAndAnotherEntrysValueWorks) {
    ProbeDictionary d(5);
    d.add(3, 30);
    d.add(4, 40);
    d.addInternal(d.buckets.elements()[3]->entry, d.buckets.elements()[4]->entry + 4);
    EXPECT_EQ(d.value(3), 40);
    EXPECT_EQ(d.value(4), 40);
}

TEST(Dictionary, FindCreateMakesADefaultValueOnlyWhenTheKeyIsAbsent) {
    ProbeDictionary d(5);
    int key = 8;
    void* made = d.findCreate(&key);
    EXPECT_EQ(d.calls(), "hash 8, copyKey 8, createValue");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(ProbeDictionary::at(made), 0);
    EXPECT_EQ(d.count, 1u);
    int value = 77;
    std::memcpy(made, &value, sizeof value);
    EXPECT_EQ(d.findCreate(&key), made);
    EXPECT_EQ(d.calls(), "hash 8, compare 8 8");
    EXPECT_EQ(d.value(8), 77) << "an existing value is returned untouched";
    EXPECT_EQ(d.count, 1u);
}

TEST(Dictionary, FindCreatePushesAtTheHeadOfTheChain) {
    ProbeDictionary d(5);
    for (int key : {3, 8, 13}) d.findCreate(&key);
    EXPECT_EQ(d.chain(3), "13 8 3");
}

// Looking up

TEST(Dictionary, FindWalksTheChainFromItsHeadWithTheProbeFirstAndStopsAtTheMatch) {
    ProbeDictionary d(5);
    for (int key : {3, 8, 13, 18}) d.add(key, 10 * key);
    d.calls();
    int key = 8;
    EXPECT_EQ(ProbeDictionary::at(d.find(&key, nullptr)), 80);
    EXPECT_EQ(d.calls(), "hash 8, compare 8 18, compare 8 13, compare 8 8");
}

TEST(Dictionary, FindTellsTheLink) {
    ProbeDictionary d(5);
    for (int key : {3, 8}) d.add(key, 10 * key);
    int key = 3;
    void* where = &key;
    void* value = d.find(&key, &where);
    EXPECT_EQ(where, d.buckets.elements()[3]->next);
    EXPECT_EQ(value, static_cast<qnDictBucket*>(where)->entry + 4);
}

TEST(Dictionary, FindOfAnAbsentKeyIsNullAndSoIsTheLink) {
    ProbeDictionary d(5);
    d.add(3, 30);
    int absentInChain = 8, absentInEmptyChain = 4;
    void* where = &d;
    EXPECT_EQ(d.find(&absentInChain, &where), nullptr);
    EXPECT_EQ(where, nullptr);
    where = &d;
    EXPECT_EQ(d.find(&absentInEmptyChain, &where), nullptr);
    EXPECT_EQ(where, nullptr);
    EXPECT_EQ(d.find(&absentInChain, nullptr), nullptr);
}

TEST(Dictionary, BucketIsTheUnsignedRemainderOfTheHash) {
    ProbeDictionary d;
    d.add(-1, 0);       // 2^32 - 1 modulo 31
    d.add(INT_MIN, 0);  // 2^31 modulo 31
    EXPECT_EQ(d.table(), "2: -2147483648 | 3: -1");
}

#if ULONG_MAX > 0xFFFFFFFF
TEST(Dictionary, OnlyTheLow32BitsOfAHashCountSoThatBucketsAreTheSameOnEveryMachine) {
    ProbeDictionary d(7);
    d.hasher = [](int key) { return 0xFFFFFFFF00000000ul | static_cast<unsigned long>(key); };
    d.add(5, 50);
    EXPECT_EQ(d.table(), "5: 5");
    EXPECT_EQ(d.value(5), 50);
    d.removeKey(5);
    EXPECT_EQ(d.count, 0u);
}
#endif

// The provided hash

TEST(Dictionary, WordHashOfKeysShorterThanAWordIsZero) {
    ProbeDictionary d;
    const unsigned char key[3] = {1, 2, 3};
    for (unsigned size = 0; size < 4; ++size) {
        d.keySize = size;
        EXPECT_EQ(d.qnDictionary::hashKey(key), 0u) << size;
    }
}

TEST(Dictionary, WordHashIsTheExclusiveOrOfTheWordsAndIgnoresTrailingBytes) {
    ProbeDictionary d;
    unsigned words[4] = {0xFFFF0000u, 0x0F0F0F0Fu, 0x00000001u, 0xFFFFFFFFu};
    struct {
        unsigned keySize;
        unsigned long hash;
    } cases[] = {{4, 0xFFFF0000u},  {5, 0xFFFF0000u},  {7, 0xFFFF0000u}, {8, 0xF0F00F0Fu},
                 {11, 0xF0F00F0Fu}, {12, 0xF0F00F0Eu}, {16, 0x0F0FF0F1u}};
    for (const auto& c : cases) {
        d.keySize = c.keySize;
        EXPECT_EQ(d.qnDictionary::hashKey(words), c.hash) << c.keySize;
    }
}

TEST(Dictionary, WordHashReadsKeysAtAnyAddress) {
    ProbeDictionary d;
    d.keySize = 8;
    unsigned words[2] = {0x12345678u, 0x00000001u};
    char bytes[9];
    std::memcpy(bytes + 1, words, sizeof words);
    EXPECT_EQ(d.qnDictionary::hashKey(bytes + 1), 0x12345679u);
}

// Removing

TEST(Dictionary, RemoveDestroysKeyThenValue) {
    ProbeDictionary d(5);
    d.add(3, 30);
    d.calls();
    d.removeKey(3);
    EXPECT_EQ(d.calls(), "hash 3, compare 3 3, destroyKey 3, destroyValue 30");
    EXPECT_EQ(d.count, 0u);
    EXPECT_EQ(d.table(), "");
}

TEST(Dictionary, RemoveTakesTheHeadTheMiddleAndTheEndOfAChainOut) {
    ProbeDictionary d(5);
    for (int key : {3, 8, 13, 18, 23}) d.add(key, 0);
    d.removeKey(23);
    EXPECT_EQ(d.chain(3), "18 13 8 3");
    d.removeKey(13);
    EXPECT_EQ(d.chain(3), "18 8 3");
    d.removeKey(3);
    EXPECT_EQ(d.chain(3), "18 8");
    EXPECT_EQ(d.count, 2u);
}

TEST(Dictionary, RemoveOfAnAbsentKeyDoesNothing) {
    ProbeDictionary d(5);
    d.add(3, 30);
    d.calls();
    d.removeKey(8);
    d.removeKey(4);
    EXPECT_EQ(d.calls(), "hash 8, compare 8 3, hash 4");
    EXPECT_EQ(d.count, 1u);
    EXPECT_EQ(d.value(3), 30);
}

TEST(Dictionary, RemoveTakesAnEntrysOwnKey) {
    qnStrStrDictionary d;
    qnStr key("a key that has a block of its own"), value("v");
    d.addInternal(&key, &value);
    void* where;
    d.find(&key, &where);
    d.remove(static_cast<qnDictBucket*>(where)->entry);
    EXPECT_EQ(d.count, 0u);
}

TEST(Dictionary, CutMovesTheValueToABlockOfTheCallers) {
    ProbeDictionary d(5);
    for (int key : {3, 8, 13}) d.add(key, 10 * key);
    d.calls();
    int key = 8;
    void* value = d.cut(&key);
    EXPECT_EQ(d.calls(), "hash 8, compare 8 13, compare 8 8, destroyKey 8") << "neither copied nor destroyed";
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(ProbeDictionary::at(value), 80);
    std::free(value);
    EXPECT_EQ(d.count, 2u);
    EXPECT_EQ(d.chain(3), "13 3");
}

TEST(Dictionary, CutOfAnAbsentKeyIsNullAndChangesNothing) {
    ProbeDictionary d(5);
    d.add(3, 30);
    int key = 8;
    EXPECT_EQ(d.cut(&key), nullptr);
    EXPECT_EQ(d.count, 1u);
    EXPECT_EQ(d.value(3), 30);
}

// Cleaning up

TEST(Dictionary, CleanupDestroysEntriesBucketByBucketFromTheHeads) {
    ProbeDictionary d(5);
    for (int key : {3, 0, 8, 4}) d.add(key, 10 * key);
    d.calls();
    d.cleanup();
    EXPECT_EQ(d.calls(),
              "destroyKey 0, destroyValue 0, destroyKey 8, destroyValue 80, destroyKey 3, destroyValue 30, "
              "destroyKey 4, destroyValue 40");
    EXPECT_EQ(d.table(), "");
    EXPECT_EQ(d.buckets.length(), 5u);
}

// Deliberate: cleaning up belongs to destruction, so nobody asks for the count afterwards.
TEST(Dictionary, CleanupLeavesTheCount) {
    ProbeDictionary d(5);
    for (int key : {3, 0, 8, 4}) d.add(key, 10 * key);
    d.cleanup();
    EXPECT_EQ(d.count, 4u);
}

TEST(Dictionary, SecondCleanupDestroysNothing) {
    ProbeDictionary d(5);
    d.add(3, 30);
    d.cleanup();
    d.calls();
    d.cleanup();
    EXPECT_EQ(d.calls(), "");
    EXPECT_FALSE(d.has(3));
}

// Copy and assignment

TEST(Dictionary, CopyAddsEveryEntryBucketByBucketFromTheHeads) {
    ProbeDictionary source(5);
    for (int key : {3, 0, 8, 13}) source.add(key, 10 * key);
    ProbeDictionary copy(source);
    EXPECT_EQ(copy.calls(),
              "hash 0, copyKey 0, copyValue 0, hash 13, copyKey 13, copyValue 130, "
              "hash 8, compare 8 13, copyKey 8, copyValue 80, hash 3, compare 3 8, compare 3 13, copyKey 3, "
              "copyValue 30");
    EXPECT_EQ(copy.table(), "0: 0 | 3: 3 8 13") << "each chain is reversed";
    EXPECT_EQ(source.table(), "0: 0 | 3: 13 8 3");
    EXPECT_EQ(copy.count, 4u);
    EXPECT_EQ(copy.buckets.length(), 5u);
    EXPECT_EQ(copy.keySize, 4u);
    EXPECT_EQ(copy.valueSize, 4u);
}

TEST(Dictionary, CopyHasNeitherTheIteratorsNorTheHoldersOfItsSource) {
    ProbeDictionary source(5);
    source.add(3, 30);
    qnDictIter it(source);
    qnRetain(&source);
    ProbeDictionary copy(source);
    EXPECT_EQ(copy.iters.length(), 0u);
    EXPECT_EQ(copy.refCount, 0u);
    source.refCount = 0;
}

TEST(Dictionary, CopyIsIndependent) {
    ProbeDictionary source(5);
    source.add(3, 30);
    ProbeDictionary copy(source);
    source.add(3, 31);
    source.removeKey(3);
    EXPECT_EQ(copy.value(3), 30);
}

TEST(Dictionary, BaseCopyTakesOverTheShapeOnly) {
    ProbeDictionary source(5);
    source.add(3, 30);
    ProbeDictionary copy(source, ProbeDictionary::shapeOnly);
    EXPECT_EQ(copy.calls(), "");
    EXPECT_EQ(copy.buckets.length(), 5u);
    EXPECT_EQ(copy.keySize, 4u);
    EXPECT_EQ(copy.valueSize, 4u);
    EXPECT_EQ(copy.count, 0u);
    EXPECT_EQ(copy.table(), "");
}

TEST(Dictionary, AssigningItToItselfChangesNothing) {
    ProbeDictionary d(5);
    for (int key : {3, 8}) d.add(key, 10 * key);
    d.calls();
    ProbeDictionary& self = d;
    d = self;
    EXPECT_EQ(d.calls(), "");
    EXPECT_EQ(d.table(), "3: 8 3");
}

// Deliberate: assignment merges; programs use it to overlay one set of definitions with another.
TEST(Dictionary, AssignmentMergesAndTheSourcesValuesWin) {
    ProbeDictionary target(5), source(5);
    target.add(1, 10);
    target.add(2, 20);
    source.add(2, 21);
    source.add(3, 31);
    target.calls();
    target = source;
    EXPECT_EQ(target.calls(), "hash 2, compare 2 2, destroyValue 20, copyValue 21, hash 3, copyKey 3, copyValue 31");
    EXPECT_EQ(target.table(), "1: 1 | 2: 2 | 3: 3");
    EXPECT_EQ(target.count, 3u);
    EXPECT_EQ(target.value(1), 10);
    EXPECT_EQ(target.value(2), 21);
    EXPECT_EQ(source.count, 2u);
}

TEST(Dictionary, AssignmentKeepsBucketsIteratorsAndHoldersOfTheTarget) {
    ProbeDictionary target(3), source(5);
    target.add(1, 10);
    qnDictIter it(target);
    source.add(7, 70);
    qnRetain(&source);
    target = source;
    EXPECT_EQ(target.buckets.length(), 3u);
    EXPECT_EQ(target.table(), "1: 7 1");
    EXPECT_EQ(target.refCount, 0u);
    EXPECT_EQ(target.iters.length(), 1u);
    EXPECT_EQ(ProbeDictionary::at(it.getKey()), 1);
    source.refCount = 0;
}

// Deliberate: concrete classes hook adding by overriding one operation, and assignment passes through it.
TEST(Dictionary, AssignmentAddsThroughTheVirtualOperation) {
    struct Refusing : ProbeDictionary {
        void addInternal(const void* key, const void* value) override {
            if (at(key) != 2) qnDictionary::addInternal(key, value);
        }
    };
    Refusing target;
    ProbeDictionary source;
    for (int key : {1, 2, 3}) source.add(key, 0);
    static_cast<ProbeDictionary&>(target) = source;
    EXPECT_EQ(target.table(), "1: 1 | 3: 3");
}

// Without buckets

TEST(Dictionary, WithoutBucketsMissesEveryLookup) {
    ProbeDictionary d(qnDictionary_type);
    int key = 3;
    void* where = &key;
    EXPECT_EQ(d.find(&key, &where), nullptr);
    EXPECT_EQ(where, nullptr);
    d.remove(&key);
    EXPECT_EQ(d.cut(&key), nullptr);
    d.cleanup();
    EXPECT_EQ(d.count, 0u);
}

TEST(Dictionary, WithoutBucketsCanBeCopiedAndAssignedFromAndMergesNothing) {
    ProbeDictionary d(qnDictionary_type), other(5);
    other.add(3, 30);
    ProbeDictionary copy(d);
    EXPECT_EQ(copy.buckets.length(), 0u);
    other = d;
    EXPECT_EQ(other.count, 1u);
    ProbeDictionary empty(5);
    d = empty;
    EXPECT_EQ(d.count, 0u);
}

TEST(DictionaryDeathTest, AddingToADictionaryWithoutBucketsIsFatal) {
    ProbeDictionary d(qnDictionary_type);
    EXPECT_EXIT(d.add(3, 30), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: the dictionary has no buckets\n$");
    int key = 3;
    EXPECT_EXIT(d.findCreate(&key), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::findCreate: the dictionary has no buckets\n$");
}

TEST(DictionaryDeathTest, AssigningEntriesToADictionaryWithoutBucketsIsFatal) {
    ProbeDictionary d(qnDictionary_type), source(5);
    source.add(3, 30);
    EXPECT_EXIT(d = source, testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: the dictionary has no buckets\n$");
}

TEST(DictionaryDeathTest, RecordsThatTogetherPass32BitsAreFatal) {
    ProbeDictionary d(5);
    d.keySize = d.valueSize = 0x80000000u;
    d.hasher = [](int) { return 0ul; };
    EXPECT_EXIT(d.add(3, 30), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: size of 4294967296 bytes exceeds 4294967295\n$");
}

// The type object

TEST(Dictionary, TypeObjectHasNoFactories) {
    EXPECT_STREQ(qnDictionary_type.name, "qnDictionary");
    EXPECT_EQ(qnDictionary_type.version, 1u);
    EXPECT_EQ(qnDictionary_type.newInstance, nullptr);
    EXPECT_EQ(qnDictionary_type.deleteInstance, nullptr);
    ASSERT_NE(qnDictionary_type.xdr, nullptr);
    EXPECT_EQ(qnTypeObj::findType("qnDictionary"), &qnDictionary_type);
    ProbeDictionary d;
    EXPECT_EQ(&d.getTypeObj(), &qnDictionary_type) << "what a class without its own answers";
}

TEST(Dictionary, TheBasesDestroyingOperationsLeaveTheRecordsAlone) {
    ProbeDictionary d;
    int key = 3, value = 4;
    d.qnDictionary::destroyKey(&key);
    d.qnDictionary::destroyValue(&value);
    EXPECT_EQ(3, key);
    EXPECT_EQ(4, value);
    EXPECT_EQ("", d.calls());
}

}  // namespace DictionaryTest
