#ifndef TALLY_FOUND_H
#define TALLY_FOUND_H

#include <morvaqnds.h>

/**
 * Appends to `files` the names of the files in `directories`, which are separated by ":", whose names match the regular
 * expression `names` as a whole. Directories and devices do not count. False, with `problem` set, when there are none.
 */
bool findFiles(const char* directories, const char* names, qnStrArray& files, qnStr& problem);

#endif
