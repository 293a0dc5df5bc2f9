// Splitting texts into fields and joining fields into a text.
//
// The UTF-8 split treats its delimiter set as whole UTF-8 characters, so a multi-byte delimiter
// never cuts another character that shares its lead byte.
#include <zrad/text.h>

namespace {

// Bytes in the UTF-8 character at `at`, cut at the text's end (a malformed byte counts 1).
size_t utf8CharLength(const std::string& text, size_t at) {
  unsigned char lead = static_cast<unsigned char>(text[at]);
  size_t n = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return n < text.size() - at ? n : text.size() - at;
}

bool isDelimiter(const std::string& delimiters, const std::string& text, size_t at, size_t n) {
  for (size_t d = 0; d < delimiters.size(); d += utf8CharLength(delimiters, d))
    if (delimiters.compare(d, utf8CharLength(delimiters, d), text, at, n) == 0) return true;
  return false;
}

template <class Text>
void appendUnlessEmpty(const Text& text, size_t from, size_t to, ZrArray<Text>& fields) {
  if (to > from) fields.append(Text(text.str().substr(from, to - from)));
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
  const std::string& s = text.str();
  size_t start = 0;
  for (size_t at = 0; at < s.size();) {
    size_t n = utf8CharLength(s, at);
    if (isDelimiter(delimiters.str(), s, at, n)) {
      appendUnlessEmpty(text, start, at, fields);
      start = at + n;
    }
    at += n;
  }
  appendUnlessEmpty(text, start, s.size(), fields);
}

void zrutSplitStringA(const ZrUtf8String& text, char delimiter, ZrArray<ZrUtf8String>& fields) {
  zrutSplitString(text, ZrUtf8String(std::string(1, delimiter)), fields);
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
