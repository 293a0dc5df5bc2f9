// Out of memory at the element tree's boundary.
//
// Inside the tree, the standard library's containers report exhausted memory with
// std::bad_alloc; outside it, only the platform's ZrError(eOutOfMemory) may be seen.
#pragma once

#include <new>

#include <zrplatform/platform.h>

namespace zrad::json {

// Runs `f`, turning std::bad_alloc into ZrError(eOutOfMemory).
template <class F>
auto platformOutOfMemory(F&& f) -> decltype(f()) {
  try {
    return f();
  } catch (const std::bad_alloc&) {
    throw ZrError(Zrad::eOutOfMemory);
  }
}

}  // namespace zrad::json
