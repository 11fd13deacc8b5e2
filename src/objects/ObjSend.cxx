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

}  // namespace

void qnObj::sendData(qnOutputChannel* output, qnData* box, qnSendFlags mode) { post(output, box, mode); }

void qnObj::sendVoid(qnOutputChannel* output, qnSendFlags mode) {
    post(output, heap::create<qnVoidData>("qnObj::sendVoid"), mode);
}

void qnObj::sendBool(qnOutputChannel* output, qnBool value, qnSendFlags mode) {
    post(output, heap::create<qnBoolData>("qnObj::sendBool", value), mode);
}

void qnObj::sendInt(qnOutputChannel* output, int value, qnSendFlags mode) {
    post(output, heap::create<qnIntData>("qnObj::sendInt", value), mode);
}

void qnObj::sendLong(qnOutputChannel* output, long value, qnSendFlags mode) {
    post(output, heap::create<qnLongData>("qnObj::sendLong", value), mode);
}

void qnObj::sendFloat(qnOutputChannel* output, float value, qnSendFlags mode) {
    post(output, heap::create<qnFloatData>("qnObj::sendFloat", value), mode);
}

void qnObj::sendDouble(qnOutputChannel* output, double value, qnSendFlags mode) {
    post(output, heap::create<qnDoubleData>("qnObj::sendDouble", value), mode);
}

void qnObj::sendCharPtr(qnOutputChannel* output, const char* value, qnSendFlags mode) {
    char* text = nullptr;
    if (value != nullptr) {
        text = strdup(value);
        if (text == nullptr) heap::outOfMemory("qnObj::sendCharPtr");
    }
    post(output, heap::create<qnCharPtrData>("qnObj::sendCharPtr", text), mode);
}
