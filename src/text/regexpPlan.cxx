#include <cstring>

#include "RegPlan.h"
#include "RegProgram.h"

/*
 * Preparing a program takes time linear in its length (a microsecond for ordinary ones), and is saved when the same
 * program is searched with again, as is the rule. Eight plans are kept; the address of the expression chooses between
 * them. They live in static memory and are never released. A plan of an ordinary program fits its inline buffers; the
 * largest program (32766 bytes) takes about 1 MB of heap.
 */

namespace {

// Larger programs are not searched for a literal that every match contains.
constexpr std::uint32_t mostNodes = 200;

constexpr unsigned planCount = 8;
RegPlan plans[planCount];

// While a plan is built: the number of the node at each offset, 0 where none is known. Cleared after use.
std::uint16_t numberAt[programLimit + 1];

// The nodes that can be reached next without taking a character, at most two.
unsigned emptySuccessors(const PlanNode& node, std::uint32_t successors[2]) {
    switch (node.step) {
        case Step::choose:
            successors[0] = node.operand;
            successors[1] = node.next;
            return node.next ? 2 : 1;
        case Step::lineStart:
        case Step::lineEnd:
        case Step::pass:
        case Step::repeat:
        case Step::wordStart:
        case Step::wordEnd:
        case Step::open:
        case Step::close: successors[0] = node.next; return 1;
        default: return 0;
    }
}

// The offset to which the link of the node at `offset` leads, or 0 if it leads nowhere or out of every program.
unsigned linkTarget(const unsigned char* program, unsigned offset) {
    unsigned distance = linkOf(program + offset);
    if (distance == 0) return 0;
    if (program[offset] == opBack) return distance < offset ? offset - distance : 0;
    return offset + distance < programLimit ? offset + distance : 0;
}

ByteSet allCharacters() {
    ByteSet set;
    std::memset(&set, 0xff, sizeof set);
    set.remove(0);
    return set;
}

}  // namespace

RegPlan& RegPlan::of(const regexp& expression) {
    RegPlan& plan = plans[(reinterpret_cast<std::uintptr_t>(&expression) >> 5) % planCount];
    const unsigned char* program = programOf(&expression);
    if (!plan.describes(program)) plan.build(program);
    return plan;
}

// Stops at the first byte that differs. A sound program is never the beginning of another one, so this does not read
// past the end of a shorter one.
bool RegPlan::describes(const unsigned char* program) const {
    const unsigned char* known = byteBuffer.data();
    for (std::uint32_t i = 0; i < byteCount; ++i) {
        if (known[i] != program[i]) return false;
    }
    return byteCount > 0;
}

void RegPlan::build(const unsigned char* program) {
    nodeCount = setCount = stateCount = groupCount = 0;
    faulty = false;
    byteCount = 1;
    ByteSet every;
    std::memset(&every, 0xff, sizeof every);
    addSet(every);
    PlanNode* nowhere = nodeBuffer.reserve(1, 0);
    std::memset(nowhere, 0, sizeof *nowhere);
    nowhere->step = Step::noNode;
    nodeCount = stateCount = 1;

    nodeAt(1);
    for (std::uint32_t number = 1; number < nodeCount; ++number) decode(program, number);
    for (std::uint32_t number = 1; number < nodeCount; ++number) numberAt[nodes()[number].offset] = 0;
    std::memcpy(byteBuffer.reserve(byteCount, 0), program, byteCount);

    findFirstSets();
    skipEmptyNodes();
    findStarts();
    findLead();
    findRequired();
}

// The number of the node at an offset; a new one if it has not been met before. 0 for offset 0.
std::uint32_t RegPlan::nodeAt(unsigned offset) {
    if (offset == 0) return 0;
    if (numberAt[offset]) return numberAt[offset];
    PlanNode& node = nodeBuffer.reserve(nodeCount + 1, nodeCount)[nodeCount];
    std::memset(&node, 0, sizeof node);
    node.offset = offset;
    numberAt[offset] = static_cast<std::uint16_t>(nodeCount);
    return nodeCount++;
}

std::uint32_t RegPlan::addSet(const ByteSet& set) {
    setBuffer.reserve(setCount + 1, setCount)[setCount] = set;
    return setCount++;
}

// The operand string of the node at an offset: its place and length.
std::uint32_t RegPlan::operandText(const unsigned char* program, unsigned offset, std::uint32_t& length) {
    unsigned start = offset + nodeHeaderSize;
    length = 0;
    while (start + length < programLimit && program[start + length] != '\0') ++length;
    if (byteCount < start + length + 1) byteCount = start + length + 1;
    return start;
}

// The characters that the one-character node at an offset matches.
std::uint32_t RegPlan::setOfOperand(const unsigned char* program, unsigned offset) {
    ByteSet set;
    std::memset(&set, 0, sizeof set);
    if (program[offset] == opAny) return addSet(allCharacters());
    std::uint32_t length = 0;
    const unsigned char* operand = program + operandText(program, offset, length);
    if (program[offset] == opExactly) {
        if (length > 0) set.add(operand[0]);
        return addSet(set);
    }
    for (std::uint32_t i = 0; i < length; ++i) set.add(operand[i]);
    if (program[offset] == opAnyBut) {
        for (std::uint32_t& word : set.words) word = ~word;
        set.remove(0);
    }
    return addSet(set);
}

void RegPlan::decodeRepeat(const unsigned char* program, unsigned offset, PlanNode& node) {
    unsigned operand = offset + nodeHeaderSize;
    if (byteCount < operand + nodeHeaderSize) byteCount = operand + nodeHeaderSize;
    switch (program[operand]) {
        case opAny: node.anyCharacter = true; break;
        case opAnyOf:
        case opAnyBut:
        case opExactly: break;
        default: {
            ByteSet none;
            std::memset(&none, 0, sizeof none);
            node.unrepeatable = true;
            node.set = addSet(none);
            return;
        }
    }
    node.set = setOfOperand(program, operand);
}

void RegPlan::decode(const unsigned char* program, std::uint32_t number) {
    unsigned offset = nodes()[number].offset;
    PlanNode node = nodes()[number];
    unsigned opcode = program[offset];
    node.state = stateCount;
    std::uint32_t states = 1;
    if (byteCount < offset + nodeHeaderSize) byteCount = offset + nodeHeaderSize;
    switch (opcode) {
        case opEnd: node.step = Step::end; break;
        case opBol: node.step = Step::lineStart; break;
        case opEol: node.step = Step::lineEnd; break;
        case opAny: node.step = Step::any; break;
        case opAnyOf:
        case opAnyBut:
            node.step = Step::set;
            node.set = setOfOperand(program, offset);
            break;
        case opBranch: {
            node.step = Step::choose;
            unsigned other = linkTarget(program, offset);
            node.operand = nodeAt(offset + nodeHeaderSize);
            node.next = other && program[other] == opBranch ? nodeAt(other) : 0;
            // The opcode there has been read, and no other way need lead to it.
            if (byteCount < other + 1) byteCount = other + 1;
            break;
        }
        case opBack:
        case opNothing: node.step = Step::pass; break;
        case opExactly:
            node.text = operandText(program, offset, node.length);
            // An empty operand, which only damage makes, is compared like any other: its first character is the NUL.
            node.step = node.length ? Step::literal : Step::lineEnd;
            if (node.length) states = node.length;
            break;
        case opStar:
        case opPlus:
            node.step = opcode == opStar ? Step::repeat : Step::repeatSome;
            decodeRepeat(program, offset, node);
            states = 2;
            break;
        case opWordStart: node.step = Step::wordStart; break;
        case opWordEnd: node.step = Step::wordEnd; break;
        default:
            if (opcode > opOpen && opcode < opOpen + NSUBEXP) {
                node.step = Step::open;
                node.group = static_cast<unsigned char>(opcode - opOpen);
            } else if (opcode > opClose && opcode < opClose + NSUBEXP) {
                node.step = Step::close;
                node.group = static_cast<unsigned char>(opcode - opClose);
            } else {
                node.step = Step::badOpcode;
            }
    }
    if (node.group > groupCount) groupCount = node.group;
    if (node.step != Step::choose && node.step != Step::end && node.step != Step::badOpcode) {
        node.next = nodeAt(linkTarget(program, offset));
        faulty = faulty || node.next == 0;
    }
    faulty = faulty || node.unrepeatable || node.step == Step::badOpcode;
    stateCount += states;
    nodeBuffer.data()[number] = node;
}

// The bytes with which a match can go on from a node whose empty successors are known already.
std::uint32_t RegPlan::firstSetOf(const PlanNode& node) {
    ByteSet set;
    std::memset(&set, 0, sizeof set);
    const ByteSet& after = sets()[nodes()[node.next].first];
    switch (node.step) {
        case Step::any: return addSet(allCharacters());
        case Step::set: return node.set;
        case Step::literal: set.add(static_cast<unsigned char>(*text(node))); return addSet(set);
        case Step::repeat:
            if (node.unrepeatable) return everyByte;
            set = sets()[node.set];
            set.unite(after);
            return addSet(set);
        case Step::repeatSome: return node.unrepeatable ? everyByte : node.set;
        case Step::choose:
            if (!node.next) return nodes()[node.operand].first;
            set = sets()[nodes()[node.operand].first];
            set.unite(after);
            return addSet(set);
        case Step::lineEnd:
            set.add(0);
            set.intersect(after);
            return addSet(set);
        case Step::wordStart:
        case Step::wordEnd:
            for (unsigned c = 0; c < 256; ++c) {
                if (isWordByte(static_cast<unsigned char>(c)) == (node.step == Step::wordStart)) set.add(c);
            }
            set.intersect(after);
            return addSet(set);
        case Step::noNode:
        case Step::badOpcode:
        case Step::end: return everyByte;
        default: return nodes()[node.next].first;
    }
}

// Visits the nodes depth first along the links that take no character, each after its successors. A node that is met
// again while its successors are being visited closes a cycle; the sets are then larger than need be, which is
// harmless.
void RegPlan::findFirstSets() {
    enum : unsigned char { unseen, entered, done };
    static RegBuffer<unsigned char, 48> markBuffer;
    static RegBuffer<std::uint32_t, 96> stackBuffer;
    unsigned char* marks = markBuffer.reserve(nodeCount, 0);
    std::uint32_t* stack = stackBuffer.reserve(2 * nodeCount + 2, 0);
    std::memset(marks, unseen, nodeCount);
    marks[0] = done;
    cyclic = false;
    for (std::uint32_t root = 1; root < nodeCount; ++root) {
        std::uint32_t depth = 0;
        if (marks[root] == unseen) stack[depth++] = root;
        while (depth > 0) {
            std::uint32_t number = stack[depth - 1];
            PlanNode& node = nodeBuffer.data()[number];
            if (marks[number] != unseen) {
                --depth;
                if (marks[number] == done) continue;
                node.first = firstSetOf(node);
                marks[number] = done;
                continue;
            }
            marks[number] = entered;
            std::uint32_t successors[2];
            for (unsigned left = emptySuccessors(node, successors); left > 0; --left) {
                std::uint32_t successor = successors[left - 1];
                if (marks[successor] == entered) cyclic = true;
                if (marks[successor] == unseen) stack[depth++] = successor;
            }
        }
    }
    for (std::uint32_t number = 1; number < nodeCount; ++number) {
        PlanNode& node = nodeBuffer.data()[number];
        if (node.step != Step::repeat && node.step != Step::repeatSome) continue;
        node.exclusive = !node.unrepeatable && !sets()[node.set].meets(sets()[nodes()[node.next].first]);
    }
}

// Lets links lead past nodes that do nothing.
void RegPlan::skipEmptyNodes() {
    if (cyclic) return;
    constexpr int mostSkipped = 8;
    for (std::uint32_t number = 1; number < nodeCount; ++number) {
        PlanNode& node = nodeBuffer.data()[number];
        for (int i = 0; i < mostSkipped && nodes()[node.next].step == Step::pass; ++i)
            node.next = nodes()[node.next].next;
        if (node.step != Step::choose) continue;
        for (int i = 0; i < mostSkipped && nodes()[node.operand].step == Step::pass; ++i) {
            node.operand = nodes()[node.operand].next;
        }
    }
}

// What every match begins with, and what it contains.
void RegPlan::findStarts() {
    const ByteSet& starts = sets()[nodes()[entry].first];
    int count = 0;
    onlyStart = -1;
    for (unsigned c = 0; c < 256; ++c) {
        startsAt[c] = starts.has(c);
        if (!startsAt[c]) continue;
        ++count;
        onlyStart = static_cast<int>(c);
    }
    if (count != 1 || onlyStart == 0) onlyStart = -1;
}

// The node with which every match begins, where that is a literal, a repeat or the start of a word.
void RegPlan::findLead() {
    prefix = leading = nullptr;
    wordLead = false;
    std::uint32_t number = entry;
    for (std::uint32_t passed = 0; passed < nodeCount; ++passed) {
        const PlanNode& node = nodes()[number];
        if (node.step == Step::literal) prefix = &node;
        if (node.step == Step::wordStart) wordLead = true;
        if (!faulty && (node.step == Step::repeat || node.step == Step::repeatSome)) leading = &node;
        bool single = node.step == Step::choose && !node.next;
        if (!single && node.step != Step::open && node.step != Step::pass) return;
        number = single ? node.operand : node.next;
    }
}

// The longest literal that every match contains. It is sought in programs of moderate size only, and not in those with
// a fault, which has to be reported even where the literal is missing.
void RegPlan::findRequired() {
    required = nullptr;
    if (faulty || cyclic || nodeCount > mostNodes) return;
    for (std::uint32_t number = entry; number < nodeCount; ++number) {
        const PlanNode& node = nodes()[number];
        if (node.step != Step::literal || (required && required->length >= node.length)) continue;
        if (!endsWithout(number)) required = &node;
    }
}

// Whether a walk can reach the end of the program without passing the node `avoided`.
bool RegPlan::endsWithout(std::uint32_t avoided) const {
    bool seen[mostNodes] = {};
    std::uint32_t stack[mostNodes + 1];
    std::uint32_t depth = 0;
    seen[avoided] = seen[entry] = true;
    stack[depth++] = entry;
    while (depth > 0) {
        const PlanNode& node = nodes()[stack[--depth]];
        if (node.step == Step::end) return true;
        std::uint32_t ways[2] = {node.next, node.step == Step::choose ? node.operand : 0};
        for (std::uint32_t way : ways) {
            if (way == 0 || seen[way]) continue;
            seen[way] = true;
            stack[depth++] = way;
        }
    }
    return false;
}
