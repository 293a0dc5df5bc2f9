// RvRemoteDebugCommunication: the socket thread, its queue of conversations and their routing.
//
// The socket thread sleeps in poll() on the socket and on a wake-up descriptor. A readable
// socket is always served first; only a pass that finds nothing to read opens the most recently
// queued conversation. The endpoint mutex guards the queue, the table and the thread state and
// is never held across socket input and output or a handler call.
#include <errno.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <exception>

#include <zrad/remotedebug.h>

#include "remotedebug/logsource.h"
#include "remotedebug/message.h"
#include "remotedebug/socketio.h"

using namespace zrad::remote;

ZR_RX_DEFINE_MEMBERS(INetCom, ZrRxObject, L"INetCom")
ZR_RX_DEFINE_MEMBERS(RvRemoteDebugCommunication, RvDebugThread, L"RvRemoteDebugCommunication")

namespace {

constexpr int kTransferTimeoutMs = 5000;
constexpr int kWaitStepMs = 3000;

bool ended(const INetCom& com) { return com.getStatus() >= INetCom::kFinished; }

// Runs a handler; a handler that throws ends its conversation instead of the thread.
bool callHandler(INetCom& com, int reqId, ZrSmartPtr<RvNetPackage> received,
                 ZrSmartPtr<RvNetPackage> reply) {
  try {
    return com.OnReceiveData(reqId, received, reply);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

RvRemoteDebugCommunication::RvRemoteDebugCommunication()
    : m_wakeFd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

RvRemoteDebugCommunication::~RvRemoteDebugCommunication() {
  join();
  if (int sock = getSocket()) close(sock);
  if (m_wakeFd >= 0) close(m_wakeFd);
}

bool RvRemoteDebugCommunication::communicate(ZrSmartPtr<INetCom> com) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.append(com);
  }
  m_queued.notify_all();
  wake();
  return true;
}

bool RvRemoteDebugCommunication::synCommunicate(ZrSmartPtr<INetCom> com, int timeoutMs) {
  com->setStatus(INetCom::kNew);
  communicate(com);
  if (timeoutMs >= 0) return com->waitEnded(timeoutMs);
  while (getSocket() != 0) {
    if (com->waitEnded(kWaitStepMs)) return true;
  }
  return ended(*com);
}

bool RvRemoteDebugCommunication::Disconect() {
  std::unique_lock<std::mutex> lock(m_mutex);
  const int state = m_state.load();
  if (state == kRunning || state == kStopRequested) {
    m_state.store(kStopRequested);
    wake();
    if (isInCurThread()) return true;  // the thread stops after this pass; nobody to wait for
    m_stopped.wait(lock, [this] { return m_stopAcknowledged; });
  }
  lock.unlock();
  setSocket(0);
  join();
  return true;
}

void RvRemoteDebugCommunication::willStop() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_stopAcknowledged = true;
  m_stopped.notify_all();
}

ZrSmartPtr<INetCom> RvRemoteDebugCommunication::createMonitor(unsigned int) const {
  return nullptr;
}

int RvRemoteDebugCommunication::queuedCount() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_queue.length();
}

int RvRemoteDebugCommunication::openCount() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<int>(m_open.size());
}

void RvRemoteDebugCommunication::Run() {
  if (getSocket() != 0) socketThread();
}

void RvRemoteDebugCommunication::wake() {
  const uint64_t one = 1;
  if (m_wakeFd >= 0 && write(m_wakeFd, &one, sizeof one) < 0) {
    // The counter is saturated: the thread has a wake-up pending anyway.
  }
}

void RvRemoteDebugCommunication::drainWake() {
  uint64_t count;
  if (m_wakeFd >= 0 && read(m_wakeFd, &count, sizeof count) < 0) {
    // Nothing pending: another pass drained it first.
  }
}

void RvRemoteDebugCommunication::socketThread() {
  const int sock = getSocket();
  bool morePending = false;
  while (m_state.load() < kStopRequested) {
    pollfd fds[2] = {{sock, POLLIN | POLLPRI, 0}, {m_wakeFd, POLLIN, 0}};
    const int polled = socketIo().poll(fds, m_wakeFd >= 0 ? 2 : 1, morePending ? 0 : -1);
    if (polled < 0 && errno == EINTR) continue;
    const short events = polled < 0 ? POLLNVAL : fds[0].revents;
    if (events & POLLNVAL) {
      REMOTE_LOG("socketThread", "select error");
      break;
    }
    if (events & (POLLIN | POLLHUP | POLLERR)) {
      if (!serveIncoming(sock)) break;
      continue;
    }
    if (events & POLLPRI) break;  // only the exception condition
    if (fds[1].revents & POLLIN) drainWake();
    const int opened = openQueued(sock);
    if (opened < 0) break;
    morePending = opened > 0;
  }
  abortAll();
  setSocket(0);
  close(sock);
}

int RvRemoteDebugCommunication::openQueued(int sock) {
  ZrSmartPtr<INetCom> com;
  bool more;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_queue.isEmpty()) return 0;
    // Last in, first out.
    com = m_queue[m_queue.length() - 1];
    m_queue.removeAt(m_queue.length() - 1);
    more = !m_queue.isEmpty();
  }
  com->setStatus(INetCom::kRunning);
  ZrSmartPtr<RvNetPackage> opening = makeMessage({com->getReqId(), tagOf(com.get()), 0, 0});
  if (!callHandler(*com, 0, opening, opening)) {
    com->finish();
    return more ? 1 : 0;
  }
  {
    // Entered before sending, so a failed send aborts it with the others.
    std::lock_guard<std::mutex> lock(m_mutex);
    m_open[tagOf(com.get())] = com;
  }
  if (sendData(sock, opening, kTransferTimeoutMs) == -1) return -1;
  return more ? 1 : 0;
}

bool RvRemoteDebugCommunication::serveIncoming(int sock) {
  ZrSmartPtr<RvNetPackage> received;
  if (recvData(sock, received, kTransferTimeoutMs) == -1) return false;
  const RvMessageHeader header = readHeader(*received);
  ZrSmartPtr<INetCom> com;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = header.receiverTag != 0 ? m_open.find(header.receiverTag) : m_open.end();
    if (found != m_open.end()) com = found->second;
  }
  if (!com) {
    com = createMonitor(static_cast<unsigned>(header.reqId));
    if (!com) return true;  // nobody handles this request id: dropped without reply
    std::lock_guard<std::mutex> lock(m_mutex);
    m_open[tagOf(com.get())] = com;
  }
  if (header.sequence == kRvSequenceEnd) {
    com->finish();
    forget(com);
    return true;
  }
  ZrSmartPtr<RvNetPackage> reply =
      makeMessage({header.reqId, tagOf(com.get()), header.senderTag, header.sequence + 1});
  com->setStatus(INetCom::kRunning);
  if (!callHandler(*com, header.reqId, received, reply)) {
    forget(com);
    com->finish();
    setSequence(*reply, kRvSequenceEnd);
  }
  return sendData(sock, reply, kTransferTimeoutMs) != -1;
}

void RvRemoteDebugCommunication::forget(const ZrSmartPtr<INetCom>& com) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_open.erase(tagOf(com.get()));
}

void RvRemoteDebugCommunication::abortAll() {
  ZrArray<ZrSmartPtr<INetCom>> queued;
  std::map<uint64_t, ZrSmartPtr<INetCom>> open;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    queued.swap(m_queue);
    open.swap(m_open);
  }
  for (const ZrSmartPtr<INetCom>& com : queued) com->abort();
  for (auto& entry : open) entry.second->abort();
}
