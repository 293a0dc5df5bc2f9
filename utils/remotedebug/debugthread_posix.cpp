// RvDebugThread: a named thread whose start is handshaken with the caller.
#include <chrono>

#include <zrad/log.h>
#include <zrad/remotedebug.h>

#include "remotedebug/logsource.h"


ZR_RX_DEFINE_MEMBERS(RvDebugThread, ZrRxObject, L"RvDebugThread")

bool RvDebugThread::execute(const ZrUtf8String& name) {
  if (m_thread.joinable()) return false;  // one thread per object
  std::mutex startMutex;
  std::condition_variable started;
  bool ready = false;
  std::unique_lock<std::mutex> lock(startMutex);
  m_name = name;
  addRef();  // the thread's own reference, dropped when its body ends
  try {
    m_thread = std::thread(&RvDebugThread::threadBody, this, &startMutex, &started, &ready);
  } catch (const std::system_error&) {
    release();
    REMOTE_LOG("execute", "%s %d end", "execute", 140);
    return false;
  }
  started.wait(lock, [&] { return ready; });
  return true;
}

void RvDebugThread::threadBody(RvDebugThread* self, std::mutex* startMutex,
                               std::condition_variable* started, bool* ready) {
  {
    std::lock_guard<std::mutex> lock(*startMutex);
    self->m_state.store(kRunning);
    zrutSetCurThreadName(self->m_name.c_str());
    self->PrepareStart();
    *ready = true;
    started->notify_one();
  }
  self->Run();
  {
    std::lock_guard<std::mutex> lock(self->m_mutex);
    self->m_state.store(kEnded);
  }
  self->willStop();
  self->release();
}

RvDebugThread::~RvDebugThread() {
  if (!m_thread.joinable()) return;
  if (m_thread.get_id() == std::this_thread::get_id())
    m_thread.detach();
  else
    m_thread.join();
}

void RvDebugThread::join() {
  if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id()) m_thread.join();
}

bool RvDebugThread::isInCurThread() const {
  return m_thread.get_id() == std::this_thread::get_id();
}

void RvDebugThread::waitEvent() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_event.wait(lock);
}

void RvDebugThread::singalEventContinue() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_event.notify_one();
}

void RvDebugThread::waitTimeUntilEvent(int ms) {
  const auto deadline = std::chrono::system_clock::now() + std::chrono::milliseconds(ms);
  std::unique_lock<std::mutex> lock(m_mutex);
  m_event.wait_until(lock, deadline);
}
