// The element pool: small blocks of the element tree from per-thread free lists.
#pragma once

#include <cstddef>

namespace zrad::json {

// A block of at least `size` bytes; throws ZrError(eOutOfMemory) when memory is exhausted.
void* poolAlloc(size_t size);
// Returns a block from poolAlloc; `size` must be the size it was asked for. Null is accepted.
void poolFree(void* block, size_t size);

// The block of one ElementValue, and its return.
void* elementBlock();
void freeElementBlock(void* block);

}  // namespace zrad::json
