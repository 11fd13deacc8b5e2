#include "support/RandomRun.h"
#include "text/ReferenceRegex.h"
#include "text/RegexpGenerator.h"

// The library does not export its insides, so this program has a copy of them.
#include <cstdio>
#include <string>

#include "text/regexpLockstep.cxx"
#include "text/regexpPlan.cxx"
#include "text/regexpSearch.cxx"

/*
 * The lockstep matcher alone against plain recursion: on small texts the library would never get to it.
 */
namespace {

bool agrees(regexp& expression, const std::string& text) {
    ReferenceRegex reference(&expression);
    bool expected = reference.search(text.c_str()) != 0;
    if (reference.gaveUp()) return true;
    RegCaptures captures = {};
    RegSearch search(RegPlan::of(expression), expression, text.c_str());
    if (regLockstep(search, text.c_str(), captures) != expected) return false;
    for (int i = 0; expected && i < NSUBEXP; ++i) {
        if (reference.start[i] != captures.start[i] || reference.end[i] != captures.end[i]) return false;
    }
    return true;
}

}  // namespace

int main() {
    RandomRun run(50000);
    RegexpGenerator::Generator generator(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        generator.restart();
        bool width = false;
        std::string pattern = generator.pattern(3, width);
        RegexpGenerator::Expression expression(qnregcomp(pattern.c_str()));
        for (int i = 0; i < 3; ++i) {
            std::string text = generator.text();
            if (expression && agrees(*expression, text)) continue;
            std::fprintf(stderr, "MORVAQNDS_TEST_SEED=%lu: pattern <%s> text <%s>\n", run.seed, pattern.c_str(),
                         text.c_str());
            return 1;
        }
    }
    return 0;
}
