// The service on 127.0.0.1: port stepping, uploads whose peers vanish at every point of their
// frame, a file-size limit hit while receiving, and thirty-two clients running mixed commands.
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>

#include <zrad/files.h>

#include "common/testdir.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;

namespace {

// A payload string of ASCII text: its count, then one 16-bit unit per character.
std::string payloadString(const std::string& text) {
  std::string out = le(text.size(), 4);
  for (char c : text) out += le(static_cast<uint8_t>(c), 2);
  return out;
}

// Counts the connections it has begun to serve, so that a test can keep its connects within
// the listen backlog (10): beyond it the kernel drops them and they retry a second later.
class CountingService : public RvRemoteDebugService {
 public:
  std::atomic<int> opened{0}, closed{0};
  void connectionOpened(const ZrUtf8String&) override { ++opened; }
  void connectionClosed(const ZrUtf8String&) override { ++closed; }
  // Waits (5 s at most) until at most four of the `made` connections wait to be accepted.
  void admit(int made) {
    for (int wait = 0; wait < 50000 && made - opened > 4; ++wait) usleep(100);
  }
};

ZrSmartPtr<CountingService> startCountingService() {
  ZrSmartPtr<CountingService> service = ZrRxObjectImpl<CountingService>::createObject();
  service->setBindAddress("127.0.0.1");
  EXPECT_TRUE(service->execute("service"));
  return service;
}

// A port p below the range the system hands out for outgoing connections, with p, p+1 and p+3
// free, so that a busy machine's connections cannot take a step's port in the meantime.
unsigned steppingBase() {
  for (unsigned p = 20000 + static_cast<unsigned>(getpid()) % 5000; p < 32000; p += 7) {
    if (portFree(p) && portFree(p + 1) && portFree(p + 3)) return p;
  }
  return 0;
}

struct Service : ::testing::Test {
  TestDir dir;
  void SetUp() override {
    setTempPath((dir / "tmp").c_str());
    CNetCommand::setCurrentDir(ZrString(ZrUtf8String(dir / "srv")));
    writeFile(dir / "srv/.keep", "");
  }
  void TearDown() override {
    setTempPath("");
    CNetCommand::setCurrentDir(ZrString());
  }
};

}  // namespace

TEST_F(Service, BindStepsCumulativelyAndStopsCleanly) {
  // Two services hold p and p+1, so a third asked for p tries p, p+1 and lands on p+3.
  const unsigned p = steppingBase();
  ASSERT_NE(p, 0u);
  auto first = startService({}, p);
  EXPECT_EQ(first->getPort(), p);
  auto second = startService({}, p);
  EXPECT_EQ(second->getPort(), p + 1);
  auto openDescriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto descriptors = openDescriptors();
  {
    auto service = startService({}, p);
    EXPECT_EQ(service->getPort(), p + 3);
    auto client = connectClient(service->getPort());
    writeFile(dir / "up.bin", "some bytes");
    EXPECT_EQ(command(*client, "UP", dir / "up.bin"), "上传成功！");
    EXPECT_TRUE(service->Disconect());  // also ends the link client
    EXPECT_EQ(service->threadState(), RvDebugThread::kEnded);
    EXPECT_TRUE(waitFor([&] { return client->getSocket() == 0; }));
    client->Disconect();
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(entriesIn(dir / "tmp"), 0u);
  first->Disconect();
  second->Disconect();
}

// A thousand uploads whose peers vanish (closing or resetting) at a random point of the frame:
// in its header, its payload, its size table or its file. None leaves a file behind, stored
// or temporary, and the service goes on serving.
TEST_F(Service, AbortedUploadsLeaveNothingBehind) {
  auto service = startCountingService();
  std::mt19937 random(20261123);
  for (int i = 0; i < 1000; ++i) {
    service->admit(i);
    const std::string payload = messageHeader(1, 1000 + i, 0, 0) + payloadString("UP") +
                                payloadString("abort" + std::to_string(i) + ".bin") + payloadString("");
    const std::string bytes = frame(payload, {std::string(1 + random() % 20000, 'f')});
    // Region 0: the frame header; 1: the payload; 2: the size table; 3: the file.
    const size_t starts[] = {0, 8, 8 + payload.size(), 12 + payload.size(), bytes.size()};
    const int region = i % 4;
    const size_t cut = starts[region] + random() % (starts[region + 1] - starts[region]);
    const int peer = rawConnect(service->getPort());
    sendAll(peer, bytes.substr(0, cut));
    if (i % 2) {
      const linger reset{1, 0};
      setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    }
    close(peer);
  }
  // Every connection served to its end: the last few may still wait to be accepted when the
  // loop is done, so no link running is not enough.
  EXPECT_TRUE(waitFor([&] { return service->closed == 1000; }, 30));
  EXPECT_EQ(entriesIn(dir / "tmp"), 0u);
  EXPECT_EQ(entriesIn(dir / "srv"), 1u);  // .keep alone
  auto client = connectClient(service->getPort());
  writeFile(dir / "whole.bin", "whole");
  EXPECT_EQ(command(*client, "UP", dir / "whole.bin"), "上传成功！");
  EXPECT_EQ(readFile(dir / "srv/whole.bin"), "whole");
  client->Disconect();
  service->Disconect();
}

// A file-size limit (as a full disk) stops an upload while it is received: the answer says so,
// no part of it stays under any name, the earlier file of that name is intact and the
// connection goes on serving.
TEST_F(Service, UploadBeyondTheFileSizeLimitIsAnswered) {
  auto service = startService();
  auto client = connectClient(service->getPort());
  writeFile(dir / "srv/big.bin", "earlier");
  writeFile(dir / "big.bin", std::string(300000, 'b'));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, SIG_IGN);
  rlimit limited = before;
  limited.rlim_cur = 100000;
  setrlimit(RLIMIT_FSIZE, &limited);
  const std::string answer = command(*client, "UP", dir / "big.bin");
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(answer, "上传失败！");
  EXPECT_EQ(readFile(dir / "srv/big.bin"), "earlier");
  EXPECT_EQ(entriesIn(dir / "srv"), 2u);
  EXPECT_EQ(entriesIn(dir / "tmp"), 0u);
  EXPECT_EQ(command(*client, "HELLO"), "欢迎连接 本机");
  client->Disconect();
  service->Disconect();
}

// Thirty-two clients at once, each running 201 commands of every kind against one service;
// every file that goes up and comes back down (or is copied and renamed) is intact. All of
// them first upload a file of the same name at once: each must get a name of its own.
TEST_F(Service, ThirtyTwoClientsRunMixedCommands) {
  auto service = startCountingService();
  constexpr int kClients = 32, kRounds = 20;  // 20 rounds of 10 commands
  std::vector<ZrSmartPtr<RvRemoteDebugClient>> clients;
  for (int c = 0; c < kClients; ++c) {
    service->admit(c);
    clients.push_back(connectClient(service->getPort()));
  }
  std::vector<std::thread> threads;
  std::atomic<int> ready{0};
  for (int c = 0; c < kClients; ++c) {
    threads.emplace_back([&, c] {
      const auto& client = clients[static_cast<size_t>(c)];
      std::mt19937 random(static_cast<unsigned>(c));
      auto expect = [&](const char* word, const std::string& arg1, const std::string& arg2,
                        const std::string& expected) {
        const std::string got = command(*client, word, arg1, arg2);
        EXPECT_EQ(got, expected) << "client " << c << ": " << word << " " << arg1;
      };
      const std::string local = dir / ("local" + std::to_string(c) + "/");
      writeFile(local + "same.bin", "from client " + std::to_string(c));
      for (++ready; ready < kClients;) std::this_thread::yield();
      expect("UP", local + "same.bin", "", "上传成功！");
      for (int round = 0; round < kRounds; ++round) {
        const std::string name = "c" + std::to_string(c) + "-" + std::to_string(round);
        std::string bytes(random() % 40000, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        writeFile(local + name + ".bin", bytes);
        // The last column names a copy that must hold the file's bytes.
        const struct { const char* word; std::string arg1, arg2, expected; const char* copy = nullptr; }
            steps[] = {
            {"HELLO", "", "", "欢迎连接 本机"},
            {"UP", local + name + ".bin", "", "上传成功！"},
            {"DOWN", name + ".bin", "", "已下载到：" + dir / ("srv/" + name + "-副本.bin"),
             "-副本.bin"},
            {"CP", name + ".bin", name + "-cp.bin", "复制成功！"},
            {"RN", name + "-cp.bin", name + "-rn.bin", "修改成功！", "-rn.bin"},
            {"MD", name + "-d", "", "新建成功！"},
            {"FIND", name + "-rn.*", "", name + "-rn.bin;\r\n"},
            {"LS", name + "-rn.*", "", name + "-rn.bin\r\n"},
            {"R", name + "-d", "", "删除成功！"},
            {"R", name + "-rn.bin", "", "删除成功！"},
        };
        for (const auto& step : steps) {
          expect(step.word, step.arg1, step.arg2, step.expected);
          if (step.copy) {
            EXPECT_EQ(readFile(dir / ("srv/" + name + step.copy)), bytes) << name;
          }
        }
      }
      client->Disconect();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 0; }));
  service->Disconect();
  std::vector<std::string> same, expected;
  for (int c = 0; c < kClients; ++c) expected.push_back("from client " + std::to_string(c));
  for (const auto& entry : std::filesystem::directory_iterator(dir / "srv"))
    if (entry.path().filename().string().rfind("same", 0) == 0) same.push_back(readFile(entry.path()));
  std::sort(same.begin(), same.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(same, expected);
  EXPECT_EQ(entriesIn(dir / "tmp"), 0u);
}
