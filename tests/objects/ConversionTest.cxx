// What each of the eighteen standard conversions makes of values: ordinary ones, those that do not fit, and the absence
// of one.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "Converter.h"
#include "OrderedGlobal.h"

namespace ConversionTest {

const float FloatMax = std::numeric_limits<float>::max();
const double Infinity = std::numeric_limits<double>::infinity();
const double NaN = std::numeric_limits<double>::quiet_NaN();

float floatOf(std::uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double doubleOf(std::uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/** A value as it is kept for comparison: text that lives only for the call is copied. */
template <class Value>
struct Kept {
    typedef Value Type;
    static Value from(const Value& value) { return value; }
};
template <>
struct Kept<char*> {
    typedef std::string Type;
    static std::string from(const char* value) { return value; }
};
template <>
struct Kept<qnStr> {
    typedef std::string Type;
    static std::string from(const qnStr& value) { return std::string(value.text(), value.length()); }
};

template <class Value>
struct Sink {
    unsigned calls;
    typename Kept<Value>::Type value;
};

template <class Value>
void receive(void* closure, Value value) {
    Sink<Value>* sink = static_cast<Sink<Value>*>(closure);
    ++sink->calls;
    sink->value = Kept<Value>::from(value);
}

/** Sends a value through the conversion between two types of data to an input, and returns what arrives there. */
template <class From, class To>
typename Kept<To>::Type converted(unsigned short from, unsigned short to, From value) {
    Sink<To> sink = {0, {}};
    qnConverter* instance = qnConverter::findConverter(from, to);
    if (instance == nullptr) {
        ADD_FAILURE() << "no conversion";
        return sink.value;
    }
    instance->splice(new qnInputChannel(to, &sink, reinterpret_cast<qnDeliverFunc>(&receive<To>), 0));
    reinterpret_cast<void (*)(void*, From)>(instance->deliverFunc)(instance->closure, value);
    delete instance;
    EXPECT_EQ(1u, sink.calls);
    return sink.value;
}

class Conversion : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

// From booleans, which travel in the size of an int.

TEST_F(Conversion, BoolToIntExtendsTheByteWithZeros) {
    EXPECT_EQ(0, (converted<int, int>(qnDT_qnBool, qnDT_int, 0)));
    EXPECT_EQ(1, (converted<int, int>(qnDT_qnBool, qnDT_int, 1)));
    EXPECT_EQ(128, (converted<int, int>(qnDT_qnBool, qnDT_int, 128)));
    EXPECT_EQ(255, (converted<int, int>(qnDT_qnBool, qnDT_int, 255)));
    EXPECT_EQ(2, (converted<int, int>(qnDT_qnBool, qnDT_int, 0x102))) << "only the byte counts";
}

TEST_F(Conversion, BoolToFloat) {
    EXPECT_EQ(0.0f, (converted<int, float>(qnDT_qnBool, qnDT_float, 0)));
    EXPECT_EQ(1.0f, (converted<int, float>(qnDT_qnBool, qnDT_float, 1)));
    EXPECT_EQ(255.0f, (converted<int, float>(qnDT_qnBool, qnDT_float, 255)));
    EXPECT_EQ(255.0f, (converted<int, float>(qnDT_qnBool, qnDT_float, -1))) << "only the byte counts";
}

TEST_F(Conversion, BoolToDouble) {
    EXPECT_EQ(0.0, (converted<int, double>(qnDT_qnBool, qnDT_double, 0)));
    EXPECT_EQ(1.0, (converted<int, double>(qnDT_qnBool, qnDT_double, 1)));
    EXPECT_EQ(255.0, (converted<int, double>(qnDT_qnBool, qnDT_double, 255)));
    EXPECT_EQ(255.0, (converted<int, double>(qnDT_qnBool, qnDT_double, -1))) << "only the byte counts";
}

// From ints

TEST_F(Conversion, IntToBoolTakesTheLowByte) {
    const struct {
        int value, low;
    } rows[] = {{0, 0},    {1, 1},         {2, 2},       {255, 255},  {256, 0},       {257, 1},     {-1, 255},
                {-256, 0}, {INT_MAX, 255}, {INT_MIN, 0}, {-128, 128}, {0x1234, 0x34}, {1 << 30, 0}, {0x12345678, 0x78}};
    for (const auto& row : rows) EXPECT_EQ(row.low, (converted<int, int>(qnDT_int, qnDT_qnBool, row.value)));
}

TEST_F(Conversion, IntToFloatRoundsToNearest) {
    EXPECT_EQ(-3.0f, (converted<int, float>(qnDT_int, qnDT_float, -3)));
    EXPECT_EQ(16777216.0f, (converted<int, float>(qnDT_int, qnDT_float, 16777217))) << "half way: to the even one";
    EXPECT_EQ(16777220.0f, (converted<int, float>(qnDT_int, qnDT_float, 16777219)));
    EXPECT_EQ(2147483648.0f, (converted<int, float>(qnDT_int, qnDT_float, INT_MAX)));
    EXPECT_EQ(-2147483648.0f, (converted<int, float>(qnDT_int, qnDT_float, INT_MIN)));
}

TEST_F(Conversion, IntToText) {
    EXPECT_EQ("3", (converted<int, char*>(qnDT_int, qnDT_CharPtr, 3)));
    EXPECT_EQ("0", (converted<int, char*>(qnDT_int, qnDT_CharPtr, 0)));
    EXPECT_EQ("2147483647", (converted<int, char*>(qnDT_int, qnDT_CharPtr, INT_MAX)));
    EXPECT_EQ("-2147483648", (converted<int, char*>(qnDT_int, qnDT_CharPtr, INT_MIN)));
}

// From floats

TEST_F(Conversion, FloatToBoolTakesTheLowByteOfTheBits) {
    const struct {
        float value;
        int low;
    } rows[] = {
        {1.0f, 0},                          // 3F800000
        {0.0f, 0},                          // 00000000
        {-0.0f, 0},                         // 80000000
        {0.1f, 0xCD},                       // 3DCCCCCD
        {1.0f / 3, 0xAB},                   // 3EAAAAAB
        {-1.0f / 3, 0xAB},                  // BEAAAAAB
        {floatOf(1), 1},                    // the smallest of all
        {FloatMax, 255},                    // 7F7FFFFF
        {static_cast<float>(Infinity), 0},  // 7F800000
        {floatOf(0x7FC00055), 0x55},        // not a number, with a payload
        {16777215.0f, 0xFF},                // 4B7FFFFF
        {256.0f + 1.0f / 32768 * 2, 2},     // 43800002
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.low, (converted<float, int>(qnDT_float, qnDT_qnBool, row.value))) << row.value;
    }
}

TEST_F(Conversion, FloatToDoubleIsExact) {
    EXPECT_EQ(0.100000001490116119384765625, (converted<float, double>(qnDT_float, qnDT_double, 0.1f)));
    EXPECT_EQ(-2.5, (converted<float, double>(qnDT_float, qnDT_double, -2.5f)));
    EXPECT_EQ(Infinity, (converted<float, double>(qnDT_float, qnDT_double, static_cast<float>(Infinity))));
    EXPECT_TRUE(std::isnan(converted<float, double>(qnDT_float, qnDT_double, static_cast<float>(NaN))));
    EXPECT_TRUE(std::signbit(converted<float, double>(qnDT_float, qnDT_double, -0.0f)));
}

TEST_F(Conversion, FloatToIntTruncates) {
    EXPECT_EQ(2, (converted<float, int>(qnDT_float, qnDT_int, 2.7f)));
    EXPECT_EQ(-2, (converted<float, int>(qnDT_float, qnDT_int, -2.7f)));
    EXPECT_EQ(0, (converted<float, int>(qnDT_float, qnDT_int, -0.99f)));
    EXPECT_EQ(2147483520, (converted<float, int>(qnDT_float, qnDT_int, 2147483520.0f))) << "the greatest that fits";
    EXPECT_EQ(INT_MIN, (converted<float, int>(qnDT_float, qnDT_int, -2147483648.0f))) << "the least that fits";
}

TEST_F(Conversion, AFloatThatFitsNoIntIsTheLeastInt) {
    const float values[] = {
        2147483648.0f,       -2147483904.0f,     1e30f, -1e30f, FloatMax, -FloatMax, floatOf(0x7F800000),
        floatOf(0xFF800000), floatOf(0x7FC00000)};
    for (float value : values) EXPECT_EQ(INT_MIN, (converted<float, int>(qnDT_float, qnDT_int, value))) << value;
}

TEST_F(Conversion, FloatToText) {
    EXPECT_EQ("0.1", (converted<float, char*>(qnDT_float, qnDT_CharPtr, 0.1f)));
    EXPECT_EQ("-0", (converted<float, char*>(qnDT_float, qnDT_CharPtr, -0.0f)));
    EXPECT_EQ("1.23457e+06", (converted<float, char*>(qnDT_float, qnDT_CharPtr, 1234567.0f)));
    EXPECT_EQ("3.40282e+38", (converted<float, char*>(qnDT_float, qnDT_CharPtr, FloatMax)));
    EXPECT_EQ("-inf", (converted<float, char*>(qnDT_float, qnDT_CharPtr, static_cast<float>(-Infinity))));
    EXPECT_EQ("nan", (converted<float, char*>(qnDT_float, qnDT_CharPtr, static_cast<float>(NaN))));
}

// From doubles

TEST_F(Conversion, DoubleToBoolTakesTheLowByteOfTheBits) {
    const struct {
        double value;
        int low;
    } rows[] = {
        {1.0, 0},                              // 3FF0000000000000
        {-0.0, 0},                             // 8000000000000000
        {0.1, 0x9A},                           // 3FB999999999999A
        {1.0 / 3, 0x55},                       // 3FD5555555555555
        {1e300, 0x9C},                         // 7E37E43C8800759C
        {-1e300, 0x9C},                        // FE37E43C8800759C
        {Infinity, 0},                         // 7FF0000000000000
        {doubleOf(0x7FF8000000000077), 0x77},  // not a number, with a payload
        {doubleOf(0x3FF0000100000000), 0},     // bits in the upper word only
        {std::numeric_limits<double>::max(), 255},
        {std::numeric_limits<double>::denorm_min(), 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.low, (converted<double, int>(qnDT_double, qnDT_qnBool, row.value))) << row.value;
    }
}

TEST_F(Conversion, DoubleToFloatRoundsToNearest) {
    EXPECT_EQ(0.1f, (converted<double, float>(qnDT_double, qnDT_float, 0.1)));
    EXPECT_EQ(16777216.0f, (converted<double, float>(qnDT_double, qnDT_float, 16777217.0)));
    EXPECT_EQ(16777220.0f, (converted<double, float>(qnDT_double, qnDT_float, 16777219.0)));
    EXPECT_EQ(0.0f, (converted<double, float>(qnDT_double, qnDT_float, 1e-300)));
    const float infinite = converted<double, float>(qnDT_double, qnDT_float, 1e300);
    EXPECT_TRUE(std::isinf(infinite) && infinite > 0);
    const float negative = converted<double, float>(qnDT_double, qnDT_float, -1e300);
    EXPECT_TRUE(std::isinf(negative) && negative < 0);
    EXPECT_TRUE(std::isnan(converted<double, float>(qnDT_double, qnDT_float, NaN)));
}

TEST_F(Conversion, DoubleToIntTruncates) {
    EXPECT_EQ(2, (converted<double, int>(qnDT_double, qnDT_int, 2.7)));
    EXPECT_EQ(-2, (converted<double, int>(qnDT_double, qnDT_int, -2.7)));
    EXPECT_EQ(0, (converted<double, int>(qnDT_double, qnDT_int, -0.999)));
    EXPECT_EQ(INT_MAX, (converted<double, int>(qnDT_double, qnDT_int, 2147483647.0)));
    EXPECT_EQ(INT_MAX, (converted<double, int>(qnDT_double, qnDT_int, 2147483647.9)));
    EXPECT_EQ(INT_MIN, (converted<double, int>(qnDT_double, qnDT_int, -2147483648.0)));
    EXPECT_EQ(INT_MIN, (converted<double, int>(qnDT_double, qnDT_int, -2147483648.9)));
    EXPECT_EQ(-INT_MAX, (converted<double, int>(qnDT_double, qnDT_int, -2147483647.9)));
}

TEST_F(Conversion, ADoubleThatFitsNoIntIsTheLeastInt) {
    const double values[] = {2147483648.0, -2147483649.0, 1e300, -1e300, 4294967296.0, 1e10, Infinity, -Infinity, NaN};
    for (double value : values) EXPECT_EQ(INT_MIN, (converted<double, int>(qnDT_double, qnDT_int, value))) << value;
}

TEST_F(Conversion, DoubleToText) {
    EXPECT_EQ("0.1", (converted<double, char*>(qnDT_double, qnDT_CharPtr, 0.1)));
    EXPECT_EQ("0.333333", (converted<double, char*>(qnDT_double, qnDT_CharPtr, 1.0 / 3)));
    EXPECT_EQ("1e+300", (converted<double, char*>(qnDT_double, qnDT_CharPtr, 1e300)));
    EXPECT_EQ("-1e-300", (converted<double, char*>(qnDT_double, qnDT_CharPtr, -1e-300)));
    EXPECT_EQ("-1.79769e+308",
              (converted<double, char*>(qnDT_double, qnDT_CharPtr, -std::numeric_limits<double>::max())));
    EXPECT_EQ("inf", (converted<double, char*>(qnDT_double, qnDT_CharPtr, Infinity)));
    EXPECT_EQ("nan", (converted<double, char*>(qnDT_double, qnDT_CharPtr, NaN)));
}

// From text

int textToInt(const char* text) { return converted<char*, int>(qnDT_CharPtr, qnDT_int, const_cast<char*>(text)); }

float textToFloat(const char* text) {
    return converted<char*, float>(qnDT_CharPtr, qnDT_float, const_cast<char*>(text));
}

TEST_F(Conversion, TextToIntReadsTheNumberAtTheStart) {
    EXPECT_EQ(42, textToInt("42"));
    EXPECT_EQ(-17, textToInt(" \t\n-17 apples"));
    EXPECT_EQ(5, textToInt("+5"));
    EXPECT_EQ(10, textToInt("010")) << "always decimal";
    EXPECT_EQ(0, textToInt("0x10"));
    EXPECT_EQ(3, textToInt("3.9"));
    EXPECT_EQ(0, textToInt(""));
    EXPECT_EQ(0, textToInt("apples"));
    EXPECT_EQ(0, textToInt("- 5"));
    EXPECT_EQ(INT_MAX, textToInt("2147483647"));
    EXPECT_EQ(INT_MIN, textToInt("-2147483648"));
}

// The same on machines whose long has 32 bits.
TEST_F(Conversion, TextOfAnIntThatDoesNotFitWrapsTo32Bits) {
    EXPECT_EQ(INT_MIN, textToInt("2147483648"));
    EXPECT_EQ(INT_MAX, textToInt("-2147483649"));
    EXPECT_EQ(-1, textToInt("4294967295"));
    EXPECT_EQ(0, textToInt("4294967296"));
    EXPECT_EQ(1, textToInt("4294967297"));
    EXPECT_EQ(1215752191, textToInt("99999999999")) << "23 * 2^32 + 1215752191";
    EXPECT_EQ(-1, textToInt("9223372036854775807"));
    EXPECT_EQ(-1, textToInt("99999999999999999999999999")) << "taken as 2^63 - 1";
    EXPECT_EQ(0, textToInt("-99999999999999999999999999")) << "taken as -2^63";
}

TEST_F(Conversion, TextToFloat) {
    EXPECT_EQ(0.1f, textToFloat("0.1"));
    EXPECT_EQ(-2.5f, textToFloat("  -2.5kg"));
    EXPECT_EQ(16.0f, textToFloat("0x10"));
    EXPECT_EQ(0.0f, textToFloat(""));
    EXPECT_EQ(0.0f, textToFloat("kg"));
    EXPECT_EQ(0.0f, textToFloat("1e-400"));
    EXPECT_TRUE(std::isnan(textToFloat("nan")));
    EXPECT_EQ(16777216.0f, textToFloat("16777217"));
}

TEST_F(Conversion, TextOfAFloatThatDoesNotFitIsInfinite) {
    const char* const texts[] = {"1e39", "1e300", "1e400", "inf"};
    for (const char* text : texts) {
        EXPECT_EQ(std::numeric_limits<float>::infinity(), textToFloat(text)) << text;
        EXPECT_EQ(-std::numeric_limits<float>::infinity(), textToFloat((std::string("-") + text).c_str())) << text;
    }
}

TEST_F(Conversion, TextToFloatIsRoundedToDoubleFirst) {
    // 1 + 2^-24 and a little: as a double exactly half way between two floats, and from there to the even one.
    EXPECT_EQ(1.0f, textToFloat("1.000000059604644775390625000001"));
}

TEST_F(Conversion, NullTextCountsAsZero) {
    EXPECT_EQ(0, textToInt(nullptr));
    EXPECT_EQ(0.0f, textToFloat(nullptr));
}

TEST_F(Conversion, TextToString) {
    char text[] = "some text";
    EXPECT_EQ("some text", (converted<char*, qnStr>(qnDT_CharPtr, qnDT_qnStr, text)));
    EXPECT_EQ("", (converted<char*, qnStr>(qnDT_CharPtr, qnDT_qnStr, text + 9)));
    EXPECT_EQ("", (converted<char*, qnStr>(qnDT_CharPtr, qnDT_qnStr, nullptr)));
}

void changeString(void*, qnStr value) { value.append(", changed"); }

TEST_F(Conversion, TheStringMadeFromTextIsTheReceiversOwn) {
    char text[] = "some text";
    qnConverter* instance = qnConverter::findConverter(qnDT_CharPtr, qnDT_qnStr);
    instance->splice(new qnInputChannel(qnDT_qnStr, nullptr, reinterpret_cast<qnDeliverFunc>(&changeString), 0));
    reinterpret_cast<void (*)(void*, char*)>(instance->deliverFunc)(instance->closure, text);
    EXPECT_STREQ("some text", text);
    delete instance;
}

// From strings

TEST_F(Conversion, StringToText) {
    EXPECT_EQ("some text", (converted<qnStr, char*>(qnDT_qnStr, qnDT_CharPtr, qnStr("some text"))));
    EXPECT_EQ("", (converted<qnStr, char*>(qnDT_qnStr, qnDT_CharPtr, qnStr())));
    EXPECT_EQ("a", (converted<qnStr, char*>(qnDT_qnStr, qnDT_CharPtr, qnStr("a\0b", 3)))) << "up to its first NUL";
}

}  // namespace ConversionTest
