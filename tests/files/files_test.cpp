// Tests of the file services: attributes, listing and globbing, creating, copying and moving
// trees, contents, stream strings, temporary names, shell commands and case-insensitive lookup.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <tuple>

#include <gtest/gtest.h>
#include <zrad/files.h>

#include "files/content.h"
#include "files/copybytes_posix.h"
#include "files/shellcommand.h"
#include "common/testdir.h"

namespace {

using namespace std::string_literals;  // "\0"s keeps zero bytes

TEST(FileAttributes, KindsSizesModesSixtyFourBitSizesLinksAndInodes) {
  TestDir dir;
  writeFile(dir / "f.txt", "hello");
  writeFile(dir / "big", "");
  ASSERT_EQ(symlink((dir / "missing").c_str(), (dir / "dangling").c_str()), 0);
  EXPECT_TRUE(zrutIsExistFile((dir.path() + "\\f.txt").c_str()));  // "\" read as "/"
  EXPECT_FALSE(zrutIsExistFile((dir / "dangling").c_str()));
  EXPECT_TRUE(zrutIsDir(dir.path().c_str()));
  EXPECT_FALSE(zrutIsDir((dir / "f.txt").c_str()));
  EXPECT_EQ(zrutGetFileSize((dir / "f.txt").c_str()), 5);
  EXPECT_EQ(zrutGetFileSize((dir / "big").c_str()), 0);
  EXPECT_EQ(zrutGetFileSize((dir / "missing").c_str()), -1);
  EXPECT_EQ(zrutGetFileCreateTime((dir / "missing").c_str()), 0);
  EXPECT_FALSE(zrutAccessFile(L"/nonexistent/x", 0));

  ASSERT_EQ(truncate((dir / "big").c_str(), int64_t(5) << 30), 0);  // sparse: no disk space used
  EXPECT_EQ(zrutGetFileSize((dir / "big").c_str()), int64_t(5) << 30);

  // mode => zrutIsDir flag 1, flag 2, and zrutFileIsReadOnly of a file with that mode.
  const struct { mode_t mode; bool writable, readable, readOnly; } modes[] = {
      {0700, true, true, false}, {0500, false, true, false}, {0300, true, false, false},
      {0400, false, true, true}, {0600, true, true, false},  {0000, false, false, false}};
  ASSERT_EQ(mkdir((dir / "d").c_str(), 0700), 0);
  for (size_t i = 0; i < std::size(modes); ++i) {
    chmod((dir / "d").c_str(), modes[i].mode);
    chmod((dir / "f.txt").c_str(), modes[i].mode);
    EXPECT_EQ(zrutIsDir((dir / "d").c_str(), kIsDirWritable), modes[i].writable) << "row " << i;
    EXPECT_EQ(zrutIsDir((dir / "d").c_str(), kIsDirReadable), modes[i].readable) << "row " << i;
    EXPECT_EQ(zrutFileIsReadOnly((dir / "f.txt").c_str()), modes[i].readOnly) << "row " << i;
  }
  chmod((dir / "d").c_str(), 0700);

  writeFile(dir / "a/b/c/f", "x");
  ASSERT_EQ(symlink("a/b", (dir / "l").c_str()), 0);
  char target[16];
  int length = sizeof target;
  EXPECT_TRUE(isSymbolicLink((dir / "l").c_str(), target, &length));
  EXPECT_EQ(length, 3);
  EXPECT_STREQ(target, "a/b");
  char small[3] = {'?', '?', '?'};
  length = 3;  // the target does not fit: nothing is copied, the length is still told
  EXPECT_TRUE(isSymbolicLink((dir / "l").c_str(), small, &length));
  EXPECT_EQ(small[0], '?');
  EXPECT_FALSE(isSymbolicLink((dir / "a").c_str(), target, &length));

  const struct { std::string a, b; bool expected; } rows[] = {
      {dir / "a/b/c", dir / "a", true}, {dir / "a/b/c/f", dir / "a", true},
      {dir / "a", dir / "a", true},     {dir / "a", dir / "a/b", false},
      {dir / "a/b", dir / "l/c", false}, {dir / "nope", dir / "a", false}};
  for (size_t i = 0; i < std::size(rows); ++i)
    EXPECT_EQ(isSubDirOrSameDirByInode(rows[i].a.c_str(), rows[i].b.c_str()), rows[i].expected)
        << "row " << i;
}

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

TEST(FindFirst, ListsEveryEntryWithItsKindAndSize) {
  TestDir dir;
  makeTree(dir);
  _finddata_t record{};
  intptr_t handle = findfirstUtf8((dir / "d").c_str(), &record);
  ASSERT_NE(handle, -1);
  EXPECT_EQ(record.directory, dir / "d");
  std::map<std::string, std::pair<uint32_t, int64_t>> seen;  // name => attrib, size
  do seen[record.name] = {record.attrib, record.size};
  while (findnextUtf8(handle, &record) == 0);
  EXPECT_EQ(findcloseUtf8(handle), 0);
  ASSERT_EQ(seen.size(), 8u);
  EXPECT_EQ(seen["a.txt"], std::make_pair(0u, int64_t(2)));
  EXPECT_EQ(seen["link"], std::make_pair(kFindAttribLink, seen["sub"].second));  // size of the target
  for (const char* name : {".", "..", "sub"}) EXPECT_EQ(seen[name].first, kFindAttribDirectory) << name;

  EXPECT_EQ(findfirstUtf8((dir / "d/a.txt").c_str(), &record), -1);
  EXPECT_EQ(findnextUtf8(-1, &record), -1);
}

TEST(Glob, FlagsChooseEntriesRecordsAndFullOrCaselessForms) {
  TestDir dir;
  makeTree(dir);
  const struct { const char* pattern; int flags; Names expected; } rows[] = {
      {"*.txt", kGlobFiles, {"a.txt", "图纸.txt"}},
      {"*.txt", kGlobFiles | kGlobRecursive, {"a.txt", "图纸.txt", "sub/c.txt", "sub/deep/d.txt"}},
      {"*.txt", kGlobDirs, {"sub.txt"}},
      {"*", kGlobDirs | kGlobDotDirs, {".", "..", "sub", "sub.txt"}},
      {"*", kGlobDirs | kGlobRecursive, {"sub", "sub.txt", "sub/deep"}},
      {"l*", kGlobFiles, {"link"}},  // a link is listed as a file, never entered
      {"*.TXT", kGlobFiles, {}},
      {"?.txt", kGlobFiles | kGlobRecursive, {"a.txt", "sub/c.txt", "sub/deep/d.txt"}},
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

TEST(FileTree, CreateCleanAndRemoveNeverFollowLinks) {
  TestDir dir;
  EXPECT_TRUE(zrutCreateDir((dir / "x\\y/z").c_str()));
  EXPECT_TRUE(zrutIsDir((dir / "x/y/z").c_str()));
  EXPECT_FALSE(zrutCreateDir(""));
  writeFile(dir / "plain", "x");
  EXPECT_FALSE(zrutCreateDir((dir / "plain/sub").c_str()));

  writeFile(dir / "outside/keep", "k");
  writeFile(dir / "tree/a/b/f", "f");
  ASSERT_EQ(symlink((dir / "outside").c_str(), (dir / "tree/a/out").c_str()), 0);
  EXPECT_TRUE(zrutCleanPath((dir / "tree").c_str()));
  EXPECT_TRUE(exists(dir / "tree"));
  EXPECT_FALSE(exists(dir / "tree/a"));
  ASSERT_EQ(symlink((dir / "outside").c_str(), (dir / "dirlink").c_str()), 0);
  EXPECT_TRUE(zrutRemovePath((dir / "dirlink/").c_str()));
  EXPECT_FALSE(exists(dir / "dirlink"));
  EXPECT_EQ(readFile(dir / "outside/keep"), "k");
  EXPECT_TRUE(zrutRemoveFile((dir / "outside").c_str()));
  EXPECT_FALSE(exists(dir / "outside"));
  EXPECT_FALSE(zrutCleanPath((dir / "nothing").c_str()));

  // A zero byte inside a path: the system sees the text before it only. A walk that took the
  // whole text would list "kept" again below itself without end.
  writeFile(dir / "kept/sub/f", "f");
  const ZrUtf8String zeroed(std::string(dir / "kept") + std::string("\0/sub", 5));
  const ZrUtf8String plain((dir / "copy").c_str());
  EXPECT_FALSE(zrutRemoveFile(std::string(dir / "kept/sub/f") + std::string("\0x", 2)));
  EXPECT_FALSE(zrutRemoveFile(zeroed));
  EXPECT_FALSE(zrutRemovePath(zeroed));
  EXPECT_FALSE(zrutCleanPath(zeroed));
  EXPECT_FALSE(zrutCopyFile(zeroed, plain));
  EXPECT_FALSE(zrutCopyPath(zeroed, plain));
  EXPECT_FALSE(zrutMoveFile(zeroed, plain));
  EXPECT_FALSE(zrutMovePath(zeroed, plain));
  EXPECT_FALSE(zrutCreateDir(zeroed));
  EXPECT_EQ(readFile(dir / "kept/sub/f"), "f");
  EXPECT_FALSE(exists(dir / "copy"));
}

TEST(CopyFile, CopiesBytesAndTimesIntoNewDirectories) {
  TestDir dir;
  std::string bytes;
  for (int i = 0; i < 3 * 1024 * 1024 + 17; ++i) bytes += static_cast<char>(i * 7 + i / 251);
  const struct { const char* name; std::string content; } rows[] = {
      {"big", bytes}, {"empty", ""}, {"中文名.dwg", "内容"}};
  const struct timespec times[2] = {{1000000000, 123456789}, {1100000000, 987654321}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    std::string from = dir / rows[i].name, to = dir / (std::string("out/x/") + rows[i].name);
    writeFile(from, rows[i].content);
    utimensat(AT_FDCWD, from.c_str(), times, 0);
    ASSERT_TRUE(zrutCopyFile(from.c_str(), to.c_str())) << "row " << i;
    EXPECT_EQ(readFile(to), rows[i].content) << "row " << i;
    struct stat copied {};
    stat(to.c_str(), &copied);  // the last change to the nanosecond
    EXPECT_EQ(std::make_pair(copied.st_mtim.tv_sec, copied.st_mtim.tv_nsec),
              std::make_pair(times[1].tv_sec, times[1].tv_nsec)) << "row " << i;
  }
}

TEST(CopyFile, RefusalsLeaveTheSourceWhole) {
  TestDir dir;
  writeFile(dir / "d/f", "keep");
  ASSERT_EQ(symlink("f", (dir / "d/link").c_str()), 0);
  ASSERT_EQ(link((dir / "d/f").c_str(), (dir / "d/hard").c_str()), 0);
  writeFile(dir / "plain", "");
  const std::string refused[][2] = {  // the same file, empty names, no source, no place for it
      {dir / "d/f", dir / "d/f"}, {dir / "d/f", dir / "d/link"}, {dir / "d/f", dir / "d/hard"},
      {dir / "d/link", dir / "d/f"}, {dir / "d/f", ""}, {"", dir / "x"}, {dir / "missing", dir / "x"},
      {dir / "d/f", dir / "plain/x"}, {dir / "d/f", dir / "d"}};
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

TEST(CopyFile, KeepsTheHolesOfASparseFile) {
  TestDir dir;
  const off_t kGiB = off_t(1) << 30, size = 4 * kGiB;
  std::string source = dir / "sparse", copy = dir / "sub/copy";
  int fd = open(source.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_GE(fd, 0);
  // Data at the start and in the middle; the file ends in a hole.
  const struct { off_t at; std::string bytes; } pieces[] = {{0, "head"}, {2 * kGiB + 5, "middle"}};
  for (const auto& piece : pieces)
    ASSERT_EQ(pwrite(fd, piece.bytes.data(), piece.bytes.size(), piece.at), ssize_t(piece.bytes.size()));
  ASSERT_EQ(ftruncate(fd, size), 0);
  close(fd);
  struct stat st;
  ASSERT_EQ(stat(source.c_str(), &st), 0);
  if (st.st_blocks * 512 >= size) GTEST_SKIP() << "the file system keeps no holes";

  ASSERT_TRUE(zrutCopyFile(source.c_str(), copy.c_str()));
  struct stat copied;
  ASSERT_EQ(stat(copy.c_str(), &copied), 0);
  EXPECT_EQ(copied.st_size, size);
  EXPECT_LE(copied.st_blocks, st.st_blocks + 64) << "holes were written out";
  fd = open(copy.c_str(), O_RDONLY);
  for (const auto& piece : pieces) {
    std::string read(piece.bytes.size() + 1, '?');
    ASSERT_EQ(pread(fd, &read[0], read.size(), piece.at), ssize_t(read.size()));
    EXPECT_EQ(read, piece.bytes + '\0');
  }
  char last = 'x';
  EXPECT_EQ(pread(fd, &last, 1, size - 1), 1);
  EXPECT_EQ(last, 0);
  close(fd);
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
  ASSERT_EQ(lseek(from, 0, SEEK_SET), 0);
  EXPECT_FALSE(zrad::files::copyBytes(from, full));
  close(full);
  close(from);
  EXPECT_FALSE(zrutWriteContentToFile("/dev/full", "bytes", 0));
}

TEST(CopyPath, CopiesTreesWithLinksAndRefusesItself) {
  TestDir dir;
  writeFile(dir / "src/sub/b", "b");
  mkdir((dir / "src/emptydir").c_str(), 0700);
  ASSERT_EQ(symlink("sub/b", (dir / "src/rel").c_str()), 0);
  ASSERT_EQ(symlink("/nonexistent/target", (dir / "src/dangling").c_str()), 0);
  ASSERT_TRUE(zrutCopyPath((dir / "src").c_str(), (dir / "dst").c_str()));
  EXPECT_EQ(readFile(dir / "dst/sub/b"), "b");
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
  ASSERT_TRUE(zrutMoveFile((dir / "f").c_str(), (dir / "new/dir/f").c_str()));
  EXPECT_FALSE(exists(dir / "f"));
  EXPECT_EQ(readFile(dir / "new/dir/f"), "f");

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

TEST(FileContent, DecodesMarksAndEncodesModes) {
  const std::string decoded[][2] = {  // bytes, text
      {"\xFE\xFF\0A"s, "A"},
      {"\xFF\xFE" "A\0\x2D\x4E"s, "A\xE4\xB8\xAD"},
      {"\xFF\xFE\x3D\xD8\0\xDE"s, "\xF0\x9F\x98\x80"},  // a surrogate pair
      {"\xFE\xFF\0A\0"s, "A"},                          // odd byte dropped
      {"\xEF\xBB\xBF" "A", "A"}, {"\xEF\xBB" "A", "\xEF\xBB" "A"}, {"\xFE", "\xFE"}, {"", ""}};
  for (size_t i = 0; i < std::size(decoded); ++i)
    EXPECT_EQ(zrad::files::decodeContent(decoded[i][0]).str(), decoded[i][1]) << "row " << i;

  const std::string encoded[] = {"A",     "\xEF\xBB\xBF" "A", "A\0"s, "\xFF\xFE" "A\0"s,
                                 "\0A"s, "\xFE\xFF\0A"s,   "A\0"s, "\xFF\xFE" "A\0"s};
  for (int mode = 0; mode < 8; ++mode)
    EXPECT_EQ(zrad::files::encodeContent("A", mode), encoded[mode]) << "mode " << mode;
  EXPECT_EQ(zrad::files::encodeContent("\xF0\x9F\x98\x80", 2), "\0\xF6"s);  // low 16 bits
}

TEST(FileContent, RoundTripsThroughFilesAndPipes) {
  TestDir dir;
  const ZrUtf8String text("第一行\nline two");
  ASSERT_TRUE(zrutWriteContentToFile((dir / "be").c_str(), text, kContentUtf16BeBom));
  EXPECT_EQ(zrutReadContentFromFile((dir / "be").c_str()), text);
  EXPECT_EQ(zrutReadContentFromFile((dir / "missing").c_str()), "");
  EXPECT_FALSE(zrutWriteContentToFile((dir / "no/such/dir").c_str(), text, 0));
  // A pipe reports size 0: its bytes come back undecoded, mark and all.
  FILE* pipe = popen("printf '\\357\\273\\277A'", "r");
  ASSERT_NE(pipe, nullptr);
  EXPECT_EQ(zrutReadContent(pipe).str(), "\xEF\xBB\xBF" "A");
  pclose(pipe);
}

TEST(StreamString, LengthPrefixedTextAndBadCounts) {
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  const char* texts[] = {"", "中文 text"};
  for (const char* text : texts) ASSERT_TRUE(zrutWrUtf8String(stream.get(), text));
  EXPECT_EQ(stream->length(), 8 + std::strlen(texts[1]));
  stream->rewind();
  for (const char* text : texts) EXPECT_EQ(zrutRdUtf8String(stream.get()), text);
  // count => text read and the position after it: a count over the limit or over what the
  // stream holds reads nothing more.
  const struct { uint32_t count; uint64_t positionAfter; } rows[] = {
      {0x20000001u, 4}, {0xFFFFFFFFu, 4}, {100u, 4}, {3u, 7}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrMemoryStreamPtr s = ZrMemoryStream::createNew();
    s->putBytes(&rows[i].count, 4);
    s->putBytes("abc", 3);
    s->rewind();
    EXPECT_EQ(zrutRdUtf8String(s.get()), rows[i].count == 3 ? "abc" : "") << "row " << i;
    EXPECT_EQ(s->tell(), rows[i].positionAfter) << "row " << i;
  }
}

TEST(ShellCommands, PlainPathsKeepTheirFormAndOthersAreQuoted) {
  const char* rows[][3] = {  // path, lsof command, open command
      {"/tmp/a.dwg", "lsof -c zrad | grep \"/tmp/a.dwg\"", "xdg-open /tmp/a.dwg"},
      {"/tmp/图纸.pdf", "lsof -c zrad | grep \"/tmp/图纸.pdf\"", "xdg-open /tmp/图纸.pdf"},
      {"/tmp/a b", "lsof -c zrad | grep -F -e '/tmp/a b'", "xdg-open '/tmp/a b'"},
      {"it's", "lsof -c zrad | grep -F -e 'it'\\''s'", "xdg-open 'it'\\''s'"},
      {"-r", "lsof -c zrad | grep -F -e '-r'", "xdg-open ./-r"},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(zrad::files::lsofCommand(rows[i][0]), rows[i][1]) << "row " << i;
    EXPECT_EQ(zrad::files::openCommand(rows[i][0]), rows[i][2]) << "row " << i;
  }
  EXPECT_EQ(zrad::files::withStderrTo("ls", "/tmp/1.err"), "ls 2>\"/tmp/1.err\"");
}

TEST(ShellCommands, HostilePathsNeverRunASecondCommand) {
  TestDir dir;
  const std::string marker = dir / "ran";
  const std::string hostile[] = {"a\"; touch " + marker + "; echo \"", "a'; touch " + marker + "; echo '",
                                 "$(touch " + marker + ")", "`touch " + marker + "`", "a\ntouch " + marker,
                                 "a | touch " + marker, "'\"'\"$(touch " + marker + ")\"'"};
  for (size_t i = 0; i < std::size(hostile); ++i) {
    EXPECT_FALSE(zrutFileHasOpen(hostile[i].c_str())) << "row " << i;
    zrutOpenPdfFile(hostile[i].c_str());
    setTempPath((dir / hostile[i]).c_str());  // standard error is captured in this directory
    ZrUtf8String error;
    EXPECT_EQ(zrutPipeCmd("sh -c 'echo out; echo err >&2'", error), "out\n") << "row " << i;
    EXPECT_EQ(error, "err\n") << "row " << i;
    setTempPath("");
    EXPECT_FALSE(exists(marker)) << "row " << i;
  }
}

// A process named zrad* holds "held a.txt" open: its path is found, and a path holding a newline
// is not, though grep would take each of its lines as a pattern of its own ("held").
TEST(Process, OpenFilesOfZradProcesses) {
  TestDir dir;
  const std::string held = dir / "held a.txt", holder = dir / "zradholder";
  writeFile(held, "x");
  ASSERT_EQ(symlink("/bin/sleep", holder.c_str()), 0);  // the command name comes from the link
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const int fd = open(held.c_str(), O_RDONLY);
    if (fd >= 0) dup2(fd, 0);
    execl(holder.c_str(), "zradholder", "30", static_cast<char*>(nullptr));
    _exit(127);
  }
  bool found = false;
  for (int i = 0; i < 50 && !found; ++i) {  // until the child runs, at most 10 s
    found = zrutFileHasOpen(held.c_str());
    if (!found) usleep(200000);
  }
  EXPECT_TRUE(found);
  EXPECT_FALSE(zrutFileHasOpen("no such\nheld"));
  EXPECT_FALSE(zrutFileHasOpen((dir / "held b.txt").c_str()));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

TEST(Process, TemporaryNamesAndTheLibraryPath) {
  TestDir dir;
  const std::string pattern = dir / "x/*.err";
  EXPECT_EQ(zrutMktempUTF8(pattern.c_str()).str(), dir / "x/1.err");
  EXPECT_TRUE(zrutIsDir((dir / "x").c_str()));
  writeFile(dir / "x/1.err", "");
  writeFile(dir / "x/2.ERR", "");  // taken, whatever its case
  EXPECT_EQ(zrutMktempUTF8(pattern.c_str()).str(), dir / "x/3.err");
  EXPECT_EQ(zrutMktempUTF8((dir / "x/a%s%n*").c_str()).str(), dir / "x/a%s%n1");
  setTempPath(dir.path().c_str());
  EXPECT_EQ(zrutMktempUTF8("*no").str(), dir / "1.tmp");
  setTempPath("");
  EXPECT_EQ(zrutMktempUTF8((dir / "x/1.err/sub/*.tmp").c_str()), "");

  const std::string before = getenv("LD_LIBRARY_PATH") ? getenv("LD_LIBRARY_PATH") : "";
  setenv("LD_LIBRARY_PATH", "/base", 1);
  zrutPushFindLibraryPath("/one");
  zrutPushFindLibraryPath("/two");
  zrutPopFindLibraryPath();
  EXPECT_STREQ(getenv("LD_LIBRARY_PATH"), "/two:/one:/base");
  setenv("LD_LIBRARY_PATH", before.c_str(), 1);
}

TEST(CaseInsensitiveLookup, FindsTheSpellingOnDisk) {
  TestDir dir;
  writeFile(dir / "Alpha/beta/Gamma.TXT", "x");
  const struct { std::string asked; bool found; std::string spelled; } rows[] = {
      {dir / "alpha/BETA/gamma.txt", true, dir / "Alpha/beta/Gamma.TXT"},
      {dir / "ALPHA/./beta/../beta/", true, dir / "Alpha/beta/"},
      {dir / "alpha\\BETA", true, dir / "Alpha/beta"},
      {dir / "alpha/delta", false, ""},
      {"", false, ""},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrUtf8String spelled("unchanged");
    EXPECT_EQ(zrutIsExistFileNoCaseSensitive(rows[i].asked.c_str(), spelled), rows[i].found)
        << "row " << i;
    EXPECT_EQ(spelled.str(), rows[i].found ? rows[i].spelled : "unchanged") << "row " << i;
  }
  ZrArray<ZrUtf8String> dirs;
  dirs.append((dir / "one").c_str());
  dirs.append((dir / "Alpha/beta").c_str());
  ZrUtf8String name("gamma.txt");
  EXPECT_FALSE(zrutFindFileInPaths(name, dirs));
  EXPECT_TRUE(zrutFindFileInPathsNoCase(name, dirs));
  EXPECT_EQ(name.str(), dir / "Alpha/beta/Gamma.TXT");
  ZrArray<ZrString> wideDirs;
  wideDirs.append(ZrString(ZrUtf8String((dir / "Alpha").c_str())));
  ZrString wide(L"BETA");
  EXPECT_TRUE(zrutFindFileInPathsNoCaseW(wide, wideDirs));
  EXPECT_EQ(ZrUtf8String(wide).str(), dir / "Alpha/beta");
}

}  // namespace
