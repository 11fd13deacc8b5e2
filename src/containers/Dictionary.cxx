#include "Dictionary.h"

#include <cstring>

#include "Str.h"
#include "containers/Chains.h"
#include "containers/StrRecord.h"
#include "core/Heap.h"

namespace {

typedef chains::Iteration<qnDictIter, qnDictionary, &qnDictIter::dict> Iteration;

}  // namespace

// Construction

qnDictionary::qnDictionary(unsigned bytesPerKey, unsigned bytesPerValue, unsigned nbuckets)
    : count(0), keySize(bytesPerKey), valueSize(bytesPerValue), staleIters_(0) {
    buckets.resize(nbuckets == 0 ? chains::DefaultBuckets : nbuckets);
}

qnDictionary::qnDictionary(const qnDictionary& other)
    : qnXDRObj(other), count(0), keySize(other.keySize), valueSize(other.valueSize), staleIters_(0) {
    // The entries are added by the concrete class, which knows what they are.
    buckets.resize(other.buckets.length());
}

qnDictionary::qnDictionary(qnTypeObj& type) : qnXDRObj(type), count(0), keySize(0), valueSize(0), staleIters_(0) {}

qnDictionary::~qnDictionary() {}

qnDictionary& qnDictionary::operator=(const qnDictionary& other) {
    if (this == &other) return *this;
    // Deliberate: assignment merges. What is here already stays.
    for (unsigned b = 0; b < other.buckets.length(); ++b) {
        for (const qnDictBucket* link = other.buckets.elements()[b]; link != nullptr; link = link->next) {
            addInternal(link->entry, link->entry + other.keySize);
        }
    }
    return *this;
}

// Record operations

unsigned long qnDictionary::hashKey(const void* key) const { return chains::wordHash(key, keySize); }

void qnDictionary::destroyKey(void*) const {}

void qnDictionary::destroyValue(void*) const {}

void qnDictionary::streamRecordSizes(unsigned& key, unsigned& value) const {
    key = keySize;
    value = valueSize;
}

// Entries

void qnDictionary::requireBuckets(const char* operation) const {
    if (bucketCount() == 0) qnFatal("qnDictionary::%s: the dictionary has no buckets", operation);
}

unsigned qnDictionary::bucketOf(const void* key) const { return static_cast<unsigned>(hashKey(key)) % bucketCount(); }

char* qnDictionary::newEntry(const char* operation) const {
    std::size_t nbytes = heap::checkedSize(std::uint64_t(keySize) + valueSize, operation);
    return static_cast<char*>(heap::allocate(nbytes, operation));
}

qnDictBucket* qnDictionary::pushEntry(unsigned bucket, char* entry) {
    qnDictBucket*& head = buckets.elements()[bucket];
    head = heap::create<qnDictBucket>("qnDictionary::addInternal", entry, head);
    ++count;
    return head;
}

qnDictBucket* qnDictionary::findInChain(unsigned bucket, const void* key) const {
    qnDictBucket* head = buckets.elements()[bucket];
    return *chains::placeOf(*this, &head, key);
}

void* qnDictionary::find(const void* key, void** where) const {
    qnDictBucket* link = bucketCount() == 0 ? nullptr : findInChain(bucketOf(key), key);
    if (where != nullptr) *where = link;
    return link == nullptr ? nullptr : link->entry + keySize;
}

void qnDictionary::addInternal(const void* key, const void* value) {
    requireBuckets("addInternal");
    unsigned bucket = bucketOf(key);
    if (qnDictBucket* link = findInChain(bucket, key)) {
        void* old = link->entry + keySize;
        if (old == value) return;
        destroyValue(old);
        copyValue(value, old);
        return;
    }
    char* entry = newEntry("qnDictionary::addInternal");
    copyKey(key, entry);
    copyValue(value, entry + keySize);
    pushEntry(bucket, entry);
}

void* qnDictionary::findCreate(const void* key) {
    requireBuckets("findCreate");
    unsigned bucket = bucketOf(key);
    if (qnDictBucket* link = findInChain(bucket, key)) return link->entry + keySize;
    char* entry = newEntry("qnDictionary::findCreate");
    copyKey(key, entry);
    createValue(entry + keySize);
    pushEntry(bucket, entry);
    return entry + keySize;
}

/** Takes the link of `key` out of its chain; it keeps its successor for the iterators that stand on it. */
qnDictBucket* qnDictionary::unlink(const void* key) {
    if (bucketCount() == 0) return nullptr;
    qnDictBucket** place = chains::placeOf(*this, &buckets.elements()[bucketOf(key)], key);
    qnDictBucket* link = *place;
    if (link != nullptr) *place = link->next;
    return link;
}

void qnDictionary::discard(qnDictBucket* link) {
    invalidateIters(link);
    delete link;
    --count;
}

void qnDictionary::remove(const void* key) {
    qnDictBucket* link = unlink(key);
    if (link == nullptr) return;
    destroyKey(link->entry);
    destroyValue(link->entry + keySize);
    discard(link);
}

void* qnDictionary::cut(const void* key) {
    qnDictBucket* link = unlink(key);
    if (link == nullptr) return nullptr;
    void* value = heap::allocate(valueSize, "qnDictionary::cut");
    std::memcpy(value, link->entry + keySize, valueSize);
    destroyKey(link->entry);
    discard(link);
    return value;
}

void qnDictionary::cleanup() {
    for (unsigned b = 0; b < buckets.length(); ++b) {
        qnDictBucket*& head = buckets.elements()[b];
        while (head != nullptr) {
            qnDictBucket* link = head;
            head = link->next;
            destroyKey(link->entry);
            destroyValue(link->entry + keySize);
            delete link;
        }
    }
    // The iterators that were detached by an earlier cleanup may be gone.
    for (unsigned i = staleIters_; i < iters.length(); ++i) {
        qnDictIter* iter = iters.elements()[i];
        iter->dict = nullptr;
        iter->current = nullptr;
        iter->flags |= qnDictIter::Advanced;
    }
    staleIters_ = iters.length();
}

// Iterators

void qnDictionary::addIter(qnDictIter* iter) { iters.append(&iter); }

void qnDictionary::removeIter(qnDictIter* iter) {
    Iteration::remove(iters, staleIters_, iter, "qnDictionary::removeIter");
}

void qnDictionary::invalidateIters(const qnDictBucket* link) const { Iteration::invalidate(iters, staleIters_, link); }

qnDictIter::qnDictIter(qnDictionary& dictionary) : flags(0) { Iteration::start(*this, dictionary); }

qnDictIter::~qnDictIter() { Iteration::leave(*this); }

qnDictIter& qnDictIter::operator=(qnDictionary& dictionary) {
    Iteration::leave(*this);
    Iteration::start(*this, dictionary);
    return *this;
}

qnDictIter& qnDictIter::operator++() {
    Iteration::advance(*this);
    return *this;
}

void qnDictIter::advanceToValid() { Iteration::advanceToValid(*this); }

// The string-keyed half

qnStrKeyDictionary::qnStrKeyDictionary(unsigned bytesPerValue, unsigned nbuckets)
    : qnDictionary(sizeof(qnStr), bytesPerValue, nbuckets) {}

qnStrKeyDictionary::qnStrKeyDictionary(qnTypeObj& type, unsigned bytesPerValue) : qnDictionary(type) {
    keySize = sizeof(qnStr);
    valueSize = bytesPerValue;
}

unsigned long qnStrKeyDictionary::hashKey(const void* key) const { return strrecord::hash(key); }

int qnStrKeyDictionary::compareKeys(const void* a, const void* b) const { return strrecord::compare(a, b); }

void qnStrKeyDictionary::copyKey(const void* from, void* to) const { strrecord::copy(from, to); }

void qnStrKeyDictionary::destroyKey(void* key) const { strrecord::destroy(key); }
