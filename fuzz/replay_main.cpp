// Replays files through a fuzz target's entry point, so that its seed corpus and the inputs
// kept under tests/data run in every test build, without libFuzzer. Before them come the empty
// input and every one-byte input, which each target must take.
//
//   replay_<target> DIR_OR_FILE...   runs every regular file found (directories recursively)
// Fails when no file was found: a corpus that went missing is a fault too.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fs = std::filesystem;

// Like libFuzzer, hands over a heap copy of exactly the input's size, never a null pointer
// (for the empty input too).
static void replay(const std::vector<char>& bytes) {
  std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), copy.get());
  LLVMFuzzerTestOneInput(copy.get(), bytes.size());
}

static void replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  replay(std::vector<char>{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
}

int main(int argc, char** argv) {
  replay(std::vector<char>());
  for (int byte = 0; byte < 256; ++byte) replay(std::vector<char>{static_cast<char>(byte)});
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    std::error_code error;
    fs::path root(argv[i]);
    if (fs::is_regular_file(root, error)) {
      replay(root);
      ++count;
    } else if (fs::is_directory(root, error)) {
      for (const auto& entry : fs::recursive_directory_iterator(root, error))
        if (entry.is_regular_file()) {
          replay(entry.path());
          ++count;
        }
    }
  }
  std::printf("%zu inputs replayed after the empty and the one-byte ones\n", count);
  return count ? 0 : 1;
}
