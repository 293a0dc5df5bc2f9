// Number text of the element tree: "%ld" for integers and "%lf" for doubles, byte for byte.
//
// The writers format without going through printf: integers with std::to_chars; doubles below
// 9e12 in magnitude by exact integer arithmetic on their binary value, larger ones with
// std::to_chars in fixed notation; both round exactly as printf does (ties to even).
//   2.5       => "2.500000"      1e-7 => "0.000000"     -0.0 => "-0.000000"
//   NaN       => "nan" / "-nan"  inf  => "inf"
#pragma once

#include <cstdint>
#include <string>

namespace zrad::json {

// Room the writers need: a sign and 19 digits; a sign, 309 digits, the point and 6 decimals.
constexpr size_t kIntegerTextMax = 20;
constexpr size_t kFixed6TextMax = 317;

// Write the text at `out` and return its end.
char* putInteger(char* out, int64_t value);
char* putFixed6(char* out, double value);

inline std::string formatInteger(int64_t value) {
  char buf[kIntegerTextMax];
  return std::string(buf, putInteger(buf, value));
}
inline std::string formatFixed6(double value) {
  char buf[kFixed6TextMax];
  return std::string(buf, putFixed6(buf, value));
}

}  // namespace zrad::json
