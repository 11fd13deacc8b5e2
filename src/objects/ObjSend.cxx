#include <cstring>

#include "Checked.h"
#include "EventHandler.h"
#include "Obj.h"
#include "core/Heap.h"

void qnObj::sendData(qnOutputChannel* output, qnData* box, qnSendFlags mode) {
    MORVAQNDS_REQUIRE(output != nullptr, "qnObj::sendData: no output");
    MORVAQNDS_REQUIRE(box != nullptr, "qnObj::sendData: no box");
    MORVAQNDS_REQUIRE(qn_theEventHandler != nullptr, "qnObj::sendData: the toolkit is not initialised");
    qn_theEventHandler->postMessage(output, box, mode);
}

void qnObj::sendVoid(qnOutputChannel* output, qnSendFlags mode) { sendData(output, new qnVoidData, mode); }

void qnObj::sendBool(qnOutputChannel* output, qnBool value, qnSendFlags mode) {
    sendData(output, new qnBoolData(value), mode);
}

void qnObj::sendInt(qnOutputChannel* output, int value, qnSendFlags mode) {
    sendData(output, new qnIntData(value), mode);
}

void qnObj::sendLong(qnOutputChannel* output, long value, qnSendFlags mode) {
    sendData(output, new qnLongData(value), mode);
}

void qnObj::sendFloat(qnOutputChannel* output, float value, qnSendFlags mode) {
    sendData(output, new qnFloatData(value), mode);
}

void qnObj::sendDouble(qnOutputChannel* output, double value, qnSendFlags mode) {
    sendData(output, new qnDoubleData(value), mode);
}

void qnObj::sendCharPtr(qnOutputChannel* output, const char* value, qnSendFlags mode) {
    char* text = nullptr;
    if (value != nullptr) {
        text = strdup(value);
        if (text == nullptr) heap::outOfMemory("qnObj::sendCharPtr");
    }
    sendData(output, new qnCharPtrData(text), mode);
}
