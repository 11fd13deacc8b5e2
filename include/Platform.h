#ifndef MORVAQNDS_PLATFORM_H
#define MORVAQNDS_PLATFORM_H

#include "Export.h"

/**
 * Services of the tool family's runtime that the library calls. The library brings stand-ins; a program that defines
 * one of these functions itself replaces the stand-in, without further ado, for the library too:
 *
 *     extern "C" int message_print(int destination, const char* format, int minusOne, ...) { ... }
 */
extern "C" {

/**
 * Prints a formatted message, as `printf` formats it. `destination` 0 is the standard output, which is also where the
 * stand-in writes for every other value. `minusOne` is always -1. Returns the number of characters, or a negative
 * number when writing fails.
 */
MORVAQNDS_API int message_print(int destination, const char* format, int minusOne, ...)
    __attribute__((format(printf, 2, 4)));

/**
 * Formats a message into `buffer`, as `sprintf` does, and returns the number of characters. `minusOne` is always -1.
 * Requires: room for the text and its NUL.
 */
MORVAQNDS_API int message_sprintf(char* buffer, const char* format, int minusOne, ...)
    __attribute__((format(printf, 2, 4)));

/**
 * Splits `path` into `directory` and `leaf`, NUL-terminated texts for which there is room as the capacities say, the
 * NUL counted, and which overlap neither each other nor `path`. Returns a status that `qnPath::split` passes on.
 *
 * The stand-in splits at the last slash and drops it; without a slash the directory is empty. It cuts texts that do not
 * fit, writes nothing where the capacity is 0, and returns 0, or -1 if it had to cut.
 */
MORVAQNDS_API int path_strip_leaf(const char* path, unsigned directoryCapacity, char* directory, unsigned leafCapacity,
                                  char* leaf);

}  // extern "C"

#endif
