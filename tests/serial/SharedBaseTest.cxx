// A class with a virtual base that two paths lead to: its part is written once and referred to the second time.
#include <gtest/gtest.h>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Str.h"
#include "XDRObj.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"

namespace SharedBaseTest {

struct Part {
    int number = 0;
    qnStr name;
    static bool xdr(void* object, qnTranscriber& t) {
        Part* part = static_cast<Part*>(object);
        return t.xdr(&part->number, 1) && part->name.xdr(t);
    }
};
qnTypeObj Part_type("SharedBaseTest.Part", 1, nullptr, nullptr, Part::xdr);

struct Left : virtual Part {
    char left = 0;
    static bool xdr(void* object, qnTranscriber& t) {
        Left* self = static_cast<Left*>(object);
        return t.xdr(Part_type, self, static_cast<Part*>(self)) && t.xdr(&self->left, 1);
    }
};
qnTypeObj Left_type("SharedBaseTest.Left", 1, nullptr, nullptr, Left::xdr);

struct Right : virtual Part {
    char right = 0;
    static bool xdr(void* object, qnTranscriber& t) {
        Right* self = static_cast<Right*>(object);
        return t.xdr(Part_type, self, static_cast<Part*>(self)) && t.xdr(&self->right, 1);
    }
};
qnTypeObj Right_type("SharedBaseTest.Right", 1, nullptr, nullptr, Right::xdr);

class Both : public qnXDRObj, public Left, public Right {
public:
    Both() {}
    explicit Both(qnTypeObj& type) : qnXDRObj(type) {}
    bool xdr(qnTranscriber& t) override {
        return t.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this)) &&
               t.xdr(Left_type, this, static_cast<Left*>(this)) && t.xdr(Right_type, this, static_cast<Right*>(this)) &&
               t.xdr(&end, 1);
    }
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type) { return new Both(type); }
    static void deleteInstance(void* object) { delete static_cast<Both*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Both*>(object)->Both::xdr(t); }
    char end = 0;
};
qnTypeObj Both_type("Both", 1, Both::newInstance, Both::deleteInstance, Both::xdr);
qnTypeObj& Both::getTypeObj() const { return Both_type; }

TEST(SharedBase, IsWrittenOnTheFirstPathAndReferredToOnTheSecond) {
    Both both;
    both.number = 42;
    both.left = 'l';
    both.right = 'r';
    both.end = 'e';
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    ASSERT_TRUE(writer.writeObject(&both, &both));
    Bytes expected = Bytes::type(2, "Both").u8(0x0A).u32(1).u32(2).u32(1);
    expected.u8(0x0D).u32(3);                               // Left
    expected.u8(0x4D).u8(9).u32(4).u32(42).u32(1).u8('l');  // Part, its empty name, and what follows it
    expected.u8(0x0D).u32(5);                               // Right
    expected.u8(0x4E).u8(2).u32(4).u8('r').u8('e');         // Part again
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

TEST(SharedBase, OfTwoObjectsArePartsOfTheirOwn) {
    Both first, second;
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    ASSERT_TRUE(writer.writeObject(&first, &first));
    stream.output.clear();
    ASSERT_TRUE(writer.writeObject(&second, &second));
    Bytes expected = Bytes().u8(0x0A).u32(6).u32(2).u32(1).u8(0x0D).u32(7);
    expected.u8(0x4D).u8(9).u32(8).u32(0).u32(1).u8(0).u8(0x0D).u32(9).u8(0x4E).u8(2).u32(8).u8(0).u8(0);
    EXPECT_EQ(hex(expected.str()), hex(stream.output));
}

/** The records of one object, with the two words that the reader takes; `second` is the second path's part. */
Bytes records(const Bytes& second) {
    Bytes bytes = Bytes::type(2, "Both").u8(0x0A).u32(1).u32(2).u32(1).u8(0x0D).u32(3).u32(0);
    bytes.u8(0x4D).u8(8).u32(4).u32(0).u32(42).u32(3).u8(0x43).u8(1).u32(6).u32(3).u8('l').u8(0x0D).u32(5).u32(0);
    return bytes + second;
}

TEST(SharedBase, IsReadOnceThroughBothPaths) {
    Bytes bytes = records(Bytes().u8(0x4E).u8(2).u32(4).u32(0).u8('r').u8('e'));
    bytes.u8(0x45).u8(3).u32(6).u32(3).name("hi");
    qnBinaryReader reader(new MemoryStream(bytes.str()), 0x1122, 0x33445566, "ieee");
    Both* both = static_cast<Both*>(reader.readObject(Both_type));
    ASSERT_NE(nullptr, both);
    EXPECT_EQ(42, both->number);
    EXPECT_TRUE(both->name == "hi");
    EXPECT_EQ('l', both->left);
    EXPECT_EQ('r', both->right);
    EXPECT_EQ('e', both->end);
    EXPECT_EQ(static_cast<Part*>(both), reader.alreadyRead(4));
    delete both;
}

TEST(SharedBase, IsReadAgainInTheNextGraph) {
    // The object of the first graph is gone, and the next may stand where it stood.
    Bytes bytes = records(Bytes().u8(0x4E).u8(2).u32(4).u32(0).u8('r').u8('e')).u8(0x45).u8(3).u32(6).u32(3).name("hi");
    bytes.u8(0x0A).u32(11).u32(2).u32(1).u8(0x0D).u32(13).u32(0).u8(0x4D).u8(9).u32(14).u32(0).u32(7).u32(1).u8('L');
    bytes.u8(0x0D).u32(15).u32(0).u8(0x4E).u8(2).u32(14).u32(0).u8('R').u8('E');
    qnBinaryReader reader(new MemoryStream(bytes.str()), 0x1122, 0x33445566, "ieee");
    delete static_cast<Both*>(reader.readObject(Both_type));
    Both* second = static_cast<Both*>(reader.readObject(Both_type));
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(7, second->number);
    EXPECT_EQ('R', second->right);
    delete second;
}

TEST(SharedBaseDeathTest, ThatComesTwiceUnderTwoIdsIsRefused) {
    // Its length would be that of the second time, its text that of the first.
    Bytes second = Bytes().u8(0x4D).u8(8).u32(7).u32(0).u32(43).u32(900).u8(0x43).u8(2).u32(8).u32(900).u8('r').u8('e');
    second.u8(0x85).u16(900).u32(8).u32(900).fill(899, 'x').u8(0).u8(0x45).u8(3).u32(6).u32(3).name("hi");
    auto read = [&] {
        qnBinaryReader reader(new MemoryStream(records(second).str()), 0x1122, 0x33445566, "ieee");
        Both* both = static_cast<Both*>(reader.readObject(Both_type));
        qnFatal("read %lu", both->name.hash());
    };
    EXPECT_EXIT(read(), testing::KilledBySignal(SIGABRT), "^XXX new base for old base\n$");
}

}  // namespace SharedBaseTest
