// Element-tree reading and writing beside RapidJSON and nlohmann::json, on four generated
// documents of a few MB: a feed of small objects with strings, geographic outlines (many doubles
// in nested arrays), a deep configuration tree and a drawing's document model (entities of 5 to
// 20 named members, mixed scalars, arrays of points, a few long strings).
//
// Cases (each line "ratio <case>: zrad / <peer> = T", below 1 means faster):
//   read_<doc>      text to tree beside RapidJSON's DOM parse and nlohmann's parse; dropping the
//                   trees is not timed (on any side)
//   readfree_<doc>  the same with the trees dropped in the timed loop
//   write_<doc>     tree to text beside RapidJSON's Writer over its DOM
//   binwrite_<doc>  our binary write beside our own text write ("text" side)
//   binread_<doc>   our binary read beside our own text read (dropping the trees not timed)
//   clone_<doc>     a deep copy of the tree beside RapidJSON's CopyFrom and nlohmann's copy
//                   (dropping the copies not timed)
//   equal_<doc>     comparing the tree with an equal copy beside RapidJSON's and nlohmann's ==
//                   (bEqual matches Array items at any position, trying the same position first)
//   object_insert   100,000 names set one by one in a scrambled order into one object, beside
//                   nlohmann's object (a std::map); dropping them not timed
// Each read row also shows one read of its document in a new process, whose heap no tree has
// used yet: fresh_ms (the read), fresh_free_ms (dropping the tree) and peak_MB (the growth of
// the resident set during the read). They are printed again side by side at the end:
//   fresh read_feed: zrad / rapidjson = 1.10x read, 1.40x read+free, 2.95x peak (19.5 MB / 6.6 MB)
// Run with --benchmark_enable_random_interleaving=true for trees built in a heap that other
// trees have used, as in a long-running application.
// Build with -DCMAKE_BUILD_TYPE=Release -DZRAD_BENCH=ON -DZRAD_TESTS=OFF.
#include <zrad/json.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "common/peer_ratio.h"

namespace {

// A small deterministic generator, so every run measures the same documents.
struct Lcg {
  uint64_t x = 0x9E3779B97F4A7C15ull;
  uint32_t next() { return static_cast<uint32_t>((x = x * 6364136223846793005ull + 1442695040888963407ull) >> 33); }
  double unit() { return next() / 4294967296.0; }
};

std::string feed() {
  Lcg r;
  std::string s = "[";
  char buf[512];
  for (int i = 0; i < 9000; ++i) {
    std::snprintf(buf, sizeof buf,
                  "%s{\"id\":%u%u,\"created_at\":\"Mon Nov %02u 10:%02u:00 +0000 2026\",\"text\":\"Post number %d "
                  "with some words, a \\\"quote\\\" and caf\\u00e9 #tag%u\",\"user\":{\"id\":%u,\"name\":\"User %u\","
                  "\"screen_name\":\"user_%u\",\"followers_count\":%u,\"verified\":%s,\"lang\":\"en\"},"
                  "\"retweet_count\":%u,\"favorite_count\":%u,\"favorited\":false,\"entities\":{\"hashtags\":"
                  "[\"tag%u\",\"news\"],\"urls\":[]},\"geo\":null}",
                  i ? "," : "", r.next(), r.next() % 1000, r.next() % 28 + 1, r.next() % 60, i, r.next() % 100,
                  r.next(), r.next() % 5000, r.next() % 5000, r.next() % 100000, r.next() % 2 ? "true" : "false",
                  r.next() % 1000, r.next() % 1000, r.next() % 50);
    s += buf;
  }
  return s + "]";
}

std::string outlines() {
  Lcg r;
  std::string s = "{\"type\":\"FeatureCollection\",\"features\":[";
  char buf[64];
  for (int f = 0; f < 300; ++f) {
    s += f ? "," : "";
    s += "{\"type\":\"Feature\",\"properties\":{\"name\":\"region " + std::to_string(f) +
         "\"},\"geometry\":{\"type\":\"Polygon\",\"coordinates\":[";
    for (int ring = 0; ring < 3; ++ring) {
      s += ring ? ",[" : "[";
      for (int p = 0; p < 120; ++p) {
        std::snprintf(buf, sizeof buf, "%s[%.6f,%.6f]", p ? "," : "", r.unit() * 360 - 180, r.unit() * 180 - 90);
        s += buf;
      }
      s += "]";
    }
    s += "]}}";
  }
  return s + "]}";
}

void configLevel(std::string& s, Lcg& r, int depth) {
  s += "{";
  int n = depth < 6 ? 6 : 12;
  for (int i = 0; i < n; ++i) {
    s += i ? "," : "";
    s += "\"" + std::string(depth % 2 ? "section" : "option") + std::to_string(i) + "\":";
    if (depth < 6 && i < 5) {
      configLevel(s, r, depth + 1);
    } else {
      switch (r.next() % 4) {
        case 0: s += std::to_string(r.next() % 10000); break;
        case 1: s += r.next() % 2 ? "true" : "false"; break;
        case 2: s += "\"/opt/app/share/resource_" + std::to_string(r.next() % 1000) + ".dat\""; break;
        default: s += std::to_string(r.unit() * 100);
      }
    }
  }
  s += "}";
}

std::string config() {
  Lcg r;
  std::string s;
  configLevel(s, r, 0);
  return s;
}

// One member of a drawing entity, named `name`, with a value of the kind the name suggests.
void drawingMember(std::string& s, Lcg& r, const char* name, int entity) {
  char buf[96];
  s += ",\"" + std::string(name) + "\":";
  auto coordinate = [&] { return r.unit() * 10000 - 5000; };
  if (!std::strcmp(name, "points")) {
    int n = 2 + r.next() % 40;
    s += "[";
    for (int p = 0; p < n; ++p) s.append(buf, std::snprintf(buf, sizeof buf, "%s[%.4f,%.4f]", p ? "," : "", coordinate(), coordinate()));
    s += "]";
  } else if (!std::strcmp(name, "center") || !std::strcmp(name, "normal")) {
    s.append(buf, std::snprintf(buf, sizeof buf, "[%.4f,%.4f,%.1f]", coordinate(), coordinate(), 0.0));
  } else if (!std::strcmp(name, "layer") || !std::strcmp(name, "linetype") || !std::strcmp(name, "style")) {
    s.append(buf, std::snprintf(buf, sizeof buf, "\"%s_%u\"", name, r.next() % 40));
  } else if (!std::strcmp(name, "note")) {  // a long text in one entity of 400
    std::string text = entity % 400 ? "Revision " + std::to_string(r.next() % 30) : std::string(3000 + r.next() % 5000, 'n');
    s += "\"" + text + "\"";
  } else if (!std::strcmp(name, "visible") || !std::strcmp(name, "closed")) {
    s += r.next() % 2 ? "true" : "false";
  } else if (!std::strcmp(name, "color") || !std::strcmp(name, "flags")) {
    s += std::to_string(r.next() % 256);
  } else if (!std::strcmp(name, "xdata")) {
    s.append(buf, std::snprintf(buf, sizeof buf, "{\"app\":\"PLANNER\",\"id\":%u,\"tags\":[\"a\",\"b\"]}", r.next()));
  } else {
    s.append(buf, std::snprintf(buf, sizeof buf, "%.6g", r.unit() * 100));
  }
}

// A drawing: a header with a long preview string, then entities of a handle, a type and 3 to 18
// further members taken in turn from a list that starts at a random place.
std::string drawing() {
  static const char* const kMembers[] = {"layer", "color", "linetype", "lineweight", "visible", "points", "elevation",
                                         "thickness", "closed", "center", "radius", "rotation", "note", "style",
                                         "height", "xdata", "normal", "flags"};
  constexpr int kCount = sizeof kMembers / sizeof kMembers[0];
  static const char* const kTypes[] = {"LINE", "LWPOLYLINE", "CIRCLE", "ARC", "TEXT", "INSERT"};
  Lcg r;
  std::string s = "{\"header\":{\"version\":\"R2026\",\"units\":4,\"preview\":\"" + std::string(60000, 'p') +
                  "\"},\"entities\":[";
  char buf[64];
  for (int i = 0; i < 12000; ++i) {
    s.append(buf, std::snprintf(buf, sizeof buf, "%s{\"handle\":\"%X\",\"type\":\"%s\"", i ? "," : "", 0x100 + i, kTypes[r.next() % 6]));
    int first = r.next() % kCount, more = 3 + r.next() % 16;
    for (int m = 0; m < more; ++m) drawingMember(s, r, kMembers[(first + m) % kCount], i);
    s += "}";
  }
  return s + "]}";
}

struct Doc {
  const char* name;
  std::string text;
};

constexpr int kDocs = 4;

const Doc& doc(int which) {
  static const Doc docs[kDocs] = {{"feed", feed()}, {"outlines", outlines()}, {"config", config()}, {"drawing", drawing()}};
  return docs[which];
}

void bytes(benchmark::State& state, size_t n) { state.SetBytesProcessed(int64_t(state.iterations() * n)); }

// ---- one read in a new process ----

// A field of /proc/self/status ("VmRSS:", "VmHWM:") in MB.
double statusMB(const char* field) {
  double kb = 0;
  if (FILE* f = std::fopen("/proc/self/status", "r")) {
    char line[256];
    while (std::fgets(line, sizeof line, f))
      if (!std::strncmp(line, field, std::strlen(field))) kb = std::atof(line + std::strlen(field));
    std::fclose(f);
  }
  return kb / 1024;
}

// Times one read and the drop of what it returned, and prints "<read ms> <drop ms> <peak MB>",
// the peak being how far the resident set grew above where it was before the read.
template <class Read>
int measureFresh(Read read) {
  using Clock = std::chrono::steady_clock;
  auto ms = [](Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); };
  malloc_trim(0);  // memory freed while the documents were made would hide the read's own
  const double before = statusMB("VmRSS:");
  if (FILE* f = std::fopen("/proc/self/clear_refs", "w")) {  // "5" resets the peak to the present
    std::fputs("5", f);
    std::fclose(f);
  }
  const auto start = Clock::now();
  std::optional<decltype(read())> tree(read());
  const auto built = Clock::now();
  const double peak = statusMB("VmHWM:") - before;
  tree.reset();
  std::printf("%f %f %f\n", ms(built - start), ms(Clock::now() - built), peak);
  return 0;
}

// The mode of a new process started by fresh(): one read of document `which` by `side`.
int freshRead(int which, const std::string& side) {
  const std::string& text = doc(which).text;
  if (side == "zrad") {
    const ZrUtf8String copy(text);
    return measureFresh([&] { return ZrJson::readjson(copy); });
  }
  if (side == "rapidjson") {
    return measureFresh([&] {
      auto d = std::make_unique<rapidjson::Document>();
      d->Parse(text.c_str());
      return d;
    });
  }
  return measureFresh([&] { return nlohmann::json::parse(text); });
}

struct Fresh {
  double readMs = 0, freeMs = 0, peakMB = 0;
};
std::map<std::string, std::map<std::string, Fresh>> freshRuns;  // by document, then side

// One read of document `which` by `side` in a new process (run once, then remembered), shown as
// counters of the row.
void freshCounters(benchmark::State& state, int which, const char* side) {
  auto [at, added] = freshRuns[doc(which).name].try_emplace(side);
  Fresh& f = at->second;
  if (added) {
    char self[4096], command[4200];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);  // popen's shell has its own
    self[n > 0 ? n : 0] = 0;
    std::snprintf(command, sizeof command, "'%s' --fresh %d %s", self, which, side);
    if (FILE* p = popen(command, "r")) {
      if (std::fscanf(p, "%lf %lf %lf", &f.readMs, &f.freeMs, &f.peakMB) != 3) f = {};
      pclose(p);
    }
  }
  state.counters["fresh_ms"] = f.readMs;
  state.counters["fresh_free_ms"] = f.freeMs;
  state.counters["peak_MB"] = f.peakMB;
}

void printFreshRatios() {
  for (const auto& [name, sides] : freshRuns) {
    auto ours = sides.find("zrad");
    if (ours == sides.end() || ours->second.readMs <= 0) continue;
    const Fresh& z = ours->second;
    for (const auto& [peer, f] : sides)
      if (peer != "zrad" && f.readMs > 0)
        std::printf("fresh read_%s: zrad / %s = %.2fx read, %.2fx read+free, %.2fx peak (%.1f MB / %.1f MB)\n", name.c_str(),
                    peer.c_str(), z.readMs / f.readMs, (z.readMs + z.freeMs) / (f.readMs + f.freeMs), z.peakMB / f.peakMB,
                    z.peakMB, f.peakMB);
  }
}

// ---- the rows ----

// Times `read()` and, when `timeDrop`, dropping what it returned as well.
template <class Read>
void reading(benchmark::State& state, bool timeDrop, Read read) {
  for (auto _ : state) {
    auto tree = read();
    benchmark::DoNotOptimize(tree);
    if (timeDrop) continue;
    state.PauseTiming();
    tree = {};
    state.ResumeTiming();
  }
}

void readZrad(benchmark::State& state, int which, bool timeDrop) {
  const ZrUtf8String text(doc(which).text);
  reading(state, timeDrop, [&] { return ZrJson::readjson(text); });
  bytes(state, doc(which).text.size());
  freshCounters(state, which, "zrad");
}

void readRapid(benchmark::State& state, int which, bool timeDrop) {
  const std::string& text = doc(which).text;
  reading(state, timeDrop, [&] {
    auto d = std::make_unique<rapidjson::Document>();
    d->Parse(text.c_str());
    return d;
  });
  bytes(state, text.size());
  freshCounters(state, which, "rapidjson");
}

void readNlohmann(benchmark::State& state, int which, bool timeDrop) {
  const std::string& text = doc(which).text;
  reading(state, timeDrop, [&] { return nlohmann::json::parse(text); });
  bytes(state, text.size());
  freshCounters(state, which, "nlohmann");
}

void writeZrad(benchmark::State& state, int which) {
  ZrJsonPtr tree = ZrJson::readjson(ZrUtf8String(doc(which).text));
  size_t n = 0;
  for (auto _ : state) n = tree->writeJson().str().size();
  bytes(state, n);
}

void writeRapid(benchmark::State& state, int which) {
  rapidjson::Document d;
  d.Parse(doc(which).text.c_str());
  size_t n = 0;
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    d.Accept(writer);
    n = buffer.GetSize();
  }
  bytes(state, n);
}

void writeStream(benchmark::State& state, int which, ZrJson::fileFormat format) {
  ZrJson tree(ZrJson::readjson(ZrUtf8String(doc(which).text)));
  for (auto _ : state) {
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    tree.write2Stream(s.get(), format);
    benchmark::DoNotOptimize(s->length());
  }
}

ZrMemoryStreamPtr written(int which, ZrJson::fileFormat format) {
  ZrJson tree(ZrJson::readjson(ZrUtf8String(doc(which).text)));
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  tree.write2Stream(s.get(), format);
  return s;
}

void binRead(benchmark::State& state, int which) {
  ZrMemoryStreamPtr s = written(which, ZrJson::eBinary);
  reading(state, false, [&] {
    s->rewind();
    ZrJson tree;
    tree.readBinaryStream(s.get());
    return tree;
  });
}

void textRead(benchmark::State& state, int which) {
  ZrMemoryStreamPtr s = written(which, ZrJson::eJsonText);
  reading(state, false, [&] {
    ZrJson tree;
    tree.readFromStream(reinterpret_cast<const char*>(s->data()), static_cast<unsigned>(s->length()), 1);
    return tree;
  });
}

void cloneZrad(benchmark::State& state, int which) {
  ZrJsonPtr tree = ZrJson::readjson(ZrUtf8String(doc(which).text));
  reading(state, false, [&] { return tree->clone(); });
}

void cloneRapid(benchmark::State& state, int which) {
  rapidjson::Document d;
  d.Parse(doc(which).text.c_str());
  reading(state, false, [&] {
    auto copy = std::make_unique<rapidjson::Document>();
    copy->CopyFrom(d, copy->GetAllocator());
    return copy;
  });
}

void cloneNlohmann(benchmark::State& state, int which) {
  const nlohmann::json j = nlohmann::json::parse(doc(which).text);
  reading(state, false, [&] { return nlohmann::json(j); });
}

// Times `equal()`, which must hold.
template <class Equal>
void comparing(benchmark::State& state, Equal equal) {
  for (auto _ : state)
    if (!equal()) state.SkipWithError("the copies differ");
}

void equalZrad(benchmark::State& state, int which) {
  ZrJsonPtr a = ZrJson::readjson(ZrUtf8String(doc(which).text)), b = a->clone();
  comparing(state, [&] { return a->bEqual(b); });
}

void equalRapid(benchmark::State& state, int which) {
  rapidjson::Document a, b;
  a.Parse(doc(which).text.c_str());
  b.Parse(doc(which).text.c_str());
  comparing(state, [&] { return a == b; });
}

void equalNlohmann(benchmark::State& state, int which) {
  const nlohmann::json a = nlohmann::json::parse(doc(which).text), b = a;
  comparing(state, [&] { return a == b; });
}

// Names in a scrambled order: most go far from the end of the object built so far.
const std::vector<std::string>& scrambledNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> v;
    for (uint32_t i = 0; i < 100000; ++i) v.push_back("key" + std::to_string(i * 7919u % 100003u));
    return v;
  }();
  return names;
}

void insertZrad(benchmark::State& state) {
  std::vector<ZrUtf8String> names(scrambledNames().begin(), scrambledNames().end());
  reading(state, false, [&] {
    ZrJsonPtr object = ElementValue::createObject(etObject);
    for (const ZrUtf8String& name : names) object->set_propertyi(name, 1, false);
    return object;
  });
}

void insertNlohmann(benchmark::State& state) {
  reading(state, false, [&] {
    nlohmann::json object = nlohmann::json::object();
    for (const std::string& name : scrambledNames()) object[name] = 1;
    return object;
  });
}

const bool kRegistered = [] {
  for (int which = 0; which < kDocs; ++which) {
    std::string name = doc(which).name;
    for (bool timeDrop : {false, true}) {
      std::string read = (timeDrop ? "readfree_" : "read_") + name;
      benchmark::RegisterBenchmark((read + "/zrad").c_str(), readZrad, which, timeDrop);
      benchmark::RegisterBenchmark((read + "/rapidjson").c_str(), readRapid, which, timeDrop);
      if (!timeDrop) benchmark::RegisterBenchmark((read + "/nlohmann").c_str(), readNlohmann, which, timeDrop);
    }
    benchmark::RegisterBenchmark(("write_" + name + "/zrad").c_str(), writeZrad, which);
    benchmark::RegisterBenchmark(("write_" + name + "/rapidjson").c_str(), writeRapid, which);
    benchmark::RegisterBenchmark(("binwrite_" + name + "/zrad").c_str(), writeStream, which, ZrJson::eBinary);
    benchmark::RegisterBenchmark(("binwrite_" + name + "/text").c_str(), writeStream, which, ZrJson::eJsonText);
    benchmark::RegisterBenchmark(("binread_" + name + "/zrad").c_str(), binRead, which);
    benchmark::RegisterBenchmark(("binread_" + name + "/text").c_str(), textRead, which);
    benchmark::RegisterBenchmark(("clone_" + name + "/zrad").c_str(), cloneZrad, which);
    benchmark::RegisterBenchmark(("clone_" + name + "/rapidjson").c_str(), cloneRapid, which);
    benchmark::RegisterBenchmark(("clone_" + name + "/nlohmann").c_str(), cloneNlohmann, which);
    benchmark::RegisterBenchmark(("equal_" + name + "/zrad").c_str(), equalZrad, which);
    benchmark::RegisterBenchmark(("equal_" + name + "/rapidjson").c_str(), equalRapid, which);
    benchmark::RegisterBenchmark(("equal_" + name + "/nlohmann").c_str(), equalNlohmann, which);
  }
  benchmark::RegisterBenchmark("object_insert/zrad", insertZrad);
  benchmark::RegisterBenchmark("object_insert/nlohmann", insertNlohmann);
  return true;
}();

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && !std::strcmp(argv[1], "--fresh")) return freshRead(std::atoi(argv[2]), argv[3]);
  benchmark::Initialize(&argc, argv);
  zradbench::PeerRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  printFreshRatios();
  benchmark::Shutdown();
  return 0;
}
