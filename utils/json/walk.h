// The one walk over an element tree that the writers and clone share.
//
// The walk keeps its open containers on a heap stack, so a tree of any depth is visited with
// memory in proportion to its depth and never deepens the thread's stack. The tree's own
// elements are walked through their blocks; elements of other classes through the virtual
// interface, inside the same walk (their members are held while they are open).
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

// Walks a tree depth first in member order. The visitor is called with
//   bool leaf(const Member&)                    every element that is not an Array or Object
//   Enter open(const Member&, uint32_t count)   an Array or Object with `count` members
//   void close(int kind)                        after the members of a container it entered
// leaf returning false, or open kStop, stops the walk.
template <class Visitor>
class TreeWalk {
 public:
  explicit TreeWalk(Visitor& visitor) : m_visitor(visitor) {}

  WalkEnd run(const IElementValueBase& root) {
    if (WalkEnd end = visit({{}, false, true, &root, asElement(&root)}, nullptr); end != WalkEnd::kDone) return end;
    while (!m_frames.empty()) {
      Frame& top = m_frames.back();
      if (top.next == top.count) {
        close();
        continue;
      }
      const uint32_t i = top.next++;
      const bool first = i == 0, object = top.object;
      WalkEnd end;
      if (top.own) {
        if (object) {
          const Entry& entry = entryAt(top.word, i);
          end = visit({entry.name.view(), true, first, entry.value, asElement(entry.value)}, nullptr);
        } else {
          const IElementValueBase* item = reinterpret_cast<const ItemStore*>(top.word)->items()[i];
          end = visit({{}, false, first, item, asElement(item)}, nullptr);
        }
      } else {
        ZrJsonPtr member = object ? top.node->enumproperty(static_cast<int>(i), m_key) : top.node->array_sub(static_cast<int>(i));
        end = visit({object ? viewOf(m_key) : std::string_view(), object, first, member.get(), asElement(member.get())}, &member);
      }
      if (end != WalkEnd::kDone) return end;
    }
    return WalkEnd::kDone;
  }

 private:
  struct Frame {
    const IElementValueBase* node;
    uint64_t word;  // an ElementValue's members (its value word)
    uint32_t next, count;
    bool own;  // an ElementValue
    bool object;
    bool held;  // a member of another class, kept alive on m_held
  };

  // `holder` holds a member of another class, which may die with its handle.
  __attribute__((always_inline)) WalkEnd visit(const Member& m, ZrJsonPtr* holder) {
    const int kind = kindOf(m.type());
    if (!m.element || !isContainer(kind)) return m_visitor.leaf(m) ? WalkEnd::kDone : WalkEnd::kStopped;
    int count = m.own ? static_cast<int>(memberCount(*m.own)) : kind == etObject ? m.element->property_count() : m.element->array_count();
    if (count < 0) count = 0;
    switch (m_visitor.open(m, static_cast<uint32_t>(count))) {
      case Enter::kStop: return WalkEnd::kStopped;
      case Enter::kSkip: return WalkEnd::kDone;
      case Enter::kMembers: break;
    }
    if (!m_guard.enter(m.element, m_frames.size())) return WalkEnd::kContainsItself;
    const bool held = holder && !m.own;
    if (held) m_held.push_back(std::move(*holder));
    const uint64_t word = m.own ? ElementAccess::word(*m.own) : 0;
    m_frames.push_back({m.element, word, 0, static_cast<uint32_t>(count), m.own != nullptr, kind == etObject, held});
    return WalkEnd::kDone;
  }

  void close() {
    const Frame top = m_frames.back();
    m_frames.pop_back();
    m_guard.leave(top.node, m_frames.size());
    m_visitor.close(top.object ? etObject : etArray);
    if (top.held) m_held.pop_back();
  }

  Visitor& m_visitor;
  std::vector<Frame> m_frames;
  std::vector<ZrJsonPtr> m_held;
  CycleGuard m_guard;
  ZrUtf8String m_key;
};

template <class Visitor>
WalkEnd walkTree(const IElementValueBase& root, Visitor& visitor) {
  return TreeWalk<Visitor>(visitor).run(root);
}

}  // namespace zrad::json
