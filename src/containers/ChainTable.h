#ifndef MORVAQNDS_CHAINTABLE_H
#define MORVAQNDS_CHAINTABLE_H

#include <cstdint>
#include <type_traits>

#include "Fatal.h"
#include "core/Heap.h"
#include "serial/ReadSupport.h"

/** How dictionaries and sets read their tables from streams that may lie. */
namespace chains {

/**
 * Tables of up to this many buckets are believed whatever they hold; larger ones only with an entry for every
 * `BucketsPerEntry` buckets, so that a few bytes of a stream cannot claim a large part of the memory.
 */
constexpr unsigned BelievedBuckets = 1u << 20;
constexpr unsigned BucketsPerEntry = 64;

// Deliberate: a large table that is almost empty can be written and not be read.
inline bool isBelievable(unsigned nbuckets, unsigned entries) {
    return nbuckets <= BelievedBuckets || nbuckets / BucketsPerEntry <= entries;
}

/** Many tables are a large part of the memory too: there is a limit on what is believed in all of them. */
inline bool isBelievedBy(qnTranscriber& transcriber, unsigned nbuckets, unsigned entries) {
    const std::uint64_t likely = BucketsPerEntry * (std::uint64_t(entries) + 1);
    return nbuckets <= likely || qnReadSupport::believesBuckets(transcriber, static_cast<unsigned>(nbuckets - likely));
}

/**
 * Brings the table to `nbuckets` buckets and pushes `entries` entries at the heads of their chains. `readEntry(bucket)`
 * gives the block of the next entry and sets its bucket's number, or gives null, which ends the reading with false.
 */
template <class Buckets, class ReadEntry>
bool readTable(qnTranscriber& transcriber, Buckets& buckets, unsigned nbuckets, unsigned entries, const char* operation,
               ReadEntry readEntry) {
    typedef typename Buckets::ElementType LinkPointer;
    typedef typename std::remove_pointer<LinkPointer>::type Link;
    if (std::uint64_t(nbuckets) * sizeof(void*) > heap::MaxBytes || !isBelievable(nbuckets, entries) ||
        !isBelievedBy(transcriber, nbuckets, entries)) {
        qnFatal("format error");
    }
    buckets.resize(nbuckets < BelievedBuckets ? nbuckets : BelievedBuckets);
    for (unsigned i = 0; i < entries; ++i) {
        unsigned b = 0;
        char* entry = readEntry(b);
        if (entry == nullptr) return false;
        if (b >= nbuckets) qnFatal("format error");
        // A large table grows with the entries that have arrived; their bucket numbers ascend.
        if (b >= buckets.length()) {
            if (!isBelievable(b, i + BelievedBuckets / BucketsPerEntry)) qnFatal("format error");
            unsigned twice = 2 * buckets.length();
            unsigned grown = b < twice ? twice : b + 1;
            buckets.resize(grown < nbuckets ? grown : nbuckets);
        }
        LinkPointer& head = buckets.elements()[b];
        head = heap::create<Link>(operation, entry, head);
    }
    if (buckets.length() != nbuckets) buckets.resize(nbuckets);
    return true;
}

}  // namespace chains

#endif
