#include <gtest/gtest.h>

#include <string>

#include "Str.h"

namespace StrSearchTest {

std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

TEST(StrSearch, NextFindsTheFirstAtOrAfterThePosition) {
    qnStr s("abcabc");
    EXPECT_EQ(0u, s.next(0, 'a'));
    EXPECT_EQ(3u, s.next(1, 'a'));
    EXPECT_EQ(6u, s.next(4, 'a'));
    EXPECT_EQ(6u, s.next(6, 'a'));
    EXPECT_EQ(1u, s.next(0, "cb"));
    EXPECT_EQ(2u, s.next(2, "cb"));
    EXPECT_EQ(6u, s.next(0, "xyz"));
    EXPECT_EQ(6u, s.next(0, ""));
    EXPECT_EQ(3u, qnStr("abc").next(0, 'x'));
    EXPECT_EQ(0u, qnStr().next(0, 'x'));
    EXPECT_EQ(0u, qnStr().next(0, "x"));
}

TEST(StrSearch, NextRAnswersWithThePositionAfterTheMatch) {
    qnStr s("abc");
    EXPECT_EQ(1u, s.nextR(3, 'a'));
    EXPECT_EQ(0u, s.nextR(3, 'x'));
    EXPECT_EQ(3u, s.nextR(3, 'c'));
    EXPECT_EQ(0u, s.nextR(2, 'c'));
    EXPECT_EQ(0u, s.nextR(0, 'a'));
    EXPECT_EQ(2u, s.nextR(3, "ab"));
    EXPECT_EQ(1u, s.nextR(1, "ab"));
    EXPECT_EQ(0u, s.nextR(3, "xyz"));
    EXPECT_EQ(0u, qnStr().nextR(0, 'x'));
}

TEST(StrSearch, SkipPassesOverARun) {
    qnStr blanks("   ");
    EXPECT_EQ(3u, blanks.skip(0, ' '));
    EXPECT_EQ(0u, blanks.skipR(3, ' '));
    qnStr s("..a,.b");
    EXPECT_EQ(2u, s.skip(0, '.'));
    EXPECT_EQ(2u, s.skip(2, '.'));
    EXPECT_EQ(5u, s.skip(3, ".,"));
    EXPECT_EQ(6u, s.skip(6, ".,"));
    EXPECT_EQ(6u, s.skipR(6, '.'));
    EXPECT_EQ(4u, s.skipR(5, '.'));
    EXPECT_EQ(3u, s.skipR(5, ".,"));
    EXPECT_EQ(0u, s.skipR(2, ".,"));
    EXPECT_EQ(0u, s.skipR(0, '.'));
}

TEST(StrSearch, ASetMayHoldNulAndHighCharacters) {
    qnStr s("a\0\xff z", 5u);
    EXPECT_EQ(1u, s.next(0, "\0", 1));
    EXPECT_EQ(2u, s.next(0, "\xff"));
    EXPECT_EQ(2u, s.next(0, '\xff'));
    EXPECT_EQ(3u, s.skip(1, "\0\xff", 2));
    EXPECT_EQ(2u, s.next(2, "\xff\xfe", 1));
}

#ifndef MORVAQNDS_CHECKED
TEST(StrSearch, APositionPastTheEndFindsNothing) {
    qnStr s("abc");
    EXPECT_EQ(3u, s.next(10, 'a'));
    EXPECT_EQ(3u, s.next(10, "a"));
    EXPECT_EQ(3u, s.skip(10, 'x'));
}
#endif

TEST(StrTokens, FieldsComeOneByOneAndThenEmptyForever) {
    qnStr s("a,,b");
    unsigned posn = 0;
    EXPECT_EQ("a", bytes(s.token(posn, ',')));
    EXPECT_EQ(3u, posn);
    EXPECT_EQ("b", bytes(s.token(posn, ',')));
    EXPECT_EQ(4u, posn);
    EXPECT_EQ("", bytes(s.token(posn, ',')));
    EXPECT_EQ("", bytes(s.token(posn, ",")));
    EXPECT_EQ(4u, posn);
}

TEST(StrTokens, AnEmptyStringAndOneOfDelimitersOnly) {
    qnStr empty, commas(",,,");
    unsigned posn = 0;
    EXPECT_EQ("", bytes(empty.token(posn, ',')));
    EXPECT_EQ(0u, posn);
    EXPECT_EQ("", bytes(empty.tokenR(posn, ",")));
    EXPECT_EQ(0u, posn);
    EXPECT_EQ("", bytes(commas.token(posn, ',')));
    EXPECT_EQ(3u, posn);
    EXPECT_EQ("", bytes(commas.token(posn, ',')));
    EXPECT_EQ(3u, posn);
    EXPECT_EQ("", bytes(commas.tokenR(posn, ",")));
    EXPECT_EQ(0u, posn);
}

TEST(StrTokens, BackwardTheTrailingDelimitersGiveAnEmptyFirstField) {
    qnStr s("a;b; ");
    unsigned posn = 5;
    EXPECT_EQ("", bytes(s.tokenR(posn, "; ")));
    EXPECT_EQ(3u, posn);
    EXPECT_EQ("b", bytes(s.tokenR(posn, "; ")));
    EXPECT_EQ(1u, posn);
    EXPECT_EQ("a", bytes(s.tokenR(posn, ';')));
    EXPECT_EQ(0u, posn);
}

TEST(StrTokens, LeadingDelimitersGiveAnEmptyFirstField) {
    qnStr s("; a;b");
    unsigned posn = 0;
    EXPECT_EQ("", bytes(s.token(posn, "; ")));
    EXPECT_EQ(2u, posn);
    EXPECT_EQ("a", bytes(s.token(posn, "; ")));
    EXPECT_EQ("b", bytes(s.token(posn, "; ")));
}

TEST(StrTokens, ACountedSetIsPassedOn) {
    qnStr s("a;b,c");
    unsigned posn = 0;
    EXPECT_EQ("a;b", bytes(s.token(posn, ",;", 1)));
    EXPECT_EQ(4u, posn);
    posn = 5;
    EXPECT_EQ("c", bytes(s.tokenR(posn, ",;", 1)));
    EXPECT_EQ(3u, posn);
}

TEST(StrTokens, BackwardFieldsComeFromTheEnd) {
    qnStr s("/usr//bin");
    unsigned posn = s.length();
    EXPECT_EQ("bin", bytes(s.tokenR(posn, '/')));
    EXPECT_EQ(4u, posn);
    EXPECT_EQ("usr", bytes(s.tokenR(posn, '/')));
    EXPECT_EQ(0u, posn);
    EXPECT_EQ("", bytes(s.tokenR(posn, '/')));
    EXPECT_EQ("", bytes(s.tokenR(posn, "/")));
    EXPECT_EQ(0u, posn);
}

}  // namespace StrSearchTest
