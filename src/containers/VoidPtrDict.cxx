#include "VoidPtrDict.h"

#include <cstring>

qnVoidPtrDict::qnVoidPtrDict(unsigned nbuckets) : qnStrKeyDictionary(sizeof(void*), nbuckets) {}

qnVoidPtrDict::qnVoidPtrDict(const qnVoidPtrDict& other) : qnStrKeyDictionary(other) { qnDictionary::operator=(other); }

qnVoidPtrDict::~qnVoidPtrDict() { cleanup(); }

const char* qnVoidPtrDict::className() const { return "DICT"; }

void qnVoidPtrDict::copyValue(const void* from, void* to) const { std::memcpy(to, from, sizeof(void*)); }

void qnVoidPtrDict::createValue(void* to) const {
    void* null = nullptr;
    std::memcpy(to, &null, sizeof null);
}

bool qnVoidPtrDict::xdrKey(qnTranscriber&, void*) { return false; }

bool qnVoidPtrDict::xdrValue(qnTranscriber&, void*) { return false; }
