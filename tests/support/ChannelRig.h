#ifndef MORVAQNDS_TESTS_CHANNELRIG_H
#define MORVAQNDS_TESTS_CHANNELRIG_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "EventHandler.h"
#include "MessageEvent.h"
#include "Obj.h"
#include "OrderedGlobal.h"
#include "VoidPtrDict.h"

/** The story that a test tells: one word for each thing that happened, separated by blanks. */
class Story {
public:
    static std::string& text() {
        static std::string words;
        return words;
    }
    static void tell(const std::string& word) { text() += (text().empty() ? "" : " ") + word; }
    /** What was told since the last call. */
    static std::string take() {
        std::string told;
        told.swap(text());
        return told;
    }
};

/**
 * Where values end up: it tells "name:value" in the story and then does what the test wants to happen in a delivery.
 *
 *     Sink sink("a");
 *     object.addInput("in", qnDT_int, &sink, Sink::of<int>(), 0);
 *     sink.react = [&] { object.removeInput("in"); };
 */
class Sink {
public:
    explicit Sink(const char* sinkName) : name(sinkName) {}

    std::string name;
    std::function<void()> react;

    template <class Value>
    static qnDeliverFunc of() {
        return reinterpret_cast<qnDeliverFunc>(static_cast<void (*)(void*, Value)>(&Sink::receive<Value>));
    }
    static qnDeliverFunc ofVoid() { return reinterpret_cast<qnDeliverFunc>(&Sink::receiveVoid); }

private:
    static std::string words(int value) { return std::to_string(value); }
    static std::string words(long value) { return std::to_string(value) + "l"; }
    static std::string words(float value) { return number(static_cast<double>(value)) + "f"; }
    static std::string words(double value) { return number(value) + "d"; }
    static std::string words(char* value) { return value == nullptr ? "null" : std::string("'") + value + "'"; }
    static std::string number(double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%g", value);
        return text;
    }
    template <class Value>
    static void receive(void* self, Value value) {
        static_cast<Sink*>(self)->arrive(":" + words(value));
    }
    static void receiveVoid(void* self) { static_cast<Sink*>(self)->arrive(""); }
    void arrive(const std::string& value) {
        std::function<void()> reaction = react;  // it may change itself
        Story::tell(name + value);
        if (reaction) reaction();
    }
};

/** An int in a box that knows how many of its kind are alive. */
class CountedBox : public qnIntData {
public:
    explicit CountedBox(int value) : qnIntData(value) { ++live; }
    ~CountedBox() override {
        --live;
        if (atEnd) atEnd();
    }
    std::function<void()> atEnd;  // called by the destructor
    static int live;
};
inline int CountedBox::live = 0;

/** An event that tells its name when it is delivered and "~name" when it is destroyed. */
class NamedEvent : public qnEvent {
public:
    explicit NamedEvent(const char* eventName, unsigned long type = 100) : qnEvent(type), name(eventName) {}
    NamedEvent(const NamedEvent& other) : qnEvent(other), name(other.name) {}
    ~NamedEvent() override {
        Story::tell("~" + name);
        if (atEnd) atEnd();
    }
    void deliver() override {
        std::function<void()> reaction = react;  // the event may be destroyed in it
        Story::tell(name);
        if (reaction) reaction();
    }
    std::string name;
    std::function<void()> react, atEnd;
};

/** The fixture of tests that send: starts the toolkit, and sees to it that nothing is left behind. */
class ChannelRig : public testing::Test {
protected:
    static constexpr qnObj::qnSendFlags Queued = qnObj::qnSF_Queued;
    static constexpr qnObj::qnSendFlags Immediate = qnObj::qnSF_Immediate;
    static constexpr qnObj::qnSendFlags Urgent = qnObj::qnSF_Urgent;

    void SetUp() override {
        qnInitializeToolkit();
        ASSERT_EQ(queue().count, 0u);
        Story::take();
        CountedBox::live = 0;
    }
    void TearDown() override {
        EXPECT_EQ(queue().count, 0u) << "messages left behind";
        EXPECT_EQ(CountedBox::live, 0) << "boxes left behind";
        while (qnEvent* event = queue().get()) delete event;
    }

    static qnEventHandler& queue() { return *qn_theEventHandler; }
    /** What was told while the queued events were delivered. */
    static std::string distribute() {
        Story::take();
        queue().distributeEvents();
        return Story::take();
    }
    static std::string told() { return Story::take(); }

    static qnInputChannel* intInput(qnObj& object, const char* name, Sink& sink, qnBool latestOnly = 0) {
        return object.addInput(name, qnDT_int, &sink, Sink::of<int>(), latestOnly);
    }
    static qnInputChannel* floatInput(qnObj& object, const char* name, Sink& sink, qnBool latestOnly = 0) {
        return object.addInput(name, qnDT_float, &sink, Sink::of<float>(), latestOnly);
    }
    static void sendTo(qnOutputChannel* output, int value, qnObj::qnSendFlags mode) {
        queue().postMessage(output, new CountedBox(value), mode);
    }
    /** The channels that the queued messages are addressed to, front first. */
    static std::vector<qnInputChannel*> addressees() {
        std::vector<qnInputChannel*> channels;
        for (qnEvent* event = queue().head; event != nullptr; event = event->next)
            channels.push_back(event->getChannel());
        return channels;
    }
};

/** Holds a channel beside its regular holders, so that a test can read its count to the end. */
class ChannelWatch {
public:
    explicit ChannelWatch(qnInputChannel* watched) : channel(watched) { qnRetain(channel); }
    ~ChannelWatch() { qnRelease(channel); }
    ChannelWatch(const ChannelWatch&) = delete;
    ChannelWatch& operator=(const ChannelWatch&) = delete;

    /** Holders other than this watch. */
    unsigned holders() const { return channel->refCount - 1; }
    qnInputChannel* operator->() const { return channel; }
    qnInputChannel* const channel;
};

#endif
