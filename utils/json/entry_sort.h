// Sorting the entries of a new Object into its block.
#pragma once

#include <cstdint>
#include <memory>

#include "json/element_store.h"

namespace zrad::json {

// How settleEntries keeps one of several entries with the same name.
enum class Repeats {
  kLikeSetProperty,  // a later value replaces an earlier one unless that is read-only
  kLastWins,
};

// The names of entries laid out one every `stride` bytes (each at the start of its entry).
struct NameList {
  const char* base;
  size_t stride;
  const Name& operator[](uint32_t i) const { return *reinterpret_cast<const Name*>(base + i * stride); }
};
inline NameList namesOf(const Entry* entries) { return {reinterpret_cast<const char*>(entries), sizeof(Entry)}; }

// An entry's place in a sort: the first eight bytes of its name as a big-endian number (zero
// padded), which orders most pairs of names with one integer comparison, and its position.
struct SortKey {
  uint64_t prefix;
  uint32_t index;
};

// Name orders seen before, one per entry count: the objects of a document mostly repeat a few
// shapes (records with the same names in the same order), and checking a remembered shape
// takes linear time where sorting does not. A reader keeps one for the document it reads; it
// saves about 7% of the instructions of reading json_bench's config and 5% of its feed.
class ShapeMemo {
 public:
  ShapeMemo();
  ~ShapeMemo();
  ShapeMemo(const ShapeMemo&) = delete;
  ShapeMemo& operator=(const ShapeMemo&) = delete;

  // The remembered order (sorted position => stream index) when the names of `gathered`, whose
  // keys in stream order are `keys`, are those remembered for `count`; else null.
  const uint32_t* find(NameList gathered, const SortKey* keys, uint32_t count) const;
  // Remembers the order `sorted` of `gathered`, whose names are all different.
  void remember(NameList gathered, const SortKey* sorted, uint32_t count);

 private:
  struct Shape;
  std::unique_ptr<Shape[]> m_shapes;  // one per count up to KeyBuffer::kSmall, made on first use
};

// Room for `n` sort keys: on the stack for small counts, else on the heap.
class KeyBuffer {
 public:
  static constexpr uint32_t kSmall = 32;
  explicit KeyBuffer(uint32_t n) : m_data(n <= kSmall ? m_local : new SortKey[n]) {}
  ~KeyBuffer() {
    if (m_data != m_local) delete[] m_data;
  }
  KeyBuffer(const KeyBuffer&) = delete;
  KeyBuffer& operator=(const KeyBuffer&) = delete;
  SortKey* data() { return m_data; }
  SortKey& operator[](uint32_t i) { return m_data[i]; }
  const SortKey& operator[](uint32_t i) const { return m_data[i]; }

 private:
  SortKey m_local[kSmall];
  SortKey* m_data;
};

// The name order of `count` entries gathered in stream order: a stable sort, so entries with
// the same name are adjacent and keep their stream order.
class EntryOrder {
 public:
  EntryOrder(NameList gathered, uint32_t count, ShapeMemo* memo);
  EntryOrder(const EntryOrder&) = delete;
  EntryOrder& operator=(const EntryOrder&) = delete;

  // The stream index of the entry in sorted place `i`.
  uint32_t operator[](uint32_t i) const { return m_known ? m_known[i] : m_keys[i].index; }
  // Whether every name is there once.
  bool unique() const { return m_unique; }
  // Whether the entry in sorted place `i` (i >= 1) has the name of the one before it; both
  // names must still be there.
  bool repeats(uint32_t i) const { return !m_unique && sameName(i); }

 private:
  bool sameName(uint32_t i) const;

  NameList m_gathered;
  KeyBuffer m_keys;
  const uint32_t* m_known = nullptr;  // the memo's order, when it knows the shape
  bool m_unique = true;
};

// A block of the entries `gathered` in stream order, sorted by name with repeated names settled
// by `rule`; null when count is 0. Every name and value moves into the block or is freed; if
// memory runs out (ZrError thrown) they all stay with `gathered`.
ObjectStore* settleEntries(Entry* gathered, uint32_t count, Repeats rule);

}  // namespace zrad::json
