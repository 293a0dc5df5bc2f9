// RatioReporter: collects the CPU time of each side of a case and prints the ratios last.
#include "ratio_reporter.h"

#include <cstdio>

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    const bool median = run.run_type == Run::RT_Aggregate;
    if (run.error_occurred || (median && run.aggregate_name != "median")) continue;
    const std::string& name = run.run_name.function_name;
    const size_t colon = name.rfind(':');
    if (colon == std::string::npos) continue;
    Times& times = cases_[name.substr(0, colon)];
    const bool ours = name.compare(colon + 1, std::string::npos, "ours") == 0;
    double& slot = ours ? times.ours : times.peer;
    bool& fromMedian = ours ? times.oursMedian : times.peerMedian;
    if (median || !fromMedian) slot = run.GetAdjustedCPUTime();
    fromMedian = fromMedian || median;
  }
}

void RatioReporter::Finalize() {
  ConsoleReporter::Finalize();
  std::printf("\nspeed of ours relative to OpenSSL (CPU time, >1 means faster):\n");
  for (const auto& [name, times] : cases_)
    if (times.ours > 0 && times.peer > 0)
      std::printf("  %-28s %.2fx\n", name.c_str(), times.peer / times.ours);
}
