// The start call builds each of the library's globals only if the program has not set it before, and in its order.
#include <morvaqnds.h>

namespace {

int failures = 0;
void expect(bool holds) {
    if (!holds) ++failures;
}

qnDebug own(false);

/** Of the library's order: after the library's own initialisation, by declared dependency. */
void make() {
    expect(qn_theDebugger == &own);
    expect(qnTranscriber::readers != nullptr);
}
qnOrderedGlobal* needs[] = {&qnOG_Init, &qnOG_Transcriber, nullptr};
qnOrderedGlobal toolkitGlobal(make, needs, 1);

}  // namespace

int main() {
    expect(qn_theDebugger == nullptr);
    qn_theDebugger = &own;
    qnInitializeToolkit();
    expect(qn_theDebugger == &own);
    qnCleanupGlobalOrderings();
    expect(qn_theDebugger == &own);  // what the library built is never freed
    return failures;
}
