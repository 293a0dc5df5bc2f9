// Element storage: text blocks, property names, item and entry blocks.
//
// Blocks come from the element pool; entries and item pointers are trivially relocatable, so
// growing copies raw bytes.
#include "json/element_store.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>

#include "json/element_pool.h"

namespace zrad::json {
namespace {

// Members of a dropped container are scattered: fetch a few ahead so their misses overlap.
constexpr uint32_t kReleaseAhead = 4;

size_t blockBytes(size_t itemSize, uint32_t capacity) { return sizeof(Block<char>) + capacity * itemSize; }

}  // namespace

static_assert(sizeof(ElementValue) == 32, "a short String's text spans the value and second words");

void freeText(ElementValue& e) {
  if (ElementAccess::words(e)[15]) return;
  auto* t = reinterpret_cast<TextStore*>(ElementAccess::word(e));
  if (t) poolFree(t, sizeof(TextStore) + t->size + 1);
}

void textBlockWords(std::string_view text, uint64_t& lo, uint64_t& hi) {
  auto* t = static_cast<TextStore*>(poolAlloc(sizeof(TextStore) + text.size() + 1));
  t->size = static_cast<uint32_t>(text.size());
  std::memcpy(t->data(), text.data(), text.size());
  t->data()[text.size()] = 0;
  lo = reinterpret_cast<uint64_t>(t);
  hi = 0;
}

void setText(ElementValue& e, std::string_view text) {
  uint64_t lo, hi;
  textWords(text, lo, hi);
  // The text may be `e`'s own: it is copied before the old one is freed.
  freeText(e);
  ElementAccess::word(e) = lo;
  ElementAccess::second(e) = hi;
}

void makeHeapName(Name& name, std::string_view text) {
  char* heap = static_cast<char*>(poolAlloc(text.size()));
  std::memcpy(heap, text.data(), text.size());
  std::memcpy(name.bytes, &heap, sizeof heap);
  name.size = static_cast<uint32_t>(text.size());  // last: a failed allocation leaves no heap name
}

void freeHeapName(Name& name) { poolFree(const_cast<char*>(name.view().data()), name.size); }

void* growBlock(void* block, size_t itemSize, uint32_t needed) {
  uint32_t capacity = block ? static_cast<Block<char>*>(block)->capacity : 0;
  if (needed <= capacity) return block;
  uint64_t grown = capacity < 4 ? 4 : uint64_t(capacity) * 2;
  if (grown < needed) grown = needed;
  if (grown > 0x7FFFFFFF) grown = 0x7FFFFFFF;
  if (grown < needed) throw ZrError(Zrad::eOutOfMemory);
  auto* b = static_cast<Block<char>*>(poolAlloc(blockBytes(itemSize, static_cast<uint32_t>(grown))));
  b->size = 0;
  if (block) {
    auto* old = static_cast<Block<char>*>(block);
    b->size = old->size;
    std::memcpy(b->items(), old->items(), old->size * itemSize);
    freeBlock(old, itemSize);
  }
  b->capacity = static_cast<uint32_t>(grown);
  return b;
}

void freeBlock(void* block, size_t itemSize) {
  if (block) poolFree(block, blockBytes(itemSize, static_cast<Block<char>*>(block)->capacity));
}

void* newBlock(size_t itemSize, uint32_t count) {
  auto* b = static_cast<Block<char>*>(poolAlloc(blockBytes(itemSize, count)));
  b->size = b->capacity = count;
  return b;
}

void* blockFrom(const void* items, size_t itemSize, uint32_t count) {
  if (count == 0) return nullptr;
  void* b = newBlock(itemSize, count);
  copyBytes(static_cast<Block<char>*>(b)->items(), static_cast<const char*>(items), count * itemSize);
  return b;
}

void freeItems(ItemStore* store) {
  if (!store) return;
  for (uint32_t i = 0; i < store->size; ++i) {
    if (i + kReleaseAhead < store->size) __builtin_prefetch(store->items()[i + kReleaseAhead]);
    releaseItem(store->items()[i]);
  }
  freeBlock(store, sizeof(IElementValueBase*));
}

void freeEntries(ObjectStore* store) {
  if (!store) return;
  for (uint32_t i = 0; i < store->size; ++i) {
    if (i + kReleaseAhead < store->size) __builtin_prefetch(store->items()[i + kReleaseAhead].value);
    freeName(store->items()[i].name);
    releaseItem(store->items()[i].value);
  }
  freeBlock(store, sizeof(Entry));
}

int findEntry(const Entry* entries, uint32_t count, std::string_view name) {
  int lo = 0, hi = static_cast<int>(count) - 1;
  while (lo <= hi) {
    int mid = (lo + hi) >> 1;
    int c = compareNames(entries[mid].name.view(), name);
    if (c == 0) return mid;
    if (c < 0) lo = mid + 1;
    else hi = mid - 1;
  }
  return -lo - 1;
}

namespace {

bool nameBefore(const Entry& a, const Entry& b) { return compareNames(a.name.view(), b.name.view()) < 0; }

// Moves the `count` entries after the first `ordered` ones, both runs in order and all names
// different, into their places. Each finds its place by a binary search, and every entry moves
// at most once, in blocks; a whole merge would compare every entry it passes.
void placeTail(Entry* entries, uint32_t ordered, uint32_t count) {
  std::unique_ptr<Entry[]> tail(new (std::nothrow) Entry[count]);
  if (!tail) {
    std::inplace_merge(entries, entries + ordered, entries + ordered + count, nameBefore);
    return;
  }
  std::memcpy(tail.get(), entries + ordered, count * sizeof(Entry));
  uint32_t end = ordered;  // the ordered entries not moved yet
  for (uint32_t j = count; j-- > 0;) {
    int at = findEntry(entries, end, tail[j].name.view());
    uint32_t pos = static_cast<uint32_t>(at < 0 ? -at - 1 : at);
    std::memmove(entries + pos + j + 1, entries + pos, (end - pos) * sizeof(Entry));
    entries[pos + j] = tail[j];
    end = pos;
  }
}

}  // namespace

void settle(ElementValue& object) {
  const uint64_t unordered = __atomic_load_n(&ElementAccess::second(object), __ATOMIC_ACQUIRE);
  if (!unordered) return;
  // In place, so the block stays where readers find it.
  auto* store = reinterpret_cast<ObjectStore*>(ElementAccess::word(object));
  Entry* tail = store->items() + store->size - unordered;
  std::sort(tail, tail + unordered, nameBefore);
  placeTail(store->items(), static_cast<uint32_t>(store->size - unordered), static_cast<uint32_t>(unordered));
  __atomic_store_n(&ElementAccess::second(object), 0, __ATOMIC_RELEASE);
}

void settleShared(const ElementValue& object) {
  static std::mutex* lock = new std::mutex;  // never destroyed: threads may read trees during exit
  std::lock_guard<std::mutex> guard(*lock);
  settle(const_cast<ElementValue&>(object));
}

}  // namespace zrad::json
