// The element pool: small blocks for elements, names, texts and member lists, cached per thread.
//
// Trees are built and dropped constantly, block by block, so each thread keeps the free blocks
// of each size class (32 to 1024 bytes) and trades whole batches with a shared stock
// under a mutex; a thread that frees what another built hands the surplus back, so memory stays
// bounded by the peak of live blocks. Pool slabs are kept for the life of the process. While a
// BulkBuild is open, small blocks come from the thread's chunk instead (element_slab.cpp); a
// block finds out which it came from through its slab's head. Larger blocks, and every block in
// sanitizer builds (so use-after-free is still caught), come from malloc.
#include "json/element_pool.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include <zrad/json.h>

#include "json/element_slab.h"

namespace zrad::json {
namespace {

constexpr int kClasses = 6;
constexpr size_t kClassSize[kClasses] = {32, 64, 128, 256, 512, 1024};
static_assert(kClassSize[kClasses - 1] == kLargestPooled, "the largest class");
constexpr size_t kBatch = 1024;           // blocks moved between a thread and the stock at once
constexpr size_t kSlots = 2 * kBatch;     // free blocks a thread keeps per class at most

// The smallest class that holds `size` bytes, or -1.
int classOf(size_t size) {
  if (size <= kClassSize[0]) return 0;
  int c = 64 - __builtin_clzll(size - 1) - 5;  // kClassSize[c] = 32 << c
  return c < kClasses ? c : -1;
}

struct Stock {
  std::mutex mutex;
  std::vector<void*> free[kClasses];
  // Blocks given back while there was no memory to list them, chained through their first word.
  void* spilled[kClasses] = {};
  std::vector<SlabHead*> slabs;  // every slab, so the memory stays reachable

  // Moves up to `max` free blocks of class `c` to `out` (carving a fresh chunk when there are
  // none) and returns how many; throws ZrError(eOutOfMemory) when there are none and no memory.
  size_t take(int c, void** out, size_t max) {
    std::lock_guard<std::mutex> lock(mutex);
    std::vector<void*>& f = free[c];
    size_t n = 0;
    for (; n < max && spilled[c]; ++n) {
      out[n] = spilled[c];
      std::memcpy(&spilled[c], out[n], sizeof(void*));
    }
    if (n) return n;
    if (f.empty()) carve(c);
    n = std::min(max, f.size());
    std::memcpy(out, f.data() + f.size() - n, n * sizeof(void*));
    f.resize(f.size() - n);
    return n;
  }
  // Never throws: freeing runs in destructors.
  void give(int c, void* const* blocks, size_t n) noexcept {
    std::lock_guard<std::mutex> lock(mutex);
    try {
      free[c].insert(free[c].end(), blocks, blocks + n);
    } catch (const std::bad_alloc&) {
      for (size_t i = 0; i < n; ++i) {
        std::memcpy(blocks[i], &spilled[c], sizeof(void*));
        spilled[c] = blocks[i];
      }
    }
  }

 private:
  void carve(int c) {
    const size_t count = (kSlabBytes - kSlabHeadBytes) / kClassSize[c];
    SlabHead* slab = newSlab(false);
    try {
      slabs.reserve(slabs.size() + 1);
      free[c].reserve(free[c].size() + count);
    } catch (const std::bad_alloc&) {
      freeSlab(slab);
      throw ZrError(Zrad::eOutOfMemory);
    }
    slabs.push_back(slab);
    char* first = reinterpret_cast<char*>(slab) + kSlabHeadBytes;
    // Highest first, so blocks are handed out in address order.
    for (size_t i = count; i-- > 0;) free[c].push_back(first + i * kClassSize[c]);
  }
};

Stock& stock() {
  static Stock* s = new Stock;  // never destroyed: threads may free elements during exit
  return *s;
}

// Free blocks as arrays of pointers rather than lists linked through the blocks: taking one
// then never waits for a scattered block to arrive from memory just to find the next.
// Trivially destructible, so it stays usable while other thread-local objects are destroyed.
struct Cache {
  void** slots[kClasses];  // kSlots entries each, allocated on first use
  size_t count[kClasses];
  bool closed;  // the thread is exiting: go straight to the stock
};
thread_local Cache tCache;

struct CacheCloser {
  ~CacheCloser() {
    for (int c = 0; c < kClasses; ++c) {
      if (tCache.slots[c]) stock().give(c, tCache.slots[c], tCache.count[c]);
      std::free(tCache.slots[c]);
    }
    tCache = Cache{};
    tCache.closed = true;
  }
};
thread_local CacheCloser tCloser;

// Gives the thread its slot array for class `c`; false once the thread is exiting, or when
// there is no memory for it (the caller then goes to the stock directly).
bool open(Cache& cache, int c) {
  if (cache.closed) return false;
  if (!cache.slots[c]) {
    cache.slots[c] = static_cast<void**>(std::malloc(kSlots * sizeof(void*)));
    if (!cache.slots[c]) return false;
    (void)&tCloser;  // registers the closer for this thread
  }
  return true;
}

__attribute__((noinline)) void* takeSlow(Cache& cache, int c) {
  if (!open(cache, c)) {
    void* block;
    stock().take(c, &block, 1);
    return block;
  }
  cache.count[c] = stock().take(c, cache.slots[c], kBatch);
  return cache.slots[c][--cache.count[c]];
}

void* take(int c) {
  Cache& cache = tCache;
  size_t n = cache.count[c];
  if (!n) return takeSlow(cache, c);
  cache.count[c] = n - 1;
  return cache.slots[c][n - 1];
}

// Takes `block` when the thread's slots are full or not yet there: makes room by handing the
// oldest batch back (so a thread that only frees does not hoard), or gives the block to the
// stock directly once the thread is exiting.
__attribute__((noinline)) void giveSlow(Cache& cache, int c, void* block) noexcept {
  if (!open(cache, c)) {
    stock().give(c, &block, 1);
    return;
  }
  if (cache.count[c] == kSlots) {
    stock().give(c, cache.slots[c], kBatch);
    std::memmove(cache.slots[c], cache.slots[c] + kBatch, (kSlots - kBatch) * sizeof(void*));
    cache.count[c] -= kBatch;
  }
  cache.slots[c][cache.count[c]++] = block;
}

// Kept small and free of calls but the rare one, so it needs no stack frame.
void give(int c, void* block) noexcept {
  Cache& cache = tCache;
  size_t n = cache.count[c];
  if (!cache.slots[c] || n == kSlots) return giveSlow(cache, c, block);
  cache.slots[c][n] = block;
  cache.count[c] = n + 1;
}

}  // namespace

__attribute__((noinline)) void* poolTake(size_t size) {
  int c = kPooled ? classOf(size) : -1;
  if (c >= 0) return take(c);
  void* p = std::malloc(size ? size : 1);
  if (!p) throw ZrError(Zrad::eOutOfMemory);
  return p;
}

bool fromMalloc(size_t size) { return !kPooled || classOf(size) < 0; }

__attribute__((noinline)) void poolGive(void* block, size_t size) noexcept {
  int c = kPooled ? classOf(size) : -1;
  if (c < 0) std::free(block);
  else give(c, block);
}

}  // namespace zrad::json

// Elements are the most frequent blocks: they come from their class without the size lookup.
static_assert(sizeof(ElementValue) == zrad::json::kClassSize[0] && sizeof(ElementValue) == zrad::json::kElementBytes,
              "elements fill the smallest class");

namespace zrad::json {

void* poolElementBlock() { return kPooled ? take(0) : poolTake(sizeof(ElementValue)); }

}  // namespace zrad::json
