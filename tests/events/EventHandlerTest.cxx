#include <gtest/gtest.h>

#include "Converter.h"
#include "EventHandler.h"
#include "support/ChannelRig.h"

namespace EventHandlerTest {

class EventHandler : public ChannelRig {
protected:
    static NamedEvent* post(const char* name, qnBool front = 0) {
        NamedEvent* event = new NamedEvent(name);
        queue().postEvent(event, front);
        return event;
    }
    static std::string queued() {
        std::string names;
        for (qnEvent* event = queue().head; event != nullptr; event = event->next) {
            names += static_cast<NamedEvent*>(event)->name;
        }
        return names;
    }
    static const std::string& nameOf(qnEvent* event) { return static_cast<NamedEvent*>(event)->name; }

    /** Removes the events that `wanted` wants. */
    static void removeIf(std::function<bool(qnEvent*)> wanted) {
        struct Call {
            static qnBool wants(qnEvent* event, void* function) {
                return (*static_cast<std::function<bool(qnEvent*)>*>(function))(event) ? 1 : 0;
            }
        };
        queue().removeEvents(&Call::wants, &wanted);
    }

    Sink a{"a"}, b{"b"};
    qnObj sender, receiver;
};

TEST_F(EventHandler, IsMadeOnce) {
    qnEventHandler* handler = qn_theEventHandler;
    ASSERT_NE(handler, nullptr);
    qnInitializeToolkit();
    EXPECT_EQ(qn_theEventHandler, handler);
}

TEST_F(EventHandler, NewOneIsAnEmptyQueue) {
    qnEventHandler handler;
    EXPECT_EQ(handler.head, nullptr);
    EXPECT_EQ(handler.tail, nullptr);
    EXPECT_EQ(handler.count, 0u);
    handler.distributeEvents();
}

// postEvent.

TEST_F(EventHandler, PostsAtTheBackOrAtTheFront) {
    post("a");
    post("b");
    post("c", 1);
    post("d", 255);
    post("e", 0);
    EXPECT_EQ(queued(), "dcabe");
    EXPECT_EQ(distribute(), "d ~d c ~c a ~a b ~b e ~e");
}

// distributeEvents.

TEST_F(EventHandler, DistributesAnEmptyQueue) { EXPECT_EQ(distribute(), ""); }

TEST_F(EventHandler, TakesEachEventOutBeforeItIsDelivered) {
    NamedEvent* event = post("a");
    post("b");
    event->react = [event] {
        EXPECT_EQ(event->getQueue(), nullptr);
        EXPECT_FALSE(queue().contains(event));
        EXPECT_EQ(queue().count, 1u);
        EXPECT_EQ(event->next, nullptr);
    };
    EXPECT_EQ(distribute(), "a ~a b ~b");
}

TEST_F(EventHandler, WhatIsPostedAtTheBackMeanwhileWaits) {
    post("a")->react = [] { post("c"); };
    post("b");
    EXPECT_EQ(distribute(), "a ~a b ~b");
    EXPECT_EQ(distribute(), "c ~c");
}

TEST_F(EventHandler, WhatIsPostedAtTheFrontMeanwhileIsTakenInPlaceOfAnother) {
    post("a")->react = [] { post("c", 1); };
    post("b");
    EXPECT_EQ(distribute(), "a ~a c ~c");
    EXPECT_EQ(queued(), "b");
    EXPECT_EQ(distribute(), "b ~b");
}

TEST_F(EventHandler, WhatTheLastEventPostsAtTheFrontWaits) {
    post("a")->react = [] { post("b", 1); };
    EXPECT_EQ(distribute(), "a ~a");
    EXPECT_EQ(distribute(), "b ~b");
}

TEST_F(EventHandler, StopsEarlyWhenTheQueueIsEmpty) {
    post("a")->react = [] {
        removeIf([](qnEvent*) { return true; });
        EXPECT_EQ(queue().count, 0u);
    };
    post("b");
    post("c");
    EXPECT_EQ(distribute(), "a ~b ~c ~a");
}

TEST_F(EventHandler, CountIsTakenOnceThoughEventsWereRemovedMeanwhile) {
    post("a")->react = [] {
        queue().remove(queue().head);
        post("d");
    };
    post("b");
    post("c");
    EXPECT_EQ(distribute(), "a ~b ~a c ~c d ~d");  // three were counted, and three are taken
}

TEST_F(EventHandler, CountIsNotTakenAgainWhenFewerEventsAreLeft) {
    post("a")->react = [] { queue().remove(queue().head); };
    post("b");
    post("c")->react = [] { post("d"); };
    EXPECT_EQ(distribute(), "a ~b ~a c ~c d ~d") << "three were counted: d comes in place of b";
}

TEST_F(EventHandler, DistributionInsideADistribution) {
    post("a")->react = [] { queue().distributeEvents(); };
    post("b")->react = [] { post("d"); };
    post("c");
    EXPECT_EQ(distribute(), "a b ~b c ~c ~a d ~d");  // the outer one still has two of its three to take
}

// removeEvents.

TEST_F(EventHandler, RemovesWhatThePredicateWants) {
    for (const char* name : {"a", "b", "c", "d"}) post(name);
    std::string asked;
    removeIf([&asked](qnEvent* event) {
        asked += nameOf(event);
        return nameOf(event) == "b" || nameOf(event) == "d";
    });
    EXPECT_EQ(asked, "abcd");
    EXPECT_EQ(told(), "~b ~d");
    EXPECT_EQ(distribute(), "a ~a c ~c");
}

TEST_F(EventHandler, PredicateReceivesTheArgument) {
    struct Check {
        static qnBool isArgument(qnEvent* event, void* argument) { return event == argument ? 200 : 0; }
    };
    NamedEvent* first = post("a");
    post("b");
    queue().removeEvents(&Check::isArgument, first);
    EXPECT_EQ(told(), "~a");
    queue().removeEvents(&Check::isArgument, nullptr);
    EXPECT_EQ(queued(), "b");
    EXPECT_EQ(distribute(), "b ~b");
}

TEST_F(EventHandler, RemovesAllAndFromAnEmptyQueueNothing) {
    for (const char* name : {"a", "b", "c"}) post(name);
    removeIf([](qnEvent*) { return true; });
    EXPECT_EQ(told(), "~a ~b ~c");
    removeIf([](qnEvent*) -> bool {
        ADD_FAILURE();
        return true;
    });
}

TEST_F(EventHandler, PredicateSeesTheEventInTheQueue) {
    post("a");
    removeIf([](qnEvent* event) {
        EXPECT_TRUE(queue().contains(event));
        return true;
    });
}

TEST_F(EventHandler, PredicateRemovesTheSuccessor) {
    NamedEvent* events[] = {post("a"), post("b"), post("c"), post("d")};
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        if (event == events[0]) queue().remove(events[1]);
        return event == events[2];
    });
    EXPECT_EQ(asked, "acd");
    EXPECT_EQ(told(), "~b ~c");
    EXPECT_EQ(distribute(), "a ~a d ~d");
}

TEST_F(EventHandler, PredicateRemovesTheEventThatItIsAskedAbout) {
    for (const char* name : {"a", "b", "c"}) post(name);
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        bool second = nameOf(event) == "b";
        if (second) queue().remove(event);
        return second;
    });
    EXPECT_EQ(asked, "abc");
    EXPECT_EQ(told(), "~b");
    EXPECT_EQ(distribute(), "a ~a c ~c");
}

TEST_F(EventHandler, PredicateRemovesEverything) {
    for (const char* name : {"a", "b", "c"}) post(name);
    removeIf([](qnEvent* event) {
        EXPECT_EQ(nameOf(event), "a");
        while (queue().head != nullptr) queue().remove(queue().head);
        return true;
    });
    EXPECT_EQ(told(), "~a ~b ~c");
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(EventHandler, PredicateTakesTheSuccessorOutWithoutDestroyingIt) {
    post("a");
    post("b");
    post("c");
    qnEvent* taken[2] = {nullptr, nullptr};
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        if (nameOf(event) == "a") {
            taken[0] = queue().get();
            taken[1] = queue().get();
        }
        return false;
    });
    EXPECT_EQ(asked, "ac");
    EXPECT_EQ(queued(), "c");
    delete taken[0];
    delete taken[1];
    distribute();
}

TEST_F(EventHandler, PredicateDestroysTheSuccessorItself) {
    post("a");
    NamedEvent* second = post("b");
    post("c");
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        if (nameOf(event) == "a") delete second;
        return true;
    });
    EXPECT_EQ(asked, "ac");
    EXPECT_EQ(told(), "~b ~a ~c");
}

TEST_F(EventHandler, PredicatePostsMore) {
    post("a");
    post("b");
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        if (nameOf(event) == "a") {
            post("c");
            post("d", 1);
        }
        return nameOf(event) == "c";
    });
    EXPECT_EQ(asked, "abc");  // the walk goes on to what came in at the back
    EXPECT_EQ(queued(), "dab");
    distribute();
}

// Deliberate: the successor is taken before the predicate is asked; the last event has none then.
TEST_F(EventHandler, WhatThePredicatePostsBehindTheLastEventIsNotAsked) {
    post("a");
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        post("b");
        return false;
    });
    EXPECT_EQ(asked, "a");
    EXPECT_EQ(distribute(), "a ~a b ~b");
}

TEST_F(EventHandler, EventsDestructorRemovesMore) {
    NamedEvent* events[] = {post("a"), post("b"), post("c"), post("d")};
    events[0]->atEnd = [&] { queue().remove(events[1]); };
    events[2]->atEnd = [&] { queue().remove(events[3]); };
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        return true;
    });
    EXPECT_EQ(asked, "ac");
    EXPECT_EQ(told(), "~a ~b ~c ~d");
}

TEST_F(EventHandler, EventsDestructorRemovesByPredicateToo) {
    post("a")->atEnd = [] { removeIf([](qnEvent* event) { return nameOf(event) != "d"; }); };
    for (const char* name : {"b", "c", "d"}) post(name);
    std::string asked;
    removeIf([&](qnEvent* event) {
        asked += nameOf(event);
        return true;
    });
    EXPECT_EQ(asked, "ad");
    EXPECT_EQ(told(), "~a ~b ~c ~d");
}

TEST_F(EventHandler, PredicateDistributes) {
    for (const char* name : {"a", "b", "c"}) post(name);
    removeIf([](qnEvent*) {
        queue().distributeEvents();
        return true;
    });
    EXPECT_EQ(told(), "a ~a b ~b c ~c");
}

// zapMessageEvents and removeMessageEvents.

TEST_F(EventHandler, ZapAcceptsMessagesForTheChannelOnly) {
    ChannelWatch in(intInput(receiver, "a", a)), other(intInput(receiver, "b", b));
    qnMessageEvent message(in.channel, new CountedBox(1));
    NamedEvent plain("x");
    EXPECT_EQ(zapMessageEvents(&message, in.channel), 1);
    EXPECT_EQ(zapMessageEvents(&message, other.channel), 0);
    EXPECT_EQ(zapMessageEvents(&plain, in.channel), 0);
    EXPECT_EQ(zapMessageEvents(&plain, nullptr), 0);
    qnMessageEvent toNobody(nullptr, nullptr);
    EXPECT_EQ(zapMessageEvents(&toNobody, nullptr), 1);
}

TEST_F(EventHandler, ZapRefusesEventsOfAnotherTypeForTheChannel) {
    class Similar : public qnEvent {
    public:
        Similar(unsigned long type, qnInputChannel* target) : qnEvent(type), channel(target) {}
        void deliver() override {}
        qnInputChannel* getChannel() override { return channel; }
        qnInputChannel* channel;
    };
    ChannelWatch in(intInput(receiver, "a", a));
    Similar similar(qnET_Unknown, in.channel), message(qnET_MessageEvent, in.channel);
    EXPECT_EQ(zapMessageEvents(&similar, in.channel), 0);
    EXPECT_EQ(zapMessageEvents(&message, in.channel), 1) << "the type code decides, not the class";
}

TEST_F(EventHandler, ZapClearsPendingIfItIsThisMessage) {
    ChannelWatch in(intInput(receiver, "a", a, 1));
    qnMessageEvent message(in.channel, new CountedBox(1)), other(in.channel, new CountedBox(2));
    in->pending = &other;
    EXPECT_EQ(zapMessageEvents(&message, in.channel), 1);
    EXPECT_EQ(in->pending, &other);
    EXPECT_EQ(zapMessageEvents(&other, in.channel), 1);
    EXPECT_EQ(in->pending, nullptr);
}

TEST_F(EventHandler, ZapLeavesThePendingOfAnotherChannel) {
    ChannelWatch in(intInput(receiver, "a", a, 1)), other(intInput(receiver, "b", b, 1));
    qnMessageEvent message(in.channel, new CountedBox(1));
    in->pending = &message;
    EXPECT_EQ(zapMessageEvents(&message, other.channel), 0);
    EXPECT_EQ(in->pending, &message);
    in->pending = nullptr;
}

TEST_F(EventHandler, RemoveMessageEventsTakesTheChannelsOwn) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    ChannelWatch in(intInput(receiver, "a", a)), other(intInput(receiver, "b", b));
    sender.connect("out", &receiver, "a");
    sender.connect("out", &receiver, "b");
    sendTo(out, 1, Queued);
    post("x");
    sendTo(out, 2, Queued);
    queue().removeMessageEvents(in.channel);
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(distribute(), "b:1 x ~x b:2");
}

// Deliberate: messages for a converter in front of a channel are the converter's.
TEST_F(EventHandler, RemoveMessageEventsLeavesThoseForAConverter) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    ChannelWatch in(floatInput(receiver, "a", a));
    sender.connect("out", &receiver, "a");
    sendTo(out, 1, Queued);
    queue().removeMessageEvents(in.channel);
    EXPECT_EQ(addressees(), std::vector<qnInputChannel*>{(*out)[0]});
    EXPECT_EQ(distribute(), "a:1f");
}

}  // namespace EventHandlerTest
