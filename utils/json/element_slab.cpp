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
#include <cstdlib>

#include <zrad/json.h>

#include "json/element_pool.h"
#include "json/element_slab.h"

namespace zrad::json {
namespace {

constexpr uint32_t kFilling = 1u << 30;  // above any count of blocks a chunk can hold
constexpr size_t kGrain = 32;            // every block starts on a 32-byte boundary
constexpr uint32_t kSpares = 16;         // empty chunks a thread keeps for its next builds

// Trivially destructible, so it stays usable while other thread-local objects are destroyed.
struct ChunkState {
  int batching;  // open FreeBatches
  SlabHead* chunk;  // being filled
  char* next;
  uint32_t handed;  // blocks of `chunk` handed out
  SlabHead* pending;  // a run of freed blocks of one chunk not yet counted off
  uint32_t pendingCount;
  SlabHead* spare[kSpares];
  uint32_t spares;
  bool closed;  // the thread is exiting
};
thread_local ChunkState tChunks;

// An empty chunk: kept for the next one this thread fills, or given back.
void emptied(ChunkState& s, SlabHead* c) {
  if (!s.closed && s.spares < kSpares) s.spare[s.spares++] = c;
  else freeSlab(c);
}

void countOff(ChunkState& s, SlabHead* c, uint32_t n) {
  if (c->live.fetch_sub(n, std::memory_order_acq_rel) == n) emptied(s, c);
}

void settle(ChunkState& s) {
  if (!s.pendingCount) return;
  SlabHead* c = s.pending;
  uint32_t n = s.pendingCount;
  s.pending = nullptr;
  s.pendingCount = 0;
  countOff(s, c, n);
}

// Stops filling the current chunk.
void retire(ChunkState& s) {
  SlabHead* c = s.chunk;
  if (!c) return;
  s.chunk = nullptr;
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

__attribute__((noinline)) void* nextChunkBlock(ChunkState& s, size_t size) {
  SlabHead* c = s.spares ? s.spare[--s.spares] : newSlab(true);
  (void)&tChunkCloser;  // registers the closer for this thread
  retire(s);
  c->live.store(kFilling, std::memory_order_relaxed);
  s.chunk = c;
  s.next = reinterpret_cast<char*>(c) + kSlabHeadBytes + size;
  s.handed = 1;
  return s.next - size;
}

}  // namespace

__thread int tOpenBulkBuilds;

SlabHead* newSlab(bool chunk) {
  void* p = std::aligned_alloc(kSlabBytes, kSlabBytes);
  if (!p) throw ZrError(Zrad::eOutOfMemory);
  auto* head = new (p) SlabHead;
  head->chunk = chunk;
  head->live.store(0, std::memory_order_relaxed);
  return head;
}

void freeSlab(SlabHead* slab) { std::free(slab); }


void* chunkBlock(size_t size) {
  ChunkState& s = tChunks;
  size = (size + kGrain - 1) & ~(kGrain - 1);
  if (s.chunk && s.next + size <= reinterpret_cast<char*>(s.chunk) + kSlabBytes) {
    void* block = s.next;
    s.next += size;
    ++s.handed;
    return block;
  }
  return nextChunkBlock(s, size);
}

void freeChunkBlock(void* block) noexcept {
  ChunkState& s = tChunks;
  SlabHead* c = slabOf(block);
  if (!s.batching) return countOff(s, c, 1);
  if (c != s.pending) {
    settle(s);
    s.pending = c;
  }
  ++s.pendingCount;
}

// A thread that is exiting builds from the pool: it would have no one to retire its chunk.
BulkBuild::BulkBuild() : m_open(!tChunks.closed) { tOpenBulkBuilds += m_open; }
BulkBuild::~BulkBuild() { tOpenBulkBuilds -= m_open; }

FreeBatch::FreeBatch() { ++tChunks.batching; }
FreeBatch::~FreeBatch() {
  ChunkState& s = tChunks;
  if (--s.batching == 0) settle(s);
}

}  // namespace zrad::json
