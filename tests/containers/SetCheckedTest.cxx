// What sets say to a caller's error in the checked build, and what the default build makes of it.
#include <gtest/gtest.h>

#include <initializer_list>

#include "Set.h"
#include "support/ProbeSet.h"

namespace SetCheckedTest {

/** Keys of eight bytes. */
class Wide : public qnSet {
public:
    Wide() : qnSet(8, 5) {}
    ~Wide() override { cleanup(); }
    bool xdrKey(qnTranscriber&, void*) override { return false; }
};

TEST(SetChecked, SetsWithoutBucketsCombineWithKeysOfAnySize) {
    Wide wide;
    char key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    wide.add(key);
    qnTmpSet bare((ProbeSet(5)));
    wide += bare;
    wide -= bare;
    EXPECT_EQ(wide.count, 1u);
    bare -= wide;
    bare *= wide;
    EXPECT_EQ(bare.count, 0u);
    wide *= bare;
    EXPECT_EQ(wide.count, 0u);
}

// With a message in every build, as the bytes behind a key are not its own.
TEST(SetCheckedDeathTest, LookingUpShorterKeysIsFatal) {
    ProbeSet narrow(5, {3});
    Wide wide;
    EXPECT_EXIT(wide += narrow, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator\\+=: keys of 8 bytes cannot be combined with keys of 4\n$");
    EXPECT_EXIT(wide -= narrow, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator-=: keys of 8 bytes cannot be combined with keys of 4\n$");
    EXPECT_EXIT(narrow *= wide, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator\\*=: keys of 4 bytes cannot be combined with keys of 8\n$");
}

#ifdef MORVAQNDS_CHECKED

TEST(SetCheckedDeathTest, RemovingAnIteratorThatIsNotRegisteredIsFatal) {
    ProbeSet s(5, {3});
    qnSetIter registered(s), detached;
    EXPECT_EXIT(s.removeIter(&detached), testing::KilledBySignal(SIGABRT),
                "^qnSet::removeIter: the iterator is not among the 1 registered\n$");
    s.cleanup();
    EXPECT_EXIT(s.removeIter(&registered), testing::KilledBySignal(SIGABRT),
                "^qnSet::removeIter: the iterator is not among the 0 registered\n$");
}

TEST(SetCheckedDeathTest, LookingUpLongerKeysIsFatal) {
    ProbeSet narrow(5, {3});
    Wide wide;
    EXPECT_EXIT(narrow += wide, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator\\+=: keys of 4 bytes cannot be combined with keys of 8\n$");
    EXPECT_EXIT(narrow -= wide, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator-=: keys of 4 bytes cannot be combined with keys of 8\n$");
    EXPECT_EXIT(wide *= narrow, testing::KilledBySignal(SIGABRT),
                "^qnSet::operator\\*=: keys of 8 bytes cannot be combined with keys of 4\n$");
}

#else

/** The keys {key, 9}, of which a set of four bytes sees the first. */
void fill(Wide& wide, std::initializer_list<int> keys) {
    for (int key : keys) {
        const int record[2] = {key, 9};
        wide.add(record);
    }
}

TEST(SetChecked, LongerKeysAreTakenForTheirFirstBytes) {
    ProbeSet narrow(5, {3});
    Wide wide;
    fill(wide, {3, 4});
    narrow += wide;
    EXPECT_EQ(narrow.table(), "3: 3 | 4: 4");
    wide.cleanup();
    fill(wide, {4, 7});
    wide *= narrow;
    EXPECT_EQ(wide.count, 1u);
    narrow -= wide;
    EXPECT_EQ(narrow.table(), "3: 3");
}

TEST(SetChecked, RemovingAnIteratorThatIsNotRegisteredChangesNothing) {
    ProbeSet s(5, {3});
    qnSetIter registered(s), detached;
    s.removeIter(&detached);
    EXPECT_EQ(s.iters.length(), 1u);
}

#endif

}  // namespace SetCheckedTest
