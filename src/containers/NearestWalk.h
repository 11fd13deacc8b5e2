#ifndef MORVAQNDS_NEARESTWALK_H
#define MORVAQNDS_NEARESTWALK_H

/**
 * The walk by which both lists reach a position: from whichever of head, tail and cursor is nearest.
 *
 * A list remembers the last position that it walked to (its cursor), so that a loop over ascending or descending
 * indices takes one step for each index. `Link` is any type with `next` and `prev`.
 */
namespace nearestwalk {

/** Follows `next` for `steps` links; ends early, with null, where the chain does. */
template <class Link>
Link* forward(Link* link, long steps) {
    for (; steps > 0 && link != nullptr; --steps) link = link->next;
    return link;
}

/** Follows `prev` for `steps` links; ends early, with null, where the chain does. */
template <class Link>
Link* backward(Link* link, long steps) {
    for (; steps > 0 && link != nullptr; --steps) link = link->prev;
    return link;
}

/**
 * The link at `index`. The ends and the cursor itself are answered as they are and leave the cursor where it was;
 * any other index is walked to and becomes the cursor. An index below 0 is taken for the head, one past the end for
 * the tail.
 *
 * Deliberate: at a tie the walk is the backward one. Which links a walk reads can be told from a chain whose two
 * directions disagree.
 */
template <class Link>
Link* find(long index, int count, Link* head, Link* tail, Link*& cursor, int& cursorIndex) {
    if (index <= 0) return head;
    if (index >= static_cast<long>(count) - 1) return tail;
    if (index == cursorIndex) return cursor;

    if (index < cursorIndex) {
        const long back = cursorIndex - index;
        cursor = index < back ? forward(head, index) : backward(cursor, back);
    } else {
        const long ahead = index - cursorIndex;
        const long rest = count - index - 1;
        cursor = ahead < rest ? forward(cursor, ahead) : backward(tail, rest);
    }
    cursorIndex = static_cast<int>(index);
    return cursor;
}

}  // namespace nearestwalk

#endif
