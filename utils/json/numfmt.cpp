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

// Below this magnitude |value| * 10^6, rounded, fits in 63 bits.
constexpr double kFastBelow = 9e12;

// round(|value| * 10^6), ties to even, computed exactly from the binary value as printf does.
// Only for finite |value| < kFastBelow, whose binary exponent is then always negative.
uint64_t scaledMicros(double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  int exponent = static_cast<int>((bits >> 52) & 0x7FF);
  uint64_t mantissa = bits & ((uint64_t(1) << 52) - 1);
  int shift = 1074;  // value = mantissa * 2^-shift
  if (exponent) {
    mantissa |= uint64_t(1) << 52;
    shift = 1075 - exponent;
  }
  unsigned __int128 x = static_cast<unsigned __int128>(mantissa) * 1000000u;  // below 2^73
  if (shift >= 74) return 0;  // x is below half a unit
  uint64_t q = static_cast<uint64_t>(x >> shift);
  unsigned __int128 rest = x & ((static_cast<unsigned __int128>(1) << shift) - 1);
  unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
  if (rest > half || (rest == half && (q & 1))) ++q;
  return q;
}

}  // namespace

char* putInteger(char* out, int64_t value) {
  return std::to_chars(out, out + kIntegerTextMax, value).ptr;
}

char* putFixed6(char* out, double value) {
  if (std::isnan(value)) return putWord(out, std::signbit(value) ? "-nan" : "nan");
  if (std::isinf(value)) return putWord(out, value < 0 ? "-inf" : "inf");
  if (!(std::fabs(value) < kFastBelow))
    return std::to_chars(out, out + kFixed6TextMax, value, std::chars_format::fixed, 6).ptr;
  if (std::signbit(value)) *out++ = '-';  // printf keeps the sign of values that round to 0
  uint64_t micros = scaledMicros(value);
  out = std::to_chars(out, out + kIntegerTextMax, micros / 1000000).ptr;
  *out = '.';
  uint32_t fraction = static_cast<uint32_t>(micros % 1000000);
  for (int i = 6; i > 0; --i, fraction /= 10) out[i] = static_cast<char>('0' + fraction % 10);
  return out + 7;
}

}  // namespace zrad::json
