#include "GenericList.h"

#include <climits>
#include <new>

#include "Checked.h"
#include "Fatal.h"
#include "containers/NearestWalk.h"

namespace {

// Deliberate: these two texts are what programs and their log readers look for, in every build.
[[noreturn]] void boundsViolation() { qnFatal("List bounds violation in ../GenericList.cxx aborting ..."); }
[[noreturn]] void underflow() { qnFatal("List underflow in ../GenericList.cxx aborting ..."); }

#ifdef MORVAQNDS_CHECKED
bool isNodeOf(const GenericList& list, const GenericNode* node) {
    const GenericNode* candidate = list.head;
    while (candidate != nullptr && candidate != node) candidate = candidate->next;
    return candidate != nullptr;
}
#endif

}  // namespace

GenericNode::~GenericNode() {
    if (prev != nullptr) prev->next = next;
    if (next != nullptr) next->prev = prev;
}

GenericList::GenericList() : count(0), cursorIndex(0), head(nullptr), tail(nullptr), cursor(nullptr) {}

GenericList::GenericList(const GenericList& source) : GenericList() {
    for (const GenericNode* node = source.head; node != nullptr; node = node->next) append(node->item);
}

GenericList::~GenericList() { clear(); }

GenericNode* GenericList::makeNode(void* item, const char* operation) const {
    if (count == INT_MAX) qnFatal("GenericList::%s: more than %d items", operation, INT_MAX);
    GenericNode* node = new (std::nothrow) GenericNode(item);
    if (node == nullptr) qnFatal("GenericList::%s: out of memory", operation);
    return node;
}

/** Hangs `node` between two neighbours, each null at its end of the list, and puts the cursor on it. */
void GenericList::link(GenericNode* before, GenericNode* node, GenericNode* after, int index) {
    node->prev = before;
    node->next = after;
    (before != nullptr ? before->next : head) = node;
    (after != nullptr ? after->prev : tail) = node;
    cursor = node;
    cursorIndex = index;
    ++count;
}

void GenericList::append(void* item) { link(tail, makeNode(item, "append"), nullptr, count); }

void GenericList::prepend(void* item) { link(nullptr, makeNode(item, "prepend"), head, 0); }

void GenericList::insertAt(long index, void* item) {
    if (index < 0 || index > count) boundsViolation();
    if (index == 0) return prepend(item);
    if (index == count) return append(item);
    GenericNode* before = findNode(index - 1);
    link(before, makeNode(item, "insertAt"), before->next, static_cast<int>(index));
}

void* GenericList::findItem(long index) const { return findNode(index)->item; }

GenericNode* GenericList::findNode(long index) const {
    if (index < 0 || index >= count) boundsViolation();
    return nearestwalk::find(index, count, head, tail, cursor, cursorIndex);
}

void* GenericList::remove(GenericNode* node) {
    if (count <= 0) underflow();
    MORVAQNDS_REQUIRE(isNodeOf(*this, node), "GenericList::remove: node %p is not in the list",
                      static_cast<void*>(node));
    if (node == head) head = node->next;
    if (node == tail) tail = node->prev;
    --count;
    cursor = head;
    cursorIndex = 0;
    void* item = node->item;
    delete node;
    return item;
}

void* GenericList::remove(void* item) {
    GenericNode* node = head;
    while (node != nullptr && node->item != item) node = node->next;
    return node != nullptr ? remove(node) : nullptr;
}

void* GenericList::remove(long index) { return remove(findNode(index)); }

void GenericList::clear() {
    while (head != nullptr) remove(head);
}
