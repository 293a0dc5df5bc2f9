// Directory listing over file descriptors, shared by the find, glob, tree and lookup code.
//
// DirReader owns one open directory stream; it opens by path or relative to a parent
// directory's descriptor (openat), so deep walks never rebuild long paths.
#pragma once

#include <dirent.h>

#include <cstdint>

namespace zrad::files {

class DirReader {
 public:
  // Opens `path` (a directory); isOpen() tells whether that worked.
  explicit DirReader(const char* path);
  // Opens `name` inside the directory open as `parentFd`, never following a symbolic link.
  DirReader(int parentFd, const char* name);
  ~DirReader();
  DirReader(const DirReader&) = delete;
  DirReader& operator=(const DirReader&) = delete;

  bool isOpen() const { return m_dir != nullptr; }
  int fd() const;
  // The next entry ("." and ".." included), or null at the end; see readEntry.
  const dirent* next();

 private:
  DIR* m_dir = nullptr;
};

// readdir, except that an entry type the file system does not report (DT_UNKNOWN) is filled
// in from lstat, so callers can trust d_type.
const dirent* readEntry(DIR* dir);

// "." or "..".
bool isDotOrDotDot(const char* name);

// The record's attrib for an entry type: the directory bit when the type has its bit of value
// 4 set (directories, block devices, sockets), the link bit for symbolic links.
uint32_t findAttribOf(unsigned char entryType);

}  // namespace zrad::files
