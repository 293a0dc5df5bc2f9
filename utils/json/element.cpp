// ElementValue: kinds, storage life cycle, getters with their conversions, setters, and the
// property and array operations.
//
// Containers own a pool block from element_store.h in the value word (null: empty), strings
// their text (inline or in a block, see textOf), and the byte block of kind 0x05 a malloc'd
// buffer in the second word.
#include <cstdint>
#include <cstdlib>

#include "json/element_store.h"
#include "json/numfmt.h"
#include "log/logmsg.h"

using namespace zrad::json;

namespace {

const char kLogSource[] = "utils/zradjson";

// Hardware-style truncation without undefined behaviour: NaN and values out of range give
// INT64_MIN, as the processor's conversion does.
long long truncateToInt64(double d) {
  if (d >= -9223372036854775808.0 && d < 9223372036854775808.0) return static_cast<long long>(d);
  return INT64_MIN;
}

unsigned long long truncateToUint64(double d) {
  if (d >= 9223372036854775808.0 && d < 18446744073709551616.0)
    return static_cast<unsigned long long>(d);
  return static_cast<unsigned long long>(truncateToInt64(d));
}

ZrUtf8String hex32(const void* p) {
  return ZrUtf8String::format("0x%x", static_cast<unsigned>(reinterpret_cast<uintptr_t>(p)));
}

}  // namespace

// ---- creation and storage ----

ZrJsonPtr ElementValue::createObject(int type) {
  ElementValue* e = ElementAccess::make(static_cast<uint32_t>(type) == etNullFlag ? etNullFlag : 0);
  if (static_cast<uint32_t>(type) != etNullFlag) e->initWithType(type);
  return ZrJsonPtr::adopt(e);
}

ElementValue::~ElementValue() { freePointerValue(); }

void ElementValue::freePointerValue() {
  freeStorage(tChunks, *this);
  m_value.u = 0;
  m_second.word = 0;
}

void zrad::json::freeStorage(ChunkState& s, ElementValue& e) {
  void* p = reinterpret_cast<void*>(ElementAccess::word(e));
  switch (kindOf(ElementAccess::type(e))) {
    case etArray: freeItems(s, static_cast<ItemStore*>(p)); break;
    case etObject: freeEntries(s, ElementAccess::word(e)); break;
    case etString: freeText(s, e); break;
    case etByteBlock: std::free(ElementAccess::byteBlock(e)); break;
    case etOwnedPointer: if (p) zrrxFree(p); break;
    case etRxObjectPointer: if (p) zrrxRelease(static_cast<ZrRxObject*>(p)); break;
    default: break;
  }
}

void ElementValue::initWithType(int type) {
  uint32_t t = static_cast<uint32_t>(type);
  if (kindOf(m_type) != kindOf(t)) freePointerValue();
  m_type = t;
  switch (kindOf(t)) {
    case etArray:
    case etObject:
    case etString:
      break;  // a null block is the empty storage; an unchanged kind keeps its content
    case etByteBlock:
      freePointerValue();
      break;
    default:
      m_value.u = 0;
  }
}

void ElementValue::initWithUtf8String(const ZrUtf8String& text, bool readOnly) {
  initWithType(readOnly ? (etReadOnlyFlag | etString) : etString);
  setText(*this, viewOf(text));
}

void ElementValue::setString(const ZrUtf8String& text, int type) {
  if (kindOf(m_type) != kindOf(static_cast<uint32_t>(type))) initWithType(type);
  switch (type) {
    case etInteger: m_value.i = std::strtol(text.c_str(), nullptr, 10); break;
    case etDouble: m_value.d = std::strtod(text.c_str(), nullptr); break;
    case etString:
      setText(*this, viewOf(text));
      break;
    default: break;
  }
}

// ---- getters ----

int ElementValue::getType() const { return static_cast<int>(m_type); }

ZrUtf8String ElementValue::strValue() const {
  switch (kindOf(m_type)) {
    case etString: return ZrUtf8String(std::string(textOf(*this)));
    case etBoolean: return ZrUtf8String((m_value.u & 0xFF) ? "true" : "false");
    case etInteger: return ZrUtf8String(formatInteger(m_value.i));
    case etDouble: return ZrUtf8String(formatFixed6(m_value.d));
    case etPointer:
    case etOwnedPointer: return hex32(m_value.p);
    case etRxObjectPointer: {
      auto* obj = static_cast<const ZrRxObject*>(m_value.p);
      if (obj && obj->isA() && obj->className())
        return hex32(obj) + "-" + ZrUtf8String(ZrString(obj->className()));
      return hex32(obj);
    }
    default: return {};
  }
}

long long ElementValue::longlongValue() const {
  switch (kindOf(m_type)) {
    case etString: return std::strtoll(textOf(*this).data(), nullptr, 10);
    case etBoolean: return (m_value.u & 0xFF) ? 1 : 0;
    case etInteger:
    case etTime: return m_value.i;
    case etDouble: return truncateToInt64(m_value.d);
    case etPointer: return static_cast<long long>(reinterpret_cast<intptr_t>(m_value.p));
    default: return 0;
  }
}

unsigned long long ElementValue::ulonglongValue() const {
  if (kindOf(m_type) == etDouble) return truncateToUint64(m_value.d);
  return static_cast<unsigned long long>(longlongValue());
}

bool ElementValue::boolValue() const {
  switch (kindOf(m_type)) {
    case etString: return false;
    case etBoolean: return (m_value.u & 0xFF) != 0;
    case etInteger:
    case etTime: return m_value.i != 0;
    case etDouble: return m_value.d != 0.0;
    case etPointer: return m_value.p != nullptr;
    default: return true;
  }
}

double ElementValue::floatValue() const {
  switch (kindOf(m_type)) {
    case etString: return std::strtod(textOf(*this).data(), nullptr);
    case etBoolean: return (m_value.u & 0xFF) ? 1.0 : 0.0;
    case etInteger: return static_cast<double>(m_value.u);
    case etDouble: return m_value.d;
    case etTime: return static_cast<double>(m_value.i);
    default: return 0.0;
  }
}

void* ElementValue::ptrValue() const {
  int kind = kindOf(m_type);
  return kind == etPointer || kind == etOwnedPointer || kind == etRxObjectPointer ? m_value.p : nullptr;
}

long long ElementValue::timeValue() const {
  switch (kindOf(m_type)) {
    case etBoolean: return (m_value.u & 0xFF) ? 1 : 0;
    case etInteger:
    case etTime: return m_value.i;
    case etDouble: return truncateToInt64(m_value.d * 864000.0);
    default: return 0;
  }
}

// ---- value setters ----

namespace {
// Read-only: null. Otherwise makes `e` of `kind` when it is not, and hands back e for the store.
ElementValue* prepareValue(ElementValue* e, int kind) {
  if (e->getType() & etReadOnlyFlag) return nullptr;
  if ((e->getType() & 0xFF) != kind) e->initWithType(kind);
  return e;
}
}  // namespace

ZrJsonPtr ElementValue::set_valuei(int value) { return set_valuei64(value); }
ZrJsonPtr ElementValue::set_valuei64(long long value) {
  if (!prepareValue(this, etInteger)) return {};
  m_value.i = value;
  return ZrJsonPtr(this);
}
ZrJsonPtr ElementValue::set_valueu(unsigned long long value) {
  return set_valuei64(static_cast<long long>(value));
}
ZrJsonPtr ElementValue::set_valuet(long long value) {
  if (!prepareValue(this, etTime)) return {};
  m_value.i = value;
  return ZrJsonPtr(this);
}
ZrJsonPtr ElementValue::set_values(const ZrUtf8String& value) {
  if (!prepareValue(this, etString)) return {};
  setText(*this, viewOf(value));
  return ZrJsonPtr(this);
}
ZrJsonPtr ElementValue::set_valued(double value) {
  if (!prepareValue(this, etDouble)) return {};
  m_value.d = value;
  return ZrJsonPtr(this);
}
ZrJsonPtr ElementValue::set_valueb(bool value) {
  if (!prepareValue(this, etBoolean)) return {};
  m_value.u = value ? 1 : 0;
  return ZrJsonPtr(this);
}
ZrJsonPtr ElementValue::set_valuep(void* value, int type) {
  if (m_type & etReadOnlyFlag) return {};
  initWithType(type);
  m_value.p = value;
  return ZrJsonPtr(this);
}

// ---- properties ----

namespace {
// The entries word of an Object; 0 (no entries) for other kinds.
uint64_t entriesOf(const ElementValue& e) {
  return kindOf(ElementAccess::type(e)) == etObject ? ElementAccess::word(e) : 0;
}
}  // namespace

ZrJsonPtr ElementValue::property_sub(const ZrUtf8String& name) const {
  IElementValueBase** slot = findValue(entriesOf(*this), viewOf(name));
  return slot ? ZrJsonPtr(*slot) : ZrJsonPtr();
}

bool ElementValue::hasProperty(const ZrUtf8String& name) const {
  return findValue(entriesOf(*this), viewOf(name)) != nullptr;
}

int ElementValue::property_count() const { return static_cast<int>(entryCount(entriesOf(*this))); }

ZrJsonPtr ElementValue::enumproperty(int i, ZrUtf8String& key) const {
  const uint64_t entries = entriesOf(*this);
  if (i < 0 || static_cast<uint32_t>(i) >= entryCount(entries)) return {};
  const Entry& e = entryAt(entries, static_cast<uint32_t>(i));
  key = ZrUtf8String(std::string(e.name.view()));
  return ZrJsonPtr(e.value);
}

ZrJsonPtr ElementValue::set_property(const ZrUtf8String& name, const ZrJsonPtr& value) {
  if (kindOf(m_type) != etObject || (m_type & etReadOnlyFlag)) {
    ZRAD_LOG(5, kLogSource, "%s(%s), line:%d, type:0x%x", "set_property", name.c_str(), __LINE__, m_type);
    return {};
  }
  if (IElementValueBase** slot = findValue(m_value.u, viewOf(name))) {
    if (*slot && ((*slot)->getType() & etReadOnlyFlag)) return {};
    if (value.get()) value->AddRef();
    releaseItem(std::exchange(*slot, value.get()));
    return value;
  }
  insertEntry(m_value.u, viewOf(name), value.get());
  if (value.get()) value->AddRef();
  return value;
}

namespace {
// A new value element of `type` (read-only when asked) stored through the set_property slot.
template <class Store>
ZrJsonPtr storeNew(IElementValueBase* owner, const ZrUtf8String& name, int type, bool readOnly, Store store) {
  ZrJsonPtr v = ElementValue::createObject(type);
  store(static_cast<ElementValue*>(v.get()));
  if (readOnly) ElementAccess::type(*static_cast<ElementValue*>(v.get())) |= etReadOnlyFlag;
  return owner->set_property(name, v);
}
}  // namespace

ZrJsonPtr ElementValue::set_propertys(const ZrUtf8String& name, const ZrUtf8String& value, bool readOnly) {
  return storeNew(this, name, etString, readOnly, [&](ElementValue* e) { e->set_values(value); });
}
ZrJsonPtr ElementValue::set_propertyi(const ZrUtf8String& name, int value, bool readOnly) {
  return set_propertyi64(name, value, readOnly);
}
ZrJsonPtr ElementValue::set_propertyi64(const ZrUtf8String& name, long long value, bool readOnly) {
  return storeNew(this, name, etInteger, readOnly, [&](ElementValue* e) { e->set_valuei64(value); });
}
ZrJsonPtr ElementValue::set_propertyu(const ZrUtf8String& name, unsigned long long value, bool readOnly) {
  return set_propertyi64(name, static_cast<long long>(value), readOnly);
}
ZrJsonPtr ElementValue::set_propertyt(const ZrUtf8String& name, long long value, bool readOnly) {
  return set_propertyi64(name, value, readOnly);
}
ZrJsonPtr ElementValue::set_propertyd(const ZrUtf8String& name, double value, bool readOnly) {
  return storeNew(this, name, etDouble, readOnly, [&](ElementValue* e) { e->set_valued(value); });
}
ZrJsonPtr ElementValue::set_propertyb(const ZrUtf8String& name, bool value, bool readOnly) {
  return storeNew(this, name, etBoolean, readOnly, [&](ElementValue* e) { e->set_valueb(value); });
}
ZrJsonPtr ElementValue::set_propertyp(const ZrUtf8String& name, void* value, bool readOnly) {
  return storeNew(this, name, etPointer, readOnly, [&](ElementValue* e) { e->set_valuep(value, etPointer); });
}

void ElementValue::removeProperty(const ZrUtf8String& name) {
  if (kindOf(m_type) != etObject || (m_type & etReadOnlyFlag)) return;
  IElementValueBase* dropped;
  if (removeEntry(m_value.u, viewOf(name), dropped)) releaseItem(dropped);
}

// ---- arrays ----

namespace {
ItemStore* itemsOf(uint32_t type, uint64_t word) {
  return kindOf(type) == etArray ? reinterpret_cast<ItemStore*>(word) : nullptr;
}
}  // namespace

int ElementValue::array_count() const { return static_cast<int>(sizeOf(itemsOf(m_type, m_value.u))); }

ZrJsonPtr ElementValue::array_sub(int index) const {
  ItemStore* store = itemsOf(m_type, m_value.u);
  if (index < 0 || static_cast<uint32_t>(index) >= sizeOf(store)) return {};
  return ZrJsonPtr(store->items()[index]);
}

bool ElementValue::array_append(ZrJsonPtr value) {
  if (kindOf(m_type) != etArray || (m_type & etReadOnlyFlag)) return false;
  auto* store = static_cast<ItemStore*>(m_value.p);
  store = static_cast<ItemStore*>(growBlock(store, sizeof(IElementValueBase*), sizeOf(store) + 1));
  m_value.p = store;
  store->items()[store->size++] = value.get();
  if (value.get()) value->AddRef();
  return true;
}

bool ElementValue::setArrayItem(int index, ZrJsonPtr value) {
  ItemStore* store = itemsOf(m_type, m_value.u);
  if ((m_type & etReadOnlyFlag) || static_cast<uint32_t>(index) >= sizeOf(store)) return false;
  if (value.get()) value->AddRef();
  releaseItem(std::exchange(store->items()[index], value.get()));
  return true;
}

int ElementValue::remove_array_item(int index) {
  ItemStore* store = itemsOf(m_type, m_value.u);
  if ((m_type & etReadOnlyFlag) || index < 0 || static_cast<uint32_t>(index) >= sizeOf(store)) return -1;
  IElementValueBase** items = store->items();
  IElementValueBase* dropped = items[index];
  std::memmove(items + index, items + index + 1, (store->size - index - 1) * sizeof(*items));
  --store->size;
  releaseItem(dropped);
  return index;
}

int ElementValue::get_array_index(const ZrJsonPtr& value) const {
  ItemStore* store = itemsOf(m_type, m_value.u);
  for (uint32_t i = 0; i < sizeOf(store); ++i)
    if (store->items()[i] == value.get()) return static_cast<int>(i);
  return -1;
}

int ElementValue::remove_array_item(const ZrJsonPtr& value) {
  if (m_type & etReadOnlyFlag) return -1;
  int at = get_array_index(value);
  return at < 0 ? -1 : remove_array_item(at);
}

ZrJsonPtr ElementValue::queryArrayItemByItemProperty(const ZrUtf8String&, const ZrUtf8String&) { return {}; }

void ElementValue::clear() {
  if (m_type & etReadOnlyFlag) return;
  int kind = kindOf(m_type);
  if (kind != etArray && kind != etObject) return;
  freePointerValue();
}
