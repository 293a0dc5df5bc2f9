// Opens a path for reading only when it names a regular file.
//
// The type is taken from the opened descriptor, not from a stat of the path, so the file read is
// the file tested. O_NONBLOCK keeps open() from waiting for a writer when the path is a FIFO.
#include "xml/regularfile_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

FILE* zrad::xml::openRegularFile(const char* path, std::string& whyNot) {
  int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    whyNot = std::string("cannot open: ") + std::strerror(errno);
    return nullptr;
  }
  struct stat st;
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    whyNot = "not a regular file";
    close(fd);
    return nullptr;
  }
  FILE* file = fdopen(fd, "rb");
  if (!file) {
    whyNot = std::string("cannot open: ") + std::strerror(errno);
    close(fd);
  }
  return file;
}
