// Decimal number scanning shared by the shape readers.
#include "shape/numscan.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <locale.h>

namespace zrad::shape {

namespace {

const size_t kMaxNumberText = 255;

locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(0));
  return locale;
}

const char* digitsEnd(const char* p, const char* end) {
  while (p < end && isDigit(*p)) ++p;
  return p;
}

}  // namespace

double decimalValue(const char* begin, const char* end) {
  char text[kMaxNumberText + 1];
  const size_t n = size_t(end - begin) < kMaxNumberText ? size_t(end - begin) : kMaxNumberText;
  std::memcpy(text, begin, n);
  text[n] = '\0';
  return strtod_l(text, nullptr, cLocale());
}

const char* floatEnd(const char* p, const char* end) {
  const char* q = p;
  if (q < end && (*q == '+' || *q == '-')) ++q;
  const char* intEnd = digitsEnd(q, end);
  const char* mantissaEnd = intEnd;
  if (intEnd < end && *intEnd == '.') mantissaEnd = digitsEnd(intEnd + 1, end);
  if (intEnd == q && mantissaEnd <= intEnd + 1) return p;  // no digit at all
  const char* e = mantissaEnd;
  if (e < end && (*e == 'e' || *e == 'E')) {
    const char* x = e + 1;
    if (x < end && (*x == '+' || *x == '-')) ++x;
    const char* xEnd = digitsEnd(x, end);
    if (xEnd > x) return xEnd;
  }
  return mantissaEnd;
}

const char* integerEnd(const char* p, const char* end, bool allowMinus, int64_t minimum,
                       int64_t maximum, int64_t& value) {
  const char* q = p;
  bool negative = false;
  if (q < end && (*q == '+' || (allowMinus && *q == '-'))) negative = *q++ == '-';
  const char* digits = q;
  const int64_t limit = maximum > -minimum ? maximum : -minimum;  // callers keep it near 2^32
  int64_t v = 0;
  for (; q < end && isDigit(*q); ++q) {
    v = v * 10 + (*q - '0');
    if (v > limit) return p;
  }
  if (q == digits) return p;
  v = negative ? -v : v;
  if (v < minimum || v > maximum) return p;
  value = v;
  return q;
}

}  // namespace zrad::shape
