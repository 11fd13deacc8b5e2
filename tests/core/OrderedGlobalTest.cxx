#include <gtest/gtest.h>

#include <cstddef>

#include "GlobalOrder.h"
#include "OrderedGlobal.h"

namespace OrderedGlobalTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnOrderedGlobal) == 12, "an ordered global is three words");
static_assert(sizeof(qnGlobalOrder) == 28, "an order is a flag and an array");
#endif
static_assert(offsetof(qnOrderedGlobal, construct) == 0, "the construct function comes first");
static_assert(offsetof(qnOrderedGlobal, destruct) == sizeof(void*), "the destruct function comes second");
static_assert(offsetof(qnOrderedGlobal, dependencies) == 2 * sizeof(void*), "the dependencies come last");

void make() { FAIL() << "declaring constructs nothing"; }
void drop() { FAIL() << "declaring destroys nothing"; }

/** For the time of a test there are no orders yet. */
class OrderedGlobal : public testing::Test {
protected:
    OrderedGlobal() : toolkit_(qn_toolkitGlobalOrder), application_(qn_applicationGlobalOrder) {
        qn_toolkitGlobalOrder = qn_applicationGlobalOrder = nullptr;
    }
    ~OrderedGlobal() override {
        delete qn_toolkitGlobalOrder;
        delete qn_applicationGlobalOrder;
        qn_toolkitGlobalOrder = toolkit_;
        qn_applicationGlobalOrder = application_;
    }

private:
    qnGlobalOrder* toolkit_;
    qnGlobalOrder* application_;
};

TEST_F(OrderedGlobal, FirstRegistrationMakesBothOrders) {
    qnOrderedGlobal global(make, nullptr, 2);
    ASSERT_NE(qn_toolkitGlobalOrder, nullptr);
    ASSERT_NE(qn_applicationGlobalOrder, nullptr);
    EXPECT_EQ(qn_toolkitGlobalOrder->entries.length(), 0u);
    ASSERT_EQ(qn_applicationGlobalOrder->entries.length(), 1u);
    EXPECT_EQ(qn_applicationGlobalOrder->entries.elements()[0], &global);
}

TEST_F(OrderedGlobal, OrdersAreMadeOneByOneIfAbsent) {
    qnGlobalOrder::createOrderings();
    qnGlobalOrder* application = qn_applicationGlobalOrder;
    delete qn_toolkitGlobalOrder;
    qn_toolkitGlobalOrder = nullptr;
    qnGlobalOrder::createOrderings();
    EXPECT_NE(qn_toolkitGlobalOrder, nullptr);
    EXPECT_EQ(qn_applicationGlobalOrder, application);
}

TEST_F(OrderedGlobal, SelectorOneIsTheToolkitOrderAndAnyOtherTheApplications) {
    qnOrderedGlobal a(make, nullptr, 0), b(make, nullptr, 1), c(make, nullptr, 2), d(make, nullptr, 7),
        e(make, nullptr, -1);
    ASSERT_EQ(qn_toolkitGlobalOrder->entries.length(), 1u);
    EXPECT_EQ(qn_toolkitGlobalOrder->entries.elements()[0], &b);
    ASSERT_EQ(qn_applicationGlobalOrder->entries.length(), 4u);
    const qnOrderedGlobal* expected[] = {&a, &c, &d, &e};
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(qn_applicationGlobalOrder->entries.elements()[i], expected[i]) << i;
}

TEST_F(OrderedGlobal, StoresWhatItIsGivenAndCallsNothing) {
    qnOrderedGlobal* needs[] = {nullptr};
    qnOrderedGlobal three(make, needs, 2), four(make, drop, needs, 2);
    EXPECT_EQ(three.construct, make);
    EXPECT_EQ(three.destruct, nullptr);
    EXPECT_EQ(three.dependencies, needs);
    EXPECT_EQ(four.construct, make);
    EXPECT_EQ(four.destruct, drop);
    EXPECT_EQ(four.dependencies, needs);
}

TEST_F(OrderedGlobal, DependsOnWhatItsOwnArrayHolds) {
    qnOrderedGlobal a(make, nullptr, 2), b(make, nullptr, 2), c(make, nullptr, 2);
    qnOrderedGlobal* needs[] = {&a, &b, nullptr};
    qnOrderedGlobal dependent(make, needs, 2);
    EXPECT_TRUE(dependent.dependsOn(a));
    EXPECT_TRUE(dependent.dependsOn(b));
    EXPECT_FALSE(dependent.dependsOn(c));
    EXPECT_FALSE(dependent.dependsOn(dependent));
    EXPECT_FALSE(a.dependsOn(dependent));
}

TEST_F(OrderedGlobal, DependsOnNothingWithANullOrAnEmptyArray) {
    qnOrderedGlobal* none[] = {nullptr};
    qnOrderedGlobal a(make, nullptr, 2), b(make, none, 2);
    EXPECT_FALSE(a.dependsOn(b));
    EXPECT_FALSE(b.dependsOn(a));
}

TEST_F(OrderedGlobal, DependenciesOfDependenciesDoNotCount) {
    qnOrderedGlobal a(make, nullptr, 2);
    qnOrderedGlobal* needsA[] = {&a, nullptr};
    qnOrderedGlobal b(make, needsA, 2);
    qnOrderedGlobal* needsB[] = {&b, nullptr};
    qnOrderedGlobal c(make, needsB, 2);
    EXPECT_FALSE(c.dependsOn(a));
}

TEST_F(OrderedGlobal, ArrayIsReadWhenItIsAsked) {
    qnOrderedGlobal a(make, nullptr, 2);
    qnOrderedGlobal* needs[] = {nullptr, nullptr};
    qnOrderedGlobal b(make, needs, 2);
    EXPECT_FALSE(b.dependsOn(a));
    needs[0] = &a;
    EXPECT_TRUE(b.dependsOn(a)) << "the array is kept by pointer";
}

}  // namespace OrderedGlobalTest
