#include "OrderedGlobal.h"

#include "GlobalOrder.h"

qnOrderedGlobal::qnOrderedGlobal(Function constructFunction, qnOrderedGlobal** needs, int order)
    : qnOrderedGlobal(constructFunction, nullptr, needs, order) {}

qnOrderedGlobal::qnOrderedGlobal(Function constructFunction, Function destructFunction, qnOrderedGlobal** needs,
                                 int order)
    : construct(constructFunction), destruct(destructFunction), dependencies(needs) {
    qnGlobalOrder::add(this, order);
}

bool qnOrderedGlobal::dependsOn(const qnOrderedGlobal& other) const {
    if (dependencies == nullptr) return false;
    for (qnOrderedGlobal** need = dependencies; *need != nullptr; ++need) {
        if (*need == &other) return true;
    }
    return false;
}
