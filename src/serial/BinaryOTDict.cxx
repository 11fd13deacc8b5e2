// The object table. The chains are those of any dictionary; an index beside them leads from a key to its entry in
// constant time. The index follows every change that the dictionary makes: new entries come through `addInternal` and
// `findCreate`, and every removal passes through `destroyKey`. Entries that came another way show in the count, and the
// index is then made anew.
#include <cstring>

#include "BinaryTranscriber.h"
#include "core/Heap.h"
#include "serial/WordMap.h"

struct qnBinaryOTDict::Index {
    struct Entry {
        char* block;
        bool isSet() const { return block != nullptr; }
    };

    Index() : entries(AddressGrain) {}

    /** Objects of the heap are 16 bytes apart. */
    static constexpr unsigned AddressGrain = 4;
    static constexpr unsigned IdGrain = 0;

    WordMap<Word, Entry> entries;
};

namespace {

qnBinaryOTDict::Word wordAt(const void* p) {
    qnBinaryOTDict::Word word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

}  // namespace

qnBinaryOTDict::qnBinaryOTDict(unsigned nbuckets)
    : qnDictionary(sizeof(Word), sizeof(Word), nbuckets),
      index_(heap::create<Index>("qnBinaryOTDict::qnBinaryOTDict")) {}

qnBinaryOTDict::qnBinaryOTDict(const qnBinaryOTDict& other)
    : qnDictionary(other), index_(heap::create<Index>("qnBinaryOTDict::qnBinaryOTDict")) {
    qnDictionary::operator=(other);
}

qnBinaryOTDict::~qnBinaryOTDict() {
    discardAll();
    cleanup();
    delete index_;
}

void qnBinaryOTDict::expectIds() { index_->entries.clear(Index::IdGrain); }

void qnBinaryOTDict::expect(Word id) const { index_->entries.expect(id); }

const char* qnBinaryOTDict::className() const { return "qnBinaryOTDict"; }

unsigned long qnBinaryOTDict::hashKey(const void* key) const { return static_cast<std::uint32_t>(wordAt(key) >> 2); }

int qnBinaryOTDict::compareKeys(const void* a, const void* b) const {
    Word difference = wordAt(a) - wordAt(b);
    int low = static_cast<int>(static_cast<std::uint32_t>(difference));
    return low == 0 && difference != 0 ? 1 : low;
}

void qnBinaryOTDict::copyKey(const void* from, void* to) const { std::memcpy(to, from, sizeof(Word)); }

void qnBinaryOTDict::destroyKey(void* key) const {
    Word word = wordAt(key);
    Index::Entry* entry = index_->entries.find(word);
    if (entry != nullptr && entry->block == key) index_->entries.erase(word);
}

void qnBinaryOTDict::copyValue(const void* from, void* to) const { std::memmove(to, from, sizeof(Word)); }

void qnBinaryOTDict::destroyValue(void*) const {}

void qnBinaryOTDict::createValue(void* to) const { std::memset(to, 0, sizeof(Word)); }

bool qnBinaryOTDict::xdrKey(qnTranscriber&, void*) { return false; }

bool qnBinaryOTDict::xdrValue(qnTranscriber&, void*) { return false; }

qnBinaryOTDict::Index& qnBinaryOTDict::index() const {
    if (index_->entries.size() != count) {
        index_->entries.clear();
        for (unsigned b = 0; b < buckets.length(); ++b) {
            for (const qnDictBucket* link = buckets.elements()[b]; link != nullptr; link = link->next) {
                Index::Entry& entry = index_->entries[wordAt(link->entry)];
                if (!entry.isSet()) entry.block = link->entry;
            }
        }
    }
    return *index_;
}

void* qnBinaryOTDict::find(const void* key, void** where) const {
    if (where != nullptr) return qnDictionary::find(key, where);
    const Index::Entry* entry = index().entries.find(wordAt(key));
    return entry == nullptr ? nullptr : entry->block + keySize;
}

void* qnBinaryOTDict::findCreate(const void* key) {
    Index::Entry& place = index().entries[wordAt(key)];
    if (!place.isSet()) {
        unsigned bucket = bucketOf(key);
        place.block = newEntry("qnBinaryOTDict::findCreate");
        copyKey(key, place.block);
        createValue(place.block + keySize);
        pushEntry(bucket, place.block);
    }
    return place.block + keySize;
}

void qnBinaryOTDict::addInternal(const void* key, const void* value) { copyValue(value, findCreate(key)); }

// What was allocated one after another is freed so, by taking the newest entry of each chain in turn; chain by chain,
// each of the many passes over a large table would wait for the whole of its memory.
void qnBinaryOTDict::discardAll() {
    index_->entries.clear();
    unsigned chains = buckets.length();
    while (chains != 0) {
        chains = 0;
        for (unsigned b = 0; b < buckets.length(); ++b) {
            qnDictBucket*& head = buckets.elements()[b];
            if (head == nullptr) continue;
            qnDictBucket* link = head;
            head = link->next;
            delete link;
            ++chains;
        }
    }
    count = 0;
}

void qnBinaryOTDict::removeAll() {
    if (iters.length() == 0) return discardAll();
    // Emptied first, the index need not follow every removal.
    index_->entries.clear();
    // The entry that an iterator meets first is the head of its chain, and so is found at once.
    qnBinaryOTDictIter it(*this);
    while (it.dict != nullptr) {
        if (it.current != nullptr) {
            Word key = wordAt(it.current->entry);
            remove(&key);
        }
        ++it;
    }
}
