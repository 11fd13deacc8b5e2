#include <gtest/gtest.h>

#include <csignal>

#include "Converter.h"
#include "InputChannel.h"
#include "support/ChannelRig.h"

namespace InputChannelTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnInputChannel) == 24, "closure, function, flags and type, pending, count, outputs");
#endif

class InputChannel : public ChannelRig {
protected:
    Sink a{"a"}, b{"b"};
    qnObj sender, receiver;
};
typedef InputChannel InputChannelDeathTest;

// Construction.

TEST_F(InputChannel, StartsWithItsValuesAndNothingElse) {
    qnInputChannel in(qnDT_float, &a, Sink::of<float>(), 0);
    EXPECT_EQ(in.getType(), qnDT_float);
    EXPECT_EQ(in.closure, &a);
    EXPECT_EQ(in.deliverFunc, Sink::of<float>());
    EXPECT_EQ(in.latestOnly(), 0);
    EXPECT_EQ(in.isConverter(), 0);
    EXPECT_EQ(in.pending, nullptr);
    EXPECT_EQ(in.refCount, 0u);
    EXPECT_EQ(in.getNumberOfOutputs(), 0u);
}

TEST_F(InputChannel, LatestOnlyIsOneBitAndLeavesTheTypeAlone) {
    for (int value = 0; value < 256; ++value) {
        qnInputChannel in(qnDT_qnStrArray, nullptr, Sink::ofVoid(), static_cast<qnBool>(value));
        EXPECT_EQ(in.latestOnly(), value != 0) << value;
        EXPECT_EQ(in.isConverter(), 0) << value;
        EXPECT_EQ(in.getType(), 11) << value;
    }
}

TEST_F(InputChannel, EveryTypeCodeFits) {
    for (unsigned type : {0u, 1u, 11u, 255u, 256u, 32767u, 32768u, 65535u}) {
        qnInputChannel in(static_cast<unsigned short>(type), nullptr, Sink::ofVoid(), 1);
        EXPECT_EQ(in.getType(), type);
        EXPECT_EQ(in.latestOnly(), 1);
        EXPECT_EQ(in.isConverter(), 0);
    }
}

#if UINTPTR_MAX == 0xFFFFFFFF
TEST_F(InputChannel, FieldsStandInTheirOrder) {
    qnInputChannel in(qnDT_long, &a, Sink::of<long>(), 1);
    const unsigned* words = reinterpret_cast<const unsigned*>(&in);
    EXPECT_EQ(static_cast<void*>(&in.closure), words);
    EXPECT_EQ(static_cast<void*>(&in.deliverFunc), words + 1);
    EXPECT_EQ(words[2], 3u * 4 + 1);
    EXPECT_EQ(static_cast<void*>(&in.pending), words + 3);
    EXPECT_EQ(static_cast<void*>(&in.refCount), words + 4);
    EXPECT_EQ(words[5], 0u);
}
#endif

// The list of outputs.

TEST_F(InputChannel, AddListsAnOutputOncePerCallAndHoldsNothing) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int), out2(qnDT_int);
    in.add(&out);
    in.add(&out2);
    in.add(&out);
    EXPECT_EQ(in.getNumberOfOutputs(), 3u);
    EXPECT_EQ(in.refCount, 0u);
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
}

TEST_F(InputChannel, RemoveStrikesOneOccurrence) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int), out2(qnDT_int);
    in.add(&out);
    in.add(&out2);
    in.add(&out);
    in.remove(&out);
    EXPECT_EQ(in.getNumberOfOutputs(), 2u);
    in.remove(&out);
    EXPECT_EQ(in.getNumberOfOutputs(), 1u);
    in.remove(&out2);
    EXPECT_EQ(in.getNumberOfOutputs(), 0u);
}

TEST_F(InputChannel, RemoveWithoutAnyListDoesNothing) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int);
    in.remove(&out);
    EXPECT_EQ(in.getNumberOfOutputs(), 0u);
}

TEST_F(InputChannelDeathTest, RemoveOfAnOutputThatTheListDoesNotHave) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int), other(qnDT_int);
    in.add(&out);
    EXPECT_EXIT(in.remove(&other), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in.remove(&out);
}

// Deliberate: an empty list is a list.
TEST_F(InputChannelDeathTest, RemoveFromAListThatHasBecomeEmpty) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int);
    in.add(&out);
    in.remove(&out);
    EXPECT_EXIT(in.remove(&out), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
}

// disconnect.

TEST_F(InputChannel, DisconnectEndsEveryConnection) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnOutputChannel* asFloat = sender.addOutput("float", qnDT_float);
    qnInputChannel* in = intInput(receiver, "in", a);
    qnInputChannel* other = intInput(receiver, "other", b);
    sender.connect("out", &receiver, "in");
    sender.connect("float", &receiver, "in");
    out->add(in);
    sender.connect("out", &receiver, "other");
    EXPECT_EQ(in->refCount, 4u);
    in->disconnect();
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(asFloat->getNumberOfConnections(), 0u);
    ASSERT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ((*out)[0], other);
    in->disconnect();
}

TEST_F(InputChannel, DisconnectOfAChannelThatNeverWasConnectedDoesNothing) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    in.disconnect();
    EXPECT_EQ(in.getNumberOfOutputs(), 0u);
}

TEST_F(InputChannel, DisconnectLeavesMessages) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 6, Queued);
    in->disconnect();
    EXPECT_EQ(in->refCount, 2u);
    EXPECT_EQ(distribute(), "a:6");
}

TEST_F(InputChannel, DisconnectOfAChannelThatOnlyItsConnectionsHold) {
    qnOutputChannel out(qnDT_int), out2(qnDT_int);
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    out.add(in);
    out2.add(in);
    out.add(in);
    EXPECT_EQ(in->refCount, 3u);
    in->disconnect();  // destroys it
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
    EXPECT_EQ(out2.getNumberOfConnections(), 0u);
}

TEST_F(InputChannel, DisconnectOfAChannelThatOnlyAConverterHolds) {
    qnOutputChannel out(qnDT_float);
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    out.add(in);
    EXPECT_EQ(in->refCount, 1u);
    in->disconnect();
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
}

// An input that lists an output which does not know it would be asked again and again.
TEST_F(InputChannelDeathTest, DisconnectFromAnOutputThatHasNoSuchConnection) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnOutputChannel out(qnDT_int);
    in.add(&out);
    EXPECT_EXIT(in.disconnect(), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in.remove(&out);
}

TEST_F(InputChannelDeathTest, DisconnectFromAnOutputThatIsListedTooOften) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(&in);
    qnOutputChannel out(qnDT_int);
    out.add(&in);
    in.add(&out);
    EXPECT_EXIT(in.disconnect(), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in.remove(&out);
    out.remove(&in);
    EXPECT_EQ(in.refCount, 1u);
}

// flush.

TEST_F(InputChannel, FlushRemovesEveryMessageForTheChannelAndNoOther) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "a", a);
    qnInputChannel* other = intInput(receiver, "b", b);
    sender.connect("out", &receiver, "a");
    sender.connect("out", &receiver, "b");
    sendTo(out, 1, Queued);
    sendTo(out, 2, Urgent);
    queue().postEvent(new NamedEvent("event"), 0);
    EXPECT_EQ(in->refCount, 4u);
    in->flush();
    EXPECT_EQ(in->refCount, 2u);
    EXPECT_EQ(other->refCount, 4u);
    EXPECT_EQ(queue().count, 3u);
    EXPECT_EQ(distribute(), "b:2 b:1 event ~event");
}

TEST_F(InputChannel, FlushClearsPending) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a, 1);
    sender.connect("out", &receiver, "in");
    sendTo(out, 1, Queued);
    EXPECT_EQ(in->pending, queue().head);
    in->flush();
    EXPECT_EQ(in->pending, nullptr);
    sendTo(out, 2, Queued);
    EXPECT_EQ(distribute(), "a:2");
}

TEST_F(InputChannel, FlushClearsAPendingThatIsNotInTheQueue) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a, 1);
    sender.connect("out", &receiver, "in");
    sendTo(out, 1, Queued);
    qnEvent* taken = queue().get();
    in->flush();
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(in->refCount, 3u);
    delete taken;
    EXPECT_EQ(in->refCount, 2u);
}

TEST_F(InputChannel, FlushOfAnIdleChannelDoesNothing) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 1);
    in.flush();
    EXPECT_EQ(in.pending, nullptr);
    EXPECT_EQ(in.refCount, 0u);
}

// Deliberate: messages towards an input behind a converter are addressed to the converter.
TEST_F(InputChannel, FlushLeavesMessagesForAConverterInFront) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = floatInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 7, Queued);
    in->flush();
    EXPECT_EQ(queue().count, 1u);
    (*out)[0]->flush();
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(InputChannel, FlushOfAChannelThatOnlyItsMessagesHold) {
    for (qnBool latestOnly : {qnBool(0), qnBool(1)}) {
        qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), latestOnly);
        {
            qnOutputChannel out(qnDT_int);
            out.add(in);
            sendTo(&out, 1, Queued);
            sendTo(&out, 2, Queued);
        }
        EXPECT_EQ(in->refCount, latestOnly ? 1u : 2u);
        in->flush();  // destroys it
        EXPECT_EQ(queue().count, 0u);
    }
}

TEST_F(InputChannel, FlushOfAChannelWhoseLastMessageEndsInABoxThatReleasesIt) {
    qnOutputChannel out(qnDT_int);
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    out.add(in);
    CountedBox* box = new CountedBox(1);
    box->atEnd = [&] { out.remove(in); };
    queue().postMessage(&out, box, Queued);
    in->flush();
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
}

// The end of a channel.

TEST_F(InputChannel, IsDestroyedByItsLastHolder) {
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    qnRetain(in);
    qnRetain(in);
    EXPECT_FALSE(qnRelease(in));
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_TRUE(qnRelease(in));
}

TEST_F(InputChannel, ReleaseOfNullDoesNothing) { EXPECT_FALSE(qnRelease(static_cast<qnInputChannel*>(nullptr))); }

// Deliberate: the count wraps and the channel stays.
TEST_F(InputChannel, ReleaseOfAChannelThatNobodyHoldsWrapsItsCount) {
    qnInputChannel in(qnDT_int, &a, Sink::of<int>(), 0);
    EXPECT_FALSE(qnRelease(&in));
    EXPECT_EQ(in.refCount, 4294967295u);
    qnRetain(&in);
    EXPECT_EQ(in.refCount, 0u);
}

TEST_F(InputChannel, DestroysItsListOfOutputs) {
    qnOutputChannel out(qnDT_int);
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    in->add(&out);
    delete in;  // leak checking sees to the list
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
}

TEST_F(InputChannel, ConverterThatIsReleasedLetsGoOfItsInput) {
    ChannelWatch in(intInput(receiver, "in", a));
    qnConverter* converter = qnConverter::findConverter(qnDT_float, qnDT_int);
    EXPECT_EQ(converter->refCount, 0u);
    converter->splice(in.channel);
    EXPECT_EQ(in.holders(), 2u);
    qnInputChannel* asInput = converter;
    qnRetain(asInput);
    EXPECT_TRUE(qnRelease(asInput));
    EXPECT_EQ(in.holders(), 1u);
}

TEST_F(InputChannel, ConverterIsTheLastHolderOfItsInput) {
    qnInputChannel* in = new qnInputChannel(qnDT_int, &a, Sink::of<int>(), 0);
    qnConverter* converter = qnConverter::findConverter(qnDT_float, qnDT_int);
    converter->splice(in);
    EXPECT_EQ(in->refCount, 1u);
    qnRetain(converter);
    EXPECT_TRUE(qnRelease(static_cast<qnInputChannel*>(converter)));
}

TEST_F(InputChannel, ConverterThatNeverWasSplicedIsDestroyedLikeAnyOther) {
    qnInputChannel* converter = qnConverter::findConverter(qnDT_float, qnDT_int);
    EXPECT_EQ(converter->isConverter(), 1);
    EXPECT_EQ(converter->closure, nullptr);
    qnRetain(converter);
    EXPECT_TRUE(qnRelease(converter));
}

// What a program may build by hand: a converter in front of a converter.
TEST_F(InputChannel, ChainOfConvertersIsReleasedFromItsHead) {
    ChannelWatch in(receiver.addInput("in", qnDT_CharPtr, &a, Sink::of<char*>(), 0));
    qnConverter* toText = qnConverter::findConverter(qnDT_int, qnDT_CharPtr);
    toText->splice(in.channel);
    qnConverter* toInt = qnConverter::findConverter(qnDT_float, qnDT_int);
    toInt->splice(toText);
    EXPECT_EQ(toText->refCount, 1u);
    EXPECT_EQ(in.holders(), 2u);
    qnRetain(toInt);
    qnRelease(static_cast<qnInputChannel*>(toInt));
    EXPECT_EQ(in.holders(), 1u);
}

TEST_F(InputChannel, LongChainOfConvertersIsReleasedWithoutDeepRecursion) {
    ChannelWatch in(receiver.addInput("in", qnDT_float, &a, Sink::of<float>(), 0));
    qnInputChannel* head = in.channel;
    for (int i = 0; i < 400000; ++i) {
        qnConverter* converter = i % 2 == 0 ? qnConverter::findConverter(qnDT_int, qnDT_float)
                                            : qnConverter::findConverter(qnDT_float, qnDT_int);
        converter->splice(head);
        head = converter;
    }
    qnRetain(head);
    EXPECT_TRUE(qnRelease(head));
    EXPECT_EQ(in.holders(), 1u);
}

}  // namespace InputChannelTest
