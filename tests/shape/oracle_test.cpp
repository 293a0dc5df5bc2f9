// The SVG path reader against an independent one (python3-svgelements) on icon path data that
// stays clear of the reader's deliberate differences from SVG. Skipped without Python or the
// package.
#include <zrad/shape.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "shape/calllog.h"

namespace {

// The words of a call log, numbers compared with a float's precision.
bool sameCalls(const std::string& ours, const std::string& theirs) {
  std::istringstream a(ours), b(theirs);
  std::string x, y;
  while (a >> x) {
    if (!(b >> y)) return false;
    char* endX;
    char* endY;
    const double u = std::strtod(x.c_str(), &endX), v = std::strtod(y.c_str(), &endY);
    const bool numbers = *endX == '\0' && *endY == '\0';
    if (numbers ? std::fabs(u - v) > 1e-4 * (1 + std::fabs(v)) : x != y) return false;
  }
  return !(b >> y);
}

TEST(SvgPath, AgreesWithAnIndependentReader) {
  const std::string paths = ZRAD_SHAPE_TEST_DATA "/oracle_paths.txt";
  FILE* pipe = popen(("/usr/bin/python3 " ZRAD_SHAPE_ORACLE " " + paths + " 2>/dev/null").c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string output;
  char block[4096];
  while (size_t got = std::fread(block, 1, sizeof block, pipe)) output.append(block, got);
  const int status = pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) GTEST_SKIP() << "python3-svgelements is missing";

  std::ifstream in(paths);
  std::istringstream theirs(output);
  std::string line, expected;
  int compared = 0;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    ASSERT_TRUE(std::getline(theirs, expected)) << line;
    CallLog log;
    ZrShape::readSVGPath(line.c_str(), &log, 1, 1, 0, 0);
    EXPECT_TRUE(sameCalls(log.text, expected)) << line << "\n ours:   " << log.text
                                               << "\n theirs: " << expected;
    ++compared;
  }
  EXPECT_EQ(compared, 10);
}

}  // namespace
