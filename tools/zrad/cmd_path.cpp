// zrad path: the library's path rules on paths given from the shell.
//
// Each operation maps onto one path function and prints its result on one line; an empty
// result prints an empty line, as the rules give it (the status stays 0).
#include <cstdio>
#include <string>

#include <zrad/files.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "path";

struct Operation {
  const char* name;
  size_t minArgs, maxArgs;
  ZrUtf8String (*apply)(const Args& operands);
};

ZrUtf8String combine(const Args& a) { return zrutCombinePath(a[0], a[1]); }
ZrUtf8String format(const Args& a) { return zrutFormatPath(a[0]); }
ZrUtf8String relate(const Args& a) { return zrutRelatePath(a[0], a[1]); }
ZrUtf8String absolute(const Args& a) {
  return a.size() == 1 ? zrutAbsolutePath(a[0]) : zrutAbsolutPath(a[0], a[1]);
}
ZrUtf8String ext(const Args& a) { return zrutGetFileExtName(a[0]); }
ZrUtf8String name(const Args& a) { return zrutGetFileName(a[0]); }

const Operation kOperations[] = {
    {"combine", 2, 2, combine}, {"format", 1, 1, format}, {"relate", 2, 2, relate},
    {"absolute", 1, 2, absolute}, {"ext", 1, 1, ext},       {"name", 1, 1, name},
};

int run(const Args& args);

const Family kFamily{
    kName, "path rules: combine, normalise, relate, resolve, take apart",
    "usage: zrad path OP ARGS...\n"
    "  combine BASE NAME      join NAME onto the directory BASE\n"
    "  format PATH            resolve \".\" and \"..\" in the text (\"\" when \"..\" climbs too far)\n"
    "  relate TARGET BASEFILE the path from the directory of BASEFILE to TARGET\n"
    "  absolute PATH          PATH resolved by the system (unchanged when it does not exist)\n"
    "  absolute PATH BASE     PATH applied to the directory BASE, as text only\n"
    "  ext PATH               the extension with its dot\n"
    "  name PATH              the last component\n"
    "  \"\\\" is accepted as a separator on input.\n",
    run};

int run(const Args& args) {
  if (wantsHelp(args)) {
    std::fputs(kFamily.usage, stdout);
    return kOk;
  }
  if (args.empty()) return usageError(kFamily, "expected an operation");
  for (const Operation& op : kOperations) {
    if (args[0] != op.name) continue;
    Args operands(args.begin() + 1, args.end());
    if (operands.size() < op.minArgs || operands.size() > op.maxArgs)
      return usageError(kFamily, std::string("wrong number of arguments for ") + op.name);
    std::printf("%s\n", op.apply(operands).c_str());
    return kOk;
  }
  return usageError(kFamily, "unknown operation " + args[0]);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace
