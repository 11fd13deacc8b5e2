// What the typed arrays add to their common pattern: a type object each, or at least a class of their own.
#include <cstring>

#include "Dictionary.h"
#include "NumberArrays.h"
#include "SeqRangeArray.h"
#include "Set.h"
#include "StubFuncArray.h"
#include "VoidPtrArray.h"

void qnZeroFilledArray::createElements(void* at, unsigned nbytes) {
    if (nbytes != 0) std::memset(at, 0, nbytes);
}

qnTypeObj& qnBoolArray::getTypeObj() const { return qnBoolArray_type; }
qnTypeObj& qnCharArray::getTypeObj() const { return qnCharArray_type; }
qnTypeObj& qnUnsignedCharArray::getTypeObj() const { return qnUnsignedCharArray_type; }
qnTypeObj& qnShortArray::getTypeObj() const { return qnShortArray_type; }
qnTypeObj& qnUnsignedShortArray::getTypeObj() const { return qnUnsignedShortArray_type; }
qnTypeObj& qnIntArray::getTypeObj() const { return qnIntArray_type; }
qnTypeObj& qnLongArray::getTypeObj() const { return qnLongArray_type; }
qnTypeObj& qnUnsignedLongArray::getTypeObj() const { return qnUnsignedLongArray_type; }
qnTypeObj& qnFloatArray::getTypeObj() const { return qnFloatArray_type; }
qnTypeObj& qnDoubleArray::getTypeObj() const { return qnDoubleArray_type; }

const char* qnVoidPtrArray::className() const { return "ARRAY"; }
const char* qnSeqRangeArray::className() const { return "ARRAY"; }
const char* qnStubFuncArray::className() const { return "ARRAY"; }
const char* qnDictBuckets::className() const { return "ARRAY"; }
const char* qnDictIters::className() const { return "ARRAY"; }
const char* qnSetBuckets::className() const { return "ARRAY"; }
const char* qnSetIters::className() const { return "ARRAY"; }
