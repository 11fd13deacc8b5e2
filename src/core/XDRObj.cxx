#include "XDRObj.h"

#include "core/Heap.h"

qnXDRObj::~qnXDRObj() {}

const char* qnXDRObj::className() const { return "qnXDRObj"; }

bool qnXDRObj::xdr(qnTranscriber&) { return true; }

qnTypeObj& qnXDRObj::getTypeObj() const { return qnXDRObj_type; }

bool qnXDRObj::xdrFail(qnTranscriber&, void*) { return false; }

void qnXDRObj::xdrSuccess(qnTranscriber&) {}

void* qnXDRObj::newInstance(qnTypeObj& type) { return heap::create<qnXDRObj>("qnXDRObj::newInstance", type); }

void qnXDRObj::deleteInstance(void* object) { delete static_cast<qnXDRObj*>(object); }

bool qnXDRObj::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<qnXDRObj*>(object)->qnXDRObj::xdr(transcriber);
}
