#ifndef MORVAQNDS_STRARRAY_H
#define MORVAQNDS_STRARRAY_H

#include "Str.h"
#include "TypedArray.h"

/** The layer that makes elements strings: constructed, deeply copied, compared as text and destroyed. */
class MORVAQNDS_API qnStrElements : public qnArray {
public:
    using qnArray::qnArray;
    void createElements(void* at, unsigned nbytes) override;
    void destroyElements(void* at, unsigned nbytes) override;
    void copyElements(const void* from, void* to, unsigned nbytes) const override;
    int compareElements(const void* a, const void* b) const override;
};

/**
 * An array of strings, which it owns.
 *
 *     qnStrArray names;
 *     qnStr ada("Ada");
 *     names.append(&ada);                          // a deep copy
 *     unsigned where = names.find(&ada, 0);        // by text, not by address
 *     names.elements()[where].append(" L.");
 *
 * In a stream an element counts as 8 bytes on every machine. "ARRAY" in the type registry answers with this class.
 */
class MORVAQNDS_API qnStrArray : public qnFactoryArray<qnStrArray, qnStr, qnStrElements> {
public:
    using qnFactoryArray<qnStrArray, qnStr, qnStrElements>::qnFactoryArray;
    using qnFactoryArray<qnStrArray, qnStr, qnStrElements>::xdr;
    bool xdr(qnTranscriber& transcriber) override;
    qnTypeObj& getTypeObj() const override;

private:
    bool readStrings(qnTranscriber& transcriber, unsigned count);
};

extern MORVAQNDS_API qnTypeObj qnStrArray_type;

#endif
