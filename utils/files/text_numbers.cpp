// Number tests (an automaton over wide text) and number <-> text conversions.
//
// The tests scan the text once, left to right, without recursion, so any length is fine. Their
// definition is the expressions in numberpatterns.h: white space, signs and digits are disjoint
// classes, so taking each part greedily accepts exactly what the expressions accept. The UTF-8
// forms widen and call the wide ones. The conversions are the C library's, with the base each
// operation documents.
#include <cstdlib>

#include <zrad/text.h>

#include "files/pathtext.h"

using zrad::files::viaUtf8;

namespace {

// A cursor over the text; each step consumes what one part of the expressions matches.
class NumberScan {
 public:
  explicit NumberScan(const ZrString& text)
      : m_at(text.str().data()), m_end(m_at + text.str().size()) {}

  // \s*  (the C locale's white space)
  void spaces() {
    while (m_at < m_end && (*m_at == L' ' || (*m_at >= L'\t' && *m_at <= L'\r'))) ++m_at;
  }
  // [+,-]?
  void sign() {
    if (m_at < m_end && (*m_at == L'+' || *m_at == L',' || *m_at == L'-')) ++m_at;
  }
  // [0-9]+ ; false when no digit is there
  bool digits() {
    const wchar_t* start = m_at;
    while (m_at < m_end && *m_at >= L'0' && *m_at <= L'9') ++m_at;
    return m_at > start;
  }
  // [.] ; false when the next character is not a point
  bool point() {
    if (m_at == m_end || *m_at != L'.') return false;
    ++m_at;
    return true;
  }
  bool atEnd() const { return m_at == m_end; }

 private:
  const wchar_t* m_at;
  const wchar_t* m_end;
};

}  // namespace

bool zrutIsLong(const ZrString& text) {
  NumberScan scan(text);
  scan.spaces();
  scan.sign();
  scan.spaces();
  if (!scan.digits()) return false;
  scan.spaces();
  return scan.atEnd();
}

bool zrutIsUnsignedDigit(const ZrString& text) {
  NumberScan scan(text);
  return scan.digits() && scan.atEnd();
}

bool zrutIsDouble(const ZrString& text) {
  NumberScan scan(text);
  scan.spaces();
  scan.sign();
  scan.spaces();
  // [0-9]+([.][0-9]+)?  or  [.][0-9]+
  bool whole = scan.digits();
  bool fraction = scan.point() ? scan.digits() : whole;
  if (!fraction) return false;
  scan.spaces();
  return scan.atEnd();
}

bool zrutIsLong(const ZrUtf8String& text) { return zrutIsLong(ZrString(text)); }
bool zrutIsUnsignedDigit(const ZrUtf8String& text) { return zrutIsUnsignedDigit(ZrString(text)); }
bool zrutIsDouble(const ZrUtf8String& text) { return zrutIsDouble(ZrString(text)); }

ZrUtf8String ltos(long value) { return ZrUtf8String::format("%ld", value); }
ZrUtf8String lltos(long long value) { return ZrUtf8String::format("%lld", value); }
ZrUtf8String ulltos(unsigned long long value) { return ZrUtf8String::format("%llu", value); }
ZrUtf8String ftos(double value) { return ZrUtf8String::format("%lf", value); }

long stol(const ZrUtf8String& text) { return std::strtol(text.c_str(), nullptr, 0); }
long long stoll(const ZrUtf8String& text) { return std::strtoll(text.c_str(), nullptr, 0); }
unsigned long long stoull(const ZrUtf8String& text) { return std::strtoull(text.c_str(), nullptr, 0); }
int stoi(const ZrUtf8String& text) { return static_cast<int>(std::strtol(text.c_str(), nullptr, 10)); }
double stof(const ZrUtf8String& text) { return std::strtod(text.c_str(), nullptr); }

long wstol(const ZrString& text) { return viaUtf8(::stol, text); }
long long wstoll(const ZrString& text) { return viaUtf8(::stoll, text); }
unsigned long long wstoull(const ZrString& text) { return viaUtf8(::stoull, text); }
int wstoi(const ZrString& text) { return viaUtf8(::stoi, text); }
double wstof(const ZrString& text) { return viaUtf8(::stof, text); }
