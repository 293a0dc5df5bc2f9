// File operations beneath a restricted root: kernel-side resolution and descriptor-relative
// calls, so no path text is trusted and no name is looked up twice.
#include "remotedebug/rooted_files.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <vector>

#include <zrad/files.h>

#include "remotedebug/netcommand_paths.h"

namespace zrad::remote {
namespace {

constexpr int kMaxTreeDepth = 256;
constexpr int kMaxFreeNameTries = 1000;

// The path relative to the root: leading slashes dropped, "" meaning the root itself.
std::string relativeToRoot(const std::string& path) {
  const size_t start = path.find_first_not_of('/');
  return start == std::string::npos ? "." : path.substr(start);
}

// Removes the entry `name` of `dirFd`; a directory with everything in it, a link as a link.
bool removeAt(int dirFd, const char* name, int depth) {
  if (unlinkat(dirFd, name, 0) == 0) return true;
  if (errno != EISDIR || depth >= kMaxTreeDepth) return false;
  const int fd = openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return false;
  DIR* dir = fdopendir(fd);
  if (!dir) {
    close(fd);
    return false;
  }
  bool removed = true;
  while (const dirent* entry = removed ? readdir(dir) : nullptr) {
    const std::string child = entry->d_name;
    if (child != "." && child != "..") removed = removeAt(fd, child.c_str(), depth + 1);
  }
  closedir(dir);
  return removed && unlinkat(dirFd, name, AT_REMOVEDIR) == 0;
}

// Splits `path` into the text of its directory and its last name; false when the last name is
// missing, "." or "..".
bool splitLastName(std::string text, std::string& parent, std::string& name) {
  while (!text.empty() && text.back() == '/') text.pop_back();
  const size_t slash = text.rfind('/');
  name = slash == std::string::npos ? text : text.substr(slash + 1);
  parent = slash == std::string::npos ? "" : text.substr(0, slash);
  return !name.empty() && name != "." && name != "..";
}

}  // namespace

HeldPath::HeldPath(int fd) : m_fd(fd) {
  if (fd >= 0) m_path = ZrUtf8String::format("/proc/self/fd/%d", fd);
}

HeldPath::HeldPath(HeldPath&& other) noexcept : m_fd(other.m_fd), m_path(other.m_path) {
  other.m_fd = -1;
}

HeldPath& HeldPath::operator=(HeldPath&& other) noexcept {
  if (this != &other) {
    if (m_fd >= 0) close(m_fd);
    m_fd = other.m_fd;
    m_path = other.m_path;
    other.m_fd = -1;
  }
  return *this;
}

HeldPath::~HeldPath() {
  if (m_fd >= 0) close(m_fd);
}

int walkBeneath(int rootFd, const std::string& path, int flags, unsigned mode) {
  std::vector<std::string> parts;
  for (size_t start = 0; start <= path.size();) {
    size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    const std::string part = path.substr(start, end - start);
    if (part == "..") {
      errno = EXDEV;
      return -1;
    }
    if (!part.empty() && part != ".") parts.push_back(part);
    start = end + 1;
  }
  if (parts.empty()) return openat(rootFd, ".", flags | O_CLOEXEC, mode);
  int dir = rootFd;
  for (size_t i = 0; i + 1 < parts.size() && dir >= 0; ++i) {
    const int next = openat(dir, parts[i].c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (dir != rootFd) close(dir);
    dir = next;
  }
  if (dir < 0) return -1;
  int fd = openat(dir, parts.back().c_str(), flags | O_NOFOLLOW | O_CLOEXEC, mode);
  if (dir != rootFd) close(dir);
  // With O_PATH, O_NOFOLLOW opens a link itself instead of refusing it.
  struct stat info;
  if (fd >= 0 && (flags & O_PATH) && fstat(fd, &info) == 0 && S_ISLNK(info.st_mode)) {
    close(fd);
    errno = ELOOP;
    return -1;
  }
  return fd;
}

int openBeneath(int rootFd, const std::string& path, int flags, unsigned mode) {
  if (rootFd < 0) {
    errno = EBADF;
    return -1;
  }
  const std::string relative = relativeToRoot(path);
  open_how how{};
  how.flags = static_cast<uint64_t>(flags | O_CLOEXEC);
  how.mode = (flags & O_CREAT) ? mode : 0;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  const long fd = syscall(SYS_openat2, rootFd, relative.c_str(), &how, sizeof how);
  if (fd >= 0 || errno != ENOSYS) return static_cast<int>(fd);
  return walkBeneath(rootFd, relative, flags, mode);
}

RootedFiles::RootedFiles(int rootFd) : m_root(rootFd) {}

RootedFiles::~RootedFiles() {
  if (m_root >= 0) close(m_root);
}

HeldPath RootedFiles::open(const ZrUtf8String& path, int flags) const {
  return HeldPath(openBeneath(m_root, path.str(), flags));
}

HeldPath RootedFiles::openParent(const ZrUtf8String& path, std::string& name) const {
  std::string parent;
  if (!splitLastName(path.str(), parent, name)) return HeldPath();
  return HeldPath(openBeneath(m_root, parent, O_PATH | O_DIRECTORY));
}

bool RootedFiles::makeDir(const ZrUtf8String& path) const {
  std::string name;
  HeldPath parent = openParent(path, name);
  return parent && mkdirat(parent.fd(), name.c_str(), 0777) == 0;
}

bool RootedFiles::exists(const ZrUtf8String& path) const {
  return static_cast<bool>(open(path, O_PATH));
}

bool RootedFiles::rename(const ZrUtf8String& from, const ZrUtf8String& to) const {
  std::string fromName, toName;
  HeldPath fromDir = openParent(from, fromName);
  HeldPath toDir = openParent(to, toName);
  return fromDir && toDir &&
         renameat(fromDir.fd(), fromName.c_str(), toDir.fd(), toName.c_str()) == 0;
}

bool RootedFiles::remove(const ZrUtf8String& path) const {
  std::string name;
  HeldPath parent = openParent(path, name);
  return parent && removeAt(parent.fd(), name.c_str(), 0);
}

bool RootedFiles::copy(const ZrUtf8String& from, const ZrUtf8String& to) const {
  HeldPath source = open(from, O_RDONLY | O_NONBLOCK);  // a FIFO must not block the thread
  struct stat info;
  if (!source || fstat(source.fd(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  std::string name;
  HeldPath parent = openParent(to, name);
  if (!parent) return false;
  HeldPath destination(
      openat(parent.fd(), name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
  // Both ends are reached through their descriptors, so the copy cannot be redirected.
  return destination && zrutCopyFile(source.path(), destination.path());
}

ZrString RootedFiles::store(const ZrUtf8String& source, const ZrString& dir,
                            const ZrString& lastName) const {
  return storeUnderFreeName(source, dir, lastName, [this](const ZrUtf8String& path, std::string& name) {
    return openParent(path, name);
  });
}

HeldPath openParentDir(const ZrUtf8String& path, std::string& name) {
  std::string parent;
  if (!splitLastName(path.str(), parent, name)) return HeldPath();
  const bool absolute = !path.str().empty() && path.str()[0] == '/';
  if (parent.empty()) parent = absolute ? "/" : ".";
  return HeldPath(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

ZrString storeUnderFreeName(const ZrUtf8String& source, const ZrString& dir,
                            const ZrString& lastName, const ParentOpener& openParent) {
  HeldPath parent, created;
  std::string name;
  int tries = 0;
  // A name counts as taken when it cannot be created exclusively; the first free one is then
  // already ours, so nothing can be slipped in under it.
  const ZrString path = freeFileName(dir, lastName, [&](const ZrString& candidate) {
    parent = openParent(ZrUtf8String(candidate), name);
    if (!parent || ++tries > kMaxFreeNameTries) return false;
    created = HeldPath(openat(parent.fd(), name.c_str(),
                              O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    return !created && errno == EEXIST;
  });
  if (!created) return ZrString();
  if (zrutCopyFile(source, created.path())) return path;
  unlinkat(parent.fd(), name.c_str(), 0);  // no partial file stays under the name (a full disk)
  return ZrString();
}

}  // namespace zrad::remote
