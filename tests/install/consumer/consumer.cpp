// A program outside the tree: logs through the installed library and checks the lines it wrote.
#include <cstdio>
#include <fstream>
#include <string>

#include <zrad/zrad.h>  // every installed header must compile outside the tree
#include <zrplatform/strings.h>

// "2026-11-22 04:21:19.000042": digits everywhere but the separators.
static bool isTimestamp(const std::string& t) {
  const std::string shape = "dddd-dd-dd dd:dd:dd.dddddd";
  if (t.size() != shape.size()) return false;
  for (size_t i = 0; i < t.size(); ++i)
    if (shape[i] == 'd' ? (t[i] < '0' || t[i] > '9') : t[i] != shape[i]) return false;
  return true;
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::remove(argv[1]);
  zr_set_Log_file(argv[1]);
  const char* names[] = {"info", "info", "info", "debug", "warnning", "error"};
  for (int level = 0; level < 6; ++level)
    zr_Log(level, 40 + level, "consumer.cpp", "main", ZrUtf8String::format("level %d", level).c_str());

  std::ifstream in(argv[1]);
  std::string line;
  int level = 0;
  for (; std::getline(in, line); ++level) {
    std::string head = ZrUtf8String::format(", consumer.cpp (%d)<main>,[%s],{tid:0x", 40 + level,
                                            names[level % 6]).str();
    std::string tail = "} level " + std::to_string(level);
    bool ok = level < 6 && line.size() > 26 + head.size() + tail.size() &&
              isTimestamp(line.substr(0, 26)) && line.compare(26, head.size(), head) == 0 &&
              line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
    if (!ok) {
      std::fprintf(stderr, "unexpected line %d: %s\n", level, line.c_str());
      return 1;
    }
  }
  if (level != 6) {
    std::fprintf(stderr, "expected 6 lines, read %d\n", level);
    return 1;
  }
  std::printf("consumer: 6 log lines as expected\n");
  return 0;
}
