#ifndef MORVAQNDS_TYPEDARRAY_H
#define MORVAQNDS_TYPEDARRAY_H

#include <cstdlib>
#include <new>

#include "Array.h"
#include "Fatal.h"
#include "Transcriber.h"

/**
 * The one pattern behind all typed arrays. A class `Self` of elements `Element` is
 *
 *     class qnIntArray : public qnSerialArray<qnIntArray, int> { using qnSerialArray::qnSerialArray; ... };
 *
 *     qnIntArray squares(3);                      // three elements, not initialised
 *     squares.elements()[2] = 4;
 *     qnIntArray last = squares.tail(1);
 *
 * `Layer` is the class that gives the elements their meaning through `qnArray`'s element operations: `qnArray` itself
 * for plain bytes, `qnZeroFilledArray` for pointers that start null, or a layer of its own for objects.
 *
 * Deliberate: copies, by construction and by assignment, record the source's capacity, although their block has room
 * for the used elements only; see qnArray.
 */
template <class Self, class Element, class Layer = qnArray>
class MORVAQNDS_API qnTypedArray : public Layer {
public:
    typedef Element ElementType;

    qnTypedArray() : Layer(static_cast<unsigned short>(sizeof(Element)), 0u) {}
    /** `count` elements: plain ones are not initialised, pointers are null, objects are default-constructed. */
    explicit qnTypedArray(unsigned count) : Layer(static_cast<unsigned short>(sizeof(Element)), count) {
        if (this->data != nullptr) this->createElements(this->data, this->usedBytes);
    }
    qnTypedArray(const qnTypedArray& other) : Layer(other.elementSize, 0u) { this->copyFrom(other); }
    /** Adopts `block`, `nbytes` bytes of elements from `malloc`. */
    qnTypedArray(unsigned bytesPerElement, unsigned nbytes, void* block) : Layer(bytesPerElement, nbytes, block) {}
    /** An empty array that is about to be read. */
    explicit qnTypedArray(qnTypeObj& type) : Layer(type) { this->elementSize = sizeof(Element); }
    ~qnTypedArray() override { this->destroy(); }

    /** Deep, and recording the source's capacity, like the copy constructor. */
    qnTypedArray& operator=(const qnTypedArray& other) {
        if (this != &other) {
            this->destroy();
            std::free(this->data);
            this->copyFrom(other);
        }
        return *this;
    }

    /** Takes `count` elements from `start` out and returns them. Requires: start + count <= length(). */
    Self cut(unsigned start, unsigned count) { return adopt(this->raw_cut(start, count), count); }
    /** Copies of `count` elements from `start`. Requires: start + count <= length(). */
    Self extract(unsigned start, unsigned count) { return adopt(this->raw_extract(start, count), count); }
    /** Copies of the first `count` elements. Requires: count <= length(). */
    Self head(unsigned count) { return adopt(this->raw_head(count), count); }
    /** Copies of the last `count` elements, in their order. Requires: count <= length(). */
    Self tail(unsigned count) { return adopt(this->raw_tail(count), count); }

    /** The elements in place, length() of them; valid until the array grows. */
    Element* elements() { return reinterpret_cast<Element*>(this->data); }
    const Element* elements() const { return reinterpret_cast<const Element*>(this->data); }

    /** "ARRAY", for every typed array: the name under which streams know them all. */
    const char* className() const override { return "ARRAY"; }

private:
    Self adopt(void* block, unsigned count) const {
        return Self(static_cast<unsigned>(this->elementSize), this->elementSize * count, block);
    }
};

/** An array whose new elements are zero bytes: the layer under the arrays of pointers. */
class MORVAQNDS_API qnZeroFilledArray : public qnArray {
public:
    using qnArray::qnArray;
    void createElements(void* at, unsigned nbytes) override;
};

/** What the typed arrays with a type object share: the factory, the deleter and the static `xdr`. */
template <class Self, class Element, class Layer = qnArray>
class MORVAQNDS_API qnFactoryArray : public qnTypedArray<Self, Element, Layer> {
public:
    using qnTypedArray<Self, Element, Layer>::qnTypedArray;

    // Not inline: each has one address for the library and all programs, and is that of the type object.

    /** A new array that is about to be read; the caller owns it. */
    MORVAQNDS_API static void* newInstance(qnTypeObj& type);
    /** Destroys what `newInstance` made; null is ignored. */
    MORVAQNDS_API static void deleteInstance(void* object);
    MORVAQNDS_API static bool xdr(void* object, qnTranscriber& transcriber);
    bool xdr(qnTranscriber& transcriber) override = 0;
};

template <class Self, class Element, class Layer>
void* qnFactoryArray<Self, Element, Layer>::newInstance(qnTypeObj& type) {
    Self* made = new (std::nothrow) Self(type);
    if (made == nullptr) qnFatal("qnArray::newInstance: out of memory");
    return made;
}

template <class Self, class Element, class Layer>
void qnFactoryArray<Self, Element, Layer>::deleteInstance(void* object) {
    delete static_cast<Self*>(object);
}

template <class Self, class Element, class Layer>
bool qnFactoryArray<Self, Element, Layer>::xdr(void* object, qnTranscriber& transcriber) {
    return static_cast<Self*>(object)->Self::xdr(transcriber);
}

/** Bytes that an element of a type takes in a stream: those of the type, except that a long always takes 4. */
template <class Element>
struct qnStreamSize {
    static const unsigned short value = sizeof(Element);
};
template <>
struct qnStreamSize<long> {
    static const unsigned short value = 4;
};
template <>
struct qnStreamSize<unsigned long> {
    static const unsigned short value = 4;
};

/**
 * The pattern for plain elements that travel through a transcriber.
 *
 * Deliberate: the elements that are written are counted by the capacity and not by the length, so spare elements travel
 * too (as zeros), but only those in use are read back: call `resize(length())` before writing, or what follows the
 * array in the stream is read out of step. And reading drops an earlier block without releasing it, as the array is
 * taken to be new.
 */
template <class Self, class Element>
class MORVAQNDS_API qnSerialArray : public qnFactoryArray<Self, Element> {
public:
    using qnFactoryArray<Self, Element>::qnFactoryArray;
    using qnFactoryArray<Self, Element>::xdr;

    bool xdr(qnTranscriber& transcriber) override {
        if (transcriber.reading) this->elementSize = sizeof(Element);
        return this->xdrPlain(transcriber, qnStreamSize<Element>::value, &transcribe);
    }

private:
    static bool transcribe(qnTranscriber& transcriber, void* elements, unsigned count) {
        return transcriber.xdr(static_cast<Element*>(elements), count);
    }
};

#endif
