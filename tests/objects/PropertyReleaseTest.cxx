// Release functions, and destructors of objects that properties hold, that look at the list that their property is in
// or was in, and that change it: a property has left its place before it is let go of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Obj.h"
#include "OrderedGlobal.h"
#include "objects/PropertyTags.h"

namespace PropertyReleaseTest {

using testing::ElementsAre;

class PropertyRelease : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }

    void TearDown() override { EXPECT_EQ(0, attached_) << "each release function is called exactly once"; }

    /** A property whose release does `work`; the property is released exactly once in each test. */
    qnProperty* property(int tag, std::function<void()> work) {
        ++attached_;
        return new qnProperty(static_cast<unsigned short>(tag), new Work{this, work}, perform);
    }
    /** A property whose release adds its tag to the notes. */
    qnProperty* noted(int tag) {
        return property(tag, [this, tag] { notes += std::to_string(tag); });
    }

    std::string notes;

private:
    struct Work {
        PropertyRelease* test;
        std::function<void()> function;
    };
    static void perform(void* pointer) {
        Work* work = static_cast<Work*>(pointer);
        --work->test->attached_;
        work->function();
        delete work;
    }

    int attached_ = 0;
};

unsigned short tag(int number) { return static_cast<unsigned short>(number); }

TEST_F(PropertyRelease, OfAReplacedPropertySeesTheNewOne) {
    qnObj object;
    qnProperty* replacement = noted(3);
    object.setProperty(property(3, [&] {
        EXPECT_EQ(replacement, object.findProperty(tag(3), nullptr));
        EXPECT_EQ(replacement, object.getProperty(0));
        EXPECT_EQ(1u, object.getNumberOfProperties());
    }));
    object.setProperty(replacement);
    EXPECT_EQ("", notes);
    EXPECT_EQ(1u, replacement->refCount);
}

TEST_F(PropertyRelease, OfARemovedPropertySeesTheListWithoutIt) {
    qnObj object;
    object.setProperty(noted(1));
    object.setProperty(property(3, [&] {
        EXPECT_EQ(nullptr, object.findProperty(tag(3), nullptr));
        EXPECT_THAT(tagsOf(object), ElementsAre(1, 5));
    }));
    object.setProperty(noted(5));
    object.removeProperty(tag(3));
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 5));
}

TEST_F(PropertyRelease, WhileAllAreRemovedSeesTheCountAndClearedPlaces) {
    qnObj object;
    object.setProperty(noted(1));
    object.setProperty(property(3, [&] {
        EXPECT_EQ(4u, object.getNumberOfProperties()) << "the count stays to the end";
        EXPECT_THAT(tagsOf(object), ElementsAre(-1, -1, 5, 7));
        EXPECT_EQ(nullptr, object.findProperty(tag(1), nullptr));
        EXPECT_EQ(nullptr, object.findProperty(tag(3), nullptr));
        EXPECT_EQ(object.getProperty(2), object.findProperty(tag(5), nullptr));
        EXPECT_EQ(object.getProperty(3), object.findProperty(tag(7), nullptr));
        EXPECT_EQ(nullptr, object.findProperty(tag(6), nullptr));
        EXPECT_EQ(nullptr, object.findProperty(tag(9), nullptr));
        notes += '3';
    }));
    object.setProperty(noted(5));
    object.setProperty(noted(7));
    object.removeAllProperties();
    EXPECT_EQ("1357", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyRelease, WhileAllAreRemovedMayRemoveOthers) {
    qnObj object;
    object.setProperty(property(1, [&] {
        object.removeProperty(tag(3));
        object.removeProperty(tag(1));
        notes += '1';
    }));
    object.setProperty(noted(2));
    object.setProperty(noted(3));
    object.setProperty(noted(4));
    object.removeAllProperties();
    EXPECT_EQ("3124", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyRelease, WhileAllAreRemovedMayRemoveThemAll) {
    qnObj object;
    object.setProperty(noted(1));
    object.setProperty(property(2, [&] {
        object.removeAllProperties();
        notes += '2';
    }));
    object.setProperty(noted(3));
    object.removeAllProperties();
    EXPECT_EQ("132", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyRelease, WhileAllAreRemovedMaySetOthersWhichGoToo) {
    const int additions[] = {1, 2, 3, 4, 5, 9};
    for (int addition : additions) {
        notes.clear();
        qnObj object;
        object.setProperty(noted(2));
        object.setProperty(property(3, [&] { object.setProperty(noted(addition)); }));
        object.setProperty(noted(4));
        object.removeAllProperties();
        EXPECT_EQ(0u, object.getNumberOfProperties());
        EXPECT_EQ(3u, notes.size()) << notes;
        EXPECT_NE(std::string::npos, notes.find(std::to_string(addition)));
        object.setProperty(noted(6));
        EXPECT_THAT(tagsOf(object), ElementsAre(6));
    }
}

TEST_F(PropertyRelease, WhileAllAreRemovedMayReplaceOneThatWaits) {
    qnObj object;
    object.setProperty(property(1, [&] { object.setProperty(noted(2)); }));
    object.setProperty(noted(2));
    object.removeAllProperties();
    EXPECT_EQ("22", notes);
}

TEST_F(PropertyRelease, WhenItsObjectGoesMaySetOthersWhichGoToo) {
    qnObj* object = new qnObj;
    object->setProperty(property(3, [&] { object->setProperty(noted(1)); }));
    delete object;
    EXPECT_EQ("1", notes);
}

TEST_F(PropertyRelease, OfAReplacedPropertyMayRemoveTheNewOne) {
    qnObj object;
    object.setProperty(property(3, [&] { object.removeProperty(tag(3)); }));
    EXPECT_EQ(&object, object.setProperty(noted(3)));
    EXPECT_EQ("3", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyRelease, OfAReplacedPropertyMayReplaceTheNewOne) {
    qnObj object;
    object.setProperty(property(3, [&] {
        object.setProperty(new qnProperty(3, 33L));
        object.setProperty(new qnProperty(1, 11L));
    }));
    object.setProperty(noted(3));
    EXPECT_EQ("3", notes);
    EXPECT_THAT(tagsOf(object), ElementsAre(1, 3));
    EXPECT_EQ(33, object.getProperty(1)->getAsLong());
}

TEST_F(PropertyRelease, OfARemovedPropertyMaySetTheTagAgain) {
    qnObj object;
    object.setProperty(property(3, [&] { object.setProperty(new qnProperty(3, 33L)); }));
    object.removeProperty(tag(3));
    EXPECT_THAT(tagsOf(object), ElementsAre(3));
}

TEST_F(PropertyRelease, OfARemovedOrReplacedPropertyMayRemoveThemAll) {
    qnObj object;
    const auto removeAll = [&] { object.removeAllProperties(); };
    object.setProperty(noted(1));
    object.setProperty(property(2, removeAll));
    object.setProperty(noted(3));
    object.removeProperty(tag(2));
    EXPECT_EQ("13", notes);

    object.setProperty(noted(1));
    object.setProperty(property(2, removeAll));
    object.setProperty(noted(2));
    EXPECT_EQ("1312", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
}

TEST_F(PropertyRelease, MayDestroyTheObject) {
    qnObj* object = new qnObj;
    const auto destroy = [&] {
        delete object;
        notes += 'd';
    };
    object->setProperty(noted(1))->setProperty(property(2, destroy))->setProperty(noted(3));
    object->removeProperty(tag(2));
    EXPECT_EQ("13d", notes);

    object = new qnObj;
    notes.clear();
    object->setProperty(noted(1))->setProperty(property(2, destroy))->setProperty(noted(3));
    object->setProperty(noted(2));
    EXPECT_EQ("123d", notes);
}

TEST_F(PropertyRelease, WhileAllAreRemovedMayDestroyTheObject) {
    qnObj* object = new qnObj;
    object->setProperty(noted(1));
    object->setProperty(property(2, [&] {
        delete object;
        notes += 'd';
    }));
    object->setProperty(noted(3));
    object->removeAllProperties();
    EXPECT_EQ("13d", notes);
}

/** An object that looks at its holder's list when it goes. */
struct Looker : qnObj {
    explicit Looker(qnObj& holder) : holder_(holder) {}
    ~Looker() override { EXPECT_EQ(nullptr, holder_.findProperty(tag(3), nullptr)); }
    qnObj& holder_;
};

TEST_F(PropertyRelease, TheDestructorOfAHeldObjectSeesTheListWithoutIt) {
    qnObj holder;
    holder.setProperty(new qnProperty(tag(3), new Looker(holder)));
    holder.removeProperty(tag(3));
    holder.setProperty(new qnProperty(tag(3), new Looker(holder)));
    holder.removeAllProperties();
    holder.setProperty(new qnProperty(tag(3), new Looker(holder)));
}

}  // namespace PropertyReleaseTest
