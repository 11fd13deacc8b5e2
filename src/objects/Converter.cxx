// The standard conversions and their registry, a chain with the newest converter first.
#include "Converter.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "core/Heap.h"

namespace {

qnConverter* qn_theConverters;

/** Room for any number in the formats of this file, and its NUL. */
constexpr std::size_t NumberSize = 40;

/** The low-order byte of a value's bit pattern, on machines of either byte order. */
template <class Bits, class Value>
int lowByte(Value value) {
    static_assert(sizeof(Bits) == sizeof(Value), "the bits of the whole value");
    Bits bits;
    std::memcpy(&bits, &value, sizeof bits);
    return static_cast<int>(bits & 0xFF);
}

/** The value without its fraction. Deliberate: `INT_MIN` for what does not fit, and for NaN, on every machine. */
int truncated(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return INT_MIN;
    return static_cast<int>(value);
}

/** The number at the start of `text`; 0 for null. Deliberate: the low 32 bits of one that does not fit. */
int leadingInt(const char* text) {
    if (text == nullptr) return 0;
    const unsigned low = static_cast<unsigned>(std::strtoll(text, nullptr, 10) & 0xFFFFFFFF);
    int result;
    std::memcpy(&result, &low, sizeof result);
    return result;
}

/** Delivers a number as text that lives for the duration of the call. */
template <class Value>
void deliverFormatted(void* input, const char* format, Value value) {
    char text[NumberSize];
    std::snprintf(text, sizeof text, format, value);
    qnDeliver<char*>(input, text);
}

// Booleans come and go in the size of an int.

void CBool2int(void* input, int value) { qnDeliver<int>(input, static_cast<qnBool>(value)); }
void CBool2float(void* input, int value) { qnDeliver<float>(input, static_cast<qnBool>(value)); }
void CBool2double(void* input, int value) { qnDeliver<double>(input, static_cast<qnBool>(value)); }

// Deliberate: the conversions to a boolean take the low byte as it stands. 256 becomes 0, and so does 1.0; programs
// that want a test against zero make it themselves.

void Cint2Bool(void* input, int value) { qnDeliver<int>(input, lowByte<std::uint32_t>(value)); }
void Cint2float(void* input, int value) { qnDeliver<float>(input, static_cast<float>(value)); }
void Cint2CharPtr(void* input, int value) { deliverFormatted(input, "%d", value); }

void Cfloat2Bool(void* input, float value) { qnDeliver<int>(input, lowByte<std::uint32_t>(value)); }
void Cfloat2double(void* input, float value) { qnDeliver<double>(input, static_cast<double>(value)); }
void Cfloat2int(void* input, float value) { qnDeliver<int>(input, truncated(static_cast<double>(value))); }
void Cfloat2CharPtr(void* input, float value) { deliverFormatted(input, "%g", static_cast<double>(value)); }

void Cdouble2Bool(void* input, double value) { qnDeliver<int>(input, lowByte<std::uint64_t>(value)); }
void Cdouble2float(void* input, double value) { qnDeliver<float>(input, static_cast<float>(value)); }
void Cdouble2int(void* input, double value) { qnDeliver<int>(input, truncated(value)); }
void Cdouble2CharPtr(void* input, double value) { deliverFormatted(input, "%lg", value); }

void CCharPtr2int(void* input, char* text) { qnDeliver<int>(input, leadingInt(text)); }
void CCharPtr2float(void* input, char* text) {
    qnDeliver<float>(input, text == nullptr ? 0.0f : static_cast<float>(std::atof(text)));
}
void CCharPtr2Str(void* input, char* text) { qnDeliver<qnStr>(input, qnStr(static_cast<const char*>(text))); }
// NOLINTNEXTLINE(performance-unnecessary-value-param): the form of a delivery
void CStr2CharPtr(void* input, qnStr value) { qnDeliver<char*>(input, const_cast<char*>(value.text())); }

template <class Value>
void registerConversion(unsigned short from, unsigned short to, void (*conversion)(void*, Value)) {
    heap::create<qnConverter>("qnConverter::createStandardConverters", from, to,
                              reinterpret_cast<qnDeliverFunc>(conversion));
}

}  // namespace

qnConverter::qnConverter(unsigned short from, unsigned short to, qnDeliverFunc fn)
    : qnInputChannel(from, nullptr, fn, 0), targetType_(to), next_(qn_theConverters) {
    qn_theConverters = this;
}

qnConverter::qnConverter(const qnConverter& prototype, Instance)
    : qnInputChannel(prototype.getType(), nullptr, prototype.deliverFunc, 0),
      targetType_(prototype.targetType_),
      next_(nullptr) {
    flagsAndType_ |= IsConverter;
}

qnConverter::~qnConverter() {
    if (isConverter()) return;
    for (qnConverter** place = &qn_theConverters; *place != nullptr; place = &(*place)->next_) {
        if (*place != this) continue;
        *place = next_;
        return;
    }
}

qnConverter* qnConverter::findConverter(unsigned short from, unsigned short to) {
    for (qnConverter* prototype = qn_theConverters; prototype != nullptr; prototype = prototype->next_) {
        if (prototype->getType() == from && prototype->targetType_ == to) {
            qnConverter* instance = new (std::nothrow) qnConverter(*prototype, Instance());
            if (instance == nullptr) heap::outOfMemory("qnConverter::findConverter");
            return instance;
        }
    }
    return nullptr;
}

void qnConverter::splice(qnInputChannel* input) {
    closure = input;
    flagsAndType_ = (flagsAndType_ & ~static_cast<unsigned>(LatestOnly)) | (input->latestOnly() ? LatestOnly : 0u);
    qnRetain(input);
}

// Deliberate: none leads to or from long, from int to double or from text to double. Connecting those ends the process
// unless the program registers a conversion of its own.
void qnConverter::createStandardConverters() {
    registerConversion(qnDT_qnBool, qnDT_int, CBool2int);
    registerConversion(qnDT_qnBool, qnDT_float, CBool2float);
    registerConversion(qnDT_qnBool, qnDT_double, CBool2double);
    registerConversion(qnDT_int, qnDT_qnBool, Cint2Bool);
    registerConversion(qnDT_int, qnDT_float, Cint2float);
    registerConversion(qnDT_int, qnDT_CharPtr, Cint2CharPtr);
    registerConversion(qnDT_float, qnDT_qnBool, Cfloat2Bool);
    registerConversion(qnDT_float, qnDT_double, Cfloat2double);
    registerConversion(qnDT_float, qnDT_int, Cfloat2int);
    registerConversion(qnDT_float, qnDT_CharPtr, Cfloat2CharPtr);
    registerConversion(qnDT_double, qnDT_qnBool, Cdouble2Bool);
    registerConversion(qnDT_double, qnDT_float, Cdouble2float);
    registerConversion(qnDT_double, qnDT_int, Cdouble2int);
    registerConversion(qnDT_double, qnDT_CharPtr, Cdouble2CharPtr);
    registerConversion(qnDT_CharPtr, qnDT_int, CCharPtr2int);
    registerConversion(qnDT_CharPtr, qnDT_float, CCharPtr2float);
    registerConversion(qnDT_CharPtr, qnDT_qnStr, CCharPtr2Str);
    registerConversion(qnDT_qnStr, qnDT_CharPtr, CStr2CharPtr);
}
