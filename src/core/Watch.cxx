#include "core/Watch.h"

Watch* Watch::innermost_ = nullptr;
