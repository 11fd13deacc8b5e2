// What an element costs: appending, inserting and finding. Times are per element.
#include <benchmark/benchmark.h>

#include "NumberArrays.h"
#include "StrArray.h"

namespace {

/** Reports the time of one element; `elements` is how many one iteration handles. */
void perElement(benchmark::State& state, double elements) {
    state.counters["per_element"] = benchmark::Counter(elements * static_cast<double>(state.iterations()),
                                                       benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/** Growth by four elements at a time, as it comes. */
void appendInts(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        qnIntArray a;
        for (int i = 0; i < n; ++i) a.append(&i);
        benchmark::DoNotOptimize(a.data);
    }
    perElement(state, n);
}
BENCHMARK(appendInts)->Arg(100)->Arg(10000)->Arg(1000000);

/** With the room made beforehand. */
void appendIntsWithRoom(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        qnIntArray a;
        a.setMaxLength(static_cast<unsigned>(n));
        for (int i = 0; i < n; ++i) a.append(&i);
        benchmark::DoNotOptimize(a.data);
    }
    perElement(state, n);
}
BENCHMARK(appendIntsWithRoom)->Arg(100)->Arg(10000)->Arg(1000000);

void appendStrings(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    qnStr text("a text of usual length");
    for (auto _ : state) {
        qnStrArray a;
        for (int i = 0; i < n; ++i) a.append(&text);
        benchmark::DoNotOptimize(a.data);
    }
    perElement(state, n);
}
BENCHMARK(appendStrings)->Arg(100)->Arg(10000);

/** Each element goes to the middle, so half of the array moves. */
void insertIntsInTheMiddle(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        qnIntArray a;
        for (int i = 0; i < n; ++i) a.insert(&i, a.length() / 2);
        benchmark::DoNotOptimize(a.data);
    }
    perElement(state, n);
}
BENCHMARK(insertIntsInTheMiddle)->Arg(100)->Arg(10000);

/** Looks at every element. */
void findInt(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    qnIntArray a;
    a.setMaxLength(static_cast<unsigned>(n));
    for (int i = 0; i < n; ++i) a.append(&i);
    int absent = -1;
    for (auto _ : state) benchmark::DoNotOptimize(a.find(&absent, 0));
    perElement(state, n);
}
BENCHMARK(findInt)->Arg(100)->Arg(10000)->Arg(1000000);

void findString(benchmark::State& state) {
    int n = static_cast<int>(state.range(0));
    qnStr text("a text of usual length"), absent("a text of usual breadth");
    qnStrArray a;
    for (int i = 0; i < n; ++i) a.append(&text);
    for (auto _ : state) benchmark::DoNotOptimize(a.find(&absent, 0));
    perElement(state, n);
}
BENCHMARK(findString)->Arg(100)->Arg(10000);

}  // namespace
