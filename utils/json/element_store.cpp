// Element storage: text blocks, property names, item and entry blocks.
//
// Blocks come from the element pool; entries and item pointers are trivially relocatable, so
// growing copies raw bytes and sorting moves them.
#include "json/element_store.h"

#include <algorithm>

#include "json/element_pool.h"

namespace zrad::json {
namespace {

// Members of a dropped container are scattered: fetch a few ahead so their misses overlap.
constexpr uint32_t kReleaseAhead = 4;

size_t blockBytes(size_t itemSize, uint32_t capacity) { return sizeof(Block<char>) + capacity * itemSize; }

// Objects up to this many entries are sorted without touching the heap.
constexpr uint32_t kSmall = 32;

// Room for `n` items: on the stack for small counts, else on the heap.
template <class T>
class SmallBuffer {
 public:
  explicit SmallBuffer(uint32_t n) : m_data(n <= kSmall ? m_local : new T[n]) {}
  ~SmallBuffer() {
    if (m_data != m_local) delete[] m_data;
  }
  SmallBuffer(const SmallBuffer&) = delete;
  SmallBuffer& operator=(const SmallBuffer&) = delete;
  T* data() { return m_data; }
  T& operator[](uint32_t i) { return m_data[i]; }

 private:
  T m_local[kSmall];
  T* m_data;
};

// An entry's place in a sort: the first eight bytes of its name as a big-endian number (zero
// padded), which orders most pairs of names with one integer comparison, and its position.
struct SortKey {
  uint64_t prefix;
  uint32_t index;
};

static_assert(Name::kInline >= 8, "prefixOf reads eight bytes of an inline name");
uint64_t prefixOf(const Name& name) {
  // Eight bytes can always be read: an inline name has room for kInline, a heap name is longer.
  uint64_t word;
  std::memcpy(&word, name.view().data(), sizeof word);
  word = __builtin_bswap64(word);
  if (name.size >= 8) return word;
  return name.size ? word & (~uint64_t(0) << (64 - 8 * name.size)) : 0;
}

}  // namespace

static_assert(sizeof(ElementValue) == 32, "a short String's text spans the value and second words");

void freeText(ElementValue& e) {
  if (ElementAccess::words(e)[15]) return;
  auto* t = reinterpret_cast<TextStore*>(ElementAccess::word(e));
  if (t) poolFree(t, sizeof(TextStore) + t->size + 1);
}

void setText(ElementValue& e, std::string_view text) {
  char words[16] = {};
  if (text.empty()) {
    // neither word holds anything
  } else if (text.size() <= kInlineText) {
    std::memcpy(words, text.data(), text.size());
    words[15] = static_cast<char>(kInlineMark | text.size());
  } else {
    auto* t = static_cast<TextStore*>(poolAlloc(sizeof(TextStore) + text.size() + 1));
    t->size = static_cast<uint32_t>(text.size());
    std::memcpy(t->data(), text.data(), text.size());
    t->data()[text.size()] = 0;
    std::memcpy(words, &t, sizeof t);
  }
  freeText(e);
  std::memcpy(ElementAccess::words(e), words, sizeof words);
}

void makeName(Name& name, std::string_view text) {
  name.size = static_cast<uint32_t>(text.size());
  if (text.size() <= Name::kInline) {
    if (!text.empty()) std::memcpy(name.bytes, text.data(), text.size());
    return;
  }
  char* heap = static_cast<char*>(poolAlloc(text.size()));
  std::memcpy(heap, text.data(), text.size());
  std::memcpy(name.bytes, &heap, sizeof heap);
}

void freeName(Name& name) {
  if (name.size > Name::kInline) poolFree(const_cast<char*>(name.view().data()), name.size);
  name.size = 0;
}

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

void* blockFrom(const void* items, size_t itemSize, uint32_t count) {
  if (count == 0) return nullptr;
  auto* b = static_cast<Block<char>*>(poolAlloc(blockBytes(itemSize, count)));
  b->size = b->capacity = count;
  std::memcpy(b->items(), items, count * itemSize);
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

int findEntry(const ObjectStore* store, std::string_view name) {
  int lo = 0, hi = static_cast<int>(sizeOf(store)) - 1;
  while (lo <= hi) {
    int mid = (lo + hi) >> 1;
    int c = compareNames(store->items()[mid].name.view(), name);
    if (c == 0) return mid;
    if (c < 0) lo = mid + 1;
    else hi = mid - 1;
  }
  return -lo - 1;
}

ObjectStore* settleEntries(Entry* gathered, uint32_t count, Repeats rule) {
  if (count == 0) return nullptr;
  SmallBuffer<SortKey> keys(count);
  for (uint32_t i = 0; i < count; ++i) keys[i] = {prefixOf(gathered[i].name), i};
  auto* store = static_cast<ObjectStore*>(poolAlloc(blockBytes(sizeof(Entry), count)));
  store->capacity = count;
  Entry* out = store->items();
  auto less = [gathered](const SortKey& a, const SortKey& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return compareNames(gathered[a.index].name.view(), gathered[b.index].name.view()) < 0;
  };
  bool sorted = true;
  for (uint32_t i = 1; i < count && sorted; ++i) sorted = less(keys[i - 1], keys[i]);
  if (sorted) {
    std::memcpy(out, gathered, count * sizeof(Entry));
    store->size = count;
    return store;
  }
  // Stable, so repeated names stay in stream order for the settling below. Most objects are
  // small: insertion sort needs no buffer.
  if (count <= kSmall) {
    for (uint32_t i = 1; i < count; ++i) {
      SortKey moving = keys[i];
      uint32_t j = i;
      for (; j > 0 && less(moving, keys[j - 1]); --j) keys[j] = keys[j - 1];
      keys[j] = moving;
    }
  } else {
    std::stable_sort(keys.data(), keys.data() + count, less);
  }
  uint32_t n = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Entry& next = gathered[keys[i].index];
    if (n > 0 && keys[i - 1].prefix == keys[i].prefix && out[n - 1].name.view() == next.name.view()) {
      Entry& kept = out[n - 1];
      bool keepOld = rule == Repeats::kLikeSetProperty && kept.value && isReadOnly(static_cast<uint32_t>(kept.value->getType()));
      if (!keepOld) std::swap(kept.value, next.value);
      freeName(next.name);
      releaseItem(next.value);
      continue;
    }
    out[n++] = next;
  }
  store->size = n;
  return store;
}

}  // namespace zrad::json
