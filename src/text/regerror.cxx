#include "RegExp.h"

// In a file of its own, so that no compiler can see the empty body where it is called and drop the call: a program that
// defines the function itself must be heard.
void qnregerror(const char*) {
    // Deliberate: silent. Callers rely on the results alone and try patterns that may well be malformed.
}
