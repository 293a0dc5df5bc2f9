// Benchmark entry: runs every pair of cases and prints zrad's time over its peer's.
//
// Cases are named "<case>/zrad" and "<case>/peer"; with repetitions the fastest are compared.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <ctime>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include <benchmark/benchmark.h>

#include "peer.h"

extern char** environ;

namespace filesbench {

bool runQuietly(const std::vector<std::string>& argv, double& cpuSeconds) {
  std::vector<char*> args;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid;
  int rc = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return false;
  int status = 0;
  struct rusage usage {};
  if (wait4(pid, &status, 0, &usage) != pid) return false;
  cpuSeconds += usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6 + usage.ru_stime.tv_sec +
                usage.ru_stime.tv_usec / 1e6;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double threadCpuSeconds() {
  struct timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return now.tv_sec + now.tv_nsec / 1e9;
}

void reportCpu(benchmark::State& state, double cpuSeconds) {
  state.counters["cpu_ms"] =
      benchmark::Counter(cpuSeconds * 1e3, benchmark::Counter::kAvgIterations);
}

namespace {

struct Scratch {
  std::string path;
  Scratch() {
    std::string pattern = "/tmp/zradbench-XXXXXX";
    if (mkdtemp(&pattern[0])) path = pattern;
  }
  ~Scratch() {
    std::error_code ignored;
    if (!path.empty()) std::filesystem::remove_all(path, ignored);
  }
};

}  // namespace

const std::string& scratchDir() {
  static Scratch scratch;
  return scratch.path;
}

}  // namespace filesbench

namespace {

// Keeps each case's real time and CPU counter (the median aggregate when there is one) for the
// ratio report.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      const std::string& name = run.run_name.function_name;  // "<case>/zrad", no suffixes
      bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (!median && (run.run_type != Run::RT_Iteration || m_fromMedian.count(name))) continue;
      if (median) m_fromMedian.insert(name);
      auto cpu = run.counters.find("cpu_ms");
      m_times[name] = {run.GetAdjustedRealTime(),
                       cpu == run.counters.end() ? 0.0 : cpu->second.value};
    }
  }

  void printRatios() const {
    std::printf("\nratio zrad / peer%s:           real    cpu\n",
                m_fromMedian.empty() ? "" : " (medians)");
    const std::string suffix = "/zrad";
    for (const auto& [name, times] : m_times) {
      if (name.size() < suffix.size() ||
          name.compare(name.size() - suffix.size(), suffix.size(), suffix))
        continue;
      std::string base = name.substr(0, name.size() - suffix.size());
      auto peer = m_times.find(base + "/peer");
      if (peer == m_times.end() || peer->second.first <= 0) continue;
      std::printf("  %-28s %6.2fx", base.c_str(), times.first / peer->second.first);
      if (peer->second.second > 0) std::printf(" %6.2fx", times.second / peer->second.second);
      std::printf("\n");
    }
  }

 private:
  std::map<std::string, std::pair<double, double>> m_times;  // real time, CPU ms
  std::set<std::string> m_fromMedian;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios();
  benchmark::Shutdown();
  return 0;
}
