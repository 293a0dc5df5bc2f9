// The abstract element: reference counting, the null element's behaviour, and the handle.
//
// Release deletes without recursion: a container that dies while another is being destroyed on
// the same thread is queued and deleted by the outermost Release, so dropping a deep tree
// needs no deep stack.
#include <cstdlib>

#include "json/element_pool.h"
#include "json/element_slab.h"
#include "json/element_store.h"

namespace {

// Trivially destructible, so access needs no guard; the queue lives only while a teardown runs.
struct Teardown {
  bool running;
  IElementValueBase** pending;
  size_t size;
  size_t capacity;
};
thread_local Teardown tTeardown;
// Containers nested this deep inside one another are emptied in place; deeper ones wait in the
// queue, so the stack stays shallow whatever the tree.
constexpr int kNestedInPlace = 32;

// A scalar element frees no other element, so it may go at once without deepening anything.
bool isLeaf(const IElementValueBase* e) {
  const ElementValue* ev = zrad::json::asElement(e);
  return ev && !zrad::json::isContainer(zrad::json::kindOf(ElementAccess::type(*ev)));
}

// False when the queue has no room and no memory to grow.
bool queue(Teardown& t, IElementValueBase* e) {
  if (t.size == t.capacity) {
    size_t grown = t.capacity ? t.capacity * 2 : 256;
    void* p = std::realloc(t.pending, grown * sizeof(IElementValueBase*));
    if (!p) return false;
    t.pending = static_cast<IElementValueBase**>(p);
    t.capacity = grown;
  }
  t.pending[t.size++] = e;
  return true;
}

// Deletes one element: the tree's own go back to the element pool, others to the heap.
void dispose(zrad::json::ChunkState& s, IElementValueBase* e) {
  if (ElementValue* ev = zrad::json::asElement(e)) {
    ev->~ElementValue();
    zrad::json::freeBlockIn(s, ev, zrad::json::kElementBytes);
  } else {
    delete e;
  }
}

void destroy(IElementValueBase* e) {
  Teardown& t = tTeardown;
  zrad::json::ChunkState& s = zrad::json::tChunks;
  if (t.running) {
    // Without memory for the queue, a container goes at once: a deeper stack, nothing lost.
    if (isLeaf(e) || !queue(t, e)) dispose(s, e);
    return;
  }
  zrad::json::FreeBatch batch(s);
  t.running = true;
  dispose(s, e);
  while (t.size) dispose(s, t.pending[--t.size]);
  std::free(t.pending);
  t.pending = nullptr;
  t.capacity = 0;
  t.running = false;
}

}  // namespace

namespace zrad::json {

void releaseItem(IElementValueBase* e) {
  if (e) releaseItem(tChunks, e);
}

void releaseItem(ChunkState& s, IElementValueBase* e) {
  if (!e) return;
  // Dropping a tree is mostly dropping elements held once: an ElementValue held once has its
  // storage freed and its block returned here, without the virtual Release and destructor
  // calls and the teardown queue (containers down to kNestedInPlace levels, counted by the
  // open batches). This pays about a third of the cost of dropping a tree (json_bench
  // readfree_*, clone_*).
  ElementValue* ev = asElement(e);
  if (ev && ElementAccess::soleHolder(*ev) &&
      (!isContainer(kindOf(ElementAccess::type(*ev))) || s.batching < kNestedInPlace)) {
    FreeBatch batch(s);
    freeStorage(s, *ev);
    freeBlockIn(s, ev, kElementBytes);
    return;
  }
  e->Release();
}

}  // namespace zrad::json

IElementValueBase::~IElementValueBase() = default;

unsigned IElementValueBase::AddRef() {
  return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

unsigned IElementValueBase::Release() {
  // The only holder: no other thread can reach the count, so skip the locked update (which
  // would also stall the misses of a teardown behind one another).
  if (m_refCount.load(std::memory_order_acquire) == 1) {
    destroy(this);
    return 0;
  }
  unsigned left = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) destroy(this);
  return left;
}

int IElementValueBase::getType() const { return etNullFlag; }
ZrJsonPtr IElementValueBase::property_sub(const ZrUtf8String&) const { return {}; }
ZrJsonPtr IElementValueBase::array_sub(int) const { return {}; }
int IElementValueBase::array_count() const { return 0; }
int IElementValueBase::property_count() const { return 0; }
ZrJsonPtr IElementValueBase::enumproperty(int, ZrUtf8String&) const { return {}; }
bool IElementValueBase::hasProperty(const ZrUtf8String& name) const {
  return !property_sub(name).isNull();
}

ZrUtf8String IElementValueBase::strValue() const { return {}; }
long long IElementValueBase::longlongValue() const { return 0; }
unsigned long long IElementValueBase::ulonglongValue() const { return 0; }
bool IElementValueBase::boolValue() const { return true; }
double IElementValueBase::floatValue() const { return 0.0; }
void* IElementValueBase::ptrValue() const { return nullptr; }
long long IElementValueBase::timeValue() const { return 0; }

long long IElementValueBase::safeTimeValue(long long def) const {
  return (getType() & etNullFlag) ? def : timeValue();
}

long long IElementValueBase::safePropertyt(const ZrUtf8String& name, long long def) const {
  ZrJsonPtr p = property_sub(name);
  return p ? p->safeTimeValue(def) : def;
}

ZrJsonPtr IElementValueBase::set_propertys(const ZrUtf8String&, const ZrUtf8String&, bool) { return {}; }

ZrJsonPtr IElementValueBase::set_propertysW(const ZrUtf8String& name, const ZrString& value, bool readOnly) {
  if (getType() & etNullFlag) return {};
  return set_propertys(name, ZrUtf8String(value), readOnly);
}

ZrJsonPtr IElementValueBase::set_property(const ZrUtf8String&, const ZrJsonPtr&) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyi(const ZrUtf8String&, int, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyi64(const ZrUtf8String&, long long, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyu(const ZrUtf8String&, unsigned long long, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyt(const ZrUtf8String&, long long, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyd(const ZrUtf8String&, double, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyb(const ZrUtf8String&, bool, bool) { return {}; }
ZrJsonPtr IElementValueBase::set_propertyp(const ZrUtf8String&, void*, bool) { return {}; }

namespace {
// The base value setters store nothing: a handle to the element unless it is read-only.
ZrJsonPtr selfUnlessReadOnly(IElementValueBase* e) {
  return (e->getType() & etReadOnlyFlag) ? ZrJsonPtr() : ZrJsonPtr(e);
}
}  // namespace

ZrJsonPtr IElementValueBase::set_valuei(int) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_valuei64(long long) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_valueu(unsigned long long) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_valuet(long long) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_values(const ZrUtf8String&) { return selfUnlessReadOnly(this); }

ZrJsonPtr IElementValueBase::set_valuesW(const ZrString& value) {
  if (getType() & etNullFlag) return {};
  return set_values(ZrUtf8String(value));
}

ZrJsonPtr IElementValueBase::set_value_point2d(const ZrGePoint2d&) { return {}; }
ZrJsonPtr IElementValueBase::set_valued(double) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_valueb(bool) { return selfUnlessReadOnly(this); }
ZrJsonPtr IElementValueBase::set_valuep(void*, int) { return selfUnlessReadOnly(this); }

ZrJsonPtr IElementValueBase::appendObjects(const ZrUtf8String&) { return {}; }
void IElementValueBase::removeProperty(const ZrUtf8String&) {}
bool IElementValueBase::array_append(ZrJsonPtr) { return false; }
bool IElementValueBase::setArrayItem(int, ZrJsonPtr) { return false; }
int IElementValueBase::remove_array_item(int) { return -1; }
int IElementValueBase::get_array_index(const ZrJsonPtr&) const { return -1; }
bool IElementValueBase::update_property(const ZrUtf8String&, const ZrJsonPtr&) { return false; }
bool IElementValueBase::update_array(const ZrJsonPtr&) { return false; }
void IElementValueBase::clear() {}

ZrUtf8String IElementValueBase::strTimeValue() const {
  (void)timeValue();
  return {};
}

ZrJsonPtr IElementValueBase::set_propertys(const ZrUtf8String& name, const char* value, bool readOnly) {
  return set_propertys(name, ZrUtf8String(value), readOnly);
}

ZrJsonPtr IElementValueBase::set_value_rxobject_ptr(ZrRxObject* obj) {
  if (obj) zrrxAddRef(obj);
  return set_valuep(obj, etRxObjectPointer);
}

bool IElementValueBase::isNumber(const ZrUtf8String& text) {
  for (char c : text.str())
    if (c < '0' || c > '9') return false;
  return true;
}

// ---- the handle ----

ZrJsonPtr ZrJsonPtr::operator()(const char* name) const {
  return m_p ? m_p->property_sub(ZrUtf8String(name)) : ZrJsonPtr();
}
ZrJsonPtr ZrJsonPtr::operator()(const ZrUtf8String& name) const {
  return m_p ? m_p->property_sub(name) : ZrJsonPtr();
}
ZrJsonPtr ZrJsonPtr::operator()(const std::string& name) const {
  return m_p ? m_p->property_sub(ZrUtf8String(name)) : ZrJsonPtr();
}
ZrJsonPtr ZrJsonPtr::operator()(int index) const {
  return m_p ? m_p->array_sub(index) : ZrJsonPtr();
}
int ZrJsonPtr::ArrayCount() const { return m_p ? m_p->array_count() : 0; }
bool ZrJsonPtr::hasProperty(const ZrUtf8String& name) const {
  return m_p && m_p->hasProperty(name);
}
