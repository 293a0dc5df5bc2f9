// Directory listing over file descriptors: DirReader and entry-type helpers.
//
// Every walk of the files subsystem (find, glob, clean, copy, inode search, case-insensitive
// lookup) lists directories through here.
#include "files/dirreader_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include <zrad/files.h>

namespace zrad::files {

DirReader::DirReader(const char* path) : m_dir(opendir(path)) {}

DirReader::DirReader(int parentFd, const char* name) {
  int fd = openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return;
  m_dir = fdopendir(fd);
  if (!m_dir) close(fd);
}

DirReader::~DirReader() {
  if (m_dir) closedir(m_dir);
}

int DirReader::fd() const { return m_dir ? dirfd(m_dir) : -1; }

const dirent* DirReader::next() { return m_dir ? readEntry(m_dir) : nullptr; }

const dirent* readEntry(DIR* dir) {
  dirent* entry = readdir(dir);
  if (entry && entry->d_type == DT_UNKNOWN) {
    struct stat st;
    if (fstatat(dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0)
      entry->d_type = static_cast<unsigned char>(IFTODT(st.st_mode));
  }
  return entry;
}

bool isDotOrDotDot(const char* name) {
  return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

uint32_t findAttribOf(unsigned char entryType) {
  uint32_t attrib = 0;
  if (entryType & 4) attrib |= kFindAttribDirectory;
  if (entryType == DT_LNK) attrib |= kFindAttribLink;
  return attrib;
}

}  // namespace zrad::files
