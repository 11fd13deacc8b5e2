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

/** The largest record for which a stream's mere claim is believed, in bytes: as large as an array's elements can be. */
constexpr unsigned BelievedRecord = 0xFFFF;

/** The size of a record, as a stream states it for a class that has not said how large its records are. */
inline unsigned believedRecord(unsigned nbytes) {
    if (nbytes > BelievedRecord) qnFatal("format error");
    return nbytes;
}

/** Many tables are a large part of the memory too: there is a limit on what is believed in all of them. */
inline bool isBelievedBy(qnTranscriber& transcriber, unsigned nbuckets, unsigned entries) {
    const std::uint64_t likely = BucketsPerEntry * (std::uint64_t(entries) + 1);
    return nbuckets <= likely || qnReadSupport::believesBuckets(transcriber, static_cast<unsigned>(nbuckets - likely));
}

/** Entries that have arrived before the part of the table that they belong to, in the order of arrival. */
template <class Buckets>
class EarlyEntries {
public:
    typedef typename Buckets::ElementType Link;

    explicit EarlyEntries(Buckets& buckets) : buckets_(buckets), first_(nullptr), last_(&first_) {}

    /** What is left when the reading ends early goes where it is found and destroyed with the others. */
    ~EarlyEntries() { place(); }

    EarlyEntries(const EarlyEntries&) = delete;
    EarlyEntries& operator=(const EarlyEntries&) = delete;

    void add(unsigned bucket, Link link, const char* operation) {
        *last_ = heap::create<Early>(operation, Early{bucket, link, nullptr});
        last_ = &(*last_)->next;
    }

    /** Pushes each at the head of its chain. */
    void place() {
        while (first_ != nullptr) {
            Early* early = first_;
            first_ = early->next;
            Link& head = buckets_.elements()[early->bucket < buckets_.length() ? early->bucket : 0];
            early->link->next = head;
            head = early->link;
            delete early;
        }
        last_ = &first_;
    }

private:
    struct Early {
        unsigned bucket;
        Link link;
        Early* next;
    };

    Buckets& buckets_;
    Early* first_;
    Early** last_;
};

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
    // A larger table is made when the entries that are claimed have arrived.
    buckets.resize(nbuckets < BelievedBuckets ? nbuckets : BelievedBuckets);
    EarlyEntries<Buckets> early(buckets);
    for (unsigned i = 0; i < entries; ++i) {
        unsigned b = 0;
        char* entry = readEntry(b);
        if (entry == nullptr) return false;
        if (b >= nbuckets) qnFatal("format error");
        if (b < buckets.length()) {
            LinkPointer& head = buckets.elements()[b];
            head = heap::create<Link>(operation, entry, head);
        } else {
            early.add(b, heap::create<Link>(operation, entry, nullptr), operation);
        }
    }
    if (buckets.length() != nbuckets) buckets.resize(nbuckets);
    early.place();
    return true;
}

}  // namespace chains

#endif
