// Sorting the entries of a new Object: keys of eight name bytes, an insertion sort for the
// usual small objects, and a memo of the shapes already sorted.
#include "json/entry_sort.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zrad::json {
namespace {

constexpr uint32_t kSmall = KeyBuffer::kSmall;  // entries sorted without the heap, and remembered

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

const uint32_t* ShapeMemo::find(NameList gathered, const SortKey* keys, uint32_t count) const {
  if (!m_shapes || count > kSmall) return nullptr;
  const Shape& shape = m_shapes[count];
  if (shape.order.empty()) return nullptr;
  std::string_view tails = shape.tails;
  for (uint32_t i = 0; i < count; ++i) {
    if (keys[i].prefix != shape.prefixes[i] || gathered[i].size != shape.sizes[i]) return nullptr;
    std::string_view tail = tailOf(gathered[i]);
    if (tails.substr(0, tail.size()) != tail) return nullptr;
    tails.remove_prefix(tail.size());
  }
  return shape.order.data();
}

void ShapeMemo::remember(NameList gathered, const SortKey* sorted, uint32_t count) {
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
    shape.sizes[i] = gathered[i].size;
    shape.tails += tailOf(gathered[i]);
  }
}

EntryOrder::EntryOrder(NameList gathered, uint32_t count, ShapeMemo* memo) : m_gathered(gathered), m_keys(count) {
  for (uint32_t i = 0; i < count; ++i) m_keys[i] = {prefixOf(gathered[i]), i};
  auto less = [gathered](const SortKey& a, const SortKey& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return compareNames(gathered[a.index].view(), gathered[b.index].view()) < 0;
  };
  bool sorted = true;
  for (uint32_t i = 1; i < count && sorted; ++i) sorted = less(m_keys[i - 1], m_keys[i]);
  if (sorted) return;
  m_known = memo ? memo->find(gathered, m_keys.data(), count) : nullptr;
  if (m_known) return;
  if (count <= kSmall) {
    for (uint32_t i = 1; i < count; ++i) {
      SortKey moving = m_keys[i];
      uint32_t j = i;
      for (; j > 0 && less(moving, m_keys[j - 1]); --j) m_keys[j] = m_keys[j - 1];
      m_keys[j] = moving;
    }
  } else {
    std::stable_sort(m_keys.data(), m_keys.data() + count, less);
  }
  for (uint32_t i = 1; i < count && m_unique; ++i) m_unique = !sameName(i);
  if (memo && m_unique) memo->remember(gathered, m_keys.data(), count);
}

bool EntryOrder::sameName(uint32_t i) const {
  return m_keys[i - 1].prefix == m_keys[i].prefix &&
         m_gathered[m_keys[i - 1].index].view() == m_gathered[m_keys[i].index].view();
}

ObjectStore* settleEntries(Entry* gathered, uint32_t count, Repeats rule) {
  if (count == 0) return nullptr;
  EntryOrder order(namesOf(gathered), count, nullptr);
  auto* store = static_cast<ObjectStore*>(newBlock(sizeof(Entry), count));
  Entry* out = store->items();
  uint32_t n = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Entry& next = gathered[order[i]];
    // Compared with the entry kept: the names of the repeats before it are freed already.
    if (n > 0 && !order.unique() && out[n - 1].name.view() == next.name.view()) {
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
