// Formatting. The buffer's size follows an estimate that is made from the format alone and the lengths of string
// arguments; the text itself is formatted aside first, so that arguments may be parts of the string and the result is
// never larger than the buffer.
//
// Two readings of the format run side by side. The estimate looks, behind each percent sign, for the next character
// that is a conversion, whatever stands between. The arguments are stepped over as `printf` really takes them, with
// lengths and precisions. Where both see the same string conversion, its length counts.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>

#include "Checked.h"
#include "Str.h"
#include "core/Heap.h"

namespace {

constexpr char Conversions[] = "idouxXfeEgGcspn%";

/** What the estimate adds for a conversion other than that of a string. */
unsigned estimateOf(char conversion) {
    switch (conversion) {
        case 'e':
        case 'E':
        case 'f':
        case 'g':
        case 'G': return 20;
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
        case 'p': return 10;
        case 'c':
        case '%': return 1;
        default: return 0;
    }
}

/** Walks the conversions of a format as `printf` understands them and takes their arguments. */
class ArgumentWalk {
public:
    ArgumentWalk(const char* format, va_list arguments)
        : next_(format), conversion_(nullptr), lost_(false), length_(0) {
        va_copy(arguments_, arguments);
    }
    ~ArgumentWalk() { va_end(arguments_); }

    ArgumentWalk(const ArgumentWalk&) = delete;
    ArgumentWalk& operator=(const ArgumentWalk&) = delete;

    /** The length of the string argument whose conversion character stands at `where`; 0 if none does. */
    std::size_t stringLengthAt(const char* where) {
        while (!lost_ && (conversion_ == nullptr || conversion_ < where)) {
            if (!step()) return 0;
        }
        return !lost_ && conversion_ == where && *where == 's' ? length_ : 0;
    }

private:
    enum class Size { Plain, Long, LongLong, LongDouble, IntMax, SizeT, PtrDiff };

    /** Takes the next conversion and its arguments; false at the end of the format. */
    bool step() {
        const char* p = std::strchr(next_, '%');
        if (p == nullptr) return false;
        ++p;
        while (*p != 0 && std::strchr("-+ #0'I", *p) != nullptr) ++p;
        int width;
        p = number(p, width);
        if (*p == '$') return lose();  // arguments by position are not in the order of the format
        int precision = -1;
        if (*p == '.') {
            p = number(p + 1, precision);
            if (precision < 0) precision = -1;
        }
        Size size = Size::Plain;
        p = sizeOf(p, size);
        if (*p == 0) return lose();
        conversion_ = p;
        next_ = p + 1;
        take(*p, size, precision);
        return !lost_;
    }

    bool lose() {
        lost_ = true;
        return false;
    }

    /** A number, or an argument for it; `value` stays 0 where there is none. */
    const char* number(const char* p, int& value) {
        value = 0;
        if (*p == '*') {
            if (p[1] >= '0' && p[1] <= '9') {
                lost_ = true;
            } else {
                value = va_arg(arguments_, int);
            }
            return p + 1;
        }
        for (; *p >= '0' && *p <= '9'; ++p) {
            if (value < 100000000) value = value * 10 + (*p - '0');
        }
        return p;
    }

    static const char* sizeOf(const char* p, Size& size) {
        switch (*p) {
            case 'h': return p[1] == 'h' ? p + 2 : p + 1;
            case 'l': size = p[1] == 'l' ? Size::LongLong : Size::Long; return p[1] == 'l' ? p + 2 : p + 1;
            case 'q': size = Size::LongLong; return p + 1;
            case 'L': size = Size::LongDouble; return p + 1;
            case 'j': size = Size::IntMax; return p + 1;
            case 'z':
            case 'Z': size = Size::SizeT; return p + 1;
            case 't': size = Size::PtrDiff; return p + 1;
            default: return p;
        }
    }

    void take(char conversion, Size size, int precision) {
        switch (conversion) {
            case 'd':
            case 'i':
            case 'o':
            case 'u':
            case 'x':
            case 'X': takeInteger(size); break;
            case 'a':
            case 'A':
            case 'e':
            case 'E':
            case 'f':
            case 'F':
            case 'g':
            case 'G':
                if (size == Size::LongDouble) {
                    va_arg(arguments_, long double);
                } else {
                    va_arg(arguments_, double);
                }
                break;
            case 'c':
                if (size == Size::Long) {
                    va_arg(arguments_, std::wint_t);
                } else {
                    va_arg(arguments_, int);
                }
                break;
            case 'C': va_arg(arguments_, std::wint_t); break;
            case 's': takeString(precision); break;
            case 'S':
            case 'p':
            case 'n': va_arg(arguments_, void*); break;
            case '%':
            case 'm': break;
            default: lost_ = true;  // what the C library makes of it is unknown
        }
    }

    void takeInteger(Size size) {
        switch (size) {
            case Size::Long: va_arg(arguments_, long); break;
            case Size::LongLong:
            case Size::LongDouble: va_arg(arguments_, long long); break;
            case Size::IntMax: va_arg(arguments_, std::intmax_t); break;
            case Size::SizeT: va_arg(arguments_, std::size_t); break;
            case Size::PtrDiff: va_arg(arguments_, std::ptrdiff_t); break;
            default: va_arg(arguments_, int);
        }
    }

    /** With a precision the argument need not be terminated: no more than that is looked at. */
    void takeString(int precision) {
        const char* argument = va_arg(arguments_, const char*);
        if (argument == nullptr) {
            length_ = sizeof "(null)" - 1;
        } else if (precision >= 0) {
            const void* end = std::memchr(argument, 0, static_cast<std::size_t>(precision));
            length_ = end == nullptr ? static_cast<std::size_t>(precision)
                                     : static_cast<std::size_t>(static_cast<const char*>(end) - argument);
        } else {
            length_ = std::strlen(argument);
        }
    }

    const char* next_;
    const char* conversion_;  // where the conversion taken last has its character
    bool lost_;               // whether what follows can no longer be told
    std::size_t length_;      // of the string argument taken last
    va_list arguments_;
};

/** How many characters the result is taken to have. */
std::uint64_t estimateLength(const char* format, va_list arguments) {
    ArgumentWalk walk(format, arguments);
    std::uint64_t estimate = 0;
    for (const char* p = format; *p != 0; ++p) {
        const char* conversion = *p == '%' ? std::strpbrk(p + 1, Conversions) : nullptr;
        if (conversion == nullptr) {
            ++estimate;
            continue;
        }
        estimate += *conversion == 's' ? walk.stringLengthAt(conversion) : estimateOf(*conversion);
        p = conversion;
    }
    return estimate;
}

/** A formatted text outside any string, in memory of its own where it is long. */
class FormattedText {
public:
    FormattedText(const char* format, va_list arguments, const char* operation) : text_(short_), length_(0) {
        va_list again;
        va_copy(again, arguments);
        int needed = std::vsnprintf(short_, sizeof short_, format, arguments);
        if (needed < 0) {
            formatUpToFailure(format, again, operation);
        } else if (std::size_t(needed) >= sizeof short_) {
            text_ = static_cast<char*>(heap::allocate(std::size_t(needed) + 1, operation));
            std::vsnprintf(text_, std::size_t(needed) + 1, format, again);
        }
        va_end(again);
        length_ = std::strlen(text_);
    }
    ~FormattedText() {
        if (text_ != short_) std::free(text_);
    }

    FormattedText(const FormattedText&) = delete;
    FormattedText& operator=(const FormattedText&) = delete;

    const char* text() const { return text_; }
    /** Characters up to the first NUL. */
    unsigned length() const { return static_cast<unsigned>(length_); }

private:
    /** A conversion cannot be made: what stands before it counts, however long it is. */
    void formatUpToFailure(const char* format, va_list arguments, const char* operation) {
        constexpr std::uint64_t MostBytes = std::uint64_t(INT_MAX) + 1;
        for (std::uint64_t next = sizeof short_;; next *= 16) {
            std::size_t size = static_cast<std::size_t>(next < MostBytes ? next : MostBytes);
            if (size > sizeof short_) {
                if (text_ != short_) std::free(text_);
                text_ = static_cast<char*>(heap::allocate(size, operation));
            }
            std::memset(text_, 0, size);
            va_list attempt;
            va_copy(attempt, arguments);
            std::vsnprintf(text_, size, format, attempt);
            va_end(attempt);
            text_[size - 1] = 0;
            if (std::strlen(text_) < size - 1) return;
            if (size == MostBytes) qnFatal("%s: the text exceeds %d characters", operation, INT_MAX);
        }
    }

    char short_[512];
    char* text_;
    std::size_t length_;
};

}  // namespace

void qnStr::adoptFormatted(const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    FormattedText formatted(fmt, arguments, "qnStr::qnStr");
    va_end(arguments);
    slength = formatted.length() + 1;
    data = static_cast<char*>(heap::allocate(slength, "qnStr::qnStr"));
    std::memcpy(data, formatted.text(), slength);
}

qnStr::qnStr(int v, const char* fmt) { adoptFormatted(fmt == nullptr ? "%d" : fmt, v); }

qnStr::qnStr(float v, const char* fmt) { adoptFormatted(fmt == nullptr ? "%g" : fmt, static_cast<double>(v)); }

qnStr::qnStr(double v, const char* fmt) { adoptFormatted(fmt == nullptr ? "%lg" : fmt, v); }

void qnStr::format(const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    vformat(fmt, arguments);
    va_end(arguments);
}

void qnStr::vformat(const char* fmt, va_list ap) {
    std::uint64_t estimate = estimateLength(fmt, ap);
    heap::checkedSize(estimate + 2, "qnStr::vformat");
    FormattedText formatted(fmt, ap, "qnStr::vformat");
    std::uint64_t room = estimate + 1 > formatted.length() ? estimate + 1 : formatted.length();
    resizeInternal(heap::checkedSize(room + 1, "qnStr::vformat") - 1);
    slength = formatted.length() + 1;
    std::memcpy(data, formatted.text(), slength);
}
