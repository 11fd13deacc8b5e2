// Part of the library in coverage builds only, which are linked with --wrap=abort: counts collected so far are written
// before the process ends, so that the lines that lead to a fatal end are seen as covered.
#include <cstdlib>

extern "C" {
void __gcov_dump();
[[noreturn]] void __real_abort();
[[noreturn]] void __wrap_abort();
}

void __wrap_abort() {
    __gcov_dump();
    __real_abort();
}
