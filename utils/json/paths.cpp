// Property paths: the read and create walks, parent/name splitting and path variables.
//
// quickGetProperty, quickSetProperty, CheckKey and RebuildJsonName walk a path in place
// (pathsplit.h); zrsiutEvaluatePath expands %NAME% variables against a configuration tree and
// the environment; zrutEnumPaths collects the texts of an Array.
#include <cstdlib>
#include <string>

#include <zrad/json.h>

#include "json/element_store.h"
#include "json/pathsplit.h"

using zrad::json::isDigits;
using zrad::json::kindOf;
using zrad::json::PathCursor;

namespace {

bool isWalkable(const IElementValueBase& e) {
  int kind = kindOf(e.getType());
  return kind == etObject || kind == etArray;
}

bool isNullElement(const IElementValueBase& e) { return (e.getType() & etNullFlag) != 0; }

// The member that `segment` selects in the Object or Array `e`, borrowed: no reference is
// taken. The tree's own elements are searched in place (no name copy, no count traffic); any
// other implementation answers through its virtual lookup, and `held` keeps that answer alive.
const IElementValueBase* borrowMember(const IElementValueBase& e, int kind, std::string_view segment,
                                      ZrUtf8String& name, ZrJsonPtr& held) {
  using namespace zrad::json;
  if (const ElementValue* own = asElement(&e)) {
    if (kind == etObject) {
      IElementValueBase* const* slot = findValue(ElementAccess::word(*own), segment);
      return slot ? *slot : nullptr;
    }
    const auto* store = reinterpret_cast<const ItemStore*>(ElementAccess::word(*own));
    int index = segmentIndex(segment);
    return index >= 0 && static_cast<uint32_t>(index) < sizeOf(store) ? store->items()[index] : nullptr;
  }
  held = kind == etObject ? e.property_sub(assignName(name, segment)) : e.array_sub(segmentIndex(segment));
  return held.get();
}

}  // namespace

ZrJsonPtr IElementValueBase::quickGetProperty(const ZrUtf8String& path) const {
  if (!isWalkable(*this)) return ZrJsonPtr();
  const IElementValueBase* current = this;
  ZrJsonPtr held;
  PathCursor cursor(path);
  std::string_view segment;
  ZrUtf8String name;
  while (cursor.next(segment)) {
    int kind = kindOf(current->getType());
    if (kind != etObject && kind != etArray) return ZrJsonPtr();
    current = borrowMember(*current, kind, segment, name, held);
    if (!current) return ZrJsonPtr();
  }
  return ZrJsonPtr(const_cast<IElementValueBase*>(current));
}

ZrJsonPtr IElementValueBase::quickSetProperty(const ZrUtf8String& path) {
  if (!isWalkable(*this)) return ZrJsonPtr();
  ZrJsonPtr current(this);
  PathCursor cursor(path);
  std::string_view segment;
  ZrUtf8String name;
  while (cursor.next(segment)) {
    std::string_view following;
    bool hasFollowing = cursor.peek(following);
    switch (kindOf(current->getType())) {
      case etObject: {
        zrad::json::assignName(name, segment);
        ZrJsonPtr child = current->property_sub(name);
        if (!child) {
          int kind = hasFollowing && isDigits(following) ? etArray : etObject;
          // A read-only Object refuses the new member, and the walk ends there.
          child = current->set_property(name, ElementValue::createObject(kind));
          if (!child) return ZrJsonPtr();
        }
        current = child;
        break;
      }
      case etArray: {
        if (!isDigits(segment)) return ZrJsonPtr();
        ZrJsonPtr item = current->array_sub(zrad::json::segmentIndex(segment));
        // Items are never created: a missing last item leaves the walk on the Array itself.
        if (!item) return hasFollowing ? ZrJsonPtr() : current;
        current = item;
        break;
      }
      default:
        // A scalar ends the walk; the rest of the path is ignored.
        return current;
    }
  }
  return current;
}

ZrJsonPtr IElementValueBase::CheckKey(const ZrUtf8String& path, bool create) {
  if (path.isEmpty()) return ZrJsonPtr(this);
  ZrJsonPtr found = quickGetProperty(path);
  if (found || !create) return found;
  return quickSetProperty(path);
}

bool IElementValueBase::RebuildJsonName(const ZrUtf8String& path, ZrUtf8String& parent,
                                        ZrUtf8String& name) {
  // The outputs may be the very string being split.
  if (&path == &parent || &path == &name) {
    ZrUtf8String copy(path);
    return RebuildJsonName(copy, parent, name);
  }
  size_t n = 0;
  std::string_view last;
  for (PathCursor counter(path); counter.next(last);) ++n;
  if (n == 0) return false;

  std::string& joined = parent.str();
  joined.clear();
  name.str().assign(last);
  // The segments before the last, except that a numeric segment always stays with the one
  // before it: "a/b/0" => parent "a/b/0", "a/1/2" => parent "a/1".
  PathCursor cursor(path);
  std::string_view segment;  // segment i
  cursor.next(segment);
  for (size_t i = 0; n > 1; ++i) {
    joined.append(segment);
    std::string_view following;  // segment i + 1
    bool hasFollowing = cursor.next(following);
    if (hasFollowing && isDigits(following)) {
      joined += '/';
      joined.append(following);
      ++i;
      cursor.next(following);
    }
    if (i + 2 >= n) break;
    joined += '/';
    segment = following;
  }
  return true;
}

namespace {

struct PathVariable {
  const char* name;
  const char* configPath;
  const char* fallback;
};

constexpr PathVariable kPathVariables[] = {
    {"EXEPATH", "Runtime/ExeRootPath", ""},
    {"APPDATAPATH", "Runtime/AppDataPath", ""},
    {"DOCUMENTPATH", "Runtime/DocumentPath", ""},
    {"SYSFONTPATH", "Runtime/SysFontPath", ""},
    {"TEMPPATH", "Runtime/TempPath", ""},
    {"LANGUAGE", "Core/AppInfo/language", "zh-cn"},
    {"VERSION", "Core/AppInfo/version", "2023"},
    {"OS", "Core/AppInfo/os", "linux"},
};

// The value of one %NAME%: a configured variable, else the environment, else nothing.
void appendVariable(std::string& out, const std::string& name, const ZrJsonPtr& configuration) {
  for (const PathVariable& v : kPathVariables) {
    if (name != v.name) continue;
    ZrJsonPtr found = configuration ? configuration->quickGetProperty(v.configPath) : ZrJsonPtr();
    if (found && !isNullElement(*found))
      out += found->strValue().str();
    else
      out += v.fallback;
    return;
  }
  if (const char* value = std::getenv(name.c_str())) out += value;
}

}  // namespace

ZrUtf8String zrsiutEvaluatePath(const ZrUtf8String& text, ZrJsonPtr configuration) {
  const std::string& in = text.str();
  std::string out;
  out.reserve(in.size());
  size_t i = 0;
  while (i < in.size()) {
    size_t percent = in.find('%', i);
    out.append(in, i, percent == std::string::npos ? std::string::npos : percent - i);
    if (percent == std::string::npos) break;
    size_t close = in.find('%', percent + 1);
    if (close == std::string::npos) {
      // A lone "%" at the very end stays; an unclosed name is dropped.
      if (percent + 1 == in.size()) out += '%';
      break;
    }
    if (close == percent + 1)
      out += '%';
    else
      appendVariable(out, in.substr(percent + 1, close - percent - 1), configuration);
    i = close + 1;
  }
  return ZrUtf8String(std::move(out));
}

namespace {

// Appends the non-empty, not yet present texts of the items of an Array to `out`.
template <class Text, class Convert>
void enumPaths(const ZrJsonPtr& list, ZrArray<Text>& out, Convert convert) {
  if (!list || kindOf(list->getType()) != etArray) return;
  for (int i = 0, n = list->array_count(); i < n; ++i) {
    ZrJsonPtr item = list->array_sub(i);
    if (!item || isNullElement(*item)) continue;
    Text text = convert(item->strValue());
    if (!text.isEmpty() && out.find(text) < 0) out.append(text);
  }
}

}  // namespace

void zrutEnumPaths(ZrJsonPtr list, ZrArray<ZrUtf8String>& out) {
  enumPaths(list, out, [](ZrUtf8String text) { return text; });
}

void zrutEnumPathsW(ZrJsonPtr list, ZrArray<ZrString>& out) {
  enumPaths(list, out, [](const ZrUtf8String& text) { return ZrString(text); });
}
