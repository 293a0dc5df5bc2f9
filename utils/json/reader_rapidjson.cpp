// JSON text reader: builds elements straight from RapidJSON's SAX events.
//
// The parser runs in place on a copy. Its recursive mode reads a text nested up to
// kRecursiveDepth levels; a deeper text is read again by its iterative mode, which accepts
// exactly the same texts but keeps its open containers on a heap stack, so texts of any depth
// are read without deepening the thread's stack. The handler builds nodes as events arrive (no
// intermediate document). Object entries gather on one shared stack and become a sorted block
// when the object ends; array items likewise, on a stack of their own that the outermost array
// may take whole.
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "json/element_pool.h"
#include "json/element_store.h"
#include "json/entry_sort.h"
#include "json/oom.h"
#include "json/reader.h"
#include "json/textguard.h"

namespace zrad::json {
namespace {

// The recursive mode costs about 15% less per text than the iterative one (json_bench read_*)
// and needs a few hundred bytes of stack per level.
constexpr size_t kRecursiveDepth = 200;

// The items of the open arrays, each array's above those of the arrays around it. They are
// kept in an item block from malloc, grown by realloc, which moves a large block's pages
// rather than copying them. A big array with no open array around it takes the block itself,
// so reading "[0,0,...]" holds its items once rather than twice: for 50 million numbers the
// peak drops from 2.93 to 2.54 GB and the read from about 4.3 to 3.1 s (json_numbers).
class ItemStack {
 public:
  ItemStack() = default;
  ItemStack(const ItemStack&) = delete;
  ItemStack& operator=(const ItemStack&) = delete;
  ~ItemStack() {
    for (size_t i = 0; i < size(); ++i) releaseItem(m_block->items()[i]);
    std::free(m_block);
  }

  size_t size() const { return sizeOf(m_block); }
  void push(IElementValueBase* e) {
    if (size() == capacity()) grow();
    m_block->items()[m_block->size++] = e;
  }
  // The items from `start` on, taken off the stack as an item block of their own (null for none).
  ItemStore* take(size_t start) {
    const uint32_t count = static_cast<uint32_t>(size() - start);
    if (count == 0) return nullptr;
    if (start == 0 && fromMalloc(bytes(count))) {
      auto* whole = static_cast<ItemStore*>(std::realloc(m_block, bytes(count)));
      if (!whole) throw ZrError(Zrad::eOutOfMemory);
      whole->capacity = count;
      m_block = nullptr;
      return whole;
    }
    auto* part = static_cast<ItemStore*>(blockFrom(m_block->items() + start, sizeof(IElementValueBase*), count));
    m_block->size = static_cast<uint32_t>(start);
    return part;
  }

 private:
  static size_t bytes(size_t count) { return sizeof(ItemStore) + count * sizeof(IElementValueBase*); }
  size_t capacity() const { return m_block ? m_block->capacity : 0; }
  void grow() {
    const size_t grown = capacity() ? 2 * capacity() : 256;
    if (grown > UINT32_MAX) throw ZrError(Zrad::eOutOfMemory);
    auto* block = static_cast<ItemStore*>(std::realloc(m_block, bytes(grown)));
    if (!block) throw ZrError(Zrad::eOutOfMemory);
    if (!m_block) block->size = 0;
    block->capacity = static_cast<uint32_t>(grown);
    m_block = block;
  }

  ItemStore* m_block = nullptr;
};

class TreeBuilder {
 public:
  // Refuses to open more than `maxDepth` containers (tooDeep() tells).
  explicit TreeBuilder(size_t maxDepth) : m_maxDepth(maxDepth) {}
  TreeBuilder(const TreeBuilder&) = delete;
  TreeBuilder& operator=(const TreeBuilder&) = delete;
  ~TreeBuilder() {
    releaseItem(m_root);
    for (Entry& e : m_entries) {
      freeName(e.name);
      releaseItem(e.value);
    }
  }

  // The finished root, owned by the caller.
  ElementValue* takeRoot() { return std::exchange(m_root, nullptr); }
  bool tooDeep() const { return m_frames.size() >= m_maxDepth; }

  bool Null() {
    // A null property becomes an empty String; a null item or root stays a null element.
    return add(ElementAccess::make(inObject() ? etString : etNullFlag));
  }
  bool Bool(bool b) { return addWord(etBoolean, b ? 1 : 0); }
  bool Int(int i) { return addWord(etInteger, static_cast<uint64_t>(static_cast<int64_t>(i))); }
  bool Uint(unsigned u) { return addWord(etInteger, u); }
  bool Int64(int64_t i) { return addWord(etInteger, static_cast<uint64_t>(i)); }
  bool Uint64(uint64_t u) { return addWord(etInteger, u); }
  bool Double(double d) {
    uint64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    return addWord(etDouble, bits);
  }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }  // not with default flags
  bool String(const char* s, rapidjson::SizeType n, bool) {
    ElementValue* e = ElementAccess::make(etString);
    initText(*e, std::string_view(s, n));
    return add(e);
  }
  bool Key(const char* s, rapidjson::SizeType n, bool) {
    std::string_view name(s, n);
    m_pendingReadOnly = !name.empty() && name[0] == '*';
    if (m_pendingReadOnly) name.remove_prefix(1);
    // The entry is made in place now and gets its value once that is complete (a container's
    // own entries come and go above it meanwhile).
    Entry& entry = m_entries.emplace_back();
    entry.value = nullptr;
    makeName(entry.name, name);
    return true;
  }
  bool StartObject() { return open(true); }
  bool EndObject(rapidjson::SizeType) {
    Frame f = close();
    uint32_t count = static_cast<uint32_t>(m_entries.size() - f.start);
    ObjectStore* store = settleEntries(m_entries.data() + f.start, count, Repeats::kLikeSetProperty, &m_shapes);
    m_entries.resize(f.start);
    return addWord(etObject, reinterpret_cast<uint64_t>(store));
  }
  bool StartArray() { return open(false); }
  bool EndArray(rapidjson::SizeType) {
    ItemStore* store = m_items.take(close().start);
    return addWord(etArray, reinterpret_cast<uint64_t>(store));
  }

 private:
  // A container being built; `readOnly` tells how its entry in the parent is marked.
  struct Frame {
    bool object;
    bool readOnly;
    size_t start;
  };

  bool inObject() const { return !m_frames.empty() && m_frames.back().object; }

  bool open(bool object) {
    if (tooDeep()) return false;
    m_frames.push_back({object, m_pendingReadOnly, object ? m_entries.size() : m_items.size()});
    m_pendingReadOnly = false;
    return true;
  }

  Frame close() {
    Frame f = m_frames.back();
    m_frames.pop_back();
    m_pendingReadOnly = f.readOnly;
    return f;
  }

  bool addWord(uint32_t type, uint64_t word) {
    ElementValue* e = ElementAccess::make(type);
    ElementAccess::word(*e) = word;
    return add(e);
  }

  bool add(ElementValue* e) {
    if (m_frames.empty()) {
      m_root = e;
    } else if (m_frames.back().object) {
      if (m_pendingReadOnly) ElementAccess::type(*e) |= etReadOnlyFlag;
      m_entries.back().value = e;
    } else {
      m_items.push(e);
    }
    return true;
  }

  std::vector<Frame> m_frames;
  std::vector<Entry> m_entries;
  ItemStack m_items;
  ShapeMemo m_shapes;
  bool m_pendingReadOnly = false;  // the last name began with '*'
  ElementValue* m_root = nullptr;
  size_t m_maxDepth;
};

// Moves the content of `built` (owned, released here) into `target`.
void applyTo(ElementValue& target, ElementValue* built) {
  ZrJsonPtr keep = ZrJsonPtr::adopt(built);
  uint32_t type = ElementAccess::type(*built);
  int kind = kindOf(type);
  if (kind == etObject || kind == etArray) {
    target.initWithType(kind);
    uint64_t& mine = ElementAccess::word(target);
    uint64_t& theirs = ElementAccess::word(*built);
    if (memberCount(target) == 0) {  // the empty block goes with `built`
      std::swap(mine, theirs);
    } else if (kind == etObject) {
      auto* store = reinterpret_cast<ObjectStore*>(theirs);
      for (uint32_t i = 0; i < sizeOf(store); ++i) {
        const Entry& e = store->items()[i];
        target.set_property(ZrUtf8String(std::string(e.name.view())), ZrJsonPtr(e.value));
      }
    } else {
      auto* store = reinterpret_cast<ItemStore*>(theirs);
      for (uint32_t i = 0; i < sizeOf(store); ++i) target.array_append(ZrJsonPtr(store->items()[i]));
    }
    return;
  }
  takeContent(target, *built);
}

}  // namespace

namespace {

bool parse(ElementValue& target, std::string_view text, ParseFailure* failure) {
  // Parsing a private copy in place decodes each string straight into the copy, where the
  // plain mode pushes it byte by byte onto the parser's stack; the grammar is the same.
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  auto fill = [&] {
    std::memcpy(copy.get(), text.data(), text.size());
    copy[text.size()] = 0;
    return tameNumbers(copy.get(), text.size());
  };
  if (!fill()) {
    if (failure) *failure = {0, "a number with more digits than the reader accepts"};
    return false;
  }
  BulkBuild bulk;
  rapidjson::Reader reader;
  constexpr unsigned kFlags = rapidjson::kParseDefaultFlags | rapidjson::kParseInsituFlag;
  auto builder = std::make_unique<TreeBuilder>(kRecursiveDepth);
  rapidjson::InsituStringStream stream(copy.get());
  rapidjson::ParseResult result = reader.Parse<kFlags>(stream, *builder);
  if (result.IsError() && builder->tooDeep()) {  // the copy is decoded in part: start afresh
    fill();
    builder = std::make_unique<TreeBuilder>(SIZE_MAX);
    rapidjson::InsituStringStream again(copy.get());
    result = reader.Parse<kFlags | rapidjson::kParseIterativeFlag>(again, *builder);
  }
  if (result.IsError()) {
    if (failure) *failure = {result.Offset(), rapidjson::GetParseError_En(result.Code())};
    return false;
  }
  applyTo(target, builder->takeRoot());
  return true;
}

}  // namespace

bool parseInto(ElementValue& target, std::string_view text, ParseFailure* failure) {
  return platformOutOfMemory([&] { return parse(target, text, failure); });
}

}  // namespace zrad::json
