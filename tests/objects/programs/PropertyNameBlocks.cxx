// The requests to the heap that names of properties make: the table gets room for fifty at a time.
#include <morvaqnds.h>

#include <string>

#include "support/HeapWatch.h"

namespace {

std::string bytesOfTable(char kind, unsigned names) { return kind + std::to_string(names * sizeof(qnStr)) + " "; }

/** A new tag for a name of two characters: the name sought and the one kept take three bytes each. */
void expectNewTag(int line, const std::string& table) {
    heapWatch::expect(line, ("m3 " + table + "m3 f ").c_str(), [] { qnProperty::allocNewTag("ab"); });
}

}  // namespace

int main() {
    qnInitializeToolkit();
    expectNewTag(__LINE__, bytesOfTable('m', 50));
    for (int i = 1; i < 50; ++i) expectNewTag(__LINE__, "");
    expectNewTag(__LINE__, bytesOfTable('r', 100));
    for (int i = 51; i < 100; ++i) expectNewTag(__LINE__, "");
    expectNewTag(__LINE__, bytesOfTable('r', 150));
    return heapWatch::failures;
}
