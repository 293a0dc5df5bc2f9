// The element pool: small blocks for elements, names, texts and member lists, cached per thread.
//
// Trees are built and dropped constantly, block by block, so each thread keeps a free list per
// size class (32, 64, 128 and 256 bytes) and trades whole batches with a shared stock under a
// mutex; a thread that frees what another built hands the surplus back, so memory stays
// bounded by the peak of live blocks. Chunks are kept for the life of the process. Larger
// blocks, and every block in sanitizer builds (so use-after-free is still caught), come from
// malloc.
#include "json/element_pool.h"

#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include <zrad/json.h>

namespace zrad::json {
namespace {

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

constexpr int kClasses = 4;
constexpr size_t kClassSize[kClasses] = {32, 64, 128, 256};
constexpr size_t kBatchBytes = 64 * 1024;  // moved between a thread and the stock at once
constexpr size_t kChunkBytes = 32 * 1024;

int classOf(size_t size) {
  for (int c = 0; c < kClasses; ++c)
    if (size <= kClassSize[c]) return c;
  return -1;
}

// Blocks per batch, a table so the hot paths need no division.
constexpr size_t kBatch[kClasses] = {kBatchBytes / kClassSize[0], kBatchBytes / kClassSize[1],
                                     kBatchBytes / kClassSize[2], kBatchBytes / kClassSize[3]};
size_t batchOf(int c) { return kBatch[c]; }

struct FreeBlock {
  FreeBlock* next;
};

struct Batch {
  FreeBlock* head;
  size_t count;
};

struct Stock {
  std::mutex mutex;
  std::vector<Batch> batches[kClasses];
  std::vector<void*> chunks;  // every chunk, so the memory stays reachable

  // A batch of free blocks of class `c`: a returned one, or a fresh chunk.
  Batch take(int c) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!batches[c].empty()) {
      Batch b = batches[c].back();
      batches[c].pop_back();
      return b;
    }
    char* chunk = static_cast<char*>(std::malloc(kChunkBytes));
    if (!chunk) throw std::bad_alloc();
    chunks.push_back(chunk);
    size_t count = kChunkBytes / kClassSize[c];
    FreeBlock* head = nullptr;
    for (size_t i = count; i-- > 0;) {
      auto* n = reinterpret_cast<FreeBlock*>(chunk + i * kClassSize[c]);
      n->next = head;
      head = n;
    }
    return {head, count};
  }
  void give(int c, Batch b) {
    if (!b.count) return;
    std::lock_guard<std::mutex> lock(mutex);
    batches[c].push_back(b);
  }
};

Stock& stock() {
  static Stock* s = new Stock;  // never destroyed: threads may free elements during exit
  return *s;
}

// Trivially destructible, so it stays usable while other thread-local objects are destroyed.
struct Cache {
  FreeBlock* head[kClasses];
  size_t count[kClasses];
  FreeBlock* spare[kClasses];  // a full batch, so handing one back needs no walk of a list
  bool closed;                 // the thread is exiting: go straight to the stock
};
// Initial-exec: the library is loaded with the program, and the general model would cost a
// call to __tls_get_addr on every allocation.
__attribute__((tls_model("initial-exec"))) thread_local Cache tCache;

struct CacheCloser {
  ~CacheCloser() {
    for (int c = 0; c < kClasses; ++c) {
      stock().give(c, {tCache.head[c], tCache.count[c]});
      if (tCache.spare[c]) stock().give(c, {tCache.spare[c], batchOf(c)});
    }
    tCache = Cache{};
    tCache.closed = true;
  }
};
thread_local CacheCloser tCloser;

void* take(int c) {
  Cache& cache = tCache;
  if (!cache.head[c] && cache.spare[c]) {
    cache.head[c] = std::exchange(cache.spare[c], nullptr);
    cache.count[c] = batchOf(c);
  }
  if (!cache.head[c]) {
    Batch b = stock().take(c);
    if (cache.closed) {
      stock().give(c, {b.head->next, b.count - 1});
      return b.head;
    }
    (void)&tCloser;  // registers the closer for this thread
    cache.head[c] = b.head;
    cache.count[c] = b.count;
  }
  FreeBlock* n = cache.head[c];
  cache.head[c] = n->next;
  // The next take reads that block's link: start fetching it now rather than chase it then.
  __builtin_prefetch(cache.head[c], 1);
  --cache.count[c];
  return n;
}

void give(int c, void* block) {
  Cache& cache = tCache;
  auto* n = static_cast<FreeBlock*>(block);
  if (cache.closed) {
    n->next = nullptr;
    stock().give(c, {n, 1});
    return;
  }
  n->next = cache.head[c];
  cache.head[c] = n;
  if (++cache.count[c] < batchOf(c)) return;
  // The head list is now a full batch: it becomes the spare, and an older spare goes back so a
  // thread that only frees does not hoard.
  if (cache.spare[c]) stock().give(c, {cache.spare[c], batchOf(c)});
  cache.spare[c] = cache.head[c];
  cache.head[c] = nullptr;
  cache.count[c] = 0;
}

}  // namespace

void* poolAlloc(size_t size) {
  int c = kPooled ? classOf(size) : -1;
  if (c >= 0) return take(c);
  void* p = std::malloc(size ? size : 1);
  if (!p) throw ZrError(Zrad::eOutOfMemory);
  return p;
}

void poolFree(void* block, size_t size) {
  if (!block) return;
  int c = kPooled ? classOf(size) : -1;
  if (c >= 0) give(c, block);
  else std::free(block);
}

}  // namespace zrad::json

void* ElementValue::operator new(size_t size) { return zrad::json::poolAlloc(size); }

void ElementValue::operator delete(void* block, size_t size) { zrad::json::poolFree(block, size); }
