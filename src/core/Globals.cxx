// Everything that the library builds while it is loaded, in one file, because the order matters and must not hang on
// the order of linking: static objects of one file are built from top to bottom.
#include "BinaryTranscriber.h"
#include "Converter.h"
#include "Debug.h"
#include "EventHandler.h"
#include "Exec.h"
#include "NumberArrays.h"
#include "OrderedGlobal.h"
#include "Property.h"
#include "Set.h"
#include "Str.h"
#include "StrArray.h"
#include "StrSet.h"
#include "StrStrDictionary.h"
#include "TypeObj.h"
#include "XDRObj.h"
#include "core/Heap.h"

namespace {

/** Draws the data type codes, in the order that gives them their usual values. */
void drawDataTypes() {
    unsigned short* const codes[] = {&qnDT_void,    &qnDT_qnBool, &qnDT_int,     &qnDT_long,
                                     &qnDT_float,   &qnDT_double, &qnDT_CharPtr, &qnDT_qnStr,
                                     &qnDT_VoidPtr, &qnDT_ObjPtr, &qnDT_DataPtr, &qnDT_qnStrArray};
    for (unsigned short* code : codes) *code = static_cast<unsigned short>((*qn_nextDataType)());
}

/**
 * Builds the library's singletons, each after what it needs.
 *
 * Deliberate: each only if it does not exist yet. A program that makes one first keeps its own, and where that is an
 * allocator, no code is drawn from it.
 */
void qnOG_Init_cons() {
    qnProperty::constructPropertyNames();
    if (qn_nextDataType == nullptr) {
        qn_nextDataType = heap::create<qnSequencer>("qnInitializeToolkit");
        drawDataTypes();
    }
    qnConverter::createStandardConverters();
    if (qn_theExecutive == nullptr) qn_theExecutive = heap::create<qnExec>("qnInitializeToolkit");
    if (qn_theEventHandler == nullptr) qn_theEventHandler = heap::create<qnEventHandler>("qnInitializeToolkit");
    if (qn_nextEventType == nullptr) {
        qn_nextEventType = heap::create<qnSequencer>("qnInitializeToolkit");
        qnET_Unknown = (*qn_nextEventType)();
        qnET_MessageEvent = (*qn_nextEventType)();
    }
    if (qn_theDebugger == nullptr) qn_theDebugger = heap::create<qnDebug>("qnInitializeToolkit", true);
}

void qnOG_Init_dest() {}

qnOrderedGlobal* transcriberNeeds[] = {&qnOG_Init, nullptr};

constexpr unsigned TypeVersion = 1;

}  // namespace

qnTypeObj qnXDRObj_type("qnXDRObj", TypeVersion, qnXDRObj::newInstance, qnXDRObj::deleteInstance, qnXDRObj::xdr);
qnTypeObj qnStr_type("qnStr", TypeVersion, qnStr::newInstance, qnStr::deleteInstance, qnStr::xdr);

// Declared in this order, so that the library's initialisation precedes the registry of transcribers.
qnOrderedGlobal qnOG_Init(qnOG_Init_cons, qnOG_Init_dest, nullptr, 1);
qnOrderedGlobal qnOG_Transcriber(cons, transcriberNeeds, 1);

// Abstract classes have no factories.
qnTypeObj qnArray_type("qnArray", TypeVersion, nullptr, nullptr, qnArray::xdr);
qnTypeObj qnDictionary_type("qnDictionary", TypeVersion, nullptr, nullptr, qnDictionary::xdr);
qnTypeObj qnSet_type("qnSet", TypeVersion, nullptr, nullptr, qnSet::xdr);

// Deliberate: all arrays register under one name, which streams record for them. The last one, the string array, is
// what the name finds.
qnTypeObj qnBoolArray_type("ARRAY", TypeVersion, qnBoolArray::newInstance, qnBoolArray::deleteInstance,
                           qnBoolArray::xdr);
qnTypeObj qnCharArray_type("ARRAY", TypeVersion, qnCharArray::newInstance, qnCharArray::deleteInstance,
                           qnCharArray::xdr);
qnTypeObj qnShortArray_type("ARRAY", TypeVersion, qnShortArray::newInstance, qnShortArray::deleteInstance,
                            qnShortArray::xdr);
qnTypeObj qnIntArray_type("ARRAY", TypeVersion, qnIntArray::newInstance, qnIntArray::deleteInstance, qnIntArray::xdr);
qnTypeObj qnLongArray_type("ARRAY", TypeVersion, qnLongArray::newInstance, qnLongArray::deleteInstance,
                           qnLongArray::xdr);
qnTypeObj qnFloatArray_type("ARRAY", TypeVersion, qnFloatArray::newInstance, qnFloatArray::deleteInstance,
                            qnFloatArray::xdr);
qnTypeObj qnDoubleArray_type("ARRAY", TypeVersion, qnDoubleArray::newInstance, qnDoubleArray::deleteInstance,
                             qnDoubleArray::xdr);
qnTypeObj qnUnsignedCharArray_type("ARRAY", TypeVersion, qnUnsignedCharArray::newInstance,
                                   qnUnsignedCharArray::deleteInstance, qnUnsignedCharArray::xdr);
qnTypeObj qnUnsignedShortArray_type("ARRAY", TypeVersion, qnUnsignedShortArray::newInstance,
                                    qnUnsignedShortArray::deleteInstance, qnUnsignedShortArray::xdr);
qnTypeObj qnUnsignedLongArray_type("ARRAY", TypeVersion, qnUnsignedLongArray::newInstance,
                                   qnUnsignedLongArray::deleteInstance, qnUnsignedLongArray::xdr);
qnTypeObj qnStrArray_type("ARRAY", TypeVersion, qnStrArray::newInstance, qnStrArray::deleteInstance, qnStrArray::xdr);

qnTypeObj qnStrStrDictionary_type("DICT", TypeVersion, qnStrStrDictionary::newInstance,
                                  qnStrStrDictionary::deleteInstance, qnStrStrDictionary::xdr);
qnTypeObj qnStrSet_type("SET", TypeVersion, qnStrSet::newInstance, qnStrSet::deleteInstance, qnStrSet::xdr);
