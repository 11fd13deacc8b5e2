#include <gtest/gtest.h>

#include <set>
#include <string>

#include "StrSet.h"

namespace StrSetTest {

void put(qnStrSet& s, const char* key) {
    qnStr k(key);
    s.add(&k);
}

/** The stored text of a key, or null. */
const char* get(const qnStrSet& s, const char* key) {
    qnStr k(key);
    const void* record = s.find(&k);
    return record == nullptr ? nullptr : static_cast<const qnStr*>(record)->text();
}

const char longText[] = "a text of more than one word, so that its block is worth watching";

TEST(StrSet, HasStringKeysAnd31Buckets) {
    qnStrSet s, sized(7), zero(0);
    EXPECT_EQ(s.keySize, sizeof(qnStr));
    EXPECT_EQ(s.buckets.length(), 31u);
    EXPECT_EQ(sized.buckets.length(), 7u);
    EXPECT_EQ(zero.buckets.length(), 31u);
    EXPECT_EQ(s.count, 0u);
#if UINTPTR_MAX == 0xFFFFFFFF
    EXPECT_EQ(s.keySize, 8u);
#endif
}

// Deliberate: sets have no class name of their own; the name of the type is what streams record.
TEST(StrSet, ClassNameIsTheRootsAndItsTypeIsCalledSet) {
    qnStrSet s;
    EXPECT_STREQ(s.className(), "qnXDRObj");
    EXPECT_EQ(&s.getTypeObj(), &qnStrSet_type);
    EXPECT_STREQ(qnStrSet_type.name, "SET");
    EXPECT_EQ(qnStrSet_type.version, 1u);
    EXPECT_EQ(qnTypeObj::findType("SET"), &qnStrSet_type);
}

TEST(StrSet, HashesAndComparesAsStringsDo) {
    qnStrSet s;
    qnStr a("a"), b("b"), alike("abcdefgh"), alikeToo("abcdefghXYZ"), empty;
    EXPECT_EQ(s.hashKey(&a), 0x08000000u);
    EXPECT_EQ(s.hashKey(&empty), 0u);
    EXPECT_EQ(s.hashKey(&alike), s.hashKey(&alikeToo));
    EXPECT_LT(s.compareKeys(&a, &b), 0);
    EXPECT_GT(s.compareKeys(&b, &a), 0);
    EXPECT_EQ(s.compareKeys(&a, &a), 0);
}

TEST(StrSet, KeysThatHashAlikeAreTwoKeys) {
    qnStrSet s;
    put(s, "abcdefgh");
    put(s, "abcdefghXYZ");
    EXPECT_EQ(s.count, 2u);
    EXPECT_STREQ(get(s, "abcdefgh"), "abcdefgh");
    EXPECT_STREQ(get(s, "abcdefghXYZ"), "abcdefghXYZ");
    EXPECT_EQ(get(s, "abcdefghX"), nullptr);
}

TEST(StrSet, OwnsCopiesOfItsKeys) {
    qnStrSet s;
    {
        qnStr key(longText);
        s.add(&key);
        EXPECT_NE(get(s, longText), key.text());
        key = "changed";
    }
    EXPECT_STREQ(get(s, longText), longText);
    EXPECT_EQ(get(s, "changed"), nullptr);
}

TEST(StrSet, KeyThatIsThereKeepsItsText) {
    qnStrSet s;
    put(s, longText);
    const char* text = get(s, longText);
    put(s, longText);
    EXPECT_EQ(get(s, longText), text);
    EXPECT_EQ(s.count, 1u);
}

TEST(StrSet, EmptyTextIsAKeyLikeOthers) {
    qnStrSet s;
    EXPECT_EQ(get(s, ""), nullptr);
    put(s, "");
    EXPECT_EQ(s.count, 1u);
    EXPECT_STREQ(get(s, ""), "");
    EXPECT_NE(s.buckets.elements()[0], nullptr) << "the empty text hashes to 0";
}

// Deliberate: strings are ordered, and found, by their text up to the first NUL.
TEST(StrSet, KeysOfOneChainAreComparedUpToTheirFirstNul) {
    qnStrSet s(1);
    qnStr first("a\0b", 3u), second("a\0c", 3u);
    s.add(&first);
    s.add(&second);
    EXPECT_EQ(s.count, 1u);
    ASSERT_NE(s.find(&second), nullptr);
    EXPECT_TRUE(*static_cast<const qnStr*>(s.find(&second)) == first) << "the stored key stays, NUL and all";
}

TEST(StrSet, RemovesByTheStoredKeyItself) {
    qnStrSet s;
    put(s, longText);
    put(s, "k");
    for (qnStrSetIter it(s); it.set != nullptr; ++it) s.remove(it.getKey());
    EXPECT_EQ(s.count, 0u);
}

TEST(StrSet, CopyIsMadeOfAnEmptyOneOnlyAndKnowsItsKeySize) {
    qnStrSet source;
    qnStrSet copy(source);
    EXPECT_EQ(copy.buckets.length(), 0u);
    EXPECT_EQ(copy.count, 0u);
    EXPECT_EQ(copy.keySize, sizeof(qnStr)) << "so that it can be read safely";
    EXPECT_EQ(get(copy, "a"), nullptr);
    EXPECT_EQ(&copy.getTypeObj(), &qnStrSet_type);
}

TEST(StrSet, FilledCopyIsMadeByUnion) {
    qnStrSet source(7);
    put(source, longText);
    qnStrSet copy(source.buckets.length());
    copy += source;
    EXPECT_STREQ(get(copy, longText), longText);
    EXPECT_NE(get(copy, longText), get(source, longText));
}

TEST(StrSet, AssignmentOfAnEmptyOneDismantlesIt) {
    qnStrSet target(5), empty(7);
    qnStrSet& result = (target = empty);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.buckets.length(), 0u);
    EXPECT_EQ(get(target, "a"), nullptr);
    qnStrSetIter it(target);
    EXPECT_EQ(it.set, nullptr);
    EXPECT_STREQ(target.className(), "qnXDRObj");
}

TEST(StrSet, AssignmentToItselfChangesNothing) {
    qnStrSet s;
    put(s, longText);
    qnStrSet& self = s;
    s = self;
    EXPECT_STREQ(get(s, longText), longText);
    EXPECT_EQ(&s.getTypeObj(), &qnStrSet_type);
}

TEST(StrSet, CleanedUpOneMayBeAssignedToWithoutALoss) {
    qnStrSet target, empty;
    put(target, longText);
    target.cleanup();
    target = empty;
    EXPECT_EQ(target.count, 0u);
}

TEST(StrSet, FactoryMakesOneWithoutBucketsThatMissesLookups) {
    qnStrSet* s = static_cast<qnStrSet*>(qnStrSet_type.newInstance(qnStrSet_type));
    EXPECT_EQ(s->buckets.length(), 0u);
    EXPECT_EQ(s->count, 0u);
    EXPECT_EQ(s->refCount, 0u);
    EXPECT_EQ(s->keySize, sizeof(qnStr));
    EXPECT_EQ(get(*s, "a"), nullptr);
    qnStrSetIter it(s);
    EXPECT_EQ(it.set, nullptr);
    qnStrSet_type.deleteInstance(s);
}

TEST(StrSet, DeletingNullDoesNothing) { qnStrSet::deleteInstance(nullptr); }

TEST(StrSet, DestructorDetachesItsIterators) {
    qnStrSetIter it;
    {
        qnStrSet s;
        put(s, "a");
        it = s;
        ASSERT_NE(it.getKey(), nullptr);
    }
    EXPECT_EQ(it.set, nullptr);
    EXPECT_EQ(it.getKey(), nullptr);
}

TEST(StrSetDeathTest, AddingToOneWithoutBucketsIsFatal) {
    qnStrSet made(qnStrSet_type), empty, assigned;
    qnStrSet copied(empty);
    assigned = empty;
    for (qnStrSet* s : {&made, &copied, &assigned}) {
        EXPECT_EXIT(put(*s, "a"), testing::KilledBySignal(SIGABRT), "^qnSet::add: the set has no buckets\n$");
    }
}

TEST(StrSetDeathTest, CopyingAndAssigningOneThatHasKeysIsFatal) {
    qnStrSet source, target;
    put(source, "a");
    EXPECT_EXIT(qnStrSet copy(source), testing::KilledBySignal(SIGABRT),
                "^qnSet::qnSet: the source has keys, but there are no buckets to add them to\n$");
    EXPECT_EXIT(target = source, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator=: the source has keys, but there are no buckets to add them to\n$");
}

}  // namespace StrSetTest
