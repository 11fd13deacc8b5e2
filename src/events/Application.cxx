#include "Application.h"

#include "Checked.h"
#include "Exec.h"

qnApplication::qnApplication() : open_(0) {
    MORVAQNDS_REQUIRE(qn_theExecutive != nullptr, "qnApplication::qnApplication: the toolkit is not initialised");
    qn_theExecutive->add(this);
}

qnApplication::~qnApplication() {
    if (open_) {
        qnApplication::close();
    } else {
        MORVAQNDS_REQUIRE(!qn_theExecutive->contains(this),
                          "qnApplication::~qnApplication: the application is registered and was never closed");
    }
    qnExec::abandon(this);  // where it is listed more than once, or by another executive
}

void qnApplication::open() { open_ = 1; }

void qnApplication::close() {
    qn_theExecutive->remove(this);
    open_ = 0;
}
