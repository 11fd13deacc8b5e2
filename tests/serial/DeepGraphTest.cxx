// A list of a million objects, each of which points to the next: neither direction recurses along it.
#include <gtest/gtest.h>

#include <memory>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "Fatal.h"
#include "XDRObj.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/SanitizedHeap.h"

namespace DeepGraphTest {

/** Sanitized frames are so large that recursion would run out of stack after far fewer. */
const unsigned Depth = heapIsSanitized ? 100000 : 1000000;

class Link : public qnXDRObj {
public:
    Link() {}
    explicit Link(qnTypeObj& type) : qnXDRObj(type) {}
    bool xdr(qnTranscriber& t) override { return t.xdr(&number, 1) && t.xdr(&next, next, getTypeObj()); }
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type) { return new Link(type); }
    static void deleteInstance(void* object) { delete static_cast<Link*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Link*>(object)->Link::xdr(t); }
    unsigned number = 0;
    Link* next = nullptr;
};
qnTypeObj Link_type("Link", 1, Link::newInstance, Link::deleteInstance, Link::xdr);
qnTypeObj& Link::getTypeObj() const { return Link_type; }

TEST(DeepGraph, AMillionObjectsInARowAreWritten) {
    std::unique_ptr<Link[]> links(new Link[Depth]);
    for (unsigned i = 0; i < Depth; ++i) {
        links[i].number = i;
        if (i + 1 < Depth) links[i].next = &links[i + 1];
    }
    MemoryStream stream;
    qnRetain(&stream);
    qnBinaryWriter writer(&stream);
    ASSERT_TRUE(writer.writeObject(&links[0], &links[0]));
    EXPECT_EQ(Depth + 2, writer.nextId);
    // Each instance has 18 bytes, and its pointer 5; the last one's is null.
    EXPECT_EQ(Bytes::type(2, "Link").str().size() + 23ul * Depth - 4, stream.output.size());
    Bytes last = Bytes().u8(0x4A).u8(4).u32(Depth + 1).u32(2).u32(1).u32(Depth - 1).u8(0x01);
    EXPECT_EQ(hex(last.str()), hex(stream.output.substr(stream.output.size() - last.str().size())));
}

TEST(DeepGraph, AMillionObjectsInARowAreRead) {
    Bytes records = Bytes::type(2, "Link").u8(0x4A).u8(4).u32(1).u32(2).u32(1).u32(0);
    for (unsigned i = 1; i < Depth; ++i) {
        records.u8(0x0B).u32(i + 2).u32(0).u8(0x4A).u8(4).u32(i + 2).u32(2).u32(1).u32(i);
    }
    records.u8(0x01);
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    Link* link = static_cast<Link*>(reader.readObject(Link_type));
    unsigned count = 0;
    while (link != nullptr) {
        ASSERT_EQ(count++, link->number);
        Link* next = link->next;
        delete link;
        link = next;
    }
    EXPECT_EQ(Depth, count);
}

TEST(DeepGraph, AMillionPointersThatWaitAreCompleted) {
    // All are met before the first object arrives, and the objects arrive in the order of the queue.
    class Fan : public qnXDRObj {
    public:
        explicit Fan(qnTypeObj& type) : qnXDRObj(type), links(new Link*[Depth]()) {}
        ~Fan() override {
            for (unsigned i = 0; i < Depth; ++i) delete links[i];
        }
        bool xdr(qnTranscriber& t) override {
            for (unsigned i = 0; i < Depth; ++i) {
                if (!t.xdr(&links[i], links[i], Link_type)) return false;
            }
            return true;
        }
        qnTypeObj& getTypeObj() const override { qnFatal("not written"); }
        std::unique_ptr<Link*[]> links;
    };
    static qnTypeObj type(
        "Fan", 1, [](qnTypeObj& own) -> void* { return new Fan(own); }, nullptr,
        [](void* object, qnTranscriber& t) { return static_cast<Fan*>(object)->Fan::xdr(t); });
    Bytes records = Bytes::type(2, "Link") + Bytes::type(3, "Fan").u8(0x0A).u32(1).u32(3).u32(1);
    for (unsigned i = 0; i < Depth; ++i) records.u8(0x0B).u32(i + 4).u32(0);
    for (unsigned i = Depth; i > 0; --i) records.u8(0x4A).u8(4).u32(i + 3).u32(2).u32(1).u32(i - 1).u8(0x01);
    qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
    std::unique_ptr<Fan> fan(static_cast<Fan*>(reader.readObject(type)));
    ASSERT_NE(nullptr, fan);
    for (unsigned i = 0; i < Depth; ++i) ASSERT_EQ(i, fan->links[i]->number);
}

}  // namespace DeepGraphTest
