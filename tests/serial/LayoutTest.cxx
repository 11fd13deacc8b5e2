// The fields of streams and transcribers stand in their order, and operations have their results.
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Array.h"
#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "GlobalOrder.h"
#include "OrderedGlobal.h"
#include "Str.h"
#include "XDRObj.h"
#include "support/MemoryStream.h"

namespace LayoutTest {

static_assert(std::is_same<decltype(qnStdioStream::error), qnBool>::value, "one byte");
static_assert(std::is_same<decltype(qnStdioStream::eof), qnBool>::value, "one byte");
static_assert(std::is_same<decltype(qnTranscriber::reading), qnBool>::value, "one byte");
static_assert(sizeof(qnBool) == 1, "one byte");
static_assert(std::is_base_of<qnRCObj, qnStream>::value && std::is_base_of<qnRCObj, qnTranscriber>::value, "");
#ifdef __i386__
static_assert(sizeof(qnStream) == 8, "a stream adds no field to the root");
static_assert(sizeof(qnStdioStream) == 20, "the root, the file, the direction and two flags");
#endif

template <class Object, class Field>
std::ptrdiff_t place(const Object& object, const Field& field) {
    return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&object);
}

TEST(StreamLayout, FieldsFollowTheCountInTheirOrder) {
    qnStdioStream stream("/dev/null", qnStream::Read, 0);
    const std::ptrdiff_t word = sizeof(void*);
    EXPECT_EQ(word, place(stream, stream.refCount));
    EXPECT_EQ(2 * word, place(stream, stream.file));
    EXPECT_EQ(3 * word, place(stream, stream.type));
    EXPECT_EQ(3 * word + 4, place(stream, stream.error));
    EXPECT_EQ(3 * word + 5, place(stream, stream.eof));
    EXPECT_EQ(0, stream.eof);
}

TEST(TranscriberLayout, FieldsFollowTheCountInTheirOrder) {
    qnBinaryWriter writer(new MemoryStream);
    const qnTranscriber& base = writer;
    const std::ptrdiff_t word = sizeof(void*);
    EXPECT_EQ(word, place(base, base.refCount));
    EXPECT_EQ(word + 4, place(base, base.reading));
    EXPECT_EQ(word == 4 ? 12 : 16, place(base, base.stream));
}

TEST(TranscriberLayout, TheBinaryOnesHaveTheirFieldsInOrder) {
    qnBinaryWriter writer(new MemoryStream);
    const qnBinaryTranscriber& base = writer;
    const std::ptrdiff_t word = sizeof(void*);
    static_assert(sizeof base.buffer == 512, "");
    const std::ptrdiff_t buffer = place(base, base.buffer);
    EXPECT_EQ(buffer + 512, place(base, base.bufferNext));
    EXPECT_EQ(buffer + 512 + word, place(base, base.bufferSize));
    EXPECT_EQ(buffer + 516 + word, place(base, base.bufferCount));
    EXPECT_EQ(buffer + 520 + word, place(base, base.objectTable));
    const std::ptrdiff_t kind = place(base, base.pendingKind);
    EXPECT_EQ(buffer + 520 + word + static_cast<std::ptrdiff_t>(sizeof(qnBinaryOTDict)), kind);
    EXPECT_EQ(kind + 4, place(base, base.pendingId));
    EXPECT_EQ(kind + 8, place(base, base.pendingTypeId));
    EXPECT_EQ(kind + 12, place(base, base.pendingVersion));
    EXPECT_EQ(kind + 16, place(base, base.pendingByteCount));
    EXPECT_LT(kind + 16, place(base, base.pendingTypeName));
    EXPECT_EQ(place(base, base.pendingTypeName) + word, place(base, base.pendingItems));
}

TEST(TranscriberLayout, TheTagsOfArraysAreTheKindsOfTheirRecords) {
    EXPECT_EQ(5u, static_cast<unsigned>(qnBOT_Bytes));
    EXPECT_EQ(6u, static_cast<unsigned>(qnBOT_Shorts));
    EXPECT_EQ(7u, static_cast<unsigned>(qnBOT_Longs));
    EXPECT_EQ(8u, static_cast<unsigned>(qnBOT_Floats));
    EXPECT_EQ(9u, static_cast<unsigned>(qnBOT_Doubles));
}

TEST(TranscriberLayout, ItemsStartWithTheirStatedWords) {
    qnBinaryWriterItem written = {};
    EXPECT_EQ(0, place(written, written.kind));
    EXPECT_EQ(static_cast<std::ptrdiff_t>(sizeof(void*)), place(written, written.address));
    EXPECT_EQ(static_cast<std::ptrdiff_t>(2 * sizeof(void*)), place(written, written.type));
    EXPECT_EQ(static_cast<std::ptrdiff_t>(2 * sizeof(void*)), place(written, written.byteLength));
    EXPECT_EQ(static_cast<std::ptrdiff_t>(3 * sizeof(void*)), place(written, written.tag));
    qnBinaryReaderItem awaited(nullptr, 7);
    EXPECT_EQ(0, place(awaited, awaited.address));
    EXPECT_EQ(static_cast<std::ptrdiff_t>(sizeof(void*)), place(awaited, awaited.id));
}

// The words "qnBool" and "bool" are different results: programs override with the one that is declared.
static_assert(std::is_same<decltype(std::declval<qnXDRObj&>().xdr(std::declval<qnTranscriber&>())), bool>::value, "");
static_assert(std::is_same<decltype(std::declval<qnStream&>().hasError()), bool>::value, "");
static_assert(std::is_same<decltype(std::declval<qnGlobalOrder&>().sort()), bool>::value, "");
static_assert(
    std::is_same<decltype(&qnOrderedGlobal::dependsOn), bool (qnOrderedGlobal::*)(const qnOrderedGlobal&) const>::value,
    "");
static_assert(std::is_same<decltype(quickFind('a', "a", 1)), bool>::value, "");
static_assert(std::is_same<decltype(std::declval<qnArray&>().createElements(nullptr, 0)), void>::value, "");
static_assert(std::is_same<decltype(std::declval<qnArray&>().destroyElements(nullptr, 0)), void>::value, "");
static_assert(std::is_same<decltype(std::declval<qnArray&>().copyElements(nullptr, nullptr, 0)), void>::value, "");
static_assert(std::is_same<decltype(std::declval<qnArray&>().compareElements(nullptr, nullptr)), int>::value, "");

}  // namespace LayoutTest
