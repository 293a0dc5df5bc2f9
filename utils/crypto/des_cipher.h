// The single-DES block cipher (FIPS 46-3) and its CBC mode, for the DES message codec.
//
// A context holds the 16 round keys of one direction and the running chaining value; the
// block routine works on whole 8-byte blocks only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zrad::crypto {

enum class DesDirection { kEncrypt, kDecrypt };

// The result of desCbc for a length that is not a multiple of the block size.
constexpr int kDesBadLength = 1030;

struct DesContext {
  uint32_t keys[32];     // two words per round, in the order the rounds use them
  uint32_t chain[2];     // chaining value as two big-endian words
  DesDirection direction;
};

// Prepares `context` for one direction. The key's parity bits (the low bit of each byte) are
// ignored, as the standard has it.
void desSetup(DesContext& context, const unsigned char key[8], const unsigned char iv[8],
              DesDirection direction);

// CBC-encrypts or -decrypts `length` bytes from `in` to `out` (which may be the same buffer),
// carrying the chaining value on for the next call. Returns 0, or kDesBadLength with nothing
// done when `length` is not a multiple of 8.
int desCbc(DesContext& context, const unsigned char* in, unsigned char* out, size_t length);

// One block through the cipher alone (no chaining), in the context's direction.
void desBlock(const DesContext& context, const unsigned char in[8], unsigned char out[8]);

}  // namespace zrad::crypto
