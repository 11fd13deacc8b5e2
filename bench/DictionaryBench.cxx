// Inserting into and finding in a string dictionary whose bucket count suits its size, beside std::unordered_map, which
// a user would pick instead. Figures are seconds per element.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "Keys.h"
#include "StrStrDictionary.h"
#include "VoidPtrDict.h"

namespace {

void insertIntoDictionary(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, ""));
    for (auto _ : state) {
        qnVoidPtrDict d(static_cast<unsigned>(n));
        for (qnStr& key : keys) *static_cast<void**>(d.findCreate(&key)) = &key;
        benchmark::DoNotOptimize(d.count);
    }
    perElement(state);
}

void insertIntoUnorderedMap(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> keys = makeKeys(0, n, "");
    for (auto _ : state) {
        std::unordered_map<std::string, void*> map(n);
        for (std::string& key : keys) map[key] = &key;
        benchmark::DoNotOptimize(map.size());
    }
    perElement(state);
}

void findInDictionary(benchmark::State& state, const char* prefix) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, "")), probes = asStrings(makeKeys(0, n, prefix));
    qnVoidPtrDict d(static_cast<unsigned>(n));
    for (qnStr& key : keys) *static_cast<void**>(d.findCreate(&key)) = &key;
    for (auto _ : state) {
        for (qnStr& probe : probes) benchmark::DoNotOptimize(d.find(&probe, nullptr));
    }
    perElement(state);
}

void findInUnorderedMap(benchmark::State& state, const char* prefix) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> keys = makeKeys(0, n, ""), probes = makeKeys(0, n, prefix);
    std::unordered_map<std::string, void*> map(n);
    for (std::string& key : keys) map[key] = &key;
    for (auto _ : state) {
        for (std::string& probe : probes) {
            auto found = map.find(probe);
            benchmark::DoNotOptimize(found);
        }
    }
    perElement(state);
}

void iterate(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, ""));
    qnVoidPtrDict d(static_cast<unsigned>(n));
    for (qnStr& key : keys) d.findCreate(&key);
    for (auto _ : state) {
        for (qnVoidPtrDictIter it(d); it.dict != nullptr; ++it) benchmark::DoNotOptimize(it.getValue());
    }
    perElement(state);
}

void insertAndRemoveStrings(benchmark::State& state) {
    std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<qnStr> keys = asStrings(makeKeys(0, n, ""));
    qnStrStrDictionary d(static_cast<unsigned>(n));
    for (auto _ : state) {
        for (qnStr& key : keys) d.addInternal(&key, &key);
        for (qnStr& key : keys) d.remove(&key);
    }
    perElement(state);
}

BENCHMARK(insertIntoDictionary)->Arg(1000)->Arg(100000);
BENCHMARK(insertIntoUnorderedMap)->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInDictionary, present, "")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInUnorderedMap, present, "")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInDictionary, absent, "-")->Arg(1000)->Arg(100000);
BENCHMARK_CAPTURE(findInUnorderedMap, absent, "-")->Arg(1000)->Arg(100000);
BENCHMARK(iterate)->Arg(1000)->Arg(100000);
BENCHMARK(insertAndRemoveStrings)->Arg(1000)->Arg(100000);

}  // namespace
