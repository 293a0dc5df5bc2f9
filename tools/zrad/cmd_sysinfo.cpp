// zrad sysinfo: the release record, package format, default programs and memory figures.
//
// Prints one "key=value" line per fact, release values exactly as the os-release file holds
// them, so scripts can pick lines with grep or cut.
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include <zrad/system.h>

#include "command.h"

using namespace zradtool;

namespace {

void printLine(const char* key, const char* value) { std::printf("%s=%s\n", key, value); }

void printRelease() {
  OSRELEASEINFO info;
  zrutGetOSVersionInfo(info);
  const std::pair<const char*, const ZrUtf8String*> fields[] = {
      {"OS_FAMILY", &info.OS_FAMILY},
      {"NAME", &info.NAME},
      {"VERSION", &info.VERSION},
      {"ID", &info.ID},
      {"ID_LINK", &info.ID_LINK},
      {"VERSION_CODENAME", &info.VERSION_CODENAME},
      {"VERSION_ID", &info.VERSION_ID},
      {"PRETTY_NAME", &info.PRETTY_NAME},
      {"ANSI_COLOR", &info.ANSI_COLOR},
      {"CPE_NAME", &info.CPE_NAME},
      {"HOME_URL", &info.HOME_URL},
      {"DOCUMENTATION_URL", &info.DOCUMENTATION_URL},
      {"SUPPORT_URL", &info.SUPPORT_URL},
      {"BUG_REPORT_URL", &info.BUG_REPORT_URL},
      {"PRIVACY_POLICY_URL", &info.PRIVACY_POLICY_URL},
      {"BUILD_ID", &info.BUILD_ID},
      {"VARIANT", &info.VARIANT},
      {"VARIANT_ID", &info.VARIANT_ID},
      {"LOGO", &info.LOGO},
  };
  for (const auto& field : fields) printLine(field.first, field.second->c_str());
}

void printChoices() {
  printLine("pkg-format", zrutGetPkgFormat().c_str());
  printLine("text-editor", zrutGetDefaultTextEditor().c_str());
  printLine("explorer", zrutGetDefaultExplorer().c_str());
  printLine("paint", zrutGetDefaultPaint().c_str());
}

void printKilobytes(const char* key, unsigned long long kb) {
  std::printf("%s=%llu kB\n", key, kb);
}

// Both memory records are read before anything is printed, so a failed run prints only its error.
int printAll(int pid) {
  PROCESSMEMORYINFO process;
  if (!zrutGetProcessMemoryInfo(pid, &process))
    return fail("cannot read the memory figures of process " + std::to_string(pid));
  struct sysinfo system {};
  if (zrutGetSysMemoryInfo(system) != 0)
    return fail("cannot read the system memory figures");
  printRelease();
  printChoices();
  std::printf("pid=%d\n", pid);
  printKilobytes("VmRSS", process.VmRSS);
  printKilobytes("VmPeak", process.VmPeak);
  printKilobytes("VmHWM", process.VmHWM);
  const unsigned long long unit = system.mem_unit ? system.mem_unit : 1;
  printKilobytes("MemTotal", system.totalram * unit / 1024);
  printKilobytes("MemFree", system.freeram * unit / 1024);
  return kOk;
}

void add(CLI::App& zrad) {
  static int pid = static_cast<int>(getpid());
  CLI::App* cmd = zrad.add_subcommand("sysinfo", "operating-system release, package format, default programs, memory");
  cmd->footer(
      "Prints key=value lines: the fields of /etc/os-release as stored (OS_FAMILY, NAME, ...),\n"
      "pkg-format, text-editor, explorer and paint for this distribution (empty when unknown),\n"
      "the memory figures of process PID (default: zrad itself) and of the system.");
  cmd->add_option("--pid", pid, "the process whose memory figures to print")->check(CLI::NonNegativeNumber);
  onRun(cmd, [] { return printAll(pid); });
}

const Registration kRegistration("sysinfo", add);

}  // namespace
