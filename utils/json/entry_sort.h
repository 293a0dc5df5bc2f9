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
  const uint32_t* find(const Entry* gathered, const SortKey* keys, uint32_t count) const;
  // Remembers the order `sorted` of `gathered`, whose names are all different.
  void remember(const Entry* gathered, const SortKey* sorted, uint32_t count);

 private:
  struct Shape;
  std::unique_ptr<Shape[]> m_shapes;  // one per count up to kMaxCount, made on first use
};

// A block of the entries `gathered` in stream order, sorted by name with repeated names settled
// by `rule`; null when count is 0. Every name and value moves into the block or is freed; if
// memory runs out (ZrError thrown) they all stay with `gathered`.
ObjectStore* settleEntries(Entry* gathered, uint32_t count, Repeats rule, ShapeMemo* memo = nullptr);

}  // namespace zrad::json
