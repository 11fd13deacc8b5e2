// The active timers form a delta list: each holds the time after which it fires once its predecessor has fired, so
// that letting time pass changes only the front.
#include "Timer.h"

#include <algorithm>
#include <cfloat>
#include <vector>

#include "core/Nested.h"
#include "core/Watch.h"

qnTimer* qnTimer::activeTimers_ = nullptr;

namespace {

/** Timers without any interval may start each other this often at one moment; then they wait for the next advance. */
constexpr unsigned MaxRestarts = 1000;

/**
 * The difference as a float. Some machines calculate in a wider form, in which timers that are due at the same moment
 * would differ, and a time that an interval vanishes in would still become shorter.
 */
float difference(float a, float b) {
    volatile float rounded = a - b;
    return rounded;
}

}  // namespace

/**
 * One advance of time. It remembers the timers to arm again afterwards, and those that fired at the present moment,
 * because one that starts itself again without any interval would otherwise fire for ever.
 */
class qnTimer::Pass : public Nested<Pass> {
public:
    explicit Pass(float seconds) : left_(seconds) {}

    void run() {
        while (activeTimers_ != nullptr && left_ >= activeTimers_->delta_) {
            qnTimer* timer = activeTimers_;
            const float after = difference(left_, timer->delta_);
            if (after != left_) newMoment();
            left_ = after;
            activeTimers_ = timer->next_;
            timer->next_ = nullptr;
            if (firedAtThisMoment(timer)) {
                waiting_.push_back(timer);
            } else {
                fire(timer);
            }
        }
        if (activeTimers_ != nullptr) activeTimers_->delta_ = difference(activeTimers_->delta_, left_);
        newMoment();

        for (std::size_t i = 0; i < waiting_.size(); ++i) {
            if (waiting_[i] != nullptr) waiting_[i]->addToActiveList();
        }
        for (std::size_t i = 0; i < again_.size(); ++i) {
            if (again_[i] != nullptr && !again_[i]->active_) again_[i]->addToActiveList();
        }
    }

    /**
     * A timer is started that fired at this moment: by itself, so that it waits for the next advance, or by another
     * one's tick, so that it may fire once more.
     */
    static void started(qnTimer* timer) {
        bool waits = false;
        forEach(
            [timer, &waits](Pass& pass) { waits = waits || pass.ticking_ == timer || pass.restarts_ >= MaxRestarts; });
        if (waits) return;
        timer->firedNow_ = 0;
        forEach([](Pass& pass) { ++pass.restarts_; });
    }

    /** A timer that waits for the next advance is stopped. */
    static void stopped(const qnTimer* timer) {
        forEach([timer](Pass& pass) { strike(pass.waiting_, timer); });
    }

    /** A timer is destroyed. */
    static void gone(const qnTimer* timer) {
        forEach([timer](Pass& pass) {
            strike(pass.waiting_, timer);
            strike(pass.again_, timer);
            strike(pass.fired_, timer);
            if (pass.ticking_ == timer) pass.ticking_ = nullptr;
        });
    }

private:
    typedef std::vector<qnTimer*> Timers;

    void fire(qnTimer* timer) {
        timer->active_ = 0;
        timer->firedNow_ = 1;
        fired_.push_back(timer);
        const Watch watch(timer);
        ticking_ = timer;
        timer->tick();
        ticking_ = nullptr;
        if (watch.alive() && timer->repeating_) again_.push_back(timer);
    }

    /** A firing in a pass around this one is of this moment until time passes here. */
    bool firedAtThisMoment(const qnTimer* timer) const {
        if (!timer->firedNow_ || !moved_) return timer->firedNow_ != 0;
        return std::find(fired_.begin(), fired_.end(), timer) != fired_.end();
    }

    void newMoment() {
        moved_ = true;
        for (qnTimer* timer : fired_) {
            if (timer != nullptr) timer->firedNow_ = 0;
        }
        fired_.clear();
        restarts_ = 0;
    }

    static void strike(Timers& timers, const qnTimer* timer) {
        for (qnTimer*& each : timers) {
            if (each == timer) each = nullptr;
        }
    }

    float left_;
    const qnTimer* ticking_ = nullptr;
    unsigned restarts_ = 0;  // at the present moment
    bool moved_ = false;     // time has passed in this pass
    Timers fired_;           // fired at the present moment
    Timers waiting_;         // active, and not in the list until the pass is over
    Timers again_;           // repeating ones that fired, in that order
};

qnTimer::qnTimer(qnBool repeating)
    : interval_(0),
      delta_(0),
      active_(0),
      repeating_(repeating != 0),
      firedNow_(0),
      tick_(addOutput("tick", qnDT_void)),
      next_(nullptr) {}

qnTimer::~qnTimer() {
    stopTimer();
    Watch::gone(this);
    Pass::gone(this);
}

const char* qnTimer::className() const { return "qnTimer"; }

void qnTimer::tick() {
    qnOutputChannel* output = findOutput("tick");
    if (output != nullptr && output->getType() == qnDT_void) sendVoid(output, qnSF_Queued);
}

void qnTimer::startTimer() {
    stopTimer();
    if (firedNow_) Pass::started(this);
    addToActiveList();
}

void qnTimer::stopTimer() {
    if (active_) removeFromActiveList();
}

void qnTimer::addToActiveList() {
    // Infinite times have no differences.
    float remaining = interval_ > 0 ? interval_ : 0;
    if (remaining > FLT_MAX) remaining = FLT_MAX;

    qnTimer** place = &activeTimers_;
    while (*place != nullptr && remaining >= (*place)->delta_) {
        remaining = difference(remaining, (*place)->delta_);
        place = &(*place)->next_;
    }
    delta_ = remaining;
    next_ = *place;
    if (next_ != nullptr) next_->delta_ = difference(next_->delta_, remaining);
    *place = this;
    active_ = 1;
}

void qnTimer::removeFromActiveList() {
    qnTimer** place = &activeTimers_;
    while (*place != nullptr && *place != this) place = &(*place)->next_;
    if (*place == this) {
        if (next_ != nullptr) next_->delta_ += delta_;
        *place = next_;
    } else {
        Pass::stopped(this);
    }
    next_ = nullptr;
    active_ = 0;
}

void qnTimer::alarm(float seconds) {
    if (activeTimers_ == nullptr) return;
    Pass(seconds == seconds ? seconds : 0).run();
}
