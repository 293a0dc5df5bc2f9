// zrad glob: the entries of a directory whose names match a wildcard pattern.
//
// Prints one name per line, relative to DIR, in the order the directory lists them
// (a subdirectory's entries follow it with --recursive).
#include <cstdio>
#include <string>
#include <vector>

#include <zrad/files.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "glob";

int run(const Args& args);

const Family kFamily{
    kName, "list the files of a directory that match a wildcard pattern",
    "usage: zrad glob DIR PATTERN [--recursive] [--dirs]\n\n"
    "Prints the names of the files in DIR that match PATTERN, one a line, relative to DIR.\n"
    "PATTERN: * any run, ? one character, # one digit, ` takes the next character literally;\n"
    "a dot matches only a dot. Quote the pattern so the shell leaves it alone.\n"
    "  --recursive  search the subdirectories too (symbolic links are not followed)\n"
    "  --dirs       list matching directories as well as files\n"
    "Exit status 1 when DIR is not a directory.\n",
    run};

int run(const Args& args) {
  std::vector<std::string> operands;
  int flags = kGlobFiles;
  for (const std::string& arg : args) {
    if (arg == "--recursive")
      flags |= kGlobRecursive;
    else if (arg == "--dirs")
      flags |= kGlobDirs;
    else if (arg.size() > 1 && arg[0] == '-')
      return usageError(kFamily, "unknown option: " + arg);
    else
      operands.push_back(arg);
  }
  if (operands.size() != 2) return usageError(kFamily, "needs DIR and PATTERN");
  const ZrUtf8String directory(operands[0]);
  if (!zrutIsDir(directory)) return fail(kName, "not a directory: " + operands[0]);
  ZrFindDataArray found;
  zrutGlob(directory, ZrUtf8String(operands[1]), found, flags);
  for (const _finddata_t& record : found)
    std::printf("%s%s\n", record.name, (record.attrib & kFindAttribDirectory) ? "/" : "");
  return kOk;
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
