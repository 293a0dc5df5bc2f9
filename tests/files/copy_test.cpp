// Tests of copying and moving files and trees: bytes, times, links, refusals, kept sources.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>
#include <zrad/files.h>

#include "files/copybytes_posix.h"
#include "common/testdir.h"

namespace {

// "seconds.nanoseconds" of the last change.
std::string mtimeOf(const std::string& path) {
  struct stat st {};
  stat(path.c_str(), &st);
  return std::to_string(st.st_mtim.tv_sec) + "." + std::to_string(st.st_mtim.tv_nsec);
}

void setOldTimes(const std::string& path) {
  const struct timespec times[2] = {{1000000000, 123456789}, {1100000000, 987654321}};
  utimensat(AT_FDCWD, path.c_str(), times, 0);
}

TEST(CopyFile, CopiesBytesAndTimesIntoNewDirectories) {
  TestDir dir;
  std::string bytes;
  for (int i = 0; i < 3 * 1024 * 1024 + 17; ++i) bytes += static_cast<char>(i * 7 + i / 251);
  const struct { const char* name; std::string content; } rows[] = {
      {"big", bytes}, {"empty", ""}, {"中文名.dwg", "内容"}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    std::string from = dir / rows[i].name, to = dir / (std::string("out/x/") + rows[i].name);
    writeFile(from, rows[i].content);
    setOldTimes(from);
    ASSERT_TRUE(zrutCopyFile(from.c_str(), to.c_str())) << "row " << i;
    EXPECT_EQ(readFile(to), rows[i].content) << "row " << i;
    EXPECT_EQ(mtimeOf(to), "1100000000.987654321") << "row " << i;
  }
}

TEST(CopyFile, RefusalsLeaveTheSourceWhole) {
  TestDir dir;
  writeFile(dir / "d/f", "keep");
  ASSERT_EQ(symlink("f", (dir / "d/link").c_str()), 0);
  ASSERT_EQ(link((dir / "d/f").c_str(), (dir / "d/hard").c_str()), 0);
  writeFile(dir / "plain", "");
  const std::string refused[][2] = {
      {dir / "d/f", dir / "d/f"},
      {dir / "d/f", dir / "d/link"},
      {dir / "d/f", dir / "d/hard"},
      {dir / "d/link", dir / "d/f"},
      {dir / "d/f", ""},
      {"", dir / "x"},
      {dir / "missing", dir / "x"},
      {dir / "d/f", dir / "plain/x"},
      {dir / "d/f", dir / "d"},
  };
  for (size_t i = 0; i < std::size(refused); ++i) {
    EXPECT_FALSE(zrutCopyFile(refused[i][0].c_str(), refused[i][1].c_str())) << "row " << i;
    EXPECT_FALSE(zrutMoveFile(refused[i][0].c_str(), refused[i][1].c_str())) << "row " << i;
    EXPECT_EQ(readFile(dir / "d/f"), "keep") << "row " << i;
  }
}

TEST(CopyFile, BareDestinationCopiesNothingButMoveKeepsTheBytes) {
  TestDir dir;
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  writeFile("a.txt", "A");
  EXPECT_TRUE(zrutCopyFile("a.txt", "b.txt"));
  EXPECT_FALSE(exists("b.txt"));
  EXPECT_TRUE(zrutMoveFile("a.txt", "b.txt"));
  EXPECT_EQ(readFile("b.txt"), "A");
  EXPECT_FALSE(exists("a.txt"));
  ASSERT_EQ(chdir(cwd), 0);
}

TEST(CopyFile, BufferedFallbackCopiesPipesAndFailsOnAFullDisk) {
  TestDir dir;
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  ASSERT_EQ(write(fds[1], "through a pipe", 14), 14);
  close(fds[1]);
  int to = open((dir / "out").c_str(), O_WRONLY | O_CREAT, 0600);
  EXPECT_TRUE(zrad::files::copyBytes(fds[0], to));
  close(to);
  close(fds[0]);
  EXPECT_EQ(readFile(dir / "out"), "through a pipe");
  int full = open("/dev/full", O_WRONLY), from = open((dir / "out").c_str(), O_RDONLY);
  ASSERT_GE(full, 0);
  EXPECT_FALSE(zrad::files::copyBytesBuffered(from, full));
  close(full);
  close(from);
}

TEST(CopyPath, CopiesTreesWithLinksAndRefusesItself) {
  TestDir dir;
  writeFile(dir / "src/sub/b", "b");
  writeFile(dir / "src/sub/empty", "");
  mkdir((dir / "src/emptydir").c_str(), 0700);
  ASSERT_EQ(symlink("sub/b", (dir / "src/rel").c_str()), 0);
  ASSERT_EQ(symlink("/nonexistent/target", (dir / "src/dangling").c_str()), 0);
  ASSERT_TRUE(zrutCopyPath((dir / "src").c_str(), (dir / "dst").c_str()));
  EXPECT_EQ(readFile(dir / "dst/sub/b"), "b");
  EXPECT_EQ(readFile(dir / "dst/sub/empty"), "");
  EXPECT_TRUE(zrutIsDir((dir / "dst/emptydir").c_str()));
  char target[64];
  int length = sizeof target;
  ASSERT_TRUE(isSymbolicLink((dir / "dst/rel").c_str(), target, &length));
  EXPECT_STREQ(target, "sub/b");
  EXPECT_TRUE(isSymbolicLink((dir / "dst/dangling").c_str()));
  EXPECT_TRUE(zrutCopyPath((dir / "src").c_str(), (dir / "dst").c_str()));  // links replaced

  EXPECT_FALSE(zrutCopyPath((dir / "src").c_str(), (dir / "src/sub/x/y").c_str()));
  EXPECT_FALSE(exists(dir / "src/sub/x"));
}

TEST(MoveFile, MovesFilesLinksAndTrees) {
  TestDir dir;
  writeFile(dir / "f", "f");
  setOldTimes(dir / "f");
  ASSERT_TRUE(zrutMoveFile((dir / "f").c_str(), (dir / "new/dir/f").c_str()));
  EXPECT_FALSE(exists(dir / "f"));
  EXPECT_EQ(readFile(dir / "new/dir/f"), "f");
  EXPECT_EQ(mtimeOf(dir / "new/dir/f"), "1100000000.987654321");

  ASSERT_EQ(symlink("new", (dir / "l").c_str()), 0);
  ASSERT_TRUE(zrutMoveFile((dir / "l").c_str(), (dir / "l2").c_str()));
  EXPECT_TRUE(isSymbolicLink((dir / "l2").c_str()) && !exists(dir / "l"));
  EXPECT_EQ(readFile(dir / "new/dir/f"), "f");  // the link's target is untouched

  // A tree into a fresh place, and a tree merged into an existing one.
  writeFile(dir / "t/a", "a");
  writeFile(dir / "t/s/b", "b");
  ASSERT_TRUE(zrutMoveFile((dir / "t").c_str(), (dir / "t2").c_str()));
  writeFile(dir / "m/s/c", "c");
  ASSERT_TRUE(zrutMoveFile((dir / "t2").c_str(), (dir / "m").c_str()));
  EXPECT_FALSE(exists(dir / "t2"));
  EXPECT_EQ(readFile(dir / "m/a") + readFile(dir / "m/s/b") + readFile(dir / "m/s/c"), "abc");
  EXPECT_FALSE(zrutMoveFile((dir / "m").c_str(), (dir / "m/s/inside").c_str()));
  EXPECT_EQ(readFile(dir / "m/s/b"), "b");

  // b cannot replace a directory: the move stops, and every file is in exactly one place.
  writeFile(dir / "t/a", "a");
  writeFile(dir / "t/b", "b");
  writeFile(dir / "dest/b/x", "a directory where the file b would go");
  EXPECT_FALSE(zrutMoveFile((dir / "t").c_str(), (dir / "dest").c_str()));
  EXPECT_EQ(readFile(dir / "t/b"), "b");
  EXPECT_TRUE(exists(dir / "t/a") != exists(dir / "dest/a"));
}

}  // namespace
