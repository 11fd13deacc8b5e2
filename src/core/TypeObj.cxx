#include "TypeObj.h"

#include "Str.h"
#include "VoidPtrDict.h"
#include "core/Heap.h"

// Null before any initialiser runs, so that type objects may register from the first one on.
qnVoidPtrDict* qnTypeObj::knownTypes = nullptr;

qnTypeObj::qnTypeObj(const char* typeName, unsigned typeVersion, qnNewInstanceFunc make, qnDeleteInstanceFunc destroy,
                     qnXdrFunc transcribe)
    : name(typeName), version(typeVersion), newInstance(make), deleteInstance(destroy), xdr(transcribe) {
    registerType(this);
}

void qnTypeObj::registerType(qnTypeObj* type) {
    if (knownTypes == nullptr) knownTypes = heap::create<qnVoidPtrDict>("qnTypeObj::qnTypeObj", 0u);
    qnStr key(type->name);
    *static_cast<void**>(knownTypes->findCreate(&key)) = type;
}

qnTypeObj* qnTypeObj::findType(const char* name) {
    if (knownTypes == nullptr) return nullptr;
    qnStr key(name);
    return findType(key);
}

qnTypeObj* qnTypeObj::findType(qnStr& name) {
    if (knownTypes == nullptr) return nullptr;
    void* slot = knownTypes->find(&name, nullptr);
    return slot == nullptr ? nullptr : static_cast<qnTypeObj*>(*static_cast<void**>(slot));
}
