// Tests of the binary element stream: exact bytes per kind, round trips, and how the reader
// treats short, lying and repeated input.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zrad/json.h>

#include "common/testdir.h"

namespace {

ZrJsonPtr make(int type) { return ElementValue::createObject(type); }

std::string hexOf(const std::string& bytes) {
  static const char kHex[] = "0123456789abcdef";
  std::string out;
  for (unsigned char c : bytes) {
    if (!out.empty()) out += ' ';
    out += kHex[c >> 4];
    out += kHex[c & 15];
  }
  return out;
}

std::string bytesOf(const std::string& hex) {
  std::string out;
  for (size_t i = 0; i + 1 < hex.size(); i += 3) out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

std::string encode(const ZrJsonPtr& e) {
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  e->writeBinary(ZrStreamBufPtr(s.get()));
  return std::string(reinterpret_cast<const char*>(s->data()), s->length());
}

// Reads one element from `bytes`; null when the reader refuses.
ZrJsonPtr decode(const std::string& bytes) {
  ZrJsonPtr e = make(etNullFlag);
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  if (!bytes.empty()) s->putBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
  s->rewind();
  return static_cast<ElementValue*>(e.get())->readBinary(ZrStreamBufPtr(s.get())) ? e : ZrJsonPtr();
}

TEST(BinaryStream, LayoutBytes) {
  ZrJsonPtr ro = make(etObject);
  ro->set_propertyi("k", 5, true);
  ZrJsonPtr oneTrue = make(etObject);
  oneTrue->set_propertyb("a", true, false);
  ZrJsonPtr arrNone = make(etArray);
  arrNone->array_append(make(etNone));
  struct Row { ZrJsonPtr e; const char* hex; } rows[] = {
      {make(etInteger)->set_valuei(5), "10 00 05 00 00 00 00 00 00 00"},
      {ro("k"), "10 20 05 00 00 00 00 00 00 00"},
      {make(etString)->set_values("ab"), "04 00 02 00 00 00 61 62"},
      {make(etString), "04 00 00 00 00 00"},
      {make(etObject), "02 00 00 00 00 00"},
      {oneTrue, "02 00 01 00 00 00 01 00 00 00 61 08 00 01 00 00 00 00 00 00 00"},
      {arrNone, "01 00 01 00 00 00 00 00"},
      {make(etNullFlag), "00 10"},
      {make(etDouble)->set_valued(1.0), "20 00 00 00 00 00 00 00 f0 3f"},
      {make(etTime)->set_valuet(-2), "80 00 fe ff ff ff ff ff ff ff"},
      {make(etReserved42), "42 00"},
      {ZrJson::readjson(R"({"*l":[null]})"), "02 00 01 00 00 00 01 00 00 00 6c 01 20 01 00 00 00 00 10"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ASSERT_TRUE(rows[i].e) << "row " << i;
    EXPECT_EQ(hexOf(encode(rows[i].e)), rows[i].hex) << "row " << i;
  }
}

TEST(BinaryStream, RoundTrips) {
  // Names and strings of every length around the sizes kept inline.
  std::string lengths = "{";
  for (int n = 1; n <= 24; ++n) {
    std::string text = "abcdefghijklmnopqrstuvwxyz0123456789";
    lengths += (n > 1 ? ",\"" : "\"") + text.substr(0, n) + "\":\"" + text.substr(36 - n) + "\"";
  }
  lengths += "}";
  EXPECT_EQ(ZrJson::readjson(lengths)->writeJson().str(), lengths);
  const char* texts[] = {R"({"*a":1,"b":[1.5,"x",{"c":null},[],{}],"e":{"f":true}})", "[[[]]]", "\"s\"",
                         lengths.c_str(), R"(["12345678901234","123456789012345",""])",
                         "-9223372036854775808", "[null,false]"};
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    ZrJsonPtr tree = ZrJson::readjson(texts[i]);
    ASSERT_TRUE(tree) << "row " << i;
    ZrJsonPtr back = decode(encode(tree));
    ASSERT_TRUE(back) << "row " << i;
    EXPECT_EQ(back->writeJson().str(), tree->writeJson().str()) << "row " << i;
    EXPECT_EQ(encode(back), encode(tree)) << "row " << i;
  }
  EXPECT_EQ(decode(encode(make(etTime)->set_valuet(1000)))->getType(), etTime);
  EXPECT_EQ(decode(encode(make(etTime)->set_valuet(1000)))->timeValue(), 0) << "times are not restored";
  int x;
  ZrJsonPtr p = decode(encode(make(etNone)->set_valuep(&x, etPointer)));
  EXPECT_EQ(p->getType(), etPointer);
  EXPECT_EQ(p->ptrValue(), nullptr);
}

TEST(BinaryStream, ReaderEdgeCases) {
  struct Row { const char* hex; const char* json; } rows[] = {
      // the name "a" twice: the later value wins
      {"02 00 02 00 00 00 01 00 00 00 61 10 00 01 00 00 00 00 00 00 00 01 00 00 00 61 10 00 02 00 00 00 00 00 00 00", R"({"a":2})"},
      // names out of order are sorted; a name length of -1 is an empty name
      {"02 00 02 00 00 00 01 00 00 00 62 08 00 01 00 00 00 00 00 00 00 ff ff ff ff 08 00 00 00 00 00 00 00 00 00",
       R"({"":false,"b":true})"},
      {"04 00 fe ff ff ff", "\"\""},           // negative string length: empty
      {"01 00 ff ff ff ff", "[]"},             // negative count: empty
      {"05 00 03 00 00 00 61 62 63", nullptr}, // a byte block is read (no JSON form checked)
      {"ff ff 00 00 00 00 00 00 00 00", nullptr},
      // short, lying or truncated input (counts far beyond the input: see the hostile suite)
      {"", "null"},
      {"10", "null"},
      {"10 00 05 00", "null"},
      {"04 00 05 00 00 00 61 62", "null"},
      {"02 00 00 00 00 80 00", "{}"},
      {"02 00 01 00 00 00 ff ff ff 7f 61", "null"},
      {"01 00 02 00 00 00 00 10", "null"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr e = decode(bytesOf(rows[i].hex));
    if (!rows[i].json) {
      EXPECT_TRUE(e) << "row " << i;
      continue;
    }
    std::string got = e ? e->writeJson().str() : "null";
    EXPECT_EQ(got, rows[i].json) << "row " << i;
  }
  ZrJsonPtr block = decode(bytesOf("05 00 03 00 00 00 61 62 63"));
  EXPECT_EQ(hexOf(encode(block)), "05 00 03 00 00 00 61 62 63");
}

TEST(BinaryStream, SignatureStreamsAndPositions) {
  ZrJson tree(ZrJson::readjson(R"({"a":[1,2]})"));
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  ASSERT_TRUE(tree.write2Stream(s.get(), ZrJson::eBinary));
  ASSERT_TRUE(tree.write2Stream(s.get(), ZrJson::eBinary));
  EXPECT_EQ(s->data()[0], 0xE0);
  s->rewind();
  ZrJson first, second;
  ASSERT_TRUE(first.readBinaryStream(s.get()));
  EXPECT_EQ(s->tell(), s->length() / 2) << "the reader stops right after its element";
  ASSERT_TRUE(second.readBinaryStream(s.get()));
  EXPECT_EQ(second->writeJson().str(), R"({"a":[1,2]})");
  EXPECT_FALSE(second.readBinaryStream(s.get())) << "nothing left";

  ZrMemoryStreamPtr text = ZrMemoryStream::createNew();
  ASSERT_TRUE(tree.write2Stream(text.get(), ZrJson::eJsonText));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(text->data()), text->length()), R"({"a":[1,2]})");
  text->rewind();
  ZrJson notBinary(ZrJson::readjson(R"({"keep":1})"));
  EXPECT_FALSE(notBinary.readBinaryStream(text.get()));
  EXPECT_EQ(notBinary->writeJson().str(), R"({"keep":1})") << "a refused stream changes nothing";
  EXPECT_FALSE(ZrJson().write2Stream(s.get(), ZrJson::eBinary));

  // A file stream is read through a copy of its rest: the position must still end up right
  // after the element, and stay put when the element is refused.
  TestDir dir;
  writeFile(dir / "two.bin", std::string(reinterpret_cast<const char*>(s->data()), s->length()) + "\xE0\x10");
  ZrStreamBufPtr file = zrSystemServices()->createFile(ZrUtf8String(dir / "two.bin"), kFileRead);
  ZrJson fromFile;
  ASSERT_TRUE(fromFile.readBinaryStream(file.get()));
  EXPECT_EQ(file->tell(), s->length() / 2);
  ASSERT_TRUE(fromFile.readBinaryStream(file.get()));
  EXPECT_EQ(file->tell(), s->length());
  EXPECT_FALSE(fromFile.readBinaryStream(file.get())) << "a type word cut short";
  EXPECT_EQ(file->tell(), s->length() + 1) << "only the signature byte is taken";
  EXPECT_EQ(fromFile->writeJson().str(), R"({"a":[1,2]})");
}

}  // namespace
