#ifndef TALLY_TABLE_H
#define TALLY_TABLE_H

#include <cstdio>

#include "WordCounts.h"

/** Prints the `top` most frequent words, with their counts aligned; equally frequent ones in the order of the words. */
void printTable(std::FILE* out, WordCounts& counts, unsigned top);

#endif
