// Tests of element storage: trees built in one go lie in shared chunks, yet every element keeps
// its own count, outlives its tree, and may be dropped on any thread.
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tree_edit.h"

namespace {

using namespace jsontest;

// `count` records with texts long enough to need blocks of their own, nested arrays and names.
std::string records(int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i)
    text += (i ? ",{\"id\":" : "{\"id\":") + std::to_string(i) +
            R"(,"label":"a label too long to live inline","a very long property name indeed":[1,[2.5,"x"]]})";
  return text + "]";
}

// The three ways a whole tree is built at once.
std::vector<ZrJsonPtr> bulkBuilt(const std::string& text) {
  ZrJsonPtr read = ZrJson::readjson(text.c_str());
  return {read, read->clone(), decode(encode(read))};
}

TEST(ElementStorage, SubtreesOutliveTheirTree) {
  const std::string text = records(3000);
  const char* builders[] = {"reader", "clone", "decoder"};
  std::vector<ZrJsonPtr> trees = bulkBuilt(text);
  std::vector<ZrJsonPtr> kept;
  for (ZrJsonPtr& tree : trees) {
    ASSERT_TRUE(tree);
    for (int i : {0, 1500, 2999}) kept.push_back(tree(i));
    kept.push_back(tree(2000)("a very long property name indeed")(1));
    tree = nullptr;
  }
  // Memory given back by the dropped trees is used again here; the kept subtrees must not be.
  std::vector<ZrJsonPtr> others = bulkBuilt(records(6000));
  for (size_t b = 0; b < 3; ++b) {
    for (int k = 0; k < 3; ++k) {
      const int id = k == 0 ? 0 : k == 1 ? 1500 : 2999;
      EXPECT_EQ(textOf(kept[b * 4 + k]), R"({"a very long property name indeed":[1,[2.500000,"x"]],"id":)" + std::to_string(id) +
                                              R"(,"label":"a label too long to live inline"})")
          << builders[b] << " record " << id;
    }
    EXPECT_EQ(textOf(kept[b * 4 + 3]), R"([2.500000,"x"])") << builders[b];
    // A subtree of a dropped tree is an ordinary tree: it may be edited and cloned.
    EXPECT_TRUE(kept[b * 4 + 3]->array_append(kept[b * 4]->clone())) << builders[b];
  }
}

// Addresses of the tree's elements down to the items of its items.
std::set<const void*> addresses(const ZrJsonPtr& tree) {
  std::set<const void*> seen;
  for (int i = 0; i < tree.ArrayCount(); ++i) {
    seen.insert(tree(i).get());
    for (int j = 0; j < tree(i).ArrayCount(); ++j) seen.insert(tree(i)(j).get());
  }
  return seen;
}

TEST(ElementStorage, ChunksComeBackWhenTheirLastElementDies) {
  std::string text = "[";
  for (int i = 0; i < 20000; ++i) text += (i ? ",[" : "[") + std::to_string(i) + ",\"x\"]";
  text += "]";
  ZrJsonPtr first = ZrJson::readjson(text.c_str());
  const std::set<const void*> firstAt = addresses(first);
  // Every other item outlives the tree: each chunk of it stays pinned.
  std::vector<ZrJsonPtr> kept;
  for (int i = 0; i < 20000; i += 2) kept.push_back(first(i));
  first = nullptr;
  ZrJsonPtr second = ZrJson::readjson(text.c_str());
  for (size_t k = 0; k < kept.size(); ++k) ASSERT_EQ(kept[k](0)->longlongValue(), long(2 * k)) << "item " << 2 * k;
  // Once the last ones die, the chunks serve the next tree.
  kept.clear();
  ZrJsonPtr third = ZrJson::readjson(text.c_str());
  size_t reused = 0;
  for (const void* at : addresses(third)) reused += firstAt.count(at);
#if !defined(__SANITIZE_ADDRESS__)  // sanitizer builds take every element from malloc
  EXPECT_GT(reused, 1000u);
#endif
  EXPECT_EQ(textOf(second), textOf(third));
}

// Trees built by threads that then exit, dropped piece by piece by other threads at once.
TEST(ElementStorage, ElementsDroppedOnOtherThreads) {
  const std::string text = records(400);
  std::vector<ZrJsonPtr> trees;
  std::vector<std::thread> builders;
  std::vector<std::vector<ZrJsonPtr>> built(3);
  for (auto& out : built) builders.emplace_back([&] { out = bulkBuilt(text); });
  for (std::thread& t : builders) t.join();
  for (auto& out : built) trees.insert(trees.end(), out.begin(), out.end());

  std::vector<std::thread> droppers;
  for (int t = 0; t < 3; ++t) {
    droppers.emplace_back([&, t] {
      // Each thread drops every third record of every tree, then the trees it owns.
      for (const ZrJsonPtr& tree : trees)
        for (int i = t; i < 400; i += 3) tree(i)->clear();
      for (int round = 0; round < 5; ++round) ZrJson::readjson(text.c_str())->clone();
    });
  }
  for (std::thread& t : droppers) t.join();
  for (size_t i = 0; i < trees.size(); ++i) EXPECT_EQ(textOf(trees[i](7)), "{}") << "tree " << i;
  std::thread([&] { trees.clear(); }).join();
}

}  // namespace
