// Test helpers: fresh temporary directories and whole-file reads and writes.
#include "common/testdir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

TestDir::TestDir() {
  std::string pattern = (fs::temp_directory_path() / "zradfiles-XXXXXX").string();
  if (mkdtemp(&pattern[0])) m_path = pattern;
}

TestDir::~TestDir() {
  std::error_code ignored;
  if (!m_path.empty()) fs::remove_all(m_path, ignored);
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::error_code ignored;
  fs::create_directories(fs::path(path).parent_path(), ignored);
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}
