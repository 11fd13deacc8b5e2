// A program's own message service takes the place of the library's stand-in, for the library too.
#include <morvaqnds.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

struct Call {
    int destination;
    char* buffer;
    char format[64];
    int minusOne;
    int width;
    char name[32];
} seen;

int take(const char* format, int minusOne, va_list arguments) {
    std::snprintf(seen.format, sizeof seen.format, "%s", format);
    seen.minusOne = minusOne;
    seen.width = va_arg(arguments, int);
    std::snprintf(seen.name, sizeof seen.name, "%s", va_arg(arguments, const char*));
    return 4711;
}

bool isIdentityLine() {
    return std::strcmp(seen.format, "%-*s %s (%s)\n") == 0 && seen.minusOne == -1 && seen.width == 33 &&
           std::strcmp(seen.name, "libmorvaqnds") == 0;
}

}  // namespace

extern "C" int message_print(int destination, const char* format, int minusOne, ...) {
    va_list arguments;
    va_start(arguments, minusOne);
    seen.destination = destination;
    int result = take(format, minusOne, arguments);
    va_end(arguments);
    return result;
}

extern "C" int message_sprintf(char* buffer, const char* format, int minusOne, ...) {
    va_list arguments;
    va_start(arguments, minusOne);
    seen.buffer = buffer;
    int result = take(format, minusOne, arguments);
    va_end(arguments);
    return result;
}

int main() {
    seen.destination = -1;
    if (libmorvaqnds_print_verid() != 4711 || seen.destination != 0 || !isIdentityLine()) return 1;
    seen = Call();
    char buffer[8];
    if (libmorvaqnds_sprintf_verid(buffer) != 4711 || seen.buffer != buffer || !isIdentityLine()) return 2;
    return 0;
}
