#ifndef MORVAQNDS_SELECTHANDLER_H
#define MORVAQNDS_SELECTHANDLER_H

#include "Export.h"
#include "Obj.h"
#include "Types.h"

/**
 * The base of objects that own a file descriptor and are called by the event loop when it is ready.
 *
 *     class Reader : public qnSelectHandler {
 *     public:
 *         explicit Reader(int fd) : qnSelectHandler(fd, 1, 0, 0) {}
 *         const char* className() const override { return "Reader"; }
 *         void handleRead() override { n = read(descriptor, block, sizeof block); ... }
 *     };
 *     qn_theExecutive->addSelectHandler(reader);
 *
 * The wishes may be changed while the handler is not registered: remove it, change them, add it again. Descriptors must
 * be below 100. Requires: it is removed from the executive before it is destroyed. In the default build a handler that
 * is not is dropped there.
 */
class MORVAQNDS_API qnSelectHandler : public qnObj {
public:
    /** Takes over the descriptor; the flags say which kinds of readiness are wanted. */
    qnSelectHandler(int descriptor, qnBool wantRead, qnBool wantWrite, qnBool wantException);
    /** Closes the descriptor. */
    ~qnSelectHandler() override;

    const char* className() const override = 0;

    virtual void handleRead() = 0;
    virtual void handleWrite();
    virtual void handleException();

    int descriptor;
    qnBool wantRead;
    qnBool wantWrite;
    qnBool wantException;

private:
    qnSelectHandler(const qnSelectHandler&);
    qnSelectHandler& operator=(const qnSelectHandler&);
};

#endif
