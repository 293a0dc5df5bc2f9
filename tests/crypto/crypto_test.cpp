// The crypto family: MD5 against digests taken with md5sum; Base64 against
// RFC 4648's vectors, all byte values and the decode rules for odd input; the DES cipher against
// published known answers, and the DES message layout against ciphertexts taken once from an
// independent DES-CBC implementation.
#include <zrad/crypto.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/testdir.h"
#include "crypto/des_cipher.h"
#include "crypto/hex.h"

namespace {

using zrad::crypto::DesContext;
using zrad::crypto::DesDirection;

// Byte i is (i * 131 + 7) mod 256: no runs, every value, reproducible outside the tests.
std::vector<unsigned char> patternBytes(size_t count) {
  std::vector<unsigned char> bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i * 131 + 7);
  return bytes;
}

// ---------------------------------------------------------------------------------------------
// MD5

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

// Each size as one buffer, fed piecewise and as a file in a fresh temporary directory; the
// short and upper-case forms of one of them.
TEST(Md5, BuffersPiecesAndFilesMatchMd5sumAndUnreadableFilesGiveEmpty) {
  TestDir dir;
  const size_t pieces[] = {1, 7, 63, 64, 65, 4096};
  for (size_t i = 0; i < std::size(kSized); ++i) {
    const auto bytes = patternBytes(kSized[i].size);
    EXPECT_EQ(MD5_32(bytes.data(), unsigned(bytes.size()), false), kSized[i].digest) << "row " << i;
    const std::string path = dir / ("f" + std::to_string(i));
    writeFile(path, std::string(bytes.begin(), bytes.end()));
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
  const auto bytes = patternBytes(55);  // kSized[2]
  EXPECT_EQ(MD5_32(bytes.data(), 55, true), "852E13533F66E414BBBBB3348DE4F81F");
  EXPECT_EQ(MD5_16(bytes.data(), 55, false), "3f66e414bbbbb334");  // digits 8 to 23
  EXPECT_EQ(MD5_16(bytes.data(), 55, true), "3F66E414BBBBB334");
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

// ---------------------------------------------------------------------------------------------
// Base64

// Encodes the characters of `text`; a std::string keeps a zero byte after its data.
std::string encode(const std::string& text) {
  return CBase64().Encode(reinterpret_cast<const unsigned char*>(text.c_str()), int(text.size()));
}

// Decodes into a buffer of exactly `capacity` bytes, so that any write beyond it is caught.
struct Decoded { bool ok; unsigned length; std::vector<unsigned char> bytes; };
Decoded decode(const char* text, unsigned capacity) {
  std::vector<unsigned char> out(capacity, 0xAA);
  unsigned length = capacity;
  const bool ok = CBase64().Decode(text, capacity ? out.data() : nullptr, length);
  if (ok) out.resize(length);
  return {ok, length, out};
}

// Decoding is pinned by the odd-input rows below and by the round trip of every length.
TEST(Base64, Rfc4648Vectors) {
  const char* rows[][2] = {{"", ""},         {"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
                           {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
  for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(encode(rows[i][0]), rows[i][1]) << "row " << i;
}

TEST(Base64, EveryByteValueAndLengthRoundTrips) {
  std::vector<unsigned char> all(257);
  for (int b = 0; b < 256; ++b) all[b] = static_cast<unsigned char>(255 - b);
  all[256] = 0;  // the readable byte after the data
  for (int n = 0; n <= 256; ++n) {
    // The last n of the 256 values, followed by the zero byte.
    std::vector<unsigned char> data(all.begin() + (256 - n), all.end());
    const std::string text = CBase64().Encode(data.data(), n);
    ASSERT_EQ(text.size(), size_t(n + 2) / 3 * 4) << "length " << n;
    const Decoded d = decode(text.c_str(), unsigned(text.size() / 4 * 3));
    ASSERT_TRUE(d.ok || n == 0) << "length " << n;
    EXPECT_EQ(d.bytes, std::vector<unsigned char>(data.begin(), data.begin() + n)) << "length " << n;
  }
}

TEST(Base64, EncodeTakesTheByteAfterAFinalPairAndBothWaysRefuseMissingArguments) {
  const unsigned char pairThenBits[] = {'M', 'a', 0xC0};
  EXPECT_EQ(CBase64().Encode(pairThenBits, 2), "TWH=");
  EXPECT_EQ(CBase64().Encode(pairThenBits, 0), "");
  EXPECT_EQ(CBase64().Encode(pairThenBits, -3), "");
  EXPECT_EQ(CBase64().Encode(nullptr, 5), "");

  unsigned char out[4];
  unsigned length = 4;
  EXPECT_FALSE(CBase64().Decode(nullptr, out, length));
  EXPECT_FALSE(CBase64().Decode("TQ==", nullptr, length));
  length = 0;
  EXPECT_FALSE(CBase64().Decode("TQ==", out, length));
  EXPECT_EQ(length, 0u);
}

TEST(Base64, DecodeRulesForOddInput) {
  const struct {
    const char* text;
    unsigned capacity;
    bool ok;
    unsigned length;          // length after the call
    std::vector<int> bytes;   // decoded bytes on success; on failure the first byte, if any
  } rows[] = {
      {"TWFu", 2, false, 4, {0xAA}},          // too small: asks for n/4*3 + 1
      {"TWFu", 3, true, 3, {'M', 'a', 'n'}},  // exactly n/4*3 is enough
      {"TWFuT", 16, false, 16, {0}},          // not a multiple of 4: zero in the first byte
      {"T", 1, false, 1, {0}},
      {"", 1, true, 0, {}},
      {"TQ==", 3, true, 1, {'M'}},
      {"T*==", 3, true, 1, {0x4C}},           // stray character counts as 0
      {"TQ=A", 3, true, 3, {0x4D, 0, 0}},     // "=" third but not fourth: no padding
      {"=A==", 3, true, 1, {0}},
      {"TQ==TWFu", 6, true, 4, {'M', 'M', 'a', 'n'}},  // padding mid-text by position only
      {"TWE=TQ==", 6, true, 3, {'M', 'a', 'M'}},
      {"TWFuTWFu", 5, false, 7, {0xAA}},
      {"+/+/", 3, true, 3, {0xFB, 0xFF, 0xBF}},  // the alphabet's last two characters
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const Decoded d = decode(rows[i].text, rows[i].capacity);
    EXPECT_EQ(d.ok, rows[i].ok) << "row " << i;
    EXPECT_EQ(d.length, rows[i].length) << "row " << i;
    const size_t shown = d.ok ? d.bytes.size() : 1;  // every failing row has room for a byte
    EXPECT_EQ(std::vector<int>(d.bytes.begin(), d.bytes.begin() + shown), rows[i].bytes) << "row " << i;
  }
}

// ---------------------------------------------------------------------------------------------
// DES

std::vector<unsigned char> fromHex(const std::string& hex) {
  std::vector<unsigned char> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return bytes;
}

DesContext contextOf(const std::vector<unsigned char>& key, const unsigned char* iv,
                     DesDirection direction) {
  DesContext context;
  zrad::crypto::desSetup(context, key.data(), iv, direction);
  return context;
}

std::string toHex(const std::string& bytes) {
  return zrad::crypto::toHex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), false);
}

TEST(DesCipher, KnownAnswerBlocksBothWays) {
  const struct { const char* key; const char* plain; const char* cipher; } rows[] = {
      {"133457799BBCDFF1", "0123456789ABCDEF", "85e813540f0ab405"},
      {"0101010101010101", "8000000000000000", "95f8a5e5dd31d900"},  // variable plaintext
      {"8001010101010101", "0000000000000000", "95a8d72813daa94d"},  // variable key
      {"0031D9619DC1366E", "5CD54CA83DEF57DA", "7a389d10354bd271"},  // 0131D9619DC1376E's answer: parity ignored
  };
  const unsigned char iv[8] = {};
  for (size_t i = 0; i < std::size(rows); ++i) {
    const auto key = fromHex(rows[i].key);
    const auto plain = fromHex(rows[i].plain);
    const auto cipher = fromHex(rows[i].cipher);
    unsigned char out[8];
    zrad::crypto::desBlock(contextOf(key, iv, DesDirection::kEncrypt), plain.data(), out);
    EXPECT_EQ(std::vector<unsigned char>(out, out + 8), cipher) << "row " << i;
    zrad::crypto::desBlock(contextOf(key, iv, DesDirection::kDecrypt), cipher.data(), out);
    EXPECT_EQ(std::vector<unsigned char>(out, out + 8), plain) << "row " << i;
  }
}

TEST(DesCipher, CbcChainsAcrossCallsAndRefusesPartialBlocks) {
  // The CBC example of FIPS 81.
  const auto key = fromHex("0123456789abcdef");
  const auto iv = fromHex("1234567890abcdef");
  const std::string plain = "Now is the time for all ";
  const auto expected = fromHex("e5c7cdde872bf27c43e934008c389c0f683788499a7c05f6");
  auto in = reinterpret_cast<const unsigned char*>(plain.data());
  DesContext enc = contextOf(key, iv.data(), DesDirection::kEncrypt);
  std::vector<unsigned char> out(24, 0xAA);
  EXPECT_EQ(zrad::crypto::desCbc(enc, in, out.data(), 7), zrad::crypto::kDesBadLength);
  EXPECT_EQ(out, std::vector<unsigned char>(24, 0xAA));  // nothing written, chain unchanged
  EXPECT_EQ(zrad::crypto::desCbc(enc, in, out.data(), 8), 0);
  EXPECT_EQ(zrad::crypto::desCbc(enc, in + 8, out.data() + 8, 16), 0);
  EXPECT_EQ(out, expected);

  DesContext dec = contextOf(key, iv.data(), DesDirection::kDecrypt);
  EXPECT_EQ(zrad::crypto::desCbc(dec, out.data(), out.data(), 16), 0);  // in place
  EXPECT_EQ(zrad::crypto::desCbc(dec, out.data() + 16, out.data() + 16, 8), 0);
  EXPECT_EQ(std::string(out.begin(), out.end()), plain);
}

// Encrypted forms of patternBytes(size) taken with an independent DES-CBC implementation
// (key and IV from the pass phrase's MD5, data zero-padded), behind the 4-byte length.
// Long forms are given by their MD5.
struct Message { const char* pass; size_t size; const char* form; };
const Message kMessages[] = {
    {"zrad pass phrase", 0, "00000000"},
    {"zrad pass phrase", 1, "01000000676435ea7b13b291"},
    {"zrad pass phrase", 8, "08000000029fcc5ccd97029f"},
    {"zrad pass phrase", 9, "09000000029fcc5ccd97029f61587de7c3301cab"},
    {"zrad pass phrase", 513, "md5:112e7810433768fbb4fb1ecf39187c14"},
    {"", 1, "01000000848f9efe91489464"},
    {"", 1000, "md5:cf60125c70723d4750d11490eff40e71"},
};

TEST(DesMessage, MatchesIndependentCiphertextAndRoundTrips) {
  for (size_t i = 0; i < std::size(kMessages); ++i) {
    const Message& m = kMessages[i];
    // An exactly sized heap buffer: reading past the data would be caught.
    auto plain = patternBytes(m.size);
    std::string out = "kept";
    ASSERT_TRUE(DES_Encrypt(plain.data(), int(m.size), m.pass, out)) << "row " << i;
    ASSERT_EQ(out.substr(0, 4), "kept") << "row " << i;
    const std::string form = out.substr(4);
    auto formBytes = reinterpret_cast<const unsigned char*>(form.data());
    EXPECT_EQ(m.size > 9 ? "md5:" + MD5_32(formBytes, unsigned(form.size()), false) : toHex(form), m.form)
        << "row " << i;

    std::vector<unsigned char> sealed(form.begin(), form.end());
    std::string back = "kept";
    ASSERT_TRUE(DES_Decrypt(sealed.data(), int(sealed.size()), m.pass, back)) << "row " << i;
    EXPECT_EQ(back, "kept" + std::string(plain.begin(), plain.end())) << "row " << i;
    // Nothing is authenticated: another pass phrase gives other bytes of the same length.
    std::string wrong;
    EXPECT_TRUE(DES_Decrypt(sealed.data(), int(sealed.size()), std::string(m.pass) + "!", wrong)) << "row " << i;
    EXPECT_EQ(wrong.size(), m.size) << "row " << i;
    EXPECT_TRUE(m.size == 0 || wrong != back.substr(4)) << "row " << i;
  }
}

TEST(DesMessage, LengthPrefixMustMatchSize) {
  const std::string pass = "p";
  auto plain = patternBytes(9);
  std::string form;
  ASSERT_TRUE(DES_Encrypt(plain.data(), 9, pass, form));
  std::vector<unsigned char> sealed(form.begin(), form.end());
  sealed.push_back(0);  // room for a size one too long

  auto decryptWith = [&](int32_t prefix, int size, std::string& out) {
    std::vector<unsigned char> copy = sealed;
    std::memcpy(copy.data(), &prefix, 4);
    copy.resize(size_t(std::max(size, 0)));  // exactly `size` readable bytes
    return DES_Decrypt(copy.data(), size, pass, out);
  };
  const struct { int32_t prefix; int size; bool ok; size_t appended; } rows[] = {
      {9, 20, true, 9},    {9, 19, false, 0},   {9, 21, false, 0},  {16, 20, true, 16},
      {17, 20, false, 0},  {0, 4, true, 0},     {-1, 4, true, 0},   {-14, 4, true, 0},
      {-15, 4, false, 0},  {0x7fffffff, 20, false, 0},  {int32_t(0x80000000), 20, false, 0},
      {9, 3, false, 0},    {0, 0, false, 0},    {0, -4, false, 0},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    std::string out = "kept";
    EXPECT_EQ(decryptWith(rows[i].prefix, rows[i].size, out), rows[i].ok) << "row " << i;
    EXPECT_EQ(out.size(), 4 + rows[i].appended) << "row " << i;
    EXPECT_EQ(out.substr(0, 4), "kept") << "row " << i;
  }
  std::string out;
  EXPECT_FALSE(DES_Decrypt(nullptr, 20, pass, out));
  EXPECT_FALSE(DES_Encrypt(nullptr, 3, pass, out));
  EXPECT_TRUE(out.empty());
  EXPECT_TRUE(DES_Encrypt(plain.data(), -2, pass, out));  // a negative length: the prefix alone
  EXPECT_EQ(toHex(out), "feffffff");
}

}  // namespace
