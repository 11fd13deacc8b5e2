#ifndef MORVAQNDS_GENERICLIST_H
#define MORVAQNDS_GENERICLIST_H

#include <type_traits>

#include "Export.h"

/**
 * A doubly linked list of untyped pointers that can also be read by index.
 *
 *     GenericList jobs;
 *     jobs.append(&first);
 *     jobs.append(&second);
 *     for (long i = 0; i < jobs.count; ++i) run(static_cast<Job*>(jobs.findItem(i)));
 *     jobs.remove(&first);
 *
 * The list makes and destroys its nodes; the items belong to the caller and are never touched.
 *
 * Unusual: the list remembers the position that was reached last (the cursor) and walks from whichever of head, tail
 * and cursor is nearest, so that a loop over the indices in either direction takes one step for each index. Reading
 * therefore changes the cursor, even of a `const` list. Every change of the list moves the cursor: adding puts it on
 * the new node, removing puts it back to the head.
 *
 * Unusual: a bad index and a removal from an empty list end the process in every build, with the messages
 * "List bounds violation in ../GenericList.cxx aborting ..." and "List underflow in ../GenericList.cxx aborting ...".
 */

/** One node of a `GenericList`. Its destructor joins its neighbours, so that the chain stays whole. */
class MORVAQNDS_API GenericNode {
public:
    explicit GenericNode(void* heldItem) : prev(nullptr), next(nullptr), item(heldItem) {}
    ~GenericNode();
    GenericNode(const GenericNode&) = delete;
    GenericNode& operator=(const GenericNode&) = delete;

    GenericNode* prev;
    GenericNode* next;
    void* item;  ///< not owned
};

class MORVAQNDS_API GenericList {
public:
    GenericList();

    /** Makes nodes of its own for the items of `source`, in order. The cursor stands on the last one. */
    GenericList(const GenericList& source);

    /** Destroys the nodes, not the items. */
    ~GenericList();

    GenericList& operator=(const GenericList&) = delete;

    /** Adds `item` (null is allowed) behind the last one. */
    void append(void* item);

    /** Adds `item` (null is allowed) before the first one. */
    void prepend(void* item);

    /**
     * Adds `item` so that it stands at `index`; `count` appends.
     * Requires: 0 <= index <= count; anything else ends the process with the bounds message.
     */
    void insertAt(long index, void* item);

    /** The item at `index`. Requires: 0 <= index < count; anything else ends the process with the bounds message. */
    void* findItem(long index) const;
    void* findItem(int index) const { return findItem(static_cast<long>(index)); }

    /**
     * The node at `index`, owned by the list and valid until it is removed.
     * Requires: 0 <= index < count; anything else ends the process with the bounds message.
     */
    GenericNode* findNode(long index) const;

    /**
     * Destroys `node` and returns its item. An empty list ends the process with the underflow message.
     * Requires: `node` is one of this list's.
     */
    void* remove(GenericNode* node);

    /** Removes the first node that holds `item` and returns it; null if there is none, so also on an empty list. */
    void* remove(void* item);

    /**
     * Removes the node at `index` and returns its item.
     * Requires: 0 <= index < count; anything else, an empty list included, ends the process with the bounds message.
     */
    void* remove(long index);

    /** The same for an index of any other integer type, so that a plain `remove(0)` is not taken for a pointer. */
    template <class Integer, class = typename std::enable_if<std::is_integral<Integer>::value>::type>
    void* remove(Integer index) {
        return remove(static_cast<long>(index));
    }

    /** Destroys all nodes, not the items. */
    void clear();

    int count;                ///< number of nodes
    mutable int cursorIndex;  ///< position of `cursor`; 0 in an empty list
    GenericNode* head;
    GenericNode* tail;
    mutable GenericNode* cursor;  ///< the position reached last; null only in an empty list

private:
    GenericNode* makeNode(void* item, const char* operation) const;
    void link(GenericNode* before, GenericNode* node, GenericNode* after, int index);
};

#endif
