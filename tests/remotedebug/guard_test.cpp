// A service's opt-in protections on 127.0.0.1: the pass-phrase check, escape attempts against a
// restricted root (both resolvers), and the connection, frame, file and idle limits.
#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include <zrad/json.h>

#include "common/testdir.h"
#include "remotedebug/remote_testing.h"
#include "remotedebug/guard.h"

using namespace remotetest;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

// Far more "../" than any temporary directory is deep.
const std::string kUp = [] {
  std::string up;
  for (int i = 0; i < 24; ++i) up += "../";
  return up;
}();

// True when the peer closes `s` within 5 s.
bool closedByPeer(int s) {
  char byte;
  pollfd ready{s, POLLIN, 0};
  return poll(&ready, 1, 5000) == 1 && recv(s, &byte, 1, 0) == 0;
}

// The console's current directory is an absolute path `local`; beneath the root the service
// resolves that same path, so both ends work in a directory of their own under one TestDir.
class Guarded : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(served());
    fs::create_directories(dir / "local");
    writeFile(dir / "outside/secret.txt", "secret");
    writeFile(served() + "/inside.txt", "inside");
    fs::create_directory_symlink(dir / "outside", served() + "/out");
    fs::create_symlink(dir / "outside/secret.txt", served() + "/secretlink");
    fs::create_symlink(dir / "outside/planted.txt", served() + "/planted");
    fs::create_symlink(kUp + (dir / "outside").substr(1), served() + "/up");
    CNetCommand::setCurrentDir(ZrString(ZrUtf8String(dir / "local")));
  }
  void TearDown() override {
    if (service) service->Disconect();
    CNetCommand::setCurrentDir(ZrString());
  }
  std::string served() const { return dir / "root" + dir / "local"; }
  std::string outsideTarget() const { return kUp + (dir / "outside/escaped").substr(1); }

  void start(const RvServiceProtections& protections) { service = startService(protections); }
  ZrSmartPtr<RvRemoteDebugClient> client() { return connectClient(service->getPort()); }

  TestDir dir;
  ZrSmartPtr<RvRemoteDebugService> service;
};

TEST(GuardSettings, VerifiersAndRootsAreCheckedBeforeTheyAreTaken) {
  EXPECT_EQ(RvRemoteDebugService::passVerifierOf("abc").str(), "900150983cd24fb0d6963f7d28e17f72");
  TestDir dir;
  const struct { const char* verifier; std::string root; bool taken; } rows[] = {
      {"", "", true}, {"900150983CD24FB0D6963F7D28E17F72", dir.path(), true},
      {"900150983cd24fb0d6963f7d28e17f7", "", false}, {"900150983cd24fb0d6963f7d28e17f7g", "", false},
      {"", dir / "missing", false}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    auto service = RvRemoteDebugService::createObject(0);
    RvServiceProtections p;
    p.passVerifier = rows[i].verifier;
    p.rootDir = rows[i].root.c_str();
    EXPECT_EQ(service->setProtections(p), rows[i].taken) << "row " << i;
    EXPECT_EQ(service->protections().passVerifier.str(), rows[i].taken ? rows[i].verifier : "") << "row " << i;
  }
}

TEST_F(Guarded, PassPhraseGatesEveryCommandPerConnection) {
  RvServiceProtections p;
  p.passVerifier = RvRemoteDebugService::passVerifierOf("open sesame");
  start(p);
  auto first = client(), second = client();
  EXPECT_EQ(command(*first, "HELLO"), "请先验证！");
  EXPECT_EQ(command(*first, "LS"), "请先验证！");
  // A failure is answered only after the delay, and holds up no other connection meanwhile.
  std::atomic<bool> answered{false};
  const auto began = Clock::now();
  std::thread wrong([&] {
    EXPECT_EQ(command(*first, "CHECKPASS", "open sesame "), "验证失败！");
    answered = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(command(*second, "HELLO"), "请先验证！");
  EXPECT_FALSE(answered.load()) << "the other connection waited for the failure's delay";
  wrong.join();
  EXPECT_GE(Clock::now() - began, std::chrono::milliseconds(zrad::remote::kPassFailureDelayMs));
  EXPECT_EQ(command(*first, "CHECKPASS", "open sesame"), "验证成功！");
  EXPECT_EQ(command(*first, "HELLO"), "欢迎连接 本机");
  EXPECT_EQ(command(*second, "HELLO"), "请先验证！");
}

// Every attempt stays inside the root; afterwards the outside directory holds only its secret.
TEST_F(Guarded, EscapeAttemptsStayBeneathTheRoot) {
  RvServiceProtections p;
  p.rootDir = (dir / "root").c_str();
  start(p);
  auto c = client();
  writeFile(dir / "local/planted", "mine");
  const struct { const char* word; std::string arg1, arg2, expected; } rows[] = {
      {"FIND", "*.txt", "", "inside.txt;\r\n"},  // the links leading out are not descended
      {"MD", outsideTarget(), "", "新建失败！"},
      {"MD", "out/escaped", "", "新建失败！"},
      {"MD", "up/escaped", "", "新建失败！"},
      {"MD", "new\nline", "", "新建成功！"},
      {"DOWN", "out/secret.txt", "", "此文件（夹）不存在！"},
      {"DOWN", "secretlink", "", "此文件（夹）不存在！"},
      {"DOWN", "/" + dir / "outside/secret.txt", "", "此文件（夹）不存在！"},
      {"DOWN", "x\n/" + kUp + (dir / "outside/secret.txt").substr(1), "", "此文件（夹）不存在！"},
      {"DOWN", "inside.txt", "", "已下载到：" + dir / "local/inside.txt"},
      {"RN", "out/secret.txt", "stolen.txt", "此文件（夹）不存在！"},
      {"RN", "inside.txt", outsideTarget(), "<none>"},
      {"CP", "secretlink", "copy.txt", "复制失败！"},
      {"CP", "inside.txt", "planted", "复制失败！"},
      {"UP", dir / "outside/secret.txt", "", "上传成功！"},  // a legitimate upload of a local file
      {"UP", dir / "local/planted", "", "上传成功！"},
      {"R", "out/secret.txt", "", "删除失败！"},
      {"R", kUp + (dir / "outside").substr(1), "", "删除失败！"},
      {"LS", "../*", "", ""},
      {"R", "out", "", "删除成功！"},
  };
  for (size_t i = 0; i < std::size(rows); ++i)
    EXPECT_EQ(command(*c, rows[i].word, rows[i].arg1, rows[i].arg2), rows[i].expected) << "row " << i;
  EXPECT_EQ(readFile(served() + "/secret.txt"), "secret");  // the upload landed inside
  EXPECT_FALSE(exists(served() + "/out"));
  std::vector<std::string> outside;
  for (const auto& entry : fs::directory_iterator(dir / "outside")) outside.push_back(entry.path().filename());
  EXPECT_EQ(outside, std::vector<std::string>{"secret.txt"});
  EXPECT_EQ(readFile(dir / "outside/secret.txt"), "secret");
  EXPECT_TRUE(exists(served() + "/new\nline"));
  EXPECT_EQ(readFile(served() + "/planted-副本"), "mine");
}

// A name swapped between a file inside and a link to the secret while it is downloaded and
// removed: no download ever carries the secret, and the secret survives.
TEST_F(Guarded, LinkSwappedBetweenCheckAndUseNeverLeadsOut) {
  RvServiceProtections p;
  p.rootDir = (dir / "root").c_str();
  start(p);
  auto c = client();
  std::atomic<bool> stop{false};
  const std::string flip = served() + "/flip", file = served() + "/plain", link = served() + "/link";
  std::thread swapper([&] {
    for (int i = 0; !stop && i < 200000; ++i) {
      if (i % 2)
        writeFile(file, "plain");
      else
        fs::create_symlink(dir / "outside/secret.txt", link);
      rename((i % 2 ? file : link).c_str(), flip.c_str());
    }
  });
  const auto deadline = Clock::now() + std::chrono::seconds(3);
  for (int i = 0; i < 300 && Clock::now() < deadline; ++i) {
    const std::string got = command(*c, i % 3 ? "DOWN" : "R", "flip");
    for (const auto& entry : fs::directory_iterator(dir / "local")) {
      EXPECT_NE(readFile(entry.path()), "secret") << "attempt " << i;
      fs::remove(entry.path());
    }
  }
  stop = true;
  swapper.join();
  EXPECT_EQ(readFile(dir / "outside/secret.txt"), "secret");
}

// The same escapes against both resolvers directly: the kernel's and the component walk.
TEST(RootedResolve, BothResolversRefuseEscapes) {
  TestDir dir;
  writeFile(dir / "root/a/b.txt", "b");
  writeFile(dir / "outside.txt", "o");
  fs::create_symlink(dir / "outside.txt", dir / "root/abs");
  fs::create_symlink("../../outside.txt", dir / "root/a/rel");
  fs::create_symlink("b.txt", dir / "root/a/inner");
  const int root = open((dir / "root").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  const struct { const char* path; bool kernel, walk; } rows[] = {  // opened by each resolver
      {"a/b.txt", true, true},   {"/a/b.txt", true, true},   {"a/../a/b.txt", true, false},
      {"../outside.txt", false, false}, {"abs", false, false}, {"a/rel", false, false},
      {"a/inner", true, false}, {"a/b.txt/..", false, false}, {"", true, true}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    const std::string relative = rows[i].path[0] == '/' ? rows[i].path + 1 : rows[i].path;
    for (int walk = 0; walk < 2; ++walk) {
      const int fd = walk ? zrad::remote::walkBeneath(root, relative, O_RDONLY)
                          : zrad::remote::openBeneath(root, rows[i].path, O_RDONLY);
      EXPECT_EQ(fd >= 0, walk ? rows[i].walk : rows[i].kernel) << "row " << i << " walk " << walk;
      if (fd >= 0) close(fd);
    }
  }
  // A store whose copy fails leaves nothing under the name it had taken.
  zrad::remote::RootedFiles files(dup(root));
  EXPECT_TRUE(files.store((dir / "missing").c_str(), L"/a", L"new.txt").isEmpty());
  EXPECT_FALSE(exists(dir / "root/a/new.txt"));
  EXPECT_EQ(ZrUtf8String(files.store((dir / "outside.txt").c_str(), L"/a", L"b.txt")).str(), "/a/b-副本.txt");
  EXPECT_EQ(readFile(dir / "root/a/b-副本.txt"), "o");
  close(root);
}

TEST_F(Guarded, LimitsRefuseCleanly) {
  RvServiceProtections p;
  p.maxClients = 2;
  p.maxPayloadSize = 1000;
  p.maxFileSize = 100;
  start(p);
  writeFile(dir / "small.bin", std::string(50, 's'));
  writeFile(dir / "large.bin", std::string(200, 'l'));
  writeFile(dir / "local/big.bin", std::string(200, 'b'));
  {
    auto a = client(), b = client();
    EXPECT_EQ(command(*a, "HELLO"), "欢迎连接 本机");
    const int third = rawConnect(service->getPort());
    EXPECT_TRUE(closedByPeer(third)) << "a third client was served";
    close(third);
    EXPECT_EQ(command(*b, "UP", dir / "small.bin"), "上传成功！");
    EXPECT_EQ(command(*b, "DOWN", "big.bin"), "文件太大！");
    EXPECT_EQ(command(*b, "UP", dir / "large.bin"), "<failed>");
    EXPECT_FALSE(exists(dir / "local/large.bin"));
    EXPECT_EQ(command(*a, "HELLO"), "欢迎连接 本机");
    a->Disconect();
    b->Disconect();
  }
  EXPECT_TRUE(waitFor([&] { return service->linkCount() == 0; }));
  // A payload too long, and a size table too long for the same bound.
  for (const std::string& header : {frameHeader(2000, 0), frameHeader(8, 300)}) {
    const int oversized = rawConnect(service->getPort());
    sendAll(oversized, header);
    EXPECT_TRUE(closedByPeer(oversized)) << "an oversized frame was read";
    close(oversized);
  }

  service->Disconect();
  p = RvServiceProtections();
  p.idleTimeoutMs = 200;
  start(p);
  const int idle = rawConnect(service->getPort());
  EXPECT_TRUE(closedByPeer(idle)) << "an idle connection stayed open";
  close(idle);
}

}  // namespace
