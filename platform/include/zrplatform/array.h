// ZrArray: a dynamic array with a logical length (items in use) and a physical length (room).
//
// The reallocator decides how items move when the room grows: ZrArrayObjectCopyReallocator
// copies objects (strings, handles), ZrArrayMemCopyReallocator moves plain records bytewise.
// Room grows by at least the growth step and at least doubles, so appends are amortised O(1).
// A bad index reports the assertion "this->isValid(i)"; failed allocation throws
// ZrError(eOutOfMemory).
#pragma once

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "error.h"
#include "memory.h"

template <class T>
struct ZrArrayObjectCopyReallocator {
  // Moves `count` constructed items from `from` into raw storage `to` and destroys the originals.
  static void move(T* to, T* from, int count) {
    for (int i = 0; i < count; ++i) {
      new (to + i) T(std::move(from[i]));
      from[i].~T();
    }
  }
};

template <class T>
struct ZrArrayMemCopyReallocator {
  static_assert(std::is_trivially_copyable<T>::value, "plain records only");
  static void move(T* to, T* from, int count) {
    if (count > 0) std::memcpy(static_cast<void*>(to), from, sizeof(T) * static_cast<size_t>(count));
  }
};

template <class T, class R = ZrArrayObjectCopyReallocator<T>>
class ZrArray {
 public:
  ZrArray() = default;
  explicit ZrArray(int physicalLength, int growLength = 8) : m_grow(growLength > 0 ? growLength : 8) {
    reserve(physicalLength);
  }
  ZrArray(const ZrArray& o) : m_grow(o.m_grow) { *this = o; }
  ZrArray(ZrArray&& o) noexcept { swap(o); }
  ~ZrArray() {
    clear();
    zrrxFree(m_data);
  }
  ZrArray& operator=(const ZrArray& o) {
    if (this == &o) return *this;
    clear();
    reserve(o.m_length);
    for (int i = 0; i < o.m_length; ++i) new (m_data + i) T(o.m_data[i]);
    m_length = o.m_length;
    return *this;
  }
  ZrArray& operator=(ZrArray&& o) noexcept {
    swap(o);
    return *this;
  }
  void swap(ZrArray& o) noexcept {
    std::swap(m_data, o.m_data);
    std::swap(m_length, o.m_length);
    std::swap(m_physical, o.m_physical);
    std::swap(m_grow, o.m_grow);
  }

  int length() const { return m_length; }
  int physicalLength() const { return m_physical; }
  int growLength() const { return m_grow; }
  void setGrowLength(int n) {
    if (n > 0) m_grow = n;
  }
  bool isEmpty() const { return m_length == 0; }
  bool isValid(int i) const { return i >= 0 && i < m_length; }

  T& at(int i) { return m_data[checked(i)]; }
  const T& at(int i) const { return m_data[checked(i)]; }
  T& operator[](int i) { return at(i); }
  const T& operator[](int i) const { return at(i); }
  T* begin() { return m_data; }
  T* end() { return m_data + m_length; }
  const T* begin() const { return m_data; }
  const T* end() const { return m_data + m_length; }
  T* asArrayPtr() { return m_data; }
  const T* asArrayPtr() const { return m_data; }

  // Returns the new item's index.
  int append(const T& v) {
    if (m_length == m_physical) {
      T copy(v);  // `v` may live in this array
      grow(m_length + 1);
      new (m_data + m_length) T(std::move(copy));
    } else {
      new (m_data + m_length) T(v);
    }
    return m_length++;
  }

  // Inserts before `i` (0 <= i <= length); an index out of that range reports and does nothing.
  void insertAt(int i, const T& v) {
    if (i < 0 || i > m_length) {
      zrAssert(false, "this->isValid(i)");
      return;
    }
    append(v);
    for (int k = m_length - 1; k > i; --k) std::swap(m_data[k], m_data[k - 1]);
  }

  void removeAt(int i) {
    if (!isValid(i)) {
      zrAssert(false, "this->isValid(i)");
      return;
    }
    for (int k = i; k + 1 < m_length; ++k) m_data[k] = std::move(m_data[k + 1]);
    m_data[--m_length].~T();
  }

  // Index of the first item equal to `v`, or -1.
  int find(const T& v) const {
    for (int i = 0; i < m_length; ++i)
      if (m_data[i] == v) return i;
    return -1;
  }

  // Grows with default-constructed items or drops items from the end.
  void setLogicalLength(int n) {
    if (n < 0) n = 0;
    if (n > m_physical) grow(n);
    for (int i = m_length; i < n; ++i) new (m_data + i) T();
    for (int i = n; i < m_length; ++i) m_data[i].~T();
    m_length = n;
  }
  void setPhysicalLength(int n) {
    if (n > m_physical) reserve(n);
  }
  void clear() { setLogicalLength(0); }

 private:
  int checked(int i) const {
    if (isValid(i)) return i;
    zrAssert(false, "this->isValid(i)");
    throw ZrError(Zrad::eInvalidInput);  // no item to hand out; continuing would corrupt memory
  }

  void grow(int needed) {
    int room = m_physical + (m_grow > m_physical ? m_grow : m_physical);
    reserve(room > needed ? room : needed);
  }

  void reserve(int n) {
    if (n <= m_physical) return;
    T* fresh = static_cast<T*>(zrrxAlloc(sizeof(T) * static_cast<size_t>(n)));
    if (!fresh) throw ZrError(Zrad::eOutOfMemory);
    R::move(fresh, m_data, m_length);
    zrrxFree(m_data);
    m_data = fresh;
    m_physical = n;
  }

  T* m_data = nullptr;
  int m_length = 0;
  int m_physical = 0;
  int m_grow = 8;
};
