// Element-tree reading and writing beside RapidJSON and nlohmann::json, on three generated
// documents of a few MB: a feed of small objects with strings, geographic outlines (many doubles
// in nested arrays) and a deep configuration tree.
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
// Build with -DCMAKE_BUILD_TYPE=Release -DZRAD_BENCH=ON -DZRAD_TESTS=OFF.
#include <zrad/json.h>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

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

struct Doc {
  const char* name;
  std::string text;
};

const Doc& doc(int which) {
  static const Doc docs[] = {{"feed", feed()}, {"outlines", outlines()}, {"config", config()}};
  return docs[which];
}

void bytes(benchmark::State& state, size_t n) { state.SetBytesProcessed(int64_t(state.iterations() * n)); }

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
}

void readRapid(benchmark::State& state, int which, bool timeDrop) {
  const std::string& text = doc(which).text;
  reading(state, timeDrop, [&] {
    auto d = std::make_unique<rapidjson::Document>();
    d->Parse(text.c_str());
    return d;
  });
  bytes(state, text.size());
}

void readNlohmann(benchmark::State& state, int which, bool timeDrop) {
  const std::string& text = doc(which).text;
  reading(state, timeDrop, [&] { return nlohmann::json::parse(text); });
  bytes(state, text.size());
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
  for (int which = 0; which < 3; ++which) {
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

ZRAD_BENCHMARK_MAIN()
