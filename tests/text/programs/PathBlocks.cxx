// The requests to the heap that file name functions and literal patterns make, to the byte.
#include <morvaqnds.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

void components() {
    expect(__LINE__, "m2 f ", [] { std::free(pathbasename("a/b/")); });
    expect(__LINE__, "m1 f ", [] { std::free(pathbasename("/")); });
    expect(__LINE__, "", [] { pathbasename(nullptr); });
    expect(__LINE__, "m2 f ", [] { std::free(pathdirname("a/b/")); });
    expect(__LINE__, "m1 f ", [] { std::free(pathdirname("/a")); });
    expect(__LINE__, "m4 f ", [] { std::free(pathexpandtilde("a/b")); });
    setenv("HOME", "/h", 1);
    expect(__LINE__, "m5 f ", [] { std::free(pathexpandtilde("~/x")); });
}

// Result and name are of the size that is given; the name goes first when there is a result.
void variables() {
    setenv("QN_V", "value", 1);
    expect(__LINE__, "m50 m50 f f ", [] { std::free(environmentVariableExtendedName("$QN_V/x", 50)); });
    expect(__LINE__, "m8 m8 f f ", [] { std::free(environmentVariableExtendedName("$QN_V/x", 8)); });
    expect(__LINE__, "m50 m50 f f ", [] { environmentVariableExtendedName("$QN_UNSET/x", 50); });
    expect(__LINE__, "", [] { environmentVariableExtendedName(nullptr, 50); });
}

void links(const char* link) {
    expect(__LINE__, "m100 f ", [&] { std::free(symbolicLinkExtendedName(link, 100)); });
    expect(__LINE__, "m11 f ", [&] { std::free(symbolicLinkExtendedName(link, 11)); });
    expect(__LINE__, "m100 f ", [] { symbolicLinkExtendedName("", 100); });
    expect(__LINE__, "", [] { symbolicLinkExtendedName(nullptr, 100); });
#ifndef MORVAQNDS_CHECKED
    // The block is of the size that is given until the target fills it.
    expect(__LINE__, "m10 r11 f ", [&] { std::free(symbolicLinkExtendedName(link, 10)); });
    expect(__LINE__, "m1 r2 f ", [&] { std::free(symbolicLinkExtendedName(link, 1)); });
#endif
}

// The copy of the pattern has no terminator.
void patterns() {
    expect(__LINE__, "m3 f ", [] { qnSLinearPattern p("abc"); });
    expect(__LINE__, "m2 f ", [] { qnSLinearPattern p("abc", 2); });
    expect(__LINE__, "", [] { qnSLinearPattern p(""); });
    qnStr nuls(5u);
    expect(__LINE__, "m5 f ", [&] { qnSLinearPattern p(nuls); });
    qnSLinearPattern p("needle");
    static char text[10000];
    expect(__LINE__, "", [&] { p.findBuffer(text, sizeof text); });
}

// However many directories there are, their names are matched by one compiled expression.
void searchLists(const char* folder) {
    // The magic byte, BRANCH, EXACTLY with its text and NUL, END: a size that nothing else asks for.
    const std::string expression(301, 'q');
    const std::string request = "m" + std::to_string(offsetof(regexp, program) + 1 + 3 + 3 + 301 + 1 + 3) + " ";
    const std::string directories = std::string(folder) + ":" + folder + ":/does/not/exist:" + folder;
    heapWatch::requests[0] = 0;
    heapWatch::watching = true;
    qnSearchList(directories.c_str(), expression.c_str());
    heapWatch::watching = false;
    const char* once = std::strstr(heapWatch::requests, request.c_str());
    if (heapIsSanitized || (once != nullptr && std::strstr(once + 1, request.c_str()) == nullptr)) return;
    std::fprintf(stderr, "not one request %s in \"%s\"\n", request.c_str(), heapWatch::requests);
    ++heapWatch::failures;
}

}  // namespace

int main() {
    char folder[] = "/tmp/qnblocksXXXXXX";
    if (mkdtemp(folder) == nullptr) return 1;
    char link[64];
    std::snprintf(link, sizeof link, "%s/link", folder);
    if (symlink("some/where", link) != 0) return 1;
    components();
    variables();
    links(link);
    patterns();
    searchLists(folder);
    unlink(link);
    rmdir(folder);
    return heapWatch::failures;
}
