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

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/entry_sort.h"
#include "json/oom.h"
#include "json/walk.h"
#include "log/logmsg.h"

namespace zrad::json {
namespace {

// The copy of a writable ElementValue that is not a String or a plain value: its type word and
// value as they are, except that containers come out empty, a byte block gets bytes of its own,
// an object pointer a reference of its own, and an owned pointer and kind 0x42 a zero value
// (owned memory is never shared between two elements).
ElementValue* copyOtherFields(ChunkState& s, const ElementValue& source) {
  const uint32_t type = ElementAccess::type(source);
  const uint64_t word = ElementAccess::word(source);
  uint64_t copied = 0;
  void* block = nullptr;
  switch (kindOf(type)) {
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
    default: break;
  }
  ElementValue* copy = ElementAccess::make(s, type);
  ElementAccess::word(*copy) = copied;
  ElementAccess::byteBlock(*copy) = block;
  return copy;
}

// The copy of a writable ElementValue without its members, its blocks taken with `s` (inline
// for the Strings and plain values that make up most of a tree).
inline ElementValue* copyFields(ChunkState& s, const ElementValue& source) {
  const uint32_t type = ElementAccess::type(source);
  const int kind = kindOf(type);
  if (kind == etString) {
    ElementValue* copy = ElementAccess::make(s, type);
    initText(s, *copy, textOf(source));
    return copy;
  }
  // The plain kinds, whose value word is the whole value, are the single bits from etBoolean
  // up: Boolean, Integer, Double, Pointer and Time.
  if (kind < etBoolean || (kind & (kind - 1)) != 0) return copyOtherFields(s, source);
  ElementValue* copy = ElementAccess::make(s, type);
  ElementAccess::word(*copy) = ElementAccess::word(source);
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

// copyThroughInterface as a reference the caller owns.
__attribute__((noinline)) IElementValueBase* copyReference(const IElementValueBase& source) {
  ZrJsonPtr copy = copyThroughInterface(source);
  copy->AddRef();
  return copy.get();
}

// A copy of the element the walk met, without its members, as a reference the caller owns.
// Read-only elements are shared, not copied.
inline IElementValueBase* copyShallow(ChunkState& s, const Member& m) {
  if (m.own && !isReadOnly(ElementAccess::type(*m.own))) return copyFields(s, *m.own);
  return copyReference(*m.element);
}

// Builds the copy as the walk meets the source: each copied container gets its block at its
// final size and is filled in order. Every block counts only what is filled in, so a copy
// abandoned half way drops cleanly.
class CloneVisitor {
 public:
  // A copied container being filled.
  struct Open {
    ElementValue* container;
    void* block;
    bool object;
    bool mayBeUnsorted;  // copied from another element class
    bool sorted;         // the names so far are in order and all different
  };

  // Takes its blocks with the chunk state of the bulk build it works in.
  explicit CloneVisitor(ChunkState& chunks) : m_chunks(chunks) {}

  // The copy of the root, once the walk has met it.
  ZrJsonPtr copy;

  bool leaf(const Member& m, Open* parent) {
    place(m, m.element ? copyShallow(m_chunks, m) : nullptr, parent);
    return true;
  }

  Enter open(const Member& m, uint32_t count, Open* parent, Open& opened) {
    IElementValueBase* made = copyShallow(m_chunks, m);
    place(m, made, parent);
    if (made == m.element) return Enter::kSkip;  // read-only: shared with its members
    auto& container = static_cast<ElementValue&>(*made);
    const bool object = kindOf(ElementAccess::type(container)) == etObject;
    void* block = nullptr;
    if (count) {
      block = newBlock(m_chunks, object ? sizeof(Entry) : sizeof(IElementValueBase*), count);
      static_cast<Block<char>*>(block)->size = 0;
      ElementAccess::word(container) = reinterpret_cast<uint64_t>(block);
    }
    opened = {&container, block, object, !m.own, true};
    return Enter::kMembers;
  }

  // An Object of another class may list its names in any order: they are sorted here, a later
  // value of a repeated name winning as set_property would let it.
  void close(Open& opened) {
    if (!opened.object || !opened.block || !opened.mayBeUnsorted || opened.sorted) return;
    auto* store = static_cast<ObjectStore*>(opened.block);
    ElementAccess::word(*opened.container) =
        reinterpret_cast<uint64_t>(settleEntries(store->items(), store->size, Repeats::kLikeSetProperty));
    freeBlock(store, sizeof(Entry));
  }

 private:
  // Hangs the copy `made` (a reference it takes over) on the container being filled, or makes
  // it the copy of the root.
  void place(const Member& m, IElementValueBase* made, Open* parent) {
    if (!parent) {
      copy = ZrJsonPtr::adopt(made);
      return;
    }
    if (parent->object) {
      auto* store = static_cast<ObjectStore*>(parent->block);
      Entry& entry = store->items()[store->size];
      makeName(m_chunks, entry.name, m.name);
      entry.value = made;
      if (parent->mayBeUnsorted && store->size)
        parent->sorted = parent->sorted && compareNames((&entry)[-1].name.view(), m.name) < 0;
      ++store->size;
    } else {
      auto* store = static_cast<ItemStore*>(parent->block);
      store->items()[store->size++] = made;
    }
  }

  ChunkState& m_chunks;
};

}  // namespace
}  // namespace zrad::json

ZrJsonPtr IElementValueBase::clone() const {
  zrad::json::BulkBuild bulk;
  zrad::json::CloneVisitor visitor(bulk.chunks());
  auto walk = [&] { return zrad::json::walkTree(*this, visitor); };
  if (zrad::json::platformOutOfMemory(walk) == zrad::json::WalkEnd::kDone) return visitor.copy;
  ZRAD_LOG(5, "utils/zradjson", "clone: the tree contains itself");
  return {};
}
