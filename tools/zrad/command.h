// zrad command families: how a family registers itself with the tool.
//
// Each family lives in one cmd_<family>.cpp that defines a `Family` and registers it with a
// static `FamilyRegistration`; main.cpp dispatches `zrad <family> ARGS...` to it.
#pragma once

#include <string>
#include <vector>

namespace zradtool {

enum ExitStatus { kOk = 0, kFailed = 1, kUsage = 2 };

using Args = std::vector<std::string>;

struct Family {
  const char* name;     // the word after `zrad`
  const char* summary;  // one line for `zrad help`
  const char* usage;    // full usage text for `zrad <family> --help`
  int (*run)(const Args& args);  // args after the family name; returns an ExitStatus
};

struct FamilyRegistration {
  explicit FamilyRegistration(const Family& family);
};

// Every registered family, sorted by name.
const std::vector<Family>& families();

// True when args hold "--help" or "-h": the family then prints its usage and returns kOk.
bool wantsHelp(const Args& args);

// Prints "zrad <family>: <message>" on stderr and returns kFailed.
int fail(const char* family, const std::string& message);

// Prints the message and the family's usage on stderr and returns kUsage.
int usageError(const Family& family, const std::string& message);

}  // namespace zradtool
