// The DES block cipher: standard tables turned at compile time into the forms a fast round
// needs, the key schedule, and the CBC loop.
//
// Both halves of the block are kept rotated left by one bit between the initial and the final
// permutation. Then the expansion needs no table: the odd S-box inputs are the four 6-bit
// fields of (R >>> 4) at bits 24, 16, 8 and 0, the even ones the same fields of R, and each
// round key is stored as two words with its 6-bit groups at those places. The S-boxes and the
// P permutation merge into eight 64-entry tables whose output is already rotated the same way.
// The initial and final permutations are done with five swaps of bit groups between halves.
#include "crypto/des_cipher.h"

#include <array>
#include <utility>

namespace zrad::crypto {
namespace {

// Bit numbers in the tables below count from 1 at the most significant bit, as in the standard.
constexpr uint8_t kPc1[56] = {57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18,
                              10, 2,  59, 51, 43, 35, 27, 19, 11, 3,  60, 52, 44, 36,
                              63, 55, 47, 39, 31, 23, 15, 7,  62, 54, 46, 38, 30, 22,
                              14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr uint8_t kPc2[48] = {14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10,
                              23, 19, 12, 4,  26, 8,  16, 7,  27, 20, 13, 2,
                              41, 52, 31, 37, 47, 55, 30, 40, 51, 45, 33, 48,
                              44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr uint8_t kShifts[16] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};
constexpr uint8_t kP[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                            2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};
constexpr uint8_t kSBoxes[8][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8,  3,  10, 6,  12, 5,  9,  0, 7,
     0,  15, 7,  4, 14, 2,  13, 1,  10, 6,  12, 11, 9,  5,  3, 8,
     4,  1,  14, 8, 13, 6,  2,  11, 15, 12, 9,  7,  3,  10, 5, 0,
     15, 12, 8,  2, 4,  9,  1,  7,  5,  11, 3,  14, 10, 0,  6, 13},
    {15, 1,  8,  14, 6,  11, 3,  4,  9,  7, 2,  13, 12, 0, 5,  10,
     3,  13, 4,  7,  15, 2,  8,  14, 12, 0, 1,  10, 6,  9, 11, 5,
     0,  14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,  9,  3, 2,  15,
     13, 8,  10, 1,  3,  15, 4,  2,  11, 6, 7,  12, 0,  5, 14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7,  11, 4,  2,  8,
     13, 7,  0,  9,  3, 4,  6,  10, 2,  8,  5,  14, 12, 11, 15, 1,
     13, 6,  4,  9,  8, 15, 3,  0,  11, 1,  2,  12, 5,  10, 14, 7,
     1,  10, 13, 0,  6, 9,  8,  7,  4,  15, 14, 3,  11, 5,  2,  12},
    {7,  13, 14, 3, 0,  6,  9,  10, 1,  2, 8, 5,  11, 12, 4,  15,
     13, 8,  11, 5, 6,  15, 0,  3,  4,  7, 2, 12, 1,  10, 14, 9,
     10, 6,  9,  0, 12, 11, 7,  13, 15, 1, 3, 14, 5,  2,  8,  4,
     3,  15, 0,  6, 10, 1,  13, 8,  9,  4, 5, 11, 12, 7,  2,  14},
    {2,  12, 4,  1,  7,  10, 11, 6,  8,  5,  3,  15, 13, 0, 14, 9,
     14, 11, 2,  12, 4,  7,  13, 1,  5,  0,  15, 10, 3,  9, 8,  6,
     4,  2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,  6,  3, 0,  14,
     11, 8,  12, 7,  1,  14, 2,  13, 6,  15, 0,  9,  10, 4, 5,  3},
    {12, 1,  10, 15, 9, 2,  6,  8,  0,  13, 3,  4,  14, 7,  5,  11,
     10, 15, 4,  2,  7, 12, 9,  5,  6,  1,  13, 14, 0,  11, 3,  8,
     9,  14, 15, 5,  2, 8,  12, 3,  7,  0,  4,  10, 1,  13, 11, 6,
     4,  3,  2,  12, 9, 5,  15, 10, 11, 14, 1,  7,  6,  0,  8,  13},
    {4,  11, 2,  14, 15, 0, 8,  13, 3,  12, 9, 7,  5,  10, 6, 1,
     13, 0,  11, 7,  4,  9, 1,  10, 14, 3,  5, 12, 2,  15, 8, 6,
     1,  4,  11, 13, 12, 3, 7,  14, 10, 15, 6, 8,  0,  5,  9, 2,
     6,  11, 13, 8,  1,  4, 10, 7,  9,  5,  0, 15, 14, 2,  3, 12},
    {13, 2,  8,  4, 6,  15, 11, 1,  10, 9,  3,  14, 5,  0,  12, 7,
     1,  15, 13, 8, 10, 3,  7,  4,  12, 5,  6,  11, 0,  14, 9,  2,
     7,  11, 4,  1, 9,  12, 14, 2,  0,  6,  10, 13, 15, 3,  5,  8,
     2,  1,  14, 7, 4,  10, 8,  13, 15, 12, 9,  0,  3,  5,  6,  11}};

constexpr uint32_t rotl(uint32_t x, int s) { return (x << s) | (x >> (32 - s)); }
constexpr uint32_t rotr(uint32_t x, int s) { return (x >> s) | (x << (32 - s)); }

using SpTables = std::array<std::array<uint32_t, 64>, 8>;

// kSp[j][v]: S-box j (from 0) on the 6-bit input v, through P, rotated left by one.
constexpr SpTables makeSp() {
  SpTables sp{};
  for (int j = 0; j < 8; ++j) {
    for (int v = 0; v < 64; ++v) {
      const int row = (v >> 4 & 2) | (v & 1);
      const int column = v >> 1 & 15;
      const uint32_t sOut = uint32_t(kSBoxes[j][row * 16 + column]) << (28 - 4 * j);
      uint32_t permuted = 0;
      for (int i = 0; i < 32; ++i)
        if (sOut >> (32 - kP[i]) & 1) permuted |= 1u << (31 - i);
      sp[j][v] = rotl(permuted, 1);
    }
  }
  return sp;
}

constexpr SpTables kSp = makeSp();

// Exchanges the bits of `a` selected by (mask << shift) with the bits of `b` selected by mask.
inline void swapBits(uint32_t& a, uint32_t& b, int shift, uint32_t mask) {
  const uint32_t t = ((a >> shift) ^ b) & mask;
  b ^= t;
  a ^= t << shift;
}

// The initial permutation of the block (l, r), leaving both halves rotated left by one.
inline void initialPermutation(uint32_t& l, uint32_t& r) {
  swapBits(l, r, 4, 0x0f0f0f0fu);
  swapBits(l, r, 16, 0x0000ffffu);
  swapBits(r, l, 2, 0x33333333u);
  swapBits(r, l, 8, 0x00ff00ffu);
  r = rotl(r, 1);
  swapBits(l, r, 0, 0xaaaaaaaau);
  l = rotl(l, 1);
}

// The inverse of initialPermutation.
inline void finalPermutation(uint32_t& l, uint32_t& r) {
  l = rotr(l, 1);
  swapBits(l, r, 0, 0xaaaaaaaau);
  r = rotr(r, 1);
  swapBits(r, l, 8, 0x00ff00ffu);
  swapBits(r, l, 2, 0x33333333u);
  swapBits(l, r, 16, 0x0000ffffu);
  swapBits(l, r, 4, 0x0f0f0f0fu);
}

inline uint32_t feistel(uint32_t r, const uint32_t* key) {
  const uint32_t odd = rotr(r, 4) ^ key[0];
  const uint32_t even = r ^ key[1];
  return kSp[0][odd >> 24 & 63] | kSp[2][odd >> 16 & 63] | kSp[4][odd >> 8 & 63] |
         kSp[6][odd & 63] | kSp[1][even >> 24 & 63] | kSp[3][even >> 16 & 63] |
         kSp[5][even >> 8 & 63] | kSp[7][even & 63];
}

// Sixteen rounds on N independent blocks (l[i], r[i]), big-endian words. Working on two
// blocks at once lets their rounds overlap where the chaining allows it (CBC decryption).
template <int N>
inline void crypt(const uint32_t* keys, uint32_t (&l)[N], uint32_t (&r)[N]) {
  for (int b = 0; b < N; ++b) initialPermutation(l[b], r[b]);
  for (int round = 0; round < 16; round += 2) {
    for (int b = 0; b < N; ++b) l[b] ^= feistel(r[b], keys + 2 * round);
    for (int b = 0; b < N; ++b) r[b] ^= feistel(l[b], keys + 2 * round + 2);
  }
  // The last round does not swap the halves: the output block is (R16, L16).
  for (int b = 0; b < N; ++b) {
    finalPermutation(r[b], l[b]);
    std::swap(l[b], r[b]);
  }
}

inline uint32_t loadBig(const unsigned char* p) {
  return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}

inline void storeBig(unsigned char* p, uint32_t v) {
  p[0] = uint8_t(v >> 24);
  p[1] = uint8_t(v >> 16);
  p[2] = uint8_t(v >> 8);
  p[3] = uint8_t(v);
}

// Picks bits of `source` (numbered from 1 at bit `width`) as listed in `table`.
uint64_t permute(uint64_t source, int width, const uint8_t* table, int count) {
  uint64_t result = 0;
  for (int i = 0; i < count; ++i) result = result << 1 | (source >> (width - table[i]) & 1);
  return result;
}

}  // namespace

void desSetup(DesContext& context, const unsigned char key[8], const unsigned char iv[8],
              DesDirection direction) {
  const uint64_t key64 = uint64_t(loadBig(key)) << 32 | loadBig(key + 4);
  const uint64_t cd = permute(key64, 64, kPc1, 56);
  uint32_t c = uint32_t(cd >> 28), d = uint32_t(cd & 0xfffffff);
  for (int round = 0; round < 16; ++round) {
    for (int s = 0; s < kShifts[round]; ++s) {
      c = ((c << 1) | (c >> 27)) & 0xfffffff;
      d = ((d << 1) | (d >> 27)) & 0xfffffff;
    }
    const uint64_t sub = permute(uint64_t(c) << 28 | d, 56, kPc2, 48);
    auto group = [sub](int g) { return uint32_t(sub >> (42 - 6 * g) & 63); };
    const int slot = direction == DesDirection::kEncrypt ? round : 15 - round;
    context.keys[2 * slot] = group(0) << 24 | group(2) << 16 | group(4) << 8 | group(6);
    context.keys[2 * slot + 1] = group(1) << 24 | group(3) << 16 | group(5) << 8 | group(7);
  }
  context.chain[0] = loadBig(iv);
  context.chain[1] = loadBig(iv + 4);
  context.direction = direction;
}

void desBlock(const DesContext& context, const unsigned char in[8], unsigned char out[8]) {
  uint32_t l[1] = {loadBig(in)}, r[1] = {loadBig(in + 4)};
  crypt(context.keys, l, r);
  storeBig(out, l[0]);
  storeBig(out + 4, r[0]);
}

int desCbc(DesContext& context, const unsigned char* in, unsigned char* out, size_t length) {
  if (length % 8) return kDesBadLength;
  uint32_t chainL = context.chain[0], chainR = context.chain[1];
  size_t at = 0;
  if (context.direction == DesDirection::kEncrypt) {
    for (; at < length; at += 8) {
      uint32_t l[1] = {loadBig(in + at) ^ chainL}, r[1] = {loadBig(in + at + 4) ^ chainR};
      crypt(context.keys, l, r);
      chainL = l[0];
      chainR = r[0];
      storeBig(out + at, chainL);
      storeBig(out + at + 4, chainR);
    }
  } else {
    // Each plaintext block needs only its own and the previous ciphertext block, so blocks are
    // decrypted two at a time. All input is read before anything is stored (in may be out).
    for (; at < length; at += 16) {
      const bool pair = length - at >= 16;
      uint32_t l[2] = {loadBig(in + at), pair ? loadBig(in + at + 8) : 0};
      uint32_t r[2] = {loadBig(in + at + 4), pair ? loadBig(in + at + 12) : 0};
      const uint32_t cipher[4] = {l[0], r[0], l[1], r[1]};
      crypt(context.keys, l, r);
      storeBig(out + at, l[0] ^ chainL);
      storeBig(out + at + 4, r[0] ^ chainR);
      chainL = cipher[0];
      chainR = cipher[1];
      if (!pair) break;
      storeBig(out + at + 8, l[1] ^ chainL);
      storeBig(out + at + 12, r[1] ^ chainR);
      chainL = cipher[2];
      chainR = cipher[3];
    }
  }
  context.chain[0] = chainL;
  context.chain[1] = chainR;
  return 0;
}

}  // namespace zrad::crypto
