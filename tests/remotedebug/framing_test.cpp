// Package files, the bytes sendData puts on the wire, and what recvData makes of hand-built and
// hostile frames; the transfer loops under short counts, EINTR and failures.
#include <errno.h>

#include <filesystem>
#include <thread>

#include <zrad/files.h>
#include <zrad/log.h>

#include "common/testdir.h"
#include "remotedebug/framing.h"
#include "remotedebug/socketio.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;
namespace fs = std::filesystem;

namespace {

ZrSmartPtr<RvNetPackage> packageWith(const std::string& payload) {
  ZrSmartPtr<ZrStreamBuf> stream = ZrMemoryStream::createNew(0);
  stream->putBytes(payload.data(), static_cast<uint32_t>(payload.size()));
  return RvNetPackage::createObject(stream);
}

// Receives into temporary files under a fresh directory.
struct Framing : ::testing::Test {
  TestDir dir;
  void SetUp() override { setTempPath(dir.path().c_str()); }
  void TearDown() override { setTempPath(""); }
};

}  // namespace

TEST_F(Framing, PackageListsAndRemoval) {
  writeFile(dir / "a", "A");
  writeFile(dir / "b", "B");
  {
    ZrSmartPtr<RvNetPackage> pkg = RvNetPackage::createObject(nullptr);
    EXPECT_EQ(pkg->putFile((dir / "missing").c_str(), true), -1);
    EXPECT_EQ(pkg->putFile((dir / "a").c_str(), false), 1);
    EXPECT_EQ(pkg->putFile((dir / "b").c_str(), true), 2);
    EXPECT_EQ(pkg->fileCount(), 2);
    EXPECT_EQ(pkg->getFilePath(2), ZrUtf8String((dir / "b").c_str()));
    for (int bad : {-1, 0, 3}) EXPECT_TRUE(pkg->getFilePath(bad).isEmpty()) << bad;
  }
  EXPECT_TRUE(exists(dir / "a"));   // not owned
  EXPECT_FALSE(exists(dir / "b"));  // owned: removed with the package
}

TEST_F(Framing, SendDataWireBytes) {
  writeFile(dir / "one", "first file");
  writeFile(dir / "empty", "");
  const struct { std::string payload; std::vector<std::string> files; std::string expected; }
      rows[] = {
      {"hello", {}, frame("hello")},
      {"pay", {"one", "empty"}, frame("pay", {"first file", ""})},
      // Without a payload the files never travel: the header alone.
      {"", {"one", "empty"}, frame("", {"x", "y"})},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    SocketPair pair;
    ZrSmartPtr<RvNetPackage> pkg = packageWith(rows[i].payload);
    for (const std::string& f : rows[i].files) pkg->putFile((dir / f).c_str(), false);
    EXPECT_EQ(RvRemoteDebugCommunication::sendData(pair.fd[0], pkg, 1000), 0) << "row " << i;
    EXPECT_EQ(receive(pair.fd[1], SIZE_MAX, 50), rows[i].expected) << "row " << i;
  }
  // A file that vanished before sending: -1 once header and payload are out.
  SocketPair pair;
  writeFile(dir / "gone", "x");
  ZrSmartPtr<RvNetPackage> pkg = packageWith("p");
  pkg->putFile((dir / "gone").c_str(), false);
  fs::remove(dir / "gone");
  EXPECT_EQ(RvRemoteDebugCommunication::sendData(pair.fd[0], pkg, 1000), -1);
  EXPECT_EQ(receive(pair.fd[1], SIZE_MAX, 50), frame("p").replace(4, 1, "\x01"));
}

TEST_F(Framing, RecvDataBuildsPackageWithOwnedFiles) {
  SocketPair pair;
  std::string big(700000, 'z');
  std::thread sender(sendAll, pair.fd[0], frame("payload", {"abc", "", big}) + frame("next"));
  ZrSmartPtr<RvNetPackage> pkg;
  EXPECT_EQ(RvRemoteDebugCommunication::recvData(pair.fd[1], pkg, 1000), 0);
  sender.join();
  ASSERT_TRUE(pkg);
  EXPECT_EQ(payloadOf(*pkg), "payload");
  ASSERT_EQ(pkg->fileCount(), 3);
  EXPECT_EQ(readFile(pkg->getFilePath(1).c_str()), "abc");
  EXPECT_EQ(readFile(pkg->getFilePath(2).c_str()), "");
  EXPECT_EQ(readFile(pkg->getFilePath(3).c_str()), big);
  EXPECT_EQ(entriesIn(dir.path()), 3u);
  // The next frame starts right after the last file's bytes.
  ZrSmartPtr<RvNetPackage> next;
  ASSERT_EQ(RvRemoteDebugCommunication::recvData(pair.fd[1], next, 1000), 0);
  EXPECT_EQ(payloadOf(*next), "next");
  pkg.reset();
  EXPECT_EQ(entriesIn(dir.path()), 0u);
}

TEST_F(Framing, HostileFramesFailWithoutLeftovers) {
  const std::string oneFile = frame("p", {"data"});
  const std::string rows[] = {
      frameHeader(8, 0).substr(0, 5),                              // half a header
      frameHeader(0xFFFFFFFFu, 0) + std::string(3 << 20, 'j'),     // 4 GiB claim, 3 MiB of junk
      frameHeader(1, 0xFFFFFFFFu) + "p" + std::string(4000, '\0'), // 2^32-1 files, 1000 sizes
      frameHeader(1, 2) + "p" + std::string("\x05\0\0\0\xFF\xFF\xFF\xFF", 8) + "12345",
      oneFile.substr(0, oneFile.size() - 2),                  // file cut short
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    SocketPair pair;
    std::thread sender([&row = rows[i], fd = pair.release(0)] {
      sendAll(fd, row);
      close(fd);
    });
    ZrSmartPtr<RvNetPackage> pkg = packageWith("kept");
    EXPECT_EQ(RvRemoteDebugCommunication::recvData(pair.fd[1], pkg, 1000), -1) << "row " << i;
    close(pair.release(1));  // releases a sender still blocked on a full socket
    sender.join();
    EXPECT_EQ(payloadOf(*pkg), "kept") << "row " << i;
    EXPECT_EQ(entriesIn(dir.path()), 0u) << "row " << i;
  }
}

namespace {

// Socket calls that move at most one byte and fail every other call with EINTR.
int g_calls = 0;
ssize_t stutterSend(int s, const void* b, size_t, int f) {
  if (++g_calls % 2) return errno = EINTR, -1;
  return ::send(s, b, 1, f);
}
ssize_t stutterRecv(int s, void* b, size_t, int f) {
  if (++g_calls % 2) return errno = EINTR, -1;
  return ::recv(s, b, 1, f);
}
ssize_t brokenSend(int, const void*, size_t, int) { return errno = EPIPE, -1; }
int brokenPoll(pollfd*, nfds_t, int) { return errno = ENOMEM, -1; }

std::vector<std::string> g_logged;
void collectLog(int, int, const char*, const char* function, const char* message, unsigned long) {
  g_logged.push_back(std::string(function) + ": " + message);
}

struct SeamGuard {
  zrad::remote::SocketIo saved = zrad::remote::socketIo();
  SeamGuard() { zr_attach_log_fun(collectLog); g_logged.clear(); }
  ~SeamGuard() { zrad::remote::socketIo() = saved; zr_attach_log_fun(nullptr); }
};

}  // namespace

TEST_F(Framing, TransferLoopsThroughFailureSeams) {
  using namespace zrad::remote;
  SeamGuard guard;
  SocketPair pair;
  socketIo().send = stutterSend;
  socketIo().recv = stutterRecv;
  writeFile(dir / "f", "file bytes");
  ZrSmartPtr<RvNetPackage> sent = packageWith("short counts");
  sent->putFile((dir / "f").c_str(), false);
  ASSERT_EQ(RvRemoteDebugCommunication::sendData(pair.fd[0], sent, 1000), 0);
  ZrSmartPtr<RvNetPackage> got;
  ASSERT_EQ(RvRemoteDebugCommunication::recvData(pair.fd[1], got, 1000), 0);
  EXPECT_EQ(payloadOf(*got), "short counts");
  EXPECT_EQ(readFile(got->getFilePath(1).c_str()), "file bytes");

  char buffer[4] = {};
  socketIo().send = brokenSend;
  EXPECT_EQ(writedata(pair.fd[0], 4, buffer, 1000), -2);
  socketIo() = guard.saved;
  EXPECT_EQ(readdata(pair.fd[1], 4, buffer, 50), -2);  // idle peer: expires
  socketIo().poll = brokenPoll;
  EXPECT_EQ(readdata(pair.fd[1], 4, buffer, 50), -1);
  EXPECT_EQ(writedata(pair.fd[1], 0, buffer, 50), 0);
  socketIo() = guard.saved;
  close(pair.release(0));
  EXPECT_EQ(readdata(pair.fd[1], 4, buffer, 5000), -2);  // closed peer: at once
  const std::vector<std::string> expected = {"writedata: writedata ,expire",
                                             "readdata: readdata ,expire",
                                             "readdata: readdata ,SOCKET_ERROR",
                                             "readdata: readdata ,expire"};
  EXPECT_EQ(g_logged, expected);
}
