// What dictionaries say to a caller's error in the checked build, and what the default build makes of it.
#include <gtest/gtest.h>

#include "Dictionary.h"
#include "support/ProbeDictionary.h"

namespace DictionaryCheckedTest {

#ifdef MORVAQNDS_CHECKED

TEST(DictionaryCheckedDeathTest, RemovingAnIteratorThatIsNotRegisteredIsFatal) {
    ProbeDictionary d(5);
    d.add(3, 30);
    qnDictIter registered(d), detached;
    EXPECT_EXIT(d.removeIter(&detached), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::removeIter: the iterator is not among the 1 registered\n$");
    d.cleanup();
    EXPECT_EXIT(d.removeIter(&registered), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::removeIter: the iterator is not among the 0 registered\n$");
}

#else

TEST(DictionaryChecked, RemovingAnIteratorThatIsNotRegisteredChangesNothing) {
    ProbeDictionary d(5);
    d.add(3, 30);
    qnDictIter registered(d), detached;
    d.removeIter(&detached);
    EXPECT_EQ(d.iters.length(), 1u);
    d.cleanup();
    d.removeIter(&registered);
    EXPECT_EQ(d.iters.length(), 1u) << "a cleanup leaves the list as it is";
}

#endif

}  // namespace DictionaryCheckedTest
