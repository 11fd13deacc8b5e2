// The binary writer: the queue of objects and arrays, and the records that hold them.
#include "BinaryWriter.h"

#include <cstring>

#include "Checked.h"
#include "Str.h"
#include "XDRObj.h"
#include "core/Heap.h"
#include "serial/Units.h"

namespace {

constexpr unsigned ObjectItem = 0;
constexpr unsigned ArrayItem = 1;

qnBinaryWriterItem* newObjectItem(void* address, qnTypeObj& type) {
    qnBinaryWriterItem* item = heap::create<qnBinaryWriterItem>("qnBinaryWriter::xdr");
    item->kind = ObjectItem;
    item->address = address;
    item->type = &type;
    return item;
}

qnBinaryWriterItem* newArrayItem(void* address, unsigned byteLength, qnBinaryOTTag tag,
                                 qnBinaryWriterItem::Elements elements) {
    qnBinaryWriterItem* item = heap::create<qnBinaryWriterItem>("qnBinaryWriter::xdr");
    item->kind = ArrayItem;
    item->address = address;
    item->byteLength = byteLength;
    item->tag = tag;
    item->elements = elements;
    return item;
}

}  // namespace

qnBinaryWriter::qnBinaryWriter(qnStream* newStream) : nextId(1), renumbered_(false) {
    setStream(newStream);
    reading = 0;
    qnBinaryOTDict::Word nowhere = 0;
    objectTable.addInternal(&nowhere, &nowhere);
}

qnBinaryWriter::~qnBinaryWriter() {
    while (pendingItems.length() != 0) delete pop();
}

const char* qnBinaryWriter::className() const { return "qnBinaryWriter"; }

void qnBinaryWriter::reset() {
    objectTable.removeAll();
    while (pendingItems.length() != 0) delete pop();
    pendingItems.resize(0);
    renumbered_ = false;
    bufferNext = buffer;
    bufferCount = 0;
    pendingKind = qnBRK_Data;
}

void* qnBinaryWriter::readObject(qnTypeObj&) { qnFatal("tried to invoke qnBinaryWriter::readObject"); }

// Identity

unsigned qnBinaryWriter::alreadyWritten(void* address) const {
    qnBinaryOTDict::Word key = reinterpret_cast<qnBinaryOTDict::Word>(address);
    const void* id = objectTable.find(&key, nullptr);
    return id == nullptr ? 0 : static_cast<unsigned>(*static_cast<const qnBinaryOTDict::Word*>(id));
}

unsigned qnBinaryWriter::recordIdForAddress(void* address) {
    qnBinaryOTDict::Word key = reinterpret_cast<qnBinaryOTDict::Word>(address);
    qnBinaryOTDict::Word id = nextId++;
    qnBinaryOTDict::Word* entered = static_cast<qnBinaryOTDict::Word*>(objectTable.findCreate(&key));
    if (*entered != 0) renumbered_ = true;
    *entered = id;
    return static_cast<unsigned>(id);
}

unsigned qnBinaryWriter::queue(qnBinaryWriterItem* item) {
    appendPending(item);
    item->id = recordIdForAddress(item->address);
    return item->id;
}

qnBinaryWriterItem* qnBinaryWriter::pop() {
    unsigned last = pendingItems.length() - 1;
    MORVAQNDS_REQUIRE(pendingItems.length() != 0, "qnBinaryWriter::pop: nothing is queued");
    void* item = pendingItems.elements()[last];
    pendingItems.remove(last, 1);
    return static_cast<qnBinaryWriterItem*>(item);
}

// Graphs

bool qnBinaryWriter::writeObject(void* object, qnXDRObj* asXDRObj) {
    MORVAQNDS_REQUIRE(object != nullptr && asXDRObj != nullptr, "qnBinaryWriter::writeObject: the root is null");
    queue(newObjectItem(object, asXDRObj->getTypeObj()));
    while (pendingItems.length() != 0) {
        qnBinaryWriterItem* item = pop();
        bool written = writeItem(*item);
        delete item;
        if (!written || !flush()) return false;
    }
    return true;
}

bool qnBinaryWriter::writeItem(qnBinaryWriterItem& item) {
    // Written as a root while it waits, it has another id than it was queued with.
    item.id = idOf(item);
    if (item.kind == ArrayItem) return writeArray(item);
    unsigned long typeId;
    if (!writeType(*item.type, &typeId)) return false;
    // Deliberate: the version is that of the type introduced last, whatever the object's own is.
    pendingKind = qnBRK_Instance;
    pendingId = item.id;
    pendingTypeId = static_cast<unsigned>(typeId);
    return item.type->xdr(item.address, *this);
}

bool qnBinaryWriter::writeArray(qnBinaryWriterItem& item) {
    pendingKind = item.tag;
    pendingId = item.id;
    pendingByteCount = item.byteLength;
    switch (item.elements) {
        case qnBinaryWriterItem::Longs: return writeLongs(static_cast<const long*>(item.address), item.byteLength / 4);
        case qnBinaryWriterItem::UnsignedLongs:
            return writeLongs(static_cast<const unsigned long*>(item.address), item.byteLength / 4);
        default: return writeBytes(static_cast<const char*>(item.address), item.byteLength);
    }
}

bool qnBinaryWriter::writeType(qnTypeObj& type, unsigned long* id) {
    unsigned known = alreadyWritten(&type);
    if (known != 0) {
        *id = known;
        return true;
    }
    unsigned newId = recordIdForAddress(&type);
    pendingKind = qnBRK_Type;
    pendingTypeId = newId;
    pendingVersion = type.version;
    pendingTypeName = type.name;
    if (!flush()) return false;
    *id = newId;
    return true;
}

// Pointers

bool qnBinaryWriter::writeNullPointer() {
    if (!flush()) return false;
    pendingKind = qnBRK_Null;
    return true;
}

bool qnBinaryWriter::writePrimPointer(void* array, unsigned byteLength, qnBinaryOTTag tag) {
    return writePointer(array, byteLength, 1, tag, qnBinaryWriterItem::Plain);
}

bool qnBinaryWriter::writePointer(void* array, unsigned count, unsigned elementBytes, qnBinaryOTTag tag,
                                  qnBinaryWriterItem::Elements elements) {
    if (array == nullptr) return writeNullPointer();
    if (!flush()) return false;
    unsigned known = alreadyWritten(array);
    if (known != 0) {
        pendingKind = qnBRK_OldArray;
        pendingId = known;
        return flush();
    }
    unsigned byteLength = heap::checkedSize(std::uint64_t(count) * elementBytes, "qnBinaryWriter::xdr");
    pendingId = queue(newArrayItem(array, byteLength, tag, elements));
    pendingKind = qnBRK_NewArray;
    pendingByteCount = byteLength;
    return true;
}

bool qnBinaryWriter::xdr(void* pointerVariable, qnXDRObj* object, qnTypeObj&) {
    void* pointee;
    std::memcpy(&pointee, pointerVariable, sizeof pointee);
    if (pointee == nullptr) return writeNullPointer();
    MORVAQNDS_REQUIRE(object != nullptr, "qnBinaryWriter::xdr: the pointer %p comes without its object", pointee);
    if (!flush()) return false;
    qnTypeObj& type = object->getTypeObj();
    unsigned long typeId;
    if (!writeType(type, &typeId)) return false;
    unsigned known = alreadyWritten(pointee);
    if (known == 0) {
        pendingId = queue(newObjectItem(pointee, type));
        pendingKind = qnBRK_NewObject;
    } else {
        pendingId = known;
        pendingKind = qnBRK_OldObject;
    }
    return true;
}

bool qnBinaryWriter::xdr(qnTypeObj& baseType, void* object, void* base) {
    if (base == object) return true;
    if (!flush()) return false;
    unsigned known = alreadyWritten(base);
    if (known != 0) {
        pendingKind = qnBRK_OldBase;
        pendingId = known;
        return true;
    }
    pendingId = recordIdForAddress(base);
    pendingKind = qnBRK_NewBase;
    return baseType.xdr(base, *this);
}
