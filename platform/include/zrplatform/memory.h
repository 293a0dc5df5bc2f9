// The platform allocator: raw blocks that reference-counted objects and elements hand around.
#pragma once

#include <cstddef>

#include "export.h"

// Allocates `size` bytes; returns null when memory is exhausted.
ZRPLATFORM_EXPORT void* zrrxAlloc(size_t size);
// Frees a block from zrrxAlloc; null is accepted.
ZRPLATFORM_EXPORT void zrrxFree(void* block);
