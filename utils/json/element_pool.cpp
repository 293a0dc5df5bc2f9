// The element pool: fixed-size blocks for ElementValue, cached per thread.
//
// Trees are built and dropped constantly, node by node, so each thread keeps a free list and
// trades whole batches with a shared stock under a mutex; a thread that frees what another
// built hands the surplus back, so memory stays bounded by the peak number of live elements.
// Chunks are kept for the life of the process. Sanitizer builds use plain new and delete so
// that use-after-free is still caught.
#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

#include <zrad/json.h>

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

constexpr size_t kNodeSize = sizeof(ElementValue);
constexpr size_t kChunkNodes = 1024;
constexpr size_t kBatch = 2048;

struct FreeNode {
  FreeNode* next;
};

struct Batch {
  FreeNode* head;
  size_t count;
};

struct Stock {
  std::mutex mutex;
  std::vector<Batch> batches;
  std::vector<void*> chunks;  // every chunk, so the memory stays reachable

  // A batch of free nodes: a returned one, or a fresh chunk.
  Batch take() {
    std::lock_guard<std::mutex> lock(mutex);
    if (!batches.empty()) {
      Batch b = batches.back();
      batches.pop_back();
      return b;
    }
    char* chunk = static_cast<char*>(std::malloc(kChunkNodes * kNodeSize));
    if (!chunk) throw std::bad_alloc();
    chunks.push_back(chunk);
    FreeNode* head = nullptr;
    for (size_t i = kChunkNodes; i-- > 0;) {
      auto* n = reinterpret_cast<FreeNode*>(chunk + i * kNodeSize);
      n->next = head;
      head = n;
    }
    return {head, kChunkNodes};
  }
  void give(Batch b) {
    if (!b.count) return;
    std::lock_guard<std::mutex> lock(mutex);
    batches.push_back(b);
  }
};

Stock& stock() {
  static Stock* s = new Stock;  // never destroyed: threads may free elements during exit
  return *s;
}

// Trivially destructible, so it stays usable while other thread-local objects are destroyed.
struct Cache {
  FreeNode* head;
  size_t count;
  bool closed;  // the thread is exiting: go straight to the stock
};
// Initial-exec: the library is loaded with the program, and the general model would cost a
// call to __tls_get_addr on every allocation.
__attribute__((tls_model("initial-exec"))) thread_local Cache tCache;

struct CacheCloser {
  ~CacheCloser() {
    stock().give({tCache.head, tCache.count});
    tCache = {nullptr, 0, true};
  }
};
thread_local CacheCloser tCloser;

void* takeNode() {
  Cache& c = tCache;
  if (!c.head) {
    Batch b = stock().take();
    if (c.closed) {
      FreeNode* n = b.head;
      stock().give({n->next, b.count - 1});
      return n;
    }
    (void)&tCloser;  // registers the closer for this thread
    c.head = b.head;
    c.count = b.count;
  }
  FreeNode* n = c.head;
  c.head = n->next;
  --c.count;
  return n;
}

void giveNode(void* block) {
  Cache& c = tCache;
  auto* n = static_cast<FreeNode*>(block);
  if (c.closed) {
    n->next = nullptr;
    stock().give({n, 1});
    return;
  }
  n->next = c.head;
  c.head = n;
  if (++c.count < 2 * kBatch) return;
  // Hand a batch back so a thread that only frees does not hoard.
  FreeNode* first = c.head;
  FreeNode* last = first;
  for (size_t i = 1; i < kBatch; ++i) last = last->next;
  c.head = last->next;
  last->next = nullptr;
  c.count -= kBatch;
  stock().give({first, kBatch});
}

}  // namespace

void* ElementValue::operator new(size_t size) {
  if (!kPooled || size != kNodeSize) return ::operator new(size);
  return takeNode();
}

void ElementValue::operator delete(void* block, size_t size) {
  if (!block) return;
  if (!kPooled || size != kNodeSize) return ::operator delete(block);
  giveNode(block);
}
