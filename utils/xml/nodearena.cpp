// The XML filer's node storage: each slot starts with a pointer to its block, and each block
// with its count and its arena.
#include "xml/nodearena.h"

#include <atomic>
#include <cstring>
#include <new>

namespace zrad::xml {

struct NodeArena::Block {
  std::atomic<size_t> counts{1};  // the arena's, and one per slot in use
  NodeArena* arena;

  // A block of `size` bytes of slots after the head.
  static Block* make(NodeArena* arena, size_t size) {
    return new (::operator new(sizeof(Block) + size)) Block{arena};
  }
  explicit Block(NodeArena* owner) : arena(owner) {}
  unsigned char* slots() { return reinterpret_cast<unsigned char*>(this + 1); }
  void release() {
    if (counts.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    this->~Block();
    ::operator delete(this);
  }
};

namespace {

constexpr size_t kBlockSize = 16 * 1024;
constexpr size_t kHeader = sizeof(void*);  // the slot's block
static_assert(kHeader % NodeArena::kAlign == 0, "slots after the header stay aligned");

size_t roundUp(size_t size) {
  return (size + NodeArena::kAlign - 1) / NodeArena::kAlign * NodeArena::kAlign;
}

}  // namespace

NodeArena::~NodeArena() {
  for (Block* block : m_blocks) block->release();
}

void* NodeArena::allocate(size_t size) {
  const size_t slot = kHeader + roundUp(size);
  if (m_size - m_used < slot) {
    m_blocks.reserve(m_blocks.size() + 1);  // so that the new block cannot be lost
    m_size = slot > kBlockSize ? slot : kBlockSize;
    m_blocks.push_back(Block::make(this, m_size));
    m_used = 0;
  }
  Block* block = m_blocks.back();
  unsigned char* start = block->slots() + m_used;
  m_used += slot;
  static_assert(sizeof block == kHeader, "the header holds the block");
  std::memcpy(start, &block, sizeof block);
  block->counts.fetch_add(1, std::memory_order_relaxed);
  return start + kHeader;
}

NodeArena::Block* NodeArena::blockOf(const void* storage) {
  Block* block;
  std::memcpy(&block, static_cast<const unsigned char*>(storage) - kHeader, sizeof block);
  return block;
}

NodeArena& NodeArena::owner(const void* storage) { return *blockOf(storage)->arena; }

void NodeArena::deallocate(void* storage) { blockOf(storage)->release(); }

}  // namespace zrad::xml
