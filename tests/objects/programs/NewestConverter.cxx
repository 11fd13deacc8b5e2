// A program may replace a standard conversion: connections that it makes from then on use the new one, earlier ones
// keep what they have, even when they are queued.
#include <morvaqnds.h>

#include <cstdio>

static void keep(int* kept, qnBool value) { *kept = value; }
static void isNotZero(void* input, int value) { qnDeliver<int>(input, value != 0); }

int main() {
    qnInitializeToolkit();
    int before = -1, after = -1;
    qnObj object;
    qnOutputChannel* out = object.addOutput("out", qnDT_int);
    object.addInput("before", &before, &keep);
    object.addInput("after", &after, &keep);
    object.connect("out", &object, "before");
    new qnConverter(qnDT_int, qnDT_qnBool, reinterpret_cast<qnDeliverFunc>(&isNotZero));
    object.connect("out", &object, "after");

    object.sendInt(out, 512, qnObj::qnSF_Immediate);
    if (before != 0 || after != 1) {
        std::fprintf(stderr, "%d and %d\n", before, after);
        return 1;
    }
    before = after = -1;
    object.sendInt(out, 512, qnObj::qnSF_Queued);
    qn_theEventHandler->distributeEvents();
    if (before != 0 || after != 1) {
        std::fprintf(stderr, "%d and %d from the queue\n", before, after);
        return 1;
    }
    return 0;
}
