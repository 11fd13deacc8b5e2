#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <set>
#include <type_traits>
#include <vector>

#include "HashTable.h"

namespace HashTableTest {

static_assert(!std::is_copy_constructible<HashTable>::value, "tables are not copied");
static_assert(!std::is_copy_assignable<HashTable>::value, "tables are not assigned");
static_assert(sizeof(int) == 4, "the numbers of a table have 32 bits");

#if defined(__i386__) || defined(__powerpc__)
static_assert(sizeof(HashTable) == 16 && offsetof(HashTable, table) == 0 && offsetof(HashTable, count) == 4, "");
static_assert(offsetof(HashTable, size) == 8 && offsetof(HashTable, bits) == 12, "");
static_assert(sizeof(HashEntry) == 16 && offsetof(HashEntry, key) == 0 && offsetof(HashEntry, value) == 4, "");
static_assert(offsetof(HashEntry, next) == 8 && offsetof(HashEntry, prev) == 12, "");
#endif

// Keys that differ by a multiple of this share a bucket at every size.
const unsigned long highBit = 1UL << 20;

int values[16];

std::vector<unsigned long> keysOfBucket(const HashTable& table, int bucket) {
    std::vector<unsigned long> keys;
    const HashEntry* before = nullptr;
    for (const HashEntry* entry = table.table[bucket]; entry != nullptr; entry = entry->next) {
        EXPECT_EQ(before, entry->prev) << "bucket " << bucket;
        keys.push_back(entry->key);
        before = entry;
    }
    return keys;
}

using Keys = std::vector<unsigned long>;

/** Adds keys first, first + 1, ... */
void addRun(HashTable& table, unsigned long first, int number) {
    for (int i = 0; i < number; ++i) table.add(first + static_cast<unsigned long>(i), nullptr);
}

TEST(HashTableTest, AFreshTableHas64EmptyBuckets) {
    HashTable table;
    EXPECT_EQ(0, table.count);
    EXPECT_EQ(64, table.size);
    EXPECT_EQ(6, table.bits);
    for (int bucket = 0; bucket < 64; ++bucket) EXPECT_EQ(nullptr, table.table[bucket]);
}

// ---- The hash ----

struct HashRow {
    int bits;
    unsigned long key;
    int bucket;
};

void expectRows(const std::vector<HashRow>& rows) {
    HashTable table;
    for (const HashRow& row : rows) {
        table.bits = row.bits;
        EXPECT_EQ(row.bucket, table.hash(row.key)) << std::hex << row.bits << " bits, key " << row.key;
    }
    table.bits = 6;
}

// 0xABCDE, worked by hand: >>6 0x2AF3, >>12 0xAB, >>7 0x1579, >>13 0x55, >>8 0xABC, >>16 0xA, >>9 0x55E, >>10 0x2AF,
// >>11 0x157.

TEST(HashTableTest, SixBitsFoldBySixAndTwelve) {
    // 0x1E ^ 0x33 ^ 0x2B = 0x06.
    expectRows({{6, 0xABCDE, 0x06}, {6, 0, 0}, {6, 1, 1}, {6, 1UL << 6, 1}, {6, 1UL << 12, 1}, {6, 1UL << 11, 0x20}});
}

TEST(HashTableTest, SixBitsKeepTheBitThatTwoFoldsReach) {
    // Bit 18 stands above six bits after both shifts: >>6 gives bit 12, >>12 gives bit 6.
    expectRows({{6, 1UL << 18, 0}, {6, 1UL << 17, 0x20}, {6, 0xFFFFF, 0x3F}});
}

TEST(HashTableTest, SevenBitsFoldBySevenAndThirteen) {
    // 0x5E ^ 0x79 ^ 0x55 = 0x72. Bit 13 is reached by both shifts: >>7 gives bit 6, >>13 gives bit 0.
    expectRows({{7, 0xABCDE, 0x72}, {7, 1UL << 7, 1}, {7, 1UL << 13, 0x41}, {7, 1UL << 14, 0x02}, {7, 0xFFFFF, 0x7F}});
}

TEST(HashTableTest, EightBitsFoldByEightAndSixteen) {
    // 0xDE ^ 0xBC ^ 0x0A = 0x68.
    expectRows({{8, 0xABCDE, 0x68}, {8, 1UL << 8, 1}, {8, 1UL << 15, 0x80}, {8, 1UL << 16, 1}, {8, 0xFFFFF, 0x0F}});
}

TEST(HashTableTest, NineBitsFoldOnce) {
    // 0x0DE ^ 0x15E = 0x180.
    expectRows({{9, 0xABCDE, 0x180}, {9, 1UL << 9, 1}, {9, 1UL << 17, 0x100}, {9, 1UL << 18, 0}, {9, 0xFFFFF, 0}});
}

TEST(HashTableTest, TenBitsFoldOnce) {
    // 0x0DE ^ 0x2AF = 0x271.
    expectRows({{10, 0xABCDE, 0x271}, {10, 1UL << 10, 1}, {10, 1UL << 19, 0x200}, {10, 0xFFFFF, 0}});
}

TEST(HashTableTest, ElevenBitsFoldOnce) {
    // 0x4DE ^ 0x157 = 0x589.
    expectRows({{11, 0xABCDE, 0x589}, {11, 1UL << 11, 1}, {11, 1UL << 19, 0x100}, {11, 0xFFFFF, 0x600}});
}

TEST(HashTableTest, AnyOtherNumberOfBitsGivesBucketZero) {
    expectRows({{5, 0xABCDE, 0}, {12, 0xABCDE, 0}, {0, 1, 0}, {-1, 1, 0}, {32, 1, 0}});
}

TEST(HashTableTest, BitsAboveTheLow20DoNotCount) {
    for (int bits = 6; bits <= 11; ++bits) {
        HashTable table;
        table.bits = bits;
        EXPECT_EQ(table.hash(0xABCDE), table.hash(0xABCDE + highBit)) << bits;
        EXPECT_EQ(table.hash(0xABCDE), table.hash(std::numeric_limits<unsigned long>::max() - 0xFFFFF + 0xABCDE));
        table.bits = 6;
    }
}

// ---- Entries ----

TEST(HashTableTest, LookupFindsWhatWasAddedAndNullOtherwise) {
    HashTable table;
    table.add(5, &values[0]);
    table.add(0, &values[1]);
    table.add(std::numeric_limits<unsigned long>::max(), &values[2]);
    EXPECT_EQ(&values[0], table.lookup(5));
    EXPECT_EQ(&values[1], table.lookup(0));
    EXPECT_EQ(&values[2], table.lookup(std::numeric_limits<unsigned long>::max()));
    EXPECT_EQ(nullptr, table.lookup(6));
    EXPECT_EQ(nullptr, table.lookup(5 + highBit));
    EXPECT_EQ(3, table.count);
}

TEST(HashTableTest, AStoredNullLooksLikeAnAbsentKey) {
    HashTable table;
    table.add(5, nullptr);
    EXPECT_EQ(nullptr, table.lookup(5));
    EXPECT_NE(nullptr, table.searchBucketFor(table.table[table.hash(5)], 5));
}

TEST(HashTableTest, KeysThatDifferAboveBit19ShareABucketAndAreToldApart) {
    HashTable table;
    table.add(5, &values[0]);
    table.add(5 + highBit, &values[1]);
    table.add(5 + 2 * highBit, &values[2]);
    EXPECT_EQ((Keys{5 + 2 * highBit, 5 + highBit, 5}), keysOfBucket(table, 5));
    EXPECT_EQ(&values[0], table.lookup(5));
    EXPECT_EQ(&values[1], table.lookup(5 + highBit));
    EXPECT_EQ(&values[2], table.lookup(5 + 2 * highBit));
}

TEST(HashTableTest, AddElementPushesAtTheHeadAndLeavesTheValueToTheCaller) {
    HashTable table;
    table.add(7, &values[0]);
    HashEntry* entry = table.addElement(7 + highBit);
    EXPECT_EQ(7 + highBit, entry->key);
    EXPECT_EQ(nullptr, entry->prev);
    EXPECT_EQ(table.table[7], entry);
    EXPECT_EQ(7UL, entry->next->key);
    EXPECT_EQ(entry, entry->next->prev);
    EXPECT_EQ(2, table.count);
    EXPECT_EQ(nullptr, table.lookup(7 + highBit));
    entry->value = &values[1];
    EXPECT_EQ(&values[1], table.lookup(7 + highBit));
}

TEST(HashTableTest, AddElementOfAKeyThatIsThereHidesTheOlderEntryUntilItIsRemoved) {
    HashTable table;
    table.add(7, &values[0]);
    table.addElement(7)->value = &values[1];
    EXPECT_EQ(&values[1], table.lookup(7));
    table.remove(7);
    EXPECT_EQ(&values[0], table.lookup(7));
}

TEST(HashTableTest, SearchBucketForWalksFromTheGivenEntry) {
    HashTable table;
    EXPECT_EQ(nullptr, table.searchBucketFor(nullptr, 1));
    table.add(1, &values[0]);
    table.add(1 + highBit, &values[1]);
    HashEntry* newest = table.table[1];
    EXPECT_EQ(newest, table.searchBucketFor(newest, 1 + highBit));
    EXPECT_EQ(newest->next, table.searchBucketFor(newest, 1));
    EXPECT_EQ(nullptr, table.searchBucketFor(newest->next, 1 + highBit));
}

TEST(HashTableTest, RemoveUnlinksAtTheHeadInTheMiddleAndAtTheEnd) {
    HashTable table;
    for (unsigned long i = 0; i < 5; ++i) table.add(3 + i * highBit, &values[i]);
    EXPECT_EQ((Keys{3 + 4 * highBit, 3 + 3 * highBit, 3 + 2 * highBit, 3 + highBit, 3}), keysOfBucket(table, 3));
    table.remove(3 + 4 * highBit);
    EXPECT_EQ((Keys{3 + 3 * highBit, 3 + 2 * highBit, 3 + highBit, 3}), keysOfBucket(table, 3));
    table.remove(3 + 2 * highBit);
    EXPECT_EQ((Keys{3 + 3 * highBit, 3 + highBit, 3}), keysOfBucket(table, 3));
    table.remove(3);
    EXPECT_EQ((Keys{3 + 3 * highBit, 3 + highBit}), keysOfBucket(table, 3));
    table.remove(3 + 3 * highBit);
    table.remove(3 + highBit);
    EXPECT_EQ(nullptr, table.table[3]);
    EXPECT_EQ(5, table.count);
}

TEST(HashTableTest, RemoveOfAnAbsentKeyDoesNothing) {
    HashTable table;
    table.add(3, &values[0]);
    table.remove(4);
    table.remove(3 + highBit);
    EXPECT_EQ(&values[0], table.lookup(3));
    EXPECT_EQ(1, table.count);
}

TEST(HashTableTest, ARemovedKeyCanBeAddedAgain) {
    HashTable table;
    table.add(3, &values[0]);
    table.remove(3);
    table.add(3, &values[1]);
    EXPECT_EQ(&values[1], table.lookup(3));
    EXPECT_EQ(2, table.count);
}

// ---- Growth ----

TEST(HashTableTest, The257thAddDoublesFirst) {
    HashTable table;
    addRun(table, 1000, 256);
    EXPECT_EQ(256, table.count);
    EXPECT_EQ(64, table.size);
    table.add(5000, &values[0]);
    EXPECT_EQ(257, table.count);
    EXPECT_EQ(128, table.size);
    EXPECT_EQ(7, table.bits);
    EXPECT_EQ(&values[0], table.lookup(5000));
    for (unsigned long key = 1000; key < 1256; ++key)
        EXPECT_NE(nullptr, table.searchBucketFor(table.table[table.hash(key)], key)) << key;
}

TEST(HashTableTest, TheTableDoublesAtFourEntriesForEachBucketUpTo2048Buckets) {
    HashTable table;
    const struct {
        int countBefore;
        int size;
        int bits;
    } steps[] = {{256, 128, 7}, {512, 256, 8}, {1024, 512, 9}, {2048, 1024, 10}, {4096, 2048, 11}};
    unsigned long key = 0;
    for (const auto& step : steps) {
        while (table.count < step.countBefore) table.add(key++, nullptr);
        EXPECT_EQ(step.size / 2, table.size);
        table.add(key++, nullptr);
        EXPECT_EQ(step.size, table.size);
        EXPECT_EQ(step.bits, table.bits);
    }
    while (table.count < 20000) table.add(key++, nullptr);
    EXPECT_EQ(2048, table.size);
    EXPECT_EQ(11, table.bits);
}

TEST(HashTableTest, CountOnlyGrowsSoThatRemovalsBringTheNextDoublingCloser) {
    HashTable table;
    for (unsigned long key = 0; key < 16; ++key) table.add(key, nullptr);
    for (unsigned long key = 0; key < 16; ++key) table.remove(key);
    EXPECT_EQ(16, table.count);
    EXPECT_EQ(64, table.size);
    addRun(table, 100, 240);
    EXPECT_EQ(256, table.count);
    EXPECT_EQ(64, table.size);
    table.add(5000, nullptr);
    EXPECT_EQ(128, table.size);
}

TEST(HashTableTest, ARebuildTurnsAChainThatStaysTogetherRound) {
    HashTable table;
    for (unsigned long i = 0; i < 3; ++i) table.add(5 + i * highBit, nullptr);
    EXPECT_EQ((Keys{5 + 2 * highBit, 5 + highBit, 5}), keysOfBucket(table, 5));
    table.rebuildTable();
    EXPECT_EQ(128, table.size);
    EXPECT_EQ(7, table.bits);
    EXPECT_EQ(3, table.count);
    EXPECT_EQ((Keys{5, 5 + highBit, 5 + 2 * highBit}), keysOfBucket(table, 5));
}

TEST(HashTableTest, ARebuildPushesLaterBucketsInFrontOfEarlierOnes) {
    // With 6 bits 129 = 0x81 goes to 0x01 ^ 0x02 = 3 and 0 to 0; with 7 bits to 0x01 ^ 0x01 = 0, like 0.
    HashTable table;
    table.add(129, nullptr);
    table.add(129 + highBit, nullptr);
    table.add(0, nullptr);
    table.add(highBit, nullptr);
    EXPECT_EQ((Keys{highBit, 0}), keysOfBucket(table, 0));
    EXPECT_EQ((Keys{129 + highBit, 129}), keysOfBucket(table, 3));
    table.rebuildTable();
    EXPECT_EQ((Keys{129, 129 + highBit, 0, highBit}), keysOfBucket(table, 0));
}

TEST(HashTableTest, ARebuildPartsKeysThatSharedABucket) {
    // With 6 bits 64 goes to 0 ^ 1 = 1, like 1; with 7 bits to 64.
    HashTable table;
    table.add(1, nullptr);
    table.add(64, nullptr);
    EXPECT_EQ((Keys{64, 1}), keysOfBucket(table, 1));
    table.rebuildTable();
    EXPECT_EQ((Keys{1}), keysOfBucket(table, 1));
    EXPECT_EQ((Keys{64}), keysOfBucket(table, 64));
}

TEST(HashTableTest, CountStartsAgainAtTheLowestIntAndTheTableGoesOn) {
    HashTable table;
    while (table.bits < 11) table.rebuildTable();
    table.count = std::numeric_limits<int>::max();
    table.add(1, &values[0]);
    EXPECT_EQ(std::numeric_limits<int>::min(), table.count);
    table.add(2, &values[1]);
    EXPECT_EQ(&values[0], table.lookup(1));
    EXPECT_EQ(&values[1], table.lookup(2));
}

// ---- mapcar ----

// What the functions below work on; they are given nothing but an entry.
HashTable* walked = nullptr;
Keys visited;

void record(HashEntry* entry) { visited.push_back(entry->key); }

Keys walk(HashTable& table, void (*function)(HashEntry*)) {
    walked = &table;
    visited.clear();
    table.mapcar(function);
    return visited;
}

TEST(HashTableTest, MapcarVisitsBucketByBucketAndTheNewestOfAChainFirst) {
    HashTable table;
    EXPECT_EQ(Keys{}, walk(table, record));
    for (const unsigned long key : {63UL, 2UL, 0UL, 2 + highBit, highBit, 1UL}) table.add(key, nullptr);
    EXPECT_EQ((Keys{highBit, 0, 1, 2 + highBit, 2, 63}), walk(table, record));
}

TEST(HashTableTest, MapcarMayRemoveTheEntryItIsGiven) {
    HashTable table;
    for (unsigned long i = 0; i < 3; ++i) {
        table.add(9 + i * highBit, nullptr);
        table.add(20 + i, nullptr);
    }
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        walked->remove(entry->key);
    });
    EXPECT_EQ((Keys{9 + 2 * highBit, 9 + highBit, 9, 20, 21, 22}), keys);
    EXPECT_EQ(Keys{}, walk(table, record));
}

TEST(HashTableTest, MapcarDoesNotVisitEntriesThatAreRemovedBeforeTheirTurn) {
    HashTable table;
    for (unsigned long i = 0; i < 4; ++i) table.add(9 + i * highBit, nullptr);
    table.add(30, nullptr);
    // The first visit, of the newest, removes the next two of its chain and a later bucket's.
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        walked->remove(9 + 2 * highBit);
        walked->remove(9 + highBit);
        walked->remove(30);
    });
    EXPECT_EQ((Keys{9 + 3 * highBit, 9}), keys);
}

TEST(HashTableTest, MapcarVisitsWhatIsAddedToALaterBucket) {
    HashTable table;
    table.add(10, nullptr);
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        if (entry->key != 10) return;
        walked->add(5, nullptr);
        walked->add(10 + highBit, nullptr);
        walked->add(40, nullptr);
    });
    EXPECT_EQ((Keys{10, 40}), keys);
}

TEST(HashTableTest, MapcarVisitsEveryEntryOnceWhenItsFunctionMakesTheTableDouble) {
    HashTable table;
    addRun(table, 0, 200);
    const Keys before = walk(table, record);
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        // Two additions a visit: the table doubles twice on the way.
        walked->addElement(100000 + entry->key);
        walked->addElement(200000 + entry->key);
    });
    EXPECT_EQ(256, table.size);
    Keys old;
    for (const unsigned long key : keys) {
        if (key < 1000) old.push_back(key);
    }
    EXPECT_EQ(before, old);
}

TEST(HashTableTest, MapcarMayDoubleTheTableAndThenRemoveWhatIsLeft) {
    HashTable table;
    addRun(table, 0, 60);
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        if (entry->key == 3) walked->rebuildTable();
        if (entry->key == 5) {
            for (unsigned long key = 5; key < 58; ++key) walked->remove(key);
        }
    });
    EXPECT_EQ((Keys{0, 1, 2, 3, 4, 5, 58, 59}), keys);
}

TEST(HashTableTest, MapcarMayDoubleTheTableAtTheLastEntry) {
    HashTable table;
    table.add(63, nullptr);
    EXPECT_EQ((Keys{63}), walk(table, [](HashEntry* entry) {
                  record(entry);
                  walked->rebuildTable();
              }));
}

TEST(HashTableTest, MapcarMayWalkTheTableItselfAndRemoveInside) {
    HashTable table;
    for (unsigned long key = 1; key <= 4; ++key) table.add(key, nullptr);
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        if (entry->key != 2) return;
        walked->mapcar([](HashEntry* inner) {
            record(inner);
            walked->remove(inner->key);
        });
    });
    EXPECT_EQ((Keys{1, 2, 1, 2, 3, 4}), keys);
    EXPECT_EQ(Keys{}, walk(table, record));
}

TEST(HashTableTest, MapcarOfOneTableIsNotDisturbedByChangesOfAnother) {
    HashTable table;
    addRun(table, 0, 10);
    static HashTable* other;
    HashTable otherTable;
    other = &otherTable;
    const Keys keys = walk(table, [](HashEntry* entry) {
        record(entry);
        other->add(entry->key, nullptr);
        if (entry->key == 5) other->rebuildTable();
        if (entry->key == 7) other->remove(7);
    });
    EXPECT_EQ((Keys{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), keys);
}

TEST(HashTableTest, MapcarEndsWhenItsFunctionDestroysTheTable) {
    auto* table = new HashTable;
    addRun(*table, 0, 10);
    EXPECT_EQ((Keys{0, 1, 2}), walk(*table, [](HashEntry* entry) {
                  record(entry);
                  if (entry->key == 2) delete walked;
              }));
}

TEST(HashTableTest, MapcarEndsWhenItsFunctionDoublesAndDestroysTheTable) {
    auto* table = new HashTable;
    addRun(*table, 0, 10);
    EXPECT_EQ((Keys{0, 1, 2}), walk(*table, [](HashEntry* entry) {
                  record(entry);
                  if (entry->key == 1) walked->rebuildTable();
                  if (entry->key == 2) delete walked;
              }));
}

TEST(HashTableTest, RandomChangesAgreeWithAMap) {
    HashTable table;
    std::map<unsigned long, void*> model;
    unsigned state = 99;
    const auto draw = [&state](unsigned below) {
        state = state * 1664525U + 1013904223U;
        return (state >> 8) % below;
    };
    int additions = 0;
    for (int step = 0; step < 50000; ++step) {
        const unsigned long key = draw(3000) + highBit * draw(3);
        const auto found = model.find(key);
        EXPECT_EQ(found == model.end() ? nullptr : found->second, table.lookup(key));
        if (found != model.end()) {
            table.remove(key);
            model.erase(found);
        } else {
            table.add(key, &values[draw(16)]);
            model[key] = table.lookup(key);
            ++additions;
        }
    }
    EXPECT_EQ(additions, table.count);
    Keys keys = walk(table, record);
    std::sort(keys.begin(), keys.end());
    Keys expected;
    for (const auto& entry : model) expected.push_back(entry.first);
    EXPECT_EQ(expected, keys);
}

// ---- Ends of the process ----

#ifdef MORVAQNDS_CHECKED
const char* const duplicateMessage = "^HashTable::add: key 5 is in the table already\n$";
#else
const char* const duplicateMessage = "^$";
#endif

TEST(HashTableDeathTest, ADuplicateKeyAborts) {
    HashTable table;
    table.add(5, &values[0]);
    EXPECT_EXIT(table.add(5, &values[1]), testing::KilledBySignal(SIGABRT), duplicateMessage);
}

TEST(HashTableDeathTest, MoreBucketsThanAnIntCanCountEndTheProcess) {
    HashTable table;
    table.size = 1 << 30;
    EXPECT_EXIT(table.rebuildTable(), testing::KilledBySignal(SIGABRT),
                "^HashTable::rebuildTable: too many buckets\n$");
    table.size = 64;
}

#ifdef MORVAQNDS_CHECKED
TEST(HashTableDeathTest, CheckedRebuildAtTheMostBuckets) {
    HashTable table;
    while (table.bits < 11) table.rebuildTable();
    EXPECT_EXIT(table.rebuildTable(), testing::KilledBySignal(SIGABRT),
                "^HashTable::rebuildTable: 2048 buckets are the most\n$");
}
#else
TEST(HashTableTest, NothingIsCheckedWhenATableIsMadeToDoubleBeyondTheMostBuckets) {
    HashTable table;
    while (table.bits < 12) table.rebuildTable();
    table.add(77, &values[0]);
    EXPECT_EQ(4096, table.size);
    EXPECT_EQ(&values[0], table.lookup(77));
    EXPECT_EQ((Keys{77}), keysOfBucket(table, 0));
}
#endif

}  // namespace HashTableTest
