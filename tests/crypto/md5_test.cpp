// MD5 engine and digest forms against RFC 1321's suite and digests taken with md5sum.
#include <zrad/crypto.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "crypto/hex.h"
#include "common/testdir.h"
#include "pattern.h"

namespace {

std::string md5Of(const std::string& text, bool upper = false) {
  return MD5_32(reinterpret_cast<const unsigned char*>(text.data()), unsigned(text.size()), upper);
}

TEST(Md5, Rfc1321SuiteAndShortForm) {
  const struct { const char* text; const char* digest; } rows[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"a", "0cc175b9c0f1b6a831c399e269772661"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
       "d174ab98d277d9f5a5611c2c9f419d9f"},
      {"1234567890123456789012345678901234567890"
       "1234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const std::string text = rows[i].text;
    const auto data = reinterpret_cast<const unsigned char*>(text.data());
    std::string upper = rows[i].digest;
    for (char& c : upper) c = char(std::toupper(c));
    EXPECT_EQ(md5Of(text), rows[i].digest) << "row " << i;
    EXPECT_EQ(md5Of(text, true), upper) << "row " << i;
    EXPECT_EQ(MD5_16(data, unsigned(text.size()), false), md5Of(text).substr(8, 16)) << "row " << i;
    EXPECT_EQ(MD5_16(data, unsigned(text.size()), true), upper.substr(8, 16)) << "row " << i;
  }
}

// Sizes around the padding boundaries (55/56, 63/64/65, 119/120) and one of several MiB, with
// the digests md5sum gives for files of patternBytes.
struct SizedDigest { size_t size; const char* digest; };
const SizedDigest kSized[] = {
    {0, "d41d8cd98f00b204e9800998ecf8427e"},     {1, "89e74e640b8c46257a29de0616794d5d"},
    {55, "852e13533f66e414bbbbb3348de4f81f"},    {56, "98e8cb3457434649644b5fe9f4e5e4fa"},
    {63, "c9803ddca3b148d91d5f214be64197d4"},    {64, "bc00c8534af1e5aef0ede584d8ad5bc3"},
    {65, "4e114d3e0baf5ace365e0552a3273291"},    {119, "e0c0cb3cbc027ba4d5a6c983754f2dc1"},
    {120, "3d7a96a57e721a4e2c2cbe55937e10e2"},   {128, "154b8c17cfb174384edd9557e3e64e2b"},
    {1000, "0b8ae90ded6089334e353eb2669ab5e6"},  {3145733, "fc6e7f04808a1494320b1f317f9e2ca9"},
};

// Each size as one buffer, fed piecewise, and as a file in a fresh temporary directory.
TEST(Md5, BuffersPiecesAndFilesMatchMd5sumAndUnreadableFilesGiveEmpty) {
  TestDir dir;
  const size_t pieces[] = {1, 7, 63, 64, 65, 4096};
  for (size_t i = 0; i < std::size(kSized); ++i) {
    const auto bytes = patternBytes(kSized[i].size);
    EXPECT_EQ(MD5_32(bytes.data(), unsigned(bytes.size()), false), kSized[i].digest) << "row " << i;
    const std::string path = dir / ("f" + std::to_string(i));
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    EXPECT_EQ(MD5_File32(path, false), kSized[i].digest) << "row " << i;
    for (size_t piece : pieces) {
      if (bytes.size() > 100000 && piece < 64) continue;  // keeps the suite quick
      MD5 context;
      MD5Open(&context);
      for (size_t at = 0; at < bytes.size(); at += piece)
        MD5Digest(&context, bytes.data() + at, unsigned(std::min(piece, bytes.size() - at)));
      MD5Digest(&context, nullptr, 0);
      unsigned char digest[16];
      MD5Close(&context, digest);
      EXPECT_EQ(zrad::crypto::toHex(digest, 16, false), kSized[i].digest) << "row " << i << " piece " << piece;
    }
  }
  EXPECT_EQ(MD5_File32(dir / "f2", true), "852E13533F66E414BBBBB3348DE4F81F");
  EXPECT_EQ(MD5_File32(dir / "missing", false), "");
  EXPECT_EQ(MD5_File32(dir.path(), false), "");  // a directory opens but cannot be read
}

TEST(Md5, BitCountCarriesIntoHighWord) {
  MD5 context;
  MD5Open(&context);
  context.count[0] = 0xfffffff8u;  // 2^32 - 8 bits: 63 bytes into a block
  const unsigned char byte = 'x';
  MD5Digest(&context, &byte, 1);
  EXPECT_EQ(context.count[0], 0u);
  EXPECT_EQ(context.count[1], 1u);
}

}  // namespace
