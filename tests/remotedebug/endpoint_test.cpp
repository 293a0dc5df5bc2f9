// The socket thread against a raw peer: opening order, routing by tag, endings with sequence
// -1, monitors for unknown tags, and what a broken connection or a stop does to conversations.
#include "common/testdir.h"
#include "remotedebug/message.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;

namespace {

constexpr int kReq = 5;

// An endpoint on one end of a socket pair; request id 9 opens an echo conversation.
class TestEndpoint : public RvRemoteDebugCommunication {
 public:
  ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const override {
    return reqId == 9 ? createEchoMonitor(9) : nullptr;
  }
};

ZrSmartPtr<TestEndpoint> startEndpoint(int sock, std::vector<ZrSmartPtr<TestCom>> queued = {}) {
  ZrSmartPtr<TestEndpoint> endpoint = ZrRxObjectImpl<TestEndpoint>::createObject();
  endpoint->setSocket(sock);
  for (auto& com : queued) endpoint->communicate(com);
  EXPECT_TRUE(endpoint->execute("endpoint"));
  return endpoint;
}

// One frame from the raw peer's side: header, payload and files (none expected here).
std::string nextFrame(int fd) {
  std::string header = receive(fd, 8, 5000);
  if (header.size() < 8) return "";
  return header + receive(fd, readLe(header, 0, 4), 5000);
}

std::string messageFrame(int32_t reqId, uint64_t sender, uint64_t receiver, int32_t seq,
                         const std::string& text) {
  return frame(messageHeader(reqId, sender, receiver, seq) + text);
}

uint64_t tagOf(const ZrSmartPtr<TestCom>& com) { return zrad::remote::tagOf(com.get()); }

}  // namespace

TEST(Endpoint, OpensLastQueuedFirstAndRoutesAnswersByTag) {
  SocketPair pair;
  auto a = TestCom::create(kReq, "A"), b = TestCom::create(kReq, "B");
  auto endpoint = startEndpoint(pair.release(0), {a, b});
  EXPECT_EQ(nextFrame(pair.fd[1]), messageFrame(kReq, tagOf(b), 0, 0, "B"));
  EXPECT_EQ(nextFrame(pair.fd[1]), messageFrame(kReq, tagOf(a), 0, 0, "A"));

  // A's handler ends it on its first answer: the reply still carries "bye", with sequence -1.
  sendAll(pair.fd[1], messageFrame(kReq, 0x99, tagOf(a), 1, "to A"));
  EXPECT_EQ(nextFrame(pair.fd[1]), messageFrame(kReq, tagOf(a), 0x99, -1, "bye"));
  EXPECT_EQ(a->answers(), std::vector<std::string>{"to A"});
  EXPECT_EQ(a->getStatus(), INetCom::kFinished);

  // The peer ends B: finished without its handler, and nothing is sent back.
  sendAll(pair.fd[1], messageFrame(kReq, 0x98, tagOf(b), -1, "end"));
  EXPECT_TRUE(waitFor([&] { return b->getStatus() == INetCom::kFinished; }));
  EXPECT_TRUE(b->answers().empty());
  EXPECT_EQ(endpoint->openCount(), 0);

  // An unknown tag without a monitor is dropped; with one it opens a conversation.
  sendAll(pair.fd[1], messageFrame(kReq, 0x77, 0x1234, 1, "nobody"));
  EXPECT_EQ(receive(pair.fd[1], SIZE_MAX, 200), "");
  sendAll(pair.fd[1], messageFrame(9, 0x77, 0, 0, "hi"));
  std::string answer = nextFrame(pair.fd[1]);
  ASSERT_EQ(answer.size(), 8u + 24 + 7);
  EXPECT_EQ(readLe(answer, 8 + 12, 8), 0x77u);
  EXPECT_EQ(answer.substr(8 + 20), std::string("\x01\0\0\0echo:hi", 11));
  EXPECT_EQ(endpoint->openCount(), 1);
  EXPECT_TRUE(endpoint->Disconect());
}

TEST(Endpoint, EndedConnectionAbortsQueuedAndOpenConversations) {
  SocketPair pair;
  auto open = TestCom::create(kReq, "open");
  auto endpoint = startEndpoint(pair.release(0), {open});
  ASSERT_FALSE(nextFrame(pair.fd[1]).empty());
  close(pair.release(1));
  EXPECT_TRUE(waitFor([&] { return endpoint->threadState() == RvDebugThread::kEnded; }));
  EXPECT_EQ(open->getStatus(), INetCom::kAborted);
  EXPECT_EQ(endpoint->getSocket(), 0);
  EXPECT_FALSE(endpoint->synCommunicate(TestCom::create(kReq, "late"), -1));
  EXPECT_FALSE(endpoint->synCommunicate(TestCom::create(kReq, "late"), 50));
  EXPECT_TRUE(endpoint->Disconect());  // the thread has ended: only joined
}

TEST(Endpoint, DisconectStopsAnIdleThreadAndAbortsWhatIsOpen) {
  SocketPair pair;
  auto open = TestCom::create(kReq, "waits");
  auto endpoint = startEndpoint(pair.release(0), {open});
  ASSERT_FALSE(nextFrame(pair.fd[1]).empty());
  EXPECT_TRUE(endpoint->Disconect());
  EXPECT_EQ(endpoint->threadState(), RvDebugThread::kEnded);
  EXPECT_EQ(open->getStatus(), INetCom::kAborted);
  EXPECT_EQ(receive(pair.fd[1], SIZE_MAX, 50), "");  // closed without a word
}
