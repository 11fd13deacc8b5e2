#include <cstddef>
#include <cstring>

#include "RegMatch.h"

/*
 * Backtracking with an explicit stack of choices.
 *
 * A walk goes from node to node; where it could go on in more than one way it takes the first and remembers the others
 * in a frame. When it gets stuck it returns to the last frame. A way whose next character is not in the set of bytes
 * with which it can go on is not taken and not remembered, so most patterns are walked without a frame.
 *
 * A walk that succeeds has passed the start (end) of a group for the last time where the group's last repetition
 * starts (ends), so groups are noted on the way. If there is a choice to return to, a frame keeps the former value.
 *
 * Bounds: the stack is static and holds `frameLimit` frames. The steps of all tries together may not exceed
 * `freeSteps` plus `stepsPerCharacter` for every character that has been looked at. Both limits lead to giving up.
 */

namespace {

constexpr std::uint32_t frameLimit = 4096;
constexpr std::uint64_t freeSteps = 4096;
constexpr std::uint64_t stepsPerCharacter = 16;
constexpr unsigned scannedPerStep = 8;  // characters of a plain scan that count as one step
constexpr std::uint32_t comparedAtOnce = 64;
constexpr unsigned comparedPerStep = 512;  // characters of a comparison by the C library that count as one step

enum class Way : unsigned char {
    alternative,  // try the alternative at `node` from `high`
    shorter,      // try what follows the repeat at `node` from `high`, and then from the places down to `low`
    groupStart,   // put `low` back as the start of group `node`
    groupEnd      // put `low` back as the end of group `node`
};

struct Frame {
    const char* low;
    const char* high;
    std::uint32_t node;
    Way way;
};

Frame frames[frameLimit];

class Walk {
public:
    Walk(const RegSearch& theSearch, RegCaptures& theCaptures)
        : search(theSearch),
          nodes(theSearch.plan.nodes()),
          sets(theSearch.plan.sets()),
          captures(theCaptures),
          furthest(theSearch.text) {}

    RegOutcome tryFrom(const char* start);

private:
    bool advance();
    bool choose(const PlanNode& node);
    bool repeat(const PlanNode& node);
    bool takeLongest(const PlanNode& node, const char* low, const char* high);
    bool takeFrame();
    bool literal(const PlanNode& node);
    void note(const char*& place, const PlanNode& node, Way restore);
    const char* repeatEnd(const PlanNode& node);

    void push(Way way, std::uint32_t target, const char* low, const char* high) {
        if (depth == frameLimit) {
            exhausted = true;
            return;
        }
        Frame& frame = frames[depth++];
        frame.way = way;
        frame.node = target;
        frame.low = low;
        frame.high = high;
    }

    bool canGoOn(std::uint32_t node, const char* place) const {
        return sets[nodes[node].first].has(static_cast<unsigned char>(*place));
    }

    bool overspent() const {
        return steps > freeSteps + stepsPerCharacter * static_cast<std::uint64_t>(furthest - search.text);
    }

    const RegSearch& search;
    const PlanNode* const nodes;
    const ByteSet* const sets;
    RegCaptures& captures;
    const char* furthest;  // the furthest place that has been looked at
    const char* textEnd = nullptr;
    std::uint64_t steps = 0;
    std::uint32_t depth = 0;
    std::uint32_t current = 0;  // the node and the place of the walk
    const char* input = nullptr;
    bool exhausted = false;
};

RegOutcome Walk::tryFrom(const char* start) {
    depth = 0;
    current = RegPlan::entry;
    input = start;
    for (;;) {
        if (exhausted) return RegOutcome::gaveUp;
        ++steps;
        if (nodes[current].step == Step::end) {
            captures.start[0] = start;
            captures.end[0] = input;
            return RegOutcome::matched;
        }
        if (advance()) continue;
        if (input > furthest) furthest = input;
        if (overspent()) return RegOutcome::gaveUp;
        if (!takeFrame()) return RegOutcome::failed;
    }
}

// Goes past the current node. False if that is not possible.
bool Walk::advance() {
    const PlanNode& node = nodes[current];
    switch (node.step) {
        case Step::any:
            if (*input == '\0') return false;
            ++input;
            break;
        case Step::set:
            if (!sets[node.set].has(static_cast<unsigned char>(*input))) return false;
            ++input;
            break;
        case Step::literal:
            if (!literal(node)) return false;
            break;
        case Step::choose: return choose(node);
        case Step::repeat:
        case Step::repeatSome: return repeat(node);
        case Step::open: note(captures.start[node.group], node, Way::groupStart); break;
        case Step::close: note(captures.end[node.group], node, Way::groupEnd); break;
        case Step::lineStart:
            if (input != search.text) return false;
            break;
        case Step::lineEnd:
            if (*input != '\0') return false;
            break;
        case Step::wordStart:
            if (!isWordByte(static_cast<unsigned char>(*input)) || search.afterWordByte(input)) return false;
            break;
        case Step::wordEnd:
            // Deliberate: what stands before is not looked at.
            if (isWordByte(static_cast<unsigned char>(*input))) return false;
            break;
        case Step::noNode: qnregerror("corrupted pointers"); return false;
        case Step::badOpcode: qnregerror("memory corruption"); return false;
        case Step::end:
        case Step::pass: break;
    }
    current = node.next;
    return true;
}

bool Walk::literal(const PlanNode& node) {
    const char* text = search.plan.text(node);
    std::uint32_t same = 0;
    for (; node.length - same >= comparedAtOnce; same += comparedAtOnce) {
        if (std::strncmp(input + same, text + same, comparedAtOnce) == 0) continue;
        steps += same / comparedPerStep;
        return false;
    }
    steps += same / comparedPerStep;
    const std::uint32_t compared = same;
    while (same < node.length && input[same] == text[same]) ++same;
    steps += (same - compared) / scannedPerStep;
    if (same < node.length) return false;
    input += same;
    return true;
}

void Walk::note(const char*& place, const PlanNode& node, Way restore) {
    if (depth > 0) push(restore, node.group, place, nullptr);
    place = input;
}

// Takes the first alternative that can go on here, and remembers the next one that can.
bool Walk::choose(const PlanNode& branch) {
    const PlanNode* node = &branch;
    while (!canGoOn(node->operand, input)) {
        if (!node->next) return false;
        node = &nodes[node->next];
        ++steps;
    }
    current = node->operand;
    std::uint32_t other = node->next;
    while (other && !canGoOn(nodes[other].operand, input)) {
        other = nodes[other].next;
        ++steps;
    }
    if (other) push(Way::alternative, other, nullptr, input);
    return true;
}

bool Walk::repeat(const PlanNode& node) {
    if (node.unrepeatable) qnregerror("internal foulup");
    const char* low = input;
    const char* high = repeatEnd(node);
    steps += static_cast<std::uint64_t>(high - low) / scannedPerStep;
    if (high > furthest) furthest = high;
    if (node.step == Step::repeatSome) {
        if (high == low) return false;
        ++low;
    }
    if (node.exclusive) {
        input = high;
        current = node.next;
        return true;
    }
    return takeLongest(node, low, high);
}

const char* Walk::repeatEnd(const PlanNode& node) {
    if (node.anyCharacter) {
        if (!textEnd) textEnd = input + std::strlen(input);
        return textEnd;
    }
    const ByteSet& set = sets[node.set];
    const char* end = input;
    while (set.has(static_cast<unsigned char>(*end))) ++end;
    return end;
}

// Goes on after a repeat from the last place between `low` and `high` from which that is possible, and remembers the
// places before it.
bool Walk::takeLongest(const PlanNode& node, const char* low, const char* high) {
    const ByteSet& first = sets[nodes[node.next].first];
    const char* place = high;
    while (!first.has(static_cast<unsigned char>(*place))) {
        if (place == low) return false;
        --place;
    }
    steps += static_cast<std::uint64_t>(high - place) / scannedPerStep;
    if (place != low) push(Way::shorter, static_cast<std::uint32_t>(&node - nodes), low, place - 1);
    input = place;
    current = node.next;
    return true;
}

// Returns to the last choice. False if there is none left.
bool Walk::takeFrame() {
    while (depth > 0) {
        const Frame frame = frames[--depth];
        switch (frame.way) {
            case Way::groupStart: captures.start[frame.node] = frame.low; break;
            case Way::groupEnd: captures.end[frame.node] = frame.low; break;
            case Way::alternative:
                input = frame.high;
                if (choose(nodes[frame.node])) return true;
                break;
            case Way::shorter:
                if (takeLongest(nodes[frame.node], frame.low, frame.high)) return true;
                break;
        }
    }
    return false;
}

}  // namespace

RegOutcome regBacktrack(RegSearch& search, const char*& start, RegCaptures& captures) {
    Walk walk(search, captures);
    for (start = search.nextStart(start); start; start = search.nextStartAfter(start)) {
        std::memset(&captures, 0, sizeof captures);
        RegOutcome outcome = walk.tryFrom(start);
        if (outcome != RegOutcome::failed) return outcome;
        if (*start == '\0') break;
    }
    return RegOutcome::failed;
}
