#ifndef MORVAQNDS_BENCH_KEYS_H
#define MORVAQNDS_BENCH_KEYS_H

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Str.h"

/** Keys whose first eight characters differ: the others do not enter the hash. */
inline std::vector<std::string> makeKeys(std::size_t first, std::size_t n, const char* prefix) {
    std::vector<std::string> keys;
    for (std::size_t i = first; i < first + n; ++i) {
        keys.push_back(prefix + std::to_string(i * 2654435761u % 100000000u));
    }
    return keys;
}

inline std::vector<qnStr> asStrings(const std::vector<std::string>& keys) {
    std::vector<qnStr> strings;
    strings.reserve(keys.size());
    for (const std::string& key : keys) strings.emplace_back(key.c_str());
    return strings;
}

/** Shows seconds for each of the `range(0)` elements. */
inline void perElement(benchmark::State& state) {
    state.counters["per_element"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

#endif
