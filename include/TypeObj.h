#ifndef MORVAQNDS_TYPEOBJ_H
#define MORVAQNDS_TYPEOBJ_H

#include "Export.h"

class qnStr;
class qnTranscriber;
class qnVoidPtrDict;
struct qnTypeObj;

/** Makes an instance of a class; the caller owns the result. */
typedef void* (*qnNewInstanceFunc)(qnTypeObj& type);
/** Destroys an instance that the class's factory made; ignores null. */
typedef void (*qnDeleteInstanceFunc)(void* object);
/** Transcribes an instance in the direction of the transcriber; false as soon as anything fails. */
typedef bool (*qnXdrFunc)(void* object, qnTranscriber& transcriber);

/**
 * The type object: one per serialisable class. It names the class in streams and makes, destroys and transcribes its
 * instances.
 *
 *     qnTypeObj Shape_type("Shape", 1, Shape::newInstance, Shape::deleteInstance, Shape::xdr);
 *     ...
 *     qnTypeObj* type = qnTypeObj::findType("Shape");      // &Shape_type
 *
 * Type objects are static objects. Building one enters it in a process-wide registry, in which a reader finds it by
 * name; it is never unregistered and must live as long as the process. A program's own static type objects may be built
 * before `main`: the registry is usable as soon as the library is loaded.
 *
 * Deliberate: duplicate names are no error; the last registration wins without a message. The library itself relies on
 * it: eleven typed arrays share the name "ARRAY", and `findType("ARRAY")` answers with the last of them,
 * `qnStrArray_type`.
 */
struct MORVAQNDS_API qnTypeObj {
    /**
     * Stores the five fields and registers the type object.
     * `name` is kept by pointer and not copied: pass a string literal. Either factory function may be null, as for an
     * abstract class; a stream that holds an instance of such a class cannot be read.
     */
    qnTypeObj(const char* name, unsigned version, qnNewInstanceFunc newInstance, qnDeleteInstanceFunc deleteInstance,
              qnXdrFunc xdr);

    /** Enters `type` in the registry under its name, replacing an earlier one of that name. */
    static void registerType(qnTypeObj* type);

    /** The type object that was last registered under `name`, or null. */
    static qnTypeObj* findType(const char* name);
    static qnTypeObj* findType(qnStr& name);

    const char* name;                     ///< the name in streams; not always the class's name
    unsigned version;                     ///< a reader refuses instances of another version
    qnNewInstanceFunc newInstance;        ///< may be null
    qnDeleteInstanceFunc deleteInstance;  ///< may be null
    qnXdrFunc xdr;

    /** All registered types by name; null until the first registration, never freed. */
    static qnVoidPtrDict* knownTypes;
};

#endif
