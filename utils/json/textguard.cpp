// Screening of JSON text before it reaches the parser.
//
// A negative exponent is the one overflow that short texts can reach, so the common path only
// looks for the shape e-DDDDDDDDD. A hit, or a text large enough for a fraction to overflow the
// other sums, gets the full scan that knows about strings.
#include "json/textguard.h"

#include <algorithm>

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
  // Blocks without "e-" or "E-" are passed over by a branch-free test the compiler vectorises;
  // a block with one gets the exact look at its exponents.
  constexpr size_t kBlock = 64;
  for (const char* p = begin + (begin < end); p < end; p += kBlock) {
    size_t n = std::min(kBlock, static_cast<size_t>(end - p));
    unsigned char hit = 0;
    for (size_t i = 0; i < n; ++i) hit |= (p[i] == '-') & ((p[i - 1] | 0x20) == 'e');
    if (!hit) continue;
    for (size_t i = 0; i < n; ++i)
      if (p[i] == '-' && (p[i - 1] | 0x20) == 'e' && digitRun(p + i + 1, end) > kMaxExponentDigits)
        return fullScan(begin, end);
  }
  return true;
}

}  // namespace zrad::json
