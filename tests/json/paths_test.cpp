// Tests of property paths: the read and create walks, parent/name splitting, path variables.
//
// Trees are written as JSON text; results are compared through their JSON text ("null" stands
// for a null handle), one table per operation with the row index in every message.
#include <cstdlib>

#include <gtest/gtest.h>

#include <zrad/json.h>

namespace {

ZrJsonPtr parse(const char* text) {
  ZrJsonPtr tree = ZrJson::readjson(text);
  EXPECT_TRUE(tree) << text;
  return tree;
}

std::string textOf(const ZrJsonPtr& e) { return e ? e->writeJson().str() : "null"; }

TEST(Paths, QuickGetProperty) {
  ZrJsonPtr tree = parse(R"({"a":{"b":1},"arr":[10,20,{"k":"v"}],"s":"t"})");
  const std::string whole = textOf(tree);
  struct Row { const char* path; const char* expected; } rows[] = {
      {"a/b", "1"}, {"a//b/", "1"}, {"a\\b", "1"}, {"/\\a/b", "1"}, {"", whole.c_str()},
      {"//", whole.c_str()}, {"arr/1", "20"}, {"arr/x", "10"}, {"arr/2/k", "\"v\""},
      {"arr/-1", "null"}, {"arr/3", "null"}, {"arr/4294967296", "null"},
      {"arr/99999999999999999999", "null"}, {"s/x", "null"}, {"a/b/c", "null"}, {"zz", "null"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_EQ(textOf(tree->quickGetProperty(rows[i].path)), rows[i].expected) << "row " << i;
  EXPECT_FALSE(tree("s")->quickGetProperty("")) << "a scalar cannot start a walk";
}

TEST(Paths, QuickSetPropertyAndCheckKey) {
  struct Row { const char* tree; const char* path; const char* result; const char* after; } rows[] = {
      {"{}", "a/b", "{}", R"({"a":{"b":{}}})"},
      {"{}", "a/0/b", "null", R"({"a":[]})"},
      {"{}", "a/0", "[]", R"({"a":[]})"},
      {"{}", "a//b/", "{}", R"({"a":{"b":{}}})"},
      {R"({"a":[1]})", "a/0", "1", R"({"a":[1]})"},
      {R"({"a":[1]})", "a/5", "[1]", R"({"a":[1]})"},
      {R"({"a":[1]})", "a/x", "null", R"({"a":[1]})"},
      {R"({"a":[1]})", "a/-1", "null", R"({"a":[1]})"},
      {R"({"a":[1]})", "a/5/b", "null", R"({"a":[1]})"},
      {R"({"s":1})", "s/x/y", "1", R"({"s":1})"},
      {R"({"*ro":{}})", "ro/x", "null", R"({"*ro":{}})"},
      {"[]", "x", "null", "[]"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr tree = parse(rows[i].tree);
    EXPECT_EQ(textOf(tree->quickSetProperty(rows[i].path)), rows[i].result) << "row " << i;
    EXPECT_EQ(textOf(tree), rows[i].after) << "row " << i;
  }

  ZrJsonPtr tree = parse(R"({"a":1})");
  EXPECT_EQ(tree->CheckKey("", false), tree);
  EXPECT_EQ(textOf(tree->CheckKey("a", true)), "1");
  EXPECT_FALSE(tree->CheckKey("b/c", false));
  EXPECT_EQ(textOf(tree), R"({"a":1})") << "CheckKey without create changes nothing";
  ZrJsonPtr created = tree->CheckKey("b/c", true);
  EXPECT_TRUE(created && created == tree("b")("c"));
}

TEST(Paths, RebuildJsonName) {
  struct Row { const char* path; bool ok; const char* parent; const char* name; } rows[] = {
      {"a/b/c", true, "a/b", "c"},   {"a/b/0", true, "a/b/0", "0"}, {"a/1/2", true, "a/1", "2"},
      {"a", true, "", "a"},          {"a/0", true, "a/0", "0"},     {"1/a", true, "1", "a"},
      {"0/1/2/3", true, "0/1/2/3", "3"}, {"a/0/b/1", true, "a/0/b/1", "1"},
      {"a//b/", true, "a", "b"},     {"\\a\\b", true, "a", "b"},
      {"", false, "keep", "keep"},   {"///", false, "keep", "keep"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrUtf8String parent("keep"), name("keep");
    EXPECT_EQ(IElementValueBase::RebuildJsonName(rows[i].path, parent, name), rows[i].ok) << "row " << i;
    EXPECT_EQ(parent.str(), rows[i].parent) << "row " << i;
    EXPECT_EQ(name.str(), rows[i].name) << "row " << i;
  }
  ZrUtf8String path("x/y/z"), name;
  EXPECT_TRUE(IElementValueBase::RebuildJsonName(path, path, name)) << "output aliasing the input";
  EXPECT_EQ(path.str() + "|" + name.str(), "x/y|z");
}

TEST(Paths, EvaluatePathVariables) {
  ZrJsonPtr config = parse(R"({"Runtime":{"TempPath":"/tmp/t","ExeRootPath":"/opt/app"},
                              "Core":{"AppInfo":{"language":"en-us","version":7}}})");
  ASSERT_EQ(setenv("ZRAD_PATHS_TEST_VAR", "val", 1), 0);
  unsetenv("ZRAD_PATHS_TEST_UNSET");
  struct Row { const char* text; const char* configured; const char* unconfigured; } rows[] = {
      {"%TEMPPATH%/x", "/tmp/t/x", "/x"},     {"%EXEPATH%", "/opt/app", ""},
      {"%LANGUAGE%", "en-us", "zh-cn"},       {"%VERSION%", "7", "2023"},
      {"%OS%", "linux", "linux"},             {"%APPDATAPATH%%DOCUMENTPATH%%SYSFONTPATH%/a", "/a", "/a"},
      {"100%%", "100%", "100%"},              {"100%", "100%", "100%"},
      {"a%b", "a", "a"},                      {"%%%OS%", "%linux", "%linux"},
      {"[%ZRAD_PATHS_TEST_VAR%]", "[val]", "[val]"}, {"%ZRAD_PATHS_TEST_UNSET%x", "x", "x"},
      {"%os%", "", ""},                       {"", "", ""},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    EXPECT_EQ(zrsiutEvaluatePath(rows[i].text, config).str(), rows[i].configured) << "row " << i;
    EXPECT_EQ(zrsiutEvaluatePath(rows[i].text, ZrJsonPtr()).str(), rows[i].unconfigured) << "row " << i;
  }
}

TEST(Paths, EnumPaths) {
  ZrJsonPtr list = parse(R"(["p","","p",null,"q",1])");
  ZrArray<ZrUtf8String> out;
  out.append("q");
  zrutEnumPaths(list, out);
  zrutEnumPaths(parse(R"({"a":"z"})"), out);
  ASSERT_EQ(out.length(), 3);
  EXPECT_EQ(out[0].str() + out[1].str() + out[2].str(), "qp1");

  ZrArray<ZrString> wide;
  zrutEnumPathsW(parse(R"(["\u00e9","\u00e9","x"])"), wide);
  ASSERT_EQ(wide.length(), 2);
  EXPECT_EQ(wide[0].str(), L"\u00e9");
  EXPECT_EQ(wide[1].str(), L"x");
}

}  // namespace
