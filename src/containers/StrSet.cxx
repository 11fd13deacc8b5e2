#include "StrSet.h"

#include "containers/StrRecord.h"
#include "core/Heap.h"

qnStrSet::qnStrSet(unsigned nbuckets) : qnSet(sizeof(qnStr), nbuckets) {}

qnStrSet::qnStrSet(const qnStrSet& other) : qnSet(other) { keySize = sizeof(qnStr); }

qnStrSet::qnStrSet(qnTypeObj& type) : qnSet(type) { keySize = sizeof(qnStr); }

qnStrSet::~qnStrSet() { cleanup(); }

bool qnStrSet::xdr(qnTranscriber& transcriber) {
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): a dismantled set is a bare root object
    return isDismantled() ? qnXDRObj::xdr(transcriber) : doxdr(transcriber);
}

qnTypeObj& qnStrSet::getTypeObj() const { return isDismantled() ? qnXDRObj_type : qnStrSet_type; }

void* qnStrSet::newInstance(qnTypeObj& type) { return heap::create<qnStrSet>("qnStrSet::newInstance", type); }

void qnStrSet::deleteInstance(void* object) { delete static_cast<qnStrSet*>(object); }

bool qnStrSet::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnStrSet*>(object)->doxdr(transcriber);
}

unsigned long qnStrSet::hashKey(const void* key) const { return strrecord::hash(key); }

int qnStrSet::compareKeys(const void* a, const void* b) const { return strrecord::compare(a, b); }

void qnStrSet::copyKey(const void* from, void* to) const { strrecord::copy(from, to); }

void qnStrSet::destroyKey(void* key) const { strrecord::destroy(key); }

bool qnStrSet::xdrKey(qnTranscriber& transcriber, void* key) { return strrecord::xdr(transcriber, key); }

unsigned qnStrSet::streamKeySize() const { return strrecord::StreamSize; }
