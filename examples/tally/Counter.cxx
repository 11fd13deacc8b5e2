#include "Counter.h"

Counter::Counter(WordCounts& counts, const qnTextPattern* only) : counts_(counts), only_(only) {
    addInput("word", this, &onWord);
}

const char* Counter::className() const { return "Counter"; }

void Counter::onWord(Counter* counter, const char* text) {
    const qnStr word(text);
    const qnTextPattern* only = counter->only_;
    if (only == nullptr || only->findBuffer(word.text(), word.length()) >= 0) counter->counts_.add(word);
}
