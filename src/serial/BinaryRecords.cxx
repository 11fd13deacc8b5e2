// The binary writer's lower half: values become the data of records, and records become bytes.
#include <cstring>

#include "BinaryWriter.h"
#include "Checked.h"
#include "Str.h"
#include "serial/Units.h"

namespace {

// The size class of a record's data length, in the two high bits of the head byte.
constexpr unsigned char OneByteLength = 0x40;
constexpr unsigned char TwoByteLength = 0x80;

/** The head, length and payload of one record, in the machine's byte order. */
class RecordHeader {
public:
    RecordHeader(unsigned kind, unsigned dataBytes) : size_(1) {
        bytes_[0] = static_cast<char>(kind);
        if (dataBytes == 0) return;
        if (dataBytes <= 0xFF) {
            bytes_[0] = static_cast<char>(kind | OneByteLength);
            bytes_[size_++] = static_cast<char>(dataBytes);
        } else {
            bytes_[0] = static_cast<char>(kind | TwoByteLength);
            std::uint16_t length = static_cast<std::uint16_t>(dataBytes);
            std::memcpy(bytes_ + size_, &length, sizeof length);
            size_ += static_cast<unsigned>(sizeof length);
        }
    }

    RecordHeader& add(std::uint32_t word) {
        std::memcpy(bytes_ + size_, &word, sizeof word);
        size_ += static_cast<unsigned>(sizeof word);
        return *this;
    }

    const char* bytes() const { return bytes_; }
    unsigned size() const { return size_; }

private:
    static constexpr unsigned MaxSize = 1 + 2 + 3 * 4;

    char bytes_[MaxSize];
    unsigned size_;
};

void addPayload(RecordHeader& header, const qnBinaryTranscriber& record) {
    switch (record.pendingKind) {
        case qnBRK_Data:
        case qnBRK_Null: break;
        case qnBRK_Type: header.add(record.pendingTypeId); break;
        case qnBRK_NewArray:
        case qnBOT_Bytes:
        case qnBOT_Shorts:
        case qnBOT_Longs:
        case qnBOT_Floats:
        case qnBOT_Doubles: header.add(record.pendingId).add(record.pendingByteCount); break;
        case qnBRK_Instance: header.add(record.pendingId).add(record.pendingTypeId).add(record.pendingVersion); break;
        case qnBRK_OldArray:
        case qnBRK_NewObject:
        case qnBRK_OldObject:
        case qnBRK_NewBase:
        case qnBRK_OldBase: header.add(record.pendingId); break;
        default: qnFatal("Whoops!");
    }
}

}  // namespace

bool qnBinaryWriter::flush() {
    if (pendingKind == qnBRK_Data && bufferCount == 0) return true;
    return putRecord(buffer, bufferCount);
}

/** Writes the pending record with `n` data bytes, at most 512, and starts a plain one. */
bool qnBinaryWriter::putRecord(const char* data, unsigned n) {
    RecordHeader header(pendingKind, n);
    addPayload(header, *this);
    bool isType = pendingKind == qnBRK_Type;
    bufferNext = buffer;
    bufferCount = 0;
    pendingKind = qnBRK_Data;
    return stream->putBytes(header.bytes(), header.size()) &&
           (!isType || stream->putBytes(pendingTypeName, static_cast<unsigned>(std::strlen(pendingTypeName)) + 1)) &&
           (n == 0 || stream->putBytes(data, n));
}

bool qnBinaryWriter::writeBytes(const char* data, unsigned n) {
    while (n != 0) {
        if (bufferCount == bufferSize && !flush()) return false;
        unsigned part = bufferSize - bufferCount;
        if (n < part) part = n;
        if (part == bufferSize) {
            // A whole record's worth, and nothing collected: it need not pass through the buffer.
            if (!putRecord(data, part)) return false;
        } else {
            std::memcpy(bufferNext, data, part);
            bufferNext += part;
            bufferCount += part;
        }
        data += part;
        n -= part;
    }
    return true;
}

template <class Long>
bool qnBinaryWriter::writeLongs(const Long* values, unsigned count) {
    typedef typename units::InStream<Long>::Type Word;
    constexpr unsigned Portion = BufferSize / sizeof(Word);
    for (unsigned i = 0; units::WideLongs && i < count; ++i) {
        if (!units::fitsStream(values[i])) return false;
    }
    Word words[Portion];
    while (count != 0) {
        unsigned n = count < Portion ? count : Portion;
        for (unsigned i = 0; i < n; ++i) words[i] = static_cast<Word>(values[i]);
        if (!writeBytes(reinterpret_cast<const char*>(words), n * static_cast<unsigned>(sizeof(Word)))) return false;
        values += n;
        count -= n;
    }
    return true;
}

template bool qnBinaryWriter::writeLongs(const long*, unsigned);
template bool qnBinaryWriter::writeLongs(const unsigned long*, unsigned);

namespace {

template <class Value>
bool writeValues(qnBinaryWriter& writer, const Value* values, unsigned count) {
    return units::forEachPortion(reinterpret_cast<const char*>(values), count, sizeof(Value),
                                 [&writer](const char* bytes, unsigned n) { return writer.writeBytes(bytes, n); });
}

}  // namespace

bool qnBinaryWriter::xdr(char* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(unsigned char* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(short* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(unsigned short* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(int* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(unsigned int* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(long* values, unsigned count) { return writeLongs(values, count); }
bool qnBinaryWriter::xdr(unsigned long* values, unsigned count) { return writeLongs(values, count); }
bool qnBinaryWriter::xdr(float* values, unsigned count) { return writeValues(*this, values, count); }
bool qnBinaryWriter::xdr(double* values, unsigned count) { return writeValues(*this, values, count); }

bool qnBinaryWriter::xdr(qnStr* strings, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (!strings[i].xdr(*this)) return false;
    }
    return true;
}

bool qnBinaryWriter::xdr(char** array, unsigned count) {
    return writePointer(*array, count, 1, qnBOT_Bytes, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(unsigned char** array, unsigned count) {
    return writePointer(*array, count, 1, qnBOT_Bytes, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(short** array, unsigned count) {
    return writePointer(*array, count, 2, qnBOT_Shorts, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(unsigned short** array, unsigned count) {
    return writePointer(*array, count, 2, qnBOT_Shorts, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(int** array, unsigned count) {
    return writePointer(*array, count, 4, qnBOT_Longs, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(unsigned int** array, unsigned count) {
    return writePointer(*array, count, 4, qnBOT_Longs, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(long** array, unsigned count) {
    return writePointer(*array, count, 4, qnBOT_Longs, qnBinaryWriterItem::Longs);
}
bool qnBinaryWriter::xdr(unsigned long** array, unsigned count) {
    return writePointer(*array, count, 4, qnBOT_Longs, qnBinaryWriterItem::UnsignedLongs);
}
bool qnBinaryWriter::xdr(float** array, unsigned count) {
    return writePointer(*array, count, 4, qnBOT_Floats, qnBinaryWriterItem::Plain);
}
bool qnBinaryWriter::xdr(double** array, unsigned count) {
    return writePointer(*array, count, 8, qnBOT_Doubles, qnBinaryWriterItem::Plain);
}

bool qnBinaryWriter::xdr(char** string) {
    MORVAQNDS_REQUIRE(*string != nullptr, "qnBinaryWriter::xdr: the string at %p is null", static_cast<void*>(string));
    // The length of no text is not looked for: it is a null pointer like any other.
    unsigned length = *string == nullptr ? 0 : static_cast<unsigned>(std::strlen(*string)) + 1;
    return writePointer(*string, length, 1, qnBOT_Bytes, qnBinaryWriterItem::Plain);
}

bool qnBinaryWriter::xdr(unsigned char** string) { return xdr(reinterpret_cast<char**>(string)); }
