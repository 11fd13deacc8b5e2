#ifndef TALLY_PUNCTUALTIMER_H
#define TALLY_PUNCTUALTIMER_H

#include <morvaqnds.h>

/**
 * A repeating timer that fires in time even while the program is busy.
 *
 * The event loop lets time pass for its timers only while it waits. A program that always finds something to read never
 * waits, so its timers stand still. This one compares the clock whenever somebody has done a piece of work:
 *
 *     PunctualTimer timer(2.5f);
 *     reader.connect("block", &timer, "check");
 *     timer.connect("tick", &display, "show");
 *     timer.start();
 *
 *     input   "check"  void   fires now if it is overdue
 *     output  "tick"   void
 */
class PunctualTimer : public qnTimer {
public:
    explicit PunctualTimer(float seconds);

    const char* className() const override;
    void tick() override;

    void start();

private:
    static void onCheck(PunctualTimer* timer);

    double due_;  // seconds on the clock
};

#endif
