// The first event that a process makes has number 1, and its dump says so; a message is numbered along.
#include <morvaqnds.h>

#include <cstdio>

namespace {

class Plain : public qnEvent {
public:
    Plain() : qnEvent((*qn_nextEventType)()) {}
    void deliver() override {}
};

void ignore(void*, int) {}

}  // namespace

int main() {
    qnInitializeToolkit();
    Plain first;
    first.dump(stderr);
    Plain copy(first);
    copy.dump(stderr);

    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_int);
    object.addInput("in", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignore), 0);
    object.connect("out", &object, "in");
    object.sendInt(out, 7, qnObj::qnSF_Queued);
    qn_theEventHandler->head->dump(stderr);

    qnEvent* another = new Plain;
    another->dump(stderr);
    delete another;
    return 0;
}
