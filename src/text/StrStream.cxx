// The string's operators on the standard library's streams.
#include <istream>
#include <ostream>

#include "Str.h"
#include "core/Heap.h"

unsigned qnStr::resizeIncrement = 10;
int qnStr::delim_idx = -1;

namespace {

char delimiterOf(std::istream& is) {
    return qnStr::delim_idx < 0 ? '\n' : static_cast<char>(is.iword(qnStr::delim_idx));
}

/** Whether the next character is `delimiter`; the end of the input is nothing. */
bool standsAt(std::istream& is, char delimiter) {
    int c = is.peek();
    return c != std::istream::traits_type::eof() && static_cast<char>(c) == delimiter;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const qnStr& s) { return os << s.text(); }

std::istream& operator>>(std::istream& is, qnStr& s) {
    char delimiter = delimiterOf(is);
    if (s.length() == 0) s.resize(qnStr::resizeIncrement);
    unsigned got = 0;
    for (;;) {
        is.get(s.data + got, static_cast<std::streamsize>(s.slength - got - 1), delimiter);
        got += static_cast<unsigned>(is.gcount());
        if (!is.good()) {
            s.resize(got);
            return is;
        }
        if (standsAt(is, delimiter)) break;
        s.resize(heap::checkedSize(std::uint64_t(s.slength) + qnStr::resizeIncrement, "operator>>") - 1);
    }
    is.get();
    s.resize(got);
    return is;
}

std::istream& _delimiter(std::istream& is, char c) {
    if (qnStr::delim_idx < 0) qnStr::delim_idx = std::ios_base::xalloc();
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): it is read back as a char
    is.iword(qnStr::delim_idx) = c;
    return is;
}
