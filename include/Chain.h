#ifndef MORVAQNDS_CHAIN_H
#define MORVAQNDS_CHAIN_H

#include <cstdlib>

/**
 * What the headers of dictionaries and sets share: the links of their chains, and iterators for one class of them.
 *
 *     struct qnSetBucket : qnChainLink<qnSetBucket> { using qnChainLink<qnSetBucket>::qnChainLink; };
 *     typedef qnTypedIter<qnSetIter, qnStrSet> qnStrSetIter;
 */

/** One link of a chain. It frees its entry, but whoever deletes it destroys what is in there first. */
template <class Self>
struct qnChainLink {
    qnChainLink(char* newEntry, Self* nextLink) : entry(newEntry), next(nextLink) {}
    ~qnChainLink() { std::free(entry); }

    char* entry;  ///< a block from `malloc`: the key record, immediately followed by the value record if there is one
    Self* next;   ///< the next link of the chain, or null

private:
    qnChainLink(const qnChainLink&);
    qnChainLink& operator=(const qnChainLink&);
};

/** An iterator for one class of containers, by reference or pointer. */
template <class Iter, class Container>
class qnTypedIter : public Iter {
public:
    qnTypedIter() {}
    explicit qnTypedIter(Container& container) : Iter(container) {}
    explicit qnTypedIter(Container* container) : Iter(*container) {}
    /** Starts over on another container. */
    qnTypedIter& operator=(Container& container) {
        Iter::operator=(container);
        return *this;
    }
};

#endif
