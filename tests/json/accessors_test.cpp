// Tests of the typed accessors, points and tree operations (clone, bEqual, merging).
//
// Trees are written as JSON text; results are compared through their JSON text ("null" stands
// for a null handle), one table per operation with the row index in every message.
#include <functional>
#include <sstream>

#include <pthread.h>

#include <gtest/gtest.h>

#include <zrad/json.h>

namespace {

using Edit = std::function<bool(IElementValueBase&)>;

ZrJsonPtr parse(const char* text) {
  ZrJsonPtr tree = ZrJson::readjson(text);
  EXPECT_TRUE(tree) << text;
  return tree;
}

std::string textOf(const ZrJsonPtr& e) { return e ? e->writeJson().str() : "null"; }

ZrJsonPtr integer(long long v) { return ElementValue::createObject(etInteger)->set_valuei64(v); }

// Every getter at `path`, "|"-separated; "-" for a miss. The out values start as sentinels so
// that a value left unchanged shows as -7, ?, (-1,-1).
std::string getAll(IElementValueBase& tree, const char* path) {
  int i = -7;
  bool b = false;
  double d = -7;
  ZrUtf8String s("?");
  long long l = -7;
  ZrGePoint2d p2(-1, -1);
  ZrGePoint3d p3(-1, -1, -1);
  std::ostringstream o;
  auto put = [&o](bool found, auto&& show) {
    if (found) show(); else o << '-';
    o << '|';
  };
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
      {"arr/1", "2|1|2|2|2|-1,-1|-1,-1,-1|"},
      {"arr", "0|1|0||0|1,2|1,2,0|"},
      {"pt", "0|1|0||0|1,2|1,2,3|"},
      {"", "0|1|0||0|0,0|0,0,0|"},
      {"n/0", "-7|0|-7|?|-7|-1,-1|-1,-1,-1|"},
      {"a/b", "-|-|-|-|-|-|-|"},
      {"arr/5", "-|-|-|-|-|-|-|"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_EQ(getAll(*tree, rows[i].path), rows[i].expected) << "row " << i;

  ZrString wide(L"keep");
  EXPECT_TRUE(tree->GetDataSW("s", wide));
  EXPECT_EQ(wide.str(), L"txt");
  ZrJsonPtr found;
  EXPECT_TRUE(tree->GetDataJ("n/0", found)) << "a null element is handed out as it is";
  EXPECT_EQ(found, tree("n")(0));
  EXPECT_FALSE(tree->GetDataJ("zz", found));
  EXPECT_EQ(found, tree("n")(0));
}

TEST(Accessors, Setters) {
  const ZrJsonPtr shared = parse("[true]");
  struct Row { const char* tree; Edit edit; bool ok; const char* after; } rows[] = {
      {"{}", [](IElementValueBase& t) { return t.SetDataI("a/b", 5); }, true, R"({"a":{"b":5}})"},
      {R"({"o":{"a":1}})", [](IElementValueBase& t) { return t.SetDataI("o/b", 2); }, true, R"({"o":{"a":1,"b":2}})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataI("", 5); }, false, "{}"},
      {"{}", [](IElementValueBase& t) { return t.SetDataI("//", 5); }, false, "{}"},
      {"{}", [](IElementValueBase& t) { return t.SetDataI(nullptr, 5); }, false, "{}"},
      {"{}", [](IElementValueBase& t) { return t.SetDataI("a/0", 5); }, false, R"({"a":[]})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataB("b", true); }, true, R"({"b":true})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataD("d", 0.5); }, true, R"({"d":0.500000})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataL("t", 5); }, true, R"({"t":5})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataS("s", "x"); }, true, R"({"s":"x"})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataSW("s", L"\u00e9"); }, true, "{\"s\":\"\xc3\xa9\"}"},
      {"{}", [](IElementValueBase& t) { return t.SetDataP2d("p", {1, 2}); }, true,
       R"({"p":{"x":1.000000,"y":2.000000}})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataP3d("p/q", {1, 2, 3}); }, true,
       R"({"p":{"q":{"x":1.000000,"y":2.000000,"z":3.000000}}})"},
      {R"({"l":[]})", [](IElementValueBase& t) { return t.SetDataS("l/0", "x"); }, true, R"({"l":["x"]})"},
      {R"({"l":[1]})", [](IElementValueBase& t) { return t.SetDataS("l/7", "y"); }, true, R"({"l":[1,"y"]})"},
      {R"({"l":[]})", [](IElementValueBase& t) { return t.SetDataSW("l/0", L"w"); }, true, R"({"l":["w"]})"},
      {R"({"l":[]})", [&](IElementValueBase& t) { return t.SetDataJ("l/0", shared); }, true, R"({"l":[[true]]})"},
      {R"({"l":[]})", [](IElementValueBase& t) { return t.SetDataI("l/0", 1); }, false, R"({"l":[]})"},
      {R"({"l":[]})", [](IElementValueBase& t) { return t.SetDataP2d("l/0", {1, 2}); }, false, R"({"l":[]})"},
      {"{}", [](IElementValueBase& t) { return t.SetDataJ("j", ZrJsonPtr()); }, false, "{}"},
      {R"({"*r":1})", [](IElementValueBase& t) { return t.SetDataI("r", 2); }, true, R"({"*r":1})"},
      {R"({"s":"t"})", [](IElementValueBase& t) { return t.SetDataI("s/x", 1); }, false, R"({"s":"t"})"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr tree = parse(rows[i].tree);
    EXPECT_EQ(rows[i].edit(*tree), rows[i].ok) << "row " << i;
    EXPECT_EQ(textOf(tree), rows[i].after) << "row " << i;
  }

  ZrJsonPtr tree = parse("{}");
  ASSERT_TRUE(tree->SetDataL("t", 5));
  EXPECT_EQ(tree("t")->getType(), etInteger) << "SetDataL stores an Integer";
  ASSERT_TRUE(tree->SetDataJ("j", shared));
  EXPECT_EQ(tree("j"), shared) << "SetDataJ shares, it does not copy";
}

TEST(TreeOps, CloneIsIndependent) {
  ZrJsonPtr source = parse(R"({"o":{"arr":[1,2]},"*ro":{"k":1},"s":"t","d":1.5,"b":false,"i":-3,"n":[null]})");
  const std::string before = textOf(source);
  ZrJsonPtr copy = source->clone();
  EXPECT_EQ(textOf(copy), before);
  EXPECT_TRUE(source->bEqual(copy));
  copy("o")("arr")->array_append(integer(9));
  copy("o")->set_propertyi("new", 1, false);
  EXPECT_EQ(textOf(source), before) << "the copy shares no writable element";
  EXPECT_EQ(copy("ro"), source("ro")) << "read-only values are shared";
  EXPECT_EQ(copy("n")(0)->getType(), etNullFlag);

  // Kinds that JSON text cannot show.
  ZrSmartPtr<ZrMemoryStream> object = ZrMemoryStream::createNew();
  long refs = object->numRefs();
  int local = 0;
  struct Row { ZrJsonPtr element; int type; void* pointer; long long time; } rows[] = {
      {ElementValue::createObject(etTime)->set_valuet(7), etTime, nullptr, 7},
      {ElementValue::createObject(etPointer)->set_valuep(&local, etPointer), etPointer, &local, 0},
      {ElementValue::createObject(etNone)->set_valuep(zrrxAlloc(8), etOwnedPointer), etOwnedPointer, nullptr, 0},
      {ElementValue::createObject(etNone)->set_value_rxobject_ptr(object.get()), etRxObjectPointer, object.get(), 0},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr c = rows[i].element->clone();
    EXPECT_NE(c, rows[i].element) << "row " << i;
    EXPECT_EQ(c->getType(), rows[i].type) << "row " << i;
    EXPECT_EQ(c->ptrValue(), rows[i].pointer) << "row " << i;
    EXPECT_EQ(c->timeValue(), rows[i].time) << "row " << i;
  }
  EXPECT_EQ(object->numRefs(), refs + 1) << "only the source row holds the object now";
}

// Runs `body` on a thread whose stack is 1 MiB.
void onSmallStack(std::function<void()> body) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, 1 << 20);
  pthread_t thread;
  auto run = [](void* f) -> void* { (*static_cast<std::function<void()>*>(f))(); return nullptr; };
  ASSERT_EQ(pthread_create(&thread, &attr, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
}

TEST(TreeOps, DeepTreesAndCycles) {
  // Arrays nested to the limit (the root is level 1), then one level more.
  ZrJsonPtr atLimit = ElementValue::createObject(etArray);
  ZrJsonPtr innermost = atLimit;
  for (int level = 1; level < ZrJsonMaxDepth; ++level) {
    ZrJsonPtr child = ElementValue::createObject(etArray);
    innermost->array_append(child);
    innermost = child;
  }
  innermost->array_append(integer(1));
  ZrJsonPtr tooDeep = ElementValue::createObject(etArray);
  tooDeep->array_append(atLimit);
  onSmallStack([&] {
    ZrJsonPtr copy = atLimit->clone();
    EXPECT_TRUE(copy && copy != atLimit);
    EXPECT_TRUE(atLimit->bEqual(copy));
    EXPECT_FALSE(tooDeep->clone());
    EXPECT_FALSE(tooDeep->bEqual(tooDeep));
  });

  ZrJsonPtr cycle = ElementValue::createObject(etArray);
  cycle->array_append(cycle);
  EXPECT_FALSE(cycle->clone());
  EXPECT_FALSE(cycle->bEqual(cycle));
  cycle->remove_array_item(0);  // breaks the cycle so the element can be freed
}

TEST(TreeOps, BEqual) {
  struct Row { const char* a; const char* b; bool equal; } rows[] = {
      {R"({"a":1})", R"({"a":1})", true},           {R"({"a":1})", R"({"a":1.0})", false},
      {R"({"a":1})", R"({"b":1})", false},           {R"({"a":1,"b":2})", R"({"a":1})", false},
      {R"({"a":{"b":1}})", R"({"a":{"b":2}})", false}, {"[1,1,2]", "[1,2,2]", true},
      {"[1,2]", "[2,1]", true},                      {"[1,2]", "[1,2,3]", false},
      {"[[1,2],[3]]", "[[3],[2,1]]", true},          {"[[1,2],[3]]", "[[3],[2,4]]", false},
      {"[1]", "[true]", false},                      {"[1]", "[\"1\"]", false},
      {R"(["a"])", R"(["a"])", true},                {R"(["a"])", R"(["b"])", false},
      {"[null]", "[null]", true},                    {"[null]", "[0]", false},
      {"{}", "[]", false},                           {"[]", "[]", true},
      {R"({"a":[1,{"b":null}]})", R"({"a":[{"b":null},1]})", true},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    EXPECT_EQ(parse(rows[i].a)->bEqual(parse(rows[i].b)), rows[i].equal) << "row " << i;
    EXPECT_EQ(parse(rows[i].b)->bEqual(parse(rows[i].a)), rows[i].equal) << "row " << i << " reversed";
  }
  ZrJsonPtr time = ElementValue::createObject(etTime)->set_valuet(5);
  EXPECT_FALSE(time->bEqual(time)) << "Times never compare equal";
  EXPECT_FALSE(parse("{}")->bEqual(ZrJsonPtr()));
}

TEST(TreeOps, CopySubPropertyAndAppendObjects) {
  ZrJsonPtr source = parse(R"({"a":{"k":1},"x":2})");
  for (bool deep : {false, true}) {
    ZrJsonPtr target = parse(R"({"x":0,"y":3})");
    target->copySubProperty(source, deep);
    EXPECT_EQ(textOf(target), R"({"a":{"k":1},"x":2,"y":3})") << "deep " << deep;
    EXPECT_EQ(target("a") == source("a"), !deep) << "deep " << deep;
  }
  ZrJsonPtr array = parse("[1]");
  array->copySubProperty(source, false);
  EXPECT_EQ(textOf(array), "[1]");

  struct Row { const char* tree; const char* path; const char* result; const char* after; } rows[] = {
      {R"({"s":1,"o":{}})", "o/p/q", "{}", R"({"o":{"p":{"q":{}}},"s":1})"},
      {R"({"s":1,"o":{"p":{"z":1}}})", "o/p", R"({"z":1})", R"({"o":{"p":{"z":1}},"s":1})"},
      {R"({"s":1})", "s/x", "null", R"({"s":1})"},
      {R"({"s":1})", "s", "null", R"({"s":1})"},
      {"{}", "a//b\\", "{}", R"({"a":{"b":{}}})"},
      {R"({"*ro":{}})", "ro/x", "null", R"({"*ro":{}})"},
      {"[]", "a", "null", "[]"},
      {"[]", "/", "[]", "[]"},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr tree = parse(rows[i].tree);
    EXPECT_EQ(textOf(tree->appendObjects(rows[i].path)), rows[i].result) << "row " << i;
    EXPECT_EQ(textOf(tree), rows[i].after) << "row " << i;
  }
}

TEST(TreeOps, UpdateArrayAndProperty) {
  struct Row { const char* tree; const char* item; bool ok; const char* after; } arrayRows[] = {
      {R"([1,{"k":1},[1,2]])", R"("1")", true, R"([1,{"k":1},[1,2]])"},
      {R"([1,{"k":1},[1,2]])", R"({"k":1})", true, R"([1,{"k":1},[1,2]])"},
      {R"([1,{"k":1},[1,2]])", "[2,1]", true, R"([1,{"k":1},[1,2]])"},
      {R"([1,{"k":1},[1,2]])", "[1]", true, R"([1,{"k":1},[1,2],[1]])"},
      {R"([1,{"k":1},[1,2]])", "2", true, R"([1,{"k":1},[1,2],2])"},
      {R"({"a":1})", "2", false, R"({"a":1})"},
      {R"({"*l":[1]})", "2", false, R"({"*l":[1]})"},
  };
  for (size_t i = 0; i < sizeof arrayRows / sizeof arrayRows[0]; ++i) {
    ZrJsonPtr tree = parse(arrayRows[i].tree);
    ZrJsonPtr target = tree("l") ? tree("l") : tree;
    ZrJsonPtr item = parse((std::string("[") + arrayRows[i].item + "]").c_str())(0);
    EXPECT_EQ(target->update_array(item), arrayRows[i].ok) << "row " << i;
    EXPECT_EQ(textOf(tree), arrayRows[i].after) << "row " << i;
  }

  const char* start = R"({"arr":[1,2],"o":{"a":1,"keep":true},"*r":1,"s":"x"})";  // "r" sorts after "o"
  struct Merge { const char* name; const char* value; bool ok; const char* after; } propertyRows[] = {
      {"o", R"({"a":2,"n":{"m":1}})", true, R"({"arr":[1,2],"o":{"a":2,"keep":true,"n":{"m":1}},"*r":1,"s":"x"})"},
      {"arr", "[2,3]", true, R"({"arr":[1,2,3],"o":{"a":1,"keep":true},"*r":1,"s":"x"})"},
      {"s", R"({"z":1})", true, R"({"arr":[1,2],"o":{"a":1,"keep":true},"*r":1,"s":{"z":1}})"},
      {"new", "[1]", true, R"({"arr":[1,2],"new":[1],"o":{"a":1,"keep":true},"*r":1,"s":"x"})"},
      {"r", "2", false, R"({"arr":[1,2],"o":{"a":1,"keep":true},"*r":1,"s":"x"})"},
  };
  for (size_t i = 0; i < sizeof propertyRows / sizeof propertyRows[0]; ++i) {
    ZrJsonPtr tree = parse(start);
    ZrJsonPtr value = parse((std::string("[") + propertyRows[i].value + "]").c_str())(0);
    const std::string valueBefore = textOf(value);
    EXPECT_EQ(tree->update_property(propertyRows[i].name, value), propertyRows[i].ok) << "row " << i;
    EXPECT_EQ(textOf(tree), propertyRows[i].after) << "row " << i;
    tree->SetDataS("new/0", "m");
    tree->SetDataI("o/n/z", 1);
    EXPECT_EQ(textOf(value), valueBefore) << "row " << i << ": the merged value is copied";
  }
  EXPECT_FALSE(parse("[]")->update_property("a", parse("{}")));
}

}  // namespace
