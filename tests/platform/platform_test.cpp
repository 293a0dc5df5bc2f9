// Strings, arrays, wildcards and assertions of the platform stand-in.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zrplatform/platform.h>

namespace {

std::vector<std::string> g_asserts;
void recordAssert(const char* text, const char*, int) { g_asserts.push_back(text); }

struct AssertRecorder {
  ZrAssertHandler previous = zrSetAssertHandler(recordAssert);
  AssertRecorder() { g_asserts.clear(); }
  ~AssertRecorder() { zrSetAssertHandler(previous); }
};

}  // namespace

TEST(Strings, SearchAndSlice) {
  ZrUtf8String s("a/b/c.txt");
  EXPECT_EQ(s.length(), 9);
  EXPECT_EQ(s.find('/'), 1);
  EXPECT_EQ(s.find('/', 2), 3);
  EXPECT_EQ(s.find("c."), 4);
  EXPECT_EQ(s.find('q'), -1);
  EXPECT_EQ(s.reverseFind('/'), 3);
  EXPECT_EQ(s.mid(4), "c.txt");
  EXPECT_EQ(s.mid(4, 1), "c");
  EXPECT_EQ(s.mid(40), "");
  EXPECT_EQ(s.left(3), "a/b");
  EXPECT_EQ(s.right(3), "txt");
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
  EXPECT_EQ(ZrUtf8String::format("%d-%s", 7, "x"), "7-x");
  EXPECT_EQ(ZrString::format(L"%d-%ls", 7, L"x"), L"7-x");
  EXPECT_EQ(ZrUtf8String::format("%0300d", 1).length(), 300);
  EXPECT_TRUE(ZrUtf8String("a") < ZrUtf8String("b"));
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
  // Malformed input: a lone continuation byte, a truncated sequence, an overlong encoding.
  EXPECT_EQ(ZrString(ZrUtf8String("a\x80" "b")), L"a\ufffdb");
  EXPECT_EQ(ZrString(ZrUtf8String("a\xE4\xB8")), L"a\ufffd\ufffd");
  EXPECT_EQ(ZrString(ZrUtf8String("\xC0\xAF")), L"\ufffd\ufffd");
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
