// The socket thread against a raw peer: opening order, routing by tag, endings with sequence
// -1, monitors for unknown tags, and what a broken connection or a stop does to conversations.
#include <mutex>

#include "remotedebug/message.h"
#include "remotedebug/remote_testing.h"

using namespace remotetest;

namespace {

constexpr int kReq = 5;

std::string textAfterHeader(const RvNetPackage& pkg) {
  const std::string payload = payloadOf(pkg);
  return payload.size() > 24 ? payload.substr(24) : "";
}

void appendText(RvNetPackage& pkg, const std::string& text) {
  ZrSmartPtr<ZrStreamBuf> stream = pkg.stream();
  stream->seek(0, kSeekFromEnd);
  stream->putBytes(text.data(), static_cast<uint32_t>(text.size()));
}

// A conversation that opens with `text`, records what its answer carries and ends itself on
// it, writing "bye" into its last reply.
class TestCom : public ZradNetComImp<INetCom> {
 public:
  static ZrSmartPtr<TestCom> create(const std::string& text) {
    ZrSmartPtr<TestCom> com = ZrRxObjectImpl<TestCom>::createObject();
    com->m_text = text;
    return com;
  }
  int getReqId() const override { return kReq; }
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    if (reqId == 0) {
      appendText(*reply, m_text);
      return true;
    }
    std::lock_guard<std::mutex> lock(m_lock);
    m_answers.push_back(textAfterHeader(*received));
    appendText(*reply, "bye");
    return false;
  }
  std::vector<std::string> answers() const {
    std::lock_guard<std::mutex> lock(m_lock);
    return m_answers;
  }

 protected:
  TestCom() = default;

 private:
  std::string m_text;
  std::vector<std::string> m_answers;
  mutable std::mutex m_lock;
};

// The peer side of TestCom, opened for request id 9: answers "echo:<text>".
class EchoCom : public ZradNetComImp<INetCom> {
 public:
  int getReqId() const override { return 9; }
  bool OnReceiveData(int, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    appendText(*reply, "echo:" + textAfterHeader(*received));
    return true;
  }
};

class TestEndpoint : public RvRemoteDebugCommunication {
 public:
  ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const override {
    return reqId == 9 ? ZrRxObjectImpl<EchoCom>::createObject() : nullptr;
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
  const std::string header = receive(fd, 8, 5000);
  if (header.size() < 8) return "";
  uint32_t length = 0;
  for (int i = 3; i >= 0; --i) length = length << 8 | static_cast<uint8_t>(header[i]);
  return header + receive(fd, length, 5000);
}

std::string messageFrame(int32_t reqId, uint64_t sender, uint64_t receiver, int32_t seq,
                         const std::string& text) {
  return frame(messageHeader(reqId, sender, receiver, seq) + text);
}

uint64_t tagOf(const ZrSmartPtr<TestCom>& com) { return zrad::remote::tagOf(com.get()); }

}  // namespace

TEST(Endpoint, OpensLastQueuedFirstAndRoutesAnswersByTag) {
  SocketPair pair;
  auto a = TestCom::create("A"), b = TestCom::create("B");
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
  answer.replace(12, 8, 8, '\0');  // the monitor's own tag
  EXPECT_EQ(answer, messageFrame(9, 0, 0x77, 1, "echo:hi"));
  EXPECT_EQ(endpoint->openCount(), 1);
  EXPECT_TRUE(endpoint->Disconect());
}

// The connection ends from the peer's side, then through Disconect: what is open is aborted
// and nothing more is taken.
TEST(Endpoint, AnEndedConnectionAbortsWhatIsOpen) {
  for (int byDisconect = 0; byDisconect < 2; ++byDisconect) {
    SocketPair pair;
    auto open = TestCom::create("open");
    auto endpoint = startEndpoint(pair.release(0), {open});
    ASSERT_FALSE(nextFrame(pair.fd[1]).empty());
    if (byDisconect) {
      EXPECT_TRUE(endpoint->Disconect());
      EXPECT_EQ(endpoint->threadState(), RvDebugThread::kEnded);
      EXPECT_EQ(receive(pair.fd[1], SIZE_MAX, 50), "");  // closed without a word
    } else {
      close(pair.release(1));
      EXPECT_TRUE(waitFor([&] { return endpoint->threadState() == RvDebugThread::kEnded; }));
    }
    EXPECT_EQ(open->getStatus(), INetCom::kAborted) << byDisconect;
    EXPECT_EQ(endpoint->getSocket(), 0) << byDisconect;
    EXPECT_FALSE(endpoint->synCommunicate(TestCom::create("late"), -1)) << byDisconect;
    EXPECT_FALSE(endpoint->synCommunicate(TestCom::create("late"), 50)) << byDisconect;
    EXPECT_TRUE(endpoint->Disconect()) << byDisconect;  // the thread has ended: only joined
  }
}
