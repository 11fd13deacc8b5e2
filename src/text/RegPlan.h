#ifndef MORVAQNDS_REGPLAN_H
#define MORVAQNDS_REGPLAN_H

#include <cstdint>

#include "RegBuffer.h"
#include "RegExp.h"

/** A set of bytes. Byte 0 stands for the end of the text where a set says how a match may go on. */
struct ByteSet {
    std::uint32_t words[8];

    bool has(unsigned c) const { return (words[c >> 5] >> (c & 31)) & 1; }
    void add(unsigned c) { words[c >> 5] |= std::uint32_t(1) << (c & 31); }
    void remove(unsigned c) { words[c >> 5] &= ~(std::uint32_t(1) << (c & 31)); }
    void unite(const ByteSet& other) {
        for (int i = 0; i < 8; ++i) words[i] |= other.words[i];
    }
    void intersect(const ByteSet& other) {
        for (int i = 0; i < 8; ++i) words[i] &= other.words[i];
    }
    bool meets(const ByteSet& other) const {
        std::uint32_t common = 0;
        for (int i = 0; i < 8; ++i) common |= words[i] & other.words[i];
        return common != 0;
    }
};

/** Whether `c` is part of a word: a letter or digit of the C locale, or `_`. */
inline bool isWordByte(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/** What the matcher does at a node. */
enum class Step : unsigned char {
    noNode,      // a link that leads nowhere
    badOpcode,   // an opcode that does not exist
    end,         // success
    lineStart,   // BOL
    lineEnd,     // EOL
    any,         // ANY
    set,         // ANYOF, ANYBUT: one character of `set`
    literal,     // EXACTLY: `length` characters at `text`
    choose,      // BRANCH: `operand`, failing that `next`, which is another BRANCH or 0
    pass,        // NOTHING, BACK
    repeat,      // STAR: characters of `set`
    repeatSome,  // PLUS: characters of `set`, at least one
    wordStart,   // WORDA
    wordEnd,     // WORDZ
    open,        // OPEN: `group`
    close        // CLOSE: `group`
};

struct PlanNode {
    Step step;
    unsigned char group;
    bool anyCharacter;   // the repeated set is every character
    bool unrepeatable;   // the operand of a repeat is no node that can be repeated; its set is empty
    bool exclusive;      // after the repeat no character of its set can follow: it never gives one back
    std::uint32_t next;  // the node that goes on; 0 is the node that leads nowhere
    std::uint32_t operand;
    std::uint32_t first;  // the set of bytes with which a match can go on from here
    std::uint32_t set;
    std::uint32_t text;  // place of the literal in the plan's bytes
    std::uint32_t length;
    std::uint32_t state;  // number of this node's first state in lockstep
    std::uint32_t offset;
};

/**
 * A program made ready for matching: its nodes decoded, the sets as bit maps, and for every node the bytes with which a
 * match can go on from there. Plans are kept for the next search with the same program and recognised by its bytes.
 *
 * Nodes are found by following links from the first one, so a damaged program is seen as far as the matcher would get
 * in it, and its faults are reported only when the matcher reaches them.
 */
struct RegPlan {
    /** The plan of this expression's program, made now or kept from an earlier call. It is good until the next call. */
    static RegPlan& of(const regexp& expression);

    const PlanNode* nodes() const { return nodeBuffer.data(); }
    const ByteSet* sets() const { return setBuffer.data(); }
    const char* text(const PlanNode& node) const {
        return reinterpret_cast<const char*>(byteBuffer.data()) + node.text;
    }

    static constexpr std::uint32_t everyByte = 0;  // number of the set that holds all 256 values
    static constexpr std::uint32_t entry = 1;      // number of the first node

    std::uint32_t nodeCount;
    std::uint32_t stateCount;
    std::uint32_t groupCount;     // the highest group that occurs
    bool faulty;                  // a walk can meet a fault that has to be reported
    bool cyclic;                  // a loop can be walked without taking a character: only damage makes that
    unsigned char startsAt[256];  // 1 for the bytes with which a match can begin
    int onlyStart;                // the one byte with which every match begins, or -1
    const PlanNode* prefix;       // the literal with which every match begins, or null
    const PlanNode* required;     // a literal that every match contains, or null
    const PlanNode* leading;      // the repeat with which every match begins, or null
    bool wordLead;                // every match begins at the start of a word

private:
    void build(const unsigned char* program);
    std::uint32_t nodeAt(unsigned offset);
    void decode(const unsigned char* program, std::uint32_t number);
    void decodeRepeat(const unsigned char* program, unsigned offset, PlanNode& node);
    std::uint32_t operandText(const unsigned char* program, unsigned offset, std::uint32_t& length);
    std::uint32_t addSet(const ByteSet& set);
    std::uint32_t setOfOperand(const unsigned char* program, unsigned offset);
    void findFirstSets();
    std::uint32_t firstSetOf(const PlanNode& node);
    void skipEmptyNodes();
    void findStarts();
    void findLead();
    void findRequired();
    bool endsWithout(std::uint32_t avoided) const;
    bool describes(const unsigned char* program) const;

    RegBuffer<PlanNode, 48> nodeBuffer;
    RegBuffer<ByteSet, 48> setBuffer;
    RegBuffer<unsigned char, 384> byteBuffer;  // a copy of the program
    std::uint32_t setCount;
    std::uint32_t byteCount;
};

#endif
