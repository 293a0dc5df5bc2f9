// Writing a file so that a failure never leaves a half-written or lost file behind.
#pragma once

#include <cstdio>
#include <functional>

namespace zrraster {

// Calls `write` on a new temporary file beside `path` and, when it succeeds and the data reach
// the disk, renames the temporary file to `path` (mode 0644). Otherwise the temporary file is
// removed and an existing `path` stays as it was. Returns whether `path` now holds the data.
bool replaceFile(const char* path, const std::function<bool(FILE*)>& write);

}  // namespace zrraster
