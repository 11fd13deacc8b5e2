#include "Dictionary.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "Str.h"
#include "StrStrDictionary.h"
#include "VoidPtrDict.h"

namespace DictionaryTest {

std::vector<std::string> events;

/** Unsigned to unsigned; a key belongs in the bucket of its own number. Records what happens to its records. */
class Numbers : public qnDictionary {
public:
    explicit Numbers(unsigned nbuckets = 0) : qnDictionary(sizeof(unsigned), sizeof(unsigned), nbuckets) {}
    Numbers(const Numbers& other) : qnDictionary(other) { qnDictionary::operator=(other); }
    explicit Numbers(qnTypeObj& type) : qnDictionary(type) {}
    ~Numbers() override { cleanup(); }
    Numbers& operator=(const Numbers& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    static unsigned at(const void* p) { return *static_cast<const unsigned*>(p); }
    const char* className() const override { return "Numbers"; }
    unsigned long hashKey(const void* key) const override { return at(key); }
    int compareKeys(const void* a, const void* b) const override {
        if (log) events.push_back("compare " + std::to_string(at(a)) + " " + std::to_string(at(b)));
        return at(a) == at(b) ? 0 : 1;
    }
    void copyKey(const void* from, void* to) const override { *static_cast<unsigned*>(to) = at(from); }
    void destroyKey(void* key) const override {
        if (log) events.push_back("destroy key " + std::to_string(at(key)));
    }
    void copyValue(const void* from, void* to) const override {
        if (log) events.push_back("copy value " + std::to_string(at(from)));
        *static_cast<unsigned*>(to) = at(from);
    }
    void destroyValue(void* value) const override {
        if (log) events.push_back("destroy value " + std::to_string(at(value)));
    }
    void createValue(void* to) const override { *static_cast<unsigned*>(to) = 99; }
    bool xdrKey(qnTranscriber&, void*) override { return false; }
    bool xdrValue(qnTranscriber&, void*) override { return false; }

    void put(unsigned key, unsigned value) { addInternal(&key, &value); }
    const unsigned* get(unsigned key) const { return static_cast<unsigned*>(find(&key, nullptr)); }
    void drop(unsigned key) { remove(&key); }
    unsigned long wordHash(const void* key) const { return qnDictionary::hashKey(key); }

    /** The keys of a chain, from its head. */
    std::vector<unsigned> chain(unsigned bucket) const {
        std::vector<unsigned> keys;
        for (const qnDictBucket* link = buckets.elements()[bucket]; link != nullptr; link = link->next) {
            keys.push_back(at(link->entry));
        }
        return keys;
    }

    bool log = false;
};
typedef qnTypedDictIter<Numbers> NumbersIter;
typedef std::vector<unsigned> Keys;

unsigned keyOf(const qnDictIter& it) { return Numbers::at(it.getKey()); }

TEST(Dictionary, HasThirtyOneBucketsUnlessToldOtherwise) {
    EXPECT_EQ(31u, Numbers(0).buckets.length());
    EXPECT_EQ(1u, Numbers(1).buckets.length());
    EXPECT_EQ(31u, qnVoidPtrDict().buckets.length());
    EXPECT_EQ(31u, qnStrStrDictionary().buckets.length());
    EXPECT_EQ(0u, Numbers().count);
}

TEST(Dictionary, NewLinksAreChainHeads) {
    Numbers d(4);
    for (unsigned key : {1u, 5u, 9u, 2u}) d.put(key, key * 10);
    EXPECT_EQ((Keys{9, 5, 1}), d.chain(1));
    EXPECT_EQ((Keys{2}), d.chain(2));
    EXPECT_EQ(4u, d.count);
    ASSERT_NE(nullptr, d.get(5));
    EXPECT_EQ(50u, *d.get(5));
    EXPECT_EQ(nullptr, d.get(13));
}

TEST(Dictionary, TheProbeIsTheFirstArgumentAndTheSearchStopsAtTheKey) {
    Numbers d(4);
    for (unsigned key : {1u, 5u, 9u}) d.put(key, 0);
    events.clear();
    d.log = true;
    d.get(5);
    EXPECT_EQ((std::vector<std::string>{"compare 5 9", "compare 5 5"}), events);
    d.log = false;
}

TEST(Dictionary, FindTellsTheLink) {
    Numbers d(4);
    d.put(3, 30);
    unsigned key = 3, missing = 7;
    void* where = &key;
    EXPECT_EQ(nullptr, d.find(&missing, &where));
    EXPECT_EQ(nullptr, where);
    d.find(&key, &where);
    EXPECT_EQ(d.buckets.elements()[3], where);
}

TEST(Dictionary, AddingAnExistingKeyDestroysTheOldValueBeforeTheCopy) {
    Numbers d(4);
    d.put(1, 10);
    const unsigned* place = d.get(1);
    events.clear();
    d.log = true;
    d.put(1, 11);
    d.log = false;
    EXPECT_EQ((std::vector<std::string>{"compare 1 1", "destroy value 10", "copy value 11"}), events);
    EXPECT_EQ(1u, d.count);
    EXPECT_EQ(place, d.get(1));
    EXPECT_EQ(11u, *place);
}

TEST(Dictionary, AddingAnEntrysOwnValueLeavesIt) {
    qnStrStrDictionary d;
    qnStr key("k"), value("a text that is long enough to be seen when it is freed");
    d.addInternal(&key, &value);
    void* own = d.find(&key, nullptr);
    d.addInternal(&key, own);
    EXPECT_TRUE(*static_cast<qnStr*>(d.find(&key, nullptr)) == value);
}

TEST(Dictionary, FindCreateMakesADefaultValueOnceAndReturnsAnExistingOne) {
    Numbers d(4);
    unsigned key = 6;
    unsigned* made = static_cast<unsigned*>(d.findCreate(&key));
    EXPECT_EQ(99u, *made);
    *made = 5;
    EXPECT_EQ(made, d.findCreate(&key));
    EXPECT_EQ(5u, *made);
    EXPECT_EQ(1u, d.count);
}

TEST(Dictionary, RemoveDestroysKeyThenValue) {
    Numbers d(4);
    for (unsigned key : {1u, 5u, 9u}) d.put(key, key);
    events.clear();
    d.log = true;
    d.drop(5);
    d.log = false;
    EXPECT_EQ((std::vector<std::string>{"compare 5 9", "compare 5 5", "destroy key 5", "destroy value 5"}), events);
    EXPECT_EQ((Keys{9, 1}), d.chain(1));
    EXPECT_EQ(2u, d.count);
    d.drop(5);
    EXPECT_EQ(2u, d.count);
}

TEST(Dictionary, CutMovesTheValueOutWithoutDestroyingIt) {
    Numbers d(4);
    d.put(1, 10);
    unsigned key = 1, missing = 2;
    EXPECT_EQ(nullptr, d.cut(&missing));
    EXPECT_EQ(1u, d.count);
    events.clear();
    d.log = true;
    unsigned* value = static_cast<unsigned*>(d.cut(&key));
    d.log = false;
    EXPECT_EQ((std::vector<std::string>{"compare 1 1", "destroy key 1"}), events);
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(10u, *value);
    EXPECT_EQ(0u, d.count);
    EXPECT_TRUE(d.chain(1).empty());
    std::free(value);
}

TEST(Dictionary, AssignmentMergesAndTheSourceWins) {
    // Deliberate: what the target holds already stays.
    Numbers a(4), b(8);
    a.put(1, 10);
    a.put(2, 20);
    b.put(2, 21);
    b.put(3, 31);
    a = b;
    EXPECT_EQ(3u, a.count);
    EXPECT_EQ(10u, *a.get(1));
    EXPECT_EQ(21u, *a.get(2));
    EXPECT_EQ(31u, *a.get(3));
    EXPECT_EQ(4u, a.buckets.length());
}

TEST(Dictionary, AssigningItselfChangesNothing) {
    Numbers a(2);
    for (unsigned key : {1u, 3u, 5u}) a.put(key, key);
    Numbers& same = a;
    a = same;
    EXPECT_EQ((Keys{5, 3, 1}), a.chain(1));
}

TEST(Dictionary, ACopyHasTheShapeAndItsChainsReversed) {
    Numbers a(2);
    for (unsigned key : {1u, 3u, 5u}) a.put(key, key);
    Numbers b(a);
    EXPECT_EQ(2u, b.buckets.length());
    EXPECT_EQ(3u, b.count);
    // Added from the head of each chain, so the old head is the new tail.
    EXPECT_EQ((Keys{1, 3, 5}), b.chain(1));
}

TEST(Dictionary, CleanupDestroysAllInOrderAndKeepsTheCount) {
    Numbers d(4);
    for (unsigned key : {2u, 1u, 5u}) d.put(key, key * 10);
    events.clear();
    d.log = true;
    d.cleanup();
    EXPECT_EQ((std::vector<std::string>{"destroy key 5", "destroy value 50", "destroy key 1", "destroy value 10",
                                        "destroy key 2", "destroy value 20"}),
              events);
    EXPECT_EQ(3u, d.count);
    d.cleanup();
    EXPECT_EQ(6u, events.size());
    d.log = false;
}

TEST(Dictionary, WordHashIsTheExclusiveOrOfTheWords) {
    struct Sized : Numbers {
        explicit Sized(unsigned size) { keySize = size; }
    };
    const unsigned words[] = {0x12345678, 0x0F0F0F0F, 0xFFFFFFFF};
    EXPECT_EQ(0u, Sized(0).wordHash(words));
    EXPECT_EQ(0u, Sized(3).wordHash(words));
    EXPECT_EQ(0x12345678u, Sized(4).wordHash(words));
    EXPECT_EQ(0x12345678u, Sized(7).wordHash(words));
    EXPECT_EQ(0x1D3B5977u, Sized(8).wordHash(words));
    EXPECT_EQ(0x1D3B5977u, Sized(11).wordHash(words));
    EXPECT_EQ(0xE2C4A688u, Sized(12).wordHash(words));
}

TEST(Dictionary, WithoutBucketsLookupsMissAndIterationEnds) {
    Numbers d(qnDictionary_type);
    EXPECT_EQ(0u, d.buckets.length());
    unsigned key = 1;
    void* where = &key;
    EXPECT_EQ(nullptr, d.find(&key, &where));
    EXPECT_EQ(nullptr, where);
    EXPECT_EQ(nullptr, d.cut(&key));
    d.remove(&key);
    NumbersIter it(d);
    EXPECT_EQ(nullptr, it.dict);
    EXPECT_EQ(0u, d.iters.length());
    Numbers copy(d);
    EXPECT_EQ(0u, copy.count);
}

TEST(DictionaryDeathTest, AddingWithoutBucketsIsFatal) {
    Numbers d(qnDictionary_type);
    EXPECT_EXIT(d.put(1, 1), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: the dictionary has no buckets\n$");
    unsigned key = 1;
    EXPECT_EXIT(d.findCreate(&key), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: the dictionary has no buckets\n$");
}

#ifdef MORVAQNDS_CHECKED
TEST(DictionaryDeathTest, RemovingAnIteratorThatIsNotRegistered) {
    Numbers d;
    qnDictIter it;
    EXPECT_EXIT(d.removeIter(&it), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::removeIter: the iterator is not registered\n$");
}
#endif

// Iterators

TEST(DictIter, WalksBucketByBucketFromEachHead) {
    Numbers d(4);
    for (unsigned key : {6u, 1u, 5u, 3u}) d.put(key, key + 100);
    Keys seen;
    for (NumbersIter it(d); it.dict != nullptr; ++it) {
        seen.push_back(keyOf(it));
        EXPECT_EQ(keyOf(it) + 100, Numbers::at(it.getValue()));
    }
    EXPECT_EQ((Keys{5, 1, 6, 3}), seen);
    EXPECT_EQ(0u, d.iters.length());
}

TEST(DictIter, OverAnEmptyDictionaryIsFinishedAtOnce) {
    Numbers d;
    NumbersIter it(d);
    EXPECT_EQ(nullptr, it.dict);
    EXPECT_EQ(nullptr, it.getKey());
    EXPECT_EQ(nullptr, it.getValue());
    EXPECT_EQ(1u, it.flags & qnDictIter::Advanced);
    EXPECT_EQ(0u, d.iters.length());
    ++it;
    EXPECT_EQ(nullptr, it.dict);
}

TEST(DictIter, ADefaultOneIsDetached) {
    NumbersIter it;
    EXPECT_EQ(nullptr, it.dict);
    EXPECT_EQ(0u, it.bucketIndex);
    EXPECT_EQ(0u, it.flags);
    EXPECT_EQ(nullptr, it.current);
    EXPECT_EQ(nullptr, it.getKey());
    EXPECT_EQ(nullptr, it.getValue());
    ++it;
    EXPECT_EQ(0u, it.flags);
}

TEST(DictIter, RegistersAndUnregisters) {
    Numbers a, b;
    a.put(1, 1);
    b.put(2, 2);
    {
        NumbersIter it(a);
        EXPECT_EQ(1u, a.iters.length());
        it = b;
        EXPECT_EQ(0u, a.iters.length());
        EXPECT_EQ(1u, b.iters.length());
        EXPECT_EQ(2u, keyOf(it));
        NumbersIter second(&b);
        EXPECT_EQ(2u, b.iters.length());
    }
    EXPECT_EQ(0u, b.iters.length());
}

TEST(DictIter, StandsOnTheFollowingEntryAfterARemovalAndSkipsNone) {
    Numbers d(2);
    for (unsigned key : {1u, 3u, 5u}) d.put(key, key);
    NumbersIter it(d);
    EXPECT_EQ(5u, keyOf(it));
    d.drop(5);
    EXPECT_EQ(nullptr, it.getKey());
    EXPECT_EQ(nullptr, it.getValue());
    EXPECT_NE(nullptr, it.dict);
    EXPECT_EQ(1u, it.flags & qnDictIter::Advanced);
    ++it;
    EXPECT_EQ(3u, keyOf(it));
    ++it;
    EXPECT_EQ(1u, keyOf(it));
}

TEST(DictIter, MovesToTheNextBucketWhenItsEntryWasTheLastOfItsChain) {
    Numbers d(4);
    d.put(1, 1);
    d.put(3, 3);
    NumbersIter it(d);
    d.drop(1);
    EXPECT_EQ(3u, it.bucketIndex);
    EXPECT_EQ(nullptr, it.getKey());
    ++it;
    EXPECT_EQ(3u, keyOf(it));
}

TEST(DictIter, FinishesWhenTheLastEntryOfTheLastBucketIsRemovedUnderIt) {
    Numbers d(4);
    d.put(3, 3);
    NumbersIter it(d);
    d.drop(3);
    EXPECT_EQ(nullptr, it.dict);
    EXPECT_EQ(nullptr, it.getKey());
    EXPECT_EQ(0u, d.iters.length());
}

TEST(DictIter, AnAdvancedOneWhoseEntryIsRemovedStandsOnTheNextStillAdvanced) {
    Numbers d(2);
    for (unsigned key : {1u, 3u, 5u}) d.put(key, key);
    NumbersIter it(d);
    d.drop(5);
    d.drop(3);
    EXPECT_EQ(nullptr, it.getKey());
    ++it;
    EXPECT_EQ(1u, keyOf(it));
}

TEST(DictIter, SeveralOnOneEntryAllMove) {
    Numbers d(2);
    for (unsigned key : {1u, 3u}) d.put(key, key);
    NumbersIter a(d), b(d), other(d);
    ++other;
    d.drop(3);
    EXPECT_EQ(nullptr, a.getKey());
    EXPECT_EQ(nullptr, b.getKey());
    EXPECT_EQ(1u, keyOf(other));
    ++a;
    ++b;
    EXPECT_EQ(1u, keyOf(a));
    EXPECT_EQ(1u, keyOf(b));
}

TEST(DictIter, SeveralThatFinishAtOnceAllFinish) {
    Numbers d(2);
    d.put(1, 1);
    NumbersIter a(d), b(d), c(d);
    d.drop(1);
    EXPECT_EQ(nullptr, a.dict);
    EXPECT_EQ(nullptr, b.dict);
    EXPECT_EQ(nullptr, c.dict);
    EXPECT_EQ(0u, d.iters.length());
}

TEST(DictIter, CleanupDetachesAndLeavesTheListAsItIs) {
    Numbers d(2);
    d.put(1, 1);
    NumbersIter it(d);
    d.cleanup();
    EXPECT_EQ(nullptr, it.dict);
    EXPECT_EQ(nullptr, it.current);
    EXPECT_EQ(1u, it.flags & qnDictIter::Advanced);
    EXPECT_EQ(1u, d.iters.length());
    EXPECT_EQ(nullptr, it.getKey());
}

TEST(DictIter, CleanupTwiceDoesNotTouchIteratorsThatAreGone) {
    Numbers d(2);
    d.put(1, 1);
    {
        NumbersIter* it = new NumbersIter(d);
        d.cleanup();
        delete it;
    }
    d.put(1, 1);
    NumbersIter later(d);
    d.cleanup();
    EXPECT_EQ(nullptr, later.dict);
}

TEST(DictIter, SurvivesItsDictionary) {
    Numbers* d = new Numbers(2);
    d->put(1, 1);
    NumbersIter it(*d);
    delete d;
    EXPECT_EQ(nullptr, it.dict);
    ++it;
    EXPECT_EQ(nullptr, it.getKey());
}

TEST(DictIter, CutMovesIteratorsToo) {
    Numbers d(2);
    for (unsigned key : {1u, 3u}) d.put(key, key);
    NumbersIter it(d);
    unsigned key = 3;
    std::free(d.cut(&key));
    ++it;
    EXPECT_EQ(1u, keyOf(it));
}

TEST(DictIter, WithRandomRemovalsVisitsEveryEntryThatStaysExactlyOnce) {
    unsigned seed = std::random_device{}();
    if (const char* given = std::getenv("QN_SEED")) seed = static_cast<unsigned>(std::atoi(given));
    SCOPED_TRACE("QN_SEED=" + std::to_string(seed));
    std::mt19937 engine(seed);
    auto random = [&engine] { return static_cast<unsigned>(engine()); };
    for (int round = 0; round < 300; ++round) {
        Numbers d(1 + random() % 7);
        std::map<unsigned, int> visits;
        unsigned n = random() % 25;
        for (unsigned key = 0; key < n; ++key) {
            d.put(key, key);
            visits[key] = 0;
        }
        NumbersIter other(d);
        std::map<unsigned, bool> removed;
        for (NumbersIter it(d); it.dict != nullptr; ++it) {
            if (it.getKey() != nullptr) ++visits[keyOf(it)];
            for (unsigned k = random() % 3; k > 0 && n > 0; --k) {
                unsigned key = random() % n;
                d.drop(key);
                removed[key] = true;
            }
            if (random() % 3 == 0) ++other;
        }
        for (const auto& visit : visits) {
            if (removed.count(visit.first)) {
                EXPECT_LE(visit.second, 1);
            } else {
                EXPECT_EQ(1, visit.second) << visit.first;
            }
        }
    }
}

// The concrete dictionaries

TEST(StrStrDictionary, OwnsCopiesOfItsStrings) {
    qnStrStrDictionary d;
    {
        qnStr key("Malta"), value("Valletta");
        d.addInternal(&key, &value);
    }
    qnStr key("Malta");
    qnStr* value = static_cast<qnStr*>(d.find(&key, nullptr));
    ASSERT_NE(nullptr, value);
    EXPECT_TRUE(*value == "Valletta");
    EXPECT_STREQ("DICT", d.className());
    EXPECT_EQ(&qnStrStrDictionary_type, &d.getTypeObj());
    EXPECT_EQ(sizeof(qnStr), d.keySize);
    EXPECT_EQ(sizeof(qnStr), d.valueSize);
    qnStr other("Other");
    EXPECT_EQ(0u, static_cast<qnStr*>(d.findCreate(&other))->length());
    qnStrStrDictionary copy(d);
    EXPECT_EQ(2u, copy.count);
    qnStrStrDictionary assigned;
    assigned = copy;
    EXPECT_TRUE(*static_cast<qnStr*>(assigned.find(&key, nullptr)) == "Valletta");
    d.remove(&key);
    EXPECT_EQ(nullptr, d.find(&key, nullptr));
    qnStrStrDictionaryIter it(&copy);
    EXPECT_NE(nullptr, it.getKey());
}

TEST(StrStrDictionary, ACutStringBelongsToTheCaller) {
    qnStrStrDictionary d;
    qnStr key("k"), value("a value of some length");
    d.addInternal(&key, &value);
    qnStr* cut = static_cast<qnStr*>(d.cut(&key));
    EXPECT_TRUE(*cut == value);
    cut->~qnStr();
    std::free(cut);
}

TEST(StrStrDictionary, AFactoryMadeOneHasItsSizesAndNoBuckets) {
    void* made = qnStrStrDictionary::newInstance(qnStrStrDictionary_type);
    qnStrStrDictionary* d = static_cast<qnStrStrDictionary*>(made);
    EXPECT_EQ(sizeof(qnStr), d->keySize);
    EXPECT_EQ(sizeof(qnStr), d->valueSize);
    EXPECT_EQ(0u, d->buckets.length());
    qnStrStrDictionary::deleteInstance(made);
    qnStrStrDictionary::deleteInstance(nullptr);
}

TEST(VoidPtrDict, MapsTextToPointersThatItDoesNotOwn) {
    qnVoidPtrDict d;
    int thing = 0;
    qnStr key("thing");
    void** slot = static_cast<void**>(d.findCreate(&key));
    EXPECT_EQ(nullptr, *slot);
    *slot = &thing;
    qnVoidPtrDict copy(d);
    EXPECT_EQ(&thing, *static_cast<void**>(copy.find(&key, nullptr)));
    EXPECT_STREQ("DICT", d.className());
    EXPECT_EQ(&qnDictionary_type, &d.getTypeObj());
    EXPECT_EQ(sizeof(void*), d.valueSize);
    unsigned seen = 0;
    for (qnVoidPtrDictIter it(d); it.dict != nullptr; ++it) ++seen;
    EXPECT_EQ(1u, seen);
}

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(qnDictIter) == 16, "four words");
static_assert(sizeof(qnDictBucket) == 8, "two words");
#endif

}  // namespace DictionaryTest
