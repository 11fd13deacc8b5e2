#include "Transcriber.h"

#include <climits>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Fatal.h"
#include "StackBuffer.h"
#include "Str.h"
#include "VoidPtrDict.h"
#include "core/Heap.h"

qnVoidPtrDict* qnTranscriber::readers = nullptr;
qnWriterMaker qnTranscriber::makeWriter = qnTranscriber::makeDefaultWriter;

namespace {

// What follows the writer's name in every stream's header.
constexpr char FloatFormat[] = "ieee";
constexpr short ShortMark = 0x1122;
constexpr long LongMark = 0x33445566;

bool writeHeader(qnStream* stream, const char* writerName) {
    return stream->putBytes(writerName, static_cast<unsigned>(std::strlen(writerName)) + 1) &&
           stream->putBytes(FloatFormat, sizeof FloatFormat) && stream->putShorts(&ShortMark, 1) &&
           stream->putLongs(&LongMark, 1);
}

/** Transcribes ints through the operation for longs of `Long`. */
template <class Long, class Int>
bool xdrThroughLongs(qnTranscriber& transcriber, Int* values, unsigned count) {
    if (sizeof(Int) == sizeof(Long)) return transcriber.xdr(reinterpret_cast<Long*>(values), count);
    for (unsigned i = 0; i < count; ++i) {
        Long value = static_cast<Long>(values[i]);
        if (!transcriber.xdr(&value, 1)) return false;
        values[i] = static_cast<Int>(value);
    }
    return true;
}

}  // namespace

qnTranscriber::~qnTranscriber() { qnRelease(stream); }

void qnTranscriber::setStream(qnStream* newStream) {
    if (stream == newStream) return;
    qnRetain(newStream);
    qnStream* old = stream;
    stream = newStream;
    qnRelease(old);
}

bool qnTranscriber::xdr(int* values, unsigned count) { return xdrThroughLongs<long>(*this, values, count); }

bool qnTranscriber::xdr(unsigned int* values, unsigned count) {
    return xdrThroughLongs<unsigned long>(*this, values, count);
}

bool qnTranscriber::xdr(int** array, unsigned count) {
    return sizeof(int) == sizeof(long) && xdr(reinterpret_cast<long**>(array), count);
}

bool qnTranscriber::xdr(unsigned int** array, unsigned count) {
    return sizeof(int) == sizeof(long) && xdr(reinterpret_cast<unsigned long**>(array), count);
}

qnTranscriber* qnTranscriber::getWriter(qnStream* stream) {
    qnTranscriber* writer = makeWriter(stream);
    if (writer == nullptr) return nullptr;
    if (writeHeader(stream, writer->className())) return writer;
    delete writer;
    return nullptr;
}

qnTranscriber* qnTranscriber::getReader(qnStream* stream) {
    if (readers == nullptr) return nullptr;
    qnStackBuffer writerName;
    qnStackBuffer floatFormat;
    short shortMark;
    long longMark;
    if (!readNullTerminatedString(stream, writerName) || !readNullTerminatedString(stream, floatFormat) ||
        !stream->getShorts(&shortMark, 1) || !stream->getLongs(&longMark, 1)) {
        return nullptr;
    }
    qnStr key(writerName.base());
    void* slot = readers->find(&key, nullptr);
    if (slot == nullptr) qnFatal("Unknown transcriber type \"%s\"", writerName.base());
    qnReaderMaker maker;
    std::memcpy(&maker, slot, sizeof maker);
    return maker(stream, shortMark, longMark, floatFormat.base());
}

void qnTranscriber::addTranscriber(const char* writerName, qnReaderMaker maker) {
    static_assert(sizeof maker == sizeof(void*), "function pointers are stored as pointer words");
    if (readers == nullptr) readers = heap::create<qnVoidPtrDict>("qnTranscriber::addTranscriber", 0u);
    qnStr key(writerName);
    std::memcpy(readers->findCreate(&key), &maker, sizeof maker);
}

void qnTranscriber::changeDefaultWriter(qnWriterMaker maker) {
    if (maker != nullptr) makeWriter = maker;
}

void qnTranscriber::resetToDefaultWriter() { makeWriter = makeDefaultWriter; }

qnTranscriber* qnTranscriber::makeDefaultWriter(qnStream* stream) {
    return heap::create<qnBinaryWriter>("qnTranscriber::getWriter", stream);
}

qnTranscriber* makeBinaryReader(qnStream* stream, short shortMark, long longMark, const char* floatFormat) {
    return heap::create<qnBinaryReader>("qnTranscriber::getReader", stream, shortMark, longMark, floatFormat);
}

void cons() { qnTranscriber::addTranscriber("qnBinaryWriter", makeBinaryReader); }

bool readNullTerminatedString(qnStream* stream, qnStackBuffer& buffer) {
    char c;
    do {
        if (!stream->getBytes(&c, 1)) return false;
        buffer.addc(c);
    } while (c != 0);
    return true;
}
