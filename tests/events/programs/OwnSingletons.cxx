// A program that makes singletons before the start call keeps its own; from its allocators no code is drawn.
#include <morvaqnds.h>

#include <cstdio>

namespace {

int failures = 0;
void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", what);
    ++failures;
}

int delivered = 0;
struct Event : qnEvent {
    Event() : qnEvent(qnET_Unknown) {}
    void deliver() override { ++delivered; }
};

}  // namespace

int main() {
    qnSequencer dataTypes, eventTypes;
    dataTypes(40);
    qnExec executive;
    qnEventHandler eventHandler;
    qn_nextDataType = &dataTypes;
    qn_nextEventType = &eventTypes;
    qn_theExecutive = &executive;
    qn_theEventHandler = &eventHandler;

    qnInitializeToolkit();
    expect(qn_nextDataType == &dataTypes && qn_nextEventType == &eventTypes, "the allocators are kept");
    expect(qn_theExecutive == &executive, "the executive is kept");
    expect(qn_theEventHandler == &eventHandler, "the event handler is kept");
    expect(qn_theDebugger != nullptr, "what was missing is made");
    const unsigned short types[] = {qnDT_void,    qnDT_qnBool, qnDT_int,     qnDT_long,
                                    qnDT_float,   qnDT_double, qnDT_CharPtr, qnDT_qnStr,
                                    qnDT_VoidPtr, qnDT_ObjPtr, qnDT_DataPtr, qnDT_qnStrArray};
    for (unsigned short type : types) expect(type == 0, "no data type is drawn");
    expect(qnET_Unknown == 0 && qnET_MessageEvent == 0, "no event type is drawn");
    expect(dataTypes() == 39, "the program's allocator is as it left it: below 40 comes 39");
    expect(eventTypes() == 0, "the other one is fresh");

    eventHandler.postEvent(new Event, 0);
    executive.loop();
    expect(delivered == 1, "the program's executive distributes from the program's queue");
    return failures;
}
