// The binary reader: graphs, instances and pointers.
#include "BinaryReader.h"

#include <cstddef>
#include <cstring>

#include "Checked.h"
#include "StackBuffer.h"
#include "Str.h"
#include "XDRObj.h"
#include "core/Heap.h"
#include "serial/BinaryReaderState.h"
#include "serial/Units.h"

namespace {

/** Where the string with this `data` member has its length. */
void* lengthOf(void* data) { return static_cast<char*>(data) - offsetof(qnStr, data) + offsetof(qnStr, slength); }

/** The bytes that the string has now; it may have been read again since it began to wait. */
unsigned textLength(void* data) {
    unsigned length;
    std::memcpy(&length, lengthOf(data), sizeof length);
    return length;
}

void setTextLength(void* data, unsigned length) { std::memcpy(lengthOf(data), &length, sizeof length); }

/** Whether something of `sort` may be the target of an object pointer. */
bool isObject(qnBinaryReader::State::Sort sort) {
    // A base part is an object too: pointers to it were written under its id.
    return sort == qnBinaryReader::State::Object || sort == qnBinaryReader::State::Base;
}

}  // namespace

qnBinaryReaderItem::qnBinaryReaderItem(void* pointerVariable, unsigned waitsFor)
    : address(pointerVariable), id(waitsFor), use_(qnBinaryReader::State::AnyUse), byteLength_(0) {}

qnBinaryReader::qnBinaryReader(qnStream* newStream, short shortMark, long longMark, const char* floatFormat)
    : shortsReader(nullptr), longsReader(nullptr), floatsReader(nullptr), doublesReader(nullptr), state_(nullptr) {
    setStream(newStream);
    reading = 1;
    unsigned mark = static_cast<unsigned>(longMark);
    switch (static_cast<unsigned short>(shortMark)) {
        case 0x1122: shortsReader = qnBinaryReader_shorts; break;
        case 0x2211: shortsReader = qnBinaryReader_BS; break;
        // Deliberate: the mark that is printed is the one for longs, which tells more about the machine.
        default: qnFatal("qnBinaryReader: unknown short ordering %x", mark);
    }
    switch (longMark) {
        case 0x33445566: longsReader = qnBinaryReader_longs; break;
        case 0x44336655: longsReader = qnBinaryReader_BS; break;
        case 0x55663344: longsReader = qnBinaryReader_longsSS; break;
        case 0x66554433: longsReader = qnBinaryReader_longsBSSS; break;
        default: qnFatal("qnBinaryReader: unknown long ordering %x", mark);
    }
    if (floatFormat == nullptr || std::strcmp(floatFormat, "ieee") != 0) {
        qnFatal("qnBinaryReader: unsupported floating point format %s", floatFormat == nullptr ? "" : floatFormat);
    }
    // Deliberate: floating-point values are copied, whatever the marks say.
    floatsReader = qnBinaryReader_floats;
    doublesReader = qnBinaryReader_doubles;
    objectTable.expectIds();
    state_ = heap::create<State>("qnBinaryReader::qnBinaryReader", *this);
}

qnBinaryReader::~qnBinaryReader() {
    while (pendingItems.length() != 0) delete pop();
    delete state_;
}

const char* qnBinaryReader::className() const { return "qnBinaryReader"; }

void qnBinaryReader::reset() {
    state_->giveUpTexts();
    objectTable.removeAll();
    while (pendingItems.length() != 0) delete pop();
    pendingItems.resize(0);
    state_->forget();
}

bool qnBinaryReader::writeObject(void*, qnXDRObj*) { qnFatal("tried to invoke qnBinaryReader::writeObject"); }

void* qnBinaryReader::alreadyRead(unsigned long id) const {
    qnBinaryOTDict::Word key = id;
    const void* address = objectTable.find(&key, nullptr);
    return address == nullptr ? nullptr : reinterpret_cast<void*>(*static_cast<const qnBinaryOTDict::Word*>(address));
}

void qnBinaryReader::queue(qnBinaryReaderItem* item) { appendPending(item); }

qnBinaryReaderItem* qnBinaryReader::pop() {
    unsigned last = pendingItems.length() - 1;
    MORVAQNDS_REQUIRE(pendingItems.length() != 0, "qnBinaryReader::pop: nothing is queued");
    void* item = pendingItems.elements()[last];
    pendingItems.remove(last, 1);
    return static_cast<qnBinaryReaderItem*>(item);
}

// Graphs

void* qnBinaryReader::readObject(qnTypeObj&) {
    unsigned outer = state_->startGraph();
    void* root;
    bool whole = fill() && readInstance(&root) && readPending();
    if (!whole) state_->giveUpTexts();
    state_->endGraph(outer);
    return whole ? root : nullptr;
}

/** Reads what is waited for, and completes the variables that wait. */
bool qnBinaryReader::readPending() {
    while (pendingItems.length() != 0) {
        qnBinaryReaderItem* item = pop();
        if (unsigned left = pendingItems.length()) {
            unsigned nextId = static_cast<qnBinaryReaderItem*>(pendingItems.elements()[left - 1])->id;
            objectTable.expect(nextId);
            state_->expect(nextId);
        }
        void* arrived;
        while ((arrived = alreadyRead(item->id)) == nullptr) {
            void* instance;
            if (!fill() || !readInstance(&instance)) {
                state_->giveUpText(*item);
                delete item;
                return false;
            }
        }
        state_->store(*item, arrived);
        delete item;
    }
    return true;
}

bool qnBinaryReader::readInstance(void** result) {
    while (pendingKind == qnBRK_Type) {
        if (!fill()) return false;
    }
    if (pendingKind >= qnBOT_Bytes && pendingKind <= qnBOT_Doubles) return state_->readArray(result);
    if (pendingKind != qnBRK_Instance) qnFatal("XXX baddest news");

    qnTypeObj* type = state_->typeOf(pendingTypeId);
    if (type == nullptr) qnFatal("XXX baddest news");
    if (type->version != pendingVersion) qnFatal("XXX version error handling is missing");
    bool canBeMade = type->newInstance != nullptr && type->xdr != nullptr;
    void* object = canBeMade ? type->newInstance(*type) : nullptr;
    if (object == nullptr) qnFatal("XXX baddest news");
    state_->enter(pendingId, object, State::Object, 0);
    if (!type->xdr(object, *this)) qnFatal("XXX error handling is missing");
    *result = object;
    return true;
}

// Pointers

bool qnBinaryReader::readPrimPointer(void* pointerVariable, unsigned byteLength) {
    return state_->readArrayPointer(pointerVariable, State::ArrayUse, byteLength);
}

bool qnBinaryReader::xdr(void* pointerVariable, qnXDRObj*, qnTypeObj&) {
    if (!fill()) return false;
    switch (pendingKind) {
        case qnBRK_Null: {
            void* null = nullptr;
            std::memcpy(pointerVariable, &null, sizeof null);
            return true;
        }
        case qnBRK_NewObject:
        case qnBRK_OldObject: {
            qnBinaryReaderItem item(pointerVariable, pendingId);
            item.use_ = State::ObjectUse;
            if (pendingKind == qnBRK_NewObject) {
                queue(heap::create<qnBinaryReaderItem>("qnBinaryReader::xdr", item));
            } else {
                state_->storeOrQueue(item);
            }
            return true;
        }
        default: qnFatal("XXX bad news!");
    }
}

bool qnBinaryReader::xdr(qnTypeObj& baseType, void* object, void* base) {
    if (base == object) return true;
    if (!fill()) return false;
    switch (pendingKind) {
        case qnBRK_NewBase:
            if (alreadyRead(pendingId) != nullptr) qnFatal("XXX new base for old base");
            state_->enterBase(pendingId, base);
            return baseType.xdr(base, *this);
        case qnBRK_OldBase:
            if (alreadyRead(pendingId) == nullptr) qnFatal("XXX old base previously unseen");
            return true;
        default: qnFatal("XXX bad news!");
    }
}

// What has arrived

bool qnBinaryReader::State::readArrayPointer(void* pointerVariable, Use use, unsigned byteLength) {
    if (use == ArrayUse && textExpected_) use = TextUse;
    textExpected_ = false;
    if (!reader_.fill()) return false;
    qnBinaryReaderItem item(pointerVariable, reader_.pendingId);
    item.use_ = static_cast<unsigned char>(use);
    item.byteLength_ = byteLength;
    // Deliberate: a null pointer is no kind that is expected here.
    if (reader_.pendingKind == qnBRK_NewArray) {
        enqueue(item);
    } else if (reader_.pendingKind == qnBRK_OldArray) {
        storeOrQueue(item);
    } else {
        qnFatal("format error");
    }
    return true;
}

void qnBinaryReader::State::storeOrQueue(qnBinaryReaderItem& item) {
    if (void* arrived = reader_.alreadyRead(item.id)) {
        store(item, arrived);
    } else {
        enqueue(item);
    }
}

void qnBinaryReader::State::enqueue(const qnBinaryReaderItem& item) {
    if (item.use_ != ObjectUse) {
        Info& info = infos_[item.id];
        Width width = widthOf(item.use_);
        if (info.sort == Unknown) info.sort = Awaited;
        if (info.sort != Array) {
            if (!agree(info.wanted, width)) qnFatal("format error");
            info.wanted = width;
        }
    }
    qnBinaryReaderItem* waits = heap::create<qnBinaryReaderItem>("qnBinaryReader::xdr", item);
    // Outside of a graph nothing else comes: the string may be gone when the reader is.
    if (graph_ == 0) giveUpText(*waits);
    reader_.queue(waits);
}

qnBinaryReader::State::Info& qnBinaryReader::State::enter(unsigned id, void* address, Sort sort, unsigned byteLength) {
    qnBinaryOTDict::Word key = id;
    qnBinaryOTDict::Word value = reinterpret_cast<qnBinaryOTDict::Word>(address);
    reader_.objectTable.addInternal(&key, &value);
    Info& info = infos_[id];
    info.sort = sort;
    info.byteLength = byteLength;
    info.width = Unclaimed;
    info.owner = Nobody;
    info.graph = graph_;
    return info;
}

void qnBinaryReader::State::enterBase(unsigned id, void* base) {
    // Read twice, under two ids, its counts would be those of the one time and its pointers those of the other.
    if (graph_ != 0) {
        BaseRead& last = bases_[reinterpret_cast<std::uintptr_t>(base)];
        if (last.graph == graph_) qnFatal("XXX new base for old base");
        last.graph = graph_;
    }
    enter(id, base, Base, 0);
}

qnTypeObj* qnBinaryReader::State::typeOf(unsigned id) const {
    const Info* info = infos_.find(id);
    return info != nullptr && info->sort == Type ? static_cast<qnTypeObj*>(reader_.alreadyRead(id)) : nullptr;
}

void qnBinaryReader::State::giveUpText(qnBinaryReaderItem& item) {
    if (item.use_ != TextUse) return;
    item.use_ = GivenUpTextUse;
    setTextLength(item.address, 1);
}

void qnBinaryReader::State::giveUpTexts() {
    qnVoidPtrArray& items = reader_.pendingItems;
    for (unsigned i = 0; i < items.length(); ++i) giveUpText(*static_cast<qnBinaryReaderItem*>(items.elements()[i]));
}

void qnBinaryReader::State::store(qnBinaryReaderItem& item, void* arrived) {
    if (item.use_ == GivenUpTextUse) {
        item.use_ = TextUse;
        setTextLength(item.address, item.byteLength_);
    }
    Info* info = infos_.find(item.id);
    bool anyArray = item.use_ == AnyUse && info != nullptr && info->sort == Array;
    if (item.use_ <= ObjectUse && !anyArray) {
        if (info == nullptr || !isObject(info->sort)) qnFatal("XXX bad news!");
        std::memcpy(item.address, &arrived, sizeof arrived);
        return;
    }
    unsigned needed = item.use_ == TextUse ? textLength(item.address) : item.byteLength_;
    if (info == nullptr || info->sort != Array || info->byteLength < needed) qnFatal("format error");
    // A string's array belongs to it alone and may change with it, so it can be told from others within a graph only.
    if (info->owner == String && info->graph != graph_) qnFatal("format error");
    void* array = item.use_ == TextUse ? arrayForText(item, *info, static_cast<char*>(arrived), needed)
                                       : arrayForPointer(item, *info, arrived);
    std::memcpy(item.address, &array, sizeof array);
}

/** The text of a waiting string: the array itself if nobody has it, otherwise a copy. */
void* qnBinaryReader::State::arrayForText(const qnBinaryReaderItem& item, Info& info, char* array, unsigned length) {
    if (!agree(info.width, Narrow) || array[length - 1] != 0) qnFatal("format error");
    info.width = Narrow;
    if (info.owner == Nobody) {
        info.owner = String;
        return array;
    }
    // A string that waited twice has it by now.
    if (std::memcmp(item.address, &array, sizeof array) == 0) return array;
    return std::memcpy(heap::allocate(length, "qnBinaryReader::readObject"), array, length);
}

/** The array that all pointer variables share, as wide as they expect it. */
void* qnBinaryReader::State::arrayForPointer(const qnBinaryReaderItem& item, Info& info, void* array) {
    Width width = widthOf(item.use_);
    if (!agree(info.width, width)) qnFatal("format error");
    if (item.use_ == TerminatedUse && std::memchr(array, 0, info.byteLength) == nullptr) qnFatal("format error");
    if (info.owner == String) {
        array = std::memcpy(heap::allocate(info.byteLength, "qnBinaryReader::readObject"), array, info.byteLength);
        replace(item.id, array);
    } else if (info.width == Unclaimed && width >= Long) {
        array = widen(array, info.byteLength, width);
        replace(item.id, array);
    }
    info.width = width;
    info.owner = Program;
    return array;
}

void qnBinaryReader::State::replace(unsigned id, void* address) {
    qnBinaryOTDict::Word key = id;
    qnBinaryOTDict::Word value = reinterpret_cast<qnBinaryOTDict::Word>(address);
    reader_.objectTable.addInternal(&key, &value);
}

void qnBinaryReader::State::variablesMoved(const void* from, std::size_t nbytes, void* to) {
    qnVoidPtrArray& items = reader_.pendingItems;
    // The variables in the block were queued last, one after another.
    for (unsigned i = items.length(); i > 0; --i) {
        qnBinaryReaderItem* item = static_cast<qnBinaryReaderItem*>(items.elements()[i - 1]);
        if (!heap::contains(from, nbytes, item->address)) break;
        item->address = static_cast<char*>(to) + (static_cast<char*>(item->address) - static_cast<const char*>(from));
    }
}
