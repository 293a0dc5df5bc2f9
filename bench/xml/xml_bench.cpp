// Load + full walk of a 20 MB XML document: the XML filer beside tinyxml2 alone and pugixml.
//
// Every side loads the same file and visits every element: its name, its text, and the same
// list of attribute names. The filer's goal is at most 1.2x tinyxml2's time: the node layer
// must cost little above the parser it wraps. Each side returns a sum over what it read, and
// the run stops with an error when the sums disagree. Build with
// -DCMAKE_BUILD_TYPE=Release -DZRAD_BENCH=ON; the ratio lines come last:
//   ratio load_walk_20MB: zrad / tinyxml2 = ...x
#include <zrad/xml.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/peer_ratio.h"
#include "xml_peers.h"

namespace {

// A drawing-like document of sections, items and points, without white space between
// elements (so every side sees the same first children), at least `bytes` long.
std::string drawingDocument(size_t bytes) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><drawing name=\"bench\">";
  char line[256];
  for (unsigned s = 0; xml.size() < bytes; ++s) {
    std::snprintf(line, sizeof line, "<section id=\"s%u\" name=\"Section %u\"><title>Layer %u &amp; co</title>", s, s, s);
    xml += line;
    for (unsigned i = 0; i < 40; ++i) {
      std::snprintf(line, sizeof line,
                    "<item id=\"i%u-%u\" kind=\"%s\" x=\"%u.5\" y=\"-%u.25\">label %u", s, i,
                    i % 3 ? "line" : "arc", i * 7, s % 97, i);
      xml += line;
      if (i % 4 == 0) xml += "<point x=\"1.0\" y=\"2.0\"/><point x=\"3.0\" y=\"4.0\"/>";
      xml += "</item>";
    }
    xml += "</section>\n";
  }
  return xml + "</drawing>\n";
}

// The document written once to a temporary file, removed at exit.
const char* documentPath() {
  static std::string path = [] {
    char name[] = "/tmp/zrad-xml-bench-XXXXXX";
    int fd = mkstemp(name);
    std::string xml = drawingDocument(20u << 20);
    bool written = fd >= 0 && write(fd, xml.data(), xml.size()) == ssize_t(xml.size());
    if (fd >= 0) close(fd);
    if (!written) return std::string();
    std::atexit([] { unlink(documentPath()); });
    return std::string(name);
  }();
  return path.c_str();
}

size_t walk(ZrsiPwUtXmlNode* node) {
  static const std::vector<ZrUtf8String> names(peer::kAttributeNames,
                                               peer::kAttributeNames + peer::kAttributeNameCount);
  size_t sum = 1 + size_t(node->name().length()) + size_t(node->text().length());
  ZrUtf8String value;
  for (const ZrUtf8String& name : names)
    if (node->getAttribute(name, value)) sum += size_t(value.length());
  for (unsigned i = 0, n = node->childCount(); i < n; ++i) sum += walk(node->child(i).get());
  return sum;
}

size_t zradWalk(const char* path) {
  ZrSmartPtr<ZrsiPwUtXmlFiler> filer = createPwutXmlFiler();
  if (!filer->load(ZrUtf8String(path))) return 0;
  ZrSmartPtr<ZrsiPwUtXmlNode> root = filer->rootNode();
  return root ? walk(root.get()) : 0;
}

// One side of the comparison; all three must read the same sum.
void loadWalk(benchmark::State& state, size_t (*side)(const char*)) {
  const char* path = documentPath();
  const size_t expected = peer::tinyxml2Walk(path);
  if (expected == 0) return state.SkipWithError("the document did not load");
  for (auto _ : state) {
    size_t sum = side(path);
    if (sum != expected) return state.SkipWithError("this side read another sum than tinyxml2");
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(20u << 20));
}

BENCHMARK_CAPTURE(loadWalk, load_walk_20MB/zrad, zradWalk)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(loadWalk, load_walk_20MB/tinyxml2, peer::tinyxml2Walk)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(loadWalk, load_walk_20MB/pugixml, peer::pugixmlWalk)->Unit(benchmark::kMillisecond);

}  // namespace

ZRAD_BENCHMARK_MAIN()
