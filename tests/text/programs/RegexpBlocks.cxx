// The requests to the heap that regular expressions make, to the byte: one for each expression, none for a search.
#include <morvaqnds.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

/** What is asked for an expression whose program has `nbytes` bytes. */
const char* block(std::size_t nbytes) {
    static char request[32];
    std::snprintf(request, sizeof request, "m%lu f ", static_cast<unsigned long>(offsetof(regexp, program) + nbytes));
    return request;
}

void compiling() {
    // The magic byte, BRANCH, NOTHING and END.
    expect(__LINE__, block(1 + 3 + 3 + 3), [] { std::free(qnregcomp("")); });
    // The magic byte, BRANCH, EXACTLY with its text and NUL, END.
    expect(__LINE__, block(1 + 3 + 3 + 3 + 1 + 3), [] { std::free(qnregcomp("abc")); });
    // (ab)* has 34 bytes: its END stands at 31.
    expect(__LINE__, block(34), [] { std::free(qnregcomp("(ab)*")); });
    expect(__LINE__, block(34), [] { qnRegEx pattern("(ab)*"); });
    // What does not compile is found out while the bytes are counted.
    for (const char* pattern : {"(", "a**", "[z-a]", "x\\"}) expect(__LINE__, "", [=] { qnregcomp(pattern); });
    expect(__LINE__, "", [] { qnregcomp(nullptr); });
}

char longText[1000001];

/** Searches, and puts the match into a template; neither is to ask for anything. */
void searching(const char* pattern, const char* text) {
    regexp* expression = qnregcomp(pattern);
    static char destination[2000];
    expect(__LINE__, "", [=] {
        if (qnregexec(expression, text) && expression->endp[0] - expression->startp[0] < 500) {
            qnregsub(expression, "<&\\1>", destination);
        }
    });
    std::free(expression);
}

}  // namespace

int main() {
    compiling();
    const char log[] =
        "2026-11-21 21:54:14 ERROR [worker-7] GET /api/items/17?page=3 503 12ms user=alice@example.com\n";
    for (const char* pattern :
         {"[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+", "ERROR|FATAL", "user=([a-z]+)@([a-z.]+)", "\\<[0-9]+ms\\>",
          "(GET|POST) (/[a-z0-9/]+)[?]page=([0-9]+) 5[0-9][0-9]", "FATAL", "(a)(b)(c)(d)(e)(f)(g)(h)(i)", "(a|b)*c"}) {
        searching(pattern, log);
    }
    // However long the text is and however often a walk through it fails, nothing more is remembered.
    std::memset(longText, 'x', sizeof longText - 1);
    for (const char* pattern : {"(x+x+)+[yz]", "(x|xx)+y$", ".*.*.*[=:].*", "(.*)(.*)(.*)[=:]", "((x)|x)*y$"}) {
        searching(pattern, longText);
    }
    return heapWatch::failures;
}
