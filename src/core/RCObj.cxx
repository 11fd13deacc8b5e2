#include "RCObj.h"

qnRCObj::~qnRCObj() {}
