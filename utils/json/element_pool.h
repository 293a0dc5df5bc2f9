// The element pool: small blocks of the element tree from per-thread free lists, or laid out in
// order in chunks while a tree is built in one go.
#pragma once

#include <cstddef>

namespace zrad::json {

// A block of at least `size` bytes from the thread's free lists (from malloc above the largest
// class, and in sanitizer builds); throws ZrError(eOutOfMemory) when memory is exhausted.
// allocBlock and freeBlockIn in element_slab.h take and give back every block of the tree,
// a chunk's included.
void* poolTake(size_t size);
// Returns the non-null `block` from poolTake; `size` must be the size it was asked for.
void poolGive(void* block, size_t size) noexcept;
// Whether poolTake takes `size` bytes from malloc, so that a block of that size from malloc
// or realloc may be given to poolGive.
bool fromMalloc(size_t size);

// The block of one ElementValue from the pool (elementBlock in element_slab.h takes it from the
// chunk during a bulk build); freeBlockIn there gives either back.
void* poolElementBlock();

struct ChunkState;  // element_slab.h

// While a BulkBuild is open on a thread, the small blocks the thread asks for (elements, texts,
// names, member blocks up to 1 KiB) are cut one after another from the thread's current chunk,
// so a tree read, cloned or decoded in one go lies in memory in the order its walks visit it.
// Each block still goes back on its own; a chunk is given back when its last block is.
class BulkBuild {
 public:
  BulkBuild();
  ~BulkBuild();
  BulkBuild(const BulkBuild&) = delete;
  BulkBuild& operator=(const BulkBuild&) = delete;

  // The thread's chunk state, for the builder to hand to every block it takes.
  ChunkState& chunks() const { return m_s; }

 private:
  ChunkState& m_s;
  bool m_open;
};

}  // namespace zrad::json
