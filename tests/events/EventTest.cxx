#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "Event.h"
#include "support/ChannelRig.h"

namespace EventTest {

#if UINTPTR_MAX == 0xFFFFFFFF
// The queue that holds an event comes last, so that the other fields stand where programs expect them.
static_assert(sizeof(qnEvent) == sizeof(qnObj) + 4 * 4 + 4, "two links, type, sequence number, queue");
static_assert(sizeof(qnMessageEvent) == sizeof(qnEvent) + 2 * 4, "a channel and a box");
#endif

class Event : public ChannelRig {
protected:
    /** What `dump` prints. */
    static std::string dumped(qnEvent& event) {
        char* text = nullptr;
        std::size_t size = 0;
        FILE* file = open_memstream(&text, &size);
        event.dump(file);
        std::fclose(file);
        std::string result(text, size);
        std::free(text);
        return result;
    }

    Sink a{"a"};
};

TEST_F(Event, TypeCodesAreTheFirstTwoNumbers) {
    EXPECT_EQ(qnET_Unknown, 0u);
    EXPECT_EQ(qnET_MessageEvent, 1u);
    ASSERT_NE(qn_nextEventType, nullptr);
    EXPECT_GE((*qn_nextEventType)(), 2u) << "programs draw theirs from the same allocator";
}

TEST_F(Event, StartsUnlinkedWithItsType) {
    NamedEvent event("x", 4000000000u);
    EXPECT_EQ(event.getType(), 4000000000u);
    EXPECT_EQ(event.next, nullptr);
    EXPECT_EQ(event.prev, nullptr);
    EXPECT_EQ(event.getQueue(), nullptr);
    EXPECT_EQ(event.refCount, 0u);
    EXPECT_EQ(event.getNumberOfProperties(), 0u);
}

TEST_F(Event, TypesAreUnsignedLong) {
    NamedEvent event("x", static_cast<unsigned long>(-1));
    EXPECT_EQ(event.getType(), static_cast<unsigned long>(-1));
}

TEST_F(Event, EachNewEventTakesTheNextSequenceNumber) {
    NamedEvent first("x"), second("y");
    EXPECT_EQ(second.getSequenceNumber(), first.getSequenceNumber() + 1);
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(1));
    EXPECT_EQ(message.getSequenceNumber(), first.getSequenceNumber() + 2) << "messages are numbered along";
}

TEST_F(Event, CopyHasTheSameNumberAndTypeAndDrawsNone) {
    NamedEvent first("x", 7);
    NamedEvent copy(first);
    EXPECT_EQ(copy.getSequenceNumber(), first.getSequenceNumber());
    EXPECT_EQ(copy.getType(), 7u);
    NamedEvent next("y");
    EXPECT_EQ(next.getSequenceNumber(), first.getSequenceNumber() + 1);
}

TEST_F(Event, CopyOfAQueuedEventIsInNoQueue) {
    qnEventQueue others;
    NamedEvent *front = new NamedEvent("front"), *middle = new NamedEvent("middle"), *back = new NamedEvent("back");
    others.append(front);
    others.append(middle);
    others.append(back);
    {
        NamedEvent copy(*middle);
        EXPECT_EQ(copy.next, nullptr);
        EXPECT_EQ(copy.prev, nullptr);
        EXPECT_EQ(copy.getQueue(), nullptr);
    }
    EXPECT_EQ(others.count, 3u);
    EXPECT_EQ(front->next, middle);
    EXPECT_EQ(back->prev, middle);
}

TEST_F(Event, CopyHasNoPropertiesOfTheOriginal) {
    NamedEvent event("x");
    event.setProperty(new qnProperty(qnProperty::allocNewTag("Event.copy"), 1L));
    event.addOutput("out", qnDT_int);
    NamedEvent copy(event);
    EXPECT_EQ(copy.getNumberOfProperties(), 0u);
    EXPECT_EQ(copy.findOutput("out"), nullptr);
}

TEST_F(Event, PlainEventIsForNoChannel) {
    NamedEvent event("x");
    EXPECT_EQ(event.getChannel(), nullptr);
}

TEST_F(Event, DumpPrintsNumberAndType) {
    NamedEvent event("x", 42);
    EXPECT_EQ(dumped(event), "Event: seq=" + std::to_string(event.getSequenceNumber()) + " type=42\n");
}

TEST_F(Event, DumpPrintsLargeTypesAsSignedInts) {
    NamedEvent event("x", 4294967295u);
    EXPECT_EQ(dumped(event), "Event: seq=" + std::to_string(event.getSequenceNumber()) + " type=-1\n");
}

TEST_F(Event, DumpOfAMessagePrintsAsAnyEvent) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(1));
    EXPECT_EQ(dumped(message), "Event: seq=" + std::to_string(message.getSequenceNumber()) + " type=1\n");
}

TEST_F(Event, DestroyedInAQueueItLeavesTheQueue) {
    qnEventQueue others;
    NamedEvent *front = new NamedEvent("front"), *middle = new NamedEvent("middle"), *back = new NamedEvent("back");
    others.append(front);
    others.append(middle);
    others.append(back);
    delete middle;
    EXPECT_EQ(others.count, 2u);
    EXPECT_EQ(front->next, back);
    EXPECT_EQ(back->prev, front);
    delete back;
    delete front;
    EXPECT_EQ(others.count, 0u);
    EXPECT_EQ(others.head, nullptr);
    EXPECT_EQ(others.tail, nullptr);
}

// Message events.

TEST_F(Event, MessageHasItsTypeChannelAndBox) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    CountedBox* box = new CountedBox(1);
    qnMessageEvent message(&in, box);
    EXPECT_EQ(message.getType(), qnET_MessageEvent);
    EXPECT_EQ(message.getChannel(), &in);
    EXPECT_EQ(message.getData(), box);
    EXPECT_EQ(in.pending, nullptr) << "only a send records it";
}

TEST_F(Event, MessageDeliversToItsChannel) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(6));
    message.deliver();
    message.deliver();
    EXPECT_EQ(told(), "a:6 a:6");
    EXPECT_EQ(in.refCount, 2u);
}

TEST_F(Event, MessageUsesTheFunctionAndClosureOfTheMomentOfDelivery) {
    Sink b{"b"};
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(6));
    in.closure = &b;
    message.deliver();
    EXPECT_EQ(told(), "b:6");
}

TEST_F(Event, MessageClearsPendingBeforeItDelivers) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 1);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(6));
    in.pending = &message;
    a.react = [&] { EXPECT_EQ(in.pending, nullptr); };
    message.deliver();
    EXPECT_EQ(told(), "a:6");
    EXPECT_EQ(in.pending, nullptr);
}

// Deliberate: which message is pending is not looked at.
TEST_F(Event, MessageClearsThePendingThatAnotherMessageIs) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 1);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(6)), later(&in, new CountedBox(7));
    in.pending = &later;
    message.deliver();
    EXPECT_EQ(in.pending, nullptr);
}

TEST_F(Event, MessageCopySharesChannelAndBox) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(6));
    qnMessageEvent copy(message);
    EXPECT_EQ(copy.getChannel(), &in);
    EXPECT_EQ(copy.getData(), message.getData());
    EXPECT_EQ(copy.getSequenceNumber(), message.getSequenceNumber());
    copy.deliver();
    EXPECT_EQ(told(), "a:6");
}

static_assert(!std::is_copy_assignable<qnMessageEvent>::value, "messages are not assigned");

TEST_F(Event, NamesOfTheClasses) {
    NamedEvent event("x");
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new CountedBox(1));
    EXPECT_STREQ(event.className(), "qnEvent");
    EXPECT_STREQ(message.className(), "qnMessageEvent");
}

}  // namespace EventTest
