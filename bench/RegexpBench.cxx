#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <regex>
#include <string>

#include "RegExp.h"

// Regular expressions over 1 MB of text like that of a log, beside std::regex and memmem, and over hostile texts.
// bytes_per_second is the figure to compare; for the hostile texts per_byte must not grow with the size.

namespace RegexpBench {

struct Freer {
    void operator()(regexp* expression) const { std::free(expression); }
};
typedef std::unique_ptr<regexp, Freer> Expression;

const std::string& logText() {
    static const std::string text = [] {
        static const char* const levels[] = {"INFO ", "INFO ", "DEBUG", "WARN ", "ERROR"};
        static const char* const users[] = {"alice", "bob", "carol", "dave"};
        std::mt19937 random(1);
        std::string lines;
        while (lines.size() < 1000000) {
            char line[200];
            std::snprintf(
                line, sizeof line,
                "2026-11-%02u %02u:%02u:%02u %s [worker-%u] %s /api/items/%u?page=%u %u %ums user=%s@example.com\n",
                unsigned(random() % 30 + 1), unsigned(random() % 24), unsigned(random() % 60), unsigned(random() % 60),
                levels[random() % 5], unsigned(random() % 32), random() % 4 ? "GET" : "POST",
                unsigned(random() % 10000), unsigned(random() % 20), random() % 50 ? 200u : 503u,
                unsigned(random() % 900), users[random() % 4]);
            lines += line;
            if (random() % 1000 == 0) lines += "FATAL: out of descriptors\n";
        }
        return lines;
    }();
    return text;
}

struct Pattern {
    const char* name;
    const char* ours;
    const char* standard;
};

const Pattern patterns[] = {
    {"date_time", "[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+", "[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+"},
    {"alternatives", "ERROR|FATAL", "ERROR|FATAL"},
    {"groups", "user=([a-z]+)@([a-z.]+)", "user=([a-z]+)@([a-z.]+)"},
    {"word", "\\<[0-9]+ms\\>", "\\b[0-9]+ms\\b"},
    {"request", "(GET|POST) (/[a-z0-9/]+)[?]page=([0-9]+) 5[0-9][0-9]",
     "(GET|POST) (/[a-z0-9/]+)[?]page=([0-9]+) 5[0-9][0-9]"},
};

const char* const literals[] = {"FATAL", "user=", "worker-99 timed out"};

void count(benchmark::State& state, long matches) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(logText().size()));
    state.counters["matches"] = static_cast<double>(matches);
}

void findAll(benchmark::State& state, const char* pattern) {
    Expression expression(qnregcomp(pattern));
    long matches = 0;
    for (auto _ : state) {
        matches = 0;
        for (const char* at = logText().c_str(); qnregexec(expression.get(), at); at = expression->endp[0]) ++matches;
    }
    count(state, matches);
}

void findAllStandard(benchmark::State& state, const char* pattern) {
    std::regex expression(pattern, std::regex::optimize);
    const char* end = logText().c_str() + logText().size();
    long matches = 0;
    for (auto _ : state) {
        matches = 0;
        std::cmatch match;
        for (const char* at = logText().c_str(); std::regex_search(at, end, match, expression); at = match[0].second) {
            ++matches;
        }
    }
    count(state, matches);
}

void findAllMemmem(benchmark::State& state, const char* literal) {
    const char* end = logText().c_str() + logText().size();
    std::size_t length = std::strlen(literal);
    long matches = 0;
    for (auto _ : state) {
        matches = 0;
        const char* at = logText().c_str();
        while (void* found = memmem(at, static_cast<std::size_t>(end - at), literal, length)) {
            at = static_cast<const char*>(found) + length;
            ++matches;
        }
    }
    count(state, matches);
}

struct Hostile {
    const char* pattern;
    const char* unit;
    const char* tail;
};

const Hostile hostiles[] = {
    {"(a|b)*c$", "ab", "cx"},  {"(x+x+)+[yz]", "x", ""},      {"(a|aa)+$", "a", "b"},
    {".*.*.*[=:].*", "x", ""}, {"(.*)(.*)(.*)[=:]", "x", ""}, {"(a|ab|b)*c", "ab", "c"},
};

void searchHostile(benchmark::State& state, const Hostile& hostile) {
    Expression expression(qnregcomp(hostile.pattern));
    std::string text;
    while (text.size() < static_cast<std::size_t>(state.range(0))) text += hostile.unit;
    text += hostile.tail;
    for (auto _ : state) benchmark::DoNotOptimize(qnregexec(expression.get(), text.c_str()));
    state.counters["per_byte"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void compileOrdinary(benchmark::State& state) {
    for (auto _ : state) Expression(qnregcomp(patterns[4].ours));
}

void searchShortText(benchmark::State& state) {
    Expression expression(qnregcomp("([a-z]+)=([0-9]+)"));
    for (auto _ : state) benchmark::DoNotOptimize(qnregexec(expression.get(), "x key=42"));
}

int registerAll() {
    for (const Pattern& pattern : patterns) {
        std::string name = std::string("pattern/") + pattern.name;
        benchmark::RegisterBenchmark((name + "/qn").c_str(), findAll, pattern.ours);
        benchmark::RegisterBenchmark((name + "/std_regex").c_str(), findAllStandard, pattern.standard);
    }
    for (const char* literal : literals) {
        std::string name = std::string("literal/") + literal;
        benchmark::RegisterBenchmark((name + "/qn").c_str(), findAll, literal);
        benchmark::RegisterBenchmark((name + "/memmem").c_str(), findAllMemmem, literal);
        benchmark::RegisterBenchmark((name + "/std_regex").c_str(), findAllStandard, literal);
    }
    for (const Hostile& hostile : hostiles) {
        benchmark::RegisterBenchmark((std::string("hostile/") + hostile.pattern).c_str(), searchHostile, hostile)
            ->RangeMultiplier(10)
            ->Range(10000, 10000000)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RegisterBenchmark("compile", compileOrdinary);
    benchmark::RegisterBenchmark("short_text", searchShortText);
    return 0;
}

const int registered = registerAll();

}  // namespace RegexpBench
