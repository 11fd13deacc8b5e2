#include "Debug.h"

qnDebug* qn_theDebugger = nullptr;

qnDebug::qnDebug(bool) {}

void qnDebug::parseOption(qnStr&) {}
