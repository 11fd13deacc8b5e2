#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include "SLinearPattern.h"
#include "Str.h"

// Literal patterns of many lengths in texts of 1 MB in which they do not occur, beside Horspool's table alone, written
// out by hand, and memmem. bytes_per_second is the figure to compare; "qn" must not be below "table" anywhere.

namespace PatternBench {

constexpr std::size_t TextSize = 1000000;

/** Horspool's algorithm and nothing else. */
class Table {
public:
    explicit Table(const std::string& pattern) : pattern_(pattern) {
        std::size_t length = pattern.size();
        for (std::size_t& distance : skip_) distance = length;
        for (std::size_t i = 0; i + 1 < length; ++i) skip_[static_cast<unsigned char>(pattern[i])] = length - 1 - i;
    }
    long find(const char* text, std::size_t size) const {
        const std::size_t length = pattern_.size();
        const char last = pattern_[length - 1];
        for (std::size_t at = length - 1; at < size;) {
            const char c = text[at];
            if (c == last && std::memcmp(text + (at + 1 - length), pattern_.data(), length) == 0) {
                return static_cast<long>(at + 1 - length);
            }
            at += skip_[static_cast<unsigned char>(c)];
        }
        return -1;
    }

private:
    std::string pattern_;
    std::size_t skip_[256];
};

/** Letters at random, each as likely as the alphabet holds it, and never a "#". */
std::string letters(const char* alphabet, std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::size_t choices = std::strlen(alphabet);
    std::string text;
    while (text.size() < size) text += alphabet[random() % choices];
    return text;
}

struct Case {
    const char* name;
    const char* alphabet;
    std::size_t mark;  // where in the pattern a "#" stands that no text holds: this far from its end
};

const char english[] =
    "eeeeeeeeeeeetttttttttaaaaaaaaoooooooiiiiiiinnnnnnnsssssshhhhhhrrrrrrddddllllcccuuummmwwffggyypb          ";

const Case cases[] = {
    {"english", english, 1},  // the last byte is common, the one before it the mark
    {"english_marked_start", english, 0},
    {"four_letters", "acgt", 0},
    {"two_letters", "ab", 0},
    {"one_letter", "a", 0},
    {"all_bytes", "\x01\x22\x43\x64\x85\xa6\xc7\xe8\x09\x2a\x4b\x6c\x8d\xae\xcf\xf0\x11\x32\x53\x74\x95\xb6\xd7\xf8",
     0},
};

/** "abab..." in the text, and in the pattern too but for one byte at a quarter of it: a candidate at every other place.
 */
const Case periodic = {"periodic", nullptr, 0};

std::string textFor(const Case& which) {
    if (which.alphabet != nullptr) return letters(which.alphabet, TextSize, 1);
    std::string text;
    while (text.size() < TextSize) text += "ab";
    return text;
}

std::string patternFor(const Case& which, std::size_t length) {
    if (which.alphabet == nullptr) {
        std::string pattern = textFor(which).substr(0, length);
        pattern[length / 4] = '#';
        return pattern;
    }
    std::string pattern = letters(which.alphabet, length, 2);
    pattern[which.mark == 0 || length == 1 ? 0 : length - 1 - which.mark] = '#';
    return pattern;
}

void finish(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(TextSize));
}

void ours(benchmark::State& state, const Case& which) {
    std::string text = textFor(which);
    std::string wanted = patternFor(which, static_cast<std::size_t>(state.range(0)));
    qnSLinearPattern pattern(qnStr(wanted.data(), static_cast<unsigned>(wanted.size())));
    for (auto _ : state) benchmark::DoNotOptimize(pattern.findBuffer(text.data(), static_cast<unsigned>(text.size())));
    finish(state);
}

void table(benchmark::State& state, const Case& which) {
    std::string text = textFor(which);
    Table pattern(patternFor(which, static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(pattern.find(text.data(), text.size()));
    finish(state);
}

void system(benchmark::State& state, const Case& which) {
    std::string text = textFor(which);
    std::string wanted = patternFor(which, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(memmem(text.data(), text.size(), wanted.data(), wanted.size()));
    }
    finish(state);
}

void registerCase(const Case& which) {
    std::string name = std::string("literal/") + which.name;
    for (long length : {1, 2, 4, 8, 16, 32, 64, 65, 100, 255, 1000}) {
        benchmark::RegisterBenchmark((name + "/qn").c_str(), ours, which)->Arg(length);
        benchmark::RegisterBenchmark((name + "/table").c_str(), table, which)->Arg(length);
        benchmark::RegisterBenchmark((name + "/memmem").c_str(), system, which)->Arg(length);
    }
}

int registerAll() {
    for (const Case& which : cases) registerCase(which);
    registerCase(periodic);
    return 0;
}

const int registered = registerAll();

}  // namespace PatternBench
