// What the executive keeps: handlers, functions, applications. The cycle is in Cycle.cxx.
#include "Exec.h"

#include <fcntl.h>

#include <cstdint>

#include "Checked.h"
#include "core/LiveWalk.h"
#include "core/Watch.h"
#include "objects/PointerList.h"

qnExec* qn_theExecutive;

namespace {

qnExec* allExecutives;

bool inTable(const qnSelectHandler* handler) {
    return handler->descriptor >= 0 && handler->descriptor < static_cast<int>(qnExec::MaxDescriptors);
}

void removeFirst(qnStubFuncArray& functions, qnStubFunc fn) {
    const unsigned where = functions.find(&fn, 0);
    if (where == pointers::NotFound) return;
    functions.remove(where, 1);
    LiveWalk::removed(&functions, where);
}

// An application that was destroyed without having been closed stays listed: its pointer with the lowest bit set, so
// that it is counted and found, and never called.

void* abandoned(const qnApplication* application) {
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(application) | 1);
}

/** The application of an entry; null for one that is abandoned. */
qnApplication* callable(void* entry) {
    return (reinterpret_cast<std::uintptr_t>(entry) & 1) != 0 ? nullptr : static_cast<qnApplication*>(entry);
}

}  // namespace

qnExec::qnExec()
    : lowest_(NoDescriptor), limit_(0), dirty_(0), readInUse_(0), writeInUse_(0), exceptionInUse_(0), handlers_() {
    FD_ZERO(&readSet_);
    FD_ZERO(&writeSet_);
    FD_ZERO(&exceptionSet_);
    nextExec_ = allExecutives;
    allExecutives = this;
}

qnExec::~qnExec() {
    LiveWalk::gone(&preSelect_);
    LiveWalk::gone(&postSelect_);
    LiveWalk::gone(&applications_);
    Watch::gone(this);
    qnExec** place = &allExecutives;
    while (*place != this) place = &(*place)->nextExec_;
    *place = nextExec_;
}

void qnExec::addSelectHandler(qnSelectHandler* handler) {
    MORVAQNDS_REQUIRE(handler != nullptr, "qnExec::addSelectHandler: no handler");
    MORVAQNDS_REQUIRE(inTable(handler), "qnExec::addSelectHandler: descriptor %d is not between 0 and 99",
                      handler->descriptor);
    MORVAQNDS_REQUIRE(fcntl(handler->descriptor, F_GETFD) != -1, "qnExec::addSelectHandler: descriptor %d is not open",
                      handler->descriptor);
    if (!inTable(handler)) return;
    handlers_[handler->descriptor] = handler;
    dirty_ = 1;
}

void qnExec::removeSelectHandler(qnSelectHandler* handler) {
    MORVAQNDS_REQUIRE(handler != nullptr, "qnExec::removeSelectHandler: no handler");
    MORVAQNDS_REQUIRE(inTable(handler), "qnExec::removeSelectHandler: descriptor %d is not between 0 and 99",
                      handler->descriptor);
    if (!inTable(handler)) return;
    handlers_[handler->descriptor] = nullptr;
    dirty_ = 1;
}

/** A handler is destroyed: it leaves every table that has it. */
void qnExec::dropHandler(qnSelectHandler* handler) {
    for (qnExec* executive = allExecutives; executive != nullptr; executive = executive->nextExec_) {
        for (qnSelectHandler*& entry : executive->handlers_) {
            if (entry != handler) continue;
            MORVAQNDS_REQUIRE(false, "qnSelectHandler::~qnSelectHandler: the handler of descriptor %d is registered",
                              handler->descriptor);
            entry = nullptr;
            executive->dirty_ = 1;
        }
    }
}

qnSelectHandler* qnExec::getSelectHandler(int descriptor) const {
    return descriptor >= 0 && descriptor < static_cast<int>(MaxDescriptors) ? handlers_[descriptor] : nullptr;
}

void qnExec::addPreSelectFunc(qnStubFunc fn) {
    MORVAQNDS_REQUIRE(fn != nullptr, "qnExec::addPreSelectFunc: no function");
    preSelect_.append(&fn);
}

void qnExec::addPostSelectFunc(qnStubFunc fn) {
    MORVAQNDS_REQUIRE(fn != nullptr, "qnExec::addPostSelectFunc: no function");
    postSelect_.append(&fn);
}

void qnExec::removePreSelectFunc(qnStubFunc fn) { removeFirst(preSelect_, fn); }

void qnExec::removePostSelectFunc(qnStubFunc fn) { removeFirst(postSelect_, fn); }

void qnExec::add(qnApplication* application) { pointers::append(applications_, application); }

void qnExec::remove(qnApplication* application) {
    unsigned where = pointers::find(applications_, application);
    if (where == pointers::NotFound) where = pointers::find(applications_, abandoned(application));
    if (where == pointers::NotFound) return;
    applications_.remove(where, 1);
    LiveWalk::removed(&applications_, where);
}

qnBool qnExec::contains(const qnApplication* application) const {
    return pointers::find(applications_, application) != pointers::NotFound ||
           pointers::find(applications_, abandoned(application)) != pointers::NotFound;
}

/** An application is destroyed and listed still. */
void qnExec::abandon(qnApplication* application) {
    for (qnExec* executive = allExecutives; executive != nullptr; executive = executive->nextExec_) {
        const unsigned n = executive->applications_.length();
        for (unsigned i = 0; i < n; ++i) {
            void*& entry = executive->applications_.elements()[i];
            if (entry == application) entry = abandoned(application);
        }
    }
}

void qnExec::initialize(int argc, char** argv) {
    LiveWalk walk(&applications_, applications_.length());
    unsigned i;
    while (walk.next(i)) {
        qnApplication* application = callable(applications_.elements()[i]);
        if (application != nullptr) application->initialize(argc, argv);
    }
}

void qnExec::open() {
    LiveWalk walk(&applications_, applications_.length());
    unsigned i;
    while (walk.next(i)) {
        qnApplication* application = callable(applications_.elements()[i]);
        if (application != nullptr) application->open();
    }
}

void qnExec::close() {
    LiveWalk walk(&applications_, applications_.length());
    unsigned i;
    while (walk.next(i)) {
        qnApplication* application = callable(applications_.elements()[i]);
        if (application != nullptr && application->isOpen()) application->close();
    }
}

void qnExec::updateSelectState() {
    readInUse_ = writeInUse_ = exceptionInUse_ = 0;
    lowest_ = NoDescriptor;
    limit_ = 0;
    FD_ZERO(&readSet_);
    FD_ZERO(&writeSet_);
    FD_ZERO(&exceptionSet_);

    for (unsigned short d = 0; d < MaxDescriptors; ++d) {
        const qnSelectHandler* handler = handlers_[d];
        if (handler == nullptr) continue;
        if (handler->wantRead) {
            FD_SET(d, &readSet_);
            readInUse_ = 1;
        }
        if (handler->wantWrite) {
            FD_SET(d, &writeSet_);
            writeInUse_ = 1;
        }
        if (handler->wantException) {
            FD_SET(d, &exceptionSet_);
            exceptionInUse_ = 1;
        }
        if (d < lowest_) lowest_ = d;
        limit_ = static_cast<unsigned short>(d + 1);
    }
    dirty_ = 0;
}

fd_set qnExec::getReadSet() {
    if (dirty_) updateSelectState();
    return readSet_;
}

fd_set qnExec::getWriteSet() {
    if (dirty_) updateSelectState();
    return writeSet_;
}

fd_set qnExec::getExceptionSet() {
    if (dirty_) updateSelectState();
    return exceptionSet_;
}
