#include "Fatal.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void qnFatal(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputs("\n", stderr);
    std::fflush(stderr);
    std::abort();
}
