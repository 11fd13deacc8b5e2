#ifndef MORVAQNDS_TESTS_REFERENCEREGEX_H
#define MORVAQNDS_TESTS_REFERENCEREGEX_H

#include <cstring>

#include "RegExp.h"

/**
 * A matcher to compare with: plain recursive backtracking over the byte program, node by node, without any shortcut.
 * It is exponential for hostile patterns and recurses for every node: use small texts.
 */
class ReferenceRegex {
public:
    explicit ReferenceRegex(const regexp* compiled)
        : expression(compiled), program(reinterpret_cast<const unsigned char*>(compiled->program)) {}

    /** Searches; `start` and `end` are cleared by each try. `stepLimit` steps at most: see `gaveUp`. */
    int search(const char* text, long stepLimit = 2000000) {
        left = stepLimit;
        if (expression->regmust && !contains(text)) return 0;
        beginning = text;
        if (expression->reganch) return attempt(text);
        if (expression->regstart) {
            for (const char* at = std::strchr(text, expression->regstart); at;
                 at = std::strchr(at + 1, expression->regstart)) {
                if (attempt(at)) return 1;
            }
            return 0;
        }
        for (const char* at = text;; ++at) {
            if (attempt(at)) return 1;
            if (*at == '\0') return 0;
        }
    }

    bool gaveUp() const { return left < 0; }

    const char* start[NSUBEXP] = {};
    const char* end[NSUBEXP] = {};

private:
    enum { End, Bol, Eol, Any, AnyOf, AnyBut, Branch, Back, Exactly, Nothing, Star, Plus, WordA, WordZ };
    enum { Open = 20, Close = 30 };

    bool contains(const char* text) const {
        for (const char* at = std::strchr(text, *expression->regmust); at;
             at = std::strchr(at + 1, *expression->regmust)) {
            if (std::strncmp(at, expression->regmust, static_cast<std::size_t>(expression->regmlen)) == 0) return true;
        }
        return false;
    }

    int attempt(const char* at) {
        for (int i = 0; i < NSUBEXP; ++i) start[i] = end[i] = nullptr;
        input = at;
        if (!match(program + 1)) return 0;
        start[0] = at;
        end[0] = input;
        return 1;
    }

    static const unsigned char* following(const unsigned char* node) {
        int distance = node[1] * 256 + node[2];
        if (distance == 0) return nullptr;
        return node[0] == Back ? node - distance : node + distance;
    }

    static bool isWord(char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    }

    static bool takes(const unsigned char* node, char c) {
        const char* operand = reinterpret_cast<const char*>(node + 3);
        if (c == '\0') return false;
        switch (node[0]) {
            case Any: return true;
            case AnyOf: return std::strchr(operand, c) != nullptr;
            case AnyBut: return std::strchr(operand, c) == nullptr;
            default: return *operand == c;
        }
    }

    bool matchGroup(const unsigned char* next, const char*& slot) {
        const char* remembered = input;
        if (!match(next)) return false;
        if (!slot) slot = remembered;
        return true;
    }

    bool matchBranches(const unsigned char* node) {
        for (; node && *node == Branch; node = following(node)) {
            const char* saved = input;
            if (match(node + 3)) return true;
            input = saved;
        }
        return false;
    }

    bool matchRepeat(const unsigned char* node) {
        const char* from = input;
        const unsigned char* operand = node + 3;
        long count = 0;
        if (*operand == Any || *operand == AnyOf || *operand == AnyBut || *operand == Exactly) {
            while (takes(operand, from[count])) ++count;
        }
        for (; count >= (*node == Plus ? 1 : 0); --count) {
            input = from + count;
            if (match(following(node))) return true;
        }
        return false;
    }

    bool match(const unsigned char* node) {
        if (!node || --left < 0) return false;
        const unsigned char* next = following(node);
        switch (*node) {
            case End: return true;
            case Bol:
                if (input != beginning) return false;
                break;
            case Eol:
                if (*input != '\0') return false;
                break;
            case Any:
            case AnyOf:
            case AnyBut:
                if (!takes(node, *input)) return false;
                ++input;
                break;
            case Exactly: {
                const char* operand = reinterpret_cast<const char*>(node + 3);
                std::size_t length = std::strlen(operand);
                if (*operand != *input || std::strncmp(operand, input, length) != 0) return false;
                input += length;
                break;
            }
            case WordA:
                if (!isWord(*input) || (input != beginning && isWord(input[-1]))) return false;
                break;
            case WordZ:
                if (isWord(*input)) return false;
                break;
            case Nothing:
            case Back: break;
            case Branch: return next && *next == Branch ? matchBranches(node) : match(node + 3);
            case Star:
            case Plus: return matchRepeat(node);
            default:
                if (*node > Open && *node < Open + NSUBEXP) return matchGroup(next, start[*node - Open]);
                if (*node > Close && *node < Close + NSUBEXP) return matchGroup(next, end[*node - Close]);
                return false;
        }
        return match(next);
    }

    const regexp* expression;
    const unsigned char* program;
    const char* beginning = nullptr;
    const char* input = nullptr;
    long left = 0;
};

#endif
