// Tests of globbing: the flags, recursive names, links, long and non-ASCII names, records.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <string>
#include <tuple>

#include <gtest/gtest.h>
#include <zrad/files.h>

#include "common/testdir.h"

namespace {

using Names = std::set<std::string>;
Names namesOf(const ZrFindDataArray& found) {
  Names names;
  for (const _finddata_t& record : found) names.insert(record.name);
  return names;
}
Names namesOf(const ZrArray<ZrUtf8String>& paths) {
  Names names;
  for (const ZrUtf8String& path : paths) names.insert(path.str());
  return names;
}

// d/a.txt d/b.dat d/sub/c.txt d/sub/deep/d.txt d/sub.txt/ (a directory) d/图纸.txt
// d/link -> sub (never descended)
void makeTree(const TestDir& dir) {
  writeFile(dir / "d/a.txt", "aa");
  writeFile(dir / "d/b.dat", "b");
  writeFile(dir / "d/sub/c.txt", "ccc");
  writeFile(dir / "d/sub/deep/d.txt", "");
  mkdir((dir / "d/sub.txt").c_str(), 0700);
  writeFile(dir / "d/图纸.txt", "z");
  symlink("sub", (dir / "d/link").c_str());
}

TEST(Glob, FlagsChooseEntriesRecordsAndFullOrCaselessForms) {
  TestDir dir;
  makeTree(dir);
  const struct { const char* pattern; int flags; Names expected; } rows[] = {
      {"*.txt", kGlobFiles, {"a.txt", "图纸.txt"}},
      {"*.txt", kGlobFiles | kGlobRecursive, {"a.txt", "图纸.txt", "sub/c.txt", "sub/deep/d.txt"}},
      {"*.txt", kGlobDirs, {"sub.txt"}},
      {"*", kGlobDirs, {"sub", "sub.txt"}},
      {"*", kGlobDirs | kGlobDotDirs, {".", "..", "sub", "sub.txt"}},
      {"*", kGlobDirs | kGlobRecursive, {"sub", "sub.txt", "sub/deep"}},
      {"l*", kGlobFiles, {"link"}},  // a link is listed as a file, never entered
      {"*.TXT", kGlobFiles, {}},
      {"?.txt", kGlobFiles | kGlobRecursive, {"a.txt", "sub/c.txt", "sub/deep/d.txt"}},
      {"*.txt", 0, {}},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrFindDataArray found;
    int count = zrutGlob((dir / "d").c_str(), rows[i].pattern, found, rows[i].flags);
    EXPECT_EQ(count, found.length()) << "row " << i;
    EXPECT_EQ(namesOf(found), rows[i].expected) << "row " << i;
  }

  // Records carry kind, size, inode, time and directory, each directory before its entries.
  ZrFindDataArray found;
  found.setLogicalLength(1);  // the array is appended to, not cleared
  const int flags = kGlobFiles | kGlobDirs | kGlobRecursive;
  const int count = zrutGlob((dir / "d").c_str(), "*", found, flags);
  EXPECT_EQ(count, found.length());
  auto at = [&](const char* name) {
    for (int i = 1; i < found.length(); ++i)
      if (std::strcmp(found[i].name, name) == 0) return i;
    return -1;
  };
  ASSERT_GT(at("sub"), 0);
  ASSERT_GT(at("sub/c.txt"), at("sub"));  // a directory's entries follow it
  EXPECT_EQ(found[at("sub")].attrib, kFindAttribDirectory);
  EXPECT_EQ(found[at("link")].attrib, kFindAttribLink);
  const _finddata_t& c = found[at("sub/c.txt")];
  struct stat st;
  ASSERT_EQ(stat((dir / "d/sub/c.txt").c_str(), &st), 0);
  EXPECT_EQ(std::make_tuple(c.attrib, c.size, c.inode, c.time_write),
            std::make_tuple(0u, int64_t(3), uint64_t(st.st_ino), int64_t(st.st_mtime)));
  EXPECT_EQ(std::string(c.directory), dir / "d/sub");

  ZrArray<ZrUtf8String> paths, upper;
  zrutGlob2((dir / "d").c_str(), "*.txt", paths);
  EXPECT_EQ(namesOf(paths), Names({dir / "d/a.txt", dir / "d/图纸.txt", dir / "d/sub/c.txt",
                                   dir / "d/sub/deep/d.txt"}));
  ZrFindDataArray caseless;
  zrutGlobNoCaseSensitive((dir / "d").c_str(), "*.TXT", caseless, kGlobFiles);
  EXPECT_EQ(namesOf(caseless), Names({"a.txt", "图纸.txt"}));
  EXPECT_EQ(zrutGlobNoCaseSensitive2((dir / "d/").c_str(), "C.TXT", upper), 1);
  EXPECT_EQ(namesOf(upper), Names({dir / "d/sub/c.txt"}));
}

TEST(Glob, NamesAtTheLengthLimitAndDirectoriesThatCannotBeListed) {
  TestDir dir;
  // Names are kept up to 258 bytes (259 with the terminator): "x/" + 250 + "/" + 5 is 258.
  const std::string longName(255, 'n'), deepName(250, 'm');
  writeFile(dir / ("t/x/" + longName), "");
  writeFile(dir / ("t/x/" + deepName + "/fffff"), "");
  writeFile(dir / ("t/x/" + deepName + "/gggggg"), "");
  ZrFindDataArray found;
  zrutGlob((dir / "t").c_str(), "*", found, kGlobFiles | kGlobRecursive);
  EXPECT_EQ(namesOf(found), Names({"x/" + longName, "x/" + deepName + "/fffff"}));

  ZrFindDataArray none;
  EXPECT_EQ(zrutGlob((dir / "missing").c_str(), "*", none, kGlobFiles), 0);
  EXPECT_EQ(zrutGlob((dir / ("t/x/" + longName)).c_str(), "*", none, kGlobFiles), 0);
}

}  // namespace
