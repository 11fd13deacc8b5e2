#ifndef TALLY_STATEFILE_H
#define TALLY_STATEFILE_H

#include "WordCounts.h"

/**
 * The file in which the counts live between two runs: one object graph in the library's stream format.
 *
 * Both operations return true, or false with `problem` set to what is wrong and what to do about it.
 */
namespace stateFile {

/** Adds what the file at `path` holds to `counts`. A file that does not exist holds nothing. */
bool load(const char* path, WordCounts& counts, qnStr& problem);

/**
 * Replaces the file at `path`. The new file is written beside it and takes its place when it is whole, so that a
 * failure never damages the old one.
 */
bool save(const char* path, WordCounts& counts, qnStr& problem);

}  // namespace stateFile

#endif
