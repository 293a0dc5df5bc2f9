// Tests of the file services: attributes, listing, contents, stream strings, temporary names,
// shell commands and case-insensitive lookup.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include <gtest/gtest.h>
#include <zrad/files.h>

#include "files/content.h"
#include "files/shellcommand.h"
#include "common/testdir.h"

namespace {

using namespace std::string_literals;  // "\0"s keeps zero bytes

TEST(FileAttributes, KindsSizesModesSixtyFourBitSizesLinksAndInodes) {
  TestDir dir;
  writeFile(dir / "f.txt", "hello");
  writeFile(dir / "empty", "");
  ASSERT_EQ(symlink((dir / "missing").c_str(), (dir / "dangling").c_str()), 0);
  EXPECT_TRUE(zrutIsExistFile((dir.path() + "\\f.txt").c_str()));  // "\" read as "/"
  EXPECT_FALSE(zrutIsExistFile((dir / "dangling").c_str()));
  EXPECT_TRUE(zrutIsDir(dir.path().c_str()));
  EXPECT_FALSE(zrutIsDir((dir / "f.txt").c_str()));
  EXPECT_EQ(zrutGetFileSize((dir / "f.txt").c_str()), 5);
  EXPECT_EQ(zrutGetFileSize((dir / "empty").c_str()), 0);
  EXPECT_EQ(zrutGetFileSize((dir / "missing").c_str()), -1);
  EXPECT_EQ(zrutGetFileCreateTime((dir / "missing").c_str()), 0);
  EXPECT_FALSE(zrutAccessFile(L"/nonexistent/x", 0));

  const int64_t fiveGiB = int64_t(5) << 30;  // sparse: no disk space used
  writeFile(dir / "big", "");
  ASSERT_EQ(truncate((dir / "big").c_str(), fiveGiB), 0);
  EXPECT_EQ(zrutGetFileSize((dir / "big").c_str()), fiveGiB);

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

TEST(FindFirst, ListsEveryEntryWithItsKindAndSize) {
  TestDir dir;
  writeFile(dir / "file", "12345");
  ASSERT_EQ(mkdir((dir / "sub").c_str(), 0700), 0);
  ASSERT_EQ(symlink("file", (dir / "link").c_str()), 0);
  _finddata_t record;
  std::memset(&record, 0, sizeof record);
  intptr_t handle = findfirstUtf8(dir.path().c_str(), &record);
  ASSERT_NE(handle, -1);
  EXPECT_EQ(record.directory, dir.path());
  std::map<std::string, std::pair<uint32_t, int64_t>> seen;  // name => attrib, size
  do seen[record.name] = {record.attrib, record.size};
  while (findnextUtf8(handle, &record) == 0);
  EXPECT_EQ(findcloseUtf8(handle), 0);
  ASSERT_EQ(seen.size(), 5u);
  EXPECT_EQ(seen["file"], std::make_pair(0u, int64_t(5)));
  EXPECT_EQ(seen["link"], std::make_pair(kFindAttribLink, int64_t(5)));  // size of the target
  for (const char* name : {".", "..", "sub"})
    EXPECT_EQ(seen[name].first, kFindAttribDirectory) << name;

  EXPECT_EQ(findfirstUtf8((dir / "file").c_str(), &record), -1);
  EXPECT_EQ(findnextUtf8(-1, &record), -1);
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
  const std::string hostile[] = {
      "a\"; touch " + marker + "; echo \"",
      "a'; touch " + marker + "; echo '",
      "$(touch " + marker + ")",
      "`touch " + marker + "`",
      "a\ntouch " + marker,
      "a | touch " + marker,
      "'\"'\"$(touch " + marker + ")\"'",
  };
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
