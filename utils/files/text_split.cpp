// Splitting texts into fields and joining fields into a text.
//
// The UTF-8 split treats its delimiter set as whole UTF-8 characters, so a multi-byte delimiter
// never cuts another character that shares its lead byte; ASCII sets take a bytewise search.
#include <zrad/text.h>

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// Bytes in the UTF-8 character at `at`: the byte and the continuation bytes that follow it.
size_t utf8CharLength(const std::string& text, size_t at) {
  size_t end = at + 1;
  while (end < text.size() && end - at < 4 && isContinuation(text[end])) ++end;
  return end - at;
}

bool isDelimiter(const std::string& delimiters, const std::string& text, size_t at, size_t n) {
  for (size_t d = 0; d < delimiters.size(); d += utf8CharLength(delimiters, d))
    if (delimiters.compare(d, utf8CharLength(delimiters, d), text, at, n) == 0) return true;
  return false;
}

bool isAscii(const std::string& text) {
  for (char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

template <class Text>
void appendUnlessEmpty(const Text& text, size_t from, size_t to, ZrArray<Text>& fields) {
  if (to > from) fields.append(Text(text.c_str() + from, to - from));
}

// Splits at any of `count` single-byte delimiters.
void splitAtBytes(const ZrUtf8String& text, const char* delimiters, size_t count,
                  ZrArray<ZrUtf8String>& fields) {
  const std::string& s = text.str();
  size_t start = 0;
  for (size_t at = s.find_first_of(delimiters, 0, count); at != std::string::npos;
       at = s.find_first_of(delimiters, start, count)) {
    appendUnlessEmpty(text, start, at, fields);
    start = at + 1;
  }
  appendUnlessEmpty(text, start, s.size(), fields);
}

// Splits at whole UTF-8 characters of `delimiters`.
void splitAtCharacters(const ZrUtf8String& text, const std::string& delimiters,
                       ZrArray<ZrUtf8String>& fields) {
  const std::string& s = text.str();
  size_t start = 0;
  for (size_t at = 0; at < s.size();) {
    size_t n = utf8CharLength(s, at);
    if (isDelimiter(delimiters, s, at, n)) {
      appendUnlessEmpty(text, start, at, fields);
      start = at + n;
    }
    at += n;
  }
  appendUnlessEmpty(text, start, s.size(), fields);
}

template <class Text>
Text join(const ZrArray<Text>& fields, const Text& separator) {
  Text joined;
  for (int i = 0; i < fields.length(); ++i) {
    if (i > 0) joined += separator;
    joined += fields[i];
  }
  return joined;
}

}  // namespace

void zrutSplitString(const ZrUtf8String& text, const ZrUtf8String& delimiters,
                     ZrArray<ZrUtf8String>& fields) {
  // An ASCII byte is always a whole character in UTF-8, so ASCII delimiters are found bytewise.
  if (isAscii(delimiters.str()))
    splitAtBytes(text, delimiters.c_str(), delimiters.str().size(), fields);
  else
    splitAtCharacters(text, delimiters.str(), fields);
}

void zrutSplitStringA(const ZrUtf8String& text, char delimiter, ZrArray<ZrUtf8String>& fields) {
  splitAtBytes(text, &delimiter, 1, fields);
}

void zrutSplitString(const ZrString& text, wchar_t delimiter, ZrArray<ZrString>& fields) {
  if (text.find(delimiter) < 0) {
    fields.append(text);
    return;
  }
  size_t start = 0;
  for (size_t at = text.str().find(delimiter); at != std::wstring::npos;
       at = text.str().find(delimiter, start)) {
    appendUnlessEmpty(text, start, at, fields);
    start = at + 1;
  }
  appendUnlessEmpty(text, start, text.str().size(), fields);
}

ZrUtf8String zrutJoinString(const ZrArray<ZrUtf8String>& fields, const ZrUtf8String& separator) {
  return join(fields, separator);
}

ZrString zrutJoinStringW(const ZrArray<ZrString>& fields, const ZrString& separator) {
  return join(fields, separator);
}
