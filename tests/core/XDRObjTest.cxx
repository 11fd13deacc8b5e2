#include <gtest/gtest.h>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Str.h"
#include "XDRObj.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"

namespace XDRObjTest {

/** Counts the calls of its member and its destructor. */
class Counting : public qnXDRObj {
public:
    ~Counting() override { ++destroyed; }
    bool xdr(qnTranscriber&) override {
        ++transcribed;
        return false;
    }
    static int destroyed, transcribed;
};
int Counting::destroyed = 0;
int Counting::transcribed = 0;

class XDRObj : public testing::Test {
protected:
    XDRObj() : writer(&stream) {
        qnRetain(&stream);
        Counting::destroyed = Counting::transcribed = 0;
    }
    MemoryStream stream;
    qnBinaryWriter writer;
};

static_assert(sizeof(qnXDRObj) == sizeof(qnRCObj), "the serialisable root adds no field");
#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnXDRObj) == 8, "an address and a count");
#endif

TEST_F(XDRObj, NewInstanceIsABareObjectOfCountZero) {
    qnXDRObj* made = static_cast<qnXDRObj*>(qnXDRObj::newInstance(qnXDRObj_type));
    EXPECT_STREQ(made->className(), "qnXDRObj");
    EXPECT_EQ(made->refCount, 0u);
    EXPECT_EQ(&made->getTypeObj(), &qnXDRObj_type);
    qnXDRObj::deleteInstance(made);
}

TEST_F(XDRObj, ConstructorForFactoriesIgnoresTheType) {
    qnXDRObj object(qnStr_type);
    EXPECT_EQ(object.refCount, 0u);
    EXPECT_EQ(&object.getTypeObj(), &qnXDRObj_type);
}

TEST_F(XDRObj, TranscribesNothingAndSucceedsWithAnyTranscriber) {
    qnXDRObj object;
    EXPECT_TRUE(object.xdr(writer));
    EXPECT_TRUE(qnXDRObj::xdr(&object, writer));
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(stream.output, "");
    MemoryStream empty;
    qnRetain(&empty);
    qnBinaryReader reader(&empty, 0x1122, 0x33445566, "ieee");
    EXPECT_TRUE(object.xdr(reader));
    EXPECT_EQ(object.refCount, 0u);
}

TEST_F(XDRObj, TravelsAsATypeAndAnInstanceWithoutData) {
    qnXDRObj object;
    ASSERT_TRUE(writer.writeObject(&object, &object));
    EXPECT_EQ(hex(stream.output), hex(Bytes::type(2, "qnXDRObj").u8(0x0A).u32(1).u32(2).u32(1).str()));
    MemoryStream in(stream.output);
    qnRetain(&in);
    qnBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    void* read = reader.readObject(qnXDRObj_type);
    ASSERT_NE(read, nullptr);
    EXPECT_STREQ(static_cast<qnXDRObj*>(read)->className(), "qnXDRObj");
    qnXDRObj::deleteInstance(read);
}

TEST_F(XDRObj, FailHookReturnsFalseAndSuccessHookDoesNothing) {
    qnXDRObj object;
    qnRetain(&object);
    EXPECT_FALSE(object.xdrFail(writer, nullptr));
    EXPECT_FALSE(object.xdrFail(writer, &object));
    object.xdrSuccess(writer);
    EXPECT_EQ(object.refCount, 1u);
    object.refCount = 0;
}

TEST_F(XDRObj, DeleteInstanceIgnoresNullAndRunsTheVirtualDestructor) {
    qnXDRObj::deleteInstance(nullptr);
    qnXDRObj* object = new Counting;
    qnXDRObj::deleteInstance(object);
    EXPECT_EQ(Counting::destroyed, 1);
}

// Deliberate: bound at compile time, so that it transcribes an object's base part and not the object again.
TEST_F(XDRObj, StaticFunctionCallsTheRootsMemberAndNotAnOverride) {
    Counting counting;
    qnXDRObj* object = &counting;
    EXPECT_TRUE(qnXDRObj::xdr(object, writer));
    EXPECT_TRUE(qnXDRObj_type.xdr(object, writer));
    EXPECT_EQ(Counting::transcribed, 0);
    EXPECT_FALSE(object->xdr(writer));
    EXPECT_EQ(Counting::transcribed, 1);
}

TEST_F(XDRObj, ReleasedByItsLastHolder) {
    Counting* object = new Counting;
    qnRetain(object);
    qnRetain(object);
    EXPECT_FALSE(qnRelease(object));
    EXPECT_EQ(Counting::destroyed, 0);
    EXPECT_TRUE(qnRelease(object));
    EXPECT_EQ(Counting::destroyed, 1);
}

class Hooked : public qnXDRObj {
public:
    Hooked() {}
    explicit Hooked(qnTypeObj& type) : qnXDRObj(type) {}
    bool xdr(qnTranscriber& t) override { return t.xdr(&number, 1); }
    qnTypeObj& getTypeObj() const override;
    bool xdrFail(qnTranscriber&, void*) override {
        ++called;
        return false;
    }
    void xdrSuccess(qnTranscriber&) override { ++called; }
    static void* newInstance(qnTypeObj& type) { return new Hooked(type); }
    static void deleteInstance(void* object) { delete static_cast<Hooked*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Hooked*>(object)->Hooked::xdr(t); }
    int number = 5;
    static int called;
};
int Hooked::called = 0;
qnTypeObj Hooked_type("XDRObjTest.Hooked", 1, Hooked::newInstance, Hooked::deleteInstance, Hooked::xdr);
qnTypeObj& Hooked::getTypeObj() const { return Hooked_type; }

TEST_F(XDRObj, HooksAreLeftToProgramsByTheTranscribers) {
    Hooked object;
    MemoryStream out;
    qnRetain(&out);
    {
        qnBinaryWriter hookedWriter(&out);
        EXPECT_TRUE(hookedWriter.writeObject(&object, &object));
    }
    MemoryStream full;
    qnRetain(&full);
    full.failingPut = 1;
    {
        qnBinaryWriter hookedWriter(&full);
        EXPECT_FALSE(hookedWriter.writeObject(&object, &object));
    }
    qnBinaryReader hookedReader(new MemoryStream(out.output), 0x1122, 0x33445566, "ieee");
    void* read = hookedReader.readObject(Hooked_type);
    EXPECT_NE(nullptr, read);
    EXPECT_EQ(0, Hooked::called);
    Hooked::deleteInstance(read);
}

}  // namespace XDRObjTest
