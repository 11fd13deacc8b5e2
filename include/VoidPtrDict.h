#ifndef MORVAQNDS_VOIDPTRDICT_H
#define MORVAQNDS_VOIDPTRDICT_H

#include "Dictionary.h"

/**
 * A dictionary from strings to untyped pointers, which it does not own.
 *
 *     qnVoidPtrDict windows;
 *     qnStr name("main");
 *     *static_cast<void**>(windows.findCreate(&name)) = window;
 *
 * It cannot be transcribed: its class has no type object of its own.
 */
class MORVAQNDS_API qnVoidPtrDict : public qnStrKeyDictionary {
public:
    /** `nbuckets` 0 means 31. */
    explicit qnVoidPtrDict(unsigned nbuckets = 0);
    qnVoidPtrDict(const qnVoidPtrDict& other);
    ~qnVoidPtrDict() override;
    qnVoidPtrDict& operator=(const qnVoidPtrDict& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    /** "DICT". */
    const char* className() const override;
    void copyValue(const void* from, void* to) const override;
    void createValue(void* to) const override;
    /** False: pointers cannot be transcribed. */
    bool xdrKey(qnTranscriber& transcriber, void* key) override;
    bool xdrValue(qnTranscriber& transcriber, void* value) override;
};

typedef qnTypedDictIter<qnVoidPtrDict> qnVoidPtrDictIter;

#endif
