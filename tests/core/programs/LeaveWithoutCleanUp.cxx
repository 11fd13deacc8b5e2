// Nothing is destroyed when a program ends, and the library unloads, without the end call.
#include <morvaqnds.h>
#include <unistd.h>

#include <cstdio>

namespace {

bool made = false;
void make() { made = true; }
void drop() {
    std::fputs("destroyed\n", stderr);
    _exit(1);
}
qnOrderedGlobal global(make, drop, nullptr, 2);
qnOrderedGlobal toolkitGlobal(nullptr, drop, nullptr, 1);

}  // namespace

int main() {
    qnInitializeToolkit();
    return made ? 0 : 2;
}
