// Fuzzes DES_Decrypt with any bytes as an encrypted message of exactly their size: lying
// length prefixes must be refused without reading past the data, and what is accepted must
// append exactly the stored length.
#include <zrad/crypto.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<unsigned char> message(data, data + size);  // exactly `size` readable bytes
  std::string out = "x";
  const bool ok = DES_Decrypt(message.data(), int(size), "fuzz", out);
  int32_t stored = 0;
  if (size >= 4) std::memcpy(&stored, data, 4);
  if (!ok && out != "x") __builtin_trap();
  if (ok && out.size() != 1 + size_t(stored > 0 ? stored : 0)) __builtin_trap();
  return 0;
}
