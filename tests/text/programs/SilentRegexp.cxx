// Why a pattern is malformed and that a program is damaged is told to nobody, unless the program has a qnregerror of
// its own. This one has not, and must leave standard error empty.
#include <RegEx.h>
#include <RegExp.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

bool compilesWithout(const char* pattern, long place) {
    regexp* expression = qnregcomp(pattern);
    std::free(expression);
    if (expression == nullptr && qnregerrorplace() == place) return true;
    std::printf("<%s> is not refused at %ld\n", pattern, place);
    return false;
}

/** A program whose first byte is wrong finds nothing, and replaces nothing. */
bool endsOverDamage() {
    regexp* expression = qnregcomp("a");
    if (expression == nullptr) return false;
    reinterpret_cast<unsigned char*>(expression)[offsetof(regexp, program)] ^= 0xFF;
    char destination[] = "as it was";
    const bool found = qnregexec(expression, "a") != 0;
    qnregsub(expression, "&", destination);
    std::free(expression);
    return !found && destination[0] == 'a' && destination[1] == 's';
}

}  // namespace

int main() {
    qnregerror("nothing is done with this");
    bool ok = compilesWithout("a**", 2) && compilesWithout("(a", 2) && compilesWithout("*a", 0);
    ok = endsOverDamage() && ok;
    ok = qnRegEx("(").findBuffer("(", 1) == -2 && ok;
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}
