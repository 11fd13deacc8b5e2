#include <cstring>

#include "Checked.h"
#include "Obj.h"
#include "core/Heap.h"
#include "events/Post.h"

namespace {

inline void post(qnOutputChannel* output, qnData* box, qnObj::qnSendFlags mode) {
    MORVAQNDS_REQUIRE(output != nullptr, "qnObj::sendData: no output");
    MORVAQNDS_REQUIRE(box != nullptr, "qnObj::sendData: no box");
    MORVAQNDS_REQUIRE(qn_theEventHandler != nullptr, "qnObj::sendData: the toolkit is not initialised");
    postBox(*qn_theEventHandler, output, box, mode);
}

/**
 * Boxes a value and posts the box. One that is delivered at once is over when this returns, and nobody sees more of it
 * than its value: it needs no block.
 */
template <class Box, class... Value>
void postValue(qnOutputChannel* output, qnObj::qnSendFlags mode, const char* operation, Value... value) {
    if (mode == qnObj::qnSF_Immediate) {
        Box box(value...);
        box.refCount = 1;  // who lets go of it last does not delete it
        post(output, &box, mode);
    } else {
        post(output, heap::create<Box>(operation, value...), mode);
    }
}

}  // namespace

void qnObj::sendData(qnOutputChannel* output, qnData* box, qnSendFlags mode) { post(output, box, mode); }

void qnObj::sendVoid(qnOutputChannel* output, qnSendFlags mode) {
    postValue<qnVoidData>(output, mode, "qnObj::sendVoid");
}

void qnObj::sendBool(qnOutputChannel* output, qnBool value, qnSendFlags mode) {
    postValue<qnBoolData>(output, mode, "qnObj::sendBool", value);
}

void qnObj::sendInt(qnOutputChannel* output, int value, qnSendFlags mode) {
    postValue<qnIntData>(output, mode, "qnObj::sendInt", value);
}

void qnObj::sendLong(qnOutputChannel* output, long value, qnSendFlags mode) {
    postValue<qnLongData>(output, mode, "qnObj::sendLong", value);
}

void qnObj::sendFloat(qnOutputChannel* output, float value, qnSendFlags mode) {
    postValue<qnFloatData>(output, mode, "qnObj::sendFloat", value);
}

void qnObj::sendDouble(qnOutputChannel* output, double value, qnSendFlags mode) {
    postValue<qnDoubleData>(output, mode, "qnObj::sendDouble", value);
}

void qnObj::sendCharPtr(qnOutputChannel* output, const char* value, qnSendFlags mode) {
    char* text = nullptr;
    if (value != nullptr) {
        text = strdup(value);
        if (text == nullptr) heap::outOfMemory("qnObj::sendCharPtr");
    }
    postValue<qnCharPtrData>(output, mode, "qnObj::sendCharPtr", text);
}
