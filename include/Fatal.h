#ifndef MORVAQNDS_FATAL_H
#define MORVAQNDS_FATAL_H

#include "Export.h"

/**
 * Ends the process over a fault that no caller can handle.
 *
 *     if (bucket >= buckets.length()) qnFatal("format error");
 *
 * Formats the message as `printf` does, writes it and a line end to standard error exactly once, flushes standard
 * error and calls `abort()`. It never returns. Pass a complete message without a line end.
 */
[[noreturn]] MORVAQNDS_API void qnFatal(const char* format, ...) __attribute__((format(printf, 1, 2)));

#endif
