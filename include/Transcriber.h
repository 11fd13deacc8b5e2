#ifndef MORVAQNDS_TRANSCRIBER_H
#define MORVAQNDS_TRANSCRIBER_H

#include "Export.h"
#include "RCObj.h"
#include "Stream.h"
#include "Types.h"

class qnReadSupport;
class qnStackBuffer;
class qnStr;
class qnTranscriber;
class qnVoidPtrDict;
class qnXDRObj;
struct qnTypeObj;

/** Makes a reader for a stream whose header held the two byte-order marks and the floating-point format. */
typedef qnTranscriber* (*qnReaderMaker)(qnStream* stream, short shortMark, long longMark, const char* floatFormat);
/** Makes a writer for a stream. */
typedef qnTranscriber* (*qnWriterMaker)(qnStream* stream);

/**
 * Carries objects to or from a stream. A class's one `xdr` operation both writes and reads: every value that it hands
 * to the transcriber is written from memory or read into it.
 *
 *     bool Shape::xdr(qnTranscriber& t) {
 *         if (!t.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this))) return false;   // the base part first
 *         return t.xdr(&sides, 1) && name.xdr(t) && t.xdr(&parent, parent, Shape_type);
 *     }
 *
 *     qnTranscriber* writer = qnTranscriber::getWriter(new qnStdioStream(path, qnStream::Write, 0644));
 *     qnRetain(writer);
 *     bool written = writer->writeObject(shape, shape);
 *     qnRelease(writer);                                   // closes the stream too, unless somebody else holds it
 *
 * All operations return true when they succeeded. After a false result the transcriber is to be discarded, or `reset`.
 * In the array forms `count` is elements. Pointers that are read are complete when the whole graph has been read.
 */
class MORVAQNDS_API qnTranscriber : public qnRCObj {
public:
    ~qnTranscriber() override;

    /** Forgets all objects transcribed so far, so that a new, independent graph can follow. */
    virtual void reset() = 0;

    // Values, in place.
    virtual bool xdr(char* values, unsigned count) = 0;
    virtual bool xdr(unsigned char* values, unsigned count) = 0;
    virtual bool xdr(short* values, unsigned count) = 0;
    virtual bool xdr(unsigned short* values, unsigned count) = 0;
    virtual bool xdr(long* values, unsigned count) = 0;
    virtual bool xdr(unsigned long* values, unsigned count) = 0;
    virtual bool xdr(float* values, unsigned count) = 0;
    virtual bool xdr(double* values, unsigned count) = 0;
    virtual bool xdr(qnStr* strings, unsigned count) = 0;

    // Pointers to heap arrays of `count` elements: null, shared or new. The program owns an array that was read.
    virtual bool xdr(char** array, unsigned count) = 0;
    virtual bool xdr(unsigned char** array, unsigned count) = 0;
    virtual bool xdr(short** array, unsigned count) = 0;
    virtual bool xdr(unsigned short** array, unsigned count) = 0;
    virtual bool xdr(long** array, unsigned count) = 0;
    virtual bool xdr(unsigned long** array, unsigned count) = 0;
    virtual bool xdr(float** array, unsigned count) = 0;
    virtual bool xdr(double** array, unsigned count) = 0;
    // Pointers to NUL-terminated strings.
    virtual bool xdr(char** string) = 0;
    virtual bool xdr(unsigned char** string) = 0;

    /**
     * An object pointer. `pointerVariable` is the address of the caller's pointer, `object` the same object seen as a
     * `qnXDRObj` (used when writing), `type` its declared type. The object is written once a graph; further pointers
     * refer to it.
     */
    virtual bool xdr(void* pointerVariable, qnXDRObj* object, qnTypeObj& type) = 0;

    /**
     * The base-class part `base` of the `object` being transcribed, through `baseType`'s function. Nothing happens when
     * both addresses are equal; a base part that was transcribed before (a shared virtual base) is only referred to.
     */
    virtual bool xdr(qnTypeObj& baseType, void* object, void* base) = 0;

    /** Reads one whole graph and returns its root, which the caller owns, or null. A writer ends the process. */
    virtual void* readObject(qnTypeObj& type) = 0;
    /** Writes one whole graph. A reader ends the process. */
    virtual bool writeObject(void* object, qnXDRObj* asXDRObj) = 0;

    /** The class's name; a writer's is what the stream header records. */
    virtual const char* className() const = 0;

    // The forms for int go through those for long: directly where both are equally wide, otherwise element by element.
    // Where they differ, a transcriber that supports arrays of ints by pointer overrides the last two (here: false).
    virtual bool xdr(int* values, unsigned count);
    virtual bool xdr(unsigned int* values, unsigned count);
    virtual bool xdr(int** array, unsigned count);
    virtual bool xdr(unsigned int** array, unsigned count);

    /**
     * A writer of the current default kind, over a stream to which it has written the header; null when the maker
     * gives none or the header cannot be written. It is born with count 0.
     */
    static qnTranscriber* getWriter(qnStream* stream);
    /**
     * The reader for what wrote `stream`, found by the header; null when no reader is registered or the header cannot
     * be read. A header that names an unknown writer ends the process. It is born with count 0.
     */
    static qnTranscriber* getReader(qnStream* stream);

    /** Registers the maker of readers for what `writerName` writes, replacing an earlier one. */
    static void addTranscriber(const char* writerName, qnReaderMaker maker);
    /** Sets the default writer's maker; null is ignored. */
    static void changeDefaultWriter(qnWriterMaker maker);
    static void resetToDefaultWriter();
    /** A new binary writer. */
    static qnTranscriber* makeDefaultWriter(qnStream* stream);

    static qnVoidPtrDict* readers;    ///< reader makers by writer name; null until `qnInitializeToolkit`
    static qnWriterMaker makeWriter;  ///< `makeDefaultWriter`, unless changed

    qnBool reading;    ///< whether values go from the stream to memory
    qnStream* stream;  ///< retained

protected:
    qnTranscriber() : reading(0), stream(nullptr), readSupport_(nullptr) {}

    /** Retains `newStream` and releases the stream that was set before. */
    void setStream(qnStream* newStream);

private:
    friend class qnReadSupport;

    qnTranscriber(const qnTranscriber&);
    qnTranscriber& operator=(const qnTranscriber&);

    qnReadSupport* readSupport_;  // what strings need of a reader that completes their text later; may be null
};

/** A new binary reader. */
MORVAQNDS_API qnTranscriber* makeBinaryReader(qnStream* stream, short shortMark, long longMark,
                                              const char* floatFormat);

/** Registers the binary reader; the construction step of `qnOG_Transcriber`. */
MORVAQNDS_API void cons();

/**
 * Appends bytes from `stream` to `buffer` up to and including a NUL. False as soon as a read fails; the buffer then
 * holds what was read, without a terminator.
 */
MORVAQNDS_API bool readNullTerminatedString(qnStream* stream, qnStackBuffer& buffer);

#endif
