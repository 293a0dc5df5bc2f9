// Wildcard globbing over directory trees and case-insensitive lookup of paths.
//
// The glob walk descends with openat on the open directory and stats (fstatat) only the
// entries it returns: the entry type from readdir is enough to decide everything else.
#include <sys/stat.h>

#include <cstring>
#include <string>
#include <vector>

#include <zrad/files.h>
#include <zrad/text.h>
#include <zrplatform/wildcard.h>

#include "files/dirreader_posix.h"
#include "files/pathtext.h"

using zrad::files::childPath;
using zrad::files::DirReader;
using zrad::files::isDotOrDotDot;
using zrad::files::withoutTrailingSlashes;

namespace {

constexpr int kMaxFindName = static_cast<int>(sizeof(_finddata_t::name));

using Matcher = bool (*)(const ZrUtf8String& name, const ZrUtf8String& pattern);

// Collects the matching entries compactly while walking, then writes the (large) records in
// one go, so the output array is sized once instead of being regrown and copied.
class GlobWalk {
 public:
  GlobWalk(const ZrUtf8String& pattern, Matcher match, int flags)
      : m_pattern(pattern), m_match(match), m_flags(flags) {}

  // Lists `dir` (open on the path `listed`); found names get `prefix` in front.
  void walk(DirReader& dir, const ZrUtf8String& listed, const ZrUtf8String& prefix) {
    m_listed.push_back(listed);
    const int listedIndex = static_cast<int>(m_listed.size()) - 1;
    while (const dirent* entry = dir.next()) {
      ZrUtf8String name(entry->d_name);
      uint32_t attrib = zrad::files::findAttribOf(entry->d_type);
      bool dots = isDotOrDotDot(entry->d_name);
      if (attrib & kFindAttribDirectory) {
        if ((m_flags & kGlobDirs) && (!dots || (m_flags & kGlobDotDirs)) &&
            m_match(name, m_pattern))
          collect(dir, listedIndex, prefix, entry, attrib);
        if (!dots && (m_flags & kGlobRecursive)) descend(dir, listed, prefix, name);
      } else if ((m_flags & kGlobFiles) && m_match(name, m_pattern)) {
        collect(dir, listedIndex, prefix, entry, attrib);
      }
    }
  }

  // Appends one zeroed, filled record per entry found.
  void store(ZrFindDataArray& found) const {
    const int first = found.length();
    found.setPhysicalLength(first + static_cast<int>(m_hits.size()));
    found.setLogicalLength(first + static_cast<int>(m_hits.size()));
    for (size_t i = 0; i < m_hits.size(); ++i) {
      const Hit& hit = m_hits[i];
      _finddata_t& record = found[first + static_cast<int>(i)];
      record.attrib = hit.attrib;
      record.time_create = hit.timeCreate;
      record.time_access = hit.timeAccess;
      record.time_write = hit.timeWrite;
      record.size = hit.size;
      std::memcpy(record.name, m_names.data() + hit.nameAt, hit.nameLength);
      record.inode = hit.inode;
      const ZrUtf8String& listed = m_listed[static_cast<size_t>(hit.listedIndex)];
      if (listed.length() < static_cast<int>(sizeof record.directory))
        std::memcpy(record.directory, listed.c_str(), static_cast<size_t>(listed.length()));
    }
  }

 private:
  struct Hit {
    size_t nameAt, nameLength;
    int listedIndex;
    uint32_t attrib;
    uint64_t inode;
    int64_t timeCreate, timeAccess, timeWrite, size;
  };

  void descend(DirReader& dir, const ZrUtf8String& listed, const ZrUtf8String& prefix,
               const ZrUtf8String& name) {
    ZrUtf8String subPrefix = prefix.isEmpty() ? name : zrutCombinePath(prefix, name);
    // Names below are at least as long as the prefix: past the limit nothing could be kept.
    if (subPrefix.length() + 1 >= kMaxFindName) return;
    DirReader sub(dir.fd(), name.c_str());
    if (sub.isOpen()) walk(sub, zrutCombinePath(listed, name), subPrefix);
  }

  void collect(DirReader& dir, int listedIndex, const ZrUtf8String& prefix, const dirent* entry,
               uint32_t attrib) {
    ZrUtf8String name =
        prefix.isEmpty() ? ZrUtf8String(entry->d_name) : zrutCombinePath(prefix, entry->d_name);
    if (name.length() + 1 >= kMaxFindName) return;
    Hit hit{m_names.size(),
            static_cast<size_t>(name.length()),
            listedIndex,
            attrib,
            entry->d_ino,
            0,
            0,
            0,
            0};
    m_names += name.str();
    struct stat st;
    if (fstatat(dir.fd(), entry->d_name, &st, 0) == 0) {
      hit.timeCreate = st.st_ctime;
      hit.timeAccess = st.st_atime;
      hit.timeWrite = st.st_mtime;
      hit.size = st.st_size;
    }
    m_hits.push_back(hit);
  }

  const ZrUtf8String& m_pattern;
  Matcher m_match;
  int m_flags;
  std::vector<Hit> m_hits;
  std::string m_names;
  std::vector<ZrUtf8String> m_listed;
};

int globWith(Matcher match, const ZrUtf8String& directory, const ZrUtf8String& pattern,
             ZrFindDataArray& found, int flags) {
  DirReader top(directory.c_str());
  if (!top.isOpen()) return found.length();
  GlobWalk walk(pattern, match, flags);
  walk.walk(top, directory, ZrUtf8String());
  walk.store(found);
  return found.length();
}

int globPathsWith(Matcher match, const ZrUtf8String& directory, const ZrUtf8String& pattern,
                  ZrArray<ZrUtf8String>& paths, int flags) {
  ZrFindDataArray found;
  globWith(match, directory, pattern, found, flags);
  for (const _finddata_t& record : found) paths.append(zrutCombinePath(directory, record.name));
  return paths.length();
}

// The path made of the first `count` parts of a split path (parts[0] "/" for a rooted one).
ZrUtf8String prefixOf(const ZrArray<ZrUtf8String>& parts, int count) {
  ZrUtf8String prefix;
  for (int i = 0; i < count; ++i)
    prefix = childPath(prefix, parts[i]);
  return prefix;
}

}  // namespace

int zrutGlob(const ZrUtf8String& directory, const ZrUtf8String& pattern, ZrFindDataArray& found,
             int flags) {
  return globWith(quickMatch, directory, pattern, found, flags);
}

int zrutGlobNoCaseSensitive(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                            ZrFindDataArray& found, int flags) {
  return globWith(quickMatchNoCase, directory, pattern, found, flags);
}

int zrutGlob2(const ZrUtf8String& directory, const ZrUtf8String& pattern,
              ZrArray<ZrUtf8String>& paths, int flags) {
  return globPathsWith(quickMatch, directory, pattern, paths, flags);
}

int zrutGlobNoCaseSensitive2(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                             ZrArray<ZrUtf8String>& paths, int flags) {
  return globPathsWith(quickMatchNoCase, directory, pattern, paths, flags);
}

// ---------------------------------------------------------------------------------------------
// Case-insensitive lookup.

bool zrutIsExistFileInPathNoCase(const ZrUtf8String& directory, ZrUtf8String& name) {
  DirReader listing(directory.isEmpty() ? "." : directory.c_str());
  while (const dirent* entry = listing.next()) {
    if (isDotOrDotDot(entry->d_name) || Zr_stricmpA(entry->d_name, name.c_str()) != 0) continue;
    name = entry->d_name;
    return true;
  }
  return false;
}

bool zrutIsExistFileNoCaseSensitive(const ZrUtf8String& path, ZrUtf8String& realPath) {
  ZrUtf8String formatted = zrutFormatPath(path);
  if (formatted.isEmpty()) return false;
  if (zrutIsExistFile(formatted)) {
    realPath = formatted;
    return true;
  }
  ZrArray<ZrUtf8String> parts;
  zrutSplitPath(withoutTrailingSlashes(formatted), parts);
  // Walk up to the longest prefix that exists; the root and the empty prefix (the current
  // directory) always do.
  bool rooted = !parts.isEmpty() && parts[0] == "/";
  int known = parts.length() - 1;
  while (known > (rooted ? 1 : 0) && !zrutIsExistFile(prefixOf(parts, known))) --known;
  ZrUtf8String prefix = prefixOf(parts, known);
  // Then down again, taking each component's spelling on disk.
  for (int i = known; i < parts.length(); ++i) {
    ZrUtf8String name = parts[i];
    if (!zrutIsExistFile(childPath(prefix, name)) && !zrutIsExistFileInPathNoCase(prefix, name))
      return false;
    prefix = childPath(prefix, name);
  }
  int last = path.length() - 1;
  if (last >= 0 && (path[last] == '/' || path[last] == '\\') && prefix != "/") prefix += '/';
  realPath = prefix;
  return true;
}

bool zrutIsExistFileNoCaseSensitiveW(const ZrString& path, ZrString& realPath) {
  ZrUtf8String spelled;
  if (!zrutIsExistFileNoCaseSensitive(ZrUtf8String(path), spelled)) return false;
  realPath = ZrString(spelled);
  return true;
}

// ---------------------------------------------------------------------------------------------
// Finding a file in a list of directories.

namespace {

bool existsAsWritten(const ZrUtf8String& path, ZrUtf8String& found) {
  if (!zrutIsExistFile(path)) return false;
  found = path;
  return true;
}

using Lookup = bool (*)(const ZrUtf8String& path, ZrUtf8String& found);

bool findInPaths(Lookup lookup, ZrUtf8String& name, const ZrArray<ZrUtf8String>& directories) {
  for (const ZrUtf8String& directory : directories) {
    ZrUtf8String found;
    if (lookup(zrutCombinePath(directory, name), found)) {
      name = found;
      return true;
    }
  }
  return false;
}

bool findInPathsW(Lookup lookup, ZrString& name, const ZrArray<ZrString>& directories) {
  ZrArray<ZrUtf8String> narrow;
  for (const ZrString& directory : directories) narrow.append(ZrUtf8String(directory));
  ZrUtf8String found(name);
  if (!findInPaths(lookup, found, narrow)) return false;
  name = ZrString(found);
  return true;
}

}  // namespace

bool zrutFindFileInPaths(ZrUtf8String& name, const ZrArray<ZrUtf8String>& directories) {
  return findInPaths(existsAsWritten, name, directories);
}

bool zrutFindFileInPathsW(ZrString& name, const ZrArray<ZrString>& directories) {
  return findInPathsW(existsAsWritten, name, directories);
}

bool zrutFindFileInPathsNoCase(ZrUtf8String& name, const ZrArray<ZrUtf8String>& directories) {
  return findInPaths(zrutIsExistFileNoCaseSensitive, name, directories);
}

bool zrutFindFileInPathsNoCaseW(ZrString& name, const ZrArray<ZrString>& directories) {
  return findInPathsW(zrutIsExistFileNoCaseSensitive, name, directories);
}
