#ifndef MORVAQNDS_TIMER_H
#define MORVAQNDS_TIMER_H

#include "Export.h"
#include "Obj.h"
#include "Types.h"

/**
 * An object that fires after an interval, once or repeatedly, by sending a signal on its output "tick".
 *
 *     qnTimer* timer = new qnTimer(1);                 // repeating
 *     timer->setInterval(2.5f);
 *     timer->connect("tick", display, "refresh");
 *     timer->startTimer();
 *
 * Time advances only inside the event loop's cycle, and only while some descriptor has a handler. A repeating timer is
 * armed anew after the pass in which it fired, a full interval from then. Deliberate: lateness is not made up for, and
 * an advance over several intervals fires it once, so that a program that was busy does not face a burst.
 *
 * A timer may be started, stopped or destroyed at any time, in any timer's `tick` too. Destroying it stops it.
 */
class MORVAQNDS_API qnTimer : public qnObj {
public:
    /** Inactive, with an interval of 0 and an output "tick" of type `qnDT_void`. */
    explicit qnTimer(qnBool repeating);
    ~qnTimer() override;

    const char* className() const override;

    /**
     * Called at each firing: sends a queued signal on the output that is named "tick" at that moment, if there is one
     * of type `qnDT_void`.
     */
    virtual void tick();

    /** Stops the timer, then starts it: it fires a full interval from now. */
    void startTimer();
    /**
     * Stops the timer if it is active.
     *
     * Deliberate: a repeating timer that has fired is inactive until it is armed again, after all that is due has
     * fired. Stopping it meanwhile, in its own `tick` above all, changes nothing; starting it does, and that start
     * counts.
     */
    void stopTimer();

    /**
     * Seconds from start to firing; counts from the next start. Negative ones and NaN count as 0, an infinite one as
     * the largest float.
     */
    void setInterval(float seconds) { interval_ = seconds; }
    float getInterval() const { return interval_; }
    /** While active: seconds from the firing of the timer in front of it in the list to its own. */
    float getDelta() const { return delta_; }
    qnBool isActive() const { return active_; }
    qnBool isRepeating() const { return repeating_; }
    /** The timer that fires next after this one, or null. */
    qnTimer* getNext() const { return next_; }

    /** The timer that fires first, or null when none is active. */
    static qnTimer* getFirst() { return activeTimers_; }
    /**
     * Lets `seconds` pass: fires every timer that is due by then, in order of their times and then of their starts.
     * A timer that is started again without any interval waits for the next advance. NaN counts as 0.
     */
    static void alarm(float seconds);

private:
    class Pass;
    friend class qnExec;

    qnTimer(const qnTimer&);
    qnTimer& operator=(const qnTimer&);

    void addToActiveList();
    void removeFromActiveList();

    static qnTimer* activeTimers_;

    float interval_;
    float delta_;
    qnBool active_;
    qnBool repeating_;
    qnBool firedNow_;  // it fired in the current pass; no time has passed since, nor has another one started it
    qnOutputChannel* tick_;
    qnTimer* next_;

public:
    /** The output that the constructor made; no longer valid once "tick" is removed or replaced. */
    qnOutputChannel* getTickOutput() const { return tick_; }
};

#endif
