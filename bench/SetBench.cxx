// Inserting into, finding in and uniting sets of strings whose bucket count suits their size, beside
// std::unordered_set, which a user would pick instead. Figures are seconds per element.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "Keys.h"
#include "StrSet.h"

namespace {

void addAll(qnStrSet& set, const std::vector<qnStr>& keys) {
    for (const qnStr& key : keys) set.add(&key);
}

void insertIntoSet(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, ""));
    for (auto _ : state) {
        qnStrSet set(static_cast<unsigned>(n));
        addAll(set, keys);
        benchmark::DoNotOptimize(set.count);
    }
    perElement(state);
}

void insertIntoUnorderedSet(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> keys = makeKeys(0, n, "");
    for (auto _ : state) {
        std::unordered_set<std::string> set(n);
        for (const std::string& key : keys) set.insert(key);
        benchmark::DoNotOptimize(set.size());
    }
    perElement(state);
}

void findInSet(benchmark::State& state, const char* prefix) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> probes = asStrings(makeKeys(0, n, prefix));
    qnStrSet set(static_cast<unsigned>(n));
    addAll(set, asStrings(makeKeys(0, n, "")));
    for (auto _ : state) {
        for (const qnStr& probe : probes) benchmark::DoNotOptimize(set.find(&probe));
    }
    perElement(state);
}

void findInUnorderedSet(benchmark::State& state, const char* prefix) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> keys = makeKeys(0, n, ""), probes = makeKeys(0, n, prefix);
    std::unordered_set<std::string> set(keys.begin(), keys.end(), n);
    for (auto _ : state) {
        for (const std::string& probe : probes) {
            auto found = set.find(probe);
            benchmark::DoNotOptimize(found);
        }
    }
    perElement(state);
}

// The second operand has as many keys as the first, and half of them are new. Figures are per key of the second.

void uniteSets(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, ""));
    qnStrSet other(static_cast<unsigned>(n));
    addAll(other, asStrings(makeKeys(n / 2, n, "")));
    for (auto _ : state) {
        state.PauseTiming();
        {
            qnStrSet set(static_cast<unsigned>(n));
            addAll(set, keys);
            state.ResumeTiming();
            set += other;
            state.PauseTiming();
            benchmark::DoNotOptimize(set.count);
        }
        state.ResumeTiming();
    }
    perElement(state);
}

void uniteUnorderedSets(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> keys = makeKeys(0, n, ""), otherKeys = makeKeys(n / 2, n, "");
    std::unordered_set<std::string> other(otherKeys.begin(), otherKeys.end(), n);
    for (auto _ : state) {
        state.PauseTiming();
        {
            std::unordered_set<std::string> set(keys.begin(), keys.end(), n);
            state.ResumeTiming();
            set.insert(other.begin(), other.end());
            state.PauseTiming();
            benchmark::DoNotOptimize(set.size());
        }
        state.ResumeTiming();
    }
    perElement(state);
}

void iterate(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    qnStrSet set(static_cast<unsigned>(n));
    addAll(set, asStrings(makeKeys(0, n, "")));
    for (auto _ : state) {
        for (qnStrSetIter it(set); it.set != nullptr; ++it) benchmark::DoNotOptimize(it.getKey());
    }
    perElement(state);
}

BENCHMARK(insertIntoSet)->Arg(1000)->Arg(100000);
BENCHMARK(insertIntoUnorderedSet)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInSet, present, "")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInUnorderedSet, present, "")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInSet, absent, "-")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInUnorderedSet, absent, "-")->Arg(1000)->Arg(100000);
BENCHMARK(uniteSets)->Arg(1000)->Arg(100000);
BENCHMARK(uniteUnorderedSets)->Arg(1000)->Arg(100000);
BENCHMARK(iterate)->Arg(1000)->Arg(100000);

}  // namespace
