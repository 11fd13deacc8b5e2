#include "Array.h"

#include <cstring>

#include "Checked.h"
#include "Transcriber.h"
#include "core/Heap.h"

namespace {

constexpr unsigned GrowthElements = 4;

}  // namespace

// Construction

qnArray::qnArray(unsigned short bytesPerElement, unsigned count) : data(nullptr), elementSize(bytesPerElement) {
    maxBytes = usedBytes = heap::checkedSize(std::uint64_t(bytesPerElement) * count, "qnArray::qnArray");
    if (maxBytes != 0) data = static_cast<char*>(heap::allocate(maxBytes, "qnArray::qnArray"));
}

qnArray::qnArray(const qnArray& other)
    : qnXDRObj(other),
      data(nullptr),
      maxBytes(other.usedBytes),
      usedBytes(other.usedBytes),
      elementSize(other.elementSize) {
    // The object is still a plain array: a subclass makes its deep copies itself.
    qnArray::getmem();
    if (usedBytes != 0) qnArray::copyElements(other.data, data, usedBytes);
}

qnArray::qnArray(unsigned bytesPerElement, unsigned nbytes, void* block)
    : data(static_cast<char*>(block)),
      maxBytes(nbytes),
      usedBytes(nbytes),
      elementSize(static_cast<unsigned short>(bytesPerElement)) {}

qnArray::qnArray(qnTypeObj& type) : qnXDRObj(type), data(nullptr), maxBytes(0), usedBytes(0), elementSize(0) {}

qnArray::~qnArray() { std::free(data); }

void qnArray::destroy() {
    if (usedBytes != 0) destroyElements(data, usedBytes);
}

void qnArray::copyFrom(const qnArray& other) {
    elementSize = other.elementSize;
    maxBytes = other.maxBytes;
    usedBytes = other.usedBytes;
    data = static_cast<char*>(other.raw_copy());
}

// Element operations

void qnArray::createElements(void*, unsigned) {}

void qnArray::destroyElements(void*, unsigned) {}

void qnArray::copyElements(const void* from, void* to, unsigned nbytes) const {
    if (nbytes != 0) std::memmove(to, from, nbytes);
}

int qnArray::compareElements(const void* a, const void* b) const { return std::memcmp(a, b, elementSize); }

// The block

void qnArray::getmem() {
    if (maxBytes == 0) {
        std::free(data);
        data = nullptr;
    } else if (data != nullptr) {
        data = static_cast<char*>(heap::reallocate(data, maxBytes, "qnArray::getmem"));
    } else {
        data = static_cast<char*>(heap::allocate(maxBytes, "qnArray::getmem"));
    }
}

void qnArray::expand() {
    // NOLINTNEXTLINE(bugprone-implicit-widening-of-multiplication-result): at most 2^18
    maxBytes = heap::checkedSize(std::uint64_t(maxBytes) + GrowthElements * elementSize, "qnArray::expand");
    getmem();
}

void qnArray::growTo(unsigned long long nbytes, const char* operation) {
    maxBytes = heap::checkedSize(nbytes, operation);
    getmem();
}

void qnArray::backCapacity() {
    if (maxBytes != 0 && heap::usableSize(data) < maxBytes) getmem();
}

void qnArray::setMaxLength(unsigned count) {
    unsigned nbytes = heap::checkedSize(std::uint64_t(elementSize) * count, "qnArray::setMaxLength");
    if (nbytes < usedBytes) nbytes = usedBytes;
    if (nbytes == maxBytes) return;
    maxBytes = nbytes;
    getmem();
}

void qnArray::resize(unsigned count) {
    unsigned newBytes = heap::checkedSize(std::uint64_t(elementSize) * count, "qnArray::resize");
    maxBytes = newBytes;
    if (newBytes > usedBytes) {
        getmem();
        createElements(data + usedBytes, newBytes - usedBytes);
    } else if (newBytes < usedBytes) {
        destroyElements(data + newBytes, usedBytes - newBytes);
        getmem();
    }
    usedBytes = newBytes;
}

// Appending and inserting. A source inside this array's block is kept as an offset while the block may move.

namespace {

/** A run of bytes to copy into an array, which may lie in the array's own block. */
class Source {
public:
    Source(const qnArray& array, const void* bytes)
        : array_(array),
          bytes_(bytes),
          own_(heap::contains(array.data, array.usedBytes, bytes)),
          offset_(own_ ? static_cast<std::size_t>(static_cast<const char*>(bytes) - array.data) : 0) {}

    /** Where the run is now, after the block may have moved. */
    const void* where() const { return own_ ? array_.data + offset_ : bytes_; }

private:
    const qnArray& array_;
    const void* bytes_;
    bool own_;
    std::size_t offset_;
};

}  // namespace

void qnArray::append(const void* element) {
    Source source(*this, element);
    if (usedBytes == maxBytes) {
        expand();
    } else {
        backCapacity();
    }
    copyElements(source.where(), data + usedBytes, elementSize);
    usedBytes += elementSize;
}

void qnArray::append(const qnArray& other) {
    unsigned added = other.usedBytes;
    if (added == 0) return;
    std::uint64_t sum = std::uint64_t(usedBytes) + added;
    if (sum > maxBytes) {
        growTo(sum, "qnArray::append");
    } else {
        backCapacity();
    }
    copyElements(other.data, data + usedBytes, added);
    usedBytes += added;
}

void qnArray::insert(const void* element, unsigned index) {
    MORVAQNDS_REQUIRE(index <= length(), "qnArray::insert: index %u past length %u", index, length());
    Source source(*this, element);
    std::size_t offset = std::size_t(index) * elementSize;
    if (maxBytes <= usedBytes) {
        growTo(std::uint64_t(usedBytes) + elementSize, "qnArray::insert");
    } else {
        backCapacity();
    }
    if (offset < usedBytes) std::memmove(data + offset + elementSize, data + offset, usedBytes - offset);
    copyElements(source.where(), data + offset, elementSize);
    usedBytes += elementSize;
}

void qnArray::insert(const qnArray& other, unsigned index) {
    MORVAQNDS_REQUIRE(index <= length(), "qnArray::insert: index %u past length %u", index, length());
    if (other.length() == 0) return;
    unsigned added = other.usedBytes;
    std::size_t offset = std::size_t(index) * elementSize;
    std::uint64_t sum = std::uint64_t(usedBytes) + added;
    if (maxBytes < sum) {
        growTo(sum, "qnArray::insert");
    } else {
        backCapacity();
    }
    if (offset < usedBytes) std::memmove(data + offset + added, data + offset, usedBytes - offset);
    copyElements(other.data, data + offset, added);
    usedBytes += added;
}

// Removing

void qnArray::closeGap(unsigned start, unsigned count) {
    std::size_t first = std::size_t(elementSize) * start;
    std::size_t end = first + std::size_t(elementSize) * count;
    if (end < usedBytes) std::memmove(data + first, data + end, usedBytes - end);
    usedBytes -= static_cast<unsigned>(end - first);
}

void qnArray::remove(unsigned start, unsigned count) {
    MORVAQNDS_REQUIRE(start <= length() && count <= length() - start,
                      "qnArray::remove: %u elements from %u exceed length %u", count, start, length());
    if (count == 0) return;
    destroyElements(data + std::size_t(start) * elementSize, count * elementSize);
    closeGap(start, count);
}

void* qnArray::raw_cut(unsigned start, unsigned count) {
    MORVAQNDS_REQUIRE(start <= length() && count <= length() - start,
                      "qnArray::raw_cut: %u elements from %u exceed length %u", count, start, length());
    if (count == 0) return nullptr;
    std::size_t nbytes = std::size_t(elementSize) * count;
    void* block = heap::allocate(nbytes, "qnArray::raw_cut");
    std::memcpy(block, data + std::size_t(start) * elementSize, nbytes);
    closeGap(start, count);
    return block;
}

// Copying out

void* qnArray::raw_extract(unsigned start, unsigned count) const {
    MORVAQNDS_REQUIRE(start <= length() && count <= length() - start,
                      "qnArray::raw_extract: %u elements from %u exceed length %u", count, start, length());
    if (count == 0) return nullptr;
    unsigned nbytes = heap::checkedSize(std::uint64_t(elementSize) * count, "qnArray::raw_extract");
    void* block = heap::allocate(nbytes, "qnArray::raw_extract");
    copyElements(data + std::size_t(start) * elementSize, block, nbytes);
    return block;
}

void* qnArray::raw_copy() const {
    if (usedBytes == 0) return nullptr;
    void* block = heap::allocate(usedBytes, "qnArray::raw_copy");
    copyElements(data, block, usedBytes);
    return block;
}

void* qnArray::raw_head(unsigned count) const {
    MORVAQNDS_REQUIRE(count <= length(), "qnArray::raw_head: %u elements exceed length %u", count, length());
    return count == 0 ? nullptr : raw_extract(0, count);
}

void* qnArray::raw_tail(unsigned count) const {
    MORVAQNDS_REQUIRE(count <= length(), "qnArray::raw_tail: %u elements exceed length %u", count, length());
    if (count == 0) return nullptr;
    unsigned nbytes = heap::checkedSize(std::uint64_t(elementSize) * count, "qnArray::raw_tail");
    void* block = heap::allocate(nbytes, "qnArray::raw_tail");
    copyElements(data + (usedBytes - nbytes), block, nbytes);
    return block;
}

// Looking and exchanging

unsigned qnArray::find(const void* probe, unsigned start) const {
    if (elementSize == 0) return 0xFFFFFFFFu;
    unsigned n = length();
    for (unsigned i = start; i < n; ++i) {
        if (compareElements(probe, data + std::size_t(i) * elementSize) == 0) return i;
    }
    return 0xFFFFFFFFu;
}

void qnArray::swap(unsigned i, unsigned j) {
    MORVAQNDS_REQUIRE(i < length() && j < length(), "qnArray::swap: elements %u and %u of %u", i, j, length());
    char local[1024];
    void* scratch = local;
    // Deliberate: a wide element's scratch block is never released.
    if (elementSize > sizeof local) scratch = heap::allocate(elementSize, "qnArray::swap");
    char* first = data + std::size_t(i) * elementSize;
    char* second = data + std::size_t(j) * elementSize;
    std::memmove(scratch, first, elementSize);
    std::memmove(first, second, elementSize);
    std::memmove(second, scratch, elementSize);
}
