#ifndef MORVAQNDS_DATA_H
#define MORVAQNDS_DATA_H

#include <cstdlib>

#include "Export.h"
#include "RCObj.h"
#include "Sequencer.h"
#include "Str.h"
#include "StrArray.h"
#include "Types.h"

/**
 * A function that receives values, whatever they are: the common form in which channels keep it. Its real form is
 * `void (void* closure, V value)`, or `void (void* closure)` for `qnDT_void`; see DataType.h for the `V` of each type.
 */
typedef void (*qnDeliverFunc)();

/**
 * The data type codes: small numbers that name the types of values on channels and in properties. They are drawn from
 * `qn_nextDataType` by `qnInitializeToolkit` and are variables: compare with them, never with literal numbers. Before
 * that all are 0.
 */
extern MORVAQNDS_API unsigned short qnDT_void;        ///< no value: a pure signal
extern MORVAQNDS_API unsigned short qnDT_qnBool;      ///< `qnBool`
extern MORVAQNDS_API unsigned short qnDT_int;         ///< `int`
extern MORVAQNDS_API unsigned short qnDT_long;        ///< `long`
extern MORVAQNDS_API unsigned short qnDT_float;       ///< `float`
extern MORVAQNDS_API unsigned short qnDT_double;      ///< `double`
extern MORVAQNDS_API unsigned short qnDT_CharPtr;     ///< text, `char*`
extern MORVAQNDS_API unsigned short qnDT_qnStr;       ///< `qnStr`
extern MORVAQNDS_API unsigned short qnDT_VoidPtr;     ///< untyped pointer; properties only
extern MORVAQNDS_API unsigned short qnDT_ObjPtr;      ///< `qnObj*`; properties only
extern MORVAQNDS_API unsigned short qnDT_DataPtr;     ///< `qnData*`; properties only
extern MORVAQNDS_API unsigned short qnDT_qnStrArray;  ///< `qnStrArray`

/**
 * The allocator of data type codes. It stays available, so that a program can draw codes for types of its own. A
 * program that makes it before `qnInitializeToolkit` keeps its own, and then none of the codes above is assigned.
 */
extern MORVAQNDS_API qnSequencer* qn_nextDataType;

/**
 * A boxed value: one value of one data type, which knows how to hand itself to a function.
 *
 *     qnData* box = new qnIntData(7);
 *     qnRetain(box);
 *     box->deliverTo(reinterpret_cast<qnDeliverFunc>(&show), closure);     // calls show(closure, 7)
 *     qnRelease(box);
 *
 * Who takes a box retains it and who lets go releases it; the last one destroys it. A box that nobody took is destroyed
 * by whoever finishes the send that it was made for.
 */
class MORVAQNDS_API qnData {
public:
    explicit qnData(unsigned short type) : refCount(0), type_(type) {}
    virtual ~qnData() {}

    /** A printable name of the type of value. Deliberate: most kinds of box answer "TYPE". */
    virtual const char* dataName() const = 0;
    /** Calls `fn(arg, value)`. Requires: `fn` is a function of the form that the box's type of value has. */
    virtual void deliverTo(qnDeliverFunc fn, void* arg) = 0;
    /**
     * Assigns the value to the object of its own type at `out`; text stays the box's. Deliberate: `type` is ignored,
     * and nothing is converted: converting is the converters' business.
     */
    virtual void getValue(unsigned short type, void* out) = 0;
    /** Bytes that the value takes in memory. */
    virtual unsigned getSize() = 0;

    /** The data type code. */
    unsigned short getType() const { return type_; }

    unsigned refCount;  ///< holders: queued events, properties

private:
    qnData(const qnData&);
    qnData& operator=(const qnData&);

    unsigned short type_;
};

/** What the boxes of plain values share: `Value` is what they hold, `Argument` the form in which it is delivered. */
template <class Value, class Argument>
class MORVAQNDS_API qnValueData : public qnData {
public:
    const char* dataName() const override { return "TYPE"; }
    void deliverTo(qnDeliverFunc fn, void* arg) override {
        reinterpret_cast<void (*)(void*, Argument)>(fn)(arg, value_);
    }
    void getValue(unsigned short, void* out) override { *static_cast<Value*>(out) = value_; }
    unsigned getSize() override { return sizeof(Value); }

protected:
    qnValueData(unsigned short type, const Value& value) : qnData(type), value_(value) {}

    Value value_;
};

/** Delivers the byte in an argument the size of an int. */
class MORVAQNDS_API qnBoolData : public qnValueData<qnBool, int> {
public:
    explicit qnBoolData(qnBool value) : qnValueData(qnDT_qnBool, value) {}
};

class MORVAQNDS_API qnIntData : public qnValueData<int, int> {
public:
    explicit qnIntData(int value) : qnValueData(qnDT_int, value) {}
};

class MORVAQNDS_API qnLongData : public qnValueData<long, long> {
public:
    explicit qnLongData(long value) : qnValueData(qnDT_long, value) {}
};

/** Delivers the float as a float: it is not widened to double. */
class MORVAQNDS_API qnFloatData : public qnValueData<float, float> {
public:
    explicit qnFloatData(float value) : qnValueData(qnDT_float, value) {}
};

class MORVAQNDS_API qnDoubleData : public qnValueData<double, double> {
public:
    explicit qnDoubleData(double value) : qnValueData(qnDT_double, value) {}
};

/** Text that the box owns. It delivers the pointer itself: the text lives as long as the box. */
class MORVAQNDS_API qnCharPtrData : public qnValueData<char*, char*> {
public:
    /** Takes over `text`, a block from `malloc` or `strdup`, or null. */
    explicit qnCharPtrData(char* text) : qnValueData(qnDT_CharPtr, text) {}
    ~qnCharPtrData() override;
    /** "char *". */
    const char* dataName() const override;
};

/** No value: delivers by calling the function with the closure alone. */
class MORVAQNDS_API qnVoidData : public qnData {
public:
    qnVoidData() : qnData(qnDT_void) {}
    /** "void". */
    const char* dataName() const override;
    void deliverTo(qnDeliverFunc fn, void* arg) override;
    /** Writes nothing. */
    void getValue(unsigned short type, void* out) override;
    /** 0. */
    unsigned getSize() override;
};

/** Delivers a copy of its string, which is destroyed after the call. */
class MORVAQNDS_API qnStrData : public qnValueData<qnStr, qnStr> {
public:
    explicit qnStrData(const qnStr& value) : qnValueData(qnDT_qnStr, value) {}
};

/** Delivers a copy of its array, which is destroyed after the call. */
class MORVAQNDS_API qnStrArrayData : public qnValueData<qnStrArray, qnStrArray> {
public:
    explicit qnStrArrayData(const qnStrArray& value) : qnValueData(qnDT_qnStrArray, value) {}
    /**
     * Makes the array at `out` a copy. Deliberate: its block is freed and the strings in it are not destroyed, so their
     * texts leak: `resize(0)` it before.
     */
    void getValue(unsigned short type, void* out) override;
};

#endif
