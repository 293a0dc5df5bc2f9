// CBase64: Base64 encoding through a table of character pairs and decoding through four
// pre-shifted tables, both writing into a buffer sized up front.
//
// Encode turns each 12-bit half of a 3-byte group into two characters with one lookup; Decode
// ORs the four characters' pre-shifted bits into one 24-bit group with four lookups.
#include <zrad/crypto.h>

#include <array>
#include <cstring>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the tables hold characters and bytes in little-endian order");

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two characters of every 12-bit value, first character in the low byte.
using PairTable = std::array<uint16_t, 4096>;

constexpr PairTable makePairs() {
  PairTable pairs{};
  for (unsigned v = 0; v < 4096; ++v)
    pairs[v] = uint16_t(uint8_t(kAlphabet[v >> 6]) | uint8_t(kAlphabet[v & 63]) << 8);
  return pairs;
}

constexpr PairTable kPairs = makePairs();

// kBits[i][c]: the six bits of character c placed for position i of a group, already in the
// byte order of the output (first byte lowest). Characters outside the alphabet give 0.
using ShiftedTables = std::array<std::array<uint32_t, 256>, 4>;

constexpr ShiftedTables makeShifted() {
  ShiftedTables tables{};
  for (uint32_t value = 0; value < 64; ++value) {
    const uint8_t c = uint8_t(kAlphabet[value]);
    for (int i = 0; i < 4; ++i) {
      const uint32_t group = value << (18 - 6 * i);  // big-endian 24-bit group
      tables[i][c] = (group >> 16) | (group & 0xff00) | (group & 0xff) << 16;
    }
  }
  return tables;
}

constexpr ShiftedTables kBits = makeShifted();

inline void putPairs(char* out, uint32_t group) {
  const uint16_t both[2] = {kPairs[group >> 12], kPairs[group & 0xfff]};
  std::memcpy(out, both, 4);
}

inline uint32_t groupBits(const unsigned char* t) {
  return kBits[0][t[0]] | kBits[1][t[1]] | kBits[2][t[2]] | kBits[3][t[3]];
}

// Padding counts only by position: "xx==" yields 1 byte, "xxx=" 2, anything else 3.
inline size_t groupYield(const unsigned char* t) {
  return t[3] != '=' ? 3 : t[2] != '=' ? 2 : 1;
}

}  // namespace

std::string CBase64::Encode(const unsigned char* data, int length) {
  if (!data || length < 1) return std::string();
  const size_t n = size_t(length);
  std::string text((n + 2) / 3 * 4, '\0');
  char* out = &text[0];
  size_t i = 0;
  for (; i + 3 <= n; i += 3, out += 4) putPairs(out, data[i] << 16 | data[i + 1] << 8 | data[i + 2]);
  if (n - i == 1) {
    putPairs(out, data[i] << 16);
    out[2] = out[3] = '=';
  } else if (n - i == 2) {
    // The third character takes the top bits of the byte after the data, as documented.
    putPairs(out, data[i] << 16 | data[i + 1] << 8 | data[i + 2]);
    out[3] = '=';
  }
  return text;
}

bool CBase64::Decode(const char* text, unsigned char* out, unsigned int& length) {
  if (!text || !out || length == 0) return false;
  const size_t n = std::strlen(text);
  if (n % 4) {
    out[0] = 0;
    return false;
  }
  const size_t reserved = n / 4 * 3;
  if (length < reserved) {
    length = reserved < 0xffffffffu ? unsigned(reserved + 1) : 0xffffffffu;
    return false;
  }
  if (n == 0) {
    length = 0;
    return true;
  }
  auto in = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* last = in + n - 4;
  size_t at = 0;
  // Every group but the last may store four bytes: the next group's three overwrite the extra
  // one, and its reserved room lies beyond it.
  for (; in < last; in += 4) {
    const uint32_t bits = groupBits(in);
    std::memcpy(out + at, &bits, 4);
    at += groupYield(in);
  }
  const uint32_t bits = groupBits(last);
  std::memcpy(out + at, &bits, 3);
  length = unsigned(at + groupYield(last));
  return true;
}
