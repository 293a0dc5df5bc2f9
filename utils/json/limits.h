// Limits of the element tree that every recursive walk of a tree relies on.
//
// kMaxDepth: the deepest container nesting that the JSON and binary readers accept and the
// writers produce (the root container is level 1). It keeps recursion within a 1 MiB stack;
// clone and bEqual may rely on it for trees that came from a reader.
#pragma once

#include <zrad/json.h>

namespace zrad::json {

constexpr int kMaxDepth = ZrJsonMaxDepth;

}  // namespace zrad::json
