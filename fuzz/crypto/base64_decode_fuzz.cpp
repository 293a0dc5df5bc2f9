// Fuzzes CBase64::Decode with any text and a capacity chosen by the input; the output buffer
// is exactly that capacity, so a write past it is caught, and the result must agree with the
// capacity rules.
#include <zrad/crypto.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const unsigned capacity = unsigned(data[0]) << 8 | data[1];
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);  // stops at a 0
  std::vector<unsigned char> out(capacity);
  unsigned length = capacity;
  const bool ok = CBase64().Decode(text.c_str(), capacity ? out.data() : nullptr, length);
  const size_t n = std::strlen(text.c_str());
  if (ok && (length > n / 4 * 3 || length > capacity)) __builtin_trap();
  if (!ok && capacity && n % 4 == 0 && capacity >= n / 4 * 3) __builtin_trap();
  return 0;
}
