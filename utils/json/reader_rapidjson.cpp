// JSON text reader: builds elements straight from RapidJSON's SAX events.
//
// The parser runs in place on a copy. Its recursive mode reads a text nested up to
// kRecursiveDepth levels; a deeper text is read again by its iterative mode, which accepts
// exactly the same texts but keeps its open containers on a heap stack, so texts of any depth
// are read without deepening the thread's stack. The handler builds the tree as events arrive:
// array items are made at once and gather on an item stack, which the outermost array may take
// whole; an Object's members wait on a tape until the Object is laid out (see TreeBuilder).
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
  ItemStore* take(ChunkState& s, size_t start) {
    const uint32_t count = static_cast<uint32_t>(size() - start);
    if (count == 0) return nullptr;
    if (start == 0 && fromMalloc(bytes(count))) {
      auto* whole = static_cast<ItemStore*>(std::realloc(m_block, bytes(count)));
      if (!whole) throw ZrError(Zrad::eOutOfMemory);
      whole->capacity = count;
      m_block = nullptr;
      return whole;
    }
    auto* part = static_cast<ItemStore*>(blockFrom(s, m_block->items() + start, sizeof(IElementValueBase*), count));
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

// Values under Objects wait on a tape until their Object is laid out. A closed Object under
// another Object stays on the tape as a pending tree while the pending trees are few and
// shallow; any other Object is laid out when it closes: its element, its block, then its
// members in name order, each pending tree among them laid out the same way in its turn. A
// tree thus lies in memory in the order its walks visit it (an Object laid out as it closes,
// after its members, made json_bench's feed twice as slow to write).
class TreeBuilder {
 public:
  // Refuses to open more than `maxDepth` containers (tooDeep() tells); takes its blocks with the
  // chunk state of the bulk build it works in.
  TreeBuilder(size_t maxDepth, ChunkState& chunks) : m_maxDepth(maxDepth), m_chunks(chunks) {}
  TreeBuilder(const TreeBuilder&) = delete;
  TreeBuilder& operator=(const TreeBuilder&) = delete;
  ~TreeBuilder() {
    releaseItem(m_root);
    discard(0);
  }

  // The finished root, owned by the caller.
  ElementValue* takeRoot() { return std::exchange(m_root, nullptr); }
  bool tooDeep() const { return m_frames.size() >= m_maxDepth; }

  bool Null() {
    // A null property becomes an empty String; a null item or root stays a null element.
    return inObject() ? pend(etString, 0, 0) : add(ElementAccess::make(m_chunks, etNullFlag));
  }
  bool Bool(bool b) { return scalar(etBoolean, b ? 1 : 0); }
  bool Int(int i) { return scalar(etInteger, static_cast<uint64_t>(static_cast<int64_t>(i))); }
  bool Uint(unsigned u) { return scalar(etInteger, u); }
  bool Int64(int64_t i) { return scalar(etInteger, static_cast<uint64_t>(i)); }
  bool Uint64(uint64_t u) { return scalar(etInteger, u); }
  bool Double(double d) {
    uint64_t bits;
    std::memcpy(&bits, &d, sizeof bits);
    return scalar(etDouble, bits);
  }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }  // not with default flags
  bool String(const char* s, rapidjson::SizeType n, bool) {
    // The parse is in place: `s` lies in the parsed copy, which outlives the builder's work.
    const uint64_t text = reinterpret_cast<uint64_t>(s);
    if (inObject()) return pend(etString, n, text);
    Node node{{}, etString, n, text};
    return add(made(node, 0));
  }
  bool Key(const char* s, rapidjson::SizeType n, bool) {
    std::string_view name(s, n);
    m_pendingReadOnly = !name.empty() && name[0] == '*';
    if (m_pendingReadOnly) name.remove_prefix(1);
    // The member's node gets its value once that is complete (a container's own members come
    // and go above it meanwhile).
    Node& node = m_tape.emplace_back();
    makeName(m_chunks, node.name, name);
    ++m_frames.back().count;
    return true;
  }
  bool StartObject() { return open(true); }
  bool EndObject(rapidjson::SizeType) {
    const Frame f = close();
    const size_t extent = m_tape.size() - f.start;
    const size_t inside = m_pendingNodes - f.pendingAtOpen;
    const uint32_t depth = f.treeDepth + 1;
    if (inObject() && depth <= kPendingDepth && m_pendingNodes - inside + extent + 1 <= kPendingNodes) {
      m_pendingNodes += extent + 1 - inside;
      Frame& parent = m_frames.back();
      if (parent.treeDepth < depth) parent.treeDepth = depth;
      Node& node = m_tape[f.start - 1];  // the Object's own member node
      node.type = etObject | kTree | (f.readOnly ? etReadOnlyFlag : 0);
      node.size = static_cast<uint32_t>(extent);
      node.word = f.count;
      return true;
    }
    m_pendingNodes -= inside;
    ElementValue* e = layOut(etObject, f.start, f.count, extent);
    // A tree laid out takes every name and value off the tape but those of repeated names.
    if (std::exchange(m_repeats, false)) discard(f.start);
    else m_tape.resize(f.start);
    return add(e);
  }
  bool StartArray() { return open(false); }
  bool EndArray(rapidjson::SizeType) {
    ItemStore* store = m_items.take(m_chunks, close().start);
    return addWord(etArray, reinterpret_cast<uint64_t>(store));
  }

 private:
  // A member of an Object: its name, and its value as a scalar's type (with the member's
  // read-only mark) and word, a String's text size and text, a container made already (its
  // element in the word), or a pending tree (kTree: the member count in the word, and `size`
  // nodes of members and their own trees after this one).
  struct Node {
    Name name;
    uint32_t type;
    uint32_t size;
    uint64_t word;
  };
  static constexpr uint32_t kTree = 0x80000000u;
  // Pending trees at most this deep and together this many nodes: what a record of a
  // document typically holds, with bounded memory and stack on any document.
  static constexpr uint32_t kPendingDepth = 8;
  static constexpr size_t kPendingNodes = 4096;

  // A container being built; `readOnly` tells how its member in the parent is marked.
  struct Frame {
    bool object;
    bool readOnly;
    uint32_t count;      // an Object's members so far
    uint32_t treeDepth;  // the deepest pending tree among them
    size_t start;        // its first member on the tape, or its first item
    size_t pendingAtOpen;
  };

  bool inObject() const { return !m_frames.empty() && m_frames.back().object; }

  bool open(bool object) {
    if (tooDeep()) return false;
    m_frames.push_back({object, m_pendingReadOnly, 0, 0, object ? m_tape.size() : m_items.size(), m_pendingNodes});
    m_pendingReadOnly = false;
    return true;
  }

  Frame close() {
    Frame f = m_frames.back();
    m_frames.pop_back();
    m_pendingReadOnly = f.readOnly;
    return f;
  }

  bool scalar(uint32_t type, uint64_t word) { return inObject() ? pend(type, 0, word) : addWord(type, word); }

  // The value of the Object's last member.
  bool pend(uint32_t type, uint32_t size, uint64_t word) {
    Node& node = m_tape.back();
    node.type = type | (m_pendingReadOnly ? etReadOnlyFlag : 0);
    node.size = size;
    node.word = word;
    return true;
  }

  bool addWord(uint32_t type, uint64_t word) {
    ElementValue* e = ElementAccess::make(m_chunks, type);
    ElementAccess::word(*e) = word;
    return add(e);
  }

  // A made element: the root, an item, or a member's value.
  bool add(ElementValue* e) {
    if (m_frames.empty()) {
      m_root = e;
    } else if (m_frames.back().object) {
      pend(ElementAccess::type(*e), 0, reinterpret_cast<uint64_t>(e));
      ElementAccess::type(*e) = m_tape.back().type;
    } else {
      m_items.push(e);
    }
    return true;
  }

  static bool isMade(uint32_t type) { return isContainer(kindOf(type)) && !(type & kTree); }

  // The element of the node at `at`, laid out now (a made container is taken off the node).
  ElementValue* made(Node& node, size_t at) {
    if (node.type & kTree) return layOut(node.type & ~kTree, at + 1, static_cast<uint32_t>(node.word), node.size);
    if (isMade(node.type)) return reinterpret_cast<ElementValue*>(std::exchange(node.word, 0));
    ElementValue* e = ElementAccess::make(m_chunks, node.type);
    if (kindOf(node.type) != etString) {
      ElementAccess::word(*e) = node.word;
      return e;
    }
    try {
      initText(m_chunks, *e, std::string_view(reinterpret_cast<const char*>(node.word), node.size));
    } catch (...) {
      releaseItem(e);
      throw;
    }
    return e;
  }

  // Lays out the Object of type `type` whose `count` members start at tape index `first`,
  // `extent` nodes with their own trees: its element, its block, then its members in name
  // order. Where a name repeats, a later value replaces an earlier one unless that one is
  // read-only. Names and made values move off the tape; what is left there is for discard.
  ElementValue* layOut(uint32_t type, size_t first, uint32_t count, size_t extent) {
    ElementValue* object = ElementAccess::make(m_chunks, type);
    if (count == 0) return object;
    const size_t base = m_winners.size();
    try {
      if (extent == count) {  // no trees among the members: they are sorted where they lie
        EntryOrder order(NameList{reinterpret_cast<const char*>(&m_tape[first]), sizeof(Node)}, count, &m_shapes);
        auto at = [&](uint32_t i) { return first + i; };
        if (order.unique()) {
          fill(*object, count, [&](uint32_t i) { return at(order[i]); });
          return object;
        }
        keep(order, count, at);
      } else {
        m_names.resize(count);
        m_at.resize(count);
        for (size_t i = 0, at = first; i < count; ++i, at += 1 + ((m_tape[at].type & kTree) ? m_tape[at].size : 0)) {
          m_names[i].name = m_tape[at].name;
          m_at[i] = at;
        }
        EntryOrder order(namesOf(m_names.data()), count, &m_shapes);
        keep(order, count, [&](uint32_t i) { return m_at[i]; });
      }
      // Laying out the members' own trees uses the scratch again, above `base`.
      fill(*object, static_cast<uint32_t>(m_winners.size() - base), [&](uint32_t i) { return m_winners[base + i]; });
    } catch (...) {
      m_winners.resize(base);
      releaseItem(object);
      throw;
    }
    m_winners.resize(base);
    return object;
  }

  // Appends to m_winners the tape places (`at` of a stream index) of the members kept, in
  // name order.
  template <class At>
  void keep(const EntryOrder& order, uint32_t count, At at) {
    for (uint32_t i = 0; i < count; ++i) {
      const size_t place = at(order[i]);
      if (i && order.repeats(i)) {
        if (!isReadOnly(m_tape[m_winners.back()].type)) m_winners.back() = place;
        m_repeats = true;
        continue;
      }
      m_winners.push_back(place);
    }
  }

  // Gives `object` its block of `n` entries, made from the members at tape places `at(i)`.
  template <class At>
  void fill(ElementValue& object, uint32_t n, At at) {
    auto* store = static_cast<ObjectStore*>(newBlock(m_chunks, sizeof(Entry), n));
    store->size = 0;
    ElementAccess::word(object) = reinterpret_cast<uint64_t>(store);  // dropped with the object
    for (uint32_t i = 0; i < n; ++i) {
      const size_t place = at(i);
      Entry& entry = store->items()[i];
      entry.value = made(m_tape[place], place);
      entry.name = m_tape[place].name;
      m_tape[place].name.size = 0;
      store->size = i + 1;
    }
  }

  // Frees what the tape holds from `from` on, and drops it.
  void discard(size_t from) {
    for (size_t at = from; at < m_tape.size(); ++at) {
      Node& node = m_tape[at];
      freeName(node.name);
      if (isMade(node.type)) releaseItem(reinterpret_cast<ElementValue*>(node.word));
    }
    m_tape.resize(from);
  }

  std::vector<Frame> m_frames;
  std::vector<Node> m_tape;
  size_t m_pendingNodes = 0;  // the nodes of pending trees
  bool m_repeats = false;     // a tree laid out left members of repeated names on the tape
  ItemStack m_items;
  // Scratch of layOut: the members kept (a stack, as layOut nests), and the names and places
  // of the members of an Object with trees among them.
  std::vector<size_t> m_winners;
  std::vector<Entry> m_names;
  std::vector<size_t> m_at;
  ShapeMemo m_shapes;
  bool m_pendingReadOnly = false;  // the last name began with '*'
  ElementValue* m_root = nullptr;
  size_t m_maxDepth;
  ChunkState& m_chunks;
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
  auto builder = std::make_unique<TreeBuilder>(kRecursiveDepth, bulk.chunks());
  rapidjson::InsituStringStream stream(copy.get());
  rapidjson::ParseResult result = reader.Parse<kFlags>(stream, *builder);
  if (result.IsError() && builder->tooDeep()) {  // the copy is decoded in part: start afresh
    fill();
    builder = std::make_unique<TreeBuilder>(SIZE_MAX, bulk.chunks());
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
