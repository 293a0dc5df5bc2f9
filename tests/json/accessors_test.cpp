// Tests of the typed accessors, points and tree operations (clone, bEqual, merging).
//
// Trees are written as JSON text; results are compared through their JSON text ("null" stands
// for a null handle), one table per operation with the row index in every message.
#include <sstream>

#include "tree_edit.h"
#include "wrapper.h"

namespace {

using namespace jsontest;

// An edit that reports the bool result of one call on the tree `t`.
#define EDIT(call) [&](IElementValueBase& t) { return yes(t.call); }

ZrJsonPtr integer(long long v) { return ElementValue::createObject(etInteger)->set_valuei64(v); }

// Every getter at `path`, "|"-separated; "-" for a miss. The out values start as sentinels so
// that a value left unchanged shows as -7, ?, (-1,-1).
std::string getAll(IElementValueBase& tree, const char* path) {
  int i = -7;
  bool b = false;
  double d = -7;
  long long l = -7;
  ZrUtf8String s("?");
  ZrGePoint2d p2(-1, -1);
  ZrGePoint3d p3(-1, -1, -1);
  std::ostringstream o;
  auto put = [&o](bool found, auto&& show) { found ? show() : void(o << '-'), o << '|'; };
  put(tree.GetDataI(path, i), [&] { o << i; });
  put(tree.GetDataB(path, b), [&] { o << b; });
  put(tree.GetDataD(path, d), [&] { o << d; });
  put(tree.GetDataS(path, s), [&] { o << s.c_str(); });
  put(tree.GetDataL(path, l), [&] { o << l; });
  put(tree.GetDataP2d(path, p2), [&] { o << p2.x << ',' << p2.y; });
  put(tree.GetDataP3d(path, p3), [&] { o << p3.x << ',' << p3.y << ',' << p3.z; });
  return o.str();
}

TEST(Accessors, Getters) {
  ZrJsonPtr tree = parse(R"({"i":42,"d":2.5,"s":"txt","b":true,"arr":[1,2],"pt":{"x":1,"y":2,"z":3},"n":[null]})");
  struct Row { const char* path; const char* expected; } rows[] = {
      {"i", "42|1|42|42|42|-1,-1|-1,-1,-1|"},
      {"d", "2|1|2.5|2.500000|2160000|-1,-1|-1,-1,-1|"},
      {"s", "0|0|0|txt|0|-1,-1|-1,-1,-1|"},
      {"arr", "0|1|0||0|1,2|1,2,0|"},
      {"pt", "0|1|0||0|1,2|1,2,3|"},
      {"", "0|1|0||0|0,0|0,0,0|"},
      {"n/0", "-7|0|-7|?|-7|-1,-1|-1,-1,-1|"},
      {"a/b", "-|-|-|-|-|-|-|"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_EQ(getAll(*tree, rows[i].path), rows[i].expected) << "row " << i;

  ZrString wide(L"keep");
  EXPECT_TRUE(tree->GetDataSW("s", wide) && wide.str() == L"txt");
  ZrJsonPtr found;
  EXPECT_TRUE(tree->GetDataJ("n/0", found) && found == tree("n")(0)) << "null elements are handed out";
  EXPECT_FALSE(tree->GetDataJ("zz", found));
}

TEST(Accessors, Setters) {
  const ZrJsonPtr shared = parse("[true]");
  checkEdits({
      {"{}", EDIT(SetDataI("a/b", 5)), "true", R"({"a":{"b":5}})"},
      {"{}", EDIT(SetDataI("", 5)), "false", "{}"},
      {"{}", EDIT(SetDataI(nullptr, 5)), "false", "{}"},
      {"{}", EDIT(SetDataI("a/0", 5)), "false", R"({"a":[]})"},
      {"{}", EDIT(SetDataL("t", 5)), "true", R"({"t":5})"},
      {"{}", EDIT(SetDataS("s", "x")), "true", R"({"s":"x"})"},
      {"{}", EDIT(SetDataSW("s", L"\u00e9")), "true", "{\"s\":\"\xc3\xa9\"}"},
      {"{}", EDIT(SetDataP2d("p", {1, 2})), "true", R"({"p":{"x":1.000000,"y":2.000000}})"},
      {"{}", EDIT(SetDataP3d("p/q", {1, 2, 3})), "true", R"({"p":{"q":{"x":1.000000,"y":2.000000,"z":3.000000}}})"},
      {R"({"l":[]})", EDIT(SetDataS("l/0", "x")), "true", R"({"l":["x"]})"},
      {R"({"l":[1]})", EDIT(SetDataS("l/7", "y")), "true", R"({"l":[1,"y"]})"},
      {R"({"l":[]})", EDIT(SetDataJ("l/0", shared)), "true", R"({"l":[[true]]})"},
      {R"({"l":[]})", EDIT(SetDataI("l/0", 1)), "false", R"({"l":[]})"},
      {"{}", EDIT(SetDataJ("j", ZrJsonPtr())), "true", R"({"j":[]})"},
      {R"({"l":[]})", EDIT(SetDataJ("l/0", ZrJsonPtr())), "true", R"({"l":[[]]})"},
      // A read-only Array refuses what is appended, and the setter still says true.
      {R"({"*l":[]})", EDIT(SetDataS("l/0", "x")), "true", R"({"*l":[]})"},
      {R"({"*l":[]})", EDIT(SetDataSW("l/0", L"x")), "true", R"({"*l":[]})"},
      {R"({"*l":[]})", EDIT(SetDataJ("l/0", shared)), "true", R"({"*l":[]})"},
      {R"({"*r":1})", EDIT(SetDataI("r", 2)), "true", R"({"*r":1})"},
      {R"({"s":"t"})", EDIT(SetDataI("s/x", 1)), "false", R"({"s":"t"})"},
  });

  ZrJsonPtr tree = parse("{}");
  EXPECT_TRUE(tree->SetDataJ("j", shared) && tree("j") == shared) << "SetDataJ shares, it does not copy";
}

TEST(TreeOps, CloneIsIndependent) {
  ZrJsonPtr source = parse(R"({"o":{"arr":[1,2]},"*ro":{"k":1},"s":"t","d":1.5,"b":false,"n":[null]})");
  source->set_property("missing", ZrJsonPtr());
  const std::string before = textOf(source);
  ZrJsonPtr copy = source->clone();
  EXPECT_EQ(encode(copy), encode(source)) << "every type word and value is kept";
  copy("o")("arr")->array_append(integer(9));
  copy("o")->set_propertyi("new", 1, false);
  EXPECT_EQ(textOf(source), before) << "the copy shares no writable element";
  EXPECT_EQ(copy("ro"), source("ro")) << "read-only values are shared";

  // Kinds that JSON text cannot show.
  ZrSmartPtr<ZrMemoryStream> object = ZrMemoryStream::createNew();
  const long refs = object->numRefs();
  struct Row { ZrJsonPtr element; int type; void* pointer; long long time; } rows[] = {
      {ElementValue::createObject(etTime)->set_valuet(7), etTime, nullptr, 7},
      {ElementValue::createObject(etPointer)->set_valuep(&object, etPointer), etPointer, &object, 0},
      {ElementValue::createObject(etNone)->set_valuep(zrrxAlloc(8), etOwnedPointer), etOwnedPointer, nullptr, 0},
      {ElementValue::createObject(etNone)->set_value_rxobject_ptr(object.get()), etRxObjectPointer, object.get(), 0},
      {ElementValue::createObject(0x200 | etRxObjectPointer), 0x200 | etRxObjectPointer, nullptr, 0},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr c = rows[i].element->clone();
    EXPECT_TRUE(c != rows[i].element && c->getType() == rows[i].type) << "row " << i;
    EXPECT_EQ(c->ptrValue(), rows[i].pointer) << "row " << i;
    EXPECT_EQ(c->timeValue(), rows[i].time) << "row " << i;
  }
  EXPECT_EQ(object->numRefs(), refs + 1) << "each copy took and gave back its own reference";

  // A byte block (only the binary reader makes one) gets bytes of its own.
  const std::string block("\x05\x00\x02\x00\x00\x00" "ab", 8);
  ZrJsonPtr bytes = decode(block);
  ASSERT_TRUE(bytes);
  ZrJsonPtr blockCopy = bytes->clone();
  bytes = nullptr;  // the copy's bytes must outlive the source's
  EXPECT_EQ(encode(blockCopy), block);
}

TEST(TreeOps, OtherElementClasses) {
  const char* text = R"({"a":[1,{"b":"v"},[true]],"d":2.5,"e":{}})";
  ZrJsonPtr tree = parse(text), wrapped = Wrapper::wrap(parse(text));
  EXPECT_TRUE(wrapped->bEqual(tree) && tree->bEqual(wrapped));
  EXPECT_FALSE(wrapped->bEqual(parse(R"({"a":[1,{"b":"w"},[true]],"d":2.5,"e":{}})")));
  EXPECT_FALSE(wrapped->bEqual(parse(R"({"a":[1,{"b":"v"},[true]],"d":2.5,"f":{}})")));
}

// Writing, copying and comparing over a tree deeper than the walks' first stack of frames, whose
// levels mix scalars, a read-only container, an Object grown by inserts (in sorted runs) and a
// subtree of another class, with members after every nested container.
TEST(TreeOps, MixedDeepTreeThroughEveryWalk) {
  constexpr int kLevels = 40, kRunsAt = 20, kOtherAt = 30, kNames = 600;
  std::string big = "{";
  for (int n = 0; n < kNames; ++n) big += (n ? ",\"n" : "\"n") + std::to_string(1000 + n) + "\":" + std::to_string(n);
  big += "}";
  auto tail = [](int i) { return "[" + std::to_string(i) + ",\"t\",{\"k\":true},[],2.500000]"; };
  std::string text = "{}";
  for (int i = kLevels - 1; i >= 0; --i)
    text = "{\"a\":" + std::to_string(i) + ",\"b\":\"s\",\"m\":" + text + ",\"*q\":{\"k\":1},\"r\":" + (i == kRunsAt ? big : "{}") +
           ",\"z\":" + tail(i) + "}";
  ZrJsonPtr tree = parse(text.c_str()), at = tree;
  for (int i = 0; i < kOtherAt; at = at("m"), ++i) {
    if (i != kRunsAt) continue;
    ZrJsonPtr runs = ElementValue::createObject(etObject);
    for (int n = kNames - 1; n >= 0; --n) runs->set_propertyi(("n" + std::to_string(1000 + n)).c_str(), n, false);
    ASSERT_TRUE(at->set_property("r", runs));
  }
  ASSERT_TRUE(at->set_property("z", Wrapper::wrap(parse(tail(kOtherAt).c_str()))));
  ASSERT_EQ(textOf(tree), text);
  for (const ZrJsonPtr& source : {tree, Wrapper::wrap(tree)}) {
    const bool own = source == tree;
    EXPECT_EQ(textOf(source), text) << own;
    ZrJsonPtr copy = source->clone();
    EXPECT_EQ(textOf(copy), text) << own;
    EXPECT_TRUE(copy && copy->bEqual(tree) && tree->bEqual(copy) && source->bEqual(copy)) << own;
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    ASSERT_TRUE(ZrJson(source).write2Stream(s.get(), ZrJson::eBinary)) << own;
    s->rewind();
    ZrJson back;
    EXPECT_TRUE(back.readBinaryStream(s.get()) && back->writeJson().str() == text) << own;
  }
}

TEST(TreeOps, BEqual) {
  struct Row { const char* a; const char* b; bool equal; } rows[] = {
      {R"({"a":1})", R"({"a":1})", true},   {R"({"a":1})", R"({"a":1.0})", false},
      {R"({"a":1})", R"({"b":1})", false},  {R"({"a":1,"b":2})", R"({"a":1})", false},
      {"[1,1,2]", "[1,2,2]", true},         {"[1,2]", "[1,2,3]", false},
      {"[[1,2],[3]]", "[[3],[2,1]]", true}, {"[[1,2],[3]]", "[[3],[2,4]]", false},
      {"[1]", "[\"1\"]", false},           {R"(["a"])", R"(["b"])", false},
      {"[null]", "[null]", true},           {"{}", "[]", false},
      {R"({"a":[1,{"b":{"c":[2]}}]})", R"({"a":[{"b":{"c":[2]}},1]})", true},
      // alike up to the last member
      {R"({"a":1,"b":"x","c":3})", R"({"a":1,"b":"x","c":4})", false},
      {R"({"a":1,"b":"x","c":3})", R"({"a":1,"b":"x","d":3})", false},
      {"[1,2,3,4]", "[1,2,4,3]", true},     {"[1,2,3,[4]]", "[1,2,3,[5]]", false},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    EXPECT_EQ(parse(rows[i].a)->bEqual(parse(rows[i].b)), rows[i].equal) << "row " << i;
    EXPECT_EQ(parse(rows[i].b)->bEqual(parse(rows[i].a)), rows[i].equal) << "row " << i << " reversed";
  }
  ZrJsonPtr time = ElementValue::createObject(etTime)->set_valuet(5);
  EXPECT_FALSE(time->bEqual(time)) << "Times never compare equal";
  EXPECT_FALSE(parse("{}")->bEqual(ZrJsonPtr()));
}

TEST(TreeOps, AppendObjects) {
  auto append = [](const char* path) { return [=](IElementValueBase& t) { return textOf(t.appendObjects(path)); }; };
  checkEdits({
      {R"({"o":{},"s":1})", append("o/p/q"), "{}", R"({"o":{"p":{"q":{}}},"s":1})"},
      {R"({"o":{"p":{"z":1}}})", append("o/p"), R"({"z":1})", R"({"o":{"p":{"z":1}}})"},
      {R"({"s":1})", append("s"), "null", R"({"s":1})"},
      // A read-only Object refuses the new Object, which comes back detached.
      {R"({"*ro":{}})", append("ro/x/y"), "{}", R"({"*ro":{}})"},
      {"[]", append("a"), "null", "[]"},
      {"[]", append("/"), "[]", "[]"},
  });
}

TEST(TreeOps, CopyAndMerge) {
  ZrJsonPtr source = parse(R"({"a":{"k":1},"x":2})");
  for (bool deep : {false, true}) {
    ZrJsonPtr target = parse(R"({"x":0,"y":3})");
    target->copySubProperty(source, deep);
    EXPECT_EQ(textOf(target), R"({"a":{"k":1},"x":2,"y":3})") << "deep " << deep;
    EXPECT_EQ(target("a") == source("a"), !deep) << "deep " << deep;
  }

  auto add = [](const char* text) { return [=](IElementValueBase& t) { return yes(t.update_array(item(text))); }; };
  const char* set = R"([1,{"k":1},[1,2]])";
  checkEdits({
      {set, add(R"("1")"), "true", set}, {set, add(R"({"k":1})"), "true", set}, {set, add("[2,1]"), "true", set},
      {set, add("[1]"), "true", R"([1,{"k":1},[1,2],[1]])"},
      {R"({"a":1})", add("2"), "false", R"({"a":1})"},
  });

  auto merge = [](const char* name, const char* text) {
    return [=](IElementValueBase& t) { return yes(t.update_property(name, item(text))); };
  };
  checkEdits({
      {R"({"o":{"a":1,"k":true}})", merge("o", R"({"a":2,"n":{"m":1}})"), "true", R"({"o":{"a":2,"k":true,"n":{"m":1}}})"},
      {R"({"arr":[1,2]})", merge("arr", "[2,3]"), "true", R"({"arr":[1,2,3]})"},
      {R"({"s":"x"})", merge("s", R"({"z":1})"), "true", R"({"s":{"z":1}})"},
      {"{}", merge("new", "[1]"), "true", R"({"new":[1]})"},
      {R"({"*r":1})", merge("r", "2"), "false", R"({"*r":1})"},
      {"[]", merge("a", "{}"), "false", "[]"},
  });

  // A merged value is copied: editing the tree afterwards leaves the value as it was.
  ZrJsonPtr tree = parse(R"({"o":{"a":1}})"), value = parse(R"({"l":[1],"n":{"m":1}})");
  ASSERT_TRUE(tree->update_property("o", value) && tree->SetDataI("o/n/z", 1));
  tree("o")("l")->array_append(integer(2));
  EXPECT_EQ(textOf(value), R"({"l":[1],"n":{"m":1}})");
}

}  // namespace
