// Tests of the path text operations: the rows documented in files.h, wide forms included.
//
// Each family is one table run through one checker; failures name the row. zrutAbsolutePath
// is checked on a fresh temporary directory.
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zrad/files.h>

namespace {

struct Row {
  const char* in;
  const char* out;
};
struct Row2 {
  const char* a;
  const char* b;
  const char* out;
};

using Narrow1 = ZrUtf8String (*)(const ZrUtf8String&);
using Wide1 = ZrString (*)(const ZrString&);

// Runs the rows through the UTF-8 form and, when given, the wide form.
void checkRows(Narrow1 narrow, Wide1 wide, const std::vector<Row>& rows) {
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_STREQ(narrow(rows[i].in).c_str(), rows[i].out) << "row " << i << ": " << rows[i].in;
    if (wide) {
      EXPECT_EQ(ZrUtf8String(wide(ZrString(ZrUtf8String(rows[i].in)))), ZrUtf8String(rows[i].out))
          << "wide row " << i << ": " << rows[i].in;
    }
  }
}

std::string joined(const ZrArray<ZrUtf8String>& elements) {
  std::string text;
  for (const ZrUtf8String& e : elements) text += std::string(e.c_str()) + "|";
  return text;
}

int g_assertions = 0;
void countAssertion(const char*, const char*, int) { ++g_assertions; }

}  // namespace

TEST(PathText, CombinePath) {
  std::vector<Row2> rows = {
      {"", "x", "x"},        {"a", "b", "a/b"},      {"a/", "b", "a/b"},   {"a\\", "b", "a/b"},
      {"a/", "\\b", "a\\b"}, {"a", "\\b", "a\\b"},   {"a/", "b/", "ab/"},  {"a", "/b", "a//b"},
      {"a/", "", "a/"},      {"a/", "/b", "a//b"},   {"a", "", "a/"},      {"", "", ""},
  };
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_STREQ(zrutCombinePath(rows[i].a, rows[i].b).c_str(), rows[i].out) << "row " << i;

  std::vector<Row2> wideRows = {
      {"", "x", "x"}, {"a", "b", "a/b"}, {"a/", "b/", "a/b/"}, {"a\\", "\\b", "a/\\b"}, {"a", "/b", "a//b"},
  };
  for (size_t i = 0; i < wideRows.size(); ++i) {
    ZrString got = zrutCombinePathW(ZrString(ZrUtf8String(wideRows[i].a)), ZrString(ZrUtf8String(wideRows[i].b)));
    EXPECT_STREQ(ZrUtf8String(got).c_str(), wideRows[i].out) << "wide row " << i;
  }
}

TEST(PathText, NamingParts) {
  checkRows(zrutGetParentDir, zrutGetParentDirW,
            {{"a/b/c/", "a/b/"}, {"a\\b\\c", "a/b/"}, {"/a", "/"}, {"file", ""}, {"/", ""}, {"", ""},
             {"a//", ""}, {"目录/文件", "目录/"}});
  checkRows(zrutGetFileName, zrutGetFileName,
            {{"a\\b.txt", "b.txt"}, {"a/b/", ""}, {"b", "b"}, {"", ""}, {"目录/文件.txt", "文件.txt"}});
  checkRows(zrutGetFileNoExtName, zrutGetFileNoExtName,
            {{"d/a.b.c", "a.b"}, {"a", "a"}, {"dir/.hidden", ""}, {"dir.x/file", ""}, {"d\\x.y", "x"},
             {"", ""}, {"目录/文件.txt", "文件"}});
  checkRows(zrutGetFilePath, zrutGetFilePath,
            {{"a\\b\\c.txt", "a/b/"}, {"c.txt", "c.txt"}, {"/c", "/"}, {"", ""}});
  checkRows(zrutGetFileExtName, zrutGetFileExtName,
            {{"x/y.tar.gz", ".gz"}, {"noext", ""}, {"a.b\\c", ".b/c"}, {"a.", "."}, {"文件.数据", ".数据"}});
  checkRows(zrutGetLastFileNameInPath, zrutGetLastFileNameInPathW,
            {{"a/b\\c", "c"}, {"a\\b/c", "c"}, {"c", "c"}, {"a/", ""}, {"", ""}});
}

TEST(PathText, SplitPath2) {
  struct {
    const char* path;
    const char* dir;
    const char* name;
  } rows[] = {{"d/a.b.c", "d/", "a.b"}, {"d\\a", "d\\", "a"},   {"a.b.c", "", "a.b.c"},
              {"d.x/a", "d.x/", "a"},   {"d/.rc", "d/", ""},   {"", "", ""}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrUtf8String dir = "old", name = "old";
    EXPECT_TRUE(zrutSplitPath2(rows[i].path, dir, name)) << "row " << i;
    EXPECT_STREQ(dir.c_str(), rows[i].dir) << "row " << i;
    EXPECT_STREQ(name.c_str(), rows[i].name) << "row " << i;
  }
}

TEST(PathText, SplitPathAppends) {
  std::vector<Row> rows = {{"/a//b/", "/|a|b|"}, {"a\\b", "a|b|"}, {"", ""},     {"//", "/|"},
                           {"\\a", "a|"},        {"a/./..", "a|.|..|"}, {"x", "x|"}};
  for (size_t i = 0; i < rows.size(); ++i) {
    ZrArray<ZrUtf8String> elements;
    elements.append("kept");
    EXPECT_TRUE(zrutSplitPath(rows[i].in, elements)) << "row " << i;
    EXPECT_EQ(joined(elements), std::string("kept|") + rows[i].out) << "row " << i;
  }
}

TEST(PathText, FormatAndAbsolut) {
  checkRows(zrutFormatPath, nullptr,
            {{"/a/./b/../c", "/a/c"}, {"/a/b/", "/a/b/"}, {"a\\b\\", "ab/"}, {"a/b/c", "ab/c"}, {"../x", ""},
             {"/", "/"}, {"", ""}, {"/..", ""}, {"a/..", ""}, {"/a/..", ""}, {"/a/b/../../c/", "/c/"}, {"./a", "a"}});

  std::vector<Row2> rows = {{"c/d", "/a/b", "/a/b/c/d"},   {"../x", "/a/b", "/a/x"},  {"x/", "/a", "/a/x/"},
                            {"../../..", "/a", ""},       {"", "/a/b/", "/a/b"},     {"c", "a/b", "ab/c"},
                            {"./c\\", "/a", "/a/c/"},     {"..", "/a", ""}};
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_STREQ(zrutAbsolutPath(rows[i].a, rows[i].b).c_str(), rows[i].out) << "row " << i;
}

TEST(PathText, RelatePathAndSameDir) {
  std::vector<Row2> rows = {
      {"/p/q/x/y", "/p/q/f.dwg", "./x/y"},   {"/p/r/y", "/p/q/f.dwg", "../r/y"},
      {"/p/q/x/", "/p/q/f.dwg", "./x/"},     {"/p", "/p/q/f.dwg", "../../"},
      {"/p/q/f.dwg", "/p/q/f.dwg", "./"},    {"/p/Q/x", "/p/q/f", "../Q/x"},
      {"/s/t", "/p/q/f", "../../s/t"},       {"a\\b\\c", "a/f", "./b/c"},
  };
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_STREQ(zrutRelatePath(rows[i].a, rows[i].b).c_str(), rows[i].out) << "row " << i;

  struct {
    const char* a;
    const char* b;
    bool subOrSame;
    bool same;
  } dirs[] = {{"/p/q/x/y", "/p/q/f", true, false}, {"/p/q/g", "/p/q/f", true, true},
              {"/p/r", "/p/q/f", false, false},    {"/p/q", "/p/q/f", false, false},
              {"/p/q/f", "/p/q/f", true, true},    {"\\p\\q\\g", "/p/q/f", false, false}};
  for (size_t i = 0; i < std::size(dirs); ++i) {
    EXPECT_EQ(zrutIsSubDirOrSameDir(dirs[i].a, dirs[i].b), dirs[i].subOrSame) << "row " << i;
    EXPECT_EQ(zrutIsSameDir(dirs[i].a, dirs[i].b), dirs[i].same) << "row " << i;
  }
}

TEST(PathText, RenameExtensionAndValidNames) {
  std::vector<Row2> rows = {{"d/a.b.c", "x", "d/a.x"}, {"a.b.c", "x", "a.b.x"}, {".rc", "x", ".rc.x"},
                            {"d/.rc", "x", "d/.x"},    {"a", "x", "a.x"},       {"d\\a.txt", "dwg", "d/a.dwg"},
                            {"目录/图.dwg", "bak", "目录/图.bak"}};
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_STREQ(zrutPathRenameExtension(rows[i].a, rows[i].b).c_str(), rows[i].out) << "row " << i;
    ZrString wide = zrutPathRenameExtension(ZrString(ZrUtf8String(rows[i].a)), ZrString(ZrUtf8String(rows[i].b)));
    EXPECT_STREQ(ZrUtf8String(wide).c_str(), rows[i].out) << "wide row " << i;
  }

  const char* valid[] = {"a/b", "a\\b", "", "名字.dwg", "a b-c_(1)"};
  for (const char* name : valid) EXPECT_TRUE(zrutIsValidFilePathName(name)) << name;
  const char* invalid[] = {"a:b", "a?", "*", "a>b", "<", "a&b", "a|b", "it's", "\"q\""};
  for (const char* name : invalid) EXPECT_FALSE(zrutIsValidFilePathName(name)) << name;
}

TEST(PathText, RelativeOrAbsolute) {
  struct {
    const char* path;
    bool relative;
  } rows[] = {{"a/b", true}, {"/a", false}, {"C:/a", true}, {"\\a", true}, {"./a", true}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(zrutPathIsRelative(rows[i].path), rows[i].relative) << "row " << i;
    EXPECT_EQ(zrutPathIsAbsolute(rows[i].path), !rows[i].relative) << "row " << i;
  }

  ZrAssertHandler previous = zrSetAssertHandler(countAssertion);
  g_assertions = 0;
  EXPECT_TRUE(zrutPathIsRelative(""));
  EXPECT_EQ(g_assertions, 1);
  zrSetAssertHandler(previous);
}

TEST(PathText, AbsolutePathAsksTheSystem) {
  char pattern[] = "/tmp/zrad_path_XXXXXX";
  ASSERT_NE(mkdtemp(pattern), nullptr);
  char real[PATH_MAX];
  ASSERT_NE(realpath(pattern, real), nullptr);
  std::string dir = real;
  ASSERT_EQ(mkdir((dir + "/sub").c_str(), 0700), 0);
  ASSERT_EQ(mkdir((dir + "/x\\y").c_str(), 0700), 0);

  EXPECT_EQ(std::string(zrutAbsolutePath((dir + "/./sub/..").c_str()).c_str()), dir);
  EXPECT_EQ(std::string(zrutAbsolutePath((dir + "/x\\y").c_str()).c_str()), dir + "/x/y");
  ZrUtf8String missing = (dir + "/missing/../sub").c_str();
  EXPECT_EQ(zrutAbsolutePath(missing), missing);

  // 260 bytes still resolve; 261 bytes come back as given, although the path exists.
  std::string padded = dir + "/sub";
  while (padded.size() + 2 <= 260) padded += "/.";
  if (padded.size() < 260) padded.insert(dir.size(), "/");  // "//" names the same directory
  ASSERT_EQ(padded.size(), 260u);
  EXPECT_EQ(std::string(zrutAbsolutePath(padded.c_str()).c_str()), dir + "/sub");
  std::string tooLong = "/" + padded;
  EXPECT_EQ(std::string(zrutAbsolutePath(tooLong.c_str()).c_str()), tooLong);

  rmdir((dir + "/x\\y").c_str());
  rmdir((dir + "/sub").c_str());
  rmdir(dir.c_str());
}
