#include "Data.h"

qnCharPtrData::~qnCharPtrData() { std::free(value_); }

const char* qnCharPtrData::dataName() const { return "char *"; }

const char* qnVoidData::dataName() const { return "void"; }

void qnVoidData::deliverTo(qnDeliverFunc fn, void* arg) { reinterpret_cast<void (*)(void*)>(fn)(arg); }

void qnVoidData::getValue(unsigned short, void*) {}

unsigned qnVoidData::getSize() { return 0; }

void qnStrArrayData::getValue(unsigned short, void* out) {
    qnStrArray& array = *static_cast<qnStrArray*>(out);
    void* old = array.data;
    array.maxBytes = value_.maxBytes;
    array.usedBytes = value_.usedBytes;
    array.data = static_cast<char*>(value_.raw_copy());
    std::free(old);
}

unsigned short qnDT_void;
unsigned short qnDT_qnBool;
unsigned short qnDT_int;
unsigned short qnDT_long;
unsigned short qnDT_float;
unsigned short qnDT_double;
unsigned short qnDT_CharPtr;
unsigned short qnDT_qnStr;
unsigned short qnDT_VoidPtr;
unsigned short qnDT_ObjPtr;
unsigned short qnDT_DataPtr;
unsigned short qnDT_qnStrArray;

qnSequencer* qn_nextDataType;
