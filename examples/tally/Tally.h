#ifndef TALLY_TALLY_H
#define TALLY_TALLY_H

#include <memory>
#include <vector>

#include "Counter.h"
#include "Display.h"
#include "Input.h"
#include "PunctualTimer.h"
#include "Signals.h"

/**
 * The application: it opens the inputs, connects everything, and is open until all inputs are at their end, a signal
 * comes, or something fails.
 *
 *     Reader  --line-->    Splitter       --word-->  Counter         a reader and a splitter for each input
 *     Reader  --end-->     Splitter
 *     Reader  --block-->   PunctualTimer  --tick-->  Display
 *     Reader  --end-->     Tally
 *     Reader  --failed-->  Tally          <--failed--  Display
 *     Signals --signal-->  Tally
 *
 *     input  "ended"   void   an input may be at its end
 *     input  "signal"  int    closes the application
 *     input  "failed"  qnStr  closes the application, and is the reason
 */
class Tally : public qnApplication {
public:
    struct Settings {
        qnStrArray inputs;          ///< names; "-" is standard input
        bool follow;                ///< whether inputs never end
        float every;                ///< seconds between two running tables; 0 for none
        unsigned top;               ///< rows of a running table
        const qnTextPattern* only;  ///< what is found in the words that count; null for all words
    };

    /** Both must live as long as this. */
    Tally(WordCounts& counts, const Settings& settings);

    const char* className() const override;

    /** Opens the inputs; the arguments are in the settings already. */
    void initialize(int argc, char** argv) override;
    void open() override;
    void close() override;

    /** What went wrong, with its subject: "text: cannot be read: ..."; empty when nothing did. */
    const qnStr& problem() const { return problem_; }
    /** Whether a signal ended it. */
    bool wasInterrupted() const { return interrupted_; }
    /** Signals do nothing any more. */
    void ignoreSignals() { signals_.ignore(); }

private:
    static void onEnded(Tally* tally);
    static void onSignal(Tally* tally, int number);
    static void onFailed(Tally* tally, const qnStr& problem);

    void add(const char* name);
    bool reads(const struct stat& status) const;
    void openInput(const char* name, const struct stat& status);
    void openNextFile();
    void fail(const qnStr& problem);

    const Settings& settings_;
    Counter counter_;
    Display display_;
    PunctualTimer timer_;
    Signals signals_;
    std::vector<std::unique_ptr<Input>> inputs_;
    qnStrArray files_;  // names of the files that end, which are read one after the other
    unsigned nextFile_ = 0;
    bool interrupted_ = false;
    qnStr problem_;
};

#endif
