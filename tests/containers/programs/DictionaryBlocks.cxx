// The requests to the heap that dictionaries make, to the byte: two for each entry, and those of its key and value.
#include <morvaqnds.h>

#include <string>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

constexpr std::size_t Pointer = sizeof(void*);
constexpr std::size_t Link = 2 * Pointer;                          // the entry and the next link
constexpr std::size_t Pair = 2 * sizeof(qnStr);                    // two string records
constexpr std::size_t StringAndPointer = sizeof(qnStr) + Pointer;  // a string record and a pointer word

std::string request(char kind, std::size_t nbytes) { return kind + std::to_string(nbytes) + " "; }

template <class Operation>
void expectText(int line, const std::string& expected, Operation operation) {
    expect(line, expected.c_str(), operation);
}

void strings() {
    const std::string table = request('m', 31 * Pointer);
    expectText(__LINE__, table + "f ", [] { qnStrStrDictionary d; });
    expectText(__LINE__, table + "f ", [] { qnStrStrDictionary d(31); });
    expectText(__LINE__, request('m', 7 * Pointer) + "f ", [] { qnStrStrDictionary d(7); });

    qnStrStrDictionary d;
    qnStr key("key"), value("value"), other("a longer value"), empty;
    // The entry, its key, its value, the link.
    expectText(__LINE__, request('m', Pair) + "m4 m6 " + request('m', Link), [&] { d.addInternal(&key, &value); });
    // Replacing: the old value goes before the copy is made, and the key record stays.
    expectText(__LINE__, "f m15 ", [&] { d.addInternal(&key, &other); });
    expectText(__LINE__, "", [&] { d.addInternal(&key, d.find(&key, nullptr)); });
    expectText(__LINE__, "", [&] { d.findCreate(&key); });
    expectText(__LINE__, request('m', Pair) + request('m', Link), [&] { d.findCreate(&empty); });
    expectText(__LINE__, "f f ", [&] { d.remove(&empty); });
    // The key, the value, the entry, the link.
    expectText(__LINE__, "f f f f ", [&] { d.remove(&key); });
    expectText(__LINE__, "", [&] { d.remove(&key); });
}

void pointers() {
    qnVoidPtrDict d;
    qnStr key("key");
    void* value = &d;
    expectText(__LINE__, request('m', StringAndPointer) + "m4 " + request('m', Link),
               [&] { d.addInternal(&key, &value); });
    expectText(__LINE__, "", [&] { d.addInternal(&key, &value); });
    void* moved = nullptr;
    // The value's own block; the key, the entry, the link.
    expectText(__LINE__, request('m', Pointer) + "f f f ", [&] { moved = d.cut(&key); });
    expectText(__LINE__, "f ", [&] { std::free(moved); });
    expectText(__LINE__, "", [&] { moved = d.cut(&key); });
}

void manyEntriesNeverRehash() {
    qnVoidPtrDict d(1);
    void* value = nullptr;
    for (int i = 100; i < 200; ++i) {
        qnStr key(i);
        expectText(__LINE__, request('m', StringAndPointer) + "m4 " + request('m', Link),
                   [&] { d.addInternal(&key, &value); });
    }
}

}  // namespace

int main() {
    strings();
    pointers();
    manyEntriesNeverRehash();
    return heapWatch::failures;
}
