#ifndef MORVAQNDS_DICTIONARY_H
#define MORVAQNDS_DICTIONARY_H

#include "Chain.h"
#include "Export.h"
#include "TypedArray.h"
#include "XDRObj.h"

class qnDictIter;
class qnDictionary;

/** One link of a chain: its entry is the key record, immediately followed by the value record. */
struct MORVAQNDS_API qnDictBucket : qnChainLink<qnDictBucket> {
    using qnChainLink<qnDictBucket>::qnChainLink;
};

/** The chain heads of a dictionary; new ones are empty. */
class MORVAQNDS_API qnDictBuckets : public qnTypedArray<qnDictBuckets, qnDictBucket*, qnZeroFilledArray> {
public:
    using qnTypedArray<qnDictBuckets, qnDictBucket*, qnZeroFilledArray>::qnTypedArray;
    const char* className() const override;
};

/** The iterators that stand on a dictionary. */
class MORVAQNDS_API qnDictIters : public qnTypedArray<qnDictIters, qnDictIter*, qnZeroFilledArray> {
public:
    using qnTypedArray<qnDictIters, qnDictIter*, qnZeroFilledArray>::qnTypedArray;
    const char* className() const override;
};

/**
 * The map from keys to values: a hash table with chains. Keys and values are records of fixed sizes whose meaning a
 * subclass supplies through virtual operations.
 *
 *     class Counts : public qnDictionary {        // string to counter
 *     public:
 *         Counts() : qnDictionary(sizeof(qnStr), sizeof(unsigned), 0) {}
 *         ~Counts() override { cleanup(); }
 *         ...
 *     };
 *     ++*static_cast<unsigned*>(counts.findCreate(&word));
 *
 * What is unusual:
 * - The number of buckets is fixed at construction (31 unless told otherwise): there is no rehash. Size it for what it
 *   will hold.
 * - Assignment merges: entries of the target stay, and for equal keys the source's value wins.
 * - Iterators are known to their dictionary and survive removal, of their own entry too.
 * - Keys and values are passed by address everywhere, and the dictionary owns its copies.
 * - The base copy constructor copies the shape only, because the subclass that knows the records does not exist yet;
 *   each concrete class merges the entries in its own copy constructor.
 *
 * Requires: the record operations do not add to or remove from the dictionary that calls them.
 *
 * A dictionary without buckets (made by a factory, or read as such) misses every lookup; adding to it ends the process.
 */
class MORVAQNDS_API qnDictionary : public qnXDRObj {
public:
    /** Record sizes are bytes. `nbuckets` 0 means 31. */
    qnDictionary(unsigned keySize, unsigned valueSize, unsigned nbuckets);
    /** The same bucket count and record sizes, and no entries. */
    qnDictionary(const qnDictionary& other);
    /**
     * An empty dictionary without buckets that is about to be read; what factories use. A concrete class sets its
     * record sizes here, so that a stream that claims others is refused.
     */
    explicit qnDictionary(qnTypeObj& type);
    /** Destroys the table only. Every subclass destructor calls `cleanup()` first. */
    ~qnDictionary() override;

    /** Adds every entry of `other`; for equal keys its values win. Assigning a dictionary to itself changes nothing. */
    qnDictionary& operator=(const qnDictionary& other);

    const char* className() const override = 0;
    /** Transcribes the root part only. */
    bool xdr(qnTranscriber& transcriber) override;
    static bool xdr(void* object, qnTranscriber& transcriber);
    qnTypeObj& getTypeObj() const override;

    // Record operations.

    /** Adds an entry or replaces the value of an existing one, whose key record is kept. */
    virtual void addInternal(const void* key, const void* value);
    /**
     * Only the low 32 bits of a result count, on every machine: buckets are numbered in streams. The provided body is
     * the exclusive or of the key's 32-bit words; trailing bytes do not count.
     */
    virtual unsigned long hashKey(const void* key) const = 0;
    /** 0 means equal. The probe is always the first argument. */
    virtual int compareKeys(const void* a, const void* b) const = 0;
    /** Constructs a key record in raw memory. */
    virtual void copyKey(const void* from, void* to) const = 0;
    virtual void destroyKey(void* key) const;
    /** Constructs a value record in raw memory. */
    virtual void copyValue(const void* from, void* to) const = 0;
    virtual void destroyValue(void* value) const;
    /** Constructs a default value record in raw memory. */
    virtual void createValue(void* to) const = 0;
    /** Transcribes a key record; when reading, it constructs it in raw memory. */
    virtual bool xdrKey(qnTranscriber& transcriber, void* key) = 0;
    /** Transcribes a value record; when reading, it constructs it in raw memory. */
    virtual bool xdrValue(qnTranscriber& transcriber, void* value) = 0;

    /**
     * The value record of `key`, or null. `where`, unless null, receives the link (`qnDictBucket*`) or null.
     * The record stays where it is until its entry is removed.
     */
    void* find(const void* key, void** where) const;
    /** The value record of `key`; an absent entry is made with `createValue`. */
    void* findCreate(const void* key);
    /** Removes the entry of `key`, if there is one. Iterators on it move on. */
    void remove(const void* key);
    /**
     * Removes the entry of `key` and returns its value record, moved into a new block from `malloc` that the caller
     * owns; null when there is none.
     */
    void* cut(const void* key);
    /**
     * Destroys every entry and detaches every iterator. For destructors: `count` is not reset.
     */
    void cleanup();

    void addIter(qnDictIter* iter);
    /** Requires: `iter` is registered. */
    void removeIter(qnDictIter* iter);
    /** Moves every iterator that stands on `link` to the entry that follows. */
    void invalidateIters(const qnDictBucket* link) const;

    /**
     * Transcribes the whole dictionary: counts, record sizes and entries with their bucket numbers. False at the first
     * failure. A stream that describes other records or an impossible table ends the process. So that a few bytes
     * cannot claim a large part of the memory, a table of more than 1,048,576 buckets is only read with an entry for
     * every 64.
     *
     * Deliberate: entries are written head first and pushed at the head when read, so each chain comes back reversed;
     * bucket numbers are taken from the stream and keys are not hashed again, as string keys have no text yet.
     */
    bool doxdr(qnTranscriber& transcriber);

    unsigned count;         ///< entries
    unsigned keySize;       ///< bytes of a key record
    unsigned valueSize;     ///< bytes of a value record
    qnDictBuckets buckets;  ///< chain heads
    qnDictIters iters;      ///< registered iterators

protected:
    /** The record sizes as a stream states them: those in memory, unless a class keeps them equal on all machines. */
    virtual void streamRecordSizes(unsigned& key, unsigned& value) const;

    /** Number of the bucket in which `key` belongs. Requires: there are buckets. */
    unsigned bucketOf(const void* key) const;
    /** Pushes an entry, constructed by the caller, at the head of a chain. */
    qnDictBucket* pushEntry(unsigned bucket, char* entry);
    /** A block for one entry, not constructed. */
    char* newEntry(const char* operation) const;

private:
    /** buckets.length(), by a division that the compiler knows. */
    unsigned bucketCount() const { return static_cast<unsigned>(buckets.usedBytes / sizeof(qnDictBucket*)); }
    void requireBuckets(const char* operation) const;
    qnDictBucket* findInChain(unsigned bucket, const void* key) const;
    qnDictBucket* unlink(const void* key);
    void discard(qnDictBucket* link);
    bool writeEntries(qnTranscriber& transcriber);
    bool readEntries(qnTranscriber& transcriber, unsigned nbuckets);

    unsigned staleIters_;  // leading entries of `iters` that a cleanup has detached; they may be gone
};

extern MORVAQNDS_API qnTypeObj qnDictionary_type;

/**
 * An iterator over the entries of a dictionary: bucket by bucket, each chain from its head.
 *
 *     for (qnStrStrDictionaryIter it(dictionary); it.getKey() != nullptr; ++it)
 *         use(*static_cast<qnStr*>(it.getKey()), *static_cast<qnStr*>(it.getValue()));
 *
 * An iterator whose entry is removed moves to the following one and is marked as advanced: `getKey` and `getValue`
 * answer null, and the next `++` only clears the mark, so that a loop which removes as it goes skips nothing:
 *
 *     for (qnStrStrDictionaryIter it(d); it.dict != nullptr; ++it)
 *         if (obsolete(it.getKey())) d.remove(it.getKey());
 *
 * It is finished (and leaves the dictionary) at the end, and detached when the dictionary goes.
 */
class MORVAQNDS_API qnDictIter {
public:
    enum : unsigned { Advanced = 1 };

    /** A detached iterator. */
    qnDictIter() : dict(nullptr), bucketIndex(0), flags(0), current(nullptr) {}
    /** On the first entry of `dictionary`, or finished if there is none. */
    explicit qnDictIter(qnDictionary& dictionary);
    ~qnDictIter();

    /** Starts over on another dictionary. */
    qnDictIter& operator=(qnDictionary& dictionary);

    /** The key record; null when the iterator is advanced, finished or detached. */
    void* getKey() const { return current == nullptr || (flags & Advanced) ? nullptr : current->entry; }
    /** The value record; null when the iterator is advanced, finished or detached. */
    void* getValue() const {
        return current == nullptr || (flags & Advanced) ? nullptr : current->entry + dict->keySize;
    }

    qnDictIter& operator++();
    /** Moves to the head of the next non-empty bucket, or finishes. */
    void advanceToValid();

    qnDictionary* dict;     ///< null when detached or finished
    unsigned bucketIndex;   ///< the bucket that holds `current`
    unsigned flags;         ///< `Advanced`: moved by a removal and not visited yet, or finished
    qnDictBucket* current;  ///< the link it stands on

private:
    qnDictIter(const qnDictIter&);
    qnDictIter& operator=(const qnDictIter&);
};

/** An iterator for one class of dictionaries, by reference or pointer. */
template <class Dictionary>
using qnTypedDictIter = qnTypedIter<qnDictIter, Dictionary>;

/** The string-keyed half of a dictionary: keys are `qnStr`, copied deeply, hashed and compared as text. */
class MORVAQNDS_API qnStrKeyDictionary : public qnDictionary {
public:
    qnStrKeyDictionary(unsigned valueSize, unsigned nbuckets);
    qnStrKeyDictionary(const qnStrKeyDictionary& other) : qnDictionary(other) {}
    qnStrKeyDictionary(qnTypeObj& type, unsigned valueSize);
    qnStrKeyDictionary& operator=(const qnStrKeyDictionary& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    unsigned long hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
};

#endif
