#include "SLinearPattern.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "Str.h"
#include "core/Heap.h"

/*
 * Horspool: the byte under the last position of an alignment tells how far the alignment can move without passing a
 * match. One step costs a load from the text and one from the table, and moves by the length of the pattern at best.
 *
 * Two things make it faster where they apply. A pattern of one byte is `memchr`. And a block of 16 alignments can be
 * tested at once, by comparing 16 bytes at each of four places of the pattern, in less time than three steps take. So
 * texts are searched in blocks, except where steps are better: where a long pattern makes them long, and where so many
 * alignments pass the four tests that it is their steps that move the search anyway.
 *
 * Texts in which very many alignments almost match would take time by the length of the pattern. Once the bytes
 * compared in vain are far more than the bytes passed, the rest is left to `memmem`, whose time is linear.
 */

namespace {

#if defined(__SSE2__)
constexpr bool HasBlocks = true;
#else
constexpr bool HasBlocks = false;
#endif

/** The longest pattern for which the longest steps are not worth trying. */
constexpr std::size_t LongestInBlocks = 64;
/** How many steps are tried, and the bytes that they must pass to be better than blocks. */
constexpr std::size_t TriedSteps = 16;
constexpr std::size_t FastSteps = 32 * TriedSteps;
/** Bytes that are searched in one way before the other is tried again. */
constexpr std::size_t Stretch = 4096;
/** Blocks are given up when more than a third of the way, but for this many bytes, was steps after candidates. */
constexpr std::size_t SteppedAtFirst = 256;
/** Bytes compared in vain for each byte passed, and for so many more, before `memmem` takes over. */
constexpr std::size_t ComparedPerByte = 64;
constexpr std::size_t ComparedAtFirst = 64;

/** Fewer alignments than this fit no block. */
constexpr std::size_t BlockOfAlignments = 16;

/** The table alone, for texts with so few alignments that preparing for more would take longer than the search. */
int findInSteps(const unsigned* skip, const char* pattern, std::size_t length, const char* buffer, std::size_t size) {
    const std::size_t before = length - 1;
    const char last = pattern[before];
    for (std::size_t at = before; at < size;) {
        const char c = buffer[at];
        if (c == last && std::memcmp(buffer + (at - before), pattern, before) == 0)
            return static_cast<int>(at - before);
        at += skip[static_cast<unsigned char>(c)];
    }
    return -1;
}

/** One search for a pattern of two bytes or more. An alignment is the text position of the pattern's last byte. */
class Search {
public:
    Search(const unsigned* skip, const char* pattern, std::size_t length, const char* buffer, std::size_t size)
        : skip_(skip), pattern_(pattern), length_(length), buffer_(buffer), size_(size), at_(length - 1) {}

    /** Where the first match starts, or -1. */
    std::ptrdiff_t run() {
        std::size_t steppedStretch = Stretch;
        while (at_ < size_) {
            if (exhausted(at_)) return rest();
            if (!HasBlocks) {
                if (goInSteps(size_, size_)) return start();
                continue;
            }
            if (length_ > LongestInBlocks) {
                std::size_t before = at_;
                if (goInSteps(size_, TriedSteps)) return start();
                if (at_ >= size_ || at_ - before >= FastSteps) continue;
            }
            if (goInBlocks(endOf(Stretch))) return start();
            if (!dense_ && at_ + BlockOfAlignments <= size_) {
                steppedStretch = Stretch;
                continue;
            }
            if (goInSteps(endOf(steppedStretch), size_)) return start();
            steppedStretch *= 2;
        }
        return -1;
    }

private:
    std::ptrdiff_t start() const { return static_cast<std::ptrdiff_t>(at_ - (length_ - 1)); }

    std::size_t endOf(std::size_t stretch) const {
        return at_ >= size_ || stretch > size_ - at_ ? size_ : at_ + stretch;
    }

    /** Goes on to `end`, at most the text's end, or for so many steps; true at a match. */
    bool goInSteps(std::size_t end, std::size_t steps) {
        const char last = pattern_[length_ - 1];
        std::size_t at = at_;
        bool found = false;
        for (; steps > 0 && at < end; --steps) {
            const char c = buffer_[at];
            if (c == last) {
                found = matches(at);
                if (found || exhausted(at)) break;
            }
            at += skip_[static_cast<unsigned char>(c)];
        }
        at_ = at;
        return found;
    }

#if defined(__SSE2__)
    /** A byte of the pattern, and how far before the alignment it stands. */
    struct Probe {
        __m128i byte;
        std::size_t back;
    };
    Probe probeFor(std::size_t index) const { return Probe{_mm_set1_epi8(pattern_[index]), length_ - 1 - index}; }

    /** Which of the 16 alignments `offset` further on have the probe's byte in place. */
    __m128i test(std::size_t offset, const Probe& probe) const {
        const char* at = buffer_ + (at_ + offset - probe.back);
        return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)), probe.byte);
    }
    __m128i test(std::size_t offset, const Probe& a, const Probe& b) const {
        return _mm_and_si128(test(offset, a), test(offset, b));
    }

    /** The byte nearest to the last that differs from it: it tells most beside it. */
    std::size_t otherIndex() const {
        std::size_t index = length_ - 2;
        while (index > 0 && pattern_[index] == pattern_[length_ - 1]) --index;
        return index;
    }

    /**
     * Goes on to `end`, at most the text's end, while there are 16 alignments left; true at a match. Sets `dense_` when
     * it ended because there are too many candidates.
     */
    bool goInBlocks(std::size_t end) {
        const Probe last = probeFor(length_ - 1);
        const Probe other = probeFor(otherIndex());
        const Probe first = probeFor(0);
        const Probe middle = probeFor((length_ - 1) / 2);
        const std::size_t from = at_;
        std::size_t stepped = 0;
        std::size_t careful = 0;  // up to here one block is tested at a time
        dense_ = false;
        while (at_ < end && size_ - at_ >= BlockOfAlignments && !exhausted(at_)) {
            if (at_ >= careful && size_ - at_ >= 64) {
                __m128i half = _mm_or_si128(test(0, last, other), test(16, last, other));
                __m128i rest = _mm_or_si128(test(32, last, other), test(48, last, other));
                if (_mm_movemask_epi8(_mm_or_si128(half, rest)) == 0) {
                    at_ += 64;
                    continue;
                }
                careful = at_ + 64;
            }
            __m128i candidates = _mm_and_si128(test(0, last, other), test(0, first, middle));
            int mask = _mm_movemask_epi8(candidates);
            if (mask == 0) {
                at_ += 16;
                continue;
            }
            at_ += static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
            if (matches(at_)) return true;
            const unsigned step = skip_[static_cast<unsigned char>(buffer_[at_])];
            stepped += step;
            at_ += step;
            if (stepped > (at_ - from) / 3 + SteppedAtFirst) {
                dense_ = true;
                return false;
            }
        }
        return false;
    }
#else
    bool goInBlocks(std::size_t) { return false; }
#endif

    /**
     * Compares the pattern, whose last byte is in place, and keeps the account of it. Where the last comparison failed
     * the next one often does, so that byte is looked at first.
     */
    bool matches(std::size_t at) {
        const char* text = buffer_ + (at - (length_ - 1));
        ++compared_;
        if (text[suspect_] != pattern_[suspect_]) return false;
        std::size_t same = commonLength(text, pattern_, length_ - 1);
        if (same == length_ - 1) return true;
        compared_ += same;
        suspect_ = same;
        return false;
    }

    /** How many of the first `size` bytes are the same up to the first difference. */
    static std::size_t commonLength(const char* a, const char* b, std::size_t size) {
        std::size_t same = 0;
        // Comparing a constant number of bytes needs no call.
        while (same + 16 <= size && std::memcmp(a + same, b + same, 16) == 0) same += 16;
        while (same < size && a[same] == b[same]) ++same;
        return same;
    }

    /** Whether more has been compared in vain than the way to `at` allows. */
    bool exhausted(std::size_t at) const { return compared_ / ComparedPerByte > at + ComparedAtFirst; }

    /** The search from here on in linear time. */
    std::ptrdiff_t rest() const {
        const char* from = buffer_ + (at_ - (length_ - 1));
        std::size_t left = size_ - (at_ - (length_ - 1));
        const void* match = memmem(from, left, pattern_, length_);
        return match == nullptr ? -1 : static_cast<const char*>(match) - buffer_;
    }

    const unsigned* skip_;
    const char* pattern_;
    std::size_t length_;
    const char* buffer_;
    std::size_t size_;
    std::size_t at_;
    std::uint64_t compared_ = 0;
    std::size_t suspect_ = 0;  // index of the byte of the pattern that differed last
    bool dense_ = false;
};

}  // namespace

qnSLinearPattern::qnSLinearPattern(const char* pattern, unsigned length) { constructor(pattern, length); }

qnSLinearPattern::qnSLinearPattern(const qnStr& pattern) { constructor(pattern.text(), pattern.length()); }

qnSLinearPattern::~qnSLinearPattern() { std::free(pattern_); }

void qnSLinearPattern::constructor(const char* pattern, unsigned length) {
    if (pattern == nullptr) {
        length_ = 0;
    } else {
        length_ = length != 0 ? length : heap::checkedSize(std::strlen(pattern), "qnSLinearPattern::qnSLinearPattern");
    }
    pattern_ = nullptr;
    for (unsigned& distance : skip_) distance = length_;
    if (length_ == 0) return;
    pattern_ = static_cast<char*>(heap::allocate(length_, "qnSLinearPattern::qnSLinearPattern"));
    std::memcpy(pattern_, pattern, length_);
    for (unsigned i = 0; i < length_ - 1; ++i) skip_[static_cast<unsigned char>(pattern[i])] = length_ - 1 - i;
}

int qnSLinearPattern::findBuffer(const char* buffer, unsigned length) const {
    if (length_ == 0) return 0;
    // What lies past the positions that an int can tell is not searched; nor can a step go past 2^32 then.
    std::size_t size = buffer == nullptr ? 0 : length < unsigned(INT_MAX) ? length : unsigned(INT_MAX);
    if (size < length_) return -1;
    if (length_ == 1) {
        const void* match = std::memchr(buffer, pattern_[0], size);
        return match == nullptr ? -1 : static_cast<int>(static_cast<const char*>(match) - buffer);
    }
    if (size - (length_ - 1) < BlockOfAlignments) return findInSteps(skip_, pattern_, length_, buffer, size);
    return static_cast<int>(Search(skip_, pattern_, length_, buffer, size).run());
}

// Deliberate: the ends go through the virtual `findBuffer`, so that a subclass that finds in another way need not
// define them.

int qnSLinearPattern::findEndBuffer(const char* buffer, unsigned length) const {
    int start = findBuffer(buffer, length);
    return start < 0 ? 0 : static_cast<int>(static_cast<unsigned>(start) + length_);
}

void qnSLinearPattern::bracketBuffer(const char* buffer, unsigned length, int& start, int& end) const {
    start = findBuffer(buffer, length);
    end = start < 0 ? 0 : static_cast<int>(static_cast<unsigned>(start) + length_);
}
