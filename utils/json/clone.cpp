// Deep copies of element trees.
//
// clone walks with an explicit stack bounded by kMaxDepth, so a tree at the nesting limit never
// deepens the thread's stack and a tree that contains itself ends the walk instead of running
// away. The tree's own elements are copied through their fields: each container's block is
// made once at its final size and filled in order (an Object's names are already sorted), so a
// copy costs about what reading the tree from the binary stream does. Elements of other
// classes are copied through the virtual interface.
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/limits.h"

namespace zrad::json {
namespace {

// Members are read a few ahead of their copy, so the misses on them overlap.
constexpr uint32_t kCopyAhead = 4;

// The copy of a writable ElementValue: its type word and value as they are, except that
// containers come out empty, a byte block gets bytes of its own, an object pointer a reference
// of its own, and an owned pointer and kind 0x42 a zero value (owned memory is never shared
// between two elements).
ElementValue* copyFields(const ElementValue& source) {
  const uint32_t type = ElementAccess::type(source);
  const uint64_t word = ElementAccess::word(source);
  uint64_t copied = 0, second = 0;
  switch (kindOf(type)) {
    case etString: {
      ElementValue* copy = ElementAccess::make(type);
      initText(*copy, textOf(source));
      return copy;
    }
    case etByteBlock:  // the length in the value word, a malloc'd buffer in the second
      if (ElementAccess::second(source) && word) {
        void* own = std::malloc(word);
        if (!own) throw ZrError(Zrad::eOutOfMemory);
        std::memcpy(own, reinterpret_cast<const void*>(ElementAccess::second(source)), word);
        copied = word;
        second = reinterpret_cast<uint64_t>(own);
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
  ElementAccess::second(*copy) = second;
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

// A copy of one element without its members, as a reference the caller owns. Read-only
// elements are shared, not copied.
IElementValueBase* copyShallow(const IElementValueBase& source) {
  const ElementValue* own = asElement(&source);
  if (own && !isReadOnly(ElementAccess::type(*own))) return copyFields(*own);
  ZrJsonPtr copy = copyThroughInterface(source);
  copy->AddRef();
  return copy.get();
}

// A clone in progress: containers copied without their members wait on a stack.
class Cloner {
 public:
  // The copy of `root`, or null when it is nested deeper than kMaxDepth.
  ZrJsonPtr run(const IElementValueBase& root) {
    ZrJsonPtr copy = ZrJsonPtr::adopt(copyShallow(root));
    if (!schedule(root, *copy, 1)) return ZrJsonPtr();
    while (!m_pending.empty()) {
      const Pending p = std::move(m_pending.back());
      m_pending.pop_back();
      const ElementValue* source = asElement(p.source);
      bool done = source ? copyStore(*source, static_cast<ElementValue&>(*p.copy), p.depth)
                         : copyMembers(*p.source, *p.copy, p.depth);
      if (!done) return ZrJsonPtr();
    }
    return copy;
  }

 private:
  struct Pending {
    const IElementValueBase* source;
    IElementValueBase* copy;
    int depth;
    ZrJsonPtr held;  // the source, when nothing else keeps it alive
  };

  // Queues a fresh copy of a container for its members; false when nested too deeply. A copy
  // that is not the source itself is an ElementValue of the source's kind.
  bool schedule(const IElementValueBase& source, IElementValueBase& copy, int depth, ZrJsonPtr held = {}) {
    if (&source == &copy || !isContainer(kindOf(ElementAccess::type(static_cast<ElementValue&>(copy))))) return true;
    if (depth > kMaxDepth) return false;
    m_pending.push_back({&source, &copy, depth, std::move(held)});
    return true;
  }

  // Puts the copy of `member` (null stays null) in the empty `slot` and queues its members.
  bool fill(IElementValueBase*& slot, const IElementValueBase* member, int depth) {
    if (!member) return true;
    slot = copyShallow(*member);
    return schedule(*member, *slot, depth);
  }

  // Fills the fresh container `copy` from the block of `source`, sized once. The block hangs on
  // `copy` from the start and counts only what is filled in, so a failure leaves a tree that
  // drops cleanly.
  bool copyStore(const ElementValue& source, ElementValue& copy, int depth) {
    const void* block = blockOf(source);
    const uint32_t count = sizeOf(block);
    if (!count) return true;
    bool ok = true;
    if (kindOf(ElementAccess::type(source)) == etObject) {
      const Entry* from = static_cast<const ObjectStore*>(block)->items();
      auto* store = static_cast<ObjectStore*>(newBlock(sizeof(Entry), count));
      store->size = 0;
      ElementAccess::word(copy) = reinterpret_cast<uint64_t>(store);
      for (uint32_t i = 0; i < count && ok; ++i) {
        if (i + kCopyAhead < count) __builtin_prefetch(from[i + kCopyAhead].value);
        Entry& entry = store->items()[i];
        makeName(entry.name, from[i].name.view());
        entry.value = nullptr;
        ++store->size;
        ok = fill(entry.value, from[i].value, depth + 1);
      }
    } else {
      IElementValueBase* const* from = static_cast<const ItemStore*>(block)->items();
      auto* store = static_cast<ItemStore*>(newBlock(sizeof(IElementValueBase*), count));
      store->size = 0;
      ElementAccess::word(copy) = reinterpret_cast<uint64_t>(store);
      for (uint32_t i = 0; i < count && ok; ++i) {
        if (i + kCopyAhead < count) __builtin_prefetch(from[i + kCopyAhead]);
        store->items()[i] = nullptr;
        ++store->size;
        ok = fill(store->items()[i], from[i], depth + 1);
      }
    }
    return ok;
  }

  // The same for a container of another element class, through the virtual interface.
  bool copyMembers(const IElementValueBase& source, IElementValueBase& copy, int depth) {
    const bool isObject = kindOf(source.getType()) == etObject;
    const int count = isObject ? source.property_count() : source.array_count();
    for (int i = 0; i < count; ++i) {
      ZrJsonPtr member = isObject ? source.enumproperty(i, m_key) : source.array_sub(i);
      ZrJsonPtr memberCopy = member ? ZrJsonPtr::adopt(copyShallow(*member)) : ZrJsonPtr();
      if (isObject)
        copy.set_property(m_key, memberCopy);
      else
        copy.array_append(memberCopy);
      // Another class may answer with a member that only this handle keeps alive.
      if (member && !schedule(*member, *memberCopy, depth + 1, member)) return false;
    }
    return true;
  }

  std::vector<Pending> m_pending;
  ZrUtf8String m_key;
};

}  // namespace
}  // namespace zrad::json

ZrJsonPtr IElementValueBase::clone() const { return zrad::json::Cloner().run(*this); }
