// The command handlers driven directly: a request package in, the answer package out.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>

#include <string>
#include <vector>

#include <zrad/files.h>
#include <zrad/remotedebug.h>

#include "common/testdir.h"
#include "remotedebug/payload.h"

namespace {

using Texts = std::vector<std::string>;

struct Served {
  bool keepOpen = false;
  Texts texts;  // answer strings as UTF-8
  ZrSmartPtr<RvNetPackage> reply;
};

ZrSmartPtr<RvNetPackage> packageWithHeader() {
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew(2048);
  const char header[24] = {1};
  stream->putBytes(header, sizeof header);
  return RvNetPackage::createObject(stream);
}

Texts answerTexts(const ZrSmartPtr<RvNetPackage>& package) {
  Texts texts;
  ZrSmartPtr<ZrStreamBuf> stream = package->stream();
  stream->seek(24, kSeekFromStart);
  for (ZrString text; zrad::remote::readPayloadString(*stream, text);)
    texts.push_back(ZrUtf8String(text).str());
  return texts;
}

// Runs one command on a fresh service-side conversation, as the socket thread would.
Served serve(const ZrString& word, const ZrString& arg1 = ZrString(), const ZrString& arg2 = ZrString(),
             const char* attached = nullptr, int reqId = 1) {
  ZrSmartPtr<RvNetPackage> request = packageWithHeader();
  for (const ZrString* text : {&word, &arg1, &arg2})
    zrad::remote::writePayloadString(*request->stream(), *text);
  if (attached) request->putFile(attached, false);
  Served served;
  served.reply = packageWithHeader();
  served.keepOpen = CNetCommand::createNetCom(1)->OnReceiveData(reqId, request, served.reply);
  served.texts = answerTexts(served.reply);
  return served;
}

// The "\r\n"-ended lines of a listing, sorted: directories list in no fixed order.
Texts lines(std::string text) {
  Texts out;
  for (size_t at; (at = text.find("\r\n")) != std::string::npos; text.erase(0, at + 2))
    out.push_back(text.substr(0, at));
  std::sort(out.begin(), out.end());
  return out;
}

ZrString wide(const std::string& text) { return ZrString(ZrUtf8String(text)); }

class NetCommandTest : public ::testing::Test {
 protected:
  void SetUp() override { CNetCommand::setCurrentDir(wide(dir.path())); }
  void TearDown() override { CNetCommand::setCurrentDir(ZrString()); }
  TestDir dir;
};

}  // namespace

// Every command, then each file command on a name holding a zero: cut at its zero, "x\0y"
// would name x and make, rename, remove, copy or send it.
TEST_F(NetCommandTest, EveryCommandAnswersAsItsRowSays) {
  writeFile(dir / "a.txt", "hello");
  writeFile(dir / "up/a.txt", "uploaded");
  writeFile(dir / "x", "kept");
  const std::string up = dir / "up/a.txt";
  const std::string M = "此文件（夹）不存在！";
  const ZrString cut(L"x\0y", 3);
  const struct { const wchar_t* word; ZrString arg1, arg2; const char* attached; Texts texts; } rows[] = {
      {L"HELLO", L"", L"", nullptr, {"欢迎连接 本机"}},
      {L"VER", L"", L"", nullptr, {}},
      {L"CD", L"x", L"", nullptr, {}},
      {L"LA", L"", L"", nullptr, {}},
      {L"AI", L"", L"", nullptr, {}},
      {L"DEBUG", L"", L"", nullptr, {}},
      {L"O", L"a.txt", L"", nullptr, {}},
      {L"CF", L"a.txt", L"", nullptr, {}},
      {L"LC", L"", L"", nullptr, {"不支持"}},
      {L"AF", L"", L"", nullptr, {""}},
      {L"LOF", L"", L"", nullptr, {""}},
      {L"CHECKPASS", L"whatever", L"x", nullptr, {"验证成功！"}},
      {L"MD", L"sub", L"", nullptr, {"新建成功！"}},
      {L"MD", L"sub", L"", nullptr, {"新建失败！"}},
      {L"RN", L"missing", L"x", nullptr, {M}},
      {L"RN", L"sub", L"sub2", nullptr, {"修改成功！"}},
      {L"RN", L"a.txt", L"no/such/dir", nullptr, {}},
      {L"CP", L"x/a.txt", L"y/b.txt", nullptr, {"复制成功！"}},
      {L"CP", L"missing", L"c.txt", nullptr, {"复制失败！"}},
      {L"R", L"b.txt", L"", nullptr, {"删除成功！"}},
      {L"R", L"b.txt", L"", nullptr, {"删除失败！"}},
      {L"R", L"", L"", nullptr, {"删除失败！"}},
      {L"UP", L"elsewhere/a.txt", L"", up.c_str(), {"上传成功！"}},
      {L"UP", L"a.txt", L"", nullptr, {"上传失败！"}},
      {L"DOWN", L"missing", L"", nullptr, {M}},
      {L"DOWN", L"sub2", L"", nullptr, {M}},
      {L"MD", ZrString(L"d\0", 2), L"", nullptr, {"新建失败！"}},
      {L"RN", cut, L"z", nullptr, {}},
      {L"RN", L"x", ZrString(L"z\0", 2), nullptr, {}},
      {L"R", cut, L"", nullptr, {"删除失败！"}},
      {L"CP", cut, L"z", nullptr, {"复制失败！"}},
      {L"CP", L"x", ZrString(L"x\0z", 3), nullptr, {"复制失败！"}},
      {L"UP", cut, L"", up.c_str(), {"上传失败！"}},
      {L"DOWN", cut, L"", nullptr, {M}},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    const Served served = serve(rows[i].word, rows[i].arg1, rows[i].arg2, rows[i].attached);
    EXPECT_TRUE(served.keepOpen) << "row " << i;
    EXPECT_EQ(served.texts, rows[i].texts) << "row " << i;
    EXPECT_EQ(served.reply->fileCount(), 0) << "row " << i;
  }
  EXPECT_TRUE(isDir((dir / "sub2").c_str()));
  EXPECT_EQ(readFile(dir / "a-副本.txt"), "uploaded");  // a.txt was taken
  EXPECT_FALSE(exists(dir / "b.txt"));
  EXPECT_EQ(readFile(dir / "a.txt"), "hello");
  for (const char* made : {"d", "z", "x-副本"}) EXPECT_FALSE(exists(dir / made)) << made;
  EXPECT_EQ(readFile(dir / "x"), "kept");

  const Texts found = serve(L"FIND", L"*.txt").texts;
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(lines(found[0]), (Texts{"a-副本.txt;", "a.txt;", "up/a.txt;"}));

  const Served down = serve(L"DOWN", L"a.txt");
  EXPECT_TRUE(down.texts.empty());
  ASSERT_EQ(down.reply->fileCount(), 1);
  EXPECT_EQ(down.reply->getFilePath(1).str(), dir / "a.txt");
}

TEST_F(NetCommandTest, RefusedRequestsEndTheConversationWithoutAnswer) {
  // An unknown word, a payload cut short, and a handler asked under another request id.
  const Served unknown = serve(L"NOPE");
  EXPECT_FALSE(unknown.keepOpen);
  EXPECT_TRUE(unknown.texts.empty());
  ZrSmartPtr<RvNetPackage> shortRequest = packageWithHeader();
  zrad::remote::writePayloadString(*shortRequest->stream(), L"HELLO");
  EXPECT_FALSE(CNetCommand::createNetCom(1)->OnReceiveData(1, shortRequest, packageWithHeader()));
  const Served other = serve(L"MD", L"never", L"", nullptr, 2);
  EXPECT_TRUE(other.keepOpen);
  EXPECT_TRUE(other.texts.empty());
  EXPECT_FALSE(exists(dir / "never"));
}

TEST_F(NetCommandTest, ListingForms) {
  writeFile(dir / "a.txt", "12345");
  writeFile(dir / "b.log", "");
  ASSERT_EQ(symlink("a.txt", (dir / "l.txt").c_str()), 0);
  auto ls = [](const wchar_t* a, const wchar_t* b) {
    const Texts texts = serve(L"LS", a, b).texts;
    return texts.size() == 1 ? texts[0] : std::string("<not one string>");
  };
  EXPECT_EQ(lines(ls(L"", L"")), (Texts{".", "..", "a.txt", "b.log", "l.txt"}));
  EXPECT_EQ(lines(ls(L"*.log", L"")), Texts{"b.log"});
  EXPECT_EQ(ls(L"-L", L""), "");  // a pattern that matches nothing
  EXPECT_EQ(ls(L"x", L"y"), "");

  const std::string longForm = ls(L"-l", L"");
  EXPECT_EQ(longForm.find(" ..", 0), std::string::npos);
  const std::string one = ls(L"-l", L"a.txt");
  const std::string head = "a.txt" + std::string(35, ' ') + "  ||  " + std::string(15, ' ') + "5 Byte  ||  ";
  EXPECT_EQ(one.rfind(head, 0), 0u) << one;
  EXPECT_EQ(one.size(), head.size() + 19 + 2 + 25 + 5);  // the ctime text keeps its newline
  EXPECT_EQ(one.substr(one.size() - 6), "\n)  \r\n");
  const std::string link = ls(L"-l", L"l.txt");
  EXPECT_NE(link.find("  ||  a.txt "), std::string::npos) << link;
  EXPECT_EQ(link.size(), one.size() + 5 + 260);
}

TEST(NetCommandRoot, EmptyCurrentDirectoryWorksFromTheRoot) {
  if (access("/", W_OK) != 0) GTEST_SKIP() << "the root directory is not writable";
  TestDir dir;
  const std::string name = "zrad-netcommand-" + std::to_string(getpid());
  writeFile(dir / (name + ".txt"), "x");
  EXPECT_EQ(serve(L"MD", wide(name)).texts, Texts{"新建成功！"});
  EXPECT_TRUE(isDir(("/" + name).c_str()));
  const std::string local = dir / (name + ".txt");
  EXPECT_EQ(serve(L"UP", wide(local), L"", local.c_str()).texts, Texts{"上传成功！"});
  EXPECT_EQ(readFile("/" + name + ".txt"), "x");
  EXPECT_EQ(serve(L"R", wide(name)).texts, Texts{"删除成功！"});
  EXPECT_TRUE(zrutRemoveFile(("/" + name + ".txt").c_str()));
}
