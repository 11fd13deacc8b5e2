#ifndef MORVAQNDS_VOIDPTRARRAY_H
#define MORVAQNDS_VOIDPTRARRAY_H

#include "TypedArray.h"

/**
 * An array of untyped pointers, which it does not own.
 *
 *     qnVoidPtrArray listeners;
 *     listeners.append(&listener);                // the address of the pointer: elements are passed by address
 *
 * New elements are null. It is not serialisable: it keeps `qnArray`'s type object, and transcribing it transcribes
 * nothing.
 */
class MORVAQNDS_API qnVoidPtrArray : public qnTypedArray<qnVoidPtrArray, void*, qnZeroFilledArray> {
public:
    using qnTypedArray<qnVoidPtrArray, void*, qnZeroFilledArray>::qnTypedArray;
    const char* className() const override;
};

#endif
