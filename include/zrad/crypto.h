// zrad/crypto.h: MD5 digests, Base64 text and the DES message codec.
//
// A three-call MD5 engine and its hexadecimal forms, a Base64 codec with a caller-sized decode
// buffer, and a DES-CBC codec keyed by the MD5 of a pass phrase. All of it is reentrant, logs
// nothing and throws nothing.
#pragma once

#include <cstdint>
#include <string>

#include <zrad/export.h>

// MD5 engine context (RFC 1321), owned by the caller. Feed it from one thread at a time.
struct MD5 {
  uint32_t state[4];          // chaining words A, B, C, D
  uint32_t count[2];          // message length in bits, low word first; wraps at 2^64 bits
  unsigned char buffer[64];   // input not yet processed (count / 8 mod 64 bytes of it)
};

// Resets the context: count 0 and the four initial chaining words.
ZRAD_EXPORT void MD5Open(MD5* context);

// Feeds `length` bytes at `data`; any length (0 included) in any number of calls. A null
// `data` feeds nothing.
ZRAD_EXPORT void MD5Digest(MD5* context, const void* data, unsigned int length);

// Appends the padding and the length, and writes the 16-byte digest. Call MD5Open before
// feeding the context again.
ZRAD_EXPORT void MD5Close(MD5* context, unsigned char* digest);

// Digest of the buffer as 32 hexadecimal digits, two per byte in digest order; capitals when
// `upper` is true.
//   MD5_32("abc", 3, false) => "900150983cd24fb0d6963f7d28e17f72"
//   MD5_32("", 0, true)     => "D41D8CD98F00B204E9800998ECF8427E"
ZRAD_EXPORT std::string MD5_32(const unsigned char* data, unsigned int length, bool upper);

// The short form: the 16 digits of digest bytes 4 to 11, i.e. characters 8 to 23 of MD5_32.
//   MD5_16("abc", 3, false) => "3cd24fb0d6963f7d"
ZRAD_EXPORT std::string MD5_16(const unsigned char* data, unsigned int length, bool upper);

// 32-digit digest of a whole file's bytes. A file that cannot be opened or read => "".
//   empty file => "d41d8cd98f00b204e9800998ecf8427e"
ZRAD_EXPORT std::string MD5_File32(const std::string& path, bool upper);

// Base64 codec (standard alphabet, "=" padding, no line breaks). Holds no state.
class ZRAD_EXPORT CBase64 {
 public:
  CBase64() = default;
  ~CBase64() = default;

  // Base64 text of `length` bytes at `data`; null data or length < 1 => "".
  // A final pair of bytes also reads the byte after them, whose top two bits fill the third
  // character: callers keep one readable byte after their data. A zero byte there (as after a
  // zero-terminated string) gives standard Base64.
  //   "M", 1 => "TQ=="      "Ma" + 0x00, 2 => "TWE="      "Man", 3 => "TWFu"
  //   "Ma" + 0xC0, 2 => "TWH="  (the following byte shows)
  std::string Encode(const unsigned char* data, int length);

  // Decodes zero-terminated `text` into `out`; `length` carries the capacity of `out` in and the
  // decoded length out. The output is not zero-terminated. With n the text's length:
  //   null text or out, or length 0      => false
  //   n not a multiple of 4              => false, out[0] = 0
  //   length < n/4*3                     => false, length = n/4*3 + 1 (the capacity to ask for)
  //   ""                                 => true, length 0
  // Every group of four characters writes three bytes; its yield is 2 when the fourth
  // character is "=", 1 when the third is "=" too, else 3, and the next group starts at the
  // yield. Characters outside the alphabet ("=" included) count as 0 without error.
  //   "TQ==" => "M" (length 1)      "T*==" => 0x4C (length 1)      "TWFu" into capacity 2 =>
  //   false, length 4
  bool Decode(const char* text, unsigned char* out, unsigned int& length);
};

// Appends the encrypted form of `length` bytes at `data` to `out`: the length as a 4-byte
// little-endian int32, then single-DES CBC ciphertext of the data zero-padded to a multiple
// of 8. Key = MD5(passPhrase)[0..7], initial chaining value = MD5(passPhrase)[8..15].
// Nothing past `data + length` is read. Returns true; false (nothing appended) only for a null
// `data` with a positive length.
//   length <= 0 => the 4 length bytes only       9 bytes => 4 + 16 bytes
ZRAD_EXPORT bool DES_Encrypt(void* data, int length, const std::string& passPhrase,
                             std::string& out);

// Appends the plaintext of the encrypted form of `size` bytes at `data` to `out`. Returns false,
// `out` untouched, when `size` is not 4 + the stored length rounded up to a multiple of 8
// (a null `data` or `size` < 4 included). Nothing is authenticated: a wrong pass phrase gives
// garbage of the right length and true.
//   encrypted form of 0 bytes => true, nothing appended      size one short => false
ZRAD_EXPORT bool DES_Decrypt(void* data, int size, const std::string& passPhrase,
                             std::string& out);
