// JSON text reader: text to element tree, the only door to the RapidJSON parser.
#pragma once

#include <string>
#include <string_view>

#include <zrad/json.h>

namespace zrad::json {

// Parses `text` (read up to its first zero byte, as a C string) and fills `target` the way
// readJson does: an Object root merges into an Object target, an Array root appends to an
// Array target, a scalar root replaces the content. False, with `target` unchanged, on a
// parse error or a number refused by tameNumbers. Texts of any depth are read. A refused text
// fills `failure`, when given, with the byte offset where parsing stopped and the reason.
struct ParseFailure {
  size_t offset = 0;
  std::string reason;
};
bool parseInto(ElementValue& target, std::string_view text, ParseFailure* failure = nullptr);

}  // namespace zrad::json
