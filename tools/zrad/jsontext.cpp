// Showing the library's compact JSON text: zero bytes escaped, indentation added.
#include "jsontext.h"

namespace zradtool {

namespace {

void newline(std::string& out, int depth) {
  out += '\n';
  out.append(size_t(2 * depth), ' ');
}

}  // namespace

std::string showJson(std::string_view written, bool pretty) {
  std::string out;
  out.reserve(written.size() + written.size() / 4);
  bool inString = false, escaped = false;
  int depth = 0;
  for (size_t i = 0; i < written.size(); ++i) {
    const char c = written[i];
    if (c == '\0') {
      out += "\\u0000";
      continue;
    }
    if (inString) {
      out += c;
      if (escaped) escaped = false;
      else if (c == '\\') escaped = true;
      else if (c == '"') inString = false;
      continue;
    }
    if (c == '"') inString = true;
    if (!pretty) {
      out += c;
      continue;
    }
    const bool opens = c == '{' || c == '[';
    const bool closes = c == '}' || c == ']';
    if (closes && !(i > 0 && (written[i - 1] == '{' || written[i - 1] == '['))) newline(out, --depth);
    else if (closes) --depth;
    out += c;
    if (opens && i + 1 < written.size() && written[i + 1] != '}' && written[i + 1] != ']') newline(out, ++depth);
    else if (opens) ++depth;
    else if (c == ',') newline(out, depth);
    else if (c == ':') out += ' ';
  }
  return out;
}

}  // namespace zradtool
