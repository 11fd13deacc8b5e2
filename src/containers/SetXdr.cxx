// Transcription of sets.
#include "Fatal.h"
#include "Set.h"
#include "Transcriber.h"
#include "containers/ChainTable.h"

bool qnSet::xdr(qnTranscriber& transcriber) {
    if (isDismantled()) return qnXDRObj::xdr(transcriber);
    return transcriber.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this));
}

bool qnSet::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnSet*>(object)->qnSet::xdr(transcriber);
}

qnTypeObj& qnSet::getTypeObj() const { return isDismantled() ? qnXDRObj_type : qnSet_type; }

bool qnSet::doxdr(qnTranscriber& transcriber) {
    const unsigned ownKeySize = streamKeySize();
    unsigned statedKeySize = ownKeySize;
    unsigned nbuckets = transcriber.reading ? 0 : buckets.length();
    if (!transcriber.xdr(&count, 1) || !transcriber.xdr(&statedKeySize, 1) || !transcriber.xdr(&nbuckets, 1)) {
        return false;
    }
    if (!transcriber.reading) return writeEntries(transcriber);

    if (keySize == 0) {
        // A class that has not said how large its keys are takes the size of the stream.
        keySize = chains::believedRecord(statedKeySize);
    } else if (statedKeySize != ownKeySize) {
        qnFatal("format error");
    }
    return readEntries(transcriber, nbuckets);
}

bool qnSet::writeEntries(qnTranscriber& transcriber) {
    for (unsigned b = 0; b < buckets.length(); ++b) {
        for (qnSetBucket* link = buckets.elements()[b]; link != nullptr; link = link->next) {
            if (!xdrKey(transcriber, link->entry) || !transcriber.xdr(&b, 1)) return false;
        }
    }
    return true;
}

bool qnSet::readEntries(qnTranscriber& transcriber, unsigned nbuckets) {
    return chains::readTable(transcriber, buckets, nbuckets, count, "qnSet::doxdr", [&](unsigned& b) -> char* {
        char* entry = newEntry("qnSet::doxdr");
        // Deliberate: after a failure in here the block of the current key belongs to nobody.
        return xdrKey(transcriber, entry) && transcriber.xdr(&b, 1) ? entry : nullptr;
    });
}
