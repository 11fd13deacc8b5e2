#include "BoundingBox.h"

#include <cstdint>

namespace {

/** One axis of a box. */
struct Span {
    int start;
    int extent;

    std::int64_t end() const { return std::int64_t(start) + extent; }
};

/** The part of the later span that lies before the end of the earlier one. */
Span overlapOf(Span earlier, Span later) {
    if (later.start >= earlier.end()) return Span{0, 0};
    std::int64_t rest = earlier.end() - later.start;
    return Span{later.start, static_cast<int>(later.extent < rest ? later.extent : rest)};
}

Span intersect(Span a, Span b) { return a.start <= b.start ? overlapOf(a, b) : overlapOf(b, a); }

Span bound(Span a, Span b) {
    if (a.extent == 0) return b;
    if (b.extent == 0) return a;
    int start = a.start < b.start ? a.start : b.start;
    // Deliberate: coordinates are taken to fit in 16 bits, and far edges are cut to that.
    int endOfA = static_cast<std::int16_t>(a.end());
    int endOfB = static_cast<std::int16_t>(b.end());
    std::int64_t extent = std::int64_t(endOfA > endOfB ? endOfA : endOfB) - start;
    return Span{start, static_cast<int>(extent)};
}

}  // namespace

qnBoundingBox qnBoundingBox::intersect(const qnBoundingBox& other) const {
    Span horizontal = ::intersect(Span{x, width}, Span{other.x, other.width});
    Span vertical = ::intersect(Span{y, height}, Span{other.y, other.height});
    return qnBoundingBox(horizontal.start, vertical.start, horizontal.extent, vertical.extent);
}

qnBoundingBox qnBoundingBox::bound(const qnBoundingBox& other) const {
    Span horizontal = ::bound(Span{x, width}, Span{other.x, other.width});
    Span vertical = ::bound(Span{y, height}, Span{other.y, other.height});
    return qnBoundingBox(horizontal.start, vertical.start, horizontal.extent, vertical.extent);
}
