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

TEST_F(PropertyRelease, OfASetPointerMayRemoveTheProperty) {
    qnObj object;
    object.setProperty(property(4, [&] {
        object.removeProperty(tag(4));
        notes += 'r';
    }));
    static int released;
    released = 0;
    int value = 0;
    object.findProperty(tag(4), nullptr)->setAsVoidPtr(&value, [](void* pointer) {
        EXPECT_EQ(0, *static_cast<int*>(pointer));
        ++released;
    });
    EXPECT_EQ("r", notes);
    EXPECT_EQ(0u, object.getNumberOfProperties());
    EXPECT_EQ(1, released) << "there is no property to own the new pointer";
}

// Objects that hold each other.

/** An object that notes its end. */
struct Noter : qnObj {
    Noter(std::string& ends, char name) : ends_(ends), name_(name) {}
    ~Noter() override { ends_ += name_; }
    std::string& ends_;
    char name_;
};

qnProperty* holding(int number, qnObj* object) { return new qnProperty(tag(number), object); }

TEST_F(PropertyRelease, OfAnObjectThatHoldsItselfDestroysItOnce) {
    Noter* object = new Noter(notes, 'a');
    object->setProperty(holding(1, object));
    delete object;
    EXPECT_EQ("a", notes);
}

TEST_F(PropertyRelease, OfObjectsThatHoldEachOtherDestroysEachOnce) {
    Noter* a = new Noter(notes, 'a');
    Noter* b = new Noter(notes, 'b');
    a->setProperty(holding(1, b));
    b->setProperty(holding(1, a));
    delete a;
    EXPECT_EQ("ab", notes);
}

TEST_F(PropertyRelease, OfAnObjectThatStillHasAHolderLeavesThatHoldersCountAlone) {
    Noter* object = new Noter(notes, 'a');
    qnObj other;
    object->setProperty(holding(1, &other))->setProperty(holding(2, object));
    qnRetain(&other);
    delete object;
    EXPECT_EQ(1u, other.refCount);
    EXPECT_EQ("a", notes);
}

TEST_F(PropertyRelease, OfAChainOfObjectsGoesDownTheChain) {
    Noter* chain = nullptr;
    for (char name = 'z'; name >= 'a'; --name) {
        Noter* object = new Noter(notes, name);
        object->setProperty(holding(1, chain));
        chain = object;
    }
    delete chain;
    EXPECT_EQ("abcdefghijklmnopqrstuvwxyz", notes);
}

TEST_F(PropertyRelease, OfAChainOfAMillionObjectsTakesLittleStack) {
    static int ends;
    ends = 0;
    struct Counter : qnObj {
        ~Counter() override { ++ends; }
    };
    const int n = 1000000;
    qnObj* chain = nullptr;
    for (int i = 0; i < n; ++i) {
        qnObj* object = new Counter;
        object->setProperty(holding(1, chain));
        chain = object;
    }
    delete chain;
    EXPECT_EQ(n, ends);
}

TEST_F(PropertyRelease, FarDownAChainStillReleasesInTheOrderOfTags) {
    qnObj* chain = new qnObj;
    for (int i = 1; i <= 9; ++i) chain->setProperty(holding(i, new Noter(notes, static_cast<char>('0' + i))));
    for (int i = 0; i < 300; ++i) {
        qnObj* object = new qnObj;
        object->setProperty(holding(1, chain));
        chain = object;
    }
    delete chain;
    EXPECT_EQ("123456789", notes);
}

TEST_F(PropertyRelease, OfAReplacedObjectMayRemoveThePropertyThatHeldIt) {
    /** An object that, when it goes, removes the property that held it. */
    struct Remover : qnObj {
        explicit Remover(qnObj& holder) : holder_(holder) {}
        ~Remover() override { holder_.removeProperty(tag(3)); }
        qnObj& holder_;
    };
    qnObj holder;
    Noter* next = new Noter(notes, 'n');
    qnProperty* property = new qnProperty(tag(3), new Remover(holder));
    holder.setProperty(property);
    property->setAsObjPtr(next);
    EXPECT_EQ("n", notes) << "it went with the property";
    EXPECT_EQ(0u, holder.getNumberOfProperties());
}

TEST_F(PropertyRelease, OfAReplacedBoxMayRemoveThePropertyThatHeldIt) {
    /** A box that, when it goes, removes the property that held it. */
    struct Remover : qnIntData {
        explicit Remover(qnObj& holder) : qnIntData(1), holder_(holder) {}
        ~Remover() override { holder_.removeProperty(tag(3)); }
        qnObj& holder_;
    };
    qnObj holder;
    qnProperty* property = new qnProperty(tag(3), new Remover(holder));
    holder.setProperty(property);
    property->setAsData(new qnIntData(2));
    EXPECT_EQ(0u, holder.getNumberOfProperties());
}

}  // namespace PropertyReleaseTest
