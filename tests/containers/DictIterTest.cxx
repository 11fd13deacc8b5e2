// The iterators of dictionaries: their states, and what removal, cleaning up and the end do to them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "BinaryTranscriber.h"
#include "Dictionary.h"
#include "StrStrDictionary.h"
#include "VoidPtrDict.h"
#include "support/ProbeDictionary.h"

namespace DictIterTest {

/** The keys that an iterator visits from where it stands: "0 13 8 3". */
std::string rest(qnDictIter& it) {
    std::string keys;
    for (; it.dict != nullptr; ++it)
        keys += (keys.empty() ? "" : " ") + std::to_string(ProbeDictionary::at(it.getKey()));
    return keys;
}

/** Five buckets; iteration visits 0, 13, 8, 3, 4. Each value is ten times its key. */
class DictIter : public testing::Test {
protected:
    DictIter() : d(5) {
        for (int key : {3, 0, 8, 4, 13}) d.add(key, 10 * key);
    }
    /** Moves `it` to `key`. */
    void stand(qnDictIter& it, int key) {
        it = d;
        while (it.dict != nullptr && ProbeDictionary::at(it.getKey()) != key) ++it;
        ASSERT_NE(it.dict, nullptr) << key;
    }

    ProbeDictionary d;
};

// Making and walking

TEST_F(DictIter, DefaultOneIsDetachedWithAllFieldsZero) {
    qnDictIter it;
    EXPECT_EQ(it.dict, nullptr);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, nullptr);
}

TEST_F(DictIter, KeyAndValueOfADefaultOneAreNull) {
    qnDictIter it;
    EXPECT_EQ(it.getKey(), nullptr);
    EXPECT_EQ(it.getValue(), nullptr);
}

TEST_F(DictIter, AdvancingADefaultOneDoesNothing) {
    qnDictIter it;
    EXPECT_EQ(&++it, &it);
    it.advanceToValid();
    EXPECT_EQ(it.dict, nullptr);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, nullptr);
}

TEST_F(DictIter, OverAnEmptyDictionaryIsFinishedAtOnceAndDetached) {
    ProbeDictionary empty(5);
    qnDictIter it(empty);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(it.bucketIndex, 5u);
    EXPECT_EQ(empty.iters.length(), 0u);
}

TEST_F(DictIter, OverADictionaryWithoutBucketsIsFinishedAtOnce) {
    ProbeDictionary bare(qnDictionary_type);
    qnDictIter it(bare);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(bare.iters.length(), 0u);
    ++it;
    EXPECT_EQ(standing(it), "finished");
}

TEST_F(DictIter, StartsAtTheHeadOfBucketZeroAndRegisters) {
    qnDictIter it(d);
    EXPECT_EQ(it.dict, &d);
    EXPECT_EQ(it.bucketIndex, 0u);
    EXPECT_EQ(it.flags, 0u);
    EXPECT_EQ(it.current, d.buckets.elements()[0]);
    ASSERT_EQ(d.iters.length(), 1u);
    EXPECT_EQ(d.iters.elements()[0], &it);
}

TEST_F(DictIter, StartsAtTheFirstBucketThatIsNotEmpty) {
    ProbeDictionary late(5);
    late.add(3, 30);
    qnDictIter it(late);
    EXPECT_EQ(standing(it), "3=30");
    EXPECT_EQ(it.bucketIndex, 3u);
}

TEST_F(DictIter, KeyAndValueAreTheRecordsThemselves) {
    qnDictIter it(d);
    EXPECT_EQ(it.getKey(), it.current->entry);
    EXPECT_EQ(it.getValue(), it.current->entry + 4);
}

TEST_F(DictIter, VisitsBucketByBucketEachChainFromItsHead) {
    qnDictIter it(d);
    EXPECT_EQ(rest(it), "0 13 8 3 4");
}

TEST_F(DictIter, BucketIndexFollows) {
    qnDictIter it(d);
    std::vector<unsigned> buckets;
    for (; it.dict != nullptr; ++it) buckets.push_back(it.bucketIndex);
    EXPECT_EQ(buckets, (std::vector<unsigned>{0, 3, 3, 3, 4}));
    EXPECT_EQ(it.bucketIndex, 5u);
}

TEST_F(DictIter, ReachingTheEndDetachesIt) {
    qnDictIter it(d);
    rest(it);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(d.iters.length(), 0u);
    ++it;
    EXPECT_EQ(standing(it), "finished") << "a finished iterator stays finished";
}

TEST_F(DictIter, FinishedOneDoesNotNoticeNewEntries) {
    qnDictIter it(d);
    rest(it);
    d.add(9, 90);
    ++it;
    EXPECT_EQ(standing(it), "finished");
}

TEST_F(DictIter, DestructorUnregistersItAlone) {
    qnDictIter first(d);
    auto second = std::make_unique<qnDictIter>(d);
    qnDictIter third(d);
    second.reset();
    ASSERT_EQ(d.iters.length(), 2u);
    EXPECT_EQ(d.iters.elements()[0], &first);
    EXPECT_EQ(d.iters.elements()[1], &third);
}

TEST_F(DictIter, RemoveIterTakesTheFirstRegistrationOfTheIterator) {
    qnDictIter first(d), second(d);
    d.addIter(&first);
    ASSERT_EQ(d.iters.length(), 3u);
    d.removeIter(&first);
    ASSERT_EQ(d.iters.length(), 2u);
    EXPECT_EQ(d.iters.elements()[0], &second);
    EXPECT_EQ(d.iters.elements()[1], &first);
}

TEST_F(DictIter, AdvanceToValidSkipsTheRestOfTheChain) {
    qnDictIter it;
    stand(it, 13);
    it.advanceToValid();
    EXPECT_EQ(standing(it), "4=40");
    EXPECT_EQ(it.bucketIndex, 4u);
    it.advanceToValid();
    EXPECT_EQ(it.dict, nullptr);
    EXPECT_EQ(d.iters.length(), 0u);
}

TEST_F(DictIter, AdvanceToValidClearsTheMark) {
    qnDictIter it;
    stand(it, 0);
    d.removeKey(0);
    ASSERT_EQ(standing(it), "advanced");
    it.advanceToValid();
    EXPECT_EQ(standing(it), "4=40");
}

// Starting over

TEST_F(DictIter, AssignmentMovesTheRegistration) {
    ProbeDictionary other(5);
    other.add(2, 20);
    qnDictIter it(d);
    ++it;
    it = other;
    EXPECT_EQ(standing(it), "2=20");
    EXPECT_EQ(it.bucketIndex, 2u);
    EXPECT_EQ(d.iters.length(), 0u);
    EXPECT_EQ(other.iters.length(), 1u);
}

TEST_F(DictIter, AssignmentOfItsOwnDictionaryStartsOver) {
    qnDictIter it(d);
    ++it;
    it = d;
    EXPECT_EQ(d.iters.length(), 1u);
    EXPECT_EQ(rest(it), "0 13 8 3 4");
}

TEST_F(DictIter, AssignmentRevivesAFinishedOne) {
    qnDictIter it(d);
    rest(it);
    it = d;
    EXPECT_EQ(rest(it), "0 13 8 3 4");
}

TEST_F(DictIter, AssignmentClearsTheMarkAndLeavesTheOtherFlags) {
    qnDictIter it;
    stand(it, 3);
    d.removeKey(3);
    ASSERT_EQ(standing(it), "advanced");
    it.flags |= 0x80000002u;
    it = d;
    EXPECT_EQ(it.flags, 0x80000002u);
}

TEST_F(DictIter, OtherFlagsSurviveRemovalAdvancingAndTheEnd) {
    qnDictIter it;
    stand(it, 8);
    it.flags |= 0x80000002u;
    d.removeKey(8);
    EXPECT_EQ(it.flags, 0x80000003u);
    ++it;
    EXPECT_EQ(it.flags, 0x80000002u);
    ++it;
    EXPECT_EQ(standing(it), "4=40");
    EXPECT_EQ(it.flags, 0x80000002u);
    ++it;
    EXPECT_EQ(it.flags, 0x80000003u);
}

TEST_F(DictIter, AssignmentOfAnEmptyDictionaryFinishesIt) {
    ProbeDictionary empty(5);
    qnDictIter it(d);
    it = empty;
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(d.iters.length(), 0u);
}

// Removal under an iterator

TEST_F(DictIter, RemovingItsEntryLeavesItOnTheNextOfTheChainAdvanced) {
    qnDictIter it;
    stand(it, 13);
    d.removeKey(13);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.current, d.buckets.elements()[3]);
    EXPECT_EQ(it.bucketIndex, 3u);
    EXPECT_EQ(d.iters.length(), 1u);
    ++it;
    EXPECT_EQ(standing(it), "8=80") << "the next advance only clears the mark";
    EXPECT_EQ(rest(it), "8 3 4") << "no entry is skipped";
}

TEST_F(DictIter, RemovingTheEndOfAChainMovesItToTheNextBucket) {
    qnDictIter it;
    stand(it, 3);
    d.removeKey(3);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.bucketIndex, 4u);
    ++it;
    EXPECT_EQ(standing(it), "4=40");
}

TEST_F(DictIter, RemovingTheLastEntryOfTheLastBucketFinishesIt) {
    qnDictIter it;
    stand(it, 4);
    d.removeKey(4);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(it.bucketIndex, 5u);
    EXPECT_EQ(d.iters.length(), 0u);
    ++it;
    EXPECT_EQ(standing(it), "finished");
}

TEST_F(DictIter, RemovingTheOnlyEntryFinishesIt) {
    ProbeDictionary single(5);
    single.add(0, 7);
    qnDictIter it(single);
    single.removeKey(0);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(single.iters.length(), 0u);
}

TEST_F(DictIter, CuttingItsEntryMovesItLikeRemoval) {
    qnDictIter it;
    stand(it, 8);
    int key = 8;
    std::free(d.cut(&key));
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(rest(++it), "3 4");
}

TEST_F(DictIter, RemovingAnotherEntryLeavesItWhereItIs) {
    qnDictIter it;
    stand(it, 8);
    for (int key : {13, 0, 3, 4}) {
        d.removeKey(key);
        EXPECT_EQ(standing(it), "8=80") << key;
    }
    ++it;
    EXPECT_EQ(standing(it), "finished");
}

TEST_F(DictIter, RemovingTheEntryUnderAnAdvancedOneMovesItToTheNextStillAdvanced) {
    qnDictIter it;
    stand(it, 13);
    d.removeKey(13);
    d.removeKey(8);
    EXPECT_EQ(standing(it), "advanced");
    ++it;
    EXPECT_EQ(standing(it), "3=30");
}

TEST_F(DictIter, RemovingTheEntryUnderAnAdvancedOneCrossesBuckets) {
    qnDictIter it;
    stand(it, 8);
    d.removeKey(8);
    d.removeKey(3);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(it.bucketIndex, 4u);
    ++it;
    EXPECT_EQ(standing(it), "4=40");
}

TEST_F(DictIter, RemovingTheLastEntryUnderAnAdvancedOneFinishesIt) {
    qnDictIter it;
    stand(it, 3);
    d.removeKey(3);
    d.removeKey(4);
    EXPECT_EQ(standing(it), "finished");
    EXPECT_EQ(d.iters.length(), 0u);
}

TEST_F(DictIter, SeveralOnOneEntryAllMove) {
    qnDictIter a, b, c, elsewhere;
    stand(a, 13);
    stand(elsewhere, 4);
    stand(b, 13);
    stand(c, 13);
    d.removeKey(13);
    EXPECT_EQ(standing(a), "advanced");
    EXPECT_EQ(standing(b), "advanced");
    EXPECT_EQ(standing(c), "advanced");
    EXPECT_EQ(standing(elsewhere), "4=40");
    ++a;
    EXPECT_EQ(standing(a), "8=80");
    EXPECT_EQ(standing(b), "advanced") << "each has a mark of its own";
}

TEST_F(DictIter, SeveralThatFinishAtOnceAllFinish) {
    qnDictIter a, b, c, e;
    stand(a, 4);
    stand(b, 4);
    stand(c, 0);
    stand(e, 4);
    d.removeKey(4);
    EXPECT_EQ(standing(a), "finished");
    EXPECT_EQ(standing(b), "finished");
    EXPECT_EQ(standing(c), "0=0");
    EXPECT_EQ(standing(e), "finished");
    ASSERT_EQ(d.iters.length(), 1u);
    EXPECT_EQ(d.iters.elements()[0], &c);
}

TEST_F(DictIter, OneThatFinishesDoesNotHideTheNextOneFromAMove) {
    qnDictIter advanced, plain, other;
    stand(advanced, 3);
    d.removeKey(3);  // `advanced` is on 4 now
    stand(plain, 4);
    stand(other, 4);
    d.removeKey(4);
    EXPECT_EQ(standing(advanced), "finished");
    EXPECT_EQ(standing(plain), "finished");
    EXPECT_EQ(standing(other), "finished");
    EXPECT_EQ(d.iters.length(), 0u);
}

TEST_F(DictIter, LoopThatRemovesEveryEntryVisitsEachOnce) {
    std::string visited;
    for (qnDictIter it(d); it.dict != nullptr; ++it) {
        ASSERT_NE(it.getKey(), nullptr);
        visited += std::to_string(ProbeDictionary::at(it.getKey())) + " ";
        d.remove(it.getKey());
    }
    EXPECT_EQ(visited, "0 13 8 3 4 ");
    EXPECT_EQ(d.count, 0u);
    EXPECT_EQ(d.iters.length(), 0u);
}

TEST_F(DictIter, InvalidatingALinkOnWhichNobodyStandsChangesNothing) {
    qnDictIter it;
    stand(it, 13);
    d.invalidateIters(d.buckets.elements()[0]);
    d.invalidateIters(nullptr);
    EXPECT_EQ(standing(it), "13=130");
    EXPECT_EQ(d.iters.length(), 1u);
}

TEST_F(DictIter, RegisteredOneThatStandsNowhereIsPassedOver) {
    qnDictIter nowhere, it;
    d.addIter(&nowhere);
    stand(it, 13);
    d.invalidateIters(nullptr);
    d.remove(it.getKey());
    EXPECT_EQ(nowhere.dict, nullptr);
    EXPECT_EQ(nowhere.flags, 0u);
    EXPECT_EQ(standing(it), "advanced");
    EXPECT_EQ(d.iters.length(), 2u);
    d.removeIter(&nowhere);
}

TEST_F(DictIter, EntryAddedAheadIsVisitedAndOneAddedBehindIsNot) {
    qnDictIter it;
    stand(it, 8);
    d.add(18, 180);  // at the head of the chain that the iterator is in
    d.add(9, 90);    // in the last bucket
    EXPECT_EQ(rest(it), "8 3 9 4");
}

TEST_F(DictIter, ReplacingTheValueUnderItShowsTheNewOne) {
    qnDictIter it;
    stand(it, 8);
    d.add(8, 81);
    EXPECT_EQ(standing(it), "8=81");
}

// Cleaning up

TEST_F(DictIter, CleanupDetachesIteratorsInEveryStateAndLeavesTheList) {
    qnDictIter plain, advanced;
    stand(plain, 8);
    stand(advanced, 0);
    d.removeKey(0);
    d.cleanup();
    EXPECT_EQ(standing(plain), "finished");
    EXPECT_EQ(standing(advanced), "finished");
    EXPECT_EQ(d.iters.length(), 2u);
}

TEST_F(DictIter, CleanupTwiceDoesNotTouchIteratorsThatAreGone) {
    {
        qnDictIter a(d), b(d);
        d.cleanup();
    }
    d.cleanup();
    EXPECT_EQ(d.iters.length(), 2u);
}

TEST_F(DictIter, OneThatStartsAfterACleanupIsFinishedAndLeavesNoTrace) {
    qnDictIter before(d);
    d.cleanup();
    qnDictIter after(d);
    EXPECT_EQ(standing(after), "finished");
    before = d;
    EXPECT_EQ(standing(before), "finished");
    EXPECT_EQ(d.iters.length(), 1u);
}

TEST_F(DictIter, DictionaryThatIsUsedAgainAfterACleanupKnowsItsNewIterators) {
    auto gone = std::make_unique<qnDictIter>(d);
    d.cleanup();
    gone.reset();
    for (int key : {1, 6}) d.add(key, 10 * key);
    qnDictIter a(d), b(d);
    EXPECT_EQ(standing(a), "6=60");
    d.removeKey(6);
    EXPECT_EQ(standing(a), "advanced");
    d.removeKey(1);
    EXPECT_EQ(standing(a), "finished");
    EXPECT_EQ(standing(b), "finished");
    d.add(2, 20);
    b = d;
    d.cleanup();
    EXPECT_EQ(standing(b), "finished");
}

TEST_F(DictIter, OutlivesItsDictionary) {
    qnDictIter it;
    {
        ProbeDictionary shortLived(5);
        shortLived.add(1, 10);
        it = shortLived;
        EXPECT_EQ(standing(it), "1=10");
    }
    EXPECT_EQ(standing(it), "finished");
    ++it;
    it = d;
    EXPECT_EQ(standing(it), "0=0");
}

// The iterators of concrete classes

template <class Dictionary, class Iter>
void checkTypedIterator(Dictionary& d, const char* onlyKey) {
    Iter byReference(d), byPointer(&d), later;
    EXPECT_EQ(later.dict, nullptr);
    EXPECT_EQ(later.getKey(), nullptr);
    Iter& same = (later = d);
    EXPECT_EQ(&same, &later);
    EXPECT_EQ(d.iters.length(), 3u);
    for (Iter* it : {&byReference, &byPointer, &later}) {
        EXPECT_EQ(it->dict, &d);
        ASSERT_NE(it->getKey(), nullptr);
        EXPECT_STREQ(static_cast<qnStr*>(it->getKey())->text(), onlyKey);
        ++*it;
        EXPECT_EQ(it->dict, nullptr);
    }
}

TEST_F(DictIter, OfStringDictionariesIsMadeByReferenceByPointerAndByAssignment) {
    qnStrStrDictionary strings;
    qnStr key("only"), value("v");
    strings.addInternal(&key, &value);
    checkTypedIterator<qnStrStrDictionary, qnStrStrDictionaryIter>(strings, "only");
}

TEST_F(DictIter, OfPointerDictionariesIsMadeByReferenceByPointerAndByAssignment) {
    qnVoidPtrDict pointers;
    qnStr key("only");
    pointers.findCreate(&key);
    checkTypedIterator<qnVoidPtrDict, qnVoidPtrDictIter>(pointers, "only");
}

// A copy would stand on the dictionary without being registered there.
template <class Iter>
void expectNoCopies() {
    EXPECT_FALSE(std::is_copy_constructible<Iter>::value);
    EXPECT_FALSE((std::is_assignable<Iter&, const Iter&>::value));
}

TEST_F(DictIter, CannotBeCopied) {
    expectNoCopies<qnDictIter>();
    expectNoCopies<qnStrStrDictionaryIter>();
    expectNoCopies<qnVoidPtrDictIter>();
    expectNoCopies<qnBinaryOTDictIter>();
}

}  // namespace DictIterTest
