#include "TypeObj.h"

#include <gtest/gtest.h>

#include "NumberArrays.h"
#include "Str.h"
#include "StrArray.h"
#include "StrStrDictionary.h"
#include "VoidPtrDict.h"
#include "XDRObj.h"
#include "BinaryWriter.h"
#include "support/MemoryStream.h"

namespace TypeObjTest {

TEST(TypeObj, KnowsTheLibrarysClassesByName) {
    EXPECT_EQ(&qnXDRObj_type, qnTypeObj::findType("qnXDRObj"));
    EXPECT_EQ(&qnStr_type, qnTypeObj::findType("qnStr"));
    EXPECT_EQ(&qnArray_type, qnTypeObj::findType("qnArray"));
    EXPECT_EQ(&qnDictionary_type, qnTypeObj::findType("qnDictionary"));
    EXPECT_EQ(&qnStrStrDictionary_type, qnTypeObj::findType("DICT"));
    qnStr name("DICT");
    EXPECT_EQ(&qnStrStrDictionary_type, qnTypeObj::findType(name));
    EXPECT_EQ(nullptr, qnTypeObj::findType("dict"));
    EXPECT_EQ(nullptr, qnTypeObj::findType(""));
}

TEST(TypeObj, ArrayAnswersWithTheOneRegisteredLast) {
    // Deliberate: eleven classes share the name.
    EXPECT_EQ(&qnStrArray_type, qnTypeObj::findType("ARRAY"));
}

template <class Array>
void expectOwnType(qnTypeObj& type) {
    Array array;
    EXPECT_EQ(&type, &array.getTypeObj());
    EXPECT_STREQ("ARRAY", type.name);
    EXPECT_EQ(1u, type.version);
    EXPECT_STREQ("ARRAY", array.className());
    void* made = type.newInstance(type);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(0u, static_cast<Array*>(made)->length());
    EXPECT_EQ(array.elementSize, static_cast<Array*>(made)->elementSize);
    type.deleteInstance(made);
    type.deleteInstance(nullptr);
}

TEST(TypeObj, EachTypedArrayHasItsOwn) {
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

TEST(TypeObj, AbstractClassesHaveNoFactories) {
    for (qnTypeObj* type : {&qnArray_type, &qnDictionary_type}) {
        EXPECT_EQ(nullptr, type->newInstance);
        EXPECT_EQ(nullptr, type->deleteInstance);
        EXPECT_NE(nullptr, type->xdr);
        EXPECT_EQ(1u, type->version);
    }
}

TEST(TypeObj, WithoutARegistryNothingIsFoundAndNoneIsMade) {
    qnVoidPtrDict* registry = qnTypeObj::knownTypes;
    qnTypeObj::knownTypes = nullptr;
    EXPECT_EQ(nullptr, qnTypeObj::findType("qnStr"));
    qnStr name("qnStr");
    EXPECT_EQ(nullptr, qnTypeObj::findType(name));
    EXPECT_EQ(nullptr, qnTypeObj::knownTypes);
    static qnTypeObj type("first", 3, nullptr, nullptr, nullptr);
    ASSERT_NE(nullptr, qnTypeObj::knownTypes);
    EXPECT_EQ(31u, qnTypeObj::knownTypes->buckets.length());
    EXPECT_EQ(&type, qnTypeObj::findType("first"));
    EXPECT_EQ(3u, type.version);
    delete qnTypeObj::knownTypes;
    qnTypeObj::knownTypes = registry;
}

TEST(TypeObj, ALaterRegistrationReplacesAnEarlierOneSilently) {
    static qnTypeObj a("TypeObjTest.Same", 1, nullptr, nullptr, nullptr);
    static const char name[] = "TypeObjTest.Same";
    static qnTypeObj b(name, 2, nullptr, nullptr, nullptr);
    EXPECT_EQ(&b, qnTypeObj::findType("TypeObjTest.Same"));
    EXPECT_EQ(name, b.name) << "kept by pointer";
    qnTypeObj::registerType(&a);
    EXPECT_EQ(&a, qnTypeObj::findType("TypeObjTest.Same"));
}

TEST(XDRObj, TheRootDoesNothingSuccessfully) {
    void* made = qnXDRObj::newInstance(qnXDRObj_type);
    qnXDRObj* object = static_cast<qnXDRObj*>(made);
    EXPECT_STREQ("qnXDRObj", object->className());
    EXPECT_EQ(0u, object->refCount);
    EXPECT_EQ(&qnXDRObj_type, &object->getTypeObj());
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    EXPECT_TRUE(object->xdr(writer));
    EXPECT_TRUE(qnXDRObj::xdr(made, writer));
    EXPECT_FALSE(object->xdrFail(writer, nullptr));
    object->xdrSuccess(writer);
    EXPECT_TRUE(stream.output.empty());
    qnXDRObj::deleteInstance(made);
    qnXDRObj::deleteInstance(nullptr);
}

TEST(Str, FactoryMadeStringsAreEmpty) {
    void* made = qnStr::newInstance(qnStr_type);
    EXPECT_EQ(&qnStr::emptyString, static_cast<qnStr*>(made)->text());
    EXPECT_EQ(0u, static_cast<qnStr*>(made)->length());
    EXPECT_EQ(&qnStr_type, &static_cast<qnStr*>(made)->getTypeObj());
    qnStr::deleteInstance(made);
    qnStr::deleteInstance(nullptr);
}

}  // namespace TypeObjTest
