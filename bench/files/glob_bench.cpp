// zrutGlob, recursive, over about 50,000 files in 2,000 directories, against find -name.
//
// The tree is made once in the scratch directory: 40 directories of 50 subdirectories, each
// holding 25 files whose extensions cycle through five kinds.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include <benchmark/benchmark.h>
#include <zrad/files.h>

#include "peer.h"

namespace {

const std::string& tree() {
  static const std::string root = [] {
    const char* kinds[] = {"txt", "dat", "dwg", "png", "log"};
    std::string dir = filesbench::scratchDir() + "/tree";
    mkdir(dir.c_str(), 0755);
    char path[512];
    for (int top = 0; top < 40; ++top) {
      std::snprintf(path, sizeof path, "%s/d%02d", dir.c_str(), top);
      mkdir(path, 0755);
      for (int sub = 0; sub < 50; ++sub) {
        std::snprintf(path, sizeof path, "%s/d%02d/s%02d", dir.c_str(), top, sub);
        mkdir(path, 0755);
        for (int f = 0; f < 25; ++f) {
          std::snprintf(path, sizeof path, "%s/d%02d/s%02d/n%05d.%s", dir.c_str(), top, sub,
                        (top * 50 + sub) * 25 + f, kinds[f % 5]);
          close(open(path, O_WRONLY | O_CREAT, 0644));
        }
      }
    }
    return dir;
  }();
  return root;
}

void globZrad(benchmark::State& state, const char* pattern) {
  const ZrUtf8String dir(tree().c_str());
  int found = 0;
  const double cpuBefore = filesbench::threadCpuSeconds();
  for (auto _ : state) {
    ZrFindDataArray records;
    found = zrutGlob(dir, pattern, records, kGlobFiles | kGlobRecursive);
    benchmark::DoNotOptimize(found);
  }
  filesbench::reportCpu(state, filesbench::threadCpuSeconds() - cpuBefore);
  state.counters["found"] = found;
}

void globPeer(benchmark::State& state, const char* pattern) {
  const std::string dir = tree();
  double cpu = 0;
  for (auto _ : state)
    if (!filesbench::runQuietly({"find", dir, "-name", pattern}, cpu))
      state.SkipWithError("find failed");
  filesbench::reportCpu(state, cpu);
}

// A fifth of the files match; then every file matches, so every entry is returned and stat-ed.
const bool kRegistered = [] {
  for (const char* pattern : {"*.dwg", "*"}) {
    const std::string name = std::string("glob ") + pattern;
    benchmark::RegisterBenchmark((name + "/zrad").c_str(), globZrad, pattern)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    benchmark::RegisterBenchmark((name + "/peer").c_str(), globPeer, pattern)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
  return true;
}();

}  // namespace
