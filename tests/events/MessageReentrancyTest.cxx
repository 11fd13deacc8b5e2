// What a program may do in a delivery: sending, connecting, disconnecting, removing, destroying. Most of these tests
// are about memory: they say little unless the sanitizers watch.
#include <gtest/gtest.h>

#include "Converter.h"
#include "events/MessageRig.h"

namespace MessageReentrancyTest {

typedef MessageRig MessageReentrancy;

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

// A conversion of a program's own that looks at its input again after it has delivered.
void twice(void* input, int value) {
    qnDeliver<int>(input, value);
    Story::tell(static_cast<qnInputChannel*>(input)->latestOnly() ? "latest" : "all");
}

TEST_F(MessageReentrancy, ConverterAndItsInputLiveUntilTheirCallReturns) {
    static const unsigned short type = static_cast<unsigned short>((*qn_nextDataType)());
    static qnConverter* const prototype = new qnConverter(qnDT_int, type, reinterpret_cast<qnDeliverFunc>(&twice));
    EXPECT_EQ(prototype->getTargetType(), type);
    for (Sink* sink : {&a, &b, &c}) cut(*sink);
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        std::unique_ptr<qnObj> other(new qnObj);
        other->addInput("in", type, &d, Sink::of<int>(), 1);
        sender->connect("out", other.get(), "in");
        d.react = [&] { other.reset(); };
        send(1, mode);
        queue().distributeEvents();
        EXPECT_EQ(told(), "d:1 latest");
    }
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

// Properties.

TEST_F(MessageReentrancy, DeliverySetsAndRemovesPropertiesOfItsObject) {
    unsigned short tag = qnProperty::allocNewTag("reentrancy.delivery");
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
    releasing->setProperty(new qnProperty(qnProperty::findTag("reentrancy.other"), 1L));
    releasing->addOutput("late", qnDT_int);
    EXPECT_NE(releasing->findOutput("late"), nullptr);
}

TEST_F(MessageReentrancy, ReleaseFunctionSetsAPropertyAndAddsAnOutput) {
    unsigned short tag = qnProperty::allocNewTag("reentrancy.release");
    unsigned short other = qnProperty::allocNewTag("reentrancy.other");
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
