// Base64 against RFC 4648's vectors, all byte values, and the decode rules for odd input.
#include <zrad/crypto.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

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

TEST(Base64, Rfc4648VectorsBothWays) {
  const struct { const char* plain; const char* text; } rows[] = {
      {"", ""},         {"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    const std::string plain = rows[i].plain;
    EXPECT_EQ(encode(plain), rows[i].text) << "row " << i;
    const Decoded d = decode(rows[i].text, unsigned(std::strlen(rows[i].text) / 4 * 3) + 1);
    EXPECT_TRUE(d.ok) << "row " << i;
    EXPECT_EQ(std::string(d.bytes.begin(), d.bytes.end()), plain) << "row " << i;
  }
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
  const std::string longText(1000, 'z');  // no line breaks at any length
  EXPECT_EQ(encode(longText).find('\n'), std::string::npos);

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
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const Decoded d = decode(rows[i].text, rows[i].capacity);
    EXPECT_EQ(d.ok, rows[i].ok) << "row " << i;
    EXPECT_EQ(d.length, rows[i].length) << "row " << i;
    const size_t shown = d.ok ? d.bytes.size() : 1;  // every failing row has room for a byte
    EXPECT_EQ(std::vector<int>(d.bytes.begin(), d.bytes.begin() + shown), rows[i].bytes) << "row " << i;
  }
}

}  // namespace
