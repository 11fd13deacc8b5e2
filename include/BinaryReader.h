#ifndef MORVAQNDS_BINARYREADER_H
#define MORVAQNDS_BINARYREADER_H

#include "BinaryTranscriber.h"

class qnBinaryReader;

/** Reads `count` bytes into `destination` and rearranges them for this machine. */
typedef bool (*qnBinaryReaderFunc)(qnBinaryReader& reader, char* destination, unsigned count);

/** A pointer variable that waits for an object or array; whoever makes it here knows that it can hold what comes. */
struct MORVAQNDS_API qnBinaryReaderItem {
    qnBinaryReaderItem(void* pointerVariable, unsigned waitsFor);

    void* address;  ///< of the pointer variable
    unsigned id;    ///< what it waits for

private:
    friend class qnBinaryReader;
    unsigned char use_;    // what the variable points to: an object, an array, text
    unsigned byteLength_;  // the least that an array must have, in the stream
};

/**
 * Reads object graphs in the binary format. Made by `qnTranscriber::getReader`, which reads the header.
 *
 *     qnTranscriber* reader = qnTranscriber::getReader(stream);      // null: the stream has no header
 *     qnRetain(reader);
 *     void* root = reader->readObject(Shape_type);                   // null: the stream ended
 *     qnRelease(reader);                                             // the objects stay
 *
 * Whatever the bytes, reading ends in a graph, in a null or false result (the input ended), or in the process's end
 * with a message: it makes no block larger than the data that has arrived, and pointers get only what they can hold.
 *
 * What is unusual, and deliberate:
 * - Only 2- and 4-byte integers are converted from another byte order; floating-point values are copied, and the
 *   numbers in the records themselves are taken as they are.
 * - For kinds 4 and 11 to 14 the reader takes one word more than the writer writes.
 * - A null pointer to a primitive array cannot be read back.
 *
 * Pointers to objects get an object of whatever class the stream says, as types do not know what they derive from; a
 * program that does not trust its stream looks at `getTypeObj()` before it uses one.
 *
 * Objects that a failed read has made stay allocated. Until `reset`, later graphs may refer to objects and arrays of
 * earlier ones, which must live that long; the text of a string of an earlier graph cannot be referred to.
 */
class MORVAQNDS_API qnBinaryReader : public virtual qnBinaryTranscriber {
public:
    /** Chooses the conversions; marks and a format it does not know end the process. */
    qnBinaryReader(qnStream* stream, short shortMark, long longMark, const char* floatFormat);
    ~qnBinaryReader() override;

    /** "qnBinaryReader". */
    const char* className() const override;
    /** Forgets what was read and what is waited for. */
    void reset() override;
    void* readObject(qnTypeObj& type) override;
    /** Ends the process. */
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
    bool xdr(char** string) override;
    bool xdr(unsigned char** string) override;
    bool xdr(void* pointerVariable, qnXDRObj* object, qnTypeObj& type) override;
    bool xdr(qnTypeObj& baseType, void* object, void* base) override;
    bool xdr(int* values, unsigned count) override;
    bool xdr(unsigned int* values, unsigned count) override;
    bool xdr(int** array, unsigned count) override;
    bool xdr(unsigned int** array, unsigned count) override;

    /** Hands out `n` data bytes, going on into further records of whatever kind. */
    bool readBytes(char* destination, unsigned n);
    /** Appends bytes of the stream to `buffer` up to and including a NUL. */
    bool readName(qnStackBuffer& buffer);
    /** Reads the next record. */
    bool fill();
    /** The address entered for `id`, or null. */
    void* alreadyRead(unsigned long id) const;
    /** Takes over `item`. */
    void queue(qnBinaryReaderItem* item);
    /** Removes and returns the newest item. Requires: there is one. */
    qnBinaryReaderItem* pop();
    /** Reads the object or array whose record, or type record, was read last. */
    bool readInstance(void** result);
    /** Reads a pointer to an array of at least `byteLength` bytes; the variable may have to wait. */
    bool readPrimPointer(void* pointerVariable, unsigned byteLength);

    qnBinaryReaderFunc shortsReader;
    qnBinaryReaderFunc longsReader;
    qnBinaryReaderFunc floatsReader;
    qnBinaryReaderFunc doublesReader;

    class State;  ///< what the reader keeps of what has arrived

private:
    bool readPending();

    State* state_;
};

MORVAQNDS_API bool qnBinaryReader_shorts(qnBinaryReader& reader, char* destination, unsigned count);
MORVAQNDS_API bool qnBinaryReader_longs(qnBinaryReader& reader, char* destination, unsigned count);
MORVAQNDS_API bool qnBinaryReader_floats(qnBinaryReader& reader, char* destination, unsigned count);
MORVAQNDS_API bool qnBinaryReader_doubles(qnBinaryReader& reader, char* destination, unsigned count);
/** Swaps the bytes of every 2-byte unit: 0 1 2 3 becomes 1 0 3 2. */
MORVAQNDS_API bool qnBinaryReader_BS(qnBinaryReader& reader, char* destination, unsigned count);
/** Swaps the halves of every 4-byte unit: 0 1 2 3 becomes 2 3 0 1. */
MORVAQNDS_API bool qnBinaryReader_longsSS(qnBinaryReader& reader, char* destination, unsigned count);
/** Reverses every 4-byte unit: 0 1 2 3 becomes 3 2 1 0. */
MORVAQNDS_API bool qnBinaryReader_longsBSSS(qnBinaryReader& reader, char* destination, unsigned count);
/** Ends the process. */
MORVAQNDS_API bool qnBinaryReader_floatsVAX(qnBinaryReader& reader, char* destination, unsigned count);
/** Ends the process, with the message of the form for floats. */
MORVAQNDS_API bool qnBinaryReader_doublesVAX(qnBinaryReader& reader, char* destination, unsigned count);

#endif
