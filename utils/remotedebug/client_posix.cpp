// RvRemoteDebugClient: the connecting end of a remote-debugging connection.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <zrad/remotedebug.h>

#include "remotedebug/logsource.h"
#include "remotedebug/socketio.h"


ZR_RX_DEFINE_MEMBERS(RvRemoteDebugClient, RvRemoteDebugCommunication, L"RvRemoteDebugClient")

ZrSmartPtr<RvRemoteDebugClient> RvRemoteDebugClient::createObject(const ZrUtf8String& host,
                                                                  int port) {
  ZrSmartPtr<RvRemoteDebugClient> client = ZrRxObjectImpl<RvRemoteDebugClient>::createObject();
  client->m_host = host;
  client->m_port = port;
  return client;
}

void RvRemoteDebugClient::PrepareStart() { connect(m_host.c_str(), m_port); }

bool RvRemoteDebugClient::connect(const char* host, int port) {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) {
    REMOTE_LOG("connect", "%s ,create socket error", "connect");
    return false;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  if (inet_pton(AF_INET, host, &address.sin_addr) < 1) {
    REMOTE_LOG("connect", "%s ,inet_pton error", "connect");
    return false;
  }
  if (::connect(sock, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    REMOTE_LOG("connect", "%s ,connect socket error", "connect");
    return false;
  }
  zrad::remote::sendWithoutDelay(sock);
  setSocket(sock);
  return true;
}
