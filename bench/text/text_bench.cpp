// Path and text services side by side with the standard library doing the same job.
//
// Cases come in pairs "<case>/zrad" and "<case>/std"; after the table the shared reporter
// prints, per case, our time over the standard library's (the fastest of the repetitions).
#include <time.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <zrad/files.h>
#include <zrad/text.h>

#include "common/peer_ratio.h"

namespace {

const char kCsvLine[] =
    "id,name,layer,color,linetype,lineweight,x,y,z,angle,scale,text,style,height,width,oblique,"
    "mirror,align,bold,italic,underline,font,code,handle,owner,block,visible,locked,frozen,plot";
const char* const kNumbers[] = {"12", "-1.5", " + 7 ", ".25", "1e5", "abc", "3.14159", "5."};
const char kPath[] = "/home/user/drawings/./project/../project/sheets/a/../b/plan.dwg";
const char kBaseFile[] = "/home/user/drawings/project/sheets/b/plan.dwg";
const char kTarget[] = "/home/user/drawings/project/blocks/doors/single.dwg";
const char kTime[] = "2020-01-02 03:04:05";

void splitOurs(benchmark::State& state) {
  for (auto _ : state) {
    ZrArray<ZrUtf8String> fields;
    zrutSplitString(kCsvLine, ",", fields);
    benchmark::DoNotOptimize(fields.length());
  }
}
void splitStd(benchmark::State& state) {
  const std::string line = kCsvLine;
  for (auto _ : state) {
    std::vector<std::string> fields;
    for (size_t start = 0, end; start < line.size(); start = end + 1) {
      end = line.find_first_of(',', start);
      if (end == std::string::npos) end = line.size();
      if (end > start) fields.push_back(line.substr(start, end - start));
    }
    benchmark::DoNotOptimize(fields.size());
  }
}

void isDoubleOurs(benchmark::State& state) {
  std::vector<ZrUtf8String> texts(std::begin(kNumbers), std::end(kNumbers));
  for (auto _ : state)
    for (const ZrUtf8String& t : texts) benchmark::DoNotOptimize(zrutIsDouble(t));
}
void isDoubleStd(benchmark::State& state) {  // strtod and a look at where it stopped
  for (auto _ : state)
    for (const char* t : kNumbers) {
      char* end = nullptr;
      std::strtod(t, &end);
      benchmark::DoNotOptimize(end != t && *end == 0);
    }
}

void formatPathOurs(benchmark::State& state) {
  ZrUtf8String path = kPath;
  for (auto _ : state) benchmark::DoNotOptimize(zrutFormatPath(path));
}
void formatPathStd(benchmark::State& state) {
  std::filesystem::path path = kPath;
  for (auto _ : state) benchmark::DoNotOptimize(path.lexically_normal());
}

void relatePathOurs(benchmark::State& state) {
  ZrUtf8String target = kTarget, base = kBaseFile;
  for (auto _ : state) benchmark::DoNotOptimize(zrutRelatePath(target, base));
}
void relatePathStd(benchmark::State& state) {
  std::filesystem::path target = kTarget, base = std::filesystem::path(kBaseFile).parent_path();
  for (auto _ : state) benchmark::DoNotOptimize(target.lexically_relative(base));
}

void strToTimeOurs(benchmark::State& state) {
  ZrUtf8String text = kTime;
  for (auto _ : state) benchmark::DoNotOptimize(zrutStrToTime(text));
}
void strToTimeStd(benchmark::State& state) {
  for (auto _ : state) {
    std::tm fields{};
    strptime(kTime, "%Y-%m-%d %H:%M:%S", &fields);
    benchmark::DoNotOptimize(timegm(&fields));
  }
}

BENCHMARK(splitOurs)->Name("split/zrad");
BENCHMARK(splitStd)->Name("split/std");
BENCHMARK(isDoubleOurs)->Name("isDouble/zrad");
BENCHMARK(isDoubleStd)->Name("isDouble/std");
BENCHMARK(formatPathOurs)->Name("formatPath/zrad");
BENCHMARK(formatPathStd)->Name("formatPath/std");
BENCHMARK(relatePathOurs)->Name("relatePath/zrad");
BENCHMARK(relatePathStd)->Name("relatePath/std");
BENCHMARK(strToTimeOurs)->Name("strToTime/zrad");
BENCHMARK(strToTimeStd)->Name("strToTime/std");

}  // namespace

ZRAD_BENCHMARK_MAIN()
