#ifndef MORVAQNDS_IDENTITY_H
#define MORVAQNDS_IDENTITY_H

#include "Export.h"

/**
 * The library's identity: its name, version text, build label (if the build has one) and build date.
 *
 *     libmorvaqnds_print_verid();      // libmorvaqnds                      1.0.0 (2026-11-21)
 */

/** Prints the identity line on standard output through `message_print` and returns that service's result. */
MORVAQNDS_API int libmorvaqnds_print_verid();

/**
 * Formats the identity line, its line end and a NUL into `buffer` through `message_sprintf` and returns that service's
 * result. Requires: room for the whole line; 200 bytes hold any line of this library's builds.
 */
MORVAQNDS_API int libmorvaqnds_sprintf_verid(char* buffer);

#endif
