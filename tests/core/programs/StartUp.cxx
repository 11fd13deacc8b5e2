// The one-shot start and end calls: nested calls, globals that come late, and the order of both orders.
#include <morvaqnds.h>

#include <cstdio>
#include <string>

namespace {

std::string steps;

void makeLate() { steps += "makeLate "; }
void dropLate() { steps += "dropLate "; }

void makeToolkit() {
    steps += "T ";
    new qnOrderedGlobal(makeLate, dropLate, nullptr,
                        2);  // comes too late, although the application's turn is still to come
}
void dropToolkit() { steps += "t "; }
void makeFirst() {
    steps += "A ";
    qnInitializeToolkit();                                // returns at once
    new qnOrderedGlobal(makeLate, dropLate, nullptr, 2);  // is not constructed any more
}
void dropFirst() {
    steps += "a ";
    qnCleanupGlobalOrderings();  // returns at once
}
void makeSecond() { steps += "B "; }
void dropSecond() { steps += "b "; }

qnOrderedGlobal toolkit(makeToolkit, dropToolkit, nullptr, 1);
qnOrderedGlobal first(makeFirst, dropFirst, nullptr, 2);
qnOrderedGlobal second(makeSecond, dropSecond, nullptr, 7);

}  // namespace

int main() {
    qnInitializeToolkit();
    bool started = steps == "T A B ";
    qnOrderedGlobal afterwards(makeLate, dropLate, nullptr, 2);
    qnInitializeToolkit();
    qnInitGlobalOrderings();
    qnCleanupGlobalOrderings();
    if (started && steps == "T A B dropLate dropLate dropLate b a t ") return 0;
    std::fprintf(stderr, "%s\n", steps.c_str());
    return 1;
}
