#ifndef MORVAQNDS_STACKBUFFER_H
#define MORVAQNDS_STACKBUFFER_H

#include "Export.h"

/**
 * A byte accumulator that is meant to live on the stack: the first 1000 bytes are stored inside the object, and the
 * heap is used only when more is written.
 *
 *     qnStackBuffer name;
 *     while ((c = next()) != 0) name.addc(c);
 *     name.addc(0);                                   // the buffer terminates nothing by itself
 *     use(name.base(), name.used());
 *
 * Growth is linear, at least `increment` bytes a step: fed one byte at a time the default buffer holds 1000, 1500,
 * 2000, ... bytes. A copy has the same capacity and contents and grows by 500.
 */
class MORVAQNDS_API qnStackBuffer {
public:
    enum : unsigned { InlineSize = 1000, DefaultIncrement = 500 };

    /** An empty buffer. `increment` is the minimum growth step in bytes; 0 means 500. */
    explicit qnStackBuffer(unsigned increment = 0);
    qnStackBuffer(const qnStackBuffer& other);
    ~qnStackBuffer();

    /** Adds one byte. */
    void addc(char c) {
        if (next_ == end_) grow(increment_);
        *next_++ = c;
    }

    /** Adds `n` bytes from `p`, which may lie in this buffer. */
    void put(const char* p, unsigned n);

    /** Enlarges the storage by the larger of `n` and the increment, in bytes. */
    void grow(unsigned n);

    /** Start of the collected bytes; valid until the buffer grows. */
    const char* base() const { return base_; }
    /** Where the next byte goes, one past the last collected byte. */
    const char* next() const { return next_; }
    /** Bytes collected. */
    unsigned used() const { return static_cast<unsigned>(next_ - base_); }

private:
    qnStackBuffer& operator=(const qnStackBuffer&);

    char inline_[InlineSize];
    char* next_;
    char* end_;   // one past the last usable byte of the current storage
    char* base_;  // inline_ or a heap block
    unsigned increment_;
};

#endif
