// Path operations that ask the operating system: resolving a path with realpath.
//
// Kept apart from path.cpp so that the text operations stay free of system calls.
#include <limits.h>
#include <stdlib.h>

#include <zrad/files.h>

#include "files/pathtext.h"

namespace {

constexpr int kLongestResolvablePath = 260;  // bytes; longer paths are returned unchanged
constexpr size_t kResolvedBufferSize = 4097;
static_assert(kResolvedBufferSize > PATH_MAX, "realpath writes up to PATH_MAX bytes");

}  // namespace

ZrUtf8String zrutAbsolutePath(const ZrUtf8String& path) {
  if (path.length() > kLongestResolvablePath) return path;
  char resolved[kResolvedBufferSize];
  if (!realpath(path.c_str(), resolved)) return path;
  return zrad::files::withSlashes(ZrUtf8String(resolved));
}
