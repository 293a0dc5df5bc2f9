// zrutCopyFile of a 1 GiB file against cp.
//
// The source is written once in the scratch directory; each copy goes to a fresh name that
// is removed (untimed) afterwards.
#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <zrad/files.h>

#include "peer.h"

namespace {

const std::string& bigFile() {
  static const std::string path = [] {
    std::string file = filesbench::scratchDir() + "/big.bin";
    std::vector<char> block(1 << 20);
    int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    for (int i = 0; i < 1024; ++i) {
      for (size_t k = 0; k < block.size(); k += 64) block[k] = static_cast<char>(i + k);
      if (write(fd, block.data(), block.size()) != static_cast<ssize_t>(block.size())) break;
    }
    fsync(fd);  // no writeback of the source left to slow down whichever copy runs first
    close(fd);
    return file;
  }();
  return path;
}

void copyZrad(benchmark::State& state) {
  const ZrUtf8String from(bigFile().c_str());
  const std::string to = filesbench::scratchDir() + "/copy-zrad.bin";
  double cpu = 0;
  for (auto _ : state) {
    const double before = filesbench::threadCpuSeconds();
    if (!zrutCopyFile(from, to.c_str())) state.SkipWithError("copy failed");
    cpu += filesbench::threadCpuSeconds() - before;
    state.PauseTiming();
    unlink(to.c_str());
    state.ResumeTiming();
  }
  filesbench::reportCpu(state, cpu);
  state.SetBytesProcessed(state.iterations() * (int64_t(1) << 30));
}

void copyPeer(benchmark::State& state) {
  const std::string to = filesbench::scratchDir() + "/copy-cp.bin";
  double cpu = 0;
  for (auto _ : state) {
    if (!filesbench::runQuietly({"cp", "--preserve=timestamps", bigFile(), to}, cpu))
      state.SkipWithError("cp failed");
    state.PauseTiming();
    unlink(to.c_str());
    state.ResumeTiming();
  }
  filesbench::reportCpu(state, cpu);
  state.SetBytesProcessed(state.iterations() * (int64_t(1) << 30));
}

BENCHMARK(copyZrad)
    ->Name("copy 1GiB/zrad")
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(copyPeer)
    ->Name("copy 1GiB/peer")
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
