#include <gtest/gtest.h>

#include <cstddef>

#include "NumberArrays.h"
#include "Str.h"
#include "StrArray.h"
#include "StrSet.h"
#include "StrStrDictionary.h"
#include "TypeObj.h"
#include "VoidPtrDict.h"
#include "XDRObj.h"

namespace TypeObjTest {

void* make(qnTypeObj&) { return nullptr; }
void destroy(void*) {}
bool transcribe(void*, qnTranscriber&) { return true; }

/** For the time of a test the registry is as it was before anything was registered. */
class EmptyRegistry : public testing::Test {
protected:
    EmptyRegistry() : saved_(qnTypeObj::knownTypes) { qnTypeObj::knownTypes = nullptr; }
    ~EmptyRegistry() override {
        delete qnTypeObj::knownTypes;
        qnTypeObj::knownTypes = saved_;
    }

private:
    qnVoidPtrDict* saved_;
};

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(qnTypeObj) == 20, "a type object is five words");
#endif
static_assert(offsetof(qnTypeObj, name) == 0, "the name comes first");
static_assert(offsetof(qnTypeObj, version) == sizeof(void*), "the version comes second");
static_assert(offsetof(qnTypeObj, newInstance) == 2 * sizeof(void*), "the factory comes third");
static_assert(offsetof(qnTypeObj, deleteInstance) == 3 * sizeof(void*), "the deleter comes fourth");
static_assert(offsetof(qnTypeObj, xdr) == 4 * sizeof(void*), "the transcribing function comes last");

TEST_F(EmptyRegistry, LookupBeforeAnyRegistrationIsNullAndMakesNoRegistry) {
    EXPECT_EQ(qnTypeObj::findType("qnStr"), nullptr);
    qnStr name("qnStr");
    EXPECT_EQ(qnTypeObj::findType(name), nullptr);
    EXPECT_EQ(qnTypeObj::knownTypes, nullptr);
}

TEST_F(EmptyRegistry, FirstRegistrationMakesTheRegistryWithTheDefaultSize) {
    qnTypeObj type("First", 1, make, destroy, transcribe);
    ASSERT_NE(qnTypeObj::knownTypes, nullptr);
    EXPECT_EQ(qnTypeObj::knownTypes->buckets.length(), 31u);
    EXPECT_EQ(qnTypeObj::knownTypes->count, 1u);
    EXPECT_EQ(qnTypeObj::findType("First"), &type);
    qnStr name("First");
    EXPECT_EQ(*static_cast<void**>(qnTypeObj::knownTypes->find(&name, nullptr)), &type);
}

TEST_F(EmptyRegistry, ConstructorStoresTheFieldsAndKeepsTheNameByPointer) {
    const char* name = "Stored";
    qnTypeObj type(name, 77, make, destroy, transcribe);
    EXPECT_EQ(type.name, name);
    EXPECT_EQ(type.version, 77u);
    EXPECT_EQ(type.newInstance, make);
    EXPECT_EQ(type.deleteInstance, destroy);
    EXPECT_EQ(type.xdr, transcribe);
}

TEST_F(EmptyRegistry, FactoriesMayBeNull) {
    qnTypeObj type("Abstract", 1, nullptr, nullptr, transcribe);
    EXPECT_EQ(type.newInstance, nullptr);
    EXPECT_EQ(type.deleteInstance, nullptr);
    EXPECT_EQ(qnTypeObj::findType("Abstract"), &type);
}

// Deliberate: the last one wins without a message; "ARRAY" relies on it.
TEST_F(EmptyRegistry, SecondTypeOfANameReplacesTheFirstSilently) {
    testing::internal::CaptureStderr();
    qnTypeObj first("Twice", 1, make, destroy, transcribe), second("Twice", 2, nullptr, nullptr, transcribe);
    EXPECT_EQ(qnTypeObj::findType("Twice"), &second);
    EXPECT_EQ(qnTypeObj::knownTypes->count, 1u);
    EXPECT_EQ(first.version, 1u);
    qnTypeObj::registerType(&first);
    EXPECT_EQ(qnTypeObj::findType("Twice"), &first) << "registering again wins again";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(EmptyRegistry, UnknownNameGivesNullSilently) {
    qnTypeObj type("Known", 1, make, destroy, transcribe);
    testing::internal::CaptureStderr();
    EXPECT_EQ(qnTypeObj::findType("Unknown"), nullptr);
    EXPECT_EQ(qnTypeObj::findType(""), nullptr);
    EXPECT_EQ(qnTypeObj::findType(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(qnTypeObj::knownTypes->count, 1u) << "looking up makes no entry";
}

TEST_F(EmptyRegistry, NamesThatHashAlikeAreToldApart) {
    qnTypeObj first("abcdefgh1", 1, make, destroy, transcribe), second("abcdefgh2", 1, make, destroy, transcribe);
    EXPECT_EQ(qnTypeObj::findType("abcdefgh1"), &first);
    EXPECT_EQ(qnTypeObj::findType("abcdefgh2"), &second);
}

TEST_F(EmptyRegistry, LookupByStringAndByTextAgree) {
    qnTypeObj type("Same", 1, make, destroy, transcribe);
    qnStr name("Same");
    EXPECT_EQ(qnTypeObj::findType(name), &type);
    EXPECT_EQ(name, "Same");
}

// The library's own

struct Row {
    qnTypeObj* type;
    const char* name;
    qnNewInstanceFunc newInstance;
    qnDeleteInstanceFunc deleteInstance;
    qnXdrFunc xdr;
};

template <class Class>
Row concrete(qnTypeObj& type, const char* name) {
    return {&type, name, &Class::newInstance, &Class::deleteInstance, &Class::xdr};
}

template <class Class>
Row abstract(qnTypeObj& type, const char* name) {
    return {&type, name, nullptr, nullptr, &Class::xdr};
}

class LibraryTypes : public testing::TestWithParam<Row> {};

TEST_P(LibraryTypes, HasItsNameVersionOneAndItsClassesFunctions) {
    const Row& row = GetParam();
    EXPECT_STREQ(row.type->name, row.name);
    EXPECT_EQ(row.type->version, 1u);
    EXPECT_EQ(row.type->newInstance, row.newInstance);
    EXPECT_EQ(row.type->deleteInstance, row.deleteInstance);
    EXPECT_EQ(row.type->xdr, row.xdr);
}

TEST_P(LibraryTypes, DestroysWhatItMakesAndIgnoresNull) {
    const Row& row = GetParam();
    if (row.newInstance == nullptr) return;
    void* made = row.type->newInstance(*row.type);
    ASSERT_NE(made, nullptr);
    row.type->deleteInstance(made);
    row.type->deleteInstance(nullptr);
}

const Row rows[] = {concrete<qnXDRObj>(qnXDRObj_type, "qnXDRObj"),
                    concrete<qnStr>(qnStr_type, "qnStr"),
                    abstract<qnArray>(qnArray_type, "qnArray"),
                    abstract<qnDictionary>(qnDictionary_type, "qnDictionary"),
                    concrete<qnBoolArray>(qnBoolArray_type, "ARRAY"),
                    concrete<qnCharArray>(qnCharArray_type, "ARRAY"),
                    concrete<qnShortArray>(qnShortArray_type, "ARRAY"),
                    concrete<qnIntArray>(qnIntArray_type, "ARRAY"),
                    concrete<qnLongArray>(qnLongArray_type, "ARRAY"),
                    concrete<qnFloatArray>(qnFloatArray_type, "ARRAY"),
                    concrete<qnDoubleArray>(qnDoubleArray_type, "ARRAY"),
                    concrete<qnUnsignedCharArray>(qnUnsignedCharArray_type, "ARRAY"),
                    concrete<qnUnsignedShortArray>(qnUnsignedShortArray_type, "ARRAY"),
                    concrete<qnUnsignedLongArray>(qnUnsignedLongArray_type, "ARRAY"),
                    concrete<qnStrArray>(qnStrArray_type, "ARRAY"),
                    concrete<qnStrStrDictionary>(qnStrStrDictionary_type, "DICT"),
                    abstract<qnSet>(qnSet_type, "qnSet"),
                    concrete<qnStrSet>(qnStrSet_type, "SET")};

INSTANTIATE_TEST_SUITE_P(EachRow, LibraryTypes, testing::ValuesIn(rows));

TEST(TypeObj, NamesFindTheLibrarysTypes) {
    EXPECT_EQ(qnTypeObj::findType("qnXDRObj"), &qnXDRObj_type);
    EXPECT_EQ(qnTypeObj::findType("qnStr"), &qnStr_type);
    EXPECT_EQ(qnTypeObj::findType("qnArray"), &qnArray_type);
    EXPECT_EQ(qnTypeObj::findType("qnDictionary"), &qnDictionary_type);
    EXPECT_EQ(qnTypeObj::findType("DICT"), &qnStrStrDictionary_type);
    EXPECT_EQ(qnTypeObj::findType("qnSet"), &qnSet_type);
    EXPECT_EQ(qnTypeObj::findType("SET"), &qnStrSet_type);
    EXPECT_EQ(qnTypeObj::findType("qnStrStrDictionary"), nullptr) << "not always the class's name";
}

// Deliberate: eleven classes share a name, and the registry keeps the last of them.
TEST(TypeObj, ArrayFindsTheStringArraysTypeWhichIsRegisteredLast) {
    EXPECT_EQ(qnTypeObj::findType("ARRAY"), &qnStrArray_type);
}

template <class Array>
void expectOwnType(qnTypeObj& type) {
    Array array;
    EXPECT_EQ(&array.getTypeObj(), &type);
    EXPECT_STREQ(array.className(), "ARRAY");
    Array* made = static_cast<Array*>(type.newInstance(type));
    EXPECT_EQ(&made->getTypeObj(), &type);
    EXPECT_EQ(made->refCount, 0u);
    EXPECT_EQ(made->length(), 0u);
    EXPECT_EQ(made->elementSize, array.elementSize);
    type.deleteInstance(made);
}

TEST(TypeObj, EachTypedArrayStillAnswersWithItsOwn) {
    expectOwnType<qnBoolArray>(qnBoolArray_type);
    expectOwnType<qnCharArray>(qnCharArray_type);
    expectOwnType<qnShortArray>(qnShortArray_type);
    expectOwnType<qnIntArray>(qnIntArray_type);
    expectOwnType<qnLongArray>(qnLongArray_type);
    expectOwnType<qnFloatArray>(qnFloatArray_type);
    expectOwnType<qnDoubleArray>(qnDoubleArray_type);
    expectOwnType<qnUnsignedCharArray>(qnUnsignedCharArray_type);
    expectOwnType<qnUnsignedShortArray>(qnUnsignedShortArray_type);
    expectOwnType<qnUnsignedLongArray>(qnUnsignedLongArray_type);
    expectOwnType<qnStrArray>(qnStrArray_type);
}

TEST(TypeObj, FactoryMadeStringsAreEmpty) {
    qnStr* made = static_cast<qnStr*>(qnStr_type.newInstance(qnStr_type));
    EXPECT_EQ(made->text(), &qnStr::emptyString);
    EXPECT_EQ(made->length(), 0u);
    EXPECT_EQ(&made->getTypeObj(), &qnStr_type);
    qnStr_type.deleteInstance(made);
}

}  // namespace TypeObjTest
