// Shared fixture of the log tests: a fresh temporary directory and its file contents.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

class TempDirTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/zradlogXXXXXX";
    ASSERT_TRUE(mkdtemp(pattern));
    dir = pattern;
  }
  void TearDown() override { std::system(("rm -rf '" + dir + "'").c_str()); }

  std::string path(const char* name) const { return dir + "/" + name; }

  static bool exists(const std::string& file) { return access(file.c_str(), F_OK) == 0; }

  static std::string read(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  static std::vector<std::string> lines(const std::string& file) {
    std::vector<std::string> out;
    std::istringstream in(read(file));
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
  }

  std::string dir;
};
