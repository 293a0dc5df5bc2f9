// RvRemoteDebugService and RvRemoteLinkClient: the listening server and its connections.
#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <zrad/remotedebug.h>

#include "remotedebug/logsource.h"
#include "remotedebug/socketio.h"

using zrad::remote::socketIo;

ZR_RX_DEFINE_MEMBERS(RvRemoteDebugService, RvRemoteDebugCommunication, L"RvRemoteDebugService")
ZR_RX_DEFINE_MEMBERS(RvRemoteLinkClient, RvRemoteDebugCommunication, L"RvRemoteLinkClient")

namespace {

constexpr int kBindAttempts = 10;
constexpr int kBacklog = 10;
constexpr int kIdlePassMs = 1000;
const char kLinkThreadName[] = "远程客户连接线程";

}  // namespace

ZrSmartPtr<RvRemoteDebugService> RvRemoteDebugService::createObject(unsigned int port) {
  ZrSmartPtr<RvRemoteDebugService> service = ZrRxObjectImpl<RvRemoteDebugService>::createObject();
  service->setPort(port);
  return service;
}

RvRemoteDebugService::~RvRemoteDebugService() {
  join();
  if (m_listenSocket >= 0) close(m_listenSocket);
}

void RvRemoteDebugService::RegMonitor(unsigned int reqId, MonitorFactory factory) {
  m_factories[reqId] = factory;
}

ZrSmartPtr<INetCom> RvRemoteDebugService::createMonitor(unsigned int reqId) const {
  auto found = m_factories.find(reqId);
  return found == m_factories.end() ? nullptr : found->second(static_cast<int>(reqId));
}

int RvRemoteDebugService::linkCount() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  int running = 0;
  for (const auto& link : m_links) running += link->threadState() < kEnded;
  return running;
}

void RvRemoteDebugService::PrepareStart() {
  registerCommandMonitor();
  m_listening.store(listenOnPort());
}

bool RvRemoteDebugService::listenOnPort() {
  const int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) {
    REMOTE_LOG("server", "create socket error:%d", errno);
    return false;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  bool bound = m_bindAddress.isEmpty() ||
               inet_pton(AF_INET, m_bindAddress.c_str(), &address.sin_addr) == 1;
  // Ports p, p+1, p+3, p+6, ...: each attempt adds its own number to the port.
  for (int attempt = 0; bound && attempt < kBindAttempts; ++attempt) {
    m_port.store(m_port.load() + static_cast<unsigned>(attempt));
    address.sin_port = htons(static_cast<uint16_t>(m_port.load()));
    if (bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) break;
    bound = attempt + 1 < kBindAttempts;
  }
  if (!bound) {
    REMOTE_LOG("server", "bind error");
    close(sock);
    return false;
  }
  if (listen(sock, kBacklog) != 0) {
    REMOTE_LOG("server", "listen err:%d", errno);
    close(sock);
    return false;
  }
  // The port actually bound (an ephemeral one when 0 was asked for).
  socklen_t length = sizeof address;
  if (getsockname(sock, reinterpret_cast<sockaddr*>(&address), &length) == 0)
    m_port.store(ntohs(address.sin_port));
  m_listenSocket = sock;
  return true;
}

int RvRemoteDebugService::server() {
  if (m_listenSocket < 0) return 0;
  for (;;) {
    pollfd fds[2] = {{m_listenSocket, POLLIN | POLLPRI, 0}, {m_wakeFd, POLLIN, 0}};
    const int polled = socketIo().poll(fds, m_wakeFd >= 0 ? 2 : 1, kIdlePassMs);
    if (polled < 0 && errno != EINTR) {
      REMOTE_LOG("server", "select err:%d", errno);
      break;
    }
    if (polled > 0 && (fds[0].revents & POLLIN)) acceptOne();
    if (polled > 0 && (fds[1].revents & POLLIN)) drainWake();
    pruneEnded();
    if (m_state.load() >= kStopRequested) break;
  }
  m_listening.store(false);
  close(m_listenSocket);
  m_listenSocket = -1;
  return 1;
}

void RvRemoteDebugService::acceptOne() {
  const int sock = accept4(m_listenSocket, nullptr, nullptr, SOCK_CLOEXEC);
  if (sock < 0) return;
  zrad::remote::sendWithoutDelay(sock);
  ZrSmartPtr<RvRemoteLinkClient> link = RvRemoteLinkClient::createObject(this, sock);
  if (!link->execute(kLinkThreadName) || link->getSocket() == 0) return;
  std::lock_guard<std::mutex> lock(m_mutex);
  m_links.push_back(link);
}

// Ended link clients leave the list, so a service that runs for weeks does not grow.
void RvRemoteDebugService::pruneEnded() {
  std::vector<ZrSmartPtr<RvRemoteLinkClient>> ended;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (auto it = m_links.begin(); it != m_links.end();) {
      if ((*it)->threadState() >= kEnded) {
        ended.push_back(*it);
        it = m_links.erase(it);
      } else {
        ++it;
      }
    }
  }
  for (auto& link : ended) link->Disconect();
}

void RvRemoteDebugService::Run() {
  server();
  std::vector<ZrSmartPtr<RvRemoteLinkClient>> links;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    links.swap(m_links);
  }
  for (auto& link : links) link->Disconect();
}

ZrSmartPtr<RvRemoteLinkClient> RvRemoteLinkClient::createObject(
    ZrSmartPtr<RvRemoteDebugService> owner, int sock) {
  ZrSmartPtr<RvRemoteLinkClient> link = ZrRxObjectImpl<RvRemoteLinkClient>::createObject();
  link->m_owner = owner;
  link->setSocket(sock);
  return link;
}

ZrSmartPtr<INetCom> RvRemoteLinkClient::createMonitor(unsigned int reqId) const {
  return m_owner ? m_owner->createMonitor(reqId) : nullptr;
}
