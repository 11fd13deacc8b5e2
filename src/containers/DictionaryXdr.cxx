// Transcription of dictionaries.
#include "Dictionary.h"
#include "Fatal.h"
#include "Transcriber.h"
#include "containers/ChainTable.h"

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
        keySize = chains::believedRecord(streamKeySize);
        valueSize = chains::believedRecord(streamValueSize);
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
    return chains::readTable(transcriber, buckets, nbuckets, count, "qnDictionary::doxdr", [&](unsigned& b) -> char* {
        char* entry = newEntry("qnDictionary::doxdr");
        // Deliberate: after a failure in here the block of the current entry belongs to nobody.
        bool read = xdrKey(transcriber, entry) && xdrValue(transcriber, entry + keySize) && transcriber.xdr(&b, 1);
        return read ? entry : nullptr;
    });
}
