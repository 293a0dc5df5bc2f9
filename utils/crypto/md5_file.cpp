// The MD5 digest of a file: the crypto family's one reader of the file system.
#include <zrad/crypto.h>

#include <cstdio>
#include <memory>

#include "crypto/hex.h"

std::string MD5_File32(const std::string& path, bool upper) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) return std::string();
  MD5 context;
  MD5Open(&context);
  unsigned char block[16 * 1024];
  while (size_t got = std::fread(block, 1, sizeof block, file.get()))
    MD5Digest(&context, block, static_cast<unsigned int>(got));
  // A read error (a directory opens but cannot be read) must not pass for a short file.
  if (std::ferror(file.get())) return std::string();
  unsigned char digest[16];
  MD5Close(&context, digest);
  return zrad::crypto::toHex(digest, 16, upper);
}
