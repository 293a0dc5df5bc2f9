// Tests of the pure text operations: path text, number tests and conversions, split and join,
// matching and time.
//
// One table per family of operations: rows of text in, the answer rendered as text out; a
// failure names the table and the row. Wide forms run the same rows as the UTF-8 ones, except
// those that only convert and call the UTF-8 form: there one row shows the conversion.
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>

#include <regex>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <zrad/files.h>
#include <zrad/text.h>

#include "common/testdir.h"
#include "files/numberpatterns.h"
#include "files/pathtext.h"

namespace {

struct Row {
  const char* a;
  const char* b;  // second operand; unused by one-operand operations
  const char* out;
};
using Rows = std::vector<Row>;

ZrString wide(const char* utf8) { return ZrString(ZrUtf8String(utf8)); }

std::string text(const std::string& s) { return s; }
std::string text(const ZrUtf8String& s) { return s.str(); }
std::string text(const ZrString& s) { return ZrUtf8String(s).str(); }
template <class Number, class = std::enable_if_t<std::is_arithmetic<Number>::value>>
std::string text(Number n) {
  return std::to_string(n);
}

template <class Operation>
void checkRows(const char* table, const Rows& rows, Operation operation) {
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(text(operation(rows[i])), rows[i].out) << table << " row " << i << ": " << rows[i].a;
}

// The UTF-8 form and, when given, the wide form of a one-operand operation on the same rows.
void checkBoth(const char* table, const Rows& rows, ZrUtf8String (*narrow)(const ZrUtf8String&),
               ZrString (*wideForm)(const ZrString&)) {
  checkRows(table, rows, [&](const Row& r) { return narrow(r.a); });
  if (wideForm) checkRows(table, rows, [&](const Row& r) { return wideForm(wide(r.a)); });
}

// Fields appended after a "kept" one (splits never clear), joined with "|".
template <class Split>
std::string fieldsOf(Split split) {
  ZrArray<ZrUtf8String> fields;
  fields.append("kept");
  split(fields);
  return text(zrutJoinString(fields, "|"));
}

int g_assertions = 0;
void countAssertion(const char*, const char*, int) { ++g_assertions; }

}  // namespace

TEST(PathText, CombinePath) {
  checkRows("combine",
            {{"", "x", "x"}, {"a", "b", "a/b"}, {"a\\", "b", "a/b"}, {"a/", "\\b", "a\\b"}, {"a", "\\b", "a\\b"},
             {"a/", "b/", "ab/"}, {"a", "/b", "a//b"}, {"a/", "", "a/"}},
            [](const Row& r) { return zrutCombinePath(r.a, r.b); });
  checkRows("combineW", {{"", "x", "x"}, {"a", "b", "a/b"}, {"a/", "b/", "a/b/"}, {"a\\", "\\b", "a/\\b"}},
            [](const Row& r) { return zrutCombinePathW(wide(r.a), wide(r.b)); });
  // The internal joiner and stripper the file operations share.
  checkRows("child", {{"d", "f", "d/f"}, {"d/", "f", "d/f"}, {"", "f", "f"}, {"/", "f", "/f"}, {"", "/", "/"}},
            [](const Row& r) { return zrad::files::childPath(r.a, r.b); });
  checkRows("strip", {{"d/l/", "", "d/l"}, {"d//", "", "d"}, {"/", "", "/"}, {"//", "", "/"}, {"", "", ""}},
            [](const Row& r) { return zrad::files::withoutTrailingSlashes(ZrUtf8String(r.a)); });
}

TEST(PathText, NamingParts) {
  checkBoth("parent", {{"a/b/c/", 0, "a/b/"}, {"a\\b\\c", 0, "a/b/"}, {"/a", 0, "/"}, {"file", 0, ""}, {"/", 0, ""}, {"//", 0, ""},
                       {"a//", 0, ""}},
            zrutGetParentDir, zrutGetParentDirW);
  checkBoth("name", {{"a\\b.txt", 0, "b.txt"}, {"a/b/", 0, ""}, {"b", 0, "b"}}, zrutGetFileName, zrutGetFileName);
  checkBoth("noExt", {{"d/a.b.c", 0, "a.b"}, {"a", 0, "a"}, {"dir/.hidden", 0, ""}, {"dir.x/file", 0, ""},
                      {"d\\x.y", 0, "x"}},
            zrutGetFileNoExtName, zrutGetFileNoExtName);
  checkBoth("path", {{"a\\b\\c.txt", 0, "a/b/"}, {"c.txt", 0, "c.txt"}, {"/c", 0, "/"}},
            zrutGetFilePath, zrutGetFilePath);
  checkBoth("ext", {{"x/y.tar.gz", 0, ".gz"}, {"noext", 0, ""}, {"a.b\\c", 0, ".b/c"}, {"文件.数据", 0, ".数据"}},
            zrutGetFileExtName, zrutGetFileExtName);
  checkBoth("last", {{"a/b\\c", 0, "c"}, {"a\\b/c", 0, "c"}, {"c", 0, "c"}, {"a/", 0, ""}},
            zrutGetLastFileNameInPath, zrutGetLastFileNameInPathW);
}

TEST(PathText, Splitting) {
  checkRows("split2",
            {{"d/a.b.c", 0, "d/|a.b"}, {"d\\a", 0, "d\\|a"}, {"a.b.c", 0, "|a.b.c"}, {"d.x/a", 0, "d.x/|a"},
             {"d/.rc", 0, "d/|"}},
            [](const Row& r) {
              ZrUtf8String dir = "old", name = "old";
              zrutSplitPath2(r.a, dir, name);
              return dir + "|" + name;
            });
  checkRows("split",
            {{"/a//b/", 0, "kept|/|a|b"}, {"a\\b", 0, "kept|a|b"}, {"", 0, "kept"}, {"//", 0, "kept|/"},
             {"\\a", 0, "kept|a"}, {"a/./..", 0, "kept|a|.|.."}},
            [](const Row& r) { return fieldsOf([&](ZrArray<ZrUtf8String>& f) { zrutSplitPath(r.a, f); }); });
}

TEST(PathText, FormatAndAbsolut) {
  checkRows("format",
            {{"/a/./b/../c", 0, "/a/c"}, {"/a/b/", 0, "/a/b/"}, {"a\\b\\", 0, "ab/"}, {"a/b/c", 0, "ab/c"},
             {"../x", 0, ""}, {"/", 0, "/"}, {"", 0, ""}, {"/a/..", 0, ""}, {"/.", 0, ""}},
            [](const Row& r) { return zrutFormatPath(r.a); });
  checkRows("absolut",
            {{"c/d", "/a/b", "/a/b/c/d"}, {"../x", "/a/b", "/a/x"}, {"x/", "/a", "/a/x/"}, {"../../..", "/a", ""},
             {"", "/a/b/", "/a/b"}, {"c", "a/b", "ab/c"}},
            [](const Row& r) { return zrutAbsolutPath(r.a, r.b); });
}

TEST(PathText, RelatePathAndSameDir) {
  checkRows("relate",
            {{"/p/q/x/y", "/p/q/f.dwg", "./x/y"}, {"/p/r/y", "/p/q/f.dwg", "../r/y"}, {"/p/q/x/", "/p/q/f.dwg", "./x/"},
             {"/p", "/p/q/f.dwg", "../../"}, {"/p/q/f.dwg", "/p/q/f.dwg", "./"}, {"/p/Q/x", "/p/q/f", "../Q/x"},
             {"a\\b\\c", "a/f", "./b/c"}},
            [](const Row& r) { return zrutRelatePath(r.a, r.b); });
  // out: zrutIsSubDirOrSameDir, then zrutIsSameDir
  checkRows("sameDir",
            {{"/p/q/x/y", "/p/q/f", "10"}, {"/p/q/g", "/p/q/f", "11"}, {"/p/r", "/p/q/f", "00"},
             {"/p/q", "/p/q/f", "00"}, {"\\p\\q\\g", "/p/q/f", "00"}},
            [](const Row& r) {
              return std::to_string(zrutIsSubDirOrSameDir(r.a, r.b)) + std::to_string(zrutIsSameDir(r.a, r.b));
            });
}

TEST(PathText, RenameExtensionValidNamesAndRelativeOrAbsolute) {
  checkRows("rename",
            {{"d/a.b.c", "x", "d/a.x"}, {"a.b.c", "x", "a.b.x"}, {".rc", "x", ".rc.x"}, {"d/.rc", "x", "d/.x"},
             {"a", "x", "a.x"}, {"d\\a.txt", "dwg", "d/a.dwg"}},
            [](const Row& r) { return zrutPathRenameExtension(r.a, r.b); });
  EXPECT_EQ(text(zrutPathRenameExtension(wide("目录/图.dwg"), wide("bak"))), "目录/图.bak");

  checkRows("valid",
            {{"a/b", 0, "1"}, {"a\\b", 0, "1"}, {"名字.dwg", 0, "1"}, {"a:b", 0, "0"}, {"a?", 0, "0"}, {"*", 0, "0"},
             {"a>b", 0, "0"}, {"<", 0, "0"}, {"a&b", 0, "0"}, {"a|b", 0, "0"}, {"it's", 0, "0"}, {"\"q\"", 0, "0"}},
            [](const Row& r) { return int(zrutIsValidFilePathName(r.a)); });

  checkRows("relative", {{"a/b", 0, "10"}, {"/a", 0, "01"}, {"C:/a", 0, "10"}, {"\\a", 0, "10"}},
            [](const Row& r) { return text(int(zrutPathIsRelative(r.a))) + text(int(zrutPathIsAbsolute(r.a))); });
  ZrAssertHandler previous = zrSetAssertHandler(countAssertion);
  EXPECT_TRUE(zrutPathIsRelative(""));
  EXPECT_EQ(g_assertions, 1);  // reading character 0 of an empty path
  zrSetAssertHandler(previous);
}

TEST(PathText, AbsolutePathAsksTheSystem) {
  TestDir made;
  char real[PATH_MAX];
  ASSERT_NE(realpath(made.path().c_str(), real), nullptr);
  const std::string dir = real;
  ASSERT_EQ(mkdir((dir + "/x\\y").c_str(), 0700), 0);

  EXPECT_EQ(text(zrutAbsolutePath((dir + "/./x\\y/..").c_str())), dir);
  EXPECT_EQ(text(zrutAbsolutePath((dir + "/x\\y").c_str())), dir + "/x/y");
  EXPECT_EQ(text(zrutAbsolutePath((dir + "/missing/..").c_str())), dir + "/missing/..");

  // 260 bytes still resolve; 261 bytes come back as given, although the path exists.
  std::string padded = dir + std::string(dir.size() % 2 ? 1 : 0, '/');
  while (padded.size() < 260) padded += "/.";
  ASSERT_EQ(padded.size(), 260u);
  EXPECT_EQ(text(zrutAbsolutePath(padded.c_str())), dir);
  EXPECT_EQ(text(zrutAbsolutePath(("/" + padded).c_str())), "/" + padded);
}

TEST(Text, NumberTests) {
  // out: zrutIsLong, zrutIsUnsignedDigit, zrutIsDouble
  Rows rows = {{" + 12 ", 0, "101"}, {",5", 0, "101"},  {"1.0", 0, "001"}, {"", 0, "000"},   {"123", 0, "111"},
               {" 1", 0, "101"},     {"-1", 0, "101"},  {".5", 0, "001"}, {"-.5", 0, "001"}, {"5.", 0, "000"},
               {"1e5", 0, "000"},    {"+-1", 0, "000"}, {"1 2", 0, "000"}, {"١٢", 0, "000"}, {"12\n", 0, "101"}};
  // The UTF-8 forms convert and call the wide ones, so these rows run through both.
  checkRows("numbers", rows, [](const Row& r) {
    ZrUtf8String t = r.a;
    return text(int(zrutIsLong(t))) + text(int(zrutIsUnsignedDigit(t))) + text(int(zrutIsDouble(t)));
  });

  // Every printed double passes, and length changes nothing.
  EXPECT_TRUE(zrutIsDouble(ftos(-1.7976931348623157e308)));
  for (size_t length : {513, 100000}) {
    std::string digits(length, '7');
    EXPECT_TRUE(zrutIsUnsignedDigit(ZrUtf8String(digits))) << length;
    EXPECT_TRUE(zrutIsLong(ZrUtf8String(" -" + digits + "\n"))) << length;
    EXPECT_TRUE(zrutIsDouble(ZrUtf8String(digits + "." + digits))) << length;
    EXPECT_FALSE(zrutIsDouble(ZrUtf8String(digits + "." + digits + "."))) << length;
  }
}

// The automaton against the expressions that define it, on every text of up to five characters
// over an alphabet that reaches each state.
TEST(Text, NumberTestsMatchTheirExpressions) {
  const std::wregex patterns[] = {std::wregex(zrad::files::kLongPattern),
                                  std::wregex(zrad::files::kUnsignedDigitPattern),
                                  std::wregex(zrad::files::kDoublePattern)};
  bool (*const tests[])(const ZrString&) = {zrutIsLong, zrutIsUnsignedDigit, zrutIsDouble};
  const wchar_t alphabet[] = L" \t+,-.07x";
  const size_t letters = sizeof alphabet / sizeof *alphabet - 1;
  std::wstring text;
  std::vector<size_t> digits;  // text as a number in base `letters`, grown one place at a time
  for (size_t length = 1; length <= 5; ++length) {
    digits.assign(length, 0);
    for (;;) {
      text.clear();
      for (size_t d : digits) text += alphabet[d];
      for (int k = 0; k < 3; ++k)
        ASSERT_EQ(tests[k](ZrString(text.c_str())), std::regex_match(text, patterns[k]))
            << "test " << k << " on \"" << ZrUtf8String(ZrString(text.c_str())).str() << '"';
      size_t place = 0;
      while (place < length && ++digits[place] == letters) digits[place++] = 0;
      if (place == length) break;
    }
  }
}

TEST(Text, Conversions) {
  // out: stol, stoll, stoull, stoi, stof
  Rows rows = {{"0x10", 0, "16 16 16 0 16"},  {"017", 0, "15 15 15 17 17"}, {" 42abc", 0, "42 42 42 42 42"},
               {"abc", 0, "0 0 0 0 0"},       {"-7", 0, "-7 -7 18446744073709551609 -7 -7"},
               {"2.5e1", 0, "2 2 2 2 25"},
               {"18446744073709551615", 0,
                "9223372036854775807 9223372036854775807 18446744073709551615 -1 1.84467e+19"}};
  auto all = [](long l, long long ll, unsigned long long ull, int i, double d) {
    return text(l) + " " + text(ll) + " " + text(ull) + " " + text(i) + " " + text(ZrUtf8String::format("%g", d));
  };
  checkRows("stoX", rows, [&](const Row& r) { return all(stol(r.a), stoll(r.a), stoull(r.a), stoi(r.a), stof(r.a)); });
  // The wide forms convert and call the UTF-8 ones: one row where the five answers differ.
  const ZrString w = wide(rows.back().a);
  EXPECT_EQ(all(wstol(w), wstoll(w), wstoull(w), wstoi(w), wstof(w)), rows.back().out);

  EXPECT_EQ(text(lltos(-9223372036854775807LL - 1)), "-9223372036854775808");
  EXPECT_EQ(text(ulltos(18446744073709551615ULL)), "18446744073709551615");
  EXPECT_EQ(text(ltos(-12) + " " + ftos(1.5)), "-12 1.500000");
}

TEST(Text, SplitAndJoin) {
  checkRows("split",
            {{"a,,b,", ",", "kept|a|b"}, {"a;b,c", ",;", "kept|a|b|c"}, {"", ",", "kept"}, {",,", ",", "kept"},
             {"a b", "", "kept|a b"}, {"甲，乙，", "，", "kept|甲|乙"},
             // "，" (EF BC 8C) shares its lead byte with "｛" (EF BD 9B): no cut inside it.
             {"｛，x", "，", "kept|｛|x"}, {"a,b，c，", ",，", "kept|a|b|c"}},
            [](const Row& r) { return fieldsOf([&](ZrArray<ZrUtf8String>& f) { zrutSplitString(r.a, r.b, f); }); });
  checkRows("splitA", {{"1.2..3.", ".", "kept|1|2|3"}, {"..", ".", "kept"}},
            [](const Row& r) { return fieldsOf([&](ZrArray<ZrUtf8String>& f) { zrutSplitStringA(r.a, r.b[0], f); }); });
  // out: the number of fields, then the fields (an empty text holding no delimiter is one field)
  checkRows("splitW", {{"a,,b,", 0, "2:a|b"}, {"abc", 0, "1:abc"}, {"", 0, "1:"}, {",", 0, "0:"}, {"甲,乙", 0, "2:甲|乙"}},
            [](const Row& r) {
              ZrArray<ZrString> fields;
              zrutSplitString(wide(r.a), L',', fields);
              return text(fields.length()) + ":" + text(zrutJoinStringW(fields, L"|"));
            });

  ZrArray<ZrUtf8String> list;  // an empty field and a longer delimiter
  for (const char* field : {"a", "", "b"}) list.append(field);
  EXPECT_EQ(text(zrutJoinString(list, ", ")), "a, , b");
}

TEST(Text, QuickMatch) {
  // out: quickMatch, quickMatchNoCase (the wildcards themselves are the platform's)
  checkRows("match",
            {{"a.txt", "*.txt", "11"}, {"abtxt", "*.txt", "00"}, {"A.TXT", "*.txt", "01"}, {"12", "##", "11"},
             {"a.b", "?.?", "11"}, {"ab", "?.?", "00"}, {"图.dwg", "?.dwg", "11"}},
            [](const Row& r) { return text(int(quickMatch(r.a, r.b))) + text(int(quickMatchNoCase(r.a, r.b))); });
}

TEST(Text, StrToTime) {
  setenv("TZ", "UTC", 1);
  tzset();
  checkRows("time",
            {{"", 0, "0"},           {"2020-01-02 03:04:05", 0, "1577934245"}, {"20-1-2", 0, "1577923200"},
             {"99-12-31", 0, "946598400"},  {"1950-01-01", 0, "-631152000"},   {"2020/01/02", 0, "1577923200"},
             {"2020-01-02 -1", 0, "1577836800"}, {"2020-01-02 +1", 0, "1578009600"}, {"Jan 2 2020", 0, "1577923200"},
             {"dec 31 1999 23:59:59", 0, "946684799"}, {"Feb 29", 0, "5097600"}, {"1.5", 0, "129600"},
             {"-2", 0, "-172800"},   {"2020-01", 0, "0"},  {"1e300", 0, "0"},  {"12:30:00", 0, "45000"},
             {"12:30", 0, "0"},      {"2020-01-02 1.5", 0, "1577923200"},
             // Fields beyond an int, and dates timegm cannot give, are 0; -1 is a real time.
             {"1/2147483648/1", 0, "0"}, {"1/-2147483648/1", 0, "0"}, {"99999999999999999999-1-1", 0, "0"},
             {"2020-01-02 -99999999999999999999", 0, "0"}, {"1:2:99999999999", 0, "0"},
             {"1969-12-31 23:59:59", 0, "-1"}, {"2147485547-13-1", 0, "0"}},
            [](const Row& r) { return zrutStrToTime(r.a); });
}

TEST(Text, ClockAndThreads) {
  uint64_t before = zrutGetcurrentTime();
  zrutSleep(20);
  uint64_t after = zrutGetcurrentTime();
  EXPECT_GE(after - before, 20000u);
  uint64_t ticks = zrutGetTickCount();
  EXPECT_TRUE(ticks >= after / 1000 && ticks <= zrutGetcurrentTime() / 1000);
  EXPECT_NEAR(double(after / 1000000), double(time(nullptr)), 2.0);  // counted from the epoch

  uint64_t here = zrutCurrentThreadId(), there = 0;
  std::thread([&] { there = zrutCurrentThreadId(); }).join();
  EXPECT_NE(there, here);
}
