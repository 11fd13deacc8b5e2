// What a program may do while it is being called: from a delivery function, from an event, from the destructor of a
// box. Most of these tests are about memory: they say little unless the sanitizers watch.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "Converter.h"
#include "support/ChannelRig.h"

namespace MessageReentrancyTest {

class MessageReentrancy : public ChannelRig {
protected:
    void SetUp() override {
        ChannelRig::SetUp();
        sender.reset(new qnObj);
        receiver.reset(new qnObj);
        out = sender->addOutput("out", qnDT_int);
        for (Sink* sink : {&a, &b, &c}) join(*sink);
    }
    void join(Sink& sink, qnBool latestOnly = 0) {
        intInput(*receiver, sink.name.c_str(), sink, latestOnly);
        sender->connect("out", receiver.get(), sink.name.c_str());
    }
    void cut(Sink& sink) { sender->disconnect("out", receiver.get(), sink.name.c_str()); }
    void remove(Sink& sink) { receiver->removeInput(sink.name.c_str()); }
    qnInputChannel* in(Sink& sink) { return receiver->findInput(sink.name.c_str()); }
    void send(int value, qnObj::qnSendFlags mode) { sendTo(out, value, mode); }
    /** A reaction that happens the first time only. */
    static std::function<void()> once(std::function<void()> reaction) {
        std::shared_ptr<bool> done(new bool(false));
        return [done, reaction] {
            if (*done) return;
            *done = true;
            reaction();
        };
    }

    Sink a{"a"}, b{"b"}, c{"c"}, d{"d"};
    std::unique_ptr<qnObj> sender, receiver;
    qnOutputChannel* out = nullptr;
};

// A delivery sends.

TEST_F(MessageReentrancy, ImmediateSendInsideAnImmediateSend) {
    a.react = once([&] { send(2, Immediate); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 a:2 b:2 c:2 b:1 c:1");
}

TEST_F(MessageReentrancy, QueuedAndUrgentSendsInsideAnImmediateSendWait) {
    b.react = once([&] {
        send(2, Queued);
        send(3, Urgent);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(distribute(), "c:3 b:3 a:3 a:2 b:2 c:2");
}

TEST_F(MessageReentrancy, QueuedSendInsideADistributionWaitsForTheNext) {
    cut(b);
    cut(c);
    a.react = once([&] { send(2, Queued); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1");
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(MessageReentrancy, UrgentSendInsideADistributionIsDeliveredInIt) {
    cut(b);
    cut(c);
    a.react = once([&] { send(9, Urgent); });
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 a:9");  // in place of the second
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(MessageReentrancy, ImmediateSendInsideADistribution) {
    a.react = once([&] { send(2, Immediate); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 a:2 b:2 c:2 b:1 c:1");
}

TEST_F(MessageReentrancy, SendsThroughConvertersInsideADelivery) {
    floatInput(*receiver, "d", d);
    sender->connect("out", receiver.get(), "d");
    d.react = once([&] {
        send(2, Immediate);
        send(3, Queued);
        send(4, Urgent);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1 d:1f a:2 b:2 c:2 d:2f");
    EXPECT_EQ(distribute(), "d:4f c:4 b:4 a:4 a:3 b:3 c:3 d:3f");
}

TEST_F(MessageReentrancy, LatestOnlyInputSendsToItselfInItsDelivery) {
    cut(a);
    cut(b);
    cut(c);
    join(d, 1);
    d.react = once([&] {
        EXPECT_EQ(in(d)->pending, nullptr);
        send(2, Queued);
        send(3, Queued);
        EXPECT_EQ(in(d)->pending, queue().head);
    });
    send(1, Queued);
    EXPECT_EQ(distribute(), "d:1");
    EXPECT_EQ(in(d)->pending, queue().head);
    EXPECT_EQ(distribute(), "d:3");
}

// A delivery connects.

TEST_F(MessageReentrancy, ConnectionMadeDuringAnImmediateSendWaitsForTheNextSend) {
    a.react = once([&] { join(d); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    send(2, Immediate);
    EXPECT_EQ(told(), "a:2 b:2 c:2 d:2");
}

TEST_F(MessageReentrancy, ManyConnectionsMadeDuringAnImmediateSend) {
    a.react = once([&] {
        for (int i = 0; i < 300; ++i) out->add(in(b));  // the list moves to another place
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ConnectionMadeDuringADistributionGetsNothingOfIt) {
    a.react = once([&] { join(d); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ConnectionMadeInPlaceOfAnotherWaitsForTheNextSend) {
    a.react = once([&] {
        cut(b);
        join(d);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 c:1");
    send(2, Immediate);
    EXPECT_EQ(told(), "a:2 c:2 d:2");
}

// A delivery disconnects.

TEST_F(MessageReentrancy, LaterReceiverThatIsDisconnectedDuringAnImmediateSendIsSkipped) {
    a.react = once([&] { cut(b); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverThatDisconnectsItselfSkipsNobodyElse) {
    a.react = once([&] { cut(a); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    send(2, Immediate);
    EXPECT_EQ(told(), "b:2 c:2");
}

TEST_F(MessageReentrancy, EarlierReceiverThatIsDisconnectedSkipsNobody) {
    b.react = once([&] { cut(a); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, EverybodyIsDisconnectedDuringAnImmediateSend) {
    a.react = once([&] {
        cut(c);
        cut(a);
        cut(b);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(MessageReentrancy, DisconnectDuringADistributionLeavesTheMessages) {
    a.react = once([&] {
        cut(a);
        cut(b);
    });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ConverterThatIsDisconnectedInItsOwnCall) {
    floatInput(*receiver, "d", d);
    sender->connect("out", receiver.get(), "d");
    d.react = once([&] { sender->disconnect("out", receiver.get(), "d"); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1 d:1f");
    EXPECT_EQ(in(d)->refCount, 1u);
}

TEST_F(MessageReentrancy, NestedSendDisconnectsWhatTheOuterOneStandsOn) {
    a.react = once([&] { send(2, Immediate); });
    b.react = once([&] {
        cut(a);
        cut(b);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 a:2 b:2 c:2 c:1");
}

// A delivery removes channels.

TEST_F(MessageReentrancy, ReceiverRemovesItsOwnChannelDuringAnImmediateSend) {
    a.react = [&] { remove(a); };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(in(a), nullptr);
}

TEST_F(MessageReentrancy, ReceiverRemovesItsOwnChannelDuringADistribution) {
    a.react = [&] { remove(a); };
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1 b:2 c:2");
}

TEST_F(MessageReentrancy, ReceiverRemovesALaterChannelDuringAnImmediateSend) {
    a.react = [&] { remove(b); };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverRemovesALaterChannelDuringADistribution) {
    a.react = [&] { remove(b); };
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverBehindAConverterRemovesItsOwnChannel) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        floatInput(*receiver, "d", d);
        sender->connect("out", receiver.get(), "d");
        d.react = [&] { receiver->removeInput("d"); };
        send(1, mode);
        queue().distributeEvents();
        EXPECT_EQ(in(d), nullptr);
    }
    EXPECT_EQ(told(), "a:1 b:1 c:1 d:1f a:1 b:1 c:1 d:1f d:1f c:1 b:1 a:1");
}

TEST_F(MessageReentrancy, ReceiverReplacesItsOwnChannel) {
    a.react = once([&] { intInput(*receiver, "a", d); });
    send(1, Immediate);
    send(2, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1 a:2 b:2 c:2");
}

TEST_F(MessageReentrancy, ReceiverWhoseChannelOnlyItsConnectionHoldsIsDisconnectedInItsCall) {
    intInput(*receiver, "a", d);  // the first one is held by its connection
    a.react = [&] { EXPECT_EQ((out->remove((*out)[0]), out->getNumberOfConnections()), 2u); };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverRemovesTheOutputDuringAnImmediateSend) {
    for (Sink* sink : {&a, &b, &c}) {
        SetUp();
        sink->react = once([&] { sender->removeOutput("out"); });
        send(1, Immediate);
        EXPECT_EQ(told(), sink == &a ? "a:1" : sink == &b ? "a:1 b:1" : "a:1 b:1 c:1");
        EXPECT_EQ(CountedBox::live, 0);
        EXPECT_EQ(in(a)->refCount, 1u);
    }
}

TEST_F(MessageReentrancy, ReceiverReplacesTheOutputAndConnectsTheNewOneAsTheOldOneWas) {
    a.react = once([&] {
        sender->removeOutput("out");
        out = sender->addOutput("out", qnDT_int);  // often in the place of the old one
        for (const char* name : {"a", "b", "c"}) sender->connect("out", receiver.get(), name);
    });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1");
    send(2, Immediate);
    EXPECT_EQ(told(), "a:2 b:2 c:2");
}

TEST_F(MessageReentrancy, NestedSendRemovesTheOutputOfTheOuterOne) {
    a.react = once([&] { send(2, Immediate); });
    b.react = once([&] { sender->removeOutput("out"); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 a:2 b:2");
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(MessageReentrancy, ReceiverRemovesTheOutputDuringADistribution) {
    a.react = once([&] { sender->removeOutput("out"); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

// A delivery destroys objects.

TEST_F(MessageReentrancy, ReceiverDestroysItsOwnObjectDuringAnImmediateSend) {
    a.react = [&] { receiver.reset(); };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(MessageReentrancy, ReceiverDestroysItsOwnObjectDuringADistribution) {
    a.react = [&] { receiver.reset(); };
    send(1, Queued);
    send(2, Urgent);
    EXPECT_EQ(distribute(), "c:2 b:2 a:2");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(MessageReentrancy, ReceiverDestroysTheSenderDuringAnImmediateSend) {
    b.react = [&] { sender.reset(); };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1");
    EXPECT_EQ(in(a)->refCount, 1u);
    EXPECT_EQ(in(c)->getNumberOfOutputs(), 0u);
}

TEST_F(MessageReentrancy, ReceiverDestroysTheSenderDuringADistribution) {
    a.react = once([&] { sender.reset(); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverDestroysBothObjects) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        SetUp();
        a.react = c.react = once([&] {
            sender.reset();
            receiver.reset();
        });
        send(1, mode);
        queue().distributeEvents();
        EXPECT_EQ(told(), mode == Urgent ? "c:1" : "a:1");
        EXPECT_EQ(CountedBox::live, 0);
    }
}

TEST_F(MessageReentrancy, ReceiverDestroysAnotherReceiver) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate}) {
        std::unique_ptr<qnObj> other(new qnObj);
        intInput(*other, "in", d);
        sender->connect("out", other.get(), "in");
        a.react = [&] { other.reset(); };
        send(1, mode);
        queue().distributeEvents();
        EXPECT_EQ(told(), "a:1 b:1 c:1");
    }
}

TEST_F(MessageReentrancy, ReceiverBehindAConverterDestroysItsOwnObject) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        std::unique_ptr<qnObj> other(new qnObj);
        floatInput(*other, "in", d);
        sender->connect("out", other.get(), "in");
        d.react = [&] { other.reset(); };
        send(1, mode);
        queue().distributeEvents();
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(out->getNumberOfConnections(), 3u);
    }
}

TEST_F(MessageReentrancy, ObjectThatSendsToItselfDestroysItself) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        std::unique_ptr<qnObj> self(new qnObj);
        qnOutputChannel* own = self->addOutput("out", qnDT_int);
        intInput(*self, "1", d);
        intInput(*self, "2", d);
        floatInput(*self, "3", d);
        for (const char* name : {"1", "2", "3"}) self->connect("out", self.get(), name);
        d.react = [&] { self.reset(); };
        Story::take();
        sendTo(own, 4, mode);
        queue().distributeEvents();
        EXPECT_EQ(self, nullptr);
        EXPECT_EQ(told(), mode == Urgent ? "d:4f" : mode == Immediate ? "d:4" : "d:4 d:4f");
    }
}

// A delivery posts and removes events, and lets others be delivered.

TEST_F(MessageReentrancy, DeliveryPostsAndRemovesEvents) {
    struct All {
        static qnBool wanted(qnEvent*, void*) { return 1; }
    };
    a.react = once([] {
        queue().postEvent(new NamedEvent("front"), 1);
        queue().postEvent(new NamedEvent("back"), 0);
        queue().removeEvents(&All::wanted, nullptr);
        queue().postEvent(new NamedEvent("last"), 0);
    });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 ~front ~back last ~last");
}

TEST_F(MessageReentrancy, DeliveryDistributes) {
    a.react = once([] { queue().distributeEvents(); });
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1 a:2 b:2 c:2");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(MessageReentrancy, DeliveryFlushesItsOwnChannel) {
    a.react = once([&] { in(a)->flush(); });
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1 b:2 c:2");
}

TEST_F(MessageReentrancy, DeliveryDisconnectsItsOwnChannel) {
    a.react = once([&] { in(a)->disconnect(); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(in(a)->refCount, 1u);
}

TEST_F(MessageReentrancy, DeliveryTakesALaterMessageOut) {
    a.react = once([&] { delete queue().get(); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 c:1");
}

// Boxes.

TEST_F(MessageReentrancy, ReceiverKeepsTheBoxOfAnImmediateSend) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { qnRetain(box); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(CountedBox::live, 1);
    EXPECT_EQ(box->refCount, 1u);
    qnRelease(box);
}

TEST_F(MessageReentrancy, ReceiverSendsTheSameBoxOn) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { queue().postMessage(out, box, Queued); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(box->refCount, 3u);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

TEST_F(MessageReentrancy, ReceiverSendsTheSameBoxImmediately) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { queue().postMessage(out, box, Immediate); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 a:1 b:1 c:1 b:1 c:1");
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(MessageReentrancy, ReceiverHoldsTheBoxForAMomentOnly) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] {
        qnRetain(box);
        qnRelease(box);
    });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(MessageReentrancy, BoxOfAReplacedMessageEndsTheConnectionInItsEnd) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        SetUp();
        for (Sink* sink : {&a, &b, &c}) cut(*sink);
        join(d, 1);
        join(c);  // behind it
        CountedBox* box = new CountedBox(1);
        box->atEnd = [&] { cut(d); };
        queue().postEvent(new qnMessageEvent(in(d), box), 0);
        in(d)->pending = static_cast<qnMessageEvent*>(queue().head);
        send(2, mode);
        queue().distributeEvents();
        EXPECT_EQ(told(), "c:2");
    }
}

TEST_F(MessageReentrancy, BoxOfAReplacedMessageDestroysTheOutputInItsEnd) {
    for (Sink* sink : {&a, &b, &c}) cut(*sink);
    join(d, 1);
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { sender->removeOutput("out"); };
    queue().postMessage(out, box, Queued);
    send(2, Queued);
    EXPECT_EQ(queue().count, 0u) << "there is no connection any more";
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(in(d)->refCount, 1u);
}

TEST_F(MessageReentrancy, BoxOfAReplacedMessageDestroysTheReceiverInItsEnd) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        SetUp();
        for (Sink* sink : {&a, &b, &c}) cut(*sink);
        join(d, 1);
        CountedBox* box = new CountedBox(1);
        box->atEnd = [&] { receiver.reset(); };
        queue().postMessage(out, box, Queued);
        send(2, mode);
        EXPECT_EQ(queue().count, 0u);
        queue().distributeEvents();
        EXPECT_EQ(told(), "") << "who would have received it is gone";
        EXPECT_EQ(CountedBox::live, 0);
        EXPECT_EQ(out->getNumberOfConnections(), 0u);
    }
}

TEST_F(MessageReentrancy, BoxSendsAgainInItsEnd) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { send(2, Queued); };
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(distribute(), "a:2 b:2 c:2");
}

TEST_F(MessageReentrancy, BoxOfALatestOnlyMessageSendsAgainInItsEnd) {
    cut(a);
    cut(b);
    cut(c);
    join(d, 1);
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { send(3, Queued); };
    queue().postMessage(out, box, Queued);
    send(2, Queued);
    queue().distributeEvents();
    queue().distributeEvents();
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(in(d)->pending, nullptr);
    EXPECT_EQ(in(d)->refCount, 2u);
}

TEST_F(MessageReentrancy, BoxRemovesItsChannelWhileItsMessageIsRemovedWithTheChannel) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { remove(a); };
    cut(b);
    cut(c);
    queue().postMessage(out, box, Queued);
    remove(a);
    EXPECT_EQ(in(a), nullptr);
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(MessageReentrancy, BoxDestroysTheObjectWhoseInputIsBeingRemoved) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { receiver.reset(); };
    cut(b);
    cut(c);
    queue().postMessage(out, box, Queued);
    remove(a);
    EXPECT_EQ(receiver, nullptr);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(MessageReentrancy, BoxTouchesTheChannelsOfAnObjectThatIsBeingDestroyed) {
    CountedBox* box = new CountedBox(1);
    qnObj* object = receiver.get();
    box->atEnd = [&] {
        object->removeInput("a");
        object->removeInput("b");
        object->removeInput("c");
        object->removeOutput("none");
        EXPECT_EQ(object->findInput("none"), nullptr);
    };
    queue().postMessage(out, box, Queued);
    delete receiver.release();
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(MessageReentrancy, BoxAddsAnInputToAnObjectThatIsBeingDestroyed) {
    CountedBox* box = new CountedBox(1);
    qnObj* object = receiver.get();
    box->atEnd = [&] { intInput(*object, "late", d); };
    queue().postMessage(out, box, Queued);
    delete receiver.release();
    EXPECT_EQ(queue().count, 0u);
}

// Events.

TEST_F(MessageReentrancy, EventPostsItselfAgain) {
    NamedEvent* event = new NamedEvent("x");
    int times = 0;
    event->react = [event, &times] {
        if (++times < 3) queue().postEvent(event, 0);
    };
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x");
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "x");
    EXPECT_EQ(distribute(), "x ~x");
}

TEST_F(MessageReentrancy, EventPostsItselfAgainAtTheFront) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] { queue().postEvent(event, 1); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x x");  // two were counted
    event->react = nullptr;
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(MessageReentrancy, EventPostsItselfToAnotherQueue) {
    qnEventQueue others;
    NamedEvent* event = new NamedEvent("x");
    event->react = [&, event] { others.append(event); };
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x");
    EXPECT_EQ(others.count, 1u);
}

TEST_F(MessageReentrancy, EventPostsItselfAgainAndIsDeliveredInANestedDistribution) {
    NamedEvent* event = new NamedEvent("x");
    event->react = once([event] {
        queue().postEvent(event, 0);
        queue().distributeEvents();
    });
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x x ~x");
}

TEST_F(MessageReentrancy, EventDestroysItself) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] { delete event; };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(MessageReentrancy, EventPostsItselfAgainAndIsRemoved) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] {
        queue().postEvent(event, 0);
        queue().remove(event);
    };
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x ~x");
}

TEST_F(MessageReentrancy, EventDestroysTheNextEvent) {
    NamedEvent* event = new NamedEvent("x");
    NamedEvent* next = new NamedEvent("y");
    event->react = [next] { delete next; };
    queue().postEvent(event, 0);
    queue().postEvent(next, 0);
    EXPECT_EQ(distribute(), "x ~y ~x");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(MessageReentrancy, EventsDestructorPostsAfterDelivery) {
    NamedEvent* event = new NamedEvent("x");
    event->atEnd = [] { queue().postEvent(new NamedEvent("y"), 1); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("z"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
    EXPECT_EQ(distribute(), "z ~z");
}

TEST_F(MessageReentrancy, EventsDestructorDistributes) {
    NamedEvent* event = new NamedEvent("x");
    event->atEnd = [] { queue().distributeEvents(); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(MessageReentrancy, MessageIsDestroyedInItsOwnDelivery) {
    ChannelWatch watched(in(a));
    CountedBox* box = new CountedBox(1);
    qnMessageEvent* event = new qnMessageEvent(in(a), box);
    a.react = once([&] {
        delete event;
        EXPECT_EQ(CountedBox::live, 1) << "the delivery under way needs it";
        remove(a);
        EXPECT_EQ(watched.holders(), 1u);
    });
    event->deliver();
    EXPECT_EQ(told(), "a:1");
    EXPECT_EQ(watched.holders(), 0u);
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(MessageReentrancy, MessageIsDestroyedInADeliveryInsideItsDelivery) {
    CountedBox* box = new CountedBox(1);
    qnMessageEvent* event = new qnMessageEvent(in(a), box);
    int depth = 0;
    a.react = [&] {
        if (++depth < 3) {
            event->deliver();
            EXPECT_EQ(CountedBox::live, 1);
        } else {
            delete event;
            event = new qnMessageEvent(in(b), new CountedBox(2));  // often in its place
            delete event;
        }
    };
    event->deliver();
    EXPECT_EQ(told(), "a:1 a:1 a:1");
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(in(a)->refCount, 2u);
}

TEST_F(MessageReentrancy, TextOfAMessageThatIsDestroyedInItsOwnDeliveryStaysReadable) {
    struct Keep {
        static void text(void* closure, char* value) {
            delete static_cast<qnMessageEvent*>(closure);
            Story::tell(value);
        }
    };
    qnInputChannel texts(qnDT_CharPtr, nullptr, reinterpret_cast<qnDeliverFunc>(&Keep::text), 0);
    qnRetain(&texts);
    qnMessageEvent* event = new qnMessageEvent(&texts, new qnCharPtrData(strdup("words")));
    texts.closure = event;
    event->deliver();
    EXPECT_EQ(told(), "words");
    EXPECT_EQ(texts.refCount, 1u);
}

TEST_F(MessageReentrancy, MessageThatIsDeliveredByHandFromItsOwnDelivery) {
    qnEvent* seen = nullptr;
    a.react = once([&] { seen->deliver(); });
    cut(b);
    cut(c);
    send(1, Queued);
    seen = queue().head;
    EXPECT_EQ(distribute(), "a:1 a:1");
}

// Objects that are events have channels of their own.
TEST_F(MessageReentrancy, EventThatReceivesAValueIsDestroyedWithItsMessages) {
    NamedEvent* event = new NamedEvent("x");
    intInput(*event, "in", d);
    sender->connect("out", event, "in");
    queue().postEvent(event, 0);
    send(1, Queued);
    EXPECT_EQ(distribute(), "x ~x a:1 b:1 c:1");
}

// Properties.

TEST_F(MessageReentrancy, DeliverySetsAndRemovesPropertiesOfItsObject) {
    unsigned short tag = qnProperty::allocNewTag("MessageReentrancy.delivery");
    a.react = [&] {
        receiver->setProperty(new qnProperty(tag, 1L));
        receiver->removeProperty("inputs");
    };
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1");
    EXPECT_EQ(receiver->getNumberOfProperties(), 1u);
}

qnObj* releasing;
void setAnotherInRelease(void*) {
    Story::tell("released");
    releasing->setProperty(new qnProperty(qnProperty::findTag("MessageReentrancy.other"), 1L));
    releasing->addOutput("late", qnDT_int);
    EXPECT_NE(releasing->findOutput("late"), nullptr);
}

TEST_F(MessageReentrancy, ReleaseFunctionSetsAPropertyAndAddsAnOutput) {
    unsigned short tag = qnProperty::allocNewTag("MessageReentrancy.release");
    unsigned short other = qnProperty::allocNewTag("MessageReentrancy.other");
    qnObj object;
    releasing = &object;
    object.setProperty(new qnProperty(tag, static_cast<void*>(nullptr), &setAnotherInRelease));
    object.removeProperty(tag);
    EXPECT_EQ(told(), "released");
    EXPECT_NE(object.findProperty(other, nullptr), nullptr);
    EXPECT_NE(object.findOutput("late"), nullptr);
    EXPECT_EQ(object.findProperty(tag, nullptr), nullptr);

    object.setProperty(new qnProperty(tag, static_cast<void*>(nullptr), &setAnotherInRelease));
    object.setProperty(new qnProperty(tag, 5L));  // in place of the other
    EXPECT_EQ(told(), "released");
    EXPECT_EQ(object.findProperty(tag, nullptr)->getAsLong(), 5);
    EXPECT_EQ(object.getNumberOfProperties(), 3u);
}

}  // namespace MessageReentrancyTest
