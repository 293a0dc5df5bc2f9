// Existence, attributes and directory listing of files, and facts about the user and host.
//
// Thin wrappers over stat, access, readlink and readdir with the library's answers for
// failures (false, -1, 0, an empty string).
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include <zrad/files.h>

#include "files/dirreader_posix.h"
#include "files/pathtext.h"

using zrad::files::DirReader;
using zrad::files::withSlashes;

namespace {

bool statOf(const ZrUtf8String& path, struct stat& st) { return ::stat(path.c_str(), &st) == 0; }

// Wide text from the C library's multibyte form (the locale's), at most `limit` characters;
// falls back to UTF-8 when the locale cannot read it.
ZrString wideFromLocale(const char* text, size_t limit) {
  std::vector<wchar_t> wide(limit + 1, 0);
  size_t n = mbstowcs(wide.data(), text, limit);
  if (n == static_cast<size_t>(-1)) return ZrString(ZrUtf8String(text));
  return ZrString(wide.data(), n);
}

// True when the inode `target` is an entry somewhere below the directory open as `dir`.
bool treeHoldsInode(DirReader& dir, ino_t target) {
  while (const dirent* entry = dir.next()) {
    if (zrad::files::isDotOrDotDot(entry->d_name)) continue;
    if (entry->d_ino == target) return true;
    if (entry->d_type != DT_DIR) continue;
    DirReader sub(dir.fd(), entry->d_name);
    if (sub.isOpen() && treeHoldsInode(sub, target)) return true;
  }
  return false;
}

}  // namespace

bool zrutIsExistFile(const ZrUtf8String& path) {
  struct stat st;
  return statOf(withSlashes(path), st);
}

bool zrutIsDir(const ZrUtf8String& path, int flags) {
  struct stat st;
  if (!statOf(withSlashes(path), st) || !S_ISDIR(st.st_mode)) return false;
  if ((flags & kIsDirWritable) && !(st.st_mode & S_IWUSR)) return false;
  if (flags & kIsDirReadable) return (st.st_mode & S_IRUSR) != 0;
  return true;
}

bool isDir(const ZrUtf8String& path) { return zrutIsDir(path, 0); }

int64_t filelength(int descriptor) {
  struct stat st;
  if (fstat(descriptor, &st) != 0) return -1;
  return static_cast<int64_t>(st.st_size);
}

int64_t zrutGetFileSize(const ZrUtf8String& path) {
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  int64_t size = filelength(fd);
  close(fd);
  return size;
}

int64_t zrutGetFileCreateTime(const ZrUtf8String& path) {
  struct stat st;
  return statOf(path, st) ? static_cast<int64_t>(st.st_ctime) : 0;
}

ZrUtf8String zrutGetFileCreateTimeS(const ZrUtf8String& path) {
  time_t when = static_cast<time_t>(zrutGetFileCreateTime(path));
  struct tm local;
  char text[64];
  if (!localtime_r(&when, &local) || strftime(text, sizeof text, "%Y-%m-%d %H-%M-%S", &local) == 0)
    return ZrUtf8String();
  return ZrUtf8String(text);
}

bool zrutFileIsReadOnly(const ZrUtf8String& path) {
  struct stat st;
  if (!statOf(path, st)) return false;
  if (st.st_mode & (S_IWUSR | S_IXUSR)) return false;
  return (st.st_mode & S_IRUSR) != 0;
}

bool zrutAccessFile(const ZrString& path, int mode) {
  ZrUtf8String narrow(path);
  struct stat st;
  return access(narrow.c_str(), mode & (R_OK | W_OK)) == 0 && statOf(narrow, st);
}

bool isSymbolicLink(const char* path, char* buffer, int* length) {
  if (!path) return false;
  char target[1024];
  ssize_t n = readlink(path, target, sizeof target - 1);
  if (n < 0) return false;
  target[n] = 0;
  if (length) {
    if (buffer && n < *length) std::memcpy(buffer, target, static_cast<size_t>(n) + 1);
    *length = static_cast<int>(n);
  }
  return true;
}

bool isSubDirOrSameDirByInode(const char* a, const char* b) {
  if (!a || !b || !*a || !*b) return false;
  struct stat sa, sb;
  if (::stat(a, &sa) != 0 || ::stat(b, &sb) != 0) return false;
  if (sa.st_ino == sb.st_ino && sa.st_dev == sb.st_dev) return true;
  if (sa.st_dev != sb.st_dev || !S_ISDIR(sb.st_mode)) return false;
  DirReader top(b);
  return top.isOpen() && treeHoldsInode(top, sa.st_ino);
}

// ---------------------------------------------------------------------------------------------
// find-first / find-next over readdir.

intptr_t findfirstUtf8(const char* directory, _finddata_t* record) {
  if (!directory || !*directory || !record) return -1;
  DIR* dir = opendir(directory);
  if (!dir) return -1;
  size_t length = std::strlen(directory);
  if (length < sizeof record->directory) std::memcpy(record->directory, directory, length + 1);
  intptr_t handle = reinterpret_cast<intptr_t>(dir);
  findnextUtf8(handle, record);
  return handle;
}

int findnextUtf8(intptr_t handle, _finddata_t* record) {
  if (handle == -1 || handle == 0 || !record) return -1;
  DIR* dir = reinterpret_cast<DIR*>(handle);
  const dirent* entry = zrad::files::readEntry(dir);
  if (!entry) return -1;
  record->attrib = zrad::files::findAttribOf(entry->d_type);
  std::strncpy(record->name, entry->d_name, sizeof record->name - 1);
  record->name[sizeof record->name - 1] = 0;
  record->inode = entry->d_ino;
  // Relative to the open directory: no path to rebuild, and the answer does not depend on the
  // current directory or on the record's directory field.
  struct stat st;
  bool known = fstatat(dirfd(dir), entry->d_name, &st, 0) == 0;
  record->time_create = known ? st.st_ctime : 0;
  record->time_access = known ? st.st_atime : 0;
  record->time_write = known ? st.st_mtime : 0;
  record->size = known ? st.st_size : 0;
  return 0;
}

int findcloseUtf8(intptr_t handle) {
  if (handle == -1 || handle == 0) return -1;
  return closedir(reinterpret_cast<DIR*>(handle));
}

// ---------------------------------------------------------------------------------------------
// The user and the host.

ZrUtf8String zrutGetCWD() {
  char buffer[4096];
  return getcwd(buffer, sizeof buffer) ? ZrUtf8String(buffer) : ZrUtf8String();
}

ZrString zrutGetHomeDir() {
  const char* home = getenv("HOME");
  ZrString base(ZrUtf8String(home ? home : ""));
  ZrString documents = zrutCombinePathW(base, L"Documents");
  if (isDir(ZrUtf8String(documents))) return documents;
  ZrString chinese = zrutCombinePathW(base, L"文档");
  return isDir(ZrUtf8String(chinese)) ? chinese : documents;
}

ZrString zrutGetComputerName() {
  char name[65] = {0};
  if (gethostname(name, sizeof name - 1) != 0) return ZrString();
  return wideFromLocale(name, 64);
}

ZrString zrutGetUserName() {
  long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(suggested > 0 ? static_cast<size_t>(suggested) : 16384);
  struct passwd entry;
  struct passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
    return ZrString();
  return wideFromLocale(found->pw_name, 256);
}
