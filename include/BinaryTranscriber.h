#ifndef MORVAQNDS_BINARYTRANSCRIBER_H
#define MORVAQNDS_BINARYTRANSCRIBER_H

#include <cstdint>

#include "Dictionary.h"
#include "Transcriber.h"
#include "VoidPtrArray.h"

/** The kinds of records in a binary stream. Values above `OldBase` are never written. */
enum qnBinaryRecordKind : unsigned {
    qnBRK_Data = 0,      ///< more data of the current object
    qnBRK_Null = 1,      ///< a null pointer
    qnBRK_Type = 2,      ///< introduces a type
    qnBRK_NewArray = 3,  ///< a pointer to a primitive array whose contents follow later
    qnBRK_OldArray = 4,  ///< a pointer to a primitive array met before
    qnBRK_Bytes = 5,     ///< contents of a primitive array; to 9, see qnBinaryOTTag
    qnBRK_Doubles = 9,
    qnBRK_Instance = 10,   ///< contents of an object
    qnBRK_NewObject = 11,  ///< a pointer to an object whose contents follow later
    qnBRK_OldObject = 12,  ///< a pointer to an object met before
    qnBRK_NewBase = 13,    ///< a base part, here
    qnBRK_OldBase = 14     ///< a base part met before
};

/** The kinds of records that hold a primitive array's contents. */
enum qnBinaryOTTag : unsigned {
    qnBOT_Bytes = 5,   ///< `char` and `unsigned char`
    qnBOT_Shorts = 6,  ///< 2 bytes each
    qnBOT_Longs = 7,   ///< 4 bytes each
    qnBOT_Floats = 8,  ///< 4 bytes each
    qnBOT_Doubles = 9  ///< 8 bytes each
};

/**
 * The object table of a binary transcriber: a dictionary from pointer words to pointer words, in a writer from
 * addresses to record ids, in a reader from ids to addresses.
 *
 *     qnBinaryOTDict table;
 *     qnBinaryOTDict::Word address = ..., id = 7;
 *     table.addInternal(&address, &id);
 *
 * It is a dictionary like any other, with a fixed number of buckets (31) and iterators. Beside the chains it keeps an
 * index, so that adding, finding and removing the newest entries take constant time in tables of millions; the chains
 * are what iterators and every other user see.
 */
class MORVAQNDS_API qnBinaryOTDict : public qnDictionary {
public:
    typedef std::uintptr_t Word;

    /** `nbuckets` 0 means 31. */
    explicit qnBinaryOTDict(unsigned nbuckets = 0);
    qnBinaryOTDict(const qnBinaryOTDict& other);
    ~qnBinaryOTDict() override;
    qnBinaryOTDict& operator=(const qnBinaryOTDict& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    /** "qnBinaryOTDict". */
    const char* className() const override;
    void addInternal(const void* key, const void* value) override;
    /** The low 32 bits of the key shifted right by 2. */
    unsigned long hashKey(const void* key) const override;
    /** The low 32 bits of the difference, or 1 where only higher bits differ. */
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    void copyValue(const void* from, void* to) const override;
    void destroyValue(void* value) const override;
    void createValue(void* to) const override;
    /** False: the table itself is never transcribed. */
    bool xdrKey(qnTranscriber& transcriber, void* key) override;
    bool xdrValue(qnTranscriber& transcriber, void* value) override;

    // The lookups of qnDictionary, in constant time.
    void* find(const void* key, void** where) const;
    void* findCreate(const void* key);

    /** Removes every entry. Iterators finish. */
    void removeAll();

private:
    friend class qnBinaryReader;
    struct Index;
    /** Arranges the index for keys that are numbers and not addresses. */
    void expectIds();
    /** Says that `id` will be looked for soon. */
    void expect(Word id) const;
    /** Frees every entry. Iterators are not told. */
    void discardAll();
    Index& index() const;

    mutable Index* index_;
};

typedef qnTypedDictIter<qnBinaryOTDict> qnBinaryOTDictIter;

/**
 * What the binary writer and reader share: the record being assembled or taken apart, the object table and the queue
 * of what is still to come.
 *
 * A stream is a header and records. A record is a head byte (low six bits: kind; top two: size class of the data
 * length), the length in 0, 1, 2 or 4 bytes, a payload of 32-bit words that depends on the kind, the name and its NUL
 * in a type record, and the data. All numbers are in the writer's byte order. docs/format.md has the tables.
 */
class MORVAQNDS_API qnBinaryTranscriber : public virtual qnTranscriber {
public:
    enum : unsigned { BufferSize = 512 };

    ~qnBinaryTranscriber() override;

    char buffer[BufferSize];      ///< data bytes of the current record
    char* bufferNext;             ///< writer: the next free byte; reader: the next byte to hand out
    unsigned bufferSize;          ///< 512
    unsigned bufferCount;         ///< data bytes held
    qnBinaryOTDict objectTable;   ///< writer: address to id; reader: id to address
    unsigned pendingKind;         ///< kind of the current record
    unsigned pendingId;           ///< its id
    unsigned pendingTypeId;       ///< id of a type record
    unsigned pendingVersion;      ///< version of the type introduced last; in a reader, of the instance
    unsigned pendingByteCount;    ///< bytes of a primitive array
    const char* pendingTypeName;  ///< name of a type record
    qnVoidPtrArray pendingItems;  ///< owned items, last in first out

protected:
    qnBinaryTranscriber();

    /** Appends to the queue. Its room doubles, as a graph may queue millions. */
    void appendPending(void* item);
};

#endif
