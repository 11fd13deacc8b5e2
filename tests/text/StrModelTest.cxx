// Random operations on a few strings, next to a model: a text and the size of the block that was asked for. Arguments
// are texts of their own, pieces of the string itself and pieces of other strings.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "Str.h"
#include "support/RandomRun.h"
#include "support/SanitizedHeap.h"

namespace StrModelTest {

/** What a string should be. */
struct Model {
    std::string text;
    std::size_t block = 0;  // bytes asked for; 0 is the shared buffer

    /** The buffer policy. */
    void room(std::size_t length) {
        if (text.empty()) {
            if (length != 0) block = length + 1;
        } else if (length == 0) {
            block = 0;
        } else if (length > text.size()) {
            block = length + 1;
        }
    }
    void assign(const std::string& other) {
        room(other.size());
        text = other;
    }
    void splice(std::size_t at, const std::string& piece, std::size_t spare) {
        if (piece.empty()) return;
        room(text.size() + piece.size() + spare);
        text.insert(at, piece);
    }
    void remove(std::size_t start, std::size_t count) {
        if (count == text.size()) block = 0;
        text.erase(start, count);
    }
};

/** The scans as they are defined: one character after another. */
unsigned scan(const std::string& text, unsigned posn, const std::string& set, bool wanted) {
    unsigned i = posn;
    while (i < text.size() && (set.find(text[i]) != std::string::npos) != wanted) ++i;
    return i;
}
unsigned scanBack(const std::string& text, unsigned posn, const std::string& set, bool wanted) {
    unsigned i = posn;
    while (i > 0 && (set.find(text[i - 1]) != std::string::npos) != wanted) --i;
    return i;
}

/** The hash as a sum of bytes and their weights. */
std::uint32_t hashOf(const std::string& text) {
    auto at = [&](std::size_t i) { return std::uint32_t(static_cast<unsigned char>(text[i])); };
    auto word = [&](std::size_t i) { return at(i) + (at(i + 1) << 8) + (at(i + 2) << 16) + (at(i + 3) << 24); };
    std::size_t n = text.size();
    std::uint32_t sum = 0;
    if (n >= 8) return (word(4) << 3) ^ word(0);
    for (std::size_t i = 0; i < (n <= 4 ? n : n - 4); ++i) sum += at(i) << (8 * ((n <= 4 ? 4 : 8) - n + i));
    return n <= 4 ? sum << 3 : (sum << 3) ^ word(0);
}

class Operations {
public:
    explicit Operations(const std::mt19937& random) : random_(random) {}

    void step() {
        unsigned which = pick(Strings);
        if (model_[which].text.size() > 400) {
            strings_[which] = "";
            model_[which].assign("");
        }
        change(which);
        ask(which);
        check(which);
    }

private:
    static constexpr unsigned Strings = 4;

    /** A piece of text to be passed, where it lies, and what it is. */
    struct Piece {
        const char* at;
        std::string bytes;
        std::string terminated() const { return bytes.substr(0, bytes.find('\0')); }
    };

    unsigned pick(std::size_t below) { return static_cast<unsigned>(random_() % below); }
    char character() { return "abcXYZ,; \0\xff"[pick(11)]; }
    std::string fresh(unsigned most) {
        std::string text;
        for (unsigned n = pick(most + 1); n > 0; --n) text += character();
        return text;
    }
    std::string set() {
        std::string text;
        for (unsigned n = 1 + pick(3); n > 0; --n) text += "aX,; \xff"[pick(6)];
        return text;
    }

    Piece piece(unsigned which) {
        unsigned kind = pick(4);
        if (kind < 2) {
            held_ = fresh(pick(20) == 0 ? 120 : 12);
            return Piece{held_.c_str(), held_};
        }
        unsigned source = kind == 2 ? which : pick(Strings);
        std::string whole = model_[source].text;
        unsigned from = pick(whole.size() + 1);
        // The terminator is text too where a count says so.
        unsigned count = pick(whole.size() - from + 2);
        return Piece{strings_[source].text() + from, (whole + '\0').substr(from, count)};
    }
    /** The bytes from where a piece lies up to its NUL. */
    static std::string upToNul(const Piece& piece) { return piece.at; }

    void change(unsigned which) {
        qnStr& s = strings_[which];
        Model& m = model_[which];
        unsigned length = s.length(), posn = pick(length + 1), count = pick(length - posn + 1);
        Piece p = piece(which);
        unsigned n = static_cast<unsigned>(p.bytes.size());
        std::string text = upToNul(p);
        char c = character();
        switch (pick(24)) {
            case 0:
                s.append(p.at, n);
                m.splice(length, n == 0 ? text : p.bytes, 0);
                break;
            case 1:
                s.append(p.at);
                m.splice(length, text, 0);
                break;
            case 2:
                s.append(c);
                m.splice(length, std::string(1, c), 0);
                break;
            case 3:
                s.insert(p.at, posn, n);
                m.splice(posn, n == 0 ? text : p.bytes, 1);
                break;
            case 4:
                s.insert(p.at, posn);
                m.splice(posn, text, 1);
                break;
            case 5:
                s.insert(c, posn);
                m.splice(posn, std::string(1, c), 1);
                break;
            case 6:
                n = std::min(n, length - posn);
                if (n == 0) break;
                s.replace(p.at, posn, n);
                m.text.replace(posn, n, p.bytes, 0, n);
                break;
            case 7:
                if (text.size() > length - posn) break;
                s.replace(p.at, posn);
                m.text.replace(posn, text.size(), text);
                break;
            case 8:
                if (length == 0) break;
                s.remove(posn, count);
                m.remove(posn, count);
                break;
            case 9: {
                if (length == 0) break;
                qnStr taken = s.cut(posn, count);
                EXPECT_EQ(m.text.substr(posn, count), bytes(taken));
                m.remove(posn, count);
                break;
            }
            case 10: {
                unsigned wanted = pick(30);
                s.resize(wanted, pick(2) != 0);
                m.room(wanted);
                if (length == 0 && wanted != 0) s.data[0] = 0;
                m.text.resize(wanted);
                break;
            }
            case 11: {
                unsigned wanted = pick(30);
                s.setMaxLength(wanted);
                if (length != 0) m.room(std::max(wanted, length));
                break;
            }
            case 12: {
                unsigned wanted = 1 + pick(30);
                s.resizeInternal(wanted);
                m.room(wanted);
                if (length == 0) s.data[0] = 0;
                break;
            }
            case 13:
                s = p.at;
                m.assign(text);
                break;
            case 14: {
                unsigned source = pick(Strings);
                std::string other = model_[source].text;
                s = strings_[source];
                m.assign(other);
                break;
            }
            case 15: {
                unsigned a = pick(Strings), b = pick(Strings);
                std::string sum = model_[a].text + model_[b].text + text + m.text;
                s = strings_[a] + strings_[b] + p.at + s;
                m.assign(sum);
                break;
            }
            case 16: {
                std::string front(s.text());
                s.format("%s|%s:%d", s.text(), p.at, static_cast<int>(n));
                std::string result = front + '|' + text + ':' + std::to_string(n);
                m.room(std::max(front.size() + text.size() + 2 + 10 + 1, result.size()));
                m.text = result;
                break;
            }
            case 17: {
                std::string format = "%-" + std::to_string(1 + pick(40)) + ".*s%lld";
                int precision = static_cast<int>(n);
                long long number =
                    (static_cast<long long>(random_()) - (1LL << 31)) * static_cast<long long>(random_());
                char expected[200];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
                std::snprintf(expected, sizeof expected, format.c_str(), std::min(precision, 100), p.at, number);
                std::size_t estimate = std::min<std::size_t>(text.size(), std::min(n, 100u)) + 10;
                s.format(format.c_str(), std::min(precision, 100), p.at, number);
#pragma GCC diagnostic pop
                m.room(std::max(estimate + 1, std::strlen(expected)));
                m.text = expected;
                break;
            }
            case 18:
                s.lower();
                for (char& each : m.text) each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
                break;
            case 19:
                s.raise();
                for (char& each : m.text) each = static_cast<char>(std::toupper(static_cast<unsigned char>(each)));
                break;
            case 20: {
                qnStr moved(static_cast<qnStr&&>(s));
                EXPECT_EQ(m.text, bytes(moved));
                EXPECT_EQ(&qnStr::emptyString, s.data);
                s = moved;
                std::string same = m.text;
                m = Model();
                m.assign(same);
                break;
            }
            case 21: {
                qnStr number(static_cast<int>(n), pick(3) == 0 ? "" : "%d");
                s = static_cast<const qnStr&>(number);
                m.assign(number.text());
                break;
            }
            case 22: {
                std::string line = fresh(60);
                std::istringstream is(line + "\n");
                readLine(is, line, s, m);
                break;
            }
            default:
                s = p.at;
                s.append(s.text());
                m.assign(text);
                m.splice(text.size(), text, 0);
        }
    }

    /** Reads as described, by steps on the model. */
    void readLine(std::istringstream& is, const std::string& line, qnStr& s, Model& m) {
        is >> s;
        if (m.text.empty()) resize(m, 10);
        std::size_t got = 0;
        for (;;) {
            std::size_t count = m.text.size() - got;  // with the NUL
            std::size_t more = count == 0 ? 0 : std::min(count - 1, line.size() - got);
            got += more;
            if (more == 0 || got == line.size()) break;
            resize(m, m.text.size() + 10);
        }
        resize(m, got);
        m.text = line.substr(0, got);
    }
    static void resize(Model& m, std::size_t length) {
        m.room(length);
        m.text.resize(length);
    }

    static std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

    void ask(unsigned which) {
        const qnStr& s = strings_[which];
        const std::string& text = model_[which].text;
        unsigned posn = pick(text.size() + 1);
        std::string in = set();
        unsigned n = static_cast<unsigned>(in.size());
        const char* counted = in.c_str();
        EXPECT_EQ(scan(text, posn, in, true), s.next(posn, counted, pick(2) * n));
        EXPECT_EQ(scan(text, posn, in, false), s.skip(posn, counted, pick(2) * n));
        EXPECT_EQ(scanBack(text, posn, in, true), s.nextR(posn, counted, pick(2) * n));
        EXPECT_EQ(scanBack(text, posn, in, false), s.skipR(posn, counted, pick(2) * n));
        std::string one(1, character());
        EXPECT_EQ(scan(text, posn, one, true), s.next(posn, one[0]));
        EXPECT_EQ(scan(text, posn, one, false), s.skip(posn, one[0]));
        EXPECT_EQ(scanBack(text, posn, one, true), s.nextR(posn, one[0]));
        EXPECT_EQ(scanBack(text, posn, one, false), s.skipR(posn, one[0]));

        unsigned end = scan(text, posn, in, true), after = posn;
        EXPECT_EQ(text.substr(posn, end - posn), bytes(s.token(after, counted)));
        EXPECT_EQ(scan(text, end, in, false), after);
        unsigned start = scanBack(text, posn, one, true), before = posn;
        EXPECT_EQ(text.substr(start, posn - start), bytes(s.tokenR(before, one[0])));
        EXPECT_EQ(scanBack(text, start, one, false), before);

        EXPECT_EQ(hashOf(text), s.hash());
        unsigned other = pick(Strings);
        const std::string& otherText = model_[other].text;
        EXPECT_EQ(text == otherText, s == strings_[other]);
        EXPECT_EQ(text != otherText.c_str(), s != otherText.c_str());
        int order = std::string(text.c_str()).compare(otherText.c_str());
        EXPECT_EQ(order < 0, s < strings_[other]);
        EXPECT_EQ(order >= 0, s >= otherText.c_str());
        EXPECT_EQ(order == 0, compare(s, strings_[other]) == 0);

        unsigned count = pick(text.size() - posn + 1);
        EXPECT_EQ(text.substr(posn, count), bytes(s.extract(posn, count)));
        EXPECT_EQ(text.substr(0, posn), bytes(s.head(posn)));
        EXPECT_EQ(text.substr(posn), bytes(s.tail(static_cast<unsigned>(text.size()) - posn)));
        unsigned first = scan(text, 0, in, false), last = scanBack(text, s.length(), in, false);
        if (first <= last) {
            EXPECT_EQ(text.substr(first, last - first), bytes(qnStr(s).trim(counted)));
        }
        EXPECT_EQ(text.substr(0, last), bytes(qnStr(s).trimRight(counted)));
    }

    void check(unsigned which) {
        const qnStr& s = strings_[which];
        const Model& m = model_[which];
        ASSERT_EQ(m.text.size() + 1, s.slength);
        ASSERT_EQ(m.text, bytes(s));
        ASSERT_EQ(0, s.data[s.slength - 1]);
        ASSERT_EQ(0, qnStr::emptyString);
        ASSERT_EQ(m.block == 0, s.data == &qnStr::emptyString) << m.block;
        if (m.block == 0) return;
        std::size_t usable = malloc_usable_size(s.data);
        ASSERT_LE(m.block, usable);
        if (heapIsSanitized) {
            ASSERT_EQ(m.block, usable);
        }
    }

    std::mt19937 random_;
    qnStr strings_[Strings];
    Model model_[Strings];
    std::string held_;
};

TEST(StrModel, RandomOperationsGiveWhatTheModelHas) {
    int index = qnStr::delim_idx;
    qnStr::delim_idx = -1;
    RandomRun run(150000);
    Operations operations(run.generator());
    for (unsigned long i = 0; i < run.rounds; ++i) {
        operations.step();
        ASSERT_FALSE(testing::Test::HasFailure()) << "operation " << i;
    }
    qnStr::delim_idx = index;
}

}  // namespace StrModelTest
