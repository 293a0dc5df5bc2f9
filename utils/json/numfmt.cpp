// Number text of the element tree: integers and six-decimal doubles without printf.
//
// Non-finite values are spelt as glibc's printf spells them, since to_chars and printf agree on
// every finite value but not on how a negative NaN is written.
#include "json/numfmt.h"

#include <charconv>
#include <cmath>

namespace zrad::json {

void appendInteger(std::string& out, int64_t value) {
  char buf[24];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, static_cast<size_t>(r.ptr - buf));
}

void appendFixed6(std::string& out, double value) {
  if (std::isnan(value)) {
    out += std::signbit(value) ? "-nan" : "nan";
    return;
  }
  if (std::isinf(value)) {
    out += value < 0 ? "-inf" : "inf";
    return;
  }
  // The largest double has 309 integral digits; with sign, point and six decimals 317 bytes.
  char buf[328];
  auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, 6);
  out.append(buf, static_cast<size_t>(r.ptr - buf));
}

}  // namespace zrad::json
