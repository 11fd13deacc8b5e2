#include "TextPattern.h"

qnTextPattern::~qnTextPattern() {}
