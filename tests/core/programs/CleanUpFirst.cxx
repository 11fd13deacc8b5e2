// Deliberate: the end call does not ask whether anything was constructed, and the start call still constructs after it.
#include <morvaqnds.h>

#include <cstdio>
#include <string>

namespace {

std::string steps;
void make() { steps += "make "; }
void drop() { steps += "drop "; }
qnOrderedGlobal global(make, drop, nullptr, 2);

}  // namespace

int main() {
    qnCleanupGlobalOrderings();
    qnInitializeToolkit();
    qnCleanupGlobalOrderings();
    if (steps == "drop make ") return 0;
    std::fprintf(stderr, "%s\n", steps.c_str());
    return 1;
}
