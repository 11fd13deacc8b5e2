// The registry of converters, the instances made from it, and how they stand between channels. What each of the
// standard conversions makes of values is in ConversionTest.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <string>
#include <vector>

#include "Converter.h"
#include "Obj.h"
#include "OrderedGlobal.h"

namespace ConverterTest {

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnConverter) == sizeof(qnInputChannel) + 8, "a target type, the next in the registry");
#endif

class Converter : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }

    /** A data type of the test's own. */
    static unsigned short newType() { return static_cast<unsigned short>((*qn_nextDataType)()); }
};

void ignoreInt(void*, int) {}
void convertOne(void* input, int value) { qnDeliver<int>(input, value + 1); }
void convertTwo(void* input, int value) { qnDeliver<int>(input, value + 2); }

/** Registers a prototype; it stays for the life of the process. */
qnConverter* registerNew(unsigned short from, unsigned short to, void (*fn)(void*, int)) {
    return new qnConverter(from, to, reinterpret_cast<qnDeliverFunc>(fn));
}

TEST_F(Converter, ThereAreExactlyEighteenAmongTheStandardTypes) {
    const unsigned short codes[] = {qnDT_void,    qnDT_qnBool, qnDT_int,     qnDT_long,
                                    qnDT_float,   qnDT_double, qnDT_CharPtr, qnDT_qnStr,
                                    qnDT_VoidPtr, qnDT_ObjPtr, qnDT_DataPtr, qnDT_qnStrArray};
    // From the row's type to the column's.
    const char* const convertible[] = {
        "............",  // void
        "..i.fd......",  // bool
        ".b..f.c.....",  // int
        "............",  // long
        ".bi..dc.....",  // float
        ".bi.f.c.....",  // double
        "..i.f..s....",  // text
        "......c.....",  // string
        "............",  // untyped pointer
        "............",  // object
        "............",  // box
        "............",  // string array
    };
    unsigned found = 0;
    for (unsigned from = 0; from < 12; ++from) {
        for (unsigned to = 0; to < 12; ++to) {
            qnConverter* instance = qnConverter::findConverter(codes[from], codes[to]);
            EXPECT_EQ(convertible[from][to] != '.', instance != nullptr) << "from " << from << " to " << to;
            if (instance == nullptr) continue;
            ++found;
            EXPECT_EQ(codes[from], instance->getType());
            EXPECT_EQ(codes[to], instance->getTargetType());
            delete instance;
        }
    }
    EXPECT_EQ(18u, found);
}

TEST_F(Converter, APrototypeIsAnInputOfTheSourceTypeWithoutClosure) {
    const unsigned short from = newType(), to = newType();
    qnConverter* prototype = registerNew(from, to, convertOne);
    EXPECT_EQ(from, prototype->getType());
    EXPECT_EQ(to, prototype->getTargetType());
    EXPECT_EQ(nullptr, prototype->closure);
    EXPECT_EQ(reinterpret_cast<qnDeliverFunc>(&convertOne), prototype->deliverFunc);
    EXPECT_EQ(0, prototype->latestOnly());
    EXPECT_EQ(0, prototype->isConverter());
    EXPECT_EQ(nullptr, prototype->pending);
    EXPECT_EQ(0u, prototype->refCount);
}

TEST_F(Converter, AnUnknownPairFindsNull) {
    const unsigned short from = newType(), to = newType();
    EXPECT_EQ(nullptr, qnConverter::findConverter(from, to));
    registerNew(from, to, convertOne);
    EXPECT_EQ(nullptr, qnConverter::findConverter(to, from)) << "a conversion goes one way";
    EXPECT_EQ(nullptr, qnConverter::findConverter(from, from));
}

TEST_F(Converter, FindingMakesAnInstanceForOneConnection) {
    const unsigned short from = newType(), to = newType();
    qnConverter* prototype = registerNew(from, to, convertOne);
    qnConverter* instance = qnConverter::findConverter(from, to);
    ASSERT_NE(nullptr, instance);
    EXPECT_NE(prototype, instance);
    EXPECT_EQ(from, instance->getType());
    EXPECT_EQ(to, instance->getTargetType());
    EXPECT_EQ(nullptr, instance->closure);
    EXPECT_EQ(prototype->deliverFunc, instance->deliverFunc);
    EXPECT_EQ(0, instance->latestOnly());
    EXPECT_EQ(1, instance->isConverter());
    EXPECT_EQ(nullptr, instance->pending);
    EXPECT_EQ(0u, instance->refCount);
    EXPECT_EQ(0u, instance->getNumberOfOutputs());

    qnConverter* another = qnConverter::findConverter(from, to);
    EXPECT_NE(instance, another);
    delete another;
    delete instance;
}

TEST_F(Converter, InstancesAreNotInTheRegistry) {
    const unsigned short from = newType(), to = newType();
    registerNew(from, to, convertOne);
    delete qnConverter::findConverter(from, to);
    qnConverter* again = qnConverter::findConverter(from, to);  // must not meet the one that has gone
    EXPECT_EQ(1, again->isConverter());
    delete again;
}

TEST_F(Converter, SpliceTakesTheInputAsClosureAndHoldsIt) {
    const unsigned short from = newType(), to = newType();
    registerNew(from, to, convertOne);
    qnInputChannel* input = new qnInputChannel(to, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 0);
    qnRetain(input);
    qnConverter* instance = qnConverter::findConverter(from, to);
    instance->splice(input);
    EXPECT_EQ(input, instance->closure);
    EXPECT_EQ(2u, input->refCount);
    EXPECT_EQ(0u, instance->refCount);
    EXPECT_EQ(0, instance->latestOnly());
    EXPECT_EQ(from, instance->getType());
    EXPECT_EQ(1, instance->isConverter());
    delete instance;
    EXPECT_EQ(1u, input->refCount) << "destroying the instance lets go of the input";
    EXPECT_TRUE(qnRelease(input));
}

TEST_F(Converter, SpliceCopiesLatestOnly) {
    const unsigned short from = newType(), to = newType();
    registerNew(from, to, convertOne);
    const int flags[] = {1, 2, 255};  // anything but 0 counts as 1
    for (int flag : flags) {
        qnInputChannel* input =
            new qnInputChannel(to, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), static_cast<qnBool>(flag));
        qnConverter* instance = qnConverter::findConverter(from, to);
        EXPECT_EQ(0, instance->latestOnly());
        instance->splice(input);
        EXPECT_EQ(1, instance->latestOnly());
        EXPECT_EQ(from, instance->getType());
        EXPECT_EQ(1, instance->isConverter());
        delete instance;  // the last holder of the input
    }
}

TEST_F(Converter, SplicingAnewTakesTheFlagOfTheNewInput) {
    const unsigned short from = newType(), to = newType();
    registerNew(from, to, convertOne);
    qnInputChannel* first = new qnInputChannel(to, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 1);
    qnInputChannel* second = new qnInputChannel(to, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 0);
    qnConverter* instance = qnConverter::findConverter(from, to);
    instance->splice(first);
    EXPECT_EQ(1, instance->latestOnly());
    instance->splice(second);
    EXPECT_EQ(0, instance->latestOnly()) << "not only set, but copied";
    EXPECT_EQ(second, instance->closure);
    EXPECT_EQ(1u, second->refCount);
    EXPECT_EQ(1u, first->refCount) << "nothing lets go of it";
    qnRelease(first);
    delete instance;
}

TEST_F(Converter, AnInstanceMayGoBeforeItIsSpliced) {
    qnInputChannel* instance = qnConverter::findConverter(qnDT_int, qnDT_float);
    qnRetain(instance);
    EXPECT_TRUE(qnRelease(instance));
}

TEST_F(Converter, AnInstanceKnownAsAnInputIsDestroyedAsWhatItIs) {
    qnInputChannel* input = new qnInputChannel(qnDT_float, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 0);
    qnRetain(input);
    qnConverter* converter = qnConverter::findConverter(qnDT_int, qnDT_float);
    converter->splice(input);
    qnInputChannel* instance = converter;
    qnRetain(instance);
    qnRetain(instance);
    EXPECT_FALSE(qnRelease(instance));
    EXPECT_EQ(2u, input->refCount);
    EXPECT_TRUE(qnRelease(instance));
    EXPECT_EQ(1u, input->refCount);
    EXPECT_TRUE(qnRelease(input));
}

// Connections

void collect(std::vector<int>* values, int value) { values->push_back(value); }

TEST_F(Converter, TheNewestRegistrationCountsForLaterConnections) {
    const unsigned short from = newType();
    registerNew(from, qnDT_int, convertOne);
    std::vector<int> first, second;
    qnObj source, sink;
    qnOutputChannel* out = source.addOutput("out", from);
    sink.addInput("first", &first, &collect);
    sink.addInput("second", &second, &collect);

    source.connect("out", &sink, "first");
    registerNew(from, qnDT_int, convertTwo);
    source.connect("out", &sink, "second");
    source.sendInt(out, 10, qnObj::qnSF_Immediate);

    EXPECT_EQ(std::vector<int>{11}, first) << "connections keep their instances";
    EXPECT_EQ(std::vector<int>{12}, second);
}

TEST_F(Converter, APrototypeThatIsDestroyedIsForgotten) {
    const unsigned short from = newType();
    auto make = [from](void (*fn)(void*, int)) {
        return new qnConverter(from, qnDT_int, reinterpret_cast<qnDeliverFunc>(fn));
    };
    auto found = [from] {
        qnInputChannel* instance = qnConverter::findConverter(from, qnDT_int);
        const qnDeliverFunc fn = instance == nullptr ? nullptr : instance->deliverFunc;
        if (instance != nullptr) qnDestroy(instance);
        return fn;
    };
    qnConverter* const one = make(convertOne);
    qnConverter* const two = make(convertTwo);
    EXPECT_EQ(reinterpret_cast<qnDeliverFunc>(&convertTwo), found());
    delete two;
    EXPECT_EQ(reinterpret_cast<qnDeliverFunc>(&convertOne), found());
    qnConverter* const third = make(convertTwo);
    delete one;
    EXPECT_EQ(reinterpret_cast<qnDeliverFunc>(&convertTwo), found());
    delete third;
    EXPECT_EQ(nullptr, found());
}

TEST_F(Converter, AConnectionBetweenTypesHoldsAnInstance) {
    float* const nothing = nullptr;
    qnObj source, sink;
    qnOutputChannel* out = source.addOutput("out", qnDT_int);
    qnInputChannel* in = sink.addInput("in", qnDT_float, nothing, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 1);
    source.connect("out", &sink, "in");
    ASSERT_EQ(1u, out->getNumberOfConnections());
    qnInputChannel* entry = (*out)[0];
    EXPECT_NE(in, entry);
    EXPECT_EQ(1, entry->isConverter());
    EXPECT_EQ(in, entry->closure);
    EXPECT_EQ(1u, entry->refCount);
    EXPECT_EQ(1, entry->latestOnly());
    EXPECT_EQ(qnDT_int, entry->getType());
    EXPECT_EQ(2u, in->refCount) << "its object and the instance";
    EXPECT_EQ(0u, out->find(in));
}

void keepInt(int* seen, int value) { *seen = value; }
void keepBool(int* seen, qnBool value) { *seen = value; }
void keepText(std::string* seen, const char* text) { *seen = text; }

TEST_F(Converter, AnIntOutputToABoolInput) {
    int seen = -1;
    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_int);
    object.addInput("in", &seen, &keepBool);
    object.connect("out", &object, "in");
    object.sendInt(out, 256, qnObj::qnSF_Immediate);
    EXPECT_EQ(0, seen);
    object.sendInt(out, 257, qnObj::qnSF_Immediate);
    EXPECT_EQ(1, seen);
}

TEST_F(Converter, AFloatOutputToABoolInput) {
    int seen = -1;
    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_float);
    object.addInput("in", &seen, &keepBool);
    object.connect("out", &object, "in");
    object.sendFloat(out, 1.0f, qnObj::qnSF_Immediate);
    EXPECT_EQ(0, seen);
}

TEST_F(Converter, ADoubleOutputToAnIntInput) {
    int seen = -1;
    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_double);
    object.addInput("in", &seen, &keepInt);
    object.connect("out", &object, "in");
    object.sendDouble(out, 2.7, qnObj::qnSF_Immediate);
    EXPECT_EQ(2, seen);
    object.sendDouble(out, -2.7, qnObj::qnSF_Immediate);
    EXPECT_EQ(-2, seen);
}

TEST_F(Converter, NumbersToATextInput) {
    std::string seen;
    qnObj object;
    qnOutputChannel* real = object.addOutput("real", qnDT_double);
    qnOutputChannel* integer = object.addOutput("integer", qnDT_int);
    object.addInput("in", &seen, &keepText);
    object.connect("real", &object, "in");
    object.connect("integer", &object, "in");
    object.sendDouble(real, 0.1, qnObj::qnSF_Immediate);
    EXPECT_EQ("0.1", seen);
    object.sendInt(integer, 3, qnObj::qnSF_Immediate);
    EXPECT_EQ("3", seen);
}

TEST_F(Converter, NullTextToAnIntInputIsZero) {
    int seen = -1;
    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_CharPtr);
    object.addInput("in", &seen, &keepInt);
    object.connect("out", &object, "in");
    object.sendCharPtr(out, nullptr, qnObj::qnSF_Immediate);
    EXPECT_EQ(0, seen);
}

TEST(ConverterDeathTest, ConnectingTypesWithoutAConversionEndsTheProcess) {
    qnInitializeToolkit();
    const struct {
        unsigned short from, to;
        const char* message;
    } pairs[] = {
        {qnDT_int, qnDT_long, "^Can't convert from 2 to 3\n$"},
        {qnDT_long, qnDT_int, "^Can't convert from 3 to 2\n$"},
        {qnDT_int, qnDT_double, "^Can't convert from 2 to 5\n$"},
        {qnDT_CharPtr, qnDT_double, "^Can't convert from 6 to 5\n$"},
        {qnDT_void, qnDT_int, "^Can't convert from 0 to 2\n$"},
        {qnDT_qnStr, qnDT_qnStrArray, "^Can't convert from 7 to 11\n$"},
    };
    for (const auto& pair : pairs) {
        qnObj object;
        object.addOutput("out", pair.from);
        object.addInput("in", pair.to, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 0);
        EXPECT_EXIT(object.connect("out", &object, "in"), testing::KilledBySignal(SIGABRT), pair.message);
    }
}

}  // namespace ConverterTest
