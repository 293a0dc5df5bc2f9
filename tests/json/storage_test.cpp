// Tests of element storage: trees built in one go share chunks, yet every element keeps its own
// count, outlives its tree, and may be dropped on any thread.
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tree_edit.h"

namespace {

using namespace jsontest;

// `count` records with texts and names long enough to need blocks of their own.
std::string records(int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i)
    text += (i ? ",{\"id\":" : "{\"id\":") + std::to_string(i) + R"(,"label":"too long to live inline","a long property name":[[2.5,"x"]]})";
  return text + "]";
}

// The three ways a whole tree is built at once: reader, clone, binary decoder.
std::vector<ZrJsonPtr> bulkBuilt(const std::string& text) {
  ZrJsonPtr read = ZrJson::readjson(text.c_str());
  return {read, read->clone(), decode(encode(read))};
}

TEST(ElementStorage, SubtreesOutliveTheirTree) {
  std::vector<ZrJsonPtr> kept;
  for (ZrJsonPtr& tree : bulkBuilt(records(3000))) {
    for (int i : {0, 1500, 2999}) kept.push_back(tree(i));
    kept.push_back(tree(2000)("a long property name")(0));
  }  // the trees are dropped here
  // Memory the dropped trees gave back is used again here; the kept subtrees must not be.
  std::vector<ZrJsonPtr> others = bulkBuilt(records(6000));
  for (size_t k = 0; k < kept.size(); ++k) {
    const int id = k % 4 == 0 ? 0 : k % 4 == 1 ? 1500 : 2999;
    EXPECT_EQ(textOf(kept[k]), k % 4 == 3 ? R"([2.500000,"x"])"
                                          : R"({"a long property name":[[2.500000,"x"]],"id":)" + std::to_string(id) +
                                                R"(,"label":"too long to live inline"})")
        << "builder " << k / 4 << ", subtree " << k % 4;
  }
  EXPECT_TRUE(kept[3]->array_append(kept[0]->clone())) << "a kept subtree is an ordinary tree";
}

// Addresses of the elements of an Array of Arrays.
std::set<const void*> addresses(const ZrJsonPtr& tree) {
  std::set<const void*> seen;
  for (int i = 0; i < tree.ArrayCount(); ++i)
    for (int j = -1; j < tree(i).ArrayCount(); ++j) seen.insert(j < 0 ? tree(i).get() : tree(i)(j).get());
  return seen;
}

TEST(ElementStorage, ChunksComeBackWhenTheirLastElementDies) {
  std::string text = "[";
  for (int i = 0; i < 20000; ++i) text += (i ? ",[" : "[") + std::to_string(i) + ",\"x\"]";
  text += "]";
  ZrJsonPtr first = ZrJson::readjson(text.c_str());
  const std::set<const void*> firstAt = addresses(first);
  std::vector<ZrJsonPtr> kept;  // every other item: each chunk of the tree stays pinned
  for (int i = 0; i < 20000; i += 2) kept.push_back(first(i));
  first = nullptr;
  ZrJsonPtr second = ZrJson::readjson(text.c_str());
  for (size_t k = 0; k < kept.size(); ++k) ASSERT_EQ(kept[k](0)->longlongValue(), long(2 * k)) << "item " << 2 * k;
  kept.clear();  // the last elements die: the chunks serve the next tree
  ZrJsonPtr third = ZrJson::readjson(text.c_str());
  size_t reused = 0;
  for (const void* at : addresses(third)) reused += firstAt.count(at);
#if !defined(__SANITIZE_ADDRESS__)  // sanitizer builds take every element from malloc
  EXPECT_GT(reused, 1000u);
#endif
  EXPECT_EQ(textOf(second), textOf(third));
}

// A tree of over 100 MB goes back to the system when dropped, except where a subtree still
// lives; that memory must stay as it was while the next tree takes what was given back.
TEST(ElementStorage, MemoryOfLargeTreesGoesBack) {
  std::string row = "[";
  for (int i = 0; i < 100; ++i) row += (i ? "," : "") + std::to_string(i);
  row += "]";
  std::string text = "[" + row;
  for (int i = 1; i < 30000; ++i) text += "," + row;
  text += "]";
  std::vector<ZrJsonPtr> kept;
  {
    ZrJsonPtr tree = ZrJson::readjson(text.c_str());
    for (int i = 0; i < 30000; i += 997) kept.push_back(tree(i));
  }
  ZrJsonPtr next = ZrJson::readjson(text.c_str());
  ASSERT_EQ(next.ArrayCount(), 30000);
  for (const ZrJsonPtr& k : kept) ASSERT_EQ(textOf(k), row);
}

// A big array with no array around it keeps the reader's own item block; arrays inside arrays
// get blocks of their own. Either way the array reads back whole and grows and shrinks.
TEST(ElementStorage, LargeArraysReadInOneGo) {
  std::string items;
  for (int i = 0; i < 1000; ++i) items += (i ? "," : "") + std::to_string(i);
  const std::string list = "[" + items + "]";
  ZrJsonPtr top = parse(list.c_str());
  ZrJsonPtr tree = parse(("{\"a\":" + list + ",\"b\":[[]," + list + "," + list + "]}").c_str());
  for (ZrJsonPtr array : {top, tree("a"), tree("b")(1), tree("b")(2)}) {
    ASSERT_EQ(textOf(array), list);
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(array->array_append(item("7")));
    EXPECT_EQ(array->remove_array_item(0), 0);
    EXPECT_EQ(array.ArrayCount(), 1099);
    EXPECT_EQ(array(0)->longlongValue(), 1);
    EXPECT_EQ(array(1098)->longlongValue(), 7);
  }
  EXPECT_EQ(tree("b")(0).ArrayCount(), 0);
}

// Objects inside objects are laid out with the object around them, within limits of depth
// and count; texts in name order come back unchanged either way, and a subtree outlives them.
TEST(ElementStorage, NestedObjectsLaidOutTogether) {
  std::string deep = "1";
  for (int level = 0; level < 20; ++level) deep = R"({"a":0,"b":)" + deep + R"(,"c":"a text too long to live inline"})";
  std::string wide = "{";
  for (int i = 0; i < 6000; ++i) wide += (i ? ",\"k" : "\"k") + std::to_string(100000 + i) + R"(":{"x":{"y":[1]}})";
  wide += "}";
  ZrJsonPtr kept;
  for (const std::string& text : {deep, wide}) {
    ZrJsonPtr tree = parse(text.c_str());
    EXPECT_EQ(textOf(tree), text);
    kept = tree("b") ? tree("b")("b")("b") : tree("k105999")("x");
  }
  parse(deep.c_str());  // memory the dropped trees gave back is used again
  EXPECT_EQ(textOf(kept), R"({"y":[1]})");
}

// Trees built by threads that then exit, dropped piece by piece by other threads at once.
TEST(ElementStorage, ElementsDroppedOnOtherThreads) {
  const std::string text = records(400);
  std::vector<std::vector<ZrJsonPtr>> built(3);
  std::vector<std::thread> threads;
  for (auto& out : built) threads.emplace_back([&] { out = bulkBuilt(text); });
  for (std::thread& t : threads) t.join();
  threads.clear();
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (const auto& trees : built)
        for (const ZrJsonPtr& tree : trees)
          for (int i = t; i < 400; i += 3) tree(i)->clear();  // every third record
      for (int round = 0; round < 5; ++round) ZrJson::readjson(text.c_str())->clone();
    });
  }
  for (std::thread& t : threads) t.join();
  for (const auto& trees : built)
    for (const ZrJsonPtr& tree : trees) EXPECT_EQ(textOf(tree(7)), "{}");
  std::thread([&] { built.clear(); }).join();
}

}  // namespace
