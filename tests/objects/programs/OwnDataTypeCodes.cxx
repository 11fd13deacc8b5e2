// A program that numbers the data types itself, before the start: boxes, properties, converters and channels go by the
// variables and not by their usual values.
#include <morvaqnds.h>

#include <cstdio>

static int fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

static void keep(int* kept, int value) { *kept = value; }

int main() {
    unsigned short* const codes[] = {&qnDT_qnStrArray, &qnDT_DataPtr, &qnDT_ObjPtr, &qnDT_VoidPtr,
                                     &qnDT_qnStr,      &qnDT_CharPtr, &qnDT_double, &qnDT_float,
                                     &qnDT_long,       &qnDT_int,     &qnDT_qnBool, &qnDT_void};
    qn_nextDataType = new qnSequencer;
    (*qn_nextDataType)(40000);
    for (unsigned short* code : codes) *code = static_cast<unsigned short>((*qn_nextDataType)());
    unsigned short before[12];
    for (unsigned i = 0; i < 12; ++i) before[i] = *codes[i];

    qnInitializeToolkit();
    for (unsigned i = 0; i < 12; ++i) {
        if (*codes[i] != before[i]) return fail("a code was assigned again");
    }

    if (qnIntData(1).getType() != qnDT_int) return fail("a box");
    if (qnProperty(1, 1L).getType() != qnDT_long) return fail("a property");
    int kept = 0;
    qnObj object;
    object.addInput("in", &kept, &keep);
    qnOutputChannel* out = object.addOutput("out", qnDT_double);
    object.connect("out", &object, "in");
    object.sendDouble(out, -2.7, qnObj::qnSF_Immediate);
    if (kept != -2) return fail("a conversion");
    return 0;
}
