#ifndef MORVAQNDS_STUBFUNCARRAY_H
#define MORVAQNDS_STUBFUNCARRAY_H

#include "TypedArray.h"

/** A function that the select loop calls before or after it waits. */
typedef void (*qnStubFunc)();

/**
 * An array of function pointers, for the hooks of the select loop.
 *
 *     qnStubFunc flush = flushOutput;
 *     qnStubFuncArray hooks;
 *     hooks.append(&flush);
 */
class MORVAQNDS_API qnStubFuncArray : public qnTypedArray<qnStubFuncArray, qnStubFunc> {
public:
    using qnTypedArray<qnStubFuncArray, qnStubFunc>::qnTypedArray;
    const char* className() const override;
};

#endif
