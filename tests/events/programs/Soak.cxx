// A million random operations on objects, channels, properties, timers and handlers, most of them inside what other
// operations set off, carried out by the library and by a model of the rules: the same must happen in the same order.
//
// MORVAQNDS_SOAK_SEED gives the seed, MORVAQNDS_SOAK_OPERATIONS their number.
#include <sys/times.h>

#include <map>

#include "../soak/LibraryWorld.h"
#include "../soak/ModelWorld.h"
#include "OrderedGlobal.h"
#include "support/FromEnvironment.h"

long soak::waitTicks = 0;

/**
 * The program's own clock, so that the time that passes is that of the script: the executive reads it before and after
 * a wait.
 */
extern "C" __attribute__((visibility("default"))) clock_t times(tms*) noexcept {
    static clock_t now = 0;
    const clock_t reading = now;
    now += soak::waitTicks;
    soak::waitTicks = 0;
    return reading;
}

namespace {

/** How often each kind of thing happened. */
std::map<std::string, unsigned long long> counts;

void count(const std::string& log) {
    for (std::size_t start = 0; start < log.size(); start = log.find('\n', start) + 1) {
        ++counts[log.substr(start, log.find_first_of(" \n", start) - start)];
    }
}

bool sameLogs(soak::World& library, soak::World& model, unsigned long long seed, unsigned long long step) {
    const std::string happened = library.takeLog(), expected = model.takeLog();
    count(happened);
    if (happened == expected && library.queued() == model.queued()) return true;
    std::fprintf(stderr,
                 "Soak: seed %llu, operation %llu\nexpected (then %u messages wait):\n%shappened (%u wait):\n%s", seed,
                 step, model.queued(), expected.c_str(), library.queued(), happened.c_str());
    return false;
}

}  // namespace

int main() {
    const unsigned long long seed = fromEnvironment("MORVAQNDS_SOAK_SEED", std::random_device()());
    const unsigned long long operations = fromEnvironment("MORVAQNDS_SOAK_OPERATIONS", 1000000);
    std::printf("Soak: seed %llu, %llu operations\n", seed, operations);
    std::fflush(stdout);

    qnInitializeToolkit();
    soak::LibraryWorld library(seed);
    soak::ModelWorld model(seed);
    soak::Random random(seed);
    for (unsigned long long step = 0; step < operations; ++step) {
        const std::uint64_t operation = random.next();
        soak::operate(library, operation);
        soak::operate(model, operation);
        if (!sameLogs(library, model, seed, step)) return 1;
    }

    library.clear();
    model.clear();
    while (library.queued() != 0 || model.queued() != 0) {
        library.distribute();
        model.distribute();
        if (!sameLogs(library, model, seed, operations)) return 1;
    }
    if (!sameLogs(library, model, seed, operations)) return 1;

    for (const char* kind : {"input", "release", "tick", "read", "before", "after"}) {
        std::printf("%s: %llu\n", kind, counts[kind]);
        if (counts[kind] < operations / 200) {
            std::fprintf(stderr, "Soak: seed %llu: only %llu times %s\n", seed, counts[kind], kind);
            return 1;
        }
    }
    return 0;
}
