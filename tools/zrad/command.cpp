// zrad command families: the registry and the shared ways of answering.
#include "command.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace zradtool {

static std::vector<Family>& registry() {
  static std::vector<Family> all;
  return all;
}

FamilyRegistration::FamilyRegistration(const Family& family) {
  auto& all = registry();
  auto at = std::lower_bound(all.begin(), all.end(), family, [](const Family& a, const Family& b) {
    return std::strcmp(a.name, b.name) < 0;
  });
  all.insert(at, family);
}

const std::vector<Family>& families() { return registry(); }

bool wantsHelp(const Args& args) {
  return std::any_of(args.begin(), args.end(),
                     [](const std::string& a) { return a == "--help" || a == "-h"; });
}

int fail(const char* family, const std::string& message) {
  std::fprintf(stderr, "zrad %s: %s\n", family, message.c_str());
  return kFailed;
}

int usageError(const Family& family, const std::string& message) {
  std::fprintf(stderr, "zrad %s: %s\n\n%s", family.name, message.c_str(), family.usage);
  return kUsage;
}

}  // namespace zradtool
