// Stand-ins for the message service of the tool family's runtime. They are weak, and the library calls them through the
// dynamic symbol: a program's own definitions take their place.
#include <cstdarg>
#include <cstdio>

#include "Platform.h"

extern "C" {

__attribute__((weak)) int message_print(int, const char* format, int minusOne, ...) {
    va_list arguments;
    va_start(arguments, minusOne);
    int written = std::vprintf(format, arguments);
    va_end(arguments);
    return written;
}

__attribute__((weak)) int message_sprintf(char* buffer, const char* format, int minusOne, ...) {
    va_list arguments;
    va_start(arguments, minusOne);
    int written = std::vsprintf(buffer, format, arguments);
    va_end(arguments);
    return written;
}

}  // extern "C"
