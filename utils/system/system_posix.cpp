// System information that reads the machine: os-release, process status files, sysinfo.
//
// Both files are read through one bounded line reader, so a hostile or endless file costs at
// most kMaxFileBytes of reading and kMaxLineBytes of memory. The exported operations live here.
#include <sys/sysinfo.h>

#include <cstdio>
#include <string>

#include "system/distro.h"
#include "system/osrelease.h"
#include "system/procstatus.h"

namespace zrad::osinfo {
namespace {

const char kOsReleasePath[] = "/etc/os-release";

// Real os-release and status lines are far shorter; a longer line is skipped whole.
constexpr size_t kMaxLineBytes = 64 * 1024;
// Reading stops here, so a file that never ends (a device, say) cannot hold the caller.
constexpr size_t kMaxFileBytes = 4 * 1024 * 1024;

// Hands each line of the file at `path`, without its "\n", to `onLine` until it returns false.
// False when the file cannot be opened or a read fails (a directory, a process that is gone).
template <class OnLine>
bool forEachLine(const char* path, OnLine onLine) {
  FILE* file = std::fopen(path, "rb");
  if (!file) return false;
  std::string line;
  bool overlong = false;
  bool more = true;
  size_t total = 0;
  char block[4096];
  size_t got = 0;
  while (more && total < kMaxFileBytes && (got = std::fread(block, 1, sizeof block, file)) > 0) {
    total += got;
    for (size_t i = 0; more && i < got; ++i) {
      if (block[i] == '\n') {
        if (!overlong) more = onLine(ZrUtf8String(line));
        line.clear();
        overlong = false;
      } else if (line.size() == kMaxLineBytes) {
        overlong = true;  // drop what was gathered and ignore the rest of this line
        line.clear();
      } else if (!overlong) {
        line += block[i];
      }
    }
  }
  const bool readable = !std::ferror(file);
  if (readable && more && !overlong && !line.empty()) onLine(ZrUtf8String(line));
  std::fclose(file);
  return readable;
}

}  // namespace

void readOsRelease(const char* path, OSRELEASEINFO& info) {
  info.OS_FAMILY = "Linux";
  forEachLine(path, [&info](const ZrUtf8String& line) {
    applyOsReleaseLine(line, info);
    return true;
  });
}

bool readProcessStatus(const char* path, PROCESSMEMORYINFO* info) {
  if (!info) return false;
  bool readable = true;
  const bool opened = forEachLine(path, [info, &readable](const ZrUtf8String& line) {
    readable = applyStatusLine(line, *info);
    return readable;
  });
  return opened && readable;
}

ZrUtf8String chooseFromFile(Choice choice, const char* path) {
  OSRELEASEINFO info;
  readOsRelease(path, info);
  return chooseFor(choice, info);
}

}  // namespace zrad::osinfo

using namespace zrad::osinfo;

void zrutGetOSVersionInfo(OSRELEASEINFO& info) { readOsRelease(kOsReleasePath, info); }

ZrUtf8String zrutGetPkgFormat() { return chooseFromFile(Choice::kPkgFormat, kOsReleasePath); }

ZrUtf8String zrutGetDefaultTextEditor() {
  return chooseFromFile(Choice::kTextEditor, kOsReleasePath);
}

ZrUtf8String zrutGetDefaultExplorer() { return chooseFromFile(Choice::kExplorer, kOsReleasePath); }

ZrUtf8String zrutGetDefaultPaint() { return chooseFromFile(Choice::kPaint, kOsReleasePath); }

bool zrutGetProcessMemoryInfo(int processId, PROCESSMEMORYINFO* info) {
  if (!info) return false;
  const ZrUtf8String path = ZrUtf8String::format("/proc/%d/status", processId);
  return readProcessStatus(path.c_str(), info);
}

int zrutGetSysMemoryInfo(struct sysinfo& info) { return ::sysinfo(&info); }
