// Deep copies of element trees.
//
// clone follows the one tree walk (walk.h): any depth, no recursion, and a tree that contains
// itself ends the walk instead of running away. The tree's own elements are copied through their fields: each container's block is
// made once at its final size and filled in order (an Object's names are already sorted), so a
// copy costs about what reading the tree from the binary stream does. Elements of other
// classes are copied through the virtual interface.
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/entry_sort.h"
#include "json/oom.h"
#include "json/walk.h"
#include "log/logmsg.h"

namespace zrad::json {
namespace {

// The copy of a writable ElementValue: its type word and value as they are, except that
// containers come out empty, a byte block gets bytes of its own, an object pointer a reference
// of its own, and an owned pointer and kind 0x42 a zero value (owned memory is never shared
// between two elements).
ElementValue* copyFields(const ElementValue& source) {
  const uint32_t type = ElementAccess::type(source);
  const uint64_t word = ElementAccess::word(source);
  uint64_t copied = 0;
  void* block = nullptr;
  switch (kindOf(type)) {
    case etString: {
      ElementValue* copy = ElementAccess::make(type);
      initText(*copy, textOf(source));
      return copy;
    }
    case etByteBlock:  // the length in the value word, a malloc'd buffer in the second
      if (ElementAccess::byteBlock(source) && word) {
        void* own = std::malloc(word);
        if (!own) throw ZrError(Zrad::eOutOfMemory);
        std::memcpy(own, ElementAccess::byteBlock(source), word);
        copied = word;
        block = own;
      }
      break;
    case etRxObjectPointer:
      if (word) zrrxAddRef(reinterpret_cast<ZrRxObject*>(word));
      copied = word;
      break;
    case etBoolean:
    case etInteger:
    case etDouble:
    case etTime:
    case etPointer: copied = word; break;
    default: break;
  }
  ElementValue* copy = ElementAccess::make(type);
  ElementAccess::word(*copy) = copied;
  ElementAccess::byteBlock(*copy) = block;
  return copy;
}

// A copy of an element of another class without its members, through the virtual interface.
// Read-only elements are shared, not copied; a byte block or an owned pointer comes out empty.
ZrJsonPtr copyThroughInterface(const IElementValueBase& source) {
  const int type = source.getType();
  if (isReadOnly(type)) return ZrJsonPtr(const_cast<IElementValueBase*>(&source));
  ZrJsonPtr copy = ElementValue::createObject(type);
  switch (kindOf(type)) {
    case etDouble: copy->set_valued(source.floatValue()); break;
    case etBoolean: copy->set_valueb(source.boolValue()); break;
    case etString: copy->set_values(source.strValue()); break;
    case etInteger: copy->set_valuei64(source.longlongValue()); break;
    case etTime: copy->set_valuet(source.longlongValue()); break;
    case etPointer: copy->set_valuep(source.ptrValue(), type); break;
    case etRxObjectPointer: copy->set_value_rxobject_ptr(static_cast<ZrRxObject*>(source.ptrValue())); break;
    default: break;
  }
  return copy;
}

// A copy of the element the walk met, without its members, as a reference the caller owns.
// Read-only elements are shared, not copied.
IElementValueBase* copyShallow(const Member& m) {
  if (m.own && !isReadOnly(ElementAccess::type(*m.own))) return copyFields(*m.own);
  ZrJsonPtr copy = copyThroughInterface(*m.element);
  copy->AddRef();
  return copy.get();
}

// Builds the copy as the walk meets the source: each copied container gets its block at its
// final size and is filled in order. Every block counts only what is filled in, so a copy
// abandoned half way drops cleanly.
class CloneVisitor {
 public:
  // The copy of the root, once the walk has met it.
  ZrJsonPtr copy;

  bool leaf(const Member& m) {
    place(m, m.element ? copyShallow(m) : nullptr);
    return true;
  }

  Enter open(const Member& m, uint32_t count) {
    IElementValueBase* made = copyShallow(m);
    place(m, made);
    if (made == m.element) return Enter::kSkip;  // read-only: shared with its members
    auto& container = static_cast<ElementValue&>(*made);
    const bool object = kindOf(ElementAccess::type(container)) == etObject;
    void* block = nullptr;
    if (count) {
      block = newBlock(object ? sizeof(Entry) : sizeof(IElementValueBase*), count);
      static_cast<Block<char>*>(block)->size = 0;
      ElementAccess::word(container) = reinterpret_cast<uint64_t>(block);
    }
    m_open.push_back({&container, block, object, !m.own, true});
    return Enter::kMembers;
  }

  // An Object of another class may list its names in any order: they are sorted here, a later
  // value of a repeated name winning as set_property would let it.
  void close(int) {
    const Open top = m_open.back();
    m_open.pop_back();
    if (!top.object || !top.block || !top.mayBeUnsorted || top.sorted) return;
    auto* store = static_cast<ObjectStore*>(top.block);
    ElementAccess::word(*top.container) =
        reinterpret_cast<uint64_t>(settleEntries(store->items(), store->size, Repeats::kLikeSetProperty));
    freeBlock(store, sizeof(Entry));
  }

 private:
  struct Open {
    ElementValue* container;
    void* block;
    bool object;
    bool mayBeUnsorted;  // copied from another element class
    bool sorted;         // the names so far are in order and all different
  };

  // Hangs the copy `made` (a reference it takes over) on the container being filled.
  void place(const Member& m, IElementValueBase* made) {
    if (m_open.empty()) {
      copy = ZrJsonPtr::adopt(made);
      return;
    }
    Open& top = m_open.back();
    if (top.object) {
      auto* store = static_cast<ObjectStore*>(top.block);
      Entry& entry = store->items()[store->size];
      makeName(entry.name, m.name);
      entry.value = made;
      if (top.mayBeUnsorted && store->size) top.sorted = top.sorted && compareNames((&entry)[-1].name.view(), m.name) < 0;
      ++store->size;
    } else {
      auto* store = static_cast<ItemStore*>(top.block);
      store->items()[store->size++] = made;
    }
  }

  std::vector<Open> m_open;
};

}  // namespace
}  // namespace zrad::json

ZrJsonPtr IElementValueBase::clone() const {
  zrad::json::BulkBuild bulk;
  zrad::json::CloneVisitor visitor;
  auto walk = [&] { return zrad::json::walkTree(*this, visitor); };
  if (zrad::json::platformOutOfMemory(walk) == zrad::json::WalkEnd::kDone) return visitor.copy;
  ZRAD_LOG(5, "utils/zradjson", "clone: the tree contains itself");
  return {};
}
