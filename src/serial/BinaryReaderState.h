#ifndef MORVAQNDS_BINARYREADERSTATE_H
#define MORVAQNDS_BINARYREADERSTATE_H

#include "BinaryReader.h"
#include "serial/ReadSupport.h"
#include "serial/WordMap.h"

/**
 * What a reader knows beyond its described fields: what each id stands for, so that no pointer gets what it cannot
 * hold, and how much of the current record is still in the stream.
 */
class qnBinaryReader::State : public qnReadSupport {
public:
    enum Sort : unsigned char { Unknown, Awaited, Type, Object, Base, Array };
    /** What a pointer variable is for. */
    enum Use : unsigned char {
        AnyUse,
        ObjectUse,
        ArrayUse,
        LongArrayUse,
        UnsignedLongArrayUse,
        TextUse,
        GivenUpTextUse,
        TerminatedUse
    };

    /** What an array's elements are in memory: as in the stream, or spread to longs. Unclaimed ones are as in it. */
    enum Width : unsigned char { Unclaimed, Narrow, Long, UnsignedLong };
    enum Owner : unsigned char { Nobody, String, Program };

    struct Info {
        Sort sort;
        Width wanted;  // by variables that wait for an array
        Width width;
        Owner owner;
        unsigned byteLength;  // of an array, in the stream
        unsigned graph;       // in which it arrived

        bool isSet() const { return sort != Unknown; }
    };

    explicit State(qnBinaryReader& reader)
        : reader_(reader),
          infos_(IdGrain),
          bases_(AddressGrain),
          graph_(0),
          graphs_(0),
          bucketsLeft_(BelievedBuckets),
          recordRest_(0),
          textExpected_(false) {
        supportReading(reader);
    }
    ~State() override {}

    /** Starts a graph, perhaps inside another one, and returns what `endGraph` wants. */
    unsigned startGraph() {
        unsigned outer = graph_;
        if (outer == 0) bucketsLeft_ = BelievedBuckets;
        graph_ = ++graphs_;
        return outer;
    }
    void endGraph(unsigned outer) { graph_ = outer; }
    void forget() {
        infos_.clear();
        bases_.clear();
        textExpected_ = false;
    }

    /** Says that `id` will be looked for soon. */
    void expect(unsigned id) const { infos_.expect(id); }
    /** Enters what `id` stands for from now on. */
    Info& enter(unsigned id, void* address, Sort sort, unsigned byteLength);
    /** Enters a base part; one that is in this graph already ends the process. */
    void enterBase(unsigned id, void* base);
    /** The type that `id` stands for, or null. */
    qnTypeObj* typeOf(unsigned id) const;

    /** Stores what has arrived in the variable that waits for it, or ends the process. */
    void store(qnBinaryReaderItem& item, void* arrived);
    void storeOrQueue(qnBinaryReaderItem& item);

    /**
     * The text that a string waits for did not come before the reading ended: until it comes in a later reading, the
     * string is empty. While the reading goes on, its length is that of the text already.
     */
    void giveUpText(qnBinaryReaderItem& item);
    void giveUpTexts();

    bool readArrayPointer(void* pointerVariable, Use use, unsigned byteLength);
    bool readElements(void* pointerVariable, Use use, unsigned count, unsigned elementBytes);
    /** Reads the contents of the array whose record was read last. */
    bool readArray(void** result);

    /**
     * Reads the next record. If its data fits in the `wanted` bytes at `destination` it goes there, and `*taken` says
     * how much; otherwise it goes to the buffer.
     */
    bool fill(char* destination, unsigned wanted, unsigned* taken);
    /** Makes more of the current record available, in the same way; false when the stream fails. */
    bool more(char* destination, unsigned wanted, unsigned* taken);
    unsigned recordRest() const { return recordRest_; }

protected:
    bool takeBuckets(unsigned nbuckets) override {
        if (nbuckets > bucketsLeft_) return false;
        bucketsLeft_ -= nbuckets;
        return true;
    }
    void textFollows() override { textExpected_ = true; }
    void variablesMoved(const void* from, std::size_t nbytes, void* to) override;

private:
    static constexpr unsigned IdGrain = 0;
    static constexpr unsigned AddressGrain = 3;
    /** In all tables of a graph, beyond those that their entries make likely. */
    static constexpr unsigned BelievedBuckets = 1u << 25;

    /** The graph in which a base part was read last. */
    struct BaseRead {
        unsigned graph;
        bool isSet() const { return graph != 0; }
    };

    static Width widthOf(unsigned char use);
    /** Whether variables that expect these widths can share an array, which may be unclaimed yet. */
    static bool agree(Width a, Width b);
    void enqueue(const qnBinaryReaderItem& item);
    void* arrayForText(const qnBinaryReaderItem& item, Info& info, char* array, unsigned length);
    void* arrayForPointer(const qnBinaryReaderItem& item, Info& info, void* array);
    void replace(unsigned id, void* address);
    static void* widen(void* array, unsigned byteLength, Width width);

    bool readHead(unsigned& dataBytes);
    bool readPayload();
    bool readType();
    bool skipRest();
    bool getWord(unsigned& word);
    bool getWords(unsigned& first, unsigned& second);

    qnBinaryReader& reader_;
    WordMap<std::uint32_t, Info> infos_;
    WordMap<std::uintptr_t, BaseRead> bases_;
    unsigned graph_;        // the current one, from 1; 0 outside of any
    unsigned graphs_;       // how many were started
    unsigned bucketsLeft_;  // that are believed in this graph
    unsigned recordRest_;   // data bytes of the current record that are still in the stream
    bool textExpected_;
};

#endif
