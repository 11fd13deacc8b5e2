// How the process ends: over sizes that have no 32-bit number and exhausted memory in every build, over callers'
// errors in the checked build.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>

#include "NumberArrays.h"
#include "StrArray.h"
#include "VoidPtrArray.h"
#include "support/FakeTranscriber.h"
#include "support/RecordingArray.h"

namespace ArrayCheckedTest {

const testing::KilledBySignal aborted(SIGABRT);

/** An array that claims bytes that it does not have. Only operations that end the process may follow. */
struct Claim : RecordingArray {
    explicit Claim(unsigned used, unsigned capacity) {
        usedBytes = used;
        maxBytes = capacity;
    }
};

TEST(ArrayDeathTest, AnArrayOfMoreThanFourGigabytesCannotBeMade) {
    EXPECT_EXIT(qnIntArray(0x40000000u), aborted, "^qnArray::qnArray: size of 4294967296 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(RecordingArray(65535, 0xFFFFFFFFu), aborted,
                "^qnArray::qnArray: size of 281470681677825 bytes exceeds 4294967295\n$");
}

TEST(ArrayDeathTest, ResizeAndSetMaxLengthPastFourGigabytes) {
    RecordingArray a;
    EXPECT_EXIT(a.resize(0x40000000u), aborted, "^qnArray::resize: size of 4294967296 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(a.setMaxLength(0x40000001u), aborted,
                "^qnArray::setMaxLength: size of 4294967300 bytes exceeds 4294967295\n$");
}

TEST(ArrayDeathTest, AppendPastFourGigabytes) {
    int one = 1;
    EXPECT_EXIT(Claim(0xFFFFFFF0u, 0xFFFFFFF0u).append(&one), aborted,
                "^qnArray::expand: size of 4294967296 bytes exceeds 4294967295\n$");
    RecordingArray other({1, 2});
    EXPECT_EXIT(Claim(0xFFFFFFF8u, 0xFFFFFFF8u).append(other), aborted,
                "^qnArray::append: size of 4294967296 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(Claim(0xFFFFFFF8u, 0xFFFFFFFFu).append(other), aborted,
                "^qnArray::append: size of 4294967296 bytes exceeds 4294967295\n$");
}

TEST(ArrayDeathTest, InsertPastFourGigabytes) {
    int one = 1;
    EXPECT_EXIT(Claim(0xFFFFFFFCu, 0xFFFFFFFCu).insert(&one, 0), aborted,
                "^qnArray::insert: size of 4294967296 bytes exceeds 4294967295\n$");
    RecordingArray other({1, 2, 3});
    EXPECT_EXIT(Claim(0xFFFFFFF8u, 0xFFFFFFF8u).insert(other, 0), aborted,
                "^qnArray::insert: size of 4294967300 bytes exceeds 4294967295\n$");
}

TEST(ArrayDeathTest, ExpandPastFourGigabytes) {
    EXPECT_EXIT(Claim(0, 0xFFFFFFFFu).expand(), aborted,
                "^qnArray::expand: size of 4294967311 bytes exceeds 4294967295\n$");
}

#ifndef __SANITIZE_ADDRESS__
/** Leaves the process little memory; on the machines of 32 bits it has none of the sizes below in one piece anyway. */
void limitMemory() {
    rlimit limit = {256u << 20, 256u << 20};
    setrlimit(RLIMIT_AS, &limit);
}

const unsigned TooMuch = 0xFFFFFFF0u;

TEST(ArrayDeathTest, ExhaustedMemoryEndsWithTheOperationAndTheCause) {
    EXPECT_EXIT((limitMemory(), qnCharArray(TooMuch)), aborted, "^qnArray::qnArray: out of memory\n$");
    EXPECT_EXIT((limitMemory(), qnCharArray().resize(TooMuch)), aborted, "^qnArray::getmem: out of memory\n$");
    EXPECT_EXIT((limitMemory(), qnCharArray(3).setMaxLength(TooMuch)), aborted, "^qnArray::getmem: out of memory\n$");
    Claim claim(TooMuch, TooMuch);
    EXPECT_EXIT((limitMemory(), claim.raw_copy()), aborted, "^qnArray::raw_copy: out of memory\n$");
    claim.usedBytes = claim.maxBytes = 0;
}
#endif

#ifdef MORVAQNDS_CHECKED

/** 1, 2, 3 */
struct Three : RecordingArray {
    Three() : RecordingArray({1, 2, 3}) {}
};

TEST(ArrayDeathTest, InsertPastTheEndIsReported) {
    int one = 1;
    Three a;
    EXPECT_EXIT(a.insert(&one, 4), aborted, "^qnArray::insert: index 4 past length 3\n$");
    EXPECT_EXIT(a.insert(&one, 0xFFFFFFFFu), aborted, "^qnArray::insert: index 4294967295 past length 3\n$");
    EXPECT_EXIT(a.insert(a, 4), aborted, "^qnArray::insert: index 4 past length 3\n$");
    a.insert(&one, 3);
    EXPECT_EQ(4u, a.length());
}

TEST(ArrayDeathTest, RemovePastTheEndIsReported) {
    Three a;
    EXPECT_EXIT(a.remove(2, 2), aborted, "^qnArray::remove: 2 elements from 2 exceed length 3\n$");
    EXPECT_EXIT(a.remove(4, 0), aborted, "^qnArray::remove: 0 elements from 4 exceed length 3\n$");
    EXPECT_EXIT(a.remove(0xFFFFFFFFu, 2), aborted, "^qnArray::remove: 2 elements from 4294967295 exceed length 3\n$");
    EXPECT_EXIT(a.remove(1, 0xFFFFFFFFu), aborted, "^qnArray::remove: 4294967295 elements from 1 exceed length 3\n$");
    a.remove(3, 0);
    a.remove(0, 3);
    EXPECT_EQ(0u, a.length());
}

TEST(ArrayDeathTest, CuttingPastTheEndIsReported) {
    Three a;
    EXPECT_EXIT(a.raw_cut(0, 4), aborted, "^qnArray::raw_cut: 4 elements from 0 exceed length 3\n$");
    EXPECT_EXIT(qnIntArray(2).cut(1, 2), aborted, "^qnArray::raw_cut: 2 elements from 1 exceed length 2\n$");
}

TEST(ArrayDeathTest, CopyingOutPastTheEndIsReported) {
    Three a;
    EXPECT_EXIT(a.raw_extract(3, 1), aborted, "^qnArray::raw_extract: 1 elements from 3 exceed length 3\n$");
    EXPECT_EXIT(a.raw_head(4), aborted, "^qnArray::raw_head: 4 elements exceed length 3\n$");
    EXPECT_EXIT(a.raw_tail(4), aborted, "^qnArray::raw_tail: 4 elements exceed length 3\n$");
    EXPECT_EXIT(qnStrArray(2).extract(0, 3), aborted, "^qnArray::raw_extract: 3 elements from 0 exceed length 2\n$");
    EXPECT_EXIT(qnStrArray(2).head(3), aborted, "^qnArray::raw_head: 3 elements exceed length 2\n$");
    EXPECT_EXIT(qnVoidPtrArray().tail(1), aborted, "^qnArray::raw_tail: 1 elements exceed length 0\n$");
}

TEST(ArrayDeathTest, SwapPastTheEndIsReported) {
    Three a;
    EXPECT_EXIT(a.swap(0, 3), aborted, "^qnArray::swap: elements 0 and 3 of 3\n$");
    EXPECT_EXIT(a.swap(3, 0), aborted, "^qnArray::swap: elements 3 and 0 of 3\n$");
}

TEST(ArrayDeathTest, SortPastTheEndIsReported) {
    Three a;
    int scratch = 0;
    EXPECT_EXIT(a.qsort(2, 2), aborted, "^qnArray::qsort: 2 elements from 2 exceed length 3\n$");
    EXPECT_EXIT(a.qsort(4, 0), aborted, "^qnArray::qsort: 0 elements from 4 exceed length 3\n$");
    EXPECT_EXIT(a.qsortInternal(0, 3, &scratch), aborted, "^qnArray::qsortInternal: bounds 0 to 3 in length 3\n$");
    EXPECT_EXIT(a.qsortInternal(2, 1, &scratch), aborted, "^qnArray::qsortInternal: bounds 2 to 1 in length 3\n$");
}

#endif

}  // namespace ArrayCheckedTest
