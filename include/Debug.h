#ifndef MORVAQNDS_DEBUG_H
#define MORVAQNDS_DEBUG_H

#include "Export.h"

class qnStr;

/**
 * The debugging hook. One instance, `qn_theDebugger`, is made by `qnInitializeToolkit`.
 *
 *     qnStr option("channels");
 *     qn_theDebugger->parseOption(option);
 *
 * The hook has no switches of its own: it is the place where a program's debugging options would be parsed.
 */
class MORVAQNDS_API qnDebug {
public:
    /** Does nothing; the object has no state. */
    explicit qnDebug(bool enabled);

    /** Accepts a debugging option, does nothing and leaves `option` unchanged. */
    void parseOption(qnStr& option);
};

/** The process's debugging hook; null until `qnInitializeToolkit`, never freed. */
extern MORVAQNDS_API qnDebug* qn_theDebugger;

#endif
