// Slabs: the aligned blocks of memory that every small block of the element tree is cut from.
//
// A slab is kSlabBytes long and aligned to its size, so any block in it finds the slab's head
// by masking its address. A pool slab is cut into blocks of one size class that live on the
// pool's free lists for the life of the process; a chunk is filled front to back by the bulk
// builders (see element_pool.h) and goes back when its last block is freed.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zrad::json {

constexpr size_t kSlabBytes = 32 * 1024;

struct SlabHead {
  bool chunk;
  // A chunk's blocks not yet freed (see element_chunks.cpp for how a filling chunk counts).
  std::atomic<uint32_t> live;
};
// Blocks start this far into a slab; it keeps elements on 32-byte boundaries.
constexpr size_t kSlabHeadBytes = 32;
static_assert(sizeof(SlabHead) <= kSlabHeadBytes, "the head fits before the first block");

inline SlabHead* slabOf(const void* block) {
  return reinterpret_cast<SlabHead*>(reinterpret_cast<uintptr_t>(block) & ~uintptr_t(kSlabBytes - 1));
}

// A new slab with its head set; throws ZrError(eOutOfMemory) when memory is exhausted.
SlabHead* newSlab(bool chunk);
void freeSlab(SlabHead* slab);

// The BulkBuilds open on this thread; a plain thread variable, as every pool allocation asks.
extern __thread int tOpenBulkBuilds;
inline bool bulkBuilding() { return tOpenBulkBuilds != 0; }
// The next `size` bytes (size <= 1 KiB) of this thread's chunk, rounded up to 32; throws
// ZrError(eOutOfMemory) when a new chunk is needed and memory is exhausted.
void* chunkBlock(size_t size);
// A block of a chunk goes back (the slab of `block` must be a chunk).
void freeChunkBlock(void* block) noexcept;

}  // namespace zrad::json
