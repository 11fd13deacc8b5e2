#ifndef MORVAQNDS_EXPORT_H
#define MORVAQNDS_EXPORT_H

/**
 * `MORVAQNDS_API` marks what the shared library exports. Everything else in it is hidden.
 *
 *     class MORVAQNDS_API qnThing { ... };
 *     MORVAQNDS_API void qnDoThing();
 *
 * The macro is the same when the library is built and when it is used: on ELF systems visibility needs no import side.
 */
#define MORVAQNDS_API __attribute__((visibility("default")))

#endif
