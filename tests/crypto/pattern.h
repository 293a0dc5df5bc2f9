// Deterministic test input shared by the digest and DES suites.
#pragma once

#include <cstddef>
#include <vector>

// Byte i is (i * 131 + 7) mod 256: no runs, every value, reproducible outside the tests.
inline std::vector<unsigned char> patternBytes(size_t count) {
  std::vector<unsigned char> bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 131 + 7);
  return bytes;
}
