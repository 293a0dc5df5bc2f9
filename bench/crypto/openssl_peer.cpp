// OpenSSL implementations of the benchmarked jobs (its low-level MD5 and DES calls are
// deprecated but still the fastest way to reach its code).
#define OPENSSL_SUPPRESS_DEPRECATED
#include "openssl_peer.h"

#include <openssl/des.h>
#include <openssl/evp.h>
#include <openssl/md5.h>

#include <cstring>

namespace peer {

std::string md5Hex(const unsigned char* data, size_t length) {
  static const char digits[] = "0123456789abcdef";
  static char pairs[512];
  static const bool filled = [] {
    for (int b = 0; b < 256; ++b) pairs[2 * b] = digits[b >> 4], pairs[2 * b + 1] = digits[b & 15];
    return true;
  }();
  (void)filled;
  unsigned char digest[MD5_DIGEST_LENGTH];
  MD5(data, length, digest);
  std::string hex(32, '\0');
  for (int i = 0; i < 16; ++i) std::memcpy(&hex[2 * i], &pairs[2 * digest[i]], 2);
  return hex;
}

void desCbc(const unsigned char key[8], const unsigned char iv[8], const unsigned char* in,
            unsigned char* out, size_t length, bool encrypt) {
  DES_cblock keyBlock, ivBlock;
  std::memcpy(keyBlock, key, 8);
  std::memcpy(ivBlock, iv, 8);
  DES_key_schedule schedule;
  DES_set_key_unchecked(&keyBlock, &schedule);
  DES_ncbc_encrypt(in, out, long(length), &schedule, &ivBlock, encrypt ? DES_ENCRYPT : DES_DECRYPT);
}

std::string base64Encode(const unsigned char* data, size_t length) {
  std::string text((length + 2) / 3 * 4, '\0');
  EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&text[0]), data, int(length));
  return text;
}

int base64Decode(const char* text, size_t length, unsigned char* out) {
  return EVP_DecodeBlock(out, reinterpret_cast<const unsigned char*>(text), int(length));
}

}  // namespace peer
