// Tests of hostile input: trees of any depth on a small stack, trees that contain themselves,
// texts too long for the binary form, numbers that would overflow the parser's exponent
// arithmetic, and random bytes through every reader.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zrad/json.h>

#include "common/small_stack.h"
#include "tree_edit.h"
#include "wrapper.h"

namespace {

using jsontest::decode;
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

// Far beyond what a recursive walk survives on a 1 MiB stack.
constexpr int kDeep = 120000;

// A text and a tree built by hand, kDeep levels of {"k":[...]} pairs.
TEST(HostileInput, TreesOfAnyDepth) {
  const std::string text = nested(kDeep / 2, "{\"k\":[", "]}", "1");
  onSmallStack([&] {
    ZrJsonPtr read = ZrJson::readjson(text);
    ASSERT_TRUE(read) << "texts of any depth are read";
    ZrJsonPtr built = ElementValue::createObject(etObject), at = built;
    for (int i = 0; i < kDeep / 2; ++i) {
      ZrJsonPtr array = at->set_property("k", ElementValue::createObject(etArray));
      at = ElementValue::createObject(i + 1 < kDeep / 2 ? etObject : etInteger);
      array->array_append(i + 1 < kDeep / 2 ? at : at->set_valuei(1));
    }
    EXPECT_EQ(built->writeJson().str(), text);
    EXPECT_EQ(read->writeJson().str(), text);
    ZrJsonPtr copy = built->clone();
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->bEqual(read));
    EXPECT_TRUE(built->bEqual(built));
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    ASSERT_TRUE(ZrJson(copy).write2Stream(s.get(), ZrJson::eBinary));
    s->rewind();
    ZrJson back;
    ASSERT_TRUE(back.readBinaryStream(s.get()));
    EXPECT_EQ(back->writeJson().str(), text);
    // One deep tree dropped by an edit rather than by its last handle.
    ZrJsonPtr holder = ElementValue::createObject(etObject);
    holder->set_property("t", back);
    back = ZrJsonPtr();
    EXPECT_TRUE(holder->set_property("t", ElementValue::createObject(etNone)));
  });
}

// A tree that contains itself cannot be written, copied or compared: every walk says so
// (false, null, a log line) and writes nothing, however deep the loop sits.
TEST(HostileInput, TreesThatContainThemselves) {
  for (int depth : {1, 1000}) {
    ZrJsonPtr root = ElementValue::createObject(etArray), at = root;
    for (int i = 1; i < depth; ++i) {
      at->array_append(ElementValue::createObject(etArray));
      at = at(0);
    }
    at->array_append(root);
    jsontest::LogCapture capture;
    EXPECT_EQ(root->writeJson().str(), "") << depth;
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    EXPECT_FALSE(ZrJson(root).write2Stream(s.get(), ZrJson::eBinary)) << depth;
    EXPECT_FALSE(ZrJson(root).write2Stream(s.get(), ZrJson::eJsonText)) << depth;
    EXPECT_EQ(s->length(), 0u) << depth;
    EXPECT_FALSE(root->clone()) << depth;
    EXPECT_FALSE(root->bEqual(root)) << depth;
    EXPECT_EQ(capture.lines().size(), 4u) << depth << ": the writers and clone log their refusal";
    at->remove_array_item(at->array_count() - 1);  // breaks the cycle so the elements can be freed
  }
}

// Trees of another element class go through the same walks: no depth restarts, and what is
// written reads back as the tree it came from.
TEST(HostileInput, DeepTreesOfOtherClasses) {
  const std::string text = nested(1500, "[", "]", "\"x\"");
  ZrJsonPtr inner = ElementValue::createObject(etArray), at = inner;
  for (int i = 1; i < 1500; ++i) at = at->array_append(ElementValue::createObject(etArray)) ? at(0) : ZrJsonPtr();
  at->array_append(ElementValue::createObject(etString)->set_values("x"));
  onSmallStack([&] {
    ZrJson wrapped(jsontest::Wrapper::wrap(inner));
    EXPECT_EQ(wrapped->writeJson().str(), text);
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    ASSERT_TRUE(wrapped.write2Stream(s.get(), ZrJson::eBinary));
    s->rewind();
    ZrJson back;
    ASSERT_TRUE(back.readBinaryStream(s.get())) << "the reader takes what the writer wrote";
    EXPECT_EQ(back->writeJson().str(), text);
    ZrJsonPtr copy = wrapped->clone();
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->writeJson().str(), text);
    EXPECT_TRUE(wrapped->bEqual(inner));
  });
}

// The binary reader counts a length as signed 32 bits: a longer text would come back as "".
TEST(HostileInput, BinaryRefusesTextsTheReaderCannotTake) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "a 2 GiB string under ThreadSanitizer's shadow memory outgrows the machine";
#endif
  std::string bytes(size_t(1) << 31, 'a');
  ZrJsonPtr big = ElementValue::createObject(etString);
  big->set_values(ZrUtf8String(std::move(bytes)));
  ZrJsonPtr holder = ElementValue::createObject(etObject);
  holder->set_property("s", big);
  jsontest::LogCapture capture;
  for (const ZrJsonPtr& tree : {big, holder}) {
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    EXPECT_FALSE(ZrJson(tree).write2Stream(s.get(), ZrJson::eBinary));
    EXPECT_EQ(s->length(), 0u);
  }
  EXPECT_EQ(capture.lines().size(), 2u);
}

TEST(HostileInput, BinaryNestingAndCounts) {
  onSmallStack([] {
    std::string deep;
    for (int i = 0; i < kDeep; ++i) deep += std::string("\x01\x00\x01\x00\x00\x00", 6);
    deep += std::string("\x00\x10", 2);
    EXPECT_TRUE(decode(deep)) << "streams of any depth are read";
    EXPECT_FALSE(decode(deep.substr(0, deep.size() - 1))) << "one byte short";
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

// Valid numbers whose exponents would overflow the parser's arithmetic (UndefinedBehaviorSanitizer
// aborts on that) read as the value a correct parser gives; texts inside strings stay as they are.
TEST(HostileInput, NumbersWithLongExponents) {
  struct Row {
    const char* text;
    const char* json;  // written back; null: a parse error
  } rows[] = {
      {"[1e-000000001]", "[0.100000]"},
      {"[1.5E-0000000002]", "[0.015000]"},
      {"[0.0000000001e-2147483639]", "[0.000000]"},
      {"[-0.00000000000000000001e-2147483647]", "[-0.000000]"},
      {"{\"a\":[1,{\"b\":1.5e-999999999}]}", "{\"a\":[1,{\"b\":0.000000}]}"},
      {"[12e-0000000000000000000000000000000000000002,3]", "[0.120000,3]"},
      {"[1e-99999999]", "[0.000000]"},
      {"[\"0.0000000001e-2147483639\"]", "[\"0.0000000001e-2147483639\"]"},
      {"{\"1e-2147483639\":1}", "{\"1e-2147483639\":1}"},
      {"[\"\\\"\", 1e-5]", "[\"\\\"\",0.000010]"},
      {"[1e+0000000000002]", "[100.000000]"},
      {"[1e+99999999999]", nullptr},  // beyond any double, as [1e400]
      {"[1e-2147483639x]", nullptr},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    ZrJsonPtr tree = ZrJson::readjson(rows[i].text);
    EXPECT_EQ(jsontest::textOf(tree), rows[i].json ? rows[i].json : "null") << "row " << i;
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// How an operation ended: 0 false, 1 true, 2 ZrError(eOutOfMemory), 3 another ZrError,
// 4 std::bad_alloc.
template <class Op>
int outcomeOf(Op op) {
  try {
    return op() ? 1 : 0;
  } catch (const ZrError& e) {
    return e.status() == Zrad::eOutOfMemory ? 2 : 3;
  } catch (const std::bad_alloc&) {
    return 4;
  }
}

// Runs `op` in a child process whose address space may grow by `headroom` bytes only; the
// child's outcomeOf, or 100 and more when it died.
int outcomeWithLittleMemory(size_t headroom, std::function<bool()> op) {
  pid_t pid = fork();
  if (pid == 0) {
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit cap;
    cap.rlim_cur = cap.rlim_max = pages * sysconf(_SC_PAGESIZE) + headroom;
    setrlimit(RLIMIT_AS, &cap);
    _exit(outcomeOf(op));
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

// Out of memory is the platform's error or a false result, never std::bad_alloc.
TEST(HostileInput, OutOfMemoryAtTheBoundary) {
  constexpr size_t kHeadroom = size_t(32) << 20;
  ZrJsonPtr controls = ElementValue::createObject(etString);  // 6 bytes of text per byte
  controls->set_values(ZrUtf8String(std::string(size_t(16) << 20, '\x01')));
  std::vector<ZrJsonPtr> kept;
  kept.reserve(size_t(8) << 20);
  std::string many = "[";
  for (int i = 0; i < 3000000; ++i) many += i ? ",[1]" : "[1]";
  many += "]";
  std::string records = "[";
  for (int i = 0; i < 300000; ++i) records += R"({"a":{"b":{"c":1,"d":"a text too long to live inline"}},"e":2},)";
  records.back() = ']';
  struct Row {
    const char* what;
    std::function<bool()> op;
    int outcome;
  } rows[] = {
      {"text to a stream", [&] { return ZrJson(controls).write2Stream(ZrMemoryStream::createNew().get(), ZrJson::eJsonText); }, 0},
      {"text", [&] { return !controls->writeJson().isEmpty(); }, 2},
      {"elements", [&] {
         for (size_t i = 0; i < kept.capacity(); ++i) kept.push_back(ElementValue::createObject(etInteger));
         return true;
       }, 2},
      {"reading", [&] { return static_cast<bool>(ZrJson::readjson(many)); }, 2},
      {"reading objects", [&] { return static_cast<bool>(ZrJson::readjson(records)); }, 2},
  };
  for (const Row& row : rows) EXPECT_EQ(outcomeWithLittleMemory(kHeadroom, row.op), row.outcome) << row.what;
}
#endif

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
