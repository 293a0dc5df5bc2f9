// The XML filer's node storage: a pointer to the arena before each slot, bumped out of blocks.
#include "xml/nodearena.h"

namespace zrad::xml {

namespace {

constexpr size_t kBlockSize = 16 * 1024;
constexpr size_t kHeader = sizeof(NodeArena*);
static_assert(kHeader % NodeArena::kAlign == 0, "slots after the header stay aligned");

size_t roundUp(size_t size) {
  return (size + NodeArena::kAlign - 1) / NodeArena::kAlign * NodeArena::kAlign;
}

}  // namespace

void* NodeArena::allocate(size_t size) {
  const size_t slot = kHeader + roundUp(size);
  if (m_size - m_used < slot) {
    m_size = slot > kBlockSize ? slot : kBlockSize;
    m_blocks.emplace_back(new unsigned char[m_size]);
    m_used = 0;
  }
  unsigned char* start = m_blocks.back().get() + m_used;
  m_used += slot;
  *reinterpret_cast<NodeArena**>(start) = this;
  m_counts.fetch_add(1, std::memory_order_relaxed);
  return start + kHeader;
}

NodeArena& NodeArena::owner(const void* storage) {
  const unsigned char* slot = static_cast<const unsigned char*>(storage) - kHeader;
  return **reinterpret_cast<NodeArena* const*>(slot);
}

void NodeArena::deallocate(void* storage) { owner(storage).release(); }

void NodeArena::release() {
  if (m_counts.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

}  // namespace zrad::xml
