#include "events/QueueWalk.h"

QueueWalk* QueueWalk::innermost_ = nullptr;
