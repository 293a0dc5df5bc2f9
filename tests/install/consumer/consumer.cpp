// A program outside the tree: compiles every installed header, logs one line through the
// installed library and checks it. The line format itself is checked by the log suite.
#include <cstdio>
#include <fstream>
#include <string>

#include <zrad/zrad.h>  // every installed header must compile outside the tree

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::remove(argv[1]);
  zr_set_Log_file(argv[1]);
  zr_Log(5, 40, "consumer.cpp", "main", "installed");

  std::ifstream in(argv[1]);
  std::string line, extra;
  std::getline(in, line);
  // "2026-11-22 04:21:19.000042" is 26 bytes, then the fields this program wrote.
  const std::string head = ", consumer.cpp (40)<main>,[error],{tid:0x", tail = "} installed";
  bool ok = line.find(head) == 26 && line.size() > 26 + head.size() + tail.size() &&
            line.compare(line.size() - tail.size(), tail.size(), tail) == 0 && !std::getline(in, extra);
  if (!ok) {
    std::fprintf(stderr, "unexpected log line: %s\n", line.c_str());
    return 1;
  }
  std::printf("consumer: the log line as expected\n");
  return 0;
}
