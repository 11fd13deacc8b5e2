#ifndef MORVAQNDS_TESTS_FROMENVIRONMENT_H
#define MORVAQNDS_TESTS_FROMENVIRONMENT_H

#include <cstdio>
#include <cstdlib>
#include <random>

/** The number that a variable of the environment gives; another one where it is not set. */
inline unsigned long fromEnvironment(const char* name, unsigned long otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : std::strtoul(value, nullptr, 0);
}

/** The seed of a random test: that of MORVAQNDS_TEST_SEED, or any. It is printed. */
inline unsigned printedSeed() {
    const unsigned seed = static_cast<unsigned>(fromEnvironment("MORVAQNDS_TEST_SEED", std::random_device()()));
    std::printf("MORVAQNDS_TEST_SEED=%u\n", seed);
    return seed;
}

#endif
