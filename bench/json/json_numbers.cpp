// Reading and dropping one big array of numbers, beside RapidJSON's DOM: a tree of tens of
// millions of elements, where the cost of each element and its memory show most.
//
//   json_numbers zrad|rapidjson [count]     (count: 50,000,000 by default)
// builds "[0,0,...]" in memory, then reads it into a tree and drops the tree, and prints
//   zrad: 50000000 numbers read in 1.234 s, dropped in 0.123 s
// Run it under /usr/bin/time -v for the peak memory (the text itself is 2 bytes a number).
#include <zrad/json.h>

#include <rapidjson/document.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// Reads `text` with `read`, which returns the tree; drops it and reports both times.
template <class Read>
int measure(const char* side, size_t count, Read read) {
  const auto start = Clock::now();
  auto tree = read();
  const auto built = Clock::now();
  if (!tree) {
    std::fprintf(stderr, "%s: the text was not read\n", side);
    return 1;
  }
  tree = {};
  std::printf("%s: %zu numbers read in %.3f s, dropped in %.3f s\n", side, count, seconds(built - start),
              seconds(Clock::now() - built));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const char* side = argc > 1 ? argv[1] : "";
  const size_t count = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 50000000;
  if (std::strcmp(side, "zrad") != 0 && std::strcmp(side, "rapidjson") != 0) {
    std::fprintf(stderr, "usage: json_numbers zrad|rapidjson [count]\n");
    return 2;
  }
  std::string text;
  text.reserve(2 * count + 2);
  text += '[';
  for (size_t i = 0; i < count; ++i) text += i ? ",0" : "0";
  text += ']';
  if (side[0] == 'z') {
    return measure(side, count, [&] {
      auto tree = std::make_unique<ZrJson>();
      if (!tree->readFromStream(text.data(), static_cast<unsigned>(text.size()), 1)) tree.reset();
      return tree;
    });
  }
  return measure(side, count, [&] {
    auto d = std::make_unique<rapidjson::Document>();
    d->Parse(text.c_str(), text.size());
    if (d->HasParseError()) d.reset();
    return d;
  });
}
