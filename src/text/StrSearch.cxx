// Searching and tokenising: every scan of a string for or past characters.
#include "Checked.h"
#include "Str.h"

namespace {

/** A set of characters that is asked many times: one look-up a character, however many are in it. */
class CharacterSet {
public:
    CharacterSet(const char* set, unsigned len) : words_() {
        std::size_t count = len != 0 ? len : std::strlen(set);
        for (std::size_t i = 0; i < count; ++i) {
            unsigned char c = static_cast<unsigned char>(set[i]);
            words_[c / Bits] |= 1ul << (c % Bits);
        }
    }
    bool operator()(char c) const {
        unsigned char index = static_cast<unsigned char>(c);
        return (words_[index / Bits] >> (index % Bits) & 1) != 0;
    }

private:
    static constexpr unsigned Bits = 8 * sizeof(unsigned long);
    unsigned long words_[256 / Bits];
};

/** Index of the first character from `posn` on whose membership is `wanted`, or the length. */
template <class Set>
unsigned scan(const qnStr& s, unsigned posn, const Set& in, bool wanted) {
    for (unsigned i = posn; i < s.length(); ++i) {
        if (in(s.data[i]) == wanted) return i;
    }
    return s.length();
}

/** One more than the index of the last character before `posn` whose membership is `wanted`, or 0. */
template <class Set>
unsigned scanBack(const qnStr& s, unsigned posn, const Set& in, bool wanted) {
    for (unsigned i = posn; i > 0; --i) {
        if (in(s.data[i - 1]) == wanted) return i;
    }
    return 0;
}

struct OneCharacter {
    char c;
    bool operator()(char other) const { return c == other; }
};

#define REQUIRE_POSITION(operation) \
    MORVAQNDS_REQUIRE(posn <= length(), "qnStr::" operation ": position %u past length %u", posn, length())

}  // namespace

unsigned qnStr::next(unsigned posn, char c) const {
    REQUIRE_POSITION("next");
    if (posn >= length()) return length();
    const void* found = std::memchr(data + posn, c, length() - posn);
    return found == nullptr ? length() : static_cast<unsigned>(static_cast<const char*>(found) - data);
}

unsigned qnStr::next(unsigned posn, const char* set, unsigned len) const {
    REQUIRE_POSITION("next");
    return scan(*this, posn, CharacterSet(set, len), true);
}

unsigned qnStr::nextR(unsigned posn, char c) const {
    REQUIRE_POSITION("nextR");
    return scanBack(*this, posn, OneCharacter{c}, true);
}

unsigned qnStr::nextR(unsigned posn, const char* set, unsigned len) const {
    REQUIRE_POSITION("nextR");
    return scanBack(*this, posn, CharacterSet(set, len), true);
}

unsigned qnStr::skip(unsigned posn, char c) const {
    REQUIRE_POSITION("skip");
    return scan(*this, posn, OneCharacter{c}, false);
}

unsigned qnStr::skip(unsigned posn, const char* set, unsigned len) const {
    REQUIRE_POSITION("skip");
    return scan(*this, posn, CharacterSet(set, len), false);
}

unsigned qnStr::skipR(unsigned posn, char c) const {
    REQUIRE_POSITION("skipR");
    return scanBack(*this, posn, OneCharacter{c}, false);
}

unsigned qnStr::skipR(unsigned posn, const char* set, unsigned len) const {
    REQUIRE_POSITION("skipR");
    return scanBack(*this, posn, CharacterSet(set, len), false);
}

qnStr qnStr::token(unsigned& posn, const char* set, unsigned len) const {
    unsigned start = posn;
    unsigned end = next(start, set, len);
    posn = skip(end, set, len);
    return extract(start, end - start);
}

qnStr qnStr::token(unsigned& posn, char c) const {
    unsigned start = posn;
    unsigned end = next(start, c);
    posn = skip(end, c);
    return extract(start, end - start);
}

qnStr qnStr::tokenR(unsigned& posn, const char* set, unsigned len) const {
    unsigned end = posn;
    unsigned start = nextR(end, set, len);
    posn = skipR(start, set, len);
    return extract(start, end - start);
}

qnStr qnStr::tokenR(unsigned& posn, char c) const {
    unsigned end = posn;
    unsigned start = nextR(end, c);
    posn = skipR(start, c);
    return extract(start, end - start);
}
