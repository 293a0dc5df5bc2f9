// Taming the numbers of a JSON text before it reaches the parser.
//
// The parser adds a number's exponent to its count of fraction digits in 32-bit ints, which
// overflows for a negative exponent of ten digits or so. Such an exponent puts any number the
// parser accepts far below the smallest double, so it is rewritten in place to an equivalent
// short one, padded with spaces (white space after a number is JSON), and the parser gives the
// value a correct parser gives:
//   "[1e-000000001]"               => unchanged        (leading zeros cost the parser nothing)
//   "[1.5e-2147483639]"            => "[1.5e-99999     ]"   => 0.0
//   "[\"1e-2147483639\"]"          => unchanged        (inside a string it is only text)
// Only a number of more than 100 million digits is refused: its digit count itself would
// overflow the parser's sums (it can occur only in texts of that size).
#pragma once

#include <cstddef>

namespace zrad::json {

// Rewrites the hostile exponents of the `size` bytes at `text`; false for a number of more than
// kMaxNumberDigits digits.
bool tameNumbers(char* text, size_t size);

constexpr size_t kMaxNumberDigits = 100'000'000;

}  // namespace zrad::json
