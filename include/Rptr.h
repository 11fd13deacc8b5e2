#ifndef MORVAQNDS_RPTR_H
#define MORVAQNDS_RPTR_H

#include <type_traits>

#include "Export.h"

/**
 * A counted base with its own counting rule, for objects that are held through `RPtr`.
 *
 *     class Pattern : public Counted { ... };
 *     RPtr<Pattern> pattern(new Pattern);      // count 1
 *     RPtr<Pattern> other = pattern;           // count 2; both gone: the pattern is destroyed
 *
 * Deliberate: the count is signed, and a release that takes it to zero *or below* destroys the object; this differs
 * from `qnRCObj`, where only exactly zero does. A `Counted` that nobody ever held is destroyed by its first release.
 */
class MORVAQNDS_API Counted {
public:
    Counted() : count(0) {}
    Counted(const Counted&) : count(0) {}
    Counted& operator=(const Counted&) { return *this; }
    virtual ~Counted();

    int count;  ///< holders of this object; wraps at the ends of its range
};

/** Adds a holder to a `Counted`. A null pointer is ignored. */
template <class T>
inline typename std::enable_if<std::is_base_of<Counted, T>::value>::type qnRetain(T* object) {
    if (object != nullptr) object->count = static_cast<int>(static_cast<unsigned>(object->count) + 1);
}

/**
 * Takes a holder away from a `Counted` and deletes it when the count is then zero or less.
 * Returns true when it was destroyed. A null pointer is ignored (false).
 */
template <class T>
inline typename std::enable_if<std::is_base_of<Counted, T>::value, bool>::type qnRelease(T* object) {
    if (object == nullptr) return false;
    object->count = static_cast<int>(static_cast<unsigned>(object->count) - 1);
    if (object->count > 0) return false;
    delete static_cast<Counted*>(object);
    return true;
}

/** The untyped part of `RPtr`: one pointer to a `Counted`, possibly null, released on destruction. */
class MORVAQNDS_API RPtr_base {
public:
    ~RPtr_base();

protected:
    RPtr_base() : pointee(nullptr) {}
    explicit RPtr_base(Counted* object) : pointee(object) { qnRetain(object); }

    /**
     * Holds `object` instead. Deliberate: the new object is retained before the old one is released, as the old one may
     * be all that keeps the new one alive; the old one's destructor sees the new count.
     */
    void hold(Counted* object);

    Counted* pointee;

private:
    RPtr_base(const RPtr_base&);
    RPtr_base& operator=(const RPtr_base&);
};

/**
 * A smart pointer to a class derived from `Counted`. Taking a reference adds 1 to the count; assigning and destroying
 * release the old pointee. The pointer may be null.
 */
template <class T>
class RPtr : public RPtr_base {
public:
    RPtr() {}
    RPtr(T* object) : RPtr_base(object) {}
    RPtr(const RPtr& other) : RPtr_base(other.pointee) {}

    RPtr& operator=(const RPtr& other) {
        hold(other.pointee);
        return *this;
    }
    RPtr& operator=(T* object) {
        hold(object);
        return *this;
    }

    T* get() const { return static_cast<T*>(pointee); }
    T* operator->() const { return get(); }
    T& operator*() const { return *get(); }
    explicit operator bool() const { return pointee != nullptr; }
};

#endif
