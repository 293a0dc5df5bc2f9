// Replacing a file through a temporary file and rename().
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "outputfile.h"

namespace zrraster {

bool replaceFile(const char* path, const std::function<bool(FILE*)>& write) {
  std::string temporary = std::string(path) + ".XXXXXX";
  const int fd = mkstemp(&temporary[0]);
  if (fd < 0) return false;
  FILE* out = fdopen(fd, "wb");
  if (!out) {
    close(fd);
    unlink(temporary.c_str());
    return false;
  }
  bool ok = write(out);
  ok = fflush(out) == 0 && ok;
  ok = fchmod(fd, 0644) == 0 && fsync(fd) == 0 && ok;
  ok = fclose(out) == 0 && ok;
  ok = ok && rename(temporary.c_str(), path) == 0;
  if (!ok) unlink(temporary.c_str());
  return ok;
}

}  // namespace zrraster
