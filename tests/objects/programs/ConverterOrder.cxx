// The standard conversions are registered in a fixed order. For each two of them the program numbers the data types so
// that both are conversions of the same pair, registers all anew, and looks which of them is found: the newest.
#include <morvaqnds.h>

#include <cstdio>

namespace {

struct Row {
    unsigned short *from, *to;
};
const Row rows[] = {
    {&qnDT_qnBool, &qnDT_int},    {&qnDT_qnBool, &qnDT_float},   {&qnDT_qnBool, &qnDT_double},
    {&qnDT_int, &qnDT_qnBool},    {&qnDT_int, &qnDT_float},      {&qnDT_int, &qnDT_CharPtr},
    {&qnDT_float, &qnDT_qnBool},  {&qnDT_float, &qnDT_double},   {&qnDT_float, &qnDT_int},
    {&qnDT_float, &qnDT_CharPtr}, {&qnDT_double, &qnDT_qnBool},  {&qnDT_double, &qnDT_float},
    {&qnDT_double, &qnDT_int},    {&qnDT_double, &qnDT_CharPtr}, {&qnDT_CharPtr, &qnDT_int},
    {&qnDT_CharPtr, &qnDT_float}, {&qnDT_CharPtr, &qnDT_qnStr},  {&qnDT_qnStr, &qnDT_CharPtr},
};
constexpr int Rows = sizeof rows / sizeof rows[0];
unsigned short* const types[] = {&qnDT_qnBool, &qnDT_int, &qnDT_float, &qnDT_double, &qnDT_CharPtr, &qnDT_qnStr};

qnDeliverFunc found(const Row& row) {
    qnConverter* instance = qnConverter::findConverter(*row.from, *row.to);
    const qnDeliverFunc function = instance == nullptr ? nullptr : instance->deliverFunc;
    delete instance;
    return function;
}

void merge(unsigned short* one, unsigned short* other) {
    const unsigned short old = *other;
    for (unsigned short* type : types) {
        if (*type == old) *type = *one;
    }
}

}  // namespace

int main() {
    qnInitializeToolkit();
    qnDeliverFunc functions[Rows];
    for (int i = 0; i < Rows; ++i) functions[i] = found(rows[i]);

    int failures = 0;
    for (int i = 0; i < Rows; ++i) {
        for (int j = i + 1; j < Rows; ++j) {
            for (unsigned short* type : types) *type = static_cast<unsigned short>((*qn_nextDataType)());
            merge(rows[i].from, rows[j].from);
            merge(rows[i].to, rows[j].to);
            qnConverter::createStandardConverters();
            int newest = j;
            for (int k = 0; k < Rows; ++k) {
                if (*rows[k].from == *rows[i].from && *rows[k].to == *rows[i].to) newest = k;
            }
            if (found(rows[i]) == functions[newest]) continue;
            std::fprintf(stderr, "conversion %d is not newer than %d\n", newest, i);
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
