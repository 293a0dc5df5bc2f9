// Platform strings: ZrUtf8String (UTF-8 bytes) and ZrString (wide characters).
//
// Both share one implementation over std::basic_string. Lengths and positions count code units;
// searches return -1 when nothing is found. Case changes are ASCII only.
//   ZrUtf8String("a/b/c").reverseFind('/') => 3
//   ZrUtf8String("abc").mid(1)             => "bc"
//   ZrUtf8String("abc")[5]                 => 0 (and a failed assertion)
#pragma once

#include <cstdarg>
#include <string>

#include "error.h"
#include "export.h"

template <class Ch, class Self>
class ZrStringBase {
 public:
  using Std = std::basic_string<Ch>;

  ZrStringBase() = default;
  ZrStringBase(const Ch* text) : m_s(text ? text : Std()) {}
  ZrStringBase(const Ch* text, size_t count) : m_s(text, count) {}
  ZrStringBase(const Std& text) : m_s(text) {}
  ZrStringBase(Std&& text) : m_s(std::move(text)) {}

  const Ch* c_str() const { return m_s.c_str(); }
  const Std& str() const { return m_s; }
  Std& str() { return m_s; }
  int length() const { return static_cast<int>(m_s.size()); }
  bool isEmpty() const { return m_s.empty(); }

  // Out of range reports "this->isValid(i)" and yields 0.
  Ch operator[](int i) const {
    if (i < 0 || static_cast<size_t>(i) >= m_s.size()) {
      zrAssert(false, "this->isValid(i)");
      return Ch(0);
    }
    return m_s[static_cast<size_t>(i)];
  }

  int find(Ch ch, int start = 0) const { return pos(m_s.find(ch, clampStart(start))); }
  int find(const Ch* text, int start = 0) const { return pos(m_s.find(text, clampStart(start))); }
  int find(const Self& text, int start = 0) const { return pos(m_s.find(text.m_s, clampStart(start))); }
  int reverseFind(Ch ch) const { return pos(m_s.rfind(ch)); }

  // A negative count takes the rest; out-of-range starts give an empty string.
  Self mid(int start, int count = -1) const {
    if (start < 0) start = 0;
    if (static_cast<size_t>(start) >= m_s.size()) return Self();
    return Self(m_s.substr(static_cast<size_t>(start), count < 0 ? Std::npos : static_cast<size_t>(count)));
  }
  Self left(int n) const { return n <= 0 ? Self() : Self(m_s.substr(0, static_cast<size_t>(n))); }
  Self right(int n) const {
    if (n <= 0) return Self();
    size_t k = static_cast<size_t>(n) < m_s.size() ? static_cast<size_t>(n) : m_s.size();
    return Self(m_s.substr(m_s.size() - k));
  }

  // Replaces every occurrence; returns how many were replaced.
  int replace(Ch from, Ch to) {
    int n = 0;
    for (Ch& c : m_s)
      if (c == from) c = to, ++n;
    return n;
  }
  int replace(const Self& from, const Self& to) {
    if (from.isEmpty()) return 0;
    int n = 0;
    for (size_t at = m_s.find(from.m_s); at != Std::npos; at = m_s.find(from.m_s, at + to.m_s.size())) {
      m_s.replace(at, from.m_s.size(), to.m_s);
      ++n;
    }
    return n;
  }

  Self& makeUpper() {
    for (Ch& c : m_s)
      if (c >= 'a' && c <= 'z') c = static_cast<Ch>(c - 'a' + 'A');
    return self();
  }
  Self& makeLower() {
    for (Ch& c : m_s)
      if (c >= 'A' && c <= 'Z') c = static_cast<Ch>(c - 'A' + 'a');
    return self();
  }
  // Trims spaces, tabs, carriage returns and line feeds.
  Self& trimLeft() {
    size_t i = 0;
    while (i < m_s.size() && isSpace(m_s[i])) ++i;
    m_s.erase(0, i);
    return self();
  }
  Self& trimRight() {
    size_t n = m_s.size();
    while (n > 0 && isSpace(m_s[n - 1])) --n;
    m_s.resize(n);
    return self();
  }

  Self& operator+=(const Self& o) { m_s += o.m_s; return self(); }
  Self& operator+=(const Ch* o) { if (o) m_s += o; return self(); }
  Self& operator+=(Ch c) { m_s += c; return self(); }
  friend Self operator+(const Self& a, const Self& b) { Self r(a); r += b; return r; }
  friend Self operator+(const Self& a, const Ch* b) { Self r(a); r += b; return r; }
  friend Self operator+(const Ch* a, const Self& b) { Self r(a); r += b; return r; }
  friend Self operator+(const Self& a, Ch b) { Self r(a); r += b; return r; }

  friend bool operator==(const Self& a, const Self& b) { return a.m_s == b.m_s; }
  friend bool operator!=(const Self& a, const Self& b) { return a.m_s != b.m_s; }
  friend bool operator<(const Self& a, const Self& b) { return a.m_s < b.m_s; }
  friend bool operator==(const Self& a, const Ch* b) { return b && a.m_s == b; }
  friend bool operator!=(const Self& a, const Ch* b) { return !(a == b); }

 protected:
  Std m_s;

 private:
  static bool isSpace(Ch c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
  static int pos(size_t p) { return p == Std::npos ? -1 : static_cast<int>(p); }
  static size_t clampStart(int start) { return start < 0 ? 0 : static_cast<size_t>(start); }
  Self& self() { return static_cast<Self&>(*this); }
};

class ZrString;

class ZRPLATFORM_EXPORT ZrUtf8String : public ZrStringBase<char, ZrUtf8String> {
 public:
  using ZrStringBase::ZrStringBase;
  ZrUtf8String() = default;
  // Encodes wide text as UTF-8.
  explicit ZrUtf8String(const ZrString& wide);

  static ZrUtf8String format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
  static ZrUtf8String formatV(const char* fmt, va_list args);
};

class ZRPLATFORM_EXPORT ZrString : public ZrStringBase<wchar_t, ZrString> {
 public:
  using ZrStringBase::ZrStringBase;
  ZrString() = default;
  // Decodes UTF-8; malformed sequences become U+FFFD.
  explicit ZrString(const ZrUtf8String& utf8);

  static ZrString format(const wchar_t* fmt, ...);
  static ZrString formatV(const wchar_t* fmt, va_list args);
};
