#ifndef MORVAQNDS_TESTS_RECORDS_H
#define MORVAQNDS_TESTS_RECORDS_H

#include <functional>

#include "Transcriber.h"
#include "XDRObj.h"
#include "support/Bytes.h"

/**
 * A serialisable class whose contents a test decides: its `xdr` calls a function. The type objects are built where
 * they are first needed, once each.
 */
class Probe : public qnXDRObj {
public:
    typedef std::function<bool(qnTranscriber&, Probe&)> Body;

    Probe() {}
    explicit Probe(qnTypeObj& type) : qnXDRObj(type) { ++made(); }
    explicit Probe(Body contents) : body(contents) {}

    const char* className() const override { return "Probe"; }
    bool xdr(qnTranscriber& transcriber) override {
        return body ? body(transcriber, *this) : onRead()(transcriber, *this);
    }
    qnTypeObj& getTypeObj() const override { return type(); }
    static void* newInstance(qnTypeObj& type) { return new Probe(type); }
    static void deleteInstance(void* object) { delete static_cast<Probe*>(object); }
    static bool xdr(void* object, qnTranscriber& transcriber) {
        return static_cast<Probe*>(object)->Probe::xdr(transcriber);
    }

    static qnTypeObj& type() {
        static qnTypeObj object("Probe", 1, newInstance, deleteInstance, xdr);
        return object;
    }
    /** What objects that a reader makes do. */
    static Body& onRead() {
        static Body body = [](qnTranscriber&, Probe&) { return true; };
        return body;
    }
    /** How many objects factories made. */
    static int& made() {
        static int count = 0;
        return count;
    }

    Body body;
    // Places for what is read.
    int number = 0;
    Probe* first = nullptr;
    Probe* second = nullptr;
    char* chars = nullptr;
    char* moreChars = nullptr;
    int* ints = nullptr;
    long* longs = nullptr;
    unsigned long* unsignedLongs = nullptr;
    double* doubles = nullptr;
};

/** A type record of probes, and a root instance with `dataBytes` bytes of data. Their ids are 2 and 1. */
inline Bytes probeRoot(unsigned dataBytes = 0) {
    Probe::type();
    Bytes bytes = Bytes::type(2, "Probe");
    if (dataBytes == 0) return bytes.u8(0x0A).u32(1).u32(2).u32(1);
    return bytes.u8(0x4A).u8(dataBytes).u32(1).u32(2).u32(1);
}

#endif
