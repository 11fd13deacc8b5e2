#ifndef MORVAQNDS_TESTS_LOOPRIG_H
#define MORVAQNDS_TESTS_LOOPRIG_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "Application.h"
#include "EventHandler.h"
#include "Exec.h"
#include "OrderedGlobal.h"
#include "SelectHandler.h"
#include "Timer.h"

/**
 * Timers, handlers, applications and events whose behaviour a test decides, and a log of what was called.
 *
 *     struct Cycle : LoopRig::Test {};
 *     TEST_F(Cycle, ...) {
 *         LoopRig::Timer a("a", 0);
 *         a.onTick = [&] { b->stopTimer(); };
 *         a.start(2);
 *         qnTimer::alarm(3);
 *         EXPECT_EQ("a ", LoopRig::log);
 */
namespace LoopRig {

inline std::string& sharedLog() {
    static std::string text;
    return text;
}
static std::string& log = sharedLog();

inline void note(const std::string& word) { log += word + ' '; }

/** What the action says, in a copy, so that the action may destroy its owner. */
inline void act(const std::function<void()>& action) {
    std::function<void()> copy = action;
    if (copy) copy();
}

/** Starts with an empty log, and sees to it that nothing is left behind. */
class Test : public testing::Test {
protected:
    Test() {
        qnInitializeToolkit();
        log.clear();
    }
    void TearDown() override {
        EXPECT_EQ(nullptr, qnTimer::getFirst()) << "timers are left";
        EXPECT_EQ(0u, qn_theEventHandler->count) << "events are left";
        EXPECT_EQ(0u, qn_theExecutive->getNumberOfApplications()) << "applications are left";
        qn_theExecutive->updateSelectState();
        EXPECT_EQ(101u, qn_theExecutive->getLowestDescriptor()) << "handlers are left";
    }
};

class Timer : public qnTimer {
public:
    Timer(std::string name, qnBool repeating) : qnTimer(repeating), name_(std::move(name)) {}
    void tick() override {
        note(name_);
        act(onTick);
    }
    void start(float interval) {
        setInterval(interval);
        startTimer();
    }
    std::function<void()> onTick;

private:
    std::string name_;
};

/** The active timers' deltas: "2 3 " after starts with 2 and 5 seconds. */
inline std::string deltas() {
    std::string text;
    for (const qnTimer* t = qnTimer::getFirst(); t != nullptr; t = t->getNext()) {
        char number[40];
        std::snprintf(number, sizeof number, "%g ", static_cast<double>(t->getDelta()));
        text += number;
    }
    return text;
}

/** Two ends of a pipe; those that nobody took are closed. */
class Pipe {
public:
    Pipe() {
        if (pipe(ends_) != 0) std::abort();
    }
    ~Pipe() {
        for (int end : ends_) {
            if (end >= 0) close(end);
        }
    }
    int reading() const { return ends_[0]; }
    int writing() const { return ends_[1]; }
    /** Hands the end over to the caller. */
    int takeReading() { return std::exchange(ends_[0], -1); }
    int takeWriting() { return std::exchange(ends_[1], -1); }
    /** Makes the reading end ready. */
    void put(char c = 'x') {
        if (write(ends_[1], &c, 1) != 1) std::abort();
    }

private:
    Pipe(const Pipe&);
    Pipe& operator=(const Pipe&);

    int ends_[2];
};

class Handler : public qnSelectHandler {
public:
    Handler(std::string name, int fd, qnBool read = 1, qnBool write = 0, qnBool exception = 0)
        : qnSelectHandler(fd, read, write, exception), name_(std::move(name)) {}
    ~Handler() override { act(onDestroy); }
    const char* className() const override { return "Handler"; }
    void handleRead() override {
        note(name_ + ".read");
        act(onRead);
    }
    void handleWrite() override {
        note(name_ + ".write");
        act(onWrite);
    }
    void handleException() override {
        note(name_ + ".exception");
        act(onException);
    }
    /** Takes one byte, so that the descriptor may be ready no longer. */
    void drain() {
        char c;
        if (::read(descriptor, &c, 1) != 1) std::abort();
    }

    std::function<void()> onRead;
    std::function<void()> onWrite;
    std::function<void()> onException;
    std::function<void()> onDestroy;

private:
    std::string name_;
};

/** Owns a pipe and a handler for its reading end that is registered with `exec`. */
class Source {
public:
    explicit Source(std::string name, qnExec* exec = qn_theExecutive)
        : handler(new Handler(std::move(name), pipe.takeReading())), exec_(exec) {
        exec_->addSelectHandler(handler);
    }
    ~Source() { drop(); }
    /** A source that is ready from the start. */
    Source& ready() {
        pipe.put();
        return *this;
    }
    /** Unregisters and destroys the handler. */
    void drop() {
        if (handler == nullptr) return;
        if (exec_->getSelectHandler(handler->descriptor) == handler) exec_->removeSelectHandler(handler);
        delete std::exchange(handler, nullptr);
    }

    Pipe pipe;
    Handler* handler;

private:
    qnExec* exec_;
};

class App : public qnApplication {
public:
    explicit App(std::string name) : name_(std::move(name)) {}
    const char* className() const override { return "App"; }
    void initialize(int argc, char** argv) override {
        note(name_ + ".initialize(" + std::to_string(argc) + (argc > 0 ? std::string(",") + argv[0] : "") + ")");
        act(onInitialize);
    }
    void open() override {
        note(name_ + ".open");
        qnApplication::open();
        act(onOpen);
    }
    void close() override {
        note(name_ + ".close");
        qnApplication::close();
        act(onClose);
    }

    std::function<void()> onInitialize;
    std::function<void()> onOpen;
    std::function<void()> onClose;

private:
    std::string name_;
};

/** An event that notes its name when it is delivered. */
class Note : public qnEvent {
public:
    explicit Note(std::string name, std::function<void()> action = nullptr)
        : qnEvent(qnET_Unknown), name_(std::move(name)), action_(std::move(action)) {}
    void deliver() override {
        note(name_);
        act(action_);
    }
    static void post(const std::string& name, std::function<void()> action = nullptr) {
        qn_theEventHandler->postEvent(new Note(name, std::move(action)), 0);
    }

private:
    std::string name_;
    std::function<void()> action_;
};

/** The fixture of tests of three timers, of which `a` fires first. */
struct ThreeTimers : Test {
    ThreeTimers() : a(new Timer("a", 0)), b(new Timer("b", 0)), c(new Timer("c", 0)) {}
    void TearDown() override {
        a.reset();
        b.reset();
        c.reset();
        Test::TearDown();
    }
    /** Makes `a`, which fires first, a repeating one. */
    void repeatA() { a.reset(new Timer("a", 1)); }
    void startAll() {
        a->start(1);
        b->start(2);
        c->start(3);
    }
    std::unique_ptr<Timer> a, b, c;
};

}  // namespace LoopRig

#endif
