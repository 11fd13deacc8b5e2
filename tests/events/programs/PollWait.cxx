// How a cycle calls select and times, exactly: this program's own versions of both take the place of the system's.
#include <morvaqnds.h>
#include <sys/times.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

/** What select does when it is called next. */
struct Script {
    int result = 0;
    int error = 0;
    unsigned long ticks = 0;  // clock ticks that pass
    std::string ready;        // "r3 w4 e3": what stays in the sets
} script;

std::string calls;         // what was called, with the arguments
unsigned long now = 1000;  // clock ticks
unsigned long timesCalls = 0;

std::string describe(char kind, int limit, fd_set* set) {
    if (set == nullptr) return std::string(1, kind) + "- ";
    std::string text;
    for (int fd = 0; fd < FD_SETSIZE; ++fd) {
        if (!FD_ISSET(fd, set)) continue;
        std::string name = kind + std::to_string(fd) + " ";
        text += name;
        if (fd >= limit) text += "(beyond the limit) ";
        if ((script.ready + " ").find(name) == std::string::npos) FD_CLR(fd, set);
    }
    return text.empty() ? kind + std::string("0 ") : text;
}

int failures = 0;

void expectCalls(const std::string& expected, const char* what) {
    if (calls != expected) {
        std::fprintf(stderr, "%s: expected \"%s\", got \"%s\"\n", what, expected.c_str(), calls.c_str());
        ++failures;
    }
    calls.clear();
    script = Script();
}

void expectThat(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    ++failures;
}

struct Handler : qnSelectHandler {
    Handler(int fd, qnBool read, qnBool write = 0, qnBool exception = 0)
        : qnSelectHandler(fd, read, write, exception) {}
    ~Handler() override { descriptor = -1; }  // none of the numbers is really open
    const char* className() const override { return "Handler"; }
    void handleRead() override { note("read"); }
    void handleWrite() override { note("write"); }
    void handleException() override { note("exception"); }
    void note(const char* what) { calls += what + std::to_string(descriptor) + " "; }
};

struct Timer : qnTimer {
    explicit Timer(qnBool repeating = 0) : qnTimer(repeating) {}
    void tick() override {
        calls += "tick ";
        errno = 4711;
    }
    void start(float seconds) {
        setInterval(seconds);
        startTimer();
    }
};

struct Event : qnEvent {
    Event() : qnEvent(qnET_Unknown) {}
    void deliver() override { calls += "event "; }
};

unsigned long ticksPerSecond() { return static_cast<unsigned long>(sysconf(_SC_CLK_TCK)); }

/** Registered while it lives. The numbers are those of standard channels, which are open everywhere. */
struct Registered : Handler {
    Registered(qnExec& executive, int fd, qnBool read, qnBool write = 0, qnBool exception = 0)
        : Handler(fd, read, write, exception), exec(executive) {
        exec.addSelectHandler(this);
    }
    ~Registered() override { exec.removeSelectHandler(this); }
    qnExec& exec;
};

void testArguments() {
    qnExec exec;
    exec.poll(5);
    expectCalls("", "no handler: no select");
    expectThat(!exec.willBlock(), "no handler: will not block");
    expectCalls("", "no handler: willBlock asks nobody");
    {
        Registered h(exec, 1, 1);
        exec.poll(5);
        expectCalls("select(2 r1 w- e- 5.000000) ", "only the read set has a member");
    }
    {
        Registered h(exec, 2, 0, 1, 0);
        exec.poll(5);
        expectCalls("select(3 r- w2 e- 5.000000) ", "only the write set has a member");
    }
    {
        Registered low(exec, 0, 0, 0, 1), high(exec, 2, 1, 0, 0);
        exec.poll(0.5f);
        expectCalls("select(3 r2 w- e0 0.500000) ", "read and exception");
    }
    {
        Registered h(exec, 2, 0);
        exec.poll(5);
        expectCalls("select(3 r- w- e- 5.000000) ", "a handler that wants nothing");
    }
    {
        Registered a(exec, 0, 1, 1, 1), b(exec, 1, 1, 1, 1);
        exec.poll(5);
        expectCalls("select(2 r0 r1 w0 w1 e0 e1 5.000000) ", "everything");
        exec.poll(5);
        expectCalls("select(2 r0 r1 w0 w1 e0 e1 5.000000) ", "the sets are copies: what select clears is there again");
    }
}

void testWait() {
    qnExec exec;
    Registered h(exec, 1, 1);
    exec.poll(0);
    expectCalls("select(2 r1 w- e- 0.000000) ", "no wait");
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1000.000000) ", "whole seconds");
    exec.poll(2.75f);
    expectCalls("select(2 r1 w- e- 2.750000) ", "whole seconds and microseconds");
    exec.poll(0.0000019073486328125f);
    expectCalls("select(2 r1 w- e- 0.000001) ", "1.9 microseconds: truncated");
    exec.poll(0.7f);  // 0.699999988...
    expectCalls("select(2 r1 w- e- 0.699999) ", "truncated from the exact value");
    exec.poll(0.99999994f);
    expectCalls("select(2 r1 w- e- 0.999999) ", "never a whole second of microseconds");
    exec.poll(1e30f);
    expectCalls("select(2 r1 w- e- 100000000.000000) ", "the longest wait that every system accepts");
    exec.poll(-3);
    expectCalls("select(2 r1 w- e- 0.000000) ", "negative");

    qn_theEventHandler->postEvent(new Event, 0);
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 0.000000) event ", "a queued event: zero wait");
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1000.000000) ", "the queue is empty again");
}

void testWaitAndTimers() {
    qnExec exec;
    Registered h(exec, 1, 1);
    Timer first, second;
    first.start(2.5f);
    second.start(100);
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 2.500000) tick ", "replaced, nothing ready: the whole remaining time passes");
    expectThat(second.getDelta() == 97.5f, "the next one is due 97.5 seconds later");

    exec.poll(10);
    expectCalls("select(2 r1 w- e- 10.000000) ", "the timeout comes first");
    expectThat(second.getDelta() == 97.5f, "the clock has not moved");

    script.ticks = 10 * ticksPerSecond();
    exec.poll(10);
    expectCalls("select(2 r1 w- e- 10.000000) ", "elapsed ticks count");
    expectThat(second.getDelta() == 87.5f, "ten seconds less");

    script.ticks = ticksPerSecond();
    script.result = 1;
    script.ready = "r1";
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 87.500000) read1 ", "replaced, but something is ready: the elapsed time counts");
    expectThat(second.getDelta() == 86.5f, "one second less");

    script.ticks = ticksPerSecond();
    script.result = -1;
    script.error = EINTR;
    script.ready = "r1";
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 86.500000) ", "replaced and failed: the elapsed time counts");
    expectThat(second.getDelta() == 85.5f, "one second less");

    exec.poll(85.5f);
    expectCalls("select(2 r1 w- e- 85.500000) ", "a timeout as long as the remaining time is not replaced");
    expectThat(second.getDelta() == 85.5f, "so that the elapsed ticks count, and there were none");

    qn_theEventHandler->postEvent(new Event, 0);
    script.ticks = 5 * ticksPerSecond();
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 0.000000) event ", "an event queued: no wait, and not replaced");
    expectThat(second.getDelta() == 80.5f, "five seconds less");

    script.ticks = 81 * ticksPerSecond();
    script.result = 1;
    script.ready = "r1";
    Timer third;
    third.start(82);
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 80.500000) tick read1 ",
                "due by the elapsed time; the timer comes before the handler");
    expectThat(third.getDelta() == 1.0f, "82 less 81 seconds");

    script.ticks = ticksPerSecond();
    script.result = 1;
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1.000000) tick ", "exactly due counts as due");

    timesCalls = 0;
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1000.000000) ", "no timer: the timeout");
    expectThat(timesCalls == 0, "without a timer nobody asks for the time");
}

void testRemainingTimeIsThatBeforeTheWait() {
    qnExec exec;
    Registered h(exec, 1, 1);
    Timer t;
    t.start(2);
    now = ~0ul - ticksPerSecond() / 2;  // the clock wraps during the wait
    script.ticks = ticksPerSecond();
    exec.poll(1);
    expectCalls("select(2 r1 w- e- 1.000000) ", "the clock wraps");
    expectThat(t.getDelta() == 1.0f, "the difference is unsigned");
    now = 1000;
    t.stopTimer();
}

Timer* toStart;
void startIt() { toStart->start(3); }
void postOne() { qn_theEventHandler->postEvent(new Event, 0); }
void pre() { calls += "pre "; }
void post() { calls += "post "; }

void testStepsBeforeTheWait() {
    qnExec exec;
    Registered h(exec, 1, 1);
    Timer t;
    toStart = &t;
    exec.addPreSelectFunc(startIt);
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 3.000000) tick ", "a timer that a pre-select function starts bounds the wait");
    exec.removePreSelectFunc(startIt);
    exec.addPreSelectFunc(postOne);
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 0.000000) event ", "an event that a pre-select function posts prevents it");
    exec.removePreSelectFunc(postOne);
    exec.addPreSelectFunc(pre);
    exec.addPostSelectFunc(post);
    for (int error : {EINTR, EBADF, EINVAL}) {
        script.result = -1;
        script.error = error;
        script.ready = "r1";
        qn_theEventHandler->postEvent(new Event, 0);
        exec.poll(1000);
        expectCalls("pre select(2 r1 w- e- 0.000000) post event ", "a failure: no handler, and the rest of the cycle");
    }
}

void testReadiness() {
    qnExec exec;
    Registered a(exec, 0, 1, 1, 1), b(exec, 1, 1, 0, 1), c(exec, 2, 0, 1, 0);
    script.result = 7;
    script.ready = "r0 r1 w0 w2 e0 e1";
    exec.poll(0);
    expectCalls("select(3 r0 r1 w0 w2 e0 e1 0.000000) read0 write0 exception0 read1 exception1 write2 ",
                "ascending, for each reading, writing, exception");
    script.result = 2;
    script.ready = "e0 w2";
    exec.poll(0);
    expectCalls("select(3 r0 r1 w0 w2 e0 e1 0.000000) exception0 write2 ", "only what is ready");
    script.result = 0;
    script.ready = "r0 r1";
    exec.poll(0);
    expectCalls("select(3 r0 r1 w0 w2 e0 e1 0.000000) ", "a result of 0: the sets are not looked at");
    script.result = -1;
    script.ready = "r0 r1";
    exec.poll(0);
    expectCalls("select(3 r0 r1 w0 w2 e0 e1 0.000000) ", "a failure: the sets are not looked at");
}

int errnoSeen;
void noteErrno() { errnoSeen = errno; }

void testErrno() {
    qnExec exec;
    Registered h(exec, 1, 1);
    exec.addPostSelectFunc(noteErrno);
    Timer t;
    t.start(1);
    script.result = -1;
    script.error = EBADF;
    script.ticks = 2 * ticksPerSecond();
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1.000000) tick ", "a tick that changes errno");
    expectThat(errnoSeen == EBADF, "what select left there is there after the timers");
    t.start(1);
    script.error = EAGAIN;
    exec.poll(1000);
    expectCalls("select(2 r1 w- e- 1.000000) tick ", "and again, with the whole remaining time");
    expectThat(errnoSeen == EAGAIN, "likewise");
}

void testWillBlock() {
    qnExec exec;
    Registered a(exec, 0, 1), c(exec, 2, 0, 0, 1);
    Timer t;
    t.start(1);
    expectThat(exec.willBlock(), "nothing is ready");
    expectCalls("select(3 r0 w- e2 0.000000) ", "null for the set that is not in use, no wait");
    script.result = 1;
    script.ready = "r0";
    expectThat(!exec.willBlock(), "something is ready");
    expectCalls("select(3 r0 w- e2 0.000000) ", "on copies");
    script.result = -1;
    script.error = EBADF;
    expectThat(!exec.willBlock(), "a failure counts as: will not block");
    expectCalls("select(3 r0 w- e2 0.000000) ", "still all members");
    expectThat(t.getDelta() == 1.0f, "no time passes");
}

struct App : qnApplication {
    const char* className() const override { return "App"; }
    void initialize(int, char**) override {}
};

App* toClose;
int cyclesLeft;
void countDown() {
    if (--cyclesLeft == 0) toClose->close();
}

void testLoop() {
    App app;
    toClose = &app;
    cyclesLeft = 3;
    Registered h(*qn_theExecutive, 1, 1);
    qn_theExecutive->addPostSelectFunc(countDown);
    qn_theExecutive->loop();
    expectCalls("select(2 r1 w- e- 1000.000000) select(2 r1 w- e- 1000.000000) select(2 r1 w- e- 1000.000000) ",
                "the loop waits 1000 seconds at most, and asks for applications after each cycle");
    qn_theExecutive->removePostSelectFunc(countDown);
    qn_theExecutive->loop();
    expectCalls("select(2 r1 w- e- 1000.000000) ", "one cycle without any application");
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int select(int limit, fd_set* read, fd_set* write, fd_set* exception,
                                                             timeval* wait) {
    calls += "select(" + std::to_string(limit) + " " + describe('r', limit, read) + describe('w', limit, write) +
             describe('e', limit, exception);
    char seconds[60] = "for ever";
    if (wait != nullptr) {
        std::snprintf(seconds, sizeof seconds, "%ld.%06ld", static_cast<long>(wait->tv_sec),
                      static_cast<long>(wait->tv_usec));
    }
    calls += std::string(seconds) + ") ";
    now += script.ticks;
    errno = script.error;
    return script.result;
}

extern "C" __attribute__((visibility("default"))) clock_t times(tms* used) noexcept {
    ++timesCalls;
    std::memset(used, 0, sizeof *used);
    return static_cast<clock_t>(now);
}

int main() {
    qnInitializeToolkit();
    testArguments();
    testWait();
    testWaitAndTimers();
    testRemainingTimeIsThatBeforeTheWait();
    testStepsBeforeTheWait();
    testReadiness();
    testErrno();
    testWillBlock();
    testLoop();
    return failures;
}
