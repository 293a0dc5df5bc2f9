// Screening of JSON text before it reaches the parser.
//
// A negative exponent is the one overflow that short texts can reach, so the common path only
// looks for the shape e-DDDDDDDDD. A hit, or a text large enough for a fraction to overflow the
// other sums, gets the full scan that knows about strings.
#include "json/textguard.h"

#include <cstring>

namespace zrad::json {
namespace {

// Texts from this size on could hold a fraction long enough to overflow the positive
// exponent's bound (about 214 million digits), so they always get the full scan.
constexpr size_t kFullScanFrom = size_t(128) << 20;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

size_t digitRun(const char* p, const char* end) {
  const char* q = p;
  while (q < end && isDigit(*q)) ++q;
  return static_cast<size_t>(q - p);
}

// Walks the text outside strings and measures every number's digits and exponent.
bool fullScan(const char* p, const char* end) {
  while (p < end) {
    char c = *p;
    if (c == '"') {
      for (++p; p < end && *p != '"'; ++p)
        if (*p == '\\') ++p;
      ++p;
    } else if (isDigit(c)) {
      size_t digits = 0;
      while (p < end && (isDigit(*p) || *p == '.')) digits += isDigit(*p++);
      if (digits > kMaxNumberDigits) return false;
    } else if (c == 'e' || c == 'E') {
      ++p;
      if (p < end && (*p == '-' || *p == '+')) ++p;
      size_t run = digitRun(p, end);
      if (run > kMaxExponentDigits) return false;
      p += run;
    } else {
      ++p;
    }
  }
  return true;
}

}  // namespace

bool numbersAreSafe(std::string_view text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (text.size() >= kFullScanFrom) return fullScan(begin, end);
  // Only a '-' after an 'e' or 'E' can start such an exponent; memchr passes over the rest.
  for (const char* p = begin; p < end; ++p) {
    p = static_cast<const char*>(std::memchr(p, '-', static_cast<size_t>(end - p)));
    if (!p) break;
    if (p > begin && (p[-1] | 0x20) == 'e' && digitRun(p + 1, end) > kMaxExponentDigits) return fullScan(begin, end);
  }
  return true;
}

}  // namespace zrad::json
