#ifndef MORVAQNDS_NUMBERARRAYS_H
#define MORVAQNDS_NUMBERARRAYS_H

#include "TypedArray.h"
#include "Types.h"

/**
 * The arrays of booleans, characters and numbers. See qnTypedArray for what they share.
 *
 *     qnDoubleArray samples;
 *     double x = 0.5;
 *     samples.append(&x);
 *     double sum = 0;
 *     for (unsigned i = 0; i < samples.length(); ++i) sum += samples.elements()[i];
 *
 * All of them answer "ARRAY" as their class name and register under it; `getTypeObj` tells them apart. An element of
 * the two long arrays is as wide as the machine's `long` in memory and always 4 bytes in a stream.
 */
class MORVAQNDS_API qnBoolArray : public qnSerialArray<qnBoolArray, qnBool> {
public:
    using qnSerialArray<qnBoolArray, qnBool>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnCharArray : public qnSerialArray<qnCharArray, char> {
public:
    using qnSerialArray<qnCharArray, char>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnUnsignedCharArray : public qnSerialArray<qnUnsignedCharArray, unsigned char> {
public:
    using qnSerialArray<qnUnsignedCharArray, unsigned char>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnShortArray : public qnSerialArray<qnShortArray, short> {
public:
    using qnSerialArray<qnShortArray, short>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnUnsignedShortArray : public qnSerialArray<qnUnsignedShortArray, unsigned short> {
public:
    using qnSerialArray<qnUnsignedShortArray, unsigned short>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnIntArray : public qnSerialArray<qnIntArray, int> {
public:
    using qnSerialArray<qnIntArray, int>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnLongArray : public qnSerialArray<qnLongArray, long> {
public:
    using qnSerialArray<qnLongArray, long>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnUnsignedLongArray : public qnSerialArray<qnUnsignedLongArray, unsigned long> {
public:
    using qnSerialArray<qnUnsignedLongArray, unsigned long>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnFloatArray : public qnSerialArray<qnFloatArray, float> {
public:
    using qnSerialArray<qnFloatArray, float>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

class MORVAQNDS_API qnDoubleArray : public qnSerialArray<qnDoubleArray, double> {
public:
    using qnSerialArray<qnDoubleArray, double>::qnSerialArray;
    qnTypeObj& getTypeObj() const override;
};

extern MORVAQNDS_API qnTypeObj qnBoolArray_type;
extern MORVAQNDS_API qnTypeObj qnCharArray_type;
extern MORVAQNDS_API qnTypeObj qnUnsignedCharArray_type;
extern MORVAQNDS_API qnTypeObj qnShortArray_type;
extern MORVAQNDS_API qnTypeObj qnUnsignedShortArray_type;
extern MORVAQNDS_API qnTypeObj qnIntArray_type;
extern MORVAQNDS_API qnTypeObj qnLongArray_type;
extern MORVAQNDS_API qnTypeObj qnUnsignedLongArray_type;
extern MORVAQNDS_API qnTypeObj qnFloatArray_type;
extern MORVAQNDS_API qnTypeObj qnDoubleArray_type;

#endif
