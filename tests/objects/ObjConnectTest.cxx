// Joining objects and taking them apart: connect, disconnect, removeInput, removeOutput.
#include <gtest/gtest.h>

#include <csignal>

#include "support/ChannelRig.h"

namespace ObjConnectTest {

class ObjConnect : public ChannelRig {
protected:
    Sink a{"a"}, b{"b"};
    qnObj sender, receiver;
};
typedef ObjConnect ObjConnectDeathTest;

// connect.

TEST_F(ObjConnect, ConnectJoinsAnOutputAndAnInput) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    EXPECT_TRUE(out->isConnectedTo(in));
    EXPECT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
    EXPECT_EQ(in->refCount, 2u);
}

TEST_F(ObjConnect, ConnectWithoutAnOutputsDictionaryDoesNothing) {
    qnInputChannel* in = intInput(receiver, "in", a);
    intInput(sender, "out", a);
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in->refCount, 1u);
}

TEST_F(ObjConnect, ConnectWithoutAnInputsDictionaryDoesNothing) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    receiver.addOutput("in", qnDT_int);
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(ObjConnect, ConnectOfAnUnknownOutputDoesNothing) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("other", &receiver, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(sender.findOutput("other"), nullptr);
}

TEST_F(ObjConnect, ConnectToAnUnknownInputDoesNothing) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(receiver, "in", a);
    sender.connect("out", &receiver, "other");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(receiver.findInput("other"), nullptr);
}

TEST_F(ObjConnect, ConnectToNoObjectDoesNothing) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.connect("out", nullptr, "in");
    sender.disconnect("out", nullptr, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
}

TEST_F(ObjConnect, ConnectTwiceMakesOneConnection) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 1u);
    EXPECT_EQ(in->refCount, 2u);
}

TEST_F(ObjConnect, ConnectTwiceAcrossAConverterMakesOneConnection) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = floatInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ(in->refCount, 2u);
}

TEST_F(ObjConnect, ConnectsToItself) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(sender, "in", a);
    sender.connect("out", &sender, "in");
    sendTo(out, 4, Immediate);
    EXPECT_EQ(told(), "a:4");
}

TEST_F(ObjConnect, OneInputTakesSeveralOutputs) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnOutputChannel* out2 = sender.addOutput("out2", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sender.connect("out2", &receiver, "in");
    EXPECT_EQ(in->refCount, 3u);
    EXPECT_EQ(in->getNumberOfOutputs(), 2u);
    sendTo(out2, 2, Immediate);
    sendTo(out, 1, Immediate);
    EXPECT_EQ(told(), "a:2 a:1");
}

// disconnect.

TEST_F(ObjConnect, DisconnectEndsTheConnection) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sender.disconnect("out", &receiver, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in->refCount, 1u);
}

TEST_F(ObjConnect, DisconnectLeavesWaitingMessages) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 9, Queued);
    sender.disconnect("out", &receiver, "in");
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:9");
}

TEST_F(ObjConnect, DisconnectOfUnconnectedChannelsDoesNothing) {
    sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    sender.disconnect("out", &receiver, "in");
    sender.connect("out", &receiver, "in");
    sender.disconnect("out", &receiver, "in");
    sender.disconnect("out", &receiver, "in");
    EXPECT_EQ(in->refCount, 1u);
}

TEST_F(ObjConnect, DisconnectWithAMissingDictionaryOrNameDoesNothing) {
    sender.disconnect("out", &receiver, "in");
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.disconnect("out", &receiver, "in");
    intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sender.disconnect("other", &receiver, "in");
    sender.disconnect("out", &receiver, "other");
    receiver.disconnect("out", &sender, "in");
    EXPECT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ(receiver.findProperty("outputs", nullptr), nullptr);
}

TEST_F(ObjConnect, ConnectAndDisconnectAreVirtual) {
    class Wary : public qnObj {
    public:
        void connect(const char* output, qnObj*, const char* input) override {
            Story::tell(std::string("connect") + output + input);
        }
        void disconnect(const char* output, qnObj*, const char* input) override {
            Story::tell(std::string("disconnect") + output + input);
        }
        void subClassMustDefine(const char* method) const override { Story::tell(method); }
    };
    Wary wary;
    qnObj& object = wary;
    object.connect("A", &receiver, "B");
    object.disconnect("C", &receiver, "D");
    EXPECT_EQ(object.compare(&receiver), 0);
    EXPECT_EQ(told(), "connectAB disconnectCD compare");
}

// removeInput and removeOutput.

TEST_F(ObjConnect, RemoveInputFlushesDisconnectsAndLetsGo) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnOutputChannel* out2 = sender.addOutput("out2", qnDT_int);
    ChannelWatch in(intInput(receiver, "in", a));
    sender.connect("out", &receiver, "in");
    sender.connect("out2", &receiver, "in");
    sendTo(out, 1, Queued);
    sendTo(out2, 2, Queued);
    EXPECT_EQ(in.holders(), 5u);
    receiver.removeInput("in");
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(out2->getNumberOfConnections(), 0u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in.holders(), 0u);
    EXPECT_EQ(receiver.findInput("in"), nullptr);
}

TEST_F(ObjConnect, RemoveInputLeavesOtherInputsAndTheirMessages) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(receiver, "a", a);
    intInput(receiver, "b", b);
    sender.connect("out", &receiver, "a");
    sender.connect("out", &receiver, "b");
    sendTo(out, 1, Queued);
    receiver.removeInput("a");
    EXPECT_EQ(out->getNumberOfConnections(), 1u);
    EXPECT_EQ(distribute(), "b:1");
}

TEST_F(ObjConnect, RemoveInputOfAnUnknownNameOrWithoutInputsDoesNothing) {
    receiver.removeInput("in");
    EXPECT_EQ(receiver.findProperty("inputs", nullptr), nullptr);
    qnInputChannel* in = intInput(receiver, "in", a);
    receiver.removeInput("out");
    EXPECT_EQ(receiver.findInput("in"), in);
    EXPECT_EQ(in->refCount, 1u);
}

TEST_F(ObjConnect, RemoveOutputDestroysItAndLeavesBothInputsWithEmptyLists) {
    sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "a", a);
    qnInputChannel* in2 = intInput(receiver, "b", b);
    sender.connect("out", &receiver, "a");
    sender.connect("out", &receiver, "b");
    sender.removeOutput("out");
    EXPECT_EQ(sender.findOutput("out"), nullptr);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in2->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(in2->refCount, 1u);
    in->disconnect();
}

TEST_F(ObjConnect, RemoveOutputLeavesWaitingMessages) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 3, Queued);
    sender.removeOutput("out");
    EXPECT_EQ(distribute(), "a:3");
}

TEST_F(ObjConnect, RemoveOutputOfAnUnknownNameOrWithoutOutputsDoesNothing) {
    sender.removeOutput("out");
    EXPECT_EQ(sender.findProperty("outputs", nullptr), nullptr);
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    sender.removeOutput("in");
    EXPECT_EQ(sender.findOutput("out"), out);
}

// Deliberate: a message towards an input behind a converter is addressed to the converter.
TEST_F(ObjConnect, RemovedInputBehindAConverterStillGetsAWaitingValue) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    floatInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 3, Queued);
    receiver.removeInput("in");
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(distribute(), "a:3f");
}

// Fatal ends.

TEST_F(ObjConnectDeathTest, ConnectWithoutAConversion) {
    sender.addOutput("int", qnDT_int);
    receiver.addInput("long", qnDT_long, &a, Sink::of<long>(), 0);
    EXPECT_EXIT(sender.connect("int", &receiver, "long"), testing::KilledBySignal(SIGABRT),
                "^Can't convert from 2 to 3\n$");
}

}  // namespace ObjConnectTest
