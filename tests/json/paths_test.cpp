// Tests of property paths: the read and create walks, parent/name splitting, path variables.
//
// Trees are written as JSON text; results are compared through their JSON text ("null" stands
// for a null handle), one table per operation with the row index in every message.
#include <cstdlib>

#include "tree_edit.h"
#include "wrapper.h"

namespace {

using namespace jsontest;

TEST(Paths, QuickGetProperty) {
  ZrJsonPtr tree = parse(R"({"a":{"b":1},"arr":[10,20,{"k":"v"}],"s":"t"})");
  const std::string whole = textOf(tree);
  struct Row { const char* path; const char* expected; } rows[] = {
      {"a/b", "1"}, {"a//b/", "1"}, {"a\\b", "1"}, {"/\\a/b", "1"}, {"", whole.c_str()}, {"arr/1", "20"},
      {"arr/x", "10"}, {"arr/2/k", "\"v\""}, {"arr/-1", "null"}, {"arr/3", "null"}, {"arr/4294967296", "null"},
      {"s/x", "null"}, {"a/b/c", "null"}, {"zz", "null"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_EQ(textOf(tree->quickGetProperty(rows[i].path)), rows[i].expected) << "row " << i;
  EXPECT_FALSE(tree("s")->quickGetProperty("")) << "a scalar cannot start a walk";
}

TEST(Paths, WalksThroughOtherElementClasses) {
  ZrJsonPtr wrapped = Wrapper::wrap(parse(R"({"a":[{"b":"v"}]})")), outer = parse(R"({"x":{}})");
  outer("x")->set_property("w", wrapped);
  EXPECT_EQ(outer->quickGetProperty("x/w/a/0/b")->strValue().str(), "v");
  EXPECT_FALSE(outer->quickGetProperty("x/w/a/1"));
}

TEST(Paths, QuickSetPropertyAndCheckKey) {
  auto set = [](const char* path) { return [=](IElementValueBase& t) { return textOf(t.quickSetProperty(path)); }; };
  checkEdits({
      {"{}", set("a/b"), "{}", R"({"a":{"b":{}}})"},
      {"{}", set("a/0/b"), "null", R"({"a":[]})"},
      {"{}", set("a//0"), "[]", R"({"a":[]})"},
      {R"({"a":[1]})", set("a/0"), "1", R"({"a":[1]})"},
      {R"({"a":[1]})", set("a/5"), "[1]", R"({"a":[1]})"},
      {R"({"a":[1]})", set("a/x"), "null", R"({"a":[1]})"},
      {R"({"a":[1]})", set("a/5/b"), "null", R"({"a":[1]})"},
      {R"({"s":1})", set("s/x/y"), "1", R"({"s":1})"},
      {R"({"*ro":{}})", set("ro/x"), "null", R"({"*ro":{}})"},
  });
  auto check = [](const char* path, bool create) {
    return [=](IElementValueBase& t) { return textOf(t.CheckKey(path, create)); };
  };
  checkEdits({
      {R"({"a":1})", check("", false), R"({"a":1})", R"({"a":1})"},
      {R"({"a":1})", check("b/c", false), "null", R"({"a":1})"},
      {R"({"a":1})", check("b/c", true), "{}", R"({"a":1,"b":{"c":{}}})"},
  });
}

TEST(Paths, RebuildJsonName) {
  struct Row { const char* path; bool ok; const char* parent; const char* name; } rows[] = {
      {"a/b/c", true, "a/b", "c"},   {"a/b/0", true, "a/b/0", "0"},         {"a/1/2", true, "a/1", "2"},
      {"a", true, "", "a"},          {"1/a", true, "1", "a"},               {"0/1/2/3", true, "0/1/2/3", "3"},
      {"a//b/", true, "a", "b"},     {"a/0/b/1", true, "a/0/b/1", "1"},
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
  zrutEnumPathsW(parse(R"(["\u00e9","\u00e9"])"), wide);
  EXPECT_TRUE(wide.length() == 1 && wide[0].str() == L"\u00e9");
}

}  // namespace
