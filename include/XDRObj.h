#ifndef MORVAQNDS_XDROBJ_H
#define MORVAQNDS_XDROBJ_H

#include "Export.h"
#include "RCObj.h"
#include "TypeObj.h"

/**
 * The serialisable root. A class whose instances travel through a transcriber derives from it and provides:
 *
 *     class Shape : public qnXDRObj {
 *     public:
 *         explicit Shape(qnTypeObj& type) : qnXDRObj(type) {}            // used by the factory
 *         const char* className() const override { return "Shape"; }
 *         bool xdr(qnTranscriber& t) override { return t.xdr(&sides, 1); }
 *         qnTypeObj& getTypeObj() const override { return Shape_type; }
 *         static void* newInstance(qnTypeObj& type) { return new Shape(type); }
 *         static void deleteInstance(void* object) { delete static_cast<Shape*>(object); }
 *         static bool xdr(void* object, qnTranscriber& t) { return static_cast<Shape*>(object)->Shape::xdr(t); }
 *     };
 *
 * The static `xdr` is bound to the class's own member, not dispatched: it is also used to transcribe the class as the
 * base part of a derived object.
 *
 * `xdrFail` and `xdrSuccess` are hooks for programs; the library's own transcribers do not call them.
 */
class MORVAQNDS_API qnXDRObj : public qnRCObj {
public:
    qnXDRObj() {}

    /** The constructor that factories use; the argument is ignored. */
    explicit qnXDRObj(qnTypeObj&) {}

    ~qnXDRObj() override;

    /** The class's own name, a static string. */
    virtual const char* className() const;

    /** Transcribes the object's contents, reading or writing as the transcriber says; true on success. */
    virtual bool xdr(qnTranscriber& transcriber);

    /** The class's one type object. */
    virtual qnTypeObj& getTypeObj() const;

    /** Hook to clean up after a transcription that failed. Returns false and leaves the object unchanged. */
    virtual bool xdrFail(qnTranscriber& transcriber, void* detail);

    /** Hook to finish an object after a successful transcription. Does nothing. */
    virtual void xdrSuccess(qnTranscriber& transcriber);

    /** A new bare `qnXDRObj`, owned by the caller. */
    static void* newInstance(qnTypeObj& type);
    /** Destroys what `newInstance` made; null is ignored. */
    static void deleteInstance(void* object);
    static bool xdr(void* object, qnTranscriber& transcriber);
};

extern MORVAQNDS_API qnTypeObj qnXDRObj_type;

#endif
