// Hexadecimal text of digest bytes through a table of digit pairs, one lookup per byte.
#include "crypto/hex.h"

#include <array>
#include <cstring>

namespace zrad::crypto {
namespace {

using PairTable = std::array<char, 512>;  // the two digits of byte b at 2b, 2b + 1

constexpr PairTable makePairs(const char* digits) {
  PairTable pairs{};
  for (int b = 0; b < 256; ++b) {
    pairs[2 * b] = digits[b >> 4];
    pairs[2 * b + 1] = digits[b & 15];
  }
  return pairs;
}

constexpr PairTable kLower = makePairs("0123456789abcdef");
constexpr PairTable kUpper = makePairs("0123456789ABCDEF");

}  // namespace

std::string toHex(const unsigned char* bytes, size_t count, bool upper) {
  const PairTable& pairs = upper ? kUpper : kLower;
  std::string text(2 * count, '\0');
  for (size_t i = 0; i < count; ++i) std::memcpy(&text[2 * i], &pairs[2 * bytes[i]], 2);
  return text;
}

}  // namespace zrad::crypto
