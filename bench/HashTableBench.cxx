#include <benchmark/benchmark.h>

#include <cstdint>
#include <unordered_map>

#include "HashTable.h"

// Keys are spread by a multiplicative step, as addresses and ids are; the counts take the table through its sizes, the
// last one far past its greatest, where chains lengthen.

namespace {

unsigned long keyAt(std::int64_t index) {
    return static_cast<unsigned long>(static_cast<std::uint32_t>(index) * 2654435761U);
}

void fill(HashTable& table, std::int64_t number) {
    for (std::int64_t i = 0; i < number; ++i) table.add(keyAt(i), &table);
}

void countPerKey(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * state.range(0)); }

void hashTableAdd(benchmark::State& state) {
    for (auto _ : state) {
        HashTable table;
        fill(table, state.range(0));
        benchmark::DoNotOptimize(table.count);
    }
    countPerKey(state);
}
BENCHMARK(hashTableAdd)->Arg(64)->Arg(1000)->Arg(8000)->Arg(50000);

void stdUnorderedMapAdd(benchmark::State& state) {
    for (auto _ : state) {
        std::unordered_map<unsigned long, void*> table;
        for (std::int64_t i = 0; i < state.range(0); ++i) table.emplace(keyAt(i), &table);
        benchmark::DoNotOptimize(table.size());
    }
    countPerKey(state);
}
BENCHMARK(stdUnorderedMapAdd)->Arg(64)->Arg(1000)->Arg(8000)->Arg(50000);

void hashTableLookup(benchmark::State& state) {
    HashTable table;
    fill(table, state.range(0));
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) benchmark::DoNotOptimize(table.lookup(keyAt(i)));
    }
    countPerKey(state);
}
BENCHMARK(hashTableLookup)->Arg(64)->Arg(1000)->Arg(8000)->Arg(50000);

void stdUnorderedMapLookup(benchmark::State& state) {
    std::unordered_map<unsigned long, void*> table;
    for (std::int64_t i = 0; i < state.range(0); ++i) table.emplace(keyAt(i), &table);
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) benchmark::DoNotOptimize(table.find(keyAt(i)));
    }
    countPerKey(state);
}
BENCHMARK(stdUnorderedMapLookup)->Arg(64)->Arg(1000)->Arg(8000)->Arg(50000);

void hashTableAddAndRemove(benchmark::State& state) {
    HashTable table;
    fill(table, state.range(0));
    const unsigned long key = keyAt(state.range(0));
    for (auto _ : state) {
        table.add(key, &table);
        table.remove(key);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(hashTableAddAndRemove)->Arg(64)->Arg(8000);

void hashTableMapcar(benchmark::State& state) {
    HashTable table;
    fill(table, state.range(0));
    for (auto _ : state) table.mapcar([](HashEntry* entry) { benchmark::DoNotOptimize(entry->value); });
    countPerKey(state);
}
BENCHMARK(hashTableMapcar)->Arg(64)->Arg(8000);

}  // namespace
