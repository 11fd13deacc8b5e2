#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "Str.h"

namespace StrStreamTest {

std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

/** Tests set the delimiter's index; each starts without one. */
class Input : public testing::Test {
protected:
    Input() : index(qnStr::delim_idx) { qnStr::delim_idx = -1; }
    ~Input() override { qnStr::delim_idx = index; }
    int index;
};

TEST(StrOutput, WritesUpToTheFirstNulWithWidthAndPadding) {
    std::ostringstream os;
    os << qnStr("ab\0c", 4u) << '|' << std::setw(4) << std::setfill('.') << qnStr("x") << '|' << qnStr();
    EXPECT_EQ("ab|...x|", os.str());
}

TEST_F(Input, ReadsLineByLine) {
    std::istringstream is("first\nsecond line that is longer than the first room of ten characters\n\nthird");
    qnStr s;
    is >> s;
    EXPECT_EQ("first", bytes(s));
    EXPECT_TRUE(is.good());
    is >> s;
    EXPECT_EQ("second line that is longer than the first room of ten characters", bytes(s));
    EXPECT_EQ(s.length() + 1, s.slength);
    // A delimiter that comes first leaves the string empty, the delimiter unread and the stream failed.
    is >> s;
    EXPECT_EQ("", bytes(s));
    EXPECT_TRUE(is.fail());
    is.clear();
    EXPECT_EQ('\n', is.peek());
    is.get();
    is >> s;
    EXPECT_EQ("third", bytes(s));
    EXPECT_TRUE(is.eof());
}

TEST_F(Input, LinesOfEveryLengthAroundTheRoom) {
    for (unsigned n = 1; n <= 45; ++n) {
        for (bool ended : {true, false}) {
            std::string line(n, 'x');
            std::istringstream is(ended ? line + "\nrest" : line);
            qnStr s;
            is >> s;
            EXPECT_EQ(line, bytes(s)) << n;
            EXPECT_EQ(ended, is.good()) << n;
            EXPECT_EQ(ended ? 'r' : std::istream::traits_type::eof(), is.peek());
        }
    }
}

TEST_F(Input, ItsLengthIsTheFirstRoomOfAStringWithText) {
    std::istringstream is("abc\ndef\nghi\n");
    qnStr s("xy");
    is >> s;
    EXPECT_EQ("abc", bytes(s));
    // Deliberate: one character is room for none, which the stream takes for a failure.
    qnStr one("x");
    is >> one;
    EXPECT_EQ("", bytes(one));
    EXPECT_TRUE(is.fail());
}

TEST_F(Input, AnEmptyStreamGivesAnEmptyString) {
    std::istringstream is("");
    qnStr s("before");
    is >> s;
    EXPECT_EQ("", bytes(s));
    EXPECT_TRUE(is.eof());
    EXPECT_TRUE(is.fail());
}

TEST_F(Input, TheDelimiterIsTheStreamsOwn) {
    std::istringstream a("one,two\nthree,"), b("x");
    b.str(std::string("left\0right", 10));
    _delimiter(a, ',');
    EXPECT_LE(0, qnStr::delim_idx);
    int index1 = qnStr::delim_idx;
    qnStr s;
    a >> s;
    EXPECT_EQ("one", bytes(s));
    a >> s;
    EXPECT_EQ("two\nthree", bytes(s));
    // Deliberate: on a stream without a delimiter of its own it is now NUL.
    b >> s;
    EXPECT_EQ("left", bytes(s));
    _delimiter(b, 'g');
    EXPECT_EQ(index1, qnStr::delim_idx);
    b >> s;
    EXPECT_EQ("ri", bytes(s));
}

TEST_F(Input, TheEndAroundTheRoomKeepsTheText) {
    // Nine characters fill the first room of ten with its NUL; the end stands right behind them.
    std::istringstream is("123456789");
    qnStr s;
    is >> s;
    EXPECT_EQ("123456789", bytes(s));
    EXPECT_TRUE(is.eof());
    // One less: the end is met while reading, and that is no failure.
    std::istringstream shorter("12345678");
    shorter >> s;
    EXPECT_EQ("12345678", bytes(s));
    EXPECT_TRUE(shorter.eof());
    EXPECT_FALSE(shorter.fail());
}

TEST_F(Input, AStreamInAnyStateButGoodGivesAnEmptyString) {
    for (std::ios_base::iostate state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
        std::istringstream is("text\n");
        is.setstate(state);
        qnStr s("before"), empty;
        is >> s >> empty;
        EXPECT_EQ("", bytes(s));
        EXPECT_EQ(&qnStr::emptyString, s.data);
        EXPECT_EQ("", bytes(empty));
        EXPECT_EQ(&qnStr::emptyString, empty.data);
        EXPECT_TRUE(is.fail());
        is.clear();
        EXPECT_EQ('t', is.peek()) << "nothing was taken";
    }
}

/** Holds `text`, and breaks when it has been read. */
class BreakingBuffer : public std::streambuf {
public:
    explicit BreakingBuffer(std::string text) : text_(text) { setg(&text_[0], &text_[0], &text_[0] + text_.size()); }

protected:
    int_type underflow() override { throw 1; }

private:
    std::string text_;
};

TEST_F(Input, AStreamThatBreaksInTheMiddleKeepsWhatCame) {
    for (unsigned n : {1u, 8u, 9u, 10u, 25u}) {
        std::string text(n, 'x');
        BreakingBuffer buffer(text);
        std::istream is(&buffer);
        qnStr s;
        is >> s;
        EXPECT_EQ(text, bytes(s)) << n;
        EXPECT_TRUE(is.bad());
    }
}

TEST_F(Input, LeadingBlanksAndNulsAreText) {
    std::istringstream is(std::string("  a\0b\n", 6));
    qnStr s;
    is >> s;
    EXPECT_EQ(std::string("  a\0b", 5), bytes(s));
}

TEST_F(Input, WithoutAnIncrementAnEmptyStringHasNoRoom) {
    qnStr::resizeIncrement = 0;
    std::istringstream is("text\n");
    qnStr s, longer("abc");
    is >> s;
    EXPECT_EQ("", bytes(s));
    EXPECT_EQ(0, qnStr::emptyString);
    EXPECT_TRUE(is.fail());
    is.clear();
    is >> longer;
    EXPECT_EQ("te", bytes(longer)) << "three characters of room, one of them for the NUL";
    EXPECT_TRUE(is.fail());
    qnStr::resizeIncrement = 10;
}

TEST_F(Input, GrowthPast32BitsIsFatal) {
    std::istringstream is("a longer line\n");
    qnStr s("abcdefgh");
    auto read = [&] {
        qnStr::resizeIncrement = 0xFFFFFFF8u;
        is >> s;
    };
    // 9 + 0xFFFFFFF8
    EXPECT_EXIT(read(), testing::KilledBySignal(SIGABRT),
                "^operator>>: size of 4294967297 bytes exceeds 4294967295\n$");
}

TEST_F(Input, EndOfFileIsNoDelimiter) {
    // The byte 255 as a delimiter is not taken for the end, nor the end for it.
    std::istringstream is("123456789");
    _delimiter(is, '\xff');
    qnStr s;
    is >> s;
    EXPECT_EQ("123456789", bytes(s));
    EXPECT_TRUE(is.eof());
    std::istringstream with(
        "123456789\xff"
        "abc");
    _delimiter(with, '\xff');
    with >> s;
    EXPECT_EQ("123456789", bytes(s));
    EXPECT_TRUE(with.good());
}

TEST_F(Input, TheIncrementIsTheGrowthStep) {
    EXPECT_EQ(10u, qnStr::resizeIncrement);
    qnStr::resizeIncrement = 2;
    std::istringstream is("a longer line\n");
    qnStr s;
    is >> s;
    EXPECT_EQ("a longer line", bytes(s));
    qnStr::resizeIncrement = 10;
}

}  // namespace StrStreamTest
