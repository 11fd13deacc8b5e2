// Runs of elements whose bytes 32 bits cannot count. The memory is only reserved: nothing here reads or writes it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <utility>
#include <vector>

#include "serial/Units.h"

namespace UnitsTest {

using testing::ElementsAre;
using testing::Pair;

class Units : public testing::Test {
protected:
    ~Units() override {
        if (start_ != MAP_FAILED) munmap(start_, size_);
    }

    /** The offsets and sizes of the portions; false is answered for the portion `failing`, from 0. */
    std::vector<std::pair<std::size_t, unsigned>> portions(unsigned count, unsigned size, std::size_t failing = 99) {
        size_ = std::size_t(count) * size;
        start_ = mmap(nullptr, size_ + 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        EXPECT_NE(MAP_FAILED, start_);
        char* const first = static_cast<char*>(start_);
        std::vector<std::pair<std::size_t, unsigned>> result;
        const bool all = units::forEachPortion(first, count, size, [&](char* bytes, unsigned nbytes) {
            result.emplace_back(static_cast<std::size_t>(bytes - first), nbytes);
            return result.size() <= failing;
        });
        EXPECT_EQ(result.size() <= failing, all);
        return result;
    }

private:
    void* start_ = MAP_FAILED;
    std::size_t size_ = 0;
};

TEST_F(Units, AnEmptyRunIsOnePortionOfNothing) { EXPECT_THAT(portions(0, 8), ElementsAre(Pair(0u, 0u))); }

TEST_F(Units, AShortRunIsOnePortion) { EXPECT_THAT(portions(3, 4), ElementsAre(Pair(0u, 12u))); }

TEST_F(Units, TwoToThe28ElementsAreOnePortion) {
    EXPECT_THAT(portions(0x10000000u, 1), ElementsAre(Pair(0u, 0x10000000u)));
}

TEST_F(Units, WhatIsLeftOfMoreIsAnotherPortion) {
    EXPECT_THAT(portions(0x10000005u, 2), ElementsAre(Pair(0u, 0x20000000u), Pair(0x20000000u, 10u)));
}

TEST_F(Units, APortionThatFailsIsTheLast) {
    EXPECT_THAT(portions(0x20000001u, 1, 0), ElementsAre(Pair(0u, 0x10000000u)));
}

TEST_F(Units, APortionThatFailsAfterAnotherIsTheLast) {
    EXPECT_THAT(portions(0x20000001u, 1, 1), ElementsAre(Pair(0u, 0x10000000u), Pair(0x10000000u, 0x10000000u)));
}

#if UINTPTR_MAX > 0xFFFFFFFFu
TEST_F(Units, DoublesOfMoreThanFourGigabytesKeepTheirPlaces) {
    EXPECT_THAT(portions(0x20000001u, 8), ElementsAre(Pair(0u, 0x80000000u), Pair(0x80000000u, 0x80000000u),
                                                      Pair(std::size_t(0x100000000u), 8u)));
}
#endif

}  // namespace UnitsTest
