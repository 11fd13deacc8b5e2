#include "PunctualTimer.h"

#include <time.h>

namespace {

/** Seconds on a clock that nobody sets. */
double now() {
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

PunctualTimer::PunctualTimer(float seconds) : qnTimer(1), due_(0) {
    setInterval(seconds);
    addInput("check", this, &onCheck);
}

const char* PunctualTimer::className() const { return "PunctualTimer"; }

void PunctualTimer::start() {
    due_ = now() + static_cast<double>(getInterval());
    startTimer();
}

void PunctualTimer::tick() {
    due_ = now() + static_cast<double>(getInterval());
    qnTimer::tick();
}

void PunctualTimer::onCheck(PunctualTimer* timer) {
    if (!timer->isActive() || now() < timer->due_) return;
    timer->startTimer();
    timer->tick();
}
