#ifndef MORVAQNDS_STRRECORD_H
#define MORVAQNDS_STRRECORD_H

#include <new>

#include "Str.h"
#include "Transcriber.h"

/** What containers do with key and value records that are a `qnStr`. */
namespace strrecord {

/** Bytes of a string record in a container's numbers in a stream, on every machine. */
constexpr unsigned StreamSize = 8;

inline unsigned long hash(const void* record) { return static_cast<const qnStr*>(record)->hash(); }

inline int compare(const void* a, const void* b) {
    return ::compare(*static_cast<const qnStr*>(a), *static_cast<const qnStr*>(b));
}

inline void copy(const void* from, void* to) { new (to) qnStr(*static_cast<const qnStr*>(from)); }

inline void destroy(void* record) { static_cast<qnStr*>(record)->~qnStr(); }

/** When reading, `record` is raw memory. */
inline bool xdr(qnTranscriber& transcriber, void* record) {
    if (transcriber.reading) new (record) qnStr(qnStr_type);
    return static_cast<qnStr*>(record)->xdr(transcriber);
}

}  // namespace strrecord

#endif
