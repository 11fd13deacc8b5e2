#include "text/ReferenceRegex.h"
#include "text/RegexpGenerator.h"

// The library does not export its insides, so this program has a copy of them.
#include <cstdio>
#include <random>
#include <string>

#include "text/regexpLockstep.cxx"
#include "text/regexpPlan.cxx"
#include "text/regexpSearch.cxx"

/*
 * The lockstep matcher alone against plain recursion: on small texts the library would never get to it. `QN_SEED` and
 * `QN_ROUNDS` as for the differential tests.
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
    unsigned long seed = fromEnvironment("QN_SEED", std::random_device()());
    unsigned long rounds = fromEnvironment("QN_ROUNDS", 50000);
    std::printf("QN_SEED=%lu QN_ROUNDS=%lu\n", seed, rounds);
    RegexpGenerator::Generator generator(seed);
    for (unsigned long round = 0; round < rounds; ++round) {
        generator.restart();
        bool width = false;
        std::string pattern = generator.pattern(3, width);
        RegexpGenerator::Expression expression(qnregcomp(pattern.c_str()));
        for (int i = 0; i < 3; ++i) {
            std::string text = generator.text();
            if (expression && agrees(*expression, text)) continue;
            std::fprintf(stderr, "QN_SEED=%lu: pattern <%s> text <%s>\n", seed, pattern.c_str(), text.c_str());
            return 1;
        }
    }
    return 0;
}
