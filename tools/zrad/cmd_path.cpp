// zrad path: the library's path rules on paths given from the shell.
//
// Each operation maps onto one path function and prints its result on one line; an empty
// result prints an empty line, as the rules give it (the status stays 0).
#include <cstdio>
#include <string>
#include <vector>

#include <zrad/files.h>

#include "command.h"

using namespace zradtool;

namespace {

using Operands = std::vector<std::string>;

struct Operation {
  const char* name;
  const char* help;
  std::vector<const char*> operands;  // a name ending in '?' is optional
  ZrUtf8String (*apply)(const Operands& a);
};

ZrUtf8String combine(const Operands& a) { return zrutCombinePath(a[0], a[1]); }
ZrUtf8String format(const Operands& a) { return zrutFormatPath(a[0]); }
ZrUtf8String relate(const Operands& a) { return zrutRelatePath(a[0], a[1]); }
ZrUtf8String absolute(const Operands& a) {
  return a[1].empty() ? zrutAbsolutePath(a[0]) : zrutAbsolutPath(a[0], a[1]);
}
ZrUtf8String ext(const Operands& a) { return zrutGetFileExtName(a[0]); }
ZrUtf8String name(const Operands& a) { return zrutGetFileName(a[0]); }

const Operation kOperations[] = {
    {"combine", "join NAME onto the directory BASE (\"a/\" + \"b/\" => \"ab/\": only NAME's last "
                "character decides)", {"BASE", "NAME"}, combine},
    {"format", "resolve \".\" and \"..\" in the text, joining the components as the library does "
               "(\"a\\b//c/\" => \"ab/c/\"; \"\" when \"..\" climbs too far)", {"PATH"}, format},
    {"relate", "the path from the directory of BASEFILE to TARGET", {"TARGET", "BASEFILE"}, relate},
    {"absolute", "PATH resolved by the system (unchanged when it does not exist), or applied to "
                 "the directory BASE as text only", {"PATH", "BASE?"}, absolute},
    {"ext", "the extension with its dot", {"PATH"}, ext},
    {"name", "the last component", {"PATH"}, name},
};

// One value per operand of each operation, filled by the parser.
Operands values[std::size(kOperations)];

void add(CLI::App& zrad) {
  CLI::App* cmd = zrad.add_subcommand("path", "path rules: combine, normalise, relate, resolve, take apart");
  cmd->footer("\"\\\" is accepted as a separator on input.");
  cmd->require_subcommand(1);
  for (size_t i = 0; i < std::size(kOperations); ++i) {
    const Operation& op = kOperations[i];
    CLI::App* sub = cmd->add_subcommand(op.name, op.help);
    values[i].resize(op.operands.size());
    for (size_t k = 0; k < op.operands.size(); ++k) {
      std::string operand = op.operands[k];
      const bool optional = operand.back() == '?';
      if (optional) operand.pop_back();
      CLI::Option* option = sub->add_option(operand, values[i][k]);
      if (!optional) option->required();
    }
    onRun(sub, [i] {
      std::printf("%s\n", kOperations[i].apply(values[i]).c_str());
      return kOk;
    });
  }
}

const Registration kRegistration("path", add);

}  // namespace
