// Property path splitting: walks a slash-separated path in place, without copying it.
//
// A path is cut at every "/" and "\"; empty segments (leading, trailing or doubled separators)
// are skipped. Segments are views into the caller's text, which must outlive the cursor.
#pragma once

#include <climits>
#include <cstdlib>
#include <string_view>

#include <zrplatform/strings.h>

namespace zrad::json {

inline bool isPathSeparator(char c) { return c == '/' || c == '\\'; }

// Hands out the non-empty segments of a path one by one.
//   "a//b/" => "a", "b"      "\\x" => "x"      "///" => (none)
class PathCursor {
 public:
  explicit PathCursor(const ZrUtf8String& path)
      : m_at(path.c_str()), m_stop(path.c_str() + path.length()) {}

  // Stores the next segment in `segment`; false (segment untouched) when none is left.
  bool next(std::string_view& segment) {
    while (m_at != m_stop && isPathSeparator(*m_at)) ++m_at;
    if (m_at == m_stop) return false;
    const char* begin = m_at;
    while (m_at != m_stop && !isPathSeparator(*m_at)) ++m_at;
    segment = std::string_view(begin, static_cast<size_t>(m_at - begin));
    return true;
  }

  // The segment after the current one, without moving; false when there is none.
  bool peek(std::string_view& segment) const {
    PathCursor ahead = *this;
    return ahead.next(segment);
  }

 private:
  const char* m_at;
  const char* m_stop;
};

// Every byte a decimal digit (segments are never empty).   "12" => true, "-1" => false
inline bool isDigits(std::string_view s) {
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

// The array index a segment selects, read with strtol as the walks require ("x" => 0,
// "2b" => 2). Values outside the int range (strtol saturates at the long range) give -1,
// which selects nothing.
// The segment always ends at a separator or at the path's terminating zero, neither of which
// strtol reads past, so parsing the view's bytes in place is safe.
inline int segmentIndex(std::string_view segment) {
  long value = std::strtol(segment.data(), nullptr, 10);
  if (value < INT_MIN || value > INT_MAX) return -1;
  return static_cast<int>(value);
}

// Copies a segment into a reusable name buffer, so a walk allocates at most once.
inline const ZrUtf8String& assignName(ZrUtf8String& buffer, std::string_view segment) {
  buffer.str().assign(segment.data(), segment.size());
  return buffer;
}

}  // namespace zrad::json
