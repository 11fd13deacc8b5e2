// Using a property or a list as what it is not: reading is never checked, the checked build keeps it harmless and ends
// the process where something would be written or read out of bounds.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>

#include "Obj.h"
#include "OrderedGlobal.h"

namespace PropertyCheckedTest {

class PropertyChecked : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

TEST_F(PropertyChecked, NumbersOfAnotherKindAreBitsOfTheValue) {
    double real = 0.1;
    long bits;
    std::memcpy(&bits, &real, sizeof bits);
    EXPECT_EQ(bits, qnProperty(1, real).getAsLong());
    EXPECT_EQ(0, qnProperty(1, 0L).getAsBool());
    qnProperty(1, "text", 0).getAsDouble();
    qnProperty(1, qnStr("text")).getAsLong();
}

#ifndef MORVAQNDS_CHECKED

TEST_F(PropertyChecked, PointersOfAnotherKindAreTheFieldReadAsThatKind) {
    char text[] = "text";
    qnProperty ofText(1, text, 0);
    EXPECT_EQ(static_cast<void*>(text), ofText.getAsVoidPtr());
    EXPECT_EQ(static_cast<void*>(text), static_cast<void*>(ofText.getAsData()));
    qnObj* object = new qnObj;
    qnProperty ofObject(1, object);
    EXPECT_EQ(static_cast<void*>(object), ofObject.getAsVoidPtr());
}

#else

TEST_F(PropertyChecked, PointersOfAnotherKindAreNullInTheCheckedBuild) {
    qnProperty integer(7, -1L);
    EXPECT_EQ(nullptr, integer.getAsCharPtr());
    EXPECT_STREQ("", integer.getAsStr().text());
    EXPECT_EQ(nullptr, integer.getAsVoidPtr());
    EXPECT_EQ(nullptr, integer.getAsObjPtr());
    EXPECT_EQ(nullptr, integer.getAsData());
    qnProperty string(7, qnStr("text"));
    EXPECT_EQ(nullptr, string.getAsCharPtr());
    qnProperty box(7, new qnIntData(1));
    EXPECT_EQ(nullptr, box.getAsObjPtr());
}

TEST(PropertyCheckedDeathTest, IsNotMadeBeforeTheToolkitIsInitialised) {
    auto makeTooEarly = [] {
        qn_nextDataType = nullptr;
        qnProperty(7, 1L);
    };
    EXPECT_EXIT(makeTooEarly(), testing::KilledBySignal(SIGABRT),
                "^qnProperty::qnProperty: the toolkit is not initialised\n$");
}

TEST(PropertyCheckedDeathTest, SettersAreForTheirOwnKind) {
    qnInitializeToolkit();
    const testing::KilledBySignal aborted(SIGABRT);
    qnProperty boolean(7, static_cast<qnBool>(1)), integer(8, 1L);
    EXPECT_EXIT(integer.setAsBool(1), aborted, "^qnProperty::setAsBool: property 8 is of type 3, not 1\n$");
    EXPECT_EXIT(boolean.setAsLong(1), aborted, "^qnProperty::setAsLong: property 7 is of type 1, not 3\n$");
    EXPECT_EXIT(integer.setAsDouble(1), aborted, "^qnProperty::setAsDouble: property 8 is of type 3, not 5\n$");
    EXPECT_EXIT(integer.setAsCharPtr("", 0), aborted, "^qnProperty::setAsCharPtr: property 8 is of type 3, not 6\n$");
    EXPECT_EXIT(integer.setAsStr(""), aborted, "^qnProperty::setAsStr: property 8 is of type 3, not 7\n$");
    EXPECT_EXIT(integer.setAsVoidPtr(nullptr, nullptr), aborted,
                "^qnProperty::setAsVoidPtr: property 8 is of type 3, not 8\n$");
    EXPECT_EXIT(integer.setAsObjPtr(nullptr), aborted, "^qnProperty::setAsObjPtr: property 8 is of type 3, not 9\n$");
    EXPECT_EXIT(integer.setAsData(nullptr), aborted, "^qnProperty::setAsData: property 8 is of type 3, not 10\n$");
}

TEST(PropertyCheckedDeathTest, TheListIsNotReadPastItsEnd) {
    qnInitializeToolkit();
    const testing::KilledBySignal aborted(SIGABRT);
    qnObj object;
    object.setProperty(new qnProperty(7, 1L));
    EXPECT_EXIT(object.getProperty(1), aborted, "^qnObj::getProperty: index 1 is not below 1\n$");
    object.removeAllProperties();
    EXPECT_EXIT(object.getProperty(0), aborted, "^qnObj::getProperty: index 0 is not below 0\n$");
    EXPECT_EXIT(object.setProperty(nullptr), aborted, "^qnObj::setProperty: no property\n$");
}

#endif

}  // namespace PropertyCheckedTest
