// A console reporter that also prints, for every benchmark case, our speed over the peer's.
//
// Cases are registered in pairs named "<case>:ours" and "<case>:openssl"; the ratio uses CPU
// time per iteration, the median when repetitions are asked for.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Times { double ours = 0, peer = 0; bool oursMedian = false, peerMedian = false; };
  std::map<std::string, Times> cases_;
};
