#ifndef MORVAQNDS_WORDMAP_H
#define MORVAQNDS_WORDMAP_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/Heap.h"

/**
 * A hash map from words to small plain records: open addressing with linear probing in a power of two of slots, at most
 * half full. Constant time a look-up, also for keys that a hostile stream chooses: the hash is keyed.
 *
 * Keys are `grain` bits apart, 0 for numbers and more for addresses. Sixteen neighbours share a group of slots, so that
 * what is numbered or allocated one after another is found close together.
 *
 *     WordMap<std::uint32_t, Info> infos(0);
 *     infos[id].length = 12;
 *     if (Info* known = infos.find(id)) ...
 *
 * Records must be trivially copyable; new ones are zero bytes. Slots are kept small, as large maps are as fast as their
 * memory: there is no mark of use beside the record, which tells itself by `isSet()` whether it is one. So whoever
 * makes a record sets it before the next operation. A pointer to a record is valid until the next insertion or removal.
 */
template <class Word, class Record>
class WordMap {
public:
    explicit WordMap(unsigned grain) : slots_(nullptr), capacity_(0), count_(0), grain_(grain) {}
    ~WordMap() { std::free(slots_); }

    WordMap(const WordMap&) = delete;
    WordMap& operator=(const WordMap&) = delete;

    std::size_t size() const { return count_; }

    Record* find(Word key) const {
        if (capacity_ == 0) return nullptr;
        Slot& slot = slots_[placeOf(key)];
        return slot.record.isSet() ? &slot.record : nullptr;
    }

    /** Says that `key` will be looked for soon: a large map's memory is far away. */
    void expect(Word key) const {
        if (capacity_ != 0) __builtin_prefetch(&slots_[hash(key)]);
    }

    /** The record of `key`, which is made if it is absent. */
    Record& operator[](Word key) {
        if (2 * (count_ + 1) > capacity_) grow();
        Slot& slot = slots_[placeOf(key)];
        if (!slot.record.isSet()) {
            slot.key = key;
            ++count_;
        }
        return slot.record;
    }

    void erase(Word key) {
        if (capacity_ == 0) return;
        std::size_t hole = placeOf(key);
        if (!slots_[hole].record.isSet()) return;
        --count_;
        // What follows in the run moves back into the hole unless its own place lies behind it.
        for (std::size_t i = next(hole); slots_[i].record.isSet(); i = next(i)) {
            std::size_t home = hash(slots_[i].key);
            if (((i - home) & (capacity_ - 1)) >= ((i - hole) & (capacity_ - 1))) {
                slots_[hole] = slots_[i];
                hole = i;
            }
        }
        slots_[hole].record = Record();
    }

    /** Forgets everything; keys may be of another grain from now on. */
    void clear(unsigned grain) {
        clear();
        grain_ = grain;
    }
    void clear() {
        std::free(slots_);
        slots_ = nullptr;
        capacity_ = count_ = 0;
    }

private:
    static constexpr unsigned GroupBits = 4;
    static constexpr unsigned GroupSize = 1u << GroupBits;

    struct Slot {
        Word key;
        Record record;
    };

    /** Fibonacci hashing of the group, by the golden ratio's fraction of 2^64, and a round of mixing (Stafford's). */
    std::size_t hash(Word key) const {
        std::uint64_t number = std::uint64_t(key) >> grain_;
        std::uint64_t mixed = ((number >> GroupBits) ^ seed()) * 0x9E3779B97F4A7C15u;
        mixed = (mixed ^ (mixed >> 29)) * 0xBF58476D1CE4E5B9u;
        std::uint64_t group = mixed >> 32;
        return static_cast<std::size_t>(group << GroupBits | (number & (GroupSize - 1))) & (capacity_ - 1);
    }

    /** Differs from process to process, so that keys cannot be chosen to collide. */
    static std::uint64_t seed() {
        static const char anchor = 0;
        return reinterpret_cast<std::uintptr_t>(&anchor);
    }

    std::size_t next(std::size_t i) const { return (i + 1) & (capacity_ - 1); }

    std::size_t placeOf(Word key) const {
        std::size_t i = hash(key);
        while (slots_[i].record.isSet() && slots_[i].key != key) i = next(i);
        return i;
    }

    void grow() {
        Slot* old = slots_;
        std::size_t oldCapacity = capacity_;
        capacity_ = capacity_ == 0 ? 64 : 2 * capacity_;
        slots_ = static_cast<Slot*>(std::calloc(capacity_, sizeof(Slot)));
        if (slots_ == nullptr) heap::outOfMemory("qnBinaryTranscriber");
        for (std::size_t i = 0; i < oldCapacity; ++i) {
            if (old[i].record.isSet()) slots_[placeOf(old[i].key)] = old[i];
        }
        std::free(old);
    }

    Slot* slots_;
    std::size_t capacity_;
    std::size_t count_;
    unsigned grain_;
};

#endif
