// Tree operations: copying, comparing, building and merging whole subtrees.
//
// clone and bEqual walk with an explicit stack bounded by kMaxDepth, so a tree at the
// nesting limit never deepens the thread's stack and a tree that contains itself ends the walk
// instead of running away. copySubProperty, appendObjects, update_array and update_property
// build on them.
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/limits.h"
#include "json/pathsplit.h"
#include "log/logmsg.h"

using zrad::json::isReadOnly;
using zrad::json::kindOf;
using zrad::json::kMaxDepth;

namespace {

const char kLogSource[] = "utils/zradjson";

bool isContainer(int kind) { return kind == etObject || kind == etArray; }

// Gives `copy` its own copy of the bytes of the byte block `source` (length in the value word,
// a malloc'd buffer in the second word). Blocks of other element classes stay empty.
void copyByteBlock(const IElementValueBase& source, IElementValueBase& copy) {
  const ElementValue* from = zrad::json::asElement(&source);
  ElementValue* to = zrad::json::asElement(&copy);
  const void* bytes = from ? reinterpret_cast<const void*>(ElementAccess::second(*from)) : nullptr;
  const uint64_t length = from ? ElementAccess::word(*from) : 0;
  if (!to || !bytes || length == 0) return;
  void* own = std::malloc(length);
  if (!own) throw ZrError(Zrad::eOutOfMemory);
  std::memcpy(own, bytes, length);
  ElementAccess::word(*to) = length;
  ElementAccess::second(*to) = reinterpret_cast<uint64_t>(own);
}

// A copy of one element without its members. Read-only elements are shared, not copied; an
// owned pointer and kind 0x42 are copied with a zero value (owned memory is never shared
// between two elements).
ZrJsonPtr copyShallow(const IElementValueBase& source) {
  const int type = source.getType();
  if (isReadOnly(type)) return ZrJsonPtr(const_cast<IElementValueBase*>(&source));
  ZrJsonPtr copy = ElementValue::createObject(type);
  switch (kindOf(type)) {
    case etDouble:
      copy->set_valued(source.floatValue());
      break;
    case etBoolean:
      copy->set_valueb(source.boolValue());
      break;
    case etString:
      copy->set_values(source.strValue());
      break;
    case etInteger:
      copy->set_valuei64(source.longlongValue());
      break;
    case etTime:
      copy->set_valuet(source.longlongValue());
      break;
    case etPointer:
      copy->set_valuep(source.ptrValue(), type);
      break;
    case etRxObjectPointer:
      copy->set_value_rxobject_ptr(static_cast<ZrRxObject*>(source.ptrValue()));
      break;
    case etByteBlock:
      copyByteBlock(source, *copy);
      break;
    default:
      break;
  }
  return copy;
}

// The outcome of comparing two elements without looking at their members.
enum class Shallow { kEqual, kUnequal, kCompareMembers };

// Scalars compare within one kind only (an Integer never equals a Double, a Time nothing);
// containers of one kind and count need their members compared. Two None or null elements
// are equal; a missing element equals only another missing one.
Shallow compareShallow(const IElementValueBase* a, const IElementValueBase* b) {
  if (!a || !b) return a == b ? Shallow::kEqual : Shallow::kUnequal;
  const int kind = kindOf(a->getType());
  if (kind != kindOf(b->getType())) return Shallow::kUnequal;
  bool equal = false;
  switch (kind) {
    case etObject:
      if (a->property_count() != b->property_count()) return Shallow::kUnequal;
      return Shallow::kCompareMembers;
    case etArray:
      if (a->array_count() != b->array_count()) return Shallow::kUnequal;
      return Shallow::kCompareMembers;
    case etNone:
      equal = true;
      break;
    case etBoolean:
      equal = a->boolValue() == b->boolValue();
      break;
    case etDouble:
      equal = a->floatValue() == b->floatValue();
      break;
    case etInteger:
      equal = a->longlongValue() == b->longlongValue();
      break;
    case etString:
      equal = a->strValue() == b->strValue();
      break;
    case etPointer:
    case etOwnedPointer:
    case etRxObjectPointer:
      equal = a->ptrValue() == b->ptrValue();
      break;
    default:
      break;
  }
  return equal ? Shallow::kEqual : Shallow::kUnequal;
}

// One pair of containers of the same kind and count being compared member by member.
// Objects: every property of `theirs` must have an equal namesake in `mine`. Arrays: every item
// of `theirs` must equal some item of `mine`, at any position.
class MemberComparison {
 public:
  MemberComparison(const IElementValueBase* mine, const IElementValueBase* theirs)
      : m_mine(mine), m_theirs(theirs), m_isObject(kindOf(mine->getType()) == etObject) {}

  // Takes the outcome of comparing the pair that next() handed out last.
  void record(bool equal) {
    if (m_isObject) {
      if (equal)
        ++m_index;
      else
        m_failed = true;
    } else if (equal) {
      ++m_index;
      m_candidate = 0;
    } else {
      ++m_candidate;
    }
  }

  // The next pair to compare in `a` and `b`, or the verdict for the whole pair of containers.
  std::optional<bool> next(const IElementValueBase*& a, const IElementValueBase*& b) {
    if (m_failed) return false;
    if (m_isObject) {
      if (m_index == m_theirs->property_count()) return true;
      ZrJsonPtr theirs = m_theirs->enumproperty(m_index, m_key);
      ZrJsonPtr mine = m_mine->property_sub(m_key);
      if (!mine) return false;
      // Both stay alive through their containers while the comparison runs.
      a = mine.get();
      b = theirs.get();
      return std::nullopt;
    }
    if (m_index == m_theirs->array_count()) return true;
    if (m_candidate == m_mine->array_count()) return false;
    a = m_mine->array_sub(m_candidate).get();
    b = m_theirs->array_sub(m_index).get();
    return std::nullopt;
  }

 private:
  const IElementValueBase* m_mine;
  const IElementValueBase* m_theirs;
  bool m_isObject;
  bool m_failed = false;
  int m_index = 0;      // the property or item of `theirs` being matched
  int m_candidate = 0;  // the item of `mine` being tried for it (Arrays)
  ZrUtf8String m_key;
};

// Two Array items count as the same set member: scalars by their text, containers by bEqual.
bool sameMember(const IElementValueBase& a, const ZrJsonPtr& b) {
  const int ka = kindOf(a.getType());
  const int kb = kindOf(b->getType());
  if (isContainer(ka) || isContainer(kb)) return ka == kb && a.bEqual(b);
  return a.strValue() == b->strValue();
}

}  // namespace

ZrJsonPtr IElementValueBase::clone() const {
  struct Pending {
    const IElementValueBase* source;
    IElementValueBase* copy;
    int depth;
  };
  std::vector<Pending> pending;
  // Queues a fresh copy of a container for its members; false when nested too deeply.
  auto schedule = [&pending](const IElementValueBase& source, IElementValueBase& copy, int depth) {
    if (&source == &copy || !isContainer(kindOf(source.getType()))) return true;
    if (depth > kMaxDepth) return false;
    pending.push_back({&source, &copy, depth});
    return true;
  };

  ZrJsonPtr root = copyShallow(*this);
  if (!schedule(*this, *root, 1)) return ZrJsonPtr();
  ZrUtf8String key;
  while (!pending.empty()) {
    const Pending p = pending.back();
    pending.pop_back();
    const bool isObject = kindOf(p.source->getType()) == etObject;
    const int count = isObject ? p.source->property_count() : p.source->array_count();
    for (int i = 0; i < count; ++i) {
      ZrJsonPtr member = isObject ? p.source->enumproperty(i, key) : p.source->array_sub(i);
      ZrJsonPtr copy = member ? copyShallow(*member) : ZrJsonPtr();
      if (isObject)
        p.copy->set_property(key, copy);
      else
        p.copy->array_append(copy);
      if (member && !schedule(*member, *copy, p.depth + 1)) return ZrJsonPtr();
    }
  }
  return root;
}

bool IElementValueBase::bEqual(const ZrJsonPtr& other) const {
  Shallow first = compareShallow(this, other.get());
  if (first != Shallow::kCompareMembers) return first == Shallow::kEqual;

  std::vector<MemberComparison> stack;
  stack.emplace_back(this, other.get());
  std::optional<bool> outcome;  // the verdict of the pair compared last
  while (!stack.empty()) {
    MemberComparison& top = stack.back();
    if (outcome) top.record(*outcome);
    const IElementValueBase* a = nullptr;
    const IElementValueBase* b = nullptr;
    outcome = top.next(a, b);
    if (outcome) {
      stack.pop_back();
      continue;
    }
    switch (compareShallow(a, b)) {
      case Shallow::kEqual:
        outcome = true;
        break;
      case Shallow::kUnequal:
        outcome = false;
        break;
      case Shallow::kCompareMembers:
        // Deeper than the nesting limit (or a tree containing itself): not comparable.
        if (stack.size() >= static_cast<size_t>(kMaxDepth)) return false;
        stack.emplace_back(a, b);
        break;
    }
  }
  return outcome.value_or(false);
}

void IElementValueBase::copySubProperty(const ZrJsonPtr& source, bool deep) {
  if (kindOf(getType()) != etObject || !source) return;
  ZrUtf8String key;
  for (int i = 0, n = source->property_count(); i < n; ++i) {
    ZrJsonPtr value = source->enumproperty(i, key);
    if (deep && value) value = value->clone();
    // A value too deeply nested to be cloned is left out rather than stored as nothing.
    if (value) set_property(key, value);
  }
}

ZrJsonPtr ElementValue::appendObjects(const ZrUtf8String& path) {
  ZrJsonPtr current(this);
  zrad::json::PathCursor cursor(path);
  std::string_view segment;
  ZrUtf8String name;
  while (cursor.next(segment)) {
    if (kindOf(current->getType()) != etObject) return ZrJsonPtr();
    zrad::json::assignName(name, segment);
    ZrJsonPtr child = current->property_sub(name);
    if (!child)
      child = current->set_property(name, ElementValue::createObject(etObject));  // null when refused
    else if (kindOf(child->getType()) != etObject)
      return ZrJsonPtr();
    if (!child) return ZrJsonPtr();
    current = child;
  }
  return current;
}

bool ElementValue::update_array(const ZrJsonPtr& item) {
  const int type = getType();
  if (kindOf(type) != etArray || isReadOnly(type)) {
    ZRAD_LOG(5, kLogSource, "update_array: not a writable Array, type:0x%x", type);
    return false;
  }
  if (!item) return false;
  for (int i = 0, n = array_count(); i < n; ++i) {
    ZrJsonPtr existing = array_sub(i);
    if (existing && sameMember(*existing, item)) {
      ZRAD_LOG(5, kLogSource, "update_array: an equal item is already at %d", i);
      return true;
    }
  }
  return array_append(item);
}

bool ElementValue::update_property(const ZrUtf8String& name, const ZrJsonPtr& value) {
  const int type = getType();
  if (kindOf(type) != etObject || isReadOnly(type)) {
    ZRAD_LOG(5, kLogSource, "update_property(%s): not a writable Object, type:0x%x", name.c_str(), type);
    return false;
  }
  if (!value) return false;

  // Each merge puts `value` into the property `name` of the writable Object `target`.
  struct Merge {
    ZrJsonPtr target;
    ZrUtf8String name;
    ZrJsonPtr value;
    int depth;
  };
  std::vector<Merge> work;
  work.push_back({ZrJsonPtr(this), name, value, 1});
  bool complete = true;
  ZrUtf8String key;
  while (!work.empty()) {
    Merge m = std::move(work.back());
    work.pop_back();
    ZrJsonPtr present = m.target->property_sub(m.name);
    const int presentKind = present ? kindOf(present->getType()) : -1;
    const int valueKind = kindOf(m.value->getType());
    const bool mergeable = presentKind == valueKind && isContainer(valueKind) && !isReadOnly(present->getType());
    if (!mergeable || m.depth >= kMaxDepth) {
      // Missing, of another kind, or a scalar: the property takes a copy of the value.
      ZrJsonPtr copy = m.value->clone();
      if (!copy || !m.target->set_property(m.name, copy)) complete = false;
    } else if (valueKind == etObject) {
      for (int i = 0, n = m.value->property_count(); i < n; ++i) {
        ZrJsonPtr member = m.value->enumproperty(i, key);
        if (member) work.push_back({present, key, member, m.depth + 1});
      }
    } else {
      for (int i = 0, n = m.value->array_count(); i < n; ++i) {
        ZrJsonPtr item = m.value->array_sub(i);
        ZrJsonPtr copy = item ? item->clone() : ZrJsonPtr();
        if (!copy || !present->update_array(copy)) complete = false;
      }
    }
  }
  return complete;
}
