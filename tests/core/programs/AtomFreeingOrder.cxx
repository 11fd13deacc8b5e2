// A tree of atoms is freed left before right before the node itself, whatever its shape. Seen through the program's own
// `operator delete`.

#include <cstdlib>
#include <new>
#include <string>

#include "NameSpace.h"

static void* watched[8];
static char freed[16];
static unsigned freedCount = 0;

static void note(void* block) {
    if (block == nullptr) return;
    for (unsigned atom = 1; atom < 8; ++atom) {
        if (watched[atom] != block) continue;
        freed[freedCount++] = static_cast<char>('0' + atom);
        watched[atom] = nullptr;
    }
}

void* operator new(std::size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) std::abort();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* block) noexcept {
    note(block);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    note(block);
    std::free(block);
}

/** Makes atoms 1, 2, ... of one-letter names, which are ordered by their letter, and tells the order of freeing. */
static std::string orderOfFreeing(const char* letters) {
    freedCount = 0;
    NameSpace names(nullptr, 0);
    for (const char* letter = letters; *letter != '\0'; ++letter) {
        const unsigned long atom = names.makeAtom(letter, 1, 1);
        watched[atom] = names.table[atom];
    }
    names.freeAllAtoms();
    return std::string(freed, freedCount);
}

int main() {
    const struct {
        const char* letters;
        const char* order;
    } shapes[] = {
        {"d", "1"},     {"dbf", "231"},     {"abc", "321"},       {"cba", "321"}, {"dbacfeg", "3426751"},
        {"aeb", "321"}, {"eadbc", "54321"}, {"dbface", "452631"},
    };
    for (const auto& shape : shapes) {
        if (orderOfFreeing(shape.letters) != shape.order) return 1;
    }
    return 0;
}
