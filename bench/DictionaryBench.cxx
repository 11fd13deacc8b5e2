// Dictionaries and arrays: inserting, finding, appending, with the time for each entry or element.
#include <benchmark/benchmark.h>
#include <morvaqnds.h>

#include <vector>

namespace {

void perElement(benchmark::State& state) {
    state.counters["per_element"] = benchmark::Counter(
        static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::vector<qnStr> keys(long n) {
    std::vector<qnStr> all;
    for (long i = 0; i < n; ++i) {
        qnStr key;
        key.format("%ld key", i * 7919 % 1000003);
        all.push_back(key);
    }
    return all;
}

void DictionaryInsert(benchmark::State& state) {
    std::vector<qnStr> all = keys(state.range(0));
    for (auto _ : state) {
        qnVoidPtrDict d(static_cast<unsigned>(state.range(0)));
        for (const qnStr& key : all) benchmark::DoNotOptimize(d.findCreate(&key));
    }
    perElement(state);
}

void DictionaryFind(benchmark::State& state) {
    std::vector<qnStr> all = keys(state.range(0));
    qnVoidPtrDict d(static_cast<unsigned>(state.range(0)));
    for (const qnStr& key : all) d.findCreate(&key);
    for (auto _ : state) {
        for (const qnStr& key : all) benchmark::DoNotOptimize(d.find(&key, nullptr));
    }
    perElement(state);
}

void ArrayAppend(benchmark::State& state) {
    for (auto _ : state) {
        qnIntArray array;
        for (int i = 0; i < state.range(0); ++i) array.append(&i);
        benchmark::DoNotOptimize(array.data);
    }
    perElement(state);
}

void ArrayAppendWithRoom(benchmark::State& state) {
    for (auto _ : state) {
        qnIntArray array;
        array.setMaxLength(static_cast<unsigned>(state.range(0)));
        for (int i = 0; i < state.range(0); ++i) array.append(&i);
        benchmark::DoNotOptimize(array.data);
    }
    perElement(state);
}

void ArrayFind(benchmark::State& state) {
    qnIntArray array(static_cast<unsigned>(state.range(0)));
    for (int i = 0; i < state.range(0); ++i) array.elements()[i] = i;
    int missing = -1;
    for (auto _ : state) benchmark::DoNotOptimize(array.find(&missing, 0));
    perElement(state);
}

BENCHMARK(DictionaryInsert)->Arg(100)->Arg(10000);
BENCHMARK(DictionaryFind)->Arg(100)->Arg(10000);
BENCHMARK(ArrayAppend)->Arg(100)->Arg(10000);
BENCHMARK(ArrayAppendWithRoom)->Arg(10000);
BENCHMARK(ArrayFind)->Arg(10000);

}  // namespace
