// Taming the numbers of a JSON text before it reaches the parser.
//
// Only a '-' after an 'e' or 'E' can start a hostile exponent, so the common path looks for
// that shape with memchr. A hit, or a text large enough to hold a number of kMaxNumberDigits
// digits, gets the full scan, which knows about strings.
#include "json/textguard.h"

#include <cstring>

namespace zrad::json {
namespace {

// A negative exponent keeps at most this many digits (zeros in front not counted). Any number
// the parser accepts is below 1e309, so with an exponent of -99999 or below it is zero.
constexpr size_t kExponentDigits = 5;
constexpr size_t kFullScanFrom = kMaxNumberDigits;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

size_t digitRun(const char* p, const char* end) {
  const char* q = p;
  while (q < end && isDigit(*q)) ++q;
  return static_cast<size_t>(q - p);
}

// The digits of the run at `p` after its leading zeros.
size_t significantDigits(const char* p, size_t run) {
  size_t zeros = 0;
  while (zeros < run && p[zeros] == '0') ++zeros;
  return run - zeros;
}

// Rewrites the exponent digits at `p` (a run of `run` digits) to the shortest that keeps the
// number's value: 99999 and spaces when it has more than kExponentDigits significant digits.
void shortenExponent(char* p, size_t run) {
  if (significantDigits(p, run) <= kExponentDigits) return;
  std::memset(p, '9', kExponentDigits);
  std::memset(p + kExponentDigits, ' ', run - kExponentDigits);
}

// Walks the text outside strings: shortens every negative exponent and measures every number.
bool fullScan(char* p, char* end) {
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
    } else if ((c == 'e' || c == 'E') && p + 1 < end && p[1] == '-') {
      p += 2;
      size_t run = digitRun(p, end);
      shortenExponent(p, run);
      p += run;
    } else {
      ++p;
    }
  }
  return true;
}

}  // namespace

bool tameNumbers(char* text, size_t size) {
  char* end = text + size;
  if (size >= kFullScanFrom) return fullScan(text, end);
  for (char* p = text; p < end; ++p) {
    p = static_cast<char*>(std::memchr(p, '-', static_cast<size_t>(end - p)));
    if (!p) break;
    if (p > text && (p[-1] | 0x20) == 'e' && significantDigits(p + 1, digitRun(p + 1, end)) > kExponentDigits)
      return fullScan(text, end);
  }
  return true;
}

}  // namespace zrad::json
