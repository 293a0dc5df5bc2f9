// A directory of a fuzz target's own under /tmp, made on construction and removed with all it
// holds when the process exits. Removal never throws: an exit handler that failed would make
// libFuzzer report the input last run (the empty one when none was) as a crash.
#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

class ScratchDir {
 public:
  // `prefix`: the start of the directory's name, "/tmp/<prefix>-XXXXXX".
  explicit ScratchDir(const char* prefix) : m_path(std::string("/tmp/") + prefix + "-XXXXXX") {
    if (!mkdtemp(m_path.data())) {
      perror("mkdtemp");  // nothing can be fuzzed without it
      abort();
    }
  }
  ~ScratchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& path() const { return m_path; }

 private:
  std::string m_path;
};
