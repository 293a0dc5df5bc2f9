// Tests of hostile input: nesting at and beyond the limit on a small stack, trees that contain
// themselves, numbers that would overflow the parser's exponent arithmetic, and random bytes
// through every reader.
#include <atomic>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <zrad/json.h>

#include "common/small_stack.h"
#include "json/limits.h"
#include "tree_edit.h"

namespace {

using jsontest::decode;
using zrad::json::kMaxDepth;
using zradtest::onSmallStack;

std::string nested(int depth, const char* open, const char* close, const char* inner = "") {
  std::string s;
  for (int i = 0; i < depth; ++i) s += open;
  s += inner;
  for (int i = 0; i < depth; ++i) s += close;
  return s;
}

#if defined(__SANITIZE_ADDRESS__)
extern "C" size_t __sanitizer_get_current_allocated_bytes();
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t),
                                                         void (*)(const volatile void*));
std::atomic<bool> gTracking{false};
std::atomic<size_t> gPeak{0};
void notePeak(const volatile void*, size_t) {
  if (!gTracking) return;
  size_t now = __sanitizer_get_current_allocated_bytes();
  if (now > gPeak) gPeak = now;
}
void noteFree(const volatile void*) {}

// The most heap that `run` holds at once beyond what was held before it.
template <class Run>
size_t heapPeakOf(Run run) {
  static const int kInstalled = __sanitizer_install_malloc_and_free_hooks(notePeak, noteFree);
  (void)kInstalled;
  size_t before = __sanitizer_get_current_allocated_bytes();
  gPeak = before;
  gTracking = true;
  run();
  gTracking = false;
  return gPeak - before;
}
#endif

TEST(HostileInput, NestingLimit) {
  // Each step opens an Object and an Array: kMaxDepth levels in all.
  const std::string atLimit = nested(kMaxDepth / 2, "{\"k\":[", "]}");
  ZrJsonPtr tree = ZrJson::readjson(atLimit);
  ASSERT_TRUE(tree) << "a tree at the limit is read";
  EXPECT_FALSE(ZrJson::readjson(nested(kMaxDepth + 1, "[", "]")));
  EXPECT_FALSE(ZrJson::readjson(nested(1000000, "{\"a\":", "}", "1")));

  // Everything but the parser itself runs on a small stack.
  onSmallStack([&] {
    EXPECT_EQ(tree->writeJson().str(), atLimit);
    ZrJsonPtr copy = tree->clone();
    EXPECT_TRUE(copy->bEqual(tree));
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    ASSERT_TRUE(ZrJson(copy).write2Stream(s.get(), ZrJson::eBinary));
    s->rewind();
    ZrJson back;
    ASSERT_TRUE(back.readBinaryStream(s.get()));
    EXPECT_EQ(back->writeJson().str(), atLimit);
    // One level more is refused by every walk; nothing is written for it.
    ZrJsonPtr deeper = ElementValue::createObject(etArray);
    deeper->array_append(tree);
    ZrMemoryStreamPtr refused = ZrMemoryStream::createNew();
    EXPECT_FALSE(ZrJson(deeper).write2Stream(refused.get(), ZrJson::eBinary));
    EXPECT_EQ(refused->length(), 0u);
    EXPECT_EQ(deeper->writeJson().str(), "");
    EXPECT_FALSE(deeper->clone());
    EXPECT_FALSE(deeper->bEqual(deeper));
    // One deep tree dropped by an edit rather than by its last handle.
    ZrJsonPtr holder = ElementValue::createObject(etObject);
    holder->set_property("t", back);
    back = ZrJsonPtr();
    EXPECT_TRUE(holder->set_property("t", ElementValue::createObject(etNone)));
    tree = copy = holder = deeper = ZrJsonPtr();
  });

  ZrJsonPtr cycle = ElementValue::createObject(etArray);
  cycle->array_append(cycle);
  EXPECT_FALSE(cycle->clone());
  EXPECT_FALSE(cycle->bEqual(cycle));
  cycle->remove_array_item(0);  // breaks the cycle so the element can be freed
}

TEST(HostileInput, DeepTreesBuiltByHandDropWithoutRecursion) {
  onSmallStack([] {
    ZrJsonPtr root = ElementValue::createObject(etArray), at = root;
    for (int i = 1; i < 200000; ++i) {
      at->array_append(ElementValue::createObject(etArray));
      at = at(0);
    }
    at = root = ZrJsonPtr();
  });
}

TEST(HostileInput, BinaryNestingAndCounts) {
  onSmallStack([] {
    std::string deep;
    for (int i = 0; i <= kMaxDepth; ++i) deep += std::string("\x01\x00\x01\x00\x00\x00", 6);
    deep += std::string("\x00\x10", 2);
    EXPECT_FALSE(decode(deep)) << "one level beyond the limit";
    EXPECT_TRUE(decode(deep.substr(6)));
  });
  // Counts and lengths far beyond the stream are refused before anything is reserved.
  const char* claims[] = {"\x01\x00\xff\xff\xff\x7f", "\x02\x00\xff\xff\xff\x7f", "\x04\x00\xff\xff\xff\x7f",
                          "\x05\x00\xff\xff\xff\xff"};
  for (size_t i = 0; i < sizeof claims / sizeof claims[0]; ++i)
    EXPECT_FALSE(decode(std::string(claims[i], 6) + std::string(64, '\0'))) << "row " << i;
}

// Each count alone fits the bytes left; the counts of all open containers together do not,
// and nothing may be reserved for them.
TEST(HostileInput, BinaryCountsClaimTogether) {
#if defined(__SANITIZE_ADDRESS__)
  std::string bytes;
  for (int i = 0; i < 40; ++i) bytes += std::string("\x01\x00\x20\xa1\x07\x00", 6);  // 500,000 items
  bytes += std::string(1000000, '\0');
  size_t peak = heapPeakOf([&] { EXPECT_FALSE(decode(bytes)); });
  EXPECT_LT(peak, 16 * bytes.size());
#else
  GTEST_SKIP() << "the heap is measured through the address sanitizer";
#endif
}

// Under UndefinedBehaviorSanitizer the parser's signed overflow on these exponents would abort
// the run; the screen must refuse them first.
TEST(HostileInput, NumbersThatWouldOverflowTheParser) {
  struct Row { const char* text; bool parses; } rows[] = {
      {"[0.0000000001e-2147483639]", false},
      {"[0.00000000000000000001e-2147483647]", false},
      {"{\"a\":[1,{\"b\":1.5e-999999999}]}", false},
      {"[1E-000000001]", false},
      {"[1e-99999999]", true},
      {"[\"0.0000000001e-2147483639\"]", true},
      {"{\"0.0000000001e-2147483639\":1}", true},
      {"[\"\\\"\", 1e-5]", true},
      {"[1e+99999999999]", false},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i)
    EXPECT_EQ(static_cast<bool>(ZrJson::readjson(rows[i].text)), rows[i].parses) << "row " << i;
}

TEST(HostileInput, RandomBytesThroughEveryReader) {
  std::mt19937 random(11);
  const std::string alphabet = "[]{}\",:0123456789.eE+-tfnrul \\\x01\xe0\xff";
  for (int round = 0; round < 3000; ++round) {
    std::string bytes(random() % 64, '\0');
    for (char& c : bytes) c = round % 2 ? alphabet[random() % alphabet.size()] : static_cast<char>(random());
    ZrJson tree;
    tree.readFromStream(bytes.data(), static_cast<unsigned>(bytes.size()), -1);
    ZrJsonPtr parsed = ZrJson::readjson(bytes);
    if (parsed) {
      EXPECT_TRUE(ZrJson::readjson(parsed->writeJson())) << "what was read writes back as JSON";
    }
    decode(bytes);
  }
}

}  // namespace
