// The platform allocator over the C heap.
#include "zrplatform/memory.h"

#include <cstdlib>

void* zrrxAlloc(size_t size) { return std::malloc(size ? size : 1); }
void zrrxFree(void* block) { std::free(block); }
