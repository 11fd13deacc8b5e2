#ifndef MORVAQNDS_DATATYPE_H
#define MORVAQNDS_DATATYPE_H

#include <cstdlib>
#include <type_traits>

#include "Data.h"
#include "Fatal.h"
#include "Types.h"

/**
 * Data types for the compiler: `qnDataType<int>` stands for `qnDT_int` and knows the form in which an int is delivered.
 *
 *     object->addOutput("level", qnDataType<int>());                     // converts to the code
 *     object->addInput("level", qnDataType<int>(), meter, &onLevel);     // checked: onLevel takes an int
 *
 * A type that cannot travel on a channel has none: naming it does not compile.
 */
template <class Value>
struct qnDataType;

template <>
struct qnDataType<void> {
    operator unsigned short() const { return qnDT_void; }
};
template <>
struct qnDataType<qnBool> {
    typedef int Form;  ///< a byte is delivered in an argument the size of an int
    operator unsigned short() const { return qnDT_qnBool; }
};
template <>
struct qnDataType<int> {
    typedef int Form;
    operator unsigned short() const { return qnDT_int; }
};
template <>
struct qnDataType<long> {
    typedef long Form;
    operator unsigned short() const { return qnDT_long; }
};
template <>
struct qnDataType<float> {
    typedef float Form;
    operator unsigned short() const { return qnDT_float; }
};
template <>
struct qnDataType<double> {
    typedef double Form;
    operator unsigned short() const { return qnDT_double; }
};
template <>
struct qnDataType<char*> {
    typedef char* Form;
    operator unsigned short() const { return qnDT_CharPtr; }
};
template <>
struct qnDataType<const char*> : qnDataType<char*> {};
template <>
struct qnDataType<qnStr> {
    typedef qnStr Form;
    operator unsigned short() const { return qnDT_qnStr; }
};
template <>
struct qnDataType<qnStrArray> {
    typedef qnStrArray Form;
    operator unsigned short() const { return qnDT_qnStrArray; }
};

/** The data type of a function's value parameter: `const qnStr&` receives a `qnStr`. */
template <class Parameter>
struct qnParameterType {
    typedef qnDataType<typename std::remove_cv<typename std::remove_reference<Parameter>::type>::type> Type;
    static_assert(!std::is_lvalue_reference<Parameter>::value ||
                      std::is_const<typename std::remove_reference<Parameter>::type>::value,
                  "a value arrives as a copy: take it by value or by const reference");
};

/** Whether a function that takes `Parameter` can receive values of `Type`: an int may stand for a `qnBool`. */
template <class Type, class Parameter>
struct qnReceives {
    typedef typename std::remove_cv<typename std::remove_reference<Parameter>::type>::type Plain;
    static const bool value = std::is_same<Type, Plain>::value ||
                              (std::is_same<Type, qnBool>::value && std::is_same<Plain, int>::value) ||
                              (std::is_same<Type, char*>::value && std::is_same<Plain, const char*>::value) ||
                              (std::is_same<Type, const char*>::value && std::is_same<Plain, char*>::value);
};

/**
 * A function of a program together with its object: what an input made from a typed function has as its closure. The
 * function is called through its own type, and never through a pointer of another one.
 */
template <class Type, class Object, class Parameter>
struct qnReceiver {
    typedef void (*Function)(Object*, Parameter);

    static void deliver(void* receiver, typename Type::Form value) {
        qnReceiver self = *static_cast<qnReceiver*>(receiver);  // a copy: the call may destroy the channel
        self.function(self.object, static_cast<Parameter>(static_cast<typename Type::Form&&>(value)));
    }

    Object* object;
    Function function;
};

/** The same without a value. */
template <class Object>
struct qnReceiver<qnDataType<void>, Object, void> {
    typedef void (*Function)(Object*);

    static void deliver(void* receiver) {
        qnReceiver self = *static_cast<qnReceiver*>(receiver);
        self.function(self.object);
    }

    Object* object;
    Function function;
};

/** A new receiver in a block from `malloc`. Exhausted memory ends the process. */
template <class Receiver, class Object>
Receiver* qnMakeReceiver(Object* object, typename Receiver::Function function) {
    Receiver* receiver = static_cast<Receiver*>(std::malloc(sizeof(Receiver)));
    if (receiver == nullptr) qnFatal("qnObj::addInput: out of memory");
    receiver->object = object;
    receiver->function = function;
    return receiver;
}

#ifdef __cpp_nontype_template_parameter_auto
/** A function known at compile time, in the form in which it is delivered to: the closure is the object itself. */
template <auto Function>
struct qnBound;

template <class Object, class Parameter, void (*Function)(Object*, Parameter)>
struct qnBound<Function> {
    typedef Object ObjectType;
    typedef typename qnParameterType<Parameter>::Type Type;
    static void deliver(void* object, typename Type::Form value) {
        Function(static_cast<Object*>(object), static_cast<Parameter>(static_cast<typename Type::Form&&>(value)));
    }
};

template <class Object, void (*Function)(Object*)>
struct qnBound<Function> {
    typedef Object ObjectType;
    typedef qnDataType<void> Type;
    static void deliver(void* object) { Function(static_cast<Object*>(object)); }
};
#endif

#endif
