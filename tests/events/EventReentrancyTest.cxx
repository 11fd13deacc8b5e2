// What a program may do while events are delivered and destroyed, to the events and to the queue. Most of these tests
// are about memory: they say little unless the sanitizers watch.
#include <gtest/gtest.h>

#include <cstring>

#include "events/MessageRig.h"

namespace EventReentrancyTest {

typedef MessageRig EventReentrancy;

// A delivery posts and removes events, and lets others be delivered.

TEST_F(EventReentrancy, DeliveryPostsAndRemovesEvents) {
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

TEST_F(EventReentrancy, DeliveryDistributes) {
    a.react = once([] { queue().distributeEvents(); });
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1 a:2 b:2 c:2");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(EventReentrancy, DeliveryFlushesItsOwnChannel) {
    a.react = once([&] { in(a)->flush(); });
    send(1, Queued);
    send(2, Queued);
    EXPECT_EQ(distribute(), "a:1 b:1 c:1 b:2 c:2");
}

TEST_F(EventReentrancy, DeliveryDisconnectsItsOwnChannel) {
    a.react = once([&] { in(a)->disconnect(); });
    send(1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1 c:1");
    EXPECT_EQ(in(a)->refCount, 1u);
}

TEST_F(EventReentrancy, DeliveryTakesALaterMessageOut) {
    a.react = once([&] { delete queue().get(); });
    send(1, Queued);
    EXPECT_EQ(distribute(), "a:1 c:1");
}

// Events.

TEST_F(EventReentrancy, EventPostsItselfAgain) {
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

TEST_F(EventReentrancy, EventPostsItselfAgainAtTheFront) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] { queue().postEvent(event, 1); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x x");  // two were counted
    event->react = nullptr;
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(EventReentrancy, EventPostsItselfToAnotherQueue) {
    qnEventQueue others;
    NamedEvent* event = new NamedEvent("x");
    event->react = [&, event] { others.append(event); };
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x");
    EXPECT_EQ(others.count, 1u);
}

TEST_F(EventReentrancy, EventPostsItselfAgainAndIsDeliveredInANestedDistribution) {
    NamedEvent* event = new NamedEvent("x");
    event->react = once([event] {
        queue().postEvent(event, 0);
        queue().distributeEvents();
    });
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x x ~x");
}

TEST_F(EventReentrancy, EventDestroysItself) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] { delete event; };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(EventReentrancy, EventPostsItselfAgainAndIsRemoved) {
    NamedEvent* event = new NamedEvent("x");
    event->react = [event] {
        queue().postEvent(event, 0);
        queue().remove(event);
    };
    queue().postEvent(event, 0);
    EXPECT_EQ(distribute(), "x ~x");
}

TEST_F(EventReentrancy, EventDestroysTheNextEvent) {
    NamedEvent* event = new NamedEvent("x");
    NamedEvent* next = new NamedEvent("y");
    event->react = [next] { delete next; };
    queue().postEvent(event, 0);
    queue().postEvent(next, 0);
    EXPECT_EQ(distribute(), "x ~y ~x");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(EventReentrancy, EventsDestructorPostsAfterDelivery) {
    NamedEvent* event = new NamedEvent("x");
    event->atEnd = [] { queue().postEvent(new NamedEvent("y"), 1); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("z"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
    EXPECT_EQ(distribute(), "z ~z");
}

TEST_F(EventReentrancy, EventsDestructorDistributes) {
    NamedEvent* event = new NamedEvent("x");
    event->atEnd = [] { queue().distributeEvents(); };
    queue().postEvent(event, 0);
    queue().postEvent(new NamedEvent("y"), 0);
    EXPECT_EQ(distribute(), "x ~x y ~y");
}

TEST_F(EventReentrancy, EventDestroysTheQueueThatDeliversIt) {
    std::unique_ptr<qnEventHandler> handler(new qnEventHandler);
    NamedEvent* event = new NamedEvent("x");
    event->react = [&] { handler.reset(); };
    handler->postEvent(event, 0);
    handler->postEvent(new NamedEvent("y"), 0);
    handler->distributeEvents();
    EXPECT_EQ(told(), "x ~y ~x");
}

TEST_F(EventReentrancy, MessageIsDestroyedInItsOwnDelivery) {
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

TEST_F(EventReentrancy, MessageIsDestroyedInADeliveryInsideItsDelivery) {
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

TEST_F(EventReentrancy, TextOfAMessageThatIsDestroyedInItsOwnDeliveryStaysReadable) {
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

TEST_F(EventReentrancy, MessageThatIsDeliveredByHandFromItsOwnDelivery) {
    qnEvent* seen = nullptr;
    a.react = once([&] { seen->deliver(); });
    cut(b);
    cut(c);
    send(1, Queued);
    seen = queue().head;
    EXPECT_EQ(distribute(), "a:1 a:1");
}

// Objects that are events have channels of their own.
TEST_F(EventReentrancy, EventThatReceivesAValueIsDestroyedWithItsMessages) {
    NamedEvent* event = new NamedEvent("x");
    intInput(*event, "in", d);
    sender->connect("out", event, "in");
    queue().postEvent(event, 0);
    send(1, Queued);
    EXPECT_EQ(distribute(), "x ~x a:1 b:1 c:1");
}

}  // namespace EventReentrancyTest
