#include "WordCounts.h"

#include <climits>
#include <new>

namespace {

/** The number of chains never changes, so it is chosen for the vocabulary of a long text. */
constexpr unsigned Buckets = 8191;

const void* newest = nullptr;

qnStr& asWord(void* record) { return *static_cast<qnStr*>(record); }
const qnStr& asWord(const void* record) { return *static_cast<const qnStr*>(record); }
WordCounts::Counter& asCounter(void* record) { return *static_cast<WordCounts::Counter*>(record); }

}  // namespace

qnTypeObj WordCounts_type("tally.WordCounts", 1, WordCounts::newInstance, WordCounts::deleteInstance, WordCounts::xdr);

WordCounts::WordCounts() : qnDictionary(sizeof(qnStr), sizeof(Counter), Buckets) {}

WordCounts::WordCounts(const WordCounts& other) : qnDictionary(other) { qnDictionary::operator=(other); }

WordCounts::WordCounts(qnTypeObj& type) : qnDictionary(type) {
    // A stream that claims records of other sizes is refused.
    keySize = sizeof(qnStr);
    valueSize = sizeof(Counter);
}

WordCounts::~WordCounts() { cleanup(); }

WordCounts& WordCounts::operator=(const WordCounts& other) {
    qnDictionary::operator=(other);
    return *this;
}

void WordCounts::add(const qnStr& word) {
    Counter& counter = asCounter(findCreate(&word));
    if (counter != UINT_MAX) ++counter;
}

const char* WordCounts::className() const { return "WordCounts"; }

bool WordCounts::xdr(qnTranscriber& transcriber) {
    return transcriber.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this)) && doxdr(transcriber);
}

qnTypeObj& WordCounts::getTypeObj() const { return WordCounts_type; }

void* WordCounts::newInstance(qnTypeObj& type) {
    WordCounts* counts = new WordCounts(type);
    newest = counts;
    return counts;
}

void WordCounts::deleteInstance(void* object) { delete static_cast<WordCounts*>(object); }

bool WordCounts::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<WordCounts*>(object)->WordCounts::xdr(transcriber);
}

const void* WordCounts::lastInstance() { return newest; }

unsigned long WordCounts::hashKey(const void* key) const { return asWord(key).hash(); }

int WordCounts::compareKeys(const void* a, const void* b) const { return compare(asWord(a), asWord(b)); }

void WordCounts::copyKey(const void* from, void* to) const { new (to) qnStr(asWord(from)); }

void WordCounts::destroyKey(void* key) const { asWord(key).~qnStr(); }

void WordCounts::copyValue(const void* from, void* to) const { new (to) Counter(*static_cast<const Counter*>(from)); }

void WordCounts::createValue(void* to) const { new (to) Counter(0); }

bool WordCounts::xdrKey(qnTranscriber& transcriber, void* key) {
    if (transcriber.reading) new (key) qnStr(qnStr_type);
    return asWord(key).xdr(transcriber);
}

bool WordCounts::xdrValue(qnTranscriber& transcriber, void* value) {
    return transcriber.xdr(static_cast<Counter*>(value), 1);
}

void WordCounts::streamRecordSizes(unsigned& key, unsigned& value) const {
    key = 8;
    value = 4;
}
