#ifndef MORVAQNDS_ORDEREDGLOBAL_H
#define MORVAQNDS_ORDEREDGLOBAL_H

#include "Export.h"

/**
 * A global that is built in an order that respects its dependencies, and not while the program is being loaded.
 *
 *     static void makeTable() { table = new Table; }
 *     static void dropTable() { delete table; }
 *     static qnOrderedGlobal* tableNeeds[] = {&fontGlobal, nullptr};
 *     static qnOrderedGlobal tableGlobal(makeTable, dropTable, tableNeeds, 2);
 *
 * Declaring it only registers it. `qnInitializeToolkit()` runs the construct functions, `qnCleanupGlobalOrderings()`
 * the destruct functions in reverse. One that is declared after `qnInitializeToolkit()`, or while that runs, is never
 * constructed, but is destructed at clean-up. It must live until the clean-up.
 */
class MORVAQNDS_API qnOrderedGlobal {
public:
    typedef void (*Function)();

    /**
     * Registers the global. Either function may be null. `dependencies` is null or a null-terminated array, kept by
     * pointer, of what must be constructed before this one. `order` 1 is the library's own order; every other value
     * (programs use 2) is the application's.
     */
    qnOrderedGlobal(Function construct, qnOrderedGlobal** dependencies, int order);
    qnOrderedGlobal(Function construct, Function destruct, qnOrderedGlobal** dependencies, int order);

    /** Whether `other` is in this global's own dependency array; dependencies of dependencies do not count. */
    bool dependsOn(const qnOrderedGlobal& other) const;

    Function construct;
    Function destruct;
    qnOrderedGlobal** dependencies;
};

/** The library's own initialisation; what a library-order global of another library depends on. */
extern MORVAQNDS_API qnOrderedGlobal qnOG_Init;
/** Registers the binary reader; after `qnOG_Init`. */
extern MORVAQNDS_API qnOrderedGlobal qnOG_Transcriber;

/**
 * The program's first call to the library: constructs the library's globals and then the program's, each once. Further
 * calls, and calls from inside a construct function, do nothing.
 */
MORVAQNDS_API void qnInitializeToolkit();

/** Constructs both orders, the library's first. `qnInitializeToolkit` is this and nothing else. */
MORVAQNDS_API void qnInitGlobalOrderings();

/**
 * The program's last call to the library: runs the destruct functions of the program's globals and then of the
 * library's, each order from its last entry to its first. Further calls do nothing.
 *
 * Deliberate: it does not ask whether anything was constructed; called first, it runs the destruct functions all the
 * same, and `qnInitializeToolkit` still constructs afterwards.
 */
MORVAQNDS_API void qnCleanupGlobalOrderings();

#endif
