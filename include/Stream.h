#ifndef MORVAQNDS_STREAM_H
#define MORVAQNDS_STREAM_H

#include <cstdio>

#include "Export.h"
#include "RCObj.h"
#include "Types.h"

/**
 * The byte channel under a transcriber: typed reads and writes of arrays, in the machine's byte order.
 *
 *     qnStream* stream = new qnStdioStream("numbers.bin", qnStream::Read, 0);
 *     int numbers[4];
 *     if (stream->hasError() || !stream->getInts(numbers, 4)) return false;
 *
 * Counts are elements. Every get and put returns true only if all elements were transferred. In the stream a short
 * takes 2 bytes, an int and a long 4, a float 4 and a double 8; a machine with wider longs extends them when reading,
 * and refuses to write one that does not fit (false, and no element of the run is written).
 *
 * Streams are reference counted: a transcriber retains its stream, and the last holder's release closes it.
 */
class MORVAQNDS_API qnStream : public qnRCObj {
public:
    enum qnStreamType { Read = 0, Write = 1, ReadWrite = 2 };

    ~qnStream() override;

    virtual bool hasError() = 0;
    virtual bool atEOF() = 0;
    virtual bool isReading() = 0;
    virtual bool isWriting() = 0;
    virtual qnStreamType getType() = 0;

    virtual bool getBytes(char* buffer, unsigned count) = 0;
    virtual bool getShorts(short* buffer, unsigned count) = 0;
    virtual bool getInts(int* buffer, unsigned count) = 0;
    virtual bool getLongs(long* buffer, unsigned count) = 0;
    virtual bool getFloats(float* buffer, unsigned count) = 0;
    virtual bool getDoubles(double* buffer, unsigned count) = 0;

    virtual bool putBytes(const char* buffer, unsigned count) = 0;
    virtual bool putShorts(const short* buffer, unsigned count) = 0;
    virtual bool putInts(const int* buffer, unsigned count) = 0;
    virtual bool putLongs(const long* buffer, unsigned count) = 0;
    virtual bool putFloats(const float* buffer, unsigned count) = 0;
    virtual bool putDoubles(const double* buffer, unsigned count) = 0;
};

/** The `fdopen` mode of a direction: "r", "w" or "r+"; null for any other value. */
MORVAQNDS_API const char* stdioType(qnStream::qnStreamType type);

/**
 * A stream over a standard I/O file, which it owns and closes. It is open from construction to destruction.
 *
 *     qnStdioStream out("state.qn", qnStream::Write, 0644);
 *     if (out.hasError()) return complain();
 *     ... out.putBytes(...) ...
 *     bool whole = std::fflush(out.file) == 0;     // the destructor cannot tell
 *
 * A stream that could not be opened answers every get and put with false. A short read or write leaves it usable.
 */
class MORVAQNDS_API qnStdioStream : public qnStream {
public:
    /**
     * Opens the file at `path`; a missing one is created with `permissions` unless the direction is `Read`.
     *
     * Deliberate: an existing file that is opened for writing is not emptied; bytes beyond the end of what is written
     * stay in it, so that a part of a file can be rewritten in place.
     */
    qnStdioStream(const char* path, qnStreamType type, unsigned permissions);
    /** Adopts a descriptor. */
    qnStdioStream(int fd, qnStreamType type);
    /** Adopts an open file; null is an error. */
    qnStdioStream(std::FILE* file, qnStreamType type);
    /** Flushes and closes the file. */
    ~qnStdioStream() override;

    /** Whether the stream could not be opened. */
    bool hasError() override;
    /**
     * False.
     *
     * Deliberate: nothing sets the flag after construction; the end of input shows as a get that fails.
     */
    bool atEOF() override;
    bool isReading() override;
    bool isWriting() override;
    qnStreamType getType() override;

    bool getBytes(char* buffer, unsigned count) override;
    bool getShorts(short* buffer, unsigned count) override;
    bool getInts(int* buffer, unsigned count) override;
    bool getLongs(long* buffer, unsigned count) override;
    bool getFloats(float* buffer, unsigned count) override;
    bool getDoubles(double* buffer, unsigned count) override;

    bool putBytes(const char* buffer, unsigned count) override;
    bool putShorts(const short* buffer, unsigned count) override;
    bool putInts(const int* buffer, unsigned count) override;
    bool putLongs(const long* buffer, unsigned count) override;
    bool putFloats(const float* buffer, unsigned count) override;
    bool putDoubles(const double* buffer, unsigned count) override;

    std::FILE* file;
    qnStreamType type;
    qnBool error;
    qnBool eof;

private:
    qnStdioStream(const qnStdioStream&);
    qnStdioStream& operator=(const qnStdioStream&);

    bool getBlock(void* buffer, unsigned size, unsigned count);
    bool putBlock(const void* buffer, unsigned size, unsigned count);
};

#endif
