#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "RegExp.h"
#include "RegProgram.h"

/*
 * The compiler: one recursive-descent parse that is run twice. The first run only counts the bytes, so that the block
 * can be allocated once in its final size; the second writes them. Nothing is remembered of the pattern in between.
 *
 * The recursion is as deep as groups are nested, nine at most. The time is linear in the pattern.
 */

namespace {

// What is known of a part of a pattern.
enum Flags : unsigned {
    worst = 0,
    hasWidth = 1,          // never matches the empty string
    simple = 2,            // one character wide: STAR and PLUS can repeat it directly
    startsWithRepeat = 4,  // begins with a star or plus
};

// Where in its pattern the last compilation stopped, -1 if it did not.
long errorPlace = -1;

// Where a node stands in the program. Wide enough to count the program of any pattern; 0 stands for "no node".
typedef std::uint64_t Offset;

bool isQuantifier(char c) { return c == '*' || c == '+' || c == '?'; }

bool endsBranch(char c) { return c == '\0' || c == '|' || c == ')' || c == '\n'; }

// Characters that end a literal run in front of them.
bool endsRun(char c) { return endsBranch(c) || c == '$' || c == '(' || c == '.' || c == '[' || c == '^'; }

class Compiler {
public:
    // Writes to `output`, or only counts if that is null.
    Compiler(const char* pattern, unsigned char* output) : whole(pattern), parse(pattern), program(output) {}

    // False if the pattern is malformed; `qnregerror` has been told.
    bool run() {
        emit(programMagic);
        return parseAlternatives(false, flags) != 0;
    }

    Offset size() const { return used; }
    long place() const { return static_cast<long>(parse - whole); }
    unsigned topFlags() const { return flags; }

private:
    Offset parseAlternatives(bool grouped, unsigned& result);
    bool parseClosing(bool grouped);
    Offset parseBranch(unsigned& result);
    Offset parsePiece(unsigned& result);
    Offset parseAtom(unsigned& result);
    Offset parseEscape(unsigned& result);
    Offset parseLiteral(unsigned& result);
    Offset parseSet(unsigned& result);
    bool parseRange();

    void makeOptional(Offset atom);
    void repeatAnyTimes(Offset atom);
    void repeatAtLeastOnce(Offset atom);

    Offset fail(const char* message) {
        errorPlace = place();
        qnregerror(message);
        return 0;
    }

    void emit(unsigned char byte) {
        if (program) program[used] = byte;
        ++used;
    }

    Offset emitNode(unsigned opcode) {
        Offset node = used;
        emit(static_cast<unsigned char>(opcode));
        emit(0);
        emit(0);
        return node;
    }

    void insertNode(unsigned opcode, Offset before);
    void link(Offset node, Offset target);
    void linkTail(Offset chain, Offset target);

    const char* whole;
    const char* parse;
    unsigned char* program;
    Offset used = 0;
    unsigned groups = 1;  // the number of the next group
    unsigned flags = worst;
};

// Puts a node in front of what has been emitted from `before` on. Links within that move with it.
void Compiler::insertNode(unsigned opcode, Offset before) {
    if (program) {
        std::memmove(program + before + nodeHeaderSize, program + before, static_cast<std::size_t>(used - before));
        program[before] = static_cast<unsigned char>(opcode);
        program[before + 1] = 0;
        program[before + 2] = 0;
    }
    used += nodeHeaderSize;
}

void Compiler::link(Offset node, Offset target) {
    if (!program) return;
    Offset distance = program[node] == opBack ? node - target : target - node;
    program[node + 1] = static_cast<unsigned char>(distance >> 8);
    program[node + 2] = static_cast<unsigned char>(distance);
}

// Links the last node of a chain. No chain leads through a BACK: that always ends an operand.
void Compiler::linkTail(Offset chain, Offset target) {
    if (!program) return;
    while (unsigned distance = linkOf(program + chain)) chain += distance;
    link(chain, target);
}

// Alternatives up to the end of the pattern or of the group whose parenthesis has just been passed.
Offset Compiler::parseAlternatives(bool grouped, unsigned& result) {
    unsigned group = 0;
    Offset opening = 0;
    if (grouped) {
        if (groups >= NSUBEXP) {
            --parse;  // the parenthesis is where it goes wrong
            return fail("too many ()");
        }
        group = groups++;
        opening = emitNode(opOpen + group);
    }
    result = hasWidth;
    Offset first = 0;
    Offset last = opening;
    for (;;) {
        unsigned branchFlags = worst;
        Offset branch = parseBranch(branchFlags);
        if (!branch) return 0;
        if (last) link(last, branch);
        if (!first) first = branch;
        last = branch;
        if (!(branchFlags & hasWidth)) result &= ~static_cast<unsigned>(hasWidth);
        result |= branchFlags & startsWithRepeat;
        if (*parse != '|' && *parse != '\n') break;
        ++parse;
    }
    Offset closing = emitNode(grouped ? opClose + group : +opEnd);
    link(last, closing);
    if (program) {
        for (Offset branch = first; branch != closing; branch += linkOf(program + branch)) {
            linkTail(branch + nodeHeaderSize, closing);
        }
    }
    if (!parseClosing(grouped)) return 0;
    return opening ? opening : first;
}

bool Compiler::parseClosing(bool grouped) {
    if (grouped) {
        if (*parse != ')') return fail("unmatched ()");
        ++parse;
        return true;
    }
    if (*parse == ')') return fail("unmatched ()");
    // Cannot happen: a branch ends only at NUL, `)`, `|` and newline, and the last two lead to another branch.
    if (*parse) return fail("junk on end");
    return true;
}

Offset Compiler::parseBranch(unsigned& result) {
    result = worst;
    Offset branch = emitNode(opBranch);
    Offset previous = 0;
    while (!endsBranch(*parse)) {
        unsigned pieceFlags = worst;
        Offset piece = parsePiece(pieceFlags);
        if (!piece) return 0;
        result |= pieceFlags & hasWidth;
        if (previous) {
            linkTail(previous, piece);
        } else {
            result |= pieceFlags & startsWithRepeat;
        }
        previous = piece;
    }
    if (!previous) emitNode(opNothing);
    return branch;
}

Offset Compiler::parsePiece(unsigned& result) {
    Offset atom = parseAtom(result);
    if (!atom) return 0;
    char quantifier = *parse;
    if (!isQuantifier(quantifier)) return atom;
    if (quantifier != '?' && !(result & hasWidth)) return fail("*+ operand could be empty");
    if (quantifier == '?') {
        makeOptional(atom);
    } else if (result & simple) {
        insertNode(quantifier == '*' ? opStar : opPlus, atom);
    } else if (quantifier == '*') {
        repeatAnyTimes(atom);
    } else {
        repeatAtLeastOnce(atom);
    }
    // Deliberate: `+` hides that its atom starts with a repeat, so that `x+abc` has no `regmust`.
    result = quantifier == '+' ? hasWidth : startsWithRepeat;
    ++parse;
    if (isQuantifier(*parse)) return fail("nested *?+");
    return atom;
}

// BRANCH atom, BRANCH NOTHING; both ways meet at the NOTHING.
void Compiler::makeOptional(Offset atom) {
    insertNode(opBranch, atom);
    Offset wayOut = emitNode(opBranch);
    Offset nothing = emitNode(opNothing);
    link(atom, wayOut);
    link(wayOut, nothing);
    linkTail(atom + nodeHeaderSize, nothing);
}

// BRANCH atom BACK, BRANCH NOTHING; the BACK leads to the first BRANCH.
void Compiler::repeatAnyTimes(Offset atom) {
    insertNode(opBranch, atom);
    Offset back = emitNode(opBack);
    linkTail(atom + nodeHeaderSize, back);
    link(back, atom);
    Offset wayOut = emitNode(opBranch);
    link(atom, wayOut);
    link(wayOut, emitNode(opNothing));
}

// atom, BRANCH BACK, BRANCH NOTHING; the BACK leads to the atom.
void Compiler::repeatAtLeastOnce(Offset atom) {
    Offset again = emitNode(opBranch);
    linkTail(atom, again);
    link(emitNode(opBack), atom);
    Offset wayOut = emitNode(opBranch);
    link(again, wayOut);
    link(wayOut, emitNode(opNothing));
}

Offset Compiler::parseAtom(unsigned& result) {
    result = worst;
    switch (*parse) {
        case '^': ++parse; return emitNode(opBol);
        case '$': ++parse; return emitNode(opEol);
        case '.':
            ++parse;
            result = hasWidth | simple;
            return emitNode(opAny);
        case '[': ++parse; return parseSet(result);
        case '(': {
            ++parse;
            Offset group = parseAlternatives(true, result);
            result &= hasWidth | startsWithRepeat;
            return group;
        }
        // Cannot happen: a branch asks for an atom only where it does not end.
        case '\0':
        case '|':
        case ')':
        case '\n': return fail("internal urp");
        case '*':
        case '+':
        case '?': return fail("?+* follows nothing");
        case '\\': ++parse; return parseEscape(result);
        default: return parseLiteral(result);
    }
}

// An atom that starts with a backslash, which has been passed.
Offset Compiler::parseEscape(unsigned& result) {
    switch (*parse) {
        case '\0': return fail("trailing \\");
        case '<': ++parse; return emitNode(opWordStart);
        case '>': ++parse; return emitNode(opWordEnd);
        default: return parseLiteral(result);
    }
}

// A run of literal characters; the one at `parse` is literal whatever it is. A character that a quantifier follows is
// an atom of its own, so the run stops before it unless it stands first.
Offset Compiler::parseLiteral(unsigned& result) {
    Offset node = emitNode(opExactly);
    unsigned length = 0;
    const char* written = parse;  // where the pattern writes the current character: at it or at its backslash
    for (;;) {
        char following = parse[1];
        if (isQuantifier(following) && length > 0) {
            parse = written;
            break;
        }
        emit(static_cast<unsigned char>(*parse++));
        if (length < 2) ++length;
        if (isQuantifier(following) || endsRun(following)) break;
        written = parse;
        if (following == '\\') {
            if (parse[1] == '\0' || parse[1] == '<' || parse[1] == '>') break;
            ++parse;
        }
    }
    emit('\0');
    result = length == 1 ? hasWidth | simple : hasWidth;
    return node;
}

// A set; its opening bracket has been passed.
Offset Compiler::parseSet(unsigned& result) {
    bool negated = *parse == '^';
    if (negated) ++parse;
    Offset node = emitNode(negated ? opAnyBut : opAnyOf);
    if (*parse == ']' || *parse == '-') emit(static_cast<unsigned char>(*parse++));
    while (*parse != '\0' && *parse != ']') {
        if (*parse == '-' && parse[1] != '\0' && parse[1] != ']') {
            if (!parseRange()) return 0;
        } else {
            emit(static_cast<unsigned char>(*parse++));
        }
    }
    if (*parse != ']') return fail("unmatched []");
    ++parse;
    emit('\0');
    result = hasWidth | simple;
    return node;
}

// The rest of a range, from its minus sign on. Its first character has been emitted as one that stands for itself.
bool Compiler::parseRange() {
    unsigned start = static_cast<unsigned char>(parse[-1]);
    unsigned end = static_cast<unsigned char>(parse[1]);
    // Deliberate: a range that ends one below its start (`b-a`) adds nothing and is accepted.
    if (end + 1 < start) return fail("invalid [] range");
    for (unsigned c = start + 1; c <= end; ++c) emit(static_cast<unsigned char>(c));
    parse += 2;
    return true;
}

// The longest literal that stands directly in the alternative at `node`; of equal ones the last.
void findRequiredLiteral(regexp& expression, unsigned char* node) {
    int longest = 0;
    for (;; node += linkOf(node)) {
        if (*node == opExactly) {
            char* operand = reinterpret_cast<char*>(node + nodeHeaderSize);
            int length = static_cast<int>(std::strlen(operand));
            if (length >= longest) {
                expression.regmust = operand;
                expression.regmlen = length;
                longest = length;
            }
        }
        if (linkOf(node) == 0) break;
    }
}

// Facts about every match of a program with a single alternative.
void findHints(regexp& expression, unsigned flags) {
    unsigned char* branch = programOf(&expression) + 1;
    if (branch[linkOf(branch)] != opEnd) return;
    unsigned char* first = branch + nodeHeaderSize;
    if (*first == opExactly) expression.regstart = static_cast<char>(first[nodeHeaderSize]);
    if (*first == opBol) expression.reganch = 1;
    if (flags & startsWithRepeat) findRequiredLiteral(expression, first);
}

}  // namespace

regexp* qnregcomp(const char* pattern) {
    if (!pattern) {
        errorPlace = 0;
        qnregerror("NULL argument");
        return nullptr;
    }
    Compiler counter(pattern, nullptr);
    if (!counter.run()) return nullptr;
    errorPlace = counter.place();
    if (counter.size() >= programLimit) {
        qnregerror("regexp too big");
        return nullptr;
    }
    std::size_t size = offsetof(regexp, program) + static_cast<std::size_t>(counter.size());
    regexp* expression = static_cast<regexp*>(std::malloc(size));
    if (!expression) {
        qnregerror("out of space");
        return nullptr;
    }
    std::memset(static_cast<void*>(expression), 0, offsetof(regexp, program));
    Compiler writer(pattern, programOf(expression));
    writer.run();
    findHints(*expression, writer.topFlags());
    errorPlace = -1;
    return expression;
}

long qnregerrorplace() { return errorPlace; }
