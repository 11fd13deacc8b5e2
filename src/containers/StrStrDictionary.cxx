#include "StrStrDictionary.h"

#include <new>

#include "core/Heap.h"

namespace {

/** Bytes of a string record in a dictionary's numbers in a stream, on every machine. */
constexpr unsigned StreamRecordSize = 8;

bool xdrString(qnTranscriber& transcriber, void* record) {
    if (transcriber.reading) new (record) qnStr(qnStr_type);
    return static_cast<qnStr*>(record)->xdr(transcriber);
}

}  // namespace

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

void qnStrStrDictionary::copyValue(const void* from, void* to) const {
    new (to) qnStr(*static_cast<const qnStr*>(from));
}

void qnStrStrDictionary::destroyValue(void* value) const { static_cast<qnStr*>(value)->~qnStr(); }

void qnStrStrDictionary::createValue(void* to) const { new (to) qnStr(0u); }

bool qnStrStrDictionary::xdrKey(qnTranscriber& transcriber, void* key) { return xdrString(transcriber, key); }

bool qnStrStrDictionary::xdrValue(qnTranscriber& transcriber, void* value) { return xdrString(transcriber, value); }

void qnStrStrDictionary::streamRecordSizes(unsigned& key, unsigned& value) const { key = value = StreamRecordSize; }
