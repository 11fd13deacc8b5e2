#ifndef MORVAQNDS_UNITS_H
#define MORVAQNDS_UNITS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/**
 * Runs of elements as runs of bytes. A run may have more bytes than 32 bits can count; it is then handled in portions.
 */
namespace units {

/** Elements of a portion, so that its bytes fit in 32 bits for elements of up to 8 bytes. */
constexpr unsigned Portion = 1u << 28;

/**
 * Calls `handle(bytes, nbytes)` for the portions of `count` elements of `size` bytes; stops at the first false.
 * `handle` is called once with 0 bytes for an empty run.
 */
template <class Byte, class Handle>
bool forEachPortion(Byte* bytes, unsigned count, unsigned size, Handle handle) {
    while (count > Portion) {
        if (!handle(bytes, Portion * size)) return false;
        bytes += std::uint64_t(Portion) * size;
        count -= Portion;
    }
    return handle(bytes, count * size);
}

/** Whether `long` is wider than the 4 bytes that it takes in a stream. */
constexpr bool WideLongs = sizeof(long) > 4;

inline bool fitsStream(long value) { return value >= INT32_MIN && value <= INT32_MAX; }
inline bool fitsStream(unsigned long value) { return value <= UINT32_MAX; }

/** What a `long` is in a stream. */
template <class Long>
struct InStream;
template <>
struct InStream<long> {
    typedef std::int32_t Type;
};
template <>
struct InStream<unsigned long> {
    typedef std::uint32_t Type;
};

/**
 * Spreads `count` longs that stand packed, 4 bytes each, at the start of their memory, from the last to the first.
 * Signed values are sign-extended, unsigned ones zero-extended.
 */
template <class Long>
void spreadLongs(Long* values, std::size_t count) {
    if (!WideLongs) return;
    typedef typename InStream<Long>::Type Word;
    const char* packed = reinterpret_cast<const char*>(values);
    for (std::size_t i = count; i > 0; --i) {
        Word word;
        std::memcpy(&word, packed + (i - 1) * sizeof word, sizeof word);
        Long value = word;
        std::memcpy(values + (i - 1), &value, sizeof value);
    }
}

}  // namespace units

#endif
