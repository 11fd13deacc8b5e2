#ifndef MORVAQNDS_ARRAY_H
#define MORVAQNDS_ARRAY_H

#include "Export.h"
#include "XDRObj.h"

/**
 * The growable array: one contiguous block of elements of a fixed size. It knows elements only as runs of bytes; what
 * depends on their type is reached through six virtual operations, which the typed arrays (TypedArray.h) override.
 *
 *     qnIntArray numbers;
 *     int seven = 7;
 *     numbers.append(&seven);
 *     numbers.insert(&seven, 0);
 *     unsigned where = numbers.find(&seven, 0);        // 0
 *
 * What is unusual:
 * - Growth is linear and each operation has its own rule: `append` of an element adds room for four, `insert` of one
 *   adds room for exactly one, appending and inserting an array grow to exactly the sum.
 * - `resize` makes the capacity exactly the new length.
 * - A copy of a typed array records the capacity of its source but has memory only for the elements in use; the room
 *   is obtained when it is first needed.
 * - Indices and counts are elements, the fields and the element operations count bytes. Indices are not checked,
 *   except in a checked build.
 * - An element, or the whole array, may be appended to and inserted into the array it lies in.
 *
 * An array's block is limited to 2^32 - 1 bytes; more, like exhausted memory, ends the process with a message.
 */
class MORVAQNDS_API qnArray : public qnXDRObj {
public:
    /** `count` elements of `elementSize` bytes, not constructed: a subclass calls `createElements`. */
    qnArray(unsigned short elementSize, unsigned count);
    /** Copies the used bytes by `memmove`; a subclass that needs deep copies makes them itself. */
    qnArray(const qnArray& other);
    /** Adopts `block`, `nbytes` bytes from `malloc`, all in use. Only the low 16 bits of `elementSize` count. */
    qnArray(unsigned elementSize, unsigned nbytes, void* block);
    /** An empty array that is about to be read; what factories use. */
    explicit qnArray(qnTypeObj& type);
    /** Frees the block. Every subclass destructor calls `destroy()` first. */
    ~qnArray() override;

    const char* className() const override = 0;
    /** Transcribes the root part only; the elements are the subclasses' business. */
    bool xdr(qnTranscriber& transcriber) override;
    static bool xdr(void* object, qnTranscriber& transcriber);
    qnTypeObj& getTypeObj() const override;

    // Element operations, by which a subclass gives the bytes their meaning. Sizes are bytes, whole elements each.

    /** Brings the block to `maxBytes`; a capacity of 0 frees it. */
    virtual void getmem();
    /**
     * Makes room for four more elements.
     *
     * Deliberate: growth is linear; callers that know their size say so with `setMaxLength`.
     */
    virtual void expand();
    /** Constructs elements in raw memory. Does nothing here. */
    virtual void createElements(void* at, unsigned nbytes);
    /** Destroys elements, leaving raw memory. Does nothing here. */
    virtual void destroyElements(void* at, unsigned nbytes);
    /** Copies elements into raw memory; the ranges may overlap. */
    virtual void copyElements(const void* from, void* to, unsigned nbytes) const;
    /** Compares two elements: 0 means equal, otherwise the sign orders them. By bytes here. */
    virtual int compareElements(const void* a, const void* b) const;

    /** Elements in use; 0 when the element size is 0. */
    unsigned length() const { return elementSize == 0 ? 0 : usedBytes / elementSize; }

    /**
     * Index of the first element at or after `start` that equals `probe`, which is always the first argument of the
     * comparison; 0xFFFFFFFF when there is none.
     */
    unsigned find(const void* probe, unsigned start) const;

    void append(const void* element);
    void append(const qnArray& other);
    /**
     * Inserts a copy of `element` before `index`. Requires: index <= length().
     * An element of this array is read after the tail has moved: what stands at that address then.
     */
    void insert(const void* element, unsigned index);
    void insert(const qnArray& other, unsigned index);
    /** Destroys `count` elements from `start`; the capacity stays. Requires: start + count <= length(). */
    void remove(unsigned start, unsigned count);
    /**
     * Makes length and capacity exactly `count`, creating or destroying elements at the end.
     *
     * Deliberate: with an unchanged length the capacity drops to it, but the block is not reallocated.
     */
    void resize(unsigned count);
    /** Makes the capacity `count` elements, or as many as are in use if that is more. */
    void setMaxLength(unsigned count);
    /**
     * Exchanges two elements byte for byte. Requires: both indices < length().
     *
     * Deliberate: elements wider than 1024 bytes pass through a heap block that is never released.
     */
    void swap(unsigned i, unsigned j);

    /**
     * Partitions and recurses as a quicksort does, except for its closing step.
     *
     * Deliberate: the closing step of each partition does not exchange the pivot with the boundary element: both places
     * receive the element that was exchanged last (at first, the first element of the range). The result is therefore
     * a permutation only by luck. Elements that are overwritten are destroyed and those that are repeated are copied,
     * so each place owns its own.
     */
    void qsort();
    /** The same for `count` elements from `start`. Requires: start + count <= length(). */
    void qsort(unsigned start, unsigned count);
    /**
     * The partitioning worker, bounds inclusive; `scratch` holds the bytes of one element.
     * Requires: lo <= hi < length().
     */
    void qsortInternal(unsigned lo, unsigned hi, void* scratch);

    // Each returns a new block from `malloc` that the caller owns, or null for a count of 0.

    /** Deep copies of `count` elements from `start`. */
    void* raw_extract(unsigned start, unsigned count) const;
    /** Takes `count` elements from `start` out of the array, byte for byte: they change owner. */
    void* raw_cut(unsigned start, unsigned count);
    /** Deep copies of all elements. */
    void* raw_copy() const;
    /** Deep copies of the first `count` elements. */
    void* raw_head(unsigned count) const;
    /** Deep copies of the last `count` elements. */
    void* raw_tail(unsigned count) const;

    /** Destroys the elements in use; the fields and the block stay. For destructors. */
    void destroy();

    char* data;                  ///< the elements: a block from `malloc`, or null
    unsigned maxBytes;           ///< capacity in bytes
    unsigned usedBytes;          ///< bytes in use, a multiple of `elementSize`
    unsigned short elementSize;  ///< bytes per element

protected:
    /** Transcribes a run of elements in place. */
    typedef bool (*ElementRun)(qnTranscriber& transcriber, void* elements, unsigned count);

    /**
     * Transcribes an array of plain elements: used bytes, element size, elements. In the stream an element takes
     * `streamElementSize` bytes, whatever it takes in memory. Stops at the first failure and returns false.
     */
    bool xdrPlain(qnTranscriber& transcriber, unsigned short streamElementSize, ElementRun run);

    /** The two numbers in front of the elements, as they are in a stream. */
    struct StreamSizes {
        unsigned usedBytes;
        unsigned short elementSize;
    };
    /** Transcribes the two numbers; what is read must describe elements of this class, or the process ends. */
    bool xdrSizes(qnTranscriber& transcriber, unsigned short streamElementSize, StreamSizes& sizes);

    /** Copies the fields of `other`, its capacity included, and its elements deeply. The block must not be owned yet.
     */
    void copyFrom(const qnArray& other);

    /** Makes sure that the block really has `maxBytes` bytes. */
    void backCapacity();

private:
    qnArray& operator=(const qnArray&);

    void growTo(unsigned long long nbytes, const char* operation);
    void closeGap(unsigned start, unsigned count);
};

extern MORVAQNDS_API qnTypeObj qnArray_type;

#endif
