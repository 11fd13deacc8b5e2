// The identity line of a build with a label, out of the library's own source.
#define MORVAQNDS_VERSION_TEXT "2.5"
#define MORVAQNDS_BUILD_LABEL "night owl"
#define MORVAQNDS_BUILD_DATE "2001-02-03"
#include <cstdio>
#include <cstring>

#include "core/Identity.cxx"

int main() {
    char line[200];
    int n = libmorvaqnds_sprintf_verid(line);
    // The name in 33 columns, a blank, the version.
    const char* expected = "libmorvaqnds                      2.5 \"night owl\" (2001-02-03)\n";
    if (std::strcmp(line, expected) == 0 && n == static_cast<int>(std::strlen(expected))) return 0;
    std::fputs(line, stderr);
    return 1;
}
