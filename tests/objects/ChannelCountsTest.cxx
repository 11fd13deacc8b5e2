// Who holds what, count by count: after every step of connecting, sending, distributing, disconnecting, removing and
// destroying, in every order.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "Converter.h"
#include "support/ChannelRig.h"

namespace ChannelCountsTest {

class ChannelCounts : public ChannelRig {
protected:
    Sink a{"a"}, b{"b"};
    qnObj sender, receiver;
};

TEST_F(ChannelCounts, DirectConnectionStepByStep) {
    ChannelWatch in(intInput(receiver, "in", a));
    EXPECT_EQ(in.holders(), 1u) << "the name";
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    EXPECT_EQ(in.holders(), 1u);
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(in.holders(), 2u) << "the name and the connection";
    CountedBox* box = new CountedBox(1);
    queue().postMessage(out, box, Queued);
    EXPECT_EQ(in.holders(), 3u) << "and the message";
    EXPECT_EQ(box->refCount, 1u) << "the message";
    a.react = [&] {
        EXPECT_EQ(in.holders(), 3u) << "the message lives during its delivery";
        EXPECT_EQ(CountedBox::live, 1);
        EXPECT_EQ(box->refCount, 1u);
    };
    EXPECT_EQ(distribute(), "a:1");
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(CountedBox::live, 0);
    sender.disconnect("out", &receiver, "in");
    EXPECT_EQ(in.holders(), 1u);
    receiver.removeInput("in");
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(ChannelCounts, ConnectionAcrossAConverterStepByStep) {
    ChannelWatch in(floatInput(receiver, "in", a));
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(in.holders(), 2u) << "the name and the converter";
    ChannelWatch converter((*out)[0]);
    EXPECT_EQ(converter.holders(), 1u) << "the connection";
    CountedBox* box = new CountedBox(1);
    queue().postMessage(out, box, Queued);
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(converter.holders(), 2u) << "the connection and the message";
    EXPECT_EQ(box->refCount, 1u);
    EXPECT_EQ(distribute(), "a:1f");
    EXPECT_EQ(converter.holders(), 1u);
    sender.disconnect("out", &receiver, "in");
    EXPECT_EQ(converter.holders(), 0u);
    EXPECT_EQ(in.holders(), 2u) << "the name and the converter, which is watched";
    receiver.removeInput("in");
    EXPECT_EQ(in.holders(), 1u);
}

TEST_F(ChannelCounts, ImmediateSendHoldsNothingAfterwards) {
    ChannelWatch in(intInput(receiver, "in", a)), converted(floatInput(receiver, "float", b));
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "float");
    a.react = [&] { EXPECT_EQ(CountedBox::live, 1); };
    sendTo(out, 1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1f");
    EXPECT_EQ(CountedBox::live, 0);
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(converted.holders(), 2u);
    EXPECT_EQ((*out)[1]->refCount, 1u);
}

TEST_F(ChannelCounts, EachMessageHoldsTheBoxOnce) {
    ChannelWatch in(intInput(receiver, "in", a)), converted(floatInput(receiver, "float", b));
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "float");
    out->add(in.channel);
    CountedBox* box = new CountedBox(4);
    queue().postMessage(out, box, Queued);
    EXPECT_EQ(box->refCount, 3u);
    EXPECT_EQ(in.holders(), 5u) << "the name, two connections, two messages";
    EXPECT_EQ(converted.holders(), 2u);
    EXPECT_EQ((*out)[1]->refCount, 2u);
    delete queue().get();
    EXPECT_EQ(box->refCount, 2u);
    EXPECT_EQ(in.holders(), 4u);
    queue().remove(queue().head);
    EXPECT_EQ(box->refCount, 1u);
    EXPECT_EQ((*out)[1]->refCount, 1u);
    EXPECT_EQ(distribute(), "a:4");
    EXPECT_EQ(in.holders(), 3u);
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(ChannelCounts, MessageEventHoldsChannelAndBoxAndItsCopyToo) {
    ChannelWatch in(intInput(receiver, "in", a));
    CountedBox* box = new CountedBox(4);
    qnMessageEvent* event = new qnMessageEvent(in.channel, box);
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(box->refCount, 1u);
    qnMessageEvent* copy = new qnMessageEvent(*event);
    EXPECT_EQ(in.holders(), 3u);
    EXPECT_EQ(box->refCount, 2u);
    delete event;
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(box->refCount, 1u);
    delete copy;
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(CountedBox::live, 0);
}

TEST_F(ChannelCounts, MessageIsTheLastHolderOfChannelAndBox) {
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    queue().postEvent(new qnMessageEvent(in, new CountedBox(4)), 0);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(distribute(), "a:4");
}

TEST_F(ChannelCounts, LatestOnlyLeavesOneMessagesWorthOfHolders) {
    ChannelWatch in(intInput(receiver, "in", a, 1)), converted(floatInput(receiver, "float", b, 1));
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "float");
    for (int value = 1; value <= 5; ++value) {
        sendTo(out, value, value % 2 ? Queued : Urgent);
        EXPECT_EQ(in.holders(), 3u);
        EXPECT_EQ(converted.holders(), 2u);
        EXPECT_EQ((*out)[1]->refCount, 2u);
        EXPECT_EQ(CountedBox::live, 1);
        EXPECT_EQ(queue().count, 2u);
    }
    EXPECT_EQ(distribute(), "a:5 b:5f");
    EXPECT_EQ(in.holders(), 2u);
}

/**
 * Every order of the steps that end what one connection with one waiting message is made of. A model with four flags
 * says who holds the input and, where there is one, the converter in front of it.
 */
class EveryOrder : public ChannelCounts, public testing::WithParamInterface<bool> {
protected:
    enum Step {
        Distribute,
        Disconnect,
        RemoveInput,
        RemoveOutput,
        Replace,
        Flush,
        DestroySender,
        DestroyReceiver,
        Steps
    };

    void run(const std::vector<int>& steps) {
        const bool converted = GetParam();
        std::unique_ptr<qnObj> from(new qnObj), to(new qnObj);
        ChannelWatch in(converted ? floatInput(*to, "in", a) : intInput(*to, "in", a));
        qnOutputChannel* out = from->addOutput("out", qnDT_int);
        from->connect("out", to.get(), "in");
        std::unique_ptr<ChannelWatch> converter;
        if (converted) converter.reset(new ChannelWatch((*out)[0]));
        sendTo(out, 8, Queued);
        Story::take();

        bool named = true, connected = true, waiting = true, delivered = false;
        std::string trace;
        for (int step : steps) {
            trace += std::to_string(step);
            switch (step) {
                case Distribute:
                    queue().distributeEvents();
                    delivered = delivered || waiting;
                    waiting = false;
                    break;
                case Disconnect:
                    if (from && to) from->disconnect("out", to.get(), "in");
                    if (from && to && named) connected = false;
                    break;
                case RemoveInput:
                    if (to) to->removeInput("in");
                    if (named) endInput(connected, waiting, converted);
                    named = false;
                    break;
                case RemoveOutput:
                    if (from) from->removeOutput("out");
                    connected = false;
                    break;
                case Replace:
                    if (to) intInput(*to, "in", b);
                    named = false;
                    break;
                case Flush:
                    in->flush();
                    if (!converted) waiting = false;
                    break;
                case DestroySender:
                    from.reset();
                    connected = false;
                    break;
                case DestroyReceiver:
                    to.reset();
                    if (named) endInput(connected, waiting, converted);
                    named = false;
                    break;
                default: break;
            }
            const unsigned ends = (connected ? 1u : 0u) + (waiting ? 1u : 0u);
            if (converted) {
                EXPECT_EQ(converter->holders(), ends) << trace;
                EXPECT_EQ(in.holders(), (named ? 1u : 0u) + 1u) << trace << ": the converter is watched";
            } else {
                EXPECT_EQ(in.holders(), (named ? 1u : 0u) + ends) << trace;
            }
            EXPECT_EQ(in->getNumberOfOutputs(), connected ? 1u : 0u) << trace;
            EXPECT_EQ(queue().count, waiting ? 1u : 0u) << trace;
            EXPECT_EQ(CountedBox::live, waiting ? 1 : 0) << trace;
        }
        EXPECT_EQ(Story::take(), !delivered ? "" : converted ? "a:8f" : "a:8") << trace;
    }

    static void endInput(bool& connected, bool& waiting, bool converted) {
        connected = false;
        if (!converted) waiting = false;
    }
};

TEST_P(EveryOrder, OfAllStepsButTheEndsOfTheObjects) {
    std::vector<int> steps = {Distribute, Disconnect, RemoveInput, RemoveOutput, Replace, Flush};
    int runs = 0;
    do {
        run(steps);
        ++runs;
        if (HasFailure()) FAIL() << "in run " << runs;
    } while (std::next_permutation(steps.begin(), steps.end()));
    EXPECT_EQ(runs, 720);
}

TEST_P(EveryOrder, OfDeliveryAndTheEndsOfTheObjects) {
    std::vector<int> steps = {Distribute, Disconnect, Replace, Flush, DestroySender, DestroyReceiver};
    do {
        run(steps);
        if (HasFailure()) FAIL();
    } while (std::next_permutation(steps.begin(), steps.end()));
}

TEST_P(EveryOrder, OfThreeStepsWithoutTheOthers) {
    for (int first = 0; first < Steps; ++first) {
        for (int second = 0; second < Steps; ++second) {
            for (int third = 0; third < Steps; ++third) {
                std::vector<int> steps = {first, second, third, Distribute};
                run(steps);
                if (HasFailure()) FAIL();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutConverter, EveryOrder, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& param) {
                             return param.param ? "AcrossAConverter" : "Direct";
                         });

}  // namespace ChannelCountsTest
