#ifndef MORVAQNDS_CHECKED_H
#define MORVAQNDS_CHECKED_H

#include "Fatal.h"

/**
 * `MORVAQNDS_REQUIRE(condition, format, ...)` states what an operation asks of its caller.
 *
 *     MORVAQNDS_REQUIRE(start <= length(), "qnStr::head: count %u exceeds length %u", count, length());
 *
 * In a checked build (`MORVAQNDS_CHECKED` defined) a condition that does not hold ends the process through `qnFatal`
 * with the formatted message, which names the class, the operation and the values. In the default build the condition
 * is not evaluated and costs nothing.
 */
#ifdef MORVAQNDS_CHECKED
#define MORVAQNDS_REQUIRE(condition, ...)       \
    do {                                        \
        if (!(condition)) qnFatal(__VA_ARGS__); \
    } while (0)
#else
#define MORVAQNDS_REQUIRE(condition, ...) \
    do {                                  \
    } while (0)
#endif

#endif
