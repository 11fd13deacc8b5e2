// Union, difference and intersection in place: their order of calls, iterators alive, a set combined with itself.
#include <gtest/gtest.h>

#include <string>

#include "StrSet.h"
#include "support/ProbeSet.h"

namespace SetAlgebraTest {

// Union

TEST(SetAlgebra, UnionAddsEveryKeyOfTheOtherBucketByBucketFromTheHeads) {
    ProbeSet s(5, {3}), other(2, {3, 1, 8, 4});  // the other's order: 4 8 1 3
    s += other;
    EXPECT_EQ(s.calls(),
              "hash 4, copyKey 4, hash 8, compare 8 3, copyKey 8, hash 1, copyKey 1, hash 3, compare 3 8, compare 3 3");
    EXPECT_EQ(s.table(), "1: 1 | 3: 8 3 | 4: 4");
    EXPECT_EQ(s.count, 4u);
    EXPECT_EQ(other.calls(), "") << "the other set is only looked at";
    EXPECT_EQ(other.table(), "0: 4 8 | 1: 1 3");
}

TEST(SetAlgebra, UnionKeepsTheStoredRecords) {
    ProbeSet s(1, {3}), other(1, {103});
    s.modulus = 100;
    const char* record = s.buckets.elements()[0]->entry;
    s += other;
    EXPECT_EQ(s.chain(0), "3");
    EXPECT_EQ(s.buckets.elements()[0]->entry, record);
    EXPECT_EQ(s.count, 1u);
}

TEST(SetAlgebra, UnionWithAnEmptySetOrOneWithoutBucketsChangesNothing) {
    ProbeSet s(5, {3}), empty(5), bare(qnSet_type);
    s += empty;
    s += bare;
    EXPECT_EQ(s.calls(), "");
    EXPECT_EQ(s.table(), "3: 3");
    bare += empty;
    EXPECT_EQ(bare.buckets.length(), 0u);
}

TEST(SetAlgebra, UnionWithItselfChangesNothing) {
    ProbeSet s(5, {3, 8, 4});
    qnSetIter it(s);
    qnSet& result = (s += s.itself());
    EXPECT_EQ(&result, &s);
    EXPECT_EQ(s.table(), "3: 8 3 | 4: 4");
    EXPECT_EQ(s.count, 3u);
    EXPECT_EQ(standing(it), "8");
}

TEST(SetAlgebra, UnionShowsIteratorsWhatIsAddedAhead) {
    ProbeSet s(5, {3}), other(5, {0, 8, 4});
    qnSetIter it(s);
    s += other;
    EXPECT_EQ(rest(it), "3 4");
}

TEST(SetAlgebraDeathTest, UnionOfASetWithoutBucketsIsFatalWhenThereAreKeys) {
    ProbeSet bare(qnSet_type), other(5, {3});
    EXPECT_EXIT(bare += other, testing::KilledBySignal(SIGABRT), "^qnSet::add: the set has no buckets\n$");
}

// Difference

TEST(SetAlgebra, DifferenceRemovesEveryKeyOfTheOtherInItsOrder) {
    ProbeSet s(5, {3, 8, 4, 0}), other(2, {8, 3, 7, 4});  // the other's order: 4 8 7 3
    s -= other;
    EXPECT_EQ(s.calls(),
              "hash 4, compare 4 4, destroyKey 4, hash 8, compare 8 8, destroyKey 8, hash 7, "
              "hash 3, compare 3 3, destroyKey 3");
    EXPECT_EQ(s.table(), "0: 0");
    EXPECT_EQ(s.count, 1u);
    EXPECT_EQ(other.calls(), "");
    EXPECT_EQ(other.count, 4u);
}

TEST(SetAlgebra, DifferenceWithAnEmptySetOrOneWithoutBucketsChangesNothing) {
    ProbeSet s(5, {3}), empty(5), bare(qnSet_type);
    s -= empty;
    s -= bare;
    EXPECT_EQ(s.calls(), "");
    EXPECT_EQ(s.count, 1u);
    bare -= s;
    EXPECT_EQ(bare.count, 0u);
}

TEST(SetAlgebra, DifferenceWithItselfRemovesEveryKey) {
    ProbeSet s(5, {3, 0, 8, 4, 13});
    qnSet& result = (s -= s.itself());
    EXPECT_EQ(&result, &s);
    EXPECT_EQ(s.calls(),
              "hash 0, compare 0 0, destroyKey 0, hash 13, compare 13 13, destroyKey 13, hash 8, compare 8 8, "
              "destroyKey 8, hash 3, compare 3 3, destroyKey 3, hash 4, compare 4 4, destroyKey 4");
    EXPECT_EQ(s.table(), "");
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(s.iters.length(), 0u);
    s.put(3);
    EXPECT_EQ(s.table(), "3: 3");
}

TEST(SetAlgebra, DifferenceWithItselfFinishesIteratorsInEveryState) {
    ProbeSet s(5, {3, 0, 8, 4});
    qnSetIter first(s), advanced(s), last(s);
    ++advanced;
    for (int i = 0; i < 3; ++i) ++last;
    s.removeKey(8);
    ASSERT_EQ(standing(advanced), "advanced");
    s -= s.itself();
    EXPECT_EQ(standing(first), "finished");
    EXPECT_EQ(standing(advanced), "finished");
    EXPECT_EQ(standing(last), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST(SetAlgebra, DifferenceWithItselfSurvivesAComparisonThatTakesTheFollowingKey) {
    ProbeSet s(1, {13, 3, 14, 4});  // the chain 4 14 3 13
    s.modulus = 10;                 // 3 and 13 are one key now, and 4 and 14
    s -= s.itself();
    EXPECT_EQ(s.count, 0u);
}

/** When shifted, every key equals its successor only. */
class Shifted : public ProbeSet {
public:
    Shifted() : ProbeSet(1) {}
    int compareKeys(const void* a, const void* b) const override { return at(b) - at(a) - (shifted ? 1 : 0); }
    bool shifted = false;
};

TEST(SetAlgebra, DifferenceWithItselfSurvivesKeysThatDoNotEqualThemselves) {
    Shifted s;
    for (int key : {40, 30, 21, 20}) s.put(key);  // the chain 20 21 30 40
    s.shifted = true;
    s -= s.itself();  // 20 takes 21 out, to which the walk was about to go
    EXPECT_EQ(s.chain(0), "20 30 40");
    EXPECT_EQ(s.count, 3u);
}

TEST(SetAlgebra, DifferenceMovesIteratorsOn) {
    ProbeSet s(5, {3, 8, 13, 4}), other(5, {13, 8, 4});
    qnSetIter onRemoved(s), onKept(s), onLast(s);
    ++ ++onKept;
    ++ ++ ++onLast;
    ASSERT_EQ(standing(onKept), "3");
    ASSERT_EQ(standing(onLast), "4");
    s -= other;
    EXPECT_EQ(standing(onRemoved), "advanced");
    ++onRemoved;
    EXPECT_EQ(standing(onRemoved), "3");
    EXPECT_EQ(standing(onKept), "3");
    EXPECT_EQ(standing(onLast), "finished");
}

TEST(SetAlgebra, DifferenceLeavesTheOthersIteratorsAlone) {
    ProbeSet s(5, {3, 8}), other(5, {3, 8});
    qnSetIter it(other);
    s -= other;
    EXPECT_EQ(rest(it), "8 3");
}

// Intersection

TEST(SetAlgebra, IntersectionRemovesWhatTheOtherDoesNotContainInItsOwnOrder) {
    ProbeSet s(5, {3, 8, 13, 4, 0}), other(5, {8, 0, 1});
    s *= other;
    EXPECT_EQ(s.calls(), "destroyKey 13, destroyKey 3, destroyKey 4");
    EXPECT_EQ(other.calls(),
              "hash 0, compare 0 0, hash 13, compare 13 8, hash 8, compare 8 8, hash 3, compare 3 8, hash 4")
        << "the other set's operations decide";
    EXPECT_EQ(s.table(), "0: 0 | 3: 8");
    EXPECT_EQ(s.count, 2u);
    EXPECT_EQ(other.count, 3u);
}

TEST(SetAlgebra, IntersectionWithAnEmptySetEmptiesAndIteratorsMoveOn) {
    ProbeSet s(5, {3, 0, 8}), empty(5);
    qnSetIter first(s), last(s);
    ++ ++last;
    s *= empty;
    EXPECT_EQ(s.table(), "");
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(standing(first), "finished");
    EXPECT_EQ(standing(last), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST(SetAlgebra, IntersectionWithASetWithoutBucketsEmpties) {
    ProbeSet s(5, {3, 0, 8}), bare(qnSet_type);
    s *= bare;
    EXPECT_EQ(s.count, 0u);
    bare *= s;
    EXPECT_EQ(bare.count, 0u);
}

TEST(SetAlgebra, IntersectionLeavesIteratorsOnRemovedKeysAdvanced) {
    ProbeSet s(5, {3, 8, 13, 4}), other(5, {3, 4});
    qnSetIter onHead(s), onSecond(s), onKept(s);
    ++onSecond;
    ++ ++onKept;
    s *= other;
    EXPECT_EQ(s.table(), "3: 3 | 4: 4");
    EXPECT_EQ(standing(onHead), "advanced");
    EXPECT_EQ(standing(onSecond), "advanced");
    EXPECT_EQ(standing(onKept), "3");
    EXPECT_EQ(rest(++onHead), "3 4") << "no key is skipped";
    EXPECT_EQ(rest(++onSecond), "3 4");
}

TEST(SetAlgebra, IntersectionWithItselfChangesNothing) {
    ProbeSet s(5, {3, 0, 8});
    qnSetIter it(s);
    qnSet& result = (s *= s.itself());
    EXPECT_EQ(&result, &s);
    EXPECT_EQ(s.table(), "0: 0 | 3: 8 3");
    EXPECT_EQ(s.count, 3u);
    EXPECT_EQ(standing(it), "0");
}

// Together

TEST(SetAlgebra, OperationsCanBeChained) {
    ProbeSet s(5, {1, 2}), a(5, {3, 4}), b(5, {1, 3}), c(5, {2, 4, 9});
    ((s += a) -= b) *= c;
    EXPECT_EQ(s.table(), "2: 2 | 4: 4");
}

TEST(SetAlgebra, SetsOfStringsAreCombinedByText) {
    auto fill = [](qnStrSet& set, std::initializer_list<const char*> words) {
        for (const char* word : words) {
            qnStr key(word);
            set.add(&key);
        }
    };
    auto has = [](const qnStrSet& set, const char* word) {
        qnStr key(word);
        return set.contains(&key);
    };
    const char longWord[] = "a word that is too long for the hash to tell it apart";
    const char longWordToo[] = "a word that is too long for the hash to tell apart";
    qnStrSet s(7), other(3);
    fill(s, {"one", longWord, ""});
    fill(other, {"two", longWordToo, ""});
    s += other;
    EXPECT_EQ(s.count, 5u);
    EXPECT_TRUE(has(s, longWord) && has(s, longWordToo) && has(s, "two") && has(s, ""));
    s -= other;
    EXPECT_EQ(s.count, 2u);
    EXPECT_TRUE(has(s, "one") && has(s, longWord));
    fill(other, {"one"});
    s *= other;
    EXPECT_EQ(s.count, 1u);
    EXPECT_TRUE(has(s, "one"));
    const qnSet& itself = s;
    s -= itself;
    EXPECT_EQ(s.count, 0u);
}

}  // namespace SetAlgebraTest
