// Element storage: the owned blocks behind Array, Object and String elements.
//
// An Array holds an ItemStore (a counted block of element pointers), an Object an ObjectStore
// (a flat block of entries kept sorted byte-wise by name, so lookups are binary searches and
// enumeration is by index), a String its text (see textOf). Every block is one allocation from the
// element pool; a null block stands for empty storage. Each stored element pointer owns one reference.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>

#include <zrad/json.h>

#include "json/element_slab.h"

// Field access for the tree's own readers and writers. ElementValue keeps its words protected;
// member pointers formed through this class (never instantiated) reach them.
struct ElementAccess : ElementValue {
  static uint32_t& type(ElementValue& e) { return e.*&ElementAccess::m_type; }
  static uint32_t type(const ElementValue& e) { return e.*&ElementAccess::m_type; }
  static uint64_t& word(ElementValue& e) { return (e.*&ElementAccess::m_value).u; }
  static uint64_t word(const ElementValue& e) { return (e.*&ElementAccess::m_value).u; }
  // The second word as a whole, for moves and clears.
  static uint64_t& second(ElementValue& e) { return (e.*&ElementAccess::m_second).word; }
  static uint64_t second(const ElementValue& e) { return (e.*&ElementAccess::m_second).word; }
  // A byte block's data.
  static void*& byteBlock(ElementValue& e) { return (e.*&ElementAccess::m_second).byteBlock; }
  static const void* byteBlock(const ElementValue& e) { return (e.*&ElementAccess::m_second).byteBlock; }
  // The value and second words as 16 adjacent bytes (a short String's text).
  static char* words(ElementValue& e) { return reinterpret_cast<char*>(&(e.*&ElementAccess::m_value)); }
  static const char* words(const ElementValue& e) { return reinterpret_cast<const char*>(&(e.*&ElementAccess::m_value)); }
  static bool soleHolder(const IElementValueBase& e) {
    return (e.*&ElementAccess::m_refCount).load(std::memory_order_acquire) == 1;
  }
  // A fresh element with count 1 that the caller owns; the builders, which make many, pass
  // the thread's chunk state they hold.
  static ElementValue* make(zrad::json::ChunkState& s, uint32_t type) {
    return ElementValue::make(zrad::json::elementBlock(s), type);
  }
  static ElementValue* make(uint32_t type) { return make(zrad::json::tChunks, type); }
};

// Inline: the readers make an element for every value they meet.
inline ElementValue* ElementValue::make(void* block, uint32_t type) {
  auto* e = new (block) ElementValue();
  e->m_type = type;
  return e;
}

namespace zrad::json {

// Moves the whole content (type word, value, byte block) of `from` into `to`, freeing what `to`
// held; `from` keeps only what `to` had in its words after the free (nothing).
inline void takeContent(ElementValue& to, ElementValue& from) {
  to.freePointerValue();
  ElementAccess::type(to) = ElementAccess::type(from);
  std::swap(ElementAccess::word(to), ElementAccess::word(from));
  std::swap(ElementAccess::second(to), ElementAccess::second(from));
}

inline int kindOf(uint32_t type) { return static_cast<int>(type & 0xFF); }
inline bool isReadOnly(uint32_t type) { return (type & etReadOnlyFlag) != 0; }
// The kinds with members.
inline bool isContainer(int kind) { return kind == etObject || kind == etArray; }
// None, Array, Object (and kind 3): the kinds whose JSON form is a container.
inline bool isContainerGroup(uint32_t type) { return (type & 0xFC) == 0; }

// The element as an ElementValue when it is exactly one (its fields may then be read directly).
inline const ElementValue* asElement(const IElementValueBase* e) {
  return e && typeid(*e) == typeid(ElementValue) ? static_cast<const ElementValue*>(e) : nullptr;
}
inline ElementValue* asElement(IElementValueBase* e) {
  return e && typeid(*e) == typeid(ElementValue) ? static_cast<ElementValue*>(e) : nullptr;
}

// Drops the reference a stored pointer owns (null is accepted); the second form with the
// thread's chunk state at hand, for drops that release many.
void releaseItem(IElementValueBase* e);
void releaseItem(ChunkState& s, IElementValueBase* e);
// Frees what the element owns (its members, text or buffer); its words are left as they are.
void freeStorage(ChunkState& s, ElementValue& e);

// Copies `n` bytes; inline for the short names and texts that make up most of a tree, where a
// call to memcpy costs more than the copy: memcpy here made a binary write of json_bench's feed
// 8% dearer (instructions).
inline void copyBytes(char* dst, const char* src, size_t n) {
  auto move = [](char* d, const char* s, auto word) {
    std::memcpy(&word, s, sizeof word);
    std::memcpy(d, &word, sizeof word);
  };
  if (n > 16) {
    std::memcpy(dst, src, n);
  } else if (n >= 8) {  // two words that may overlap
    move(dst, src, uint64_t());
    move(dst + n - 8, src + n - 8, uint64_t());
  } else if (n >= 4) {
    move(dst, src, uint32_t());
    move(dst + n - 4, src + n - 4, uint32_t());
  } else if (n) {
    dst[0] = src[0];
    dst[n / 2] = src[n / 2];
    dst[n - 1] = src[n - 1];
  }
}

// ---- text ----

// A String's text, followed by a zero byte. Up to kInlineText bytes live in the element's own
// value and second words, with kInlineMark | size in their last byte (a block pointer and an
// unused second word leave that byte zero); longer texts live in a TextStore block from the pool
// held in the value word. Empty text holds neither.
constexpr size_t kInlineText = 14;
constexpr unsigned char kInlineMark = 0x80;

struct TextStore {
  uint32_t size;
  // followed by size bytes and a terminating zero
  const char* data() const { return reinterpret_cast<const char*>(this + 1); }
  char* data() { return reinterpret_cast<char*>(this + 1); }
};

inline std::string_view textOf(const ElementValue& e) {
  const char* words = ElementAccess::words(e);
  unsigned char mark = static_cast<unsigned char>(words[15]);
  if (mark) return std::string_view(words, mark & ~kInlineMark);
  auto* t = reinterpret_cast<const TextStore*>(ElementAccess::word(e));
  return t ? std::string_view(t->data(), t->size) : std::string_view("", 0);
}
// The value and second words that hold a copy of `text` (a block for a long text).
void textBlockWords(ChunkState& s, std::string_view text, uint64_t& lo, uint64_t& hi);
inline void textWords(ChunkState& chunks, std::string_view text, uint64_t& lo, uint64_t& hi) {
  // A short text is built in registers: a copy through memory would be read back in wider
  // loads than it was written, which stalls the store queue, and a memcpy-based copy made a
  // clone of json_bench's feed 5% dearer (instructions).
  auto load = [](const char* p, auto v) -> uint64_t {
    std::memcpy(&v, p, sizeof v);
    return v;
  };
  const char* s = text.data();
  size_t n = text.size();
  if (n > kInlineText) return textBlockWords(chunks, text, lo, hi);
  lo = hi = 0;
  if (n >= 8) {
    lo = load(s, uint64_t());
    if (n > 8) hi = load(s + n - 8, uint64_t()) >> (8 * (16 - n));  // bytes 8..n-1, the overlap shifted out
  } else if (n >= 4) {
    lo = load(s, uint32_t()) | load(s + n - 4, uint32_t()) << (8 * (n - 4));
  } else if (n) {
    lo = load(s, uint8_t()) | load(s + n / 2, uint8_t()) << (8 * (n / 2)) | load(s + n - 1, uint8_t()) << (8 * (n - 1));
  }
  if (n) hi |= uint64_t(kInlineMark | n) << 56;
}
// Gives the String `e` a copy of `text` in place of the text it holds.
void setText(ElementValue& e, std::string_view text);
// Gives the fresh String `e`, which holds no text yet, a copy of `text`.
inline void initText(ChunkState& s, ElementValue& e, std::string_view text) {
  textWords(s, text, ElementAccess::word(e), ElementAccess::second(e));
}
// Frees the text block of the String `e`, if it has one (the words are left as they are).
void freeText(ChunkState& s, ElementValue& e);

// ---- property names ----

// A property name: up to kInline bytes inside the entry, longer ones in a heap block.
struct Name {
  static constexpr uint32_t kInline = 20;
  uint32_t size;
  char bytes[kInline];  // the text, or the heap pointer when size > kInline

  std::string_view view() const {
    if (size <= kInline) return std::string_view(bytes, size);
    const char* heap;
    std::memcpy(&heap, bytes, sizeof heap);
    return std::string_view(heap, size);
  }
};

void makeHeapName(ChunkState& s, Name& name, std::string_view text);
// Fills `name` with a copy of `text`; pair with freeName.
inline void makeName(ChunkState& s, Name& name, std::string_view text) {
  if (text.size() > Name::kInline) return makeHeapName(s, name, text);
  copyBytes(name.bytes, text.data(), text.size());
  name.size = static_cast<uint32_t>(text.size());
}
inline void makeName(Name& name, std::string_view text) { makeName(tChunks, name, text); }
inline void freeName(ChunkState& s, Name& name) {
  if (name.size > Name::kInline) freeBlockIn(s, const_cast<char*>(name.view().data()), name.size);
  name.size = 0;
}
inline void freeName(Name& name) { freeName(tChunks, name); }

// The first min(n, 8) of the n >= 1 bytes at `p` as a number that orders like the bytes do
// (unsigned, big-endian; for fewer than 8 bytes, two overlapping loads that still compare in
// byte order when both sides have the same n).
inline uint64_t orderKey(const char* p, size_t n) {
  auto load = [](const char* q, auto v) {
    std::memcpy(&v, q, sizeof v);
    return v;
  };
  if (n >= 8) return __builtin_bswap64(load(p, uint64_t()));
  if (n >= 4) return uint64_t(__builtin_bswap32(load(p, uint32_t()))) << 32 | __builtin_bswap32(load(p + n - 4, uint32_t()));
  auto byte = [&](size_t i) { return uint64_t(static_cast<unsigned char>(p[i])); };
  return byte(0) << 16 | byte(n / 2) << 8 | byte(n - 1);
}

// strcmp order on the UTF-8 bytes (a shorter prefix first). Most names differ in their first
// byte, and most of the others within their first eight, which one integer comparison settles
// without a call.
inline int compareNames(std::string_view a, std::string_view b) {
  size_t n = a.size() < b.size() ? a.size() : b.size();
  if (n && a[0] != b[0]) return static_cast<unsigned char>(a[0]) < static_cast<unsigned char>(b[0]) ? -1 : 1;
  if (n) {
    uint64_t x = orderKey(a.data(), n), y = orderKey(b.data(), n);
    if (x != y) return x < y ? -1 : 1;
    if (n > 8) {
      int c = std::memcmp(a.data() + 8, b.data() + 8, n - 8);
      if (c != 0) return c;
    }
  }
  return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

struct Entry {
  Name name;
  IElementValueBase* value;
};

// ---- containers ----

// A counted block of T with room for `capacity`.
template <class T>
struct Block {
  uint32_t size;
  uint32_t capacity;
  T* items() { return reinterpret_cast<T*>(this + 1); }
  const T* items() const { return reinterpret_cast<const T*>(this + 1); }
};
using ItemStore = Block<IElementValueBase*>;
using ObjectStore = Block<Entry>;

// Grows `block` (null allowed) so it holds at least `needed` items; the result replaces it.
void* growBlock(void* block, size_t itemSize, uint32_t needed);
// A block of `count` items (count >= 1) not yet filled in.
void* newBlock(ChunkState& s, size_t itemSize, uint32_t count);
inline void* newBlock(size_t itemSize, uint32_t count) { return newBlock(tChunks, itemSize, count); }
// A block with exactly `count` items copied from `items`; null when count is 0.
void* blockFrom(ChunkState& s, const void* items, size_t itemSize, uint32_t count);
// Frees a block (not its items); null is accepted.
void freeBlock(ChunkState& s, void* block, size_t itemSize);
inline void freeBlock(void* block, size_t itemSize) { freeBlock(tChunks, block, itemSize); }

inline uint32_t sizeOf(const void* block) {
  return block ? static_cast<const Block<char>*>(block)->size : 0;
}

// Releases every item and frees the block.
void freeItems(ChunkState& s, ItemStore* store);

// Index of `name` among the first `count` entries (in name order), or -(insertion point) - 1
// when absent.
int findEntry(const Entry* entries, uint32_t count, std::string_view name);

// ---- object entries ----

// An Object's entries in name order, behind its value word. Most Objects hold one sorted block
// (what the readers and clone build). An Object of kRunMax entries or more that takes a new
// name turns into sorted runs of at most kRunMax entries under a RunIndex, marked by the low
// bit of the word. Either way an insert in any order moves at most kRunMax entries and the
// index, and every edit leaves the entries in order: readers never write.
constexpr uint32_t kRunMax = 512;

struct Run {
  ObjectStore* block;
  uint32_t before;  // the entries of the runs before this one
};
using RunIndex = Block<Run>;

inline bool hasRuns(uint64_t word) { return (word & 1) != 0; }
inline RunIndex* runsOf(uint64_t word) { return reinterpret_cast<RunIndex*>(word & ~uint64_t(1)); }

inline uint32_t entryCount(uint64_t word) {
  if (!hasRuns(word)) return sizeOf(reinterpret_cast<const void*>(word));
  const RunIndex* index = runsOf(word);
  const Run& last = index->items()[index->size - 1];
  return last.before + last.block->size;
}

const Entry& entryInRuns(uint64_t word, uint32_t i);
// The i-th entry in name order, i < entryCount(word).
inline const Entry& entryAt(uint64_t word, uint32_t i) {
  if (!hasRuns(word)) return reinterpret_cast<const ObjectStore*>(word)->items()[i];
  return entryInRuns(word, i);
}

// The value slot of `name`, or null when it is absent.
IElementValueBase** findValue(uint64_t word, std::string_view name);
// Adds the absent `name` with `value`, whose reference the Object takes over. When memory runs
// out (ZrError thrown) the Object is as it was.
void insertEntry(uint64_t& word, std::string_view name, IElementValueBase* value);
// Takes `name` out; false when absent, else its value (whose reference the caller now holds).
bool removeEntry(uint64_t& word, std::string_view name, IElementValueBase*& value);
// Frees every name, releases every value and frees the blocks.
void freeEntries(ChunkState& s, uint64_t word);

// The members of an Array or Object.
inline uint32_t memberCount(const ElementValue& container) {
  uint64_t word = ElementAccess::word(container);
  return kindOf(ElementAccess::type(container)) == etObject ? entryCount(word) : sizeOf(reinterpret_cast<const void*>(word));
}

// Views of the platform's strings.
inline std::string_view viewOf(const ZrUtf8String& s) { return std::string_view(s.str()); }

}  // namespace zrad::json
