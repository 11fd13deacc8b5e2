#include <gtest/gtest.h>

#include <csignal>

#include "EventQueue.h"
#include "support/ChannelRig.h"

namespace EventQueueTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnEventQueue) == 12, "head, tail and count");
#endif
static_assert(sizeof(qnEventHandler) == sizeof(qnEventQueue), "the event handler adds no field");

class EventQueue : public ChannelRig {
protected:
    /** The names from front to back; checks every link on the way. */
    static std::string names(const qnEventQueue& events) {
        std::string result;
        unsigned n = 0;
        qnEvent* before = nullptr;
        for (qnEvent* event = events.head; event != nullptr; event = event->next) {
            EXPECT_EQ(event->prev, before);
            EXPECT_EQ(event->getQueue(), &events);
            result += static_cast<NamedEvent*>(event)->name;
            before = event;
            ++n;
        }
        EXPECT_EQ(events.tail, before);
        EXPECT_EQ(events.count, n);
        return result;
    }
    static NamedEvent* make(const char* name) { return new NamedEvent(name); }
    void fill(const char* letters) {
        for (; *letters != 0; ++letters) events.append(make(std::string(1, *letters).c_str()));
    }

    qnEventQueue events;
};
typedef EventQueue EventQueueDeathTest;

TEST_F(EventQueue, StartsEmpty) {
    EXPECT_EQ(events.head, nullptr);
    EXPECT_EQ(events.tail, nullptr);
    EXPECT_EQ(events.count, 0u);
    EXPECT_EQ(events.get(), nullptr);
}

#if UINTPTR_MAX == 0xFFFFFFFF
TEST_F(EventQueue, FieldsStandInTheirOrder) {
    void* const* words = reinterpret_cast<void* const*>(&events);
    fill("ab");
    EXPECT_EQ(words[0], events.head);
    EXPECT_EQ(words[1], events.tail);
    EXPECT_EQ(reinterpret_cast<const unsigned*>(words)[2], 2u);
}
#endif

TEST_F(EventQueue, AppendAddsAtTheBack) {
    events.append(make("a"));
    EXPECT_EQ(names(events), "a");
    events.append(make("b"));
    EXPECT_EQ(names(events), "ab");
    events.append(make("c"));
    EXPECT_EQ(names(events), "abc");
}

TEST_F(EventQueue, InsertAddsAtTheFront) {
    events.insert(make("a"));
    EXPECT_EQ(names(events), "a");
    events.insert(make("b"));
    EXPECT_EQ(names(events), "ba");
    events.append(make("c"));
    events.insert(make("d"));
    EXPECT_EQ(names(events), "dbac");
}

TEST_F(EventQueue, GetTakesTheFrontAndClearsItsLinks) {
    fill("abc");
    for (const char* expected : {"a", "b", "c"}) {
        NamedEvent* event = static_cast<NamedEvent*>(events.get());
        EXPECT_EQ(event->name, expected);
        EXPECT_EQ(event->next, nullptr);
        EXPECT_EQ(event->prev, nullptr);
        EXPECT_EQ(event->getQueue(), nullptr);
        delete event;
        names(events);
    }
    EXPECT_EQ(events.get(), nullptr);
    EXPECT_EQ(events.count, 0u);
}

TEST_F(EventQueue, EventThatWasTakenMayBeAddedAgain) {
    fill("ab");
    events.append(events.get());
    EXPECT_EQ(names(events), "ba");
    events.insert(events.get());
    EXPECT_EQ(names(events), "ba");
}

TEST_F(EventQueue, RemoveTakesOutAndDestroysWhereverItIs) {
    fill("abcde");
    events.remove(events.head->next->next);
    EXPECT_EQ(told(), "~c");
    EXPECT_EQ(names(events), "abde");
    events.remove(events.head);
    EXPECT_EQ(told(), "~a");
    EXPECT_EQ(names(events), "bde");
    events.remove(events.tail);
    EXPECT_EQ(told(), "~e");
    EXPECT_EQ(names(events), "bd");
    events.remove(events.tail);
    events.remove(events.tail);
    EXPECT_EQ(told(), "~d ~b");
    EXPECT_EQ(names(events), "");
}

TEST_F(EventQueue, RemovedEventIsOutOfTheQueueWhenItIsDestroyed) {
    fill("abc");
    NamedEvent* middle = static_cast<NamedEvent*>(events.head->next);
    middle->atEnd = [&] {
        EXPECT_EQ(names(events), "ac");
        EXPECT_FALSE(events.contains(middle));
    };
    events.remove(middle);
}

TEST_F(EventQueue, RemovedEventsDestructorRemovesItsNeighbours) {
    fill("abcd");
    qnEvent *a = events.head, *c = a->next->next;
    static_cast<NamedEvent*>(a->next)->atEnd = [&] {
        events.remove(a);
        events.remove(c);
    };
    events.remove(a->next);
    EXPECT_EQ(told(), "~b ~a ~c");
    EXPECT_EQ(names(events), "d");
}

TEST_F(EventQueue, ContainsLooksForTheEvent) {
    fill("abc");
    qnEventQueue others;
    NamedEvent* other = make("x");
    others.append(other);
    NamedEvent loose("y");
    EXPECT_TRUE(events.contains(events.head));
    EXPECT_TRUE(events.contains(events.head->next));
    EXPECT_TRUE(events.contains(events.tail));
    EXPECT_FALSE(events.contains(other));
    EXPECT_FALSE(events.contains(&loose));
    EXPECT_FALSE(events.contains(nullptr));
    EXPECT_EQ(events.contains(events.head), 1);
    qnEvent* taken = events.get();
    EXPECT_FALSE(events.contains(taken));
    delete taken;
}

TEST_F(EventQueue, DestroysWhatIsLeft) {
    {
        qnEventQueue others;
        others.append(make("a"));
        others.append(make("b"));
    }
    EXPECT_EQ(told(), "~a ~b");
}

TEST_F(EventQueue, DestroysWhatTheDestructorsOfTheRestRemoveAndAdd) {
    {
        qnEventQueue others;
        NamedEvent *a = make("a"), *b = make("b"), *c = make("c");
        others.append(a);
        others.append(b);
        others.append(c);
        a->atEnd = [&others, b] {
            others.remove(b);
            others.append(new NamedEvent("d"));
        };
    }
    EXPECT_EQ(told(), "~a ~b ~c ~d");
}

TEST_F(EventQueue, DestroysAMillionEventsWithoutRecursion) {
    qnInputChannel in(qnDT_int, nullptr, Sink::of<int>(), 0);
    qnRetain(&in);
    {
        qnEventQueue others;
        CountedBox* box = new CountedBox(1);
        for (int i = 0; i < 1000000; ++i) others.append(new qnMessageEvent(&in, box));
        EXPECT_EQ(box->refCount, 1000000u);
        EXPECT_EQ(others.count, 1000000u);
    }
    EXPECT_EQ(in.refCount, 1u);
}

// Callers' errors that would damage the queue leave it whole.

#ifdef MORVAQNDS_CHECKED
TEST_F(EventQueueDeathTest, AddingAnEventThatIsQueued) {
    fill("a");
    const std::string end = "event " + std::to_string(events.head->getSequenceNumber()) + " is in a queue already\n$";
    EXPECT_EXIT(events.append(events.head), testing::KilledBySignal(SIGABRT), "^qnEventQueue::append: " + end);
    EXPECT_EXIT(events.insert(events.head), testing::KilledBySignal(SIGABRT), "^qnEventQueue::insert: " + end);
}

TEST_F(EventQueueDeathTest, AddingNoEvent) {
    EXPECT_EXIT(events.append(nullptr), testing::KilledBySignal(SIGABRT), "^qnEventQueue::append: no event\n$");
    EXPECT_EXIT(events.insert(nullptr), testing::KilledBySignal(SIGABRT), "^qnEventQueue::insert: no event\n$");
}

TEST_F(EventQueueDeathTest, RemovingAnEventThatIsNotInTheQueue) {
    fill("a");
    NamedEvent loose("x");
    EXPECT_EXIT(
        events.remove(&loose), testing::KilledBySignal(SIGABRT),
        "^qnEventQueue::remove: event " + std::to_string(loose.getSequenceNumber()) + " is not in this queue\n$");
}
#else
TEST_F(EventQueue, AddingAnEventThatIsQueuedLeavesTheQueueWhole) {
    fill("abc");
    events.append(events.head);
    events.insert(events.tail);
    std::string left = names(events);
    EXPECT_EQ(left.size(), 3u);
}

TEST_F(EventQueue, RemovingAnEventThatIsNotInTheQueueLeavesBothWhole) {
    fill("ab");
    qnEventQueue others;
    NamedEvent* other = make("x");
    others.append(other);
    events.remove(other);
    EXPECT_EQ(names(events), "ab");
    EXPECT_EQ(others.count, 1u);
    NamedEvent* loose = make("y");
    events.remove(loose);
    EXPECT_EQ(names(events), "ab");
    EXPECT_EQ(told(), "");
    delete loose;
}
#endif

}  // namespace EventQueueTest
