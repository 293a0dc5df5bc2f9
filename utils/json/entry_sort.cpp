// Sorting the entries of a new Object: keys of eight name bytes, an insertion sort for the
// usual small objects, and a memo of the shapes already sorted.
#include "json/entry_sort.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zrad::json {
namespace {

// Objects up to this many entries are sorted without touching the heap, and remembered.
constexpr uint32_t kSmall = 32;

// Room for `n` keys: on the stack for small counts, else on the heap.
class KeyBuffer {
 public:
  explicit KeyBuffer(uint32_t n) : m_data(n <= kSmall ? m_local : new SortKey[n]) {}
  ~KeyBuffer() {
    if (m_data != m_local) delete[] m_data;
  }
  KeyBuffer(const KeyBuffer&) = delete;
  KeyBuffer& operator=(const KeyBuffer&) = delete;
  SortKey* data() { return m_data; }
  SortKey& operator[](uint32_t i) { return m_data[i]; }

 private:
  SortKey m_local[kSmall];
  SortKey* m_data;
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

// The bytes of a name after the eight its key holds.
std::string_view tailOf(const Name& name) { return name.size > 8 ? name.view().substr(8) : std::string_view(); }

}  // namespace

struct ShapeMemo::Shape {
  std::vector<uint64_t> prefixes;  // in stream order, with the sizes
  std::vector<uint32_t> sizes;
  std::string tails;            // tailOf each name, in stream order
  std::vector<uint32_t> order;  // sorted position => stream index; empty: nothing remembered
};

ShapeMemo::ShapeMemo() = default;
ShapeMemo::~ShapeMemo() = default;

const uint32_t* ShapeMemo::find(const Entry* gathered, const SortKey* keys, uint32_t count) const {
  if (!m_shapes || count > kSmall) return nullptr;
  const Shape& shape = m_shapes[count];
  if (shape.order.empty()) return nullptr;
  std::string_view tails = shape.tails;
  for (uint32_t i = 0; i < count; ++i) {
    if (keys[i].prefix != shape.prefixes[i] || gathered[i].name.size != shape.sizes[i]) return nullptr;
    std::string_view tail = tailOf(gathered[i].name);
    if (tails.substr(0, tail.size()) != tail) return nullptr;
    tails.remove_prefix(tail.size());
  }
  return shape.order.data();
}

void ShapeMemo::remember(const Entry* gathered, const SortKey* sorted, uint32_t count) {
  if (count > kSmall) return;
  if (!m_shapes) m_shapes.reset(new Shape[kSmall + 1]);
  Shape& shape = m_shapes[count];
  shape.prefixes.resize(count);
  shape.sizes.resize(count);
  shape.order.resize(count);
  shape.tails.clear();
  for (uint32_t i = 0; i < count; ++i) {
    shape.prefixes[sorted[i].index] = sorted[i].prefix;
    shape.order[i] = sorted[i].index;
    shape.sizes[i] = gathered[i].name.size;
    shape.tails += tailOf(gathered[i].name);
  }
}

ObjectStore* settleEntries(Entry* gathered, uint32_t count, Repeats rule, ShapeMemo* memo) {
  if (count == 0) return nullptr;
  KeyBuffer keys(count);
  for (uint32_t i = 0; i < count; ++i) keys[i] = {prefixOf(gathered[i].name), i};
  auto less = [gathered](const SortKey& a, const SortKey& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return compareNames(gathered[a.index].name.view(), gathered[b.index].name.view()) < 0;
  };
  bool sorted = true;
  for (uint32_t i = 1; i < count && sorted; ++i) sorted = less(keys[i - 1], keys[i]);
  const uint32_t* known = sorted || !memo ? nullptr : memo->find(gathered, keys.data(), count);

  auto* store = static_cast<ObjectStore*>(newBlock(sizeof(Entry), count));
  Entry* out = store->items();
  if (sorted) {
    std::memcpy(out, gathered, count * sizeof(Entry));
    return store;
  }
  if (known) {
    for (uint32_t i = 0; i < count; ++i) out[i] = gathered[known[i]];
    return store;
  }
  // Stable, so repeated names stay in stream order for the settling below.
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
  if (memo && n == count) memo->remember(gathered, keys.data(), count);
  return store;
}

}  // namespace zrad::json
