#ifndef MORVAQNDS_STRSET_H
#define MORVAQNDS_STRSET_H

#include "Set.h"
#include "Str.h"

/**
 * A serialisable set of strings.
 *
 *     qnStrSet stopWords;
 *     qnStr word("the");
 *     stopWords.add(&word);
 *     if (!stopWords.contains(&other)) ...
 *
 * In a stream its keys count as 8 bytes on every machine.
 */
class MORVAQNDS_API qnStrSet : public qnSet {
public:
    /** `nbuckets` 0 means 31. */
    explicit qnStrSet(unsigned nbuckets = 0);
    /** A set without buckets; copying one that has keys ends the process. */
    qnStrSet(const qnStrSet& other);
    explicit qnStrSet(qnTypeObj& type);
    ~qnStrSet() override;
    /** Dismantles this set; assigning one that has keys ends the process. */
    qnStrSet& operator=(const qnStrSet& other) {
        qnSet::operator=(other);
        return *this;
    }

    /** Transcribes the whole set. */
    bool xdr(qnTranscriber& transcriber) override;
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type);
    static void deleteInstance(void* object);
    static bool xdr(void* object, qnTranscriber& transcriber);

    unsigned long hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    bool xdrKey(qnTranscriber& transcriber, void* key) override;

protected:
    unsigned streamKeySize() const override;
};

typedef qnTypedIter<qnSetIter, qnStrSet> qnStrSetIter;

extern MORVAQNDS_API qnTypeObj qnStrSet_type;

#endif
