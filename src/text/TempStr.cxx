// Concatenation: the temporary that `+` returns.
#include "Str.h"
#include "core/Heap.h"

qnTempStr::qnTempStr(const char* a, unsigned alen, const char* b, unsigned blen)
    : data(inlineBuffer), slength(heap::checkedSize(std::uint64_t(alen) + blen + 1, "qnTempStr::qnTempStr")) {
    if (slength > InlineSize) data = static_cast<char*>(heap::allocate(slength, "qnTempStr::qnTempStr"));
    if (alen != 0) std::memcpy(data, a, alen);
    if (blen != 0) std::memcpy(data + alen, b, blen);
    data[slength - 1] = 0;
}

qnTempStr::qnTempStr(const qnTempStr& other) : data(inlineBuffer), slength(other.slength) {
    // Deliberate: below 100 bytes here, up to 100 in the constructor above.
    if (slength >= InlineSize) data = static_cast<char*>(heap::allocate(slength, "qnTempStr::qnTempStr"));
    std::memcpy(data, other.data, slength);
}

qnTempStr& qnTempStr::concat(const char* s, unsigned len) {
    unsigned oldLength = length();
    unsigned grown = heap::checkedSize(std::uint64_t(slength) + len, "qnTempStr::concat");
    bool own = heap::contains(data, slength, s);
    std::size_t from = own ? static_cast<std::size_t>(s - data) : 0;
    if (data != inlineBuffer) {
        // A block of 100 bytes is a copy's; nothing is asked for it while it is large enough.
        if (grown > InlineSize) data = static_cast<char*>(heap::reallocate(data, grown, "qnTempStr::concat"));
    } else if (grown > InlineSize) {
        data = static_cast<char*>(heap::allocate(grown, "qnTempStr::concat"));
        std::memcpy(data, inlineBuffer, slength);
    }
    if (len != 0) std::memmove(data + oldLength, own ? data + from : s, len);
    data[grown - 1] = 0;
    slength = grown;
    return *this;
}

qnTempStr operator+(const qnStr& a, const qnStr& b) { return qnTempStr(a.data, a.length(), b.data, b.length()); }

qnTempStr operator+(const qnStr& a, const char* b) {
    return qnTempStr(a.data, a.length(), b, heap::checkedSize(std::strlen(b), "operator+"));
}

qnTempStr operator+(const char* a, const qnStr& b) {
    return qnTempStr(a, heap::checkedSize(std::strlen(a), "operator+"), b.data, b.length());
}

qnTempStr& operator+(qnTempStr& a, const char* b) {
    return a.concat(b, heap::checkedSize(std::strlen(b), "operator+"));
}
