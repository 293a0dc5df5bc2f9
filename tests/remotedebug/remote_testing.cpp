// Test conversations shared by the endpoint and service tests.
#include "remotedebug/remote_testing.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

#include <filesystem>

#include <zrad/json.h>


namespace remotetest {

namespace {

std::string textAfterHeader(const RvNetPackage& pkg) {
  std::string payload = payloadOf(pkg);
  return payload.size() > 24 ? payload.substr(24) : "";
}

class EchoCom : public ZradNetComImp<INetCom> {
 public:
  int getReqId() const override { return m_reqId; }
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    m_reqId = reqId;
    appendText(*reply, "echo:" + textAfterHeader(*received));
    return true;
  }

 private:
  int m_reqId = 0;
};

}  // namespace

int openDescriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                        std::filesystem::directory_iterator()));
}

size_t entriesIn(const std::string& dir) {
  std::error_code missing;
  return static_cast<size_t>(
      std::distance(std::filesystem::directory_iterator(dir, missing), {}));
}

bool waitFor(const std::function<bool()>& done, int seconds) {
  for (int i = 0; i < seconds * 100 && !done(); ++i) usleep(10000);
  return done();
}

ZrSmartPtr<RvRemoteDebugService> startService(const RvServiceProtections& protections,
                                              unsigned port) {
  ZrSmartPtr<RvRemoteDebugService> service = RvRemoteDebugService::createObject(port);
  service->setBindAddress("127.0.0.1");
  EXPECT_TRUE(service->setProtections(protections));
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

namespace {

sockaddr_in loopback(unsigned port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

}  // namespace

int rawConnect(unsigned port) {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  EXPECT_EQ(connect(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return sock;
}

bool portFree(unsigned port) {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(port);
  const bool bound = bind(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(sock);
  return bound;
}

std::string command(RvRemoteDebugClient& client, const char* word, const std::string& arg1,
                    const std::string& arg2) {
  ZrJsonPtr in = ZrJson::readjson("{}"), out = ZrJson::readjson("{}");
  in->SetDataS("arg1", arg1.c_str());
  in->SetDataS("arg2", arg2.c_str());
  if (!CNetCommand::sendSynCommand(&client, word, 10000, in, out)) return "<failed>";
  std::string texts;
  for (int i = 0; i < out("texts").ArrayCount(); ++i)
    texts += (i ? " | " : "") + out("texts")(i)->strValue().str();
  return out("texts").ArrayCount() ? texts : "<none>";
}

ZrSmartPtr<TestCom> TestCom::create(int reqId, const std::string& text) {
  ZrSmartPtr<TestCom> com = ZrRxObjectImpl<TestCom>::createObject();
  com->m_reqId = reqId;
  com->m_text = text;
  return com;
}

bool TestCom::OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                            ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 0) {
    appendText(*reply, m_text);
    return true;
  }
  std::lock_guard<std::mutex> lock(m_lock);
  m_answers.push_back(textAfterHeader(*received));
  appendText(*reply, "bye");
  return false;
}

std::vector<std::string> TestCom::answers() const {
  std::lock_guard<std::mutex> lock(m_lock);
  return m_answers;
}

ZrSmartPtr<INetCom> createEchoMonitor(int) { return ZrRxObjectImpl<EchoCom>::createObject(); }

}  // namespace remotetest
