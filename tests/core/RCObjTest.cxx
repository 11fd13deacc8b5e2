#include <gtest/gtest.h>

#include <climits>

#include "RCObj.h"
#include "Rptr.h"

namespace RCObjTest {

class Thing : public qnRCObj {
public:
    explicit Thing(bool& flag) : gone(flag) { gone = false; }
    ~Thing() override { gone = true; }
    bool& gone;
};

TEST(RCObj, IsBornWithoutHolders) {
    bool gone;
    Thing thing(gone);
    EXPECT_EQ(0u, thing.refCount);
    qnRetain(&thing);
    Thing copy(thing);
    EXPECT_EQ(0u, copy.refCount);
}

TEST(RCObj, ReleaseFromOneDestroys) {
    bool gone;
    Thing* thing = new Thing(gone);
    qnRetain(thing);
    qnRetain(thing);
    EXPECT_FALSE(qnRelease(thing));
    EXPECT_FALSE(gone);
    EXPECT_TRUE(qnRelease(thing));
    EXPECT_TRUE(gone);
}

TEST(RCObj, ReleaseFromZeroWrapsAndLeavesTheObjectAlive) {
    // Deliberate: only exactly zero destroys, and the count is unsigned.
    bool gone;
    Thing* thing = new Thing(gone);
    EXPECT_FALSE(qnRelease(thing));
    EXPECT_FALSE(gone);
    EXPECT_EQ(4294967295u, thing->refCount);
    delete thing;
}

TEST(RCObj, NullIsIgnored) {
    Thing* none = nullptr;
    qnRetain(none);
    EXPECT_FALSE(qnRelease(none));
}

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(qnRCObj) == 8, "the virtual table and the count");
static_assert(sizeof(Counted) == 8, "the virtual table and the count");
static_assert(sizeof(RPtr_base) == 4, "one pointer");
#endif

class Part : public Counted {
public:
    explicit Part(int& destroyed) : destroyed_(destroyed) {}
    ~Part() override { ++destroyed_; }
    RPtr<Part> next;

private:
    int& destroyed_;
};

class VirtualThing : public virtual qnRCObj {};

TEST(RCObj, HeldThroughAVirtualBase) {
    VirtualThing* thing = new VirtualThing;
    qnRetain(thing);
    EXPECT_EQ(1u, thing->refCount);
    EXPECT_TRUE(qnRelease(thing));
}

TEST(Counted, TheCountWrapsAtTheEndsOfItsRange) {
    int destroyed = 0;
    Part part(destroyed);
    part.count = INT_MIN;
    EXPECT_FALSE(qnRelease(&part));
    EXPECT_EQ(INT_MAX, part.count);
    qnRetain(&part);
    EXPECT_EQ(INT_MIN, part.count);
}

TEST(Counted, ReleaseFromZeroDestroys) {
    // Deliberate: the count is signed, and zero or below destroys.
    int destroyed = 0;
    Part* part = new Part(destroyed);
    EXPECT_EQ(0, part->count);
    EXPECT_TRUE(qnRelease(part));
    EXPECT_EQ(1, destroyed);
    Part* none = nullptr;
    qnRetain(none);
    EXPECT_FALSE(qnRelease(none));
}

TEST(RPtr, HoldsAndReleases) {
    int destroyed = 0;
    {
        RPtr<Part> a(new Part(destroyed));
        EXPECT_EQ(1, a->count);
        RPtr<Part> b = a;
        EXPECT_EQ(2, a->count);
        RPtr<Part> none;
        EXPECT_FALSE(none);
        EXPECT_TRUE(static_cast<bool>(a));
        none = b;
        EXPECT_EQ(3, (*a).count);
        a = nullptr;
        EXPECT_EQ(nullptr, a.get());
        EXPECT_EQ(2, b->count);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(RPtr, AssignedToItselfOrItsOwnPointeeStays) {
    int destroyed = 0;
    RPtr<Part> a(new Part(destroyed));
    RPtr<Part>& same = a;
    a = same;
    EXPECT_EQ(1, a->count);
    a = a.get();
    EXPECT_EQ(1, a->count);
    EXPECT_EQ(0, destroyed);
}

TEST(RPtr, TakesWhatOnlyItsOldPointeeHeld) {
    int destroyed = 0;
    RPtr<Part> list(new Part(destroyed));
    list->next = new Part(destroyed);
    list = list->next;
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(1, list->count);
}

}  // namespace RCObjTest
