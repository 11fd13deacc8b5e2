#ifndef MORVAQNDS_INDEXABLELIST_H
#define MORVAQNDS_INDEXABLELIST_H

#include "Export.h"

/**
 * A doubly linked list of objects that carry their links themselves, with access by index, splits and splices.
 *
 *     struct Job : qnLinkItem { int priority; };
 *     qnIndexableList jobs;
 *     jobs.append(&first);
 *     jobs.append(&second);
 *     Job* second = static_cast<Job*>(jobs.findLink(1));
 *
 * The items belong to the caller: the list allocates nothing, frees nothing, and does nothing when it is destroyed.
 * An item stands in one list at a time, and an item that is destroyed must have been taken out first.
 *
 * Unusual: the list remembers the position that was reached last (the cursor) and walks from whichever of head, tail
 * and cursor is nearest, so that a loop over the indices in either direction takes one step for each index.
 *
 * Unusual: `appendListAt` behind the last item leaves `tail` where it was; use `appendList` to add at the end.
 *
 * Unusual: an item put into an empty list keeps the links that it has.
 *
 * Nothing is checked in the default build; a checked build ends the process at every `Requires:` that is not met. An
 * index below 0 is then taken for the first item, one past the end for the last.
 */

/** The links of an item; derive from it. */
class MORVAQNDS_API qnLinkItem {
public:
    qnLinkItem() : next(nullptr), prev(nullptr) {}

    qnLinkItem* next;
    qnLinkItem* prev;
};

class MORVAQNDS_API qnIndexableList {
public:
    qnIndexableList();

    /**
     * Takes over the chain that starts at `chain` (null makes an empty list) and is linked through `next`; the `prev`
     * links behind the first item are made to fit. The cursor stands on the first item. A chain that runs in a circle
     * ends the process.
     */
    explicit qnIndexableList(qnLinkItem* chain);

    /** A second view of the same items. Requires of the caller: of the two, only one is used from the next change on.
     */
    qnIndexableList(const qnIndexableList&) = default;

    qnIndexableList& operator=(const qnIndexableList&) = delete;

    /** The item at `index`; null in an empty list. Requires: 0 <= index < count. */
    qnLinkItem* findLink(long index);

    /** Adds `item` before the first one. */
    void insert(qnLinkItem* item) { insertAt(0, item); }

    /** Adds `item` behind the last one. */
    void append(qnLinkItem* item) { insertAt(count, item); }

    /** Adds `item` behind the one at `index`; at the end where `index` is past it. Requires: -1 <= index. */
    void appendAt(long index, qnLinkItem* item);

    /**
     * Adds `item` so that it stands at `index`; at the end where `index` is `count` or more.
     * In an empty list the item's own links stay as they are: they are null, or lead to items that are alive.
     * Requires: 0 <= index; `item` is not null and in no list.
     */
    void insertAt(long index, qnLinkItem* item);

    /** Takes `item` out, clears its links, puts the cursor back to the head. Returns it. Requires: it is in the list.
     */
    qnLinkItem* unlink(qnLinkItem* item);

    /**
     * Takes out the item at `index`, clears its links and returns it; null in an empty list. The cursor stays where it
     * is; if it stood on that item it moves to the following one, else to the preceding one.
     * Requires: 0 <= index < count.
     */
    qnLinkItem* unlinkAt(long index);

    /**
     * Cuts the list before `link`. Returns `link`: it and everything behind it, still linked together, is the caller's
     * again. Counts the remaining items one by one and puts the cursor back to the head. Requires: it is in the list.
     */
    qnLinkItem* split(qnLinkItem* link);

    /**
     * Cuts the list before the item at `index`, as `split` does; a cursor that stands before the cut stays.
     * Requires: 0 <= index < count.
     */
    qnLinkItem* splitAt(long index);

    /** Moves all items of `other` before the first one; `other` is empty afterwards. */
    void insertList(qnIndexableList* other) { insertListAt(0, other); }

    /**
     * Moves all items of `other` before the item at `index`; to the end where `index` is `count` or more. The cursor
     * is cleared and `other` is empty afterwards. An empty `other` changes nothing.
     * Requires: 0 <= index; `other` is another list.
     */
    void insertListAt(long index, qnIndexableList* other);

    /** Moves all items of `other` behind the last one; `other` is empty afterwards. */
    void appendList(qnIndexableList* other) { appendListAt(count, other); }

    /**
     * Moves all items of `other` behind the item at `index`; to the end where `index` is `count` or more. The cursor
     * is cleared and `other` is empty afterwards. An empty `other` changes nothing.
     *
     * Behind the last item (`index` is `count - 1`) the items are linked and counted, but `tail` is not moved, and what
     * is counted or walked from `tail` is off from then on.
     * Requires: 0 <= index; `other` is another list.
     */
    void appendListAt(long index, qnIndexableList* other);

    qnLinkItem* head;
    qnLinkItem* tail;
    int cursorIndex;     ///< position of `cursor`; 0 where there is none
    qnLinkItem* cursor;  ///< the position reached last; may be null
    int count;           ///< number of items

private:
    qnLinkItem* previousOf(const qnLinkItem* item) const;
    qnLinkItem* followerOf(const qnLinkItem* item) const;
    void resetCursor();
    void becomeEmpty();
    void addToCount(int number, const char* operation);
    void detach(qnLinkItem* item);
    void cutBefore(qnLinkItem* link);
    void spliceAtEnd(qnIndexableList* other, const char* operation);
    void splice(qnLinkItem* before, qnLinkItem* after, qnIndexableList* other, const char* operation);
};

#endif
