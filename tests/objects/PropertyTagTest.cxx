// Tags and the names that they stand for. Names live as long as the process, so each test uses names of its own; the
// end and the new start of the table are in programs/PropertyNames.cxx.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "OrderedGlobal.h"
#include "Property.h"

namespace PropertyTagTest {

class PropertyTag : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

TEST_F(PropertyTag, OfAnUnknownNameIsNoTag) { EXPECT_EQ(65535, qnProperty::findTag("a name that nobody gave")); }

TEST_F(PropertyTag, IsFoundUnderItsName) {
    const unsigned short width = qnProperty::allocNewTag("tag-width");
    const unsigned short height = qnProperty::allocNewTag("tag-height");
    EXPECT_EQ(width + 1, height) << "tags are consecutive";
    EXPECT_EQ(width, qnProperty::findTag("tag-width"));
    EXPECT_EQ(height, qnProperty::findTag("tag-height"));
}

TEST_F(PropertyTag, BelongsToTheWholeName) {
    const unsigned short tag = qnProperty::allocNewTag("tag-Whole");
    EXPECT_EQ(65535, qnProperty::findTag("tag-Whol"));
    EXPECT_EQ(65535, qnProperty::findTag("tag-Whole "));
    EXPECT_EQ(65535, qnProperty::findTag("tag-whole"));
    EXPECT_EQ(tag, qnProperty::findTag("tag-Whole"));
}

TEST_F(PropertyTag, NamesAreCopied) {
    char name[] = "tag-copied";
    const unsigned short tag = qnProperty::allocNewTag(name);
    name[4] = 'X';
    EXPECT_EQ(tag, qnProperty::findTag("tag-copied"));
    EXPECT_EQ(65535, qnProperty::findTag(name));
}

TEST_F(PropertyTag, AllocatingANameAgainGivesAnotherTagAndFindingTheLower) {
    const unsigned short first = qnProperty::allocNewTag("tag-twice");
    const unsigned short second = qnProperty::allocNewTag("tag-twice");
    EXPECT_EQ(first + 1, second);
    EXPECT_EQ(first, qnProperty::findTag("tag-twice"));
}

TEST_F(PropertyTag, ANameMayBeEmpty) {
    EXPECT_EQ(65535, qnProperty::findTag(""));
    const unsigned short tag = qnProperty::allocNewTag("");
    EXPECT_EQ(tag, qnProperty::findTag(""));
}

TEST_F(PropertyTag, TheTableGrowsPastItsFiftyAndKeepsItsNames) {
    const unsigned short first = qnProperty::allocNewTag("tag-many-0");
    for (unsigned i = 1; i < 170; ++i) {
        EXPECT_EQ(first + i, qnProperty::allocNewTag(("tag-many-" + std::to_string(i)).c_str()));
    }
    for (unsigned i = 0; i < 170; ++i) {
        EXPECT_EQ(first + i, qnProperty::findTag(("tag-many-" + std::to_string(i)).c_str()));
    }
}

TEST_F(PropertyTag, ConstructingTheTableAgainChangesNothing) {
    const unsigned short tag = qnProperty::allocNewTag("tag-lasting");
    qnProperty::constructPropertyNames();
    qnInitializeToolkit();
    EXPECT_EQ(tag, qnProperty::findTag("tag-lasting"));
    EXPECT_EQ(tag + 1, qnProperty::allocNewTag("tag-next"));
}

/** Allocates tags until the process ends, and prints the last that there are. */
[[noreturn]] void allocateAll() {
    for (;;) {
        const unsigned short tag = qnProperty::allocNewTag("one of many");
        if (tag >= 65533) std::fprintf(stderr, "tag %d\n", tag);
    }
}

TEST(PropertyTagDeathTest, MoreThan65534TagsEndTheProcess) {
    qnInitializeToolkit();
    EXPECT_EXIT(allocateAll(), testing::KilledBySignal(SIGABRT),
                "^tag 65533\nqnProperty::allocNewTag: more than 65534 tags\n$");
}

}  // namespace PropertyTagTest
