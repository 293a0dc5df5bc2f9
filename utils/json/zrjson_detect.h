// Format detection shared by the memory and file readers of ZrJson.
#pragma once

#include <string_view>

namespace zrad::json {

// 0xE0, 0xE1 and 0xE2 open the binary form; only 0xE0 is decoded.
inline bool isBinarySignature(unsigned char first) { return first >= 0xE0 && first <= 0xE2; }

// Drops spaces, tabs, line feeds, vertical tabs, form feeds and carriage returns.
std::string_view skipLeadingSpace(std::string_view text);

// JSON text worth parsing begins with "[" or "{".
inline bool opensContainer(std::string_view text) {
  return !text.empty() && (text[0] == '[' || text[0] == '{');
}

}  // namespace zrad::json
