#ifndef MORVAQNDS_TESTS_MEMORYSTREAM_H
#define MORVAQNDS_TESTS_MEMORYSTREAM_H

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "Stream.h"

/**
 * A stream in memory: reads from `input`, writes to `output`, and keeps the size of every put. It can be told to fail
 * from a certain put on.
 */
class MemoryStream : public qnStream {
public:
    explicit MemoryStream(const std::string& bytes = std::string()) : input(bytes) {}
    ~MemoryStream() override {
        if (destroyed != nullptr) *destroyed = true;
    }

    bool hasError() override { return false; }
    bool atEOF() override { return position == input.size(); }
    bool isReading() override { return true; }
    bool isWriting() override { return true; }
    qnStreamType getType() override { return ReadWrite; }

    bool getBytes(char* buffer, unsigned count) override { return get(buffer, count); }
    bool getShorts(short* buffer, unsigned count) override { return get(buffer, 2 * std::size_t(count)); }
    bool getInts(int* buffer, unsigned count) override { return get(buffer, 4 * std::size_t(count)); }
    bool getLongs(long* buffer, unsigned count) override {
        for (unsigned i = 0; i < count; ++i) {
            std::int32_t value;
            if (!get(&value, sizeof value)) return false;
            buffer[i] = value;
        }
        return true;
    }
    bool getFloats(float* buffer, unsigned count) override { return get(buffer, 4 * std::size_t(count)); }
    bool getDoubles(double* buffer, unsigned count) override { return get(buffer, 8 * std::size_t(count)); }

    bool putBytes(const char* buffer, unsigned count) override { return put(buffer, count); }
    bool putShorts(const short* buffer, unsigned count) override { return put(buffer, 2 * std::size_t(count)); }
    bool putInts(const int* buffer, unsigned count) override { return put(buffer, 4 * std::size_t(count)); }
    bool putLongs(const long* buffer, unsigned count) override {
        for (unsigned i = 0; i < count; ++i) {
            std::int32_t value = static_cast<std::int32_t>(buffer[i]);
            if (!put(&value, sizeof value)) return false;
        }
        return true;
    }
    bool putFloats(const float* buffer, unsigned count) override { return put(buffer, 4 * std::size_t(count)); }
    bool putDoubles(const double* buffer, unsigned count) override { return put(buffer, 8 * std::size_t(count)); }

    std::string input;
    std::size_t position = 0;
    std::string output;
    std::vector<std::size_t> puts;
    unsigned failingPut = UINT_MAX;  // its number, from 0
    unsigned putsTried = 0;
    bool* destroyed = nullptr;

private:
    bool get(void* buffer, std::size_t n) {
        if (input.size() - position < n) {
            position = input.size();
            return false;
        }
        std::memcpy(buffer, input.data() + position, n);
        position += n;
        return true;
    }
    bool put(const void* buffer, std::size_t n) {
        if (putsTried++ >= failingPut) return false;
        output.append(static_cast<const char*>(buffer), n);
        puts.push_back(n);
        return true;
    }
};

/** Bytes as text, so that a difference can be read: "02 01 00 ...". */
inline std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (char c : bytes) {
        unsigned char b = static_cast<unsigned char>(c);
        text += digits[b >> 4];
        text += digits[b & 15];
        text += ' ';
    }
    return text;
}

#endif
