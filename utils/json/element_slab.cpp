// Slabs and chunks: aligned memory for the element pool, and the chunks the bulk builders fill.
//
// Each thread fills one chunk at a time, front to back, and keeps filling it across builds, so
// small trees share chunks rather than taking one each. A chunk's live count tells how many of
// its blocks are not yet freed. While a thread fills a chunk the count starts at kFilling, as if
// every block it might hand out were live, so handing out a block touches no shared memory; when
// the thread moves on it takes off what it did not hand out. Blocks may be freed by any thread;
// the free that brings the count to zero gives the chunk back: to that thread's few spares (the
// next chunk it fills) or to the system.
#include <atomic>

#include "json/element_pool.h"
#include "json/element_slab.h"

namespace zrad::json {

__thread ChunkState tChunks;

namespace {

constexpr uint32_t kFilling = 1u << 30;  // above any count of blocks a chunk can hold

// An empty chunk: kept for the next one this thread fills, or given back.
void emptied(ChunkState& s, SlabHead* c) {
  if (!s.closed && s.spares < kSpares) s.spare[s.spares++] = c;
  else freeSlab(c);
}

// Stops filling the current chunk.
void retire(ChunkState& s) {
  SlabHead* c = s.chunk;
  if (!c) return;
  s.chunk = nullptr;
  s.next = s.end = nullptr;
  countOff(s, c, kFilling - s.handed);
}

struct ChunkCloser {
  ~ChunkCloser() {
    ChunkState& s = tChunks;
    s.closed = true;
    settle(s);
    retire(s);
    while (s.spares) freeSlab(s.spare[--s.spares]);
  }
};
thread_local ChunkCloser tChunkCloser;

}  // namespace

void countOff(ChunkState& s, SlabHead* c, uint32_t n) noexcept {
  if (c->live.fetch_sub(n, std::memory_order_acq_rel) == n) emptied(s, c);
}

void settle(ChunkState& s) noexcept {
  if (!s.pendingCount) return;
  SlabHead* c = s.pending;
  uint32_t n = s.pendingCount;
  s.pending = nullptr;
  s.pendingCount = 0;
  countOff(s, c, n);
}

void freeChunkBlockSlow(ChunkState& s, SlabHead* c) noexcept {
  if (!s.batching) return countOff(s, c, 1);
  settle(s);
  s.pending = c;
  s.pendingCount = 1;
}

__attribute__((noinline)) void* nextChunkBlock(ChunkState& s, size_t size) {
  SlabHead* c = s.spares ? s.spare[--s.spares] : newSlab(true);
  (void)&tChunkCloser;  // registers the closer for this thread
  retire(s);
  c->live.store(kFilling, std::memory_order_relaxed);
  s.chunk = c;
  s.next = reinterpret_cast<char*>(c) + kSlabHeadBytes + size;
  s.end = reinterpret_cast<char*>(c) + kSlabBytes;
  s.handed = 1;
  return s.next - size;
}

// A thread that is exiting builds from the pool: it would have no one to retire its chunk.
BulkBuild::BulkBuild() : m_s(tChunks), m_open(!m_s.closed) { m_s.building += m_open; }
BulkBuild::~BulkBuild() { m_s.building -= m_open; }

}  // namespace zrad::json
