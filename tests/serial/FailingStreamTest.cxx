// Transcribers over files that fail: every operation answers false or null, and nothing is printed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "OrderedGlobal.h"
#include "Str.h"
#include "support/Records.h"

namespace FailingStreamTest {

class FailingStream : public testing::Test {
protected:
    FailingStream() : bytes(1 << 20, 'x') {
        qnInitializeToolkit();
        testing::internal::CaptureStderr();
    }
    ~FailingStream() override { EXPECT_EQ("", testing::internal::GetCapturedStderr()); }

    /** Writes more than a file keeps back. */
    bool writesMuch(qnStream* stream) {
        qnTranscriber* writer = qnTranscriber::getWriter(stream);
        if (writer == nullptr) return false;
        qnRetain(writer);
        Probe object([&](qnTranscriber& t, Probe&) { return t.xdr(&bytes[0], static_cast<unsigned>(bytes.size())); });
        bool written = writer->writeObject(&object, &object);
        qnRelease(writer);
        return written;
    }
    /** Reads a graph without a header. */
    static void* readsGraph(qnStream* stream) {
        qnBinaryReader reader(stream, 0x1122, 0x33445566, "ieee");
        return reader.readObject(Probe::type());
    }

    std::string bytes;
};

TEST_F(FailingStream, AFullDeviceMakesTheWriteFail) {
    EXPECT_FALSE(writesMuch(new qnStdioStream("/dev/full", qnStream::Write, 0)));
}

TEST_F(FailingStream, AFullDeviceWithoutABufferFailsAtTheHeader) {
    qnStdioStream* stream = new qnStdioStream("/dev/full", qnStream::Write, 0);
    std::setvbuf(stream->file, nullptr, _IONBF, 0);
    EXPECT_FALSE(stream->putBytes("x", 1));
    EXPECT_FALSE(stream->hasError());
    EXPECT_EQ(nullptr, qnTranscriber::getWriter(stream));
}

TEST_F(FailingStream, AClosedPipeMakesTheWriteFail) {
    auto before = std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    close(ends[0]);
    EXPECT_FALSE(writesMuch(new qnStdioStream(ends[1], qnStream::Write)));
    std::signal(SIGPIPE, before);
}

TEST_F(FailingStream, AnEmptyPipeGivesNoReaderAndNoGraph) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    close(ends[1]);
    qnStdioStream* stream = new qnStdioStream(ends[0], qnStream::Read);
    qnRetain(stream);
    EXPECT_EQ(nullptr, qnTranscriber::getReader(stream));
    EXPECT_EQ(nullptr, readsGraph(stream));
    qnRelease(stream);
}

TEST_F(FailingStream, ADirectoryGivesNoWriterNoReaderAndNoGraph) {
    EXPECT_EQ(nullptr, qnTranscriber::getWriter(new qnStdioStream("/", qnStream::Write, 0644)));
    qnStdioStream* stream = new qnStdioStream("/", qnStream::Read, 0);
    qnRetain(stream);
    EXPECT_EQ(nullptr, qnTranscriber::getReader(stream));
    EXPECT_EQ(nullptr, readsGraph(stream));
    qnRelease(stream);
}

TEST_F(FailingStream, AStreamOfTheWrongDirectionGivesNoWriterNoReaderAndNoGraph) {
    EXPECT_EQ(nullptr, qnTranscriber::getWriter(new qnStdioStream("/dev/null", qnStream::Read, 0)));
    qnStdioStream* stream = new qnStdioStream("/dev/null", qnStream::Write, 0);
    qnRetain(stream);
    EXPECT_EQ(nullptr, qnTranscriber::getReader(stream));
    EXPECT_EQ(nullptr, readsGraph(stream));
    qnRelease(stream);
}

TEST_F(FailingStream, ADescriptorOpenedTheWrongWayIsAnError) {
    int fd = open("/dev/null", O_RDONLY);
    {
        qnStdioStream stream(fd, qnStream::Write);
        EXPECT_TRUE(stream.hasError());
        EXPECT_FALSE(stream.putBytes("x", 1));
        EXPECT_FALSE(stream.putBytes("xy", 2));
    }
    // Deliberate: the descriptor stays open.
    EXPECT_EQ(0, close(fd));
    fd = open("/dev/null", O_WRONLY);
    {
        qnStdioStream stream(fd, qnStream::Read);
        char c[2];
        EXPECT_TRUE(stream.hasError());
        EXPECT_FALSE(stream.getBytes(c, 1));
        EXPECT_FALSE(stream.getBytes(c, 2));
    }
    EXPECT_EQ(0, close(fd));
}

TEST_F(FailingStream, AStreamThatCouldNotBeOpenedGivesNoWriterNoReaderAndNoGraph) {
    EXPECT_EQ(nullptr, qnTranscriber::getWriter(new qnStdioStream("/nonexistent/file", qnStream::Write, 0644)));
    qnStdioStream* stream = new qnStdioStream("/nonexistent/file", qnStream::Read, 0);
    qnRetain(stream);
    EXPECT_EQ(nullptr, qnTranscriber::getReader(stream));
    EXPECT_EQ(nullptr, readsGraph(stream));
    {
        qnBinaryWriter writer(stream);
        Probe object;
        EXPECT_FALSE(writer.writeObject(&object, &object));
    }
    qnRelease(stream);
}

TEST_F(FailingStream, TheLastTranscriberThatLetsGoClosesTheFile) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    qnStream* stream = new qnStdioStream(ends[1], qnStream::Write);
    qnTranscriber* first = new qnBinaryWriter(stream);
    qnTranscriber* second = new qnBinaryWriter(stream);
    EXPECT_EQ(2u, stream->refCount);
    delete first;
    EXPECT_NE(-1, fcntl(ends[1], F_GETFD));
    delete second;
    EXPECT_EQ(-1, fcntl(ends[1], F_GETFD));
    close(ends[0]);
}

}  // namespace FailingStreamTest
