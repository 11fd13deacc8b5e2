#ifndef MORVAQNDS_STR_H
#define MORVAQNDS_STR_H

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iosfwd>

#include "Export.h"
#include "TypeObj.h"

class qnTempStr;
class qnTranscriber;

/**
 * The byte string: it owns a heap buffer with its characters and a terminating NUL.
 *
 *     qnStr name("Ada");
 *     name.append(" Lovelace");
 *     unsigned blank = name.next(0, ' ');              // 3
 *     qnStr last = name.tail(name.length() - blank - 1);
 *     qnStr greeting = "Hello, " + name + "!\n";       // one buffer
 *
 * What is unusual:
 * - There is no spare capacity and no sharing: every growth reallocates to the exact size. Every empty string uses one
 *   shared static byte and allocates nothing.
 * - Characters may include NUL where they were put explicitly. Equality then compares all of them; the ordering
 *   operators, `compare` and `<<` stop at the first NUL.
 * - The searches that go backward answer with the position *after* the match, ready to be used as the end of a token.
 * - Positions and lengths are characters. They are not checked, except in a checked build.
 * - A string's own text may be passed to its own operations: `s.append(s.text())` works.
 *
 * Lengths are limited to 2^32 - 2 characters; more, like exhausted memory, ends the process with a message.
 */
class MORVAQNDS_API qnStr {
public:
    /** A string of `n` NUL characters. */
    qnStr(unsigned n = 0) : slength(1), data(&emptyString) {
        if (n != 0) constructNuls(n);
    }
    /** A copy of the NUL-terminated `s`; null is the empty text. */
    qnStr(const char* s);
    /** A copy of the first `len` bytes of `s`, which need not be terminated. */
    qnStr(const char* s, unsigned len);
    qnStr(const qnStr& other);
    qnStr(const qnTempStr& other);
    /** Takes over the buffer of `other`, which becomes empty. */
    qnStr(qnStr&& other) noexcept : slength(other.slength), data(other.data) {
        other.slength = 1;
        other.data = &emptyString;
    }
    /**
     * The value as `printf` formats it with `fmt`; a null `fmt` means the default. The result has a buffer of its own
     * even when it is empty.
     */
    qnStr(int v, const char* fmt = "%d");
    qnStr(float v, const char* fmt = "%g");
    qnStr(double v, const char* fmt = "%lg");
    /** An empty string that is about to be read; what the type object's factory uses. */
    explicit qnStr(qnTypeObj&) : slength(1), data(&emptyString) {}

    ~qnStr() {
        if (data != &emptyString) std::free(data);
    }

    qnStr& operator=(const qnStr& other);
    qnStr& operator=(const qnTempStr& other);
    /** Null is the empty text. */
    qnStr& operator=(const char* s);

    /** Characters, the terminator not counted. */
    unsigned length() const { return slength - 1; }
    /** The characters, NUL-terminated; valid until the string changes. */
    const char* text() const { return data; }
    /** "qnStr". */
    const char* className() const { return "qnStr"; }

    // Copies. Requires: the characters asked for lie within the string.

    /** The `len` characters from `start`. */
    qnStr extract(unsigned start, unsigned len) const;
    /** The first `n` characters. */
    qnStr head(unsigned n) const;
    /** The last `n` characters. */
    qnStr tail(unsigned n) const;
    qnStr copy() const;
    /**
     * The string without leading and trailing characters of `set`.
     * Requires: a character that is not in `set`. Without one the result is empty.
     */
    qnStr trim(const char* set);
    /** The string without trailing characters of `set`. */
    qnStr trimRight(const char* set);
    /** Removes the `len` characters from `start` and returns them. */
    qnStr cut(unsigned start, unsigned len);

    // Editing in place.

    /** Makes every upper-case character lower-case, by the `ctype` classes of the current locale. */
    void lower();
    /** Makes every lower-case character upper-case, by the `ctype` classes of the current locale. */
    void raise();
    /**
     * Removes `len` characters from `start`. The buffer never shrinks, but removing as many characters as the string
     * has releases it. Requires: the string is not empty, and start + len <= length(). More is removed up to the end.
     */
    void remove(unsigned start, unsigned len);
    /**
     * Inserts the first `len` bytes of `s` before position `posn`; `len` 0 means the length of `s`.
     * Requires: posn <= length().
     *
     * Deliberate: the buffer grows to one byte more than the text needs.
     */
    void insert(const char* s, unsigned posn, unsigned len = 0);
    void insert(char c, unsigned posn);
    /**
     * Overwrites `len` characters from `posn` with those of `s`; `len` 0 means the length of `s`. Never changes the
     * length. Requires: posn + len <= length().
     */
    void replace(const char* s, unsigned posn, unsigned len = 0);
    /** Adds the first `len` bytes of `s`; `len` 0 means the length of `s`. */
    void append(const char* s, unsigned len = 0);
    /** Adds one character, which may be NUL. */
    void append(char c);
    /**
     * Makes the length exactly `len` characters; new ones are NUL. The flag is ignored.
     *
     * Deliberate: when the string was empty before, the character at index 0 is left unset; the caller overwrites it.
     */
    void resize(unsigned len, bool unused = false);
    /**
     * The buffer policy behind every growth; the length is not changed. An empty string with `len` > 0 gets a fresh
     * block of `len` + 1 bytes; otherwise `len` 0 releases the buffer, a `len` of at least length() + 1 reallocates it
     * to `len` + 1 bytes, and a smaller one does nothing.
     */
    void resizeInternal(unsigned len);
    /** Makes the buffer hold at least `n` characters. Does nothing to an empty string. */
    void setMaxLength(unsigned n);

    // Searches. `posn` is an index, at most length(); a set is `len` characters, with 0 for its `strlen`.

    /** Index of the first `c`, or of the first character of `set`, at or after `posn`; length() if there is none. */
    unsigned next(unsigned posn, char c) const;
    unsigned next(unsigned posn, const char* set, unsigned len = 0) const;
    /** The position after the last `c`, or the last character of `set`, before `posn`; 0 if there is none. */
    unsigned nextR(unsigned posn, char c) const;
    unsigned nextR(unsigned posn, const char* set, unsigned len = 0) const;
    /** Index of the first character at or after `posn` that is not `c`, or not in `set`; length() if there is none. */
    unsigned skip(unsigned posn, char c) const;
    unsigned skip(unsigned posn, const char* set, unsigned len = 0) const;
    /** The position after the last character before `posn` that is not `c`, or not in `set`; 0 if there is none. */
    unsigned skipR(unsigned posn, char c) const;
    unsigned skipR(unsigned posn, const char* set, unsigned len = 0) const;

    /**
     * The field that starts at `posn` and ends before the next delimiter; `posn` moves past the run of delimiters that
     * follows. Called repeatedly from 0 it walks the string field by field: leading delimiters give an empty first
     * field, and at the end every further call gives an empty one.
     */
    qnStr token(unsigned& posn, const char* set, unsigned len = 0) const;
    qnStr token(unsigned& posn, char c) const;
    /** The same backward: the field that ends at `posn`; `posn` moves before the run of delimiters in front of it. */
    qnStr tokenR(unsigned& posn, const char* set, unsigned len = 0) const;
    qnStr tokenR(unsigned& posn, char c) const;

    /**
     * A cheap hash of 32 bits, the same on every machine.
     *
     * Deliberate: only the first eight characters count, and five to seven characters mix the *first* ones twice. The
     * dictionaries' chains, and the bucket numbers in streams, depend on it.
     */
    unsigned long hash() const;

    /**
     * Sets the text as `printf` would format it. The string's own text may be among the arguments.
     * The buffer is sized by an estimate (1 per plain character, 10 per integer, 20 per floating-point number, the
     * length of a string argument) and is larger only where the result needs it.
     */
    void format(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    void vformat(const char* fmt, va_list ap) __attribute__((format(printf, 2, 0)));

    // Serialisation. Text that is read is complete when the whole graph has been read.

    static void* newInstance(qnTypeObj& type);
    static void deleteInstance(void* object);
    qnTypeObj& getTypeObj() const;
    static bool xdr(void* object, qnTranscriber& transcriber);
    bool xdr(qnTranscriber& transcriber);

    unsigned slength;  ///< characters plus one for the terminator; never 0
    char* data;        ///< `&emptyString`, or a block of at least `slength` bytes that this string owns

    static char emptyString;          ///< the one buffer of all empty strings: a NUL that is never written
    static unsigned resizeIncrement;  ///< characters by which the input operator grows a string
    static int delim_idx;             ///< stream word index of the input delimiter; -1 until one was set

private:
    void constructNuls(unsigned n);
    void constructCopy(const char* s, std::size_t len);
    void adoptFormatted(const char* fmt, ...);
    void assign(const char* s, unsigned len);
    bool owns(const char* p) const;
    void releaseBuffer();
    unsigned grownLength(std::size_t added, const char* operation) const;
};

/**
 * The short-lived result of `+`. Up to 100 bytes, terminator included, stay inside the object, so that a chain of
 * concatenations touches the heap only when the text is long.
 *
 *     qnStr path = directory + "/" + name;
 *
 * Deliberate: a copy keeps its text inside only below 100 bytes, one less than a new one.
 */
class MORVAQNDS_API qnTempStr {
public:
    enum : unsigned { InlineSize = 100 };

    /** The `alen` bytes of `a` followed by the `blen` bytes of `b`. */
    qnTempStr(const char* a, unsigned alen, const char* b, unsigned blen);
    qnTempStr(const qnTempStr& other);
    ~qnTempStr() {
        if (data != inlineBuffer) std::free(data);
    }

    /** Appends `len` bytes of `s`, which may lie in this text, and returns this. */
    qnTempStr& concat(const char* s, unsigned len);

    /** Characters, the terminator not counted. */
    unsigned length() const { return slength - 1; }
    /** The characters, NUL-terminated. */
    const char* text() const { return data; }

    char inlineBuffer[InlineSize];
    char* data;        ///< `inlineBuffer` or a heap block
    unsigned slength;  ///< characters plus one

private:
    qnTempStr& operator=(const qnTempStr&);
};

extern MORVAQNDS_API qnTypeObj qnStr_type;

/** Whether `c` is among the first `len` bytes of `set`. */
inline bool quickFind(char c, const char* set, unsigned len) { return len != 0 && std::memchr(set, c, len) != nullptr; }

// Equality compares lengths and then all bytes, so NULs within count. Null pointers are not allowed.

inline bool operator==(const qnStr& a, const qnStr& b) {
    return a.slength == b.slength && std::memcmp(a.data, b.data, a.slength) == 0;
}
inline bool operator==(const qnStr& a, const char* b) {
    std::size_t length = std::strlen(b);
    return a.length() == length && std::memcmp(a.data, b, length) == 0;
}
inline bool operator==(const char* a, const qnStr& b) { return b == a; }
inline bool operator!=(const qnStr& a, const qnStr& b) { return !(a == b); }
inline bool operator!=(const qnStr& a, const char* b) { return !(a == b); }
inline bool operator!=(const char* a, const qnStr& b) { return !(b == a); }

// Ordering compares as `strcmp` does, up to the first NUL. `compare` returns its result: negative, 0 or positive.

inline int compare(const qnStr& a, const qnStr& b) { return std::strcmp(a.data, b.data); }
inline int compare(const qnStr& a, const char* b) { return std::strcmp(a.data, b); }
inline int compare(const char* a, const char* b) { return std::strcmp(a, b); }

inline bool operator<(const qnStr& a, const qnStr& b) { return compare(a, b) < 0; }
inline bool operator<(const qnStr& a, const char* b) { return compare(a, b) < 0; }
inline bool operator<(const char* a, const qnStr& b) { return compare(a, b.data) < 0; }
inline bool operator<=(const qnStr& a, const qnStr& b) { return compare(a, b) <= 0; }
inline bool operator<=(const qnStr& a, const char* b) { return compare(a, b) <= 0; }
inline bool operator<=(const char* a, const qnStr& b) { return compare(a, b.data) <= 0; }
inline bool operator>(const qnStr& a, const qnStr& b) { return compare(a, b) > 0; }
inline bool operator>(const qnStr& a, const char* b) { return compare(a, b) > 0; }
inline bool operator>(const char* a, const qnStr& b) { return compare(a, b.data) > 0; }
inline bool operator>=(const qnStr& a, const qnStr& b) { return compare(a, b) >= 0; }
inline bool operator>=(const qnStr& a, const char* b) { return compare(a, b) >= 0; }
inline bool operator>=(const char* a, const qnStr& b) { return compare(a, b.data) >= 0; }

MORVAQNDS_API qnTempStr operator+(const qnStr& a, const qnStr& b);
MORVAQNDS_API qnTempStr operator+(const qnStr& a, const char* b);
MORVAQNDS_API qnTempStr operator+(const char* a, const qnStr& b);

// A temporary grows in place and is returned, so that a + b + c + d builds one buffer.

inline qnTempStr& operator+(qnTempStr& a, const qnStr& b) { return a.concat(b.data, b.length()); }
MORVAQNDS_API qnTempStr& operator+(qnTempStr& a, const char* b);
inline qnTempStr& operator+(qnTempStr&& a, const qnStr& b) { return a + b; }
inline qnTempStr& operator+(qnTempStr&& a, const char* b) { return a + b; }

/** Writes the text up to its first NUL; the stream's width and padding apply. */
MORVAQNDS_API std::ostream& operator<<(std::ostream& os, const qnStr& s);

/**
 * Reads up to the stream's delimiter (newline, until `_delimiter` sets another), which is consumed and not stored.
 * A delimiter that comes first leaves the string empty, the delimiter unread and the stream failed.
 */
MORVAQNDS_API std::istream& operator>>(std::istream& is, qnStr& s);

/**
 * Sets the delimiter that `>>` uses on `is`.
 *
 * Deliberate: from the first call on, streams for which it was never called use NUL, the default of a stream's word.
 */
MORVAQNDS_API std::istream& _delimiter(std::istream& is, char c);

#endif
