// Strings: appending and concatenating, with the time for each character or part.
#include <benchmark/benchmark.h>
#include <morvaqnds.h>

#include <string>

namespace {

void perElement(benchmark::State& state, double elements) {
    state.counters["per_element"] =
        benchmark::Counter(elements, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void AppendCharacters(benchmark::State& state) {
    for (auto _ : state) {
        qnStr s;
        for (long i = 0; i < state.range(0); ++i) s.append('x');
        benchmark::DoNotOptimize(s.text());
    }
    perElement(state, static_cast<double>(state.range(0)));
}

void AppendWords(benchmark::State& state) {
    for (auto _ : state) {
        qnStr s;
        for (long i = 0; i < state.range(0); ++i) s.append("a word of it ", 13);
        benchmark::DoNotOptimize(s.text());
    }
    perElement(state, static_cast<double>(state.range(0)));
}

void ConcatenateFourShort(benchmark::State& state) {
    qnStr directory("directory"), name("name");
    for (auto _ : state) {
        qnStr path = directory + "/" + name + ".txt";
        benchmark::DoNotOptimize(path.text());
    }
    perElement(state, 4);
}

void ConcatenateFourLong(benchmark::State& state) {
    qnStr part(std::string(200, 'x').c_str());
    for (auto _ : state) {
        qnStr all = part + part + part + part;
        benchmark::DoNotOptimize(all.text());
    }
    perElement(state, 4);
}

BENCHMARK(AppendCharacters)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(AppendWords)->Arg(10)->Arg(1000);
BENCHMARK(ConcatenateFourShort);
BENCHMARK(ConcatenateFourLong);

}  // namespace
