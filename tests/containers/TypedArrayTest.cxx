// The pattern that all typed arrays share, on every array of plain elements. Strings have a file of their own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <typeinfo>

#include "NumberArrays.h"
#include "StrArray.h"
#include "TypedArray.h"
#include "VoidPtrArray.h"
#include "support/RecordingArray.h"

namespace TypedArrayTest {

using testing::ElementsAre;

static_assert(std::is_same<qnBoolArray::ElementType, qnBool>::value, "");
static_assert(std::is_same<qnCharArray::ElementType, char>::value, "");
static_assert(std::is_same<qnUnsignedCharArray::ElementType, unsigned char>::value, "");
static_assert(std::is_same<qnShortArray::ElementType, short>::value, "");
static_assert(std::is_same<qnUnsignedShortArray::ElementType, unsigned short>::value, "");
static_assert(std::is_same<qnIntArray::ElementType, int>::value, "");
static_assert(std::is_same<qnLongArray::ElementType, long>::value, "");
static_assert(std::is_same<qnUnsignedLongArray::ElementType, unsigned long>::value, "");
static_assert(std::is_same<qnFloatArray::ElementType, float>::value, "");
static_assert(std::is_same<qnDoubleArray::ElementType, double>::value, "");
static_assert(std::is_same<qnVoidPtrArray::ElementType, void*>::value, "");

#if UINTPTR_MAX == 0xFFFFFFFF
static_assert(sizeof(long) == 4 && sizeof(void*) == 4, "element sizes of the reference machine");
static_assert(sizeof(qnBoolArray) == 24 && sizeof(qnDoubleArray) == 24 && sizeof(qnVoidPtrArray) == 24,
              "no fields of their own");
#endif

TEST(TypedArray, ElementSizesAreThoseOfTheElements) {
    EXPECT_EQ(1u, qnBoolArray().elementSize);
    EXPECT_EQ(1u, qnCharArray().elementSize);
    EXPECT_EQ(1u, qnUnsignedCharArray().elementSize);
    EXPECT_EQ(2u, qnShortArray().elementSize);
    EXPECT_EQ(2u, qnUnsignedShortArray().elementSize);
    EXPECT_EQ(4u, qnIntArray().elementSize);
    EXPECT_EQ(sizeof(long), qnLongArray().elementSize);
    EXPECT_EQ(sizeof(long), qnUnsignedLongArray().elementSize);
    EXPECT_EQ(4u, qnFloatArray().elementSize);
    EXPECT_EQ(8u, qnDoubleArray().elementSize);
    EXPECT_EQ(sizeof(void*), qnVoidPtrArray().elementSize);
}

/** The tests that hold for every array: `TypeParam` is its class. */
template <class ArrayClass>
class TypedArrayOf : public testing::Test {
protected:
    typedef typename ArrayClass::ElementType Element;

    static Element element(int n);
    static std::vector<Element> values(const ArrayClass& a) {
        return std::vector<Element>(a.elements(), a.elements() + a.length());
    }
    static std::vector<Element> elements(std::initializer_list<int> numbers) {
        std::vector<Element> result;
        for (int n : numbers) result.push_back(element(n));
        return result;
    }
    static void add(ArrayClass& a, std::initializer_list<int> numbers) {
        for (Element e : elements(numbers)) a.append(&e);
    }
    static constexpr unsigned Size = sizeof(Element);
};

template <class ArrayClass>
typename ArrayClass::ElementType TypedArrayOf<ArrayClass>::element(int n) {
    return static_cast<Element>(n);
}
template <>
void* TypedArrayOf<qnVoidPtrArray>::element(int n) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(n));
}

typedef testing::Types<qnBoolArray, qnCharArray, qnUnsignedCharArray, qnShortArray, qnUnsignedShortArray, qnIntArray,
                       qnLongArray, qnUnsignedLongArray, qnFloatArray, qnDoubleArray, qnVoidPtrArray>
    PlainArrays;
TYPED_TEST_SUITE(TypedArrayOf, PlainArrays, );  // clang wants a third argument, however empty

TYPED_TEST(TypedArrayOf, StartsEmptyWithoutABlock) {
    TypeParam a;
    EXPECT_EQ(0u, a.length());
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(nullptr, a.elements());
}

TYPED_TEST(TypedArrayOf, ACountGivesAFullBlock) {
    TypeParam a(5);
    EXPECT_EQ(5u, a.length());
    EXPECT_EQ(5 * this->Size, a.maxBytes);
    EXPECT_EQ(5 * this->Size, a.usedBytes);
    EXPECT_TRUE(requestedWith(a.data, 5 * this->Size));
}

TYPED_TEST(TypedArrayOf, ACountOfZeroGivesNoBlock) {
    TypeParam a(0);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
}

TYPED_TEST(TypedArrayOf, AnswersArrayAsItsName) { EXPECT_STREQ("ARRAY", TypeParam().className()); }

TYPED_TEST(TypedArrayOf, GrowsByFourElements) {
    TypeParam a;
    this->add(a, {1});
    EXPECT_EQ(4 * this->Size, a.maxBytes);
    this->add(a, {2, 3, 4, 5});
    EXPECT_EQ(8 * this->Size, a.maxBytes);
    EXPECT_EQ(this->elements({1, 2, 3, 4, 5}), this->values(a));
}

TYPED_TEST(TypedArrayOf, ACopyIsDeepAndRecordsTheCapacity) {
    TypeParam a;
    this->add(a, {1, 2});
    a.setMaxLength(7);
    TypeParam b(a);
    EXPECT_EQ(7 * this->Size, b.maxBytes);
    EXPECT_EQ(2 * this->Size, b.usedBytes);
    EXPECT_EQ(this->Size, b.elementSize);
    EXPECT_NE(a.data, b.data);
    EXPECT_TRUE(requestedWith(b.data, 2 * this->Size)) << "the block holds the used bytes only";
    EXPECT_EQ(this->elements({1, 2}), this->values(b));
}

TYPED_TEST(TypedArrayOf, ACopyOfAnEmptyArrayRecordsTheCapacityAndHasNoBlock) {
    TypeParam a;
    a.setMaxLength(7);
    TypeParam b(a);
    EXPECT_EQ(7 * this->Size, b.maxBytes);
    EXPECT_EQ(0u, b.usedBytes);
    EXPECT_EQ(nullptr, b.data);
}

TYPED_TEST(TypedArrayOf, AssignmentIsDeepAndRecordsTheCapacity) {
    TypeParam a, b(3);
    this->add(a, {1, 2});
    a.setMaxLength(7);
    b = a;
    EXPECT_EQ(7 * this->Size, b.maxBytes);
    EXPECT_NE(a.data, b.data);
    EXPECT_EQ(this->elements({1, 2}), this->values(b));
    b.elements()[0] = this->element(9 % 2);
    EXPECT_EQ(this->elements({1, 2}), this->values(a));
}

TYPED_TEST(TypedArrayOf, AssignmentOfAnEmptyArrayEmpties) {
    TypeParam a, b(3);
    b = a;
    EXPECT_EQ(0u, b.length());
    EXPECT_EQ(0u, b.maxBytes);
    EXPECT_EQ(nullptr, b.data);
}

TYPED_TEST(TypedArrayOf, AssignmentKeepsTheHolders) {
    TypeParam a, b;
    b.refCount = 2;
    b = a;
    EXPECT_EQ(2u, b.refCount);
}

TYPED_TEST(TypedArrayOf, AdoptsABlock) {
    void* block = std::malloc(2 * this->Size);
    TypeParam a(this->Size, 2 * this->Size, block);
    EXPECT_EQ(block, static_cast<void*>(a.data));
    EXPECT_EQ(2u, a.length());
    EXPECT_EQ(2 * this->Size, a.maxBytes);
}

TYPED_TEST(TypedArrayOf, FactoryFormHasSizesZeroAndItsElementSize) {
    TypeParam a(qnArray_type);
    EXPECT_EQ(nullptr, a.data);
    EXPECT_EQ(0u, a.maxBytes);
    EXPECT_EQ(0u, a.usedBytes);
    EXPECT_EQ(this->Size, a.elementSize);
}

TYPED_TEST(TypedArrayOf, CutTakesTheRunOut) {
    TypeParam a;
    this->add(a, {1, 0, 1, 0, 1});
    TypeParam cut = a.cut(1, 3);
    EXPECT_EQ(this->elements({0, 1, 0}), this->values(cut));
    EXPECT_EQ(3 * this->Size, cut.maxBytes);
    EXPECT_EQ(this->Size, cut.elementSize);
    EXPECT_EQ(this->elements({1, 1}), this->values(a));
    EXPECT_EQ(8 * this->Size, a.maxBytes);
}

TYPED_TEST(TypedArrayOf, CutOfNothingIsEmptyAndLeavesTheSourceAlone) {
    TypeParam a;
    this->add(a, {1, 0});
    TypeParam cut = a.cut(0, 0);
    EXPECT_EQ(nullptr, cut.data);
    EXPECT_EQ(0u, cut.length());
    EXPECT_EQ(0u, cut.maxBytes);
    EXPECT_EQ(this->elements({1, 0}), this->values(a));
}

TYPED_TEST(TypedArrayOf, ExtractHeadAndTailCopy) {
    TypeParam a;
    this->add(a, {1, 2, 3, 4, 5});
    EXPECT_EQ(this->elements({2, 3}), this->values(a.extract(1, 2)));
    EXPECT_EQ(this->elements({1, 2, 3}), this->values(a.head(3)));
    EXPECT_EQ(this->elements({4, 5}), this->values(a.tail(2)));
    EXPECT_EQ(this->elements({1, 2, 3, 4, 5}), this->values(a));
    TypeParam tail = a.tail(2);
    EXPECT_EQ(2 * this->Size, tail.maxBytes) << "no spare capacity";
    EXPECT_TRUE(requestedWith(tail.data, 2 * this->Size));
}

TYPED_TEST(TypedArrayOf, SlicesOfNothingAreEmpty) {
    TypeParam a;
    this->add(a, {1, 2});
    EXPECT_EQ(nullptr, a.extract(1, 0).data);
    EXPECT_EQ(nullptr, a.head(0).data);
    EXPECT_EQ(nullptr, a.tail(0).data);
    EXPECT_EQ(2u, a.length());
}

TYPED_TEST(TypedArrayOf, WholeSlicesOfAnEmptyArrayAreEmpty) {
    TypeParam a;
    EXPECT_EQ(0u, a.extract(0, 0).length());
    EXPECT_EQ(0u, a.cut(0, 0).length());
    EXPECT_EQ(0u, a.head(0).length());
    EXPECT_EQ(0u, a.tail(0).length());
}

TYPED_TEST(TypedArrayOf, FindComparesTheBytesOfTheElement) {
    TypeParam a;
    this->add(a, {0, 1, 0, 1});
    typename TypeParam::ElementType one = this->element(1);
    EXPECT_EQ(1u, a.find(&one, 0));
    EXPECT_EQ(3u, a.find(&one, 2));
}

// Type objects

template <class ArrayClass>
class SerialArrayOf : public testing::Test {};

typedef testing::Types<qnBoolArray, qnCharArray, qnUnsignedCharArray, qnShortArray, qnUnsignedShortArray, qnIntArray,
                       qnLongArray, qnUnsignedLongArray, qnFloatArray, qnDoubleArray, qnStrArray>
    SerialArrays;
TYPED_TEST_SUITE(SerialArrayOf, SerialArrays, );  // clang wants a third argument, however empty

TYPED_TEST(SerialArrayOf, RegistersAsArrayWithAllItsFunctions) {
    const qnTypeObj& type = TypeParam().getTypeObj();
    EXPECT_STREQ("ARRAY", type.name);
    EXPECT_EQ(1u, type.version);
    EXPECT_NE(nullptr, type.newInstance);
    EXPECT_NE(nullptr, type.deleteInstance);
    EXPECT_NE(nullptr, type.xdr);
}

TYPED_TEST(SerialArrayOf, NewInstanceMakesWhatDeleteInstanceDestroys) {
    qnTypeObj& type = TypeParam().getTypeObj();
    TypeParam* made = static_cast<TypeParam*>(type.newInstance(type));
    EXPECT_EQ(0u, made->length());
    EXPECT_EQ(nullptr, made->data);
    EXPECT_EQ(0u, made->refCount);
    EXPECT_EQ(&type, &made->getTypeObj());
    EXPECT_TRUE(typeid(*made) == typeid(TypeParam));
    type.deleteInstance(made);
}

TYPED_TEST(SerialArrayOf, AFactoryMadeArrayCanBeUsedLikeAnyOther) {
    qnTypeObj& type = TypeParam().getTypeObj();
    TypeParam* made = static_cast<TypeParam*>(type.newInstance(type));
    TypeParam two(2);
    made->append(two);
    EXPECT_EQ(2u, made->length());
    type.deleteInstance(made);
}

TYPED_TEST(SerialArrayOf, DeleteInstanceIgnoresNull) { TypeParam::deleteInstance(nullptr); }

TEST(TypedArray, EachClassHasItsOwnTypeObject) {
    EXPECT_EQ(&qnBoolArray_type, &qnBoolArray().getTypeObj());
    EXPECT_EQ(&qnCharArray_type, &qnCharArray().getTypeObj());
    EXPECT_EQ(&qnUnsignedCharArray_type, &qnUnsignedCharArray().getTypeObj());
    EXPECT_EQ(&qnShortArray_type, &qnShortArray().getTypeObj());
    EXPECT_EQ(&qnUnsignedShortArray_type, &qnUnsignedShortArray().getTypeObj());
    EXPECT_EQ(&qnIntArray_type, &qnIntArray().getTypeObj());
    EXPECT_EQ(&qnLongArray_type, &qnLongArray().getTypeObj());
    EXPECT_EQ(&qnUnsignedLongArray_type, &qnUnsignedLongArray().getTypeObj());
    EXPECT_EQ(&qnFloatArray_type, &qnFloatArray().getTypeObj());
    EXPECT_EQ(&qnDoubleArray_type, &qnDoubleArray().getTypeObj());
    EXPECT_EQ(&qnStrArray_type, &qnStrArray().getTypeObj());
}

// Deliberate: eleven classes share the name, and the last one registered answers to it.
TEST(TypedArray, TheNameArrayFindsTheStringArray) { EXPECT_EQ(&qnStrArray_type, qnTypeObj::findType("ARRAY")); }

// Pointers

TEST(TypedArray, APointerArrayOfACountHoldsNullPointers) {
    qnVoidPtrArray a(3);
    EXPECT_THAT(std::vector<void*>(a.elements(), a.elements() + 3), ElementsAre(nullptr, nullptr, nullptr));
}

TEST(TypedArray, APointerArrayThatGrowsByResizeGetsNullPointers) {
    int x = 0;
    void* p = &x;
    qnVoidPtrArray a;
    a.append(&p);
    a.append(&p);
    a.remove(1, 1);
    a.resize(4);
    EXPECT_THAT(std::vector<void*>(a.elements(), a.elements() + 4), ElementsAre(p, nullptr, nullptr, nullptr));
}

TEST(TypedArray, APointerArrayKeepsTheRootsTypeObject) { EXPECT_EQ(&qnArray_type, &qnVoidPtrArray().getTypeObj()); }

TEST(TypedArray, PointersAreFoundByAddressAndNotByWhatTheyPointTo) {
    int x = 1, y = 1;
    void *p = &x, *q = &y;
    qnVoidPtrArray a;
    a.append(&p);
    EXPECT_EQ(0u, a.find(&p, 0));
    EXPECT_EQ(0xFFFFFFFFu, a.find(&q, 0));
}

TEST(TypedArray, SixOperationsCanBeOverriddenInATypedArray) {
    struct Doubling : qnIntArray {
        void expand() override {
            maxBytes = maxBytes == 0 ? elementSize : 2 * maxBytes;
            getmem();
        }
    };
    Doubling a;
    std::vector<unsigned> capacities;
    for (int i = 0; i < 5; ++i) {
        a.append(&i);
        capacities.push_back(a.maxBytes);
    }
    EXPECT_THAT(capacities, ElementsAre(4, 8, 16, 16, 32));
}

}  // namespace TypedArrayTest
