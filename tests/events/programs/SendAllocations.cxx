// What a send asks of the heap: nothing where it is delivered at once; else the box, and for each message one block.
#include <string>

#include "EventHandler.h"
#include "MessageEvent.h"
#include "Obj.h"
#include "OrderedGlobal.h"
#include "support/HeapWatch.h"

namespace {

void ignore(void*, int) {}

std::string request(std::size_t nbytes) { return 'm' + std::to_string(nbytes) + ' '; }

}  // namespace

int main() {
    qnInitializeToolkit();
    qnObj sender, receiver;
    qnOutputChannel* output = sender.addOutput("out", qnDT_int);
    receiver.addInput("first", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignore), 0);
    receiver.addInput("second", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignore), 0);
    const std::string box = request(sizeof(qnIntData)), message = request(sizeof(qnMessageEvent));

    heapWatch::expect(__LINE__, "", [&] { sender.sendInt(output, 1, qnObj::qnSF_Immediate); });

    sender.connect("out", &receiver, "first");
    heapWatch::expect(__LINE__, "", [&] { sender.sendInt(output, 1, qnObj::qnSF_Immediate); });
    heapWatch::expect(__LINE__, (box + message).c_str(), [&] { sender.sendInt(output, 1, qnObj::qnSF_Queued); });
    heapWatch::expect(__LINE__, "f f ", [] { qn_theEventHandler->distributeEvents(); });

    sender.connect("out", &receiver, "second");
    heapWatch::expect(__LINE__, "", [&] { sender.sendInt(output, 1, qnObj::qnSF_Immediate); });
    heapWatch::expect(__LINE__, (box + message + message).c_str(),
                      [&] { sender.sendInt(output, 1, qnObj::qnSF_Urgent); });
    heapWatch::expect(__LINE__, "f f f ", [] { qn_theEventHandler->distributeEvents(); });
    return heapWatch::failures;
}
