#ifndef MORVAQNDS_TESTS_PROBESET_H
#define MORVAQNDS_TESTS_PROBESET_H

#include <cstring>
#include <initializer_list>
#include <string>

#include "Set.h"
#include "Transcriber.h"
#include "support/ProbeTable.h"

/**
 * A set of ints that writes down which key operations are called, in order. Its operations are the base class's, so
 * that a key's bucket is the key modulo the bucket count.
 */
class ProbeSet : public qnSet, public ProbeTable {
public:
    explicit ProbeSet(unsigned nbuckets = 0) : qnSet(sizeof(int), nbuckets) {}
    ProbeSet(unsigned nbuckets, std::initializer_list<int> keys) : qnSet(sizeof(int), nbuckets) {
        for (int key : keys) put(key);
        calls();
    }
    explicit ProbeSet(qnTypeObj& type) : qnSet(type) { keySize = sizeof(int); }
    ProbeSet(const ProbeSet& other) : qnSet(other) {}
    explicit ProbeSet(const qnTmpSet& other) : qnSet(other) {}
    ~ProbeSet() override { cleanup(); }
    ProbeSet& operator=(const ProbeSet& other) {
        qnSet::operator=(other);
        return *this;
    }

    unsigned long hashKey(const void* key) const override {
        note("hash " + std::to_string(at(key)));
        return hasher != nullptr ? hasher(at(key)) : qnSet::hashKey(key);
    }
    int compareKeys(const void* a, const void* b) const override {
        note("compare " + std::to_string(at(a)) + " " + std::to_string(at(b)));
        return modulus == 0 ? qnSet::compareKeys(a, b) : at(a) % modulus - at(b) % modulus;
    }
    void copyKey(const void* from, void* to) const override {
        note("copyKey " + std::to_string(at(from)));
        qnSet::copyKey(from, to);
    }
    void destroyKey(void* key) const override {
        note("destroyKey " + std::to_string(at(key)));
        qnSet::destroyKey(key);
    }
    bool xdrKey(qnTranscriber& transcriber, void* key) override {
        note("xdrKey");
        return transcriber.xdr(static_cast<int*>(key), 1);
    }

    // In the terms of a test.

    void put(int key) { add(&key); }
    bool has(int key) const { return contains(&key); }
    void removeKey(int key) { remove(&key); }
    /** For operations with itself, which some compilers take for an oversight. */
    const qnSet& itself() const { return *this; }

    /** The keys of a chain from its head: "32 1". */
    std::string chain(unsigned bucket) const { return keysFrom(buckets.elements()[bucket]); }
    /** The keys of all chains: "0: 31 | 1: 32 1". */
    std::string table() const { return keysOf(buckets); }
};

/** Where an iterator over a probe set stands: the key, "advanced" or "finished". */
inline std::string standing(const qnSetIter& it) {
    bool advanced = (it.flags & qnSetIter::Advanced) != 0;
    if (it.set == nullptr) {
        bool silent = it.getKey() == nullptr && it.current == nullptr;
        return silent && advanced ? "finished" : "set is null, but the iterator is not finished";
    }
    if (advanced) {
        bool silent = it.getKey() == nullptr && it.current != nullptr;
        return silent ? "advanced" : "marked as advanced, but answers";
    }
    return std::to_string(ProbeSet::at(it.getKey()));
}

/** The keys that an iterator visits from where it stands: "0 13 8 3". */
inline std::string rest(qnSetIter& it) {
    std::string keys;
    for (; it.set != nullptr; ++it) keys += (keys.empty() ? "" : " ") + std::to_string(ProbeSet::at(it.getKey()));
    return keys;
}

#endif
