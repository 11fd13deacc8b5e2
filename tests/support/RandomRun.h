#ifndef MORVAQNDS_TESTS_RANDOMRUN_H
#define MORVAQNDS_TESTS_RANDOMRUN_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

/**
 * The seed and the number of rounds of a random test. Both are printed, so that a failure can be run again.
 *
 * MORVAQNDS_TEST_SEED sets the seed; "random" takes a new one. Where it is not set the seed is always the same one, so
 * that a change that is tested fails by its own fault only. MORVAQNDS_TEST_ROUNDS sets the number of rounds.
 */
class RandomRun {
public:
    explicit RandomRun(unsigned long usualRounds)
        : seed(seedFrom(std::getenv("MORVAQNDS_TEST_SEED"))),
          rounds(roundsFrom(std::getenv("MORVAQNDS_TEST_ROUNDS"), usualRounds)) {
        std::printf("MORVAQNDS_TEST_SEED=%lu MORVAQNDS_TEST_ROUNDS=%lu\n", seed, rounds);
        std::fflush(stdout);
    }

    std::mt19937 generator() const { return std::mt19937(static_cast<std::mt19937::result_type>(seed)); }

    const unsigned long seed;  ///< at most 32 bits
    const unsigned long rounds;

private:
    static unsigned long seedFrom(const char* text) {
        if (text == nullptr) return 20000;
        return std::strcmp(text, "random") == 0 ? std::random_device()() : std::strtoul(text, nullptr, 0) & 0xFFFFFFFFu;
    }

    static unsigned long roundsFrom(const char* text, unsigned long usual) {
        return text == nullptr ? usual : std::strtoul(text, nullptr, 0);
    }
};

#endif
