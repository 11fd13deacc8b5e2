#ifndef MORVAQNDS_TESTS_PROBEDICTIONARY_H
#define MORVAQNDS_TESTS_PROBEDICTIONARY_H

#include <cstring>
#include <string>
#include <vector>

#include "Dictionary.h"
#include "Transcriber.h"
#include "support/ProbeTable.h"

/**
 * A dictionary from int to int that writes down which record operations are called, in order. Its hash is the base
 * class's, so that an entry's bucket is its key modulo the bucket count.
 */
class ProbeDictionary : public qnDictionary, public ProbeTable {
public:
    enum ShapeOnly { shapeOnly };

    explicit ProbeDictionary(unsigned nbuckets = 0) : qnDictionary(sizeof(int), sizeof(int), nbuckets) {}
    explicit ProbeDictionary(qnTypeObj& type) : qnDictionary(type) { keySize = valueSize = sizeof(int); }
    ProbeDictionary(const ProbeDictionary& other) : qnDictionary(other) { qnDictionary::operator=(other); }
    /** What the base class alone copies. */
    ProbeDictionary(const ProbeDictionary& other, ShapeOnly) : qnDictionary(other) {}
    ~ProbeDictionary() override { cleanup(); }
    ProbeDictionary& operator=(const ProbeDictionary& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    const char* className() const override { return "ProbeDictionary"; }
    unsigned long hashKey(const void* key) const override {
        note("hash " + std::to_string(at(key)));
        return hasher != nullptr ? hasher(at(key)) : qnDictionary::hashKey(key);
    }
    int compareKeys(const void* a, const void* b) const override {
        note("compare " + std::to_string(at(a)) + " " + std::to_string(at(b)));
        return modulus == 0 ? at(a) - at(b) : at(a) % modulus - at(b) % modulus;
    }
    void copyKey(const void* from, void* to) const override {
        note("copyKey " + std::to_string(at(from)));
        std::memcpy(to, from, sizeof(int));
    }
    void destroyKey(void* key) const override { note("destroyKey " + std::to_string(at(key))); }
    void copyValue(const void* from, void* to) const override {
        note("copyValue " + std::to_string(at(from)));
        std::memcpy(to, from, sizeof(int));
    }
    void destroyValue(void* value) const override { note("destroyValue " + std::to_string(at(value))); }
    void createValue(void* to) const override {
        note("createValue");
        int zero = 0;
        std::memcpy(to, &zero, sizeof zero);
    }
    bool xdrKey(qnTranscriber& transcriber, void* key) override {
        note("xdrKey");
        return transcriber.xdr(static_cast<int*>(key), 1);
    }
    bool xdrValue(qnTranscriber& transcriber, void* value) override {
        note("xdrValue");
        return transcriber.xdr(static_cast<int*>(value), 1);
    }

    // In the terms of a test.

    void add(int key, int value) { addInternal(&key, &value); }
    bool has(int key) const { return find(&key, nullptr) != nullptr; }
    /** The value of `key`, which must be there. */
    int value(int key) const { return at(find(&key, nullptr)); }
    void removeKey(int key) { remove(&key); }

    /** The keys of a chain from its head: "32 1". */
    std::string chain(unsigned bucket) const { return keysFrom(buckets.elements()[bucket]); }
    /** The keys of all chains: "0: 31 | 1: 32 1". */
    std::string table() const { return keysOf(buckets); }
};

/** Where an iterator over a probe dictionary stands: "key=value", "advanced" or "finished". */
inline std::string standing(const qnDictIter& it) {
    bool advanced = (it.flags & qnDictIter::Advanced) != 0;
    if (it.dict == nullptr) {
        bool silent = it.getKey() == nullptr && it.getValue() == nullptr && it.current == nullptr;
        return silent && advanced ? "finished" : "dict is null, but the iterator is not finished";
    }
    if (advanced) {
        bool silent = it.getKey() == nullptr && it.getValue() == nullptr && it.current != nullptr;
        return silent ? "advanced" : "marked as advanced, but answers";
    }
    return std::to_string(ProbeDictionary::at(it.getKey())) + "=" + std::to_string(ProbeDictionary::at(it.getValue()));
}

#endif
