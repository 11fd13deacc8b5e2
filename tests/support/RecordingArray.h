#ifndef MORVAQNDS_TESTS_RECORDINGARRAY_H
#define MORVAQNDS_TESTS_RECORDINGARRAY_H

#include <malloc.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "Array.h"

/**
 * An array of ints (or of wider elements that start with an int) that keeps a line for each call of its element
 * operations. Places in the block are shown as "+8" (bytes from its start), other addresses as "outside".
 *
 *     RecordingArray a({1, 2});
 *     a.append(&three);      // a.log: "expand", "getmem 24", "copy 4 outside to +8"
 */
class RecordingArray : public qnArray {
public:
    explicit RecordingArray(unsigned short bytesPerElement = sizeof(int), unsigned count = 0)
        : qnArray(bytesPerElement, count) {}
    RecordingArray(unsigned bytesPerElement, unsigned nbytes, void* block) : qnArray(bytesPerElement, nbytes, block) {}
    RecordingArray(const RecordingArray& other) : qnArray(other) {}
    explicit RecordingArray(qnTypeObj& type) : qnArray(type) {}
    /** An array that is full. */
    RecordingArray(std::initializer_list<int> values)
        : qnArray(static_cast<unsigned short>(sizeof(int)), static_cast<unsigned>(values.size())) {
        unsigned at = 0;
        for (int value : values) std::memcpy(data + sizeof(int) * at++, &value, sizeof value);
    }
    ~RecordingArray() override { destroy(); }

    const char* className() const override { return "RecordingArray"; }

    void getmem() override {
        log.push_back("getmem " + std::to_string(maxBytes));
        qnArray::getmem();
    }
    void expand() override {
        log.push_back("expand");
        qnArray::expand();
    }
    void createElements(void* at, unsigned nbytes) override {
        log.push_back("create " + std::to_string(nbytes) + " at " + place(at));
        std::memset(at, 0, nbytes);
    }
    void destroyElements(void* at, unsigned nbytes) override {
        log.push_back("destroy " + std::to_string(nbytes) + " at " + place(at));
    }
    void copyElements(const void* from, void* to, unsigned nbytes) const override {
        log.push_back("copy " + std::to_string(nbytes) + " " + place(from) + " to " + place(to));
        qnArray::copyElements(from, to, nbytes);
    }
    /** Compares the ints, whatever the machine's byte order. */
    int compareElements(const void* a, const void* b) const override {
        if (logComparisons) log.push_back("compare " + place(a) + " " + place(b));
        int x, y;
        std::memcpy(&x, a, sizeof x);
        std::memcpy(&y, b, sizeof y);
        return x < y ? -1 : x > y ? 1 : 0;
    }

    std::vector<int> values() const {
        std::vector<int> result(length());
        for (unsigned i = 0; i < length(); ++i) {
            std::memcpy(&result[i], data + std::size_t(i) * elementSize, sizeof(int));
        }
        return result;
    }
    void* at(unsigned index) const { return data + std::size_t(index) * elementSize; }

    mutable std::vector<std::string> log;
    bool logComparisons = true;

private:
    std::string place(const void* address) const {
        const char* p = static_cast<const char*>(address);
        if (data == nullptr || p < data || p > data + maxBytes) return "outside";
        return "+" + std::to_string(p - data);
    }
};

/**
 * Whether `block` was requested with `nbytes` bytes. Only a sanitizer's heap knows it exactly; elsewhere the answer is
 * whether the block is big enough.
 */
inline bool requestedWith(void* block, std::size_t nbytes) {
#ifdef __SANITIZE_ADDRESS__
    return malloc_usable_size(block) == nbytes;
#else
    return malloc_usable_size(block) >= nbytes;
#endif
}

#endif
