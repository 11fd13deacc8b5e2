#ifndef MORVAQNDS_BINARYWRITER_H
#define MORVAQNDS_BINARYWRITER_H

#include "BinaryTranscriber.h"

/** An object or array that has an id and is still to be written. */
struct qnBinaryWriterItem {
    unsigned kind;  ///< 0 an object, 1 a primitive array
    void* address;
    union {
        qnTypeObj* type;      ///< of an object
        unsigned byteLength;  ///< of an array, in the stream
    };
    qnBinaryOTTag tag;  ///< of an array

    /** What an array's elements are in memory, where that is not what they are in the stream. */
    enum Elements : unsigned { Plain, Longs, UnsignedLongs } elements;

    unsigned id;  ///< given when it is queued
};

/**
 * Writes object graphs in the binary format. Made by `qnTranscriber::getWriter`.
 *
 *     qnTranscriber* writer = qnTranscriber::getWriter(stream);
 *     qnRetain(writer);
 *     bool written = writer->writeObject(shape, shape);
 *     qnRelease(writer);
 *
 * Objects and primitive arrays are written once each: a pointer record gives the id, and the contents follow after the
 * object that holds the pointer, the newest first. Ids count from 1 through the life of the writer. Data is collected
 * in records of at most 512 bytes. Time and memory are linear in what is written.
 *
 * Addresses are identities: nothing that was written may be freed or moved before the graph is finished, or before
 * `reset` if another graph is to follow without it.
 */
class MORVAQNDS_API qnBinaryWriter : public virtual qnBinaryTranscriber {
public:
    explicit qnBinaryWriter(qnStream* stream);
    ~qnBinaryWriter() override;

    /** "qnBinaryWriter". */
    const char* className() const override;
    /**
     * Forgets what was written, and what a failed write left behind.
     *
     * Deliberate: ids keep counting, so that a reader that does not reset meets no id twice.
     */
    void reset() override;
    /** Ends the process. */
    void* readObject(qnTypeObj& type) override;
    bool writeObject(void* object, qnXDRObj* asXDRObj) override;

    bool xdr(char* values, unsigned count) override;
    bool xdr(unsigned char* values, unsigned count) override;
    bool xdr(short* values, unsigned count) override;
    bool xdr(unsigned short* values, unsigned count) override;
    bool xdr(long* values, unsigned count) override;
    bool xdr(unsigned long* values, unsigned count) override;
    bool xdr(float* values, unsigned count) override;
    bool xdr(double* values, unsigned count) override;
    bool xdr(qnStr* strings, unsigned count) override;
    bool xdr(char** array, unsigned count) override;
    bool xdr(unsigned char** array, unsigned count) override;
    bool xdr(short** array, unsigned count) override;
    bool xdr(unsigned short** array, unsigned count) override;
    bool xdr(long** array, unsigned count) override;
    bool xdr(unsigned long** array, unsigned count) override;
    bool xdr(float** array, unsigned count) override;
    bool xdr(double** array, unsigned count) override;
    /** Requires: the string is not null. A null one is written as a null pointer, which no reader takes back. */
    bool xdr(char** string) override;
    bool xdr(unsigned char** string) override;
    bool xdr(void* pointerVariable, qnXDRObj* object, qnTypeObj& type) override;
    bool xdr(qnTypeObj& baseType, void* object, void* base) override;
    bool xdr(int* values, unsigned count) override;
    bool xdr(unsigned int* values, unsigned count) override;
    bool xdr(int** array, unsigned count) override;
    bool xdr(unsigned int** array, unsigned count) override;

    /** The id under which `address` was entered, or 0. */
    unsigned alreadyWritten(void* address) const;
    /** Enters `address` under the next id and returns the id. */
    unsigned recordIdForAddress(void* address);
    /** Takes over `item`, gives it the next id and returns the id. */
    unsigned queue(qnBinaryWriterItem* item);
    /** Removes and returns the newest item. Requires: there is one. */
    qnBinaryWriterItem* pop();
    /** Adds data to the current record; what does not fit goes on in further ones. */
    bool writeBytes(const char* data, unsigned n);
    /** Writes the current record, if there is one. */
    bool flush();
    bool writeNullPointer();
    /** Writes a pointer to an array of `byteLength` bytes and queues the contents of a new one. */
    bool writePrimPointer(void* array, unsigned byteLength, qnBinaryOTTag tag);
    /** Writes a type record for a new type. `id` receives the type's id. */
    bool writeType(qnTypeObj& type, unsigned long* id);

    unsigned nextId;  ///< the next id, from 1

private:
    unsigned idOf(const qnBinaryWriterItem& item) const { return renumbered_ ? alreadyWritten(item.address) : item.id; }
    bool writePointer(void* array, unsigned count, unsigned elementBytes, qnBinaryOTTag tag,
                      qnBinaryWriterItem::Elements elements);
    bool writeItem(qnBinaryWriterItem& item);
    bool writeArray(qnBinaryWriterItem& item);
    bool putRecord(const char* data, unsigned n);
    template <class Long>
    bool writeLongs(const Long* values, unsigned count);

    bool renumbered_;  // whether an address has got a second id since the last reset
};

#endif
