// How zrad json shows the library's JSON text: zero bytes escaped, optionally indented.
#pragma once

#include <string>
#include <string_view>

namespace zradtool {

// `written` as the library's writer gave it, with every zero byte (only strings hold them)
// turned into \u0000 so the result is valid JSON, and with `pretty` indented by two spaces a
// level; names, values and their order are left as they are.
//   {"a":[1,{}],"b":"x\0y"}, pretty => {\n  "a": [\n    1,\n    {}\n  ],\n  "b": "x\u0000y"\n}
std::string showJson(std::string_view written, bool pretty);

}  // namespace zradtool
