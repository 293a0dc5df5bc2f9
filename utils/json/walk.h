// The one walk over an element tree that the writers and clone share.
//
// The walk keeps its open containers on a heap stack, so a tree of any depth is visited with
// memory in proportion to its depth and never deepens the thread's stack. The tree's own
// elements are walked through their blocks, the scalar members of a container in one tight
// loop; elements of other classes through the virtual interface, inside the same walk (their
// members are held while they are open).
#pragma once

#include <string_view>
#include <unordered_set>
#include <vector>

#include "json/element_store.h"

namespace zrad::json {

// One element met by the walk: its name in the Object above it (when `named`), whether it is
// the first member of its container, the element (null for a missing one) and, when it is an
// ElementValue, the element as one.
struct Member {
  std::string_view name;
  bool named;
  bool first;
  const IElementValueBase* element;
  const ElementValue* own;

  uint32_t type() const {
    if (own) return ElementAccess::type(*own);
    return element ? static_cast<uint32_t>(element->getType()) : uint32_t(etNullFlag);
  }
};

// What a visitor answers when the walk reaches a container.
enum class Enter { kMembers, kSkip, kStop };
// How a walk ended.
enum class WalkEnd { kDone, kStopped, kContainsItself };

// Finds a container that is its own ancestor. Shallow trees pay nothing: the open containers
// are remembered only from kUnchecked levels on, and a cycle, which never ends, gets there.
class CycleGuard {
 public:
  // False when `node` is already open.
  bool enter(const void* node, size_t depth) { return depth < kUnchecked || m_open.insert(node).second; }
  void leave(const void* node, size_t depth) {
    if (depth >= kUnchecked) m_open.erase(node);
  }

 private:
  static constexpr size_t kUnchecked = 256;
  std::unordered_set<const void*> m_open;
};

// Walks a tree depth first in member order. The visitor keeps a `typename Visitor::Open` for
// every container it entered (the walk stores it beside its own frame) and is called with
//   bool leaf(const Member&, Open* parent)                 every element that is not an Array
//                                                          or Object
//   Enter open(const Member&, uint32_t count, Open* parent, Open& opened)
//                                                          an Array or Object with `count` members
//   void close(Open& opened)                               after the members of a container it
//                                                          entered
// where `parent` is the state of the container the element is a member of (null for the root).
// leaf returning false, or open kStop, stops the walk.
template <class Visitor>
class TreeWalk {
 public:
  explicit TreeWalk(Visitor& visitor) : m_visitor(visitor), m_frames(kFirstFrames) {}

  WalkEnd run(const IElementValueBase& root) {
    WalkEnd end = visit({{}, false, true, &root, asElement(&root)}, nullptr);
    while (end == WalkEnd::kDone && m_depth) end = m_frames[m_depth - 1].own ? ownMembers() : nextHeldMember();
    return end;
  }

 private:
  using Open = typename Visitor::Open;
  static constexpr size_t kFirstFrames = 16;

  struct Frame {
    const IElementValueBase* node;
    const void* members;  // an ElementValue's item pointers or entries; null for an Object in runs
    uint64_t word;        // an ElementValue's value word
    uint32_t next, count;
    bool own;  // an ElementValue
    bool object;
    bool held;  // a member of another class, kept alive on m_held
    Open open;
  };

  // Member i of the ElementValue container `frame`.
  static Member ownMember(const Frame& frame, uint32_t i) {
    if (frame.object) {
      const Entry& entry = frame.members ? static_cast<const Entry*>(frame.members)[i] : entryAt(frame.word, i);
      return {entry.name.view(), true, i == 0, entry.value, asElement(entry.value)};
    }
    const IElementValueBase* item = static_cast<IElementValueBase* const*>(frame.members)[i];
    return {{}, false, i == 0, item, asElement(item)};
  }

  // Goes on from the next member of the ElementValue container on top, through the scalar and
  // container ElementValues below it in this one loop, until the walk is back at a container
  // of another class or meets a member of one (which visit() takes).
  WalkEnd ownMembers() {
    Frame* top = &m_frames[m_depth - 1];
    for (;;) {
      if (top->next == top->count) {
        close();
        if (!m_depth || !(top = &m_frames[m_depth - 1])->own) return WalkEnd::kDone;
        continue;
      }
      const Member m = ownMember(*top, top->next++);
      if (!m.own) return visit(m, nullptr);
      const int kind = kindOf(ElementAccess::type(*m.own));
      if (!isContainer(kind)) {
        if (!m_visitor.leaf(m, &top->open)) return WalkEnd::kStopped;
        continue;
      }
      if (WalkEnd end = enter(m, kind, memberCount(*m.own), nullptr); end != WalkEnd::kDone) return end;
      top = &m_frames[m_depth - 1];  // the container entered, or the same one when skipped
    }
  }

  // The next member of the container of another class on top, held while the walk needs it.
  WalkEnd nextHeldMember() {
    Frame& top = m_frames[m_depth - 1];
    if (top.next == top.count) {
      close();
      return WalkEnd::kDone;
    }
    const uint32_t i = top.next++;
    const bool object = top.object;
    ZrJsonPtr member = object ? top.node->enumproperty(static_cast<int>(i), m_key) : top.node->array_sub(static_cast<int>(i));
    return visit({object ? viewOf(m_key) : std::string_view(), object, i == 0, member.get(), asElement(member.get())}, &member);
  }

  Open* parentOpen() { return m_depth ? &m_frames[m_depth - 1].open : nullptr; }

  // Hands `m` to the visitor and, for a container it enters, adds a frame. `holder` holds a
  // member of another class, which may die with its handle.
  WalkEnd visit(const Member& m, ZrJsonPtr* holder) {
    const int kind = kindOf(m.type());
    if (!m.element || !isContainer(kind)) return m_visitor.leaf(m, parentOpen()) ? WalkEnd::kDone : WalkEnd::kStopped;
    int count = m.own ? static_cast<int>(memberCount(*m.own)) : kind == etObject ? m.element->property_count() : m.element->array_count();
    return enter(m, kind, static_cast<uint32_t>(count < 0 ? 0 : count), holder);
  }

  // Hands the container `m` of `count` members to the visitor and adds its frame when the
  // visitor enters it.
  __attribute__((always_inline)) WalkEnd enter(const Member& m, int kind, uint32_t count, ZrJsonPtr* holder) {
    if (m_depth == m_frames.size()) m_frames.resize(2 * m_depth);
    Frame& frame = m_frames[m_depth];
    switch (m_visitor.open(m, count, parentOpen(), frame.open)) {
      case Enter::kStop: return WalkEnd::kStopped;
      case Enter::kSkip: return WalkEnd::kDone;
      case Enter::kMembers: break;
    }
    if (!m_guard.enter(m.element, m_depth)) return WalkEnd::kContainsItself;
    const bool held = holder && !m.own;
    if (held) m_held.push_back(std::move(*holder));
    const uint64_t word = m.own ? ElementAccess::word(*m.own) : 0;
    const void* members = nullptr;
    if (m.own && count && kind == etArray) members = reinterpret_cast<const ItemStore*>(word)->items();
    else if (m.own && count && !hasRuns(word)) members = reinterpret_cast<const ObjectStore*>(word)->items();
    frame.node = m.element;
    frame.members = members;
    frame.word = word;
    frame.next = 0;
    frame.count = count;
    frame.own = m.own != nullptr;
    frame.object = kind == etObject;
    frame.held = held;
    ++m_depth;
    return WalkEnd::kDone;
  }

  void close() {
    Frame& top = m_frames[--m_depth];
    m_guard.leave(top.node, m_depth);
    m_visitor.close(top.open);
    if (top.held) m_held.pop_back();
  }

  Visitor& m_visitor;
  std::vector<Frame> m_frames;  // the open containers are the first m_depth
  size_t m_depth = 0;
  std::vector<ZrJsonPtr> m_held;
  CycleGuard m_guard;
  ZrUtf8String m_key;
};

template <class Visitor>
WalkEnd walkTree(const IElementValueBase& root, Visitor& visitor) {
  return TreeWalk<Visitor>(visitor).run(root);
}

}  // namespace zrad::json
