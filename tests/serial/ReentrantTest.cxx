// Objects whose `xdr` does more with its transcriber than transcribe the object once.
#include <gtest/gtest.h>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Fatal.h"
#include "Str.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace ReentrantTest {

class Reentrant : public testing::Test {
protected:
    ~Reentrant() override {
        Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
    }
};

Bytes root(unsigned n = 0) {
    Probe::type();
    Bytes bytes = Bytes::type(2, "Probe");
    if (n == 0) return bytes.u8(0x0A).u32(1).u32(2).u32(1);
    return bytes.u8(0x4A).u8(n).u32(1).u32(2).u32(1);
}

Bytes instance(unsigned id) { return Bytes().u8(0x0A).u32(id).u32(2).u32(1); }

/** Reads one graph; what its objects do is `body`. */
Probe* read(const Bytes& records, Probe::Body body) {
    Probe::onRead() = body;
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    return static_cast<Probe*>(reader.readObject(Probe::type()));
}

TEST_F(Reentrant, AGraphReadInsideAnotherCompletesWhatWaitsInBoth) {
    unsigned depth = 0;
    Bytes records = root().u8(0x0B).u32(3).u32(0) + instance(4).u8(0x0B).u32(5).u32(0) + instance(5) + instance(3);
    Probe* inner = nullptr;
    Probe* outer = read(records, [&](qnTranscriber& t, Probe& self) {
        switch (depth++) {
            case 0:
                if (!t.xdr(&self.first, nullptr, Probe::type())) return false;
                inner = static_cast<Probe*>(t.readObject(Probe::type()));
                EXPECT_NE(nullptr, self.first) << "the inner graph read what the outer waited for";
                return inner != nullptr;
            case 1: return t.xdr(&self.first, nullptr, Probe::type());
            default: return true;
        }
    });
    ASSERT_NE(nullptr, outer);
    EXPECT_NE(outer->first, inner->first);
    EXPECT_EQ(4u, depth);
    delete inner->first;
    delete inner;
    delete outer->first;
    delete outer;
}

TEST_F(Reentrant, GraphsInsideGraphsGoAsDeepAsTheProgramDoes) {
    const unsigned depth = 1000;
    Bytes records = root();
    for (unsigned i = 0; i < depth; ++i) records += instance(3 + i);
    unsigned reached = 0;
    Probe* outer = read(records, [&](qnTranscriber& t, Probe& self) {
        if (reached == depth) return true;
        ++reached;
        self.first = static_cast<Probe*>(t.readObject(Probe::type()));
        return self.first != nullptr;
    });
    EXPECT_EQ(depth, reached);
    while (outer != nullptr) {
        Probe* next = outer->first;
        delete outer;
        outer = next;
    }
}

TEST_F(Reentrant, AStringOfTheOuterGraphMayShareItsTextAfterAnInnerOne) {
    // Strings of an outer graph belong to it before and after the inner graph.
    qnStr a, b;
    unsigned calls = 0;
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(3).u8(0x04).u32(3).u32(0) + instance(4);
    records.u8(0x45).u8(3).u32(3).u32(3).name("hi");
    Probe* inner = nullptr;
    Probe* outer = read(records, [&](qnTranscriber& t, Probe&) {
        if (calls++ != 0) return true;
        if (!a.xdr(t) || !b.xdr(t)) return false;
        inner = static_cast<Probe*>(t.readObject(Probe::type()));
        return inner != nullptr;
    });
    ASSERT_NE(nullptr, outer);
    EXPECT_TRUE(a == "hi");
    EXPECT_TRUE(b == "hi");
    EXPECT_NE(a.text(), b.text());
    delete inner;
    delete outer;
}

TEST_F(Reentrant, AResetWhileAnObjectIsReadForgetsItAndWhatItWaitsFor) {
    unsigned calls = 0;
    Bytes records = root(4).u32(7).u8(0x4B).u8(4).u32(9).u32(0).u32(8);
    Probe* outer = read(records, [&](qnTranscriber& t, Probe& self) {
        ++calls;
        int more = 0;
        if (!t.xdr(&self.number, 1) || !t.xdr(&self.first, nullptr, Probe::type())) return false;
        t.reset();
        EXPECT_EQ(nullptr, dynamic_cast<qnBinaryReader&>(t).alreadyRead(1));
        // The record at hand is read on.
        return t.xdr(&more, 1) && more == 8;
    });
    ASSERT_NE(nullptr, outer);
    EXPECT_EQ(7, outer->number);
    EXPECT_EQ(nullptr, outer->first);
    EXPECT_EQ(1u, calls);
    delete outer;
}

TEST_F(Reentrant, AResetWhileAnObjectArrivesLosesTheTypesAndTheInputEnds) {
    unsigned calls = 0;
    Probe* made[2] = {};
    Bytes records = root().u8(0x0B).u32(3).u32(0) + instance(3);
    EXPECT_EQ(nullptr, read(records, [&](qnTranscriber& t, Probe& self) {
                  made[calls] = &self;
                  if (calls++ == 0) return t.xdr(&self.first, nullptr, Probe::type());
                  t.reset();
                  return true;
              }));
    EXPECT_EQ(2u, calls);
    delete made[0];
    delete made[1];
}

TEST_F(Reentrant, AStringReadTwiceOverKeepsItsText) {
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(3).u8(0x04).u32(3).u32(0);
    records.u8(0x45).u8(3).u32(3).u32(3).name("hi");
    qnStr text;
    Probe* outer = read(records, [&](qnTranscriber& t, Probe&) { return text.xdr(t) && text.xdr(t); });
    ASSERT_NE(nullptr, outer);
    EXPECT_TRUE(text == "hi");
    delete outer;
}

TEST_F(Reentrant, AStringReadTwiceOverWithTwoTextsOfOneLengthHasTheFirst) {
    // The newest of what waits is completed first, and the oldest last.
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(3).u8(0x03).u32(4).u32(3);
    records.u8(0x45).u8(3).u32(4).u32(3).name("ho").u8(0x45).u8(3).u32(3).u32(3).name("hi");
    qnStr text;
    Probe::onRead() = [&](qnTranscriber& t, Probe&) { return text.xdr(t) && text.xdr(t); };
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    Probe* outer = static_cast<Probe*>(reader.readObject(Probe::type()));
    ASSERT_NE(nullptr, outer);
    EXPECT_TRUE(text == "hi");
    std::free(reader.alreadyRead(4));
    delete outer;
}

typedef Reentrant ReentrantDeathTest;

TEST_F(ReentrantDeathTest, AStringReadTwiceOverWithALongerLengthIsRefused) {
    // Its length is that of the second time, the text that arrives last that of the first.
    Bytes records = root(4).u32(3).u8(0x43).u8(4).u32(3).u32(3).u32(9).u8(0x03).u32(4).u32(9);
    records.u8(0x45).u8(9).u32(4).u32(9).name("hohohoho").u8(0x45).u8(3).u32(3).u32(3).name("hi");
    auto body = [](qnTranscriber& t, Probe&) {
        static qnStr text;
        return text.xdr(t) && text.xdr(t);
    };
    EXPECT_EXIT(read(records, body), testing::KilledBySignal(SIGABRT), "^format error\n$");
}

TEST_F(ReentrantDeathTest, AnObjectThatReadsItselfInsteadOfItsFieldsRunsOutOfInput) {
    auto body = [](qnTranscriber& t, Probe& self) { return Probe::xdr(&self, t) && false; };
    auto once = [body](qnTranscriber& t, Probe& self) {
        char c;
        return t.xdr(&c, 1) && body(t, self);
    };
    EXPECT_EXIT(read(root(3).raw("abc"), once), testing::KilledBySignal(SIGABRT), "^XXX error handling is missing\n$");
}

// Writers

TEST_F(Reentrant, ARootThatStillWaitsIsWrittenUnderItsLastId) {
    // The object was met through a pointer, and is then made a root: both times it comes under the second id.
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    Probe other([](qnTranscriber&, Probe&) { return true; });
    bool nested = false;
    Probe outer([&](qnTranscriber& t, Probe& self) {
        self.first = &other;
        if (!t.xdr(&self.first, self.first, Probe::type())) return false;
        nested = t.writeObject(&other, &other);
        return nested;
    });
    ASSERT_TRUE(writer.writeObject(&outer, &outer));
    EXPECT_TRUE(nested);
    // The pending pointer record makes room for the root's: that is what writing inside a write costs.
    Bytes expected = Bytes::type(2, "Probe").u8(0x0A).u32(1).u32(2).u32(1);
    expected.u8(0x0A).u32(4).u32(2).u32(1).u8(0x0A).u32(4).u32(2).u32(1);
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

TEST_F(Reentrant, AResetWhileAnObjectIsWrittenDropsItsRecordAndTheQueue) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    Probe other([](qnTranscriber&, Probe&) { return true; });
    Probe outer([&](qnTranscriber& t, Probe& self) {
        self.first = &other;
        int one = 1, two = 2;
        if (!t.xdr(&one, 1) || !t.xdr(&self.first, self.first, Probe::type()) || !t.xdr(&two, 1)) return false;
        t.reset();
        return t.xdr(&two, 1);
    });
    ASSERT_TRUE(writer.writeObject(&outer, &outer));
    Bytes expected = Bytes::type(2, "Probe").u8(0x4A).u8(4).u32(1).u32(2).u32(1).u32(1);
    expected.u8(0x40).u8(4).u32(2);
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
    EXPECT_EQ(0u, writer.objectTable.count);
}

}  // namespace ReentrantTest
