// The service, clients and raw connections the remote-debugging tests share.
#include "remotedebug/remote_testing.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <unistd.h>

#include <filesystem>

#include <zrad/json.h>

namespace remotetest {

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

}  // namespace remotetest
