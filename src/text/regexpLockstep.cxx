#include <cstddef>
#include <cstring>

#include "RegMatch.h"

/*
 * Matching in lockstep: all walks that backtracking would try one after the other advance through the text together,
 * one character at a time, in the order in which backtracking would try them.
 *
 * A thread is a walk that waits for a character, with the groups it has noted. The threads at a place stand in a list,
 * the ones that backtracking prefers first; a try from a later place stands behind all of those from earlier places.
 * Two walks at the same state and place go on alike, so of these only the first is kept: for the others it is already
 * known that they lead nowhere that the first does not. That is all there is to remember of failures, and only for the
 * current place. When a thread reaches the end of the program, the threads behind it are dropped; those in front of it
 * may still reach a match that is preferred. When no thread is left, the last match reached is the result.
 *
 * Time: at most one visit of every state at every place, so the product of program and text. Memory: for every state
 * two threads and a mark, each thread with two pointers for each group, whatever the text: inline for small programs,
 * about 10 MB for the largest with nine groups.
 *
 * Faults of a damaged program join the list as threads that wait for no character. A fault is reported when everything
 * in front of it has failed, which is when backtracking would have come upon it.
 */

namespace {

// What can be wrong with a program. Each has a state of its own behind those of the plan.
enum class Fault : unsigned { noNode, badOpcode, unrepeatable, endless };
constexpr std::uint32_t faultCount = 4;

constexpr std::uint32_t noSuccessor = 0xffffffff;

struct Thread {
    std::uint32_t node;
    std::uint32_t offset;  // how much of a literal has been matched; what kind of fault it is
};

// What is left to do when the walk through the nodes at one place comes back.
struct Pending {
    enum Kind : unsigned char {
        visit,    // the other alternative at `node`
        restore,  // put `former` back into `slot`
        leave     // all that can be reached from `node` has been visited
    } kind;
    std::uint32_t node;
    std::uint32_t slot;
    const char* former;
};

// The threads at one place. What thread i has noted are the `slotCount` pointers from i * slotCount.
struct ThreadList {
    Thread* threads;
    const char** slots;
    std::uint32_t count;
};

class Lockstep {
public:
    Lockstep(RegSearch& theSearch, RegCaptures& theCaptures);

    bool run(const char* start);

private:
    void startHere();
    void advanceAll();
    bool advance(const Thread& thread, const char* const* noted, unsigned char character);
    void takeFault(Fault fault);
    bool walkFrom(std::uint32_t node);
    std::uint32_t visit(std::uint32_t number);
    std::uint32_t note(const PlanNode& node, std::uint32_t slot);
    void addThread(std::uint32_t node, std::uint32_t offset);
    void addFault(Fault fault);
    bool mark(std::uint32_t state);
    void newGeneration();
    void recordMatch();

    RegSearch& search;
    const RegPlan& plan;
    const PlanNode* const nodes;
    RegCaptures& captures;
    const std::uint32_t slotCount;      // start of the match, then start and end of each group
    ThreadList now;                     // threads that wait for the character at hand
    ThreadList after;                   // threads that wait for the one behind it
    ThreadList* target = nullptr;       // the list to which walks are being added,
    const char* place = nullptr;        // the place that it is for,
    const char* walk[2 * NSUBEXP - 1];  // and what the walk being added has noted
    Pending* pending;
    std::uint32_t pendingCount = 0;
    std::uint32_t* marks;          // by state: the generation of its last visit, plus 1 until it is left
    std::uint32_t generation = 2;  // even; a new one for every list
    bool matched = false;
    bool reachedEnd = false;  // by the walk being added
    bool endless = false;
};

// Scratch memory, kept from call to call.
constexpr unsigned inlineStates = 128;
RegBuffer<Thread, inlineStates> threadBuffers[2];
RegBuffer<const char*, 4 * inlineStates> slotBuffers[2];
RegBuffer<Pending, 2 * inlineStates> pendingBuffer;
RegBuffer<std::uint32_t, inlineStates> markBuffer;

Lockstep::Lockstep(RegSearch& theSearch, RegCaptures& theCaptures)
    : search(theSearch),
      plan(theSearch.plan),
      nodes(theSearch.plan.nodes()),
      captures(theCaptures),
      slotCount(2 * theSearch.plan.groupCount + 1) {
    std::size_t states = plan.stateCount + faultCount;
    now = {threadBuffers[0].reserve(states, 0), slotBuffers[0].reserve(states * slotCount, 0), 0};
    after = {threadBuffers[1].reserve(states, 0), slotBuffers[1].reserve(states * slotCount, 0), 0};
    // A node is visited once for each list and leaves at most two entries behind.
    pending = pendingBuffer.reserve(2 * std::size_t(plan.nodeCount), 0);
    marks = markBuffer.reserve(states, 0);
    std::memset(marks, 0, states * sizeof *marks);
}

bool Lockstep::run(const char* start) {
    target = &now;
    place = start;
    for (;;) {
        if (now.count == 0) {
            if (matched || !(place = search.nextStart(place))) return matched;
            newGeneration();
        }
        if (!matched && search.canStart(place)) startHere();
        bool atEnd = *place == '\0';
        advanceAll();
        if (endless) return false;
        if (atEnd) return matched;
    }
}

// Adds the walks of a try from this place, behind those of the earlier tries.
void Lockstep::startHere() {
    for (std::uint32_t i = 0; i < slotCount; ++i) walk[i] = nullptr;
    walk[0] = place;
    walkFrom(RegPlan::entry);
}

// Takes every thread over the character at hand. At the end of the text there is none: all threads fail.
void Lockstep::advanceAll() {
    unsigned char character = static_cast<unsigned char>(*place);
    newGeneration();
    target = &after;
    after.count = 0;
    ++place;
    for (std::uint32_t i = 0; i < now.count && !endless; ++i) {
        if (advance(now.threads[i], now.slots + std::size_t(i) * slotCount, character)) break;
    }
    ThreadList spent = now;
    now = after;
    after = spent;
    target = &now;
}

// True if the thread has reached the end of the program, so that those behind it do not matter.
bool Lockstep::advance(const Thread& thread, const char* const* noted, unsigned char character) {
    const PlanNode& node = nodes[thread.node];
    bool ends = true;  // the node, with this character
    switch (node.step) {
        case Step::any:
            if (character == '\0') return false;
            break;
        case Step::set:
        case Step::repeat:
        case Step::repeatSome:
            if (!plan.sets()[node.set].has(character)) return false;
            break;
        case Step::literal:
            if (static_cast<unsigned char>(plan.text(node)[thread.offset]) != character) return false;
            ends = thread.offset + 1 == node.length;
            break;
        default: takeFault(static_cast<Fault>(thread.offset)); return false;
    }
    for (std::uint32_t i = 0; i < slotCount; ++i) walk[i] = noted[i];
    if (!ends) {
        if (mark(node.state + thread.offset + 1)) addThread(thread.node, thread.offset + 1);
        return false;
    }
    if (node.step == Step::repeat || node.step == Step::repeatSome) {
        if (!mark(node.state + 1)) return false;
        if (plan.sets()[node.set].has(static_cast<unsigned char>(*place))) addThread(thread.node, 0);
    }
    return walkFrom(node.next);
}

// A fault is reported once every thread in front of it has failed.
void Lockstep::takeFault(Fault fault) {
    static const char* const messages[faultCount] = {"corrupted pointers", "memory corruption", "internal foulup",
                                                     "corrupted pointers"};
    if (after.count > 0) {
        addFault(fault);
        return;
    }
    qnregerror(messages[static_cast<unsigned>(fault)]);
    // Backtracking would never come back from here.
    endless = fault == Fault::endless;
}

// Adds all walks that go on from a node at this place. True if one reached the end of the program.
bool Lockstep::walkFrom(std::uint32_t number) {
    reachedEnd = false;
    for (;;) {
        while (number != noSuccessor && !reachedEnd) number = visit(number);
        if (reachedEnd || pendingCount == 0) break;
        const Pending& back = pending[--pendingCount];
        if (back.kind == Pending::visit) number = back.node;
        if (back.kind == Pending::restore) walk[back.slot] = back.former;
        if (back.kind == Pending::leave) marks[nodes[back.node].state] = generation;
    }
    pendingCount = 0;
    return reachedEnd;
}

// Visits one node and tells which one is next.
std::uint32_t Lockstep::visit(std::uint32_t number) {
    const PlanNode& node = nodes[number];
    unsigned char character = static_cast<unsigned char>(*place);
    if (!plan.sets()[node.first].has(character)) return noSuccessor;
    if (!mark(node.state)) {
        if (marks[node.state] == generation + 1) addFault(Fault::endless);
        return noSuccessor;
    }
    if (plan.cyclic) {
        marks[node.state] = generation + 1;
        pending[pendingCount++] = {Pending::leave, number, 0, nullptr};
    }
    switch (node.step) {
        case Step::end: recordMatch(); return noSuccessor;
        case Step::any:
        case Step::set:
        case Step::literal: addThread(number, 0); return noSuccessor;
        case Step::repeat:
        case Step::repeatSome:
            if (node.unrepeatable) {
                addFault(Fault::unrepeatable);
            } else if (node.step == Step::repeatSome || mark(node.state + 1)) {
                addThread(number, 0);
            }
            return node.step == Step::repeat ? node.next : noSuccessor;
        case Step::choose:
            if (node.next) pending[pendingCount++] = {Pending::visit, node.next, 0, nullptr};
            return node.operand;
        case Step::open: return note(node, 2u * node.group - 1);
        case Step::close: return note(node, 2u * node.group);
        case Step::pass: return node.next;
        case Step::lineStart: return place == search.text ? node.next : noSuccessor;
        case Step::lineEnd: return character == '\0' ? node.next : noSuccessor;
        case Step::wordStart: return isWordByte(character) && !search.afterWordByte(place) ? node.next : noSuccessor;
        case Step::wordEnd: return isWordByte(character) ? noSuccessor : node.next;
        case Step::noNode: addFault(Fault::noNode); return noSuccessor;
        case Step::badOpcode: addFault(Fault::badOpcode); return noSuccessor;
    }
    return noSuccessor;
}

std::uint32_t Lockstep::note(const PlanNode& node, std::uint32_t slot) {
    pending[pendingCount++] = {Pending::restore, 0, slot, walk[slot]};
    walk[slot] = place;
    return node.next;
}

// True at the first visit of a state in this generation.
bool Lockstep::mark(std::uint32_t state) {
    if (marks[state] >= generation) return false;
    marks[state] = generation;
    return true;
}

void Lockstep::newGeneration() {
    generation += 2;
    if (generation != 0) return;
    std::memset(marks, 0, (plan.stateCount + faultCount) * sizeof *marks);
    generation = 2;
}

void Lockstep::addThread(std::uint32_t node, std::uint32_t offset) {
    target->threads[target->count] = {node, offset};
    const char** noted = target->slots + std::size_t(target->count) * slotCount;
    for (std::uint32_t i = 0; i < slotCount; ++i) noted[i] = walk[i];
    ++target->count;
}

void Lockstep::addFault(Fault fault) {
    if (mark(plan.stateCount + static_cast<std::uint32_t>(fault))) addThread(0, static_cast<std::uint32_t>(fault));
}

void Lockstep::recordMatch() {
    std::memset(&captures, 0, sizeof captures);
    captures.start[0] = walk[0];
    captures.end[0] = place;
    for (std::uint32_t group = 1; group <= plan.groupCount; ++group) {
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): every slot is set before a match
        captures.start[group] = walk[2 * group - 1];
        // NOLINTNEXTLINE(bugprone-implicit-widening-of-multiplication-result): at most nine groups
        captures.end[group] = walk[2 * group];
    }
    matched = reachedEnd = true;
}

}  // namespace

bool regLockstep(RegSearch& search, const char* start, RegCaptures& captures) {
    return Lockstep(search, captures).run(start);
}
