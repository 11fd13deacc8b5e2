#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Str.h"
#include "support/FakeTranscriber.h"

namespace StrXdrTest {

std::string bytes(const qnStr& s) { return std::string(s.data, s.length()); }

bool isShared(const qnStr& s) { return s.data == &qnStr::emptyString && s.slength == 1; }

TEST(StrXdr, WritesTheLengthWithTheTerminatorAndThenTheText) {
    FakeTranscriber writer(FakeTranscriber::Writing);
    qnStr s("abc");
    EXPECT_TRUE(s.xdr(writer));
    EXPECT_THAT(writer.calls, testing::ElementsAre("unsigned int[1] 4", "char*[4] 97 98 99 0"));
    EXPECT_EQ("abc", bytes(s));
}

TEST(StrXdr, WritesNoTextForAnEmptyString) {
    FakeTranscriber writer(FakeTranscriber::Writing);
    qnStr shared, ofItsOwn(1, "");
    EXPECT_TRUE(shared.xdr(writer));
    EXPECT_TRUE(ofItsOwn.xdr(writer));
    EXPECT_THAT(writer.calls, testing::ElementsAre("unsigned int[1] 1", "unsigned int[1] 1"));
}

TEST(StrXdr, TheStaticFormForwardsToTheMember) {
    FakeTranscriber writer(FakeTranscriber::Writing);
    qnStr s("a\0b", 3u);
    EXPECT_TRUE(qnStr::xdr(&s, writer));
    EXPECT_THAT(writer.calls, testing::ElementsAre("unsigned int[1] 4", "char*[4] 97 0 98 0"));
}

TEST(StrXdr, ReadsTheLengthAndTakesTheBlockThatTheTranscriberMade) {
    FakeTranscriber reader(FakeTranscriber::Reading);
    reader.feed({4});
    reader.feedText(std::string("a\0c", 4));
    qnStr s;
    EXPECT_TRUE(s.xdr(reader));
    EXPECT_EQ(std::string("a\0c", 3), bytes(s));
    EXPECT_EQ(4u, s.slength);
    EXPECT_EQ(0, s.data[3]);
    EXPECT_TRUE(reader.exhausted());
}

TEST(StrXdr, ReadingAnEmptyStringGivesTheSharedBuffer) {
    FakeTranscriber reader(FakeTranscriber::Reading);
    reader.feed({1, 1});
    qnStr fresh(qnStr_type), used("text");
    EXPECT_TRUE(fresh.xdr(reader));
    EXPECT_TRUE(used.xdr(reader));
    EXPECT_TRUE(isShared(fresh));
    EXPECT_TRUE(isShared(used));
    EXPECT_EQ(2u, reader.calls.size()) << "no text is asked for";
}

TEST(StrXdr, AFailureAtTheLengthLeavesTheStringAsItWas) {
    for (FakeTranscriber::Direction direction : {FakeTranscriber::Writing, FakeTranscriber::Reading}) {
        FakeTranscriber transcriber(direction);
        transcriber.failingCall = 0;
        qnStr s("abc");
        EXPECT_FALSE(s.xdr(transcriber));
        EXPECT_EQ("abc", bytes(s));
        EXPECT_EQ(1u, transcriber.calls.size());
    }
}

TEST(StrXdr, AFailureAtTheTextIsAnsweredWithFalse) {
    FakeTranscriber writer(FakeTranscriber::Writing);
    writer.failingCall = 1;
    qnStr s("abc");
    EXPECT_FALSE(s.xdr(writer));
    EXPECT_EQ("abc", bytes(s));
    FakeTranscriber reader(FakeTranscriber::Reading);
    reader.feed({4});
    reader.failingCall = 1;
    EXPECT_FALSE(s.xdr(reader));
    EXPECT_EQ("", bytes(s)) << "a string that can be used and destroyed";
}

TEST(StrXdrDeathTest, ALengthOfZeroIsRefused) {
    FakeTranscriber reader(FakeTranscriber::Reading);
    reader.feed({0});
    qnStr s;
    EXPECT_EXIT(s.xdr(reader), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(StrXdrDeathTest, ATextThatIsNullIsRefused) {
    FakeTranscriber reader(FakeTranscriber::Reading);
    reader.feed({4});
    reader.feedNullText();
    qnStr s;
    EXPECT_EXIT(s.xdr(reader), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST(StrFactory, MakesAnEmptyStringAndIgnoresNull) {
    qnStr* made = static_cast<qnStr*>(qnStr::newInstance(qnStr_type));
    EXPECT_TRUE(isShared(*made));
    qnStr::deleteInstance(made);
    qnStr::deleteInstance(nullptr);
    EXPECT_STREQ("qnStr", qnStr_type.name);
    EXPECT_EQ(1u, qnStr_type.version);
    EXPECT_EQ(&qnStr_type, &qnStr().getTypeObj());
}

}  // namespace StrXdrTest
