// The requests to the heap that sets make, to the byte: two for each key, and those of the key itself.
#include <morvaqnds.h>

#include <string>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

constexpr std::size_t Pointer = sizeof(void*);
constexpr std::size_t Link = 2 * Pointer;  // the entry and the next link

std::string request(char kind, std::size_t nbytes) { return kind + std::to_string(nbytes) + " "; }

template <class Operation>
void expectText(int line, const std::string& expected, Operation operation) {
    expect(line, expected.c_str(), operation);
}

/** Keys of plain bytes. */
class Records : public qnSet {
public:
    explicit Records(unsigned bytesPerKey, unsigned nbuckets = 0) : qnSet(bytesPerKey, nbuckets) {}
    ~Records() override { cleanup(); }
    bool xdrKey(qnTranscriber&, void*) override { return false; }
};

void strings() {
    const std::string table = request('m', 31 * Pointer);
    expectText(__LINE__, table + "f ", [] { qnStrSet s; });
    expectText(__LINE__, table + "f ", [] { qnStrSet s(31); });
    expectText(__LINE__, request('m', 7 * Pointer) + "f ", [] { qnStrSet s(7); });

    qnStrSet s, none;
    qnStr key("key"), empty;
    // The entry, its key, the link.
    expectText(__LINE__, request('m', sizeof(qnStr)) + "m4 " + request('m', Link), [&] { s.add(&key); });
    expectText(__LINE__, "", [&] { s.add(&key); });
    expectText(__LINE__, request('m', sizeof(qnStr)) + request('m', Link), [&] { s.add(&empty); });
    expectText(__LINE__, "", [&] { s.contains(&key); });
    const qnSet& itself = s;
    expectText(__LINE__, "", [&] { s += itself; });
    expectText(__LINE__, "", [&] { s *= itself; });
    expectText(__LINE__, "f f ", [&] { s.remove(&empty); });
    // The key, the entry, the link.
    expectText(__LINE__, "f f f ", [&] { s.remove(&key); });
    expectText(__LINE__, "", [&] { s.remove(&key); });
    // A copy has no table.
    expectText(__LINE__, "", [&] { qnStrSet copy(none); });
    expectText(__LINE__, "", [&] { qnTmpSet copy(none); });
    expectText(__LINE__, "f ", [&] { s = none; });
}

void records() {
    const char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (unsigned size : {1u, 3u, 4u, 8u}) {
        Records s(size, 1);
        expectText(__LINE__, request('m', size) + request('m', Link), [&] { s.add(bytes); });
        expectText(__LINE__, "f f ", [&] { s.cleanup(); });
    }
}

void manyKeysNeverRehash() {
    Records s(sizeof(int), 1);
    for (int i = 0; i < 100; ++i) {
        expectText(__LINE__, request('m', sizeof(int)) + request('m', Link), [&] { s.add(&i); });
    }
}

}  // namespace

int main() {
    strings();
    records();
    manyKeysNeverRehash();
    return heapWatch::failures;
}
