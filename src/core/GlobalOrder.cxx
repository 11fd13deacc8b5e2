#include "GlobalOrder.h"

#include "OrderedGlobal.h"

// All of this is ready before any initialiser runs: ordered globals register from static initialisers.
qnGlobalOrder* qn_toolkitGlobalOrder = nullptr;
qnGlobalOrder* qn_applicationGlobalOrder = nullptr;

namespace {

bool creationPending = true;
bool creationRunning = false;
bool destructionPending = true;

constexpr int ToolkitOrder = 1;
constexpr unsigned InitialCapacity = 10;

qnOrderedGlobal* entryAt(const qnGlobalOrder& order, unsigned index) {
    return static_cast<qnOrderedGlobal*>(order.entries.elements()[index]);
}

}  // namespace

qnGlobalOrder::qnGlobalOrder() : sorted(false) { entries.setMaxLength(InitialCapacity); }

qnGlobalOrder::~qnGlobalOrder() {}

void qnGlobalOrder::createOrderings() {
    if (qn_toolkitGlobalOrder == nullptr) qn_toolkitGlobalOrder = new qnGlobalOrder;
    if (qn_applicationGlobalOrder == nullptr) qn_applicationGlobalOrder = new qnGlobalOrder;
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
            if (entryAt(*this, i)->dependsOn(*entryAt(*this, j))) entries.swap(i, j);
        }
    }
    sorted = true;
    return false;
}

void qnGlobalOrder::create() {
    if (!sorted) sort();
    // What a construct function registers comes after the entries of now, and is not constructed.
    unsigned n = entries.length();
    for (unsigned i = 0; i < n; ++i) {
        if (qnOrderedGlobal::Function construct = entryAt(*this, i)->construct) construct();
    }
}

void qnGlobalOrder::destroy() {
    for (unsigned i = entries.length(); i > 0; --i) {
        if (qnOrderedGlobal::Function destruct = entryAt(*this, i - 1)->destruct) destruct();
    }
}

void qnInitGlobalOrderings() {
    if (!creationPending || creationRunning) return;
    creationRunning = true;
    qn_toolkitGlobalOrder->create();
    qn_applicationGlobalOrder->create();
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
