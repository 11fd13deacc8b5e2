// The executive's wait and its cycle.
#include <sys/times.h>
#include <unistd.h>

#include <cerrno>

#include "EventHandler.h"
#include "Exec.h"
#include "Timer.h"
#include "core/LiveWalk.h"
#include "core/Nested.h"
#include "core/Watch.h"

namespace {

/** Longer waits than this, in seconds, some systems refuse. */
constexpr float LongestWait = 1e8f;

/** Whole seconds and, of the fraction, whole microseconds. */
timeval toTimeval(float seconds) {
    if (!(seconds > 0)) seconds = 0;
    if (seconds > LongestWait) seconds = LongestWait;
    timeval wait;
    wait.tv_sec = static_cast<time_t>(seconds);
    const double fraction = static_cast<double>(seconds) - static_cast<double>(wait.tv_sec);
    wait.tv_usec = static_cast<suseconds_t>(fraction * 1e6);  // exact: a float has 24 bits, a million 20
    return wait;
}

unsigned long clockTicks() {
    tms unused;
    return static_cast<unsigned long>(times(&unused));
}

float secondsSince(unsigned long start) {
    static const long ticksPerSecond = sysconf(_SC_CLK_TCK);
    return static_cast<float>(clockTicks() - start) / static_cast<float>(ticksPerSecond);
}

}  // namespace

/** One pass: the state of the wait, kept apart because what the pass calls may change the executive's. */
class qnExec::Cycle : public Nested<Cycle> {
public:
    explicit Cycle(qnExec& executive) : executive_(executive) {}

    void run(float timeout) {
        const Watch watch(&executive_);
        callAll(executive_.preSelect_);
        if (!watch.alive()) return;
        startClock();
        wait(timeout);
        if (timed_) letTimePass();
        if (watch.alive() && ready_ > 0) callHandlers(watch);
        if (watch.alive()) callAll(executive_.postSelect_);
    }

    /** A handler is destroyed: another one that is made at its address must not be taken for it. */
    static void gone(const qnSelectHandler* handler) {
        forEach([handler](Cycle& cycle) {
            for (int d = cycle.first_; d < cycle.end_; ++d) {
                if (cycle.handlers_[d] == handler) cycle.handlers_[d] = nullptr;
            }
        });
    }

private:
    void startClock() {
        const qnTimer* front = qnTimer::getFirst();
        timed_ = front != nullptr;
        if (!timed_) return;
        remaining_ = front->getDelta();
        start_ = clockTicks();
    }

    void wait(float timeout) {
        if (qn_theEventHandler->count != 0) {
            timeout = 0;
        } else if (timed_ && timeout > remaining_) {
            timeout = remaining_;
            replaced_ = true;
        }
        timeval limit = toTimeval(timeout);

        first_ = executive_.lowest_;
        end_ = executive_.limit_;
        kinds_[0].watch(executive_.readInUse_, executive_.readSet_, &qnSelectHandler::handleRead);
        kinds_[1].watch(executive_.writeInUse_, executive_.writeSet_, &qnSelectHandler::handleWrite);
        kinds_[2].watch(executive_.exceptionInUse_, executive_.exceptionSet_, &qnSelectHandler::handleException);
        for (int d = first_; d < end_; ++d) handlers_[d] = executive_.handlers_[d];
        ready_ = select(end_, kinds_[0].set(), kinds_[1].set(), kinds_[2].set(), &limit);
    }

    void letTimePass() {
        const int error = errno;
        qnTimer* front = qnTimer::activeTimers_;
        if (ready_ == 0 && replaced_) {
            qnTimer::alarm(remaining_);
        } else {
            const float elapsed = secondsSince(start_);
            if (remaining_ - elapsed > 0) {
                front->delta_ = remaining_ - elapsed;
            } else {
                qnTimer::alarm(elapsed);
            }
        }
        errno = error;
    }

    void callHandlers(const Watch& watch) {
        for (int d = first_; d < end_; ++d) {
            for (Kind& kind : kinds_) {
                if (!watch.alive()) return;
                if (!kind.inUse || !FD_ISSET(d, &kind.descriptors)) continue;
                qnSelectHandler* handler = executive_.handlers_[d];
                if (handler != nullptr && handler == handlers_[d]) (handler->*kind.handle)();
            }
        }
    }

    static void callAll(const qnStubFuncArray& functions) {
        LiveWalk walk(&functions, functions.length());
        unsigned i;
        while (walk.next(i)) functions.elements()[i]();
    }

    /** One of the three kinds of readiness. */
    struct Kind {
        bool inUse;
        fd_set descriptors;
        void (qnSelectHandler::*handle)();

        void watch(qnBool used, const fd_set& watched, void (qnSelectHandler::*operation)()) {
            inUse = used != 0;
            if (inUse) descriptors = watched;
            handle = operation;
        }

        fd_set* set() { return inUse ? &descriptors : nullptr; }
    };

    qnExec& executive_;
    bool timed_ = false;
    float remaining_ = 0;      // seconds until the front timer fires
    unsigned long start_ = 0;  // clock ticks
    bool replaced_ = false;    // the wait ends when the front timer is due
    int first_ = 0;
    int end_ = 0;
    Kind kinds_[3];
    qnSelectHandler* handlers_[MaxDescriptors];  // those of the wait, from first_: others that come are not called
    int ready_ = 0;
};

void qnExec::leaveCycles(const qnSelectHandler* handler) { Cycle::gone(handler); }

void qnExec::poll(float timeout) {
    if (dirty_) updateSelectState();
    if (lowest_ != NoDescriptor) Cycle(*this).run(timeout);
    qn_theEventHandler->distributeEvents();
}

void qnExec::loop() {
    const Watch watch(this);
    do {
        poll(1000.0f);
    } while (watch.alive() && applications_.length() != 0);
}

qnBool qnExec::willBlock() {
    if (dirty_) updateSelectState();
    if (lowest_ == NoDescriptor) return 0;
    fd_set read = readSet_;
    fd_set write = writeSet_;
    fd_set exception = exceptionSet_;
    timeval none = {0, 0};
    return select(limit_, readInUse_ ? &read : nullptr, writeInUse_ ? &write : nullptr,
                  exceptionInUse_ ? &exception : nullptr, &none) == 0;
}
