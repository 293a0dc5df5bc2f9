// Number text of the element tree: "%ld" for integers and "%lf" for doubles, byte for byte.
//
// The writers append without going through printf: integers with std::to_chars, doubles with
// std::to_chars in fixed notation with six decimals, which rounds exactly as printf does.
//   2.5       => "2.500000"      1e-7 => "0.000000"     -0.0 => "-0.000000"
//   NaN       => "nan" / "-nan"  inf  => "inf"
#pragma once

#include <cstdint>
#include <string>

namespace zrad::json {

void appendInteger(std::string& out, int64_t value);
void appendFixed6(std::string& out, double value);

inline std::string formatInteger(int64_t value) {
  std::string s;
  appendInteger(s, value);
  return s;
}
inline std::string formatFixed6(double value) {
  std::string s;
  appendFixed6(s, value);
  return s;
}

}  // namespace zrad::json
