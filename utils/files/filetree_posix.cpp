// Creating, removing, copying and moving files and directory trees.
//
// Copies move bytes with copyBytes and keep the source's access and modification times.
// Moves rename when the file system allows it and copy-then-remove otherwise; a source is
// removed only after its copy is complete.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include <zrad/files.h>

#include "files/copybytes_posix.h"
#include "files/dirreader_posix.h"
#include "files/pathtext.h"
#include "log/logmsg.h"

using zrad::files::childPath;
using zrad::files::DirReader;
using zrad::files::isDotOrDotDot;
using zrad::files::withoutTrailingSlashes;

static const char kLogSource[] = "utils/zrfiletools";

namespace {

// A path with a zero byte inside names no file. The system would see only the text before the
// zero while the walks build child paths from the whole text: each child path would then name
// the same directory again, and a walk would descend without end.
bool hasZeroByte(const ZrUtf8String& path) { return path.str().find('\0') != std::string::npos; }

bool isSymlink(const ZrUtf8String& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode);
}

// True when `path` names the same file as `st` (links followed).
bool isSameFile(const ZrUtf8String& path, const struct stat& st) {
  struct stat other;
  return ::stat(path.c_str(), &other) == 0 && other.st_dev == st.st_dev &&
         other.st_ino == st.st_ino;
}

// True when `destination`, or the closest of its ancestors that exists, is `source` or lies in
// its tree: copying or moving there would feed the tree into itself.
bool landsInside(const ZrUtf8String& source, const ZrUtf8String& destination) {
  ZrUtf8String existing = destination;
  while (!existing.isEmpty() && !zrutIsExistFile(existing)) existing = zrutGetParentDir(existing);
  if (existing.isEmpty()) existing = ".";
  return isSubDirOrSameDirByInode(existing.c_str(), source.c_str());
}

// Recreates the symbolic link `source` at `destination`, replacing a link already there.
bool copyLink(const ZrUtf8String& source, const ZrUtf8String& destination) {
  std::vector<char> target(4096);
  ssize_t n = readlink(source.c_str(), target.data(), target.size() - 1);
  if (n < 0) return false;
  target[static_cast<size_t>(n)] = 0;
  if (symlink(target.data(), destination.c_str()) == 0) return true;
  return errno == EEXIST && isSymlink(destination) && unlink(destination.c_str()) == 0 &&
         symlink(target.data(), destination.c_str()) == 0;
}

// Creates `destination` and calls step(from, to, entry type) for each entry of `source`
// ("." and ".." skipped), stopping at the first step that fails.
template <class Step>
bool eachEntryInto(const ZrUtf8String& source, const ZrUtf8String& destination, Step step) {
  DirReader listing(source.c_str());
  if (!listing.isOpen() || !zrutCreateDir(destination)) return false;
  while (const dirent* entry = listing.next()) {
    if (isDotOrDotDot(entry->d_name)) continue;
    if (!step(childPath(source, entry->d_name), childPath(destination, entry->d_name),
              entry->d_type))
      return false;
  }
  return true;
}

// Copies the entries of `source` into `destination`, which is created.
bool copyTree(const ZrUtf8String& source, const ZrUtf8String& destination) {
  return eachEntryInto(source, destination,
                       [](const ZrUtf8String& from, const ZrUtf8String& to, unsigned char type) {
                         if (type == DT_DIR) return copyTree(from, to);
                         return type == DT_LNK ? copyLink(from, to) : zrutCopyFile(from, to);
                       });
}

// Moves one entry that is not a directory: rename, or copy and then remove the source; when the
// source cannot be removed the copy goes again, so exactly one of them remains.
bool moveEntry(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (rename(source.c_str(), destination.c_str()) == 0) return true;
  bool link = isSymlink(source);
  if (!(link ? copyLink(source, destination) : zrutCopyFile(source, destination))) return false;
  if (unlink(source.c_str()) == 0) return true;
  unlink(destination.c_str());
  return false;
}

bool moveTree(const ZrUtf8String& source, const ZrUtf8String& destination);

// Moves a whole directory: one rename when the destination is free, else entry by entry.
bool moveDirectory(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (!zrutIsExistFile(destination) && rename(source.c_str(), destination.c_str()) == 0)
    return true;
  return moveTree(source, destination) && rmdir(source.c_str()) == 0;
}

// Moves the entries of `source` into `destination` (created); `source` stays, emptied.
bool moveTree(const ZrUtf8String& source, const ZrUtf8String& destination) {
  return eachEntryInto(source, destination,
                       [](const ZrUtf8String& from, const ZrUtf8String& to, unsigned char type) {
                         return type == DT_DIR ? moveDirectory(from, to) : moveEntry(from, to);
                       });
}

}  // namespace

bool zrutCreateDir(const ZrUtf8String& path) {
  if (path.isEmpty() || hasZeroByte(path)) return false;
  ZrUtf8String dir = zrad::files::withSlashes(path);
  if (isDir(dir)) return true;
  ZrUtf8String parent = zrutGetParentDir(dir);
  if (!parent.isEmpty() && !zrutCreateDir(parent)) return false;
  if (mkdir(dir.c_str(), 0777) == 0) return true;
  if (errno == EEXIST && isDir(dir)) return true;  // made meanwhile by someone else
  ZRAD_LOG(5, kLogSource, "创建目录%s失败", dir.c_str());
  return false;
}

bool zrutRemoveFile(const ZrUtf8String& path) {
  if (hasZeroByte(path)) return false;
  if (isDir(path)) return zrutRemovePath(path);
  return remove(path.c_str()) == 0;
}

bool zrutRemovePath(const ZrUtf8String& path) {
  if (hasZeroByte(path)) return false;
  ZrUtf8String dir = withoutTrailingSlashes(path);
  if (isSymlink(dir)) return unlink(dir.c_str()) == 0;
  return zrutCleanPath(dir) && rmdir(dir.c_str()) == 0;
}

bool zrutCleanPath(const ZrUtf8String& directory) {
  if (hasZeroByte(directory)) return false;
  DirReader listing(directory.c_str());
  if (!listing.isOpen()) return false;
  while (const dirent* entry = listing.next()) {
    if (isDotOrDotDot(entry->d_name)) continue;
    ZrUtf8String path = childPath(directory, entry->d_name);
    bool removed = entry->d_type == DT_DIR ? zrutCleanPath(path) && rmdir(path.c_str()) == 0
                                           : zrutRemoveFile(path);
    if (!removed) return false;
  }
  return true;
}

bool zrutCopyFile(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (source.isEmpty() || destination.isEmpty() || hasZeroByte(source) || hasZeroByte(destination))
    return false;
  if (isDir(source)) return zrutCopyPath(source, destination);
  int from = open(source.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return false;
  struct stat st;
  if (fstat(from, &st) != 0 || isSameFile(destination, st)) {
    close(from);
    return false;
  }
  // A destination without a directory part is accepted and copies nothing (callers rely on
  // this answer); only its times are touched below.
  if (!zrutGetParentDir(destination).isEmpty()) {
    int to = -1;
    if (zrutCreateDir(zrutGetParentDir(destination)))
      to = open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    bool copied = to >= 0 && zrad::files::copyBytes(from, to);
    if (to >= 0 && close(to) != 0) copied = false;
    if (!copied) {
      close(from);
      return false;
    }
  }
  close(from);
  const struct timespec times[2] = {st.st_atim, st.st_mtim};
  utimensat(AT_FDCWD, destination.c_str(), times, 0);  // a failure here is not a failed copy
  return true;
}

bool zrutCopyPath(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (source.isEmpty() || destination.isEmpty() || hasZeroByte(source) ||
      hasZeroByte(destination) || landsInside(source, destination))
    return false;
  return copyTree(source, destination);
}

bool zrutMovePath(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (source.isEmpty() || destination.isEmpty() || hasZeroByte(source) ||
      hasZeroByte(destination) || landsInside(source, destination))
    return false;
  return moveTree(source, destination);
}

bool zrutMoveFile(const ZrUtf8String& source, const ZrUtf8String& destination) {
  if (source.isEmpty() || destination.isEmpty() || hasZeroByte(source) || hasZeroByte(destination))
    return false;
  if (isDir(source) && !isSymlink(withoutTrailingSlashes(source))) {
    return !landsInside(source, destination) && moveDirectory(source, destination);
  }
  // Refused when both name one file (a link and its target included): a rename would then
  // drop the only copy of the bytes.
  struct stat st;
  if (lstat(source.c_str(), &st) != 0) return false;
  if (::stat(source.c_str(), &st) == 0 && isSameFile(destination, st)) return false;
  // A bare destination name means the current directory: the copy step alone would copy
  // nothing for it, and the source must not go without its bytes landing somewhere.
  ZrUtf8String target = zrutGetParentDir(destination).isEmpty() ? "./" + destination : destination;
  if (!zrutCreateDir(zrutGetParentDir(target))) return false;
  return moveEntry(source, target);
}
