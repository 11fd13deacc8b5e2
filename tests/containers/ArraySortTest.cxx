// The sort, whose closing step gives both ends of a partition the contents of the scratch. The results of the small
// arrays below were worked out by hand; `model` is the steps of the sort once more, as plainly as they can be
// written, and the two are compared on thousands of random arrays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "NumberArrays.h"
#include "StrArray.h"
#include "support/RandomRun.h"
#include "support/RecordingArray.h"

namespace ArraySortTest {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> sorted(std::initializer_list<int> values) {
    RecordingArray a(values);
    a.qsort();
    return a.values();
}

/** The comparisons among the calls that an array recorded: how the other steps come about is its own business. */
std::vector<std::string> comparisons(const RecordingArray& a) {
    std::vector<std::string> result;
    for (const std::string& line : a.log) {
        if (line.compare(0, 8, "compare ") == 0) result.push_back(line.substr(8));
    }
    return result;
}

TEST(ArraySort, OfNothingDoesNothing) {
    RecordingArray a;
    a.qsort();
    EXPECT_THAT(a.log, IsEmpty());
    RecordingArray b({3, 1});
    b.qsort(1, 0);
    b.qsort(2, 0);
    EXPECT_THAT(b.log, IsEmpty());
    EXPECT_THAT(b.values(), ElementsAre(3, 1));
}

// i = 0, j = 1; no upward scan as i = hi; j = 0, an element equals itself; both copies put the scratch, which is the
// element, in its own place.
TEST(ArraySort, OfOneElementComparesItWithItself) {
    RecordingArray a({5});
    a.qsort();
    EXPECT_THAT(a.values(), ElementsAre(5));
    EXPECT_THAT(comparisons(a), ElementsAre("+0 +0"));
}

// i stops at 1, j runs down to 0: places 0 and 0 get the scratch, which is element 0.
TEST(ArraySort, OfTwoInOrderKeepsThem) { EXPECT_THAT(sorted({1, 2}), ElementsAre(1, 2)); }

// i runs to 1, j stops at 1: places 0 and 1 both get the scratch, 2.
//
// Deliberate: the pivot is not saved before its place is written, so the 1 is lost.
TEST(ArraySort, OfTwoInReverseOrderRepeatsTheFirst) { EXPECT_THAT(sorted({2, 1}), ElementsAre(2, 2)); }

// i = 1, j = 1: nothing to exchange; places 0 and 1 get the 4 they hold.
TEST(ArraySort, OfTwoEqualKeepsThem) { EXPECT_THAT(sorted({4, 4}), ElementsAre(4, 4)); }

// First partition: boundary 0, nothing changes. Then 1..2 with pivot 2, whose scratch is still 1: i = 2, j = 1, and
// place 1 gets the 1.
TEST(ArraySort, OfThreeInOrderLosesTheSecond) { EXPECT_THAT(sorted({1, 2, 3}), ElementsAre(1, 1, 3)); }

// First partition: i runs to 2, j stops at 2; places 0 and 2 get 3. Then 0..1 with pivot 3: i runs to 1, j stops at 1;
// places 0 and 1 get 3.
TEST(ArraySort, OfThreeInReverseOrderRepeatsTheFirst) {
    EXPECT_THAT(sorted({3, 2, 1}), ElementsAre(3, 3, 3));
    EXPECT_THAT(sorted({3, 1, 2}), ElementsAre(3, 3, 3));
}

// i = 1 (3), j = 2 (1): exchanged, 2 1 3, scratch 3. i = 2, j = 1: places 0 and 1 get 3.
TEST(ArraySort, OfThreeWithOneExchangeRepeatsTheExchanged) { EXPECT_THAT(sorted({2, 3, 1}), ElementsAre(3, 3, 3)); }

// i = 1, j = 0: boundary 0, nothing changes. Then 1..2: i runs to 2, j stops at 2; places 1 and 2 get the scratch, 1.
TEST(ArraySort, OfThreeWithTheSmallestFirstRepeatsIt) { EXPECT_THAT(sorted({1, 3, 2}), ElementsAre(1, 1, 1)); }

TEST(ArraySort, OfEqualElementsKeepsThem) {
    EXPECT_THAT(sorted({2, 2, 2}), ElementsAre(2, 2, 2));
    EXPECT_THAT(sorted({2, 2, 2, 2, 2}), ElementsAre(2, 2, 2, 2, 2));
}

// 0..4, pivot 4: i = 1 (5), j = 4 (2), exchanged: 4 2 1 6 5, scratch 5. i = 3 (6), j = 2 (1): places 0 and 2 get 5:
// 5 2 5 6 5. 0..1, pivot 5: i = 1, j = 1: 5 5 5 6 5. 3..4, pivot 6: i = 4, j = 4: places 3 and 4 get 5.
TEST(ArraySort, OfFiveSpreadsTheLastExchanged) { EXPECT_THAT(sorted({4, 5, 1, 6, 2}), ElementsAre(5, 5, 5, 5, 5)); }

// 0..5, pivot 5: i = 1 (8), j = 4 (1), exchanged: 5 1 2 9 8 7, scratch 8. i = 3, j = 2: 8 1 8 9 8 7. 0..1: 8 8.
// 3..5, pivot 9: i runs to 5, j stops at 5: places 3 and 5 get 8. 3..4: both 8.
TEST(ArraySort, OfSixSpreadsTheLastExchanged) {
    EXPECT_THAT(sorted({5, 8, 2, 9, 1, 7}), ElementsAre(8, 8, 8, 8, 8, 8));
}

// 0..3, pivot 1: i = 1, j = 0, nothing changes, scratch 1. 1..3, pivot 2: i = 2, j = 1: place 1 gets 1. 2..3, pivot 3:
// i = 3, j = 2: place 2 gets 1.
TEST(ArraySort, OfFourInOrderKeepsTheFirstAndTheLast) { EXPECT_THAT(sorted({1, 2, 3, 4}), ElementsAre(1, 1, 1, 4)); }

TEST(ArraySort, OfARangeLeavesTheRestAloneAndStartsWithItsFirstElement) {
    RecordingArray a({9, 2, 3, 1, 0});
    a.qsort(1, 3);
    EXPECT_THAT(a.values(), ElementsAre(9, 3, 3, 3, 0));
    RecordingArray b({9, 2, 1, 0});
    b.qsort(1, 2);
    EXPECT_THAT(b.values(), ElementsAre(9, 2, 2, 0));
}

TEST(ArraySort, ComparesFirstAndThenTestsTheBound) {
    // Up: element 1 is compared although it stands at the bound. Down: element 1, which is not greater.
    RecordingArray a({2, 1});
    a.qsort();
    EXPECT_THAT(comparisons(a), ElementsAre("+4 +0", "+4 +0"));
    // Up: 1. Down: 2, 1, and 0 at the bound. Then 1..2 against place 1.
    RecordingArray b({1, 2, 3});
    b.qsort();
    EXPECT_THAT(comparisons(b), ElementsAre("+4 +0", "+8 +0", "+4 +0", "+0 +0",  //
                                            "+8 +4", "+8 +4", "+4 +4"));
}

TEST(ArraySort, SortsTheLowerSideFirst) {
    RecordingArray a({4, 5, 1, 6, 2});
    a.qsort();
    EXPECT_THAT(comparisons(a), ElementsAre("+4 +0", "+16 +0",       // exchange of 1 and 4
                                            "+8 +0", "+12 +0",       // up to 3
                                            "+12 +0", "+8 +0",       // down to 2
                                            "+4 +0", "+4 +0",        // 0..1
                                            "+16 +12", "+16 +12"));  // 3..4
}

TEST(ArraySort, WorkerTakesTheCallersScratch) {
    RecordingArray a({2, 1, 7});
    int scratch = 6;
    a.qsortInternal(0, 1, &scratch);
    EXPECT_THAT(a.values(), ElementsAre(6, 6, 7));
    EXPECT_EQ(6, scratch) << "nothing was exchanged";
    RecordingArray b({2, 3, 1});
    b.qsortInternal(0, 2, &scratch);
    EXPECT_THAT(b.values(), ElementsAre(3, 3, 3));
    EXPECT_EQ(3, scratch) << "the element that was exchanged last";
}

/** Elements of a key and a tag that the comparison does not see. */
class TaggedArray : public qnArray {
public:
    struct Element {
        unsigned char key;
        char tag;
    };
    explicit TaggedArray(const char* keysAndTags)
        : qnArray(static_cast<unsigned short>(2), static_cast<unsigned>(std::strlen(keysAndTags) / 2)) {
        std::memcpy(data, keysAndTags, usedBytes);
    }
    const char* className() const override { return "TaggedArray"; }
    int compareElements(const void* a, const void* b) const override {
        return static_cast<const Element*>(a)->key - static_cast<const Element*>(b)->key;
    }
    std::string text() const { return std::string(data, usedBytes); }
};

// Both scans stop at equal elements: 1b and 1c are exchanged, scratch 1b; then i = 2, j = 1: places 0 and 1 get 1b.
TEST(ArraySort, TiesStopBothScansAndAreExchanged) {
    TaggedArray a("1a1b1c");
    a.qsort();
    EXPECT_EQ("1b1b1b", a.text());
}

// i = 1, j = 1 at once: no exchange, the scratch is still 1a.
TEST(ArraySort, TwoTiesBecomeTheFirst) {
    TaggedArray a("1a1b");
    a.qsort();
    EXPECT_EQ("1a1a", a.text());
}

/** Random numbers of 32 bits, the same on every machine. */
struct Random {
    explicit Random(unsigned long seed) : engine(static_cast<std::mt19937::result_type>(seed)) {}
    unsigned operator()() { return static_cast<unsigned>(engine()); }
    std::mt19937 engine;
};

// The model: the steps of the sort on values of any type, with real recursion.

template <class T>
struct Model {
    std::vector<T> v;
    std::function<int(const T&, const T&)> compare;
    T scratch;

    void sort(unsigned start, unsigned count) {
        if (count == 0) return;
        scratch = v[start];
        sortInternal(start, start + count - 1);
    }

    void sortInternal(unsigned lo, unsigned hi) {
        unsigned i = lo, j = hi + 1;
        bool scanUp = true;
        for (;;) {
            if (scanUp && i < hi) {
                for (;;) {
                    i = i + 1;
                    if (compare(v[i], v[lo]) >= 0) break;
                    if (i == hi) break;
                }
            }
            if (j > lo) {
                for (;;) {
                    j = j - 1;
                    if (compare(v[j], v[lo]) <= 0) break;
                    if (j == lo) break;
                }
            }
            if (i >= j) break;
            scratch = v[i];
            v[i] = v[j];
            v[j] = scratch;
            scanUp = i < hi;
        }
        v[lo] = scratch;
        v[j] = v[lo];
        v[j] = scratch;
        if (j != 0 && lo < j - 1) sortInternal(lo, j - 1);
        if (j + 1 < hi) sortInternal(j + 1, hi);
    }
};

int compareInts(const int& a, const int& b) { return a < b ? -1 : a > b ? 1 : 0; }

TEST(ArraySort, AgreesWithTheModelOnEveryArrayOfUpToFiveSmallNumbers) {
    for (unsigned length = 0; length <= 5; ++length) {
        unsigned arrays = 1;
        for (unsigned i = 0; i < length; ++i) arrays *= 5;
        for (unsigned n = 0; n < arrays; ++n) {
            Model<int> model{{}, compareInts, 0};
            RecordingArray a;
            for (unsigned i = 0, rest = n; i < length; ++i, rest /= 5) {
                int value = static_cast<int>(rest % 5);
                model.v.push_back(value);
                a.append(&value);
            }
            a.logComparisons = false;
            a.qsort();
            model.sort(0, length);
            ASSERT_EQ(model.v, a.values()) << "array " << n << " of length " << length;
        }
    }
}

TEST(ArraySort, AgreesWithTheModelOnRandomRanges) {
    const RandomRun run(8000);
    Random random(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        unsigned length = random() % 40 + 1, different = random() % 60 + 1;
        Model<int> model{{}, compareInts, 0};
        RecordingArray a(4, length);
        a.logComparisons = false;
        for (unsigned i = 0; i < length; ++i) {
            int value = static_cast<int>(random() % different) - 20;
            model.v.push_back(value);
            std::memcpy(a.at(i), &value, sizeof value);
        }
        unsigned start = random() % length, count = random() % (length - start + 1);
        if (round % 4 == 0) start = 0, count = length;
        a.qsort(start, count);
        model.sort(start, count);
        ASSERT_EQ(model.v, a.values()) << "round " << round;
    }
}

TEST(ArraySort, AgreesWithTheModelOnBytes) {
    const RandomRun run(3000);
    Random random(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        unsigned length = random() % 100;
        Model<int> model{{}, compareInts, 0};
        qnUnsignedCharArray a(length);
        for (unsigned i = 0; i < length; ++i) {
            a.elements()[i] = static_cast<unsigned char>(random());
            model.v.push_back(a.elements()[i]);
        }
        a.qsort();
        model.sort(0, length);
        ASSERT_EQ(model.v, std::vector<int>(a.elements(), a.elements() + length)) << "round " << round;
    }
}

/** Elements of `bytes` bytes that start with an int and are filled with a byte that belongs to it. */
void expectWideSort(unsigned short bytes) {
    Random random(bytes);
    Model<int> model{{}, compareInts, 0};
    RecordingArray a(bytes, 30);
    a.logComparisons = false;
    for (unsigned i = 0; i < 30; ++i) {
        int value = static_cast<int>(random() % 100);
        std::memset(a.at(i), value, bytes);
        std::memcpy(a.at(i), &value, sizeof value);
        model.v.push_back(value);
    }
    a.qsort();
    model.sort(0, 30);
    EXPECT_EQ(model.v, a.values());
    for (unsigned i = 0; i < 30; ++i) {
        EXPECT_EQ(model.v[i], static_cast<const char*>(a.at(i))[bytes - 1]) << "the last byte belongs to the first";
    }
}

TEST(ArraySort, OfElementsOf32BytesUsesALocalScratch) { expectWideSort(32); }

TEST(ArraySort, OfElementsOf33BytesUsesTheHeap) { expectWideSort(33); }

TEST(ArraySort, OfVeryWideElements) { expectWideSort(5000); }

// Strings: the same texts as the model, and every place owns its own.

void makeStrings(qnStrArray& a, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        qnStr s(text.c_str());
        a.append(&s);
    }
}

std::vector<std::string> texts(const qnStrArray& a) {
    std::vector<std::string> result;
    for (unsigned i = 0; i < a.length(); ++i) result.push_back(a.elements()[i].text());
    return result;
}

void expectOwnTexts(qnStrArray& a) {
    std::set<const char*> blocks;
    for (unsigned i = 0; i < a.length(); ++i) {
        if (a.elements()[i].length() != 0) {
            EXPECT_TRUE(blocks.insert(a.elements()[i].text()).second) << "place " << i;
        }
    }
}

TEST(ArraySort, OfStringsRepeatsCopiesOfTheScratchText) {
    qnStrArray a;
    makeStrings(a, {"b", "c", "a"});
    a.qsort();
    EXPECT_THAT(texts(a), ElementsAre("c", "c", "c"));
    expectOwnTexts(a);
    a.elements()[0].append("!");
    a.elements()[1] = "";
    EXPECT_THAT(texts(a), ElementsAre("c!", "", "c"));
}

TEST(ArraySort, OfStringsKeepsWhatIsInOrder) {
    qnStrArray a;
    makeStrings(a, {"ab", "b"});
    a.qsort();
    EXPECT_THAT(texts(a), ElementsAre("ab", "b"));
    expectOwnTexts(a);
}

TEST(ArraySort, OfStringsAgreesWithTheModelAndEveryPlaceOwnsItsText) {
    const RandomRun run(3000);
    Random random(run.seed);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        Model<std::string> model{{}, [](const std::string& a, const std::string& b) { return a.compare(b); }, ""};
        unsigned length = random() % 20;
        for (unsigned i = 0; i < length; ++i) {
            model.v.push_back(std::string(random() % 3, static_cast<char>('a' + random() % 4)));
        }
        qnStrArray a;
        makeStrings(a, model.v);
        unsigned start = length == 0 ? 0 : random() % length;
        a.qsort(start, length - start);
        model.sort(start, length - start);
        ASSERT_EQ(model.v, texts(a)) << "round " << round;
        expectOwnTexts(a);
    }
}

// Deep recursion: the plain one is as deep as the array is long for sorted and reversed input. The sorts run on a
// thread whose stack would not hold half of it.

struct StackJob {
    qnArray* array;
    static void* run(void* self) {
        static_cast<StackJob*>(self)->array->qsort();
        return nullptr;
    }
};

void sortWithSmallStack(qnArray& array) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 64 * 1024));
    StackJob job = {&array};
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, StackJob::run, &job));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

/** Ints in numeric order. */
class NumberLine : public qnIntArray {
public:
    explicit NumberLine(unsigned count) : qnIntArray(count) {}
    int compareElements(const void* a, const void* b) const override {
        return compareInts(*static_cast<const int*>(a), *static_cast<const int*>(b));
    }
};

// Each partition splits off its first element only. The first round leaves everything as it is; afterwards each pivot
// is overwritten with the scratch, the very first element, and the last element is never a pivot.
TEST(ArraySort, OfSortedInputDoesNotUseTheMachinesStack) {
    const unsigned n = 4000;
    NumberLine a(n);
    for (unsigned i = 0; i < n; ++i) a.elements()[i] = static_cast<int>(i + 1);
    sortWithSmallStack(a);
    for (unsigned i = 0; i + 1 < n; ++i) ASSERT_EQ(1, a.elements()[i]) << i;
    EXPECT_EQ(static_cast<int>(n), a.elements()[n - 1]);
}

// Each partition runs up to the end and splits off its last element, which gets the scratch, the very first element.
TEST(ArraySort, OfReversedInputDoesNotUseTheMachinesStack) {
    const unsigned n = 4000;
    NumberLine a(n);
    for (unsigned i = 0; i < n; ++i) a.elements()[i] = static_cast<int>(n - i);
    sortWithSmallStack(a);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(static_cast<int>(n), a.elements()[i]) << i;
}

/**
 * Compares by place: upwards all are less than the pivot; downwards two are greater and the third is not. A scan that
 * goes down starts where the one that went up stopped, and goes on beside it.
 */
class PlaceLine : public qnIntArray {
public:
    explicit PlaceLine(unsigned count) : qnIntArray(count) {}
    int compareElements(const void* a, const void*) const override {
        const std::ptrdiff_t place = (static_cast<const char*>(a) - data) / static_cast<int>(sizeof(int));
        const bool down = place == last_ || place == last_ - 1;
        greater_ = down ? greater_ + 1 : 0;
        last_ = place;
        return !down ? -1 : greater_ <= 2 ? 1 : 0;
    }

private:
    mutable std::ptrdiff_t last_ = -5;
    mutable unsigned greater_ = 0;
};

// Nothing is exchanged, so the scratch stays the first element. Every partition of the lower side splits off two
// elements at its end, which wait, and makes the one before them the scratch; of the two, the first becomes the scratch
// and the second stays. 200 pairs wait at last.
TEST(ArraySort, OfManyRangesThatWaitLosesNone) {
    const unsigned n = 600;
    PlaceLine a(n);
    for (unsigned i = 0; i < n; ++i) a.elements()[i] = static_cast<int>(i + 1);
    a.qsort();
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(i % 3 == 2 ? static_cast<int>(i + 1) : 1, a.elements()[i]) << i;
}

// Long runs of equal elements are halved, as both scans stop at them. (Different elements in this number would take
// hours: each partition splits off one.) The scratch is a 0 as long as zeros are left and a 1 from the first exchange
// of ones on, so every closing step puts what is there.
TEST(ArraySort, OfAMillionElementsDoesNotUseTheMachinesStack) {
    const unsigned n = 1000000;
    qnUnsignedCharArray a(n);
    for (unsigned i = 0; i < n; ++i) a.elements()[i] = i < n / 2 ? 0 : 1;
    sortWithSmallStack(a);
    for (unsigned i = 0; i < n; ++i) ASSERT_EQ(i < n / 2 ? 0 : 1, a.elements()[i]) << i;
}

}  // namespace ArraySortTest
