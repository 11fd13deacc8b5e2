#ifndef MORVAQNDS_CHAINS_H
#define MORVAQNDS_CHAINS_H

#include <cstring>
#include <type_traits>

#include "Checked.h"

/**
 * The mechanism that dictionaries and sets share: chains of links in a fixed number of buckets, and registered
 * iterators that survive the removal of the link they stand on.
 */
namespace chains {

constexpr unsigned DefaultBuckets = 31;

/** The exclusive or of the 32-bit words of a key; trailing bytes do not count. */
inline unsigned wordHash(const void* key, unsigned keySize) {
    unsigned hash = 0;
    for (unsigned offset = 0; offset + sizeof(unsigned) <= keySize; offset += sizeof(unsigned)) {
        unsigned word;
        std::memcpy(&word, static_cast<const char*>(key) + offset, sizeof word);
        hash ^= word;
    }
    return hash;
}

/** The place in a chain, `place` or a later one, that leads to the link of `key`; null stands there if there is none.
 */
template <class Container, class Link>
Link** placeOf(const Container& container, Link** place, const void* key) {
    while (*place != nullptr && container.compareKeys(key, (*place)->entry) != 0) place = &(*place)->next;
    return place;
}

/**
 * The iterators of a class of containers. `Owner` is the iterator's field that points to the container: null when the
 * iterator is detached or finished.
 *
 * Lists of registered iterators are looked at from an index on: what stands before it may be gone.
 */
template <class Iter, class Container, Container* Iter::*Owner>
struct Iteration {
    static void start(Iter& it, Container& container) {
        it.*Owner = &container;
        it.bucketIndex = 0;
        it.flags &= ~unsigned(Iter::Advanced);
        it.current = container.buckets.length() == 0 ? nullptr : container.buckets.elements()[0];
        container.addIter(&it);
        if (it.current == nullptr) it.advanceToValid();
    }

    static void leave(Iter& it) {
        if (it.*Owner != nullptr) (it.*Owner)->removeIter(&it);
    }

    static void advance(Iter& it) {
        if (it.*Owner == nullptr) return;
        if (it.flags & Iter::Advanced) {
            it.flags &= ~unsigned(Iter::Advanced);
            return;
        }
        it.current = it.current->next;
        if (it.current == nullptr) it.advanceToValid();
    }

    static void advanceToValid(Iter& it) {
        if (it.*Owner == nullptr) return;
        do {
            ++it.bucketIndex;
            if (it.bucketIndex >= (it.*Owner)->buckets.length()) {
                (it.*Owner)->removeIter(&it);
                it.*Owner = nullptr;
                it.current = nullptr;
                it.flags |= Iter::Advanced;
                return;
            }
            it.current = (it.*Owner)->buckets.elements()[it.bucketIndex];
        } while (it.current == nullptr);
        it.flags &= ~unsigned(Iter::Advanced);
    }

    /** Moves every iterator that stands on `link` to the entry that follows. */
    template <class Iters, class Link>
    static void invalidate(const Iters& iters, unsigned from, const Link* link) {
        unsigned i = from;
        while (i < iters.length()) {
            Iter* it = iters.elements()[i];
            if (it->current == link && it->*Owner != nullptr) {
                // One that was moved here by a removal goes on all the same.
                it->flags &= ~unsigned(Iter::Advanced);
                ++*it;
                if (it->*Owner == nullptr) continue;  // finished: it has left the list
                it->flags |= Iter::Advanced;
            }
            ++i;
        }
    }

    /** Takes the first registration of `iter` out of the list. `operation` is for the message of the checked build. */
    template <class Iters>
    static void remove(Iters& iters, unsigned from, Iter* iter, [[maybe_unused]] const char* operation) {
        unsigned index = iters.find(&iter, from);
        MORVAQNDS_REQUIRE(index < iters.length(), "%s: the iterator is not among the %u registered", operation,
                          iters.length() - from);
        if (index < iters.length()) iters.remove(index, 1);
    }
};

}  // namespace chains

#endif
