#include "Set.h"

#include <cstring>

#include "Fatal.h"
#include "containers/Chains.h"
#include "core/Heap.h"

namespace {

typedef chains::Iteration<qnSetIter, qnSet, &qnSetIter::set> Iteration;

}  // namespace

// Construction

qnSet::qnSet(unsigned bytesPerKey, unsigned nbuckets) : count(0), keySize(bytesPerKey), dismantled_(false) {
    buckets.resize(nbuckets == 0 ? chains::DefaultBuckets : nbuckets);
}

qnSet::qnSet(const qnSet& other) : qnXDRObj(other), count(0), keySize(0), dismantled_(false) {
    // Deliberate: the copy has no buckets, so there is no place for keys.
    other.requireNoKeys("qnSet::qnSet");
}

qnSet::qnSet(const qnTmpSet& other) : qnSet(static_cast<const qnSet&>(other)) {}

qnSet::qnSet(qnTypeObj& type) : qnXDRObj(type), count(0), keySize(0), dismantled_(false) {}

// Iterators that are left would reach for a set that is gone.
qnSet::~qnSet() { detachIters(); }

qnSet& qnSet::operator=(const qnSet& other) {
    if (this == &other) return *this;
    other.requireNoKeys("qnSet::operator=");
    // Deliberate: what a destructor does and no more. Links that are left belong to nobody, `count` and `keySize` stay,
    // and the object counts as a bare root object from now on.
    detachIters();
    buckets.resize(0);
    dismantled_ = true;
    return *this;
}

void qnSet::requireNoKeys(const char* operation) const {
    for (unsigned b = 0; b < bucketCount(); ++b) {
        if (buckets.elements()[b] != nullptr) {
            qnFatal("%s: the source has keys, but there are no buckets to add them to", operation);
        }
    }
}

// Key operations

unsigned long qnSet::hashKey(const void* key) const { return chains::wordHash(key, keySize); }

int qnSet::compareKeys(const void* a, const void* b) const { return std::memcmp(a, b, keySize); }

void qnSet::copyKey(const void* from, void* to) const { std::memcpy(to, from, keySize); }

void qnSet::destroyKey(void*) const {}

unsigned qnSet::streamKeySize() const { return keySize; }

// Keys

unsigned qnSet::bucketOf(const void* key) const { return static_cast<unsigned>(hashKey(key)) % bucketCount(); }

char* qnSet::newEntry(const char* operation) const {
    return static_cast<char*>(heap::allocate(keySize, operation));
}

const void* qnSet::find(const void* key) const {
    if (bucketCount() == 0) return nullptr;
    qnSetBucket* head = buckets.elements()[bucketOf(key)];
    qnSetBucket* link = *chains::placeOf(*this, &head, key);
    return link == nullptr ? nullptr : link->entry;
}

void qnSet::add(const void* key) {
    if (bucketCount() == 0) qnFatal("qnSet::add: the set has no buckets");
    unsigned bucket = bucketOf(key);
    if (*chains::placeOf(*this, &buckets.elements()[bucket], key) != nullptr) return;
    char* entry = newEntry("qnSet::add");
    copyKey(key, entry);
    qnSetBucket*& head = buckets.elements()[bucket];
    head = heap::create<qnSetBucket>("qnSet::add", entry, head);
    ++count;
}

void qnSet::remove(const void* key) {
    if (bucketCount() == 0) return;
    qnSetBucket** place = chains::placeOf(*this, &buckets.elements()[bucketOf(key)], key);
    qnSetBucket* link = *place;
    if (link == nullptr) return;
    *place = link->next;
    discard(link);
}

/** Destroys a link that has left its chain; it keeps its successor for the iterators that stand on it. */
void qnSet::discard(qnSetBucket* link) {
    destroyKey(link->entry);
    invalidateIters(link);
    delete link;
    --count;
}

void qnSet::cleanup() {
    for (unsigned b = 0; b < bucketCount(); ++b) {
        // The head follows, because each class of a hierarchy cleans up in its destructor: the second time there must
        // be nothing left.
        qnSetBucket*& head = buckets.elements()[b];
        while (head != nullptr) {
            qnSetBucket* link = head;
            head = link->next;
            discard(link);
        }
    }
    detachIters();
}

// Algebra

/** `reader`, one of the two, is about to look up the keys of the other one. */
void qnSet::requireLikeKeys(const qnSet& other, [[maybe_unused]] const qnSet& reader, const char* operation) const {
    // Without buckets there are no keys.
    if (keySize == other.keySize || bucketCount() == 0 || other.bucketCount() == 0) return;
#ifdef MORVAQNDS_CHECKED
    const bool refused = true;
#else
    // Longer keys are taken for their first bytes; shorter ones would be read past their end.
    const bool refused = reader.keySize == (keySize > other.keySize ? keySize : other.keySize);
#endif
    if (refused) {
        qnFatal("qnSet::%s: keys of %u bytes cannot be combined with keys of %u", operation, keySize, other.keySize);
    }
}

qnSet& qnSet::operator+=(const qnSet& other) {
    requireLikeKeys(other, *this, "operator+=");
    for (unsigned b = 0; b < other.bucketCount(); ++b) {
        for (const qnSetBucket* link = other.buckets.elements()[b]; link != nullptr; link = link->next) {
            add(link->entry);
        }
    }
    return *this;
}

qnSet& qnSet::operator-=(const qnSet& other) {
    if (this == &other) {
        // An iterator survives what is removed under it.
        for (qnSetIter it(*this); it.set != nullptr; ++it) remove(it.getKey());
        return *this;
    }
    requireLikeKeys(other, *this, "operator-=");
    for (unsigned b = 0; b < other.bucketCount(); ++b) {
        for (const qnSetBucket* link = other.buckets.elements()[b]; link != nullptr; link = link->next) {
            remove(link->entry);
        }
    }
    return *this;
}

qnSet& qnSet::operator*=(const qnSet& other) {
    requireLikeKeys(other, other, "operator*=");
    for (unsigned b = 0; b < bucketCount(); ++b) {
        qnSetBucket** place = &buckets.elements()[b];
        while (qnSetBucket* link = *place) {
            if (other.contains(link->entry)) {
                place = &link->next;
            } else {
                *place = link->next;
                discard(link);
            }
        }
    }
    return *this;
}

// Iterators

void qnSet::addIter(qnSetIter* iter) { iters.append(&iter); }

void qnSet::removeIter(qnSetIter* iter) { Iteration::remove(iters, 0, iter, "qnSet::removeIter"); }

void qnSet::invalidateIters(const qnSetBucket* link) const { Iteration::invalidate(iters, 0, link); }

/** Detaches what is registered; the marks stay. */
void qnSet::detachIters() {
    if (iters.length() == 0) return;
    for (unsigned i = 0; i < iters.length(); ++i) {
        qnSetIter* iter = iters.elements()[i];
        iter->set = nullptr;
        iter->current = nullptr;
    }
    iters.resize(0);
}

qnSetIter::qnSetIter(qnSet& container) : flags(0) { Iteration::start(*this, container); }

qnSetIter::~qnSetIter() { Iteration::leave(*this); }

qnSetIter& qnSetIter::operator=(qnSet& container) {
    Iteration::leave(*this);
    Iteration::start(*this, container);
    return *this;
}

qnSetIter& qnSetIter::operator++() {
    Iteration::advance(*this);
    return *this;
}

void qnSetIter::advanceToValid() { Iteration::advanceToValid(*this); }

// The temporary

qnTmpSet::qnTmpSet(const qnSet& other) : qnSet(other) {}

bool qnTmpSet::xdrKey(qnTranscriber&, void*) { return false; }
