// Typed accessors: GetData*/SetData* at a property path, and 2-D/3-D points.
//
// Every getter looks its element up with CheckKey(path, false) and converts it; every setter
// splits the path with RebuildJsonName, makes the parent exist with CheckKey(parent, true) and
// stores the value there. Points are Objects of Doubles, read from Objects or Arrays.
#include <zrad/json.h>

#include "json/element_store.h"

using zrad::json::kindOf;

namespace {

ZrUtf8String pathText(const char* path) { return ZrUtf8String(path ? path : ""); }

// Looks up the element at `path`; false when there is none. A null element is found (true) but
// `read` is not called, so the caller's value stays as it was.
template <class Read>
bool readAt(IElementValueBase& self, const char* path, Read read) {
  ZrJsonPtr found = self.CheckKey(pathText(path), false);
  if (!found) return false;
  if ((found->getType() & etNullFlag) == 0) read(*found);
  return true;
}

// Stores a value at `path`: `inObject(parent, name)` for an Object parent, `inArray(parent)`
// for an Array parent. False for an empty path or a parent of another kind. Neither store is
// asked how it went: a read-only property or Array refuses it and the setter still says true.
template <class InObject, class InArray>
bool writeAt(IElementValueBase& self, const char* path, InObject inObject, InArray inArray) {
  ZrUtf8String parentPath, name;
  if (!IElementValueBase::RebuildJsonName(pathText(path), parentPath, name)) return false;
  ZrJsonPtr parent = self.CheckKey(parentPath, true);
  if (!parent) return false;
  switch (kindOf(parent->getType())) {
    case etObject:
      inObject(*parent, name);
      return true;
    case etArray:
      return inArray(*parent);
    default:
      return false;
  }
}

// For members whose value an Array parent does not take.
bool refuseInArray(IElementValueBase&) { return false; }

// Appends `item` (a read-only Array refuses it); true either way.
bool appendItem(IElementValueBase& array, const ZrJsonPtr& item) {
  array.array_append(item);
  return true;
}

// Appends a new String element holding `text`; true.
bool appendText(IElementValueBase& array, const ZrUtf8String& text) {
  ZrJsonPtr item = ElementValue::createObject(etString);
  item->set_values(text);
  return appendItem(array, item);
}

// Property names of the coordinates of a point, in item order.
const ZrUtf8String kAxisNames[] = {"x", "y", "z"};

// Coordinate `index` of a point stored as an Array [x, y, z] or an Object {"x", "y", "z"}.
double coordinate(const IElementValueBase& point, int kind, int index) {
  ZrJsonPtr value = kind == etArray ? point.array_sub(index) : point.property_sub(kAxisNames[index]);
  if (!value || (value->getType() & etNullFlag) != 0) return 0.0;
  return value->floatValue();
}

bool isPointHolder(int kind) { return kind == etArray || kind == etObject; }

// A new Object holding the first `count` of the coordinates as Doubles "x", "y", "z".
ZrJsonPtr pointObject(const double* coordinates, int count) {
  ZrJsonPtr point = ElementValue::createObject(etObject);
  for (int i = 0; i < count; ++i) point->set_propertyd(kAxisNames[i], coordinates[i], false);
  return point;
}

}  // namespace

bool IElementValueBase::GetDataI(const char* path, int& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = static_cast<int>(e.longlongValue()); });
}

bool IElementValueBase::GetDataB(const char* path, bool& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.boolValue(); });
}

bool IElementValueBase::GetDataD(const char* path, double& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.floatValue(); });
}

bool IElementValueBase::GetDataS(const char* path, ZrUtf8String& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.strValue(); });
}

bool IElementValueBase::GetDataSW(const char* path, ZrString& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = ZrString(e.strValue()); });
}

bool IElementValueBase::GetDataL(const char* path, long long& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.safeTimeValue(out); });
}

bool IElementValueBase::GetDataP2d(const char* path, ZrGePoint2d& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.safe_point2d_value(out); });
}

bool IElementValueBase::GetDataP3d(const char* path, ZrGePoint3d& out) {
  return readAt(*this, path, [&](IElementValueBase& e) { out = e.safe_point3d_value(out); });
}

bool IElementValueBase::GetDataJ(const char* path, ZrJsonPtr& out) {
  ZrJsonPtr found = CheckKey(pathText(path), false);
  if (!found) return false;
  out = found;
  return true;
}

bool IElementValueBase::SetDataI(const char* path, int value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertyi(n, value, false); },
      refuseInArray);
}

bool IElementValueBase::SetDataB(const char* path, bool value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertyb(n, value, false); },
      refuseInArray);
}

bool IElementValueBase::SetDataD(const char* path, double value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertyd(n, value, false); },
      refuseInArray);
}

bool IElementValueBase::SetDataL(const char* path, long long value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertyt(n, value, false); },
      refuseInArray);
}

bool IElementValueBase::SetDataS(const char* path, const ZrUtf8String& value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertys(n, value, false); },
      [&](IElementValueBase& array) { return appendText(array, value); });
}

bool IElementValueBase::SetDataSW(const char* path, const ZrString& value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_propertysW(n, value, false); },
      [&](IElementValueBase& array) { return appendText(array, ZrUtf8String(value)); });
}

bool IElementValueBase::SetDataJ(const char* path, ZrJsonPtr value) {
  return writeAt(
      *this, path, [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_property(n, value); },
      [&](IElementValueBase& array) { return appendItem(array, value); });
}

bool IElementValueBase::SetDataP2d(const char* path, const ZrGePoint2d& value) {
  return writeAt(
      *this, path,
      [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_property_point2d(n, value, false); },
      refuseInArray);
}

bool IElementValueBase::SetDataP3d(const char* path, const ZrGePoint3d& value) {
  return writeAt(
      *this, path,
      [&](IElementValueBase& p, const ZrUtf8String& n) { p.set_property_point3d(n, value, false); },
      refuseInArray);
}

ZrGePoint2d IElementValueBase::safe_point2d_value(const ZrGePoint2d& def) const {
  int kind = kindOf(getType());
  if (!isPointHolder(kind)) return def;
  return ZrGePoint2d(coordinate(*this, kind, 0), coordinate(*this, kind, 1));
}

ZrGePoint3d IElementValueBase::safe_point3d_value(const ZrGePoint3d& def) const {
  int kind = kindOf(getType());
  if (!isPointHolder(kind)) return def;
  return ZrGePoint3d(coordinate(*this, kind, 0), coordinate(*this, kind, 1), coordinate(*this, kind, 2));
}

// The trailing bool is accepted for symmetry with the other setters: coordinates are always
// stored writable.
ZrJsonPtr IElementValueBase::set_property_point2d(const ZrUtf8String& name, const ZrGePoint2d& p, bool) {
  const double coordinates[] = {p.x, p.y};
  ZrJsonPtr point = pointObject(coordinates, 2);
  set_property(name, point);
  return point;
}

ZrJsonPtr IElementValueBase::set_property_point3d(const ZrUtf8String& name, const ZrGePoint3d& p, bool) {
  const double coordinates[] = {p.x, p.y, p.z};
  ZrJsonPtr point = pointObject(coordinates, 3);
  set_property(name, point);
  return point;
}
