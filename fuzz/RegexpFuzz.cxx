// Compiles arbitrary patterns, searches arbitrary texts and substitutes what was found; then does the same with the
// program damaged, and looks for the pattern as it is.
//
// An input is three texts, the first two ended by a NUL: a pattern, a text, a template. What stands behind the NUL of
// the template is pairs of bytes: a place in the program, and the byte to put there.
#include <malloc.h>
#include <morvaqnds.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

struct Freer {
    void operator()(regexp* expression) const { std::free(expression); }
};
typedef std::unique_ptr<regexp, Freer> Expression;

/** Everything up to the next NUL, which is taken too. */
std::string take(const char*& at, const char* end) {
    const char* stop = static_cast<const char*>(std::memchr(at, 0, static_cast<std::size_t>(end - at)));
    std::string text(at, stop == nullptr ? end : stop);
    at = stop == nullptr ? end : stop + 1;
    return text;
}

void check(bool holds) {
    if (!holds) std::abort();
}

/** Bounds lie in the text, and both ends of a group are set or none is. */
void checkBounds(const regexp& expression, const std::string& text) {
    const char* first = text.c_str();
    const char* last = first + text.size();
    for (int i = 0; i < NSUBEXP; ++i) {
        const char* start = expression.startp[i];
        const char* end = expression.endp[i];
        check((start == nullptr) == (end == nullptr));
        if (start != nullptr) check(first <= start && start <= end && end <= last);
    }
    check(expression.startp[0] != nullptr);
}

void substitute(regexp& expression, const std::string& source, std::size_t textSize) {
    // Every character of the template stands for the whole text at most.
    std::unique_ptr<char[]> destination(new char[source.size() * (textSize + 1) + 1]);
    qnregsub(&expression, source.c_str(), destination.get());
    check(std::strlen(destination.get()) <= source.size() * (textSize + 1));
}

void searchLiteral(const std::string& pattern, const std::string& text) {
    qnSLinearPattern literal(qnStr(pattern.data(), static_cast<unsigned>(pattern.size())));
    std::size_t expected = text.find(pattern);
    int found = literal.findBuffer(text.data(), static_cast<unsigned>(text.size()));
    check(expected == std::string::npos ? found == -1 : found == static_cast<int>(expected));
}

/** A program has no end of its own, so a damaged one is followed by more zeros than a link can pass. */
constexpr std::size_t DamagedSize = std::size_t(1) << 18;

Expression damage(const regexp& whole, std::size_t size, const char* at, const char* end) {
    regexp* damaged = static_cast<regexp*>(std::calloc(1, DamagedSize));
    check(damaged != nullptr && size < DamagedSize / 2);
    std::memcpy(static_cast<void*>(damaged), &whole, size);
    if (whole.regmust != nullptr) {
        damaged->regmust = reinterpret_cast<char*>(damaged) + (whole.regmust - reinterpret_cast<const char*>(&whole));
    }
    std::size_t programSize = size - offsetof(regexp, program);
    for (; end - at >= 2; at += 2) {
        damaged->program[1 + static_cast<unsigned char>(at[0]) % (programSize - 1)] = at[1];
    }
    return Expression(damaged);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const char* at = reinterpret_cast<const char*>(bytes);
    const char* end = at + size;
    std::string pattern = take(at, end);
    std::string text = take(at, end);
    std::string source = take(at, end);

    searchLiteral(pattern, text);
    Expression expression(qnregcomp(pattern.c_str()));
    long place = qnregerrorplace();
    if (expression == nullptr) {
        check(0 <= place && place <= static_cast<long>(pattern.size()));
        return 0;
    }
    check(place == -1);
    std::size_t blockSize = malloc_usable_size(expression.get());  // exact with the address sanitizer
    if (qnregexec(expression.get(), text.c_str())) {
        checkBounds(*expression, text);
        substitute(*expression, source, text.size());
    }
    if (at == end) return 0;
    Expression damaged = damage(*expression, blockSize, at, end);
    if (qnregexec(damaged.get(), text.c_str())) substitute(*damaged, source, text.size());
    return 0;
}
