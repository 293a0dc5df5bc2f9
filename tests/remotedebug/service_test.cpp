// The service on 127.0.0.1: port stepping, clients, hostile peers that must end only their own
// connection, and sixteen clients moving files at once.
#include <arpa/inet.h>
#include <netinet/in.h>

#include <filesystem>
#include <random>
#include <thread>

#include <zrad/files.h>

#include "common/testdir.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;

namespace {

constexpr int kEcho = 7;

// A listening socket on 127.0.0.1:port (0: any free port); -1 when the port is taken.
int listenOn(unsigned port) {
  int s = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  if (bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(s, 1) != 0) {
    close(s);
    return -1;
  }
  return s;
}

unsigned portOf(int s) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

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
  // Find p with p, p+1 and p+3 usable, take p and p+1: the service lands on p+3.
  int taken[2] = {-1, -1};
  unsigned p = 0;
  for (int attempt = 0; attempt < 20 && taken[1] < 0; ++attempt) {
    if (taken[0] >= 0) close(taken[0]);
    taken[0] = listenOn(0);
    p = portOf(taken[0]);
    taken[1] = p < 65000 ? listenOn(p + 1) : -1;
  }
  ASSERT_GE(taken[1], 0);
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
  for (int s : taken) close(s);
}

TEST_F(Service, HostilePeersEndOnlyTheirOwnConnection) {
  auto service = startService();
  auto good = connectClient(service->getPort());
  writeFile(dir / "up", std::string(100000, 'u'));
  const int descriptors = openDescriptors();
  auto header = [](uint32_t length, uint32_t count) {
    std::string out;
    appendLe(out, length, 4);
    appendLe(out, count, 4);
    return out;
  };
  const std::string payload = messageHeader(kEcho, 1, 0, 0);
  const std::string rows[] = {
      "garbage that is no frame at all",
      header(0xFFFFFFFFu, 0) + std::string(8 << 20, 'j'),  // 4 GiB claim, 8 MiB of junk
      header(24, 0xFFFFFFFFu) + payload + std::string(400, '\0'),
      header(24, 1) + payload + std::string("\xF0\xFF\xFF\xFF", 4),  // negative size
      frame(payload, {"cut short"}).substr(0, 40),
      header(24, 0).substr(0, 4),  // half a header, then idle
  };
  std::vector<int> peers;
  for (const std::string& row : rows) {
    int peer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(service->getPort()));
    ASSERT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    sendAll(peer, row);
    peers.push_back(peer);
    EXPECT_TRUE(echoes(*good, dir / "up", "still served"));
  }
  for (size_t i = 0; i + 1 < peers.size(); ++i) close(peers[i]);
  // The idle peer expires after the 5 s transfer time-out; every hostile link is pruned.
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 1; }, 15));
  EXPECT_TRUE(echoes(*good, dir / "up", "after"));
  close(peers.back());
  EXPECT_TRUE(waitFor([&] { return openDescriptors() == descriptors; }));
  EXPECT_EQ(tempFiles(), 0u);
  good->Disconect();
  service->Disconect();
}

TEST_F(Service, SixteenClientsMoveFilesBothWays) {
  auto service = startService();
  constexpr int kClients = 16, kRounds = 100;
  std::atomic<int> intact{0};
  std::vector<std::thread> threads;
  for (int c = 0; c < kClients; ++c) {
    threads.emplace_back([&, c] {
      auto client = connectClient(service->getPort());
      std::mt19937 random(static_cast<unsigned>(c));
      for (int round = 0; round < kRounds; ++round) {
        std::string name = dir / ("c" + std::to_string(c) + "-" + std::to_string(round));
        std::string bytes(random() % 70000, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        writeFile(name, bytes);
        intact += echoes(*client, name, std::to_string(round));
      }
      client->Disconect();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(intact.load(), kClients * kRounds);
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 0; }));
  service->Disconect();
  EXPECT_EQ(tempFiles(), 0u);
}
