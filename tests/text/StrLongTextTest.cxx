// Texts of more than 2^32 - 2 characters, which no string can hold.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "Str.h"

namespace StrLongTextTest {

#if UINTPTR_MAX > 0xFFFFFFFFu

/** 2^32 + 4 x, and a NUL: a few megabytes of memory, shown again and again. */
class StrLongTextDeathTest : public testing::Test {
protected:
    static constexpr std::size_t Chunk = std::size_t(4) << 20;
    static constexpr std::size_t Chunks = 1024;
    static constexpr std::size_t Page = 4096;

    static void SetUpTestSuite() {
        int file = memfd_create("text", 0);
        if (file < 0 || ftruncate(file, Chunk) != 0) return;
        char* block = static_cast<char*>(mmap(nullptr, Chunk, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        std::memset(block, 'x', Chunk);
        munmap(block, Chunk);
        void* room = mmap(nullptr, Chunk * Chunks + Page, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (room == MAP_FAILED) return;
        text = static_cast<char*>(room);
        for (std::size_t i = 0; i < Chunks; ++i) {
            mmap(text + i * Chunk, Chunk, PROT_READ, MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0);
        }
        std::memset(text + Chunk * Chunks, 'x', 4);
        close(file);
    }
    static void TearDownTestSuite() {
        if (text != nullptr) munmap(text, Chunk * Chunks + Page);
        text = nullptr;
    }
    void SetUp() override { ASSERT_NE(nullptr, text) << "4 GiB of addresses could not be had"; }

    static char* text;
};
char* StrLongTextDeathTest::text = nullptr;

TEST_F(StrLongTextDeathTest, AreRefusedByEveryOperation) {
    qnStr s("abc");
    // 2^32 + 4 and the terminator
    EXPECT_EXIT(qnStr t(text), testing::KilledBySignal(SIGABRT),
                "^qnStr::qnStr: size of 4294967301 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(s = text, testing::KilledBySignal(SIGABRT),
                "^qnStr::operator=: size of 4294967300 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(s.append(text), testing::KilledBySignal(SIGABRT),
                "^qnStr::append: size of 4294967300 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(s.insert(text, 1), testing::KilledBySignal(SIGABRT),
                "^qnStr::insert: size of 4294967300 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(s + text, testing::KilledBySignal(SIGABRT),
                "^operator\\+: size of 4294967300 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(text + s, testing::KilledBySignal(SIGABRT),
                "^operator\\+: size of 4294967300 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(s + s + text, testing::KilledBySignal(SIGABRT),
                "^operator\\+: size of 4294967300 bytes exceeds 4294967295\n$");
    // The estimate is the text's length; the buffer has one character more, and the terminator.
    EXPECT_EXIT(s.format("%s", text), testing::KilledBySignal(SIGABRT),
                "^qnStr::vformat: size of 4294967302 bytes exceeds 4294967295\n$");
    EXPECT_EXIT(qnTempStr("abc", 3, text, 0xFFFFFFFDu), testing::KilledBySignal(SIGABRT),
                "^qnTempStr::qnTempStr: size of 4294967297 bytes exceeds 4294967295\n$");
    qnTempStr t("abc", 3, "", 0);
    EXPECT_EXIT(t.concat(text, 0xFFFFFFFDu), testing::KilledBySignal(SIGABRT),
                "^qnTempStr::concat: size of 4294967297 bytes exceeds 4294967295\n$");
}

TEST_F(StrLongTextDeathTest, AreNotEqualToTheTextThatTheirLengthWrapsTo) {
    qnStr s("xxxx");
    EXPECT_FALSE(s == text);
    EXPECT_TRUE(text != s);
    EXPECT_LT(compare(s, text), 0);
}

#endif

}  // namespace StrLongTextTest
