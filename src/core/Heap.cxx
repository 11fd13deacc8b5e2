#include "core/Heap.h"

#include <malloc.h>

std::size_t heap::usableSize(void* block) { return malloc_usable_size(block); }
