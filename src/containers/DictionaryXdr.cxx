// Transcription of dictionaries.
#include "Dictionary.h"
#include "Fatal.h"
#include "Transcriber.h"
#include "core/Heap.h"
#include "serial/ReadSupport.h"

namespace {

/**
 * Tables of up to this many buckets are believed whatever they hold; larger ones only with an entry for every
 * `BucketsPerEntry` buckets, so that a few bytes of a stream cannot claim a large part of the memory.
 */
constexpr unsigned BelievedBuckets = 1u << 20;
constexpr unsigned BucketsPerEntry = 64;

// Deliberate: a large table that is almost empty can be written and not be read.
bool isBelievable(unsigned nbuckets, unsigned entries) {
    return nbuckets <= BelievedBuckets || nbuckets / BucketsPerEntry <= entries;
}

/** Many tables are a large part of the memory too: there is a limit on what is believed in all of them. */
bool isBelievedBy(qnTranscriber& transcriber, unsigned nbuckets, unsigned entries) {
    std::uint64_t likely = BucketsPerEntry * (std::uint64_t(entries) + 1);
    return nbuckets <= likely || qnReadSupport::believesBuckets(transcriber, static_cast<unsigned>(nbuckets - likely));
}

}  // namespace

bool qnDictionary::xdr(qnTranscriber& transcriber) {
    return transcriber.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this));
}

bool qnDictionary::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnDictionary*>(object)->qnDictionary::xdr(transcriber);
}

qnTypeObj& qnDictionary::getTypeObj() const { return qnDictionary_type; }

bool qnDictionary::doxdr(qnTranscriber& transcriber) {
    unsigned ownKeySize, ownValueSize;
    streamRecordSizes(ownKeySize, ownValueSize);
    unsigned streamKeySize = ownKeySize, streamValueSize = ownValueSize;
    unsigned nbuckets = transcriber.reading ? 0 : buckets.length();
    if (!transcriber.xdr(&count, 1) || !transcriber.xdr(&streamKeySize, 1) || !transcriber.xdr(&streamValueSize, 1) ||
        !transcriber.xdr(&nbuckets, 1)) {
        return false;
    }
    if (!transcriber.reading) return writeEntries(transcriber);

    if (keySize == 0 && valueSize == 0) {
        // A class that has not said how large its records are takes those of the stream.
        keySize = streamKeySize;
        valueSize = streamValueSize;
    } else if (streamKeySize != ownKeySize || streamValueSize != ownValueSize) {
        qnFatal("format error");
    }
    return readEntries(transcriber, nbuckets);
}

bool qnDictionary::writeEntries(qnTranscriber& transcriber) {
    for (unsigned b = 0; b < buckets.length(); ++b) {
        for (qnDictBucket* link = buckets.elements()[b]; link != nullptr; link = link->next) {
            if (!xdrKey(transcriber, link->entry) || !xdrValue(transcriber, link->entry + keySize) ||
                !transcriber.xdr(&b, 1)) {
                return false;
            }
        }
    }
    return true;
}

bool qnDictionary::readEntries(qnTranscriber& transcriber, unsigned nbuckets) {
    const unsigned entries = count;
    if (std::uint64_t(nbuckets) * sizeof(void*) > heap::MaxBytes || !isBelievable(nbuckets, entries) ||
        !isBelievedBy(transcriber, nbuckets, entries)) {
        qnFatal("format error");
    }
    buckets.resize(nbuckets < BelievedBuckets ? nbuckets : BelievedBuckets);
    for (unsigned i = 0; i < entries; ++i) {
        char* entry = newEntry();
        unsigned b;
        // Deliberate: after a failure in here the block of the current entry belongs to nobody.
        if (!xdrKey(transcriber, entry) || !xdrValue(transcriber, entry + keySize) || !transcriber.xdr(&b, 1)) {
            return false;
        }
        if (b >= nbuckets) qnFatal("format error");
        // A large table grows with the entries that have arrived; their bucket numbers ascend.
        if (b >= buckets.length()) {
            if (!isBelievable(b, i + BelievedBuckets / BucketsPerEntry)) qnFatal("format error");
            unsigned twice = 2 * buckets.length();
            unsigned grown = b < twice ? twice : b + 1;
            buckets.resize(grown < nbuckets ? grown : nbuckets);
        }
        qnDictBucket*& head = buckets.elements()[b];
        head = new qnDictBucket(entry, head);
    }
    if (buckets.length() != nbuckets) buckets.resize(nbuckets);
    return true;
}
