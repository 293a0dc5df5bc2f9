// A program outside the tree: logs through the installed library and checks the lines it wrote.
#include <cstdio>
#include <fstream>
#include <regex>
#include <string>

#include <zrad/log.h>
#include <zrplatform/strings.h>

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
    std::regex want(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{6}, consumer\.cpp \()" +
                    std::to_string(40 + level) + R"(\)<main>,\[)" + names[level % 6] +
                    R"(\],\{tid:0x[0-9a-f]+\} level )" + std::to_string(level));
    if (level >= 6 || !std::regex_match(line, want)) {
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
