// Iterators of sets: walking, starting over, surviving removal and clean-up.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "StrSet.h"
#include "support/ProbeSet.h"

namespace SetIterTest {

/** Five buckets; iteration visits 0, 13, 8, 3, 4. */
class SetIter : public testing::Test {
protected:
    SetIter() : s(5, {3, 0, 8, 4, 13}) {}
    /** Moves `it` to `key`. */
    void stand(qnSetIter& it, int key) {
        it = s;
        while (it.set != nullptr && ProbeSet::at(it.getKey()) != key) ++it;
        ASSERT_NE(it.set, nullptr) << key;
    }

    ProbeSet s;
};

// Making and walking

static_assert(std::has_virtual_destructor<qnSetIter>::value, "iterators may be destroyed as their base");

TEST_F(SetIter, DefaultOneIsDetachedWithAllFieldsZero) {
    qnSetIter it;
    EXPECT_EQ(it.set, nullptr);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, nullptr);
    EXPECT_EQ(it.getKey(), nullptr);
}

TEST_F(SetIter, AdvancingADefaultOneDoesNothing) {
    qnSetIter it;
    EXPECT_EQ(&++it, &it);
    it.advanceToValid();
    EXPECT_EQ(it.set, nullptr);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, nullptr);
}

TEST_F(SetIter, FieldsStandInTheirOrderBehindTheVirtualTable) {
    qnSetIter it;
    std::uintptr_t start = reinterpret_cast<std::uintptr_t>(&it);
    auto offset = [start](const void* field) { return reinterpret_cast<std::uintptr_t>(field) - start; };
    EXPECT_EQ(offset(&it.set), sizeof(void*));
    EXPECT_EQ(offset(&it.bucketIndex), 2 * sizeof(void*));
    EXPECT_EQ(offset(&it.flags), 2 * sizeof(void*) + 4);
    EXPECT_EQ(offset(&it.current), 2 * sizeof(void*) + 8);
}

TEST_F(SetIter, OverAnEmptySetIsFinishedAtOnceAndDetached) {
    ProbeSet empty(5);
    qnSetIter it(empty);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(it.bucketIndex, 5u);
    EXPECT_EQ(it.getKey(), nullptr);
    EXPECT_EQ(empty.iters.length(), 0u);
}

TEST_F(SetIter, OverASetWithoutBucketsIsFinishedAtOnce) {
    ProbeSet empty(5), assigned(5);
    ProbeSet made(qnSet_type), copied(empty);
    qnTmpSet temporary(empty);
    assigned = empty;
    for (qnSet* bare : {static_cast<qnSet*>(&made), static_cast<qnSet*>(&copied), static_cast<qnSet*>(&temporary),
                        static_cast<qnSet*>(&assigned)}) {
        qnSetIter it(*bare);
        EXPECT_EQ(standing(it), "finished");
        EXPECT_EQ(bare->iters.length(), 0u);
        ++it;
        EXPECT_EQ(standing(it), "finished");
    }
}

TEST_F(SetIter, StartsAtTheHeadOfBucketZeroAndRegisters) {
    qnSetIter it(s);
    EXPECT_EQ(it.set, &s);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, s.buckets.elements()[0]);
    EXPECT_EQ(it.getKey(), it.current->entry);
    ASSERT_EQ(s.iters.length(), 1u);
    EXPECT_EQ(s.iters.elements()[0], &it);
}

TEST_F(SetIter, StartsAtTheFirstBucketThatIsNotEmpty) {
    ProbeSet late(5, {3});
    qnSetIter it(late);
    EXPECT_EQ(standing(it), "3");
    EXPECT_EQ(it.bucketIndex, 3u);
}

TEST_F(SetIter, VisitsBucketByBucketEachChainFromItsHead) {
    std::vector<unsigned> buckets;
    std::string keys;
    qnSetIter it(s);
    for (; it.set != nullptr; ++it) {
        buckets.push_back(it.bucketIndex);
        keys += standing(it) + " ";
    }
    EXPECT_EQ(keys, "0 13 8 3 4 ");
    EXPECT_EQ(buckets, (std::vector<unsigned>{0, 3, 3, 3, 4}));
    EXPECT_EQ(it.bucketIndex, 5u);
}

TEST_F(SetIter, ReachingTheEndDetachesIt) {
    qnSetIter it(s);
    rest(it);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
    ++it;
    EXPECT_EQ(standing(it), "finished") << "a finished iterator stays finished";
    s.put(9);
    ++it;
    EXPECT_EQ(standing(it), "finished") << "and does not notice new keys";
}

TEST_F(SetIter, DestructorUnregistersItAlone) {
    qnSetIter first(s);
    auto second = std::make_unique<qnSetIter>(s);
    qnSetIter third(s);
    second.reset();
    ASSERT_EQ(s.iters.length(), 2u);
    EXPECT_EQ(s.iters.elements()[0], &first);
    EXPECT_EQ(s.iters.elements()[1], &third);
}

TEST_F(SetIter, DestroyedAsItsBaseUnregisters) {
    qnStrSet strings;
    qnStr key("only");
    strings.add(&key);
    std::unique_ptr<qnSetIter> it(new qnStrSetIter(strings));
    EXPECT_EQ(strings.iters.length(), 1u);
    it.reset();
    EXPECT_EQ(strings.iters.length(), 0u);
}

TEST_F(SetIter, RemoveIterTakesTheFirstRegistrationOfTheIterator) {
    qnSetIter first(s), second(s);
    s.addIter(&first);
    ASSERT_EQ(s.iters.length(), 3u);
    s.removeIter(&first);
    ASSERT_EQ(s.iters.length(), 2u);
    EXPECT_EQ(s.iters.elements()[0], &second);
    EXPECT_EQ(s.iters.elements()[1], &first);
}

TEST_F(SetIter, AdvanceToValidSkipsTheRestOfTheChainAndClearsTheMark) {
    qnSetIter it;
    stand(it, 0);
    s.removeKey(0);
    ASSERT_EQ(standing(it), "advanced");
    it.advanceToValid();
    EXPECT_EQ(standing(it), "4");
    EXPECT_EQ(it.bucketIndex, 4u);
    it.advanceToValid();
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

// Starting over

TEST_F(SetIter, AssignmentMovesTheRegistration) {
    ProbeSet other(5, {2});
    qnSetIter it(s);
    ++it;
    qnSetIter& same = (it = other);
    EXPECT_EQ(&same, &it);
    EXPECT_EQ(standing(it), "2");
    EXPECT_EQ(it.bucketIndex, 2u);
    EXPECT_EQ(s.iters.length(), 0u);
    EXPECT_EQ(other.iters.length(), 1u);
}

TEST_F(SetIter, AssignmentOfItsOwnSetStartsOverEvenWhenItIsFinished) {
    qnSetIter it(s);
    ++it;
    it = s;
    EXPECT_EQ(s.iters.length(), 1u);
    EXPECT_EQ(rest(it), "0 13 8 3 4");
    it = s;
    EXPECT_EQ(rest(it), "0 13 8 3 4");
}

TEST_F(SetIter, AssignmentClearsTheMarkAndLeavesTheOtherFlags) {
    qnSetIter it;
    stand(it, 3);
    s.removeKey(3);
    ASSERT_EQ(standing(it), "advanced");
    it.flags |= 0x80000002u;
    it = s;
    EXPECT_EQ(it.flags, 0x80000002u);
}

TEST_F(SetIter, AssignmentOfAnEmptySetFinishesIt) {
    ProbeSet empty(5);
    qnSetIter it(s);
    it = empty;
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

// Removal under an iterator

TEST_F(SetIter, RemovingItsKeyLeavesItOnTheNextOfTheChainAdvanced) {
    qnSetIter it;
    stand(it, 13);
    s.removeKey(13);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.current, s.buckets.elements()[3]);
    EXPECT_EQ(s.iters.length(), 1u);
    ++it;
    EXPECT_EQ(standing(it), "8") << "the next advance only clears the mark";
    EXPECT_EQ(rest(it), "8 3 4") << "no key is skipped";
}

TEST_F(SetIter, RemovingTheEndOfAChainMovesItToTheNextBucket) {
    qnSetIter it;
    stand(it, 3);
    s.removeKey(3);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.bucketIndex, 4u);
    ++it;
    EXPECT_EQ(standing(it), "4");
}

TEST_F(SetIter, RemovingTheLastKeyFinishesIt) {
    qnSetIter it;
    stand(it, 4);
    s.removeKey(4);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(it.bucketIndex, 5u);
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST_F(SetIter, RemovingAnotherKeyLeavesItWhereItIs) {
    qnSetIter it;
    stand(it, 8);
    for (int key : {13, 0, 3, 4}) {
        s.removeKey(key);
        EXPECT_EQ(standing(it), "8") << key;
    }
    ++it;
    EXPECT_EQ(standing(it), "finished");
}

TEST_F(SetIter, LinkRemovedUnderAnAdvancedOneMovesItOnASecondTime) {
    qnSetIter it;
    stand(it, 13);
    s.removeKey(13);
    s.removeKey(8);
    EXPECT_EQ(standing(it), "advanced");
    s.removeKey(3);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.bucketIndex, 4u);
    ++it;
    EXPECT_EQ(standing(it), "4");
}

TEST_F(SetIter, LastLinkRemovedUnderAnAdvancedOneFinishesIt) {
    qnSetIter it;
    stand(it, 3);
    s.removeKey(3);
    s.removeKey(4);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST_F(SetIter, SeveralOnOneKeyAllMoveEachWithAMarkOfItsOwn) {
    qnSetIter a, b, elsewhere, c;
    stand(a, 13);
    stand(b, 13);
    stand(elsewhere, 4);
    stand(c, 13);
    s.removeKey(13);
    for (qnSetIter* it : {&a, &b, &c}) EXPECT_EQ(standing(*it), "advanced");
    EXPECT_EQ(standing(elsewhere), "4");
    ++a;
    EXPECT_EQ(standing(a), "8");
    EXPECT_EQ(standing(b), "advanced");
}

TEST_F(SetIter, SeveralThatFinishAtOnceAllFinish) {
    qnSetIter a, b, c, e;
    stand(a, 4);
    stand(b, 4);
    stand(c, 0);
    stand(e, 4);
    s.removeKey(4);
    for (qnSetIter* it : {&a, &b, &e}) EXPECT_EQ(standing(*it), "finished");
    EXPECT_EQ(standing(c), "0");
    ASSERT_EQ(s.iters.length(), 1u);
    EXPECT_EQ(s.iters.elements()[0], &c);
}

TEST_F(SetIter, LoopThatRemovesEveryKeyVisitsEachOnce) {
    std::string visited;
    for (qnSetIter it(s); it.set != nullptr; ++it) {
        ASSERT_NE(it.getKey(), nullptr);
        visited += standing(it) + " ";
        s.remove(it.getKey());
    }
    EXPECT_EQ(visited, "0 13 8 3 4 ");
    EXPECT_EQ(s.count, 0u);
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST_F(SetIter, InvalidatingALinkOnWhichNobodyStandsChangesNothing) {
    qnSetIter it, nowhere;
    stand(it, 13);
    s.addIter(&nowhere);
    s.invalidateIters(s.buckets.elements()[0]);
    s.invalidateIters(nullptr);
    EXPECT_EQ(standing(it), "13");
    EXPECT_EQ(nowhere.flags, 0u);
    EXPECT_EQ(s.iters.length(), 2u);
    s.removeIter(&nowhere);
}

TEST_F(SetIter, KeyAddedAheadIsVisitedAndOneAddedBehindIsNot) {
    qnSetIter it;
    stand(it, 8);
    s.put(18);  // at the head of the chain that the iterator is in
    s.put(9);   // in the last bucket
    EXPECT_EQ(rest(it), "8 3 9 4");
}

// Cleaning up

TEST_F(SetIter, CleanupMovesIteratorsOnUntilTheyFinish) {
    qnSetIter plain, advanced, last;
    stand(plain, 8);
    stand(advanced, 0);
    stand(last, 4);
    s.removeKey(0);
    s.cleanup();
    for (qnSetIter* it : {&plain, &advanced, &last}) {
        EXPECT_EQ(standing(*it), "finished");
        EXPECT_EQ(it->bucketIndex, 5u);
    }
    EXPECT_EQ(s.iters.length(), 0u);
}

// Deliberate: unlike a dictionary's clean-up, which marks every iterator.
TEST_F(SetIter, CleanupLeavesTheMarkOfOneThatStandsNowhere) {
    qnSetIter registered;
    s.addIter(&registered);
    registered.set = &s;
    s.cleanup();
    EXPECT_EQ(registered.set, nullptr);
    EXPECT_EQ(registered.current, nullptr);
    EXPECT_EQ(registered.flags, 0u);
    EXPECT_EQ(registered.getKey(), nullptr);
}

TEST_F(SetIter, CleanupTwiceDoesNotTouchIteratorsThatAreGone) {
    {
        qnSetIter walking(s), nowhere;
        s.addIter(&nowhere);
        s.cleanup();
    }
    s.cleanup();
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST_F(SetIter, OneThatStartsAfterACleanupIsFinished) {
    qnSetIter before(s);
    s.cleanup();
    qnSetIter after(s);
    EXPECT_EQ(standing(after), "finished");
    before = s;
    EXPECT_EQ(standing(before), "finished");
    EXPECT_EQ(s.iters.length(), 0u);
}

TEST_F(SetIter, OutlivesItsSet) {
    qnSetIter it;
    {
        ProbeSet shortLived(5, {1});
        it = shortLived;
        EXPECT_EQ(standing(it), "1");
    }
    EXPECT_EQ(standing(it), "finished");
    ++it;
    it = s;
    EXPECT_EQ(standing(it), "0");
}

// The base destructor does not know the keys, but it knows who would reach for the set afterwards.
TEST_F(SetIter, OutlivesASetWhoseClassDoesNotCleanUp) {
    qnSetIter it;
    ProbeSet empty(5);
    qnSetBucket* link;
    {
        qnTmpSet temporary(empty);
        temporary.buckets.resize(5);
        temporary.keySize = sizeof(int);
        int key = 1;
        temporary.add(&key);
        it = temporary;
        link = it.current;
        ASSERT_NE(it.getKey(), nullptr);
    }
    EXPECT_EQ(it.set, nullptr);
    EXPECT_EQ(it.getKey(), nullptr);
    delete link;
}

TEST_F(SetIter, OfStringSetsIsMadeByReferenceByPointerAndByAssignment) {
    qnStrSet strings;
    qnStr key("only");
    strings.add(&key);
    qnStrSetIter byReference(strings), byPointer(&strings), later;
    EXPECT_EQ(later.set, nullptr);
    EXPECT_EQ(later.getKey(), nullptr);
    qnStrSetIter& same = (later = strings);
    EXPECT_EQ(&same, &later);
    EXPECT_EQ(strings.iters.length(), 3u);
    for (qnStrSetIter* it : {&byReference, &byPointer, &later}) {
        EXPECT_EQ(it->set, &strings);
        ASSERT_NE(it->getKey(), nullptr);
        EXPECT_STREQ(static_cast<const qnStr*>(it->getKey())->text(), "only");
        ++*it;
        EXPECT_EQ(it->set, nullptr);
    }
}

}  // namespace SetIterTest
