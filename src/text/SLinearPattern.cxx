#include "SLinearPattern.h"

#include <climits>
#include <cstddef>
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
 * Two things make it faster where they apply. A pattern of one byte is `memchr`. And 16 bytes compared at once test 16
 * alignments in less time than one step takes, so that short patterns are found that way alone, and longer ones in
 * those stretches of a text in which the steps turn out to be short. After an alignment that was compared in vain the
 * table says how far to move, either way.
 *
 * Texts in which very many alignments almost match would take time by the length of the pattern. Once the bytes
 * compared in vain are far more than the bytes passed, the rest is left to `memmem`, whose time is linear.
 */

namespace {

/** The longest pattern for which testing alignments in blocks always beats the steps. */
constexpr std::size_t LongestInBlocks = 64;
/** How many steps are taken before they are judged, and the bytes that they must then have passed. */
constexpr int Steps = 16;
constexpr std::size_t FastSteps = 32 * std::size_t(Steps);
/** Bytes that are searched in blocks before the steps are judged anew; they take longer than the steps. */
constexpr std::size_t Stretch = 4096;
/** Bytes compared in vain for each byte passed, and those at the start, before `memmem` takes over. */
constexpr std::size_t ComparedPerByte = 64;
constexpr std::size_t ComparedAtFirst = 4096;

/** One search for a pattern of two bytes or more. An alignment is the text position of the pattern's last byte. */
class Search {
public:
    Search(const unsigned* skip, const char* pattern, std::size_t length, const char* buffer, std::size_t size)
        : skip_(skip), pattern_(pattern), length_(length), buffer_(buffer), size_(size), other_(length - 2) {
        // The byte nearest to the last that differs from it tells most beside it.
        while (other_ > 0 && pattern[other_] == pattern[length - 1]) --other_;
    }

    /** Where the first match starts, or -1. */
    std::ptrdiff_t run() {
        at_ = length_ - 1;
        while (at_ < size_) {
            if (exhausted_) return rest();
#if defined(__SSE2__)
            if (length_ <= LongestInBlocks) {
                if (goInBlocks(size_)) return start();
            } else {
                std::size_t before = at_;
                if (goInSteps()) return start();
                bool isSlow = at_ - before < FastSteps;
                if (isSlow && goInBlocks(at_ + Stretch < size_ ? at_ + Stretch : size_)) return start();
                continue;
            }
#endif
            if (goInSteps()) return start();
        }
        return -1;
    }

private:
    std::ptrdiff_t start() const { return static_cast<std::ptrdiff_t>(at_ - (length_ - 1)); }

    /** Takes a few steps; true at a match. */
    bool goInSteps() {
        const char last = pattern_[length_ - 1];
        for (int step = 0; step < Steps && at_ < size_; ++step) {
            const char c = buffer_[at_];
            if (c == last && matches()) return true;
            at_ += skip_[static_cast<unsigned char>(c)];
        }
        return false;
    }

#if defined(__SSE2__)
    /** Which of the 16 alignments `offset` further on have the pattern's last byte and the other one in place. */
    __m128i candidates(std::size_t offset, __m128i last, __m128i other) const {
        const char* at = buffer_ + at_ + offset;
        const char* before = at - (length_ - 1 - other_);
        __m128i lasts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        __m128i others = _mm_loadu_si128(reinterpret_cast<const __m128i*>(before));
        return _mm_and_si128(_mm_cmpeq_epi8(lasts, last), _mm_cmpeq_epi8(others, other));
    }

    /** Goes on to `end`, at most the text's end, while there are 16 alignments left; true at a match. */
    bool goInBlocks(std::size_t end) {
        const __m128i last = _mm_set1_epi8(pattern_[length_ - 1]);
        const __m128i other = _mm_set1_epi8(pattern_[other_]);
        while (at_ < end && size_ - at_ >= 16 && !exhausted_) {
            while (size_ - at_ >= 64) {
                __m128i first = _mm_or_si128(candidates(0, last, other), candidates(16, last, other));
                __m128i second = _mm_or_si128(candidates(32, last, other), candidates(48, last, other));
                if (_mm_movemask_epi8(_mm_or_si128(first, second)) != 0) break;
                at_ += 64;
                if (at_ >= end) return false;
            }
            if (size_ - at_ < 16) break;
            int mask = _mm_movemask_epi8(candidates(0, last, other));
            if (mask == 0) {
                at_ += 16;
                continue;
            }
            at_ += static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
            if (matches()) return true;
            at_ += skip_[static_cast<unsigned char>(buffer_[at_])];
            if (at_ >= size_) break;
        }
        return false;
    }
#endif

    /** Compares the pattern, whose last byte is in place, in pieces that grow, and keeps the account of it. */
    bool matches() {
        const char* text = buffer_ + (at_ - (length_ - 1));
        std::size_t piece = 16;
        for (std::size_t done = 0; done < length_ - 1; piece *= 2) {
            if (piece > length_ - 1 - done) piece = length_ - 1 - done;
            if (std::memcmp(text + done, pattern_ + done, piece) != 0) {
                compared_ += done + piece;
                exhausted_ = compared_ / ComparedPerByte > at_ + ComparedAtFirst;
                return false;
            }
            done += piece;
        }
        return true;
    }

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
    std::size_t other_;  // index of the byte of the pattern that blocks are tested for beside the last
    std::size_t at_ = 0;
    std::size_t compared_ = 0;
    bool exhausted_ = false;
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
