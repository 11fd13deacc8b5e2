// The binary reader's lower half: records are taken apart, and their data becomes values.
//
// A record's data passes through the buffer unless it is wanted whole where it goes. Records of more data than the
// buffer holds are not written by this library, but the format has them: they come through the buffer piece by piece.
#include <cstring>

#include "BinaryReader.h"
#include "Fatal.h"
#include "StackBuffer.h"
#include "Str.h"
#include "serial/BinaryReaderState.h"
#include "serial/Units.h"

namespace {

constexpr unsigned KindBits = 0x3F;
/** The bytes of an array for which a mere claim is believed; more is believed as it arrives. */
constexpr unsigned BelievedBytes = 1u << 16;

}  // namespace

// Records

bool qnBinaryReader::fill() { return state_->fill(nullptr, 0, nullptr); }

bool qnBinaryReader::State::fill(char* destination, unsigned wanted, unsigned* taken) {
    reader_.bufferCount = 0;
    if (!skipRest()) return false;
    unsigned dataBytes;
    if (!readHead(dataBytes) || !readPayload()) return false;
    recordRest_ = dataBytes;
    return dataBytes == 0 || more(destination, wanted, taken);
}

bool qnBinaryReader::State::more(char* destination, unsigned wanted, unsigned* taken) {
    if (recordRest_ <= wanted) {
        unsigned n = recordRest_;
        recordRest_ = 0;
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): a record with data never fits 0 bytes
        *taken = n;
        return reader_.stream->getBytes(destination, n);
    }
    unsigned n = recordRest_ < reader_.bufferSize ? recordRest_ : reader_.bufferSize;
    if (!reader_.stream->getBytes(reader_.buffer, n)) {
        recordRest_ = 0;
        return false;
    }
    recordRest_ -= n;
    reader_.bufferNext = reader_.buffer;
    reader_.bufferCount = n;
    return true;
}

bool qnBinaryReader::State::skipRest() {
    while (recordRest_ != 0) {
        if (!more(nullptr, 0, nullptr)) return false;
    }
    reader_.bufferCount = 0;
    return true;
}

bool qnBinaryReader::State::readHead(unsigned& dataBytes) {
    qnStream* stream = reader_.stream;
    char head;
    if (!stream->getBytes(&head, 1)) return false;
    reader_.pendingKind = static_cast<unsigned char>(head) & KindBits;
    reader_.bufferNext = reader_.buffer;
    dataBytes = 0;
    switch (static_cast<unsigned char>(head) >> 6) {
        case 0: return true;
        case 1: {
            char length;
            if (!stream->getBytes(&length, 1)) return false;
            dataBytes = static_cast<unsigned char>(length);
            return true;
        }
        case 2: {
            std::uint16_t length;
            if (!stream->getBytes(reinterpret_cast<char*>(&length), sizeof length)) return false;
            dataBytes = length;
            return true;
        }
        default: return getWord(dataBytes);
    }
}

bool qnBinaryReader::State::getWord(unsigned& word) {
    return reader_.stream->getBytes(reinterpret_cast<char*>(&word), sizeof word);
}

bool qnBinaryReader::State::getWords(unsigned& first, unsigned& second) {
    unsigned words[2];
    if (!reader_.stream->getBytes(reinterpret_cast<char*>(words), sizeof words)) return false;
    first = words[0];
    second = words[1];
    return true;
}

bool qnBinaryReader::State::readPayload() {
    unsigned ignored;
    switch (reader_.pendingKind) {
        case qnBRK_Data:
        case qnBRK_Null: return true;
        case qnBRK_Type: return readType();
        case qnBRK_NewArray:
        case qnBOT_Bytes:
        case qnBOT_Shorts:
        case qnBOT_Longs:
        case qnBOT_Floats:
        case qnBOT_Doubles: return getWords(reader_.pendingId, reader_.pendingByteCount);
        case qnBRK_OldArray:
        case qnBRK_NewObject:
        case qnBRK_OldObject:
        case qnBRK_NewBase:
        case qnBRK_OldBase:
            // Deliberate: one word more than the writer writes. Streams with these records come from writers that pad.
            return getWords(reader_.pendingId, ignored);
        case qnBRK_Instance:
            return getWords(reader_.pendingId, reader_.pendingTypeId) && getWord(reader_.pendingVersion);
        default: qnFatal("Whoops!");
    }
}

bool qnBinaryReader::State::readType() {
    qnStackBuffer name;
    if (!getWord(reader_.pendingTypeId) || !reader_.readName(name)) return false;
    qnTypeObj* type = qnTypeObj::findType(name.base());
    if (type == nullptr) qnFatal("unknown type %s", name.base());
    reader_.pendingTypeName = type->name;
    enter(reader_.pendingTypeId, type, Type, 0);
    return true;
}

bool qnBinaryReader::readName(qnStackBuffer& name) { return readNullTerminatedString(stream, name); }

// Data

bool qnBinaryReader::readBytes(char* destination, unsigned n) {
    while (n != 0) {
        unsigned taken = 0;
        if (bufferCount != 0) {
            taken = n < bufferCount ? n : bufferCount;
            std::memcpy(destination, bufferNext, taken);
            bufferNext += taken;
            bufferCount -= taken;
        } else if (state_->recordRest() != 0 ? !state_->more(destination, n, &taken)
                                             : !state_->fill(destination, n, &taken)) {
            return false;
        }
        destination += taken;
        n -= taken;
    }
    return true;
}

bool qnBinaryReader_shorts(qnBinaryReader& reader, char* destination, unsigned count) {
    return reader.readBytes(destination, count);
}

bool qnBinaryReader_longs(qnBinaryReader& reader, char* destination, unsigned count) {
    return reader.readBytes(destination, count);
}

bool qnBinaryReader_floats(qnBinaryReader& reader, char* destination, unsigned count) {
    return reader.readBytes(destination, count);
}

bool qnBinaryReader_doubles(qnBinaryReader& reader, char* destination, unsigned count) {
    return reader.readBytes(destination, count);
}

namespace {

void exchange(char& a, char& b) {
    char c = a;
    a = b;
    b = c;
}

/** Reads the bytes and rearranges every whole unit; a rest stays as it is. */
template <unsigned Size, class Rearrange>
bool readRearranged(qnBinaryReader& reader, char* destination, unsigned count, Rearrange rearrange) {
    if (!reader.readBytes(destination, count)) return false;
    for (unsigned rest = count; rest >= Size; rest -= Size, destination += Size) rearrange(destination);
    return true;
}

}  // namespace

bool qnBinaryReader_BS(qnBinaryReader& reader, char* destination, unsigned count) {
    return readRearranged<2>(reader, destination, count, [](char* unit) { exchange(unit[0], unit[1]); });
}

bool qnBinaryReader_longsSS(qnBinaryReader& reader, char* destination, unsigned count) {
    return readRearranged<4>(reader, destination, count, [](char* unit) {
        exchange(unit[0], unit[2]);
        exchange(unit[1], unit[3]);
    });
}

bool qnBinaryReader_longsBSSS(qnBinaryReader& reader, char* destination, unsigned count) {
    return readRearranged<4>(reader, destination, count, [](char* unit) {
        exchange(unit[0], unit[3]);
        exchange(unit[1], unit[2]);
    });
}

bool qnBinaryReader_floatsVAX(qnBinaryReader&, char*, unsigned) {
    qnFatal("qnBinaryReader_floatsVAX: not implemented");
}

bool qnBinaryReader_doublesVAX(qnBinaryReader&, char*, unsigned) {
    // Deliberate: the name of the form for floats.
    qnFatal("qnBinaryReader_floatsVAX: not implemented");
}

// Arrays

bool qnBinaryReader::State::readArray(void** result) {
    unsigned id = reader_.pendingId;
    unsigned nbytes = reader_.pendingByteCount;
    qnBinaryReaderFunc read = nullptr;
    switch (reader_.pendingKind) {
        case qnBOT_Shorts: read = reader_.shortsReader; break;
        case qnBOT_Longs: read = reader_.longsReader; break;
        case qnBOT_Floats: read = reader_.floatsReader; break;
        case qnBOT_Doubles: read = reader_.doublesReader; break;
        default: read = qnBinaryReader_shorts; break;
    }
    unsigned room = nbytes < BelievedBytes ? nbytes : BelievedBytes;
    // An array of nothing has an address too, so that it counts as read.
    char* array = static_cast<char*>(heap::allocate(room == 0 ? 1 : room, "qnBinaryReader::readObject"));
    for (unsigned arrived = 0; arrived < nbytes;) {
        if (arrived == room) {
            room = nbytes - room < room ? nbytes : 2 * room;
            array = static_cast<char*>(heap::reallocate(array, room, "qnBinaryReader::readObject"));
        }
        if (!read(reader_, array + arrived, room - arrived)) {
            std::free(array);
            return false;
        }
        arrived = room;
    }
    Info& info = enter(id, array, Array, nbytes);
    if (info.wanted >= Long) {
        array = static_cast<char*>(widen(array, nbytes, info.wanted));
        replace(id, array);
    }
    info.width = info.wanted;
    info.wanted = Unclaimed;
    *result = array;
    return true;
}

qnBinaryReader::State::Width qnBinaryReader::State::widthOf(unsigned char use) {
    if (!units::WideLongs) return Narrow;
    return use == LongArrayUse ? Long : use == UnsignedLongArrayUse ? UnsignedLong : Narrow;
}

bool qnBinaryReader::State::agree(Width a, Width b) {
    return a == Unclaimed || b == Unclaimed || (a >= Long) == (b >= Long);
}

void* qnBinaryReader::State::widen(void* array, unsigned byteLength, Width width) {
    std::size_t count = byteLength / 4;
    if (count == 0) return array;
    void* wide = heap::reallocate(array, count * sizeof(long), "qnBinaryReader::readObject");
    if (width == Long) {
        units::spreadLongs(static_cast<long*>(wide), count);
    } else {
        units::spreadLongs(static_cast<unsigned long*>(wide), count);
    }
    return wide;
}

// Values

namespace {

template <class Value>
bool readValues(qnBinaryReader& reader, qnBinaryReaderFunc read, Value* values, unsigned count) {
    return units::forEachPortion(reinterpret_cast<char*>(values), count, sizeof(Value),
                                 [&](char* bytes, unsigned n) { return read(reader, bytes, n); });
}

/** Longs arrive packed at the start of their memory and are spread from the last to the first. */
template <class Long>
bool readLongs(qnBinaryReader& reader, Long* values, unsigned count) {
    char* packed = reinterpret_cast<char*>(values);
    if (!units::forEachPortion(packed, count, 4,
                               [&](char* bytes, unsigned n) { return reader.longsReader(reader, bytes, n); })) {
        return false;
    }
    units::spreadLongs<Long>(values, count);
    return true;
}

}  // namespace

bool qnBinaryReader::xdr(char* values, unsigned count) { return readBytes(values, count); }
bool qnBinaryReader::xdr(unsigned char* values, unsigned count) {
    return readBytes(reinterpret_cast<char*>(values), count);
}
bool qnBinaryReader::xdr(short* values, unsigned count) { return readValues(*this, shortsReader, values, count); }
bool qnBinaryReader::xdr(unsigned short* values, unsigned count) {
    return readValues(*this, shortsReader, values, count);
}
bool qnBinaryReader::xdr(int* values, unsigned count) { return readValues(*this, longsReader, values, count); }
bool qnBinaryReader::xdr(unsigned int* values, unsigned count) { return readValues(*this, longsReader, values, count); }
bool qnBinaryReader::xdr(long* values, unsigned count) { return readLongs(*this, values, count); }
bool qnBinaryReader::xdr(unsigned long* values, unsigned count) { return readLongs(*this, values, count); }
bool qnBinaryReader::xdr(float* values, unsigned count) { return readValues(*this, floatsReader, values, count); }
bool qnBinaryReader::xdr(double* values, unsigned count) { return readValues(*this, doublesReader, values, count); }

bool qnBinaryReader::xdr(qnStr* strings, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (!strings[i].xdr(*this)) return false;
    }
    return true;
}

// Pointers. An array must have the bytes that its variable is read for.

bool qnBinaryReader::State::readElements(void* variable, Use use, unsigned count, unsigned elementBytes) {
    std::uint64_t nbytes = std::uint64_t(count) * elementBytes;
    // The count may well come from the stream.
    if (nbytes > heap::MaxBytes) qnFatal("format error");
    return readArrayPointer(variable, use, static_cast<unsigned>(nbytes));
}

bool qnBinaryReader::xdr(char** array, unsigned count) { return readPrimPointer(array, count); }
bool qnBinaryReader::xdr(unsigned char** array, unsigned count) { return readPrimPointer(array, count); }
bool qnBinaryReader::xdr(short** array, unsigned count) {
    return state_->readElements(array, State::ArrayUse, count, 2);
}
bool qnBinaryReader::xdr(unsigned short** array, unsigned count) {
    return state_->readElements(array, State::ArrayUse, count, 2);
}
bool qnBinaryReader::xdr(int** array, unsigned count) { return state_->readElements(array, State::ArrayUse, count, 4); }
bool qnBinaryReader::xdr(unsigned int** array, unsigned count) {
    return state_->readElements(array, State::ArrayUse, count, 4);
}
bool qnBinaryReader::xdr(long** array, unsigned count) {
    return state_->readElements(array, State::LongArrayUse, count, 4);
}
bool qnBinaryReader::xdr(unsigned long** array, unsigned count) {
    return state_->readElements(array, State::UnsignedLongArrayUse, count, 4);
}
bool qnBinaryReader::xdr(float** array, unsigned count) {
    return state_->readElements(array, State::ArrayUse, count, 4);
}
bool qnBinaryReader::xdr(double** array, unsigned count) {
    return state_->readElements(array, State::ArrayUse, count, 8);
}
bool qnBinaryReader::xdr(char** string) { return state_->readArrayPointer(string, State::TerminatedUse, 0); }
bool qnBinaryReader::xdr(unsigned char** string) { return state_->readArrayPointer(string, State::TerminatedUse, 0); }
