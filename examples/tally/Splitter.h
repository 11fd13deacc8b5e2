#ifndef TALLY_SPLITTER_H
#define TALLY_SPLITTER_H

#include <morvaqnds.h>

/**
 * Takes text in pieces of any size and sends its words, one by one: runs of letters and digits, in lower case. Bytes
 * from 128 up count as letters, so that words in UTF-8 stay whole.
 *
 *     input   "line"  qnStr   a piece of the text, whatever its bytes; a word may go on in the next one
 *     input   "end"   void    the text is over: a word at its end is sent
 *     output  "word"  qnStr   without any NUL, so that it may be taken as `const char*`
 */
class Splitter : public qnObj {
public:
    Splitter();

    const char* className() const override;

    /** Whether all of the text has arrived. */
    bool hasEnded() const { return ended_; }

private:
    static void onLine(Splitter* splitter, const qnStr& line);
    static void onEnd(Splitter* splitter);

    void sendWord();

    qnOutputChannel* output_;
    qnStr word_;  // of a piece that ended in the middle of it
    bool ended_ = false;
};

#endif
