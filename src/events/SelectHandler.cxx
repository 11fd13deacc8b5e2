#include "SelectHandler.h"

#include <unistd.h>

#include "Exec.h"

qnSelectHandler::qnSelectHandler(int theDescriptor, qnBool read, qnBool write, qnBool exception)
    : descriptor(theDescriptor), wantRead(read != 0), wantWrite(write != 0), wantException(exception != 0) {}

qnSelectHandler::~qnSelectHandler() {
    qnExec::dropHandler(this);
    qnExec::leaveCycles(this);
    if (descriptor >= 0) close(descriptor);
}

void qnSelectHandler::handleWrite() {}

void qnSelectHandler::handleException() {}
