#ifndef MORVAQNDS_TYPES_H
#define MORVAQNDS_TYPES_H

/**
 * The library's one-byte boolean: 1 for true, 0 for false.
 *
 * Stored booleans, values that travel through channels and the results that are declared with it take exactly one byte
 * on every machine. Other predicates return the language's `bool`.
 */
typedef unsigned char qnBool;

#endif
