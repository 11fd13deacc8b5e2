#include "Dictionary.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "Checked.h"
#include "Str.h"
#include "core/Heap.h"

namespace {

constexpr unsigned DefaultBuckets = 31;

}  // namespace

qnDictBucket::~qnDictBucket() { std::free(entry); }

// Construction

qnDictionary::qnDictionary(unsigned bytesPerKey, unsigned bytesPerValue, unsigned nbuckets)
    : count(0), keySize(bytesPerKey), valueSize(bytesPerValue), staleIters_(0) {
    buckets.resize(nbuckets == 0 ? DefaultBuckets : nbuckets);
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

unsigned long qnDictionary::hashKey(const void* key) const {
    unsigned hash = 0;
    for (unsigned offset = 0; offset + sizeof(unsigned) <= keySize; offset += sizeof(unsigned)) {
        unsigned word;
        std::memcpy(&word, static_cast<const char*>(key) + offset, sizeof word);
        hash ^= word;
    }
    return hash;
}

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

char* qnDictionary::newEntry() const {
    std::size_t nbytes = heap::checkedSize(std::uint64_t(keySize) + valueSize, "qnDictionary::addInternal");
    return static_cast<char*>(heap::allocate(nbytes, "qnDictionary::addInternal"));
}

qnDictBucket* qnDictionary::pushEntry(unsigned bucket, char* entry) {
    qnDictBucket*& head = buckets.elements()[bucket];
    head = heap::create<qnDictBucket>("qnDictionary::addInternal", entry, head);
    ++count;
    return head;
}

qnDictBucket* qnDictionary::findInChain(unsigned bucket, const void* key) const {
    qnDictBucket* link = buckets.elements()[bucket];
    while (link != nullptr && compareKeys(key, link->entry) != 0) link = link->next;
    return link;
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
    char* entry = newEntry();
    copyKey(key, entry);
    copyValue(value, entry + keySize);
    pushEntry(bucket, entry);
}

void* qnDictionary::findCreate(const void* key) {
    requireBuckets("findCreate");
    unsigned bucket = bucketOf(key);
    if (qnDictBucket* link = findInChain(bucket, key)) return link->entry + keySize;
    char* entry = newEntry();
    copyKey(key, entry);
    createValue(entry + keySize);
    pushEntry(bucket, entry);
    return entry + keySize;
}

/** Takes the link of `key` out of its chain; it keeps its successor for the iterators that stand on it. */
qnDictBucket* qnDictionary::unlink(const void* key) {
    if (bucketCount() == 0) return nullptr;
    qnDictBucket** place = &buckets.elements()[bucketOf(key)];
    while (*place != nullptr && compareKeys(key, (*place)->entry) != 0) place = &(*place)->next;
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
    unsigned index = iters.find(&iter, staleIters_);
    MORVAQNDS_REQUIRE(index < iters.length(), "qnDictionary::removeIter: the iterator is not among the %u registered",
                      iters.length() - staleIters_);
    if (index < iters.length()) iters.remove(index, 1);
}

void qnDictionary::invalidateIters(const qnDictBucket* link) const {
    unsigned i = staleIters_;
    while (i < iters.length()) {
        qnDictIter* iter = iters.elements()[i];
        if (iter->current == link) {
            // One that was moved here by a removal goes on all the same.
            iter->flags &= ~unsigned(qnDictIter::Advanced);
            ++*iter;
            if (iter->dict == nullptr) continue;  // finished: it has left the list
            iter->flags |= qnDictIter::Advanced;
        }
        ++i;
    }
}

qnDictIter::qnDictIter(qnDictionary& dictionary) : flags(0) { start(dictionary); }

qnDictIter::~qnDictIter() {
    if (dict != nullptr) dict->removeIter(this);
}

qnDictIter& qnDictIter::operator=(qnDictionary& dictionary) {
    if (dict != nullptr) dict->removeIter(this);
    start(dictionary);
    return *this;
}

void qnDictIter::start(qnDictionary& dictionary) {
    dict = &dictionary;
    bucketIndex = 0;
    flags &= ~unsigned(Advanced);
    current = dictionary.buckets.length() == 0 ? nullptr : dictionary.buckets.elements()[0];
    dictionary.addIter(this);
    if (current == nullptr) advanceToValid();
}

qnDictIter& qnDictIter::operator++() {
    if (dict == nullptr) return *this;
    if (flags & Advanced) {
        flags &= ~unsigned(Advanced);
        return *this;
    }
    current = current->next;
    if (current == nullptr) advanceToValid();
    return *this;
}

void qnDictIter::advanceToValid() {
    if (dict == nullptr) return;
    do {
        ++bucketIndex;
        if (bucketIndex >= dict->buckets.length()) {
            dict->removeIter(this);
            dict = nullptr;
            current = nullptr;
            flags |= Advanced;
            return;
        }
        current = dict->buckets.elements()[bucketIndex];
    } while (current == nullptr);
    flags &= ~unsigned(Advanced);
}

// The string-keyed half

qnStrKeyDictionary::qnStrKeyDictionary(unsigned bytesPerValue, unsigned nbuckets)
    : qnDictionary(sizeof(qnStr), bytesPerValue, nbuckets) {}

qnStrKeyDictionary::qnStrKeyDictionary(qnTypeObj& type, unsigned bytesPerValue) : qnDictionary(type) {
    keySize = sizeof(qnStr);
    valueSize = bytesPerValue;
}

unsigned long qnStrKeyDictionary::hashKey(const void* key) const { return static_cast<const qnStr*>(key)->hash(); }

int qnStrKeyDictionary::compareKeys(const void* a, const void* b) const {
    return compare(*static_cast<const qnStr*>(a), *static_cast<const qnStr*>(b));
}

void qnStrKeyDictionary::copyKey(const void* from, void* to) const { new (to) qnStr(*static_cast<const qnStr*>(from)); }

void qnStrKeyDictionary::destroyKey(void* key) const { static_cast<qnStr*>(key)->~qnStr(); }
