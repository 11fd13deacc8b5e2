// The operations for pointers to arrays that programs may call themselves.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"

namespace PointerOperationsTest {

TEST(PointerOperations, APointerIsReadByItsOwnOperation) {
    Bytes records = Bytes().u8(0x03).u32(3).u32(4).u8(0x45).u8(4).u32(3).u32(4).raw("wxyz").u8(0x04).u32(3).u32(0);
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    char* waiting = nullptr;
    char* known = nullptr;
    ASSERT_TRUE(reader.readPrimPointer(&waiting, 4));
    EXPECT_EQ(1u, reader.pendingItems.length());
    EXPECT_EQ(nullptr, waiting);
    ASSERT_TRUE(reader.fill());
    void* array = nullptr;
    ASSERT_TRUE(reader.readInstance(&array));
    EXPECT_EQ(array, reader.alreadyRead(3));
    EXPECT_EQ("wxyz", std::string(static_cast<char*>(array), 4));
    ASSERT_TRUE(reader.readPrimPointer(&known, 4));
    EXPECT_EQ(array, known);
    EXPECT_FALSE(reader.readPrimPointer(&known, 4)) << "the input has ended";
    EXPECT_EQ(array, known);
    std::free(array);
}

TEST(PointerOperations, APointerIsWrittenByItsOwnOperation) {
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    char bytes[] = "abcd";
    EXPECT_TRUE(writer.writePrimPointer(nullptr, 4, qnBOT_Bytes));
    EXPECT_EQ(1u, writer.pendingKind);
    EXPECT_TRUE(writer.writePrimPointer(bytes, 4, qnBOT_Floats));
    EXPECT_EQ(3u, writer.pendingKind);
    EXPECT_EQ(1u, writer.pendingId);
    EXPECT_EQ(4u, writer.pendingByteCount);
    ASSERT_EQ(1u, writer.pendingItems.length());
    EXPECT_TRUE(writer.writePrimPointer(bytes, 4, qnBOT_Floats));
    EXPECT_EQ(0u, writer.pendingKind) << "an old pointer is written at once";
    EXPECT_EQ(hex(Bytes().u8(0x01).u8(0x03).u32(1).u32(4).u8(0x04).u32(1).str()), hex(stream.output));
    qnBinaryWriterItem* item = writer.pop();
    EXPECT_EQ(1u, item->kind);
    EXPECT_EQ(bytes, item->address);
    EXPECT_EQ(4u, item->byteLength);
    EXPECT_EQ(qnBOT_Floats, item->tag);
    delete item;
}

}  // namespace PointerOperationsTest
