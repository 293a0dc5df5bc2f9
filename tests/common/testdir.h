// Test helpers: a fresh temporary directory per test, and whole-file reads and writes.
//
// TestDir makes a directory under the system's temporary directory and removes it with
// everything in it when the test ends, so no test touches anything else.
#pragma once

#include <ostream>
#include <string>

#include <zrplatform/strings.h>

class TestDir {
 public:
  TestDir();
  ~TestDir();
  TestDir(const TestDir&) = delete;
  TestDir& operator=(const TestDir&) = delete;

  const std::string& path() const { return m_path; }
  // path() + "/" + relative.
  std::string operator/(const std::string& relative) const { return m_path + "/" + relative; }

 private:
  std::string m_path;
};

// Writes `bytes` to `path` (created or truncated), making missing parent directories.
void writeFile(const std::string& path, const std::string& bytes);
// The whole file, or "<missing>" when it cannot be read.
std::string readFile(const std::string& path);
bool exists(const std::string& path);

// Shows platform strings as text in failure messages.
inline void PrintTo(const ZrUtf8String& text, std::ostream* out) {
  *out << '"' << text.str() << '"';
}
inline void PrintTo(const ZrString& text, std::ostream* out) { PrintTo(ZrUtf8String(text), out); }
