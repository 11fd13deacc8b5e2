#include "Signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

#include "Descriptors.h"

namespace {

int writingEnd = -1;

/** Makes the pipe and returns its reading end, or -1. Neither end blocks. */
int makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
    writingEnd = descriptors::aboveStandard(ends[1]);
    return descriptors::aboveStandard(ends[0]);
}

void writeNumber(int signal) {
    const int error = errno;
    const char number = static_cast<char>(signal);
    ssize_t written = ::write(writingEnd, &number, 1);
    static_cast<void>(written);  // a pipe that is full holds enough of them
    errno = error;
}

struct Change {
    int signal;
    void (*handler)(int);
    struct sigaction former;
};

Change changes[] = {{SIGINT, writeNumber, {}}, {SIGTERM, writeNumber, {}}, {SIGPIPE, SIG_IGN, {}}};

}  // namespace

Signals::Signals() : qnSelectHandler(makePipe(), 1, 0, 0), output_(addOutput("signal", qnDT_int)) {
    if (descriptor < 0) return;
    for (Change& change : changes) {
        struct sigaction action = {};
        action.sa_handler = change.handler;
        sigemptyset(&action.sa_mask);
        // Without SA_RESTART: a signal frees the program from a write that nobody reads.
        ::sigaction(change.signal, &action, &change.former);
    }
}

Signals::~Signals() {
    stop();
    if (descriptor < 0) return;
    for (Change& change : changes) ::sigaction(change.signal, &change.former, nullptr);
    ::close(writingEnd);
}

const char* Signals::className() const { return "Signals"; }

void Signals::start() {
    qn_theExecutive->addSelectHandler(this);
    registered_ = true;
}

void Signals::stop() {
    if (registered_) qn_theExecutive->removeSelectHandler(this);
    registered_ = false;
}

void Signals::ignore() {
    for (Change& change : changes) ::signal(change.signal, SIG_IGN);
}

void Signals::handleRead() {
    char number;
    if (::read(descriptor, &number, 1) == 1) sendInt(output_, number, qnSF_Immediate);
}
