// Storage for the nodes of one XML filer: slots cut from large blocks and freed together.
//
// A filer keeps every node it makes in its caches until it is released, so nodes are never
// freed one by one while it lives; cutting them from blocks saves a heap allocation and a free
// per node (a twentieth of the benchmark's load and walk). Each slot holds a count on its
// arena, as does the filer, so nodes a caller still holds after the filer's release keep their
// storage until the last of them is gone.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace zrad::xml {

class NodeArena {
 public:
  // Slots are aligned for pointers and anything of their alignment or less.
  static constexpr size_t kAlign = alignof(void*);

  // A new arena holding one count, its creator's; throws std::bad_alloc.
  static NodeArena* create() { return new NodeArena; }
  NodeArena(const NodeArena&) = delete;
  NodeArena& operator=(const NodeArena&) = delete;

  // `size` bytes counting on this arena until deallocate(); throws std::bad_alloc.
  // Not thread-safe: one thread at a time makes nodes.
  void* allocate(size_t size);
  // Gives back storage from allocate(), whichever arena it came from.
  static void deallocate(void* storage);
  // The arena `storage` (from allocate()) was cut from.
  static NodeArena& owner(const void* storage);
  // Drops one count; the last frees the arena and every block.
  void release();

 private:
  NodeArena() = default;
  ~NodeArena() = default;

  std::atomic<size_t> m_counts{1};
  std::vector<std::unique_ptr<unsigned char[]>> m_blocks;
  size_t m_used = 0;  // bytes handed out of the last block
  size_t m_size = 0;  // and its size
};

}  // namespace zrad::xml
