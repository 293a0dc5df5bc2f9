// zrad command families: the registry, the run of the chosen subcommand and its messages.
#include "command.h"

#include <map>

namespace zradtool {

namespace {

using Families = std::map<std::string, void (*)(CLI::App&)>;

Families& registry() {
  static Families all;
  return all;
}

const CLI::App* running = nullptr;
int status = kOk;

}  // namespace

Registration::Registration(const char* family, void (*add)(CLI::App& zrad)) { registry()[family] = add; }

void addFamilies(CLI::App& zrad) {
  for (const auto& family : registry()) family.second(zrad);
}

int exitStatus() { return status; }

void onRun(CLI::App* cmd, std::function<int()> body) {
  cmd->callback([cmd, body = std::move(body)] {
    running = cmd;
    status = body();
  });
}

std::string commandPath(const CLI::App* cmd) {
  std::string path;
  for (; cmd; cmd = cmd->get_parent()) path = cmd->get_name() + (path.empty() ? "" : " ") + path;
  return path;
}

std::string usageLine(const CLI::App* cmd) {
  auto formatter = std::dynamic_pointer_cast<CLI::Formatter>(cmd->get_formatter());
  std::string line = formatter ? formatter->make_usage(cmd, commandPath(cmd)) : commandPath(cmd);
  while (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

int fail(const std::string& what, const std::string& cause) {
  std::fprintf(stderr, "%s: %s%s%s\n", commandPath(running).c_str(), what.c_str(),
               cause.empty() ? "" : ": ", cause.c_str());
  return kFailed;
}

int usageError(const std::string& what) {
  std::fprintf(stderr, "%s: %s\n%s\n", commandPath(running).c_str(), what.c_str(), usageLine(running).c_str());
  return kUsage;
}

}  // namespace zradtool
