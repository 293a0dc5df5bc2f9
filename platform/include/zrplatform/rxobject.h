// Reference-counted runtime objects: ZrRxObject, its class descriptors, ZrRxObjectImpl and
// the intrusive pointer ZrSmartPtr.
//
// Every class in the hierarchy names itself with ZR_RX_DECLARE_MEMBERS / ZR_RX_DEFINE_MEMBERS,
// which gives it a static desc() and the class query. A ZrSmartPtr built from an object of
// another class asks queryX(); when the object is not of the wanted class it throws
// ZrError(eNotThatKindOfClass).
#pragma once

#include <atomic>
#include <type_traits>

#include "error.h"
#include "export.h"

// Describes one runtime class: its wide name and its parent.
class ZRPLATFORM_EXPORT ZrRxClass {
 public:
  ZrRxClass(const wchar_t* name, const ZrRxClass* parent) : m_name(name), m_parent(parent) {}
  const wchar_t* name() const { return m_name; }
  const ZrRxClass* myParent() const { return m_parent; }
  // True when this class is `other` or derives from it.
  bool isDerivedFrom(const ZrRxClass* other) const;

 private:
  const wchar_t* m_name;
  const ZrRxClass* m_parent;
};

#define ZR_RX_DECLARE_MEMBERS(Class)                         \
  static const ZrRxClass* desc();                            \
  const ZrRxClass* isA() const override;                     \
  ZrRxObject* queryX(const ZrRxClass* cls) const override

#define ZR_RX_DEFINE_MEMBERS(Class, Parent, Name)                                            \
  const ZrRxClass* Class::desc() {                                                           \
    static const ZrRxClass cls(Name, Parent::desc());                                        \
    return &cls;                                                                             \
  }                                                                                          \
  const ZrRxClass* Class::isA() const { return Class::desc(); }                              \
  ZrRxObject* Class::queryX(const ZrRxClass* cls) const {                                    \
    if (cls == Class::desc()) return const_cast<ZrRxObject*>(static_cast<const ZrRxObject*>(this)); \
    return Parent::queryX(cls);                                                              \
  }

class ZRPLATFORM_EXPORT ZrRxObject {
 public:
  virtual ~ZrRxObject();
  virtual void addRef() = 0;
  virtual void release() = 0;
  virtual long numRefs() const = 0;

  static const ZrRxClass* desc();
  virtual const ZrRxClass* isA() const;
  // The object as an instance of `cls` (no reference added), or null when it is not one.
  virtual ZrRxObject* queryX(const ZrRxClass* cls) const;
  bool isKindOf(const ZrRxClass* cls) const { return isA()->isDerivedFrom(cls); }
  const wchar_t* className() const { return isA()->name(); }

 protected:
  ZrRxObject() = default;
  ZrRxObject(const ZrRxObject&) = default;
  ZrRxObject& operator=(const ZrRxObject&) = default;
};

ZRPLATFORM_EXPORT void zrrxAddRef(ZrRxObject* obj);
// Releases one reference; null is accepted.
ZRPLATFORM_EXPORT void zrrxRelease(ZrRxObject* obj);

template <class T>
class ZrSmartPtr;

// Supplies the atomic count of T; createObject() hands out a new object with count 1.
template <class T>
class ZrRxObjectImpl : public T {
 public:
  template <class... Args>
  explicit ZrRxObjectImpl(Args&&... args) : T(std::forward<Args>(args)...) {}

  void addRef() override { m_refs.fetch_add(1, std::memory_order_relaxed); }
  void release() override {
    if (m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  long numRefs() const override { return static_cast<long>(m_refs.load(std::memory_order_relaxed)); }

  template <class... Args>
  static ZrSmartPtr<T> createObject(Args&&... args);

 private:
  std::atomic<unsigned> m_refs{1};
};

enum ZrSmartPtrAttach { kZrAttach };

template <class T>
class ZrSmartPtr {
 public:
  ZrSmartPtr() = default;
  ZrSmartPtr(std::nullptr_t) {}
  ZrSmartPtr(T* p) : m_p(p) {
    if (m_p) m_p->addRef();
  }
  // Takes over the caller's reference.
  ZrSmartPtr(T* p, ZrSmartPtrAttach) : m_p(p) {}
  ZrSmartPtr(const ZrSmartPtr& o) : ZrSmartPtr(o.m_p) {}
  ZrSmartPtr(ZrSmartPtr&& o) noexcept : m_p(o.m_p) { o.m_p = nullptr; }

  template <class U, std::enable_if_t<std::is_convertible<U*, T*>::value, int> = 0>
  ZrSmartPtr(const ZrSmartPtr<U>& o) : ZrSmartPtr(static_cast<T*>(o.get())) {}

  // From an object of another class: goes through the class query.
  template <class U, std::enable_if_t<!std::is_convertible<U*, T*>::value, int> = 0>
  explicit ZrSmartPtr(U* p) {
    assignQueried(p);
  }
  template <class U, std::enable_if_t<!std::is_convertible<U*, T*>::value, int> = 0>
  explicit ZrSmartPtr(const ZrSmartPtr<U>& o) {
    assignQueried(o.get());
  }

  ~ZrSmartPtr() {
    if (m_p) m_p->release();
  }

  ZrSmartPtr& operator=(ZrSmartPtr o) noexcept {
    std::swap(m_p, o.m_p);
    return *this;
  }

  T* get() const { return m_p; }
  T* operator->() const { return m_p; }
  T& operator*() const { return *m_p; }
  bool isNull() const { return m_p == nullptr; }
  explicit operator bool() const { return m_p != nullptr; }
  void reset() { *this = ZrSmartPtr(); }
  // Hands the reference to the caller.
  T* detach() {
    T* p = m_p;
    m_p = nullptr;
    return p;
  }

  friend bool operator==(const ZrSmartPtr& a, const ZrSmartPtr& b) { return a.m_p == b.m_p; }
  friend bool operator!=(const ZrSmartPtr& a, const ZrSmartPtr& b) { return a.m_p != b.m_p; }

 private:
  template <class U>
  void assignQueried(U* p) {
    if (!p) return;
    ZrRxObject* found = p->queryX(T::desc());
    if (!found) throw ZrError(Zrad::eNotThatKindOfClass);
    m_p = static_cast<T*>(found);
    m_p->addRef();
  }

  T* m_p = nullptr;
};

template <class T>
template <class... Args>
ZrSmartPtr<T> ZrRxObjectImpl<T>::createObject(Args&&... args) {
  return ZrSmartPtr<T>(new ZrRxObjectImpl<T>(std::forward<Args>(args)...), kZrAttach);
}
