// JSON text writer of the element tree.
#pragma once

#include <zrad/json.h>

#include "json/outbuf.h"

namespace zrad::json {

// Appends the compact JSON text of `root` to `out`; false (logged) when the tree contains
// itself (`out` then holds part of it).
bool writeText(const IElementValueBase& root, OutBuffer& out);

}  // namespace zrad::json
