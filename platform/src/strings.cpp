// UTF-8 <-> wide conversion and printf-style formatting of the platform strings.
#include "zrplatform/strings.h"

#include <cstdio>
#include <cstdint>
#include <cwchar>
#include <vector>

ZrUtf8String::ZrUtf8String(const ZrString& wide) {
  m_s.reserve(static_cast<size_t>(wide.length()));
  for (wchar_t wc : wide.str()) {
    auto c = static_cast<uint32_t>(wc);
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
    if (c < 0x80) {
      m_s += static_cast<char>(c);
    } else if (c < 0x800) {
      m_s += static_cast<char>(0xC0 | (c >> 6));
      m_s += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      m_s += static_cast<char>(0xE0 | (c >> 12));
      m_s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      m_s += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      m_s += static_cast<char>(0xF0 | (c >> 18));
      m_s += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      m_s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      m_s += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
}

// Decodes one UTF-8 sequence at s[i]; advances i. Malformed input yields U+FFFD and one byte.
static uint32_t decodeOne(const std::string& s, size_t& i) {
  auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  unsigned char b0 = byte(i);
  if (b0 < 0x80) return ++i, b0;
  // Lead bytes C2-DF start two-byte sequences, E0-EF three-byte, F0-F4 four-byte; others none.
  int extra = b0 < 0xC2 || b0 > 0xF4 ? -1 : b0 < 0xE0 ? 1 : b0 < 0xF0 ? 2 : 3;
  if (extra < 0 || i + static_cast<size_t>(extra) >= s.size()) {
    ++i;
    return 0xFFFD;
  }
  uint32_t c = b0 & (0x3F >> extra);
  for (int k = 1; k <= extra; ++k) {
    unsigned char b = byte(i + static_cast<size_t>(k));
    if ((b & 0xC0) != 0x80) {
      ++i;
      return 0xFFFD;
    }
    c = (c << 6) | (b & 0x3F);
  }
  static const uint32_t minimum[] = {0, 0x80, 0x800, 0x10000};
  if (c < minimum[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
    ++i;
    return 0xFFFD;
  }
  i += static_cast<size_t>(extra) + 1;
  return c;
}

ZrString::ZrString(const ZrUtf8String& utf8) {
  const std::string& s = utf8.str();
  m_s.reserve(s.size());
  for (size_t i = 0; i < s.size();) m_s += static_cast<wchar_t>(decodeOne(s, i));
}

ZrUtf8String ZrUtf8String::formatV(const char* fmt, va_list args) {
  char small[256];
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(small, sizeof small, fmt, copy);
  va_end(copy);
  if (n < 0) return ZrUtf8String();
  if (static_cast<size_t>(n) < sizeof small) return ZrUtf8String(small, static_cast<size_t>(n));
  std::string big(static_cast<size_t>(n) + 1, '\0');
  std::vsnprintf(&big[0], big.size(), fmt, args);
  big.resize(static_cast<size_t>(n));
  return ZrUtf8String(std::move(big));
}

ZrUtf8String ZrUtf8String::format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  ZrUtf8String s = formatV(fmt, args);
  va_end(args);
  return s;
}

// vswprintf does not report the needed size, so the buffer doubles until the text fits.
ZrString ZrString::formatV(const wchar_t* fmt, va_list args) {
  for (size_t size = 256; size <= (size_t(1) << 26); size *= 2) {
    std::vector<wchar_t> buf(size);
    va_list copy;
    va_copy(copy, args);
    int n = std::vswprintf(buf.data(), size, fmt, copy);
    va_end(copy);
    if (n >= 0) return ZrString(buf.data(), static_cast<size_t>(n));
  }
  return ZrString();
}

ZrString ZrString::format(const wchar_t* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  ZrString s = formatV(fmt, args);
  va_end(args);
  return s;
}
