// The boxes: each of the nine classes with its name, size, form of delivery and what reading it writes, and the data
// type codes.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

#include "Data.h"
#include "OrderedGlobal.h"
#include "support/VirtualSlot.h"

namespace DataTest {

static_assert(std::is_abstract<qnData>::value, "what a box does depends on its kind");
static_assert(std::has_virtual_destructor<qnData>::value, "holders know a box as qnData only");
static_assert(!std::is_base_of<qnRCObj, qnData>::value, "a box is not serialisable");
static_assert(std::is_same<decltype(qnData::refCount), unsigned>::value, "");
static_assert(std::is_same<decltype(qnDT_void), unsigned short>::value, "");
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnData) == 12, "virtual functions, count, type");
#endif

/** Expects the same value whatever code is asked for, and not a byte beyond it. */
template <class Value>
void expectValue(qnData& box, const Value& expected) {
    const unsigned short codes[] = {qnDT_void, qnDT_qnBool, qnDT_int, qnDT_double, qnDT_qnStr, 65535};
    for (unsigned short code : codes) {
        unsigned char out[sizeof(Value) + 8];
        std::memset(out, 0x5A, sizeof out);
        box.getValue(code, out);
        EXPECT_EQ(0, std::memcmp(out, &expected, sizeof expected)) << "code " << code;
        for (unsigned i = sizeof expected; i < sizeof out; ++i) EXPECT_EQ(0x5A, out[i]) << "byte " << i;
    }
    EXPECT_EQ(sizeof expected, box.getSize());
}

/** What a delivery function saw. */
template <class Value>
struct Seen {
    unsigned calls;
    Value value;
};

/** A delivery function of the one form `void (void*, Value)`. */
template <class Value>
void see(void* closure, Value value) {
    Seen<Value>* seen = static_cast<Seen<Value>*>(closure);
    ++seen->calls;
    seen->value = value;
}

/** Delivers a box to a function of the form `void (void*, Value)` and returns what arrived. */
template <class Value>
Value delivered(qnData& box) {
    Seen<Value> seen = {0, Value()};
    box.deliverTo(reinterpret_cast<qnDeliverFunc>(&see<Value>), &seen);
    EXPECT_EQ(1u, seen.calls);
    return seen.value;
}

class Data : public testing::Test {
protected:
    static void SetUpTestSuite() { qnInitializeToolkit(); }
};

TEST_F(Data, CodesAreDrawnInOrderFromZero) {
    EXPECT_EQ(0, qnDT_void);
    EXPECT_EQ(1, qnDT_qnBool);
    EXPECT_EQ(2, qnDT_int);
    EXPECT_EQ(3, qnDT_long);
    EXPECT_EQ(4, qnDT_float);
    EXPECT_EQ(5, qnDT_double);
    EXPECT_EQ(6, qnDT_CharPtr);
    EXPECT_EQ(7, qnDT_qnStr);
    EXPECT_EQ(8, qnDT_VoidPtr);
    EXPECT_EQ(9, qnDT_ObjPtr);
    EXPECT_EQ(10, qnDT_DataPtr);
    EXPECT_EQ(11, qnDT_qnStrArray);
}

TEST_F(Data, ProgramsDrawTheirCodesAfterTheStandardOnes) {
    ASSERT_NE(nullptr, qn_nextDataType);
    const unsigned first = (*qn_nextDataType)();
    EXPECT_GE(first, 12u);
    EXPECT_EQ(first + 1, (*qn_nextDataType)());
}

TEST_F(Data, BoxesAreBornWithTheirCodeAndWithoutHolders) {
    const qnBoolData boolean(1);
    const qnIntData integer(1);
    const qnLongData wide(1);
    const qnFloatData single(1);
    const qnDoubleData real(1);
    const qnCharPtrData text(nullptr);
    const qnVoidData signal;
    const qnStrData string("");
    const qnStrArrayData strings((qnStrArray()));
    const qnData* const boxes[] = {&signal, &boolean, &integer, &wide, &single, &real, &text, &string, &strings};
    const unsigned short codes[] = {qnDT_void,   qnDT_qnBool,  qnDT_int,   qnDT_long,      qnDT_float,
                                    qnDT_double, qnDT_CharPtr, qnDT_qnStr, qnDT_qnStrArray};
    for (unsigned i = 0; i < 9; ++i) {
        EXPECT_EQ(codes[i], boxes[i]->getType()) << i;
        EXPECT_EQ(0u, boxes[i]->refCount) << i;
    }
}

TEST_F(Data, OperationsFollowTheDestructorInTheirOrder) {
    EXPECT_EQ(2, virtualSlot(&qnData::dataName));
    EXPECT_EQ(3, virtualSlot(&qnData::deliverTo));
    EXPECT_EQ(4, virtualSlot(&qnData::getValue));
    EXPECT_EQ(5, virtualSlot(&qnData::getSize));
}

TEST_F(Data, OnlyTextAndVoidBoxesHaveNamesOfTheirOwn) {
    EXPECT_STREQ("TYPE", qnBoolData(1).dataName());
    EXPECT_STREQ("TYPE", qnIntData(1).dataName());
    EXPECT_STREQ("TYPE", qnLongData(1).dataName());
    EXPECT_STREQ("TYPE", qnFloatData(1).dataName());
    EXPECT_STREQ("TYPE", qnDoubleData(1).dataName());
    EXPECT_STREQ("char *", qnCharPtrData(nullptr).dataName());
    EXPECT_STREQ("void", qnVoidData().dataName());
    EXPECT_STREQ("TYPE", qnStrData("").dataName());
    EXPECT_STREQ("TYPE", qnStrArrayData(qnStrArray()).dataName());
}

TEST_F(Data, SizesAreThoseOfTheValues) {
    EXPECT_EQ(1u, qnBoolData(1).getSize());
    EXPECT_EQ(4u, qnIntData(1).getSize());
    EXPECT_EQ(sizeof(long), qnLongData(1).getSize());
    EXPECT_EQ(4u, qnFloatData(1).getSize());
    EXPECT_EQ(8u, qnDoubleData(1).getSize());
    EXPECT_EQ(sizeof(char*), qnCharPtrData(nullptr).getSize());
    EXPECT_EQ(0u, qnVoidData().getSize());
    EXPECT_EQ(sizeof(qnStr), qnStrData("a longer text than the object").getSize()) << "of the object, not the text";
    EXPECT_EQ(sizeof(qnStrArray), qnStrArrayData(qnStrArray(100)).getSize()) << "of the object, not the elements";
#if UINTPTR_MAX == 0xFFFFFFFF
    EXPECT_EQ(4u, qnLongData(1).getSize());
    EXPECT_EQ(4u, qnCharPtrData(nullptr).getSize());
    EXPECT_EQ(8u, qnStrData("").getSize());
    EXPECT_EQ(24u, qnStrArrayData(qnStrArray()).getSize());
#endif
}

TEST_F(Data, ABoolIsDeliveredAsAnIntWithoutSign) {
    const int bytes[] = {0, 1, 2, 127, 128, 255};
    for (int byte : bytes) {
        qnBoolData box(static_cast<qnBool>(byte));
        EXPECT_EQ(byte, delivered<int>(box));
    }
}

TEST_F(Data, ABoolIsReadAsOneByte) {
    qnBoolData box(255);
    expectValue<qnBool>(box, 255);
}

TEST_F(Data, AnInt) {
    const int values[] = {0, 7, -1, INT_MAX, INT_MIN};
    for (int value : values) {
        qnIntData box(value);
        EXPECT_EQ(value, delivered<int>(box));
        expectValue(box, value);
    }
}

TEST_F(Data, ALong) {
    const long values[] = {0, 7, -1, LONG_MAX, LONG_MIN};
    for (long value : values) {
        qnLongData box(value);
        EXPECT_EQ(value, delivered<long>(box));
        expectValue(box, value);
    }
}

TEST_F(Data, AFloatIsDeliveredAsAFloat) {
    const float values[] = {0.1f, -0.0f, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min(),
                            std::numeric_limits<float>::infinity()};
    for (float value : values) {
        qnFloatData box(value);
        const float arrived = delivered<float>(box);
        EXPECT_EQ(0, std::memcmp(&value, &arrived, sizeof value)) << value;
        expectValue(box, value);
    }
}

TEST_F(Data, ADouble) {
    const double values[] = {0.1, -0.0, 1e300, std::numeric_limits<double>::denorm_min(),
                             -std::numeric_limits<double>::infinity()};
    for (double value : values) {
        qnDoubleData box(value);
        const double arrived = delivered<double>(box);
        EXPECT_EQ(0, std::memcmp(&value, &arrived, sizeof value)) << value;
        expectValue(box, value);
    }
}

TEST_F(Data, AskingADoubleForAnIntStillWritesEightBytes) {
    qnDoubleData box(1.5);
    double out = 0;
    box.getValue(qnDT_int, &out);
    EXPECT_EQ(1.5, out);
}

TEST_F(Data, TextIsOwnedAndDeliveredAndReadAsThePointerItself) {
    char* text = strdup("some text");
    qnCharPtrData box(text);  // frees it: the leak checker watches
    EXPECT_EQ(text, delivered<char*>(box));
    EXPECT_STREQ("some text", text) << "the box still has it";
    expectValue<char*>(box, text);
}

TEST_F(Data, NullTextTravelsAsNull) {
    qnCharPtrData box(nullptr);
    Seen<char*> seen = {0, const_cast<char*>("not null")};
    box.deliverTo(reinterpret_cast<qnDeliverFunc>(&see<char*>), &seen);
    EXPECT_EQ(1u, seen.calls);
    EXPECT_EQ(nullptr, seen.value);
    expectValue<char*>(box, nullptr);
}

unsigned signals;
void* signalled;
void onSignal(void* closure) {
    ++signals;
    signalled = closure;
}

TEST_F(Data, AVoidBoxCallsWithTheClosureAlone) {
    qnVoidData box;
    signals = 0;
    box.deliverTo(reinterpret_cast<qnDeliverFunc>(&onSignal), &box);
    EXPECT_EQ(1u, signals);
    EXPECT_EQ(&box, signalled);
}

TEST_F(Data, ReadingAVoidBoxWritesNothing) {
    qnVoidData box;
    unsigned char out[16];
    std::memset(out, 0x5A, sizeof out);
    box.getValue(qnDT_void, out);
    box.getValue(qnDT_double, out);
    for (unsigned char byte : out) EXPECT_EQ(0x5A, byte);
    box.getValue(qnDT_void, nullptr);
}

struct StrSeen {
    std::string arrived;
    const char* buffer;
};
void changeString(void* closure, qnStr value) {
    StrSeen* seen = static_cast<StrSeen*>(closure);
    seen->arrived = value.text();
    seen->buffer = value.text();
    value.append(" and more");
}

TEST_F(Data, AStringBoxKeepsACopyOfItsOwn) {
    qnStr original("first");
    qnStrData box(original);
    original = "second";
    qnStr out;
    box.getValue(qnDT_qnStr, &out);
    EXPECT_STREQ("first", out.text());
}

TEST_F(Data, AStringIsDeliveredAsACopyThatTheReceiverMayChange) {
    qnStrData box("first");
    StrSeen seen[2];
    for (StrSeen& each : seen) {
        box.deliverTo(reinterpret_cast<qnDeliverFunc>(&changeString), &each);
        EXPECT_EQ("first", each.arrived);
    }
    qnStr out;
    box.getValue(qnDT_qnStr, &out);
    EXPECT_STREQ("first", out.text());
}

TEST_F(Data, ReadingAStringAssignsToTheStringThatIsThere) {
    qnStrData box(qnStr("a\0b", 3));
    qnStr out("text that the assignment releases");
    box.getValue(qnDT_int, &out);
    EXPECT_EQ(3u, out.length());
    EXPECT_EQ(0, std::memcmp("a\0b", out.text(), 4));
    out.append("!");
    qnStr again;
    box.getValue(qnDT_int, &again);
    EXPECT_EQ(3u, again.length()) << "what was read is a copy";
}

qnStrArray twoNames() {
    qnStrArray names;
    qnStr ada("Ada"), bob("Bob");
    names.append(&ada);
    names.append(&bob);
    return names;
}

std::string joined(const qnStrArray& names) {
    std::string result;
    for (unsigned i = 0; i < names.length(); ++i) result += std::string(names.elements()[i].text()) + ";";
    return result;
}

struct ArraySeen {
    std::string arrived;
    std::string left;
};
void growArray(void* closure, qnStrArray value) {
    ArraySeen* seen = static_cast<ArraySeen*>(closure);
    seen->arrived = joined(value);
    value.elements()[0] = "changed";
    qnStr more("more");
    for (unsigned i = 0; i < 10; ++i) value.append(&more);
    value.remove(1, 10);
    seen->left = joined(value);
}

TEST_F(Data, AStringArrayBoxKeepsACopyOfItsOwn) {
    qnStrArray original = twoNames();
    qnStrArrayData box(original);
    original.elements()[0] = "changed";
    qnStrArray out;
    box.getValue(qnDT_qnStrArray, &out);
    EXPECT_EQ("Ada;Bob;", joined(out));
}

TEST_F(Data, AReceiverMayGrowTheStringArrayThatItWasGiven) {
    qnStrArrayData box(twoNames());
    ArraySeen seen[2];
    for (ArraySeen& each : seen) {
        box.deliverTo(reinterpret_cast<qnDeliverFunc>(&growArray), &each);
        EXPECT_EQ("Ada;Bob;", each.arrived);
        EXPECT_EQ("changed;more;", each.left);
    }
    qnStrArray out;
    box.getValue(qnDT_qnStrArray, &out);
    EXPECT_EQ("Ada;Bob;", joined(out));
}

/** Makes an array of two strings, of which a text leaks when a box's value takes their place. */
void fillWithStrings(qnStrArray& array) {
    array.resize(2);
    array.elements()[1] = "a text that stays behind";
}

// Deliberate: the strings that were there are not destroyed.
TEST_F(Data, ReadingAStringArrayFreesTheOldBlockAndLeavesItsStringsAlone) {
    qnStrArrayData box(twoNames());
    qnStrArray out;
    fillWithStrings(out);
    const char* text = out.elements()[1].text();
    box.getValue(qnDT_qnStrArray, &out);
    EXPECT_STREQ("a text that stays behind", text);
    EXPECT_EQ("Ada;Bob;", joined(out));
}

TEST_F(Data, ReadingAStringArrayTakesTheLengthAndCapacityOfTheBoxedOne) {
    qnStrArray names = twoNames();
    names.setMaxLength(9);
    qnStrArrayData box(names);
    qnStrArray out(5);
    box.getValue(qnDT_int, &out);
    EXPECT_EQ(2 * sizeof(qnStr), out.usedBytes);
    EXPECT_EQ(9 * sizeof(qnStr), out.maxBytes);
    EXPECT_EQ("Ada;Bob;", joined(out));
    out.elements()[0] = "changed";
    qnStrArray again;
    box.getValue(qnDT_int, &again);
    EXPECT_EQ("Ada;Bob;", joined(again)) << "what was read is a copy";
    out.append(&again.elements()[1]);
    EXPECT_EQ("changed;Bob;Bob;", joined(out)) << "and can grow";
}

TEST_F(Data, AnEmptyStringArrayIsDeliveredAndReadAsEmpty) {
    qnStrArrayData box((qnStrArray()));
    qnStrArray out(2);
    box.getValue(qnDT_qnStrArray, &out);
    EXPECT_EQ(0u, out.length());
    Seen<qnStrArray> seen = {0, twoNames()};
    box.deliverTo(reinterpret_cast<qnDeliverFunc>(&see<qnStrArray>), &seen);
    EXPECT_EQ(1u, seen.calls);
    EXPECT_EQ(0u, seen.value.length());
}

/** A box of a program's own, which counts its destruction. */
struct OwnBox : qnData {
    OwnBox(unsigned short type, unsigned& destroyed) : qnData(type), destroyed_(destroyed) {}
    ~OwnBox() override { ++destroyed_; }
    const char* dataName() const override { return "own"; }
    void deliverTo(qnDeliverFunc fn, void* arg) override {
        reinterpret_cast<void (*)(void*, unsigned&)>(fn)(arg, destroyed_);
    }
    void getValue(unsigned short, void*) override {}
    unsigned getSize() override { return 0; }
    unsigned& destroyed_;
};

TEST_F(Data, TheLastHolderDestroysThroughTheVirtualDestructor) {
    unsigned destroyed = 0;
    qnData* box = new OwnBox(77, destroyed);
    EXPECT_EQ(77, box->getType());
    qnRetain(box);
    qnRetain(box);
    EXPECT_EQ(2u, box->refCount);
    EXPECT_FALSE(qnRelease(box));
    EXPECT_EQ(0u, destroyed);
    EXPECT_TRUE(qnRelease(box));
    EXPECT_EQ(1u, destroyed);
}

TEST_F(Data, ABoxThatNobodyTookIsNotDestroyedByARelease) {
    unsigned destroyed = 0;
    qnData* box = new OwnBox(77, destroyed);
    EXPECT_FALSE(qnRelease(box)) << "the count wraps";
    EXPECT_EQ(UINT_MAX, box->refCount);
    EXPECT_EQ(0u, destroyed);
    delete box;
    EXPECT_EQ(1u, destroyed);
}

TEST_F(Data, InitialisingAgainDrawsNoFurtherCodes) {
    qnSequencer* const allocator = qn_nextDataType;
    const unsigned before = (*qn_nextDataType)();
    qnInitializeToolkit();
    EXPECT_EQ(allocator, qn_nextDataType);
    EXPECT_EQ(before + 1, (*qn_nextDataType)());
    EXPECT_EQ(11, qnDT_qnStrArray);
}

}  // namespace DataTest
