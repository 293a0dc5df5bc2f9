// Tests of the binary element stream: exact bytes per kind, round trips, and how the reader
// treats short, lying and repeated input.
#include <cstdio>
#include <string>
#include <vector>

#include "common/testdir.h"
#include "tree_edit.h"

namespace {

using namespace jsontest;

ZrJsonPtr make(int type) { return ElementValue::createObject(type); }

std::string hexOf(const std::string& bytes) {
  std::string out;
  char byte[4];
  for (unsigned char c : bytes) out.append(byte, std::snprintf(byte, sizeof byte, " %02x", c));
  return out.empty() ? out : out.substr(1);
}

std::string bytesOf(const std::string& hex) {
  std::string out;
  for (size_t i = 0; i + 1 < hex.size(); i += 3) out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

TEST(BinaryStream, LayoutBytes) {
  ZrJsonPtr oneTrue = make(etObject);
  oneTrue->set_propertyb("a", true, false);
  ZrJsonPtr arrNone = make(etArray);
  arrNone->array_append(make(etNone));
  struct Row { ZrJsonPtr e; const char* hex; } rows[] = {
      {make(etInteger)->set_valuei(5), "10 00 05 00 00 00 00 00 00 00"},
      {parse(R"({"*k":5})")("k"), "10 20 05 00 00 00 00 00 00 00"},
      {make(etString)->set_values("ab"), "04 00 02 00 00 00 61 62"},
      {make(etString), "04 00 00 00 00 00"},
      {make(etObject), "02 00 00 00 00 00"},
      {oneTrue, "02 00 01 00 00 00 01 00 00 00 61 08 00 01 00 00 00 00 00 00 00"},
      {arrNone, "01 00 01 00 00 00 00 00"},
      {make(etNullFlag), "00 10"},
      {make(etDouble)->set_valued(1.0), "20 00 00 00 00 00 00 00 f0 3f"},
      {make(etTime)->set_valuet(-2), "80 00 fe ff ff ff ff ff ff ff"},
      {make(etReserved42), "42 00"},
      {parse(R"({"*l":[null]})"), "02 00 01 00 00 00 01 00 00 00 6c 01 20 01 00 00 00 00 10"},
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
  const char* texts[] = {R"({"*a":1,"b":[1.5,"x",{"c":null},[],{},null,false,-9223372036854775808],"e":{"f":true}})",
                         "\"s\"", lengths.c_str()};
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    ZrJsonPtr tree = parse(texts[i]), back = decode(encode(tree));
    ASSERT_TRUE(back) << "row " << i;
    EXPECT_EQ(textOf(back), textOf(tree)) << "row " << i;
    EXPECT_EQ(encode(back), encode(tree)) << "row " << i;
  }
  int x;
  for (const ZrJsonPtr& e : {make(etTime)->set_valuet(1000), make(etNone)->set_valuep(&x, etPointer)}) {
    ZrJsonPtr back = decode(encode(e));
    EXPECT_TRUE(back->getType() == e->getType() && back->timeValue() == 0 && !back->ptrValue()) << "not restored";
  }
}

TEST(BinaryStream, ReaderEdgeCases) {
  struct Row { const char* hex; const char* json; } rows[] = {
      // the name "a" twice: the later value wins
      {"02 00 02 00 00 00 01 00 00 00 61 10 00 01 00 00 00 00 00 00 00 01 00 00 00 61 10 00 02 00 00 00 00 00 00 00", R"({"a":2})"},
      // the name "a" three times: the last value wins
      {"02 00 03 00 00 00 01 00 00 00 61 10 00 01 00 00 00 00 00 00 00 01 00 00 00 61 10 00 02 00 00 00 00 00 00 00 "
       "01 00 00 00 61 10 00 03 00 00 00 00 00 00 00",
       R"({"a":3})"},
      // names out of order are sorted; a name length of -1 is an empty name
      {"02 00 02 00 00 00 01 00 00 00 62 08 00 01 00 00 00 00 00 00 00 ff ff ff ff 08 00 00 00 00 00 00 00 00 00",
       R"({"":false,"b":true})"},
      {"04 00 fe ff ff ff", "\"\""},           // negative string length: empty
      {"01 00 ff ff ff ff", "[]"},             // negative count: empty
      // a byte block and an unknown kind: written back as they were read (no JSON form checked)
      {"05 00 03 00 00 00 61 62 63", nullptr},
      {"ff ff 00 00 00 00 00 00 00 00", nullptr},
      // short, lying or truncated input (counts far beyond the input: see the hostile suite)
      {"", "null"},
      {"10", "null"},
      {"10 00 05 00", "null"},
      {"02 00 00 00 00 80 00", "{}"},
      {"02 00 01 00 00 00 ff ff ff 7f 61", "null"},
      {"01 00 02 00 00 00 00 10", "null"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr e = decode(bytesOf(rows[i].hex));
    if (rows[i].json) {
      EXPECT_EQ(textOf(e), rows[i].json) << "row " << i;
    } else {
      EXPECT_EQ(e ? hexOf(encode(e)) : "null", rows[i].hex) << "row " << i;
    }
  }
}

TEST(BinaryStream, SignatureStreamsAndPositions) {
  ZrJson tree(ZrJson::readjson(R"({"a":[1,2]})"));
  ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
  ASSERT_TRUE(tree.write2Stream(s.get(), ZrJson::eBinary));
  ASSERT_TRUE(tree.write2Stream(s.get(), ZrJson::eBinary));
  EXPECT_EQ(s->data()[0], 0xE0);
  s->rewind();
  ZrJson first;
  ASSERT_TRUE(first.readBinaryStream(s.get()));
  EXPECT_EQ(s->tell(), s->length() / 2) << "the reader stops right after its element";

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
