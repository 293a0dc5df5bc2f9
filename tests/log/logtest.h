// Shared fixture of the log tests: a fresh temporary directory and the lines of its files.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/testdir.h"

class TempDirTest : public ::testing::Test {
 protected:
  std::string path(const char* name) const { return dir / name; }

  static std::vector<std::string> lines(const std::string& file) {
    std::vector<std::string> out;
    std::istringstream in(readFile(file));
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
  }

  TestDir dir;
};
