#include "Reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Descriptors.h"

namespace {

constexpr unsigned BlockSize = 1 << 16;
constexpr unsigned LongestPiece = 1 << 16;
constexpr float Pause = 0.2f;  // seconds between two looks at an input that is followed

}  // namespace

Reader::Reader(const char* name, int theDescriptor, Waking waking, Ending ending)
    : qnSelectHandler(theDescriptor, 1, 0, 0),
      name_(name),
      waking_(waking),
      ending_(ending),
      timer_(0),
      lines_(addOutput("line", qnDT_qnStr)),
      blocks_(addOutput("block", qnDT_void)),
      end_(addOutput("end", qnDT_void)),
      failed_(addOutput("failed", qnDT_CharPtr)) {
    addInput("read", this, &onRead);
    timer_.connect("tick", this, "read");
}

Reader::~Reader() { sleep(); }

const char* Reader::className() const { return "Reader"; }

void Reader::start() {
    if (waking_ == Wait) {
        wakeWhenReadable();
    } else {
        wakeAfter(0);
    }
}

void Reader::finish() {
    if (finished_) return;
    finished_ = true;
    sleep();
    sendLine();
    sendVoid(end_, qnSF_Queued);
}

void Reader::handleRead() { read(); }

void Reader::onRead(Reader* reader) {
    if (!reader->finished_) reader->read();
}

void Reader::read() {
    char block[BlockSize];
    ssize_t n = ::read(descriptor, block, sizeof block);
    if (n > 0) {
        take(block, static_cast<unsigned>(n));
        start();
        sendVoid(blocks_, qnSF_Immediate);
    } else if (n == 0) {
        atEnd();
    } else if (errno == EINTR || (errno == EAGAIN && waking_ == Wait)) {
        start();
    } else {
        fail();
    }
}

void Reader::take(const char* text, unsigned length) {
    while (length > 0) {
        const void* lineEnd = std::memchr(text, '\n', length);
        unsigned n = lineEnd == nullptr ? length : static_cast<unsigned>(static_cast<const char*>(lineEnd) - text) + 1;
        line_.append(text, n);
        if (lineEnd != nullptr || line_.length() >= LongestPiece) sendLine();
        text += n;
        length -= n;
    }
}

/** The input is at its end, at least for now. */
void Reader::atEnd() {
    if (ending_ == Ends) {
        finish();
        return;
    }
    startOver();
    // At the end of a FIFO its descriptor is always readable, until somebody opens it for writing again.
    wakeAfter(Pause);
}

/** A file that has become shorter than what was read of it was written anew. */
void Reader::startOver() {
    struct stat status;
    off_t place = ::lseek(descriptor, 0, SEEK_CUR);
    if (place < 0 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size >= place) return;
    line_.append('\n');
    sendLine();
    ::lseek(descriptor, 0, SEEK_SET);
}

void Reader::fail() {
    qnStr problem = descriptors::unreadable(name_.text());
    sleep();
    sendCharPtr(failed_, problem.text(), qnSF_Queued);
}

void Reader::sendLine() {
    if (line_.length() == 0) return;
    sendData(lines_, new qnStrData(line_), qnSF_Queued);
    line_.resize(0);
}

void Reader::wakeWhenReadable() {
    timer_.stopTimer();
    if (registered_) return;
    registered_ = true;
    qn_theExecutive->addSelectHandler(this);
}

void Reader::wakeAfter(float seconds) {
    sleep();
    timer_.setInterval(seconds);
    timer_.startTimer();
}

void Reader::sleep() {
    timer_.stopTimer();
    if (registered_) qn_theExecutive->removeSelectHandler(this);
    registered_ = false;
}
