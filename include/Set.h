#ifndef MORVAQNDS_SET_H
#define MORVAQNDS_SET_H

#include "Chain.h"
#include "Export.h"
#include "TypedArray.h"
#include "XDRObj.h"

class qnSet;
class qnSetIter;
class qnTmpSet;

/** One link of a chain: its entry is the key record. */
struct MORVAQNDS_API qnSetBucket : qnChainLink<qnSetBucket> {
    using qnChainLink<qnSetBucket>::qnChainLink;
};

/** The chain heads of a set; new ones are empty. */
class MORVAQNDS_API qnSetBuckets : public qnTypedArray<qnSetBuckets, qnSetBucket*, qnZeroFilledArray> {
public:
    using qnTypedArray<qnSetBuckets, qnSetBucket*, qnZeroFilledArray>::qnTypedArray;
    const char* className() const override;
};

/** The iterators that stand on a set. */
class MORVAQNDS_API qnSetIters : public qnTypedArray<qnSetIters, qnSetIter*, qnZeroFilledArray> {
public:
    using qnTypedArray<qnSetIters, qnSetIter*, qnZeroFilledArray>::qnTypedArray;
    const char* className() const override;
};

/**
 * The set of keys: a hash table with chains, the key-only sibling of qnDictionary. Keys are records of a fixed size;
 * unless a subclass says otherwise they are plain bytes.
 *
 *     class Ports : public qnSet {                // set of int
 *     public:
 *         Ports() : qnSet(sizeof(int), 0) {}
 *         ~Ports() override { cleanup(); }
 *         bool xdrKey(qnTranscriber& t, void* key) override { return t.xdr(static_cast<int*>(key), 1); }
 *     };
 *     open.add(&port);
 *     open -= reserved;
 *
 * What is unusual:
 * - The number of buckets is fixed at construction (31 unless told otherwise): there is no rehash. Size it for what it
 *   will hold.
 * - Union, difference and intersection work in place, and on a set combined with itself.
 * - Only empty sets can be copied and assigned: what results has no buckets. Combine sets with `+=` instead.
 * - Iterators are known to their set and survive removal, of their own key too.
 * - Keys are passed by address everywhere, and the set owns its copies.
 *
 * Requires: the key operations do not add to or remove from the set that calls them.
 *
 * A set without buckets (copied, assigned to, made by a factory) iterates as empty and misses every lookup; adding to
 * it ends the process.
 */
class MORVAQNDS_API qnSet : public qnXDRObj {
public:
    /** `keySize` is bytes. `nbuckets` 0 means 31. */
    qnSet(unsigned keySize, unsigned nbuckets);
    /**
     * A set without buckets and with a key size of 0. Copying a set that has keys ends the process.
     *
     * Deliberate: neither bucket count nor key size are copied, so that there is nothing to add keys to; to copy a set
     * make one of the size it deserves and unite it with the source.
     */
    qnSet(const qnSet& other);
    qnSet(const qnTmpSet& other);
    /**
     * An empty set without buckets that is about to be read; what factories use. A concrete class sets its key size
     * here, so that a stream that claims another is refused.
     */
    explicit qnSet(qnTypeObj& type);
    /** Destroys the table only. Every subclass destructor calls `cleanup()` first. */
    ~qnSet() override;

    /**
     * Dismantles this set, unless `other` is this set: its table goes, its iterators are detached, and from then on it
     * is transcribed like a bare root object, of type `qnXDRObj_type`. `count` and `keySize` stay as they are.
     * Assigning a set that has keys ends the process.
     *
     * Deliberate: keys are not destroyed, and the links belong to nobody afterwards; who assigns to a set that has keys
     * calls `cleanup()` first.
     */
    qnSet& operator=(const qnSet& other);

    // Deliberate: className() is the root's. Sets never had a name of their own; types and streams know them by theirs.

    /** Transcribes the root part only. */
    bool xdr(qnTranscriber& transcriber) override;
    static bool xdr(void* object, qnTranscriber& transcriber);
    qnTypeObj& getTypeObj() const override;

    // Key operations.

    /**
     * Only the low 32 bits of a result count, on every machine: buckets are numbered in streams. Here the exclusive or
     * of the key's 32-bit words; trailing bytes do not count.
     */
    virtual unsigned long hashKey(const void* key) const;
    /** 0 means equal. The probe is always the first argument. By bytes here. */
    virtual int compareKeys(const void* a, const void* b) const;
    /** Constructs a key record in raw memory. By bytes here. */
    virtual void copyKey(const void* from, void* to) const;
    /** Does nothing here. */
    virtual void destroyKey(void* key) const;
    /** Transcribes a key record; when reading, it constructs it in raw memory. */
    virtual bool xdrKey(qnTranscriber& transcriber, void* key) = 0;

    bool contains(const void* key) const { return find(key) != nullptr; }
    /** The stored key record, or null. The record stays where it is until its key is removed. */
    const void* find(const void* key) const;
    /** Adds a copy of `key`; a key that is there already is kept as it is. */
    void add(const void* key);
    /** Removes `key`, if it is there. Iterators on it move on. */
    void remove(const void* key);
    /**
     * Removes every key, and detaches every iterator. For destructors, but the set can be used again.
     *
     * Deliberate: unlike a dictionary's, it counts `count` down, moves iterators on from key to key, and leaves the
     * mark of an iterator that stands nowhere alone.
     */
    void cleanup();

    // In place, key by key in the order of iteration. Requires: the keys of both sets are of one kind. Keys that are
    // too short to be looked up as those of the other set end the process.

    /** Union: adds every key of `other`. */
    qnSet& operator+=(const qnSet& other);
    /** Difference: removes every key of `other`. */
    qnSet& operator-=(const qnSet& other);
    /** Intersection: removes every key that `other` does not contain. */
    qnSet& operator*=(const qnSet& other);

    void addIter(qnSetIter* iter);
    /** Requires: `iter` is registered. */
    void removeIter(qnSetIter* iter);
    /** Moves every iterator that stands on `link` to the key that follows. */
    void invalidateIters(const qnSetBucket* link) const;

    /**
     * Transcribes the whole set: count, key size and keys with their bucket numbers. False at the first failure. A
     * stream that describes other keys or an impossible table ends the process; tables of more than 1,048,576 buckets
     * are read as those of dictionaries are.
     *
     * Deliberate: as with dictionaries, chains come back reversed, and keys are not hashed again.
     */
    bool doxdr(qnTranscriber& transcriber);

    qnSetBuckets buckets;  ///< chain heads
    unsigned count;        ///< keys
    unsigned keySize;      ///< bytes of a key record
    qnSetIters iters;      ///< registered iterators

protected:
    /** The key size as a stream states it: that in memory, unless a class keeps it equal on all machines. */
    virtual unsigned streamKeySize() const;

    /** Whether an assignment has dismantled the set, so that it is transcribed like a bare root object. */
    bool isDismantled() const { return dismantled_; }

private:
    /** buckets.length(), by a division that the compiler knows. */
    unsigned bucketCount() const { return static_cast<unsigned>(buckets.usedBytes / sizeof(qnSetBucket*)); }
    unsigned bucketOf(const void* key) const;
    char* newEntry(const char* operation) const;
    void discard(qnSetBucket* link);
    void detachIters();
    void requireNoKeys(const char* operation) const;
    void requireLikeKeys(const qnSet& other, const qnSet& reader, const char* operation) const;
    bool writeEntries(qnTranscriber& transcriber);
    bool readEntries(qnTranscriber& transcriber, unsigned nbuckets);

    bool dismantled_;
};

extern MORVAQNDS_API qnTypeObj qnSet_type;

/**
 * An iterator over the keys of a set: bucket by bucket, each chain from its head.
 *
 *     for (qnSetIter it(ports); it.getKey() != nullptr; ++it) use(*static_cast<const int*>(it.getKey()));
 *
 * An iterator whose key is removed moves to the following one and is marked as advanced: `getKey` answers null, and the
 * next `++` only clears the mark, so that a loop which removes as it goes skips nothing:
 *
 *     for (qnSetIter it(ports); it.set != nullptr; ++it)
 *         if (closed(it.getKey())) ports.remove(it.getKey());
 *
 * It is finished (and leaves the set) at the end, and detached when the set goes.
 */
class MORVAQNDS_API qnSetIter {
public:
    enum : unsigned { Advanced = 1 };

    /** A detached iterator. */
    qnSetIter() : set(nullptr), bucketIndex(0), flags(0), current(nullptr) {}
    /** On the first key of `set`, or finished if there is none. */
    explicit qnSetIter(qnSet& set);
    virtual ~qnSetIter();

    /** Starts over on another set. */
    qnSetIter& operator=(qnSet& set);

    /** The key record; null when the iterator is advanced, finished or detached. */
    const void* getKey() const { return current == nullptr || (flags & Advanced) ? nullptr : current->entry; }

    qnSetIter& operator++();
    /** Moves to the head of the next non-empty bucket, or finishes. */
    void advanceToValid();

    qnSet* set;            ///< null when detached or finished
    unsigned bucketIndex;  ///< the bucket that holds `current`
    unsigned flags;        ///< `Advanced`: moved by a removal and not visited yet, or finished
    qnSetBucket* current;  ///< the link it stands on

private:
    qnSetIter(const qnSetIter&);
    qnSetIter& operator=(const qnSetIter&);
};

/**
 * A copy of an empty set for passing on; it cannot be written.
 *
 *     qnTmpSet none(ports);
 *     none.contains(&port);                       // false
 *
 * Like every copy it has no buckets and takes no keys.
 */
class MORVAQNDS_API qnTmpSet : public qnSet {
public:
    /** Copying a set that has keys ends the process. */
    qnTmpSet(const qnSet& other);

    /** False: a temporary is not transcribed. */
    bool xdrKey(qnTranscriber& transcriber, void* key) override;
};

#endif
