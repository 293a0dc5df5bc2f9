// Moving a file's bytes between descriptors: data segments by copy_file_range, holes kept,
// with a buffered fallback.
//
// A regular file is copied one data segment at a time (SEEK_DATA / SEEK_HOLE), so the holes of
// a sparse file stay holes in the copy; file systems that do not track holes report the whole
// file as one segment. copy_file_range keeps the data in the kernel (and lets file systems
// share extents); it is refused across some file systems and answers 0 for pseudo files whose
// size reads as 0, so the first call decides whether the buffered loop takes over.
#include "files/copybytes_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace zrad::files {

namespace {

constexpr size_t kKernelChunk = size_t(1) << 30;
constexpr size_t kBufferSize = size_t(1) << 20;

// Writes the whole block at `at` (or at the write position when `at` is null); a write that
// writes nothing fails.
bool writeAll(int to, const char* data, size_t size, off_t* at) {
  while (size > 0) {
    ssize_t n = at ? pwrite(to, data, size, *at) : write(to, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<size_t>(n);
    if (at) *at += n;
  }
  return true;
}

// Copies up to `size` bytes through a buffer, from the offsets given or, where an offset is
// null, from the descriptor's position. Stops early, with true, at the end of `from`.
bool copyBuffered(int from, off_t* fromAt, int to, off_t* toAt, uint64_t size) {
  std::unique_ptr<char[]> buffer(new char[kBufferSize]);
  while (size > 0) {
    size_t want = static_cast<size_t>(std::min<uint64_t>(size, kBufferSize));
    ssize_t n = fromAt ? pread(from, buffer.get(), want, *fromAt) : read(from, buffer.get(), want);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    if (n == 0) return true;
    if (fromAt) *fromAt += n;
    if (!writeAll(to, buffer.get(), static_cast<size_t>(n), toAt)) return false;
    size -= static_cast<uint64_t>(n);
  }
  return true;
}

// As copyBuffered, in the kernel where it can; falls back when the first call is refused.
bool copyRange(int from, off_t* fromAt, int to, off_t* toAt, uint64_t size) {
  bool first = true;
  while (size > 0) {
    ssize_t n = copy_file_range(from, fromAt, to, toAt,
                                static_cast<size_t>(std::min<uint64_t>(size, kKernelChunk)), 0);
    if (n < 0 && errno == EINTR) continue;
    if (first && (n == 0 || (n < 0 && (errno == EXDEV || errno == EINVAL || errno == ENOSYS ||
                                       errno == EOPNOTSUPP || errno == EBADF))))
      return copyBuffered(from, fromAt, to, toAt, size);
    if (n < 0) return false;
    if (n == 0) return true;
    size -= static_cast<uint64_t>(n);
    first = false;
  }
  return true;
}

// The data segments of the regular file `from` from its position to `size`, each written at
// the same distance from the destination's position; the holes between are only skipped, and
// the destination is cut or extended to the length copied. Both positions end after the copy.
bool copySegments(int from, int to, off_t size) {
  off_t fromStart = lseek(from, 0, SEEK_CUR), toStart = lseek(to, 0, SEEK_CUR);
  if (fromStart < 0 || toStart < 0) return false;
  off_t end = std::max(size, fromStart);  // where the copied source ends
  for (off_t at = fromStart; at < end;) {
    off_t data = lseek(from, at, SEEK_DATA);
    if (data < 0 && errno == ENXIO) break;  // only a hole is left
    off_t hole = data < 0 ? -1 : lseek(from, data, SEEK_HOLE);
    if (hole < 0) return false;
    off_t fromAt = data, toAt = toStart + (data - fromStart);
    if (!copyRange(from, &fromAt, to, &toAt, static_cast<uint64_t>(hole - data))) return false;
    if (fromAt < hole) {  // the file ended early (it shrank, or its size was a guess)
      end = fromAt;
      break;
    }
    at = hole;
  }
  off_t length = toStart + (end - fromStart);
  return ftruncate(to, length) == 0 && lseek(to, length, SEEK_SET) == length &&
         lseek(from, end, SEEK_SET) == end;
}

}  // namespace

bool copyBytesBuffered(int from, int to) {
  return copyBuffered(from, nullptr, to, nullptr, UINT64_MAX);
}

bool copyBytes(int from, int to) {
  posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);  // a hint; failure changes nothing
  struct stat fromStat, toStat;
  // Pseudo files with a size of 0, pipes and devices are read to their end instead.
  if (fstat(from, &fromStat) == 0 && S_ISREG(fromStat.st_mode) && fromStat.st_size > 0 &&
      fstat(to, &toStat) == 0 && S_ISREG(toStat.st_mode))
    return copySegments(from, to, fromStat.st_size);
  return copyRange(from, nullptr, to, nullptr, UINT64_MAX);
}

}  // namespace zrad::files
