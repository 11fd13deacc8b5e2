#ifndef TALLY_WORDS_H
#define TALLY_WORDS_H

#include "WordCounts.h"

/**
 * Takes text in pieces of any size and counts its words: runs of letters and digits, in lower case. Bytes from 128 up
 * count as letters, so that words in UTF-8 stay whole. With a pattern only the words in which it is found, in lower
 * case, are counted.
 *
 *     Words words(counts);
 *     while ((n = read(fd, buffer, sizeof buffer)) > 0) words.take(buffer, n);
 *     words.end();
 */
class Words {
public:
    /** `only`, if it is not null, must live as long as this. */
    explicit Words(WordCounts& counts, const qnTextPattern* only = nullptr) : counts_(counts), only_(only) {}

    void take(const char* text, std::size_t length);
    /** Ends the text: a word at its end is counted. */
    void end();

private:
    bool isWanted() const;

    WordCounts& counts_;
    const qnTextPattern* only_;
    qnStr word_;  // of a piece that ended in the middle of it
};

#endif
