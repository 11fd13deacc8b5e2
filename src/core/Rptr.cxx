#include "Rptr.h"

Counted::~Counted() {}

RPtr_base::~RPtr_base() { qnRelease(pointee); }

void RPtr_base::hold(Counted* object) {
    Counted* old = pointee;
    qnRetain(object);
    pointee = object;
    qnRelease(old);
}
