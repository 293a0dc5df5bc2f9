// Number text of the element tree: integers and six-decimal doubles without printf.
//
// Non-finite values are spelt as glibc's printf spells them, since to_chars and printf agree on
// every finite value but not on how a negative NaN is written.
#include "json/numfmt.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace zrad::json {
namespace {

char* putWord(char* out, const char* word) {
  size_t n = std::strlen(word);
  std::memcpy(out, word, n);
  return out + n;
}

}  // namespace

char* putInteger(char* out, int64_t value) {
  return std::to_chars(out, out + kIntegerTextMax, value).ptr;
}

char* putFixed6(char* out, double value) {
  if (std::isnan(value)) return putWord(out, std::signbit(value) ? "-nan" : "nan");
  if (std::isinf(value)) return putWord(out, value < 0 ? "-inf" : "inf");
  return std::to_chars(out, out + kFixed6TextMax, value, std::chars_format::fixed, 6).ptr;
}

}  // namespace zrad::json
