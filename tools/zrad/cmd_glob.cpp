// zrad glob: the entries of a directory whose names match a wildcard pattern.
//
// Prints one name per line, relative to DIR, in the order the directory lists them
// (a subdirectory's entries follow it with --recursive), or sorted with --sort.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <zrad/files.h>

#include "command.h"

using namespace zradtool;

namespace {

std::string directory, pattern;
bool recursive = false, dirs = false, sorted = false;

// Says so for every directory the search would enter but cannot read; true when there was one.
bool reportUnreadable() {
  ZrFindDataArray subdirectories;
  if (recursive) zrutGlob(ZrUtf8String(directory), "*", subdirectories, kGlobDirs | kGlobRecursive);
  std::vector<std::string> searched{directory};
  for (const _finddata_t& record : subdirectories) searched.push_back(directory + "/" + record.name);
  bool skipped = false;
  for (const std::string& path : searched) {
    _finddata_t record{};
    const intptr_t handle = findfirstUtf8(path.c_str(), &record);
    if (handle != -1) {
      findcloseUtf8(handle);
      continue;
    }
    fail("cannot read directory " + path, std::strerror(errno));
    skipped = true;
  }
  return skipped;
}

int run() {
  if (!zrutIsDir(ZrUtf8String(directory))) return fail("not a directory", directory);
  ZrFindDataArray found;
  zrutGlob(ZrUtf8String(directory), ZrUtf8String(pattern), found,
           kGlobFiles | (recursive ? kGlobRecursive : 0) | (dirs ? kGlobDirs : 0));
  std::vector<std::string> names;
  for (const _finddata_t& record : found)
    names.push_back(std::string(record.name) + ((record.attrib & kFindAttribDirectory) ? "/" : ""));
  if (sorted) std::sort(names.begin(), names.end());
  for (const std::string& name : names) std::printf("%s\n", name.c_str());
  return reportUnreadable() ? kFailed : kOk;
}

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("glob", "list the files of a directory that match a wildcard pattern");
  cmd->footer(
      "Prints the names of the files in DIR that match PATTERN, one a line, relative to DIR.\n"
      "PATTERN: * any run, ? one character, # one digit, ` takes the next character literally;\n"
      "a dot matches only a dot. Quote the pattern so the shell leaves it alone.\n"
      "Exit status 1 when DIR is not a directory or a directory could not be read (one line on\n"
      "stderr for each).");
  cmd->add_option("DIR", directory, "the directory to search")->required();
  cmd->add_option("PATTERN", pattern, "the wildcard pattern")->required();
  cmd->add_flag("--recursive", recursive, "search the subdirectories too (symbolic links are not followed)");
  cmd->add_flag("--dirs", dirs, "list matching directories as well as files");
  cmd->add_flag("--sort", sorted, "sort the names in byte order");
  onRun(cmd, run);
}

const Registration kRegistration("glob", add);

}  // namespace
