// Decimal number scanning shared by the "shape1.0" reader and the SVG path reader.
//
// Both readers find a number's extent by their own rules and hand the span here. Conversion is
// locale-independent (the C locale's "."), whatever locale the host has set.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zrad::shape {

// strtod of the span's longest decimal prefix, in the C locale; 0 when it has none ("." or
// "-"). A span longer than 255 characters is read from its first 255.
double decimalValue(const char* begin, const char* end);

// The end of a well-formed decimal float at `p` (sign, digits with an optional fraction, an
// optional exponent with sign), or `p` itself when none starts there.
const char* floatEnd(const char* p, const char* end);

// Reads decimal digits with an optional leading sign ('-' only when `allowMinus`) into a value
// that must lie in [minimum, maximum]; returns the end, or `p` when malformed or out of range.
const char* integerEnd(const char* p, const char* end, bool allowMinus, int64_t minimum,
                       int64_t maximum, int64_t& value);

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace zrad::shape
