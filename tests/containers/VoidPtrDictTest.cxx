#include <gtest/gtest.h>

#include <cstdlib>

#include "BinaryWriter.h"
#include "Str.h"
#include "VoidPtrDict.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"

namespace VoidPtrDictTest {

void put(qnVoidPtrDict& d, const char* key, void* value) {
    qnStr k(key);
    d.addInternal(&k, &value);
}

/** The pointer under a key; fails the test when there is none. */
void* get(const qnVoidPtrDict& d, const char* key) {
    qnStr k(key);
    void* record = d.find(&k, nullptr);
    EXPECT_NE(record, nullptr) << key;
    return record == nullptr ? nullptr : *static_cast<void**>(record);
}

TEST(VoidPtrDict, HasAStringAndAPointerPerEntryAnd31Buckets) {
    qnVoidPtrDict d, sized(100);
    EXPECT_EQ(d.keySize, sizeof(qnStr));
    EXPECT_EQ(d.valueSize, sizeof(void*));
    EXPECT_EQ(d.buckets.length(), 31u);
    EXPECT_EQ(sized.buckets.length(), 100u);
#if UINTPTR_MAX == 0xFFFFFFFF
    EXPECT_EQ(d.keySize, 8u);
    EXPECT_EQ(d.valueSize, 4u);
#endif
}

TEST(VoidPtrDict, IsCalledDictAndHasTheTypeObjectOfItsBase) {
    qnVoidPtrDict d;
    EXPECT_STREQ(d.className(), "DICT");
    EXPECT_EQ(&d.getTypeObj(), &qnDictionary_type);
}

TEST(VoidPtrDict, MapsTextsToPointersThatItDoesNotOwn) {
    qnVoidPtrDict d;
    int a, b;
    put(d, "a", &a);
    put(d, "b", &b);
    put(d, "null", nullptr);
    EXPECT_EQ(get(d, "a"), &a);
    EXPECT_EQ(get(d, "b"), &b);
    EXPECT_EQ(get(d, "null"), nullptr);
    put(d, "a", &b);
    EXPECT_EQ(get(d, "a"), &b);
    EXPECT_EQ(d.count, 3u);
}

TEST(VoidPtrDict, FindCreateStoresNull) {
    qnVoidPtrDict d;
    qnStr key("new");
    void** slot = static_cast<void**>(d.findCreate(&key));
    EXPECT_EQ(*slot, nullptr);
    *slot = &d;
    EXPECT_EQ(d.findCreate(&key), slot);
    EXPECT_EQ(get(d, "new"), &d);
}

TEST(VoidPtrDict, EveryBitOfAPointerIsKept) {
    qnVoidPtrDict d;
    void* high = reinterpret_cast<void*>(~std::uintptr_t(0) - 6);
    put(d, "high", high);
    EXPECT_EQ(get(d, "high"), high);
    qnVoidPtrDict copy(d);
    EXPECT_EQ(get(copy, "high"), high);
}

TEST(VoidPtrDict, AddingAnEntrysOwnValueLeavesIt) {
    qnVoidPtrDict d;
    put(d, "a", &d);
    qnStr key("a");
    d.addInternal(&key, d.find(&key, nullptr));
    EXPECT_EQ(get(d, "a"), &d);
}

TEST(VoidPtrDict, CutGivesTheWordInABlock) {
    qnVoidPtrDict d;
    put(d, "a", &d);
    qnStr key("a");
    void** word = static_cast<void**>(d.cut(&key));
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(*word, &d);
    std::free(word);
    EXPECT_EQ(d.count, 0u);
}

TEST(VoidPtrDict, CopyAndMergeCopyTheWords) {
    qnVoidPtrDict source(7), target;
    int a, b, c;
    put(source, "a", &a);
    put(source, "b", &b);
    put(target, "a", &c);
    put(target, "c", &c);
    qnVoidPtrDict copy(source);
    EXPECT_EQ(copy.buckets.length(), 7u);
    EXPECT_EQ(copy.count, 2u);
    EXPECT_EQ(get(copy, "b"), &b);
    target = source;
    EXPECT_EQ(target.count, 3u);
    EXPECT_EQ(get(target, "a"), &a);
    EXPECT_EQ(get(target, "c"), &c);
}

// Deliberate: untyped pointers mean nothing to another process.
TEST(VoidPtrDict, RecordsAreNotTranscribed) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    qnVoidPtrDict d;
    qnStr key("a");
    void* value = &d;
    EXPECT_FALSE(d.xdrKey(writer, &key));
    EXPECT_FALSE(d.xdrValue(writer, &value));
    EXPECT_TRUE(writer.flush());
    EXPECT_EQ(stream.output, "");
}

TEST(VoidPtrDict, WritesNothingBeyondItsRootPart) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    qnVoidPtrDict d;
    qnStr key("a");
    d.findCreate(&key);
    ASSERT_TRUE(writer.writeObject(&d, &d));
    Bytes expected = Bytes::type(2, "qnDictionary").u8(0x0A).u32(1).u32(2).u32(1);
    EXPECT_EQ(hex(stream.output), hex(expected.str()));
}

TEST(VoidPtrDict, WritingItsEntriesStopsAtTheFirstKey) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    qnVoidPtrDict d;
    EXPECT_TRUE(d.doxdr(writer)) << "without entries there is nothing to refuse";
    qnStr key("a");
    d.findCreate(&key);
    EXPECT_FALSE(d.doxdr(writer));
}

TEST(VoidPtrDict, DestructorDetachesItsIterators) {
    qnVoidPtrDictIter it;
    {
        qnVoidPtrDict d;
        put(d, "a", &d);
        it = d;
        EXPECT_EQ(*static_cast<void**>(it.getValue()), &d);
    }
    EXPECT_EQ(it.dict, nullptr);
    EXPECT_EQ(it.getValue(), nullptr);
}

}  // namespace VoidPtrDictTest
