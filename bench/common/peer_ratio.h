// Side-by-side benchmarks: after the usual table, prints our time over each peer's time.
//
// Name the two sides of a comparison "<case>/zrad" and "<case>/<peer>" (for example
// "log_line/zrad" and "log_line/stdio"), then end the program with ZRAD_BENCHMARK_MAIN().
// The ratio uses the median when repetitions are asked for, else the single run:
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
      bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type == Run::RT_Aggregate && !median) continue;
      std::string name = run.run_name.str();
      size_t slash = name.rfind('/');
      if (slash == std::string::npos) continue;
      double perItem = run.GetAdjustedRealTime();
      auto& sides = m_cases[name.substr(0, slash)];
      std::string side = name.substr(slash + 1);
      if (median || !sides.count(side)) sides[side] = perItem;
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
