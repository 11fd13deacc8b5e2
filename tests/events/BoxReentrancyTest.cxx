// What a program may do with a box while it travels, and in the end of a box. Most of these tests are about memory:
// they say little unless the sanitizers watch.
#include <gtest/gtest.h>

#include "events/MessageRig.h"

namespace BoxReentrancyTest {

typedef MessageRig BoxReentrancy;

// Boxes.

TEST_F(BoxReentrancy, ReceiverKeepsTheBoxOfAnImmediateSend) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { qnRetain(box); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(CountedBox::live, 1);
    EXPECT_EQ(box->refCount, 1u);
    qnRelease(box);
}

TEST_F(BoxReentrancy, ReceiverSendsTheSameBoxOn) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { queue().postMessage(out, box, Queued); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(box->refCount, 3u);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1");
}

TEST_F(BoxReentrancy, ReceiverSendsTheSameBoxImmediately) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] { queue().postMessage(out, box, Immediate); });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 a:1 b:1 c:1 b:1 c:1");
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(BoxReentrancy, ReceiverHoldsTheBoxForAMomentOnly) {
    CountedBox* box = new CountedBox(1);
    a.react = once([&] {
        qnRetain(box);
        qnRelease(box);
    });
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(BoxReentrancy, BoxOfAReplacedMessageEndsTheConnectionInItsEnd) {
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

TEST_F(BoxReentrancy, BoxOfAReplacedMessageDestroysTheOutputInItsEnd) {
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

TEST_F(BoxReentrancy, BoxOfAReplacedMessageDestroysTheReceiverInItsEnd) {
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

TEST_F(BoxReentrancy, BoxDistributesInItsEndWhileItsQueuedMessageIsDestroyed) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { queue().distributeEvents(); };
    queue().postEvent(new qnMessageEvent(in(a), box), 0);
    send(2, Queued);
    delete queue().head;
    EXPECT_EQ(told(), "a:2 b:2 c:2");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(BoxReentrancy, BoxSendsAgainInItsEnd) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { send(2, Queued); };
    queue().postMessage(out, box, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(distribute(), "a:2 b:2 c:2");
}

TEST_F(BoxReentrancy, BoxOfALatestOnlyMessageSendsAgainInItsEnd) {
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

TEST_F(BoxReentrancy, BoxRemovesItsChannelWhileItsMessageIsRemovedWithTheChannel) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { remove(a); };
    cut(b);
    cut(c);
    queue().postMessage(out, box, Queued);
    remove(a);
    EXPECT_EQ(in(a), nullptr);
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(BoxReentrancy, BoxDestroysTheObjectWhoseInputIsBeingRemoved) {
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { receiver.reset(); };
    cut(b);
    cut(c);
    queue().postMessage(out, box, Queued);
    remove(a);
    EXPECT_EQ(receiver, nullptr);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(BoxReentrancy, BoxDestroysTheObjectWhoseChannelsAreBeingReleased) {
    for (int way : {0, 1, 2}) {
        SetUp();
        CountedBox* box = new CountedBox(1);
        box->atEnd = [&] { receiver.reset(); };
        cut(b);
        cut(c);
        queue().postMessage(out, box, Queued);
        qnObj* object = receiver.get();
        if (way == 0) object->removeProperty("inputs");
        if (way == 1) object->removeAllProperties();
        if (way == 2) object->setProperty(new qnProperty(qnProperty::findTag("inputs"), 1L));
        EXPECT_EQ(receiver, nullptr);
        EXPECT_EQ(out->getNumberOfConnections(), 0u);
        EXPECT_EQ(CountedBox::live, 0);
    }
}

TEST_F(BoxReentrancy, BoxTouchesTheChannelsOfAnObjectThatIsBeingDestroyed) {
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

TEST_F(BoxReentrancy, BoxAddsAnInputToAnObjectThatIsBeingDestroyed) {
    CountedBox* box = new CountedBox(1);
    qnObj* object = receiver.get();
    box->atEnd = [&] { intInput(*object, "late", d); };
    queue().postMessage(out, box, Queued);
    delete receiver.release();
    EXPECT_EQ(queue().count, 0u);
}

}  // namespace BoxReentrancyTest
