// Element storage: text blocks, property names, item and entry blocks.
//
// Blocks come from the element pool; entries and item pointers are trivially relocatable, so
// growing copies raw bytes.
#include "json/element_store.h"

#include <algorithm>

#include "json/element_pool.h"

namespace zrad::json {
namespace {

size_t blockBytes(size_t itemSize, uint32_t capacity) { return sizeof(Block<char>) + capacity * itemSize; }

}  // namespace

static_assert(sizeof(ElementValue) == 32, "a short String's text spans the value and second words");

void freeText(ChunkState& s, ElementValue& e) {
  if (ElementAccess::words(e)[15]) return;
  auto* t = reinterpret_cast<TextStore*>(ElementAccess::word(e));
  if (t) freeBlockIn(s, t, sizeof(TextStore) + t->size + 1);
}

void textBlockWords(ChunkState& s, std::string_view text, uint64_t& lo, uint64_t& hi) {
  auto* t = static_cast<TextStore*>(allocBlock(s, sizeof(TextStore) + text.size() + 1));
  t->size = static_cast<uint32_t>(text.size());
  std::memcpy(t->data(), text.data(), text.size());
  t->data()[text.size()] = 0;
  lo = reinterpret_cast<uint64_t>(t);
  hi = 0;
}

void setText(ElementValue& e, std::string_view text) {
  uint64_t lo, hi;
  ChunkState& s = tChunks;
  textWords(s, text, lo, hi);
  // The text may be `e`'s own: it is copied before the old one is freed.
  freeText(s, e);
  ElementAccess::word(e) = lo;
  ElementAccess::second(e) = hi;
}

void makeHeapName(ChunkState& s, Name& name, std::string_view text) {
  char* heap = static_cast<char*>(allocBlock(s, text.size()));
  std::memcpy(heap, text.data(), text.size());
  std::memcpy(name.bytes, &heap, sizeof heap);
  name.size = static_cast<uint32_t>(text.size());  // last: a failed allocation leaves no heap name
}

void* growBlock(void* block, size_t itemSize, uint32_t needed) {
  uint32_t capacity = block ? static_cast<Block<char>*>(block)->capacity : 0;
  if (needed <= capacity) return block;
  uint64_t grown = capacity < 4 ? 4 : uint64_t(capacity) * 2;
  if (grown < needed) grown = needed;
  if (grown > 0x7FFFFFFF) grown = 0x7FFFFFFF;
  if (grown < needed) throw ZrError(Zrad::eOutOfMemory);
  auto* b = static_cast<Block<char>*>(allocBlock(tChunks, blockBytes(itemSize, static_cast<uint32_t>(grown))));
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

void freeBlock(ChunkState& s, void* block, size_t itemSize) {
  if (block) freeBlockIn(s, block, blockBytes(itemSize, static_cast<Block<char>*>(block)->capacity));
}

void* newBlock(ChunkState& s, size_t itemSize, uint32_t count) {
  auto* b = static_cast<Block<char>*>(allocBlock(s, blockBytes(itemSize, count)));
  b->size = b->capacity = count;
  return b;
}

void* blockFrom(ChunkState& s, const void* items, size_t itemSize, uint32_t count) {
  if (count == 0) return nullptr;
  void* b = newBlock(s, itemSize, count);
  copyBytes(static_cast<Block<char>*>(b)->items(), static_cast<const char*>(items), count * itemSize);
  return b;
}

void freeItems(ChunkState& s, ItemStore* store) {
  if (!store) return;
  for (uint32_t i = 0; i < store->size; ++i) releaseItem(s, store->items()[i]);
  freeBlock(s, store, sizeof(IElementValueBase*));
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

void freeEntryBlock(ChunkState& s, ObjectStore* store) {
  if (!store) return;
  for (uint32_t i = 0; i < store->size; ++i) {
    freeName(s, store->items()[i].name);
    releaseItem(s, store->items()[i].value);
  }
  freeBlock(s, store, sizeof(Entry));
}

// The run that holds `name` or would take it: the last whose first name is not above it.
uint32_t runFor(const RunIndex* index, std::string_view name) {
  uint32_t lo = 0, hi = index->size;  // the answer is in [lo, hi)
  while (hi - lo > 1) {
    uint32_t mid = (lo + hi) / 2;
    if (compareNames(index->items()[mid].block->items()[0].name.view(), name) <= 0) lo = mid;
    else hi = mid;
  }
  return lo;
}

// Counts again the entries before each run from run `from` on.
void recount(RunIndex* index, uint32_t from) {
  Run* runs = index->items();
  for (uint32_t r = from; r < index->size; ++r) runs[r].before = r ? runs[r - 1].before + runs[r - 1].block->size : 0;
}

// Puts `entry` at `pos` in `store`, which has room for it.
void placeEntry(ObjectStore* store, uint32_t pos, const Entry& entry) {
  Entry* entries = store->items();
  std::memmove(entries + pos + 1, entries + pos, (store->size - pos) * sizeof(Entry));
  entries[pos] = entry;
  ++store->size;
}

// A run of the `count` entries at `from` with room for kRunMax.
ObjectStore* runOf(const Entry* from, uint32_t count) {
  auto* run = static_cast<ObjectStore*>(newBlock(sizeof(Entry), kRunMax));
  std::memcpy(run->items(), from, count * sizeof(Entry));
  run->size = count;
  return run;
}

// The sorted block `store` cut into runs half full, so the next inserts find room.
uint64_t runsFrom(ObjectStore* store) {
  constexpr uint32_t kHalf = kRunMax / 2;
  const uint32_t count = (store->size + kHalf - 1) / kHalf;
  auto* index = static_cast<RunIndex*>(newBlock(sizeof(Run), count));
  index->size = 0;
  try {
    for (uint32_t r = 0; r < count; ++r) {
      uint32_t first = r * kHalf;
      index->items()[r] = {runOf(store->items() + first, std::min(kHalf, store->size - first)), 0};
      ++index->size;
    }
  } catch (...) {
    for (uint32_t r = 0; r < index->size; ++r) freeBlock(index->items()[r].block, sizeof(Entry));
    freeBlock(index, sizeof(Run));
    throw;
  }
  recount(index, 0);
  freeBlock(store, sizeof(Entry));
  return reinterpret_cast<uint64_t>(index) | 1;
}

// Inserts into the runs; the entry's name is made, every block it needs is there.
void insertIntoRuns(uint64_t& word, const Entry& entry) {
  RunIndex* index = runsOf(word);
  uint32_t r = runFor(index, entry.name.view());
  const uint32_t changed = r;
  ObjectStore* run = index->items()[r].block;
  if (run->size == kRunMax) {  // split the full run in two halves
    index = static_cast<RunIndex*>(growBlock(index, sizeof(Run), index->size + 1));
    word = reinterpret_cast<uint64_t>(index) | 1;
    ObjectStore* upper = runOf(run->items() + kRunMax / 2, kRunMax / 2);
    run->size = kRunMax / 2;
    Run* runs = index->items();
    std::memmove(runs + r + 2, runs + r + 1, (index->size - r - 1) * sizeof(Run));
    runs[r + 1] = {upper, 0};
    ++index->size;
    if (compareNames(upper->items()[0].name.view(), entry.name.view()) <= 0) run = runs[++r].block;
  }
  int at = findEntry(run->items(), run->size, entry.name.view());
  placeEntry(run, static_cast<uint32_t>(-at - 1), entry);
  recount(index, changed);
}

}  // namespace

const Entry& entryInRuns(uint64_t word, uint32_t i) {
  const RunIndex* index = runsOf(word);
  uint32_t lo = 0, hi = index->size;  // the last run with before <= i
  while (hi - lo > 1) {
    uint32_t mid = (lo + hi) / 2;
    if (index->items()[mid].before <= i) lo = mid;
    else hi = mid;
  }
  const Run& run = index->items()[lo];
  return run.block->items()[i - run.before];
}

IElementValueBase** findValue(uint64_t word, std::string_view name) {
  ObjectStore* store = reinterpret_cast<ObjectStore*>(word);
  if (hasRuns(word)) {
    RunIndex* index = runsOf(word);
    store = index->items()[runFor(index, name)].block;
  }
  if (!store) return nullptr;
  int at = findEntry(store->items(), store->size, name);
  return at >= 0 ? &store->items()[at].value : nullptr;
}

void insertEntry(uint64_t& word, std::string_view name, IElementValueBase* value) {
  if (!hasRuns(word) && sizeOf(reinterpret_cast<void*>(word)) >= kRunMax)
    word = runsFrom(reinterpret_cast<ObjectStore*>(word));
  Entry entry;
  entry.value = value;
  if (hasRuns(word)) {
    makeName(entry.name, name);
    try {
      insertIntoRuns(word, entry);
    } catch (...) {
      freeName(entry.name);
      throw;
    }
    return;
  }
  // Room first, then the name: if either runs out of memory, the Object is as it was.
  auto* store = static_cast<ObjectStore*>(growBlock(reinterpret_cast<void*>(word), sizeof(Entry), sizeOf(reinterpret_cast<void*>(word)) + 1));
  word = reinterpret_cast<uint64_t>(store);
  makeName(entry.name, name);
  int at = findEntry(store->items(), store->size, name);
  placeEntry(store, static_cast<uint32_t>(-at - 1), entry);
}

bool removeEntry(uint64_t& word, std::string_view name, IElementValueBase*& value) {
  uint32_t r = 0;
  ObjectStore* store = reinterpret_cast<ObjectStore*>(word);
  if (hasRuns(word)) store = runsOf(word)->items()[r = runFor(runsOf(word), name)].block;
  int at = store ? findEntry(store->items(), store->size, name) : -1;
  if (at < 0) return false;
  Entry* entries = store->items();
  value = entries[at].value;
  freeName(entries[at].name);
  std::memmove(entries + at, entries + at + 1, (store->size - at - 1) * sizeof(Entry));
  --store->size;
  if (!hasRuns(word)) return true;
  RunIndex* index = runsOf(word);
  if (store->size == 0 && index->size > 1) {  // an empty run goes, unless it is the last one
    freeBlock(store, sizeof(Entry));
    std::memmove(index->items() + r, index->items() + r + 1, (index->size - r - 1) * sizeof(Run));
    --index->size;
  }
  recount(index, r);
  return true;
}

void freeEntries(ChunkState& s, uint64_t word) {
  if (!hasRuns(word)) return freeEntryBlock(s, reinterpret_cast<ObjectStore*>(word));
  RunIndex* index = runsOf(word);
  for (uint32_t r = 0; r < index->size; ++r) freeEntryBlock(s, index->items()[r].block);
  freeBlock(s, index, sizeof(Run));
}

}  // namespace zrad::json
