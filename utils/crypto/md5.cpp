// The MD5 engine (RFC 1321) and the hexadecimal digest forms of a buffer.
//
// The compression function is fully unrolled with word loads through memcpy; the round
// functions are arranged so that the previous step's result enters last, which shortens the
// dependency chain that bounds MD5's speed.
#include <zrad/crypto.h>

#include <cstring>

#include "crypto/hex.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the message words are loaded in native order");

namespace {

constexpr unsigned kBlock = 64;

inline uint32_t rotl(uint32_t x, int s) { return (x << s) | (x >> (32 - s)); }

// One step: a = b + ((a + f(b, c, d) + word + constant) <<< s). `k` is word + constant.
// F = d ^ (b & (c ^ d)); G = (b & d) | (c & ~d), whose two halves never share a bit and so
// can be added one at a time, b last; H = b ^ c ^ d with c ^ d first; I = c ^ (b | ~d).
#define STEP_F(a, b, c, d, k, s) \
  a += (k) + ((d) ^ ((b) & ((c) ^ (d)))); a = rotl(a, s) + (b)
#define STEP_G(a, b, c, d, k, s) \
  a += (k) + ((c) & ~(d)); a += (b) & (d); a = rotl(a, s) + (b)
#define STEP_H(a, b, c, d, k, s) \
  a += (k) + (((c) ^ (d)) ^ (b)); a = rotl(a, s) + (b)
#define STEP_I(a, b, c, d, k, s) \
  a += (k) + ((c) ^ ((b) | ~(d))); a = rotl(a, s) + (b)

// Runs the compression function over `blocks` consecutive 64-byte blocks.
void compress(uint32_t state[4], const unsigned char* data, size_t blocks) {
  uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
  for (; blocks; --blocks, data += kBlock) {
    uint32_t m[16];
    std::memcpy(m, data, kBlock);
    const uint32_t a0 = a, b0 = b, c0 = c, d0 = d;

    STEP_F(a, b, c, d, m[0] + 0xd76aa478u, 7);
    STEP_F(d, a, b, c, m[1] + 0xe8c7b756u, 12);
    STEP_F(c, d, a, b, m[2] + 0x242070dbu, 17);
    STEP_F(b, c, d, a, m[3] + 0xc1bdceeeu, 22);
    STEP_F(a, b, c, d, m[4] + 0xf57c0fafu, 7);
    STEP_F(d, a, b, c, m[5] + 0x4787c62au, 12);
    STEP_F(c, d, a, b, m[6] + 0xa8304613u, 17);
    STEP_F(b, c, d, a, m[7] + 0xfd469501u, 22);
    STEP_F(a, b, c, d, m[8] + 0x698098d8u, 7);
    STEP_F(d, a, b, c, m[9] + 0x8b44f7afu, 12);
    STEP_F(c, d, a, b, m[10] + 0xffff5bb1u, 17);
    STEP_F(b, c, d, a, m[11] + 0x895cd7beu, 22);
    STEP_F(a, b, c, d, m[12] + 0x6b901122u, 7);
    STEP_F(d, a, b, c, m[13] + 0xfd987193u, 12);
    STEP_F(c, d, a, b, m[14] + 0xa679438eu, 17);
    STEP_F(b, c, d, a, m[15] + 0x49b40821u, 22);

    STEP_G(a, b, c, d, m[1] + 0xf61e2562u, 5);
    STEP_G(d, a, b, c, m[6] + 0xc040b340u, 9);
    STEP_G(c, d, a, b, m[11] + 0x265e5a51u, 14);
    STEP_G(b, c, d, a, m[0] + 0xe9b6c7aau, 20);
    STEP_G(a, b, c, d, m[5] + 0xd62f105du, 5);
    STEP_G(d, a, b, c, m[10] + 0x02441453u, 9);
    STEP_G(c, d, a, b, m[15] + 0xd8a1e681u, 14);
    STEP_G(b, c, d, a, m[4] + 0xe7d3fbc8u, 20);
    STEP_G(a, b, c, d, m[9] + 0x21e1cde6u, 5);
    STEP_G(d, a, b, c, m[14] + 0xc33707d6u, 9);
    STEP_G(c, d, a, b, m[3] + 0xf4d50d87u, 14);
    STEP_G(b, c, d, a, m[8] + 0x455a14edu, 20);
    STEP_G(a, b, c, d, m[13] + 0xa9e3e905u, 5);
    STEP_G(d, a, b, c, m[2] + 0xfcefa3f8u, 9);
    STEP_G(c, d, a, b, m[7] + 0x676f02d9u, 14);
    STEP_G(b, c, d, a, m[12] + 0x8d2a4c8au, 20);

    STEP_H(a, b, c, d, m[5] + 0xfffa3942u, 4);
    STEP_H(d, a, b, c, m[8] + 0x8771f681u, 11);
    STEP_H(c, d, a, b, m[11] + 0x6d9d6122u, 16);
    STEP_H(b, c, d, a, m[14] + 0xfde5380cu, 23);
    STEP_H(a, b, c, d, m[1] + 0xa4beea44u, 4);
    STEP_H(d, a, b, c, m[4] + 0x4bdecfa9u, 11);
    STEP_H(c, d, a, b, m[7] + 0xf6bb4b60u, 16);
    STEP_H(b, c, d, a, m[10] + 0xbebfbc70u, 23);
    STEP_H(a, b, c, d, m[13] + 0x289b7ec6u, 4);
    STEP_H(d, a, b, c, m[0] + 0xeaa127fau, 11);
    STEP_H(c, d, a, b, m[3] + 0xd4ef3085u, 16);
    STEP_H(b, c, d, a, m[6] + 0x04881d05u, 23);
    STEP_H(a, b, c, d, m[9] + 0xd9d4d039u, 4);
    STEP_H(d, a, b, c, m[12] + 0xe6db99e5u, 11);
    STEP_H(c, d, a, b, m[15] + 0x1fa27cf8u, 16);
    STEP_H(b, c, d, a, m[2] + 0xc4ac5665u, 23);

    STEP_I(a, b, c, d, m[0] + 0xf4292244u, 6);
    STEP_I(d, a, b, c, m[7] + 0x432aff97u, 10);
    STEP_I(c, d, a, b, m[14] + 0xab9423a7u, 15);
    STEP_I(b, c, d, a, m[5] + 0xfc93a039u, 21);
    STEP_I(a, b, c, d, m[12] + 0x655b59c3u, 6);
    STEP_I(d, a, b, c, m[3] + 0x8f0ccc92u, 10);
    STEP_I(c, d, a, b, m[10] + 0xffeff47du, 15);
    STEP_I(b, c, d, a, m[1] + 0x85845dd1u, 21);
    STEP_I(a, b, c, d, m[8] + 0x6fa87e4fu, 6);
    STEP_I(d, a, b, c, m[15] + 0xfe2ce6e0u, 10);
    STEP_I(c, d, a, b, m[6] + 0xa3014314u, 15);
    STEP_I(b, c, d, a, m[13] + 0x4e0811a1u, 21);
    STEP_I(a, b, c, d, m[4] + 0xf7537e82u, 6);
    STEP_I(d, a, b, c, m[11] + 0xbd3af235u, 10);
    STEP_I(c, d, a, b, m[2] + 0x2ad7d2bbu, 15);
    STEP_I(b, c, d, a, m[9] + 0xeb86d391u, 21);

    a += a0; b += b0; c += c0; d += d0;
  }
  state[0] = a; state[1] = b; state[2] = c; state[3] = d;
}

#undef STEP_F
#undef STEP_G
#undef STEP_H
#undef STEP_I

void digestOf(const unsigned char* data, unsigned int length, unsigned char digest[16]) {
  MD5 context;
  MD5Open(&context);
  MD5Digest(&context, data, length);
  MD5Close(&context, digest);
}

}  // namespace

void MD5Open(MD5* context) {
  context->state[0] = 0x67452301u;
  context->state[1] = 0xefcdab89u;
  context->state[2] = 0x98badcfeu;
  context->state[3] = 0x10325476u;
  context->count[0] = context->count[1] = 0;
}

void MD5Digest(MD5* context, const void* data, unsigned int length) {
  if (!length || !data) return;
  auto in = static_cast<const unsigned char*>(data);
  const unsigned used = (context->count[0] >> 3) % kBlock;
  const uint64_t bits =
      ((uint64_t(context->count[1]) << 32) | context->count[0]) + (uint64_t(length) << 3);
  context->count[0] = uint32_t(bits);
  context->count[1] = uint32_t(bits >> 32);

  if (used) {
    const unsigned take = kBlock - used;
    if (length < take) {
      std::memcpy(context->buffer + used, in, length);
      return;
    }
    std::memcpy(context->buffer + used, in, take);
    compress(context->state, context->buffer, 1);
    in += take;
    length -= take;
  }
  compress(context->state, in, length / kBlock);
  std::memcpy(context->buffer, in + length / kBlock * kBlock, length % kBlock);
}

void MD5Close(MD5* context, unsigned char* digest) {
  // The padding is one 0x80 byte, zeros up to 56 bytes into a block, then the bit count.
  const unsigned used = (context->count[0] >> 3) % kBlock;
  unsigned char* buffer = context->buffer;
  buffer[used] = 0x80;
  std::memset(buffer + used + 1, 0, kBlock - used - 1);
  if (used >= 56) {
    compress(context->state, buffer, 1);
    std::memset(buffer, 0, 56);
  }
  std::memcpy(buffer + 56, context->count, 8);
  compress(context->state, buffer, 1);
  std::memcpy(digest, context->state, 16);
}

std::string MD5_32(const unsigned char* data, unsigned int length, bool upper) {
  unsigned char digest[16];
  digestOf(data, length, digest);
  return zrad::crypto::toHex(digest, 16, upper);
}

std::string MD5_16(const unsigned char* data, unsigned int length, bool upper) {
  unsigned char digest[16];
  digestOf(data, length, digest);
  return zrad::crypto::toHex(digest + 4, 8, upper);
}
