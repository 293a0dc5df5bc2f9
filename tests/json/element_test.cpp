// Tests of element values: kinds and conversions, setters and refusals, properties, arrays,
// handles and reference counts.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <zrad/json.h>
#include <zrad/log.h>

#include "tree_edit.h"

namespace {

ZrJsonPtr make(int type) { return ElementValue::createObject(type); }
ElementValue* ev(const ZrJsonPtr& h) { return static_cast<ElementValue*>(h.get()); }
ZrJsonPtr str(const char* text) { return make(etString)->set_values(text); }

std::string hex32(const void* p) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(reinterpret_cast<uintptr_t>(p)));
  return text;
}

struct Counted : ZrRxObject {
  ZR_RX_DECLARE_MEMBERS(Counted);
};
ZR_RX_DEFINE_MEMBERS(Counted, ZrRxObject, L"Counted")

// Most elements start as another kind, so the setter must change the kind as well.
TEST(ElementKinds, ConversionTable) {
  int object = 0;
  const long long address = reinterpret_cast<intptr_t>(&object);
  void* owned = zrrxAlloc(16);  // freed with its element (ASan checks the leak)
  ZrSmartPtr<Counted> counted = ZrRxObjectImpl<Counted>::createObject();
  struct Row { ZrJsonPtr e; bool b; long long ll; unsigned long long ull; double d; long long t; std::string s;
               void* p = nullptr; } rows[] = {
      {make(etNone), true, 0, 0, 0.0, 0, ""},
      {make(etObject), true, 0, 0, 0.0, 0, ""},
      {make(etNullFlag), true, 0, 0, 0.0, 0, ""},
      {str("true"), false, 0, 0, 0.0, 0, "true"},
      {str("-7x"), false, -7, static_cast<unsigned long long>(-7), -7.0, 0, "-7x"},
      {make(etInteger)->set_valueb(true), true, 1, 1, 1.0, 1, "true"},
      {make(etString)->set_valueb(false), false, 0, 0, 0.0, 0, "false"},
      {str("a text too long to be kept inline")->set_valuei(-1), true, -1, ~0ull, 18446744073709551615.0, -1, "-1"},
      {make(etDouble)->set_valueu(0), false, 0, 0, 0.0, 0, "0"},
      {make(etInteger)->set_valued(2.5), true, 2, 2, 2.5, 2160000, "2.500000"},
      {make(etTime)->set_valued(-2.7), true, -2, static_cast<unsigned long long>(-2), -2.7, -2332800, "-2.700000"},
      {make(etDouble)->set_valued(1e19), true, INT64_MIN, 10000000000000000000ull, 1e19, INT64_MIN,
       "10000000000000000000.000000"},
      {make(etDouble)->set_valued(0.0), false, 0, 0, 0.0, 0, "0.000000"},
      {make(etDouble)->set_valuet(1000), true, 1000, 1000, 1000.0, 1000, ""},
      {make(etNone)->set_valuep(&object, etPointer), true, address, static_cast<unsigned long long>(address), 0.0, 0,
       hex32(&object), &object},
      {make(etNone)->set_valuep(nullptr, etPointer), false, 0, 0, 0.0, 0, "0x0"},
      {make(etNone)->set_valuep(owned, etOwnedPointer), true, 0, 0, 0.0, 0, hex32(owned), owned},
      {make(etNone)->set_value_rxobject_ptr(counted.get()), true, 0, 0, 0.0, 0, hex32(counted.get()) + "-Counted",
       counted.get()},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const Row& r = rows[i];
    ASSERT_TRUE(r.e) << "row " << i;
    EXPECT_EQ(r.e->boolValue(), r.b) << "row " << i;
    EXPECT_EQ(r.e->longlongValue(), r.ll) << "row " << i;
    EXPECT_EQ(r.e->ulonglongValue(), r.ull) << "row " << i;
    EXPECT_EQ(r.e->floatValue(), r.d) << "row " << i;
    EXPECT_EQ(r.e->timeValue(), r.t) << "row " << i;
    EXPECT_EQ(r.e->strValue().str(), r.s) << "row " << i;
    EXPECT_EQ(r.e->ptrValue(), r.p) << "row " << i;
  }
  EXPECT_TRUE(make(etDouble)->set_valued(NAN)->boolValue()) << "NaN counts as true";
}

TEST(ElementKinds, SettersRespectReadOnlyAndStoreTexts) {
  ZrJsonPtr ro = make(etNone);
  ev(ro)->initWithUtf8String("kept", true);
  EXPECT_FALSE(ro->set_valuei(1) || ro->set_values("other") || ro->set_valuep(nullptr, etPointer));
  EXPECT_EQ(ro->strValue().str(), "kept");
  EXPECT_FALSE(make(etNullFlag)->set_valuesW(L"x")) << "a null element refuses wide text";

  ZrJsonPtr n = make(etNone);
  ev(n)->setString("12abc", etInteger);
  EXPECT_EQ(n->longlongValue(), 12);
  ev(n)->setString("1.5", etDouble);
  EXPECT_EQ(n->floatValue(), 1.5);
  ev(n)->setString("t", etString);
  EXPECT_EQ(n->strValue().str(), "t");
  // Texts on both sides of the size kept inside the element, and kind changes in between.
  for (const char* text : {"", "12345678901234", "123456789012345", "-77 short", "a longer text of some words"}) {
    ASSERT_EQ(n->set_values(text), n);
    EXPECT_EQ(n->strValue().str(), text);
    EXPECT_EQ(n->longlongValue(), std::strtoll(text, nullptr, 10)) << text;
    EXPECT_EQ(n->set_valuei(7)->strValue().str(), "7");
  }

  IElementValueBase base;
  EXPECT_EQ(base.getType(), etNullFlag);
  EXPECT_EQ(base.set_valuei(3).get(), &base) << "the base stores nothing but answers itself";
}

TEST(ElementProperties, SetPropertyRulesAndTheLoggedRefusal) {
  ZrJsonPtr o = make(etObject), shared = str("x");
  EXPECT_EQ(o->set_propertyi("a", 1, true)->getType(), etReadOnlyFlag | etInteger);
  EXPECT_EQ(o->set_propertys("s", "v", false)->strValue().str(), "v");
  o->set_property("s", shared);
  EXPECT_EQ(o("s"), shared) << "values are shared, not copied";

  // A container that is no writable Object logs its refusal; a read-only value does not.
  std::vector<std::string> gLogged;
  {
    jsontest::LogCapture capture;
    EXPECT_FALSE(o->set_propertyi("a", 2, false)) << "a read-only value refuses replacement";
    EXPECT_FALSE(make(etArray)->set_property("name", shared));
    EXPECT_FALSE(make(etReadOnlyFlag | etObject)->set_propertyi("k", 1, false));
    gLogged = capture.lines();
  }
  EXPECT_EQ(o("a")->longlongValue(), 1);
  const char* expected[] = {R"(5\|utils/zradjson\|set_property\|set_property\(name\), line:\d+, type:0x1)",
                            R"(5\|utils/zradjson\|set_property\|set_property\(k\), line:\d+, type:0x2002)"};
  ASSERT_EQ(gLogged.size(), 2u);
  for (size_t i = 0; i < 2; ++i) EXPECT_TRUE(std::regex_match(gLogged[i], std::regex(expected[i]))) << gLogged[i];
}

TEST(ElementProperties, ByteOrderEnumerationAndRemoval) {
  ZrJsonPtr o = make(etObject);
  const char* names[] = {"b", "a", "B", "ab", "", "\xc3\xa9", "a\x7f"};
  for (const char* n : names) o->set_propertys(n, n, false);
  const char* sorted[] = {"", "B", "a", "ab", "a\x7f", "b", "\xc3\xa9"};
  ASSERT_EQ(o->property_count(), 7);
  for (int i = 0; i < 7; ++i) {
    ZrUtf8String key;
    ZrJsonPtr v = o->enumproperty(i, key);
    EXPECT_EQ(key.str(), sorted[i]) << "row " << i;
    EXPECT_EQ(v->strValue().str(), sorted[i]) << "row " << i;
  }
  ZrUtf8String untouched("keep");
  EXPECT_FALSE(o->enumproperty(7, untouched));
  EXPECT_FALSE(o->enumproperty(-1, untouched));
  EXPECT_EQ(untouched.str(), "keep");

  o->removeProperty("a");
  o->removeProperty("missing");
  EXPECT_FALSE(o->hasProperty("a"));
  EXPECT_TRUE(o->hasProperty("ab"));
  EXPECT_EQ(o->property_count(), 6);
  EXPECT_EQ(o->safePropertyt("missing", 9), 9);
  EXPECT_EQ(make(etNullFlag)->safeTimeValue(4), 4);
  ZrJsonPtr text = str("no Object");
  EXPECT_TRUE(text->property_count() == 0 && !text->hasProperty("a"));
}

// A large Object filled in a scrambled order keeps its names in runs; every way of reading
// sees them in order, also several threads at once (readers write nothing).
TEST(ElementProperties, LargeObjectsFilledOutOfOrder) {
  // A scrambled order, then names that all sort first, so that many are still waiting.
  std::vector<std::pair<std::string, int>> members;
  for (int i = 0; i < 20000; ++i) members.push_back({"k" + std::to_string(i * 7919 % 20000), i * 7919 % 20000});
  for (int i = 0; i < 120; ++i) members.push_back({"a" + std::to_string(i), i});
  auto fill = [&] {
    ZrJsonPtr o = make(etObject);
    for (const auto& [name, value] : members) o->set_propertyi(name.c_str(), value, false);
    return o;
  };
  std::vector<std::pair<std::string, int>> sorted = members;
  std::sort(sorted.begin(), sorted.end());
  std::string expected = "{";
  for (const auto& [name, value] : sorted) expected += (expected.size() > 1 ? ",\"" : "\"") + name + "\":" + std::to_string(value);
  expected += "}";

  for (int round = 0; round < 4; ++round) {
    ZrJsonPtr fresh = fill();
    std::atomic<int> starting{4};
    std::vector<std::string> seen(4);
    std::vector<std::thread> readers;
    for (int t = 0; t < 4; ++t)
      readers.emplace_back([&, t] {
        for (--starting; starting.load() > 0;) {
        }
        std::string& out = seen[t];
        switch ((t + round) % 4) {
          case 0: out = fresh->writeJson().str(); break;
          case 1: out = fresh->clone()->writeJson().str(); break;
          case 2:
            for (const auto& [name, value] : members)
              if (fresh(name)->longlongValue() != value) out = "lookup of " + name;
            break;
          default: {
            ZrUtf8String key;
            for (size_t i = 0; i < sorted.size(); ++i)
              if (!fresh->enumproperty(static_cast<int>(i), key) || key.str() != sorted[i].first) out = "entry " + key.str();
          }
        }
      });
    for (std::thread& r : readers) r.join();
    for (int t = 0; t < 4; ++t) {
      const bool byText = (t + round) % 4 < 2;
      EXPECT_EQ(seen[t], byText ? expected : "") << "round " << round << " reader " << t;
    }
  }

  ZrJsonPtr o = fill();
  EXPECT_EQ(o->set_propertyi("a119", 0, true)->getType(), etReadOnlyFlag | etInteger) << "a waiting name is replaced";
  EXPECT_FALSE(o->set_propertyi("a119", 1, false)) << "and then refuses as read-only";
  o->removeProperty("a118");
  EXPECT_EQ(o->property_count(), static_cast<int>(members.size()) - 1);
  EXPECT_FALSE(o->hasProperty("a118"));
  EXPECT_EQ(o("a119")->longlongValue(), 0);
  ZrJsonPtr flat = o->clone();
  EXPECT_TRUE(o->bEqual(flat) && flat->bEqual(o)) << "a copy holds one block";
  // Emptied runs go; what is left stays in order and found.
  for (int i = 0; i < 20000; ++i)
    if (i % 1000) o->removeProperty(("k" + std::to_string(i)).c_str());
  ZrUtf8String key, previous;
  for (int i = 0; i < o->property_count(); previous = key, ++i)
    EXPECT_TRUE(o->enumproperty(i, key) && (i == 0 || previous < key) && o->hasProperty(key)) << i;
  EXPECT_EQ(o->property_count(), 119 + 20);
  EXPECT_TRUE(o->hasProperty("k19000") && !o->hasProperty("k19001"));
}

TEST(ElementArrays, EditsAndBounds) {
  ZrJsonPtr a = make(etArray);
  ZrJsonPtr x = str("x"), y = str("y");
  EXPECT_TRUE(a->array_append(x) && a->array_append(y) && a->array_append(x));
  EXPECT_EQ(a->array_count(), 3);
  for (int outside : {-1, 3}) {
    EXPECT_FALSE(a->array_sub(outside)) << outside;
    EXPECT_FALSE(a->setArrayItem(outside, y)) << outside;
    EXPECT_EQ(a->remove_array_item(outside), -1) << outside;
  }
  EXPECT_EQ(a->get_array_index(x), 0);
  EXPECT_EQ(ev(a)->remove_array_item(x), 0) << "the first occurrence goes";
  EXPECT_EQ(a->get_array_index(x), 1);
  EXPECT_TRUE(a->setArrayItem(0, x));
  EXPECT_EQ(a(0), x);
  EXPECT_EQ(a->remove_array_item(0), 0);
  EXPECT_EQ(a->array_count(), 1);
  EXPECT_EQ(ev(a)->remove_array_item(y), -1);

  EXPECT_FALSE(make(etReadOnlyFlag | etArray)->array_append(x) || make(etObject)->array_append(x));

  a->clear();
  EXPECT_TRUE(a->array_count() == 0 && a->getType() == etArray);
  ZrJsonPtr s = str("t");
  s->clear();
  EXPECT_EQ(s->strValue().str(), "t");
}

TEST(ElementHandles, NullHandlesCountsAndAliases) {
  ZrJsonPtr none;
  EXPECT_TRUE(!none("x") && !none(0) && none.ArrayCount() == 0 && !none.hasProperty("x"));

  // Assigned to itself through an alias while it holds the only reference, by copy and by move.
  ZrJsonPtr e = str("x");
  ZrJsonPtr& alias = e;
  e = alias;
  e = std::move(alias);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->strValue().str(), "x");
  ZrJsonPtr copy = e;
  EXPECT_EQ(e->AddRef(), 3u);
  EXPECT_EQ(e->Release(), 2u);
}

}  // namespace
