// The start call builds the library's singletons one after the other, in a fixed order and once. The program's own
// `operator new` looks on: whenever memory is asked for, those that exist must be the first ones of that order.
#include <morvaqnds.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

int failures = 0;
void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    ++failures;
}

bool starting = false;
bool asking = false;    // the library is asked itself, and asks for memory
bool named = false;     // the table of property names was asked for
unsigned furthest = 0;  // how many singletons existed when memory was asked for last

bool convertsTextToStrings() {
    asking = true;
    qnConverter* const instance = qnConverter::findConverter(qnDT_CharPtr, qnDT_qnStr);
    delete instance;
    asking = false;
    return instance != nullptr;
}

void lookOn(std::size_t size) {
    if (!starting || asking) return;
    if (!named) expect(size == sizeof(qnStrArray), "the table of property names comes before everything else");
    named = true;
    const void* inOrder[] = {qn_nextDataType, qn_theExecutive, qn_theEventHandler, qn_nextEventType, qn_theDebugger};
    unsigned made = 0;
    while (made < 5 && inOrder[made] != nullptr) ++made;
    for (unsigned i = made; i < 5; ++i) expect(inOrder[i] == nullptr, "a singleton came too early");
    if (made > 1) expect(qnDT_qnStrArray == 11, "the data types are drawn before the executive is made");
    if (made > 1) expect(convertsTextToStrings(), "the converters are registered before the executive is made");
    if (made > 4) expect(qnET_MessageEvent == 1, "the event types are drawn before the debugger is made");
    if (made > furthest) furthest = made;
}

void* allocate(std::size_t size) {
    lookOn(size);
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) std::abort();
    return block;
}

void makeLast() {
    expect(qn_theDebugger != nullptr, "the library's own initialisation comes first");
    starting = false;
}
qnOrderedGlobal* needs[] = {&qnOG_Init, nullptr};
qnOrderedGlobal ownGlobal(makeLast, needs, 1);

}  // namespace

__attribute__((visibility("default"))) void* operator new(std::size_t size) { return allocate(size); }
__attribute__((visibility("default"))) void* operator new[](std::size_t size) { return allocate(size); }
__attribute__((visibility("default"))) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
__attribute__((visibility("default"))) void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
__attribute__((visibility("default"))) void operator delete(void* block) noexcept { std::free(block); }
__attribute__((visibility("default"))) void operator delete[](void* block) noexcept { std::free(block); }
__attribute__((visibility("default"))) void operator delete(void* block, std::size_t) noexcept { std::free(block); }
__attribute__((visibility("default"))) void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

int main() {
    expect(qn_nextDataType == nullptr && qn_theExecutive == nullptr && qn_theEventHandler == nullptr &&
               qn_nextEventType == nullptr && qn_theDebugger == nullptr,
           "nothing is built at load time");
    expect(qnDT_int == 0 && qnDT_qnStrArray == 0 && qnET_MessageEvent == 0, "and no code is drawn");

    starting = true;
    qnInitializeToolkit();
    starting = false;
    expect(furthest >= 4, "the singletons are made one by one");

    const unsigned short types[] = {qnDT_void,    qnDT_qnBool, qnDT_int,     qnDT_long,
                                    qnDT_float,   qnDT_double, qnDT_CharPtr, qnDT_qnStr,
                                    qnDT_VoidPtr, qnDT_ObjPtr, qnDT_DataPtr, qnDT_qnStrArray};
    for (unsigned short i = 0; i < 12; ++i) expect(types[i] == i, "data types count from 0 in their order");
    expect(qnET_Unknown == 0 && qnET_MessageEvent == 1, "event types count from 0 in their order");
    expect(qn_theExecutive->getLowestDescriptor() == 101, "the executive has no handlers");
    expect(qn_theEventHandler->count == 0, "the queue is empty");
    expect(qnProperty::findTag("no such name") == qnProperty::NoTag, "the property names can be looked up");
    expect(qnProperty::allocNewTag("a name") == qnProperty::findTag("a name"), "and made");

    const void* const before[] = {qn_nextDataType, qn_theExecutive, qn_theEventHandler, qn_nextEventType,
                                  qn_theDebugger};
    qnInitializeToolkit();
    qnCleanupGlobalOrderings();
    qnInitializeToolkit();
    const void* const after[] = {qn_nextDataType, qn_theExecutive, qn_theEventHandler, qn_nextEventType,
                                 qn_theDebugger};
    for (int i = 0; i < 5; ++i) expect(before[i] == after[i], "no singleton is made again, and none is destroyed");
    expect(qnProperty::findTag("a name") != qnProperty::NoTag, "the names are still there");
    expect((*qn_nextDataType)() == 12, "twelve data types were drawn, once");
    expect((*qn_nextEventType)() == 2, "two event types were drawn, once");
    expect(qnDT_qnStrArray == 11 && qnET_MessageEvent == 1, "and they stay what they were");
    return failures;
}
