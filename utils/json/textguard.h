// Screening of JSON text before it reaches the parser.
//
// The parser's number code computes exponent sums in 32-bit ints that can overflow for numbers
// with an absurdly long exponent (or, in texts of hundreds of megabytes, an absurdly long
// fraction). numbersAreSafe() refuses such texts first:
//   "[1e-5]"                        => true
//   "[0.0000000001e-2147483639]"    => false  (exponent of more than 8 digits)
//   "[\"1e-2147483639\"]"           => true   (inside a string it is only text)
#pragma once

#include <string_view>

namespace zrad::json {

constexpr int kMaxExponentDigits = 8;
// Numbers with more digits than this are refused (only checked in texts where it matters).
constexpr size_t kMaxNumberDigits = 100'000'000;

bool numbersAreSafe(std::string_view text);

}  // namespace zrad::json
