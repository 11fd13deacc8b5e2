#ifndef MORVAQNDS_GLOBALORDER_H
#define MORVAQNDS_GLOBALORDER_H

#include "Export.h"
#include "VoidPtrArray.h"

class qnOrderedGlobal;

/**
 * A list of ordered globals that is sorted by their declared dependencies, constructed forwards and destroyed
 * backwards. The library keeps two: its own and the application's.
 *
 *     qnGlobalOrder order;
 *     order.add(&table);
 *     order.add(&font);
 *     order.create();      // font first, if table depends on it
 *
 * Deliberate: `sort` is one pairwise exchange pass and no topological sort. A dependency is honoured when the dependent
 * was registered first and the pass reaches the pair; chains found only through positions already passed, and cycles,
 * stay as the pass leaves them, silently. Programs rely on the order it gives.
 */
class MORVAQNDS_API qnGlobalOrder {
public:
    /** An empty order with room for ten entries. */
    qnGlobalOrder();
    ~qnGlobalOrder();

    /** Makes both orders, each if it does not exist yet. */
    static void createOrderings();
    /** Adds `global` to the library's order if `order` is 1, to the application's otherwise. */
    static void add(qnOrderedGlobal* global, int order);

    /** Appends `global`, which may be there already, and forgets that the order was sorted. */
    void add(qnOrderedGlobal* global);
    /** Orders the entries by one exchange pass. Always returns false; the result has no meaning. */
    bool sort();
    /** Sorts if necessary, then calls each construct function, first to last. */
    void create();
    /** Calls each destruct function, last to first. */
    void destroy();

    bool sorted;
    qnVoidPtrArray entries;  ///< of `qnOrderedGlobal*`

private:
    qnGlobalOrder(const qnGlobalOrder&);
    qnGlobalOrder& operator=(const qnGlobalOrder&);
};

extern MORVAQNDS_API qnGlobalOrder* qn_toolkitGlobalOrder;      ///< the library's globals; never freed
extern MORVAQNDS_API qnGlobalOrder* qn_applicationGlobalOrder;  ///< the program's globals; never freed

#endif
