// The requests to the heap that names of properties make: for each, the table gets room for fifty more.
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
    for (unsigned names = 1; names < 120; ++names) expectNewTag(__LINE__, bytesOfTable('r', names + 50));
    return heapWatch::failures;
}
