// Listings of the LS and FIND commands, from the directory reader and the glob walk.
#include "remotedebug/netcommand_list.h"

#include <strings.h>

#include <cstring>
#include <ctime>

namespace zrad::remote {
namespace {

const char kLongOption[] = "-l";

// findfirstUtf8 and zrutGlob take no empty directory: the empty one is the current one.
ZrUtf8String listedDir(const ZrUtf8String& dir) { return dir.isEmpty() ? ZrUtf8String(".") : dir; }

ZrUtf8String linkTarget(const _finddata_t& entry) {
  if (!(entry.attrib & kFindAttribLink)) return ZrUtf8String();
  const ZrUtf8String path = ZrUtf8String(entry.directory) + "/" + entry.name;
  char target[1024] = {};
  int length = sizeof target;
  if (!isSymbolicLink(path.c_str(), target, &length)) return ZrUtf8String();
  return ZrUtf8String(target);
}

ZrUtf8String longLine(const _finddata_t& entry) {
  const time_t written = static_cast<time_t>(entry.time_write);
  tm local{};
  localtime_r(&written, &local);
  char stamp[32] = {};
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
  char asText[32] = {};  // ctime's form, newline included
  ctime_r(&written, asText);
  const long long size = entry.size;
  const ZrUtf8String target = linkTarget(entry);
  if (target.isEmpty())
    return ZrUtf8String::format("%-40s  ||  %16lld Byte  ||  %s (%24s)  \r\n", entry.name, size,
                                stamp, asText);
  return ZrUtf8String::format("%-40s  ||  %16lld Byte  ||  %s (%24s)  ||  %-260s \r\n", entry.name,
                              size, stamp, asText, target.c_str());
}

ZrUtf8String linesOf(const ZrFindDataArray& found, const ZrUtf8String& option) {
  ZrUtf8String lines;
  for (const _finddata_t& entry : found) lines += formatListLine(entry, option);
  return lines;
}

// Every entry of `dir` in the order the directory gives them.
ZrFindDataArray readDirectory(const ZrUtf8String& dir, bool withDots) {
  ZrFindDataArray entries;
  _finddata_t record{};
  const intptr_t handle = findfirstUtf8(dir.c_str(), &record);
  if (handle == -1) return entries;
  do {
    const bool dots = std::strcmp(record.name, ".") == 0 || std::strcmp(record.name, "..") == 0;
    if (withDots || !dots) entries.append(record);
  } while (findnextUtf8(handle, &record) == 0);
  findcloseUtf8(handle);
  return entries;
}

}  // namespace

ZrUtf8String formatListLine(const _finddata_t& entry, const ZrUtf8String& option) {
  if (option.isEmpty()) return ZrUtf8String::format("%s\r\n", entry.name);
  if (strcasecmp(option.c_str(), kLongOption) == 0) return longLine(entry);
  return ZrUtf8String();
}

ZrUtf8String listDirectory(const ZrUtf8String& dir, const ZrUtf8String& first,
                           const ZrUtf8String& second) {
  const ZrUtf8String listed = listedDir(dir);
  const bool longForm = first == kLongOption;
  if (first.isEmpty() && second.isEmpty()) return linesOf(readDirectory(listed, true), "");
  if (longForm && second.isEmpty()) return linesOf(readDirectory(listed, false), kLongOption);
  if (!longForm && !second.isEmpty()) return ZrUtf8String();
  ZrFindDataArray found;
  zrutGlob(listed, longForm ? second : first, found, kGlobFiles);
  return linesOf(found, longForm ? kLongOption : "");
}

ZrUtf8String findFiles(const ZrUtf8String& dir, const ZrUtf8String& pattern) {
  ZrFindDataArray found;
  zrutGlob(listedDir(dir), pattern, found, kGlobFiles | kGlobRecursive);
  ZrUtf8String answer;
  for (const _finddata_t& entry : found) answer += ZrUtf8String(entry.name) + ";\r\n";
  return answer;
}

}  // namespace zrad::remote
