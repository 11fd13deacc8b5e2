// How a send becomes calls or messages: `postMessage`, rule by rule.
#include <gtest/gtest.h>

#include "Converter.h"
#include "support/ChannelRig.h"

namespace PostMessageTest {

class PostMessage : public ChannelRig {
protected:
    void SetUp() override {
        ChannelRig::SetUp();
        out = sender.addOutput("out", qnDT_int);
    }
    qnInputChannel* join(const char* name, Sink& sink, qnBool latestOnly = 0) {
        qnInputChannel* in = intInput(receiver, name, sink, latestOnly);
        sender.connect("out", &receiver, name);
        return in;
    }
    qnInputChannel* joinFloat(const char* name, Sink& sink, qnBool latestOnly = 0) {
        qnInputChannel* in = floatInput(receiver, name, sink, latestOnly);
        sender.connect("out", &receiver, name);
        return in;
    }
    static qnMessageEvent* message(qnEvent* event) { return static_cast<qnMessageEvent*>(event); }

    Sink a{"a"}, b{"b"}, c{"c"};
    qnObj sender, receiver;
    qnOutputChannel* out = nullptr;
};

TEST_F(PostMessage, WithoutConnectionsDestroysTheBoxAtOnceAndPostsNothing) {
    for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
        sendTo(out, 1, mode);
        EXPECT_EQ(CountedBox::live, 0);
        EXPECT_EQ(queue().count, 0u);
    }
    join("a", a);
    sender.disconnect("out", &receiver, "a");  // an empty list is as good as none
    sendTo(out, 1, Queued);
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(PostMessage, ImmediateCallsNowAndPostsNothing) {
    join("a", a);
    joinFloat("b", b);
    sendTo(out, 1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1f");
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(PostMessage, QueuedMakesOneMessageForEachConnectionInOrder) {
    qnInputChannel* first = join("a", a);
    joinFloat("b", b);
    qnInputChannel* third = join("c", c);
    CountedBox* box = new CountedBox(1);
    queue().postMessage(out, box, Queued);
    EXPECT_EQ(told(), "");
    EXPECT_EQ(addressees(), (std::vector<qnInputChannel*>{first, (*out)[1], third}));
    for (qnEvent* event = queue().head; event != nullptr; event = event->next) {
        EXPECT_EQ(event->getType(), qnET_MessageEvent);
        EXPECT_EQ(message(event)->getData(), box);
    }
    EXPECT_EQ(box->refCount, 3u);
    EXPECT_EQ(distribute(), "a:1 b:1f c:1");
}

TEST_F(PostMessage, QueuedGoesBehindAndUrgentInFrontOfWhatWaits) {
    qnInputChannel* in = join("a", a);
    NamedEvent* event = new NamedEvent("x");
    queue().postEvent(event, 0);
    sendTo(out, 1, Queued);
    sendTo(out, 2, Urgent);
    EXPECT_EQ(addressees(), (std::vector<qnInputChannel*>{in, nullptr, in}));
    EXPECT_EQ(distribute(), "a:2 x ~x a:1");
}

// Deliberate: each message is put in front of the last.
TEST_F(PostMessage, UrgentToSeveralInputsIsQueuedInReverseOrder) {
    qnInputChannel* first = join("a", a);
    qnInputChannel* second = join("b", b);
    sendTo(out, 1, Urgent);
    EXPECT_EQ(addressees(), (std::vector<qnInputChannel*>{second, first}));
    EXPECT_EQ(distribute(), "b:1 a:1");
}

TEST_F(PostMessage, MessagesTakeSequenceNumbersInOrderOfConnections) {
    join("a", a);
    join("b", b);
    sendTo(out, 1, Urgent);
    EXPECT_EQ(queue().tail->getSequenceNumber() + 1, queue().head->getSequenceNumber());
    distribute();
}

TEST_F(PostMessage, EveryHandlerHasItsOwnQueue) {
    join("a", a);
    qnEventHandler handler;
    handler.postMessage(out, new CountedBox(1), Queued);
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(handler.count, 1u);
    handler.distributeEvents();
    EXPECT_EQ(told(), "a:1");
}

// Deliberate: other modes neither deliver nor destroy.
TEST_F(PostMessage, AnyOtherModeDoesNothingWithTheBox) {
    join("a", a);
    for (int mode : {3, -1, 256, 1 << 30}) {
        CountedBox* box = new CountedBox(1);
        queue().postMessage(out, box, static_cast<qnObj::qnSendFlags>(mode));
        EXPECT_EQ(box->refCount, 0u);
        EXPECT_EQ(CountedBox::live, 1);
        EXPECT_EQ(queue().count, 0u);
        delete box;
    }
    EXPECT_EQ(told(), "");
}

// latestOnly.

TEST_F(PostMessage, WithoutTheFlagTwoSendsMakeTwoMessages) {
    qnInputChannel* in = join("a", a);
    sendTo(out, 1, Queued);
    sendTo(out, 2, Queued);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(queue().count, 2u);
    EXPECT_EQ(distribute(), "a:1 a:2");
}

TEST_F(PostMessage, LatestOnlyKeepsTheLastOfTwoSends) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    qnMessageEvent* first = in->pending;
    EXPECT_EQ(first, queue().head);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(in->pending, queue().head);
    EXPECT_EQ(CountedBox::live, 1);
    EXPECT_EQ(distribute(), "a:2");
    EXPECT_EQ(in->pending, nullptr);
}

TEST_F(PostMessage, LatestOnlyGivesUpThePlaceOfTheFirstMessage) {
    join("a", a, 1);
    join("b", b);
    sendTo(out, 1, Queued);
    sendTo(out, 2, Queued);
    EXPECT_EQ(distribute(), "b:1 a:2 b:2");
    sendTo(out, 3, Queued);
    sendTo(out, 4, Urgent);
    EXPECT_EQ(distribute(), "b:4 a:4 b:3");
}

TEST_F(PostMessage, ImmediateSendTakesTheWaitingMessageAwayAndLeavesNonePending) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    a.react = [&] {
        EXPECT_EQ(queue().count, 0u);
        EXPECT_EQ(in->pending, nullptr);
    };
    sendTo(out, 2, Immediate);
    EXPECT_EQ(told(), "a:2");
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(CountedBox::live, 0);
}

// Deliberate: what waits goes before the mode is looked at.
TEST_F(PostMessage, AnyOtherModeTakesTheWaitingMessageAwayToo) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    CountedBox* box = new CountedBox(2);
    queue().postMessage(out, box, static_cast<qnObj::qnSendFlags>(3));
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(CountedBox::live, 1);
    delete box;
}

TEST_F(PostMessage, LatestOnlyBehindAConverterIsKeptByTheConverter) {
    qnInputChannel* in = joinFloat("a", a, 1);
    sendTo(out, 1, Queued);
    sendTo(out, 2, Queued);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ((*out)[0]->pending, queue().head);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2f");
    EXPECT_EQ((*out)[0]->pending, nullptr);
}

TEST_F(PostMessage, LatestOnlyIsKeptForEachConverterOfAnInput) {
    qnInputChannel* in = joinFloat("a", a, 1);
    qnOutputChannel* second = sender.addOutput("second", qnDT_int);
    sender.connect("second", &receiver, "a");
    sendTo(out, 1, Queued);
    sendTo(second, 2, Queued);
    EXPECT_EQ(queue().count, 2u);
    EXPECT_EQ(distribute(), "a:1f a:2f");
    EXPECT_EQ(in->refCount, 3u);
}

TEST_F(PostMessage, LatestOnlyCountsAcrossOutputsOfTheSameType) {
    join("a", a, 1);
    qnOutputChannel* second = sender.addOutput("second", qnDT_int);
    sender.connect("second", &receiver, "a");
    sendTo(out, 1, Queued);
    sendTo(second, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(PostMessage, LatestOnlyWithTheSameInputAddedTwiceKeepsOneMessageDeliveredOnce) {
    for (qnObj::qnSendFlags mode : {Queued, Urgent}) {
        ChannelWatch in(new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 1));
        out->add(in.channel);
        out->add(in.channel);
        sendTo(out, 1, mode);
        EXPECT_EQ(queue().count, 1u);
        EXPECT_EQ(in.holders(), 3u);
        EXPECT_EQ(in->pending, queue().head);
        EXPECT_EQ(CountedBox::live, 1);
        sendTo(out, 2, mode);
        EXPECT_EQ(queue().count, 1u);
        EXPECT_EQ(CountedBox::live, 1);
        EXPECT_EQ(distribute(), "a:2");
        sendTo(out, 3, Immediate);
        EXPECT_EQ(told(), "a:3 a:3");
        in->disconnect();
    }
}

TEST_F(PostMessage, BoxThatOnlyTheReplacedMessageHeldIsSentAgain) {
    ChannelWatch in(new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 1));
    out->add(in.channel);
    CountedBox* box = new CountedBox(7);
    queue().postMessage(out, box, Queued);
    queue().postMessage(out, box, Queued);  // its holder is the message that goes
    EXPECT_EQ(CountedBox::live, 1);
    EXPECT_EQ(box->refCount, 1u);
    EXPECT_EQ(distribute(), "a:7");
    queue().postMessage(out, box = new CountedBox(8), Urgent);
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:8");
    EXPECT_EQ(CountedBox::live, 0);
}

// A pending message that left the queue in another way.

TEST_F(PostMessage, PendingThatWasTakenByGetBelongsToItsTaker) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    qnEvent* taken = queue().get();
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(in->pending, queue().head);
    EXPECT_EQ(CountedBox::live, 2);
    taken->deliver();
    EXPECT_EQ(told(), "a:1");
    delete taken;
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(PostMessage, PendingThatWasTakenAndDestroyedIsForgotten) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    delete queue().get();
    EXPECT_EQ(in->pending, nullptr);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(PostMessage, PendingThatWasTakenAndPostedAgainIsReplacedAsBefore) {
    join("a", a, 1);
    sendTo(out, 1, Queued);
    queue().postEvent(queue().get(), 0);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(PostMessage, PendingThatWasRemovedIsForgotten) {
    qnInputChannel* in = join("a", a, 1);
    sendTo(out, 1, Queued);
    queue().remove(in->pending);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(in->refCount, 2u);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(PostMessage, PendingThatAPredicateRemovedIsForgotten) {
    struct All {
        static qnBool wanted(qnEvent*, void*) { return 1; }
    };
    qnInputChannel* in = join("a", a, 1);
    joinFloat("b", b, 1);
    sendTo(out, 1, Queued);
    queue().removeEvents(&All::wanted, nullptr);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ((*out)[1]->pending, nullptr);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 2u);
    EXPECT_EQ(distribute(), "a:2 b:2f");
}

TEST_F(PostMessage, PendingInAnotherHandlersQueueLeavesBothQueuesWhole) {
    qnInputChannel* in = join("a", a, 1);
    qnEventHandler handler;
    handler.postMessage(out, new CountedBox(1), Queued);
    sendTo(out, 2, Queued);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(in->pending, queue().head);
    EXPECT_EQ(distribute(), "a:2");
    handler.distributeEvents();
    EXPECT_EQ(handler.count, 0u);
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(in->refCount, 2u);
}

TEST_F(PostMessage, MessageThatOutlivesItsHandlersQueueIsForgottenWithIt) {
    qnInputChannel* in = join("a", a, 1);
    {
        qnEventHandler handler;
        handler.postMessage(out, new CountedBox(1), Queued);
        EXPECT_NE(in->pending, nullptr);
    }
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(CountedBox::live, 0);
    sendTo(out, 2, Queued);
    EXPECT_EQ(distribute(), "a:2");
}

}  // namespace PostMessageTest
