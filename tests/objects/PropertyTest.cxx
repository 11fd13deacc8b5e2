// One property: its eight kinds, what each owns or holds, and when it lets go. Tags and their names are in
// PropertyTagTest, properties of objects in PropertyListTest.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "Obj.h"
#include "OrderedGlobal.h"
#include "Property.h"

namespace PropertyTest {

static_assert(std::has_virtual_destructor<qnProperty>::value, "");
static_assert(!std::is_base_of<qnRCObj, qnProperty>::value, "a property is not serialisable");
static_assert(std::is_same<decltype(qnProperty::refCount), unsigned>::value, "");
static_assert(qnProperty::NoTag == 65535, "");

#ifdef __i386__
static_assert(sizeof(qnProperty) == 20, "virtual functions, count, tag and type, a value of two words");
#endif

// There is no kind for an int.
static_assert(!std::is_constructible<qnProperty, unsigned short, int>::value, "");
static_assert(!std::is_constructible<qnProperty, unsigned short, unsigned>::value, "");

class Property : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

/** An object that notes its destruction. */
struct Noted : qnObj {
    Noted(std::string& notes, char letter) : notes_(notes), letter_(letter) {}
    ~Noted() override { notes_ += letter_; }
    std::string& notes_;
    char letter_;
};

/** A box that notes its destruction. */
struct NotedBox : qnIntData {
    NotedBox(std::string& notes, char letter) : qnIntData(1), notes_(notes), letter_(letter) {}
    ~NotedBox() override { notes_ += letter_; }
    std::string& notes_;
    char letter_;
};

std::vector<void*> released;
void noteRelease(void* pointer) { released.push_back(pointer); }
void noteOtherRelease(void* pointer) {
    released.push_back(nullptr);
    released.push_back(pointer);
}

TEST_F(Property, IsBornWithItsTagAndNobodyHoldsIt) {
    qnProperty p(1234, 1L);
    EXPECT_EQ(1234, p.getTag());
    EXPECT_EQ(0u, p.refCount);
    EXPECT_EQ(0, qnProperty(0, 1.0).getTag());
    EXPECT_EQ(65535, qnProperty(65535, 1.0).getTag());
}

TEST_F(Property, RecordsTheTypeOfItsKind) {
    EXPECT_EQ(qnDT_qnBool, qnProperty(1, static_cast<qnBool>(1)).getType());
    EXPECT_EQ(qnDT_long, qnProperty(1, 1L).getType());
    EXPECT_EQ(qnDT_double, qnProperty(1, 1.0).getType());
    EXPECT_EQ(qnDT_double, qnProperty(1, 1.0f).getType()) << "there is no kind for a float";
    EXPECT_EQ(qnDT_CharPtr, qnProperty(1, "text", 0).getType());
    EXPECT_EQ(qnDT_qnStr, qnProperty(1, qnStr("text")).getType());
    int target = 0;
    EXPECT_EQ(qnDT_VoidPtr, qnProperty(1, &target, nullptr).getType());
    EXPECT_EQ(qnDT_ObjPtr, qnProperty(1, static_cast<qnObj*>(nullptr)).getType());
    EXPECT_EQ(qnDT_DataPtr, qnProperty(1, static_cast<qnData*>(nullptr)).getType());
}

TEST_F(Property, OfABoxAnswersWithTheTypeOfTheBox) {
    EXPECT_EQ(qnDT_double, qnProperty(1, new qnDoubleData(1)).getType());
    EXPECT_EQ(qnDT_void, qnProperty(1, new qnVoidData).getType());
    qnProperty p(1, new qnIntData(1));
    EXPECT_EQ(qnDT_int, p.getType());
    p.setAsData(new qnFloatData(1));
    EXPECT_EQ(qnDT_float, p.getType());
    p.setAsData(nullptr);
    EXPECT_EQ(qnDT_DataPtr, p.getType());
}

TEST_F(Property, OfABoolean) {
    qnProperty p(1, static_cast<qnBool>(1));
    EXPECT_EQ(1, p.getAsBool());
    p.setAsBool(0);
    EXPECT_EQ(0, p.getAsBool());
    p.setAsBool(255);
    EXPECT_EQ(255, p.getAsBool()) << "the byte as it is";
    p.cleanup();
    EXPECT_EQ(255, p.getAsBool()) << "nothing to clean up";
    EXPECT_EQ(qnDT_qnBool, p.getType());
}

TEST_F(Property, OfALong) {
    qnProperty p(1, LONG_MIN);
    EXPECT_EQ(LONG_MIN, p.getAsLong());
    p.setAsLong(LONG_MAX);
    EXPECT_EQ(LONG_MAX, p.getAsLong());
    p.cleanup();
    EXPECT_EQ(LONG_MAX, p.getAsLong());
    EXPECT_EQ(qnDT_long, p.getType());
}

TEST_F(Property, OfADouble) {
    qnProperty p(1, 0.1);
    EXPECT_EQ(0.1, p.getAsDouble());
    p.setAsDouble(-1e300);
    EXPECT_EQ(-1e300, p.getAsDouble());
    p.cleanup();
    EXPECT_EQ(-1e300, p.getAsDouble());
    EXPECT_EQ(qnDT_double, p.getType());
}

TEST_F(Property, OfTextKeepsThePointerItself) {
    char text[] = "text";
    qnProperty p(1, text, 0);
    EXPECT_EQ(text, p.getAsCharPtr());
    text[0] = 'n';
    EXPECT_STREQ("next", p.getAsCharPtr());
}

TEST_F(Property, OfTextLeavesTextThatIsNotOwned) {
    char first[] = "first", second[] = "second";
    {
        qnProperty p(1, first, 0);
        p.setAsCharPtr(second, 0);
        EXPECT_EQ(second, p.getAsCharPtr());
        p.cleanup();
    }
    EXPECT_STREQ("first", first);
    EXPECT_STREQ("second", second);
}

TEST_F(Property, OfTextFreesWhatItOwns) {
    // The leak checker watches each of these.
    { qnProperty p(1, strdup("freed by the destructor"), 1); }
    qnProperty p(1, strdup("freed by the setter"), 1);
    p.setAsCharPtr("not owned", 0);
    EXPECT_STREQ("not owned", p.getAsCharPtr());
    p.setAsCharPtr(strdup("freed by the next setter"), 1);
    p.setAsCharPtr(strdup("freed by cleanup, and not again by the destructor"), 255);
    EXPECT_STREQ("freed by cleanup, and not again by the destructor", p.getAsCharPtr());
    p.cleanup();
    p.cleanup();
    EXPECT_EQ(qnDT_CharPtr, p.getType());
}

TEST_F(Property, OfTextMayBeNull) {
    qnProperty owned(1, static_cast<const char*>(nullptr), 1);
    EXPECT_EQ(nullptr, owned.getAsCharPtr());
    owned.setAsCharPtr(nullptr, 1);
    EXPECT_EQ(nullptr, owned.getAsCharPtr());
}

TEST_F(Property, OfTextMayBeSetToTheTextThatItOwns) {
    char* text = strdup("text");
    qnProperty p(1, text, 1);
    p.setAsCharPtr(p.getAsCharPtr(), 1);
    EXPECT_STREQ("text", p.getAsCharPtr());
}

TEST_F(Property, OfTextMayGiveItsTextAway) {
    char* text = strdup("text");
    {
        qnProperty p(1, text, 1);
        p.setAsCharPtr(text, 0);
    }
    EXPECT_STREQ("text", text);
    std::free(text);
}

TEST_F(Property, OfAStringOwnsACopy) {
    qnStr original("first");
    qnProperty p(1, original);
    original = "changed";
    EXPECT_STREQ("first", p.getAsStr().text());
    EXPECT_NE(&original, &p.getAsStr());

    const qnStr* held = &p.getAsStr();
    qnStr second("second");
    p.setAsStr(second);
    second = "changed";
    EXPECT_STREQ("second", p.getAsStr().text());
    EXPECT_EQ(held, &p.getAsStr()) << "assigned to the string that it owns";
    EXPECT_EQ(qnDT_qnStr, p.getType());
}

TEST_F(Property, OfAStringMayBeSetToItsOwnString) {
    qnProperty p(1, qnStr("text"));
    p.setAsStr(p.getAsStr());
    EXPECT_STREQ("text", p.getAsStr().text());
}

TEST_F(Property, OfAStringIsEmptyAfterCleanupAndCanBeSetAgain) {
    qnProperty p(1, qnStr("text"));
    p.cleanup();
    EXPECT_STREQ("", p.getAsStr().text());
    p.cleanup();
    p.setAsStr(qnStr("again"));
    EXPECT_STREQ("again", p.getAsStr().text());
}

TEST_F(Property, OfAPointerCallsItsReleaseFunctionOnce) {
    int target = 0;
    released.clear();
    {
        qnProperty p(1, &target, noteRelease);
        EXPECT_EQ(&target, p.getAsVoidPtr());
        EXPECT_TRUE(released.empty());
    }
    EXPECT_EQ(std::vector<void*>{&target}, released);

    released.clear();
    {
        qnProperty p(1, &target, noteRelease);
        p.cleanup();
        EXPECT_EQ(std::vector<void*>{&target}, released);
    }
    EXPECT_EQ(1u, released.size()) << "after cleanup there is nothing left to release";
}

TEST_F(Property, OfAPointerWithoutAReleaseFunctionReleasesNothing) {
    int target = 0;
    released.clear();
    qnProperty p(1, &target, nullptr);
    p.setAsVoidPtr(&released, nullptr);
    EXPECT_EQ(&released, p.getAsVoidPtr());
    p.cleanup();
    EXPECT_TRUE(released.empty());
}

TEST_F(Property, OfANullPointerStillCallsItsReleaseFunction) {
    released.clear();
    { qnProperty p(1, static_cast<void*>(nullptr), noteRelease); }
    EXPECT_EQ(std::vector<void*>{nullptr}, released);
}

TEST_F(Property, SettingAPointerCallsTheCurrentReleaseFunctionFirst) {
    int first = 0, second = 0;
    released.clear();
    {
        qnProperty p(1, &first, noteRelease);
        p.setAsVoidPtr(&second, noteOtherRelease);
        EXPECT_EQ(std::vector<void*>{&first}, released) << "the current one, on the current pointer";
        EXPECT_EQ(&second, p.getAsVoidPtr());
        released.clear();
    }
    EXPECT_EQ((std::vector<void*>{nullptr, &second}), released);
}

TEST_F(Property, SettingTheSamePointerReleasesItToo) {
    int target = 0;
    released.clear();
    qnProperty p(1, &target, noteRelease);
    p.setAsVoidPtr(&target, nullptr);
    EXPECT_EQ(std::vector<void*>{&target}, released);
    EXPECT_EQ(&target, p.getAsVoidPtr());
}

qnProperty* watched;
void lookBack(void* pointer) {
    released.push_back(pointer);
    released.push_back(watched->getAsVoidPtr());
}

TEST_F(Property, AReleaseFunctionSeesThePropertyBeforeItsNewValue) {
    int first = 0, second = 0;
    qnProperty p(1, &first, lookBack);
    watched = &p;
    released.clear();
    p.setAsVoidPtr(&second, nullptr);
    EXPECT_EQ((std::vector<void*>{&first, &first}), released);
}

int third;
void setAgain(void* pointer) {
    released.push_back(pointer);
    watched->setAsVoidPtr(&third, nullptr);
}

TEST_F(Property, AReleaseFunctionThatSetsTheValueIsNotCalledForItTwice) {
    int first = 0, second = 0;
    released.clear();
    {
        qnProperty p(1, &first, setAgain);
        watched = &p;
        p.setAsVoidPtr(&second, nullptr);
        EXPECT_EQ(&second, p.getAsVoidPtr()) << "what the outer call sets comes last";
    }
    EXPECT_EQ(std::vector<void*>{&first}, released);
}

TEST_F(Property, OfAnObjectHoldsIt) {
    std::string notes;
    Noted* a = new Noted(notes, 'a');
    Noted* b = new Noted(notes, 'b');
    qnRetain(b);
    {
        qnProperty p(1, a);
        EXPECT_EQ(a, p.getAsObjPtr());
        EXPECT_EQ(1u, a->refCount);
        p.setAsObjPtr(b);
        EXPECT_EQ("a", notes) << "the last holder destroys it";
        EXPECT_EQ(b, p.getAsObjPtr());
        EXPECT_EQ(2u, b->refCount);
        EXPECT_EQ(qnDT_ObjPtr, p.getType());
    }
    EXPECT_EQ("a", notes);
    EXPECT_EQ(1u, b->refCount);
    qnRelease(b);
}

TEST_F(Property, OfAnObjectLetsGoOnceInCleanup) {
    std::string notes;
    Noted* a = new Noted(notes, 'a');
    qnRetain(a);
    {
        qnProperty p(1, a);
        p.cleanup();
        EXPECT_EQ(1u, a->refCount);
        EXPECT_EQ(nullptr, p.getAsObjPtr());
    }
    EXPECT_EQ(1u, a->refCount);
    qnRelease(a);
    EXPECT_EQ("a", notes);
}

TEST_F(Property, OfAnObjectMayBeSetToTheOneThatItAloneHolds) {
    std::string notes;
    {
        qnProperty p(1, new Noted(notes, 'a'));
        p.setAsObjPtr(p.getAsObjPtr());
        EXPECT_EQ("", notes);
        EXPECT_EQ(1u, p.getAsObjPtr()->refCount);
    }
    EXPECT_EQ("a", notes);
}

TEST_F(Property, OfAnObjectMayBeSetToOneThatThePresentOneHolds) {
    std::string notes;
    {
        Noted* outer = new Noted(notes, 'o');
        Noted* inner = new Noted(notes, 'i');
        outer->setProperty(new qnProperty(7, inner));
        qnProperty p(1, outer);
        p.setAsObjPtr(inner);
        EXPECT_EQ("o", notes);
        EXPECT_EQ(1u, inner->refCount);
        EXPECT_EQ(inner, p.getAsObjPtr());
    }
    EXPECT_EQ("oi", notes);
}

TEST_F(Property, OfAnObjectMayBeNull) {
    std::string notes;
    qnProperty p(1, static_cast<qnObj*>(nullptr));
    EXPECT_EQ(nullptr, p.getAsObjPtr());
    p.setAsObjPtr(new Noted(notes, 'a'));
    p.setAsObjPtr(nullptr);
    EXPECT_EQ("a", notes);
    EXPECT_EQ(nullptr, p.getAsObjPtr());
}

TEST_F(Property, OfABoxHoldsIt) {
    std::string notes;
    NotedBox* a = new NotedBox(notes, 'a');
    NotedBox* b = new NotedBox(notes, 'b');
    qnRetain(b);
    {
        qnProperty p(1, a);
        EXPECT_EQ(a, p.getAsData());
        EXPECT_EQ(1u, a->refCount);
        p.setAsData(b);
        EXPECT_EQ("a", notes);
        EXPECT_EQ(b, p.getAsData());
        EXPECT_EQ(2u, b->refCount);
        p.cleanup();
        EXPECT_EQ(1u, b->refCount);
        EXPECT_EQ(nullptr, p.getAsData());
    }
    EXPECT_EQ(1u, b->refCount);
    qnRelease(b);
    EXPECT_EQ("ab", notes);
}

TEST_F(Property, OfABoxMayBeSetToTheOneThatItAloneHolds) {
    std::string notes;
    {
        qnProperty p(1, new NotedBox(notes, 'a'));
        p.setAsData(p.getAsData());
        EXPECT_EQ("", notes);
        EXPECT_EQ(1u, p.getAsData()->refCount);
    }
    EXPECT_EQ("a", notes);
}

TEST_F(Property, OfABoxMayBeNull) {
    qnProperty p(1, static_cast<qnData*>(nullptr));
    EXPECT_EQ(nullptr, p.getAsData());
    p.setAsData(new qnIntData(3));
    p.setAsData(nullptr);
    EXPECT_EQ(nullptr, p.getAsData());
}

TEST_F(Property, IsDestroyedByItsLastHolder) {
    std::string notes;
    qnProperty* p = new qnProperty(1, new Noted(notes, 'a'));
    qnRetain(p);
    qnRetain(p);
    EXPECT_FALSE(qnRelease(p));
    EXPECT_EQ("", notes);
    EXPECT_TRUE(qnRelease(p));
    EXPECT_EQ("a", notes);
}

TEST_F(Property, ThatNobodyHoldsIsNotDestroyedByARelease) {
    qnProperty p(1, 7L);
    EXPECT_FALSE(qnRelease(&p));
    EXPECT_EQ(UINT_MAX, p.refCount);
    EXPECT_EQ(7, p.getAsLong());
}

}  // namespace PropertyTest
