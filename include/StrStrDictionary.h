#ifndef MORVAQNDS_STRSTRDICTIONARY_H
#define MORVAQNDS_STRSTRDICTIONARY_H

#include "Dictionary.h"
#include "Str.h"

/**
 * A serialisable dictionary from strings to strings.
 *
 *     qnStrStrDictionary capitals;
 *     qnStr country("Malta"), city("Valletta");
 *     capitals.addInternal(&country, &city);
 *     qnStr* found = static_cast<qnStr*>(capitals.find(&country, nullptr));
 *
 * In a stream its records count as 8 and 8 bytes on every machine.
 */
class MORVAQNDS_API qnStrStrDictionary : public qnStrKeyDictionary {
public:
    /** `nbuckets` 0 means 31. */
    explicit qnStrStrDictionary(unsigned nbuckets = 0);
    qnStrStrDictionary(const qnStrStrDictionary& other);
    explicit qnStrStrDictionary(qnTypeObj& type);
    ~qnStrStrDictionary() override;
    qnStrStrDictionary& operator=(const qnStrStrDictionary& other) {
        qnDictionary::operator=(other);
        return *this;
    }

    /** "DICT". */
    const char* className() const override;
    bool xdr(qnTranscriber& transcriber) override;
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type);
    static void deleteInstance(void* object);
    static bool xdr(void* object, qnTranscriber& transcriber);

    void copyValue(const void* from, void* to) const override;
    void destroyValue(void* value) const override;
    void createValue(void* to) const override;
    bool xdrKey(qnTranscriber& transcriber, void* key) override;
    bool xdrValue(qnTranscriber& transcriber, void* value) override;

protected:
    void streamRecordSizes(unsigned& key, unsigned& value) const override;
};

typedef qnTypedDictIter<qnStrStrDictionary> qnStrStrDictionaryIter;

extern MORVAQNDS_API qnTypeObj qnStrStrDictionary_type;

#endif
