// Wildcard matching (`*`, `?`, `#`, `` ` `` escape) and the ASCII case-folding compare.
#include "zrplatform/wildcard.h"

#include <cwctype>

namespace {

wchar_t fold(wchar_t c, bool noCase) { return noCase ? static_cast<wchar_t>(std::towlower(c)) : c; }

// Does the pattern item at p match the name character c? Sets `width` to the item's length.
bool itemMatches(const wchar_t* p, wchar_t c, bool noCase, int& width) {
  width = 1;
  if (*p == L'?') return true;
  if (*p == L'#') return c >= L'0' && c <= L'9';
  if (*p == L'`' && p[1]) {
    width = 2;
    return fold(p[1], noCase) == fold(c, noCase);
  }
  return fold(*p, noCase) == fold(c, noCase);
}

// Greedy matching that backtracks only to the last `*`, so the cost stays O(name * pattern).
bool match(const wchar_t* name, const wchar_t* pattern, bool noCase) {
  const wchar_t* star = nullptr;
  const wchar_t* resume = nullptr;
  while (*name) {
    int width = 1;
    if (*pattern == L'*') {
      star = ++pattern;
      resume = name;
    } else if (*pattern && itemMatches(pattern, *name, noCase, width)) {
      pattern += width;
      ++name;
    } else if (star) {
      pattern = star;
      name = ++resume;
    } else {
      return false;
    }
  }
  while (*pattern == L'*') ++pattern;
  return *pattern == 0;
}

}  // namespace

bool zrutWcMatchExp(const ZrString& name, const ZrString& pattern) {
  return match(name.c_str(), pattern.c_str(), false);
}

bool zrutWcMatchNoCase(const ZrString& name, const ZrString& pattern) {
  return match(name.c_str(), pattern.c_str(), true);
}

int Zr_stricmpA(const char* a, const char* b) {
  auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
  for (;; ++a, ++b) {
    int d = lower(static_cast<unsigned char>(*a)) - lower(static_cast<unsigned char>(*b));
    if (d || !*a) return d;
  }
}
