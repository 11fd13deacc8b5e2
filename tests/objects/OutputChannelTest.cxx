#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

#include "Converter.h"
#include "OutputChannel.h"
#include "support/ChannelRig.h"

namespace OutputChannelTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnOutputChannel) == 8, "a type code and the list of connections");
#endif

constexpr unsigned None = 0xFFFFFFFFu;

class OutputChannel : public ChannelRig {
protected:
    static qnInputChannel* make(Sink& sink) { return new qnInputChannel(qnDT_int, &sink, Sink::of<int>(), 0); }
    static qnInputChannel* makeFloat(Sink& sink) { return new qnInputChannel(qnDT_float, &sink, Sink::of<float>(), 0); }

    Sink a{"a"}, b{"b"}, c{"c"};
};
typedef OutputChannel OutputChannelDeathTest;

TEST_F(OutputChannel, StartsWithItsTypeAndNoConnections) {
    qnOutputChannel out(qnDT_qnStr);
    EXPECT_EQ(out.getType(), qnDT_qnStr);
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
    EXPECT_EQ(out.find(nullptr), None);
}

#if UINTPTR_MAX == 0xFFFFFFFF
TEST_F(OutputChannel, TheTypeComesFirst) {
    qnOutputChannel out(qnDT_double);
    EXPECT_EQ(*reinterpret_cast<const unsigned short*>(&out), qnDT_double);
    EXPECT_EQ(reinterpret_cast<void* const*>(&out)[1], nullptr);
}
#endif

// add.

TEST_F(OutputChannel, AddOfTheSameTypeStoresTheInputItself) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(make(a));
    out.add(in.channel);
    ASSERT_EQ(out.getNumberOfConnections(), 1u);
    EXPECT_EQ(out[0], in.channel);
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
}

TEST_F(OutputChannel, AddOfAnotherTypeStoresAConverterInFront) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(makeFloat(a));
    out.add(in.channel);
    ASSERT_EQ(out.getNumberOfConnections(), 1u);
    qnInputChannel* entry = out[0];
    EXPECT_NE(entry, in.channel);
    EXPECT_EQ(entry->isConverter(), 1);
    EXPECT_EQ(entry->closure, in.channel);
    EXPECT_EQ(entry->getType(), qnDT_int);
    EXPECT_EQ(entry->refCount, 1u);
    EXPECT_EQ(entry->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
    EXPECT_EQ(out.find(in.channel), 0u);
    EXPECT_TRUE(out.isConnectedTo(in.channel));
}

TEST_F(OutputChannel, AddToAnInputOfTypeVoidNeedsNoConverter) {
    for (unsigned short type : {qnDT_int, qnDT_long, qnDT_double, qnDT_qnStrArray, qnDT_void}) {
        qnOutputChannel out(type);
        ChannelWatch in(new qnInputChannel(qnDT_void, &a, Sink::of<int>(), 0));
        out.add(in.channel);
        EXPECT_EQ(out[0], in.channel) << type;
        EXPECT_EQ(in.holders(), 1u);
    }
}

TEST_F(OutputChannel, InputOfTypeVoidReceivesTheValueInTheOutputsForm) {
    qnOutputChannel ints(qnDT_int), doubles(qnDT_double), texts(qnDT_CharPtr);
    ints.add(new qnInputChannel(qnDT_void, &a, Sink::of<int>(), 0));
    doubles.add(new qnInputChannel(qnDT_void, &b, Sink::of<double>(), 0));
    texts.add(new qnInputChannel(qnDT_void, &c, Sink::of<char*>(), 0));
    qnObj object;
    object.sendInt(&ints, 3, Immediate);
    object.sendDouble(&doubles, 0.25, Immediate);
    object.sendCharPtr(&texts, "x", Queued);
    EXPECT_EQ(told(), "a:3 b:0.25d");
    EXPECT_EQ(distribute(), "c:'x'");
}

TEST_F(OutputChannel, AddCopiesLatestOnlyToTheConverter) {
    qnOutputChannel out(qnDT_int);
    out.add(new qnInputChannel(qnDT_float, &a, Sink::of<float>(), 1));
    out.add(new qnInputChannel(qnDT_float, &b, Sink::of<float>(), 0));
    EXPECT_EQ(out[0]->latestOnly(), 1);
    EXPECT_EQ(out[1]->latestOnly(), 0);
}

// Deliberate: qnObj::connect refuses duplicates, add does not.
TEST_F(OutputChannel, AddMakesASecondConnectionToTheSameInput) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(make(a));
    out.add(in.channel);
    out.add(in.channel);
    EXPECT_EQ(out.getNumberOfConnections(), 2u);
    EXPECT_EQ(in.holders(), 2u);
    EXPECT_EQ(in->getNumberOfOutputs(), 2u);
    EXPECT_EQ(out.find(in.channel), 0u);
    sendTo(&out, 1, Immediate);
    EXPECT_EQ(told(), "a:1 a:1");
}

TEST_F(OutputChannel, AddAcrossTypesMakesAConverterForEachConnection) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(makeFloat(a));
    out.add(in.channel);
    out.add(in.channel);
    EXPECT_NE(out[0], out[1]);
    EXPECT_EQ(in.holders(), 2u);
    out.remove(in.channel);
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(out.getNumberOfConnections(), 1u);
}

TEST_F(OutputChannel, AddOfAConverterBuiltByHandLeadsToItsInput) {
    qnOutputChannel out(qnDT_float);
    ChannelWatch in(new qnInputChannel(qnDT_CharPtr, &a, Sink::of<char*>(), 0));
    qnConverter* toText = qnConverter::findConverter(qnDT_int, qnDT_CharPtr);
    toText->splice(in.channel);
    qnConverter* toInt = qnConverter::findConverter(qnDT_float, qnDT_int);
    toInt->splice(toText);
    out.add(toInt);  // its source type is the output's: the entry is the converter itself
    EXPECT_EQ(out[0], toInt);
    EXPECT_EQ(toInt->refCount, 1u);
    EXPECT_EQ(out.find(in.channel), 0u);
    qnObj().sendFloat(&out, 2.75f, Immediate);
    EXPECT_EQ(told(), "a:'2'");
    in->add(&out);  // what removal asks the final input to strike off
    out.remove(in.channel);
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(OutputChannelDeathTest, AddWithoutAConversion) {
    qnOutputChannel ints(qnDT_int), voids(qnDT_void), arrays(qnDT_qnStrArray);
    qnInputChannel longs(qnDT_long, &a, Sink::of<long>(), 0), intsIn(qnDT_int, &a, Sink::of<int>(), 0);
    EXPECT_EXIT(ints.add(&longs), testing::KilledBySignal(SIGABRT), "^Can't convert from 2 to 3\n$");
    EXPECT_EXIT(voids.add(&intsIn), testing::KilledBySignal(SIGABRT), "^Can't convert from 0 to 2\n$");
    EXPECT_EXIT(arrays.add(&intsIn), testing::KilledBySignal(SIGABRT), "^Can't convert from 11 to 2\n$");
}

TEST_F(OutputChannelDeathTest, AddWithoutAConversionNamesLargeCodesWhole) {
    qnOutputChannel out(65535);
    qnInputChannel in(40000, &a, Sink::of<int>(), 0);
    EXPECT_EXIT(out.add(&in), testing::KilledBySignal(SIGABRT), "^Can't convert from 65535 to 40000\n$");
}

qnInputChannel* asked;  // by the signal handler, which has no closure
extern "C" void reportOutputsListed(int) {
    std::fprintf(stderr, "outputs listed: %u, holders: %u\n", asked->getNumberOfOutputs(), asked->refCount);
    std::fflush(stderr);
}

TEST_F(OutputChannelDeathTest, AddRecordsTheOutputBeforeItLooksForAConversion) {
    qnOutputChannel out(qnDT_int);
    qnInputChannel in(qnDT_long, &a, Sink::of<long>(), 0);
    asked = &in;
    EXPECT_EXIT((std::signal(SIGABRT, &reportOutputsListed), out.add(&in)), testing::KilledBySignal(SIGABRT),
                "^Can't convert from 2 to 3\noutputs listed: 1, holders: 0\n$");
}

// Order.

TEST_F(OutputChannel, ServesConnectionsInTheirOrder) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch first(make(a)), second(makeFloat(b)), third(make(c));
    out.add(first.channel);
    out.add(second.channel);
    out.add(third.channel);
    sendTo(&out, 1, Immediate);
    EXPECT_EQ(told(), "a:1 b:1f c:1");
    EXPECT_EQ(out.find(first.channel), 0u);
    EXPECT_EQ(out.find(second.channel), 1u);
    EXPECT_EQ(out.find(third.channel), 2u);
}

TEST_F(OutputChannel, InputThatIsConnectedAgainComesLast) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch first(make(a)), second(make(b)), third(make(c));
    for (qnInputChannel* in : {first.channel, second.channel, third.channel}) out.add(in);
    out.remove(first.channel);
    out.add(first.channel);
    sendTo(&out, 1, Immediate);
    EXPECT_EQ(told(), "b:1 c:1 a:1");
    out.remove(third.channel);
    sendTo(&out, 2, Immediate);
    EXPECT_EQ(told(), "b:2 a:2");
}

// find.

TEST_F(OutputChannel, FindAnswersNoneForWhatIsNotConnected) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(make(a)), other(make(b));
    out.add(in.channel);
    EXPECT_EQ(out.find(other.channel), None);
    EXPECT_FALSE(out.isConnectedTo(other.channel));
    out.remove(in.channel);
    EXPECT_EQ(out.find(in.channel), None);
}

TEST_F(OutputChannel, FindFollowsConvertersToTheirEnd) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(makeFloat(a));
    out.add(in.channel);
    EXPECT_EQ(out.find(in.channel), 0u);
    EXPECT_EQ(out.find(out[0]), None) << "a converter is not where the connection leads";
}

// remove.

TEST_F(OutputChannel, RemoveEndsBothEndsOfAConnection) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(make(a));
    out.add(in.channel);
    out.remove(in.channel);
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(OutputChannel, RemoveOfWhatIsNotConnectedDoesNothing) {
    qnOutputChannel out(qnDT_int), other(qnDT_int);
    ChannelWatch in(make(a));
    out.remove(in.channel);
    other.add(in.channel);
    out.remove(in.channel);
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
    EXPECT_EQ(other.getNumberOfConnections(), 1u);
}

TEST_F(OutputChannel, RemoveTakesTheFirstOfTwoConnections) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(make(a)), other(make(b));
    out.add(in.channel);
    out.add(other.channel);
    out.add(in.channel);
    out.remove(in.channel);
    ASSERT_EQ(out.getNumberOfConnections(), 2u);
    EXPECT_EQ(out[0], other.channel);
    EXPECT_EQ(out[1], in.channel);
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
}

TEST_F(OutputChannel, RemoveDestroysTheConverterThatNothingElseHolds) {
    qnOutputChannel out(qnDT_int);
    ChannelWatch in(makeFloat(a));
    out.add(in.channel);
    {
        ChannelWatch converter(out[0]);
        out.remove(in.channel);
        EXPECT_EQ(converter.holders(), 0u);
        EXPECT_EQ(in.holders(), 1u) << "the converter still holds its input";
    }
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(OutputChannel, RemoveDestroysAnInputThatOnlyTheConnectionHeld) {
    qnOutputChannel out(qnDT_int);
    qnInputChannel* in = make(a);
    out.add(in);
    out.remove(in);
    EXPECT_EQ(out.getNumberOfConnections(), 0u);
}

TEST_F(OutputChannelDeathTest, RemoveOfAnInputThatDoesNotListTheOutput) {
    qnOutputChannel out(qnDT_int), other(qnDT_int);
    ChannelWatch in(make(a));
    out.add(in.channel);
    in->add(&other);
    in->remove(&out);
    EXPECT_EXIT(out.remove(in.channel), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in->add(&out);
    out.remove(in.channel);
    in->remove(&other);
}

// The end of an output.

TEST_F(OutputChannel, DestructionStrikesItOffItsInputsAndLetsGo) {
    ChannelWatch in(make(a)), converted(makeFloat(b)), twice(make(c));
    qnOutputChannel other(qnDT_int);
    other.add(in.channel);
    {
        qnOutputChannel out(qnDT_int);
        out.add(in.channel);
        out.add(converted.channel);
        out.add(twice.channel);
        out.add(twice.channel);
    }
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
    EXPECT_EQ(converted.holders(), 0u);
    EXPECT_EQ(converted->getNumberOfOutputs(), 0u);
    EXPECT_EQ(twice.holders(), 0u);
    EXPECT_EQ(twice->getNumberOfOutputs(), 0u);
    EXPECT_EQ(other.getNumberOfConnections(), 1u);
}

TEST_F(OutputChannel, DestructionDestroysInputsThatOnlyItsConnectionsHeld) {
    qnOutputChannel* out = new qnOutputChannel(qnDT_int);
    qnInputChannel* in = make(a);
    out->add(in);
    out->add(in);
    out->add(makeFloat(b));
    delete out;  // leak and address checking see to the rest
}

TEST_F(OutputChannel, DestructionLeavesMessagesForItsConverters) {
    ChannelWatch in(makeFloat(a));
    {
        qnOutputChannel out(qnDT_int);
        out.add(in.channel);
        sendTo(&out, 3, Queued);
    }
    EXPECT_EQ(in.holders(), 1u);
    EXPECT_EQ(distribute(), "a:3f");
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(OutputChannelDeathTest, DestructionFindsAnInputThatDoesNotListTheOutput) {
    qnOutputChannel other(qnDT_int);
    qnOutputChannel* out = new qnOutputChannel(qnDT_int);
    ChannelWatch in(make(a));
    out->add(in.channel);
    in->add(&other);
    in->remove(out);
    EXPECT_EXIT(delete out, testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in->add(out);
    delete out;
    in->remove(&other);
}

#ifdef MORVAQNDS_CHECKED
TEST_F(OutputChannelDeathTest, IndexPastTheConnections) {
    qnOutputChannel out(qnDT_int);
    EXPECT_EXIT(out[0], testing::KilledBySignal(SIGABRT),
                "^qnOutputChannel::operator\\[\\]: index 0 is not below 0\n$");
}
#endif

}  // namespace OutputChannelTest
