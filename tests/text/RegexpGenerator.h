#ifndef MORVAQNDS_TESTS_REGEXPGENERATOR_H
#define MORVAQNDS_TESTS_REGEXPGENERATOR_H

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "RegExp.h"

/** Random patterns and texts for comparing matchers, and what goes with them. */
namespace RegexpGenerator {

struct Freer {
    void operator()(regexp* expression) const { std::free(expression); }
};
typedef std::unique_ptr<regexp, Freer> Expression;

class Generator {
public:
    explicit Generator(unsigned long seed) : random(static_cast<std::mt19937::result_type>(seed)) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    std::string text() {
        static const char letters[] = "aaaabbbbcc_ -\n\xe9";
        std::string result;
        for (unsigned length = below(14); length > 0; --length) result += letters[below(sizeof letters - 1)];
        return result;
    }

    // A well-formed pattern; `width` tells whether it cannot match the empty string.
    std::string pattern(unsigned depth, bool& width) {
        width = true;
        std::string result;
        for (;;) {
            bool branchWidth = false;
            for (unsigned pieces = below(4); pieces > 0; --pieces) {
                bool pieceWidth = false;
                result += piece(depth, pieceWidth);
                branchWidth = branchWidth || pieceWidth;
            }
            width = width && branchWidth;
            if (below(4) != 0) return result;
            result += below(5) ? '|' : '\n';
        }
    }

    // Any characters at all, mostly those that mean something.
    std::string noise() {
        static const char signs[] = "ab()|[]^-$.*+?\\<>\n{}\xff";
        std::string result;
        for (unsigned length = below(10); length > 0; --length) result += signs[below(sizeof signs - 1)];
        return result;
    }

    void restart() { groups = 0; }

private:
    std::string piece(unsigned depth, bool& width) {
        std::string result = atom(depth, width);
        switch (below(6)) {
            case 0:
                if (!width) return result;
                width = false;
                return result + "*";
            case 1: return width ? result + "+" : result;
            case 2: width = false; return result + "?";
            default: return result;
        }
    }

    std::string atom(unsigned depth, bool& width) {
        static const char* const simple[] = {"a",   "b", "c",      ".",    "[ab]",        "[^a]", "[a-c]", "[]a]",
                                             "\\-", "_", "[^a-b]", "\xe9", "[\x80-\xff]", "\\a",  " ",     "[-b]"};
        static const char* const empty[] = {"^", "$", "\\<", "\\>"};
        if (depth > 0 && groups < 9 && below(3) == 0) {
            ++groups;
            return "(" + pattern(depth - 1, width) + ")";
        }
        width = below(8) != 0;
        return width ? simple[below(sizeof simple / sizeof *simple)] : empty[below(4)];
    }

    std::mt19937 random;
    unsigned groups = 0;
};

}  // namespace RegexpGenerator

#endif
