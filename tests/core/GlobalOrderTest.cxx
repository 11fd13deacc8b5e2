#include <gtest/gtest.h>

#include <string>

#include "Debug.h"
#include "GlobalOrder.h"
#include "OrderedGlobal.h"
#include "Str.h"

namespace GlobalOrderTest {

std::string steps;

template <char Letter>
void construct() {
    steps += Letter;
}
template <char Letter>
void destruct() {
    steps += static_cast<char>(Letter - 'A' + 'a');
}

/** An ordered global that is in no order yet: it leaves the application's order, in which it was declared. */
struct Loose {
    Loose(void (*make)(), void (*drop)(), qnOrderedGlobal** needs) : global(make, drop, needs, 2) {
        qn_applicationGlobalOrder->entries.remove(qn_applicationGlobalOrder->entries.length() - 1, 1);
    }
    qnOrderedGlobal global;
};

class Order : public testing::Test {
protected:
    Order() { steps.clear(); }
    std::string created() {
        order.create();
        return steps;
    }

    qnOrderedGlobal* xNeeds[3] = {nullptr, nullptr, nullptr};
    qnOrderedGlobal* yNeeds[3] = {nullptr, nullptr, nullptr};
    qnOrderedGlobal* zNeeds[3] = {nullptr, nullptr, nullptr};
    Loose x{construct<'X'>, destruct<'X'>, xNeeds};
    Loose y{construct<'Y'>, destruct<'Y'>, yNeeds};
    Loose z{construct<'Z'>, destruct<'Z'>, zNeeds};
    qnGlobalOrder order;
};

TEST_F(Order, DependsOnLooksAtItsOwnArrayOnly) {
    xNeeds[0] = &y.global;
    yNeeds[0] = &z.global;
    EXPECT_TRUE(x.global.dependsOn(y.global));
    EXPECT_TRUE(y.global.dependsOn(z.global));
    EXPECT_FALSE(x.global.dependsOn(z.global));
    EXPECT_FALSE(z.global.dependsOn(x.global));
    Loose none(construct<'N'>, nullptr, nullptr);
    EXPECT_FALSE(none.global.dependsOn(x.global));
    EXPECT_EQ(nullptr, none.global.destruct);
}

TEST_F(Order, AnEmptyOneHasRoomForTenAndSortsToNothing) {
    EXPECT_EQ(0u, order.entries.length());
    EXPECT_EQ(10 * sizeof(void*), order.entries.maxBytes);
    EXPECT_FALSE(order.sort());
    EXPECT_TRUE(order.sorted);
    EXPECT_EQ("", created());
}

TEST_F(Order, OneEntryIsSorted) {
    order.add(&x.global);
    EXPECT_FALSE(order.sorted);
    EXPECT_FALSE(order.sort());
    EXPECT_TRUE(order.sorted);
    EXPECT_EQ("X", created());
}

TEST_F(Order, OneEntryIsNotAskedWhatItDependsOn) {
    x.global.dependencies = reinterpret_cast<qnOrderedGlobal**>(8);  // must not be looked at
    order.add(&x.global);
    order.sort();
    EXPECT_TRUE(order.sorted);
}

TEST_F(Order, FieldsAreTheFlagAndTheEntries) {
    EXPECT_EQ(reinterpret_cast<char*>(&order), reinterpret_cast<char*>(&order.sorted));
    EXPECT_EQ(reinterpret_cast<char*>(&order) + sizeof(void*), reinterpret_cast<char*>(&order.entries));
}

TEST_F(Order, MoreThanTenEntriesKeepTheirOrder) {
    for (int i = 0; i < 5; ++i) {
        order.add(&x.global);
        order.add(&y.global);
        order.add(&z.global);
    }
    EXPECT_EQ("XYZXYZXYZXYZXYZ", created());
}

TEST_F(Order, AnExchangeGoesOnWithTheNewOccupant) {
    // Position 0: X gives way to Y, and Y, not X, is then asked about Z.
    xNeeds[0] = &y.global;
    xNeeds[1] = &z.global;
    order.add(&x.global);
    order.add(&y.global);
    order.add(&z.global);
    EXPECT_EQ("YZX", created());
}

TEST_F(Order, ADependencyRegisteredFirstStaysFirst) {
    yNeeds[0] = &x.global;
    zNeeds[0] = &y.global;
    order.add(&x.global);
    order.add(&y.global);
    order.add(&z.global);
    EXPECT_EQ("XYZ", created());
}

TEST_F(Order, ADependencyInAnotherOrderHasNoEffect) {
    qnGlobalOrder other;
    xNeeds[0] = &y.global;
    other.add(&y.global);
    order.add(&x.global);
    order.add(&z.global);
    EXPECT_EQ("XZ", created());
}

TEST_F(Order, CreatingASortedOrderDoesNotSortItAgain) {
    order.add(&x.global);
    order.add(&y.global);
    order.sort();
    xNeeds[0] = &y.global;
    EXPECT_EQ("XY", created());
}

qnGlobalOrder* growing;
qnOrderedGlobal* latecomer;
void constructAndAdd() {
    steps += 'A';
    for (int i = 0; i < 20; ++i) growing->add(latecomer);
    growing->sort();
}

TEST_F(Order, WhatAConstructFunctionAddsIsNotConstructedButDestroyed) {
    // Z is sorted before X and Y once it is there, and they are constructed once all the same.
    xNeeds[0] = yNeeds[0] = &z.global;
    Loose adding(constructAndAdd, nullptr, nullptr);
    growing = &order;
    latecomer = &z.global;
    order.add(&adding.global);
    order.add(&x.global);
    order.add(&y.global);
    EXPECT_EQ("AXY", created());
    steps.clear();
    order.destroy();
    EXPECT_EQ(22u, steps.size());
}

TEST_F(Order, DestroyingTheOrderItselfRunsNothing) {
    {
        qnGlobalOrder shortLived;
        shortLived.add(&x.global);
    }
    EXPECT_EQ("", steps);
}

TEST_F(Order, ADependencyRegisteredLaterComesFirst) {
    xNeeds[0] = &y.global;
    order.add(&x.global);
    order.add(&y.global);
    EXPECT_EQ("YX", created());
    EXPECT_TRUE(order.sorted);
}

TEST_F(Order, AChainRegisteredBackwardsIsTurnedRound) {
    xNeeds[0] = &y.global;
    yNeeds[0] = &z.global;
    order.add(&x.global);
    order.add(&y.global);
    order.add(&z.global);
    EXPECT_EQ("ZYX", created());
}

// Deliberate: the pass is no topological sort, and programs rely on the order it gives.
TEST_F(Order, ALinkFoundOnlyThroughAPositionPassedStaysOutOfOrder) {
    // z depends on y and is constructed before it.
    xNeeds[0] = &z.global;
    zNeeds[0] = &y.global;
    order.add(&x.global);
    order.add(&y.global);
    order.add(&z.global);
    EXPECT_EQ("ZYX", created());
}

TEST_F(Order, ACycleEndsAfterOnePass) {
    xNeeds[0] = &y.global;
    yNeeds[0] = &x.global;
    order.add(&x.global);
    order.add(&y.global);
    EXPECT_EQ("YX", created());
}

TEST_F(Order, DestructionIsTheReverseAndNullFunctionsAreSkipped) {
    Loose silent(nullptr, nullptr, nullptr);
    xNeeds[0] = &y.global;
    order.add(&x.global);
    order.add(&silent.global);
    order.add(&y.global);
    order.create();
    order.destroy();
    EXPECT_EQ("YXxy", steps);
}

TEST_F(Order, DestroyDoesNotSort) {
    xNeeds[0] = &y.global;
    order.add(&x.global);
    order.add(&y.global);
    order.destroy();
    EXPECT_EQ("yx", steps);
    EXPECT_FALSE(order.sorted);
}

TEST_F(Order, DuplicatesAndStrangersAreJustConstructed) {
    Loose stranger(construct<'S'>, nullptr, nullptr);
    xNeeds[0] = &stranger.global;
    order.add(&x.global);
    order.add(&x.global);
    EXPECT_EQ("XX", created());
}

TEST_F(Order, AddingForgetsThatItWasSorted) {
    order.add(&x.global);
    order.sort();
    yNeeds[0] = &z.global;
    order.add(&y.global);
    EXPECT_FALSE(order.sorted);
    order.add(&z.global);
    EXPECT_EQ("XZY", created());
}

TEST(TheTwoOrders, AreChosenByTheSelector) {
    unsigned toolkit = qn_toolkitGlobalOrder->entries.length();
    unsigned application = qn_applicationGlobalOrder->entries.length();
    for (int selector : {0, 2, 7, -1}) {
        static_cast<void>(new qnOrderedGlobal(nullptr, nullptr, selector));
        EXPECT_EQ(++application, qn_applicationGlobalOrder->entries.length());
    }
    EXPECT_EQ(toolkit, qn_toolkitGlobalOrder->entries.length());
    new qnOrderedGlobal(nullptr, nullptr, nullptr, 1);
    EXPECT_EQ(toolkit + 1, qn_toolkitGlobalOrder->entries.length());
    qnGlobalOrder* same = qn_toolkitGlobalOrder;
    qnGlobalOrder::createOrderings();
    EXPECT_EQ(same, qn_toolkitGlobalOrder);
}

TEST(TheTwoOrders, HoldTheLibrarysInitialisationBeforeTheTranscribers) {
    EXPECT_EQ(&qnOG_Init, qn_toolkitGlobalOrder->entries.elements()[0]);
    EXPECT_EQ(&qnOG_Transcriber, qn_toolkitGlobalOrder->entries.elements()[1]);
    EXPECT_EQ(nullptr, qnOG_Init.dependencies);
    EXPECT_TRUE(qnOG_Transcriber.dependsOn(qnOG_Init));
    EXPECT_EQ(nullptr, qnOG_Transcriber.dependencies[1]);
    EXPECT_EQ(nullptr, qnOG_Transcriber.destruct);
    ASSERT_NE(nullptr, qnOG_Init.destruct);
    qnOG_Init.destruct();
}

TEST(Debugger, IsMadeByTheInitialisationAndKeepsOptions) {
    qnInitializeToolkit();
    ASSERT_NE(nullptr, qn_theDebugger);
    qnDebug* same = qn_theDebugger;
    qnOG_Init.construct();
    EXPECT_EQ(same, qn_theDebugger) << "built only if absent";
    qnStr option("channels");
    qn_theDebugger->parseOption(option);
    EXPECT_TRUE(option == "channels");
}

}  // namespace GlobalOrderTest
