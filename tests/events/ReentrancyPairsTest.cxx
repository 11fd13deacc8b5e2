// Everything that a program may do in a delivery, inside everything else: each pair of actions, one in a delivery and
// the other in a delivery that the first one's aftermath causes, in the three modes, at four receivers. What is left
// must add up, and the sanitizers watch.
#include <gtest/gtest.h>

#include <memory>

#include "Converter.h"
#include "support/ChannelRig.h"

namespace ReentrancyPairsTest {

const char* const actionNames[] = {"SendQueued",      "SendImmediate",  "SendUrgent",      "Connect",
                                   "ConnectTwice",    "Disconnect",     "DisconnectInput", "Flush",
                                   "RemoveInput",     "ReplaceInput",   "RemoveOutput",    "ReplaceOutput",
                                   "DestroyReceiver", "DestroySender",  "DestroyOther",    "PostEvent",
                                   "RemoveEvents",    "RemoveOneEvent", "Distribute",      "RemoveProperties"};
constexpr int NumberOfActions = sizeof actionNames / sizeof actionNames[0];

class ReentrancyPairs : public ChannelRig, public testing::WithParamInterface<int> {
protected:
    enum Action {
        SendQueued,
        SendImmediate,
        SendUrgent,
        Connect,
        ConnectTwice,
        Disconnect,
        DisconnectInput,
        Flush,
        RemoveInput,
        ReplaceInput,
        RemoveOutput,
        ReplaceOutput,
        DestroyReceiver,
        DestroySender,
        DestroyOther,
        PostEvent,
        RemoveEvents,
        RemoveOneEvent,
        Distribute,
        RemoveProperties
    };
    static_assert(RemoveProperties + 1 == NumberOfActions, "each action has a name");

    /** Four receivers: directly, across a converter, only the latest value, and in an object of its own. */
    void build() {
        sender.reset(new qnObj);
        receiver.reset(new qnObj);
        other.reset(new qnObj);
        makeOutput("out");
        makeOutput("second");
        intInput(*receiver, "a", sinks[0]);
        floatInput(*receiver, "b", sinks[1]);
        intInput(*receiver, "c", sinks[2], 1);
        intInput(*other, "d", sinks[3]);
        watches.clear();
        for (const char* name : {"a", "b", "c"}) watch(receiver->findInput(name));
        watch(other->findInput("d"));
        connectAll("out");
        sender->connect("second", receiver.get(), "a");
    }
    void watch(qnInputChannel* in) { watches.emplace_back(new ChannelWatch(in)); }
    void makeOutput(const char* name) { sender->addOutput(name, qnDT_int); }
    void connectAll(const char* output) {
        for (const char* name : {"a", "b", "c"}) {
            if (receiver) sender->connect(output, receiver.get(), name);
        }
        if (other) sender->connect(output, other.get(), "d");
    }
    void send(qnObj::qnSendFlags mode) {
        qnOutputChannel* out = sender ? sender->findOutput("out") : nullptr;
        if (out != nullptr) sendTo(out, 1, mode);
    }
    static qnBool everyEvent(qnEvent*, void*) { return 1; }

    void act(int action) {
        qnInputChannel* in = receiver ? receiver->findInput("a") : nullptr;
        qnOutputChannel* out = sender ? sender->findOutput("out") : nullptr;
        switch (action) {
            case SendQueued: return send(Queued);
            case SendImmediate: return send(Immediate);
            case SendUrgent: return send(Urgent);
            case Connect:
                if (sender) connectAll("second");
                return;
            case ConnectTwice:
                if (out != nullptr && in != nullptr) out->add(in);
                if (out != nullptr && receiver && receiver->findInput("b")) out->add(receiver->findInput("b"));
                return;
            case Disconnect:
                if (sender && receiver) {
                    for (const char* name : {"b", "a", "c"}) sender->disconnect("out", receiver.get(), name);
                }
                return;
            case DisconnectInput:
                if (in != nullptr) in->disconnect();
                return;
            case Flush:
                if (in != nullptr) in->flush();
                return;
            case RemoveInput:
                if (receiver) {
                    for (const char* name : {"a", "b", "c"}) receiver->removeInput(name);
                }
                return;
            case ReplaceInput:
                if (receiver) {
                    intInput(*receiver, "a", sinks[0]);
                    floatInput(*receiver, "b", sinks[1]);
                }
                return;
            case RemoveOutput:
                if (sender) sender->removeOutput("out");
                return;
            case ReplaceOutput:
                if (sender) {
                    makeOutput("out");
                    connectAll("out");
                }
                return;
            case DestroyReceiver: return receiver.reset();
            case DestroySender: return sender.reset();
            case DestroyOther: return other.reset();
            case PostEvent:
                queue().postEvent(new NamedEvent("x"), 1);
                queue().postEvent(new NamedEvent("y"), 0);
                return;
            case RemoveEvents: return queue().removeEvents(&everyEvent, nullptr);
            case RemoveOneEvent:
                if (queue().tail != nullptr) queue().remove(queue().tail);
                return;
            case Distribute: return queue().distributeEvents();
            case RemoveProperties:
                if (receiver) receiver->removeAllProperties();
                if (sender) sender->removeProperty("outputs");
                return;
            default: return;
        }
    }

    /** `first` in the delivery at one receiver, and then whatever is delivered does `second`. */
    void run(int first, int second, qnObj::qnSendFlags mode, Sink& where) {
        build();
        int budget = 6;  // a queued send in each delivery would never end
        int depth = 0;
        auto reaction = [&] {
            if (budget == 0 || depth == 2) return;
            if (depth == 0) {
                --budget;
                ++depth;
                act(first);
                send(Immediate);
                --depth;
            } else {
                --budget;
                ++depth;
                act(second);
                act(first);
                --depth;
            }
        };
        for (Sink& sink : sinks)
            sink.react = [&] {
                if (depth > 0) reaction();
            };
        where.react = reaction;
        send(mode);
        queue().distributeEvents();
        for (Sink& sink : sinks) sink.react = nullptr;
        for (int i = 0; queue().count != 0 && i < 1000; ++i) queue().distributeEvents();
        Story::take();

        EXPECT_EQ(queue().count, 0u);
        EXPECT_EQ(CountedBox::live, 0);
        checkCounts();
        sender.reset();
        receiver.reset();
        other.reset();
        for (auto& each : watches) {
            EXPECT_EQ(each->holders(), 0u);
            EXPECT_EQ((*each)->getNumberOfOutputs(), 0u);
        }
        watches.clear();
    }

    /** With nothing queued, an input is held by its name and its connections alone. */
    void checkCounts() {
        for (auto& each : watches) {
            qnInputChannel* in = each->channel;
            unsigned expected = 0, listed = 0;
            for (qnObj* object : {receiver.get(), other.get()}) {
                for (const char* name : {"a", "b", "c", "d"}) {
                    if (object != nullptr && object->findInput(name) == in) ++expected;
                }
            }
            for (const char* name : {"out", "second"}) {
                qnOutputChannel* out = sender ? sender->findOutput(name) : nullptr;
                for (unsigned i = 0; out != nullptr && i < out->getNumberOfConnections(); ++i) {
                    qnInputChannel* entry = (*out)[i];
                    if (entry->isConverter()) {
                        EXPECT_EQ(entry->refCount, 1u);
                        entry = static_cast<qnInputChannel*>(entry->closure);
                    }
                    if (entry == in) ++listed;
                }
            }
            EXPECT_EQ(each->holders(), expected + listed);
            EXPECT_EQ(in->getNumberOfOutputs(), listed);
            EXPECT_EQ(in->pending, nullptr);
        }
    }

    Sink sinks[4] = {Sink("a"), Sink("b"), Sink("c"), Sink("d")};
    std::unique_ptr<qnObj> sender, receiver, other;
    std::vector<std::unique_ptr<ChannelWatch>> watches;
};

TEST_P(ReentrancyPairs, InsideEachOther) {
    for (int second = 0; second < NumberOfActions; ++second) {
        for (qnObj::qnSendFlags mode : {Queued, Immediate, Urgent}) {
            for (Sink& where : sinks) {
                SCOPED_TRACE(std::string(actionNames[GetParam()]) + ", then " + actionNames[second] + ", mode " +
                             std::to_string(mode) + ", at " + where.name);
                run(GetParam(), second, mode, where);
                if (HasFailure()) return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(First, ReentrancyPairs, testing::Range(0, NumberOfActions),
                         [](const testing::TestParamInfo<int>& param) { return actionNames[param.param]; });

}  // namespace ReentrancyPairsTest
