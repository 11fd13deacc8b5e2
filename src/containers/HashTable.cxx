#include "HashTable.h"

#include <climits>
#include <cstdlib>
#include <new>

#include "Checked.h"
#include "Fatal.h"

namespace {

constexpr int firstBits = 6;
constexpr int lastBits = 11;

/**
 * How the low 20 bits of a key are folded: the key, and the key shifted right by two distances, combined by exclusive
 * or. A shift of 20 leaves nothing, so it stands where a size folds only once.
 *
 * Deliberate: the distances follow no rule (13 for 7 bits, 16 for 8). The order in which `mapcar` visits depends on
 * them.
 */
struct Folding {
    int firstShift;
    int secondShift;
};
constexpr Folding foldings[] = {{6, 12}, {7, 13}, {8, 16}, {9, 20}, {10, 20}, {11, 20}};

HashEntry** makeBuckets(int number) {
    HashEntry** buckets = new (std::nothrow) HashEntry*[static_cast<unsigned>(number)]();
    if (buckets == nullptr) qnFatal("HashTable: out of memory for %d buckets", number);
    return buckets;
}

void pushAtHead(HashEntry*& head, HashEntry* entry) {
    entry->prev = nullptr;
    entry->next = head;
    if (head != nullptr) head->prev = entry;
    head = entry;
}

/**
 * A `mapcar` under way. The function that it calls may change the table, so changes are told to the walks that are
 * under way on this thread; they stand in a list outside of the tables, which have no room for them.
 */
class Walk {
public:
    explicit Walk(HashTable* walkedTable) : table(walkedTable), outer(innermost) { innermost = this; }
    ~Walk() {
        delete[] rest;
        innermost = outer;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    HashEntry* take();

    /** `entry` is about to go. */
    static void tellRemoval(const HashTable* table, const HashEntry* entry);

    /** The chains are about to be taken apart. */
    static void tellRebuild(const HashTable* table);

    /** The whole table is about to go. */
    static void tellDestruction(const HashTable* table);

private:
    void advanceToEntry();
    void keepRest();

    static thread_local Walk* innermost;

    HashTable* table;  // null once it is destroyed
    Walk* outer;
    HashEntry* next = nullptr;   // the next entry to visit, in the chain of the bucket before `bucket`
    int bucket = 0;              // the next bucket to visit
    HashEntry** rest = nullptr;  // after a rebuild: what was left to visit, null where removed since
    int restCount = 0;
    int restIndex = 0;
};

thread_local Walk* Walk::innermost = nullptr;

void Walk::advanceToEntry() {
    while (next == nullptr && bucket < table->size) next = table->table[bucket++];
}

/** The entry whose turn it is; null when all have been visited. */
HashEntry* Walk::take() {
    if (table == nullptr) return nullptr;
    HashEntry* entry = nullptr;
    if (rest != nullptr) {
        while (entry == nullptr && restIndex < restCount) entry = rest[restIndex++];
    } else {
        advanceToEntry();
        entry = next;
        if (entry != nullptr) next = entry->next;
    }
    return entry;
}

void Walk::tellRemoval(const HashTable* table, const HashEntry* entry) {
    for (Walk* walk = innermost; walk != nullptr; walk = walk->outer) {
        if (walk->table != table) continue;
        if (walk->next == entry) walk->next = entry->next;
        for (int i = walk->restIndex; i < walk->restCount; ++i) {
            if (walk->rest[i] == entry) walk->rest[i] = nullptr;
        }
    }
}

/** Writes down what is left to visit. Tables double only while they are small, so this is a few thousand at most. */
void Walk::keepRest() {
    HashEntry* const resumeAt = next;
    const int resumeBucket = bucket;
    int number = 0;
    while (take() != nullptr) ++number;

    HashEntry** entries = new (std::nothrow) HashEntry*[static_cast<unsigned>(number) + 1];
    if (entries == nullptr) qnFatal("HashTable::mapcar: out of memory");
    next = resumeAt;
    bucket = resumeBucket;
    for (int i = 0; i < number; ++i) entries[i] = take();
    next = nullptr;
    rest = entries;
    restCount = number;
}

void Walk::tellRebuild(const HashTable* table) {
    for (Walk* walk = innermost; walk != nullptr; walk = walk->outer) {
        if (walk->table == table && walk->rest == nullptr) walk->keepRest();
    }
}

void Walk::tellDestruction(const HashTable* table) {
    for (Walk* walk = innermost; walk != nullptr; walk = walk->outer) {
        if (walk->table == table) walk->table = nullptr;
    }
}

}  // namespace

HashTable::HashTable() : table(makeBuckets(1 << firstBits)), count(0), size(1 << firstBits), bits(firstBits) {}

HashTable::~HashTable() {
    Walk::tellDestruction(this);
    for (int bucket = 0; bucket < size; ++bucket) {
        while (HashEntry* entry = table[bucket]) {
            table[bucket] = entry->next;
            delete entry;
        }
    }
    delete[] table;
}

void HashTable::add(unsigned long key, void* value) {
    const bool isNew = searchBucketFor(table[hash(key)], key) == nullptr;
    MORVAQNDS_REQUIRE(isNew, "HashTable::add: key %lu is in the table already", key);
    // Deliberate: a duplicate is a programming error and stops the process in every build.
    if (!isNew) std::abort();
    addElement(key)->value = value;
}

HashEntry* HashTable::addElement(unsigned long key) {
    if (bits < lastBits && count >= 4 * size) rebuildTable();
    HashEntry* entry = new (std::nothrow) HashEntry;
    if (entry == nullptr) qnFatal("HashTable::addElement: out of memory");
    entry->key = key;
    entry->value = nullptr;
    pushAtHead(table[hash(key)], entry);
    // Deliberate: counts additions, not entries. Growth depends on it. A long life may carry it past the highest int.
    count = static_cast<int>(static_cast<unsigned>(count) + 1);
    return entry;
}

void* HashTable::lookup(unsigned long key) const {
    const HashEntry* entry = searchBucketFor(table[hash(key)], key);
    return entry != nullptr ? entry->value : nullptr;
}

void HashTable::remove(unsigned long key) {
    HashEntry*& head = table[hash(key)];
    HashEntry* entry = searchBucketFor(head, key);
    if (entry == nullptr) return;
    Walk::tellRemoval(this, entry);
    if (entry == head) head = entry->next;
    if (entry->next != nullptr) entry->next->prev = entry->prev;
    if (entry->prev != nullptr) entry->prev->next = entry->next;
    delete entry;
}

void HashTable::mapcar(void (*function)(HashEntry*)) {
    Walk walk(this);
    while (HashEntry* entry = walk.take()) function(entry);
}

int HashTable::hash(unsigned long key) const {
    if (bits < firstBits || bits > lastBits) return 0;
    const unsigned low = static_cast<unsigned>(key & 0xFFFFF);
    const Folding& folding = foldings[bits - firstBits];
    return static_cast<int>((low ^ (low >> folding.firstShift) ^ (low >> folding.secondShift)) & ((1U << bits) - 1));
}

HashEntry* HashTable::searchBucketFor(HashEntry* head, unsigned long key) const {
    while (head != nullptr && head->key != key) head = head->next;
    return head;
}

void HashTable::rebuildTable() {
    MORVAQNDS_REQUIRE(bits < lastBits, "HashTable::rebuildTable: %d buckets are the most", size);
    if (size > INT_MAX / 2) qnFatal("HashTable::rebuildTable: too many buckets");
    Walk::tellRebuild(this);
    HashEntry** const oldTable = table;
    const int oldSize = size;
    table = makeBuckets(2 * oldSize);
    size = 2 * oldSize;
    ++bits;
    for (int bucket = 0; bucket < oldSize; ++bucket) {
        while (HashEntry* entry = oldTable[bucket]) {
            oldTable[bucket] = entry->next;
            pushAtHead(table[hash(entry->key)], entry);
        }
    }
    delete[] oldTable;
}
