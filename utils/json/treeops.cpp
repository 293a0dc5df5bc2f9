// Tree operations: copying, comparing, building and merging whole subtrees.
//
// copySubProperty, appendObjects, update_array and update_property, built on clone (clone.cpp)
// and bEqual (compare.cpp).
#include <optional>
#include <vector>

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/pathsplit.h"
#include "log/logmsg.h"

using zrad::json::isContainer;
using zrad::json::isReadOnly;
using zrad::json::kindOf;

namespace {

const char kLogSource[] = "utils/zradjson";

// update_property merges Objects name by name down to this depth; a deeper value replaces the
// property by a copy (clone then refuses a value that contains itself instead of merging forever).
constexpr int kMergeDepth = 1000;

// Two Array items count as the same set member: scalars by their text, containers by bEqual.
bool sameMember(const IElementValueBase& a, const ZrJsonPtr& b) {
  const int ka = kindOf(a.getType());
  const int kb = kindOf(b->getType());
  if (isContainer(ka) || isContainer(kb)) return ka == kb && a.bEqual(b);
  return a.strValue() == b->strValue();
}

}  // namespace

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
    if (!child) {
      // A read-only Object refuses the new one, and the walk goes on with it detached.
      child = ElementValue::createObject(etObject);
      current->set_property(name, child);
    } else if (kindOf(child->getType()) != etObject) {
      return ZrJsonPtr();
    }
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
    if (!mergeable || m.depth >= kMergeDepth) {
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
