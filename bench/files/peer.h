// Benchmark helpers: running a peer program, scratch directories, and the ratio report.
//
// Every benchmark pair is named "<case>/zrad" and "<case>/peer"; after the run the main
// program prints zrad's time over the peer's for each case (the median when repeated), in
// real time and in CPU time (counter "cpu_ms": the calling thread's, or the peer process's).
#pragma once

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace filesbench {

// Runs the program with its arguments (no shell), its output thrown away; true when it exits 0.
// The CPU time it used (user and system) is added to `cpuSeconds`.
bool runQuietly(const std::vector<std::string>& argv, double& cpuSeconds);

// CPU time of the calling thread so far.
double threadCpuSeconds();

// Sets the "cpu_ms" counter: milliseconds of CPU per iteration.
void reportCpu(benchmark::State& state, double cpuSeconds);

// A scratch directory under /tmp, removed with everything in it at exit.
const std::string& scratchDir();

}  // namespace filesbench
