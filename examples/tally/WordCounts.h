#ifndef TALLY_WORDCOUNTS_H
#define TALLY_WORDCOUNTS_H

#include <morvaqnds.h>

/**
 * How often each word occurs: a dictionary from strings to 32-bit counters that can be saved and loaded.
 *
 *     WordCounts counts;
 *     counts.add(qnStr("morning"));
 *
 * It shows what a program's own dictionary consists of: the sizes of its records, what to do with keys and values, and
 * the type object through which streams know the class.
 */
class WordCounts : public qnDictionary {
public:
    typedef unsigned Counter;

    WordCounts();
    WordCounts(const WordCounts& other);
    explicit WordCounts(qnTypeObj& type);
    ~WordCounts() override;

    /** Adds the entries of `other`; for equal words its counters win. */
    WordCounts& operator=(const WordCounts& other);

    /** Counts one occurrence of `word`. A counter stops at its largest value. */
    void add(const qnStr& word);

    // What a reader needs of a class.
    const char* className() const override;
    bool xdr(qnTranscriber& transcriber) override;
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type);
    static void deleteInstance(void* object);
    static bool xdr(void* object, qnTranscriber& transcriber);

    // What the dictionary needs of its keys and values.
    unsigned long hashKey(const void* key) const override;
    int compareKeys(const void* a, const void* b) const override;
    void copyKey(const void* from, void* to) const override;
    void destroyKey(void* key) const override;
    void copyValue(const void* from, void* to) const override;
    void createValue(void* to) const override;
    bool xdrKey(qnTranscriber& transcriber, void* key) override;
    bool xdrValue(qnTranscriber& transcriber, void* value) override;

    /** The object that a reader made last, so that the root of a foreign stream is not taken for one of this class. */
    static const void* lastInstance();

protected:
    /** The sizes in streams, the same on every machine. */
    void streamRecordSizes(unsigned& key, unsigned& value) const override;
};

typedef qnTypedDictIter<WordCounts> WordCountsIter;

extern qnTypeObj WordCounts_type;

#endif
