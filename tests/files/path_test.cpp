// Tests of the path text operations: the rows documented in files.h, wide forms included.
//
// One table per family of operations; wide forms run the same rows as the UTF-8 ones.
// zrutAbsolutePath is checked on a fresh temporary directory.
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <zrad/files.h>
#include <zrad/text.h>

#include "rowcheck.h"
#include "common/testdir.h"

namespace {

// The UTF-8 form and, when given, the wide form of a one-operand operation on the same rows.
void checkBoth(const char* table, const Rows& rows, ZrUtf8String (*narrow)(const ZrUtf8String&),
               ZrString (*wideForm)(const ZrString&)) {
  checkRows(table, rows, [&](const Row& r) { return narrow(r.a); });
  if (wideForm) checkRows(table, rows, [&](const Row& r) { return wideForm(wide(r.a)); });
}

int g_assertions = 0;
void countAssertion(const char*, const char*, int) { ++g_assertions; }

}  // namespace

TEST(PathText, CombinePath) {
  checkRows("combine",
            {{"", "x", "x"}, {"a", "b", "a/b"}, {"a/", "b", "a/b"}, {"a\\", "b", "a/b"}, {"a/", "\\b", "a\\b"},
             {"a", "\\b", "a\\b"}, {"a/", "b/", "ab/"}, {"a", "/b", "a//b"}, {"a/", "", "a/"}, {"", "", ""}},
            [](const Row& r) { return zrutCombinePath(r.a, r.b); });
  checkRows("combineW", {{"", "x", "x"}, {"a", "b", "a/b"}, {"a/", "b/", "a/b/"}, {"a\\", "\\b", "a/\\b"}},
            [](const Row& r) { return zrutCombinePathW(wide(r.a), wide(r.b)); });
}

TEST(PathText, NamingParts) {
  checkBoth("parent", {{"a/b/c/", 0, "a/b/"}, {"a\\b\\c", 0, "a/b/"}, {"/a", 0, "/"}, {"file", 0, ""},
                       {"/", 0, ""}, {"a//", 0, ""}, {"目录/文件", 0, "目录/"}},
            zrutGetParentDir, zrutGetParentDirW);
  checkBoth("name", {{"a\\b.txt", 0, "b.txt"}, {"a/b/", 0, ""}, {"b", 0, "b"}, {"目录/文件.txt", 0, "文件.txt"}},
            zrutGetFileName, zrutGetFileName);
  checkBoth("noExt", {{"d/a.b.c", 0, "a.b"}, {"a", 0, "a"}, {"dir/.hidden", 0, ""}, {"dir.x/file", 0, ""},
                      {"d\\x.y", 0, "x"}, {"目录/文件.txt", 0, "文件"}},
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
            [](const Row& r) {
              ZrArray<ZrUtf8String> elements;
              elements.append("kept");  // appended to, never cleared
              zrutSplitPath(r.a, elements);
              return zrutJoinString(elements, "|");
            });
}

TEST(PathText, FormatAndAbsolut) {
  checkBoth("format",
            {{"/a/./b/../c", 0, "/a/c"}, {"/a/b/", 0, "/a/b/"}, {"a\\b\\", 0, "ab/"}, {"a/b/c", 0, "ab/c"},
             {"../x", 0, ""}, {"/", 0, "/"}, {"", 0, ""}, {"/a/..", 0, ""}, {"/a/b/../../c/", 0, "/c/"}},
            zrutFormatPath, nullptr);
  checkRows("absolut",
            {{"c/d", "/a/b", "/a/b/c/d"}, {"../x", "/a/b", "/a/x"}, {"x/", "/a", "/a/x/"}, {"../../..", "/a", ""},
             {"", "/a/b/", "/a/b"}, {"c", "a/b", "ab/c"}, {"./c\\", "/a", "/a/c/"}},
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

TEST(PathText, RenameExtensionAndValidNames) {
  Rows rows = {{"d/a.b.c", "x", "d/a.x"}, {"a.b.c", "x", "a.b.x"}, {".rc", "x", ".rc.x"},      {"d/.rc", "x", "d/.x"},
               {"a", "x", "a.x"},         {"d\\a.txt", "dwg", "d/a.dwg"}, {"目录/图.dwg", "bak", "目录/图.bak"}};
  checkRows("rename", rows, [](const Row& r) { return zrutPathRenameExtension(r.a, r.b); });
  checkRows("renameW", rows, [](const Row& r) { return zrutPathRenameExtension(wide(r.a), wide(r.b)); });

  checkRows("valid",
            {{"a/b", 0, "true"}, {"a\\b", 0, "true"}, {"名字.dwg", 0, "true"}, {"a:b", 0, "false"}, {"a?", 0, "false"},
             {"*", 0, "false"}, {"a>b", 0, "false"}, {"<", 0, "false"}, {"a&b", 0, "false"}, {"a|b", 0, "false"},
             {"it's", 0, "false"}, {"\"q\"", 0, "false"}},
            [](const Row& r) { return zrutIsValidFilePathName(r.a); });
}

TEST(PathText, RelativeOrAbsolute) {
  checkRows("relative", {{"a/b", 0, "10"}, {"/a", 0, "01"}, {"C:/a", 0, "10"}, {"\\a", 0, "10"}},
            [](const Row& r) { return text(int(zrutPathIsRelative(r.a))) + text(int(zrutPathIsAbsolute(r.a))); });

  ZrAssertHandler previous = zrSetAssertHandler(countAssertion);
  g_assertions = 0;
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
  std::string padded = dir;
  while (padded.size() + 2 <= 260) padded += "/.";
  if (padded.size() < 260) padded += "/";
  ASSERT_EQ(padded.size(), 260u);
  EXPECT_EQ(text(zrutAbsolutePath(padded.c_str())), dir);
  EXPECT_EQ(text(zrutAbsolutePath(("/" + padded).c_str())), "/" + padded);
}
