// The properties of an object: a list sorted by tag, its binary search, and who is let go of when, also when the
// release functions look at the list or change it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "Obj.h"
#include "OrderedGlobal.h"
#include "objects/PropertyTags.h"

namespace PropertyListTest {

using testing::ElementsAre;

class PropertyList : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

/** An object with a property of each tag, whose value is the tag. */
struct Tagged : qnObj {
    Tagged(std::initializer_list<int> tags) {
        for (int tag : tags) set(tag);
    }
    qnProperty* set(int tag) {
        qnProperty* property = new qnProperty(static_cast<unsigned short>(tag), static_cast<long>(tag));
        setProperty(property);
        return property;
    }
};

/** The index that a search for `tag` reports. */
unsigned probed(const qnObj& object, int tag) {
    unsigned index = UINT_MAX;
    object.findProperty(static_cast<unsigned short>(tag), &index);
    return index;
}

/** The indices that the searches for several tags report; each of them must miss. */
std::vector<unsigned> misses(const qnObj& object, std::initializer_list<int> tags) {
    std::vector<unsigned> result;
    for (int tag : tags) {
        EXPECT_EQ(nullptr, object.findProperty(static_cast<unsigned short>(tag), nullptr)) << tag;
        result.push_back(probed(object, tag));
    }
    return result;
}

// Finding

TEST_F(PropertyList, OfANewObjectIsEmpty) {
    qnObj object;
    EXPECT_EQ(0u, object.getNumberOfProperties());
    EXPECT_EQ(nullptr, object.getProperty(0));
    EXPECT_EQ(nullptr, object.getProperty(1000)) << "without a list any index gives null";
    unsigned index = 77;
    EXPECT_EQ(nullptr, object.findProperty(static_cast<unsigned short>(3), &index));
    EXPECT_EQ(0u, index);
    EXPECT_EQ(nullptr, object.findProperty(static_cast<unsigned short>(3), nullptr));
}

TEST_F(PropertyList, IsInOrderOfTags) {
    Tagged object({5, 1, 3});
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 3, 5));
    EXPECT_EQ(1, object.getProperty(0)->getTag());
    EXPECT_EQ(3u, object.getNumberOfProperties());
}

TEST_F(PropertyList, EveryOrderOfSettingGivesTheSameList) {
    std::vector<int> tags = {0, 2, 500, 65534, 65535};
    do {
        Tagged object({});
        for (int tag : tags) object.set(tag);
        ASSERT_THAT(tagsOf(object), ElementsAre(0, 2, 500, 65534, 65535));
        for (unsigned i = 0; i < 5; ++i) ASSERT_EQ(i, probed(object, object.getProperty(i)->getTag()));
    } while (std::next_permutation(tags.begin(), tags.end()));
}

TEST_F(PropertyList, FindingReportsTheIndex) {
    Tagged object({10, 20, 30, 40, 50});
    for (int i = 0; i < 5; ++i) {
        unsigned index = 77;
        qnProperty* found = object.findProperty(static_cast<unsigned short>(10 * (i + 1)), &index);
        ASSERT_NE(nullptr, found);
        EXPECT_EQ(10 * (i + 1), found->getAsLong());
        EXPECT_EQ(static_cast<unsigned>(i), index);
    }
}

// A miss reports the place that was probed last. Worked out by hand: the probes are in the middle, rounded down.

TEST_F(PropertyList, AMissAmongOne) { EXPECT_THAT(misses(Tagged({10}), {5, 15}), ElementsAre(0, 0)); }

TEST_F(PropertyList, AMissAmongTwo) {
    // 5: 0. 15: 0, 1. 25: 0, 1.
    EXPECT_THAT(misses(Tagged({10, 20}), {5, 15, 25}), ElementsAre(0, 1, 1));
}

TEST_F(PropertyList, AMissAmongThree) {
    // 5: 1, 0. 15: 1, 0. 25: 1, 2. 35: 1, 2.
    EXPECT_THAT(misses(Tagged({10, 20, 30}), {5, 15, 25, 35}), ElementsAre(0, 0, 2, 2));
}

TEST_F(PropertyList, AMissAmongFour) {
    // 5: 1, 0. 15: 1, 0. 25: 1, 2. 35: 1, 2, 3. 45: 1, 2, 3.
    EXPECT_THAT(misses(Tagged({10, 20, 30, 40}), {5, 15, 25, 35, 45}), ElementsAre(0, 0, 2, 3, 3));
}

TEST_F(PropertyList, AMissAmongFive) {
    // 5: 2, 0. 15: 2, 0, 1. 25: 2, 0, 1. 35: 2, 3. 45: 2, 3, 4. 55: 2, 3, 4.
    EXPECT_THAT(misses(Tagged({10, 20, 30, 40, 50}), {5, 15, 25, 35, 45, 55}), ElementsAre(0, 1, 1, 3, 4, 4));
}

TEST_F(PropertyList, AMissAmongSeven) {
    // 5: 3, 1, 0. 15: 3, 1, 0. 25: 3, 1, 2. 35: 3, 1, 2. 45: 3, 5, 4. 55: 3, 5, 4. 65: 3, 5, 6. 75: 3, 5, 6.
    EXPECT_THAT(misses(Tagged({10, 20, 30, 40, 50, 60, 70}), {5, 15, 25, 35, 45, 55, 65, 75}),
                ElementsAre(0, 0, 2, 2, 4, 4, 6, 6));
}

TEST_F(PropertyList, FindingByName) {
    const unsigned short lower = qnProperty::allocNewTag("list-lower");
    const unsigned short tag = qnProperty::allocNewTag("list-by-name");
    Tagged object({lower, tag});
    unsigned index = 77;
    EXPECT_EQ(object.getProperty(1), object.findProperty("list-by-name", &index));
    EXPECT_EQ(1u, index);
    EXPECT_EQ(object.getProperty(1), object.findProperty("list-by-name", nullptr));
}

TEST_F(PropertyList, FindingByNameWithoutAListReportsIndexZero) {
    qnProperty::allocNewTag("list-none");
    qnObj object;
    for (const char* name : {"list-none", "list-unknown"}) {
        unsigned index = 77;
        EXPECT_EQ(nullptr, object.findProperty(name, &index)) << name;
        EXPECT_EQ(0u, index) << name;
        EXPECT_EQ(nullptr, object.findProperty(name, nullptr)) << name;
    }
}

TEST_F(PropertyList, FindingByANameWithoutATagReportsIndexZero) {
    Tagged object({1, 2, 3, 65535});
    unsigned index = 77;
    EXPECT_EQ(nullptr, object.findProperty("list-unknown", &index)) << "and does not look for tag 65535";
    EXPECT_EQ(0u, index);
    EXPECT_EQ(nullptr, object.findProperty("list-unknown", nullptr));
}

TEST_F(PropertyList, FindingByTheNameOfAPropertyThatIsNotSetReportsTheLastProbe) {
    const unsigned short tag = qnProperty::allocNewTag("list-not-set");
    Tagged object({});
    object.set(65530);
    object.set(65531);
    object.set(65532);
    ASSERT_LT(tag, 65530);
    unsigned index = 77;
    EXPECT_EQ(nullptr, object.findProperty("list-not-set", &index));
    EXPECT_EQ(0u, index) << "1, then 0";
}

// Setting and removing

TEST_F(PropertyList, SettingHoldsTheProperty) {
    qnObj object;
    qnProperty* p = new qnProperty(3, 1L);
    EXPECT_EQ(&object, object.setProperty(p));
    EXPECT_EQ(1u, p->refCount);
    EXPECT_EQ(p, object.getProperty(0));
}

void note(void* notes) { *static_cast<std::string*>(notes) += 'r'; }

TEST_F(PropertyList, SettingATagAgainReleasesTheFirst) {
    std::string notes;
    Tagged object({1, 5});
    object.setProperty(new qnProperty(3, &notes, note));
    object.setProperty(new qnProperty(3, strdup("owned"), 1));
    EXPECT_EQ("r", notes);
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 3, 5));
    EXPECT_STREQ("owned", object.getProperty(1)->getAsCharPtr());
    object.set(3);  // frees the text
    EXPECT_EQ(3, object.getProperty(1)->getAsLong());
}

TEST_F(PropertyList, SettingATagAgainLeavesAFirstThatSomebodyHolds) {
    Tagged object({});
    qnProperty* first = object.set(3);
    qnRetain(first);
    object.set(3);
    EXPECT_EQ(1u, first->refCount);
    EXPECT_EQ(3, first->getAsLong());
    EXPECT_TRUE(qnRelease(first));
}

TEST_F(PropertyList, APropertyMayBeSetOnSeveralObjects) {
    std::string notes;
    qnProperty* p = new qnProperty(3, &notes, note);
    {
        qnObj a;
        {
            qnObj b;
            a.setProperty(p);
            b.setProperty(p);
            EXPECT_EQ(2u, p->refCount);
        }
        EXPECT_EQ(1u, p->refCount);
        EXPECT_EQ("", notes);
    }
    EXPECT_EQ("r", notes);
}

TEST_F(PropertyList, APropertyThatTheObjectAloneHoldsMayBeSetAgain) {
    std::string notes;
    {
        Tagged object({1, 5});
        qnProperty* p = new qnProperty(3, &notes, note);
        object.setProperty(p)->setProperty(p)->setProperty(p);
        EXPECT_EQ("", notes);
        EXPECT_EQ(1u, p->refCount);
        EXPECT_THAT(tagsOf(object), ElementsAre(1, 3, 5));
    }
    EXPECT_EQ("r", notes);
}

TEST_F(PropertyList, RemovingByTag) {
    std::string notes;
    Tagged object({1, 5});
    object.setProperty(new qnProperty(3, &notes, note));
    EXPECT_EQ(&object, object.removeProperty(static_cast<unsigned short>(3)));
    EXPECT_EQ("r", notes);
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 5));
    EXPECT_EQ(&object, object.removeProperty(static_cast<unsigned short>(3)));
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 5));
    object.removeProperty(static_cast<unsigned short>(1))->removeProperty(static_cast<unsigned short>(5));
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyList, RemovingWhatSomebodyHoldsTakesOneCount) {
    Tagged object({});
    qnProperty* p = object.set(3);
    qnRetain(p);
    object.removeProperty(static_cast<unsigned short>(3));
    EXPECT_EQ(1u, p->refCount);
    qnRelease(p);
}

TEST_F(PropertyList, RemovingByName) {
    const unsigned short other = qnProperty::allocNewTag("list-kept");
    const unsigned short tag = qnProperty::allocNewTag("list-removed");
    Tagged object({other, tag});
    EXPECT_EQ(&object, object.removeProperty("list-removed"));
    EXPECT_THAT(tagsOf(object), ElementsAre(other));
}

TEST_F(PropertyList, RemovingAnUnknownNameChangesNothing) {
    Tagged object({1, 2});
    EXPECT_EQ(&object, object.removeProperty("list-unknown"));
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 2));
    qnObj none;
    EXPECT_EQ(&none, none.removeProperty("list-unknown"));
}

TEST_F(PropertyList, RemovingAnUnknownNameRemovesTag65535) {
    Tagged object({1, 65535});
    object.removeProperty("list-unknown");
    EXPECT_THAT(tagsOf(object), ElementsAre(1)) << "the answer \"no tag\" is looked for like any other";
}

TEST_F(PropertyList, RemovingAllReleasesInOrderOfTags) {
    struct Numbered {
        static void release(void* p) {
            Numbered* self = static_cast<Numbered*>(p);
            *self->notes += std::to_string(self->number);
        }
        std::string* notes;
        int number;
    };
    std::string notes;
    Numbered n[3] = {{&notes, 1}, {&notes, 2}, {&notes, 3}};
    {
        qnObj object;
        object.setProperty(new qnProperty(30, &n[2], Numbered::release));
        object.setProperty(new qnProperty(10, &n[0], Numbered::release));
        object.setProperty(new qnProperty(20, &n[1], Numbered::release));
        EXPECT_EQ(&object, object.removeAllProperties());
        EXPECT_EQ("123", notes);
        EXPECT_EQ(0u, object.getNumberOfProperties());

        object.setProperty(new qnProperty(20, &n[1], Numbered::release));
        object.setProperty(new qnProperty(10, &n[0], Numbered::release));
    }
    EXPECT_EQ("12312", notes) << "the destructor does the same";
}

TEST_F(PropertyList, RemovingAllOfNoneDoesNothing) {
    qnObj object;
    EXPECT_EQ(&object, object.removeAllProperties());
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyList, AnEmptiedListTakesPropertiesAgain) {
    Tagged object({1, 2, 3});
    object.removeAllProperties();
    EXPECT_EQ(0u, probed(object, 2));
    EXPECT_EQ(nullptr, object.findProperty(static_cast<unsigned short>(2), nullptr));
    object.set(2);
    EXPECT_THAT(tagsOf(object), ElementsAre(2));
    object.set(1);
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 2));
}

TEST_F(PropertyList, AListEmptiedOneByOneTakesPropertiesAgain) {
    Tagged object({7});
    object.removeProperty(static_cast<unsigned short>(7));
    object.set(9);
    object.set(8);
    EXPECT_THAT(tagsOf(object), ElementsAre(8, 9));
}

TEST_F(PropertyList, CopyingAnObjectCopiesNoProperties) {
    Tagged object({1, 2});
    Tagged copy(object);
    EXPECT_EQ(0u, copy.getNumberOfProperties());
    Tagged target({3});
    static_cast<qnObj&>(target) = object;
    EXPECT_THAT(tagsOf(target), ElementsAre(3));
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 2));
}

}  // namespace PropertyListTest
