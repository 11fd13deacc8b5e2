#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "Stream.h"

namespace StreamTest {

class File : public testing::Test {
protected:
    File() {
        char pattern[] = "/tmp/streamtest.XXXXXX";
        folder = mkdtemp(pattern);
        path = folder + "/file";
    }
    ~File() override {
        unlink(path.c_str());
        rmdir(folder.c_str());
    }
    void put(const std::string& bytes) { std::ofstream(path) << bytes; }
    std::string contents() {
        std::ostringstream all;
        all << std::ifstream(path).rdbuf();
        return all.str();
    }

    std::string folder;
    std::string path;
};

TEST(StdioType, NamesTheThreeModesAndNoOthers) {
    EXPECT_STREQ("r", stdioType(qnStream::Read));
    EXPECT_STREQ("w", stdioType(qnStream::Write));
    EXPECT_STREQ("r+", stdioType(qnStream::ReadWrite));
    EXPECT_EQ(nullptr, stdioType(static_cast<qnStream::qnStreamType>(3)));
    EXPECT_EQ(0, qnStream::Read);
    EXPECT_EQ(1, qnStream::Write);
    EXPECT_EQ(2, qnStream::ReadWrite);
}

TEST_F(File, AMissingFileIsAnErrorForReading) {
    qnStdioStream stream(path.c_str(), qnStream::Read, 0644);
    EXPECT_TRUE(stream.hasError());
    EXPECT_EQ(nullptr, stream.file);
    EXPECT_NE(0, access(path.c_str(), F_OK));
}

TEST_F(File, AMissingFileIsCreatedForWritingWithThePermissions) {
    mode_t mask = umask(0);
    {
        qnStdioStream stream(path.c_str(), qnStream::Write, 0640);
        EXPECT_FALSE(stream.hasError());
    }
    umask(mask);
    struct stat status;
    ASSERT_EQ(0, stat(path.c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777u);
}

TEST_F(File, AMissingFileIsCreatedForReadingAndWriting) {
    qnStdioStream stream(path.c_str(), qnStream::ReadWrite, 0600);
    EXPECT_FALSE(stream.hasError());
    EXPECT_TRUE(stream.isReading());
    EXPECT_TRUE(stream.isWriting());
    EXPECT_EQ(qnStream::ReadWrite, stream.getType());
}

TEST_F(File, AnExistingFileIsNotEmptiedForWriting) {
    put("0123456789");
    {
        qnStdioStream stream(path.c_str(), qnStream::Write, 0644);
        EXPECT_TRUE(stream.putBytes("abc", 3));
        EXPECT_FALSE(stream.isReading());
        EXPECT_TRUE(stream.isWriting());
    }
    EXPECT_EQ("abc3456789", contents());
}

TEST_F(File, AnUnknownDirectionOpensForReadingAndFails) {
    put("x");
    qnStdioStream stream(path.c_str(), static_cast<qnStream::qnStreamType>(3), 0644);
    EXPECT_TRUE(stream.hasError());
    EXPECT_FALSE(stream.isReading());
    EXPECT_FALSE(stream.isWriting());
}

TEST_F(File, AnUnknownDirectionCreatesAMissingFileAllTheSame) {
    qnStdioStream stream(path.c_str(), static_cast<qnStream::qnStreamType>(3), 0600);
    EXPECT_TRUE(stream.hasError());
    EXPECT_EQ(nullptr, stream.file);
    EXPECT_EQ(0, access(path.c_str(), F_OK));
}

TEST_F(File, ADescriptorThatGetsNoFileStaysOpen) {
    put("x");
    int next = open(path.c_str(), O_RDONLY);
    close(next);
    {
        qnStdioStream stream(path.c_str(), static_cast<qnStream::qnStreamType>(3), 0644);
        EXPECT_TRUE(stream.hasError());
    }
    EXPECT_EQ(0, close(next)) << "it was the lowest free one";
}

TEST_F(File, AStreamForBothReadsWhatItWrote) {
    qnStdioStream stream(path.c_str(), qnStream::ReadWrite, 0600);
    EXPECT_TRUE(stream.putBytes("abc", 3));
    std::rewind(stream.file);
    char c[3];
    EXPECT_TRUE(stream.getBytes(c, 3));
    EXPECT_EQ("abc", std::string(c, 3));
}

TEST_F(File, OneOfMoreBytesThanALongCountsIsRead) {
    put("abc");
    ASSERT_EQ(0, truncate(path.c_str(), 5000000000)) << "the folder's file system holds no such files";
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    EXPECT_FALSE(stream.hasError());
    char bytes[4] = {'x', 'x', 'x', 'x'};
    EXPECT_TRUE(stream.getBytes(bytes, 4));
    EXPECT_EQ(std::string("abc\0", 4), std::string(bytes, 4));
}

TEST_F(File, APathThatIsNullIsAnError) {
    qnStdioStream stream(static_cast<const char*>(nullptr), qnStream::Write, 0644);
    EXPECT_TRUE(stream.hasError());
}

TEST_F(File, AdoptsADescriptorAndClosesIt) {
    put("ab");
    int fd = open(path.c_str(), O_RDONLY);
    {
        qnStdioStream stream(fd, qnStream::Read);
        char c[2];
        EXPECT_TRUE(stream.getBytes(c, 2));
        EXPECT_EQ('b', c[1]);
    }
    EXPECT_EQ(-1, fcntl(fd, F_GETFD));
    qnStdioStream closed(fd, qnStream::Read);
    EXPECT_TRUE(closed.hasError());
}

TEST_F(File, AdoptsAFileAndClosesIt) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    int fd = fileno(file);
    {
        qnStdioStream stream(file, qnStream::Write);
        EXPECT_FALSE(stream.hasError());
        EXPECT_TRUE(stream.putBytes("q", 1));
    }
    EXPECT_EQ(-1, fcntl(fd, F_GETFD));
    EXPECT_EQ("q", contents());
    qnStdioStream none(static_cast<std::FILE*>(nullptr), qnStream::Write);
    EXPECT_TRUE(none.hasError());
}

TEST_F(File, EndOfFileFailsTheGetAndNothingElse) {
    put("a");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    char c;
    EXPECT_TRUE(stream.getBytes(&c, 1));
    EXPECT_FALSE(stream.getBytes(&c, 1));
    // Deliberate: nothing ever sets the flag.
    EXPECT_FALSE(stream.atEOF());
    EXPECT_FALSE(stream.hasError());
}

TEST_F(File, AShortReadFailsAndTheStreamStaysUsable) {
    put("abc");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    char c[4];
    EXPECT_FALSE(stream.getBytes(c, 4));
    std::rewind(stream.file);
    EXPECT_TRUE(stream.getBytes(c, 3));
}

TEST_F(File, ByteFFIsNotTheEndOfTheFile) {
    put("\xff");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    char c = 0;
    EXPECT_TRUE(stream.getBytes(&c, 1));
    EXPECT_EQ('\xff', c);
}

TEST_F(File, ElementsTakeTheirStatedSizes) {
    {
        qnStdioStream out(path.c_str(), qnStream::Write, 0644);
        short s[] = {1, -2};
        int i[] = {3, -4};
        long l[] = {5, -6};
        float f[] = {0.5f, -0.5f};
        double d[] = {0.25, -0.25};
        EXPECT_TRUE(out.putShorts(s, 2) && out.putInts(i, 2) && out.putLongs(l, 2) && out.putFloats(f, 2) &&
                    out.putDoubles(d, 2));
    }
    EXPECT_EQ(4u + 8u + 8u + 8u + 16u, contents().size());
    qnStdioStream in(path.c_str(), qnStream::Read, 0);
    short s[2];
    int i[2];
    long l[2];
    float f[2];
    double d[2];
    ASSERT_TRUE(in.getShorts(s, 2) && in.getInts(i, 2) && in.getLongs(l, 2) && in.getFloats(f, 2));
    long before = std::ftell(in.file);
    ASSERT_TRUE(in.getDoubles(d, 2));
    EXPECT_EQ(before + 16, std::ftell(in.file));
    EXPECT_EQ(-2, s[1]);
    EXPECT_EQ(-4, i[1]);
    EXPECT_EQ(5, l[0]);
    EXPECT_EQ(-6, l[1]);
    EXPECT_EQ(-0.5f, f[1]);
    EXPECT_EQ(-0.25, d[1]);
}

TEST_F(File, TwoDoublesConsumeSixteenBytes) {
    put("0123456789abcdef!");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    double d[2];
    char c;
    EXPECT_TRUE(stream.getDoubles(d, 2));
    EXPECT_TRUE(stream.getBytes(&c, 1));
    EXPECT_EQ('!', c);
}

TEST_F(File, OneLongTakesFourBytesOnEveryMachine) {
    put("0123!");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    long l;
    char c;
    EXPECT_TRUE(stream.getLongs(&l, 1));
    EXPECT_TRUE(stream.getBytes(&c, 1));
    EXPECT_EQ('!', c);
}

TEST_F(File, APartOfTheLastElementFailsTheGet) {
    put("01234");
    qnStdioStream stream(path.c_str(), qnStream::Read, 0);
    int i[2];
    long l[2];
    short s[3];
    EXPECT_FALSE(stream.getInts(i, 2));
    std::rewind(stream.file);
    EXPECT_FALSE(stream.getLongs(l, 2));
    std::rewind(stream.file);
    EXPECT_FALSE(stream.getShorts(s, 3));
    std::rewind(stream.file);
    EXPECT_TRUE(stream.getShorts(s, 2));
}

TEST_F(File, RunsOfNothingSucceed) {
    put("x");
    qnStdioStream in(path.c_str(), qnStream::Read, 0);
    EXPECT_TRUE(in.getBytes(nullptr, 0) && in.getShorts(nullptr, 0) && in.getInts(nullptr, 0) &&
                in.getLongs(nullptr, 0) && in.getFloats(nullptr, 0) && in.getDoubles(nullptr, 0));
    char c;
    EXPECT_TRUE(in.getBytes(&c, 1));
    qnStdioStream out(path.c_str(), qnStream::Write, 0);
    EXPECT_TRUE(out.putBytes(nullptr, 0) && out.putShorts(nullptr, 0) && out.putInts(nullptr, 0) &&
                out.putLongs(nullptr, 0) && out.putFloats(nullptr, 0) && out.putDoubles(nullptr, 0));
}

TEST_F(File, ManyLongsGoOutAndComeIn) {
    long values[1000];
    for (int i = 0; i < 1000; ++i) values[i] = 7 - i * 1000003L;
    {
        qnStdioStream out(path.c_str(), qnStream::Write, 0644);
        EXPECT_TRUE(out.putLongs(values, 1000));
    }
    EXPECT_EQ(4000u, contents().size());
    qnStdioStream in(path.c_str(), qnStream::Read, 0);
    long got[1000];
    ASSERT_TRUE(in.getLongs(got, 1000));
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(values[i], got[i]);
    EXPECT_FALSE(in.getLongs(got, 1));
}

TEST_F(File, ALongThatDoesNotFitWritesNothingOfItsRun) {
    if (sizeof(long) == 4) return;
    long values[600] = {};
    values[599] = static_cast<long>(1ull << 31);
    {
        qnStdioStream out(path.c_str(), qnStream::Write, 0644);
        EXPECT_FALSE(out.putLongs(values, 600));
        values[599] = -2147483647L - 1;
        EXPECT_TRUE(out.putLongs(values + 599, 1));
    }
    EXPECT_EQ(4u, contents().size());
}

TEST_F(File, AStreamThatCouldNotBeOpenedAnswersFalse) {
    qnStdioStream stream("/nonexistent/file", qnStream::ReadWrite, 0644);
    char c[2] = {};
    short s = 0;
    int i = 0;
    long l = 0;
    float f = 0;
    double d = 0;
    EXPECT_FALSE(stream.getBytes(c, 1));
    EXPECT_FALSE(stream.getBytes(c, 2));
    EXPECT_FALSE(stream.getShorts(&s, 1));
    EXPECT_FALSE(stream.getInts(&i, 1));
    EXPECT_FALSE(stream.getLongs(&l, 1));
    EXPECT_FALSE(stream.getFloats(&f, 1));
    EXPECT_FALSE(stream.getDoubles(&d, 1));
    EXPECT_FALSE(stream.putBytes(c, 1));
    EXPECT_FALSE(stream.putBytes(c, 2));
    EXPECT_FALSE(stream.putShorts(&s, 1));
    EXPECT_FALSE(stream.putInts(&i, 1));
    EXPECT_FALSE(stream.putLongs(&l, 1));
    EXPECT_FALSE(stream.putFloats(&f, 1));
    EXPECT_FALSE(stream.putDoubles(&d, 1));
}

TEST_F(File, TheWrongDirectionAnswersFalse) {
    put("abc");
    qnStdioStream in(path.c_str(), qnStream::Read, 0);
    EXPECT_FALSE(in.putBytes("x", 1));
    EXPECT_FALSE(in.putBytes("xy", 2));
    qnStdioStream out(path.c_str(), qnStream::Write, 0);
    char c[2];
    EXPECT_FALSE(out.getBytes(c, 1));
    EXPECT_FALSE(out.getBytes(c, 2));
}

TEST_F(File, ADirectoryAnswersFalse) {
    qnStdioStream out(folder.c_str(), qnStream::Write, 0644);
    EXPECT_TRUE(out.hasError());
    qnStdioStream in(folder.c_str(), qnStream::Read, 0);
    char c;
    EXPECT_FALSE(in.getBytes(&c, 1));
}

TEST(FullDevice, MakesALargePutFail) {
    qnStdioStream stream("/dev/full", qnStream::Write, 0);
    std::string much(1 << 20, 'x');
    EXPECT_FALSE(stream.putBytes(much.data(), static_cast<unsigned>(much.size())));
}

TEST(ClosedPipe, MakesThePutFail) {
    signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    close(ends[0]);
    qnStdioStream stream(ends[1], qnStream::Write);
    std::string much(1 << 20, 'x');
    EXPECT_FALSE(stream.putBytes(much.data(), static_cast<unsigned>(much.size())));
    signal(SIGPIPE, SIG_DFL);
}

TEST(StreamCounting, TheLastReleaseDestroysTheStream) {
    qnStdioStream* stream = new qnStdioStream("/dev/null", qnStream::Write, 0);
    EXPECT_EQ(0u, stream->refCount);
    qnRetain(stream);
    qnRetain(stream);
    int fd = fileno(stream->file);
    EXPECT_FALSE(qnRelease(stream));
    EXPECT_EQ(0, fcntl(fd, F_GETFD) & ~FD_CLOEXEC);
    EXPECT_TRUE(qnRelease(stream));
    EXPECT_EQ(-1, fcntl(fd, F_GETFD));
}

}  // namespace StreamTest
