#include "Obj.h"

#include "Fatal.h"
#include "VoidPtrDict.h"
#include "core/Heap.h"
#include "core/Watch.h"
#include "objects/ObjRelease.h"
#include "objects/PointerList.h"

namespace {

/** The tag of a name, made if the name has none. */
unsigned short tagFor(const char* name) {
    const unsigned short tag = qnProperty::findTag(name);
    return tag != qnProperty::NoTag ? tag : qnProperty::allocNewTag(name);
}

// An object keeps its channels in two dictionaries by name, and these in two properties.

constexpr char InputsName[] = "inputs";
constexpr char OutputsName[] = "outputs";

qnVoidPtrDict* dictionaryOf(const qnObj& object, const char* propertyName) {
    qnProperty* property = object.findProperty(propertyName, nullptr);
    return property == nullptr ? nullptr : static_cast<qnVoidPtrDict*>(property->getAsVoidPtr());
}

qnVoidPtrDict& ensureDictionary(qnObj& object, const char* propertyName, qnProperty::Release release,
                                const char* operation) {
    qnVoidPtrDict* dictionary = dictionaryOf(object, propertyName);
    if (dictionary == nullptr) {
        dictionary = heap::create<qnVoidPtrDict>(operation, 0u);
        object.setProperty(
            heap::create<qnProperty>(operation, tagFor(propertyName), static_cast<void*>(dictionary), release));
    }
    return *dictionary;
}

/** The slot of a channel's name; null when there is none. */
template <class Channel>
Channel** slotOf(qnVoidPtrDict* dictionary, const char* name) {
    if (dictionary == nullptr) return nullptr;
    const qnStr key(name);
    return static_cast<Channel**>(dictionary->find(&key, nullptr));
}

template <class Channel>
Channel* channelIn(qnVoidPtrDict* dictionary, const char* name) {
    Channel** slot = slotOf<Channel>(dictionary, name);
    return slot == nullptr ? nullptr : *slot;
}

/** Puts a channel under a name and returns the one that was there, or null. */
template <class Channel>
Channel* place(qnVoidPtrDict& dictionary, const char* name, Channel* channel) {
    const qnStr key(name);
    void** slot = static_cast<void**>(dictionary.findCreate(&key));
    Channel* previous = static_cast<Channel*>(*slot);
    *slot = channel;
    return previous;
}

/** Ends what an input has to do with its object: messages, connections, and the object's hold. */
void retire(qnInputChannel* input) {
    input->flush();
    input->disconnect();
    qnRelease(input);
}

/** Takes a channel's slot as its own. */
template <class Channel>
Channel* takeCurrent(qnVoidPtrDictIter& it) {
    void** slot = static_cast<void**>(it.getValue());
    if (slot == nullptr) return nullptr;
    Channel* channel = static_cast<Channel*>(*slot);
    *slot = nullptr;
    return channel;
}

/** Releases an object's inputs and their dictionary. */
void dt_input_dict(void* inputs) {
    qnVoidPtrDict* dictionary = static_cast<qnVoidPtrDict*>(inputs);
    for (qnVoidPtrDictIter it(dictionary); it.dict != nullptr; ++it) {
        qnInputChannel* input = takeCurrent<qnInputChannel>(it);
        if (input != nullptr) retire(input);
    }
    delete dictionary;
}

/** Destroys an object's outputs and their dictionary. */
void dt_output_dict(void* outputs) {
    qnVoidPtrDict* dictionary = static_cast<qnVoidPtrDict*>(outputs);
    for (qnVoidPtrDictIter it(dictionary); it.dict != nullptr; ++it) {
        delete takeCurrent<qnOutputChannel>(it);
    }
    delete dictionary;
}

}  // namespace

qnObj::~qnObj() {
    if (properties_ == nullptr && refCount == 0) return;
    {
        const DyingObject dying(this);
        removeAllProperties();
    }
    Watch::gone(properties_);
    delete properties_;
}

const char* qnObj::className() const { return "qnObj"; }

void qnObj::subClassMustDefine(const char* method) const {
    qnFatal("%s: Sub class must define method \"%s\"", className(), method);
}

int qnObj::compare(const qnObj*) const {
    subClassMustDefine("compare");
    return 0;
}

void qnObj::connect(const char* output, qnObj* other, const char* input) {
    qnOutputChannel* out = findOutput(output);
    qnInputChannel* in = other == nullptr ? nullptr : other->findInput(input);
    if (out == nullptr || in == nullptr || out->isConnectedTo(in)) return;
    out->add(in);
}

void qnObj::disconnect(const char* output, qnObj* other, const char* input) {
    qnOutputChannel* out = findOutput(output);
    qnInputChannel* in = other == nullptr ? nullptr : other->findInput(input);
    if (out != nullptr && in != nullptr) out->remove(in);
}

qnInputChannel* qnObj::addInput(const char* name, unsigned short type, void* closure, qnDeliverFunc fn,
                                qnBool latestOnly) {
    qnInputChannel* input = heap::create<qnInputChannel>("qnObj::addInput", type, closure, fn, latestOnly);
    qnRetain(input);
    // Deliberate: the input that had the name is only let go of; its connections and messages keep it alive.
    qnRelease(place(ensureDictionary(*this, InputsName, dt_input_dict, "qnObj::addInput"), name, input));
    return input;
}

qnOutputChannel* qnObj::addOutput(const char* name, unsigned short type) {
    qnOutputChannel* output = heap::create<qnOutputChannel>("qnObj::addOutput", type);
    delete place(ensureDictionary(*this, OutputsName, dt_output_dict, "qnObj::addOutput"), name, output);
    return output;
}

void qnObj::removeInput(const char* name) {
    qnVoidPtrDict* inputs = dictionaryOf(*this, InputsName);
    qnInputChannel* input = channelIn<qnInputChannel>(inputs, name);
    if (input == nullptr) return;
    // The name goes first: destroying a message may bring the program back here.
    const qnStr key(name);
    inputs->remove(&key);
    retire(input);
}

void qnObj::removeOutput(const char* name) {
    qnVoidPtrDict* outputs = dictionaryOf(*this, OutputsName);
    qnOutputChannel* output = channelIn<qnOutputChannel>(outputs, name);
    if (output == nullptr) return;
    const qnStr key(name);
    outputs->remove(&key);
    delete output;
}

qnInputChannel* qnObj::findInput(const char* name) const {
    return channelIn<qnInputChannel>(dictionaryOf(*this, InputsName), name);
}

qnOutputChannel* qnObj::findOutput(const char* name) const {
    return channelIn<qnOutputChannel>(dictionaryOf(*this, OutputsName), name);
}
