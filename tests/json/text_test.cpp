// Tests of JSON text: round trips through the reader and writer, number text against printf,
// escaping, merging into existing trees, format detection, and files.
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

#include "common/testdir.h"
#include "tree_edit.h"

namespace {

using jsontest::textOf;

TEST(JsonText, RoundTrips) {
  struct Row { const char* in; const char* out; } rows[] = {
      {R"({"a":null})", R"({"a":""})"},
      {R"([null])", R"([[]])"},
      {R"([1e-7,-0.0,1E2,123456789.1234567])", R"([0.000000,-0.000000,100.000000,123456789.123457])"},
      {R"([4294967295,-2147483649,18446744073709551615,-9223372036854775808])",
       R"([4294967295,-2147483649,-1,-9223372036854775808])"},
      {R"({"a":1,"a":2})", R"({"a":2})"},
      {R"({"*a":1,"a":2})", R"({"*a":1})"},
      {R"({"a":1,"*a":2})", R"({"*a":2})"},
      {R"({"**a":true})", R"({"**a":true})"},
      {R"({"*o":{"x":[1]},"*l":[false],"*n":null})", R"({"*l":[false],"*n":"","*o":{"x":[1]}})"},
      {R"( "s" )", R"("s")"},
      {"null", "[]"},
      {R"(["\t\u0001\"\\\r\n\/\u00e9\u001f "])", "[\"\\t\\u0001\\\"\\\\\\r\\n/\xc3\xa9\\u001f \"]"},
      {R"({"k\"ey\n":{}})", R"({"k\"ey\n":{}})"},
      {R"({"z":[],"y":{},"x":[[],{}]})", R"({"x":[[],{}],"y":{},"z":[]})"},
      // repeated names inside objects that wait for the object around them
      {R"({"o":{"a":1,"a":[2],"*b":{"x":1},"b":{"y":2},"c":{"d":{"e":1,"e":{"f":[3]}}}}})",
       R"({"o":{"a":[2],"*b":{"x":1},"c":{"d":{"e":{"f":[3]}}}}})"},
      // names alike in their first eight bytes, with a zero byte, longer than the inline room
      {R"({"favorite_count":1,"favorited":2,"favorite":3})", R"({"favorite":3,"favorite_count":1,"favorited":2})"},
      {R"({"a\u0001":1,"a":2})", R"({"a":2,"a\u0001":1})"},
      {R"({"a_long_property_name_2":1,"x":0,"a_long_property_name_1":2,"a_long_property_name_2":3})",
       R"({"a_long_property_name_1":2,"a_long_property_name_2":3,"x":0})"},
      // objects of one size: the same names again, other names, names alike but for their ends
      {R"([{"b":1,"a":2},{"b":3,"a":4},{"d":5,"c":6},{"prefix00_c":1,"prefix00_a":2,"prefix00_b":3},)"
       R"({"prefix00_c":4,"prefix00_b":5,"prefix00_a":6}])",
       R"([{"a":2,"b":1},{"a":4,"b":3},{"c":6,"d":5},{"prefix00_a":2,"prefix00_b":3,"prefix00_c":1},)"
       R"({"prefix00_a":6,"prefix00_b":5,"prefix00_c":4}])"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr tree = ZrJson::readjson(rows[i].in);
    EXPECT_EQ(textOf(tree), rows[i].out) << "row " << i;
    if (tree) {
      EXPECT_EQ(textOf(ZrJson::readjson(tree->writeJson())), rows[i].out) << "row " << i << " again";
    }
  }
}

TEST(JsonText, LargeObjectsSortAndSettle) {
  std::string in = "{", out = "{";
  for (int i = 40; i >= 0; --i) in += "\"k" + std::to_string(100 + i) + "\":" + std::to_string(i) + ",";
  in += "\"k120\":-1}";
  for (int i = 0; i <= 40; ++i) out += "\"k" + std::to_string(100 + i) + "\":" + std::to_string(i == 20 ? -1 : i) + ",";
  out.back() = '}';
  EXPECT_EQ(textOf(ZrJson::readjson(in)), out);
}

TEST(JsonText, ParseErrorsGiveNull) {
  const char* rows[] = {"", " ", "{", "[1,]", R"({"a"})", "[1] x", "nul", "[01]", "{'a':1}",
                        "[\"\x01\"]", "[1.]", "[-]", "[\"\\x\"]", "[NaN]"};
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_FALSE(ZrJson::readjson(rows[i])) << "row " << i;
}

TEST(JsonText, ReadingMergesIntoExistingTrees) {
  // Names the text leaves out survive, read-only values stay, an Array gains the items, a
  // scalar replaces the content, and a parse error leaves the tree as it was.
  auto read = [](const char* text) {
    return [=](IElementValueBase& t) { return jsontest::yes(ZrJson(&t).read(text, ZrJson::eJsonText)); };
  };
  jsontest::checkEdits({
      {R"({"*ro":1,"y":1,"z":1})", read(R"({"x":2,"ro":3,"y":4})"), "true", R"({"*ro":1,"x":2,"y":4,"z":1})"},
      {"[1]", read("[2]"), "true", "[1,2]"},
      {"[1]", read("7"), "true", "7"},
      {"[1]", read("["), "false", "[1]"},
  });

  ZrJson fresh;
  EXPECT_TRUE(fresh.read("{}", 0));
  EXPECT_EQ(textOf(fresh), "{}") << "a null handle becomes an Object first";
}

TEST(JsonText, DetectionInMemory) {
  struct Row { std::string data; int format; bool result; const char* tree; } rows[] = {
      {" \n\t{\"a\":1}", -1, true, R"({"a":1})"},
      {"abc", -1, true, "{}"},
      {"\xE1{\"a\":1}", -1, true, "{}"},
      {"\xE0\x02", -1, true, "{}"},
      {"{", -1, false, "{}"},
      {"{", 0, true, "{}"},
      {"{", 2, true, "{}"},
      {"{", 1, false, "{}"},
      {"[3]", 1, true, "[3]"},
      {"x", -1, false, "{}"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJson tree;
    const Row& r = rows[i];
    EXPECT_EQ(tree.readFromStream(r.data.data(), static_cast<unsigned>(r.data.size()), r.format), r.result)
        << "row " << i;
    EXPECT_EQ(textOf(tree), r.tree) << "row " << i;
  }
  ZrJson tree;
  EXPECT_FALSE(tree.readFromStream(nullptr, 3, 1));
  EXPECT_FALSE(tree.readFromStream("{}", 0, 1));
}

// Doubles against "%lf"; integers are std::to_chars text, with their extremes in RoundTrips.
TEST(JsonText, NumbersMatchPrintf) {
  std::vector<double> values = {0.0, -0.0, 0.1, 0.5, 1.5, 2.5, 0.0000005, 0.0000015, 0.0000025,
                                0.0000004999999, 1.0000005, 0.1234565, 999999.9999995, 1e-320,
                                1e15, 1e16, 1e22, 1e300, 1.7976931348623157e308, -1e308,
                                4.9406564584124654e-324, 123456789.987654321, -0.0000006,
                                NAN, -NAN, INFINITY, -INFINITY};
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    uint64_t bits = random();
    double d;
    std::memcpy(&d, &bits, sizeof d);
    values.push_back(d);
    values.push_back(static_cast<double>(static_cast<int64_t>(random() >> (random() % 64))) / 1e6);
    // Dyadic fractions k / 2^n hold exact decimal ties such as 0.0078125 (1/128).
    values.push_back(std::ldexp(static_cast<double>(random() >> 24), -static_cast<int>(random() % 60)));
  }
  ZrJsonPtr e = ElementValue::createObject(etDouble);
  char expected[400];
  for (size_t i = 0; i < values.size(); ++i) {
    std::snprintf(expected, sizeof expected, "%lf", values[i]);
    e->set_valued(values[i]);
    ASSERT_EQ(e->strValue().str(), expected) << "row " << i;
    ASSERT_EQ(e->writeJson().str(), expected) << "row " << i;
  }
}

TEST(JsonText, OtherKindsAsText) {
  ZrJsonPtr o = ElementValue::createObject(etObject);
  int x = 0;
  o->set_propertyp("p", &x, false);
  o->set_property("t", ElementValue::createObject(etTime)->set_valuet(5));
  o->set_property("nil", ZrJsonPtr());
  char expected[64];
  std::snprintf(expected, sizeof expected, R"({"nil":[],"p":"0x%x","t":""})",
                static_cast<unsigned>(reinterpret_cast<uintptr_t>(&x)));
  EXPECT_EQ(textOf(o), expected);
  EXPECT_EQ(textOf(ElementValue::createObject(etNone)), "[]");
  EXPECT_EQ(IElementValueBase().writeJson().str(), "[]");
}

TEST(JsonText, IsNumber) {
  EXPECT_TRUE(IElementValueBase::isNumber("") && IElementValueBase::isNumber("0123456789"));
  for (const char* text : {"-1", "1.5", "1e3", " 1", "+1", "x"})
    EXPECT_FALSE(IElementValueBase::isNumber(text)) << text;
}

TEST(JsonFiles, WriteReadAndLoadBothFormats) {
  TestDir dir;
  ZrJson tree(ZrJson::readjson(R"({"*a":1,"b":[1.5,"x",{"c":null}],"e":{}})"));
  ASSERT_TRUE(tree);
  const std::string text = textOf(tree);
  ASSERT_TRUE(tree.write(dir / "t.json", ZrJson::eJsonText));
  EXPECT_EQ(readFile(dir / "t.json"), text);
  ASSERT_TRUE(tree.write(dir / "t.bin", ZrJson::eBinary));

  ZrJson fromText;
  ASSERT_TRUE(fromText.read((dir / "t.json").c_str(), -1));
  EXPECT_EQ(textOf(fromText), text);

  for (const char* name : {"t.json", "t.bin"}) {
    ZrJson loaded;
    ASSERT_TRUE(loaded.load((dir / name).c_str())) << name;
    EXPECT_EQ(textOf(loaded), text) << name;
  }
  ZrJson missing;
  EXPECT_FALSE(missing.load((dir / "none").c_str()));
  EXPECT_FALSE(missing.read((dir / "none").c_str(), -1));
  EXPECT_TRUE(tree.write(dir / "other", static_cast<ZrJson::fileFormat>(3)));
  EXPECT_EQ(access((dir / "other").c_str(), F_OK), -1) << "an unknown format writes nothing";
  EXPECT_FALSE(ZrJson().write(dir / "x", ZrJson::eJsonText));
  EXPECT_FALSE(tree.write(dir / "no/such/dir", ZrJson::eJsonText));
  EXPECT_FALSE(tree.write(dir / "no/such/dir", ZrJson::eBinary));
  // A device that takes the open but refuses every byte: the failed flush must show.
  for (ZrJson::fileFormat format : {ZrJson::eJsonText, ZrJson::eBinary})
    EXPECT_FALSE(tree.write("/dev/full", format)) << "format " << format;
}

TEST(JsonFiles, DetectionOfFiles) {
  TestDir dir;
  struct Row { const char* content; bool result; const char* tree; } rows[] = {
      {"  [1,2]", true, "[1,2]"},
      {"hello", true, "{}"},
      {"{bad", false, "{}"},
      {"\xE2rest", true, "{}"},
      {"\xEF\xBB\xBF{\"bom\":1}", true, R"({"bom":1})"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    writeFile(dir / "f", rows[i].content);
    ZrJson tree;
    EXPECT_EQ(tree.read((dir / "f").c_str(), -1), rows[i].result) << "row " << i;
    EXPECT_EQ(textOf(tree), rows[i].tree) << "row " << i;
  }
  // A file too small to tell: its path text stands in for the content.
  writeFile(dir / "s", "{");
  ZrJson small;
  EXPECT_TRUE(small.read((dir / "s").c_str(), -1));
  EXPECT_EQ(textOf(small), "{}");
}

}  // namespace
