#include "NameSpace.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "Checked.h"
#include "Fatal.h"

// The tree is not balanced, and sorted input makes it a chain as long as there are names. So nothing here recurses:
// searching is a loop, and freeing finds its way back through the links of the nodes that it is about to free.

namespace {

constexpr unsigned firstCapacity = 100;

unsigned lengthOf(const char* name) {
    const std::uint64_t length = std::strlen(name);
    if (length > UINT32_MAX) qnFatal("NameSpace::makeAtom: a name of 4 gigabytes or more");
    return static_cast<unsigned>(length);
}

/**
 * Mixes the name from both ends towards the middle; the middle byte of an odd length counts as both.
 *
 * Deliberate: bytes count as signed and the sum is cut to 32 bits on every machine. The shape of the tree depends
 * on it.
 */
std::uint32_t hashOf(const char* name, unsigned len) {
    const auto byteAt = [name](unsigned index) {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(name[index])));
    };
    const unsigned half = len / 2 + len % 2;
    std::uint32_t hash = 0;
    for (unsigned i = 0; i < half; ++i) hash = 27 * (27 * hash + byteAt(i)) + byteAt(len - 1 - i);
    return hash;
}

/** Below 0, 0 or above 0: where the first `len` bytes at `name` stand to `other`, of which they may be a prefix. */
int compareNames(const char* name, unsigned len, const char* other) {
    const int order = std::strncmp(name, other, len);
    if (order != 0) return order;
    const bool isProperPrefix = strnlen(other, len) == len && other[len] != '\0';
    return isProperPrefix ? -1 : 0;
}

/** Makes a node with a name of its own or, where `copyName` is false, with the caller's. */
NameSpace::Node* makeNode(unsigned long atom, std::uint32_t hash, const char* name, unsigned len, bool copyName) {
    NameSpace::Node* node = new (std::nothrow) NameSpace::Node;
    if (node == nullptr) std::abort();
    node->left = nullptr;
    node->right = nullptr;
    node->atom = atom;
    node->hash = hash;
    if (!copyName) {
        node->name = const_cast<char*>(name);
        return node;
    }
    node->name = static_cast<char*>(std::malloc(std::size_t{len} + 1));
    if (node->name == nullptr) {
        delete node;
        std::abort();
    }
    std::memcpy(node->name, name, len);
    node->name[len] = '\0';
    return node;
}

/** Whether doubling from `capacity` reaches a table with a slot for `atom` that memory can address at all. */
bool canReach(unsigned capacity, unsigned long atom) {
    std::uint64_t slots = capacity;
    while (atom >= slots && slots <= UINT32_MAX) slots *= 2;
    return slots <= UINT32_MAX && slots <= SIZE_MAX / sizeof(NameSpace::Node*);
}

/** Doubles the table of `names` until it has a slot for `atom`; false if it cannot. */
bool growTable(NameSpace& names, unsigned long atom) {
    if (!canReach(names.capacity, atom)) return false;
    while (atom >= names.capacity) {
        const std::size_t slots = std::size_t{names.capacity} * 2;
        void* larger = std::realloc(names.table, slots * sizeof(NameSpace::Node*));
        if (larger == nullptr) return false;
        names.table = static_cast<NameSpace::Node**>(larger);
        for (std::size_t slot = names.capacity; slot < slots; ++slot) names.table[slot] = nullptr;
        names.capacity = static_cast<unsigned>(slots);
    }
    return true;
}

/** Whether the name of `node` is freed with it. */
bool ownsName(const NameSpace& names, const NameSpace::Node* node) {
    // Deliberate: a copied name under a number below `firstDynamic`, which an explicit name space may be given, is
    // never freed: whoever was handed the pointer may go on using it.
    return names.firstDynamic != 0 && node->atom >= names.firstDynamic;
}

void freeNode(const NameSpace& names, NameSpace::Node* node) {
    if (node->atom < names.capacity && names.table != nullptr && names.table[node->atom] == node)
        names.table[node->atom] = nullptr;
    if (ownsName(names, node)) std::free(node->name);
    delete node;
}

/**
 * Frees a tree, left before right before the node itself, in constant space: on the way down the `left` of a node,
 * once followed, keeps the way back up, and its `right` is cleared when it is followed.
 */
void freeTree(const NameSpace& names, NameSpace::Node* node) {
    NameSpace::Node* parent = nullptr;
    while (node != nullptr) {
        NameSpace::Node* const left = node->left;
        node->left = parent;
        parent = node;
        node = left;
        while (node == nullptr && parent != nullptr) {
            node = parent->right;
            parent->right = nullptr;
            if (node == nullptr) {
                NameSpace::Node* const done = parent;
                parent = done->left;
                freeNode(names, done);
            }
        }
    }
}

/** Clears the link of the tree that leads to `node`. Nodes of one hash may stand on either side of each other. */
void unhook(NameSpace& names, const NameSpace::Node* node) {
    std::vector<NameSpace::Node**> pending{&names.root};
    while (!pending.empty()) {
        NameSpace::Node** const link = pending.back();
        pending.pop_back();
        if (*link == node) {
            *link = nullptr;
            return;
        }
        if (*link == nullptr) continue;
        if (node->hash <= (*link)->hash) pending.push_back(&(*link)->left);
        if (node->hash >= (*link)->hash) pending.push_back(&(*link)->right);
    }
}

}  // namespace

NameSpace::NameSpace(int (*init)(NameSpace*), int explicitNumbering)
    : noAtom(0),
      lastAtom(0),
      root(nullptr),
      capacity(firstCapacity),
      table(static_cast<Node**>(std::calloc(firstCapacity, sizeof(Node*)))),
      explicitAtoms(0),
      firstDynamic(0) {
    if (table == nullptr) std::abort();
    if (init != nullptr && init(this) != 0) std::exit(-1);
    explicitAtoms = explicitNumbering;
    firstDynamic = lastAtom + 1;
}

NameSpace::~NameSpace() {
    freeAllAtoms();
    std::free(table);  // Deliberate: that of an empty name space, which freeAllAtoms keeps
}

unsigned long NameSpace::makeAtom(const char* name, int create) { return makeAtom(name, lengthOf(name), create); }

unsigned long NameSpace::makeAtom(const char* name, unsigned len, int create) {
    const bool allowed = create == 0 || explicitAtoms == 0;
    MORVAQNDS_REQUIRE(allowed, "NameSpace::makeAtom: explicit numbering, but no number for a name of %u bytes", len);
    if (!allowed) atomError();
    return internAtom(lastAtom + 1, name, len, create);
}

unsigned long NameSpace::makeAtom(unsigned long atom, const char* name, unsigned len, int create) {
    const bool allowed = create == 0 || explicitAtoms != 0;
    MORVAQNDS_REQUIRE(allowed, "NameSpace::makeAtom: automatic numbering, but number %lu for a name of %u bytes", atom,
                      len);
    if (!allowed) atomError();
    return internAtom(atom, name, len, create);
}

unsigned long NameSpace::internAtom(unsigned long atom, const char* name, unsigned len, int create) {
    const std::uint32_t hash = hashOf(name, len);
    Node** link = &root;
    while (Node* node = *link) {
        int order = 0;
        if (hash != node->hash) {
            order = hash < node->hash ? -1 : 1;
        } else {
            order = compareNames(name, len, node->name);
            if (order == 0) return node->atom;
        }
        link = order < 0 ? &node->left : &node->right;
    }
    if (create == 0) return noAtom;
    if (table == nullptr) qnFatal("NameSpace::internAtom: used after freeAllAtoms");

    // Deliberate: names of the initialisation function are static text and are kept by pointer, a shorter `len`
    // notwithstanding.
    Node* node = makeNode(atom, hash, name, len, firstDynamic != 0);
    if (atom >= capacity && !growTable(*this, atom)) {
        if (firstDynamic != 0) std::free(node->name);
        delete node;
        std::abort();
    }
    *link = node;
    table[atom] = node;
    if (atom > lastAtom) lastAtom = atom;
    return atom;
}

int NameSpace::validAtom(unsigned long atom) const {
    return atom != noAtom && atom <= lastAtom && table[atom] != nullptr;
}

const char* NameSpace::nameForAtom(unsigned long atom) const {
    if (atom > lastAtom || table == nullptr || table[atom] == nullptr) return nullptr;
    return table[atom]->name;
}

void NameSpace::atomError() { std::abort(); }

void NameSpace::freeAtom(Node* node) {
    if (node == nullptr) return;
    try {
        unhook(*this, node);
    } catch (const std::bad_alloc&) {
        qnFatal("NameSpace::freeAtom: out of memory");
    }
    freeTree(*this, node);
}

void NameSpace::freeAllAtoms() {
    if (root == nullptr) return;
    Node* const tree = root;
    root = nullptr;
    freeTree(*this, tree);
    std::free(table);
    table = nullptr;
    lastAtom = noAtom;
}
