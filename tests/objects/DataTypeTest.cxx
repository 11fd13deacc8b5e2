// Inputs made from typed functions: the data type that follows from the function's parameter, what the compiler
// accepts, and that the function is called with the value and with its own object. What it refuses is in
// typed_inputs_e2e.sh.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>

#include "DataType.h"
#include "Obj.h"
#include "OrderedGlobal.h"

namespace DataTypeTest {

class DataType : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

template <class Parameter>
using TypeOf = typename qnParameterType<Parameter>::Type;

static_assert(std::is_same<TypeOf<int>, qnDataType<int>>::value, "");
static_assert(std::is_same<TypeOf<const qnStr&>, qnDataType<qnStr>>::value, "");
static_assert(std::is_same<TypeOf<qnStr&&>, qnDataType<qnStr>>::value, "");
static_assert(std::is_same<TypeOf<const qnStrArray&>, qnDataType<qnStrArray>>::value, "");
static_assert(std::is_same<TypeOf<const double&>, qnDataType<double>>::value, "");

template <class Value>
using FormOf = typename qnDataType<Value>::Form;

static_assert(std::is_same<FormOf<qnBool>, int>::value, "a byte is delivered in the size of an int");
static_assert(std::is_same<FormOf<int>, int>::value, "");
static_assert(std::is_same<FormOf<long>, long>::value, "");
static_assert(std::is_same<FormOf<float>, float>::value, "a float is not widened");
static_assert(std::is_same<FormOf<double>, double>::value, "");
static_assert(std::is_same<FormOf<char*>, char*>::value, "");
static_assert(std::is_same<FormOf<const char*>, char*>::value, "text has one form");
static_assert(std::is_same<FormOf<qnStr>, qnStr>::value, "strings by value");
static_assert(std::is_same<FormOf<qnStrArray>, qnStrArray>::value, "string arrays by value");

// The function's own type, or an int for a boolean, or text that may or may not be changed.
static_assert(qnReceives<int, int>::value, "");
static_assert(qnReceives<qnBool, qnBool>::value, "");
static_assert(qnReceives<qnBool, int>::value, "");
static_assert(qnReceives<char*, const char*>::value, "");
static_assert(qnReceives<const char*, char*>::value, "");
static_assert(qnReceives<qnStr, const qnStr&>::value, "");
static_assert(qnReceives<double, const double&>::value, "");
static_assert(!qnReceives<int, qnBool>::value, "a boolean does not stand for an int");
static_assert(!qnReceives<int, long>::value, "");
static_assert(!qnReceives<long, int>::value, "");
static_assert(!qnReceives<float, double>::value, "");
static_assert(!qnReceives<double, float>::value, "");
static_assert(!qnReceives<qnStr, const char*>::value, "");
static_assert(!qnReceives<char*, qnStr>::value, "");
static_assert(!qnReceives<qnStrArray, qnStr>::value, "");
static_assert(!qnReceives<void, int>::value, "");

TEST_F(DataType, StandsForItsCode) {
    EXPECT_EQ(qnDT_void, qnDataType<void>());
    EXPECT_EQ(qnDT_qnBool, qnDataType<qnBool>());
    EXPECT_EQ(qnDT_int, qnDataType<int>());
    EXPECT_EQ(qnDT_long, qnDataType<long>());
    EXPECT_EQ(qnDT_float, qnDataType<float>());
    EXPECT_EQ(qnDT_double, qnDataType<double>());
    EXPECT_EQ(qnDT_CharPtr, qnDataType<char*>());
    EXPECT_EQ(qnDT_CharPtr, qnDataType<const char*>());
    EXPECT_EQ(qnDT_qnStr, qnDataType<qnStr>());
    EXPECT_EQ(qnDT_qnStrArray, qnDataType<qnStrArray>());
    qnObj object;
    EXPECT_EQ(qnDT_float, object.addOutput("out", qnDataType<float>())->getType());
}

/** The object of the receiving functions. */
struct Meter : qnObj {
    std::string seen;
};

void onSignal(Meter* meter) { meter->seen += "signal "; }
void onBool(Meter* meter, qnBool value) { meter->seen += "bool " + std::to_string(value) + " "; }
void onInt(Meter* meter, int value) { meter->seen += "int " + std::to_string(value) + " "; }
void onLong(Meter* meter, long value) { meter->seen += "long " + std::to_string(value) + " "; }
void onFloat(Meter* meter, float value) { meter->seen += value == 0.1f ? "float 0.1f " : "float ? "; }
void onDouble(Meter* meter, double value) { meter->seen += value == 0.1 ? "double 0.1 " : "double ? "; }
void onText(Meter* meter, const char* value) { meter->seen += std::string("text ") + value + " "; }
void onOwnText(Meter* meter, char* value) { meter->seen += std::string("own text ") + value + " "; }
void onStr(Meter* meter, qnStr value) { meter->seen += std::string("string ") + value.text() + " "; }
void onStrRef(Meter* meter, const qnStr& value) { meter->seen += std::string("string& ") + value.text() + " "; }
void onStrTaken(Meter* meter, qnStr&& value) {
    const qnStr taken(static_cast<qnStr&&>(value));
    meter->seen += std::string("string&& ") + taken.text() + " ";
}
void onNames(Meter* meter, qnStrArray value) { meter->seen += "names " + std::to_string(value.length()) + " "; }
void onNamesRef(Meter* meter, const qnStrArray& value) {
    meter->seen += "names& " + std::to_string(value.length()) + " ";
}
void onDoubleRef(Meter* meter, const double& value) { onDouble(meter, value); }

/** Sends a box at once from an output of its type to the meter's input "in". */
void send(Meter& meter, qnData* box) {
    qnObj source;
    qnOutputChannel* out = source.addOutput("out", box->getType());
    source.connect("out", &meter, "in");
    source.sendData(out, box, qnObj::qnSF_Immediate);
}

/** What the meter sees of a box that is sent to the input made by its last `addInput`. */
std::string seen(Meter& meter, qnInputChannel* input, unsigned short type, qnData* box) {
    EXPECT_EQ(type, input->getType());
    EXPECT_EQ(0, input->latestOnly());
    EXPECT_EQ(1u, input->refCount);
    EXPECT_EQ(input, meter.findInput("in"));
    meter.seen.clear();
    send(meter, box);
    return meter.seen;
}

qnStrArray twoNames() { return qnStrArray(2); }

TEST_F(DataType, FollowsFromTheParameter) {
    Meter m;
    EXPECT_EQ("signal ", seen(m, m.addInput("in", &m, &onSignal), qnDT_void, new qnVoidData));
    EXPECT_EQ("bool 255 ", seen(m, m.addInput("in", &m, &onBool), qnDT_qnBool, new qnBoolData(255)));
    EXPECT_EQ("int -7 ", seen(m, m.addInput("in", &m, &onInt), qnDT_int, new qnIntData(-7)));
    EXPECT_EQ("long " + std::to_string(LONG_MIN) + " ",
              seen(m, m.addInput("in", &m, &onLong), qnDT_long, new qnLongData(LONG_MIN)));
    EXPECT_EQ("float 0.1f ", seen(m, m.addInput("in", &m, &onFloat), qnDT_float, new qnFloatData(0.1f)));
    EXPECT_EQ("double 0.1 ", seen(m, m.addInput("in", &m, &onDouble), qnDT_double, new qnDoubleData(0.1)));
    EXPECT_EQ("text abc ", seen(m, m.addInput("in", &m, &onText), qnDT_CharPtr, new qnCharPtrData(strdup("abc"))));
    EXPECT_EQ("own text abc ",
              seen(m, m.addInput("in", &m, &onOwnText), qnDT_CharPtr, new qnCharPtrData(strdup("abc"))));
    EXPECT_EQ("string abc ", seen(m, m.addInput("in", &m, &onStr), qnDT_qnStr, new qnStrData("abc")));
    EXPECT_EQ("string& abc ", seen(m, m.addInput("in", &m, &onStrRef), qnDT_qnStr, new qnStrData("abc")));
    EXPECT_EQ("string&& abc ", seen(m, m.addInput("in", &m, &onStrTaken), qnDT_qnStr, new qnStrData("abc")));
    EXPECT_EQ("names 2 ", seen(m, m.addInput("in", &m, &onNames), qnDT_qnStrArray, new qnStrArrayData(twoNames())));
    EXPECT_EQ("names& 2 ", seen(m, m.addInput("in", &m, &onNamesRef), qnDT_qnStrArray, new qnStrArrayData(twoNames())));
    EXPECT_EQ("double 0.1 ", seen(m, m.addInput("in", &m, &onDoubleRef), qnDT_double, new qnDoubleData(0.1)));
}

TEST_F(DataType, AnInputForSignalsTakesEveryTypeOfValue) {
    Meter m;
    m.addInput("in", &m, &onSignal);
    qnData* const boxes[] = {new qnVoidData,
                             new qnBoolData(1),
                             new qnIntData(1),
                             new qnLongData(1),
                             new qnFloatData(1),
                             new qnDoubleData(1),
                             new qnCharPtrData(nullptr),
                             new qnStrData("abc"),
                             new qnStrArrayData(twoNames())};
    for (qnData* box : boxes) {
        m.seen.clear();
        send(m, box);
        EXPECT_EQ("signal ", m.seen);
    }
}

TEST_F(DataType, MayBeNamed) {
    Meter m;
    EXPECT_EQ("signal ", seen(m, m.addInput("in", qnDataType<void>(), &m, &onSignal), qnDT_void, new qnVoidData));
    EXPECT_EQ("bool 2 ", seen(m, m.addInput("in", qnDataType<qnBool>(), &m, &onBool), qnDT_qnBool, new qnBoolData(2)));
    EXPECT_EQ("int 255 ", seen(m, m.addInput("in", qnDataType<qnBool>(), &m, &onInt), qnDT_qnBool, new qnBoolData(255)))
        << "an int stands for a boolean";
    EXPECT_EQ("int 7 ", seen(m, m.addInput("in", qnDataType<int>(), &m, &onInt), qnDT_int, new qnIntData(7)));
    EXPECT_EQ("text abc ", seen(m, m.addInput("in", qnDataType<char*>(), &m, &onText), qnDT_CharPtr,
                                new qnCharPtrData(strdup("abc"))));
    EXPECT_EQ("own text abc ", seen(m, m.addInput("in", qnDataType<const char*>(), &m, &onOwnText), qnDT_CharPtr,
                                    new qnCharPtrData(strdup("abc"))));
    EXPECT_EQ("string& abc ",
              seen(m, m.addInput("in", qnDataType<qnStr>(), &m, &onStrRef), qnDT_qnStr, new qnStrData("abc")));
}

#ifdef __cpp_nontype_template_parameter_auto
void onQuietInt(Meter* meter, int value) noexcept { onInt(meter, value); }
void onQuietSignal(Meter* meter) noexcept { onSignal(meter); }

TEST_F(DataType, OfAFunctionThatTheCompilerKnowsTheClosureIsTheObject) {
    Meter m;
    qnInputChannel* input = m.addInput<&onInt>("in", &m);
    EXPECT_EQ(static_cast<void*>(&m), input->closure);
    EXPECT_EQ("int 7 ", seen(m, input, qnDT_int, new qnIntData(7)));
    EXPECT_EQ("signal ", seen(m, m.addInput<&onSignal>("in", &m), qnDT_void, new qnVoidData));
    EXPECT_EQ("bool 255 ", seen(m, m.addInput<&onBool>("in", &m), qnDT_qnBool, new qnBoolData(255)));
    EXPECT_EQ("float 0.1f ", seen(m, m.addInput<&onFloat>("in", &m), qnDT_float, new qnFloatData(0.1f)));
    EXPECT_EQ("text abc ", seen(m, m.addInput<&onText>("in", &m), qnDT_CharPtr, new qnCharPtrData(strdup("abc"))));
    EXPECT_EQ("string abc ", seen(m, m.addInput<&onStr>("in", &m), qnDT_qnStr, new qnStrData("abc")));
    EXPECT_EQ("string& abc ", seen(m, m.addInput<&onStrRef>("in", &m), qnDT_qnStr, new qnStrData("abc")));
    EXPECT_EQ("names 2 ", seen(m, m.addInput<&onNames>("in", &m), qnDT_qnStrArray, new qnStrArrayData(twoNames())));
    EXPECT_EQ(1, m.addInput<&onInt>("in", &m, 1)->latestOnly());
}

TEST_F(DataType, AFunctionMayPromiseNotToThrow) {
    Meter m;
    EXPECT_EQ("int 7 ", seen(m, m.addInput("in", &m, &onQuietInt), qnDT_int, new qnIntData(7)));
    EXPECT_EQ("signal ", seen(m, m.addInput("in", &m, &onQuietSignal), qnDT_void, new qnVoidData));
    EXPECT_EQ("int 7 ", seen(m, m.addInput<&onQuietInt>("in", &m), qnDT_int, new qnIntData(7)));
    EXPECT_EQ("signal ", seen(m, m.addInput<&onQuietSignal>("in", &m), qnDT_void, new qnVoidData));
}
#endif

TEST_F(DataType, TheFunctionMayBeALambda) {
    Meter m;
    EXPECT_EQ("lambda ", seen(m,
                              m.addInput(
                                  "in", &m, +[](Meter* meter, int) { meter->seen += "lambda "; }),
                              qnDT_int, new qnIntData(7)));
}

TEST_F(DataType, LatestOnlyMayBeAsked) {
    Meter m;
    EXPECT_EQ(1, m.addInput("in", &m, &onInt, 1)->latestOnly());
    EXPECT_EQ(1, m.addInput("in", &m, &onSignal, 1)->latestOnly());
    EXPECT_EQ(1, m.addInput("in", qnDataType<int>(), &m, &onInt, 1)->latestOnly());
    EXPECT_EQ(1, m.addInput("in", qnDataType<void>(), &m, &onSignal, 2)->latestOnly());
    EXPECT_EQ(qnDT_void, m.findInput("in")->getType());
}

/** A second base, so that the object's address depends on the class by which it is known. */
struct Named {
    virtual ~Named() {}
    std::string name = "named";
};
struct NamedMeter : Meter, Named {};
void onNamed(Named* named, int value) { named->name += std::to_string(value); }

TEST_F(DataType, TheObjectArrivesAsTheClassThatTheFunctionTakes) {
    NamedMeter m;
    m.addInput("in", &m, &onNamed);
    send(m, new qnIntData(1));
    m.addInput("in", qnDataType<int>(), &m, &onNamed);
    send(m, new qnIntData(2));
#ifdef __cpp_nontype_template_parameter_auto
    m.addInput<&onNamed>("in", &m);
    send(m, new qnIntData(3));
    EXPECT_EQ("named123", m.name);
#else
    EXPECT_EQ("named12", m.name);
#endif
}

TEST_F(DataType, TheObjectNeedNotBeAnObjectOfTheLibrary) {
    qnObj object;
    int sum = 0;
    object.addInput(
        "in", &sum, +[](int* total, int value) { *total += value; });
    qnOutputChannel* out = object.addOutput("out", qnDT_int);
    object.connect("out", &object, "in");
    object.sendInt(out, 40, qnObj::qnSF_Immediate);
    object.sendInt(out, 2, qnObj::qnSF_Immediate);
    EXPECT_EQ(42, sum);
}

void removeInput(Meter* meter, const qnStr& value) {
    meter->removeInput("in");
    meter->seen += value.text();  // both are still there
}

TEST_F(DataType, AFunctionMayRemoveTheInputThatCallsIt) {
    Meter m;
    m.addInput("in", &m, &removeInput);
    send(m, new qnStrData("last"));
    EXPECT_EQ("last", m.seen);
    EXPECT_EQ(nullptr, m.findInput("in"));
}

}  // namespace DataTypeTest
