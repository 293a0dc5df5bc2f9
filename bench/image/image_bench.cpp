// zrutImageConvert + reading every scanline of a 4096 x 4096 32-bit image, against memcpy of
// the same rows into the same row buffer. Bytes per second count the image's bytes.
//   ./image_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true
#include <cstring>
#include <vector>

#include <zrad/image.h>

#include "common/peer_ratio.h"

namespace {

constexpr int kSide = 4096;
constexpr size_t kRowBytes = size_t(kSide) * 4;

std::vector<unsigned char>& pixels() {
  static std::vector<unsigned char> data = [] {
    std::vector<unsigned char> bytes(kRowBytes * kSide);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 131);
    return bytes;
  }();
  return data;
}

void readAllRows(benchmark::State& state, unsigned flags) {
  ZrSmartPtr<ZrGiRasterImage> image =
      zrutImageWrap(pixels().data(), kSide, kSide, 32, nullptr, 0, nullptr);
  std::vector<uint8_t> row(kRowBytes);
  for (auto _ : state) {
    ZrSmartPtr<ZrGiRasterImage> view = zrutImageConvert(image, flags);
    for (int r = 0; r < kSide; ++r) view->scanLines(row.data(), r, 1);
    benchmark::DoNotOptimize(row.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kRowBytes) * kSide);
}

void BM_memcpy(benchmark::State& state) {
  std::vector<uint8_t> row(kRowBytes);
  const unsigned char* source = pixels().data();
  for (auto _ : state) {
    for (int r = 0; r < kSide; ++r) std::memcpy(row.data(), source + size_t(r) * kRowBytes, kRowBytes);
    benchmark::DoNotOptimize(row.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kRowBytes) * kSide);
}

}  // namespace

BENCHMARK_CAPTURE(readAllRows, swap_map, unsigned(kZrImageSwapRedBlue))->Name("swap_map/zrad")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_memcpy)->Name("swap_map/memcpy")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readAllRows, opaque_flip, unsigned(kZrImageOpaque | kZrImageFlipRows))->Name("opaque_flip/zrad")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_memcpy)->Name("opaque_flip/memcpy")->Unit(benchmark::kMillisecond);

ZRAD_BENCHMARK_MAIN()
