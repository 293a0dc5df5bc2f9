// The service on 127.0.0.1: port stepping, clients, hostile peers that must end only their own
// connection, and sixteen clients running mixed commands at once.
#include <filesystem>
#include <random>
#include <thread>

#include <zrad/files.h>
#include <zrad/json.h>

#include "common/testdir.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;

namespace {

constexpr int kEcho = 7;

ZrSmartPtr<RvRemoteDebugService> startService(unsigned port = 0) {
  ZrSmartPtr<RvRemoteDebugService> service = RvRemoteDebugService::createObject(port);
  service->setBindAddress("127.0.0.1");
  service->RegMonitor(kEcho, createEchoMonitor);
  EXPECT_TRUE(service->execute("service"));
  EXPECT_TRUE(service->isListening());
  return service;
}

ZrSmartPtr<RvRemoteDebugClient> connectClient(unsigned port) {
  ZrSmartPtr<RvRemoteDebugClient> client =
      RvRemoteDebugClient::createObject("127.0.0.1", static_cast<int>(port));
  EXPECT_TRUE(client->execute("client"));
  EXPECT_NE(client->getSocket(), 0);
  return client;
}

// One echo conversation with a file: true when both the text and the file come back intact.
bool echoes(RvRemoteDebugClient& client, const std::string& file, const std::string& text) {
  auto com = TestCom::create(kEcho, text, 1, file);
  return client.synCommunicate(com, 10000) && com->getStatus() == INetCom::kFinished &&
         com->answers() == std::vector<std::string>{"echo:" + text} &&
         com->fileReceived() == readFile(file);
}

struct Service : ::testing::Test {
  TestDir dir;
  void SetUp() override { setTempPath((dir / "tmp").c_str()); }
  void TearDown() override { setTempPath(""); }
  size_t tempFiles() {
    std::error_code ignored;
    return static_cast<size_t>(std::distance(
        std::filesystem::directory_iterator(dir / "tmp", ignored), {}));
  }
};

bool waitFor(const std::function<bool()>& done, int seconds = 10) {
  for (int i = 0; i < seconds * 100 && !done(); ++i) usleep(10000);
  return done();
}

}  // namespace

TEST_F(Service, BindStepsCumulativelyAndStopsCleanly) {
  // Two services hold p and p+1, so a third asked for p tries p, p+1 and lands on p+3.
  auto first = startService();
  const unsigned p = first->getPort();
  auto second = startService(p);
  EXPECT_EQ(second->getPort(), p + 1);
  const int descriptors = openDescriptors();
  {
    auto service = startService(p);
    EXPECT_EQ(service->getPort(), p + 3);
    auto client = connectClient(service->getPort());
    writeFile(dir / "up", "some bytes");
    EXPECT_TRUE(echoes(*client, dir / "up", "hello"));
    EXPECT_TRUE(service->Disconect());  // also ends the link client
    EXPECT_EQ(service->threadState(), RvDebugThread::kEnded);
    EXPECT_TRUE(waitFor([&] { return client->getSocket() == 0; }));
    client->Disconect();
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(tempFiles(), 0u);
  first->Disconect();
  second->Disconect();
}

TEST_F(Service, HostilePeersEndOnlyTheirOwnConnection) {
  const int descriptors = openDescriptors();
  auto service = startService();
  auto good = connectClient(service->getPort());
  writeFile(dir / "up", std::string(100000, 'u'));
  const std::string payload = messageHeader(kEcho, 1, 0, 0);
  const std::string rows[] = {
      "garbage that is no frame at all",
      frameHeader(0xFFFFFFFFu, 0) + std::string(8 << 20, 'j'),  // 4 GiB claim, 8 MiB of junk
      frameHeader(24, 0xFFFFFFFFu) + payload + std::string(400, '\0'),
      frameHeader(24, 1) + payload + std::string("\xF0\xFF\xFF\xFF", 4),  // negative size
      frame(payload, {"cut short"}).substr(0, 40),
      frameHeader(24, 0).substr(0, 4),  // half a header, then idle
  };
  std::vector<int> peers;
  for (const std::string& row : rows) {
    // A raw peer: the client's connection taken over without its thread.
    auto raw = RvRemoteDebugClient::createObject("", 0);
    ASSERT_TRUE(raw->connect("127.0.0.1", static_cast<int>(service->getPort())));
    peers.push_back(raw->getSocket());
    raw->setSocket(0);
    sendAll(peers.back(), row);
    EXPECT_TRUE(echoes(*good, dir / "up", "still served"));
  }
  for (size_t i = 0; i + 1 < peers.size(); ++i) close(peers[i]);
  // The idle peer expires after the 5 s transfer time-out; every hostile link is pruned.
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 1; }, 15));
  EXPECT_TRUE(echoes(*good, dir / "up", "after"));
  close(peers.back());
  good->Disconect();
  service->Disconect();
  good.reset();
  service.reset();
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(tempFiles(), 0u);
}

// Sixteen clients at once, each running 100 commands of every kind against one service; every
// file that goes up and comes back down (or is copied and renamed) is intact.
TEST_F(Service, SixteenClientsRunMixedCommands) {
  CNetCommand::setCurrentDir(ZrString(ZrUtf8String(dir.path())));
  auto service = startService();
  constexpr int kClients = 16, kCommands = 100;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int c = 0; c < kClients; ++c) {
    threads.emplace_back([&, c] {
      auto client = connectClient(service->getPort());
      std::mt19937 random(static_cast<unsigned>(c));
      auto answer = [&](const char* word, const std::string& arg1, const std::string& arg2) {
        ZrJsonPtr in = ZrJson::readjson("{}"), out = ZrJson::readjson("{}");
        in->SetDataS("arg1", arg1.c_str());
        in->SetDataS("arg2", arg2.c_str());
        if (!CNetCommand::sendSynCommand(client.get(), word, 10000, in, out)) return std::string("<failed>");
        return out("texts").ArrayCount() == 1 ? out("texts")(0)->strValue().str() : "<not one text>";
      };
      for (int done = 0, round = 0; done < kCommands; ++round) {
        const std::string name = "c" + std::to_string(c) + "-" + std::to_string(round);
        std::string bytes(random() % 70000, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        writeFile(dir / ("local/" + name + ".bin"), bytes);
        const struct {
          const char* word;
          std::string arg1, arg2, expected;
        } steps[] = {
            {"HELLO", "", "", "欢迎连接 本机"},
            {"UP", dir / ("local/" + name + ".bin"), "", "上传成功！"},
            {"DOWN", name + ".bin", "", "已下载到：" + dir / (name + "-副本.bin")},
            {"CP", name + ".bin", name + "-cp.bin", "复制成功！"},
            {"RN", name + "-cp.bin", name + "-rn.bin", "修改成功！"},
            {"MD", name + "-d", "", "新建成功！"},
            {"R", name + "-d", "", "删除成功！"},
            {"FIND", name + "-rn.*", "", name + "-rn.bin;\r\n"},
            {"LS", name + "-rn.*", "", name + "-rn.bin\r\n"},
        };
        for (const auto& step : steps) {
          if (done++ == kCommands) break;
          const std::string got = answer(step.word, step.arg1, step.arg2);
          if (got != step.expected) {
            ++failures;
            ADD_FAILURE() << "client " << c << " " << step.word << " " << step.arg1 << ": " << got;
          }
        }
        for (const char* copy : {"-副本.bin", "-rn.bin"}) {
          if (exists(dir / (name + copy)) && readFile(dir / (name + copy)) != bytes) {
            ++failures;
            ADD_FAILURE() << "client " << c << " " << name << copy << " differs";
          }
        }
      }
      client->Disconect();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 0; }));
  service->Disconect();
  CNetCommand::setCurrentDir(ZrString());
  EXPECT_EQ(tempFiles(), 0u);
}
