#include "IndexableList.h"

#include <climits>

#include "Checked.h"
#include "Fatal.h"
#include "containers/NearestWalk.h"

// What a caller can do to a list without a memory error in the list's own code: hand over items with links that lead
// elsewhere, splice behind the tail so that `tail` is not the end of the chain, give a bad index. Therefore walks end
// where the chain ends, the head's `prev` is never followed, and the cursor never stays on an item that has left.

namespace {

/** Calls `visit` for each item of a chain and returns their number. A circle is found by a marker left behind. */
template <class Visit>
int walkChain(qnLinkItem* chain, const char* operation, Visit visit) {
    int number = 0;
    unsigned nextMark = 1;
    const qnLinkItem* marker = nullptr;
    for (qnLinkItem* item = chain; item != nullptr; item = item->next) {
        if (item == marker) qnFatal("qnIndexableList::%s: the chain runs in a circle", operation);
        if (number == INT_MAX) qnFatal("qnIndexableList::%s: more than %d items", operation, INT_MAX);
        visit(item);
        ++number;
        if (static_cast<unsigned>(number) == nextMark) {
            marker = item;
            nextMark *= 2;
        }
    }
    return number;
}

#ifdef MORVAQNDS_CHECKED
bool holds(const qnIndexableList& list, const qnLinkItem* sought) {
    const qnLinkItem* item = list.head;
    int left = list.count;
    while (left > 0 && item != nullptr && item != sought) {
        item = item->next;
        --left;
    }
    return left > 0 && item != nullptr;
}
#endif

/** The last link that can be reached from `link` in fewer than `count` steps. */
qnLinkItem* endOfChain(qnLinkItem* link, int count) {
    for (; count > 1 && link != nullptr && link->next != nullptr; --count) link = link->next;
    return link;
}

}  // namespace

qnIndexableList::qnIndexableList() : head(nullptr), tail(nullptr), cursorIndex(0), cursor(nullptr), count(0) {}

qnIndexableList::qnIndexableList(qnLinkItem* chain) : qnIndexableList() {
    head = chain;
    cursor = chain;
    count = walkChain(chain, "qnIndexableList", [this](qnLinkItem* item) {
        if (tail != nullptr) item->prev = tail;
        tail = item;
    });
}

/** The item's predecessor in this list. */
qnLinkItem* qnIndexableList::previousOf(const qnLinkItem* item) const { return item == head ? nullptr : item->prev; }

/** The item's successor in this list; behind a tail left behind there is one. */
qnLinkItem* qnIndexableList::followerOf(const qnLinkItem* item) const {
    return item == head && count <= 1 ? nullptr : item->next;
}

void qnIndexableList::resetCursor() {
    cursor = head;
    cursorIndex = 0;
}

void qnIndexableList::becomeEmpty() {
    head = nullptr;
    tail = nullptr;
    count = 0;
    resetCursor();
}

void qnIndexableList::addToCount(int number, const char* operation) {
    if (count > 0 && number > INT_MAX - count) qnFatal("qnIndexableList::%s: more than %d items", operation, INT_MAX);
    count += number;
}

qnLinkItem* qnIndexableList::findLink(long index) {
    MORVAQNDS_REQUIRE(index >= 0 && index < count, "qnIndexableList::findLink: index %ld outside a list of %d", index,
                      count);
    if (cursor == nullptr) resetCursor();
    return nearestwalk::find(index, count, head, tail, cursor, cursorIndex);
}

void qnIndexableList::appendAt(long index, qnLinkItem* item) { insertAt(index < count ? index + 1 : index, item); }

void qnIndexableList::insertAt(long index, qnLinkItem* item) {
    MORVAQNDS_REQUIRE(index >= 0, "qnIndexableList::insertAt: index %ld is negative", index);
    MORVAQNDS_REQUIRE(item != nullptr, "qnIndexableList::insertAt: no item for index %ld", index);
    MORVAQNDS_REQUIRE(item != head && item != tail, "qnIndexableList::insertAt: item %p is in the list already",
                      static_cast<void*>(item));
    qnLinkItem* place = head != nullptr && index < count ? findLink(index) : nullptr;
    qnLinkItem* behindTail = head != nullptr ? followerOf(tail) : nullptr;
    addToCount(1, "insertAt");
    if (head == nullptr) {
        // Deliberate: the item's own links stay, so that whoever relies on them still finds them.
        head = item;
        tail = item;
        resetCursor();
    } else if (place != nullptr) {
        qnLinkItem* before = previousOf(place);
        item->prev = before;
        item->next = place;
        place->prev = item;
        (before != nullptr ? before->next : head) = item;
        if (index <= cursorIndex) ++cursorIndex;
    } else {
        item->prev = tail;
        item->next = behindTail;
        tail->next = item;
        if (behindTail != nullptr) behindTail->prev = item;
        tail = item;
    }
}

/** Takes `item` out of the chain and off the count; the cursor is the caller's business. */
void qnIndexableList::detach(qnLinkItem* item) {
    qnLinkItem* before = previousOf(item);
    qnLinkItem* after = followerOf(item);
    if (before != nullptr) before->next = after;
    if (after != nullptr) after->prev = before;
    if (item == head) head = after;
    --count;
    // A tail without a predecessor may still have followers, spliced in behind it; then the last of them is the tail.
    if (item == tail) tail = before != nullptr ? before : endOfChain(head, count);
    item->next = nullptr;
    item->prev = nullptr;
}

qnLinkItem* qnIndexableList::unlink(qnLinkItem* item) {
    MORVAQNDS_REQUIRE(holds(*this, item), "qnIndexableList::unlink: item %p is not in the list",
                      static_cast<void*>(item));
    detach(item);
    resetCursor();
    return item;
}

qnLinkItem* qnIndexableList::unlinkAt(long index) {
    MORVAQNDS_REQUIRE(index >= 0 && index < count, "qnIndexableList::unlinkAt: index %ld outside a list of %d", index,
                      count);
    qnLinkItem* link = findLink(index);
    if (link == nullptr) return nullptr;
    if (index < cursorIndex) {
        --cursorIndex;
    } else if (index == cursorIndex) {
        if (followerOf(link) != nullptr) {
            cursor = followerOf(link);
        } else if (previousOf(link) != nullptr) {
            cursor = previousOf(link);
            --cursorIndex;
        } else {
            cursor = nullptr;
            cursorIndex = 0;
        }
    }
    detach(link);
    if (cursor == link) resetCursor();
    return link;
}

/** Ends the list before `link` and counts what remains. A cursor that has left with the rest goes to the head. */
void qnIndexableList::cutBefore(qnLinkItem* link) {
    if (link == head) return becomeEmpty();
    if (link == nullptr || link->prev == nullptr) return;
    tail = link->prev;
    tail->next = nullptr;
    link->prev = nullptr;
    bool cursorStays = cursor == nullptr;
    count = walkChain(head, "split", [&](const qnLinkItem* item) { cursorStays = cursorStays || item == cursor; });
    if (!cursorStays) resetCursor();
}

qnLinkItem* qnIndexableList::split(qnLinkItem* link) {
    MORVAQNDS_REQUIRE(holds(*this, link), "qnIndexableList::split: item %p is not in the list",
                      static_cast<void*>(link));
    cutBefore(link);
    resetCursor();
    return link;
}

qnLinkItem* qnIndexableList::splitAt(long index) {
    MORVAQNDS_REQUIRE(index >= 0 && index < count, "qnIndexableList::splitAt: index %ld outside a list of %d", index,
                      count);
    qnLinkItem* link = findLink(index);
    cutBefore(link);
    if (cursor != nullptr && index <= cursorIndex) resetCursor();
    return link;
}

/** Moves the chain of `other` between two neighbours, each null where there is none. Leaves `tail` alone. */
void qnIndexableList::splice(qnLinkItem* before, qnLinkItem* after, qnIndexableList* other, const char* operation) {
    addToCount(other->count, operation);
    other->head->prev = before;
    (before != nullptr ? before->next : head) = other->head;
    if (after != nullptr) {
        qnLinkItem* end = endOfChain(other->tail, other->count);
        end->next = after;
        after->prev = end;
    }
    cursor = nullptr;
    cursorIndex = 0;
    other->becomeEmpty();
}

void qnIndexableList::spliceAtEnd(qnIndexableList* other, const char* operation) {
    qnLinkItem* newTail = other->tail;
    splice(tail, tail != nullptr ? followerOf(tail) : nullptr, other, operation);
    tail = newTail;
}

void qnIndexableList::insertListAt(long index, qnIndexableList* other) {
    MORVAQNDS_REQUIRE(index >= 0, "qnIndexableList::insertListAt: index %ld is negative", index);
    MORVAQNDS_REQUIRE(other != nullptr && other != this, "qnIndexableList::insertListAt: not another list, index %ld",
                      index);
    if (other == this || other->head == nullptr) return;
    qnLinkItem* place = head != nullptr && index < count ? findLink(index) : nullptr;
    if (place != nullptr) {
        splice(previousOf(place), place, other, "insertListAt");
    } else {
        spliceAtEnd(other, "insertListAt");
    }
}

void qnIndexableList::appendListAt(long index, qnIndexableList* other) {
    MORVAQNDS_REQUIRE(index >= 0, "qnIndexableList::appendListAt: index %ld is negative", index);
    MORVAQNDS_REQUIRE(other != nullptr && other != this, "qnIndexableList::appendListAt: not another list, index %ld",
                      index);
    if (other == this || other->head == nullptr) return;
    qnLinkItem* place = head != nullptr && index < count ? findLink(index) : nullptr;
    if (place != nullptr) {
        // Deliberate: behind the last item the tail stays where it was; `appendList` is the operation that moves it.
        splice(place, followerOf(place), other, "appendListAt");
    } else {
        spliceAtEnd(other, "appendListAt");
    }
}
