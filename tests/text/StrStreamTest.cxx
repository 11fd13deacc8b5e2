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
