// Byte-order marks: decoding file bytes to UTF-8 and encoding text for a write mode.
//
// UTF-16 is written one unit per character, as the file format's readers expect; reading
// joins surrogate pairs so text written by other programs comes back whole.
#include "files/content.h"

#include <zrad/files.h>

namespace zrad::files {

namespace {

ZrUtf8String utf16ToUtf8(const std::string& bytes, size_t start, bool bigEndian) {
  std::wstring wide;
  wide.reserve((bytes.size() - start) / 2);
  for (size_t i = start; i + 1 < bytes.size(); i += 2) {
    unsigned char hi = static_cast<unsigned char>(bytes[bigEndian ? i : i + 1]);
    unsigned char lo = static_cast<unsigned char>(bytes[bigEndian ? i + 1 : i]);
    wchar_t unit = static_cast<wchar_t>(hi << 8 | lo);
    if (unit >= 0xDC00 && unit <= 0xDFFF && !wide.empty() && wide.back() >= 0xD800 &&
        wide.back() <= 0xDBFF)
      wide.back() =
          static_cast<wchar_t>(0x10000 + ((wide.back() - 0xD800) << 10) + (unit - 0xDC00));
    else
      wide += unit;
  }
  return ZrUtf8String(ZrString(std::move(wide)));
}

bool startsWith(const std::string& bytes, const char* mark, size_t length) {
  return bytes.size() >= length && bytes.compare(0, length, mark, length) == 0;
}

}  // namespace

ZrUtf8String decodeContent(const std::string& bytes) {
  if (startsWith(bytes, "\xFE\xFF", 2)) return utf16ToUtf8(bytes, 2, true);
  if (startsWith(bytes, "\xFF\xFE", 2)) return utf16ToUtf8(bytes, 2, false);
  if (startsWith(bytes, "\xEF\xBB\xBF", 3)) return ZrUtf8String(bytes.substr(3));
  return ZrUtf8String(bytes);
}

std::string encodeContent(const ZrUtf8String& text, int mode) {
  if (mode == kContentUtf8) return text.str();
  if (mode == kContentUtf8Bom) return "\xEF\xBB\xBF" + text.str();
  bool mark = mode & 1;
  bool littleEndian = mode & 2;
  ZrString wide(text);
  std::string bytes;
  bytes.reserve(2 * (static_cast<size_t>(wide.length()) + 1));
  auto put = [&](unsigned unit) {
    char hi = static_cast<char>(unit >> 8 & 0xFF), lo = static_cast<char>(unit & 0xFF);
    bytes += littleEndian ? lo : hi;
    bytes += littleEndian ? hi : lo;
  };
  if (mark) put(0xFEFF);
  for (wchar_t c : wide.str()) put(static_cast<unsigned>(c) & 0xFFFF);
  return bytes;
}

}  // namespace zrad::files
