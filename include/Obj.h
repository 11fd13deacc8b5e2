#ifndef MORVAQNDS_OBJ_H
#define MORVAQNDS_OBJ_H

#include "DataType.h"
#include "Export.h"
#include "InputChannel.h"
#include "OutputChannel.h"
#include "Property.h"
#include "XDRObj.h"

class qnVoidPtrDict;

/**
 * An object that takes part in the flow of values: it carries properties, and inputs and outputs under names.
 *
 *     static void onLevel(Meter* meter, int level) { meter->show(level); }
 *
 *     tank->addOutput("level", qnDT_int);
 *     meter->addInput("level", meter, &onLevel);              // takes an int: the data type follows
 *     tank->connect("level", meter, "level");
 *     tank->sendInt(levelOutput, 7, qnObj::qnSF_Queued);      // arrives when the event loop distributes
 *
 * A send boxes the value and either calls the connected inputs now or queues a message for each. Where output and input
 * differ in type, a converter stands between them.
 *
 * Destroying an object disconnects its channels, drops the messages that wait for its inputs, and releases its
 * properties. A function that receives a value may do anything to channels and objects, its own included.
 *
 * Requires: the toolkit is initialised before an object gets its first channel or property.
 */
class MORVAQNDS_API qnObj : public qnXDRObj {
public:
    /** How a value travels. With any other number nothing is delivered, and the box is lost. */
    enum qnSendFlags : int {
        qnSF_Queued = 0,     ///< a message at the back of the queue for each connection
        qnSF_Immediate = 1,  ///< a call for each connection, now
        // Deliberate: each message goes in front of those before it, so the last connection receives first.
        qnSF_Urgent = 2  ///< a message at the front of the queue for each connection
    };

    qnObj() : properties_(nullptr) {}
    explicit qnObj(qnTypeObj& type) : qnXDRObj(type), properties_(nullptr) {}
    /** Copies no properties and no channels. */
    qnObj(const qnObj& other) : qnXDRObj(other), properties_(nullptr) {}
    /** Leaves properties and channels as they are. */
    qnObj& operator=(const qnObj&) { return *this; }
    ~qnObj() override;

    const char* className() const override;

    /**
     * Connects this object's output to an input of `other`, unless they are connected already. If an object or a name
     * is not there, nothing happens. Types without a conversion end the process: "Can't convert from %d to %d".
     */
    virtual void connect(const char* output, qnObj* other, const char* input);
    /** Ends the connection; if there is none, nothing happens. */
    virtual void disconnect(const char* output, qnObj* other, const char* input);
    /** Ends the process: "%s: Sub class must define method "%s"", with the class name and `method`. */
    virtual void subClassMustDefine(const char* method) const;

    /** For subclasses to define; here it ends the process. Yields 0. */
    int compare(const qnObj* other) const;

    // Channels.

    /**
     * Makes an input. `fn` receives values as `void (void* closure, V value)` with the `V` of `type` (see DataType.h);
     * an input of type `qnDT_void` accepts every output and receives the value in the output's own form.
     *
     * Deliberate: an input that is already there under the name is replaced, not disconnected: outputs that were
     * connected to it go on sending to it.
     */
    qnInputChannel* addInput(const char* name, unsigned short type, void* closure, qnDeliverFunc fn, qnBool latestOnly);
    /**
     * Makes an output. Deliberate: one that is already there under the name is destroyed, with its connections; unlike
     * an input, nobody but the object holds it.
     */
    qnOutputChannel* addOutput(const char* name, unsigned short type);
    /** Drops the messages that wait for the input, disconnects it and lets go of it. */
    void removeInput(const char* name);
    /** Destroys the output and its connections. */
    void removeOutput(const char* name);
    /** The input under a name, owned by this object; null if there is none. */
    qnInputChannel* findInput(const char* name) const;
    /** The output under a name, owned by this object; null if there is none. */
    qnOutputChannel* findOutput(const char* name) const;

    // Inputs from typed functions: no casts, and the data type is that of the function's value parameter. The
    // function's first parameter is the object, of its own type. Text arrives as `const char*` or `char*`, strings and
    // string arrays by value or const reference.

    template <class Owner, class Object, class Parameter>
    qnInputChannel* addInput(const char* name, Owner* object, void (*fn)(Object*, Parameter), qnBool latestOnly = 0) {
        typedef typename qnParameterType<Parameter>::Type Type;
        return addReceiver<Type, Object, Parameter>(name, object, fn, latestOnly);
    }
    /** An input for signals, of type `qnDT_void`. */
    template <class Owner, class Object>
    qnInputChannel* addInput(const char* name, Owner* object, void (*fn)(Object*), qnBool latestOnly = 0) {
        return addReceiver<qnDataType<void>, Object, void>(name, object, fn, latestOnly);
    }
    /** With the data type named: a function that does not take it does not compile. An int may stand for `qnBool`. */
    template <class Type, class Owner, class Object, class Parameter>
    qnInputChannel* addInput(const char* name, qnDataType<Type>, Owner* object, void (*fn)(Object*, Parameter),
                             qnBool latestOnly = 0) {
        static_assert(qnReceives<Type, Parameter>::value, "the function does not take values of this data type");
        return addReceiver<qnDataType<Type>, Object, Parameter>(name, object, fn, latestOnly);
    }
    template <class Owner, class Object>
    qnInputChannel* addInput(const char* name, qnDataType<void>, Owner* object, void (*fn)(Object*),
                             qnBool latestOnly = 0) {
        return addReceiver<qnDataType<void>, Object, void>(name, object, fn, latestOnly);
    }
#ifdef __cpp_nontype_template_parameter_auto
    /** `addInput<&onLevel>("level", meter)`: the quickest form; the input's closure is the object itself. */
    template <auto Function, class Owner>
    qnInputChannel* addInput(const char* name, Owner* object, qnBool latestOnly = 0) {
        typename qnBound<Function>::ObjectType* receiver = object;
        return addInput(name, typename qnBound<Function>::Type(), receiver,
                        reinterpret_cast<qnDeliverFunc>(&qnBound<Function>::deliver), latestOnly);
    }
#endif

    // Sending. None of these uses the object itself. Requires: the toolkit is initialised; the output is not null.

    /** Sends a box on an output and takes charge of it: who wants to keep it holds it. */
    void sendData(qnOutputChannel* output, qnData* box, qnSendFlags mode);
    void sendVoid(qnOutputChannel* output, qnSendFlags mode);
    void sendBool(qnOutputChannel* output, qnBool value, qnSendFlags mode);
    void sendInt(qnOutputChannel* output, int value, qnSendFlags mode);
    void sendLong(qnOutputChannel* output, long value, qnSendFlags mode);
    void sendFloat(qnOutputChannel* output, float value, qnSendFlags mode);
    void sendDouble(qnOutputChannel* output, double value, qnSendFlags mode);
    /** Sends a copy of the text; null travels as null. */
    void sendCharPtr(qnOutputChannel* output, const char* value, qnSendFlags mode);

    // Properties: at most one for a tag, sorted by tag.

    /** Sets a property, in place of the one that has its tag, and holds it. Returns this object. */
    qnObj* setProperty(qnProperty* property);
    /** Lets go of the property with `tag`, if there is one. Returns this object. */
    qnObj* removeProperty(unsigned short tag);
    qnObj* removeProperty(const char* name);
    /**
     * Lets go of all properties, lowest tag first. Returns this object. Meanwhile `getNumberOfProperties` still counts
     * the released ones, and their places are null.
     */
    qnObj* removeAllProperties();
    /**
     * The property with `tag`, or null. `index`, unless null, receives its index, or on a miss that of the last
     * property that the binary search looked at (0 when there are none).
     */
    qnProperty* findProperty(unsigned short tag, unsigned* index) const;
    qnProperty* findProperty(const char* name, unsigned* index) const;
    /** The property at `index` in order of tags. Requires: index < getNumberOfProperties(), if any was ever set. */
    qnProperty* getProperty(unsigned index) const;
    unsigned getNumberOfProperties() const;

private:
    template <class Type, class Object, class Parameter, class Owner, class Function>
    qnInputChannel* addReceiver(const char* name, Owner* owner, Function fn, qnBool latestOnly) {
        typedef qnReceiver<Type, Object, Parameter> Receiver;
        Object* object = owner;
        qnInputChannel* input = addInput(name, Type(), qnMakeReceiver<Receiver>(object, fn),
                                         reinterpret_cast<qnDeliverFunc>(&Receiver::deliver), latestOnly);
        input->ownClosure();
        return input;
    }

    qnVoidPtrArray* properties_;
};

#endif
