#ifndef MORVAQNDS_HASHTABLE_H
#define MORVAQNDS_HASHTABLE_H

#include "Export.h"

/**
 * A table from `unsigned long` keys to untyped pointers.
 *
 *     HashTable sessions;
 *     sessions.add(id, session);
 *     Session* found = static_cast<Session*>(sessions.lookup(id));
 *     sessions.remove(id);
 *
 * The table makes and destroys its entries; the values belong to the caller and are never touched.
 *
 * Unusual: adding a key that is there already ends the process through `abort()`.
 *
 * Unusual: `count` counts additions and never goes down, so that removals, too, bring the next doubling closer.
 *
 * Unusual: only the low 20 bits of a key choose its bucket, and the table stops doubling at 2048 buckets; from then on
 * the chains lengthen and a look-up takes time in proportion to them.
 */

/** One entry of a `HashTable`, owned by it. */
struct MORVAQNDS_API HashEntry {
    unsigned long key;
    void* value;  ///< the caller's; may be null
    HashEntry* next;
    HashEntry* prev;  ///< null at the head of a chain
};

class MORVAQNDS_API HashTable {
public:
    /** An empty table of 64 buckets. */
    HashTable();

    /** Destroys the entries, not the values. */
    ~HashTable();

    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;

    /** Adds an entry. Requires: `key` is not in the table; otherwise the process ends through `abort()`. */
    void add(unsigned long key, void* value);

    /**
     * Adds an entry with a null value for the caller to set, and returns it; it is valid until it is removed. Doubles
     * the table first if its chains hold four entries on average. An entry that has the same key already is not looked
     * for, and is hidden by the new one until that is removed.
     */
    HashEntry* addElement(unsigned long key);

    /** The value of `key`; null when it is absent, and also when null was stored. */
    void* lookup(unsigned long key) const;

    /** Destroys the entry of `key` if there is one. `count` stays. */
    void remove(unsigned long key);

    /**
     * Calls `function` for every entry: bucket by bucket, each chain from its newest entry.
     *
     * The function may remove any entry, the one that it is given included, add entries, walk the table itself and
     * destroy the table. An entry that is removed before its turn is not visited; one that is added meanwhile may be.
     * If an addition makes the table double, the walk goes on through the entries of before in their old order.
     */
    void mapcar(void (*function)(HashEntry*));

    /** The bucket of `key` at the present size. */
    int hash(unsigned long key) const;

    /** The first entry for `key` in the chain that starts at `head`; null if there is none. */
    HashEntry* searchBucketFor(HashEntry* head, unsigned long key) const;

    /**
     * Doubles the number of buckets. Entries move chain by chain from the head, each to the head of its new chain.
     * Requires: `bits` is below 11.
     */
    void rebuildTable();

    HashEntry** table;  ///< the heads of the chains
    int count;          ///< number of additions so far; starts again at the lowest int after the highest
    int size;           ///< number of buckets, always `1 << bits`
    int bits;           ///< 6 to 11
};

#endif
