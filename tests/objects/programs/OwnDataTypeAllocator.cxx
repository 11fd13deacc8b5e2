// A program that brings its own allocator of data type codes keeps it: nothing is drawn from it, and the codes stay as
// they are. The standard converters are registered all the same, here all of them for one and the same pair of codes.
#include <morvaqnds.h>

#include <cstdio>
#include <string>

static int fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

static std::string arrived;
static void arrive(void*, char* text) { arrived = text; }

int main() {
    qn_nextDataType = new qnSequencer;
    qnSequencer* const own = qn_nextDataType;
    qnInitializeToolkit();
    if (qn_nextDataType != own) return fail("the allocator was replaced");
    const unsigned short codes[] = {qnDT_void,    qnDT_qnBool, qnDT_int,     qnDT_long,
                                    qnDT_float,   qnDT_double, qnDT_CharPtr, qnDT_qnStr,
                                    qnDT_VoidPtr, qnDT_ObjPtr, qnDT_DataPtr, qnDT_qnStrArray};
    for (unsigned short code : codes) {
        if (code != 0) return fail("a code was assigned");
    }
    if ((*own)() != 0) return fail("a number was drawn");

    // The last of the standard converters, from strings to text, was registered last.
    qnConverter* newest = qnConverter::findConverter(0, 0);
    if (newest == nullptr) return fail("no converters");
    newest->splice(new qnInputChannel(0, nullptr, reinterpret_cast<qnDeliverFunc>(&arrive), 0));
    qnStrData("text").deliverTo(newest->deliverFunc, newest->closure);
    delete newest;
    if (arrived != "text") return fail("another converter is the newest");
    return 0;
}
