// Property-path lookups and typed accessors beside RapidJSON's JSON Pointer, case by case.
//
// Both sides hold the same document (five levels of Objects, eight properties at each level)
// and parse the path text on every call. Each case ends with the line
// "ratio <case>: zrad / rapidjson = T": our time over RapidJSON's, so below 1 means faster.
// Build with -DCMAKE_BUILD_TYPE=Release -DZRAD_BENCH=ON.
#include <zrad/json.h>

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <string>

#include "common/peer_ratio.h"

namespace {

// {"a":{"b":{"c":{"d":{"e":42,"v":0,...},...},...},...},...} with siblings "p0".."p6" at
// every level, so each step searches a map of eight names.
std::string documentText() {
  std::string text = "{\"e\":42,\"v\":0";
  for (int i = 0; i < 6; ++i) text += ",\"p" + std::to_string(i) + "\":" + std::to_string(i);
  text += "}";
  for (const char* name : {"d", "c", "b", "a"}) {
    std::string level = std::string("{\"") + name + "\":" + text;
    for (int i = 0; i < 7; ++i) level += ",\"p" + std::to_string(i) + "\":" + std::to_string(i);
    text = level + "}";
  }
  return text;
}

void getFiveSegmentsOurs(benchmark::State& state) {
  ZrJsonPtr tree = ZrJson::readjson(documentText().c_str());
  const ZrUtf8String path("a/b/c/d/e");
  for (auto _ : state) benchmark::DoNotOptimize(tree->quickGetProperty(path));
}

void getFiveSegmentsPeer(benchmark::State& state) {
  rapidjson::Document doc;
  doc.Parse(documentText().c_str());
  for (auto _ : state) benchmark::DoNotOptimize(rapidjson::GetValueByPointer(doc, "/a/b/c/d/e"));
}

void setGetIntOurs(benchmark::State& state) {
  ZrJsonPtr tree = ZrJson::readjson(documentText().c_str());
  int value = 0, out = 0;
  for (auto _ : state) {
    tree->SetDataI("a/b/c/d/v", ++value);
    tree->GetDataI("a/b/c/d/v", out);
    benchmark::DoNotOptimize(out);
  }
  if (out != value) state.SkipWithError("SetDataI/GetDataI lost the value");
}

void setGetIntPeer(benchmark::State& state) {
  rapidjson::Document doc;
  doc.Parse(documentText().c_str());
  int value = 0, out = 0;
  for (auto _ : state) {
    rapidjson::SetValueByPointer(doc, "/a/b/c/d/v", ++value);
    out = rapidjson::GetValueByPointer(doc, "/a/b/c/d/v")->GetInt();
    benchmark::DoNotOptimize(out);
  }
  if (out != value) state.SkipWithError("pointer set/get lost the value");
}

}  // namespace

BENCHMARK(getFiveSegmentsOurs)->Name("get_5_segments/zrad");
BENCHMARK(getFiveSegmentsPeer)->Name("get_5_segments/rapidjson");
BENCHMARK(setGetIntOurs)->Name("setdatai_getdatai/zrad");
BENCHMARK(setGetIntPeer)->Name("setdatai_getdatai/rapidjson");

ZRAD_BENCHMARK_MAIN();
