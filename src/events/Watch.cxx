#include "events/Watch.h"

Watch* Watch::innermost_ = nullptr;
