#include "Property.h"

#include <cstdlib>
#include <cstring>

#include "Checked.h"
#include "Obj.h"
#include "Str.h"
#include "core/Heap.h"
#include "core/Watch.h"
#include "objects/ObjRelease.h"

namespace {

void release(qnObj* object) { releaseHeld(object); }
void release(qnData* box) { qnRelease(box); }

/**
 * Deliberate: holds the new value before the old one is let go, for they may be the same, or the old one may hold the
 * new one. The old one's destructor finds the new one in the property.
 */
template <class Value>
void replace(Value*& held, Value* value) {
    Value* old = held;
    qnRetain(value);
    held = value;
    release(old);
}

}  // namespace

qnProperty::qnProperty(unsigned short tag, unsigned short type) : refCount(0), tag_(tag), type_(type) {
    MORVAQNDS_REQUIRE(qn_nextDataType != nullptr, "qnProperty::qnProperty: the toolkit is not initialised");
    std::memset(&value_, 0, sizeof value_);
}

qnProperty::qnProperty(unsigned short tag, qnBool value) : qnProperty(tag, qnDT_qnBool) { value_.boolean = value; }

qnProperty::qnProperty(unsigned short tag, long value) : qnProperty(tag, qnDT_long) { value_.integer = value; }

qnProperty::qnProperty(unsigned short tag, double value) : qnProperty(tag, qnDT_double) { value_.real = value; }

qnProperty::qnProperty(unsigned short tag, const char* text, qnBool owned) : qnProperty(tag, qnDT_CharPtr) {
    value_.text = {text, owned};
}

qnProperty::qnProperty(unsigned short tag, const qnStr& value) : qnProperty(tag, qnDT_qnStr) {
    value_.string = heap::create<qnStr>("qnProperty::qnProperty", value);
}

qnProperty::qnProperty(unsigned short tag, void* pointer, Release release) : qnProperty(tag, qnDT_VoidPtr) {
    value_.pointer = {pointer, release};
}

qnProperty::qnProperty(unsigned short tag, qnObj* object) : qnProperty(tag, qnDT_ObjPtr) {
    qnRetain(object);
    value_.object = object;
}

qnProperty::qnProperty(unsigned short tag, qnData* box) : qnProperty(tag, qnDT_DataPtr) {
    qnRetain(box);
    value_.box = box;
}

qnProperty::~qnProperty() {
    cleanup();
    Watch::gone(this);
}

// What is given up leaves the property first: releasing it may come back here.
void qnProperty::cleanup() {
    const Value old = value_;
    if (type_ == qnDT_qnBool || type_ == qnDT_long || type_ == qnDT_double) return;

    if (type_ == qnDT_CharPtr) {
        value_.text = {nullptr, 0};
        if (old.text.owned) std::free(const_cast<char*>(old.text.text));
    } else if (type_ == qnDT_qnStr) {
        value_.string = nullptr;
        delete old.string;
    } else if (type_ == qnDT_VoidPtr) {
        value_.pointer.release = nullptr;
        if (old.pointer.release != nullptr) old.pointer.release(old.pointer.pointer);
    } else if (type_ == qnDT_ObjPtr) {
        value_.object = nullptr;
        release(old.object);
    } else if (type_ == qnDT_DataPtr) {
        value_.box = nullptr;
        release(old.box);
    }
}

unsigned short qnProperty::getType() const {
    if (type_ == qnDT_DataPtr && value_.box != nullptr) return value_.box->getType();
    return type_;
}

void qnProperty::requireKind(unsigned short type, const char* operation) const {
    MORVAQNDS_REQUIRE(type_ == type, "qnProperty::%s: property %u is of type %u, not %u", operation, tag_, type_, type);
    static_cast<void>(type);
    static_cast<void>(operation);
}

// Deliberate: the getters do not ask for the recorded type. Reading another kind as a number gives bits of it. Reading
// it as a pointer would give a wild one, which a checked build does not hand out.

/** Whether a getter may hand out the value as a pointer of `type`. */
bool qnProperty::mayPoint(unsigned short type) const {
#ifdef MORVAQNDS_CHECKED
    return type_ == type;
#else
    static_cast<void>(type);
    return true;
#endif
}

qnBool qnProperty::getAsBool() const { return value_.boolean; }

long qnProperty::getAsLong() const { return value_.integer; }

double qnProperty::getAsDouble() const { return value_.real; }

const char* qnProperty::getAsCharPtr() const { return mayPoint(qnDT_CharPtr) ? value_.text.text : nullptr; }

const qnStr& qnProperty::getAsStr() const {
    static const qnStr none;
    return mayPoint(qnDT_qnStr) && value_.string != nullptr ? *value_.string : none;
}

void* qnProperty::getAsVoidPtr() const { return mayPoint(qnDT_VoidPtr) ? value_.pointer.pointer : nullptr; }

qnObj* qnProperty::getAsObjPtr() const { return mayPoint(qnDT_ObjPtr) ? value_.object : nullptr; }

qnData* qnProperty::getAsData() const { return mayPoint(qnDT_DataPtr) ? value_.box : nullptr; }

void qnProperty::setAsBool(qnBool value) {
    requireKind(qnDT_qnBool, "setAsBool");
    value_.boolean = value;
}

void qnProperty::setAsLong(long value) {
    requireKind(qnDT_long, "setAsLong");
    value_.integer = value;
}

void qnProperty::setAsDouble(double value) {
    requireKind(qnDT_double, "setAsDouble");
    value_.real = value;
}

void qnProperty::setAsCharPtr(const char* text, qnBool owned) {
    requireKind(qnDT_CharPtr, "setAsCharPtr");
    const Text old = value_.text;
    value_.text = {text, owned};
    if (old.owned && old.text != text) std::free(const_cast<char*>(old.text));
}

void qnProperty::setAsStr(const qnStr& value) {
    requireKind(qnDT_qnStr, "setAsStr");
    if (value_.string == nullptr) {
        value_.string = heap::create<qnStr>("qnProperty::setAsStr", value);  // after cleanup
    } else {
        *value_.string = value;
    }
}

void qnProperty::setAsVoidPtr(void* pointer, Release release) {
    requireKind(qnDT_VoidPtr, "setAsVoidPtr");
    const Pointer old = value_.pointer;
    value_.pointer.release = nullptr;  // the call may set the property again
    const Watch watch(this);
    if (old.release != nullptr) old.release(old.pointer);
    if (watch.alive()) {
        value_.pointer = {pointer, release};
    } else if (release != nullptr) {
        release(pointer);  // the call removed the property
    }
}

void qnProperty::setAsObjPtr(qnObj* object) {
    requireKind(qnDT_ObjPtr, "setAsObjPtr");
    replace(value_.object, object);
}

void qnProperty::setAsData(qnData* box) {
    requireKind(qnDT_DataPtr, "setAsData");
    replace(value_.box, box);
}
