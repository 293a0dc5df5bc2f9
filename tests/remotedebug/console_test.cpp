// The console calls against a service on 127.0.0.1 in the same process.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <zrad/json.h>
#include <zrad/remotedebug.h>

#include "common/testdir.h"
#include "remotedebug/console_address.h"
#include "remotedebug/remote_testing.h"

namespace {

using Shown = std::pair<std::string, std::string>;

// Records what the console is shown; answers arrive on the client's socket thread.
class RecordingConsole : public NetCommandClientCallBack {
 public:
  explicit RecordingConsole(bool givesPassPhrase = true) : m_gives(givesPassPhrase) {}
  bool inputPassPhrase(ZrString& passPhrase) override {
    passPhrase = L"secret";
    return m_gives;
  }
  bool showText(const ZrString& word, const ZrString& text) override {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_shown.emplace_back(ZrUtf8String(word).str(), ZrUtf8String(text).str());
    m_changed.notify_all();
    return true;
  }
  // What was shown once `count` texts arrived, or after 5 s.
  std::vector<Shown> waitFor(size_t count) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::seconds(5), [&] { return m_shown.size() >= count; });
    return m_shown;
  }

 private:
  bool m_gives;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<Shown> m_shown;
};

class ConsoleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    CNetCommand::setCurrentDir(ZrString(ZrUtf8String(dir.path())));
    service = remotetest::startService();
    address = ZrString(ZrUtf8String::format("127.0.0.1:%u", service->getPort()));
  }
  void TearDown() override {
    service->Disconect();
    CNetCommand::setCurrentDir(ZrString());
  }

  TestDir dir;
  ZrSmartPtr<RvRemoteDebugService> service;
  ZrString address;
};

}  // namespace

TEST(ConsoleAddress, HostAndPortSplit) {
  const struct { const char *address, *host; int port; } rows[] = {
      {"127.0.0.2", "127.0.0.2", 6666},   {"127.0.0.2:7000", "127.0.0.2", 7000},
      {"127.0.0.2:x", "127.0.0.2", 0},    {"127.0.0.2:", "127.0.0.2", 0},
      {"127.0.0.2:80:90", "127.0.0.2", 80}, {":81", "", 81},
      {"127.0.0.2: 82x", "127.0.0.2", 82},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrUtf8String host = "unchanged";
    int port = -1;
    zrad::remote::splitConsoleAddress(rows[i].address, host, port);
    EXPECT_EQ(host.str(), rows[i].host) << "row " << i;
    EXPECT_EQ(port, rows[i].port) << "row " << i;
  }
}

TEST(ConsoleHelp, TwentyOneLinesInOrderAndSendCommandRules) {
  RecordingConsole console;
  CNetCommand::cmdHelp(&console);
  CNetCommand::cmdHelp(nullptr);
  const std::vector<Shown> shown = console.waitFor(1);
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].first, "HELP");
  std::string words;
  int count = 0;
  for (size_t at = 0, end; (end = shown[0].second.find("\r\n", at)) != std::string::npos; at = end + 2, ++count)
    words += shown[0].second.substr(at, shown[0].second.find(' ', at) - at) + ",";
  EXPECT_EQ(count, 21);
  EXPECT_EQ(words, "HELLO,VER,LOF,LS,CD,O,UP,DOWN,MD,R,RN,FIND,CP,LA,AI,!命令名,LC,(…),CF,AF,DEBUG,");
  const std::string last = "DEBUG     注入调试指定APP。\r\n";
  EXPECT_EQ(shown[0].second.rfind(last), shown[0].second.size() - last.size());

  EXPECT_TRUE(CNetCommand::sendCommand(nullptr, L"HELP", L"", L"", &console));
  EXPECT_FALSE(CNetCommand::sendCommand(nullptr, L"HELLO", L"", L"", &console));
  EXPECT_FALSE(CNetCommand::sendSynCommand(nullptr, "HELLO", 10, nullptr, nullptr));
  EXPECT_EQ(console.waitFor(1).size(), 1u);  // HELP showed nothing
}

TEST_F(ConsoleTest, ConnectLogsInOrRefuses) {
  RecordingConsole cancelling(false);
  EXPECT_TRUE(CNetCommand::cmdConnect(address, L"", &cancelling).isNull());
  EXPECT_EQ(cancelling.waitFor(1), (std::vector<Shown>{{"CN", "取消登陆！"}}));
  EXPECT_TRUE(CNetCommand::cmdConnect(address, L"", nullptr).isNull());

  // Nothing listens on a port that the service gave up; a host that is no dotted address.
  ZrSmartPtr<RvRemoteDebugService> gone = remotetest::startService();
  const unsigned gonePort = gone->getPort();
  gone->Disconect();
  RecordingConsole console;
  EXPECT_TRUE(CNetCommand::cmdConnect(ZrString(ZrUtf8String::format("127.0.0.1:%u", gonePort)), L"", &console).isNull());
  EXPECT_TRUE(CNetCommand::cmdConnect(L"localhost:1", L"", &console).isNull());

  ZrSmartPtr<RvRemoteDebugClient> client = CNetCommand::cmdConnect(address, L"", &console);
  ASSERT_FALSE(client.isNull());
  EXPECT_TRUE(CNetCommand::sendCommand(client.get(), L"hello", L"", L"", &console));
  EXPECT_TRUE(CNetCommand::sendCommand(client.get(), L"CN", L"", L"", &console));
  EXPECT_TRUE(CNetCommand::sendCommand(client.get(), L"nosuch", L"", L"", &console));
  EXPECT_TRUE(CNetCommand::sendCommand(client.get(), L"LC", L"", L"", &console));
  std::vector<Shown> shown = console.waitFor(2);
  std::sort(shown.begin(), shown.end());
  EXPECT_EQ(shown, (std::vector<Shown>{{"HELLO", "欢迎连接 本机"}, {"LC", "不支持"}}));
  client->Disconect();
  EXPECT_TRUE(CNetCommand::sendCommand(client.get(), L"HELLO", L"", L"", &console));  // no socket
}

// What a synchronous command leaves in its output: every answer text, and for DOWN the path
// the file was stored under (a free name beside the original here).
TEST_F(ConsoleTest, SynchronousAnswersAndDownloads) {
  auto client = remotetest::connectClient(service->getPort());
  writeFile(dir / "data.bin", "content");
  ZrJsonPtr in = ZrJson::readjson("{\"arg1\": \"data.bin\"}"), out = ZrJson::readjson("{}");
  ASSERT_TRUE(CNetCommand::sendSynCommand(client.get(), "DOWN", 5000, in, out));
  ZrUtf8String text, path;  // read so that a missing key fails the test, not the program
  EXPECT_TRUE(out->GetDataS("texts/0", text) && out->GetDataS("path", path));
  EXPECT_EQ(text.str(), "已下载到：" + dir / "data-副本.bin");
  EXPECT_EQ(path.str(), dir / "data-副本.bin");
  EXPECT_EQ(readFile(dir / "data-副本.bin"), "content");
  // Refused on this side: nothing to attach.
  EXPECT_EQ(remotetest::command(*client, "up", "missing"), "此文件（夹）不存在！");
  client->Disconect();
  EXPECT_TRUE(CNetCommand::sendSynCommand(client.get(), "HELLO", 10, nullptr, nullptr));  // no socket: nothing sent
}
