#include "StrStrDictionary.h"

#include "containers/StrRecord.h"
#include "core/Heap.h"

qnStrStrDictionary::qnStrStrDictionary(unsigned nbuckets) : qnStrKeyDictionary(sizeof(qnStr), nbuckets) {}

qnStrStrDictionary::qnStrStrDictionary(const qnStrStrDictionary& other) : qnStrKeyDictionary(other) {
    qnDictionary::operator=(other);
}

qnStrStrDictionary::qnStrStrDictionary(qnTypeObj& type) : qnStrKeyDictionary(type, sizeof(qnStr)) {}

qnStrStrDictionary::~qnStrStrDictionary() { cleanup(); }

const char* qnStrStrDictionary::className() const { return "DICT"; }

bool qnStrStrDictionary::xdr(qnTranscriber& transcriber) { return doxdr(transcriber); }

qnTypeObj& qnStrStrDictionary::getTypeObj() const { return qnStrStrDictionary_type; }

void* qnStrStrDictionary::newInstance(qnTypeObj& type) {
    return heap::create<qnStrStrDictionary>("qnStrStrDictionary::newInstance", type);
}

void qnStrStrDictionary::deleteInstance(void* object) { delete static_cast<qnStrStrDictionary*>(object); }

bool qnStrStrDictionary::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnStrStrDictionary*>(object)->doxdr(transcriber);
}

void qnStrStrDictionary::copyValue(const void* from, void* to) const { strrecord::copy(from, to); }

void qnStrStrDictionary::destroyValue(void* value) const { strrecord::destroy(value); }

void qnStrStrDictionary::createValue(void* to) const { new (to) qnStr(0u); }

bool qnStrStrDictionary::xdrKey(qnTranscriber& transcriber, void* key) { return strrecord::xdr(transcriber, key); }

bool qnStrStrDictionary::xdrValue(qnTranscriber& transcriber, void* value) {
    return strrecord::xdr(transcriber, value);
}

void qnStrStrDictionary::streamRecordSizes(unsigned& key, unsigned& value) const {
    key = value = strrecord::StreamSize;
}
