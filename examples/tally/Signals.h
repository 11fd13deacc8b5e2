#ifndef TALLY_SIGNALS_H
#define TALLY_SIGNALS_H

#include <morvaqnds.h>

/**
 * Brings SIGINT and SIGTERM into the event loop. A signal handler may do almost nothing; this one writes a byte into a
 * pipe whose other end the event loop reads. There is one object of this class at a time.
 *
 *     output  "signal"  int  its number, sent at once
 *
 * Meanwhile a broken pipe is an error of the write and no signal. The destructor restores what was there before.
 */
class Signals : public qnSelectHandler {
public:
    /** Catches the signals. If the pipe cannot be made, `descriptor` is -1 and `errno` says why. */
    Signals();
    ~Signals() override;

    const char* className() const override;

    /** Takes part in the event loop, or not. Requires: the descriptor is from 0 to 99. */
    void start();
    void stop();
    /** From now on the signals do nothing, not even interrupt a write. */
    void ignore();

    void handleRead() override;

private:
    bool registered_ = false;
    qnOutputChannel* output_;
};

#endif
