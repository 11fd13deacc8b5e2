#ifndef MORVAQNDS_TESTS_FAKETRANSCRIBER_H
#define MORVAQNDS_TESTS_FAKETRANSCRIBER_H

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <string>
#include <vector>

#include "Str.h"
#include "Transcriber.h"
#include "XDRObj.h"

/**
 * A transcriber without a stream. It keeps a line for each call, with the values that went through it, and when reading
 * it hands out the values that it was fed.
 *
 *     FakeTranscriber writer(FakeTranscriber::Writing);
 *     numbers.xdr(writer);
 *     EXPECT_THAT(writer.calls, ElementsAre("unsigned int[1] 8", "unsigned short[1] 4", "int[2] 10 20"));
 *
 *     FakeTranscriber reader(FakeTranscriber::Reading);
 *     reader.feed({8, 4, 10, 20});
 *
 * A call fails (returns false, stores nothing) when its number is `failingCall` or what it should hand out is missing.
 * Chars are shown as numbers, an array behind a pointer as "char*[4] 97 98 99 0" or "char*[4] null".
 */
class FakeTranscriber : public qnTranscriber {
public:
    enum Direction { Writing, Reading };

    explicit FakeTranscriber(Direction direction) { reading = direction == Reading; }

    std::vector<std::string> calls;
    unsigned failingCall = UINT_MAX;  // counted from 0

    /** The numbers that the next calls read, one each element. */
    void feed(std::initializer_list<double> values) { numbers_.insert(numbers_.end(), values); }
    /** The bytes of the block that the next call for a pointer to chars reads. */
    void feedText(const std::string& bytes) { texts_.push_back(bytes); }
    /** The next call for a pointer to a char array or string reads null. */
    void feedNullText() {
        texts_.push_back(std::string());
        ++nullTexts_;
    }
    /** The pointer that the next call for an object pointer reads. */
    void feedPointer(void* pointer) { pointers_.push_back(pointer); }
    /** Whether everything that was fed has been read. */
    bool exhausted() const { return numbers_.empty() && texts_.empty() && pointers_.empty(); }

    const char* className() const override { return "FakeTranscriber"; }
    void reset() override { calls.push_back("reset"); }

    bool xdr(char* values, unsigned count) override { return run("char", values, count); }
    bool xdr(unsigned char* values, unsigned count) override { return run("unsigned char", values, count); }
    bool xdr(short* values, unsigned count) override { return run("short", values, count); }
    bool xdr(unsigned short* values, unsigned count) override { return run("unsigned short", values, count); }
    bool xdr(long* values, unsigned count) override { return run("long", values, count); }
    bool xdr(unsigned long* values, unsigned count) override { return run("unsigned long", values, count); }
    bool xdr(float* values, unsigned count) override { return run("float", values, count); }
    bool xdr(double* values, unsigned count) override { return run("double", values, count); }
    bool xdr(int* values, unsigned count) override { return run("int", values, count); }
    bool xdr(unsigned int* values, unsigned count) override { return run("unsigned int", values, count); }
    bool xdr(qnStr* strings, unsigned count) override {
        if (!note(label("qnStr", count))) return false;
        for (unsigned i = 0; i < count; ++i) {
            if (!strings[i].xdr(*this)) return false;
        }
        return true;
    }

    bool xdr(char** array, unsigned count) override { return text("char*", array, count); }
    bool xdr(unsigned char** array, unsigned count) override { return text("unsigned char*", array, count); }
    bool xdr(short** array, unsigned count) override { return block("short*", array, count); }
    bool xdr(unsigned short** array, unsigned count) override { return block("unsigned short*", array, count); }
    bool xdr(long** array, unsigned count) override { return block("long*", array, count); }
    bool xdr(unsigned long** array, unsigned count) override { return block("unsigned long*", array, count); }
    bool xdr(float** array, unsigned count) override { return block("float*", array, count); }
    bool xdr(double** array, unsigned count) override { return block("double*", array, count); }
    bool xdr(int** array, unsigned count) override { return block("int*", array, count); }
    bool xdr(unsigned int** array, unsigned count) override { return block("unsigned int*", array, count); }
    bool xdr(char** string) override { return text("char string", string, lengthWithNul(*string)); }
    bool xdr(unsigned char** string) override {
        return text("unsigned char string", string, lengthWithNul(reinterpret_cast<char*>(*string)));
    }

    bool xdr(void* pointerVariable, qnXDRObj* object, qnTypeObj& type) override {
        std::string line = std::string("object ") + type.name;
        if (!reading) return note(line + " " + (object == nullptr ? "null" : object->className()));
        if (!note(line) || pointers_.empty()) return false;
        std::memcpy(pointerVariable, &pointers_.front(), sizeof(void*));
        pointers_.pop_front();
        return true;
    }
    bool xdr(qnTypeObj& baseType, void* object, void* base) override {
        if (!note(std::string("base ") + baseType.name + (base == object ? " (same)" : ""))) return false;
        return base == object || baseType.xdr(base, *this);
    }
    void* readObject(qnTypeObj& type) override {
        calls.push_back(std::string("readObject ") + type.name);
        return nullptr;
    }
    bool writeObject(void*, qnXDRObj* object) override {
        return note(std::string("writeObject ") + object->className());
    }

private:
    static std::string label(const char* type, unsigned count) {
        return std::string(type) + "[" + std::to_string(count) + "]";
    }
    static unsigned lengthWithNul(const char* string) {
        return string == nullptr ? 0 : static_cast<unsigned>(std::strlen(string)) + 1;
    }
    static std::string shown(double value) {
        char text[40];
        std::snprintf(text, sizeof text, " %.17g", value);
        return text;
    }

    /** Keeps the line; false when this is the call that is to fail. */
    bool note(const std::string& line) {
        calls.push_back(line);
        return calls.size() - 1 != failingCall;
    }

    template <class Number>
    bool fill(std::string line, Number* values, unsigned count) {
        if (!note(line) || numbers_.size() < count) return false;
        for (unsigned i = 0; i < count; ++i) {
            values[i] = static_cast<Number>(numbers_.front());
            numbers_.pop_front();
            calls.back() += shown(static_cast<double>(values[i]));
        }
        return true;
    }
    template <class Number>
    bool show(std::string line, const Number* values, unsigned count) {
        for (unsigned i = 0; i < count; ++i) line += shown(static_cast<double>(values[i]));
        return note(line);
    }
    template <class Number>
    bool run(const char* type, Number* values, unsigned count) {
        return reading ? fill(label(type, count), values, count) : show(label(type, count), values, count);
    }

    template <class Number>
    bool block(const char* type, Number** array, unsigned count) {
        if (!reading) return *array == nullptr ? note(label(type, count) + " null") : run(type, *array, count);
        std::vector<Number> values(count);
        if (!run(type, values.data(), count)) return false;
        *array = static_cast<Number*>(std::malloc(count * sizeof(Number)));
        if (count != 0) std::memcpy(*array, values.data(), count * sizeof(Number));
        return true;
    }
    template <class Char>
    bool text(const char* type, Char** array, unsigned count) {
        if (!reading)
            return *array == nullptr ? note(label(type, count) + " null") : show(label(type, count), *array, count);
        if (!note(label(type, count)) || texts_.empty()) return false;
        std::string bytes = texts_.front();
        texts_.pop_front();
        if (bytes.empty() && nullTexts_ != 0) {
            --nullTexts_;
            *array = nullptr;
            return true;
        }
        *array = static_cast<Char*>(std::malloc(bytes.size()));
        std::memcpy(*array, bytes.data(), bytes.size());
        return true;
    }

    std::deque<double> numbers_;
    std::deque<std::string> texts_;
    std::deque<void*> pointers_;
    unsigned nullTexts_ = 0;
};

#endif
