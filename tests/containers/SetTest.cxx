// Keys: construction, lookup, adding, removing, cleaning up, copies and assignment. Iterators are in SetIterTest, the
// algebra in SetAlgebraTest, streams in SetXdrTest.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "Set.h"
#include "StrSet.h"
#include "support/ProbeSet.h"
#include "support/ScriptedTranscriber.h"

namespace SetTest {

// Construction

TEST(Set, MadeWithZeroBucketsHas31) {
    ProbeSet s(0);
    EXPECT_EQ(s.buckets.length(), 31u);
    EXPECT_EQ(s.buckets.maxBytes, 31 * sizeof(void*));
}

TEST(Set, MadeWithABucketCountHasThatManyEmptyBuckets) {
    ProbeSet s(7);
    ASSERT_EQ(s.buckets.length(), 7u);
    for (unsigned b = 0; b < 7; ++b) EXPECT_EQ(s.buckets.elements()[b], nullptr) << b;
}

TEST(Set, NewOneHasNoKeysNoIteratorsAndNoHolder) {
    ProbeSet s;
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(s.keySize, 4u);
    EXPECT_EQ(s.iters.length(), 0u);
    EXPECT_EQ(s.iters.data, nullptr);
    EXPECT_EQ(s.refCount, 0u);
}

TEST(Set, FieldsStandInTheirOwnOrder) {
    ProbeSet s;
    std::uintptr_t start = reinterpret_cast<std::uintptr_t>(static_cast<qnSet*>(&s));
    auto offset = [start](const void* field) { return reinterpret_cast<std::uintptr_t>(field) - start; };
    std::uintptr_t afterBuckets = offset(&s.buckets) + sizeof(qnSetBuckets);
    EXPECT_EQ(offset(&s.refCount), sizeof(void*));
    // The table follows the count of holders, as closely as its alignment allows.
    EXPECT_EQ(offset(&s.buckets), sizeof(void*) == 4 ? 8u : 16u);
    EXPECT_EQ(offset(&s.count), afterBuckets);
    EXPECT_EQ(offset(&s.keySize), afterBuckets + 4);
    EXPECT_EQ(offset(&s.iters), afterBuckets + 8);
}

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnSetBuckets) == 24, "an array is 24 bytes");
static_assert(sizeof(qnSetIters) == 24, "an array is 24 bytes");
static_assert(sizeof(qnSetBucket) == 8, "a link is two words");
static_assert(sizeof(qnSetIter) == 20, "an iterator is five words, its virtual table among them");
// 8 of the root, two arrays, two numbers, and a word that remembers whether an assignment has dismantled the set.
static_assert(sizeof(qnSet) == 8 + 24 + 4 + 4 + 24 + 4, "one word more than the fields");
static_assert(sizeof(qnStrSet) == sizeof(qnSet) && sizeof(qnTmpSet) == sizeof(qnSet), "no fields of their own");
#endif
static_assert(offsetof(qnSetBucket, entry) == 0, "the entry comes first");
static_assert(offsetof(qnSetBucket, next) == sizeof(void*), "the next link comes second");
static_assert(std::is_abstract<qnSet>::value, "a subclass says how keys are transcribed");
static_assert(std::is_base_of<qnXDRObj, qnSet>::value, "sets are serialisable");
static_assert(std::is_base_of<qnSet, qnTmpSet>::value, "the temporary is a set");
static_assert(std::is_convertible<const qnSet&, qnTmpSet>::value, "a function may return a set as a temporary");

TEST(Set, ArraysOfBucketsAndIteratorsHoldPointersAndAreCalledArray) {
    ProbeSet s;
    EXPECT_EQ(s.buckets.elementSize, sizeof(void*));
    EXPECT_EQ(s.iters.elementSize, sizeof(void*));
    EXPECT_STREQ(s.buckets.className(), "ARRAY");
    EXPECT_STREQ(s.iters.className(), "ARRAY");
}

TEST(Set, ArraysOfBucketsAndIteratorsFillNewElementsWithZero) {
    qnSetBuckets buckets(3);
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(buckets.elements()[i], nullptr);
    buckets.resize(200);
    for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(buckets.elements()[i], nullptr);
    qnSetIters iters(3);
    iters.resize(200);
    for (unsigned i = 0; i < 200; ++i) EXPECT_EQ(iters.elements()[i], nullptr);
}

// The number of an operation among the virtual operations, as a pointer to it holds it: after the two entries of the
// destructor.
template <class Member>
unsigned slot(Member operation) {
    std::ptrdiff_t encoded;
    std::memcpy(&encoded, &operation, sizeof encoded);
    return static_cast<unsigned>((encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

TEST(Set, VirtualOperationsStandInTheirSlots) {
    EXPECT_EQ(slot(&qnXDRObj::className), 1u);
    EXPECT_EQ(slot(static_cast<bool (qnSet::*)(qnTranscriber&)>(&qnSet::xdr)), 2u);
    EXPECT_EQ(slot(&qnSet::getTypeObj), 3u);
    EXPECT_EQ(slot(&qnSet::hashKey), 6u);
    EXPECT_EQ(slot(&qnSet::compareKeys), 7u);
    EXPECT_EQ(slot(&qnSet::copyKey), 8u);
    EXPECT_EQ(slot(&qnSet::destroyKey), 9u);
    EXPECT_EQ(slot(&qnSet::xdrKey), 10u);
}

// Deliberate: sets have no name of their own.
TEST(Set, ClassNameIsTheRoots) {
    ProbeSet s(5);
    qnTmpSet temporary(s);
    EXPECT_STREQ(s.className(), "qnXDRObj");
    EXPECT_STREQ(temporary.className(), "qnXDRObj");
}

TEST(Set, TypeObjectHasNoFactories) {
    EXPECT_STREQ(qnSet_type.name, "qnSet");
    EXPECT_EQ(qnSet_type.version, 1u);
    EXPECT_EQ(qnSet_type.newInstance, nullptr);
    EXPECT_EQ(qnSet_type.deleteInstance, nullptr);
    ASSERT_NE(qnSet_type.xdr, nullptr);
    EXPECT_EQ(qnTypeObj::findType("qnSet"), &qnSet_type);
    ProbeSet s(5);
    EXPECT_EQ(&s.getTypeObj(), &qnSet_type) << "what a class without its own answers";
    EXPECT_EQ(&qnTmpSet(s).getTypeObj(), &qnSet_type);
}

// Adding

TEST(Set, AddingAnAbsentKeyHashesOnceAndCopiesIt) {
    ProbeSet s(5);
    s.put(3);
    EXPECT_EQ(s.calls(), "hash 3, copyKey 3");
    EXPECT_EQ(s.count, 1u);
    EXPECT_EQ(s.table(), "3: 3");
    EXPECT_EQ(ProbeSet::at(s.buckets.elements()[3]->entry), 3);
    EXPECT_EQ(s.buckets.elements()[3]->next, nullptr);
}

TEST(Set, AddingPushesAtTheHeadOfTheChain) {
    ProbeSet s(5, {3, 8, 13});
    EXPECT_EQ(s.table(), "3: 13 8 3");
    EXPECT_EQ(s.count, 3u);
}

TEST(Set, AddingAKeyThatIsThereKeepsTheStoredRecord) {
    ProbeSet s(1);
    s.modulus = 100;
    s.put(3);
    int key = 3;
    const void* stored = s.find(&key);
    s.calls();
    s.put(103);
    EXPECT_EQ(s.calls(), "hash 103, compare 103 3") << "neither copied nor destroyed";
    EXPECT_EQ(s.chain(0), "3");
    EXPECT_EQ(s.count, 1u);
    EXPECT_EQ(s.find(&key), stored);
}

TEST(Set, AddingTheStoredRecordItselfChangesNothing) {
    ProbeSet s(5, {3, 8});
    s.add(s.buckets.elements()[3]->entry);
    EXPECT_EQ(s.table(), "3: 8 3");
    EXPECT_EQ(s.count, 2u);
}

// Deliberate: there is no load factor; programs size a set when they make it, and streams hold bucket numbers.
TEST(Set, NeverRehashes) {
    ProbeSet s(3);
    for (int i = 0; i < 1000; ++i) s.put(i);
    EXPECT_EQ(s.buckets.length(), 3u);
    EXPECT_EQ(s.count, 1000u);
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(s.has(i)) << i;
    EXPECT_FALSE(s.has(1000));
}

// Looking up

TEST(Set, FindWalksTheChainFromItsHeadWithTheProbeFirstAndStopsAtTheMatch) {
    ProbeSet s(5, {3, 8, 13, 18});
    int key = 8;
    const void* found = s.find(&key);
    EXPECT_EQ(s.calls(), "hash 8, compare 8 18, compare 8 13, compare 8 8");
    EXPECT_EQ(found, s.buckets.elements()[3]->next->next->entry) << "the stored record, not the probe";
}

TEST(Set, FindOfAnAbsentKeyIsNullAndContainsIsFalse) {
    ProbeSet s(5, {3});
    int absentInChain = 8, absentInEmptyChain = 4, present = 3;
    EXPECT_EQ(s.find(&absentInChain), nullptr);
    EXPECT_EQ(s.find(&absentInEmptyChain), nullptr);
    EXPECT_FALSE(s.contains(&absentInChain));
    EXPECT_FALSE(s.contains(&absentInEmptyChain));
    EXPECT_TRUE(s.contains(&present));
}

TEST(Set, BucketIsTheUnsignedRemainderOfTheHash) {
    ProbeSet s(0, {-1, INT_MIN});  // 2^32 - 1 and 2^31 modulo 31
    EXPECT_EQ(s.table(), "2: -2147483648 | 3: -1");
}

#if ULONG_MAX > 0xFFFFFFFF
TEST(Set, OnlyTheLow32BitsOfAHashCountSoThatBucketsAreTheSameOnEveryMachine) {
    ProbeSet s(7);
    s.hasher = [](int key) { return 0xFFFFFFFF00000000ul | static_cast<unsigned long>(key); };
    s.put(5);
    EXPECT_EQ(s.table(), "5: 5");
    EXPECT_TRUE(s.has(5));
    s.removeKey(5);
    EXPECT_EQ(s.count, 0u);
}
#endif

// The provided key operations

TEST(Set, WordHashOfKeysShorterThanAWordIsZero) {
    ProbeSet s;
    const unsigned char key[4] = {1, 2, 3, 4};
    for (unsigned size = 0; size < 4; ++size) {
        s.keySize = size;
        EXPECT_EQ(s.qnSet::hashKey(key), 0u) << size;
    }
}

TEST(Set, WordHashIsTheExclusiveOrOfTheWordsAndIgnoresTrailingBytes) {
    ProbeSet s;
    unsigned words[4] = {0xFFFF0000u, 0x0F0F0F0Fu, 0x00000001u, 0xFFFFFFFFu};
    struct {
        unsigned keySize;
        unsigned long hash;
    } cases[] = {{4, 0xFFFF0000u},  {5, 0xFFFF0000u},  {7, 0xFFFF0000u}, {8, 0xF0F00F0Fu},
                 {11, 0xF0F00F0Fu}, {12, 0xF0F00F0Eu}, {16, 0x0F0FF0F1u}};
    for (const auto& c : cases) {
        s.keySize = c.keySize;
        EXPECT_EQ(s.qnSet::hashKey(words), c.hash) << c.keySize;
    }
}

TEST(Set, KeysAreComparedAsUnsignedBytesOverTheKeySize) {
    ProbeSet s;
    const unsigned char a[4] = {1, 2, 3, 0x7F}, b[4] = {1, 2, 3, 0x80};
    EXPECT_LT(s.qnSet::compareKeys(a, b), 0);
    EXPECT_GT(s.qnSet::compareKeys(b, a), 0);
    EXPECT_EQ(s.qnSet::compareKeys(a, a), 0);
    s.keySize = 3;
    EXPECT_EQ(s.qnSet::compareKeys(a, b), 0);
}

/** Records of plain bytes: the base class's operations are all there is. */
class Records : public qnSet {
public:
    explicit Records(unsigned bytesPerKey, unsigned nbuckets = 0) : qnSet(bytesPerKey, nbuckets) {}
    ~Records() override { cleanup(); }
    bool xdrKey(qnTranscriber&, void*) override { return false; }
};

TEST(Set, KeysOfAnySizeAreKeptAsBytes) {
    Records points(12), flags(3), nothing(0);
    const int a[3] = {1, 2, 3}, b[3] = {1, 2, 4};
    points.add(a);
    points.add(b);
    points.add(a);
    EXPECT_EQ(points.count, 2u);
    ASSERT_NE(points.find(b), nullptr);
    EXPECT_EQ(std::memcmp(points.find(b), b, sizeof b), 0);
    points.remove(a);
    EXPECT_FALSE(points.contains(a));

    const char yes[3] = {'y', 'e', 's'}, not_[3] = {'n', 'o', 't'};
    flags.add(yes);
    flags.add(not_);
    EXPECT_EQ(flags.count, 2u);
    EXPECT_NE(flags.buckets.elements()[0]->next, nullptr) << "keys shorter than a word hash to 0";

    nothing.add(yes);
    nothing.add(not_);
    EXPECT_EQ(nothing.count, 1u) << "keys of no bytes are all equal";
}

// Removing

TEST(Set, RemoveDestroysTheKey) {
    ProbeSet s(5, {3});
    s.removeKey(3);
    EXPECT_EQ(s.calls(), "hash 3, compare 3 3, destroyKey 3");
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(s.table(), "");
}

TEST(Set, RemoveTakesTheHeadTheMiddleAndTheEndOfAChainOut) {
    ProbeSet s(5, {3, 8, 13, 18, 23});
    s.removeKey(23);
    EXPECT_EQ(s.chain(3), "18 13 8 3");
    s.removeKey(13);
    EXPECT_EQ(s.chain(3), "18 8 3");
    s.removeKey(3);
    EXPECT_EQ(s.chain(3), "18 8");
    EXPECT_EQ(s.count, 2u);
}

TEST(Set, RemoveOfAnAbsentKeyDoesNothing) {
    ProbeSet s(5, {3});
    s.removeKey(8);
    s.removeKey(4);
    EXPECT_EQ(s.calls(), "hash 8, compare 8 3, hash 4");
    EXPECT_EQ(s.count, 1u);
    EXPECT_TRUE(s.has(3));
}

TEST(Set, RemoveTakesTheStoredRecordItself) {
    ProbeSet s(5, {3, 8});
    int key = 3;
    s.remove(s.find(&key));
    EXPECT_EQ(s.table(), "3: 8");
}

// Cleaning up

TEST(Set, CleanupDestroysKeysBucketByBucketFromTheHeads) {
    ProbeSet s(5, {3, 0, 8, 4});
    s.cleanup();
    EXPECT_EQ(s.calls(), "destroyKey 0, destroyKey 8, destroyKey 3, destroyKey 4");
    EXPECT_EQ(s.buckets.length(), 5u);
}

// Deliberate: unlike a dictionary's.
TEST(Set, CleanupCountsDown) {
    ProbeSet s(5, {3, 0, 8, 4});
    s.cleanup();
    EXPECT_EQ(s.count, 0u);
}

TEST(Set, CleanupCountsDownFromWhatTheCountSays) {
    ProbeSet s(5, {3, 0, 8, 4});
    s.count = 10;
    s.cleanup();
    EXPECT_EQ(s.count, 6u);
}

TEST(Set, SecondCleanupDestroysNothing) {
    ProbeSet s(5, {3, 8});
    s.cleanup();
    s.calls();
    s.cleanup();
    EXPECT_EQ(s.calls(), "");
    EXPECT_EQ(s.count, 0u);
    EXPECT_FALSE(s.has(3));
}

TEST(Set, CleanedUpOneCanBeUsedAgain) {
    ProbeSet s(5, {3, 8});
    s.cleanup();
    s.put(13);
    EXPECT_EQ(s.table(), "3: 13");
    EXPECT_EQ(s.count, 1u);
}

TEST(Set, CleanupOfEachClassOfAHierarchyIsHarmless) {
    struct Derived : ProbeSet {
        Derived() : ProbeSet(5, {3, 8}) {}
        ~Derived() override { cleanup(); }
    };
    Derived s;
    qnSetIter it(s);
    EXPECT_EQ(standing(it), "8");
}

// Copies

// Deliberate: neither the bucket count nor the key size is copied.
TEST(Set, CopyOfAnEmptySetHasNoBucketsAndNoKeySize) {
    ProbeSet source(5);
    qnRetain(&source);
    ProbeSet copy(source);
    EXPECT_EQ(copy.buckets.length(), 0u);
    EXPECT_EQ(copy.keySize, 0u);
    EXPECT_EQ(copy.count, 0u);
    EXPECT_EQ(copy.iters.length(), 0u);
    EXPECT_EQ(copy.refCount, 0u);
    source.refCount = 0;
}

TEST(Set, CopyIsMadeFromASetThatWasEmptied) {
    ProbeSet source(5, {3});
    source.removeKey(3);
    ProbeSet copy(source);
    EXPECT_EQ(copy.buckets.length(), 0u);
}

TEST(Set, TemporaryIsACopyAndCanBeCopiedInTurn) {
    ProbeSet source(5);
    qnTmpSet temporary(source);
    EXPECT_EQ(temporary.buckets.length(), 0u);
    EXPECT_EQ(temporary.keySize, 0u);
    EXPECT_EQ(temporary.count, 0u);
    ProbeSet copy(temporary);
    EXPECT_EQ(copy.buckets.length(), 0u);
    qnTmpSet again(temporary);
    EXPECT_EQ(again.buckets.length(), 0u);
}

TEST(Set, TemporaryHasTheBaseClasssKeyOperations) {
    ProbeSet source(5);
    qnTmpSet temporary(source);
    temporary.keySize = 8;
    const unsigned a[2] = {1, 2}, b[2] = {1, 3};
    unsigned copied[2] = {0, 0};
    EXPECT_EQ(temporary.hashKey(a), 3u);
    EXPECT_NE(temporary.compareKeys(a, b), 0);
    temporary.copyKey(b, copied);
    EXPECT_EQ(copied[1], 3u);
    temporary.destroyKey(copied);
    EXPECT_EQ(copied[1], 3u);
}

TEST(SetDeathTest, CopyingASetThatHasKeysIsFatal) {
    ProbeSet source(5, {3});
    const char message[] = "^qnSet::qnSet: the source has keys, but there are no buckets to add them to\n$";
    EXPECT_EXIT(ProbeSet copy(source), testing::KilledBySignal(SIGABRT), message);
    EXPECT_EXIT(qnTmpSet temporary(source), testing::KilledBySignal(SIGABRT), message);
}

TEST(SetDeathTest, CopyingATemporaryThatHasKeysIsFatal) {
    ProbeSet source(5);
    qnTmpSet temporary(source);
    temporary.buckets.resize(5);
    temporary.keySize = sizeof(int);
    int key = 3;
    temporary.add(&key);
    EXPECT_EXIT(ProbeSet copy(temporary), testing::KilledBySignal(SIGABRT),
                "^qnSet::qnSet: the source has keys, but there are no buckets to add them to\n$");
    temporary.cleanup();
}

// Assignment

TEST(Set, AssigningItToItselfChangesNothing) {
    ProbeSet s(5, {3, 8});
    qnSetIter it(s);
    ProbeSet& self = s;
    ProbeSet& result = (s = self);
    EXPECT_EQ(&result, &s);
    EXPECT_EQ(s.calls(), "");
    EXPECT_EQ(s.table(), "3: 8 3");
    EXPECT_EQ(standing(it), "8");
    EXPECT_EQ(&s.getTypeObj(), &qnSet_type);
}

// Deliberate: assignment dismantles the target, and there are no buckets to add keys to.
TEST(Set, AssigningAnEmptySetTakesTheBucketsAway) {
    ProbeSet target(5), empty(7);
    target = empty;
    EXPECT_EQ(target.buckets.length(), 0u);
    EXPECT_EQ(target.buckets.data, nullptr);
    EXPECT_EQ(target.keySize, 4u);
    EXPECT_EQ(target.count, 0u);
    EXPECT_EQ(empty.buckets.length(), 7u);
}

// Deliberate: the destructor of the base class knows no keys, so they are not destroyed and their links are nobody's.
TEST(Set, AssignmentNeitherDestroysKeysNorCountsThem) {
    ProbeSet target(5, {3, 8}), empty(5);
    qnSetBucket* link = target.buckets.elements()[3];
    target = empty;
    EXPECT_EQ(target.calls(), "");
    EXPECT_EQ(target.count, 2u);
    EXPECT_FALSE(target.has(3));
    EXPECT_EQ(ProbeSet::at(link->entry), 8) << "alive";
    EXPECT_EQ(ProbeSet::at(link->next->entry), 3);
    delete link->next;
    delete link;
}

TEST(Set, AssignmentDetachesTheIteratorsOfTheTarget) {
    ProbeSet target(5, {3}), empty(5);
    qnSetIter it(target);
    qnSetBucket* link = it.current;
    target = empty;
    EXPECT_EQ(it.set, nullptr);
    EXPECT_EQ(it.current, nullptr);
    EXPECT_EQ(it.getKey(), nullptr);
    EXPECT_EQ(target.iters.length(), 0u);
    ++it;
    delete link;
}

// Deliberate: what is left is an object of the root class.
TEST(Set, AssignedOneIsTranscribedAsABareRootObject) {
    ProbeSet target(5), empty(5);
    target = empty;
    qnXDRObj& object = target;
    EXPECT_EQ(&object.getTypeObj(), &qnXDRObj_type);
    ScriptedTranscriber t;
    t.failing = true;
    EXPECT_TRUE(object.xdr(t));
    EXPECT_EQ(t.passed, "");
}

TEST(Set, AssignmentIsMadeFromASetWithoutBucketsToo) {
    ProbeSet target(5), bare(qnSet_type);
    target = bare;
    EXPECT_EQ(target.buckets.length(), 0u);
    bare = target;
    EXPECT_EQ(bare.buckets.length(), 0u);
}

TEST(SetDeathTest, AssigningASetThatHasKeysIsFatal) {
    ProbeSet target(5), source(5, {3});
    EXPECT_EXIT(target = source, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator=: the source has keys, but there are no buckets to add them to\n$");
}

// Without buckets

/** The three ways to a set without buckets. */
template <class Check>
void eachWithoutBuckets(Check check) {
    ProbeSet empty(5), assigned(5);
    ProbeSet copied(empty), made(qnSet_type);
    assigned = empty;
    check(copied);
    check(assigned);
    check(made);
}

TEST(Set, MadeByAFactoryHasNeitherBucketsNorKeys) {
    ProbeSet s(qnSet_type);
    EXPECT_EQ(s.buckets.length(), 0u);
    EXPECT_EQ(s.iters.length(), 0u);
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(s.refCount, 0u);
}

TEST(Set, WithoutBucketsFindsNothingAndRemovesNothing) {
    eachWithoutBuckets([](ProbeSet& s) {
        int key = 3;
        EXPECT_EQ(s.find(&key), nullptr);
        EXPECT_FALSE(s.contains(&key));
        s.remove(&key);
        s.cleanup();
        EXPECT_EQ(s.count, 0u);
        EXPECT_EQ(s.calls(), "") << "nothing is hashed";
    });
}

TEST(SetDeathTest, AddingToASetWithoutBucketsIsFatalInEveryBuild) {
    eachWithoutBuckets([](ProbeSet& s) {
        EXPECT_EXIT(s.put(3), testing::KilledBySignal(SIGABRT), "^qnSet::add: the set has no buckets\n$");
    });
}

}  // namespace SetTest
