#ifndef MORVAQNDS_REGPROGRAM_H
#define MORVAQNDS_REGPROGRAM_H

#include "RegExp.h"

/**
 * The byte program of a compiled expression.
 *
 * Byte 0 is the magic value; nodes follow. A node is an opcode and a 16-bit link, high byte first on every machine: the
 * distance in bytes from this node to the one that goes on after it, 0 for none. Links point forward, those of BACK
 * backward. EXACTLY, ANYOF and ANYBUT are followed by a NUL-terminated operand; the operand of BRANCH is the chain of
 * nodes behind it, that of STAR and PLUS the one node behind it.
 *
 * No size is recorded: a program is as long as its links say.
 */
constexpr unsigned char programMagic = 0234;

constexpr unsigned nodeHeaderSize = 3;

/** A program is shorter than this, so every link fits two bytes whatever its sign. */
constexpr unsigned programLimit = 32767;

enum Opcode : unsigned char {
    opEnd = 0,
    opBol = 1,
    opEol = 2,
    opAny = 3,
    opAnyOf = 4,
    opAnyBut = 5,
    opBranch = 6,
    opBack = 7,
    opExactly = 8,
    opNothing = 9,
    opStar = 10,
    opPlus = 11,
    opWordStart = 12,
    opWordEnd = 13,
    opOpen = 20,  // plus the group, 1 to 9
    opClose = 30  // plus the group, 1 to 9
};

inline unsigned char* programOf(regexp* expression) { return reinterpret_cast<unsigned char*>(expression->program); }

inline const unsigned char* programOf(const regexp* expression) {
    return reinterpret_cast<const unsigned char*>(expression->program);
}

/** The link of a node: a distance, backward for BACK; 0 for none. */
inline unsigned linkOf(const unsigned char* node) { return static_cast<unsigned>(node[1] << 8 | node[2]); }

#endif
