// Storage for the nodes of one XML filer: slots cut from large blocks.
//
// A filer keeps every node it makes in its caches until it is released, so nodes are never
// freed one by one while it lives; cutting them from blocks saves a heap allocation and a free
// per node (a twentieth of the benchmark's load and walk). A block is counted by its arena and
// by every slot in use in it, and goes when both are gone: a node a caller still holds after
// the filer's release keeps its own block, not the whole arena.
#pragma once

#include <cstddef>
#include <vector>

namespace zrad::xml {

class NodeArena {
 public:
  // Slots are aligned for pointers and anything of their alignment or less.
  static constexpr size_t kAlign = alignof(void*);

  NodeArena() = default;
  // Lets go of every block; those still holding nodes stay until their last node is gone.
  ~NodeArena();
  NodeArena(const NodeArena&) = delete;
  NodeArena& operator=(const NodeArena&) = delete;

  // `size` bytes, counted on their block until deallocate(); throws std::bad_alloc.
  // Not thread-safe: one thread at a time makes nodes.
  void* allocate(size_t size);
  // Gives back storage from allocate(), whichever arena it came from, even one now gone.
  static void deallocate(void* storage);
  // The arena `storage` (from allocate()) was cut from; only while that arena lives.
  static NodeArena& owner(const void* storage);

 private:
  struct Block;
  // The block whose slot holds `storage`.
  static Block* blockOf(const void* storage);

  std::vector<Block*> m_blocks;
  size_t m_used = 0;  // bytes handed out of the last block
  size_t m_size = 0;  // and its size
};

}  // namespace zrad::xml
