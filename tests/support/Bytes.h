#ifndef MORVAQNDS_TESTS_BYTES_H
#define MORVAQNDS_TESTS_BYTES_H

#include <cstdint>
#include <cstring>
#include <string>

/**
 * A list of bytes written by hand, field by field. Numbers are in the machine's byte order, as in a stream that was
 * written on it.
 *
 *     Bytes record = Bytes().u8(0x4A).u8(4).u32(1).u32(2).u32(1).u32(77);
 */
class Bytes {
public:
    Bytes& u8(unsigned value) { return put(static_cast<std::uint8_t>(value)); }
    Bytes& u16(unsigned value) { return put(static_cast<std::uint16_t>(value)); }
    Bytes& u32(unsigned long value) { return put(static_cast<std::uint32_t>(value)); }
    Bytes& f32(float value) { return put(value); }
    Bytes& f64(double value) { return put(value); }
    /** The text and its NUL. */
    Bytes& name(const char* text) {
        bytes_.append(text, std::strlen(text) + 1);
        return *this;
    }
    Bytes& raw(const std::string& bytes) {
        bytes_ += bytes;
        return *this;
    }
    Bytes& fill(std::size_t count, char c) {
        bytes_.append(count, c);
        return *this;
    }
    Bytes& operator+=(const Bytes& other) { return raw(other.bytes_); }
    friend Bytes operator+(Bytes a, const Bytes& b) { return a += b; }

    /** The header of a stream of this machine. */
    static Bytes header() { return Bytes().name("qnBinaryWriter").name("ieee").u16(0x1122).u32(0x33445566); }
    /** A type record: kind 2, the id, the name. */
    static Bytes type(unsigned id, const char* typeName) { return Bytes().u8(0x02).u32(id).name(typeName); }

    const std::string& str() const { return bytes_; }

private:
    template <class Number>
    Bytes& put(Number value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        bytes_.append(bytes, sizeof bytes);
        return *this;
    }

    std::string bytes_;
};

#endif
