// The DES cipher against published known answers, and the message layout against ciphertexts
// taken once from an independent DES-CBC implementation.
#include <zrad/crypto.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "crypto/des_cipher.h"
#include "crypto/hex.h"
#include "pattern.h"

namespace {

using zrad::crypto::DesContext;
using zrad::crypto::DesDirection;

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
      {"0123456789ABCDEF", "4E6F772069732074", "3fa40e8a984d4815"},  // "Now is t"
      {"0101010101010101", "8000000000000000", "95f8a5e5dd31d900"},  // variable plaintext
      {"8001010101010101", "0000000000000000", "95a8d72813daa94d"},  // variable key
      {"7CA110454A1A6E57", "01A1D6D039776742", "690f5b0d9a26939b"},
      {"0131D9619DC1376E", "5CD54CA83DEF57DA", "7a389d10354bd271"},
      {"0031D9619DC1366E", "5CD54CA83DEF57DA", "7a389d10354bd271"},  // parity bits ignored
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
    {"zrad pass phrase", 511, "md5:cd502dec1714d10503e8740732ae5ad7"},
    {"zrad pass phrase", 512, "md5:4b71948f1ce99802f74ed4f10cc989c1"},
    {"zrad pass phrase", 513, "md5:112e7810433768fbb4fb1ecf39187c14"},
    {"zrad pass phrase", 1000, "md5:ac8867bd31deb8c2f64edf88912d6685"},
    {"", 1, "01000000848f9efe91489464"},
    {"", 9, "090000007206693c70b2890ab2bf981738671023"},
    {"", 513, "md5:1dfb628fdc5a8f7502977ebbe353d363"},
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
    EXPECT_EQ(form.size(), 4 + (m.size + 7) / 8 * 8) << "row " << i;
    const std::string expected = m.form;
    if (expected.rfind("md5:", 0) == 0)
      EXPECT_EQ(MD5_32(reinterpret_cast<const unsigned char*>(form.data()), unsigned(form.size()), false),
                expected.substr(4)) << "row " << i;
    else
      EXPECT_EQ(toHex(form), expected) << "row " << i;

    std::vector<unsigned char> sealed(form.begin(), form.end());
    std::string back = "kept";
    ASSERT_TRUE(DES_Decrypt(sealed.data(), int(sealed.size()), m.pass, back)) << "row " << i;
    EXPECT_EQ(back, "kept" + std::string(plain.begin(), plain.end())) << "row " << i;
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
  EXPECT_TRUE(out.empty());
}

TEST(DesMessage, EmptyNegativeAndWrongPassPhrase) {
  unsigned char byte = 1;
  const struct { unsigned char* data; int size; bool ok; const char* form; } rows[] = {
      {nullptr, 0, true, "00000000"}, {&byte, -2, true, "feffffff"}, {nullptr, 3, false, ""}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    std::string out;
    EXPECT_EQ(DES_Encrypt(rows[i].data, rows[i].size, "p", out), rows[i].ok) << "row " << i;
    EXPECT_EQ(toHex(out), rows[i].form) << "row " << i;
  }

  auto plain = patternBytes(100);
  std::string form;
  ASSERT_TRUE(DES_Encrypt(plain.data(), 100, "right", form));
  std::string wrong;
  EXPECT_TRUE(DES_Decrypt(&form[0], int(form.size()), "wrong", wrong));
  EXPECT_EQ(wrong.size(), 100u);
  EXPECT_NE(wrong, std::string(plain.begin(), plain.end()));
}

}  // namespace
