#include "Counter.h"

Counter::Counter(WordCounts& counts) : counts_(counts) { addInput("word", this, &onWord); }

const char* Counter::className() const { return "Counter"; }

void Counter::onWord(Counter* counter, const char* word) { counter->counts_.add(qnStr(word)); }
