// A million random operations on objects, channels, properties, timers and handlers, most of them inside what other
// operations set off, carried out by the library and by a model of the rules: the same must happen in the same order.
#include <sys/times.h>

#include <map>

#include "../soak/LibraryWorld.h"
#include "../soak/ModelWorld.h"
#include "OrderedGlobal.h"
#include "support/RandomRun.h"

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

/** The library's world and the model's, told the same. */
class Worlds {
public:
    explicit Worlds(unsigned long seed) : seed_(seed), library_(seed), model_(seed) {}

    /** Tells both, and says whether the same followed. */
    template <class Tell>
    bool agreeOn(const Tell& tell) {
        tell(library_);
        tell(model_);
        ++told_;
        const std::string happened = library_.takeLog(), expected = model_.takeLog();
        count(happened);
        if (happened == expected && library_.queued() == model_.queued() && library_.empty() == model_.empty()) {
            return true;
        }
        std::fprintf(stderr,
                     "Soak: seed %lu, operation %lu\nexpected (then %u messages wait):\n%shappened (%u wait):\n%s",
                     seed_, told_, model_.queued(), expected.c_str(), library_.queued(), happened.c_str());
        return false;
    }

    bool empty() const { return library_.empty() && library_.queued() == 0; }

private:
    const unsigned long seed_;
    unsigned long told_ = 0;
    soak::LibraryWorld library_;
    soak::ModelWorld model_;
};

}  // namespace

int main() {
    const RandomRun run(1000000);
    qnInitializeToolkit();
    Worlds worlds(run.seed);
    soak::Random random(run.seed);
    for (unsigned long step = 0; step < run.rounds; ++step) {
        const std::uint64_t operation = random.next();
        if (!worlds.agreeOn([&](soak::World& world) { soak::operate(world, operation); })) return 1;
    }
    // What happens while everything is destroyed makes new things: until nothing is left.
    while (!worlds.empty()) {
        if (!worlds.agreeOn([](soak::World& world) { world.clear(); })) return 1;
        if (!worlds.agreeOn([](soak::World& world) { world.distribute(); })) return 1;
    }

    for (const char* kind : {"input", "release", "tick", "read", "before", "after"}) {
        std::printf("%s: %llu\n", kind, counts[kind]);
        if (counts[kind] < run.rounds / 200) {
            std::fprintf(stderr, "Soak: seed %lu: only %llu times %s\n", run.seed, counts[kind], kind);
            return 1;
        }
    }
    return 0;
}
