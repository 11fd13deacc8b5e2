#ifndef MORVAQNDS_TESTS_PROBETABLE_H
#define MORVAQNDS_TESTS_PROBETABLE_H

#include <cstring>
#include <string>

/** What the probes of dictionaries and of sets share: tables whose keys are ints, and a log of what is called. */
class ProbeTable {
public:
    static int at(const void* record) {
        int value;
        std::memcpy(&value, record, sizeof value);
        return value;
    }

    /** What was called since the last time, as "hash 3, copyKey 3". */
    std::string calls() const {
        std::string text;
        text.swap(log_);
        return text;
    }

    unsigned long (*hasher)(int key) = nullptr;
    int modulus = 0;  // unless 0, keys that are equal modulo this are the same key

protected:
    void note(const std::string& call) const { log_ += (log_.empty() ? "" : ", ") + call; }

    /** The keys of a chain from its head: "32 1". */
    template <class Link>
    static std::string keysFrom(const Link* link) {
        std::string keys;
        for (; link != nullptr; link = link->next) keys += (keys.empty() ? "" : " ") + std::to_string(at(link->entry));
        return keys;
    }
    /** The keys of all chains: "0: 31 | 1: 32 1". */
    template <class Buckets>
    static std::string keysOf(const Buckets& buckets) {
        std::string text;
        for (unsigned b = 0; b < buckets.length(); ++b) {
            if (buckets.elements()[b] == nullptr) continue;
            text += (text.empty() ? "" : " | ") + std::to_string(b) + ": " + keysFrom(buckets.elements()[b]);
        }
        return text;
    }

private:
    mutable std::string log_;
};

#endif
