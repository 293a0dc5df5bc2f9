// Side-by-side benchmarks: after the usual table, prints our time over each peer's time.
//
// Name the two sides of a comparison "<case>/zrad" and "<case>/<peer>" (for example
// "log_line/zrad" and "log_line/stdio"), then end the program with ZRAD_BENCHMARK_MAIN().
// Each side counts with its fastest repetition: on a shared machine the other tenants only ever
// add time, so the minimum is the steadiest estimate of the code's own cost. Ask for several
// (--benchmark_repetitions=5, --benchmark_enable_random_interleaving=true spreads the
// disturbances over both sides):
//   ratio log_line: zrad / stdio = 0.48x
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace zradbench {

class PeerRatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      std::string name = run.run_name.str();
      size_t slash = name.rfind('/');
      if (slash == std::string::npos) continue;
      double time = run.GetAdjustedRealTime();
      auto [side, fresh] = m_cases[name.substr(0, slash)].emplace(name.substr(slash + 1), time);
      if (!fresh && time < side->second) side->second = time;
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const auto& [name, sides] : m_cases) {
      auto ours = sides.find("zrad");
      if (ours == sides.end()) continue;
      for (const auto& [peer, time] : sides)
        if (peer != "zrad" && time > 0)
          std::printf("ratio %s: zrad / %s = %.2fx\n", name.c_str(), peer.c_str(), ours->second / time);
    }
  }

 private:
  std::map<std::string, std::map<std::string, double>> m_cases;
};

}  // namespace zradbench

#define ZRAD_BENCHMARK_MAIN()                                  \
  int main(int argc, char** argv) {                            \
    benchmark::Initialize(&argc, argv);                        \
    zradbench::PeerRatioReporter reporter;                     \
    benchmark::RunSpecifiedBenchmarks(&reporter);              \
    benchmark::Shutdown();                                     \
    return 0;                                                  \
  }
