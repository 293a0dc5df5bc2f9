// Moving a file's bytes between descriptors: copy_file_range with a buffered fallback.
//
// copy_file_range keeps the data in the kernel (and lets file systems share extents); it is
// refused across some file systems and answers 0 for pseudo files whose size reads as 0, so
// the first call decides whether the buffered loop takes over.
#include "files/copybytes_posix.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace zrad::files {

namespace {

constexpr size_t kKernelChunk = size_t(1) << 30;
constexpr size_t kBufferSize = size_t(1) << 20;

// Writes the whole block; a write that writes nothing fails.
bool writeAll(int to, const char* data, size_t size) {
  while (size > 0) {
    ssize_t n = write(to, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

}  // namespace

bool copyBytesBuffered(int from, int to) {
  std::unique_ptr<char[]> buffer(new char[kBufferSize]);
  for (;;) {
    ssize_t n = read(from, buffer.get(), kBufferSize);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    if (n == 0) return true;
    if (!writeAll(to, buffer.get(), static_cast<size_t>(n))) return false;
  }
}

bool copyBytes(int from, int to) {
  posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);  // a hint; failure changes nothing
  bool first = true;
  for (;;) {
    ssize_t n = copy_file_range(from, nullptr, to, nullptr, kKernelChunk, 0);
    if (n < 0 && errno == EINTR) continue;
    if (first && (n == 0 || (n < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS ||
                                       errno == EOPNOTSUPP || errno == EBADF))))
      return copyBytesBuffered(from, to);
    if (n < 0) return false;
    if (n == 0) return true;
    first = false;
  }
}

}  // namespace zrad::files
