#include "GlobalOrder.h"

#include "OrderedGlobal.h"
#include "core/Heap.h"

// All of this is ready before any initialiser runs: ordered globals register from static initialisers.
qnGlobalOrder* qn_toolkitGlobalOrder = nullptr;
qnGlobalOrder* qn_applicationGlobalOrder = nullptr;

namespace {

bool creationPending = true;
bool creationRunning = false;
bool destructionPending = true;

constexpr int ToolkitOrder = 1;
constexpr unsigned InitialCapacity = 10;

qnOrderedGlobal* entryAt(const qnVoidPtrArray& entries, unsigned index) {
    return static_cast<qnOrderedGlobal*>(entries.elements()[index]);
}

/** The entries as they are to be constructed. A copy: what is registered while they are constructed comes too late. */
qnVoidPtrArray constructionPlan(qnGlobalOrder& order) {
    if (!order.sorted) order.sort();
    return order.entries;
}

void construct(const qnVoidPtrArray& plan) {
    for (unsigned i = 0; i < plan.length(); ++i) {
        if (qnOrderedGlobal::Function function = entryAt(plan, i)->construct) function();
    }
}

}  // namespace

qnGlobalOrder::qnGlobalOrder() : sorted(false) { entries.setMaxLength(InitialCapacity); }

qnGlobalOrder::~qnGlobalOrder() {}

void qnGlobalOrder::createOrderings() {
    if (qn_toolkitGlobalOrder == nullptr) qn_toolkitGlobalOrder = heap::create<qnGlobalOrder>("qnGlobalOrder");
    if (qn_applicationGlobalOrder == nullptr) qn_applicationGlobalOrder = heap::create<qnGlobalOrder>("qnGlobalOrder");
}

void qnGlobalOrder::add(qnOrderedGlobal* global, int order) {
    createOrderings();
    (order == ToolkitOrder ? qn_toolkitGlobalOrder : qn_applicationGlobalOrder)->add(global);
}

void qnGlobalOrder::add(qnOrderedGlobal* global) {
    entries.append(&global);
    sorted = false;
}

bool qnGlobalOrder::sort() {
    sorted = false;
    unsigned n = entries.length();
    // Deliberate: one pass. After an exchange the scan goes on with the new occupant of i, and what stands before j is
    // not looked at again for it.
    for (unsigned i = 0; i + 1 < n; ++i) {
        for (unsigned j = i + 1; j < n; ++j) {
            if (entryAt(entries, i)->dependsOn(*entryAt(entries, j))) entries.swap(i, j);
        }
    }
    sorted = true;
    return false;
}

void qnGlobalOrder::create() { construct(constructionPlan(*this)); }

void qnGlobalOrder::destroy() {
    for (unsigned i = entries.length(); i > 0; --i) {
        if (qnOrderedGlobal::Function destruct = entryAt(entries, i - 1)->destruct) destruct();
    }
}

void qnInitGlobalOrderings() {
    if (!creationPending || creationRunning) return;
    creationRunning = true;
    // Both plans are made first: an application's global that a toolkit's construct function registers is late, too.
    qnVoidPtrArray toolkit = constructionPlan(*qn_toolkitGlobalOrder);
    qnVoidPtrArray application = constructionPlan(*qn_applicationGlobalOrder);
    construct(toolkit);
    construct(application);
    creationRunning = false;
    creationPending = false;
}

void qnInitializeToolkit() { qnInitGlobalOrderings(); }

void qnCleanupGlobalOrderings() {
    if (!destructionPending) return;
    destructionPending = false;
    qn_applicationGlobalOrder->destroy();
    qn_toolkitGlobalOrder->destroy();
}
