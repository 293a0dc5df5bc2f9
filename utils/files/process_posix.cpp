// Temporary names, shell commands and the library search path of the process.
//
// Process-wide values (the temporary directory, the library-path stack) are unsynchronised:
// the host sets them at start-up, on the thread that loads modules.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <zrad/files.h>
#include <zrplatform/module.h>

#include "files/content.h"
#include "files/shellcommand.h"
#include "log/logmsg.h"

static const char kLogSource[] = "utils/zrfiletools";

namespace {

ZrUtf8String& tempPath() {
  static ZrUtf8String path;
  return path;
}

bool existsIgnoringCase(const ZrUtf8String& path) {
  ZrUtf8String spelled;
  return zrutIsExistFileNoCaseSensitive(path, spelled);
}

// `format` with every "*" replaced by the counter (no printf: the pattern is the caller's).
ZrUtf8String nameFor(const ZrUtf8String& format, unsigned counter) {
  ZrUtf8String number = ZrUtf8String::format("%u", counter);
  ZrUtf8String name;
  for (char c : format.str()) {
    if (c == '*')
      name += number;
    else
      name += c;
  }
  return name;
}

}  // namespace

void setTempPath(const ZrUtf8String& directory) { tempPath() = directory; }

ZrUtf8String getTempPath() { return tempPath(); }

ZrUtf8String zrutMktempUTF8(const ZrUtf8String& pattern) {
  ZrUtf8String directory = getTempPath();
  ZrUtf8String format("*.tmp");
  if (pattern.find('*', 1) > 0) {
    directory = zrutGetParentDir(pattern);
    format = zrutGetLastFileNameInPath(pattern);
  }
  // An empty directory is the current one: it exists and needs no lookup.
  if (!directory.isEmpty() && !existsIgnoringCase(directory) && !zrutCreateDir(directory))
    return ZrUtf8String();
  // Without a "*" there is one candidate only.
  unsigned last = format.find('*') >= 0 ? ~0u : 1u;
  for (unsigned counter = 1; counter <= last; ++counter) {
    ZrUtf8String candidate = zrutCombinePath(directory, nameFor(format, counter));
    if (!existsIgnoringCase(candidate)) return candidate;
  }
  return ZrUtf8String();
}

ZrUtf8String zrutPipeCmd(const ZrUtf8String& command, ZrUtf8String& errorText) {
  ZrUtf8String directory = getTempPath().isEmpty() ? ZrUtf8String("/tmp") : getTempPath();
  ZrUtf8String errorFile = zrutMktempUTF8(zrutCombinePath(directory, "*.err"));
  ZrUtf8String line = errorFile.isEmpty() ? command : zrad::files::withStderrTo(command, errorFile);
  FILE* pipe = popen(line.c_str(), "r");
  if (!pipe) {
    errorText = command + "出错";
    ZRAD_LOG(3, kLogSource, "%s", errorText.c_str());
    return ZrUtf8String();
  }
  std::string output = zrad::files::readToEnd(pipe);
  pclose(pipe);
  if (FILE* captured = errorFile.isEmpty() ? nullptr : fopen(errorFile.c_str(), "rb")) {
    errorText += ZrUtf8String(zrad::files::readToEnd(captured));
    fclose(captured);
    remove(errorFile.c_str());
  }
  return ZrUtf8String(std::move(output));
}

bool zrutFileHasOpen(const ZrUtf8String& path) {
  // lsof never prints a newline inside a name, and grep would take each line of such a path
  // as a pattern of its own.
  if (path.isEmpty() || path.find('\n') >= 0) return false;
  FILE* pipe = popen(zrad::files::lsofCommand(path).c_str(), "r");
  if (!pipe) return false;
  bool any = false;
  char line[512];
  while (fgets(line, sizeof line, pipe)) any = true;
  pclose(pipe);
  return any;
}

bool zrutOpenPdfFile(const ZrUtf8String& path) {
  return system(zrad::files::openCommand(path).c_str()) == 0;
}

void zrutPushFindLibraryPath(const ZrUtf8String& directory) {
  zrPushModuleSearchPath(directory);
  const char* previous = getenv("LD_LIBRARY_PATH");
  ZrUtf8String value = directory + ":" + (previous ? previous : "");
  setenv("LD_LIBRARY_PATH", value.c_str(), 1);
}

void zrutPopFindLibraryPath() { zrPopModuleSearchPath(); }

void zrutGetFindPaths(ZrArray<ZrUtf8String>& /*paths*/, int /*kind*/) {}
