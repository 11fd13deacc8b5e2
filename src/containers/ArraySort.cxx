// The array's sort: a quicksort partition around the first element, with a closing step of its own.
//
// Idea: the scratch always holds the bytes of the element that was exchanged last (at first those of the range's first
// element), and so it is an alias of an element that still stands somewhere in the array: between two exchanges only
// closing steps write to the array, and what they write is the scratch. A closing step that overwrites an element with
// the scratch can therefore destroy what was there and copy the alias, unless the place is the aliased one itself,
// which the equal bytes show. Each place thus owns its element at any time.
//
// Cost: as a quicksort with the first element as pivot, quadratic for sorted input. Both sides are sorted in order,
// left first, as they share the scratch; what is still to be sorted waits in a list and not on the machine's stack.
#include <cstring>

#include "Array.h"
#include "Checked.h"
#include "core/Heap.h"

namespace {

/** The ranges that wait for their turn, newest first. */
class WaitingRanges {
public:
    struct Range {
        unsigned lo;
        unsigned hi;
    };

    WaitingRanges() : ranges_(local_), count_(0), capacity_(LocalCapacity) {}
    ~WaitingRanges() {
        if (ranges_ != local_) std::free(ranges_);
    }

    WaitingRanges(const WaitingRanges&) = delete;
    WaitingRanges& operator=(const WaitingRanges&) = delete;

    void push(unsigned lo, unsigned hi) {
        if (count_ == capacity_) grow();
        ranges_[count_++] = Range{lo, hi};
    }
    bool pop(Range& range) {
        if (count_ == 0) return false;
        range = ranges_[--count_];
        return true;
    }

private:
    static constexpr std::size_t LocalCapacity = 64;

    void grow() {
        std::size_t nbytes = 2 * capacity_ * sizeof(Range);
        Range* block = static_cast<Range*>(ranges_ == local_ ? heap::allocate(nbytes, "qnArray::qsort")
                                                             : heap::reallocate(ranges_, nbytes, "qnArray::qsort"));
        if (ranges_ == local_) std::memcpy(block, local_, sizeof local_);
        ranges_ = block;
        capacity_ *= 2;
    }

    Range local_[LocalCapacity];
    Range* ranges_;
    std::size_t count_;
    std::size_t capacity_;
};

/** One partitioning of the elements `lo` to `hi` of an array. */
class Partition {
public:
    Partition(qnArray& array, void* scratch) : array_(array), scratch_(scratch), size_(array.elementSize) {}

    /** Partitions and returns the boundary. */
    unsigned run(unsigned lo, unsigned hi) {
        const char* pivot = at(lo);
        unsigned i = lo;
        unsigned j = hi + 1;
        if (i < hi) scanUp(i, hi, pivot);
        for (;;) {
            if (j > lo) scanDown(j, lo, pivot);
            if (i >= j) break;
            exchange(at(i), at(j));
            if (i < hi) scanUp(i, hi, pivot);
        }
        close(at(lo));
        close(at(j));
        return j;
    }

private:
    char* at(unsigned index) const { return array_.data + std::size_t(index) * size_; }

    void scanUp(unsigned& i, unsigned hi, const char* pivot) const {
        do {
            ++i;
        } while (array_.compareElements(at(i), pivot) < 0 && i < hi);
    }

    void scanDown(unsigned& j, unsigned lo, const char* pivot) const {
        do {
            --j;
        } while (array_.compareElements(at(j), pivot) > 0 && j > lo);
    }

    void exchange(char* a, char* b) const {
        std::memcpy(scratch_, a, size_);
        std::memmove(a, b, size_);
        std::memcpy(b, scratch_, size_);
    }

    /**
     * Deliberate: the pivot is not saved before its place is written, so that both it and the boundary take over the
     * scratch. Programs get this order of elements and no other.
     */
    void close(char* place) const {
        if (std::memcmp(place, scratch_, size_) == 0) return;
        array_.destroyElements(place, static_cast<unsigned>(size_));
        array_.copyElements(scratch_, place, static_cast<unsigned>(size_));
    }

    qnArray& array_;
    void* scratch_;
    std::size_t size_;
};

}  // namespace

void qnArray::qsort() { qsort(0, length()); }

void qnArray::qsort(unsigned start, unsigned count) {
    MORVAQNDS_REQUIRE(start <= length() && count <= length() - start,
                      "qnArray::qsort: %u elements from %u exceed length %u", count, start, length());
    if (count == 0) return;
    char local[32];
    void* scratch = elementSize <= sizeof local ? local : heap::allocate(elementSize, "qnArray::qsort");
    std::memcpy(scratch, data + std::size_t(start) * elementSize, elementSize);
    qsortInternal(start, start + count - 1, scratch);
    if (scratch != local) std::free(scratch);
}

void qnArray::qsortInternal(unsigned lo, unsigned hi, void* scratch) {
    MORVAQNDS_REQUIRE(lo <= hi && hi < length(), "qnArray::qsortInternal: bounds %u to %u in length %u", lo, hi,
                      length());
    Partition partition(*this, scratch);
    WaitingRanges waiting;
    WaitingRanges::Range range = {lo, hi};
    do {
        unsigned j = partition.run(range.lo, range.hi);
        if (j + 1 < range.hi) waiting.push(j + 1, range.hi);
        if (j != 0 && range.lo < j - 1) waiting.push(range.lo, j - 1);
    } while (waiting.pop(range));
}
