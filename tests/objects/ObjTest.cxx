#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>

#include "Application.h"
#include "Obj.h"
#include "SelectHandler.h"
#include "Timer.h"
#include "support/ChannelRig.h"
#include "support/VirtualSlot.h"

namespace ObjTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnObj) == sizeof(qnXDRObj) + 4 && sizeof(qnObj) == 12, "an object adds its property list");
#endif
static_assert(qnObj::qnSF_Queued == 0 && qnObj::qnSF_Immediate == 1 && qnObj::qnSF_Urgent == 2, "the send modes");

class Obj : public ChannelRig {
protected:
    static qnVoidPtrDict* dictionary(const qnObj& object, const char* name) {
        qnProperty* property = object.findProperty(name, nullptr);
        return property == nullptr ? nullptr : static_cast<qnVoidPtrDict*>(property->getAsVoidPtr());
    }
    static void* entry(const qnObj& object, const char* dictionaryName, const char* name) {
        qnStr key(name);
        void* value = dictionary(object, dictionaryName)->find(&key, nullptr);
        return value == nullptr ? nullptr : *static_cast<void**>(value);
    }

    Sink a{"a"}, b{"b"};
    qnObj sender, receiver;
};
typedef Obj ObjDeathTest;

TEST_F(Obj, VirtualOperationsFollowThoseOfTheRootInTheirOrder) {
    const std::ptrdiff_t last = virtualSlot(&qnXDRObj::xdrSuccess);
    EXPECT_EQ(virtualSlot(&qnObj::connect), last + 1);
    EXPECT_EQ(virtualSlot(&qnObj::disconnect), last + 2);
    EXPECT_EQ(virtualSlot(&qnObj::subClassMustDefine), last + 3);
}

TEST_F(Obj, VirtualOperationsOfItsSubclassesFollowItsOwnInTheirOrder) {
    const std::ptrdiff_t last = virtualSlot(&qnObj::subClassMustDefine);
    EXPECT_EQ(virtualSlot(&qnEvent::deliver), last + 1);
    EXPECT_EQ(virtualSlot(&qnEvent::dump), last + 2);
    EXPECT_EQ(virtualSlot(&qnEvent::getChannel), last + 3);
    EXPECT_EQ(virtualSlot(&qnTimer::tick), last + 1);
    EXPECT_EQ(virtualSlot(&qnSelectHandler::handleRead), last + 1);
    EXPECT_EQ(virtualSlot(&qnSelectHandler::handleWrite), last + 2);
    EXPECT_EQ(virtualSlot(&qnSelectHandler::handleException), last + 3);
    EXPECT_EQ(virtualSlot(&qnApplication::initialize), last + 1);
    EXPECT_EQ(virtualSlot(&qnApplication::open), last + 2);
    EXPECT_EQ(virtualSlot(&qnApplication::close), last + 3);
}

// The object itself.

TEST_F(Obj, IsCalledQnObj) { EXPECT_STREQ(sender.className(), "qnObj"); }

TEST_F(Obj, StartsWithoutHoldersPropertiesAndChannels) {
    EXPECT_EQ(sender.refCount, 0u);
    EXPECT_EQ(sender.getNumberOfProperties(), 0u);
    EXPECT_EQ(sender.findInput("in"), nullptr);
    EXPECT_EQ(sender.findOutput("out"), nullptr);
}

TEST_F(Obj, CopyHasNeitherPropertiesNorChannelsNorHolders) {
    qnRetain(&sender);
    sender.addOutput("out", qnDT_int);
    intInput(sender, "in", a);
    sender.setProperty(new qnProperty(qnProperty::allocNewTag("Obj.copy"), 7L));
    qnObj copy(sender);
    EXPECT_EQ(copy.refCount, 0u);
    EXPECT_EQ(copy.getNumberOfProperties(), 0u);
    EXPECT_EQ(copy.findInput("in"), nullptr);
    EXPECT_EQ(copy.findOutput("out"), nullptr);
    EXPECT_EQ(sender.getNumberOfProperties(), 3u);
}

TEST_F(Obj, AssignmentLeavesPropertiesAndChannelsOfBothSides) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    receiver = sender;
    EXPECT_EQ(receiver.findInput("in"), in);
    EXPECT_EQ(receiver.findOutput("out"), nullptr);
    EXPECT_EQ(sender.findOutput("out"), out);
    EXPECT_EQ(in->refCount, 1u);
}

// Where channels live.

TEST_F(Obj, FirstInputMakesTheInputsPropertyOnly) {
    intInput(receiver, "in", a);
    ASSERT_NE(dictionary(receiver, "inputs"), nullptr);
    EXPECT_EQ(dictionary(receiver, "outputs"), nullptr);
    EXPECT_EQ(receiver.getNumberOfProperties(), 1u);
    EXPECT_EQ(receiver.getProperty(0)->getType(), qnDT_VoidPtr);
    EXPECT_EQ(receiver.getProperty(0)->getTag(), qnProperty::findTag("inputs"));
    EXPECT_EQ(receiver.getProperty(0)->refCount, 1u);
}

TEST_F(Obj, FirstOutputMakesTheOutputsPropertyOnly) {
    sender.addOutput("out", qnDT_int);
    ASSERT_NE(dictionary(sender, "outputs"), nullptr);
    EXPECT_EQ(dictionary(sender, "inputs"), nullptr);
    EXPECT_EQ(sender.getNumberOfProperties(), 1u);
    EXPECT_EQ(sender.getProperty(0)->getType(), qnDT_VoidPtr);
    EXPECT_EQ(sender.getProperty(0)->getTag(), qnProperty::findTag("outputs"));
}

TEST_F(Obj, DictionariesHaveTheDefaultNumberOfBuckets) {
    intInput(receiver, "in", a);
    receiver.addOutput("out", qnDT_int);
    EXPECT_EQ(dictionary(receiver, "inputs")->buckets.length(), 31u);
    EXPECT_EQ(dictionary(receiver, "outputs")->buckets.length(), 31u);
}

TEST_F(Obj, DictionariesHoldTheChannelsByName) {
    qnInputChannel* in = intInput(receiver, "in", a);
    qnOutputChannel* out = receiver.addOutput("out", qnDT_int);
    EXPECT_EQ(entry(receiver, "inputs", "in"), in);
    EXPECT_EQ(entry(receiver, "outputs", "out"), out);
    EXPECT_EQ(entry(receiver, "inputs", "out"), nullptr);
    EXPECT_EQ(dictionary(receiver, "inputs")->count, 1u);
}

TEST_F(Obj, LaterChannelsUseTheSamePropertiesAndTags) {
    intInput(receiver, "in", a);
    receiver.addOutput("out", qnDT_int);
    qnVoidPtrDict* inputs = dictionary(receiver, "inputs");
    qnVoidPtrDict* outputs = dictionary(receiver, "outputs");
    unsigned short tag = qnProperty::findTag("inputs");
    intInput(receiver, "in2", a);
    receiver.addOutput("out2", qnDT_int);
    EXPECT_EQ(dictionary(receiver, "inputs"), inputs);
    EXPECT_EQ(dictionary(receiver, "outputs"), outputs);
    EXPECT_EQ(qnProperty::findTag("inputs"), tag);
    EXPECT_EQ(receiver.getNumberOfProperties(), 2u);
    EXPECT_EQ(inputs->count, 2u);
    EXPECT_EQ(outputs->count, 2u);
}

TEST_F(Obj, DictionaryStaysWhenItsLastChannelGoes) {
    intInput(receiver, "in", a);
    receiver.addOutput("out", qnDT_int);
    receiver.removeInput("in");
    receiver.removeOutput("out");
    ASSERT_NE(dictionary(receiver, "inputs"), nullptr);
    EXPECT_EQ(dictionary(receiver, "inputs")->count, 0u);
    EXPECT_EQ(dictionary(receiver, "outputs")->count, 0u);
}

TEST_F(Obj, InputAndOutputMayHaveTheSameName) {
    qnInputChannel* in = intInput(receiver, "x", a);
    qnOutputChannel* out = receiver.addOutput("x", qnDT_int);
    receiver.connect("x", &receiver, "x");
    EXPECT_TRUE(out->isConnectedTo(in));
}

// addInput.

TEST_F(Obj, AddInputMakesAChannelWithTheseValuesAndOneHolder) {
    qnInputChannel* in = receiver.addInput("in", qnDT_float, &a, Sink::of<float>(), 1);
    EXPECT_EQ(in->closure, &a);
    EXPECT_EQ(in->deliverFunc, Sink::of<float>());
    EXPECT_EQ(in->getType(), qnDT_float);
    EXPECT_EQ(in->latestOnly(), 1);
    EXPECT_EQ(in->isConverter(), 0);
    EXPECT_EQ(in->pending, nullptr);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(receiver.findInput("in"), in);
}

TEST_F(Obj, AddInputTakesAnyLatestOnlyButZeroAsOne) {
    EXPECT_EQ(intInput(receiver, "1", a, 2)->latestOnly(), 1);
    EXPECT_EQ(intInput(receiver, "2", a, 255)->latestOnly(), 1);
    EXPECT_EQ(intInput(receiver, "3", a, 0)->latestOnly(), 0);
    EXPECT_EQ(receiver.findInput("1")->getType(), qnDT_int);
    EXPECT_EQ(receiver.findInput("2")->isConverter(), 0);
}

TEST_F(Obj, AddInputCopiesTheName) {
    char name[] = "in";
    qnInputChannel* in = intInput(receiver, name, a);
    name[0] = 'x';
    EXPECT_EQ(receiver.findInput("in"), in);
    EXPECT_EQ(receiver.findInput("xn"), nullptr);
}

TEST_F(Obj, AddInputWithAnExistingNameLetsGoOfTheOldChannelOnce) {
    ChannelWatch old(intInput(receiver, "in", a));
    EXPECT_EQ(old.holders(), 1u);
    qnInputChannel* in = intInput(receiver, "in", b);
    EXPECT_EQ(old.holders(), 0u);
    EXPECT_EQ(receiver.findInput("in"), in);
    EXPECT_NE(in, old.channel);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(dictionary(receiver, "inputs")->count, 1u);
}

TEST_F(Obj, AddInputWithAnExistingNameDestroysAChannelThatNobodyElseHolds) {
    intInput(receiver, "in", a);
    intInput(receiver, "in", b);  // leak checking and address checking see to the first one
    EXPECT_EQ(receiver.findInput("in")->closure, &b);
}

// Deliberate: replacing an input leaves its connections alone.
TEST_F(Obj, ReplacedInputStaysConnectedAndReceivesUntilItIsDisconnected) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    ChannelWatch old(intInput(receiver, "in", a));
    sender.connect("out", &receiver, "in");
    qnInputChannel* in = intInput(receiver, "in", b);
    EXPECT_EQ(old.holders(), 1u);
    EXPECT_EQ(old->getNumberOfOutputs(), 1u);
    EXPECT_TRUE(out->isConnectedTo(old.channel));
    EXPECT_FALSE(out->isConnectedTo(in));
    sendTo(out, 1, Immediate);
    sendTo(out, 2, Queued);
    EXPECT_EQ(told(), "a:1");
    EXPECT_EQ(distribute(), "a:2");
    sender.disconnect("out", &receiver, "in");  // names the new one, which is not connected
    EXPECT_TRUE(out->isConnectedTo(old.channel));
    old->disconnect();
    EXPECT_EQ(old.holders(), 0u);
    sendTo(out, 3, Immediate);
    EXPECT_EQ(told(), "");
}

TEST_F(Obj, ReplacedInputGetsTheMessagesThatWaitForIt) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    ChannelWatch old(intInput(receiver, "in", a));
    sender.connect("out", &receiver, "in");
    sendTo(out, 5, Queued);
    intInput(receiver, "in", b);
    EXPECT_EQ(queue().count, 1u);
    EXPECT_EQ(old.holders(), 2u);
    EXPECT_EQ(distribute(), "a:5");
    EXPECT_EQ(old.holders(), 1u);
}

TEST_F(Obj, ReplacedInputThatOnlyAMessageHoldsGoesWithTheMessage) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    intInput(receiver, "in", a);
    sender.connect("out", &receiver, "in");
    sendTo(out, 5, Queued);
    sender.removeOutput("out");
    intInput(receiver, "in", b);
    EXPECT_EQ(distribute(), "a:5");
}

// addOutput.

TEST_F(Obj, AddOutputMakesAChannelWithoutConnections) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_double);
    EXPECT_EQ(out->getType(), qnDT_double);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(sender.findOutput("out"), out);
}

TEST_F(Obj, AddOutputWithAnExistingNameDestroysAndDisconnectsTheOldOne) {
    sender.addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    qnInputChannel* converted = floatInput(receiver, "float", b);
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "float");
    qnOutputChannel* out = sender.addOutput("out", qnDT_float);
    EXPECT_EQ(in->refCount, 1u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(converted->refCount, 1u);
    EXPECT_EQ(converted->getNumberOfOutputs(), 0u);
    EXPECT_EQ(out->getType(), qnDT_float);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(sender.findOutput("out"), out);
    EXPECT_EQ(dictionary(sender, "outputs")->count, 1u);
}

// The end of an object.

TEST_F(Obj, DestructionFlushesAndDisconnectsInputs) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    qnObj* object = new qnObj;
    ChannelWatch in(intInput(*object, "a", a));
    ChannelWatch in2(intInput(*object, "b", b));
    sender.connect("out", object, "a");
    sender.connect("out", object, "b");
    sendTo(out, 1, Queued);
    delete object;
    EXPECT_EQ(in.holders(), 0u);
    EXPECT_EQ(in2.holders(), 0u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(queue().count, 0u);
}

TEST_F(Obj, DestructionDisconnectsOutputsAndLeavesTheirMessages) {
    qnObj* object = new qnObj;
    qnOutputChannel* out = object->addOutput("out", qnDT_int);
    qnInputChannel* in = intInput(receiver, "in", a);
    object->connect("out", &receiver, "in");
    sendTo(out, 1, Queued);
    delete object;
    EXPECT_EQ(in->refCount, 2u);
    EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    EXPECT_EQ(distribute(), "a:1");
    EXPECT_EQ(in->refCount, 1u);
}

TEST_F(Obj, DestructionOfAnObjectThatIsConnectedToItself) {
    for (bool inputFirst : {true, false}) {
        qnObj* object = new qnObj;
        if (inputFirst) intInput(*object, "in", a);
        qnOutputChannel* out = object->addOutput("out", qnDT_int);
        if (!inputFirst) intInput(*object, "in", a);
        ChannelWatch in(object->findInput("in"));
        object->connect("out", object, "in");
        sendTo(out, 1, Queued);
        delete object;
        EXPECT_EQ(in.holders(), 0u);
        EXPECT_EQ(in->getNumberOfOutputs(), 0u);
    }
}

TEST_F(Obj, DestructionReleasesProperties) {
    qnProperty* property = new qnProperty(qnProperty::allocNewTag("Obj.end"), 7L);
    qnRetain(property);
    {
        qnObj object;
        object.setProperty(property);
        EXPECT_EQ(property->refCount, 2u);
    }
    EXPECT_EQ(property->refCount, 1u);
    qnRelease(property);
}

TEST_F(Obj, DestructionThroughTheRootDestroysTheChannels) {
    qnXDRObj* object = new qnObj;
    ChannelWatch in(intInput(*static_cast<qnObj*>(object), "in", a));
    qnRetain(object);
    EXPECT_TRUE(qnRelease(object));
    EXPECT_EQ(in.holders(), 0u);
}

TEST_F(Obj, RemovingThePropertiesThatHoldTheChannelsDestroysThem) {
    qnOutputChannel* out = sender.addOutput("out", qnDT_int);
    ChannelWatch in(intInput(receiver, "in", a));
    sender.connect("out", &receiver, "in");
    sendTo(out, 1, Queued);
    receiver.removeProperty("inputs");
    EXPECT_EQ(in.holders(), 0u);
    EXPECT_EQ(queue().count, 0u);
    EXPECT_EQ(out->getNumberOfConnections(), 0u);
    EXPECT_EQ(receiver.findInput("in"), nullptr);
    receiver.removeInput("in");

    ChannelWatch in2(intInput(receiver, "in", a));
    sender.connect("out", &receiver, "in");
    sender.removeAllProperties();
    EXPECT_EQ(in2->getNumberOfOutputs(), 0u);
    EXPECT_EQ(in2.holders(), 1u);
    EXPECT_EQ(sender.findOutput("out"), nullptr);
}

TEST_F(Obj, ManyChannelsLiveAndGoTogether) {
    qnObj* object = new qnObj;
    for (int i = 0; i < 500; ++i) {
        std::string name = std::to_string(i);
        intInput(*object, name.c_str(), a);
        object->addOutput(name.c_str(), qnDT_int);
        object->connect(name.c_str(), object, "0");
    }
    EXPECT_EQ(object->findInput("0")->refCount, 501u);
    EXPECT_EQ(object->findInput("0")->getNumberOfOutputs(), 500u);
    sendTo(object->findOutput("499"), 1, Immediate);
    EXPECT_EQ(told(), "a:1");
    delete object;
}

// Fatal ends.

TEST_F(ObjDeathTest, SubClassMustDefineNamesClassAndMethod) {
    class Gadget : public qnObj {
    public:
        const char* className() const override { return "Gadget"; }
    };
    EXPECT_EXIT(sender.subClassMustDefine("paint"), testing::KilledBySignal(SIGABRT),
                "^qnObj: Sub class must define method \"paint\"\n$");
    EXPECT_EXIT(Gadget().subClassMustDefine("draw"), testing::KilledBySignal(SIGABRT),
                "^Gadget: Sub class must define method \"draw\"\n$");
}

TEST_F(ObjDeathTest, CompareMustBeDefined) {
    EXPECT_EXIT(sender.compare(&receiver), testing::KilledBySignal(SIGABRT),
                "^qnObj: Sub class must define method \"compare\"\n$");
    EXPECT_EXIT(sender.compare(&sender), testing::KilledBySignal(SIGABRT),
                "^qnObj: Sub class must define method \"compare\"\n$");
}

}  // namespace ObjTest
