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

#include "json/element_pool.h"

namespace zrad::json {

// AddressSanitizer builds take every block from malloc, so that use after free is still caught.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPooled = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kPooled = false;
#else
constexpr bool kPooled = true;
#endif
#else
constexpr bool kPooled = true;
#endif

constexpr size_t kSlabBytes = 32 * 1024;
constexpr size_t kLargestPooled = 1024;  // larger blocks come from malloc
constexpr size_t kElementBytes = 32;  // sizeof(ElementValue)

struct SlabRegion;  // the mapping a slab was cut from (slab_regions_posix.cpp)

struct SlabHead {
  bool chunk;
  // A chunk's blocks not yet freed (see element_slab.cpp for how a filling chunk counts).
  std::atomic<uint32_t> live;
  SlabRegion* region;
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

constexpr uint32_t kSpares = 16;  // empty chunks a thread keeps for its next builds

// A thread's chunks. A plain thread variable, trivially destructible (usable while other
// thread-local objects are destroyed), with the paths taken for every block inline: that takes
// about 6% off reading and dropping json_bench's outlines (readfree_outlines, instructions).
// The builders and the drop look it up once per tree and hand it to every block they take or
// give back: each lookup is a call through the thread's TLS descriptor, and making one per
// block cost 10-20% of the time of reading, cloning and dropping json_bench's outlines, config
// and drawing.
struct ChunkState {
  int building;  // open BulkBuilds
  int batching;  // open FreeBatches
  char* next;    // the unused rest of the chunk being filled
  char* end;
  SlabHead* chunk;
  uint32_t handed;  // blocks of `chunk` handed out
  SlabHead* pending;  // a run of freed blocks of one chunk not yet counted off
  uint32_t pendingCount;
  SlabHead* spare[kSpares];
  uint32_t spares;
  bool closed;  // the thread is exiting
};
extern __thread ChunkState tChunks;

void* nextChunkBlock(ChunkState& s, size_t size);
// The next `size` bytes (size <= 1 KiB) of the thread's chunk `s` (tChunks), rounded up to 32;
// throws ZrError(eOutOfMemory) when a new chunk is needed and memory is exhausted.
inline void* chunkBlock(ChunkState& s, size_t size) {
  size = (size + 31) & ~size_t(31);
  if (static_cast<size_t>(s.end - s.next) < size) return nextChunkBlock(s, size);
  void* block = s.next;
  s.next += size;
  ++s.handed;
  return block;
}

// The block of one ElementValue, with the thread's chunk state `s` at hand; inline for the bulk
// builders, which make most elements: that takes 7% off a binary read of json_bench's outlines
// (instructions).
inline void* elementBlock(ChunkState& s) {
  if (kPooled && s.building) return chunkBlock(s, kElementBytes);
  return poolElementBlock();
}

// A block of at least `size` bytes, with the thread's chunk state `s` at hand: cut from the
// chunk during a bulk build, else from the pool; throws ZrError(eOutOfMemory) when memory is
// exhausted.
inline void* allocBlock(ChunkState& s, size_t size) {
  if (kPooled && s.building && size <= kLargestPooled) return chunkBlock(s, size);
  return poolTake(size);
}

void countOff(ChunkState& s, SlabHead* chunk, uint32_t n) noexcept;
void settle(ChunkState& s) noexcept;
// A freed block of `chunk` that does not extend the pending run.
void freeChunkBlockSlow(ChunkState& s, SlabHead* chunk) noexcept;

// Inside a FreeBatch, blocks given back to chunks are counted off once per run of blocks of
// the same chunk rather than once per block (a tree is dropped in the order it was laid out);
// the outermost batch settles the last run when it ends. Inline: a drop opens one for every
// container it empties.
class FreeBatch {
 public:
  explicit FreeBatch(ChunkState& s) : m_s(s) { ++s.batching; }
  ~FreeBatch() {
    if (--m_s.batching == 0) settle(m_s);
  }
  FreeBatch(const FreeBatch&) = delete;
  FreeBatch& operator=(const FreeBatch&) = delete;

 private:
  ChunkState& m_s;
};

// A block of a chunk goes back (the slab of `block` must be a chunk).
inline void freeChunkBlock(ChunkState& s, void* block) noexcept {
  SlabHead* c = slabOf(block);
  if (c != s.pending || !s.batching) return freeChunkBlockSlow(s, c);
  ++s.pendingCount;
}

// Gives back the non-null `block` of `size` bytes (as asked of allocBlock; an element's is
// kElementBytes) with the thread's chunk state `s` at hand.
inline void freeBlockIn(ChunkState& s, void* block, size_t size) noexcept {
  if (kPooled && size <= kLargestPooled && slabOf(block)->chunk) return freeChunkBlock(s, block);
  poolGive(block, size);
}

}  // namespace zrad::json
