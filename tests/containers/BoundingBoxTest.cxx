#include <gtest/gtest.h>

#include <climits>
#include <ostream>

#include "BoundingBox.h"

bool operator==(const qnBoundingBox& a, const qnBoundingBox& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

void PrintTo(const qnBoundingBox& box, std::ostream* os) {
    *os << "(" << box.x << ", " << box.y << ", " << box.width << ", " << box.height << ")";
}

namespace BoundingBoxTest {

typedef qnBoundingBox Box;

static_assert(sizeof(Box) == 16, "four ints");

TEST(BoundingBox, StartsZeroed) { EXPECT_EQ(Box(0, 0, 0, 0), Box()); }

TEST(BoundingBox, HoldsItsFieldsInTheOrderXYWidthHeight) {
    Box box(1, 2, 3, 4);
    EXPECT_EQ(1, box.x);
    EXPECT_EQ(&box.x + 1, &box.y);
    EXPECT_EQ(&box.x + 2, &box.width);
    EXPECT_EQ(&box.x + 3, &box.height);
    EXPECT_EQ(2, box.y);
    EXPECT_EQ(3, box.width);
    EXPECT_EQ(4, box.height);
}

// Intersection

TEST(BoundingBox, IntersectsOverlappingBoxes) {
    EXPECT_EQ(Box(5, 5, 5, 5), Box(0, 0, 10, 10).intersect(Box(5, 5, 10, 10)));
    EXPECT_EQ(Box(5, 5, 5, 5), Box(5, 5, 10, 10).intersect(Box(0, 0, 10, 10)));
}

TEST(BoundingBox, IntersectionOfBoxesApartIsAllZeros) {
    EXPECT_EQ(Box(0, 0, 0, 0), Box(0, 0, 10, 10).intersect(Box(20, 20, 5, 5)));
    EXPECT_EQ(Box(0, 0, 0, 0), Box(20, 20, 5, 5).intersect(Box(0, 0, 10, 10)));
}

TEST(BoundingBox, TouchingBoxesHaveAZeroWidthIntersectionAtZero) {
    EXPECT_EQ(Box(0, 0, 0, 5), Box(0, 0, 10, 10).intersect(Box(10, 0, 5, 5)));
    EXPECT_EQ(Box(0, 0, 0, 5), Box(10, 0, 5, 5).intersect(Box(0, 0, 10, 10)));
    EXPECT_EQ(Box(3, 0, 2, 0), Box(3, 7, 2, 2).intersect(Box(0, 0, 10, 7)));
}

// Deliberate: the axes are independent, so there may be an x range without a y range.
TEST(BoundingBox, BoxesThatOverlapInXOnlyKeepTheirXRange) {
    EXPECT_EQ(Box(4, 0, 6, 0), Box(0, 0, 10, 10).intersect(Box(4, 50, 10, 10)));
    EXPECT_EQ(Box(0, 4, 0, 6), Box(0, 0, 10, 10).intersect(Box(50, 4, 10, 10)));
}

TEST(BoundingBox, IntersectionWithABoxInsideIsThatBox) {
    EXPECT_EQ(Box(2, 3, 4, 5), Box(0, 0, 10, 10).intersect(Box(2, 3, 4, 5)));
    EXPECT_EQ(Box(2, 3, 4, 5), Box(2, 3, 4, 5).intersect(Box(0, 0, 10, 10)));
    EXPECT_EQ(Box(2, 3, 4, 5), Box(2, 3, 4, 5).intersect(Box(2, 3, 4, 5)));
}

TEST(BoundingBox, IntersectionFromTheSameStartTakesTheSmallerExtent) {
    EXPECT_EQ(Box(1, 1, 3, 2), Box(1, 1, 3, 9).intersect(Box(1, 1, 8, 2)));
}

TEST(BoundingBox, IntersectsAtNegativeCoordinates) {
    EXPECT_EQ(Box(-5, -3, 5, 1), Box(-10, -10, 10, 8).intersect(Box(-5, -3, 20, 20)));
}

TEST(BoundingBox, IntersectionWithAnEmptyBoxInsideKeepsItsPlace) {
    // The empty range starts before the other's end, so it is found there, with its extent of 0.
    EXPECT_EQ(Box(4, 4, 0, 0), Box(0, 0, 10, 10).intersect(Box(4, 4, 0, 0)));
    // An empty range reaches nothing that starts where it does.
    EXPECT_EQ(Box(0, 0, 0, 0), Box(4, 4, 0, 0).intersect(Box(4, 4, 10, 10)));
}

TEST(BoundingBox, ANegativeExtentIsTakenAsItIs) {
    EXPECT_EQ(Box(4, 0, -2, 10), Box(0, 0, 10, 10).intersect(Box(4, 0, -2, 10)));
    EXPECT_EQ(Box(0, 0, 0, 10), Box(0, 0, -2, 10).intersect(Box(4, 0, 10, 10)));
}

TEST(BoundingBox, IntersectsNearTheLargestIntWithoutOverflow) {
    EXPECT_EQ(Box(INT_MAX - 5, 0, 10, 1), Box(INT_MAX - 10, 0, 100, 1).intersect(Box(INT_MAX - 5, 0, 10, 1)));
}

// Bounding box

TEST(BoundingBox, BoundHoldsBoth) {
    EXPECT_EQ(Box(0, 0, 15, 15), Box(0, 0, 10, 10).bound(Box(5, 5, 10, 10)));
    EXPECT_EQ(Box(0, 0, 15, 15), Box(5, 5, 10, 10).bound(Box(0, 0, 10, 10)));
    EXPECT_EQ(Box(-4, -8, 14, 18), Box(-4, -8, 1, 1).bound(Box(9, 9, 1, 1)));
}

TEST(BoundingBox, BoundOfABoxAndOneInsideIsTheOuter) {
    EXPECT_EQ(Box(0, 0, 10, 10), Box(0, 0, 10, 10).bound(Box(2, 3, 4, 5)));
    EXPECT_EQ(Box(0, 0, 10, 10), Box(2, 3, 4, 5).bound(Box(0, 0, 10, 10)));
}

TEST(BoundingBox, BoundWithAnEmptyAxisTakesTheOthersRange) {
    EXPECT_EQ(Box(3, 0, 4, 15), Box(0, 0, 0, 10).bound(Box(3, 5, 4, 10)));
    EXPECT_EQ(Box(3, 0, 4, 15), Box(3, 5, 4, 10).bound(Box(0, 0, 0, 10)));
    EXPECT_EQ(Box(0, 5, 10, 10), Box(0, 99, 10, 0).bound(Box(3, 5, 4, 10)));
}

TEST(BoundingBox, BoundOfTwoEmptyAxesTakesTheSecondRange) {
    EXPECT_EQ(Box(3, 4, 0, 0), Box(1, 2, 0, 0).bound(Box(3, 4, 0, 0)));
}

// Deliberate: coordinates are expected to fit in 16 bits, and each far edge is cut to them before it is compared.
TEST(BoundingBox, BoundCutsFarEdgesToSixteenBits) {
    // 40000 becomes -25536, so the far edge is 30000.
    EXPECT_EQ(Box(0, 0, 30000, 10), Box(0, 0, 30000, 10).bound(Box(30000, 0, 10000, 10)));
    EXPECT_EQ(Box(0, 0, 30000, 10), Box(30000, 0, 10000, 10).bound(Box(0, 0, 30000, 10)));
}

TEST(BoundingBox, BoundKeepsTheLastEdgeThatFitsAndWrapsTheNext) {
    EXPECT_EQ(Box(0, 0, 32767, 1), Box(0, 0, 32767, 1).bound(Box(0, 0, 1, 1)));
    EXPECT_EQ(Box(0, 0, 1, 1), Box(0, 0, 32768, 1).bound(Box(0, 0, 1, 1)));
}

TEST(BoundingBox, BoundOfTwoWrappedEdgesHasANegativeExtent) {
    // 40000 and 50000 become -25536 and -15536; from 100 that is -15636.
    EXPECT_EQ(Box(100, 0, -15636, 1), Box(100, 0, 39900, 1).bound(Box(200, 0, 49800, 1)));
}

TEST(BoundingBox, BoundCutsTheEdgeAndNotTheStart) {
    // Both far edges, 100010 and 100001, keep 34474 and 34465 and are read as -31062 and -31071.
    EXPECT_EQ(Box(100000, 0, -31062 - 100000, 1), Box(100000, 0, 10, 1).bound(Box(100000, 0, 1, 1)));
}

TEST(BoundingBox, AnEmptyAxisIsTakenOverUncut) {
    EXPECT_EQ(Box(70000, 0, 5, 1), Box(0, 0, 0, 1).bound(Box(70000, 0, 5, 1)));
}

TEST(BoundingBox, BoundAtTheEndsOfTheIntRangeWraps) {
    // Edges: INT_MAX + INT_MAX = 0xFFFFFFFE keeps -2; INT_MIN + 1 keeps 1. The extent 1 - INT_MIN is 2^31 + 1.
    EXPECT_EQ(Box(INT_MIN, 0, INT_MIN + 1, 1), Box(INT_MAX, 0, INT_MAX, 1).bound(Box(INT_MIN, 0, 1, 1)));
}

}  // namespace BoundingBoxTest
