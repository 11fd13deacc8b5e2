#include "core/LiveWalk.h"

LiveWalk* LiveWalk::innermost_ = nullptr;
