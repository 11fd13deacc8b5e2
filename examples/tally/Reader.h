#ifndef TALLY_READER_H
#define TALLY_READER_H

#include <morvaqnds.h>

/**
 * Reads a descriptor block by block, and sends what it reads line by line.
 *
 *     Reader reader("words.fifo", descriptor, Reader::Wait, Reader::Ends);
 *     reader.connect("line", &splitter, "line");
 *     reader.start();
 *
 *     input   "read"    void     reads a block
 *     output  "line"    qnStr    a line with its line end, whatever its bytes; long ones go in pieces of 64 KiB
 *     output  "block"   void     a block was read; sent at once, the others are queued
 *     output  "end"     void     nothing more will come
 *     output  "failed"  CharPtr  what is wrong with the input
 *
 * What wakes it is the event loop when its descriptor is readable. Files are always readable, and a descriptor of 100
 * or more cannot be waited for, so files are read on the tick of a timer.
 */
class Reader : public qnSelectHandler {
public:
    enum Waking {
        Wait,  ///< by the descriptor; it must be below 100
        Tick   ///< by a timer
    };
    enum Ending {
        Ends,    ///< the end of the input is the end
        Follows  ///< the reader goes on looking for more; the descriptor must be that of a file or a FIFO, and not
                 ///< block
    };

    /** Takes over the descriptor. */
    Reader(const char* name, int descriptor, Waking waking, Ending ending);
    ~Reader() override;

    const char* className() const override;

    void start();
    /** Stops reading, and sends what is left: the rest of the last line, then "end". The second time does nothing. */
    void finish();

    void handleRead() override;

private:
    static void onRead(Reader* reader);

    void read();
    void take(const char* text, unsigned length);
    void atEnd();
    void startOver();
    void fail();
    void sendLine();
    void wakeWhenReadable();
    void wakeAfter(float seconds);
    void sleep();

    qnStr name_;
    Waking waking_;
    Ending ending_;
    bool finished_ = false;
    bool registered_ = false;
    qnTimer timer_;
    qnStr line_;  // as far as it is known
    qnOutputChannel* lines_;
    qnOutputChannel* blocks_;
    qnOutputChannel* end_;
    qnOutputChannel* failed_;
};

#endif
