#include "Str.h"

#include <cctype>
#include <cstdio>

#include "Checked.h"
#include "Transcriber.h"
#include "core/Heap.h"
#include "serial/ReadSupport.h"

// A constant, so that strings may be used by initialisers that run before any of this library's own.
char qnStr::emptyString = 0;

namespace {

/** The count that goes with a text: `len`, with 0 for its own length, which is 0 for null. */
unsigned countOf(const char* s, unsigned len, const char* operation) {
    if (len != 0) return len;
    return s == nullptr ? 0 : heap::checkedSize(std::strlen(s), operation);
}

}  // namespace

// Construction

void qnStr::constructNuls(unsigned n) {
    std::size_t nbytes = heap::checkedSize(std::uint64_t(n) + 1, "qnStr::qnStr");
    data = static_cast<char*>(heap::allocate(nbytes, "qnStr::qnStr"));
    std::memset(data, 0, nbytes);
    slength = n + 1;
}

void qnStr::constructCopy(const char* s, std::size_t len) {
    if (len == 0) {
        slength = 1;
        data = &emptyString;
        return;
    }
    slength = heap::checkedSize(std::uint64_t(len) + 1, "qnStr::qnStr");
    data = static_cast<char*>(heap::allocate(slength, "qnStr::qnStr"));
    std::memcpy(data, s, len);
    data[len] = 0;
}

qnStr::qnStr(const char* s) { constructCopy(s, s == nullptr ? 0 : std::strlen(s)); }

qnStr::qnStr(const char* s, unsigned len) { constructCopy(s, len); }

qnStr::qnStr(const qnStr& other) { constructCopy(other.data, other.length()); }

qnStr::qnStr(const qnTempStr& other) { constructCopy(other.data, other.length()); }

// Assignment

void qnStr::assign(const char* s, unsigned len) {
    // A part of this string's own text is never longer than the text, so its buffer stays unless nothing is left of it.
    resizeInternal(len);
    if (len != 0) {
        std::memmove(data, s, len);
        data[len] = 0;
    } else if (data != &emptyString) {
        data[0] = 0;
    }
    slength = len + 1;
}

qnStr& qnStr::operator=(const qnStr& other) {
    assign(other.data, other.length());
    return *this;
}

qnStr& qnStr::operator=(const qnTempStr& other) {
    assign(other.data, other.length());
    return *this;
}

qnStr& qnStr::operator=(const char* s) {
    assign(s, countOf(s, 0, "qnStr::operator="));
    return *this;
}

// The buffer

bool qnStr::owns(const char* p) const { return heap::contains(data, slength, p); }

void qnStr::releaseBuffer() {
    if (data != &emptyString) std::free(data);
    data = &emptyString;
}

unsigned qnStr::grownLength(std::size_t added, const char* operation) const {
    return heap::checkedSize(std::uint64_t(slength) + added, operation) - 1;
}

void qnStr::resizeInternal(unsigned len) {
    std::size_t nbytes = std::size_t(heap::checkedSize(std::uint64_t(len) + 1, "qnStr::resizeInternal"));
    if (slength <= 1) {
        if (len == 0) return;
        // A formatted string may be empty in a block of its own.
        releaseBuffer();
        data = static_cast<char*>(heap::allocate(nbytes, "qnStr::resizeInternal"));
    } else if (len == 0) {
        releaseBuffer();
    } else if (len >= slength) {
        data = static_cast<char*>(heap::reallocate(data, nbytes, "qnStr::resizeInternal"));
    }
}

void qnStr::resize(unsigned len, bool) {
    unsigned oldLength = slength;
    resizeInternal(len);
    if (len >= oldLength) std::memset(data + oldLength, 0, std::size_t(len) - oldLength + 1);
    slength = len + 1;
    if (data != &emptyString) data[len] = 0;
}

void qnStr::setMaxLength(unsigned n) {
    if (slength <= 1) return;
    resizeInternal(n > length() ? n : length());
}

// Copies

qnStr qnStr::extract(unsigned start, unsigned len) const {
    MORVAQNDS_REQUIRE(start <= length() && len <= length() - start,
                      "qnStr::extract: %u characters from %u exceed length %u", len, start, length());
    return qnStr(data + start, len);
}

qnStr qnStr::head(unsigned n) const {
    MORVAQNDS_REQUIRE(n <= length(), "qnStr::head: %u characters exceed length %u", n, length());
    return qnStr(data, n);
}

qnStr qnStr::tail(unsigned n) const {
    MORVAQNDS_REQUIRE(n <= length(), "qnStr::tail: %u characters exceed length %u", n, length());
    return qnStr(data + (length() - n), n);
}

qnStr qnStr::copy() const { return *this; }

qnStr qnStr::trim(const char* set) {
    unsigned start = skip(0, set);
    unsigned end = skipR(length(), set);
    MORVAQNDS_REQUIRE(start <= end, "qnStr::trim: all %u characters are in the set", length());
    return start <= end ? extract(start, end - start) : qnStr();
}

qnStr qnStr::trimRight(const char* set) { return extract(0, skipR(length(), set)); }

qnStr qnStr::cut(unsigned start, unsigned len) {
    qnStr taken = extract(start, len);
    remove(start, len);
    return taken;
}

// Editing

void qnStr::lower() {
    if (data == &emptyString) return;
    for (unsigned i = 0; i < slength; ++i) {
        data[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(data[i])));
    }
}

void qnStr::raise() {
    if (data == &emptyString) return;
    for (unsigned i = 0; i < slength; ++i) {
        data[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(data[i])));
    }
}

void qnStr::remove(unsigned start, unsigned len) {
    MORVAQNDS_REQUIRE(slength > 1, "qnStr::remove: %u characters from %u of an empty string", len, start);
    MORVAQNDS_REQUIRE(start <= length() && len <= length() - start,
                      "qnStr::remove: %u characters from %u exceed length %u", len, start, length());
    if (len == length() || len == slength) {
        // Deliberate: as many characters as there are, from wherever, empty the string.
        releaseBuffer();
        slength = 1;
        return;
    }
    if (start >= length()) return;
    if (len > length() - start) len = length() - start;
    if (len == length()) return remove(0, len);
    std::memmove(data + start, data + start + len, slength - start - len);
    slength -= len;
}

void qnStr::insert(const char* s, unsigned posn, unsigned len) {
    MORVAQNDS_REQUIRE(posn <= length(), "qnStr::insert: position %u past length %u", posn, length());
    len = countOf(s, len, "qnStr::insert");
    if (len == 0) return;
    bool own = owns(s);
    std::size_t from = own ? static_cast<std::size_t>(s - data) : 0;
    // Deliberate: one byte more than the text needs.
    resizeInternal(grownLength(std::size_t(len) + 1, "qnStr::insert"));
    if (slength == 1) {
        data[len] = 0;
    } else {
        std::memmove(data + posn + len, data + posn, slength - posn);
    }
    if (!own) {
        std::memcpy(data + posn, s, len);
    } else {
        // The text is taken as it was: what stood at or behind the gap has moved up.
        std::size_t before = from >= posn ? 0 : (len < posn - from ? len : posn - from);
        std::memcpy(data + posn, data + from, before);
        std::memcpy(data + posn + before, data + from + before + len, len - before);
    }
    slength += len;
}

void qnStr::insert(char c, unsigned posn) { insert(&c, posn, 1); }

void qnStr::replace(const char* s, unsigned posn, unsigned len) {
    len = countOf(s, len, "qnStr::replace");
    MORVAQNDS_REQUIRE(posn <= length() && len <= length() - posn,
                      "qnStr::replace: %u characters at %u exceed length %u", len, posn, length());
    if (len != 0) std::memmove(data + posn, s, len);
}

void qnStr::append(const char* s, unsigned len) {
    len = countOf(s, len, "qnStr::append");
    if (len == 0) return;
    bool own = owns(s);
    std::size_t from = own ? static_cast<std::size_t>(s - data) : 0;
    unsigned oldLength = length();
    unsigned newLength = grownLength(len, "qnStr::append");
    resizeInternal(newLength);
    if (oldLength == 0) data[0] = 0;  // a fresh block; the own text of an empty string is its terminator
    std::memmove(data + oldLength, own ? data + from : s, len);
    data[newLength] = 0;
    slength = newLength + 1;
}

void qnStr::append(char c) { append(&c, 1); }

// Hashing

namespace {

unsigned littleEndianWord(const char* p) {
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(p);
    return bytes[0] | unsigned(bytes[1]) << 8 | unsigned(bytes[2]) << 16 | unsigned(bytes[3]) << 24;
}

/** The first `n` bytes, at most 4, in the high end of a word: the last of them weighs most. */
unsigned highEndWord(const char* p, unsigned n) {
    unsigned word = 0;
    for (unsigned i = 0; i < n; ++i) word |= unsigned(static_cast<unsigned char>(p[i])) << (8 * (4 - n + i));
    return word;
}

}  // namespace

unsigned long qnStr::hash() const {
    unsigned n = length();
    if (n >= 8) return (littleEndianWord(data + 4) << 3) ^ littleEndianWord(data);
    if (n <= 4) return highEndWord(data, n) << 3;
    return (highEndWord(data, n - 4) << 3) ^ littleEndianWord(data);
}

// Serialisation

void* qnStr::newInstance(qnTypeObj& type) { return heap::create<qnStr>("qnStr::newInstance", type); }

void qnStr::deleteInstance(void* object) { delete static_cast<qnStr*>(object); }

qnTypeObj& qnStr::getTypeObj() const { return qnStr_type; }

bool qnStr::xdr(void* object, qnTranscriber& transcriber) { return static_cast<qnStr*>(object)->xdr(transcriber); }

bool qnStr::xdr(qnTranscriber& transcriber) {
    unsigned storedLength = slength;
    if (!transcriber.xdr(&storedLength, 1)) return false;
    if (!transcriber.reading) return slength == 1 || transcriber.xdr(&data, slength);

    if (storedLength == 0) qnFatal("format error");
    releaseBuffer();
    slength = storedLength;
    if (slength == 1) return true;
    qnReadSupport::expectText(transcriber);
    if (transcriber.xdr(&data, slength)) {
        if (data == nullptr) qnFatal("format error");
        return true;
    }
    // The text never came.
    slength = 1;
    return false;
}
