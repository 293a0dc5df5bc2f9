// zrutIsExistFileNoCaseSensitive on a path of 8 components, none spelled as on disk, against
// a plain std::filesystem lookup that lists each directory and compares names ignoring case.
#include <strings.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>
#include <zrad/files.h>

#include "peer.h"

namespace {

namespace fs = std::filesystem;

// The path on disk and the same path with every letter's case flipped.
struct Paths {
  std::string onDisk, asked;
};

const Paths& paths() {
  static const Paths p = [] {
    Paths made;
    std::string dir = filesbench::scratchDir() + "/Case";
    mkdir(dir.c_str(), 0755);
    std::string asked = dir;
    const char* parts[] = {"Alpha", "bravo", "Charlie", "delta", "Echo", "foxtrot", "Golf"};
    for (const char* part : parts) {
      dir += std::string("/") + part;
      mkdir(dir.c_str(), 0755);
      // Neighbours, so each directory lookup has entries to pass over.
      for (int i = 0; i < 30; ++i) mkdir((dir + "/other" + std::to_string(i)).c_str(), 0755);
    }
    made.onDisk = dir;
    made.asked = dir;
    // Flip the case of the 8 components below the scratch directory ("Case" .. "Golf").
    for (size_t i = filesbench::scratchDir().size(); i < made.asked.size(); ++i) {
      char& c = made.asked[i];
      if (c >= 'a' && c <= 'z')
        c = static_cast<char>(c - 32);
      else if (c >= 'A' && c <= 'Z')
        c = static_cast<char>(c + 32);
    }
    return made;
  }();
  return p;
}

// The peer: from the root, each component looked up in its directory, ignoring case.
bool lookUpWithFilesystem(const std::string& asked, std::string& found) {
  fs::path result = "/";
  for (const fs::path& part : fs::path(asked).relative_path()) {
    std::error_code error;
    fs::path exact = result / part;
    if (fs::exists(exact, error)) {
      result = exact;
      continue;
    }
    bool matched = false;
    for (const fs::directory_entry& entry : fs::directory_iterator(result, error)) {
      if (strcasecmp(entry.path().filename().c_str(), part.c_str()) == 0) {
        result = entry.path();
        matched = true;
        break;
      }
    }
    if (!matched) return false;
  }
  found = result.string();
  return true;
}

void nocaseZrad(benchmark::State& state) {
  const ZrUtf8String asked(paths().asked.c_str());
  ZrUtf8String found;
  const double cpuBefore = filesbench::threadCpuSeconds();
  for (auto _ : state)
    if (!zrutIsExistFileNoCaseSensitive(asked, found)) state.SkipWithError("not found");
  filesbench::reportCpu(state, filesbench::threadCpuSeconds() - cpuBefore);
  if (found.str() != paths().onDisk) state.SkipWithError("wrong spelling");
}

void nocasePeer(benchmark::State& state) {
  std::string found;
  const double cpuBefore = filesbench::threadCpuSeconds();
  for (auto _ : state)
    if (!lookUpWithFilesystem(paths().asked, found)) state.SkipWithError("not found");
  filesbench::reportCpu(state, filesbench::threadCpuSeconds() - cpuBefore);
  if (found != paths().onDisk) state.SkipWithError("wrong spelling");
}

BENCHMARK(nocaseZrad)->Name("nocase 8 components/zrad")->Unit(benchmark::kMicrosecond);
BENCHMARK(nocasePeer)->Name("nocase 8 components/peer")->Unit(benchmark::kMicrosecond);

}  // namespace
