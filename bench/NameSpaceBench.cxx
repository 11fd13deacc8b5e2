#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "NameSpace.h"

namespace {

/** Names as programs have them: a word and a number. */
std::vector<std::string> makeNames(std::int64_t number) {
    static const char* const words[] = {"width", "height", "label", "colour", "x", "on-press", "font", "state"};
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < number; ++i) names.push_back(words[i % 8] + std::to_string(i / 8));
    return names;
}

void intern(NameSpace& space, const std::vector<std::string>& names) {
    for (const std::string& name : names) space.makeAtom(name.c_str(), static_cast<unsigned>(name.size()), 1);
}

void countPerName(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * state.range(0)); }

void atomCreate(benchmark::State& state) {
    const std::vector<std::string> names = makeNames(state.range(0));
    for (auto _ : state) {
        NameSpace space(nullptr, 0);
        intern(space, names);
        benchmark::DoNotOptimize(space.lastAtom);
    }
    countPerName(state);
}
BENCHMARK(atomCreate)->Arg(100)->Arg(1000)->Arg(100000);

void stdUnorderedMapCreate(benchmark::State& state) {
    const std::vector<std::string> names = makeNames(state.range(0));
    for (auto _ : state) {
        std::unordered_map<std::string, unsigned long> atoms;
        std::vector<const std::string*> table(1);
        for (const std::string& name : names) table.push_back(&atoms.emplace(name, table.size()).first->first);
        benchmark::DoNotOptimize(table.size());
    }
    countPerName(state);
}
BENCHMARK(stdUnorderedMapCreate)->Arg(100)->Arg(1000)->Arg(100000);

void atomLookup(benchmark::State& state) {
    const std::vector<std::string> names = makeNames(state.range(0));
    NameSpace space(nullptr, 0);
    intern(space, names);
    for (auto _ : state) {
        for (const std::string& name : names)
            benchmark::DoNotOptimize(space.makeAtom(name.c_str(), static_cast<unsigned>(name.size()), 0));
    }
    countPerName(state);
}
BENCHMARK(atomLookup)->Arg(100)->Arg(1000)->Arg(100000);

void stdUnorderedMapLookup(benchmark::State& state) {
    const std::vector<std::string> names = makeNames(state.range(0));
    std::unordered_map<std::string, unsigned long> atoms;
    for (const std::string& name : names) atoms.emplace(name, atoms.size() + 1);
    for (auto _ : state) {
        for (const std::string& name : names) benchmark::DoNotOptimize(atoms.find(name));
    }
    countPerName(state);
}
BENCHMARK(stdUnorderedMapLookup)->Arg(100)->Arg(1000)->Arg(100000);

void nameForAtom(benchmark::State& state) {
    NameSpace space(nullptr, 0);
    intern(space, makeNames(state.range(0)));
    for (auto _ : state) {
        for (unsigned long atom = 1; atom <= space.lastAtom; ++atom) benchmark::DoNotOptimize(space.nameForAtom(atom));
    }
    countPerName(state);
}
BENCHMARK(nameForAtom)->Arg(1000);

}  // namespace
