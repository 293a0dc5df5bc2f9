// DES_Encrypt / DES_Decrypt: the message layout around the DES-CBC cipher.
//
// A message is its length as a little-endian int32, then one CBC chain over the data
// zero-padded to a multiple of 8. The data is produced and consumed in one pass: cutting it
// into 512-byte chunks whose chain runs on across them gives the same bytes.
#include <zrad/crypto.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "crypto/des_cipher.h"

namespace {

using zrad::crypto::DesContext;
using zrad::crypto::DesDirection;

constexpr size_t kLengthBytes = 4;

// Key = MD5(passPhrase)[0..7], initial chaining value = MD5(passPhrase)[8..15].
DesContext contextFor(const std::string& passPhrase, DesDirection direction) {
  MD5 md5;
  MD5Open(&md5);
  for (size_t at = 0; at < passPhrase.size(); at += UINT_MAX) {
    const size_t piece = std::min<size_t>(passPhrase.size() - at, UINT_MAX);
    MD5Digest(&md5, passPhrase.data() + at, unsigned(piece));
  }
  unsigned char digest[16];
  MD5Close(&md5, digest);
  DesContext context;
  zrad::crypto::desSetup(context, digest, digest + 8, direction);
  return context;
}

}  // namespace

bool DES_Encrypt(void* data, int length, const std::string& passPhrase, std::string& out) {
  if (!data && length > 0) return false;
  const int32_t stored = length;
  out.append(reinterpret_cast<const char*>(&stored), kLengthBytes);
  if (length < 1) return true;
  const size_t padded = (size_t(length) + 7) / 8 * 8;
  const size_t at = out.size();
  out.resize(at + padded);
  auto in = static_cast<const unsigned char*>(data);
  auto cipher = reinterpret_cast<unsigned char*>(&out[at]);
  DesContext context = contextFor(passPhrase, DesDirection::kEncrypt);
  const size_t whole = size_t(length) / 8 * 8;
  zrad::crypto::desCbc(context, in, cipher, whole);
  // The last partial block is padded in a copy, so nothing past the data is read.
  if (const size_t rest = size_t(length) - whole) {
    unsigned char block[8] = {0};
    std::memcpy(block, in + whole, rest);
    zrad::crypto::desCbc(context, block, cipher + whole, 8);
  }
  return true;
}

bool DES_Decrypt(void* data, int size, const std::string& passPhrase, std::string& out) {
  if (!data || size < int(kLengthBytes)) return false;
  auto in = static_cast<const unsigned char*>(data);
  int32_t length;
  std::memcpy(&length, in, kLengthBytes);
  // Integer division truncates toward zero, so small negative lengths also claim 4 bytes.
  if ((int64_t(length) + 7) / 8 * 8 + int64_t(kLengthBytes) != size) return false;
  if (length < 1) return true;
  const size_t at = out.size();
  out.resize(at + size_t(length));
  auto plain = reinterpret_cast<unsigned char*>(&out[at]);
  // Decrypting the padded tail as a whole block and keeping only its first bytes is the same
  // as decrypting it and dropping the padding.
  DesContext context = contextFor(passPhrase, DesDirection::kDecrypt);
  const size_t whole = size_t(length) / 8 * 8;
  zrad::crypto::desCbc(context, in + kLengthBytes, plain, whole);
  if (const size_t rest = size_t(length) - whole) {
    unsigned char block[8];
    zrad::crypto::desCbc(context, in + kLengthBytes + whole, block, 8);
    std::memcpy(plain + whole, block, rest);
  }
  return true;
}
