// The platform stand-in: strings, arrays, wildcards, assertions, objects and streams.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <zrplatform/platform.h>

#include "common/testdir.h"

namespace {

std::vector<std::string> g_asserts;
void recordAssert(const char* text, const char*, int) { g_asserts.push_back(text); }

struct AssertRecorder {
  ZrAssertHandler previous = zrSetAssertHandler(recordAssert);
  AssertRecorder() { g_asserts.clear(); }
  ~AssertRecorder() { zrSetAssertHandler(previous); }
};

class Shape : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(Shape);
  static int alive;
  Shape() { ++alive; }
  ~Shape() override { --alive; }
};
int Shape::alive = 0;
ZR_RX_DEFINE_MEMBERS(Shape, ZrRxObject, L"Shape")

class Circle : public Shape {
 public:
  ZR_RX_DECLARE_MEMBERS(Circle);
};
ZR_RX_DEFINE_MEMBERS(Circle, Shape, L"Circle")

// The same sequence of calls against any stream: writes, seeks, reads past the end.
void exercise(ZrStreamBuf& s) {
  for (int i = 0; i < 1000; ++i) s.putByte(static_cast<uint8_t>(i));
  s.putBytes("tail", 4);
  EXPECT_EQ(s.length(), 1004u);
  EXPECT_EQ(s.seek(-4, kSeekFromEnd), 1000u);
  char buf[16] = {};
  EXPECT_EQ(s.getBytes(buf, sizeof buf), 4u);  // only what is there
  EXPECT_EQ(std::string(buf), "tail");
  EXPECT_TRUE(s.isEof());
  EXPECT_EQ(s.getByte(), 0);
  EXPECT_EQ(s.seek(-10, kSeekFromStart), 0u);
  EXPECT_EQ(s.seek(5000, kSeekFromStart), 1004u);
  s.seek(10, kSeekFromStart);
  EXPECT_EQ(s.getByte(), 10);
  EXPECT_EQ(s.seek(2, kSeekFromCurrent), 13u);
  s.truncate();
  EXPECT_EQ(s.length(), 13u);
  s.rewind();
  EXPECT_EQ(s.tell(), 0u);
}

}  // namespace

// The edges of the std::string wrappers: starts and counts out of range, replacement counts.
TEST(Strings, SearchSliceAndEdit) {
  ZrUtf8String s("a/b/c.txt");
  EXPECT_EQ(s.find('/', 2), 3);
  EXPECT_EQ(s.find('q'), -1);
  EXPECT_EQ(s.mid(4, 1), "c");
  EXPECT_EQ(s.mid(40), "");
  EXPECT_EQ(s.right(30), s);
  ZrUtf8String r("aXbXc");
  EXPECT_EQ(r.replace("X", "YY"), 2);
  EXPECT_EQ(r, "aYYbYYc");
  EXPECT_EQ(r.replace('Y', 'z'), 4);
  ZrUtf8String t("  MiXed\t\n");
  t.trimLeft().trimRight();
  EXPECT_EQ(t, "MiXed");
  EXPECT_EQ(ZrUtf8String(t).makeUpper(), "MIXED");
  EXPECT_EQ(ZrUtf8String(t).makeLower(), "mixed");
  EXPECT_EQ(ZrString::format(L"%d-%ls", 7, L"x"), L"7-x");
  EXPECT_EQ(ZrUtf8String::format("%0300d", 1).length(), 300);
  EXPECT_EQ(ZrUtf8String("a") + "b" + 'c', "abc");
}

TEST(Strings, CheckedIndexReportsAndYieldsZero) {
  AssertRecorder recorder;
  ZrUtf8String s("ab");
  EXPECT_EQ(s[1], 'b');
  EXPECT_EQ(s[2], 0);
  EXPECT_EQ(s[-1], 0);
  ASSERT_EQ(g_asserts.size(), 2u);
  EXPECT_EQ(g_asserts[0], "this->isValid(i)");
}

TEST(Strings, Utf8WideRoundTrip) {
  const char* samples[] = {"", "plain", "caf\xC3\xA9", "\xE4\xB8\xAD\xE6\x96\x87", "\xF0\x9F\x98\x80"};
  const wchar_t* wide[] = {L"", L"plain", L"caf\u00e9", L"\u4e2d\u6587", L"\U0001F600"};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(ZrString(ZrUtf8String(samples[i])), wide[i]) << "row " << i;
    EXPECT_EQ(ZrUtf8String(ZrString(wide[i])), samples[i]) << "row " << i;
  }
  // Malformed input, one U+FFFD per byte not taken: a lone continuation byte, a truncated
  // sequence, an overlong encoding, lead bytes that no sequence starts with.
  const std::pair<const char*, const wchar_t*> malformed[] = {
      {"a\x80" "b", L"a\ufffdb"}, {"a\xE4\xB8", L"a\ufffd\ufffd"}, {"\xC0\xAF", L"\ufffd\ufffd"},
      {"\xF5\x80\x80\x80", L"\ufffd\ufffd\ufffd\ufffd"}, {"\xF8\x88\x80", L"\ufffd\ufffd\ufffd"}};
  for (size_t i = 0; i < std::size(malformed); ++i)
    EXPECT_EQ(ZrString(ZrUtf8String(malformed[i].first)), ZrString(malformed[i].second))
        << "row " << i;
}

TEST(Arrays, GrowInsertRemoveFind) {
  ZrArray<ZrUtf8String> a;
  a.setGrowLength(2);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(a.append(ZrUtf8String::format("%d", i)), i);
  EXPECT_EQ(a.length(), 20);
  EXPECT_GE(a.physicalLength(), 20);
  a.insertAt(0, "first");
  a.removeAt(5);
  EXPECT_EQ(a[0], "first");
  EXPECT_EQ(a[5], "5");
  EXPECT_EQ(a.find("19"), 19);
  EXPECT_EQ(a.find("4"), -1);
  a.append(a[0]);  // an item of the array itself survives the growth
  EXPECT_EQ(a[a.length() - 1], "first");
  a.setLogicalLength(3);
  EXPECT_EQ(a.length(), 3);
  ZrArray<ZrUtf8String> copy(a);
  a.clear();
  EXPECT_TRUE(a.isEmpty());
  EXPECT_EQ(copy.length(), 3);

  struct Rec { int x; double y; };
  ZrArray<Rec, ZrArrayMemCopyReallocator<Rec>> records;
  for (int i = 0; i < 100; ++i) records.append({i, i * 0.5});
  EXPECT_EQ(records[99].x, 99);
  EXPECT_EQ(records[50].y, 25.0);
}

TEST(Arrays, BadIndexReportsAssertion) {
  AssertRecorder recorder;
  ZrArray<int, ZrArrayMemCopyReallocator<int>> a;
  a.append(1);
  a.removeAt(3);
  a.insertAt(-1, 0);
  EXPECT_EQ(a.length(), 1);
  EXPECT_THROW(a.at(1), ZrError);
  ASSERT_EQ(g_asserts.size(), 3u);
  for (const auto& text : g_asserts) EXPECT_EQ(text, "this->isValid(i)");
}

TEST(Wildcards, MatchRows) {
  struct Row { const wchar_t* name; const wchar_t* pattern; bool exact; bool noCase; };
  const Row rows[] = {
      {L"a12.txt", L"a##.*", true, true},     {L"ab2.txt", L"a##.*", false, false},
      {L"A.txt", L"a.*", false, true},        {L"a*", L"a`*", true, true},
      {L"ab", L"a`*", false, false},          {L"", L"*", true, true},
      {L"", L"?", false, false},              {L"abc", L"a*c*", true, true},
      {L"aaaaaaaaaaaaab", L"*a*a*a*b", true, true}, {L"x.TXT", L"*.txt", false, true},
  };
  for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
    EXPECT_EQ(zrutWcMatchExp(rows[i].name, rows[i].pattern), rows[i].exact) << "row " << i;
    EXPECT_EQ(zrutWcMatchNoCase(rows[i].name, rows[i].pattern), rows[i].noCase) << "row " << i;
  }
  EXPECT_EQ(Zr_stricmpA("Hello", "hELLO"), 0);
  EXPECT_LT(Zr_stricmpA("abc", "ABD"), 0);
  EXPECT_GT(Zr_stricmpA("abcd", "ABC"), 0);
}

TEST(Objects, CountsAndLifetime) {
  {
    ZrSmartPtr<Shape> a = ZrRxObjectImpl<Shape>::createObject();
    EXPECT_EQ(a->numRefs(), 1);
    ZrSmartPtr<Shape> b = a;
    EXPECT_EQ(a->numRefs(), 2);
    zrrxAddRef(a.get());
    zrrxRelease(a.get());
    zrrxRelease(nullptr);
    ZrSmartPtr<Shape>& alias = b;
    b = alias;  // self-assignment keeps the reference
    EXPECT_EQ(a->numRefs(), 2);
    b.reset();
    EXPECT_EQ(a->numRefs(), 1);
    EXPECT_EQ(Shape::alive, 1);
  }
  EXPECT_EQ(Shape::alive, 0);
}

TEST(Objects, ClassQuery) {
  ZrSmartPtr<Circle> circle = ZrRxObjectImpl<Circle>::createObject();
  EXPECT_TRUE(circle->isKindOf(Shape::desc()));
  EXPECT_TRUE(circle->isKindOf(ZrRxObject::desc()));
  EXPECT_FALSE(circle->isKindOf(ZrStreamBuf::desc()));
  EXPECT_STREQ(circle->className(), L"Circle");

  ZrSmartPtr<ZrRxObject> root = circle;
  ZrSmartPtr<Circle> back(root);  // through the query: the object is a Circle
  EXPECT_EQ(back.get(), circle.get());
  EXPECT_EQ(circle->numRefs(), 3);

  ZrSmartPtr<Shape> plain = ZrRxObjectImpl<Shape>::createObject();
  ZrSmartPtr<ZrRxObject> other = plain;
  try {
    ZrSmartPtr<Circle> wrong(other);
    FAIL() << "a Shape is not a Circle";
  } catch (const ZrError& e) {
    EXPECT_EQ(e.status(), Zrad::eNotThatKindOfClass);
  }
  EXPECT_EQ(plain->numRefs(), 2);  // the failed query took no reference
}

TEST(Streams, MemoryStream) {
  ZrMemoryStreamPtr m = ZrMemoryStream::createNew(0);
  exercise(*m);
  EXPECT_EQ(m->data()[12], 12);
  EXPECT_TRUE(m->isKindOf(ZrStreamBuf::desc()));
}

TEST(Streams, FileStreamsAndTheirFailures) {
  TestDir dir;
  ZrUtf8String path((dir / "s.bin").c_str());
  {
    ZrStreamBufPtr f = zrSystemServices()->createFile(path, kFileRead | kFileWrite, kShareDenyNo, kCreateNew);
    exercise(*f);
  }
  EXPECT_THROW(zrSystemServices()->createFile(path, kFileWrite, kShareDenyNo, kCreateNew), ZrError);
  EXPECT_THROW(zrSystemServices()->createFile(path + "x", kFileRead), ZrError);
  EXPECT_THROW(zrSystemServices()->createFile(ZrUtf8String(dir.path().c_str()), kFileRead), ZrError);
  ZrStreamBufPtr again = zrSystemServices()->createFile(ZrString(ZrString(path)), kFileRead);
  EXPECT_EQ(again->length(), 13u);
  EXPECT_TRUE(zrSystemServices()->accessFile(path, kFileRead));
  EXPECT_NO_THROW(again->flush());

  // A write the buffer takes but the disk refuses shows at flush.
  ZrStreamBufPtr full = zrSystemServices()->createFile(ZrUtf8String("/dev/full"), kFileWrite);
  full->putBytes("abc", 3);
  try {
    full->flush();
    FAIL() << "flush on a full device succeeded";
  } catch (const ZrError& e) {
    EXPECT_EQ(e.status(), Zrad::eFileWriteError);
  }
}
