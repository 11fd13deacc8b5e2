#ifndef TALLY_DESCRIPTORS_H
#define TALLY_DESCRIPTORS_H

#include <morvaqnds.h>
#include <sys/stat.h>

/** What the names on the command line stand for; "-" is standard input. Failures leave their reason in `errno`. */
namespace descriptors {

/** What sort of input it is; false when it cannot be read. */
bool look(const char* name, struct stat& status);

/** Opens an input for reading and returns its descriptor, or -1. Reading a FIFO does not block, nor does opening it. */
int open(const char* name);

/** Whether the input is its process's own standard input. */
bool isStandardInput(const char* name);

/** Whether the event loop can wait for it: descriptors end at 99. */
bool isWaitable(int descriptor);

/**
 * The same file under a descriptor above those of the standard streams, which the program may have been started
 * without. The given one is closed if it is another; -1 stays -1.
 */
int aboveStandard(int descriptor);

/** "NAME: cannot be read: REASON", with the reason of `errno`. */
qnStr unreadable(const char* name);

/** The same for a descriptor that the event loop cannot wait for. */
qnStr unwaitable(const char* name, int descriptor);

}  // namespace descriptors

#endif
