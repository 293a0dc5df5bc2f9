// The peer side of the crypto benchmarks: the same jobs done with OpenSSL's libcrypto.
//
// Kept in its own translation unit so that OpenSSL's MD5() never meets the library's MD5
// context type.
#pragma once

#include <cstddef>
#include <string>

namespace peer {

// MD5() of the buffer, then 32 lower-case digits through a table.
std::string md5Hex(const unsigned char* data, size_t length);

// DES-CBC over `length` bytes (a multiple of 8), key schedule included.
void desCbc(const unsigned char key[8], const unsigned char iv[8], const unsigned char* in,
            unsigned char* out, size_t length, bool encrypt);

// EVP_EncodeBlock into a presized string.
std::string base64Encode(const unsigned char* data, size_t length);

// EVP_DecodeBlock into `out`; returns the byte count it reports.
int base64Decode(const char* text, size_t length, unsigned char* out);

}  // namespace peer
