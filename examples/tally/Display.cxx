#include "Display.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Table.h"

Display::Display(WordCounts& counts, unsigned top)
    : counts_(counts), top_(top), failed_(addOutput("failed", qnDT_CharPtr)) {
    addInput("show", this, &onShow);
}

const char* Display::className() const { return "Display"; }

void Display::onShow(Display* display) {
    printTable(stdout, display->counts_, display->top_);
    std::putchar('\n');
    if (std::fflush(stdout) == 0) return;
    if (errno == EINTR) {
        // Nobody took the output, and a signal came meanwhile: the loop sees to that.
        std::clearerr(stdout);
        return;
    }
    qnStr problem("standard output: ");
    problem.append(std::strerror(errno));
    display->sendCharPtr(display->failed_, problem.text(), qnSF_Queued);
}
