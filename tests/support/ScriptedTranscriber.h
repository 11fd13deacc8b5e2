#ifndef MORVAQNDS_TESTS_SCRIPTEDTRANSCRIBER_H
#define MORVAQNDS_TESTS_SCRIPTEDTRANSCRIBER_H

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "Transcriber.h"
#include "TypeObj.h"

/**
 * A transcriber for containers of ints: it takes ints and unsigned ints, one at a time, writes down what passes, and
 * fails at a given value.
 */
class ScriptedTranscriber : public qnTranscriber {
public:
    ScriptedTranscriber() {}
    /** One that reads these numbers. */
    explicit ScriptedTranscriber(std::vector<unsigned> script) : numbers(script) { reading = 1; }

    bool xdr(int* values, unsigned count) override { return one("i", values, count); }
    bool xdr(unsigned* values, unsigned count) override { return one("u", values, count); }
    bool xdr(qnTypeObj& type, void* object, void* base) override {
        passed += std::string(type.name) + (object == base ? " same" : " other");
        return !failing;
    }

    std::vector<unsigned> numbers;
    std::string passed;          // "u2 u4 i7"
    unsigned failAt = UINT_MAX;  // number of the value, from 0
    bool failing = false;        // what base parts answer
    unsigned seen = 0;
    std::vector<void*> addresses;  // of the ints

    // The rest is not for containers of ints.
    void reset() override {}
    bool xdr(char*, unsigned) override { return unexpected(); }
    bool xdr(unsigned char*, unsigned) override { return unexpected(); }
    bool xdr(short*, unsigned) override { return unexpected(); }
    bool xdr(unsigned short*, unsigned) override { return unexpected(); }
    bool xdr(long*, unsigned) override { return unexpected(); }
    bool xdr(unsigned long*, unsigned) override { return unexpected(); }
    bool xdr(float*, unsigned) override { return unexpected(); }
    bool xdr(double*, unsigned) override { return unexpected(); }
    bool xdr(qnStr*, unsigned) override { return unexpected(); }
    bool xdr(char**, unsigned) override { return unexpected(); }
    bool xdr(unsigned char**, unsigned) override { return unexpected(); }
    bool xdr(short**, unsigned) override { return unexpected(); }
    bool xdr(unsigned short**, unsigned) override { return unexpected(); }
    bool xdr(long**, unsigned) override { return unexpected(); }
    bool xdr(unsigned long**, unsigned) override { return unexpected(); }
    bool xdr(float**, unsigned) override { return unexpected(); }
    bool xdr(double**, unsigned) override { return unexpected(); }
    bool xdr(char**) override { return unexpected(); }
    bool xdr(unsigned char**) override { return unexpected(); }
    bool xdr(void*, qnXDRObj*, qnTypeObj&) override { return unexpected(); }
    void* readObject(qnTypeObj&) override { return nullptr; }
    bool writeObject(void*, qnXDRObj*) override { return unexpected(); }
    const char* className() const override { return "ScriptedTranscriber"; }

private:
    template <class Number>
    bool one(const char* kind, Number* value, unsigned count) {
        EXPECT_EQ(count, 1u);
        if (seen == failAt || (reading && seen >= numbers.size())) return false;
        if (reading) *value = static_cast<Number>(numbers[seen]);
        ++seen;
        passed += (passed.empty() ? "" : " ") + std::string(kind) + std::to_string(*value);
        if (*kind == 'i') addresses.push_back(value);
        return true;
    }
    bool unexpected() {
        ADD_FAILURE() << "an operation that chained containers do not use";
        return false;
    }
};

#endif
