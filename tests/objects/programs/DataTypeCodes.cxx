// The data type codes are the first twelve numbers of a fresh allocator; until then all are 0 and nothing is
// registered.
#include <morvaqnds.h>

#include <cstdio>

static unsigned short* const codes[] = {&qnDT_void,    &qnDT_qnBool, &qnDT_int,     &qnDT_long,
                                        &qnDT_float,   &qnDT_double, &qnDT_CharPtr, &qnDT_qnStr,
                                        &qnDT_VoidPtr, &qnDT_ObjPtr, &qnDT_DataPtr, &qnDT_qnStrArray};

static int fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    return 1;
}

int main() {
    for (unsigned short* code : codes) {
        if (*code != 0) return fail("a code before the start");
    }
    if (qn_nextDataType != nullptr) return fail("an allocator before the start");
    if (qnConverter::findConverter(0, 0) != nullptr) return fail("a converter before the start");

    qnInitializeToolkit();
    for (unsigned i = 0; i < 12; ++i) {
        if (*codes[i] != i) return fail("not in order");
    }
    if ((*qn_nextDataType)() != 12) return fail("the thirteenth number is not 12");

    qnSequencer* const allocator = qn_nextDataType;
    qnInitializeToolkit();
    for (unsigned i = 0; i < 12; ++i) {
        if (*codes[i] != i) return fail("assigned again");
    }
    if (qn_nextDataType != allocator) return fail("another allocator");
    if ((*qn_nextDataType)() != 13) return fail("drawn again");
    return 0;
}
