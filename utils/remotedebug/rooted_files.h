// File operations that cannot leave a directory: the file commands of a service with a
// restricted root; and storing a received file under a free name, with or without a root.
//
// Every path is taken relative to the root, as if the root were "/": "/a/b", "a/b" and
// "//a/b" all name root/a/b. Resolution is done by the kernel, one descriptor at a time, never
// by looking at the text: openat2() with RESOLVE_BENEATH refuses "..", absolute symbolic links
// and any link leading out of the root; where the kernel lacks openat2() a component walk with
// openat(O_NOFOLLOW) takes over, refusing ".." and every symbolic link. The last component of
// a name that is created, renamed or removed is never followed, so a link swapped in between
// a check and a use acts on the link itself, never on what it points to.
#pragma once

#include <functional>
#include <string>

#include <zrplatform/strings.h>

namespace zrad::remote {

// An open descriptor and a path that reaches it ("/proc/self/fd/N"), for helpers that take
// paths; closed when destroyed. Empty (fd -1, path "") when the open failed.
class HeldPath {
 public:
  HeldPath() = default;
  explicit HeldPath(int fd);
  HeldPath(HeldPath&& other) noexcept;
  HeldPath& operator=(HeldPath&& other) noexcept;
  ~HeldPath();
  int fd() const { return m_fd; }
  const ZrUtf8String& path() const { return m_path; }
  explicit operator bool() const { return m_fd >= 0; }

 private:
  int m_fd = -1;
  ZrUtf8String m_path;
};

// Opens `path` beneath `rootFd` (openat2 RESOLVE_BENEATH, else walkBeneath); -1 with errno set
// when it would leave the root or fails. `flags` gain O_CLOEXEC.
int openBeneath(int rootFd, const std::string& path, int flags, unsigned mode = 0);
// The component walk alone: ".." and symbolic links anywhere in `path` are refused (ELOOP or
// EXDEV).
int walkBeneath(int rootFd, const std::string& path, int flags, unsigned mode = 0);

// Opens the directory holding `path`'s last name (O_PATH) and gives that name to `name`; empty
// when the last name is missing, "." or "..", or the directory cannot be opened.
using ParentOpener = std::function<HeldPath(const ZrUtf8String& path, std::string& name)>;

// ParentOpener over the whole file system: "/d/a" opens "/d", "/a" opens "/", "a" opens ".".
HeldPath openParentDir(const ZrUtf8String& path, std::string& name);

// Copies the file at `source` to a new file `dir`/`lastName`, "-副本" appended to the stem
// while the name is taken. Each candidate is created exclusively, so the name found is ours
// alone (two stores at once never share it), and a copy that fails part-way (a full disk)
// removes it again. The stored path, or "" on failure.
ZrString storeUnderFreeName(const ZrUtf8String& source, const ZrString& dir,
                            const ZrString& lastName, const ParentOpener& openParent);

class RootedFiles {
 public:
  // Takes `rootFd` (an O_PATH directory descriptor, or -1 to refuse everything) and closes it.
  explicit RootedFiles(int rootFd);
  ~RootedFiles();
  RootedFiles(const RootedFiles&) = delete;
  RootedFiles& operator=(const RootedFiles&) = delete;

  // mkdir mode 0777; false when the parent lies outside or the name exists.
  bool makeDir(const ZrUtf8String& path) const;
  // True when `path` resolves beneath the root (links inside it followed).
  bool exists(const ZrUtf8String& path) const;
  bool rename(const ZrUtf8String& from, const ZrUtf8String& to) const;
  // Removes a file, a link (never its target) or a whole directory tree.
  bool remove(const ZrUtf8String& path) const;
  // Copies a regular file; the destination is created or truncated, never followed.
  bool copy(const ZrUtf8String& from, const ZrUtf8String& to) const;
  // storeUnderFreeName beneath the root (`source` may lie outside: a received temporary file).
  // The name as the peer sees it, or "" on failure.
  ZrString store(const ZrUtf8String& source, const ZrString& dir, const ZrString& lastName) const;
  // `path` opened with `flags` (a directory with O_DIRECTORY); empty on failure.
  HeldPath open(const ZrUtf8String& path, int flags) const;

 private:
  // A ParentOpener beneath the root.
  HeldPath openParent(const ZrUtf8String& path, std::string& name) const;

  int m_root;
};

}  // namespace zrad::remote
